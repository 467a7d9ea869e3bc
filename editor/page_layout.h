#pragma once

// Measures shared by the modulator pages, beside the theme's own sizes.

#include "ui/theme.h"
#include "ui/ui_root.h"
#include "ui/view.h"

namespace halvern {

inline constexpr double kPageKnobCell = 88.0;  // a knob with its name and value, names whole
inline constexpr double kPageLabelWidth = 78.0; // the names left of menus and fields
inline constexpr double kPageRowGap = 6.0;     // between rows of buttons, menus and fields

// The theme of the root a view is shown in; the built-in theme before it is shown.
inline const ZTheme& PageTheme(const ZView& view)
{
    static const ZTheme fallback = ZTheme::Default();
    return view.root() != nullptr ? view.root()->theme() : fallback;
}

// The height of a knob's cell: its name, dial and value.
inline double PageKnobHeight(const ZTheme& theme) { return theme.knobSize + 2 * theme.labelHeight; }

} // namespace halvern
