#pragma once

// The page of one LFO ("LFOEditor"), in rows that scroll: the LFO's general and
// oscillator settings with its output beside the shape editor ("Modulator shape"); the
// settings of its current mode (level follower, envelope, random or pitch, and what
// they output), shown only in that mode and closed up around them; and its targets.
// The page polls the LFO on every tick, so changes from the host, a loaded state or
// another editor show at once.

#include "editor/lfo_settings.h"
#include "editor/modulator_editor_context.h"
#include "ui/panel.h"
#include "ui/view.h"

#include <memory>
#include <string>
#include <vector>

namespace halvern {

class ZBoxLayout;
class ZScrollArea;
class ZShapeEditor;

std::unique_ptr<ZView> BuildLFOEditor(ZModulatorEditorContext& context, int lfoIndex);

class ZLFOEditor : public ZView {
public:
    ZLFOEditor(ZModulatorEditorContext& context, int lfoIndex);

    ZShapeEditor& shapeEditor() const { return *shape_; }
    ZScrollArea& scrollArea() const { return *scroll_; }
    // The panels of the current mode, left to right (none in "Normal").
    std::vector<ZPanel*> modePanels() const;

    void Layout() override;
    void Refresh() override;

private:
    class Rows;
    // What decides which settings the mode panels show.
    struct Shown {
        ZLFOMode mode;
        bool audioEnvelope;
        bool operator==(const Shown&) const = default;
    };

    Shown shownNow() const;
    ZPanel* buildGeneral();
    void buildModePanels();
    std::unique_ptr<ZView> control(const std::string& key);
    std::unique_ptr<ZPanel> panel(const std::string& title, const char* titleSwitch, int columns,
                                  const std::vector<std::vector<const char*>>& rows);

    ZModulatorEditorContext& context_;
    int index_;
    ZLFO& lfo_;
    std::shared_ptr<ZLFOSettingValues> values_;
    Shown shown_;
    ZScrollArea* scroll_;
    Rows* rows_;
    ZShapeEditor* shape_ = nullptr;
};

} // namespace halvern
