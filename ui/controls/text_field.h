#pragma once

// ZTextField: one line of editable text. A caret and a selection (Shift with the
// arrows, Home and End, or a drag), typed characters replace the selection, Backspace
// and Delete remove a character or the selection; Enter offers the text to the commit
// handler and Escape calls the cancel handler. A text the commit handler refuses shows
// the field in its error state until the text changes. Offsets are bytes of UTF-8, always
// at character boundaries.

#include "ui/view.h"

#include <cstddef>
#include <functional>
#include <string>

namespace halvern {

class ZTextField : public ZView {
public:
    // Answers whether the text is taken.
    using CommitHandler = std::function<bool(const std::string& text)>;
    using CancelHandler = std::function<void()>;

    explicit ZTextField(std::string text = {});

    // Replaces the text; the caret goes to its end and the error state is cleared.
    void SetText(std::string utf8);
    std::string Text() const override { return text_; }
    void SelectAll();
    void SetOnCommit(CommitHandler handler) { onCommit_ = std::move(handler); }
    void SetOnCancel(CancelHandler handler) { onCancel_ = std::move(handler); }

    size_t caret() const { return caret_; }
    bool hasSelection() const { return anchor_ != caret_; }
    std::string SelectedText() const;
    bool hasError() const { return error_; }

    bool AcceptsMouse() const override { return true; }
    bool AcceptsFocus() const override { return true; }
    bool OnMouseDown(const ZMouseEvent& event) override;
    void OnMouseDrag(const ZMouseEvent& event) override;
    bool OnKey(const ZKeyEvent& event) override;
    // Leaving the field after editing it commits the text, as Enter does.
    void OnFocusChanged(bool focused) override;
    ZCursor Cursor() const override { return ZCursor::Text; }

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    bool focused() const;
    ZRect textRect() const;
    // The character boundary nearest to a point's x.
    size_t offsetAt(ZPoint point) const;
    void moveCaret(size_t offset, bool extendSelection);
    void replaceSelection(const std::string& utf8);
    void erase(size_t from, size_t to);
    void commit();
    void changed();

    std::string text_;
    size_t caret_ = 0;
    size_t anchor_ = 0;  // the other end of the selection
    double scroll_ = 0.0; // how far the text is moved left to keep the caret in view
    bool error_ = false;
    bool edited_ = false; // changed since the last commit
    CommitHandler onCommit_;
    CancelHandler onCancel_;
};

} // namespace halvern
