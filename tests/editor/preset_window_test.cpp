#include "editor/preset_window.h"
#include "tests/ui/dialog_root_fixture.h"
#include "presets/factory_presets.h"
#include "reverb/halvern_audio_effect_plugin.h"
#include "state/plugin_state_block.h"
#include "state/preset_owners.h"
#include "state/quessane_audio_effect_plugin.h"
#include "ui/file_chooser.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <unistd.h>

namespace halvern {
namespace {

namespace fs = std::filesystem;

// The plug-in with the factory presets and a user data folder of its own, its preset
// window open in a root of the editor's size.
struct PresetWindowFixture : ZDialogRootFixture {
    fs::path folder = fs::temp_directory_path() / ("halvern_preset_window_" + std::to_string(::getpid()));
    std::unique_ptr<ZQuessaneAudioEffectPlugin> core;
    ZPresetWindow* window = nullptr;
    int loaded = 0;

    explicit PresetWindowFixture(double scale = 1.0) : ZDialogRootFixture(scale)
    {
        fs::remove_all(folder);
        fs::create_directories(folder);
        Open();
    }
    ~PresetWindowFixture() { fs::remove_all(folder); }
    void Open()
    {
        core = std::make_unique<ZQuessaneAudioEffectPlugin>(std::make_unique<HalvernAudioEffectPlugin>());
        core->SetPresets(ZPresetCollection::ReadBlock(FactoryPresetBlock()), folder.string());
        root.SetContent(std::make_unique<ZView>());
        window = ShowPresetWindow(root, *core->presets(), "Presets", [this] { ++loaded; });
        Tick();
    }
    fs::path file() const { return folder / "Plugin" / "presets.xml"; }
    void Select(const std::string& name, int clicks = 1)
    {
        const auto& nodes = window->tree().nodes();
        for (size_t row = 0; row < nodes.size(); ++row)
            if (nodes[row].name == name)
                return ClickAt(window->tree().RowRect(static_cast<int>(row)).center(), clicks);
        FAIL() << "no row " << name;
    }
    // Answers the prompt or the file chooser on top with a text.
    void Answer(const std::string& text)
    {
        Press(ZKey::Character, text);
        Press(ZKey::Enter);
    }
    // The plug-in's state without the place of the current preset.
    ZMLElement State()
    {
        ZMLElement state("settings");
        StorePluginState(*core, state);
        state.removeAttribute("CurrentPresetIndex");
        return state;
    }
    ZPresetCollection OnDisk() const { return ZPresetCollection::ReadFile(file().string()); }
    ZMLElement ContentOf(const ZPresetCollection& collection, size_t index)
    {
        auto content = PresetContent(*collection.presets().at(index));
        content->setName("settings");
        content->removeAttribute("name");
        content->removeAttribute("CurrentPresetIndex");
        return std::move(*content);
    }
};

std::string FileBytes(const fs::path& path)
{
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

TEST(PresetWindow, LoadsSavesReplacesRenamesExportsImportsAndDeletesOnRealFiles)
{
    PresetWindowFixture ui;
    const std::vector<const ZMLElement*> factory = ui.core->presets()->factory().presets();
    const std::string first = factory[0]->getAttribute("name"), second = factory[1]->getAttribute("name");

    const std::string folder = ui.core->presets()->factory().root().children().at(0)->getAttribute("Name");
    ui.Select(folder, 2); // a double click opens a folder
    ui.Select(first, 2);  // and loads a preset
    EXPECT_EQ(ui.loaded, 1);
    EXPECT_EQ(ui.window->FindByName("CurrentPreset")->Text(), first);
    const ZMLElement firstState = ui.State();

    ui.Click("Save new");
    ui.Answer("Mine");
    ASSERT_EQ(ui.OnDisk().presets().size(), 1u);
    EXPECT_EQ(ui.ContentOf(ui.OnDisk(), 0), firstState);

    ui.Click("presetnext"); // after the first factory preset comes the second
    EXPECT_EQ(ui.window->FindByName("CurrentPreset")->Text(), second);
    EXPECT_EQ(ui.loaded, 2);
    const ZMLElement secondState = ui.State();
    ASSERT_FALSE(secondState == firstState);

    ui.Select("Mine");
    ui.Click("Load");
    EXPECT_EQ(ui.State(), firstState);
    ui.Select(second);
    EXPECT_FALSE(static_cast<ZButton*>(ui.window->FindByName("Replace"))->enabled()) << "factory presets stay";
    ui.Click("Load");
    ui.Select("Mine");
    ui.Click("Replace");
    EXPECT_EQ(ui.ContentOf(ui.OnDisk(), 0), firstState) << "nothing is replaced before the user agrees";
    ui.Click("Replace"); // the question's answer
    EXPECT_EQ(ui.ContentOf(ui.OnDisk(), 0), secondState);

    ui.Click("Rename");
    ui.Answer("Yours");
    EXPECT_EQ(ui.OnDisk().presets().at(0)->getAttribute("name"), "Yours");

    ui.Select("User");
    ui.Click("New folder");
    ASSERT_EQ(static_cast<ZPromptDialog*>(TopDialog(ui.root))->field().Text(), "New folder 1");
    ui.Press(ZKey::Enter);
    EXPECT_EQ(ui.OnDisk().root().children().back()->getAttribute("Name"), "New folder 1");

    ui.Select("Yours");
    ui.Click("Export");
    ui.Answer((ui.folder / "yours").string());
    const fs::path exported = ui.folder / "yours.xml";
    ASSERT_TRUE(fs::exists(exported));

    ui.Click("Delete");
    ui.Click("Delete"); // the question's button
    EXPECT_EQ(ui.OnDisk().presets().size(), 0u);

    ui.Select("New folder 1");
    ui.Click("Import");
    ui.Answer(exported.string());
    const ZPresetCollection imported = ui.OnDisk();
    ASSERT_EQ(imported.presets().size(), 1u);
    EXPECT_EQ(imported.root().children().back()->children().at(0)->getAttribute("name"), "Yours");
    EXPECT_EQ(ui.ContentOf(imported, 0), secondState);

    ui.Click("Compress all");
    EXPECT_EQ(ui.window->status(), "1 preset compressed.");
    EXPECT_TRUE(IsCompressedPreset(*ui.OnDisk().presets().at(0)));
    ui.Click("Mark for exchange");
    EXPECT_EQ(ui.window->status(), "1 preset marked for exchange.");
    ui.Click("Mark for exchange");
    EXPECT_EQ(ui.window->status(), "0 presets marked for exchange.");
    EXPECT_EQ(TopDialog(ui.root), ui.window) << "nothing went wrong";
}

TEST(PresetWindow, ADamagedCollectionIsKeptAsideAndErrorsShowAsMessages)
{
    PresetWindowFixture ui;
    const std::string damaged = "<presets><preset name=\"cut\"></presets>";
    fs::create_directories(ui.file().parent_path());
    std::ofstream(ui.file(), std::ios::binary) << damaged;

    ui.Click("Save new");
    ui.Answer("After");
    ZDialog* notice = TopDialog(ui.root);
    ASSERT_NE(notice, ui.window) << "the notice tells where the damaged file went";
    ui.Press(ZKey::Enter);
    bool kept = false;
    for (const auto& entry : fs::directory_iterator(ui.file().parent_path()))
        if (entry.path().filename().string().starts_with("presets.xml.damaged-"))
            kept = kept || FileBytes(entry.path()) == damaged;
    EXPECT_TRUE(kept) << "the damaged bytes are still there";
    EXPECT_EQ(ui.OnDisk().presets().size(), 1u);

    ui.Select("User");
    ui.Click("Import");
    ui.Answer((ui.folder / "nothing.xml").string()); // does not exist: the chooser says so
    ASSERT_EQ(dynamic_cast<ZFileChooser*>(TopDialog(ui.root)), nullptr);
    ui.Press(ZKey::Escape);
    ASSERT_NE(dynamic_cast<ZFileChooser*>(TopDialog(ui.root)), nullptr) << "the message is closed, the chooser stays";
    ui.Press(ZKey::Escape);
    std::ofstream(ui.folder / "other.xml") << "<?xml version=\"1.0\"?><something/>";
    ui.Click("Import");
    ui.Answer((ui.folder / "other.xml").string());
    ZDialog* error = TopDialog(ui.root);
    ASSERT_NE(error, ui.window);
    EXPECT_NE(error->FindByName("OK"), nullptr);
    ui.Press(ZKey::Enter);
    EXPECT_EQ(TopDialog(ui.root), ui.window);
    EXPECT_EQ(ui.OnDisk().presets().size(), 1u);
}

TEST(PresetWindow, ServesModulatorPresetsToo)
{
    PresetWindowFixture ui;
    ZLFOPresetManager manager({*ui.core, 2}, ui.folder.string());
    ZPresetWindow* window = ShowPresetWindow(ui.root, manager, "LFO presets");
    ui.Tick();
    EXPECT_EQ(window->tree().nodes().size(), 1u) << "no factory branch without factory presets";
    ui.Click("Save new");
    ui.Answer("Wobble");
    const ZPresetCollection saved = ZPresetCollection::ReadFile((ui.folder / "LFO" / "presets.xml").string());
    ASSERT_EQ(saved.presets().size(), 1u);
    EXPECT_EQ(saved.presets()[0]->getAttribute("name"), "Wobble");
    EXPECT_EQ(CurrentPresetName(manager), "");
    EXPECT_TRUE(StepPreset(ui.root, manager, 1));
    EXPECT_EQ(CurrentPresetName(manager), "Wobble");
}

// Every control of a dialog lies inside its panel and no two overlap.
void ExpectLaidOut(const ZDialog& dialog)
{
    const auto& children = dialog.children();
    for (size_t i = 0; i < children.size(); ++i) {
        EXPECT_TRUE(dialog.PanelRect().contains(children[i]->bounds())) << children[i]->name();
        for (size_t j = i + 1; j < children.size(); ++j)
            EXPECT_FALSE(children[i]->bounds().intersects(children[j]->bounds()))
                << children[i]->name() << " and " << children[j]->name();
    }
}

TEST(PresetWindow, WindowAndFileChooserAreLaidOutAtBothScales)
{
    for (const double scale : {1.0, 2.0}) {
        PresetWindowFixture ui(scale);
        const ZMLElement& folder = *ui.core->presets()->factory().root().children().at(1);
        ui.Select(folder.getAttribute("Name"), 2);
        ui.Select(folder.children().at(1)->getAttribute("name"), 2);
        ExpectLaidOut(*ui.window);

        fs::create_directories(ui.folder / "Impulses");
        for (const char* name : {"Cathedral.wav", "plate 2.AIFF", "notes.txt"})
            std::ofstream(ui.folder / name) << "x";
        ZFileChooserOptions options;
        options.folder = ui.folder.string();
        options.extensions = {"wav", "aif", "aiff", "flac", "mp3", "maf"};
        ZFileChooser* chooser = ShowFileChooser(ui.root, options, [](std::string) {});
        ui.Tick();
        ExpectLaidOut(*chooser);
        EXPECT_EQ(chooser->list().rows(), (std::vector<std::string>{"..", "Impulses/", "Cathedral.wav", "plate 2.AIFF"}));
    }
}

} // namespace
} // namespace halvern
