#include "state/preset_owners.h"

#include "modulation/modulator_state.h"

namespace halvern {

void ZPluginPresetOwner::Load(ZMLElement& content)
{
    ZPresetSwitchController presetSwitch = core_->midiControllers().presetSwitch();
    // Every stored one goes: reading takes the first of that name.
    while (content.removeChild(kPresetSwitchElement)) {
    }
    SerializePresetSwitch(ZSerializationContext(content, true), presetSwitch);
    ApplyPluginState(*core_, content);
}

void ZLFOPresetKind::Serialize(const ZSerializationContext& context, ZAudioEffectPluginToAudioPluginAdapter& core,
                               int index)
{
    ZLFO& lfo = core.lfo(index);
    SerializeLFO(context, lfo, core.modulatorStateScope());
    if (context.reading())
        lfo.reset();
}

void ZMultiParameterPresetKind::Serialize(const ZSerializationContext& context,
                                          ZAudioEffectPluginToAudioPluginAdapter& core, int index)
{
    SerializeMultiParameter(context, core.multiParameter(index), core.modulatorStateScope());
}

void ZSignalGeneratorPresetKind::Serialize(const ZSerializationContext& context,
                                           ZAudioEffectPluginToAudioPluginAdapter& core, int index)
{
    ZLFO& lfo = core.lfo(index);
    ZSignalGenerator shape = lfo.shape();
    SerializeSignalGenerator(context, shape);
    if (context.reading())
        lfo.setShape(shape);
}

bool FollowPresetSwitch(ZPluginPresetManager& manager)
{
    return manager.Step(manager.owner().core().TakePresetStep());
}

} // namespace halvern
