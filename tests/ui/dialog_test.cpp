#include "tests/ui/dialog_root_fixture.h"
#include "ui/dialog.h"
#include "ui/file_chooser.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include <unistd.h>

namespace halvern {
namespace {

namespace fs = std::filesystem;

using DialogRoot = ZDialogRootFixture;

TEST(Dialog, PromptAndQuestionAnswerByKeysAndButtonsAndIgnoreClicksBeside)
{
    DialogRoot ui;
    std::optional<std::string> accepted;
    ZPromptDialog* prompt = ShowPrompt(ui.root, "Name", "Enter a name", "Old", [&](std::string text) { accepted = text; });
    ui.Tick();
    EXPECT_EQ(ui.root.focused(), &prompt->field());
    EXPECT_EQ(prompt->field().SelectedText(), "Old") << "the text is selected, so typing replaces it";
    ui.ClickAt({5, 5}); // beside the panel: nothing happens, the field keeps the keyboard
    ASSERT_EQ(TopDialog(ui.root), prompt);
    EXPECT_EQ(ui.root.focused(), &prompt->field());
    EXPECT_TRUE(prompt->PanelRect().contains(prompt->field().bounds()));
    ui.Type("New name");
    ui.Press(ZKey::Enter);
    EXPECT_EQ(accepted, "New name");
    EXPECT_EQ(TopDialog(ui.root), nullptr);

    accepted.reset();
    ShowPrompt(ui.root, "Name", "", "Kept", [&](std::string text) { accepted = text; });
    ui.Type("x");
    ui.Press(ZKey::Escape);
    EXPECT_FALSE(accepted.has_value());
    EXPECT_FALSE(ui.root.HasOverlays());
    ShowPrompt(ui.root, "Name", "", "Kept", [&](std::string text) { accepted = text; });
    ui.Type("edited");
    ui.Click("Cancel"); // the field loses the focus on the way: that must not accept
    EXPECT_FALSE(accepted.has_value());

    int chosen = -2;
    const auto ask = [&] {
        ShowQuestion(ui.root, "Question", "A long warning that has to wrap over several lines of the panel, because "
                     "what it says matters before the question.\n\nDo you want to go on?",
                     {"Yes", "No", "Cancel"}, [&](int index) { chosen = index; });
        ui.Tick();
    };
    ask();
    ui.Press(ZKey::Enter);
    EXPECT_EQ(chosen, 0);
    ask();
    ui.Press(ZKey::Escape);
    EXPECT_EQ(chosen, 2);
    ask();
    ZDialog* question = TopDialog(ui.root);
    for (const auto& child : question->children())
        EXPECT_TRUE(question->PanelRect().contains(child->bounds())) << child->name();
    ui.Click("No");
    EXPECT_EQ(chosen, 1);
    EXPECT_FALSE(ui.root.HasOverlays());
}

TEST(Dialog, FileChooserEntersFoldersFiltersAndChoosesOrSaves)
{
    const fs::path folder = fs::temp_directory_path() / ("halvern_chooser_" + std::to_string(::getpid()));
    fs::remove_all(folder);
    fs::create_directories(folder / "sub");
    for (const char* name : {"b.WAV", "a.flac", "notes.txt", ".hidden.wav"})
        std::ofstream(folder / "sub" / name) << "x";

    DialogRoot ui;
    std::optional<std::string> chosen;
    ZFileChooserOptions options;
    options.folder = folder.string();
    options.extensions = {"wav", "flac"};
    ZFileChooser* chooser = ShowFileChooser(ui.root, options, [&](std::string path) { chosen = path; });
    ui.Tick();
    EXPECT_EQ(chooser->list().rows(), (std::vector<std::string>{"..", "sub/"}));
    ui.ClickAt(chooser->list().RowRect(chooser->RowOf("sub")).center(), 2);
    EXPECT_EQ(chooser->folder(), (folder / "sub").string());
    EXPECT_EQ(chooser->list().rows(), (std::vector<std::string>{"..", "a.flac", "b.WAV"}));

    EXPECT_FALSE(chooser->EnterFolder((folder / "missing").string()));
    EXPECT_EQ(chooser->folder(), (folder / "sub").string()) << "the folder shown before stays";
    ASSERT_NE(TopDialog(ui.root), chooser) << "a message tells why";
    ui.Press(ZKey::Enter);
    ASSERT_EQ(TopDialog(ui.root), chooser);

    ui.ClickAt(chooser->list().RowRect(chooser->RowOf("b.WAV")).center());
    EXPECT_EQ(chooser->nameField().Text(), "b.WAV");
    ui.Press(ZKey::Enter);
    EXPECT_EQ(chosen, (folder / "sub" / "b.WAV").string());
    EXPECT_FALSE(ui.root.HasOverlays());

    // Saving: a name without extension gets the first one; a file that exists is asked about.
    options.save = true;
    options.name = "take";
    options.extensions = {"flac", "wav"};
    chosen.reset();
    chooser = ShowFileChooser(ui.root, options, [&](std::string path) { chosen = path; });
    ui.Type("sub/a");
    ui.Press(ZKey::Enter);
    ASSERT_NE(TopDialog(ui.root), chooser);
    ui.Press(ZKey::Escape); // keeps the file
    EXPECT_FALSE(chosen.has_value());
    ASSERT_EQ(TopDialog(ui.root), chooser);
    ui.Press(ZKey::Enter);
    ui.Click("Replace");
    EXPECT_EQ(chosen, (folder / "sub" / "a.flac").string());
    fs::remove_all(folder);
}

} // namespace
} // namespace halvern
