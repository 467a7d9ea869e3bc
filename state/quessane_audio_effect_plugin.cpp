#include "state/quessane_audio_effect_plugin.h"

#include "core/exception_frame.h"
#include "core/value_displays.h"
#include "core/z_format.h"
#include "state/serialization_context.h"

#include <algorithm>

namespace halvern {
namespace {

constexpr const char* kMorphWarning =
    "Preset {0} is currently selected, which means that the changes you have made using ABCD morphing will replace "
    "it. ABCD morphing uses presets A,B,C and D, so next time you use it you would be morphing different presets, "
    "because you are going to change one of them.";

constexpr const char* kAGCHelp =
    "Automatic gain control: keeps the output about as loud as the input, so slots and presets can be "
    "compared at equal loudness.";

} // namespace

ZQuessaneAudioEffectPlugin::ZQuessaneAudioEffectPlugin() = default;

ZQuessaneAudioEffectPlugin::ZQuessaneAudioEffectPlugin(std::unique_ptr<ZAudioEffectPlugin> effect)
    : ZAudioEffectPluginToAudioPluginAdapter(std::move(effect))
{
    setUp();
}

ZQuessaneAudioEffectPlugin::~ZQuessaneAudioEffectPlugin() = default;

void ZQuessaneAudioEffectPlugin::Attach(std::string productName, std::string vendorName,
                                        ZPluginInterfaceFunction interfaceFunction, ZEffectDescription description)
{
    ZAudioEffectPluginToAudioPluginAdapter::Attach(std::move(productName), std::move(vendorName), interfaceFunction,
                                                   description);
    setUp();
}

void ZQuessaneAudioEffectPlugin::setUp()
{
    morph_.setParameters(morphableParameters(), parameters());
    registerParameters();
    slots_.initialise();
}

// Every automatable parameter with a value but the bypass switch.
std::vector<int> ZQuessaneAudioEffectPlugin::morphableParameters() const
{
    std::vector<int> morphable;
    for (int index = 0; index < parameters().count(); ++index)
        if (parameters().value(index) != nullptr && parameters().info(index).automatable && index != bypassIndex())
            morphable.push_back(index);
    return morphable;
}

void ZQuessaneAudioEffectPlugin::registerParameters()
{
    slotParameter_ = parameters().add({"AH", "AH", "", ZParameterType::Integer, "", true, false}, &slots_.selector());
    firstMorphParameter_ =
        parameters().add({"ABCDMorphingU", "ABCD morphing U", "", ZParameterType::Float, "", true, false}, &morph_.axis(0));
    parameters().add({"ABCDMorphingV", "ABCD morphing V", "", ZParameterType::Float, "", true, false}, &morph_.axis(1));
    agcValue_.setFormatter(FormatOnOff);
    agcParameter_ = parameters().add({"AGC", "AGC", "", ZParameterType::Switch, kAGCHelp, true, false}, &agcValue_);
}

// ---------------------------------------------------------------- slots

void ZQuessaneAudioEffectPlugin::SelectSlot(int slot)
{
    const bool switched = Guarded("ZQuessaneAudioEffectPlugin::SelectSlot", false, [&] {
        ZLockHolder hold(processingLock(), -1);
        // Host changes still parked belong to the slot that is left.
        parameters().takeParked();
        slots_.request(slot);
        return switchSlots();
    });
    if (switched)
        updates_.Request();
}

bool ZQuessaneAudioEffectPlugin::switchSlots()
{
    if (slots_.requested() == slots_.live())
        return false;
    captureCorner(slots_.live());
    slots_.switchToRequested();
    captureCorner(slots_.live());
    slotChanges_.fetch_add(1, std::memory_order_acq_rel);
    return true;
}

std::unique_ptr<ZMLElement> ZQuessaneAudioEffectPlugin::CopyLiveSlot()
{
    auto state = std::make_unique<ZMLElement>(std::string(kSlotElement));
    ZLockHolder hold(processingLock(), -1);
    serializeState(ZSerializationContext(*state, true));
    return state;
}

void ZQuessaneAudioEffectPlugin::PasteIntoLiveSlot(ZMLElement& state)
{
    {
        ZLockHolder hold(processingLock(), -1);
        parameters().takeParked();
        ZReadOrRestore(state, [this](const ZSerializationContext& context) { serializeState(context); });
        captureCorner(slots_.live());
        StateChanged();
    }
    slotChanges_.fetch_add(1, std::memory_order_acq_rel);
    updates_.Request();
}

std::array<bool, ZStateSlots::kCount> ZQuessaneAudioEffectPlugin::SlotsHoldingChanges()
{
    const ZMLElement& defaults = slots_.initialState();
    // Slots read from a state carry the name of their child there: only the content counts.
    const auto differs = [&defaults](const ZMLElement& state) {
        if (state.name() == defaults.name())
            return !(state == defaults);
        const std::unique_ptr<ZMLElement> renamed = state.clone();
        renamed->setName(defaults.name());
        return !(*renamed == defaults);
    };
    std::array<bool, ZStateSlots::kCount> changed{};
    ZMLElement live(defaults.name());
    ZLockHolder hold(processingLock(), -1);
    serializeState(ZSerializationContext(live, true));
    for (int slot = 0; slot < ZStateSlots::kCount; ++slot)
        changed[static_cast<size_t>(slot)] = differs(slot == slots_.live() ? live : slots_.state(slot));
    return changed;
}

void ZQuessaneAudioEffectPlugin::captureCorner(int slot)
{
    if (slot < ZABCDMorph::kCorners)
        morph_.capture(slot, parameters());
}

// The live corner comes from the loaded state; the others are read from their slots in
// turn, and the loaded state is read again at the end.
void ZQuessaneAudioEffectPlugin::captureStoredCorners(ZMLElement& loadedState)
{
    captureCorner(slots_.live());
    bool replaced = false;
    for (int corner = 0; corner < ZABCDMorph::kCorners; ++corner) {
        if (corner == slots_.live())
            continue;
        slots_.load(corner);
        captureCorner(corner);
        replaced = true;
    }
    if (replaced)
        serializeState(ZSerializationContext(loadedState, false));
}

// ---------------------------------------------------------------- morphing

int ZQuessaneAudioEffectPlugin::MoveMorph(double u, double v)
{
    const int set = Guarded("ZQuessaneAudioEffectPlugin::MoveMorph", 0, [&] {
        ZLockHolder hold(processingLock(), -1);
        for (const auto& [axis, position] : {std::pair{0, u}, std::pair{1, v}}) {
            parameters().setNow(morphParameterIndex(axis), position);
            parameters().markForHost(morphParameterIndex(axis));
        }
        return morph_.follow(parameters());
    });
    updates_.Request();
    return set;
}

std::string ZQuessaneAudioEffectPlugin::MorphWarning() const
{
    if (slots_.live() >= ZABCDMorph::kCorners)
        return {};
    return ZFormat(kMorphWarning).arg(std::string(1, ZStateSlots::Letter(slots_.live()))).text();
}

// ---------------------------------------------------------------- host reach

void ZQuessaneAudioEffectPlugin::StateChanged()
{
    ZAudioEffectPluginToAudioPluginAdapter::StateChanged();
    updates_.Request();
}

// Each request carries the number of state loads before it, so that a load supersedes
// every request made before it, however late the update thread comes to it.
void ZQuessaneAudioEffectPlugin::HostChangedParameter(int32_t index)
{
    const bool slot = index == slotParameter_;
    if (!slot && index != morphParameterIndex(0) && index != morphParameterIndex(1))
        return;
    (slot ? slotRequest_ : padRequest_).store(loads_.load(std::memory_order_acquire) + 1, std::memory_order_release);
    updates_.Request();
}

void ZQuessaneAudioEffectPlugin::PrepareForProcessingOnce(float* const* inputs, float* const* outputs, int32_t sampleCount)
{
    ZAudioEffectPluginToAudioPluginAdapter::PrepareForProcessingOnce(inputs, outputs, sampleCount);
    if (HasPresetStep() || parameters().hasMarked())
        updates_.Request();
}

void ZQuessaneAudioEffectPlugin::ProcessUpdate()
{
    // A program or preset step changes every value behind the host's back: it is told.
    if (const int32_t program = requestedProgram_.exchange(-1, std::memory_order_acq_rel); program >= 0 && LoadProgram(program))
        StateChanged();
    if (presets_ != nullptr && HasPresetStep() &&
        Guarded("ZQuessaneAudioEffectPlugin::ProcessUpdate", false, [&] { return FollowPresetSwitch(*presets_); }))
        StateChanged();
    const uint64_t slotRequest = slotRequest_.exchange(0, std::memory_order_acq_rel);
    const uint64_t padRequest = padRequest_.exchange(0, std::memory_order_acq_rel);
    if (slotRequest != 0 || padRequest != 0)
        GuardedVoid("ZQuessaneAudioEffectPlugin::ProcessUpdate", [&] {
            ZLockHolder hold(processingLock(), -1);
            const uint64_t current = loads_.load(std::memory_order_acquire) + 1;
            if (slotRequest != current && padRequest != current)
                return;
            // Host changes made before the request belong to the slot that is left.
            parameters().takeParked();
            if (slotRequest == current)
                switchSlots();
            if (padRequest == current)
                morph_.follow(parameters());
        });
    ZAudioEffectPluginToAudioPluginAdapter::ProcessUpdate();
}

// ---------------------------------------------------------------- presets

void ZQuessaneAudioEffectPlugin::SetPresets(ZPresetCollection factory, const std::string& userDataFolder)
{
    userDataFolder_ = userDataFolder;
    presets_ = std::make_unique<ZPluginPresetManager>(ZPluginPresetOwner(*this), userDataFolder, std::move(factory));
    programNames_.clear();
    for (const ZMLElement* preset : presets_->factory().presets())
        programNames_.push_back(preset->getAttribute(kPresetName));
    // A user collection that does not read leaves the user's presets empty; the file
    // stays as it is until the user saves.
    GuardedVoid("ZQuessaneAudioEffectPlugin::SetPresets", [&] { presets_->LoadCollection(); });
}

int32_t ZQuessaneAudioEffectPlugin::GetProgramCount() { return static_cast<int32_t>(programNames_.size()); }

std::string ZQuessaneAudioEffectPlugin::GetProgramName(int32_t index)
{
    return index >= 0 && index < GetProgramCount() ? programNames_[static_cast<size_t>(index)] : std::string();
}

// The factory presets come first in the manager's sequence, so a current preset index
// below their count is a program.
int32_t ZQuessaneAudioEffectPlugin::GetCurrentProgram()
{
    const int32_t current = presetPosition().currentPresetIndex;
    return current >= 0 && current < GetProgramCount() ? current : -1;
}

bool ZQuessaneAudioEffectPlugin::LoadProgram(int32_t index)
{
    return Guarded("ZQuessaneAudioEffectPlugin::LoadProgram", false, [&] {
        if (presets_ == nullptr || index < 0 || index >= GetProgramCount())
            return false;
        presets_->Load(*presets_->factory().presets()[static_cast<size_t>(index)]);
        return true;
    });
}

void ZQuessaneAudioEffectPlugin::RequestProgram(int32_t index)
{
    if (index < 0 || index >= GetProgramCount())
        return;
    requestedProgram_.store(index, std::memory_order_release);
    updates_.Request();
}

// ---------------------------------------------------------------- state

void ZQuessaneAudioEffectPlugin::Serialize(const ZSerializationContext& context)
{
    if (context.reading())
        loads_.fetch_add(1, std::memory_order_acq_rel);
    int32_t agc = agc_;
    context.kept("AGC", agc);
    if (context.reading())
        setAGCUnlocked(agc != 0);
    serializePad(context);
    slots_.serialize(context);
    ZAudioEffectPluginToAudioPluginAdapter::Serialize(context);
    if (context.reading()) {
        captureStoredCorners(context.element());
        slotChanges_.fetch_add(1, std::memory_order_acq_rel);
    }
}

// The pad's position, by its parameters' names; read back as it was, without blending.
void ZQuessaneAudioEffectPlugin::serializePad(const ZSerializationContext& context)
{
    for (int axis = 0; axis < 2; ++axis) {
        ZValue& value = morph_.axis(axis);
        double position = value.getNormalized();
        context.item(parameters().info(morphParameterIndex(axis)).id, position, 0.0);
        if (context.reading())
            value.setNormalized(position);
    }
}

// ---------------------------------------------------------------- AGC

void ZQuessaneAudioEffectPlugin::SetAGC(bool on)
{
    GuardedVoid("ZQuessaneAudioEffectPlugin::SetAGC", [&] {
        ZLockHolder hold(processingLock(), -1);
        setAGCUnlocked(on);
    });
}

void ZQuessaneAudioEffectPlugin::setAGCUnlocked(bool on)
{
    agc_ = on ? 1 : 0;
}

void ZQuessaneAudioEffectPlugin::InitProcessing()
{
    ZAudioEffectPluginToAudioPluginAdapter::InitProcessing();
    GuardedVoid("ZQuessaneAudioEffectPlugin::InitProcessing", [&] {
        ZLockHolder hold(processingLock(), -1);
        gainControl_.prepare(sampleRate() * std::max(oversampling(), 1));
    });
}

void ZQuessaneAudioEffectPlugin::ProcessSubBlock(float* const* inputs, float* const* outputs, int32_t n)
{
    const bool switchedOn = agc_ != 0 && !agcRunning_;
    agcRunning_ = agc_ != 0;
    if (!agcRunning_) {
        ZAudioEffectPluginToAudioPluginAdapter::ProcessSubBlock(inputs, outputs, n);
        return;
    }
    if (switchedOn)
        gainControl_.reset();
    gainControl_.takeInput(inputs, std::min(channelsPerBus(), inputChannelCount()), n);
    ZAudioEffectPluginToAudioPluginAdapter::ProcessSubBlock(inputs, outputs, n);
    gainControl_.process(outputs, GetOutputBusCount() * channelsPerBus(), n);
}

} // namespace halvern
