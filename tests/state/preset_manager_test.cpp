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
#include <thread>

namespace halvern {
namespace {

using test::messageOf;
using Core = ZAudioEffectPluginToAudioPluginAdapter;

double ReverbTime(Core& core)
{
    return static_cast<HalvernAudioEffectPlugin&>(core.effect()).settings().reverbTime;
}

ZMLElement& AddPreset(ZMLElement& folder, const char* name, const char* value, const char* item = "ReverbTime")
{
    ZMLElement& preset = folder.addChild("preset");
    preset.setAttribute("name", name);
    preset.setAttribute(item, value);
    return preset;
}

std::string FileText(const std::filesystem::path& path)
{
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

// Zlib level 9 as upper-case hexadecimal, made without the streams under test.
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
        return ZMLDocumentText(state, ZMLLayout::Indented);
    }

    std::unique_ptr<Core> core_ = std::make_unique<Core>(std::make_unique<HalvernAudioEffectPlugin>());
    std::filesystem::path directory_;
};

TEST_F(PresetManagerTest, PlainAndCompressedFormsLoadToIdenticalStatesAndReplaceKeepsTheForm)
{
    ZPluginPresetManager manager = Manager(*core_);
    for (int index = 0; index < core_->multiParameterIndex(0); ++index)
        if (ZValue* value = core_->parameters().value(index))
            value->setNormalized(0.37);
    const std::string configured = StateOf(*core_);
    ZMLElement& plain = manager.Add(manager.collection().root(), "Hall");
    ZMLElement& packed = manager.Add(manager.collection().root(), "Hall packed");
    packed.setAttribute("ExchangeIndex", "12");
    CompressPreset(packed);
    EXPECT_EQ(ZMLDocumentText(packed, ZMLLayout::Compact)
                  .find("<preset ExchangeIndex=\"12\" compressed=\"1\" name=\"Hall packed\">78DA"),
              39u) << "after the declaration; 78DA is the zlib header of level 9";
    EXPECT_EQ(packed.text().find_first_not_of("0123456789ABCDEF"), std::string::npos);

    for (const ZMLElement* preset : {&plain, &packed}) {
        ZMLElement empty("settings");
        ApplyPluginState(*core_, empty);
        manager.Load(*preset);
        EXPECT_EQ(StateOf(*core_), configured);
    }
    EXPECT_EQ(core_->presetPosition().currentPresetIndex, 1);

    core_->parameters().value(core_->bypassIndex())->setNormalized(1.0);
    manager.Replace(packed);
    EXPECT_TRUE(IsCompressedPreset(packed) && packed.getAttribute("ExchangeIndex") == "12");
    EXPECT_EQ(PresetContent(packed)->getAttribute("Bypass"), "1");
}

TEST_F(PresetManagerTest, CompressAllAndMarkForExchangeCountWhatTheyChangeAndFoldersAndFilesAreManaged)
{
    ZPresetCollection collection;
    ZMLElement& root = collection.root();
    AddPreset(root, "A", "1").setAttribute("ExchangeIndex", "7");
    AddPreset(root, "B", "2");
    ZMLElement& folder = ZPresetCollection::CreateFolder(root, "Rooms");
    AddPreset(folder, "C", "3").setAttribute("ExchangeIndex", "3");
    AddPreset(folder, "D", "4");
    root.addChild("preset").setAttribute("ReverbTime", "5");

    EXPECT_EQ(collection.MarkForExchange(9, true), 3) << "B, D and the one without a name";
    std::vector<std::string> marks;
    for (const ZMLElement* preset : collection.presets())
        marks.push_back(preset->getAttribute("ExchangeIndex"));
    EXPECT_EQ(marks, (std::vector<std::string>{"7", "9", "3", "9", "9"}));
    EXPECT_EQ(collection.MarkForExchange(4, false), 5);

    EXPECT_EQ(collection.CompressAll(), 4);
    EXPECT_EQ(collection.CompressAll(), 0) << "already compressed";
    EXPECT_FALSE(IsCompressedPreset(*collection.presets()[4])) << "without a name it stays plain";
    EXPECT_EQ(PresetContent(*collection.presets()[3])->getAttribute("ReverbTime"), "4");

    ZPresetCollection tree;
    ZMLElement& treeRoot = tree.root();
    ZMLElement& first = ZPresetCollection::CreateFolder(treeRoot, ZPresetCollection::SuggestFolderName(treeRoot));
    EXPECT_EQ(ZPresetCollection::SuggestFolderName(treeRoot), "New folder 2");
    ZPresetCollection::RenameFolder(first, "Halls");
    EXPECT_EQ(ZPresetCollection::SuggestFolderName(treeRoot), "New folder 1");
    EXPECT_EQ(messageOf([&] { ZPresetCollection::RenameFolder(first, ""); }), "The name must not be empty.");

    AddPreset(ZPresetCollection::CreateFolder(first, "Large"), "Cathedral", "8");
    ZMLElement& packed = AddPreset(first, "Hall", "3");
    CompressPreset(packed);
    ZPresetCollection::RenamePreset(packed, "Concert hall");
    const std::string file = (directory_ / "exported.xml").string();
    ZPresetCollection::ExportPreset(packed, file);
    EXPECT_EQ(FileText(file), "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                              "<preset ReverbTime=\"3\" name=\"Concert hall\"/>\n");
    ZMLElement& imported = ZPresetCollection::ImportPreset(treeRoot, file);
    EXPECT_EQ(tree.presets().size(), 3u);

    tree.Remove(first);
    EXPECT_EQ(tree.presets(), (std::vector<ZMLElement*>{&imported})) << "the folder went with its presets";
    EXPECT_EQ(messageOf([&] { tree.Remove(treeRoot); }), "The element is not part of the preset collection.");
}

TEST_F(PresetManagerTest, NextAndPreviousWalkDepthFirstWrapAndGoOnAfterAReload)
{
    const std::string factory = "<presets><Directory Name=\"Rooms\"><preset name=\"F1\" ReverbTime=\"1\"/>"
                                "</Directory><preset name=\"F2\" ReverbTime=\"2\"/></presets>";
    const std::span<const uint8_t> block(reinterpret_cast<const uint8_t*>(factory.data()), factory.size());
    ZPluginPresetManager manager = Manager(*core_, ZPresetCollection::ReadBlock(block));
    ZMLElement& root = manager.collection().root();
    AddPreset(root, "P1", "3");
    ZMLElement& folder = ZPresetCollection::CreateFolder(root, "Halls");
    AddPreset(folder, "P2", "4");
    AddPreset(ZPresetCollection::CreateFolder(folder, "Large"), "P3", "5");
    AddPreset(root, "P4", "6");

    std::vector<double> walked;
    for (int i = 0; i < 9; ++i) {
        i < 7 ? manager.Next() : manager.Previous();
        walked.push_back(ReverbTime(*core_));
    }
    EXPECT_EQ(walked, (std::vector<double>{1, 2, 3, 4, 5, 6, 1, 6, 5}));

    manager.SaveCollection();
    const ZMemoryStream state = SavePluginState(*core_);
    Core reloaded(std::make_unique<HalvernAudioEffectPlugin>());
    LoadPluginState(reloaded, state.data(), state.size());
    ZPluginPresetManager after = Manager(reloaded, ZPresetCollection::ReadBlock(block));
    after.LoadCollection();
    after.Next();
    EXPECT_EQ(ReverbTime(reloaded), 6.0) << "goes on from P3";
    EXPECT_FALSE(ZPluginPresetManager(ZPluginPresetOwner(*core_), "").Next()) << "no presets";

    // The preset switch controller steps the same way once the manager follows it.
    reloaded.midiControllers().setPresetSwitch({true, 20, 0});
    const auto controller = [&](int value) {
        reloaded.ProcessMIDIController(0, 20, value, 0);
        reloaded.PrepareForProcessingOnce(nullptr, nullptr, 0);
        return FollowPresetSwitch(after);
    };
    EXPECT_TRUE(controller(127));
    EXPECT_EQ(ReverbTime(reloaded), 1.0) << "next from P4 wraps to F1";
    EXPECT_TRUE(controller(0));
    EXPECT_EQ(ReverbTime(reloaded), 6.0);
}

TEST_F(PresetManagerTest, PresetsWithItemsMissingLoadThemAtTheirDefaults)
{
    ZLFOPresetManager lfo({*core_, 2}, "");
    ZMultiParameterPresetManager multi({*core_, 1}, "");
    ZLFOSettings settings = core_->lfo(2).settings();
    settings.mode = static_cast<int32_t>(ZLFOMode::Random);
    core_->lfo(2).setSettings(settings);
    core_->multiParameter(1).setName("Size");

    lfo.Load(AddPreset(lfo.collection().root(), "Slow", "0.25", "Frequency"));
    EXPECT_EQ(core_->lfo(2).settings().frequency, 0.25);
    EXPECT_EQ(core_->lfo(2).settings().mode, static_cast<int32_t>(ZLFOMode::Normal));
    multi.Load(AddPreset(multi.collection().root(), "Half", "0.5", "Value"));
    EXPECT_EQ(core_->multiParameter(1).name(), "");

    core_->multiParameter(1).setName("Size");
    ZPluginPresetManager plugin = Manager(*core_);
    plugin.Load(AddPreset(plugin.collection().root(), "Old", "2.5"));
    EXPECT_EQ(ReverbTime(*core_), 2.5);
    EXPECT_EQ(core_->multiParameter(1).name(), "");
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
    const std::string file = (directory_ / "bad.xml").string();
    for (const auto& [text, message] : damaged) {
        ZMLElement& preset = root.addChild("preset");
        preset.setAttribute("compressed", "1");
        preset.setText(text);
        EXPECT_EQ(messageOf([&] { manager.Load(preset); }), message) << text;
        EXPECT_EQ(StateOf(*core_), before);
        EXPECT_EQ(core_->presetPosition().currentPresetIndex, 0);
        std::ofstream(file) << ZMLDocumentText(preset, ZMLLayout::Compact);
        EXPECT_EQ(messageOf([&] { ZPresetCollection::ImportPreset(root, file); }), message) << "import";
    }
    EXPECT_EQ(root.children().size(), 5u) << "nothing imported";
}

TEST_F(PresetManagerTest, CollectionFileRoundTripsAndADamagedFileKeepsTheCollection)
{
    ZPluginPresetManager manager = Manager(*core_);
    ZMLElement& folder = ZPresetCollection::CreateFolder(manager.collection().root(), "Rooms & <Halls>");
    manager.Add(folder, "Small");
    CompressPreset(manager.Add(folder, "Big"));
    manager.SaveCollection();
    const std::filesystem::path path = directory_ / "Plugin" / "presets.xml";
    EXPECT_EQ(FileText(path).rfind("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<presets>\n"
                                   "\t<Directory Name=\"Rooms &amp; &lt;Halls&gt;\">\n\t\t<preset ", 0), 0u);

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

TEST_F(PresetManagerTest, SavingKeepsModeLinkAndTheOtherInstancesPresets)
{
    namespace fs = std::filesystem;
    const fs::path real = directory_ / "elsewhere" / "mine.xml";
    const fs::path path = directory_ / "Plugin" / "presets.xml";
    fs::create_directories(real.parent_path());
    fs::create_directories(path.parent_path());
    std::ofstream(real) << "<presets/>";
    fs::permissions(real, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    fs::create_symlink(real, path);

    ZPluginPresetManager manager = Manager(*core_);
    manager.LoadCollection();
    auto add = [&](ZPluginPresetManager& into, const std::string& name) {
        return into.SaveCollection([&](ZPresetCollection& collection) { into.Add(collection.root(), name); });
    };
    EXPECT_EQ(add(manager, "First"), "");
    EXPECT_TRUE(fs::is_symlink(path)) << "written through the link";
    EXPECT_NE(FileText(real).find("name=\"First\""), std::string::npos);
    EXPECT_EQ(fs::status(real).permissions() & fs::perms::all, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);

    Core otherCore(std::make_unique<HalvernAudioEffectPlugin>());
    ZPluginPresetManager other = Manager(otherCore);
    auto saveTwenty = [&](ZPluginPresetManager& into, const std::string& prefix) {
        for (int i = 0; i < 20; ++i)
            add(into, prefix + std::to_string(i));
    };
    std::thread first([&] { saveTwenty(manager, "a"); });
    std::thread second([&] { saveTwenty(other, "b"); });
    first.join();
    second.join();
    ZPluginPresetManager reader = Manager(*core_);
    reader.LoadCollection();
    EXPECT_EQ(reader.collection().presets().size(), 41u);
    for (const auto& entry : fs::directory_iterator(real.parent_path()))
        EXPECT_EQ(entry.path().filename().string().rfind(".mine.xml", 0), std::string::npos) << "a temporary file was left";
}

} // namespace
} // namespace halvern
