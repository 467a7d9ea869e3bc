#include "ui/box_layout.h"
#include "ui/controls/button.h"
#include "ui/controls/enum_menu.h"
#include "ui/controls/knob.h"
#include "ui/controls/label.h"
#include "ui/controls/list_view.h"
#include "ui/controls/popup_menu.h"
#include "ui/controls/scroll_area.h"
#include "ui/controls/slider.h"
#include "ui/controls/switch.h"
#include "ui/controls/text_field.h"
#include "ui/controls/xy_pad.h"
#include "ui/grid_layout.h"
#include "ui/ui_root.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace halvern {
namespace {

// A value from 0 to 10 s (or an enumeration, or On/Off) that records every gesture breach.
class FakeBinding : public ZParameterBinding {
public:
    FakeBinding(double value, double defaultValue, int steps = 0, std::vector<std::string> items = {})
        : value_(value), default_(defaultValue), steps_(steps), items_(std::move(items))
    {
    }

    std::string Name() const override { return "Decay"; }
    std::string HelpText() const override { return "<p>How long the tail lasts.</p>"; }
    double Value() const override { return value_; }
    double DefaultValue() const override { return default_; }
    int StepCount() const override { return steps_; }
    std::vector<std::string> ItemNames() const override { return items_; }

    std::string DisplayText(double v) const override
    {
        if (!items_.empty())
            return items_[std::lround(v * steps_)];
        if (steps_ == 1)
            return v >= 0.5 ? "On" : "Off";
        char text[32];
        std::snprintf(text, sizeof text, "%.2f s", v * 10.0);
        return text;
    }
    std::optional<double> Parse(const std::string& text) const override
    {
        char* end = nullptr;
        const double seconds = std::strtod(text.c_str(), &end);
        const std::string rest = end;
        if (end == text.c_str() || (rest != "" && rest != " s" && rest != "s"))
            return std::nullopt;
        return seconds / 10.0;
    }

    void BeginEdit() override
    {
        calls.push_back("begin");
        breaches += open_ ? 1 : 0;
        open_ = true;
    }
    void SetValue(double normalized) override
    {
        calls.push_back("set");
        breaches += open_ ? 0 : 1;
        value_ = normalized;
    }
    void EndEdit() override
    {
        calls.push_back("end");
        breaches += open_ ? 0 : 1;
        open_ = false;
    }

    bool balanced() const { return !open_ && breaches == 0; }
    int gestures() const { return static_cast<int>(std::count(calls.begin(), calls.end(), "begin")); }

    double value_;
    double default_;
    int steps_;
    std::vector<std::string> items_;
    std::vector<std::string> calls;
    int breaches = 0;

private:
    bool open_ = false;
};

class UiControls : public ::testing::Test {
protected:
    UiControls() { root.SetContent(std::make_unique<ZView>()); }

    template <class View>
    View* Place(std::unique_ptr<View> view, ZRect bounds)
    {
        View* raw = root.content()->AddChild(std::move(view));
        raw->SetBounds(bounds);
        return raw;
    }

    void Press(ZPoint at, unsigned modifiers = kModifierNone, ZMouseButton button = ZMouseButton::Left, int clicks = 1)
    {
        root.MouseDown({at, button, modifiers, clicks});
    }
    void Move(ZPoint to, unsigned modifiers = kModifierNone) { root.MouseMove({to, ZMouseButton::Left, modifiers, 1}); }
    void Release(ZPoint at) { root.MouseUp({at, ZMouseButton::Left, kModifierNone, 1}); }
    void Click(ZPoint at, int clicks = 1)
    {
        Press(at, kModifierNone, ZMouseButton::Left, clicks);
        Release(at);
    }
    void Type(const std::string& text) { root.Key({ZKey::Character, text, kModifierNone}); }
    void Key(ZKey key, unsigned modifiers = kModifierNone) { root.Key({key, {}, modifiers}); }

    template <class View>
    View* TopOverlay()
    {
        return root.overlays().empty() ? nullptr : dynamic_cast<View*>(root.overlays().back().get());
    }
    // Clicks the item of the open popup menu with that text.
    void ChooseFromMenu(const std::string& text)
    {
        auto* menu = TopOverlay<ZPopupMenu>();
        ASSERT_NE(menu, nullptr);
        for (int i = 0; i < static_cast<int>(menu->items().size()); ++i)
            if (menu->items()[i].text == text)
                return Click(menu->ItemRect(i).center());
        FAIL() << "no item " << text;
    }

