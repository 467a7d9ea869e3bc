#include "ui/controls/graph_editor.h"
#include "ui/controls/popup_menu.h"
#include "ui/ui_root.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace halvern {
namespace {

// Straight segments between 2 to 5 points; bends and kinds are only recorded.
class FakeGraph : public ZGraphModel {
public:
    std::vector<ZPoint> points{{0.0, 0.0}, {0.5, 0.5}, {1.0, 1.0}};
    std::vector<double> bends = std::vector<double>(2, 0.0);
    std::vector<int> kinds = std::vector<int>(2, 0);
    std::vector<std::string> kindNames{"Straight", "Steps"};
    int minimum = 2;

    int PointCount() const override { return static_cast<int>(points.size()); }
    ZPoint PointAt(int index) const override { return points[static_cast<size_t>(index)]; }
    double Evaluate(double x) const override
    {
        for (size_t i = 1; i < points.size(); ++i)
            if (x <= points[i].x) {
                const ZPoint a = points[i - 1], b = points[i];
                return b.x > a.x ? a.y + (b.y - a.y) * (x - a.x) / (b.x - a.x) : b.y;
            }
        return points.back().y;
    }
    double SegmentBend(int segment) const override { return bends[static_cast<size_t>(segment)]; }
    std::vector<std::string> SegmentKinds() const override { return kindNames; }
    int SegmentKind(int segment) const override { return kinds[static_cast<size_t>(segment)]; }
    int MinimumPointCount() const override { return minimum; }
    int MaximumPointCount() const override { return 5; }

    void SetPoint(int index, ZPoint point) override { points[static_cast<size_t>(index)] = point; }
    void InsertPoint(int index, ZPoint point) override
    {
        points.insert(points.begin() + index, point);
        bends.insert(bends.begin() + index, 0.0);
        kinds.insert(kinds.begin() + index, 0);
    }
    void RemovePoint(int index) override
    {
        points.erase(points.begin() + index);
        bends.erase(bends.begin() + index - 1);
        kinds.erase(kinds.begin() + index - 1);
    }
    void SetSegmentBend(int segment, double bend) override { bends[static_cast<size_t>(segment)] = bend; }
    void SetSegmentKind(int segment, int kind) override { kinds[static_cast<size_t>(segment)] = kind; }
    void ChangeElsewhere() { NotifyChanged(); }
};

struct GraphFixture {
    ZTheme theme = ZTheme::Default();
    ZUIRoot root{300, 200, 1.0, theme};
    FakeGraph* graph;
    ZGraphEditor* editor;

