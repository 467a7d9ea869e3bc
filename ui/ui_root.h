#pragma once

// ZUIRoot: one editor's tree of views and everything that is not a single view's: the
// canvas, which view has the mouse (capture and hover) and the keyboard (focus),
// overlays above the content (popup menus, text entry, tooltips), timers, the
// clipboard and the cursor. The window feeds it events and uploads what it repaints; the
// tests and the off-screen renderer drive it without any window.

#include "ui/canvas.h"
#include "ui/clipboard.h"
#include "ui/events.h"
#include "ui/theme.h"
#include "ui/view.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace halvern {

class ZUIRoot {
public:
    // A root of the given logical size drawn at the scale factor.
    ZUIRoot(double logicalWidth, double logicalHeight, double scale, const ZTheme& theme);
    ~ZUIRoot();
    ZUIRoot(const ZUIRoot&) = delete;
    ZUIRoot& operator=(const ZUIRoot&) = delete;

    const ZTheme& theme() const { return theme_; }

    // ---- content ----
    void SetContent(std::unique_ptr<ZView> content);
    ZView* content() const { return content_.get(); }
    double logicalWidth() const { return logicalWidth_; }
    double logicalHeight() const { return logicalHeight_; }
    // A new scale factor: the canvas is made again at logical size times scale.
    void SetScale(double scale);
    double scale() const { return scale_; }
    ZCanvas& canvas() { return *canvas_; }

    // ---- drawing ----
    void Invalidate(const ZRect& rect);
    void InvalidateAll();
    // Repaints what is dirty; returns the repainted rectangles in device pixels.
    std::vector<ZRect> Paint();

    // ---- input (logical units) ----
    void MouseDown(const ZMouseEvent& event);
    void MouseMove(const ZMouseEvent& event); // a drag while a view has the capture
    void MouseUp(const ZMouseEvent& event);
    void MouseLeft(); // the pointer left the window
    void Wheel(const ZWheelEvent& event);
    // True when a view took the key.
    bool Key(const ZKeyEvent& event);
    // Ends any drag in progress as if cancelled (window closing, focus lost).
    void CancelInteraction();
    ZView* captured() const { return captured_; }
    ZView* hovered() const { return hovered_; }

    // ---- focus ----
    void SetFocus(ZView* view);
    ZView* focused() const { return focused_; }

    // ---- overlays, drawn above the content in the order pushed ----
    // The topmost overlay gets the mouse first; a press outside every overlay dismisses
    // the dismissable ones and is not passed on.
    ZView* PushOverlay(std::unique_ptr<ZView> overlay, bool dismissOnOutsideClick = true);
    // Removes an overlay (safe to call from inside its own handlers: it is destroyed
    // after the event in progress).
    void RemoveOverlay(ZView* overlay);
    void DismissOverlays();
    bool HasOverlays() const;
    const std::vector<std::unique_ptr<ZView>>& overlays() const { return overlays_; }

    // ---- timers ----
    // Advances to a time in seconds: runs timers that are due, refreshes every view,
    // shows the tooltip of a view hovered long enough.
    void Tick(double nowSeconds);
    // Calls the function every interval seconds until the returned id is removed.
    int AddTimer(double intervalSeconds, std::function<void()> function);
    void RemoveTimer(int id);

    // ---- services ----
    void SetClipboard(ZClipboard* clipboard) { clipboard_ = clipboard ? clipboard : &memoryClipboard_; }
    ZClipboard& clipboard() { return *clipboard_; }
    ZCursor cursor() const { return cursor_; }
    // Called with the help text of the view the pointer rests on (empty when none).
    void SetHelpListener(std::function<void(const std::string&)> listener) { helpListener_ = std::move(listener); }
    // Builds the tooltip view for a help text; set by whoever renders markup.
    using TooltipFactory = std::function<std::unique_ptr<ZView>(const std::string& help, ZPoint at, const ZUIRoot&)>;
    void SetTooltipFactory(TooltipFactory factory) { tooltipFactory_ = std::move(factory); }
    static constexpr double kTooltipDelay = 0.6; // seconds of rest before a tooltip shows
    // Called after every button release, wheel turn and key press that the user makes:
    // whatever the user changed, the change is complete then.
    void SetInteractionListener(std::function<void()> listener) { interactionListener_ = std::move(listener); }
    // Offered every key that neither the focused view nor an overlay took (shortcuts).
    void SetShortcutHandler(std::function<bool(const ZKeyEvent&)> handler) { shortcutHandler_ = std::move(handler); }

    // Called by views being destroyed, so the root forgets them.
    void Forget(ZView* view);
    // Destroys a view taken out of the tree once the event in progress is over (it may be
    // the view handling it); until then it gets no events.
    void Dispose(std::unique_ptr<ZView> view);

private:
    struct Timer {
        int id;
        double interval;
        double due;
        std::function<void()> function;
    };

    ZView* hitTest(ZPoint point, bool& outsideOverlays);
    void setHovered(ZView* view);
    void hideTooltip();
    void destroyDisposed();
    void updateCursor();

    const ZTheme& theme_;
    double logicalWidth_;
    double logicalHeight_;
    double scale_;
    std::unique_ptr<ZCanvas> canvas_;
    std::unique_ptr<ZView> content_;
    std::vector<std::unique_ptr<ZView>> overlays_;
    std::vector<bool> overlayDismissable_;
    std::vector<std::unique_ptr<ZView>> disposed_; // destroyed when the event in progress ends
    ZView* captured_ = nullptr;
    ZView* hovered_ = nullptr;
    ZView* focused_ = nullptr;
    ZView* tooltip_ = nullptr;
    ZPoint lastPointer_;
    double now_ = 0.0;
    double restingSince_ = 0.0;
    bool tooltipShownForRest_ = false;
    std::vector<Timer> timers_;
    int nextTimerId_ = 1;
    ZMemoryClipboard memoryClipboard_;
    ZClipboard* clipboard_ = &memoryClipboard_;
    ZCursor cursor_ = ZCursor::Arrow;
    std::function<void(const std::string&)> helpListener_;
    TooltipFactory tooltipFactory_;
    std::function<void()> interactionListener_;
    std::function<bool(const ZKeyEvent&)> shortcutHandler_;

    void interactionEnded();
};

} // namespace halvern
