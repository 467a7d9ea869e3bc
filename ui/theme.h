#pragma once

// The one theme table of the toolkit: every colour, size and font size the controls
// draw with. Controls hold no drawing constants of their own. A user's style file may
// override any item by name (see LoadStyleFile).

#include "ui/canvas.h"

#include <string>

namespace halvern {

struct ZTheme {
    // colours
    ZColor background;      // the editor's backdrop
    ZColor panel;           // panel faces
    ZColor panelBorder;
    ZColor header;          // panel titles' strip and the editor's header
    ZColor text;            // primary text
    ZColor textDim;         // labels, secondary text
    ZColor accent;          // values, active parts, focus
    ZColor accentText;      // text on the accent colour
    ZColor track;           // unfilled part of knobs, sliders and meters
    ZColor control;         // faces of buttons, menus, fields
    ZColor controlHover;
    ZColor popup;           // menus and tooltips
    ZColor popupBorder;
    ZColor highlight;       // the hovered row of a menu or list
    ZColor meterLow;
    ZColor meterHigh;
    ZColor meterClip;
    ZColor source;          // the position editor's source
    ZColor microphone;      // the position editor's microphone
    ZColor modulation;      // the range a selected modulator sweeps on a control
    ZColor error;           // the frame of a text field whose text was refused

    // sizes, logical units
    double fontSize = 12.0;
    double smallFontSize = 10.5;
    double titleFontSize = 13.0;
    double logoFontSize = 20.0;
    double radius = 4.0;         // corners of panels and buttons
    double spacing = 8.0;        // between controls
    double padding = 10.0;       // inside panels
    double knobSize = 46.0;      // a knob's dial
    double rowHeight = 22.0;     // buttons, menus, fields, list rows
    double lineWidth = 1.0;
    double valueLineWidth = 3.0; // the value arc of knobs, slider fills
    double dragPixelsFullRange = 200.0; // vertical drag over the whole range
    double fineFactor = 0.1;     // Shift
    double wheelStep = 0.02;     // one notch on a continuous value
    double wheelScroll = 44.0;   // one notch in a list or a scroll area
    double labelHeight = 16.0;   // a line of name or value text above or below a control
    double textInset = 6.0;      // text from the left edge of buttons, menus, fields and rows
    double handleRadius = 6.0;   // slider thumbs and the XY pad's handle
    double switchWidth = 30.0;
    double switchHeight = 16.0;
    double scrollBarWidth = 4.0; // the scroll position bar of lists and scroll areas

    ZTextStyle Text(double size = 0.0) const;     // primary text at size (0: fontSize)
    ZTextStyle Label() const;                     // dim small labels
    ZTextStyle Value() const;                     // value texts
    ZTextStyle Title() const;                     // panel titles

    // The built-in dark theme.
    static ZTheme Default();
};

// Reads a style file (a markup document: <style><color name="accent" value="#e0a040"/>
// <size name="knobSize" value="48"/></style>) over the theme, item by item. A file that
// does not exist leaves the theme as it is and answers true; a damaged file or an item
// with an unknown name or a bad value changes nothing at all, answers false and says why
// in error.
bool LoadStyleFile(const std::string& path, ZTheme& theme, std::string& error);

} // namespace halvern
