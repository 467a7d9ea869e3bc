#pragma once

// A control's view of one host parameter of the plug-in core: values and texts from the
// core, changes as host gestures (the host hears of every one, and the core takes the
// value at once).

#include "core/audio_plugin.h"
#include "core/plugin_editor.h"
#include "ui/parameter_binding.h"

namespace halvern {

// What the editor around the bindings adds: it hears of every finished gesture (for
// Learn) and says which modulation range to show on a parameter.
class ZBindingObserver {
public:
    virtual ~ZBindingObserver() = default;
    virtual void GestureEnded(int32_t index, double from, double to) = 0;
    virtual std::optional<std::pair<double, double>> RangeOn(int32_t index) const = 0;
};

class ZHostParameterBinding : public ZParameterBinding {
public:
    // label, when given, is the name the control shows instead of the parameter's own.
    ZHostParameterBinding(ZAudioPlugin& core, ZEditorHost& host, int32_t index, std::string label = {},
                          ZBindingObserver* observer = nullptr);

    int32_t index() const { return index_; }

    std::string Name() const override;
    std::string HelpText() const override;
    double Value() const override;
    double DefaultValue() const override;
    int StepCount() const override;
    std::vector<std::string> ItemNames() const override;
    std::string DisplayText(double normalized) const override;
    std::optional<double> Parse(const std::string& text) const override;
    std::optional<std::pair<double, double>> ModulationRange() const override;
    void BeginEdit() override;
    void SetValue(double normalized) override;
    void EndEdit() override;

private:
    ZAudioPlugin& core_;
    ZEditorHost& host_;
    int32_t index_;
    std::string label_;
    ZBindingObserver* observer_;
    int openGestures_ = 0;
    double gestureStart_ = 0.0;
};

} // namespace halvern
