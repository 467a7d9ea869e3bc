#include "ui/dialog.h"

#include "ui/panel.h"

#include <algorithm>
#include <cmath>
#include <exception>

namespace halvern {

namespace {

constexpr double kDimAlpha = 0.7;         // how much of the background colour covers what lies below
constexpr double kMinButtonWidth = 84.0;  // buttons of short labels still make a good target
constexpr double kMessageWidth = 420.0;   // the panel of prompts and questions
constexpr double kMaxMessageHeight = 480.0;

} // namespace

// ---- ZDialogField ----

bool ZDialogField::OnKey(const ZKeyEvent& event)
{
    if (event.key == ZKey::Enter || event.key == ZKey::Escape)
        return false;
    const std::string before = Text();
    const bool taken = ZTextField::OnKey(event);
    if (onEdited_ && Text() != before)
        onEdited_();
    return taken;
}

// ---- ZDialog ----

ZDialog::ZDialog(std::string title, ZPoint panelSize) : title_(std::move(title)), panelSize_(panelSize)
{
    SetName(title_ + " dialog");
}

ZRect ZDialog::PanelRect() const
{
    if (root() == nullptr)
        return {};
    const ZPoint size = PanelSize();
    const double width = std::min(size.x, bounds().width), height = std::min(size.y, bounds().height);
    return {std::round(bounds().x + (bounds().width - width) / 2), std::round(bounds().y + (bounds().height - height) / 2),
            width, height};
}

void ZDialog::Close()
{
    if (ZUIRoot* r = root())
        r->RemoveOverlay(this);
}

void ZDialog::Finish(const std::function<void()>& action)
{
    const std::function<void()> kept = action; // the dialog goes once the event is over
    ZUIRoot* r = root();
    Close();
    if (!kept)
        return;
    try {
        kept();
    } catch (const std::exception& error) {
        if (r != nullptr)
            ShowMessage(*r, Text(), error.what());
    }
}

ZButton* ZDialog::AddButton(const std::string& label, std::function<void()> onClick)
{
    ZButton* button = AddChild(std::make_unique<ZButton>(label, onClick));
    button->SetName(label);
    buttons_.push_back({button, std::move(onClick)});
    if (default_ == nullptr)
        SetDefaultButton(button);
    return button;
}

void ZDialog::SetDefaultButton(ZButton* button)
{
    if (default_ != nullptr)
        default_->SetChecked(false);
    default_ = button;
    if (default_ != nullptr)
        default_->SetChecked(true);
}

void ZDialog::Layout()
{
    const ZUIRoot* r = root();
    if (r == nullptr)
        return;
    const ZTheme& theme = r->theme();
    const ZRect panel = PanelRect();
    const double inner = panel.width - 2 * theme.padding;
    const ZRect row{panel.x + theme.padding, panel.bottom() - theme.padding - theme.rowHeight, inner, theme.rowHeight};
    layoutButtons(row);
    const double top = panel.y + ZPanel::kTitleHeight + theme.padding;
    LayoutBody({panel.x + theme.padding, top, inner, row.y - theme.padding - top});
}

void ZDialog::layoutButtons(const ZRect& row)
{
    const ZTheme& theme = root()->theme();
    double right = row.right();
    for (auto it = buttons_.rbegin(); it != buttons_.rend(); ++it) {
        const double width = std::ceil(std::max(it->button->PreferredSize().x, kMinButtonWidth));
        right -= width;
        it->button->SetBounds({right, row.y, width, row.height});
        right -= theme.spacing;
    }
    rowRemainder_ = {row.x, row.y, std::max(0.0, right - row.x), row.height};
}

bool ZDialog::OnMouseDown(const ZMouseEvent&)
{
    if (ZUIRoot* r = root())
        r->SetFocus(InitialFocus());
    return false;
}

bool ZDialog::OnKey(const ZKeyEvent& event)
{
    if (event.key == ZKey::Escape) {
        onCancel_ ? onCancel_() : Close();
        return true;
    }
    if (event.key == ZKey::Enter) {
        const auto found = std::find_if(buttons_.begin(), buttons_.end(),
                                        [this](const Action& action) { return action.button == default_; });
        if (found != buttons_.end() && default_->enabled() && found->onClick)
            found->onClick();
        return true;
    }
    return false;
}

void ZDialog::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& theme = root()->theme();
    canvas.FillRect(bounds(), theme.background.withAlpha(kDimAlpha));
    const ZRect panel = PanelRect();
    ZPanel::PaintFace(canvas, theme, panel, title_, panel.right() - theme.padding);
}

