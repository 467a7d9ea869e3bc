#pragma once

// ZGraphEditor: shows and edits the curve of a ZGraphModel on a grid. Dragging a point
// moves it (its x kept between its neighbours', the ends' x kept where the model fixes
// them); a double click on empty space adds a point there and on a point removes it (down
// to the model's minimum); dragging a segment's curve up or down bends it; a right click
// on a segment chooses its kind when the model offers several. The curve is drawn from
// the model's own evaluation, one sample per device pixel. An optional input source
// marks where the curve's input is now with a vertical line.

#include "ui/controls/graph_model.h"
#include "ui/view.h"

#include <functional>
#include <memory>

namespace halvern {

class ZGraphEditor : public ZView {
public:
    explicit ZGraphEditor(std::unique_ptr<ZGraphModel> model);

    ZGraphModel& model() const { return *model_; }
    // The current input x in 0..1, polled in Refresh; a value outside 0..1 (or NaN) hides
    // the line. An empty function removes the marker.
    void SetInputSource(std::function<double()> source);

    // The unit square on the view, and the conversions both ways (view positions are
    // limited to the square).
    ZRect PlotRect() const;
    ZPoint ToView(ZPoint unit) const;
    ZPoint ToUnit(ZPoint view) const;

    bool AcceptsMouse() const override { return true; }
    bool OnMouseDown(const ZMouseEvent& event) override;
    void OnMouseDrag(const ZMouseEvent& event) override;
    void OnMouseUp(const ZMouseEvent& event) override;
    void OnCaptureLost() override;
    void OnMouseMove(const ZMouseEvent& event) override;
    void OnMouseLeave() override;
    ZCursor Cursor() const override;
    void Refresh() override;

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    struct Hit {
        enum class Kind { None, Point, Segment };
        Kind kind = Kind::None;
        int index = 0;
        bool operator==(const Hit&) const = default;
    };

    // Forgets a hover or drag whose point or segment is gone, and repaints.
    void modelChanged();
    Hit pointAt(ZPoint position) const;
    // The segment whose x span holds the position.
    int segmentUnder(ZPoint position) const;
    // The segment whose drawn curve passes near the position, as a hit.
    Hit curveAt(ZPoint position) const;
    Hit hitTest(ZPoint position) const;
    void dragPoint(ZPoint position);
    void dragBend(ZPoint position);
    void addPoint(ZPoint position);
    void removePoint(int index);
    void showKindMenu(int segment, ZPoint at);
    void setHover(Hit hover);

    void paintGrid(ZCanvas& canvas, const ZRect& plot) const;
    void paintCurve(ZCanvas& canvas, const ZRect& plot) const;
    void paintPoints(ZCanvas& canvas) const;
    void paintInput(ZCanvas& canvas, const ZRect& plot) const;

    std::unique_ptr<ZGraphModel> model_;
    std::function<double()> inputSource_;
    double input_ = -1.0;
    Hit hover_;
    Hit drag_;
    ZPoint grabOffset_;     // from the pointer to the dragged point
    double grabY_ = 0.0;    // where a bend drag began
    double grabBend_ = 0.0; // and the bend it began with
};

} // namespace halvern
