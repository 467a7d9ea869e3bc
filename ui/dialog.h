#pragma once

// Modal dialogs. A dialog is an overlay over the whole root: what lies below is dimmed
// and takes no input, a panel in the theme's style sits in the middle with a title, a
// body and a row of buttons at its bottom right. Escape cancels, Enter takes the default
// button (drawn in the accent colour); clicks beside the panel do nothing.
//
// ShowPrompt, ShowQuestion and ShowMessage are the dialogs most callers need; larger
// dialogs (the file chooser, for one) derive from ZDialog.

#include "ui/controls/button.h"
#include "ui/controls/text_field.h"
#include "ui/ui_root.h"
#include "ui/view.h"
#include "ui/wrapped_text.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace halvern {

// A text field inside a dialog: Enter and Escape go on to the dialog, and every change
// typed into it is reported.
class ZDialogField : public ZTextField {
public:
    explicit ZDialogField(std::string text = {}) : ZTextField(std::move(text)) {}
    void SetOnEdited(std::function<void()> onEdited) { onEdited_ = std::move(onEdited); }
    bool OnKey(const ZKeyEvent& event) override;

private:
    std::function<void()> onEdited_;
};

class ZDialog : public ZView {
public:
    // The panel's size in logical units; a larger size than the root is cut to it.
    ZDialog(std::string title, ZPoint panelSize);

    // Pushes the dialog over everything the root shows and gives it the keyboard.
    template <class Dialog>
    static Dialog* Show(ZUIRoot& root, std::unique_ptr<Dialog> dialog)
    {
        Dialog* raw = dialog.get();
        root.CancelInteraction();
        root.PushOverlay(std::move(dialog), false);
        raw->SetBounds({0, 0, root.logicalWidth(), root.logicalHeight()});
        root.SetFocus(raw->InitialFocus());
        return raw;
    }

    std::string Text() const override { return title_; }
    // Where the panel lies in the root (empty while the dialog is not shown).
    ZRect PanelRect() const;
    // Removes the dialog (safe from inside its own handlers).
    void Close();
    // The button that Enter presses, or null.
    ZButton* defaultButton() const { return default_; }
    // The view that gets the keyboard when the dialog opens (null: the dialog itself).
    virtual ZView* InitialFocus() { return nullptr; }

    void Layout() override;
    // A press on the panel or beside it gives the keyboard back to the initial view.
    bool AcceptsMouse() const override { return true; }
    bool OnMouseDown(const ZMouseEvent& event) override;
    // Escape cancels, Enter presses the default button.
    bool OnKey(const ZKeyEvent& event) override;

protected:
    // A button at the end of the bottom row, named after its label. The first button
    // added is the default one unless SetDefaultButton says otherwise.
    ZButton* AddButton(const std::string& label, std::function<void()> onClick);
    void SetDefaultButton(ZButton* button);
    // What Escape does (closing the dialog unless set).
    void SetOnCancel(std::function<void()> onCancel) { onCancel_ = std::move(onCancel); }
    // Closes the dialog, then runs an action (which may open another dialog); what the
    // action throws shows as a message.
    void Finish(const std::function<void()>& action);
    // The panel's size; dialogs that fit their content work it out here.
    virtual ZPoint PanelSize() const { return panelSize_; }
    // Places the body's views in the panel between the title and the buttons.
    virtual void LayoutBody(const ZRect& /*body*/) {}
    // The bottom row's rectangle, left of the buttons (free for a status line).
    ZRect ButtonRowRemainder() const { return rowRemainder_; }
    void PaintSelf(ZCanvas& canvas) override;

private:
    void layoutButtons(const ZRect& row);

    std::string title_;
    ZPoint panelSize_;
    struct Action {
        ZButton* button;
        std::function<void()> onClick;
    };
    std::vector<Action> buttons_;
    ZButton* default_ = nullptr;
    std::function<void()> onCancel_;
    ZRect rowRemainder_;
};

// A message with a text field prefilled and selected, OK and Cancel. OK or Enter hands
// the text to accepted; Cancel or Escape closes the dialog and nothing else.
class ZPromptDialog : public ZDialog {
public:
    ZPromptDialog(std::string title, std::string message, std::string initialText,
                  std::function<void(std::string)> accepted);
    ZDialogField& field() const { return *field_; }
    ZView* InitialFocus() override { return field_; }

protected:
    ZPoint PanelSize() const override;
    void LayoutBody(const ZRect& body) override;

private:
    ZWrappedText* message_;
    ZDialogField* field_;
};

// A message of one or more paragraphs wrapped to the panel and a row of buttons; the
// index of the button chosen goes to chosen. Enter chooses the first button, Escape
// the last one.
class ZQuestionDialog : public ZDialog {
public:
    ZQuestionDialog(std::string title, std::string message, const std::vector<std::string>& buttons,
                    std::function<void(int)> chosen);

protected:
    ZPoint PanelSize() const override;
    void LayoutBody(const ZRect& body) override;

private:
    ZWrappedText* message_;
};

ZPromptDialog* ShowPrompt(ZUIRoot& root, std::string title, std::string message, std::string initialText,
                          std::function<void(std::string)> accepted);
ZQuestionDialog* ShowQuestion(ZUIRoot& root, std::string title, std::string message,
                              const std::vector<std::string>& buttons, std::function<void(int)> chosen);
// A notice or an error with one "OK" button; closed runs after it is dismissed.
ZQuestionDialog* ShowMessage(ZUIRoot& root, std::string title, std::string message,
                             std::function<void()> closed = {});

// The topmost dialog the root shows, or null.
ZDialog* TopDialog(const ZUIRoot& root);

} // namespace halvern
