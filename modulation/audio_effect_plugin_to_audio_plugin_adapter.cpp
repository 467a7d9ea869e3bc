#include "modulation/audio_effect_plugin_to_audio_plugin_adapter.h"

#include "core/exception_frame.h"
#include "core/vector_kernels.h"
#include "core/z_exception.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace halvern {
namespace {

// The first parameter that holds a value: where a new modulator points until the user
// chooses its targets.
int firstValuedParameter(const ZParameterRegistry& registry)
{
    for (int index = 0; index < registry.count(); ++index)
        if (registry.value(index) != nullptr)
            return index;
    return 0;
}

double blockPeak(float* const* channels, int first, int count, int n)
{
    float level = 0.0f;
    for (int c = first; c < first + count; ++c) {
        float peak = 0.0f;
        kernels::Peak(channels[c], n, peak);
        level = std::max(level, peak);
    }
    return level;
}

} // namespace

ZAudioEffectPluginToAudioPluginAdapter::ZAudioEffectPluginToAudioPluginAdapter() : midiControllers_(processingLock()) {}

ZAudioEffectPluginToAudioPluginAdapter::ZAudioEffectPluginToAudioPluginAdapter(std::unique_ptr<ZAudioEffectPlugin> effect)
    : ZAudioEffectPluginToAudioPluginAdapter()
{
    attachEffect(std::move(effect));
}

void ZAudioEffectPluginToAudioPluginAdapter::Attach(std::string productName, std::string vendorName,
                                                    ZPluginInterfaceFunction interfaceFunction,
                                                    ZEffectDescription description)
{
    if (effect_)
        throw ZException("The plug-in already has its effect.");
    ZPlugin* created = interfaceFunction != nullptr
                           ? reinterpret_cast<ZPlugin*>(interfaceFunction(nullptr, ZAudioEffectPlugin::kMessageCreate, nullptr))
                           : nullptr;
    auto* effect = dynamic_cast<ZAudioEffectPlugin*>(created);
    if (effect == nullptr) {
        delete created;
        throw ZException("Error creating plugin.");
    }
    SetNames(std::move(productName), std::move(vendorName));
    description_ = description;
    attachEffect(std::unique_ptr<ZAudioEffectPlugin>(effect));
}

void ZAudioEffectPluginToAudioPluginAdapter::attachEffect(std::unique_ptr<ZAudioEffectPlugin> effect)
{
    effect_ = std::move(effect);
    effect_->RegisterParameters(*this);
    defaultTarget_.parameter = firstValuedParameter(parameters());
    for (int i = 0; i < kLFOCount; ++i)
        lfos_[static_cast<size_t>(i)] = std::make_unique<ZLFO>(processingLock(), defaultTarget_, i + 1);
    for (int i = 0; i < kMultiParameterCount; ++i)
        multiParameters_[static_cast<size_t>(i)] = std::make_unique<ZMultiParameter>(processingLock(), defaultTarget_, i + 1);
    registerParameters();
}

ZAudioEffectPluginToAudioPluginAdapter::~ZAudioEffectPluginToAudioPluginAdapter() = default;

void ZAudioEffectPluginToAudioPluginAdapter::registerParameters()
{
    firstMultiParameter_ = parameters().count();
    // The effect's values still hold their defaults here.
    defaultStorageTexts_.clear();
    for (int index = 0; index < firstMultiParameter_; ++index) {
        const ZValue* value = parameters().value(index);
        defaultStorageTexts_.push_back(value != nullptr ? value->toStorageText() : std::string());
    }
    for (auto& multiParameter : multiParameters_) {
        const std::string number = std::to_string(multiParameter->number());
        multiParameter->attach(parameters());
        parameters().add({"MultiParameter" + number, "MultiParameter " + number, "", ZParameterType::Float, "", true},
                         &multiParameter->valueObject());
    }
    bypassIndex_ = parameters().count();
    RegisterBypassParameter();
    firstLFOParameter_ = parameters().count();
    for (auto& lfo : lfos_) {
        const std::string number = std::to_string(lfo->number());
        parameters().add({"LFO" + number + "Enabled", "LFO " + number + " enable", "", ZParameterType::Switch, "", true},
                         &lfo->enabledValue());
        parameters().add({"LFO" + number + "Frequency", "LFO " + number + " frequency", "", ZParameterType::Float, "", true},
                         &lfo->frequencyValue());
        parameters().add({"LFO" + number + "Amount", "LFO " + number + " modulation", "", ZParameterType::Float, "", true},
                         &lfo->amountValue());
    }
}