// ---- ZPromptDialog ----

ZPromptDialog::ZPromptDialog(std::string title, std::string message, std::string initialText,
                             std::function<void(std::string)> accepted)
    : ZDialog(std::move(title), {kMessageWidth, 0.0})
{
    message_ = AddChild(std::make_unique<ZWrappedText>(std::move(message)));
    field_ = AddChild(std::make_unique<ZDialogField>(std::move(initialText)));
    field_->SetName("Text");
    field_->SelectAll();
    AddButton("OK", [this, accepted = std::move(accepted)] {
        const std::string text = field_->Text();
        Finish([&] {
            if (accepted)
                accepted(text);
        });
    });
    AddButton("Cancel", [this] { Close(); });
}

ZPoint ZPromptDialog::PanelSize() const
{
    const ZTheme& theme = root()->theme();
    const double inner = kMessageWidth - 2 * theme.padding;
    const double message = message_->HeightForWidth(inner);
    const double body = (message > 0.0 ? message + theme.spacing : 0.0) + theme.rowHeight;
    return {kMessageWidth, ZPanel::kTitleHeight + body + theme.rowHeight + 3 * theme.padding + theme.spacing};
}

void ZPromptDialog::LayoutBody(const ZRect& body)
{
    const ZTheme& theme = root()->theme();
    const double message = message_->HeightForWidth(body.width);
    message_->SetBounds({body.x, body.y, body.width, message});
    const double y = message > 0.0 ? body.y + message + theme.spacing : body.y;
    field_->SetBounds({body.x, y, body.width, theme.rowHeight});
}

// ---- ZQuestionDialog ----

ZQuestionDialog::ZQuestionDialog(std::string title, std::string message, const std::vector<std::string>& buttons,
                                 std::function<void(int)> chosen)
    : ZDialog(std::move(title), {kMessageWidth, 0.0})
{
    message_ = AddChild(std::make_unique<ZWrappedText>(std::move(message)));
    const auto shared = std::make_shared<std::function<void(int)>>(std::move(chosen));
    for (size_t i = 0; i < buttons.size(); ++i)
        AddButton(buttons[i], [this, shared, index = static_cast<int>(i)] {
            Finish([&] {
                if (*shared)
                    (*shared)(index);
            });
        });
    const int last = static_cast<int>(buttons.size()) - 1;
    SetOnCancel([this, shared, last] {
        Finish([&] {
            if (*shared && last >= 0)
                (*shared)(last);
        });
    });
}

ZPoint ZQuestionDialog::PanelSize() const
{
    const ZTheme& theme = root()->theme();
    const double message = std::min(message_->HeightForWidth(kMessageWidth - 2 * theme.padding), kMaxMessageHeight);
    return {kMessageWidth, ZPanel::kTitleHeight + message + theme.rowHeight + 3 * theme.padding + theme.spacing};
}

void ZQuestionDialog::LayoutBody(const ZRect& body)
{
    message_->SetBounds(body);
}

// ---- showing ----

ZPromptDialog* ShowPrompt(ZUIRoot& root, std::string title, std::string message, std::string initialText,
                          std::function<void(std::string)> accepted)
{
    return ZDialog::Show(root, std::make_unique<ZPromptDialog>(std::move(title), std::move(message),
                                                              std::move(initialText), std::move(accepted)));
}

ZQuestionDialog* ShowQuestion(ZUIRoot& root, std::string title, std::string message,
                              const std::vector<std::string>& buttons, std::function<void(int)> chosen)
{
    return ZDialog::Show(root, std::make_unique<ZQuestionDialog>(std::move(title), std::move(message), buttons,
                                                                std::move(chosen)));
}

ZQuestionDialog* ShowMessage(ZUIRoot& root, std::string title, std::string message, std::function<void()> closed)
{
    return ShowQuestion(root, std::move(title), std::move(message), {"OK"}, [closed = std::move(closed)](int) {
        if (closed)
            closed();
    });
}

ZDialog* TopDialog(const ZUIRoot& root)
{
    for (auto it = root.overlays().rbegin(); it != root.overlays().rend(); ++it)
        if (auto* dialog = dynamic_cast<ZDialog*>(it->get()))
            return dialog;
    return nullptr;
}

} // namespace halvern
