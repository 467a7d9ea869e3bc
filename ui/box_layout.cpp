#include "ui/box_layout.h"

#include <algorithm>

namespace halvern {

ZBoxLayout::ZBoxLayout(ZOrientation orientation, double spacing, double padding)
    : orientation_(orientation), spacing_(spacing), padding_(padding)
{
}

ZBoxItem ZBoxLayout::itemOf(size_t childIndex) const
{
    return childIndex < items_.size() ? items_[childIndex] : ZBoxItem::Stretch();
}

std::vector<ZTrack> ZBoxLayout::tracks() const
{
    std::vector<ZTrack> result;
    for (size_t i = 0; i < children().size(); ++i) {
        const ZView& child = *children()[i];
        if (!child.visible())
            continue;
        const ZBoxItem item = itemOf(i);
        if (item.size > 0.0) {
            result.push_back({item.size, 0.0});
        } else if (item.stretch > 0.0) {
            result.push_back({0.0, item.stretch});
        } else {
            const double preferred = along(child.PreferredSize());
            result.push_back(preferred > 0.0 ? ZTrack{preferred, 0.0} : ZTrack{0.0, 1.0});
        }
    }
    return result;
}

std::vector<ZView*> ZBoxLayout::visibleChildren() const
{
    std::vector<ZView*> result;
    for (const auto& child : children())
        if (child->visible())
            result.push_back(child.get());
    return result;
}

void ZBoxLayout::Layout()
{
    const ZRect inner = bounds().inset(padding_, padding_);
    const bool horizontal = orientation_ == ZOrientation::Horizontal;
    const std::vector<ZSpan> spans = DistributeTracks(horizontal ? inner.x : inner.y,
                                                      horizontal ? inner.width : inner.height, spacing_, tracks());
    const std::vector<ZView*> views = visibleChildren();
    for (size_t i = 0; i < views.size(); ++i) {
        const ZSpan span = spans[i];
        views[i]->SetBounds(horizontal ? ZRect{span.start, inner.y, span.size, inner.height}
                                       : ZRect{inner.x, span.start, inner.width, span.size});
    }
}

ZPoint ZBoxLayout::PreferredSize() const
{
    double length = 0.0, thickness = 0.0;
    size_t count = 0;
    for (size_t i = 0; i < children().size(); ++i) {
        const ZView& child = *children()[i];
        if (!child.visible())
            continue;
        const ZPoint preferred = child.PreferredSize();
        const ZBoxItem item = itemOf(i);
        length += item.size > 0.0 ? item.size : along(preferred);
        thickness = std::max(thickness, across(preferred));
        ++count;
    }
    length += count > 0 ? spacing_ * static_cast<double>(count - 1) : 0.0;
    length += 2 * padding_;
    thickness += 2 * padding_;
    return orientation_ == ZOrientation::Horizontal ? ZPoint{length, thickness} : ZPoint{thickness, length};
}

} // namespace halvern
