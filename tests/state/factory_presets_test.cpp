#include "host/library_module.h"
#include "presets/factory_presets.h"
#include "reverb/halvern_audio_effect_plugin.h"
#include "state/preset_owners.h"
#include "tools/impulse_analysis.h"
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

constexpr double kSampleRate = 48000.0; // the rate the README's measurements are made at
constexpr double kDecayTolerance = 0.15;

ZPresetCollection BuiltInCollection()
{
    return ZPresetCollection::ReadBlock(FactoryPresetBlock());
}

std::vector<std::string> PresetNames()
{
    const ZPresetCollection collection = BuiltInCollection();
    std::vector<std::string> names;
    for (const ZMLElement* preset : collection.presets())
        names.push_back(preset->getAttribute(kPresetName));
    return names;
}

TEST(FactoryPresets, TheModuleCarriesTheBlockAsACollectionOfUniquelyNamedPresetsInFolders)
{
    EnsureModuleInstance();
    const std::span<const uint8_t> block = FactoryPresetBlock();
    EXPECT_TRUE(std::ranges::equal(CurrentModule()->builtInStore(), block)) << "registered before the module was made";

    const ZPresetCollection factory = FactoryPresets();
    EXPECT_GE(factory.presets().size(), 16u);
    const std::vector<std::string> names = PresetNames();
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), names.size()) << "names are unique";
    for (const std::unique_ptr<ZMLElement>& folder : factory.root().children()) {
        EXPECT_EQ(folder->name(), ZPresetCollection::kFolderElement);
        EXPECT_FALSE(folder->getAttribute(ZPresetCollection::kFolderName).empty());
        for (const std::unique_ptr<ZMLElement>& preset : folder->children())
            EXPECT_FALSE(preset->getAttribute(kPresetName).empty());
    }
}

class FactoryPresetTest : public ::testing::TestWithParam<std::string> {
protected:
    // Loads the preset through the preset manager into the session's fresh core.
    const ZMLElement& Load()
    {
        ZPluginPresetManager manager(ZPluginPresetOwner(session_.core()), "", BuiltInCollection());
        const std::vector<const ZMLElement*> presets = manager.factory().presets();
        const auto found = std::ranges::find_if(
            presets, [&](const ZMLElement* preset) { return preset->getAttribute(kPresetName) == GetParam(); });
        manager.Load(**found);
        loaded_ = (*found)->clone();
        return *loaded_;
    }
    const ZReverbSettings& Settings()
    {
        return static_cast<HalvernAudioEffectPlugin&>(session_.core().effect()).settings();
    }

    tools::RenderSession session_{kSampleRate, 512};
    std::unique_ptr<ZMLElement> loaded_;
};

// Every item a preset sets arrives in the core as written: a misspelt key would be
// skipped and a value outside its range brought into it, both without an error.
TEST_P(FactoryPresetTest, LoadsEveryItemItSetsAsWritten)
{
    const ZMLElement& preset = Load();
    ZMLElement state("settings");
    StorePluginState(session_.core(), state);
    for (const auto& [key, text] : preset.attributes()) {
        if (key == kPresetName)
            continue;
        ASSERT_TRUE(state.hasAttribute(key)) << key << " is not an item of the plug-in";
        const std::string stored = state.getAttribute(key);
        char* end = nullptr;
        const double written = std::strtod(text.c_str(), &end);
        if (*end == '\0')
            EXPECT_NEAR(std::stod(stored), written, 1e-9 * std::max(1.0, std::fabs(written))) << key;
        else
            EXPECT_EQ(stored, text) << key;
    }
}

// The impulse response is finite. Undamped, its broadband decay is the preset's reverb
// time within 15 %; dampening takes energy on top by design, and a gate ends the tail
// in digital silence long before an ungated one would have fallen 30 dB.
TEST_P(FactoryPresetTest, RendersAFiniteResponseThatDecaysInItsReverbTime)
{
    Load();
    session_.start();
    const tools::AudioData response = session_.renderImpulse();
    const double reverbTime = Settings().reverbTime;
    size_t lastSound = 0;
    for (const std::vector<float>& channel : response.channels)
        for (size_t n = 0; n < channel.size(); ++n) {
            ASSERT_TRUE(std::isfinite(channel[n])) << "sample " << n;
            if (channel[n] != 0.0f)
                lastSound = std::max(lastSound, n);
        }
    ASSERT_GT(lastSound, 0u) << "the preset is silent";

    if (Settings().gateEnabled != 0) {
        EXPECT_LT(static_cast<double>(lastSound) / kSampleRate, 0.5 * reverbTime);
        return;
    }
    const tools::DecayTime decay = tools::AnalyseImpulseResponse(response).broadband.decay;
    ASSERT_NE(decay.method, tools::DecayMethod::NotMeasurable);
    if (Settings().lowDamp == 0.0 && Settings().highDamp == 0.0) {
        EXPECT_NEAR(decay.seconds / reverbTime, 1.0, kDecayTolerance)
            << "measured " << decay.seconds << " s for a reverb time of " << reverbTime << " s";
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
