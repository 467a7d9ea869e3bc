// The stored state of the modulator host: the core's settings and the slot part.

#include "modulation/audio_effect_plugin_to_audio_plugin_adapter.h"

#include "core/channel_mode.h"
#include "modulation/modulator_state.h"
#include "state/serialization_context.h"

#include <algorithm>
#include <string>

namespace halvern {
namespace {

constexpr int kSurroundChannels = 8;
constexpr int32_t kMaxLFOBlockSizeLimit = 8192;

} // namespace

void ZAudioEffectPluginToAudioPluginAdapter::Serialize(const ZSerializationContext& context)
{
    serializeSettings(context);
    ZAudioPlugin::Serialize(context);
    serializeState(context);
}

void ZAudioEffectPluginToAudioPluginAdapter::serializeSettings(const ZSerializationContext& context)
{
    if (context.storing())
        context.element().setAttributeInt("Version", kStateVersion);
    else
        context.item("Version", loadedStateVersion_, kUnversionedState);

    std::string mode(ChannelModeName(channelMode()));
    context.kept("ChannelMode", mode);
    // An unknown text keeps the mode.
    if (ZChannelMode read = channelMode(); context.reading() && ChannelModeFromText(mode, read))
        SetChannelMode(read);
    serializeSurround(context);

    bool controllersEnabled = midiControllers_.controllersEnabled();
    bool noteControllersEnabled = midiControllers_.noteControllersEnabled();
    context.item("ControllersEnabled", controllersEnabled, false);
    context.item("NoteControllersEnabled", noteControllersEnabled, false);
    ZPresetSwitchController presetSwitch = midiControllers_.presetSwitch();
    SerializePresetSwitch(context, presetSwitch);
    if (context.reading()) {
        midiControllers_.setControllersEnabled(controllersEnabled);
        midiControllers_.setNoteControllersEnabled(noteControllersEnabled);
        midiControllers_.setPresetSwitch(presetSwitch);
    }

    serializeBypass(context);
    int32_t blockSize = maxSubBlock() > 0 ? maxSubBlock() : kDefaultMaxLFOBlockSize;
    context.item("MaxLFOBlockSize", blockSize, kDefaultMaxLFOBlockSize, 1, kMaxLFOBlockSizeLimit);
    if (context.reading())
        SetMaxSubBlock(blockSize);
}

// "SurroundChannelsEnable": one character per channel, "1" when it goes through the
// effect; written only in the surround mode. States of older versions may hold
// "EnableSurroundProcessing" instead: 1 sent every channel through the effect, 0 only
// the main pair.
void ZAudioEffectPluginToAudioPluginAdapter::serializeSurround(const ZSerializationContext& context)
{
    if (context.storing()) {
        if (channelMode() != ZChannelMode::Surround)
            return;
        std::string enabled;
        for (int channel = 0; channel < kSurroundChannels; ++channel)
            enabled += (surroundChannelMask() >> channel) & 1u ? '1' : '0';
        context.element().setAttribute("SurroundChannelsEnable", enabled);
        return;
    }
    if (const std::string* enabled = context.element().findAttribute("SurroundChannelsEnable")) {
        uint32_t mask = 0;
        for (size_t channel = 0; channel < std::min<size_t>(enabled->size(), kSurroundChannels); ++channel)
            if ((*enabled)[channel] == '1')
                mask |= 1u << channel;
        SetSurroundChannelMask(mask);
    } else if (context.element().hasAttribute("EnableSurroundProcessing")) {
        int32_t all = 0;
        context.item("EnableSurroundProcessing", all, 0);
        SetSurroundChannelMask(all != 0 ? 0xFFu : 0x03u);
    }
}

void ZAudioEffectPluginToAudioPluginAdapter::serializeBypass(const ZSerializationContext& context)
{
    ZValue& bypassSwitch = *parameters().value(bypassIndex_);
    bool bypassed = bypassSwitch.getNormalized() >= 0.5;
    context.item("Bypass", bypassed, false);
    if (context.reading())
        bypassSwitch.setNormalized(bypassed ? 1.0 : 0.0);
}

void ZAudioEffectPluginToAudioPluginAdapter::serializeState(const ZSerializationContext& context)
{
    serializeModulators(context);
    serializeActivePreset(context);
    context.item("CurrentPresetIndex", presetPosition_.currentPresetIndex, -1, -1, INT32_MAX);
    serializeParameters(context);
    effect_->SerializeAdditionalState(context);
    if (context.reading())
        ActualiseAfterLoading();
}

void ZAudioEffectPluginToAudioPluginAdapter::serializeModulators(const ZSerializationContext& context)
{
    const ZModulatorStateScope scope = modulatorStateScope();
    const auto serializeList = [&](const char* listName, const char* itemName, auto& modulators, auto serializeOne) {
        ZMLElement* list = context.child(listName);
        std::vector<ZMLElement*> stored;
        if (list != nullptr && context.reading())
            stored = context.on(*list).children(itemName);
        for (size_t i = 0; i < modulators.size(); ++i) {
            ZMLElement empty{itemName};
            ZMLElement* element = context.storing() ? &list->addChild(itemName)
                                  : i < stored.size() ? stored[i]
                                                      : &empty;
            serializeOne(context.on(*element), *modulators[i], scope);
        }
    };
    serializeList("LFOs", "LFO", lfos_, SerializeLFO);
    SerializeControllerLists(context, midiControllers_, scope);
    serializeList("MultiParameters", "MultiParameter", multiParameters_, SerializeMultiParameter);
}

// "ActivePreset" is always written; "Edit" only while the edit flag is set and
// "CurrentActivePreset" only when not 0. A state without the element predates the
// active presets and opens for editing.
void ZAudioEffectPluginToAudioPluginAdapter::serializeActivePreset(const ZSerializationContext& context)
{
    ZMLElement* element = context.child("ActivePreset");
    if (element == nullptr) {
        presetPosition_.edit = 1;
        presetPosition_.currentActivePreset = 0;
        return;
    }
    const ZSerializationContext item = context.on(*element);
    item.item("Edit", presetPosition_.edit, 0);
    item.item("CurrentActivePreset", presetPosition_.currentActivePreset, 0);
}

// The effect's parameters, each one attribute named by its storage name and holding its
// storage text. A read value is brought into its range; a missing one, or one whose text
// is the default's, takes the exact default.
void ZAudioEffectPluginToAudioPluginAdapter::serializeParameters(const ZSerializationContext& context)
{
    for (int index = 0; index < firstMultiParameter_; ++index) {
        ZValue* value = parameters().value(index);
        const ZParameterInfo& info = parameters().info(index);
        if (value == nullptr || !info.stored)
            continue;
        if (context.storing()) {
            context.element().setAttribute(info.id, value->toStorageText());
        } else if (const std::string* text = context.element().findAttribute(info.id);
                   text != nullptr && *text != defaultStorageTexts_[static_cast<size_t>(index)]) {
            value->fromStorageText(*text);
            value->clampToRange();
        } else {
            value->resetToDefault();
        }
    }
}

void ZAudioEffectPluginToAudioPluginAdapter::ActualiseAfterLoading()
{
    for (auto& multiParameter : multiParameters_)
        multiParameter->stopSwitch();
    for (auto& lfo : lfos_)
        lfo->reset();
}

} // namespace halvern
