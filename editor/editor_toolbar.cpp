#include "editor/editor_toolbar.h"

#include "ui/controls/button.h"
#include "ui/controls/popup_menu.h"
#include "ui/ui_root.h"

namespace halvern {
namespace {

constexpr double kButtonHeight = 24.0;
constexpr double kGap = 6.0;

} // namespace

ZEditorToolbar::ZEditorToolbar(std::unique_ptr<ZView> slots, ZToolbarActions actions)
    : actions_(std::move(actions))
{
    SetName("Toolbar");
    slots_ = AddChild(std::move(slots));
    using Kind = ZModulatorSelection::Kind;
    const struct {
        Kind kind;
        const char* text;
        const char* name;
        const char* help;
    } pages[] = {
        {Kind::Morph, "Morph", "MorphPage", "Opens the ABCD pad, which blends slots A, B, C and D."},
        {Kind::Equalizer, "Equalizer", "EqualizerPage", "Opens the equalizer's curve with the analyser of the reverb's output."},
        {Kind::Decay, "Decay", "DecayPage", "Opens the decay display: how the current settings die away, per octave."},
        {Kind::MIDI, "MIDI", "MIDI", "Opens the MIDI settings: controllers, note controllers and MIDI learn."},
    };
    for (const auto& page : pages)
        pages_.push_back({page.kind, addButton(page.text, page.name, page.help,
                                               [this, kind = page.kind] { actions_.togglePage(kind); })});
    modulators_ = addButton("Modulators", "Modulators", "The modulators' menu.", {});
    modulators_->SetOnClick([this] { actions_.openModulatorsMenu(modulators_->bounds()); });
    undo_ = addButton("Undo", "Undo", "Takes back the last change (Ctrl+Z).", [this] { actions_.undo(); });
    redo_ = addButton("Redo", "Redo", "Makes the change taken back again (Ctrl+Shift+Z).", [this] { actions_.redo(); });
}

ZButton* ZEditorToolbar::addButton(const std::string& text, const std::string& name, const std::string& help,
                                   std::function<void()> onClick)
{
    ZButton* button = AddChild(std::make_unique<ZButton>(text, std::move(onClick)));
    button->SetName(name);
    button->SetHelpText(help);
    return button;
}

void ZEditorToolbar::Layout()
{
    const ZRect& b = bounds();
    const double y = b.y + (b.height - kButtonHeight) / 2;
    double x = b.x + 16;
    slots_->SetBounds({x, y, slots_->PreferredSize().x, kButtonHeight});
    x = slots_->bounds().right() + 40;
    for (const PageButton& page : pages_) {
        const double width = page.button->PreferredSize().x + 12;
        page.button->SetBounds({x, y, width, kButtonHeight});
        x += width + kGap;
    }
    modulators_->SetBounds({x, y, modulators_->PreferredSize().x + 12, kButtonHeight});
    double right = b.right() - 10;
    for (ZButton* button : {redo_, undo_}) {
        const double width = button->PreferredSize().x + 12;
        right -= width;
        button->SetBounds({right, y, width, kButtonHeight});
        right -= kGap;
    }
}

void ZEditorToolbar::Refresh()
{
    const ZModulatorSelection::Kind open = actions_.openPage();
    for (const PageButton& page : pages_)
        page.button->SetChecked(page.kind == open);
    undo_->SetEnabled(actions_.canUndo());
    redo_->SetEnabled(actions_.canRedo());
}

bool ZEditorToolbar::OnMouseDown(const ZMouseEvent& event)
{
    if (event.button != ZMouseButton::Right || root() == nullptr)
        return false;
    std::vector<ZMenuItem> items;
    items.push_back({.text = "Undo", .action = actions_.undo, .enabled = actions_.canUndo()});
    items.push_back({.text = "Redo", .action = actions_.redo, .enabled = actions_.canRedo()});
    ZPopupMenu::Show(*root(), std::move(items), {event.position.x, event.position.y, 1, 1});
    return true;
}

void ZEditorToolbar::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& theme = root()->theme();
    const ZRect& b = bounds();
    canvas.FillRect(b, theme.background);
    canvas.Line({b.x, b.bottom() - 0.5}, {b.right(), b.bottom() - 0.5}, theme.panelBorder, 1);
}

} // namespace halvern