    ZTheme theme = ZTheme::Default();
    ZUIRoot root{400, 300, 1.0, theme};
};

TEST_F(UiControls, KnobDragsRelativeToThePressWithFineStepsWheelAndReset)
{
    auto binding = std::make_shared<FakeBinding>(0.25, 0.6);
    auto* knob = Place(std::make_unique<ZKnob>(binding), {50, 50, 62, 78});
    const ZPoint start = knob->DialRect().center();
    Press(start);
    for (int dy = 10; dy <= 100; dy += 10)
        Move({start.x + 7, start.y - dy});
    EXPECT_NEAR(binding->value_, 0.75, 1e-9); // 100 of 200 px: half the range
    Move({start.x, start.y - 60}, kModifierShift);
    EXPECT_NEAR(binding->value_, 0.75 - 0.02, 1e-9); // 40 px down at a tenth
    Release({start.x, start.y - 60});
    EXPECT_EQ(binding->gestures(), 1);
    EXPECT_TRUE(binding->balanced());
    // Past the top the value stays at 1 and comes down as soon as the pointer does.
    Press(start);
    Move({start.x, start.y - 400});
    EXPECT_EQ(binding->value_, 1.0);
    Move({start.x, start.y - 380});
    EXPECT_NEAR(binding->value_, 0.9, 1e-9);
    Release(start);
    binding->value_ = 0.5;
    root.Wheel({start, 1.0, kModifierNone});
    EXPECT_NEAR(binding->value_, 0.5 + theme.wheelStep, 1e-9);
    root.Wheel({start, -1.0, kModifierShift});
    EXPECT_NEAR(binding->value_, 0.5 + theme.wheelStep * (1 - theme.fineFactor), 1e-9);
    // A stepped value moves one step per notch and a drag lands on steps.
    binding->steps_ = 4;
    binding->value_ = 0.5;
    root.Wheel({start, -1.0, kModifierNone});
    EXPECT_DOUBLE_EQ(binding->value_, 0.25);
    Press(start);
    Move({start.x, start.y - 20}); // 0.1 of the range: still nearest 0.25
    EXPECT_DOUBLE_EQ(binding->value_, 0.25);
    Move({start.x, start.y - 60}); // 0.3: nearest step is 0.5
    EXPECT_DOUBLE_EQ(binding->value_, 0.5);
    Release(start);
    // A double click resets; a change from outside repaints at the next tick.
    binding->steps_ = 0;
    Click(start);
    Click(start, 2);
    EXPECT_DOUBLE_EQ(binding->value_, 0.6);
    EXPECT_TRUE(binding->balanced());
    root.Tick(0.5);
    root.Paint();
    root.Tick(1.0);
    EXPECT_FALSE(root.canvas().HasDirty());
    binding->value_ = 0.9;
    root.Tick(1.1);
    EXPECT_TRUE(root.canvas().HasDirty());
    EXPECT_EQ(knob->Text(), "9.00 s");
}

TEST_F(UiControls, SliderFollowsThePointerHorizontally)
{
    auto binding = std::make_shared<FakeBinding>(0.2, 0.5);
    auto* slider = Place(std::make_unique<ZSlider>(binding), {100, 100, 212, 30});
    const ZRect track = slider->TrackRect();
    ASSERT_DOUBLE_EQ(track.width, 200.0);
    const ZPoint at{track.x + 40, track.y};
    Press(at);
    Move({at.x + 50, at.y - 30});
    EXPECT_NEAR(binding->value_, 0.45, 1e-9);
    Release(at);
    EXPECT_TRUE(binding->balanced());
}

TEST_F(UiControls, TypedValueThroughTheContextMenu)
{
    auto binding = std::make_shared<FakeBinding>(0.25, 0.5);
    auto* knob = Place(std::make_unique<ZKnob>(binding), {50, 50, 62, 78});
    const ZPoint at = knob->DialRect().center();
    Press(at, kModifierNone, ZMouseButton::Right);
    ChooseFromMenu("Type a value\u2026");
    auto* field = TopOverlay<ZTextField>();
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->Text(), "2.50 s");
    Type("7.5 s"); // replaces the selected text
    Key(ZKey::Enter);
    EXPECT_DOUBLE_EQ(binding->value_, 0.75);
    EXPECT_EQ(binding->gestures(), 1);
    Press(at, kModifierNone, ZMouseButton::Right);
    ChooseFromMenu("Type a value\u2026");
    field = TopOverlay<ZTextField>();
    Type("fast");
    Key(ZKey::Enter);
    EXPECT_TRUE(field->hasError());
    EXPECT_EQ(TopOverlay<ZTextField>(), field);
    Key(ZKey::Backspace);
    EXPECT_FALSE(field->hasError());
    Key(ZKey::Escape);
    EXPECT_FALSE(root.HasOverlays());
    EXPECT_DOUBLE_EQ(binding->value_, 0.75);
    EXPECT_EQ(binding->gestures(), 1);
    Press(at, kModifierNone, ZMouseButton::Right);
    ChooseFromMenu("Copy value");
    EXPECT_EQ(root.clipboard().Text(), "7.50 s");
    root.clipboard().SetText("1 s");
    Press(at, kModifierNone, ZMouseButton::Right);
    ChooseFromMenu("Paste value");
    EXPECT_DOUBLE_EQ(binding->value_, 0.1);
    Press(at, kModifierNone, ZMouseButton::Right);
    ChooseFromMenu("Default");
    EXPECT_DOUBLE_EQ(binding->value_, 0.5);
    EXPECT_EQ(binding->gestures(), 3);
    EXPECT_TRUE(binding->balanced());
}