std::string ZAudioEffectPluginToAudioPluginAdapter::GetParameterName(int32_t index)
{
    const int multiParameter = index - firstMultiParameter_;
    if (multiParameter >= 0 && multiParameter < kMultiParameterCount)
        return Guarded("ZAudioEffectPluginToAudioPluginAdapter::GetParameterName", std::string(),
                       [&] { return multiParameters_[static_cast<size_t>(multiParameter)]->displayName(); });
    return ZAudioPlugin::GetParameterName(index);
}

int32_t ZAudioEffectPluginToAudioPluginAdapter::GetTailSamples()
{
    // The longer of the effect's stated tail and the time its settings take to die away;
    // the effect runs at the oversampled rate, so both are counted in its own samples.
    return Guarded("ZAudioEffectPluginToAudioPluginAdapter::GetTailSamples", int32_t{0}, [&] {
        const int32_t tail = std::max(effect_->GetTailLength(), effect_->GetRingingLength());
        return tail / std::max(oversampling(), 1) + GetLatency();
    });
}

void ZAudioEffectPluginToAudioPluginAdapter::SetModulatorsEnabled(bool enabled)
{
    ZLockHolder hold(processingLock(), -1);
    modulatorsEnabled_ = enabled;
}

void ZAudioEffectPluginToAudioPluginAdapter::InitProcessing()
{
    GuardedVoid("ZAudioEffectPluginToAudioPluginAdapter::InitProcessing", [&] {
        ZLockHolder hold(processingLock(), -1);
        ZAudioPlugin::InitProcessing();
        try {
            prepareEffectAndModulators();
        } catch (...) {
            AbandonPreparation();
            throw;
        }
    });
}

void ZAudioEffectPluginToAudioPluginAdapter::prepareEffectAndModulators()
{
    // The effect and the modulators run at the oversampled rate.
    const int factor = oversampling();
    effect_->Prepare(sampleRate() * factor, maxBlockSize() * factor);
    const int32_t flags = effect_->GetProcessingFlags();
    SetClearOutputsFirst((flags & ZAudioEffectPlugin::kFlagAddsIntoOutputs) != 0);
    SetSeparateInputBuffers((flags & ZAudioEffectPlugin::kFlagNeedsSeparateInputs) != 0);
    for (auto& lfo : lfos_)
        lfo->prepare(sampleRate() * factor, maxBlockSize() * factor);
    for (auto& multiParameter : multiParameters_)
        multiParameter->stopSwitch();
    SetLatency(effect_->GetLatency());
}

void ZAudioEffectPluginToAudioPluginAdapter::ProcessSubBlock(float* const* inputs, float* const* outputs, int32_t n)
{
    Process(inputs, outputs, n);
}

void ZAudioEffectPluginToAudioPluginAdapter::PrepareForProcessingOnce(float* const*, float* const*, int32_t)
{
    if (const int step = midiControllers_.takePresetStep(); step != 0)
        presetStep_ = step;
}

