#include "editor/editor_frame.h"

#include "editor/resize_grip.h"
#include "ui/ui_root.h"
#include "ui/window.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

namespace halvern {
namespace {

bool SameSize(ZEditorSize a, ZEditorSize b) { return a.width == b.width && a.height == b.height; }

double MonotonicSeconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// The frame's top view: the content over the whole editor, the grip above it in the corner.
class FrameView : public ZView {
public:
    FrameView(std::unique_ptr<ZView> content, std::unique_ptr<ZResizeGrip> grip, double gripSize)
        : content_(AddChild(std::move(content))), grip_(AddChild(std::move(grip))), gripSize_(gripSize)
    {
    }

    void Layout() override
    {
        const ZRect& r = bounds();
        content_->SetBounds(r);
        grip_->SetBounds({r.right() - gripSize_, r.bottom() - gripSize_, gripSize_, gripSize_});
    }

private:
    ZView* content_;
    ZView* grip_;
    double gripSize_;
};

} // namespace

ZEditorFrame::ZEditorFrame(ZEditorHost& host, double logicalWidth, double logicalHeight, ContentBuilder buildContent,
                           OpenListener openChanged, ZTheme theme)
    : host_(host), logicalWidth_(logicalWidth), logicalHeight_(logicalHeight), buildContent_(std::move(buildContent)),
      openChanged_(std::move(openChanged)), theme_(std::move(theme))
{
}

ZEditorFrame::~ZEditorFrame() { Close(); }

double ZEditorFrame::contentScale() const
{
    if (hostScale_)
        return *hostScale_;
    if (!desktopScale_)
        desktopScale_ = SystemContentScale();
    return *desktopScale_;
}

ZEditorSize ZEditorFrame::sizeAt(double zoom) const
{
    const double s = zoom * contentScale();
    return {static_cast<int>(std::lround(logicalWidth_ * s)), static_cast<int>(std::lround(logicalHeight_ * s))};
}

// The largest zoom in range whose size fits inside the one given.
double ZEditorFrame::zoomFor(ZEditorSize size) const
{
    const double s = contentScale();
    const double zoom = std::min(size.width / (logicalWidth_ * s), size.height / (logicalHeight_ * s));
    return std::clamp(std::isfinite(zoom) ? zoom : kMinZoom, kMinZoom, kMaxZoom);
}

ZEditorSize ZEditorFrame::Size() const { return sizeAt(zoom_); }

ZEditorSize ZEditorFrame::ConstrainSize(ZEditorSize wanted) const { return sizeAt(zoomFor(wanted)); }

bool ZEditorFrame::Open(unsigned long parentWindow)
{
    Close();
    root_ = std::make_unique<ZUIRoot>(logicalWidth_, logicalHeight_, scale(), theme_);
    window_ = std::make_unique<ZWindow>(*root_);
    const ZEditorSize size = Size();
    if (!window_->Open(parentWindow, size.width, size.height)) {
        window_.reset();
        root_.reset();
        return false;
    }
    try {
        window_->SetResizeListener([this](int width, int height) { hostResized(width, height); });
        root_->SetContent(buildFrameView());
    } catch (...) {
        Close();
        throw;
    }
    lastTick_ = -std::numeric_limits<double>::infinity();
    paint();
    if (openChanged_)
        openChanged_(true);
    return true;
}

std::unique_ptr<ZView> ZEditorFrame::buildFrameView()
{
    ZResizeGrip::Listener listener;
    listener.started = [this] { dragStart_ = Size(); };
    listener.dragged = [this](double dx, double dy) {
        requested_ = ConstrainSize({static_cast<int>(std::lround(dragStart_.width + dx)),
                                    static_cast<int>(std::lround(dragStart_.height + dy))});
    };
    listener.reset = [this] { requested_ = sizeAt(1.0); };
    return std::make_unique<FrameView>(buildContent_(*root_), std::make_unique<ZResizeGrip>(std::move(listener)), kGripSize);
}

// A drag in progress ends first (its gesture is closed), then the window and the content go.
void ZEditorFrame::Close()
{
    if (!root_)
        return;
    root_->CancelInteraction();
    window_.reset();
    root_.reset();
    requested_.reset();
    if (openChanged_)
        openChanged_(false);
}

int ZEditorFrame::ConnectionFileDescriptor() const { return window_ ? window_->ConnectionFileDescriptor() : -1; }

void ZEditorFrame::Idle()
{
    if (!window_)
        return;
    window_->ProcessEvents();
    takeRequestedSize();
    const double now = MonotonicSeconds();
    if (now - lastTick_ < kTickInterval)
        return;
    lastTick_ = now;
    root_->Tick(now);
    paint();
}

void ZEditorFrame::paint()
{
    if (window_ && window_->IsOpen())
        window_->Upload(root_->Paint());
}

// The grip's wish goes to the host; the editor takes the size only when the host does.
void ZEditorFrame::takeRequestedSize()
{
    if (!requested_)
        return;
    const ZEditorSize wanted = *requested_;
    requested_.reset();
    if (!SameSize(wanted, Size()) && host_.RequestResize(wanted))
        SetSize(wanted);
}

void ZEditorFrame::SetSize(ZEditorSize size)
{
    if (SameSize(ConstrainSize(size), Size()))
        return; // keeps the zoom from creeping through rounding
    zoom_ = zoomFor(size);
    rescale();
}

void ZEditorFrame::SetContentScale(double scale)
{
    if (!std::isfinite(scale) || scale <= 0.0 || (hostScale_ && *hostScale_ == scale))
        return;
    hostScale_ = std::clamp(scale, 0.5, 4.0);
    if (!window_)
        return;
    host_.RequestResize(Size());
    rescale();
}

void ZEditorFrame::rescale()
{
    if (!window_)
        return;
    root_->SetScale(scale());
    const ZEditorSize size = Size();
    window_->SetPixelSize(size.width, size.height);
    paint();
}

// Someone else resized the window: the editor takes the nearest size it can and puts
// the window to it.
void ZEditorFrame::hostResized(int pixelWidth, int pixelHeight)
{
    SetSize({pixelWidth, pixelHeight});
    const ZEditorSize size = Size();
    window_->SetPixelSize(size.width, size.height);
}

} // namespace halvern
