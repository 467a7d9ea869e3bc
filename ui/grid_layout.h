#pragma once

// ZGridLayout: a container that places its children in cells, row by row, in a given
// number of columns, inside padding and with spacing between cells. Columns share the
// width equally unless given widths; rows share the height equally unless given a
// height. Every child keeps its cell, hidden ones too.

#include "ui/layout_tracks.h"
#include "ui/view.h"

#include <vector>

namespace halvern {

class ZGridLayout : public ZView {
public:
    explicit ZGridLayout(int columns, double spacing = 0.0, double padding = 0.0);

    // Widths of the columns; 0 (or a column past the list) shares the rest equally.
    void SetColumnWidths(std::vector<double> widths);
    // The height of every row; 0 shares the height equally.
    void SetRowHeight(double height);

    int rows() const;

    void Layout() override;
    // Known only along what is fixed: given column widths, a given row height.
    ZPoint PreferredSize() const override;

private:
    std::vector<ZTrack> columnTracks() const;
    std::vector<ZTrack> rowTracks() const;

    int columns_;
    double spacing_;
    double padding_;
    std::vector<double> columnWidths_;
    double rowHeight_ = 0.0;
};

} // namespace halvern
