#pragma once

// ZEditorFrame: a plug-in editor as a host adapter sees it (ZPluginEditor), around any
// content view. While open it owns a ZUIRoot and a ZWindow; the content is built when
// the editor opens and destroyed when it closes, so a closed editor costs nothing.
//
// Size: the content's natural logical size times the zoom (75 % to 200 %, the user's
// or the host's choice) times the content scale (the host's, else the desktop's). The
// user resizes with the grip in the bottom-right corner, through the host; a double
// click on it returns to 100 %. The root's timers and repaints run at most every
// kTickInterval, however often the host calls Idle.

#include "core/plugin_editor.h"
#include "ui/theme.h"
#include "ui/view.h"

#include <functional>
#include <memory>
#include <optional>

namespace halvern {

class ZUIRoot;
class ZWindow;

class ZEditorFrame : public ZPluginEditor {
public:
    using ContentBuilder = std::function<std::unique_ptr<ZView>(ZUIRoot&)>;
    using OpenListener = std::function<void(bool open)>;

    static constexpr double kMinZoom = 0.75;
    static constexpr double kMaxZoom = 2.0;
    static constexpr double kTickInterval = 1.0 / 60.0; // seconds
    static constexpr double kGripSize = 16.0;           // logical units

    // openChanged hears when the editor opens and closes (metering follows it).
    ZEditorFrame(ZEditorHost& host, double logicalWidth, double logicalHeight, ContentBuilder buildContent,
                 OpenListener openChanged, ZTheme theme = ZTheme::Default());
    ~ZEditorFrame() override;

    ZEditorSize Size() const override;
    bool Open(unsigned long parentWindow) override;
    void Close() override;
    bool IsOpen() const override { return window_ != nullptr; }
    void Idle() override;
    int ConnectionFileDescriptor() const override;
    ZEditorSize ConstrainSize(ZEditorSize wanted) const override;
    void SetSize(ZEditorSize size) override;
    void SetContentScale(double scale) override;

    // The open editor's root, null while closed.
    ZUIRoot* root() const { return root_.get(); }
    double zoom() const { return zoom_; }

private:
    double contentScale() const;
    double scale() const { return zoom_ * contentScale(); }
    ZEditorSize sizeAt(double zoom) const;
    double zoomFor(ZEditorSize size) const;
    void rescale();
    void paint();
    void takeRequestedSize();
    void hostResized(int pixelWidth, int pixelHeight);
    std::unique_ptr<ZView> buildFrameView();

    ZEditorHost& host_;
    double logicalWidth_;
    double logicalHeight_;
    ContentBuilder buildContent_;
    OpenListener openChanged_;
    ZTheme theme_;
    double zoom_ = 1.0;
    std::optional<double> hostScale_;
    mutable std::optional<double> desktopScale_;
    std::unique_ptr<ZUIRoot> root_;
    std::unique_ptr<ZWindow> window_;
    ZEditorSize dragStart_;                  // the size when the grip's drag began
    std::optional<ZEditorSize> requested_;   // the grip's latest wish, asked for in Idle
    double lastTick_ = 0.0;
};

} // namespace halvern