TEST_F(UiControls, GesturesEndWhenTheCaptureIsLostOrTheControlGoes)
{
    auto knobBinding = std::make_shared<FakeBinding>(0.5, 0.5);
    auto* knob = Place(std::make_unique<ZKnob>(knobBinding), {50, 50, 62, 78});
    const ZPoint at = knob->DialRect().center();
    Press(at);
    Move({at.x, at.y - 20});
    root.CancelInteraction();
    EXPECT_TRUE(knobBinding->balanced());
    const size_t calls = knobBinding->calls.size();
    Move({at.x, at.y - 40});
    Release(at);
    EXPECT_EQ(knobBinding->calls.size(), calls) << "nothing after the capture was lost";
    auto xBinding = std::make_shared<FakeBinding>(0.5, 0.5), yBinding = std::make_shared<FakeBinding>(0.5, 0.5);
    auto* pad = Place(std::make_unique<ZXYPad>(xBinding, yBinding), {200, 50, 112, 112});
    Press(pad->HandlePosition());
    Move({250, 60});
    root.content()->ClearChildren(); // the editor is rebuilt mid-drag
    EXPECT_TRUE(xBinding->balanced());
    EXPECT_TRUE(yBinding->balanced());
    EXPECT_EQ(root.captured(), nullptr);
}

TEST_F(UiControls, SwitchToggleAndEnumMenuChoice)
{
    auto onOff = std::make_shared<FakeBinding>(0.0, 0.0, 1);
    auto* toggle = Place(std::make_unique<ZSwitch>(onOff), {20, 20, 120, 22});
    Click(toggle->bounds().center());
    EXPECT_EQ(toggle->Text(), "On");
    Click(toggle->bounds().center(), 2); // each click of a double click toggles
    EXPECT_EQ(toggle->Text(), "Off");
    EXPECT_EQ(onOff->gestures(), 2);
    EXPECT_TRUE(onOff->balanced());
    auto mode = std::make_shared<FakeBinding>(1.0 / 3, 0.0, 3, std::vector<std::string>{"Hall", "Room", "Plate", "Spring"});
    auto* menu = Place(std::make_unique<ZEnumMenu>(mode), {20, 60, 120, 22});
    EXPECT_EQ(menu->Text(), "Room");
    Click(menu->bounds().center());
    auto* popup = TopOverlay<ZPopupMenu>();
    ASSERT_NE(popup, nullptr);
    ASSERT_EQ(popup->items().size(), 4u);
    EXPECT_TRUE(popup->items()[1].checked);
    ChooseFromMenu("Plate");
    EXPECT_DOUBLE_EQ(mode->value_, 2.0 / 3);
    root.Wheel({menu->bounds().center(), 1.0, kModifierNone});
    EXPECT_EQ(menu->Text(), "Spring");
    EXPECT_EQ(mode->gestures(), 2);
    EXPECT_TRUE(mode->balanced());
}