void ZAudioEffectPluginToAudioPluginAdapter::Process(float* const* inputs, float* const* outputs, int32_t n)
{
    const bool done = Guarded("ZAudioEffectPluginToAudioPluginAdapter::Process", false, [&] {
        if (modulatorsEnabled_)
            runLFOs(inputs, n);
        runMultiParameters(n);
        feedMeters(inputs, n);
        if (effect_->TakeParameterChanges())
            effect_->Update();
        effect_->Process(&hostTime(), inputs, outputs, n);
        return true;
    });
    // A failed piece is silent rather than whatever the effect left half-written.
    if (!done)
        for (int c = 0; c < GetOutputBusCount() * channelsPerBus(); ++c)
            kernels::Zero(outputs[c], n);
}

ZLFOInput ZAudioEffectPluginToAudioPluginAdapter::detectorInput(const ZLFO& lfo, float* const* inputs, int n) const
{
    const int mainChannels = std::min(channelsPerBus(), inputChannelCount());
    const bool sideChain = lfo.settings().useSideChain && inputChannelCount() >= 2 * outputChannelCount() &&
                           inputChannelCount() >= 2 * mainChannels && mainChannels > 0;
    ZLFOInput input;
    input.channels = sideChain ? inputs + mainChannels : inputs;
    input.channelCount = mainChannels;
    input.sampleCount = n;
    input.sampleRate = sampleRate() * oversampling();
    input.time = &const_cast<ZAudioEffectPluginToAudioPluginAdapter*>(this)->hostTime();
    return input;
}

void ZAudioEffectPluginToAudioPluginAdapter::runLFOs(float* const* inputs, int n)
{
    std::array<double, kLFOCount> blockStartPhase{};
    for (int i = 0; i < kLFOCount; ++i) {
        ZLFO& lfo = *lfos_[static_cast<size_t>(i)];
        lfo.followEnableSwitch(parameters());
        if (!lfo.enabled())
            continue;
        // Members of a sync group take the phase of the group's first enabled member.
        const int group = lfo.settings().syncGroup;
        for (int leader = 0; group > 0 && leader < i; ++leader)
            if (const ZLFO& other = *lfos_[static_cast<size_t>(leader)]; other.enabled() && other.settings().syncGroup == group) {
                lfo.alignPhase(blockStartPhase[static_cast<size_t>(leader)]);
                break;
            }
        blockStartPhase[static_cast<size_t>(i)] = lfo.phase();
        lfo.targets().apply(lfo.process(detectorInput(lfo, inputs, n)), parameters());
    }
}

void ZAudioEffectPluginToAudioPluginAdapter::runMultiParameters(int n)
{
    const double rate = sampleRate() * oversampling();
    for (auto& multiParameter : multiParameters_) {
        if (multiParameter->takeValueChange())
            multiParameter->applyValue(parameters());
        multiParameter->processSwitch(n, rate, parameters());
    }
}

// Peak levels over the piece: the main inputs feed the input meter; the inputs after
// them feed the side-chain meter when the plug-in has twice as many inputs as outputs.
void ZAudioEffectPluginToAudioPluginAdapter::feedMeters(float* const* inputs, int n)
{
    if (!metering())
        return;
    const int mainChannels = std::min(channelsPerBus(), inputChannelCount());
    inputMeter_ = blockPeak(inputs, 0, mainChannels, n);
    const bool sideChain = inputChannelCount() >= 2 * outputChannelCount() && inputChannelCount() >= 2 * mainChannels;
    sideChainMeter_ = sideChain && mainChannels > 0 ? blockPeak(inputs, mainChannels, mainChannels, n) : 0.0;
}

void ZAudioEffectPluginToAudioPluginAdapter::ProcessNote(int channel, int note, int velocity, bool on, int32_t offset)
{
    GuardedVoid("ZAudioEffectPluginToAudioPluginAdapter::ProcessNote", [&] {
        ZMIDIProcessor::ProcessNote(channel, note, velocity, on, offset);
        midiControllers_.note(channel, note, velocity, on, parameters());
        for (auto& lfo : lfos_)
            on ? lfo->noteOn() : lfo->noteOff();
    });
}

