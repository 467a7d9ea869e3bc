#include "reverb/halvern_audio_effect_plugin.h"
#include "state/preset_owners.h"
#include "state/zml_writer.h"
#include "tests/state/stream_test_support.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace halvern {
namespace {

using test::messageOf;
using Core = ZAudioEffectPluginToAudioPluginAdapter;

double ReverbTime(Core& core)
{
    return static_cast<HalvernAudioEffectPlugin&>(core.effect()).settings().reverbTime;
}

ZMLElement& AddPreset(ZMLElement& folder, const char* name, const char* reverbTime)
{
    ZMLElement& preset = folder.addChild("preset");
    preset.setAttribute("name", name);
    preset.setAttribute("ReverbTime", reverbTime);
    return preset;
}

std::string Dump(const ZMLElement& element)
{
    return ZMLDocumentText(element, ZMLLayout::Indented);
}

std::string FileText(const std::filesystem::path& path)
{
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

// Zlib level 9 as upper-case hexadecimal, computed without the streams under test.
std::string PackedByHand(const std::string& text)
{
    uLongf length = compressBound(text.size());
    std::vector<uint8_t> bytes(length);
    compress2(bytes.data(), &length, reinterpret_cast<const Bytef*>(text.data()), text.size(), 9);
    std::string digits;
    for (uLongf i = 0; i < length; ++i)
        digits += std::string{"0123456789ABCDEF"[bytes[i] >> 4], "0123456789ABCDEF"[bytes[i] & 15]};
    return digits;
}

class PresetManagerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "halvern-presets-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        directory_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(directory_); }

    ZPluginPresetManager Manager(Core& core, ZPresetCollection factory = {})
    {
        return {ZPluginPresetOwner(core), directory_.string(), std::move(factory)};
    }
    // The state without the index of the preset loaded last.
    static std::string StateOf(Core& core)
    {
        ZMLElement state("settings");
        StorePluginState(core, state);
        state.removeAttribute("CurrentPresetIndex");
        return Dump(state);
    }
    static void ResetToDefaults(Core& core)
    {
        ZMLElement empty("settings");
        ApplyPluginState(core, empty);
    }

    std::unique_ptr<Core> core_ = std::make_unique<Core>(std::make_unique<HalvernAudioEffectPlugin>());
    std::filesystem::path directory_;
};

TEST_F(PresetManagerTest, PlainAndCompressedFormsLoadToIdenticalStatesAndReplaceKeepsTheForm)
{
    ZPluginPresetManager manager = Manager(*core_);
    ZMLElement& root = manager.collection().root();
    for (int index = 0; index < core_->multiParameterIndex(0); ++index)
        if (ZValue* value = core_->parameters().value(index))
            value->setNormalized(0.37);
    ZLFOSettings settings = core_->lfo(1).settings();
    settings.frequency = 3.5;
    core_->lfo(1).setSettings(settings);
    const std::string configured = StateOf(*core_);
    ZMLElement& plain = manager.Add(root, "Hall");
    ZMLElement& packed = manager.Add(root, "Hall packed");
    packed.setAttribute("ExchangeIndex", "12");
    CompressPreset(packed);

    EXPECT_EQ(packed.attributes().size(), 3u) << "name, compressed and ExchangeIndex only";
    EXPECT_EQ(packed.getAttribute("compressed"), "1");
    EXPECT_EQ(packed.getAttribute("ExchangeIndex"), "12");
    EXPECT_TRUE(packed.children().empty());
    EXPECT_EQ(packed.text().rfind("78DA", 0), 0u) << "zlib header of level 9";
    EXPECT_EQ(packed.text().find_first_not_of("0123456789ABCDEF"), std::string::npos);

    ResetToDefaults(*core_);
    manager.Load(plain);
    EXPECT_EQ(core_->presetPosition().currentPresetIndex, 0);
    EXPECT_EQ(StateOf(*core_), configured);
    ResetToDefaults(*core_);
    manager.Load(packed);
    EXPECT_EQ(core_->presetPosition().currentPresetIndex, 1);
    EXPECT_EQ(StateOf(*core_), configured);

    settings.frequency = 0.5;
    core_->lfo(1).setSettings(settings);
    manager.Replace(packed);
    EXPECT_TRUE(IsCompressedPreset(packed));
    EXPECT_EQ(packed.getAttribute("name"), "Hall packed");
    EXPECT_EQ(packed.getAttribute("ExchangeIndex"), "12");
    manager.Load(plain);
    manager.Load(packed);
    EXPECT_EQ(core_->lfo(1).settings().frequency, 0.5);
}

TEST_F(PresetManagerTest, CompressAllAndMarkForExchangeCountWhatTheyChange)
{
    ZPresetCollection collection;
    ZMLElement& root = collection.root();
    AddPreset(root, "A", "1").setAttribute("ExchangeIndex", "7");
    AddPreset(root, "B", "2");
    ZMLElement& folder = ZPresetCollection::CreateFolder(root, "Rooms");
    AddPreset(folder, "C", "3").setAttribute("ExchangeIndex", "3");
    AddPreset(folder, "D", "4");
    ZMLElement& unnamed = root.addChild("preset");
    unnamed.setAttribute("ReverbTime", "5");

    EXPECT_EQ(collection.MarkForExchange(9, true), 3) << "B, D and the unnamed one";
    std::vector<std::string> marks;
    for (const ZMLElement* preset : collection.presets())
        marks.push_back(preset->getAttribute("ExchangeIndex"));
    EXPECT_EQ(marks, (std::vector<std::string>{"7", "9", "3", "9", "9"}));
    EXPECT_EQ(collection.MarkForExchange(4, false), 5);
    EXPECT_EQ(collection.presets()[3]->getAttribute("ExchangeIndex"), "4");

    EXPECT_EQ(collection.CompressAll(), 4);
    EXPECT_EQ(collection.CompressAll(), 0) << "already compressed";
    EXPECT_FALSE(IsCompressedPreset(unnamed)) << "a preset without a name stays plain";
    const std::unique_ptr<ZMLElement> content = PresetContent(*collection.presets()[3]);
    EXPECT_EQ(content->getAttribute("name"), "D");
    EXPECT_EQ(content->getAttribute("ReverbTime"), "4");
}

// Factory F1 (in a folder), F2; user P1, P2 (in a folder), P3 (in a folder in that
// folder), P4: next walks them in this order, previous the other way, both wrapping.
TEST_F(PresetManagerTest, NextAndPreviousWalkDepthFirstWrapAndGoOnAfterAReload)
{
    const std::string factoryText = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<presets>"
                                    "<Directory Name=\"Rooms\"><preset name=\"F1\" ReverbTime=\"1\"/></Directory>"
                                    "<preset name=\"F2\" ReverbTime=\"2\"/></presets>";
    const std::span<const uint8_t> block(reinterpret_cast<const uint8_t*>(factoryText.data()), factoryText.size());
    ZPluginPresetManager manager = Manager(*core_, ZPresetCollection::ReadBlock(block));
    ZMLElement& root = manager.collection().root();
    AddPreset(root, "P1", "3");
    ZMLElement& folder = ZPresetCollection::CreateFolder(root, "Halls");
    AddPreset(folder, "P2", "4");
    AddPreset(ZPresetCollection::CreateFolder(folder, "Large"), "P3", "5");
    AddPreset(root, "P4", "6");

    std::vector<double> walked;
    for (int i = 0; i < 7; ++i) {
        EXPECT_TRUE(manager.Next());
        walked.push_back(ReverbTime(*core_));
    }
    EXPECT_EQ(walked, (std::vector<double>{1, 2, 3, 4, 5, 6, 1}));
    manager.Previous();
    EXPECT_EQ(ReverbTime(*core_), 6.0) << "previous from the first wraps to the last";
    manager.Previous();
    EXPECT_EQ(ReverbTime(*core_), 5.0);

    manager.SaveCollection();
    const ZMemoryStream block2 = SavePluginState(*core_);
    Core reloaded(std::make_unique<HalvernAudioEffectPlugin>());
    LoadPluginState(reloaded, block2.data(), block2.size());
    ZPluginPresetManager after = Manager(reloaded, ZPresetCollection::ReadBlock(block));
    after.LoadCollection();
    after.Next();
    EXPECT_EQ(ReverbTime(reloaded), 6.0) << "goes on from P3";

    ZPluginPresetManager empty(ZPluginPresetOwner(*core_), "");
    EXPECT_FALSE(empty.Next());
    EXPECT_FALSE(manager.Step(0));
}

TEST_F(PresetManagerTest, PresetsWithItemsMissingLoadThemAtTheirDefaults)
{
    ZPluginPresetManager plugin = Manager(*core_);
    ZLFOPresetManager lfo({*core_, 2}, directory_.string());
    ZSignalGeneratorPresetManager shape({*core_, 2}, directory_.string());
    ZLFOSettings settings = core_->lfo(2).settings();
    settings.mode = static_cast<int32_t>(ZLFOMode::Random);
    settings.frequency = 7.0;
    core_->lfo(2).setSettings(settings);
    ZSignalGenerator square;
    square.setFamily(ZSignalGenerator::Family::Square);
    square.setSmoothing(0.5);
    core_->lfo(2).setShape(square);
    core_->multiParameter(0).setName("Size");

    ZMLElement& slow = lfo.collection().root().addChild("preset");
    slow.setAttribute("Frequency", "0.25");
    lfo.Load(slow);
    EXPECT_EQ(core_->lfo(2).settings().frequency, 0.25);
    EXPECT_EQ(core_->lfo(2).settings().mode, static_cast<int32_t>(ZLFOMode::Normal));
    EXPECT_EQ(core_->lfo(2).shape().family(), ZSignalGenerator::Family::Sine);
    EXPECT_EQ(lfo.owner().currentPresetIndex(), 0);

    core_->lfo(2).setShape(square);
    ZMLElement& triangle = shape.collection().root().addChild("preset");
    triangle.setAttribute("Family", "1");
    shape.Load(triangle);
    EXPECT_EQ(core_->lfo(2).shape().family(), ZSignalGenerator::Family::Triangle);
    EXPECT_EQ(core_->lfo(2).shape().smoothing(), 0.0);

    plugin.Load(AddPreset(plugin.collection().root(), "Old", "2.5"));
    EXPECT_EQ(ReverbTime(*core_), 2.5);
    EXPECT_EQ(core_->multiParameter(0).name(), "");
    EXPECT_EQ(core_->lfo(2).settings().frequency, 1.0);
}

TEST_F(PresetManagerTest, DamagedPackedPresetsAreRefusedAndLeaveTheStateUnchanged)
{
    ZPluginPresetManager manager = Manager(*core_);
    ZMLElement& root = manager.collection().root();
    manager.Load(AddPreset(root, "Good", "3"));
    const std::string before = StateOf(*core_);
    const std::string valid = PackedByHand("<preset name=\"X\" ReverbTime=\"9\"/>");
    const std::pair<std::string, std::string> damaged[] = {
        {"78DA0G", "Hexadecimal stream has invalid content."},
        {"0011223344", "Source compressed stream has invalid content."},
        {valid.substr(0, valid.size() - 8), "Source compressed stream has invalid content."},
        {PackedByHand("<preset><a></b></preset>"), "Invalid closing element name."},
    };
    for (const auto& [text, message] : damaged) {
        ZMLElement& preset = root.addChild("preset");
        preset.setAttribute("name", "Bad");
        preset.setAttribute("compressed", "1");
        preset.setText(text);
        EXPECT_EQ(messageOf([&] { manager.Load(preset); }), message) << text;
        EXPECT_EQ(StateOf(*core_), before);
        EXPECT_EQ(core_->presetPosition().currentPresetIndex, 0);

        const std::string file = (directory_ / "bad.xml").string();
        ZMLElement wrapped("presets");
        wrapped.addCopy(preset);
        std::ofstream(file) << ZMLDocumentText(*wrapped.children()[0], ZMLLayout::Indented);
        EXPECT_EQ(messageOf([&] { ZPresetCollection::ImportPreset(root, file); }), message);
    }
    EXPECT_EQ(manager.collection().presets().size(), 5u) << "no import was added";
}

TEST_F(PresetManagerTest, CollectionFileRoundTripsAndADamagedFileKeepsTheCollection)
{
    ZPluginPresetManager manager = Manager(*core_);
    ZMLElement& folder = ZPresetCollection::CreateFolder(manager.collection().root(), "Rooms & <Halls>");
    manager.Add(folder, "Small");
    CompressPreset(manager.Add(folder, "Big"));
    manager.SaveCollection();

    const std::filesystem::path path = directory_ / "Plugin" / "presets.xml";
    EXPECT_EQ(manager.collectionPath(), path.string());
    EXPECT_EQ(FileText(path).rfind("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<presets>\n"
                                   "\t<Directory Name=\"Rooms &amp; &lt;Halls&gt;\">\n\t\t<preset ",
                                   0),
              0u);
    ZPluginPresetManager reloaded = Manager(*core_);
    reloaded.LoadCollection();
    EXPECT_TRUE(reloaded.collection().root() == manager.collection().root());

    std::ofstream(path) << "<presets><preset name=\"cut\"></presets>";
    EXPECT_EQ(messageOf([&] { reloaded.LoadCollection(); }), "Invalid closing element name.");
    EXPECT_EQ(reloaded.collection().presets().size(), 2u);
    std::filesystem::remove(path);
    reloaded.LoadCollection();
    EXPECT_TRUE(reloaded.collection().root().children().empty()) << "no file yet: an empty collection";
}

TEST_F(PresetManagerTest, FoldersAndPresetFilesAreManagedInTheTree)
{
    ZPluginPresetManager manager = Manager(*core_);
    ZPresetCollection& collection = manager.collection();
    ZMLElement& root = collection.root();
    EXPECT_EQ(ZPresetCollection::SuggestFolderName(root), "New folder 1");
    ZMLElement& first = ZPresetCollection::CreateFolder(root, ZPresetCollection::SuggestFolderName(root));
    EXPECT_EQ(ZPresetCollection::SuggestFolderName(root), "New folder 2");
    EXPECT_EQ(ZPresetCollection::SuggestFolderName(first), "New folder 1") << "numbered per folder";
    ZPresetCollection::RenameFolder(first, "Halls");
    EXPECT_EQ(ZPresetCollection::SuggestFolderName(root), "New folder 1");
    EXPECT_EQ(messageOf([&] { ZPresetCollection::RenameFolder(first, ""); }), "The name must not be empty.");
    EXPECT_EQ(first.getAttribute("Name"), "Halls");

    ZMLElement& nested = ZPresetCollection::CreateFolder(first, "Large");
    AddPreset(nested, "Cathedral", "8");
    ZMLElement& packed = AddPreset(first, "Hall", "3");
    CompressPreset(packed);
    ZPresetCollection::RenamePreset(packed, "Concert hall");
    const std::string file = (directory_ / "exported.xml").string();
    ZPresetCollection::ExportPreset(packed, file);
    EXPECT_EQ(FileText(file), "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                              "<preset ReverbTime=\"3\" name=\"Concert hall\"/>\n");
    ZMLElement& imported = ZPresetCollection::ImportPreset(root, file);
    EXPECT_EQ(imported.getAttribute("ReverbTime"), "3");
    ASSERT_EQ(collection.presets().size(), 3u);

    collection.Remove(first);
    ASSERT_EQ(collection.presets().size(), 1u) << "the folder went with its presets";
    EXPECT_EQ(collection.presets()[0]->getAttribute("name"), "Concert hall");
    collection.Remove(imported);
    EXPECT_TRUE(root.children().empty());
    EXPECT_EQ(messageOf([&] { collection.Remove(root); }), "The element is not part of the preset collection.");
    std::ofstream(file) << "<settings/>";
    EXPECT_EQ(messageOf([&] { ZPresetCollection::ImportPreset(root, file); }),
              "File \"" + file + "\" does not hold a preset.");
}

TEST_F(PresetManagerTest, PresetSwitchControllerStepsWhenTheManagerFollowsIt)
{
    ZPluginPresetManager manager = Manager(*core_);
    AddPreset(manager.collection().root(), "P1", "3");
    AddPreset(manager.collection().root(), "P2", "4");
    core_->midiControllers().setPresetSwitch({true, 20, 0});
    core_->ProcessMIDIController(0, 20, 127, 0);
    EXPECT_FALSE(FollowPresetSwitch(manager)) << "not taken before the block starts";
    core_->PrepareForProcessingOnce(nullptr, nullptr, 0);
    EXPECT_TRUE(FollowPresetSwitch(manager));
    EXPECT_EQ(ReverbTime(*core_), 3.0);
    EXPECT_TRUE(core_->midiControllers().presetSwitch().enabled) << "a preset does not switch it off";
    core_->ProcessMIDIController(0, 20, 120, 0);
    core_->PrepareForProcessingOnce(nullptr, nullptr, 0);
    EXPECT_FALSE(FollowPresetSwitch(manager)) << "still in the upper third: no second step";

    core_->ProcessMIDIController(0, 20, 0, 0);
    core_->PrepareForProcessingOnce(nullptr, nullptr, 0);
    EXPECT_TRUE(FollowPresetSwitch(manager));
    EXPECT_EQ(ReverbTime(*core_), 4.0) << "previous from the first is the last";
}

} // namespace
} // namespace halvern