    GraphFixture()
    {
        auto model = std::make_unique<FakeGraph>();
        graph = model.get();
        auto view = std::make_unique<ZGraphEditor>(std::move(model));
        editor = view.get();
        root.SetContent(std::move(view));
        editor->SetBounds({0, 0, 300, 200});
        root.Paint();
    }
    ZPoint at(double x, double y) const { return editor->ToView({x, y}); }
    void drag(ZPoint from, ZPoint to)
    {
        root.MouseMove({from});
        root.MouseDown({from});
        root.MouseMove({to});
        root.MouseUp({to});
    }
    void doubleClick(ZPoint where)
    {
        root.MouseDown({where});
        root.MouseUp({where});
        root.MouseDown({where, ZMouseButton::Left, kModifierNone, 2});
        root.MouseUp({where});
    }
};

void ExpectPoint(ZPoint actual, double x, double y)
{
    EXPECT_NEAR(actual.x, x, 1e-9);
    EXPECT_NEAR(actual.y, y, 1e-9);
}

TEST(GraphEditor, DraggedPointsStayBetweenTheirNeighboursAndTheEndsKeepTheirX)
{
    GraphFixture f;
    // Grabbed off-centre: no jump. Stopped at a neighbour's x and at the top.
    f.drag({f.at(0.5, 0.5).x + 3, f.at(0.5, 0.5).y}, {f.at(0.7, 0.25).x + 3, f.at(0.7, 0.25).y});
    ExpectPoint(f.graph->points[1], 0.7, 0.25);
    f.graph->InsertPoint(2, {0.8, 0.5});
    f.drag(f.at(0.7, 0.25), f.at(0.95, 0.5));
    ExpectPoint(f.graph->points[1], 0.8, 0.5);
    f.graph->RemovePoint(2);
    f.drag(f.at(0.8, 0.5), {f.editor->bounds().right() + 50, -40});
    ExpectPoint(f.graph->points[1], 1.0, 1.0);
    f.drag(f.at(1.0, 1.0), f.at(0.2, 0.6)); // of the two, the inner point is taken
    ExpectPoint(f.graph->points[1], 0.2, 0.6);
    f.drag(f.at(1.0, 1.0), f.at(0.6, 0.3));
    ExpectPoint(f.graph->points[2], 1.0, 0.3);
    f.drag(f.at(0.0, 0.0), f.at(0.4, 0.8));
    ExpectPoint(f.graph->points[0], 0.0, 0.8);
}

TEST(GraphEditor, DoubleClicksAddPointsInOrderAndRemoveThemWithinTheCounts)
{
    GraphFixture f;
    f.doubleClick(f.at(0.25, 0.75));
    f.doubleClick(f.at(0.75, 0.1));
    ASSERT_EQ(f.graph->PointCount(), 5);
    ExpectPoint(f.graph->points[3], 0.75, 0.1);
    f.doubleClick(f.at(0.9, 0.9)); // full
    EXPECT_EQ(f.graph->PointCount(), 5);
    f.doubleClick(f.at(0.25, 0.75));
    ASSERT_EQ(f.graph->PointCount(), 4);
    ExpectPoint(f.graph->points[1], 0.5, 0.5);
    f.doubleClick(f.at(0.0, 0.0)); // an end stays
    f.doubleClick(f.at(0.5, 0.5));
    ASSERT_EQ(f.graph->PointCount(), 3);
    f.graph->minimum = 3;
    f.doubleClick(f.at(0.75, 0.1));
    ASSERT_EQ(f.graph->PointCount(), 3);
    f.graph->minimum = 2;
    f.doubleClick(f.at(0.75, 0.1));
    EXPECT_EQ(f.graph->PointCount(), 2);
}

TEST(GraphEditor, SegmentsBendByVerticalDragsAndTakeTheirKindFromTheMenu)
{
    GraphFixture f;
    const double halfHeight = f.editor->PlotRect().height / 2;
    f.drag(f.at(0.25, 0.25), {f.at(0.25, 0.25).x, f.at(0.25, 0.25).y - halfHeight / 2});
    EXPECT_NEAR(f.graph->bends[0], 0.5, 1e-9);
    f.drag(f.at(0.75, 0.75), {f.at(0.75, 0.75).x + 20, f.at(0.75, 0.75).y + 4 * halfHeight});
    EXPECT_EQ(f.graph->bends[1], -1.0);
    ExpectPoint(f.graph->points[1], 0.5, 0.5);
    f.drag(f.at(0.25, 0.9), f.at(0.25, 0.1));
    EXPECT_NEAR(f.graph->bends[0], 0.5, 1e-9);
    f.root.MouseDown({f.at(0.75, 0.2), ZMouseButton::Right});
    auto* menu = dynamic_cast<ZPopupMenu*>(f.root.overlays().back().get());
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->items().size(), 2u);
    EXPECT_TRUE(menu->items()[0].checked);
    EXPECT_TRUE(menu->Choose(1));
    EXPECT_EQ(f.graph->kinds, (std::vector<int>{0, 1}));
    f.root.DismissOverlays();
    f.graph->kindNames = {"Curve"}; // nothing to choose: no menu
    f.root.MouseDown({f.at(0.75, 0.2), ZMouseButton::Right});
    EXPECT_FALSE(f.root.HasOverlays());
}

TEST(GraphEditor, RepaintsForChangesElsewhereAndForTheMovingInput)
{
    GraphFixture f;
    double input = 0.3;
    f.editor->SetInputSource([&] { return input; });
    f.root.Paint();
    f.root.Tick(1.0);
    EXPECT_TRUE(f.root.Paint().empty()); // the input did not move
    input = 0.6;
    f.root.Tick(2.0);
    EXPECT_FALSE(f.root.Paint().empty());
    f.graph->points[1].y = 0.9;
    f.graph->ChangeElsewhere();
    EXPECT_FALSE(f.root.Paint().empty());
}

} // namespace
} // namespace halvern