TEST_F(UiControls, XYPadMovesBothValuesInOneGestureEach)
{
    auto x = std::make_shared<FakeBinding>(0.5, 0.2), y = std::make_shared<FakeBinding>(0.5, 0.8);
    auto* pad = Place(std::make_unique<ZXYPad>(x, y), {100, 100, 100 + 2 * theme.handleRadius,
                                                       100 + 2 * theme.handleRadius});
    const ZPoint handle = pad->HandlePosition();
    Press({handle.x + 2, handle.y + 2}); // on the handle: it does not jump
    EXPECT_DOUBLE_EQ(x->value_, 0.5);
    EXPECT_DOUBLE_EQ(y->value_, 0.5);
    Move({handle.x + 27, handle.y - 23});
    EXPECT_NEAR(x->value_, 0.75, 1e-9);
    EXPECT_NEAR(y->value_, 0.75, 1e-9); // up is more
    Release({handle.x, handle.y});
    EXPECT_EQ(x->gestures(), 1);
    EXPECT_EQ(y->gestures(), 1);
    Press({pad->bounds().x, pad->bounds().bottom() - 1}); // elsewhere: it goes there
    EXPECT_DOUBLE_EQ(x->value_, 0.0);
    EXPECT_DOUBLE_EQ(y->value_, 0.0);
    Release({0, 0});
    EXPECT_TRUE(x->balanced());
    EXPECT_TRUE(y->balanced());
}

TEST_F(UiControls, PopupMenuChoosesDismissesAndStaysInside)
{
    int chosen = -1;
    std::vector<ZMenuItem> items(3);
    items[0] = {.text = "First", .action = [&] { chosen = 0; }};
    items[1] = {.text = "Disabled", .action = [&] { chosen = 1; }, .enabled = false};
    items[2] = {.text = "Third", .action = [&] { chosen = 2; }};
    auto* menu = ZPopupMenu::Show(root, items, {390, 290, 0, 0});
    EXPECT_TRUE(ZRect({0, 0, 400, 300}).contains(menu->bounds()));
    Click(menu->ItemRect(1).center());
    EXPECT_EQ(chosen, -1);
    Move(menu->ItemRect(2).center());
    EXPECT_EQ(menu->highlighted(), 2);
    Click({10, 10}); // outside
    EXPECT_FALSE(root.HasOverlays());
    EXPECT_EQ(chosen, -1);
    ZPopupMenu::Show(root, items, {10, 10, 0, 0});
    Key(ZKey::Escape);
    EXPECT_FALSE(root.HasOverlays());
    ZPopupMenu::Show(root, items, {10, 10, 0, 0});
    Key(ZKey::Up); // wraps to the last enabled item
    Key(ZKey::Enter);
    EXPECT_EQ(chosen, 2);
    EXPECT_FALSE(root.HasOverlays());
}

TEST_F(UiControls, TextFieldEditsByCharacter)
{
    std::string committed;
    bool cancelled = false;
    auto* field = Place(std::make_unique<ZTextField>("a\u00e9b"), {20, 20, 200, 22});
    field->SetOnCommit([&](const std::string& text) {
        committed = text;
        return true;
    });
    field->SetOnCancel([&] { cancelled = true; });
    Click({field->bounds().x + 1, field->bounds().center().y});
    EXPECT_EQ(root.focused(), field);
    EXPECT_EQ(field->caret(), 0u);
    Key(ZKey::End);
    Key(ZKey::Left);
    Key(ZKey::Backspace); // the two bytes of é go together
    EXPECT_EQ(field->Text(), "ab");
    Type("\u00fc");
    EXPECT_EQ(field->Text(), "a\u00fcb");
    Key(ZKey::Home, kModifierShift);
    EXPECT_EQ(field->SelectedText(), "a\u00fc");
    Type("x");
    Key(ZKey::Delete);
    EXPECT_EQ(field->Text(), "x");
    Key(ZKey::Enter);
    EXPECT_EQ(committed, "x");
    Key(ZKey::Escape);
    EXPECT_TRUE(cancelled);
    // Edited and left without Enter: the text is committed all the same.
    Type("y");
    root.SetFocus(nullptr);
    EXPECT_EQ(committed, "xy");
}

TEST_F(UiControls, ButtonClicksOnlyOnReleaseOverIt)
{
    int clicks = 0;
    auto* button = Place(std::make_unique<ZButton>("Save", [&] { ++clicks; }), {20, 20, 80, 22});
    Press(button->bounds().center());
    Move({300, 200});
    Release({300, 200});
    EXPECT_EQ(clicks, 0);
    button->SetToggles(true);
    Click(button->bounds().center());
    EXPECT_EQ(clicks, 1);
    EXPECT_TRUE(button->checked());
}

