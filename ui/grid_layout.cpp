#include "ui/grid_layout.h"

#include <algorithm>

namespace halvern {

ZGridLayout::ZGridLayout(int columns, double spacing, double padding)
    : columns_(std::max(1, columns)), spacing_(spacing), padding_(padding)
{
}

void ZGridLayout::SetColumnWidths(std::vector<double> widths)
{
    columnWidths_ = std::move(widths);
    Layout();
}

void ZGridLayout::SetRowHeight(double height)
{
    rowHeight_ = height;
    Layout();
}

int ZGridLayout::rows() const
{
    return (static_cast<int>(children().size()) + columns_ - 1) / columns_;
}

std::vector<ZTrack> ZGridLayout::columnTracks() const
{
    std::vector<ZTrack> tracks(columns_, ZTrack{0.0, 1.0});
    for (size_t i = 0; i < tracks.size() && i < columnWidths_.size(); ++i)
        if (columnWidths_[i] > 0.0)
            tracks[i] = {columnWidths_[i], 0.0};
    return tracks;
}

std::vector<ZTrack> ZGridLayout::rowTracks() const
{
    return std::vector<ZTrack>(rows(), rowHeight_ > 0.0 ? ZTrack{rowHeight_, 0.0} : ZTrack{0.0, 1.0});
}

void ZGridLayout::Layout()
{
    const ZRect inner = bounds().inset(padding_, padding_);
    const std::vector<ZSpan> columnSpans = DistributeTracks(inner.x, inner.width, spacing_, columnTracks());
    const std::vector<ZSpan> rowSpans = DistributeTracks(inner.y, inner.height, spacing_, rowTracks());
    for (size_t i = 0; i < children().size(); ++i) {
        const ZSpan column = columnSpans[i % columns_], row = rowSpans[i / columns_];
        children()[i]->SetBounds({column.start, row.start, column.size, row.size});
    }
}

ZPoint ZGridLayout::PreferredSize() const
{
    const std::vector<ZTrack> columnsFixed = columnTracks(), rowsFixed = rowTracks();
    const auto allFixed = [](const std::vector<ZTrack>& tracks) {
        return !tracks.empty() && std::all_of(tracks.begin(), tracks.end(), [](const ZTrack& t) { return t.fixed > 0.0; });
    };
    return {allFixed(columnsFixed) ? FixedLength(spacing_, columnsFixed) + 2 * padding_ : 0.0,
            allFixed(rowsFixed) ? FixedLength(spacing_, rowsFixed) + 2 * padding_ : 0.0};
}

} // namespace halvern
