#pragma once

// ZBoxLayout: a container that lays its children in a row or a column, inside padding
// and with spacing between them. Along the row or column each child is fixed, takes
// its preferred size, or stretches into what is left by weight; across, it fills the
// box. Hidden children take no room.

#include "ui/layout_tracks.h"
#include "ui/view.h"

#include <memory>
#include <vector>

namespace halvern {

enum class ZOrientation { Horizontal, Vertical };

// How much room a child takes along the box.
struct ZBoxItem {
    double size = 0.0;    // > 0: fixed
    double stretch = 1.0; // otherwise: a share of the rest by weight (0: its preferred size)

    static ZBoxItem Fixed(double size) { return {size, 0.0}; }
    static ZBoxItem Stretch(double weight = 1.0) { return {0.0, weight}; }
    // The child's preferred size along the box; a child without one stretches.
    static ZBoxItem Preferred() { return {0.0, 0.0}; }
};

class ZBoxLayout : public ZView {
public:
    explicit ZBoxLayout(ZOrientation orientation, double spacing = 0.0, double padding = 0.0);

    // Adds a child with how much room it takes (children added with AddChild stretch).
    template <class View>
    View* Add(std::unique_ptr<View> child, ZBoxItem item = ZBoxItem::Stretch())
    {
        items_.resize(children().size(), ZBoxItem::Stretch());
        items_.push_back(item);
        View* raw = AddChild(std::move(child));
        Layout();
        return raw;
    }

    void Layout() override;
    // Fixed and preferred sizes with spacing and padding along; the widest child across.
    ZPoint PreferredSize() const override;

private:
    std::vector<ZView*> visibleChildren() const;
    ZBoxItem itemOf(size_t childIndex) const;
    double along(ZPoint size) const { return orientation_ == ZOrientation::Horizontal ? size.x : size.y; }
    double across(ZPoint size) const { return orientation_ == ZOrientation::Horizontal ? size.y : size.x; }
    std::vector<ZTrack> tracks() const;

    ZOrientation orientation_;
    double spacing_;
    double padding_;
    std::vector<ZBoxItem> items_; // by child index
};

} // namespace halvern