TEST_F(UiControls, ListAndScrollAreaScrollWithTheWheel)
{
    int selected = -1;
    auto* list = Place(std::make_unique<ZListView>(), {20, 20, 150, 5 * theme.rowHeight});
    std::vector<std::string> rows;
    for (int i = 0; i < 20; ++i)
        rows.push_back("Preset " + std::to_string(i));
    list->SetRows(rows);
    list->SetOnSelect([&](int row) { selected = row; });
    Click(list->RowRect(2).center());
    EXPECT_EQ(list->Text(), "Preset 2");
    root.Wheel({list->bounds().center(), -100.0, kModifierNone});
    EXPECT_DOUBLE_EQ(list->scrollOffset(), 15 * theme.rowHeight) << "stops at the last row";
    Click(list->RowRect(19).center());
    EXPECT_EQ(selected, 19);
    auto* area = Place(std::make_unique<ZScrollArea>(), {200, 20, 150, 100});
    auto* content = area->SetContent(std::make_unique<ZBoxLayout>(ZOrientation::Vertical));
    area->SetContentHeight(300);
    auto* label = content->Add(std::make_unique<ZLabel>("Top"), ZBoxItem::Fixed(250));
    auto* button = content->Add(std::make_unique<ZButton>("Bottom"), ZBoxItem::Stretch());
    EXPECT_DOUBLE_EQ(button->bounds().y, 270);
    EXPECT_EQ(root.content()->HitTest({210, 290}), nullptr) << "content outside the viewport is clipped";
    root.Wheel({area->bounds().center(), -1.0, kModifierNone});
    EXPECT_DOUBLE_EQ(area->scrollOffset(), theme.wheelScroll);
    EXPECT_DOUBLE_EQ(label->bounds().y, 20 - theme.wheelScroll);
    root.Wheel({area->bounds().center(), -10.0, kModifierNone});
    EXPECT_DOUBLE_EQ(area->scrollOffset(), 200);
    EXPECT_EQ(root.content()->HitTest({210, 100}), button);
    EXPECT_LE(content->bounds().right(), area->bounds().right() - theme.scrollBarWidth);
}

void ExpectNoOverlaps(const ZView& container)
{
    const auto& children = container.children();
    for (size_t i = 0; i < children.size(); ++i) {
        EXPECT_TRUE(container.bounds().contains(children[i]->bounds())) << "child " << i;
        for (size_t j = i + 1; j < children.size(); ++j)
            EXPECT_FALSE(children[i]->bounds().intersects(children[j]->bounds())) << i << " and " << j;
    }
}

TEST(UiLayout, BoxSharesTheRestByWeightAndSkipsHiddenChildren)
{
    ZBoxLayout box(ZOrientation::Horizontal, 8, 10);
    auto* fixed = box.Add(std::make_unique<ZView>(), ZBoxItem::Fixed(50));
    auto* one = box.Add(std::make_unique<ZView>(), ZBoxItem::Stretch(1));
    auto* hidden = box.Add(std::make_unique<ZView>(), ZBoxItem::Fixed(40));
    hidden->SetVisible(false);
    auto* two = box.Add(std::make_unique<ZView>(), ZBoxItem::Stretch(2));
    box.SetBounds({0, 0, 327, 40});
    // 307 inside the padding, less 50 fixed and two spacings: 241 shared 1:2.
    EXPECT_DOUBLE_EQ(one->bounds().x, 68);
    EXPECT_NEAR(one->bounds().width, 241.0 / 3, 0.5);
    EXPECT_NEAR(two->bounds().right(), 317, 1e-9);
    EXPECT_DOUBLE_EQ(two->bounds().height, 20);
    for (const ZView* view : {fixed, one, two})
        EXPECT_EQ(view->bounds().x, std::round(view->bounds().x));
    hidden->SetVisible(true);
    box.Layout();
    ExpectNoOverlaps(box);
    EXPECT_DOUBLE_EQ(box.PreferredSize().x, 50 + 40 + 3 * 8 + 2 * 10);
}

TEST(UiLayout, GridPlacesCellsRowByRow)
{
    ZGridLayout grid(3, 4, 6);
    for (int i = 0; i < 7; ++i)
        grid.AddChild(std::make_unique<ZView>());
    grid.SetColumnWidths({100});
    grid.SetBounds({0, 0, 320, 112});
    EXPECT_EQ(grid.rows(), 3);
    ExpectNoOverlaps(grid);
    const auto cell = [&](int i) { return grid.children()[i]->bounds(); };
    EXPECT_DOUBLE_EQ(cell(1).x, 110);
    EXPECT_DOUBLE_EQ(cell(2).right(), 314);
    EXPECT_DOUBLE_EQ(cell(3).y, cell(0).bottom() + 4);
    EXPECT_DOUBLE_EQ(cell(6).bottom(), 106);
}

} // namespace
} // namespace halvern
