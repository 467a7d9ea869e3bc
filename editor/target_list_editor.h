#pragma once

// The targets of one modulator: a list of the parameters it drives, each with the range
// it sweeps, the buttons that add and remove targets, "Learn" and "Clear & Learn", and
// the settings of the selected target (its parameter, range mode, Value, MaxValue,
// Depth, Invert, "Use first parameter's range", and its transfer curve).
//
// Every edit builds a new target and hands it to the target list, which publishes the
// new list with a swap under the processing lock: the audio thread never sees a list
// half changed and never waits for more than the swap.
//
// While learning, every parameter the user touches in the main editor becomes a target
// that sweeps exactly the range the user moved it over, until learning is switched off
// again. Learning stops when the editor goes; one editor learns at a time.

#include "editor/modulator_editor_context.h"
#include "modulation/modulator_target_list.h"
#include "modulation/multi_parameter.h"
#include "ui/view.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace halvern {

class ZButton;
class ZFunctionBinding;
class ZLabel;
class ZListView;

// The range [low, high] (normalised) a target's parameter is swept over by the
// modulator's outputs -1..1.
std::pair<double, double> SweptRange(const ZModulatorTarget& target, const ZModulatorTarget& first);

class ZTargetListEditor : public ZView {
public:
    ZTargetListEditor(ZModulatorEditorContext& context, ZModulatorTargetList& targets, std::string modulatorName);
    // A MultiParameter's targets: adding and removing go through the MultiParameter, so
    // that its banks keep one value per target.
    ZTargetListEditor(ZModulatorEditorContext& context, ZMultiParameter& multiParameter);
    ~ZTargetListEditor() override;

    const ZModulatorTargetList& targets() const { return list_; }
    // The selected target's index, or -1 when the list shows none.
    int selectedTarget() const { return selected_; }
    void SelectTarget(int index);

    // "Learn" (clearFirst false) and "Clear & Learn" (true): the list is reduced to its
    // first target, which the first target learned replaces.
    void StartLearning(bool clearFirst);
    void StopLearning();
    bool learning() const;
    // The refusal or notice shown under the list; empty when none.
    const std::string& message() const { return message_; }

    void Layout() override;
    void Refresh() override;

private:
    struct Edits {
        std::function<void(const ZModulatorTarget&)> add;
        std::function<void(int)> remove;
        std::function<void(int, const ZModulatorTarget&)> set;
        std::function<void(std::vector<ZModulatorTarget>)> replaceAll;
    };
    class Learner : public ZLearnListener {
    public:
        explicit Learner(ZTargetListEditor& editor) : editor_(editor) {}
        void ParameterTouched(int32_t index, double from, double to) override { editor_.learn(index, from, to); }

    private:
        ZTargetListEditor& editor_;
    };

    ZTargetListEditor(ZModulatorEditorContext& context, const ZModulatorTargetList& list, Edits edits,
                      std::string modulatorName);
    void build();
    void buildSettings();
    // A knob's view of one of the selected target's range fields.
    std::shared_ptr<ZFunctionBinding> rangeBinding(std::string label, std::string help,
                                                   double ZModulatorTarget::*field, bool inParameterUnits);
    std::shared_ptr<ZFunctionBinding> flagBinding(std::string label, std::string help, bool ZModulatorTarget::*field);

    const ZModulatorTarget* selected() const;
    // Hands a changed copy of the selected target to the list.
    void editSelected(const std::function<void(ZModulatorTarget&)>& change);
    // Runs an edit; a refusal of the model shows its message instead.
    void attempt(const std::function<void()>& edit);
    void addTarget();
    void removeTarget();
    void learn(int32_t index, double from, double to);

    std::string rowText(const ZModulatorTarget& target) const;
    std::vector<std::string> rowTexts() const;
    void showRows();
    void showMessage(std::string message);
    bool rangeModeIs(ZRangeMode mode) const;

    ZModulatorEditorContext& context_;
    const ZModulatorTargetList& list_;
    Edits edits_;
    std::string modulatorName_;
    std::vector<int32_t> choices_; // the parameters the "Parameter" menu offers, in its order
    int selected_ = 0;
    std::string message_;
    Learner learner_{*this};
    bool learningCleared_ = false;                        // started by "Clear & Learn"
    bool replacePlaceholder_ = false;                     // "Clear & Learn" until its first target
    std::map<int32_t, std::pair<double, double>> learned_; // ranges moved while learning

    ZListView* rows_ = nullptr;
    ZButton* add_ = nullptr;
    ZButton* remove_ = nullptr;
    ZButton* learn_ = nullptr;
    ZButton* clearAndLearn_ = nullptr;
    ZLabel* parameterLabel_ = nullptr;
    ZView* parameter_ = nullptr;
    ZLabel* rangeModeLabel_ = nullptr;
    ZView* rangeMode_ = nullptr;
    ZView* value_ = nullptr;
    ZView* maxValue_ = nullptr;
    ZView* depth_ = nullptr;
    ZView* enabled_ = nullptr;
    ZView* invert_ = nullptr;
    ZView* useFirstRange_ = nullptr;
    ZView* shape_ = nullptr;
    ZView* curve_ = nullptr;
    ZLabel* messageLabel_ = nullptr;
};

} // namespace halvern
