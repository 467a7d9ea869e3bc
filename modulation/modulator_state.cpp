#include "modulation/modulator_state.h"

#include <algorithm>
#include <cmath>

namespace halvern {
namespace {

// Values that a document could hold out of range are brought back into it.
double unitInterval(double value)
{
    return std::clamp(value, 0.0, 1.0);
}

double limited(double value, double low, double high)
{
    return std::clamp(value, low, high);
}

// "Shape": one "Point" child per point; written only when the curve is not the identity.
void serializeCurve(const ZSerializationContext& context, ZTransferCurve& curve)
{
    const ZTransferCurve identity;
    if (context.storing()) {
        if (curve == identity)
            return;
        ZMLElement& shape = *context.child("Shape");
        for (int i = 0; i < curve.pointCount(); ++i) {
            ZTransferCurve::Point point = curve.point(i);
            const ZSerializationContext item = context.on(shape.addChild("Point"));
            item.item("X", point.x, 0.0);
            item.item("Y", point.y, 0.0);
            item.item("Curve", point.curve, 1.0);
        }
        return;
    }
    curve = identity;
    const ZMLElement* shape = context.element().findChild("Shape");
    if (shape == nullptr)
        return;
    ZTransferCurve loaded;
    loaded.clear();
    for (const auto& child : shape->children()) {
        if (child->name() != "Point")
            continue;
        ZTransferCurve::Point point;
        const ZSerializationContext item = context.on(*child);
        item.item("X", point.x, 0.0);
        item.item("Y", point.y, 0.0);
        item.item("Curve", point.curve, 1.0);
        point.x = unitInterval(point.x);
        point.y = unitInterval(point.y);
        point.curve = limited(point.curve, 0.01, 100.0);
        if (!loaded.addPoint(point))
            break;
    }
    if (loaded.pointCount() >= 2)
        curve = loaded;
}

void serializeTarget(const ZSerializationContext& context, ZModulatorTarget& target)
{
    const ZModulatorTarget defaults;
    context.item("ParameterIndex", target.parameter, defaults.parameter);
    context.item("ParameterEnabled", target.enabled, defaults.enabled);
    context.item("Value", target.value, defaults.value);
    context.item("MaxValue", target.maxValue, defaults.maxValue);
    context.item("Range", target.range, defaults.range);
    context.item("FullRange", target.rangeMode, defaults.rangeMode);
    context.item("Invert", target.invert, defaults.invert);
    context.item("UseFirstRange", target.useFirstRange, defaults.useFirstRange);
    context.item("ShapeEnabled", target.shapeEnabled, defaults.shapeEnabled);
    serializeCurve(context, target.shape);
    if (context.reading()) {
        target.value = unitInterval(target.value);
        target.maxValue = unitInterval(target.maxValue);
        target.range = unitInterval(target.range);
    }
}

// The "Parameter" children of a modulator element. Reading never gives an empty list.
std::vector<ZModulatorTarget> serializeTargets(const ZSerializationContext& context,
                                               std::vector<ZModulatorTarget> targets, const ZModulatorStateScope& scope)
{
    if (context.storing()) {
        for (ZModulatorTarget& target : targets)
            serializeTarget(context.on(*context.child("Parameter")), target);
        return targets;
    }
    targets.clear();
    for (ZMLElement* element : context.children("Parameter")) {
        ZModulatorTarget target;
        serializeTarget(context.on(*element), target);
        if (target.parameter >= 0 && target.parameter < scope.parameterCount)
            targets.push_back(target);
    }
    if (targets.empty())
        targets.push_back(scope.defaultTarget);
    return targets;
}

void serializeFollower(const ZSerializationContext& context, ZLevelFollower::Settings& settings)
{
    const ZLevelFollower::Settings defaults;
    context.item("Attack", settings.attack, defaults.attack);
    context.item("Release", settings.release, defaults.release);
    context.item("Hold", settings.hold, defaults.hold);
    context.item("RMSLength", settings.rmsLength, defaults.rmsLength);
    context.item("LevelMin", settings.levelMin, defaults.levelMin);
    context.item("LevelMax", settings.levelMax, defaults.levelMax);
    context.item("Mode", settings.mode, defaults.mode);
    context.item("Maximize", settings.maximize, defaults.maximize);
    context.item("Threshold", settings.threshold, defaults.threshold);
    context.item("BandPass", settings.bandPass, defaults.bandPass);
    context.item("Minimum", settings.bandMinimum, defaults.bandMinimum);
    context.item("Maximum", settings.bandMaximum, defaults.bandMaximum);
    context.item("Q", settings.bandQ, defaults.bandQ);
}

void serializeEnvelope(const ZSerializationContext& context, ZEnvelopeGenerator::Settings& settings)
{
    const ZEnvelopeGenerator::Settings defaults;
    context.item("EnvelopeMode", settings.mode, defaults.mode);
    context.item("Threshold On", settings.thresholdOn, defaults.thresholdOn);
    context.item("Threshold Off", settings.thresholdOff, defaults.thresholdOff);
    context.item("RMSLength", settings.rmsLength, defaults.rmsLength);
    context.section("ADSR", [&](const ZSerializationContext& adsr) {
        adsr.item("Attack", settings.attack, defaults.attack);
        adsr.item("Decay", settings.decay, defaults.decay);
        adsr.item("Sustain", settings.sustain, defaults.sustain);
        adsr.item("Release", settings.release, defaults.release);
    });
}

void serializeRandom(const ZSerializationContext& context, ZRandomModulator::Settings& settings)
{
    const ZRandomModulator::Settings defaults;
    auto seed = static_cast<int32_t>(settings.seed);
    context.item("Speed", settings.speed, defaults.speed);
    context.item("Smoothness", settings.smoothness, defaults.smoothness);
    context.item("Seed", seed, static_cast<int32_t>(defaults.seed));
    settings.seed = static_cast<uint32_t>(seed);
}

void serializePitchDetector(const ZSerializationContext& context, ZPitchDetector::Settings& settings)
{
    const ZPitchDetector::Settings defaults;
    context.item("MinFrequencyRec", settings.minFrequency, defaults.minFrequency);
    context.item("MaxFrequencyRec", settings.maxFrequency, defaults.maxFrequency);
    context.item("Stabilization", settings.stabilization, defaults.stabilization);
    context.item("Speed", settings.speed, defaults.speed);
    context.item("Accuracy", settings.accuracy, defaults.accuracy);
    context.item("Threshold", settings.threshold, defaults.threshold);
}

void serializeAutoTune(const ZSerializationContext& context, bool& enabled, ZAutoTune::Settings& settings)
{
    const ZAutoTune::Settings defaults;
    context.item("Enabled", enabled, false);
    context.item("Speed", settings.speed, defaults.speed);
    context.item("Depth", settings.depth, defaults.depth);
}

void serializeLFOSettings(const ZSerializationContext& context, ZLFOSettings& settings)
{
    const ZLFOSettings defaults;
    context.item("Enabled", settings.enabled, defaults.enabled, 0, 1);
    context.item("Mode", settings.mode, defaults.mode, 0, static_cast<int32_t>(ZLFOMode::Pitch));
    context.item("RestoreWhenDisabled", settings.restoreWhenDisabled, defaults.restoreWhenDisabled);
    context.item("Frequency", settings.frequency, defaults.frequency);
    context.item("High-speed", settings.highSpeed, defaults.highSpeed);
    context.item("PhaseSyncGroup", settings.syncGroup, defaults.syncGroup, 0, ZLFO::kSyncGroups);
    context.item("Sync", settings.sync, defaults.sync);
    context.item("Phase", settings.phase, defaults.phase);
    context.item("LFOAmount", settings.lfoAmount, defaults.lfoAmount);
    context.item("UseSideChain", settings.useSideChain, defaults.useSideChain);
    context.item("MinFrequency", settings.minFrequency, defaults.minFrequency);
    context.item("MaxFrequency", settings.maxFrequency, defaults.maxFrequency);
    context.item("Octaves", settings.octaves, defaults.octaves);
    context.item("Semitones", settings.semitones, defaults.semitones);
    context.item("Cents", settings.cents, defaults.cents);
    context.section("Project", [&](const ZSerializationContext& project) {
        project.item("enabled", settings.project, defaults.project);
        project.item("Phase", settings.projectPhase, defaults.projectPhase);
        project.item("Interval", settings.projectInterval, defaults.projectInterval);
    });
}

void serializeControllerTarget(const ZSerializationContext& context, ZModulatorTarget& target)
{
    const ZModulatorTarget defaults;
    context.item("ParameterIndex", target.parameter, defaults.parameter);
    context.item("Value", target.value, defaults.value);
    context.item("MaxValue", target.maxValue, defaults.maxValue);
    context.item("Range", target.range, defaults.range);
    context.item("FullRange", target.rangeMode, defaults.rangeMode);
    context.item("Invert", target.invert, defaults.invert);
    if (context.reading()) {
        target.value = unitInterval(target.value);
        target.maxValue = unitInterval(target.maxValue);
        target.range = unitInterval(target.range);
    }
}

} // namespace

void SerializeSignalGenerator(const ZSerializationContext& context, ZSignalGenerator& generator)
{
    const ZSignalGenerator defaults;
    auto family = static_cast<int32_t>(generator.family());
    double phaseOffset = generator.phaseOffset();
    double smoothing = generator.smoothing();
    std::vector<double> steps(generator.steps().begin(), generator.steps().end());
    std::vector<double> harmonics(generator.harmonics().begin(), generator.harmonics().end());
    context.item("Family", family, static_cast<int32_t>(defaults.family()), 0,
                 static_cast<int32_t>(ZSignalGenerator::Family::Harmonics));
    context.item("PhaseOffset", phaseOffset, defaults.phaseOffset());
    context.item("Smoothing", smoothing, defaults.smoothing());
    const auto equal = [](const std::vector<double>& list, std::span<const double> other) {
        return std::equal(list.begin(), list.end(), other.begin(), other.end());
    };
    if (context.reading() || !equal(steps, defaults.steps()))
        context.item("Steps", steps);
    if (context.reading() || !equal(harmonics, defaults.harmonics()))
        context.item("Harmonics", harmonics);
    if (context.storing())
        return;
    ZSignalGenerator loaded;
    loaded.setFamily(static_cast<ZSignalGenerator::Family>(family));
    loaded.setPhaseOffset(phaseOffset);
    loaded.setSmoothing(smoothing);
    loaded.setSteps(steps);
    loaded.setHarmonics(harmonics);
    generator = loaded;
}

void SerializeLFO(const ZSerializationContext& context, ZLFO& lfo, const ZModulatorStateScope& scope)
{
    ZLFOSettings settings = lfo.settings();
    ZSignalGenerator shape = lfo.shape();
    ZLevelFollower::Settings follower = lfo.follower().settings();
    ZEnvelopeGenerator::Settings envelope = lfo.envelope().settings();
    ZRandomModulator::Settings random = lfo.random().settings();
    ZPitchDetector::Settings pitch = lfo.pitchDetector().settings();
    ZAutoTune::Settings autoTune = lfo.autoTune().settings();

    serializeLFOSettings(context, settings);
    context.section("SignalGenerator", [&](const ZSerializationContext& c) { SerializeSignalGenerator(c, shape); });
    context.section("Follower", [&](const ZSerializationContext& c) { serializeFollower(c, follower); });
    context.section("Envelope", [&](const ZSerializationContext& c) { serializeEnvelope(c, envelope); });
    context.section("Random", [&](const ZSerializationContext& c) { serializeRandom(c, random); });
    context.section("PitchDetector", [&](const ZSerializationContext& c) { serializePitchDetector(c, pitch); });
    context.section("Auto-tune", [&](const ZSerializationContext& c) { serializeAutoTune(c, settings.autoTune, autoTune); });
    std::vector<ZModulatorTarget> targets = serializeTargets(context, lfo.targets().targets(), scope);
    if (context.storing())
        return;

    lfo.loadSettings(settings);
    lfo.setShape(shape);
    lfo.setFollowerSettings(follower);
    lfo.setEnvelopeSettings(envelope);
    lfo.setRandomSettings(random);
    lfo.setPitchSettings(pitch);
    lfo.setAutoTuneSettings(autoTune);
    lfo.targets().replaceAll(std::move(targets));
}

void SerializeMultiParameter(const ZSerializationContext& context, ZMultiParameter& multiParameter,
                             const ZModulatorStateScope& scope)
{
    bool enabled = multiParameter.enabled();
    double value = multiParameter.value();
    double defaultValue = multiParameter.defaultValue();
    ZMultiParameterMode mode = multiParameter.mode();
    ZMultiParameterValueMode valueMode = multiParameter.valueMode();
    double switchTime = multiParameter.switchTime();
    int32_t bankCount = multiParameter.bankCount();
    bool interpolate = multiParameter.interpolate();
    std::string group = multiParameter.group();
    std::string name = multiParameter.name();
    std::string info = multiParameter.info();

    context.item("Enabled", enabled, false);
    context.item("Value", value, 0.0);
    context.item("DefaultValue", defaultValue, 0.0);
    context.item("Mode", mode, ZMultiParameterMode::Normal);
    context.item("ValueMode", valueMode, ZMultiParameterValueMode::Percents);
    context.item("SwitchTime", switchTime, 1.0);
    context.item("BankCount", bankCount, ZMultiParameter::kDefaultBankCount, 1, ZMultiParameter::kMaxBankCount);
    context.item("Interpolate", interpolate, true);
    context.item("Group", group, "");
    context.item("Name", name, "");
    context.item("Info", info, "");
    std::vector<ZModulatorTarget> targets = serializeTargets(context, multiParameter.targets().targets(), scope);

    std::vector<std::vector<double>> banks = multiParameter.banks();
    ZMLElement* banksElement = context.child("Banks");
    if (banksElement != nullptr) {
        const ZSerializationContext banksContext = context.on(*banksElement);
        if (context.storing()) {
            for (std::vector<double>& bank : banks)
                banksContext.on(*banksContext.child("Bank")).item("Values", bank);
        } else {
            banks.clear();
            for (ZMLElement* bankElement : banksContext.children("Bank")) {
                if (static_cast<int>(banks.size()) == ZMultiParameter::kMaxBankCount)
                    break;
                banks.emplace_back();
                banksContext.on(*bankElement).item("Values", banks.back());
                for (double& bankValue : banks.back())
                    bankValue = unitInterval(bankValue);
            }
        }
    } else {
        banks.clear();
    }
    std::vector<double> backup = multiParameter.valueBackup();
    context.item("ValueBackup", backup);
    if (context.storing())
        return;

    multiParameter.stopSwitch();
    multiParameter.setEnabled(enabled);
    multiParameter.valueObject().setNormalized(unitInterval(value));
    multiParameter.defaultValueObject().setNormalized(unitInterval(defaultValue));
    multiParameter.modeObject().setIndex(static_cast<int32_t>(mode));
    multiParameter.valueModeObject().setIndex(static_cast<int32_t>(valueMode));
    multiParameter.switchTimeObject().fromStorageText(ZShortestText(switchTime));
    multiParameter.switchTimeObject().clampToRange();
    multiParameter.setInterpolate(interpolate);
    multiParameter.setGroup(std::move(group));
    multiParameter.setName(std::move(name));
    multiParameter.setInfo(std::move(info));
    multiParameter.replaceTargets(std::move(targets));
    multiParameter.replaceBanks(std::move(banks));
    multiParameter.setBankCount(bankCount);
    multiParameter.setValueBackup(std::move(backup));
}

void SerializeControllerLists(const ZSerializationContext& context, ZMIDIControllers& controllers,
                              const ZModulatorStateScope& scope)
{
    const auto validParameter = [&](int32_t index) { return index >= 0 && index < scope.parameterCount; };

    std::vector<ZMIDIControllerAssignment> assignments = controllers.controllers();
    context.section("Controllers", [&](const ZSerializationContext& list) {
        if (list.storing()) {
            for (ZMIDIControllerAssignment& assignment : assignments) {
                const ZSerializationContext item = list.on(*list.child("Controller"));
                item.item("Enabled", assignment.enabled, true);
                item.item("Channel", assignment.channel, 0);
                item.item("Controller", assignment.controller, 1);
                serializeControllerTarget(item, assignment.target);
            }
            return;
        }
        assignments.clear();
        for (ZMLElement* element : list.children("Controller")) {
            ZMIDIControllerAssignment assignment;
            const ZSerializationContext item = list.on(*element);
            item.item("Enabled", assignment.enabled, true);
            item.item("Channel", assignment.channel, 0, 0, 16);
            item.item("Controller", assignment.controller, 1, 0, static_cast<int32_t>(ZMIDISource::VelocityOn));
            serializeControllerTarget(item, assignment.target);
            if (validParameter(assignment.target.parameter))
                assignments.push_back(assignment);
        }
    });

    std::vector<ZNoteController> notes = controllers.noteControllers();
    context.section("NoteControllers", [&](const ZSerializationContext& list) {
        const ZNoteController defaults;
        const auto serializeNote = [&](const ZSerializationContext& item, ZNoteController& note) {
            item.item("Enabled", note.enabled, defaults.enabled);
            item.item("Mode", note.mode, defaults.mode);
            item.item("Channel", note.channel, defaults.channel, 0, 16);
            item.item("Note", note.note, defaults.note, 0, 127);
            item.item("Value", note.value, defaults.value);
            item.item("MaxValue", note.maxValue, defaults.maxValue);
            item.item("ParameterIndex", note.parameter, defaults.parameter);
        };
        if (list.storing()) {
            for (ZNoteController& note : notes)
                serializeNote(list.on(*list.child("NoteController")), note);
            return;
        }
        notes.clear();
        for (ZMLElement* element : list.children("NoteController")) {
            ZNoteController note;
            serializeNote(list.on(*element), note);
            note.value = unitInterval(note.value);
            note.maxValue = unitInterval(note.maxValue);
            if (validParameter(note.parameter))
                notes.push_back(note);
        }
    });
    if (context.storing())
        return;
    controllers.setControllers(std::move(assignments));
    controllers.setNoteControllers(std::move(notes));
}

void SerializePresetSwitch(const ZSerializationContext& context, ZPresetSwitchController& presetSwitch)
{
    context.section(kPresetSwitchElement, [&](const ZSerializationContext& item) {
        item.item("Enabled", presetSwitch.enabled, false);
        item.item("Controller", presetSwitch.controller, 0, 0, 127);
        item.item("Channel", presetSwitch.channel, 0, 0, 16);
    });
}

} // namespace halvern