void ZAudioEffectPluginToAudioPluginAdapter::ProcessMIDIController(int channel, int controller, int value, int32_t offset)
{
    GuardedVoid("ZAudioEffectPluginToAudioPluginAdapter::ProcessMIDIController", [&] {
        ZMIDIProcessor::ProcessMIDIController(channel, controller, value, offset);
        midiControllers_.controllerChanged(channel, controller, value, parameters());
    });
}

void ZAudioEffectPluginToAudioPluginAdapter::ProcessAftertouch(int channel, int value, int32_t offset)
{
    GuardedVoid("ZAudioEffectPluginToAudioPluginAdapter::ProcessAftertouch", [&] {
        ZMIDIProcessor::ProcessAftertouch(channel, value, offset);
        midiControllers_.aftertouch(channel, value, parameters());
    });
}

void ZAudioEffectPluginToAudioPluginAdapter::ProcessPitchBend(int channel, int value, int32_t offset)
{
    GuardedVoid("ZAudioEffectPluginToAudioPluginAdapter::ProcessPitchBend", [&] {
        ZMIDIProcessor::ProcessPitchBend(channel, value, offset);
        midiControllers_.pitchBend(channel, value, parameters());
    });
}

void ZAudioEffectPluginToAudioPluginAdapter::ProcessUpdate()
{
    GuardedVoid("ZAudioEffectPluginToAudioPluginAdapter::ProcessUpdate", [&] { SendPendingAutomation(); });
}

void ZAudioEffectPluginToAudioPluginAdapter::GenerateRandomSettings()
{
    GuardedVoid("ZAudioEffectPluginToAudioPluginAdapter::GenerateRandomSettings", [&] { randomize(false); });
}

void ZAudioEffectPluginToAudioPluginAdapter::GenerateRandomSettingsSmart()
{
    GuardedVoid("ZAudioEffectPluginToAudioPluginAdapter::GenerateRandomSettingsSmart", [&] { randomize(true); });
}

// Random settings that stay musical: LFO rates spread evenly on a logarithmic scale
// from 0.05 Hz to 5 Hz, phases anywhere, one of the five basic shapes; targets moved
// around a centre between 20 % and 80 % by a depth between 10 % and 60 %, half of them
// inverted. Enable switches and modes stay as they are.
void ZAudioEffectPluginToAudioPluginAdapter::randomize(bool onlyEnabled)
{
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    auto randomTargets = [&](std::vector<ZModulatorTarget> targets) {
        for (ZModulatorTarget& target : targets) {
            target.value = 0.2 + 0.6 * unit(random_);
            target.range = 0.1 + 0.5 * unit(random_);
            target.rangeMode = ZRangeMode::UpAndDown;
            target.invert = unit(random_) < 0.5;
        }
        return targets;
    };
    ZLockHolder hold(processingLock(), -1);
    for (auto& lfo : lfos_) {
        if (onlyEnabled && !lfo->enabled())
            continue;
        ZLFOSettings settings = lfo->settings();
        settings.frequency = 0.05 * std::pow(100.0, unit(random_));
        settings.phase = unit(random_);
        lfo->setSettings(settings);
        ZSignalGenerator shape = lfo->shape();
        shape.setFamily(static_cast<ZSignalGenerator::Family>(std::uniform_int_distribution<int>(0, 4)(random_)));
        lfo->setShape(shape);
        lfo->targets().replaceAll(randomTargets(lfo->targets().targets()));
        for (int i = 0; i < kParametersPerLFO; ++i)
            parameters().markForHost(lfoParameterIndex(lfo->number() - 1) + i);
    }
    for (auto& multiParameter : multiParameters_) {
        if (onlyEnabled && !multiParameter->enabled())
            continue;
        multiParameter->replaceTargets(randomTargets(multiParameter->targets().targets()));
        parameters().setNow(multiParameterIndex(multiParameter->number() - 1), unit(random_));
        parameters().markForHost(multiParameterIndex(multiParameter->number() - 1));
    }
}

} // namespace halvern
