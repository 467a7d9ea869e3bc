#include "analysis/impulse_analysis.h"
#include "host/library_module.h"
#include "presets/factory_presets.h"
#include "reverb/halvern_audio_effect_plugin.h"
#include "state/preset_owners.h"
#include "tools/render_session.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

namespace halvern {
namespace {

constexpr double kSampleRate = 48000.0; // the rate of the README's measurements

std::vector<std::string> PresetNames()
{
    const ZPresetCollection collection = ZPresetCollection::ReadBlock(FactoryPresetBlock());
    std::vector<std::string> names;
    for (const ZMLElement* preset : collection.presets())
        names.push_back(preset->getAttribute(kPresetName));
    return names;
}

TEST(FactoryPresets, TheModuleCarriesAtLeastSixteenUniquelyNamedPresets)
{
    EnsureModuleInstance();
    EXPECT_TRUE(std::ranges::equal(CurrentModule()->builtInStore(), FactoryPresetBlock())) << "registered at load";
    EXPECT_GE(FactoryPresets().presets().size(), 16u);
    std::set<std::string> names;
    for (const std::string& name : PresetNames())
        EXPECT_TRUE(!name.empty() && names.insert(name).second) << "\"" << name << "\"";
}

class FactoryPresetTest : public ::testing::TestWithParam<std::string> {};

// Loaded through the preset manager into a fresh core, every item the preset sets
// arrives as written: a misspelt key would be skipped and a value out of range brought
// into it, both without an error. The impulse response is finite; undamped, its
// broadband decay is the reverb time within 15 %. Dampening takes energy on top by
// design, and a gate ends the tail in digital silence before half the reverb time,
// where an ungated tail would not yet have fallen 30 dB.
TEST_P(FactoryPresetTest, LoadsAsWrittenAndDecaysInItsReverbTime)
{
    tools::RenderSession session(kSampleRate, 512);
    ZPluginPresetManager manager(ZPluginPresetOwner(session.core()), "",
                                 ZPresetCollection::ReadBlock(FactoryPresetBlock()));
    const std::vector<const ZMLElement*> presets = manager.factory().presets();
    const ZMLElement& preset = **std::ranges::find_if(
        presets, [](const ZMLElement* p) { return p->getAttribute(kPresetName) == GetParam(); });
    manager.Load(preset);

    ZMLElement state("settings");
    StorePluginState(session.core(), state);
    for (const auto& [key, text] : preset.attributes()) {
        if (key == kPresetName)
            continue;
        ASSERT_TRUE(state.hasAttribute(key)) << key << " is not an item of the plug-in";
        char* end = nullptr;
        const double written = std::strtod(text.c_str(), &end);
        if (*end == '\0')
            EXPECT_NEAR(std::stod(state.getAttribute(key)), written, 1e-9 * std::max(1.0, std::fabs(written))) << key;
        else
            EXPECT_EQ(state.getAttribute(key), text) << key;
    }

    session.start();
    const ZAudioData response = session.renderImpulse();
    size_t lastSound = 0;
    for (const std::vector<float>& channel : response.channels)
        for (size_t n = 0; n < channel.size(); ++n) {
            ASSERT_TRUE(std::isfinite(channel[n])) << "sample " << n;
            lastSound = channel[n] != 0.0f ? std::max(lastSound, n) : lastSound;
        }
    ASSERT_GT(lastSound, 0u) << "silent";

    const ZReverbSettings& settings = static_cast<HalvernAudioEffectPlugin&>(session.core().effect()).settings();
    if (settings.gateEnabled != 0) {
        EXPECT_LT(static_cast<double>(lastSound) / kSampleRate, 0.5 * settings.reverbTime);
        return;
    }
    const ZDecayTime decay = AnalyseImpulseResponse(response).broadband.decay;
    ASSERT_NE(decay.method, ZDecayMethod::NotMeasurable);
    if (settings.lowDamp == 0.0 && settings.highDamp == 0.0) {
        EXPECT_NEAR(decay.seconds / settings.reverbTime, 1.0, 0.15)
            << "measured " << decay.seconds << " s for a reverb time of " << settings.reverbTime << " s";
    }
}

std::string TestName(const ::testing::TestParamInfo<std::string>& info)
{
    std::string name;
    std::ranges::copy_if(info.param, std::back_inserter(name), [](unsigned char c) { return std::isalnum(c); });
    return name;
}

INSTANTIATE_TEST_SUITE_P(Factory, FactoryPresetTest, ::testing::ValuesIn(PresetNames()), TestName);

} // namespace
} // namespace halvern
