#pragma once

// ZPositionEditor: the room's floor plan drawn to its size and width, with the sound
// source and the microphone on it. Dragging the source moves "Position X" and
// "Position Y" as host gestures (hosts record them); dragging the microphone places it
// directly, as only this editor and the state do. The room's outline is a polygon whose
// corners can be dragged; a double click on an edge adds a corner, on a corner removes it.
// The right-click menu resets the outline or brings the source back to the centre.

#include "reverb/halvern_audio_effect_plugin.h"
#include "ui/parameter_binding.h"
#include "ui/view.h"

#include <memory>
#include <vector>

namespace halvern {

class ZPositionEditor : public ZView {
public:
    static constexpr const char* kHelpText =
        "<name>Position editor</name> lets you artificially place the sound source into a place in 2D space. "
        "The plugin then tries to make the audio sound appropriately. Note that in order to make the editor show "
        "correct dimensions, it should be approximately rectangular.";

    ZPositionEditor(HalvernAudioEffectPlugin& effect, std::shared_ptr<ZParameterBinding> sourceX,
                    std::shared_ptr<ZParameterBinding> sourceY);

    std::string Text() const override;
    std::string HelpText() const override { return kHelpText; }
    bool AcceptsMouse() const override { return true; }
    bool OnMouseDown(const ZMouseEvent& event) override;
    void OnMouseDrag(const ZMouseEvent& event) override;
    void OnMouseUp(const ZMouseEvent& event) override;
    void OnCaptureLost() override;
    void OnMouseMove(const ZMouseEvent& event) override;
    void OnMouseLeave() override;
    ZCursor Cursor() const override;
    void Refresh() override;

    // The floor plan's rectangle inside the view (width across, length down).
    ZRect RoomRect() const;
    // A floor-plan point (0..1 each way) on the view, and back (limited to the plan).
    ZPoint ToView(double x, double y) const;
    ZPoint ToPlan(ZPoint view) const;

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    enum class Target { None, Source, Microphone, Corner };
    struct Hit {
        Target target = Target::None;
        size_t corner = 0;
    };
    struct Snapshot {
        double sourceX, sourceY, microphoneX, microphoneY, size, width;
        bool operator==(const Snapshot&) const = default;
    };

    Snapshot take() const;
    Hit hitTest(ZPoint point) const;
    void moveTo(ZPoint point);
    void endDrag();
    void toggleCorner(ZPoint point);
    void showMenu(ZPoint at);
    void paintGrid(ZCanvas& canvas, const ZRect& room) const;
    void paintOutline(ZCanvas& canvas) const;
    void paintMarkers(ZCanvas& canvas) const;
    void paintLegend(ZCanvas& canvas) const;
    ZRect planArea() const;

    HalvernAudioEffectPlugin& effect_;
    std::shared_ptr<ZParameterBinding> sourceX_;
    std::shared_ptr<ZParameterBinding> sourceY_;
    std::vector<ZRoomOutline::Point> outline_;
    Snapshot shown_{};
    Hit drag_;
    Hit hover_;
    int refreshes_ = 0;
};

} // namespace halvern
