#include "ui/ui_root.h"

#include <algorithm>
#include <cmath>

namespace halvern {

ZUIRoot::ZUIRoot(double logicalWidth, double logicalHeight, double scale, const ZTheme& theme)
    : theme_(theme), logicalWidth_(logicalWidth), logicalHeight_(logicalHeight), scale_(scale > 0.0 ? scale : 1.0)
{
    SetScale(scale_);
}

ZUIRoot::~ZUIRoot()
{
    // Views forget themselves here while the root is still whole.
    disposed_.clear();
    overlays_.clear();
    content_.reset();
}

void ZUIRoot::SetContent(std::unique_ptr<ZView> content)
{
    CancelInteraction();
    content_ = std::move(content);
    if (content_) {
        content_->rootOfTree_ = this;
        content_->SetBounds({0, 0, logicalWidth_, logicalHeight_});
    }
    InvalidateAll();
}

void ZUIRoot::SetScale(double scale)
{
    scale_ = scale > 0.0 ? scale : 1.0;
    canvas_ = std::make_unique<ZCanvas>(static_cast<int>(std::lround(logicalWidth_ * scale_)),
                                        static_cast<int>(std::lround(logicalHeight_ * scale_)), scale_);
    InvalidateAll();
}

void ZUIRoot::Invalidate(const ZRect& rect) { canvas_->MarkDirty(rect); }

void ZUIRoot::InvalidateAll() { canvas_->MarkDirty({0, 0, logicalWidth_, logicalHeight_}); }

std::vector<ZRect> ZUIRoot::Paint()
{
    destroyDisposed();
    std::vector<ZRect> pixels = canvas_->TakeDirtyPixels();
    for (const ZRect& area : pixels) {
        // Each area is painted clipped to its whole device pixels, so edges never seam.
        const ZRect clip{area.x / scale_, area.y / scale_, area.width / scale_, area.height / scale_};
        canvas_->Save();
        canvas_->ClipTo(clip);
        canvas_->FillRect(clip, theme_.background);
        if (content_)
            content_->Paint(*canvas_, clip);
        for (const auto& overlay : overlays_)
            overlay->Paint(*canvas_, clip);
        canvas_->Restore();
    }
    return pixels;
}

// ---- input ----

ZView* ZUIRoot::hitTest(ZPoint point, bool& outsideOverlays)
{
    outsideOverlays = false;
    bool anyModal = false;
    for (auto it = overlays_.rbegin(); it != overlays_.rend(); ++it) {
        if (it->get() == tooltip_)
            continue;
        if (ZView* hit = (*it)->HitTest(point))
            return hit;
        if ((*it)->bounds().contains(point))
            return nullptr; // on an overlay, where nothing takes the mouse
        anyModal = true;
    }
    if (anyModal) {
        outsideOverlays = true;
        return nullptr;
    }
    return content_ ? content_->HitTest(point) : nullptr;
}

void ZUIRoot::MouseDown(const ZMouseEvent& event)
{
    hideTooltip();
    lastPointer_ = event.position;
    if (captured_ != nullptr)
        return; // a second button during a drag belongs to the drag
    bool outside = false;
    ZView* target = hitTest(event.position, outside);
    if (outside) {
        DismissOverlays();
        destroyDisposed();
        return;
    }
    SetFocus(target != nullptr && target->AcceptsFocus() ? target : nullptr);
    if (target != nullptr && target->OnMouseDown(event))
        captured_ = target;
    updateCursor();
    destroyDisposed();
}

void ZUIRoot::MouseMove(const ZMouseEvent& event)
{
    const bool moved = std::abs(event.position.x - lastPointer_.x) > 0.5 || std::abs(event.position.y - lastPointer_.y) > 0.5;
    lastPointer_ = event.position;
    if (moved) {
        restingSince_ = now_;
        tooltipShownForRest_ = false;
        hideTooltip();
    }
    if (captured_ != nullptr) {
        captured_->OnMouseDrag(event);
    } else {
        bool outside = false;
        setHovered(hitTest(event.position, outside));
        if (hovered_ != nullptr)
            hovered_->OnMouseMove(event);
    }
    updateCursor();
    destroyDisposed();
}

void ZUIRoot::MouseUp(const ZMouseEvent& event)
{
    lastPointer_ = event.position;
    if (ZView* view = captured_) {
        captured_ = nullptr;
        view->OnMouseUp(event);
    }
    bool outside = false;
    setHovered(hitTest(event.position, outside));
    updateCursor();
    destroyDisposed();
    interactionEnded();
}

void ZUIRoot::MouseLeft()
{
    if (captured_ == nullptr)
        setHovered(nullptr);
    hideTooltip();
    updateCursor();
}

void ZUIRoot::Wheel(const ZWheelEvent& event)
{
    hideTooltip();
    if (captured_ != nullptr)
        return;
    bool outside = false;
    for (ZView* view = hitTest(event.position, outside); view != nullptr; view = view->parent())
        if (view->visible() && view->OnWheel(event))
            break;
    destroyDisposed();
    interactionEnded();
}

bool ZUIRoot::Key(const ZKeyEvent& event)
{
    hideTooltip();
    bool taken = focused_ != nullptr && focused_->OnKey(event);
    for (auto it = overlays_.rbegin(); !taken && it != overlays_.rend(); ++it)
        if (it->get() != tooltip_)
            taken = (*it)->OnKey(event);
    if (!taken && shortcutHandler_)
        taken = shortcutHandler_(event);
    destroyDisposed();
    interactionEnded();
    return taken;
}

void ZUIRoot::interactionEnded()
{
    if (interactionListener_)
        interactionListener_();
}

void ZUIRoot::CancelInteraction()
{
    if (ZView* view = captured_) {
        captured_ = nullptr;
        view->OnCaptureLost();
    }
    hideTooltip();
}

void ZUIRoot::setHovered(ZView* view)
{
    if (view == hovered_)
        return;
    if (hovered_ != nullptr)
        hovered_->OnMouseLeave();
    hovered_ = view;
    if (hovered_ != nullptr)
        hovered_->OnMouseEnter();
    if (helpListener_) {
        std::string help;
        for (ZView* v = hovered_; v != nullptr && help.empty(); v = v->parent())
            help = v->HelpText();
        helpListener_(help);
    }
}

void ZUIRoot::updateCursor()
{
    ZView* view = captured_ != nullptr ? captured_ : hovered_;
    cursor_ = view != nullptr ? view->Cursor() : ZCursor::Arrow;
}

// ---- focus ----

void ZUIRoot::SetFocus(ZView* view)
{
    if (view == focused_)
        return;
    ZView* previous = focused_;
    focused_ = view;
    if (previous != nullptr)
        previous->OnFocusChanged(false);
    if (focused_ != nullptr)
        focused_->OnFocusChanged(true);
}

// ---- overlays ----

ZView* ZUIRoot::PushOverlay(std::unique_ptr<ZView> overlay, bool dismissOnOutsideClick)
{
    overlay->rootOfTree_ = this;
    ZView* raw = overlay.get();
    overlays_.push_back(std::move(overlay));
    overlayDismissable_.push_back(dismissOnOutsideClick);
    raw->Invalidate();
    return raw;
}

void ZUIRoot::RemoveOverlay(ZView* overlay)
{
    for (size_t i = 0; i < overlays_.size(); ++i) {
        if (overlays_[i].get() != overlay)
            continue;
        overlay->Invalidate();
        disposed_.push_back(std::move(overlays_[i]));
        overlays_.erase(overlays_.begin() + static_cast<std::ptrdiff_t>(i));
        overlayDismissable_.erase(overlayDismissable_.begin() + static_cast<std::ptrdiff_t>(i));
        if (overlay == tooltip_)
            tooltip_ = nullptr;
        return;
    }
}

void ZUIRoot::DismissOverlays()
{
    for (size_t i = overlays_.size(); i-- > 0;)
        if (overlayDismissable_[i] || overlays_[i].get() == tooltip_)
            RemoveOverlay(overlays_[i].get());
}

bool ZUIRoot::HasOverlays() const
{
    return std::any_of(overlays_.begin(), overlays_.end(), [this](const auto& o) { return o.get() != tooltip_; });
}

void ZUIRoot::destroyDisposed() { disposed_.clear(); }

void ZUIRoot::Dispose(std::unique_ptr<ZView> view)
{
    if (!view)
        return;
    for (ZView** pointer : {&captured_, &hovered_, &focused_})
        if (*pointer != nullptr && view->Contains(*pointer))
            *pointer = nullptr;
    view->rootOfTree_ = this; // so its views still tell this root when they go
    disposed_.push_back(std::move(view));
}

void ZUIRoot::hideTooltip()
{
    if (tooltip_ != nullptr)
        RemoveOverlay(tooltip_);
}

// ---- timers ----

void ZUIRoot::Tick(double nowSeconds)
{
    now_ = nowSeconds;
    for (size_t i = 0; i < timers_.size(); ++i) {
        if (timers_[i].due > now_)
            continue;
        timers_[i].due = now_ + timers_[i].interval;
        const auto function = timers_[i].function; // the timer may remove itself
        function();
    }
    if (content_)
        content_->RefreshTree();
    for (const auto& overlay : overlays_)
        overlay->RefreshTree();
    if (hovered_ != nullptr && captured_ == nullptr && tooltip_ == nullptr && !tooltipShownForRest_ &&
        tooltipFactory_ && now_ - restingSince_ >= kTooltipDelay && !HasOverlays()) {
        tooltipShownForRest_ = true;
        const std::string help = hovered_->HelpText();
        if (!help.empty())
            if (auto tip = tooltipFactory_(help, lastPointer_, *this))
                tooltip_ = PushOverlay(std::move(tip), true);
    }
    destroyDisposed();
}

int ZUIRoot::AddTimer(double intervalSeconds, std::function<void()> function)
{
    const int id = nextTimerId_++;
    timers_.push_back({id, intervalSeconds, now_ + intervalSeconds, std::move(function)});
    return id;
}

void ZUIRoot::RemoveTimer(int id)
{
    std::erase_if(timers_, [id](const Timer& timer) { return timer.id == id; });
}

void ZUIRoot::Forget(ZView* view)
{
    if (captured_ == view)
        captured_ = nullptr;
    if (hovered_ == view)
        hovered_ = nullptr;
    if (focused_ == view)
        focused_ = nullptr;
    if (tooltip_ == view)
        tooltip_ = nullptr;
}

} // namespace halvern
