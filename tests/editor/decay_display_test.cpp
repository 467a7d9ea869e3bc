#include "analysis/impulse_analysis.h"
#include "audio_import/audio_file_writer.h"
#include "editor/decay_display.h"
#include "tests/editor/modulator_page_fixture.h"
#include "ui/file_chooser.h"
#include "tools/render_session.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

namespace halvern {
namespace {

using Clock = std::chrono::steady_clock;
constexpr double kRate = 44100.0;

struct DecayPage : ZModulatorPageFixture {
    ZDecayDisplay* display = nullptr;

    DecayPage()
    {
        core->SetSampleRate(kRate);
        auto made = std::make_unique<ZDecayDisplay>(*core);
        display = made.get();
        Show(std::move(made));
    }
    void Set(const std::string& key, const std::string& text) { core->SetParameterFromDisplayText(IndexOf(key), text); }
    // Ticks (in real time, so the worker gets on) until the display has measured what
    // it shows and the settings have rested.
    void Settle()
    {
        const auto deadline = Clock::now() + std::chrono::seconds(60);
        for (int quiet = 0; quiet < 2 * ZDecayDisplay::kSettleTicks && Clock::now() < deadline;) {
            Tick();
            quiet = display->computing() ? 0 : quiet + 1;
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
};

// The offline renderer's report for the same settings, as halvern-render prints it.
std::string rendererReport(const std::string& reverbTime)
{
    tools::RenderSession session(kRate, 512);
    session.setByKey("ReverbTime", reverbTime);
    session.setByKey("ReverbMode", "Mode 3");
    session.start();
    return FormatImpulseReport(AnalyseImpulseResponse(session.renderImpulse()));
}

TEST(DecayDisplay, MeasuresOffTheUIThreadAndShowsTheRenderersFigures)
{
    DecayPage page;
    page.Set("ReverbMode", "Mode 3");
    page.Set("ReverbTime", "20000");
    page.Tick();
    ASSERT_TRUE(page.display->computing());
    EXPECT_EQ(page.display->Text(), "Computing\u2026");
    // A long response takes a while; the page's refresh does not wait for it.
    const auto before = Clock::now();
    page.display->Refresh();
    EXPECT_LT(Clock::now() - before, std::chrono::milliseconds(20));
    EXPECT_TRUE(page.display->computing());

    // Settings changed meanwhile supersede the job in progress.
    page.Set("ReverbTime", "1500");
    page.Settle();
    ASSERT_TRUE(page.display->measurement());
    EXPECT_EQ(FormatImpulseReport(page.display->measurement()->report), rendererReport("1500"));
    // Nothing is measured again while nothing is edited; settings that never rest (as
    // an LFO's targets) are measured now and then all the same.
    for (int i = 0; i < 3 * ZDecayDisplay::kSettleTicks; ++i) {
        page.Tick();
        ASSERT_FALSE(page.display->computing()) << i;
    }
    bool measured = false;
    for (int i = 0; i < ZDecayDisplay::kLongestWaitTicks + ZDecayDisplay::kPollTicks && !measured; ++i) {
        page.Set("ReverbTime", std::to_string(1510 + i)); // new at every poll
        page.Tick();
        measured = page.display->computing();
    }
    EXPECT_TRUE(measured);
}

TEST(DecayDisplay, ReferenceFromASoundFileAndPictures)
{
    DecayPage page;
    page.Set("ReverbMode", "Mode 3");
    page.Set("ReverbTime", "1500");
    page.Settle();
    const std::filesystem::path folder = std::filesystem::temp_directory_path();
    tools::RenderSession session(kRate, 512);
    session.setByKey("ReverbTime", "3500");
    session.start();
    const ZAudioData hall = session.renderImpulse();
    WriteAudioFile((folder / "decay_reference_hall.wav").string(), hall);
    std::ofstream(folder / "decay_reference_notes.wav") << "not a sound";

    EXPECT_NE(page.display->LoadReference((folder / "decay_reference_notes.wav").string()), "");
    EXPECT_FALSE(page.display->reference());
    EXPECT_EQ(page.display->LoadReference((folder / "decay_reference_hall.wav").string()), "");
    ASSERT_TRUE(page.display->reference());
    EXPECT_EQ(FormatImpulseReport(page.display->reference()->report), FormatImpulseReport(AnalyseImpulseResponse(hall)));
    EXPECT_NE(page.display->LoadReference((folder / "decay_reference_notes.wav").string()), "");
    EXPECT_TRUE(page.display->reference()) << "a failed load keeps the reference";

    for (double scale : {1.0, 2.0}) {
        page.root->SetScale(scale);
        page.root->InvalidateAll();
        page.Tick();
    }
    page.Click(page.Find("LoadReference"));
    auto* chooser = dynamic_cast<ZFileChooser*>(TopDialog(*page.root));
    ASSERT_NE(chooser, nullptr);
    chooser->Close();
    page.Tick();
    page.Click(page.Find("ClearReference"));
    EXPECT_FALSE(page.display->reference());
    std::filesystem::remove(folder / "decay_reference_hall.wav");
    std::filesystem::remove(folder / "decay_reference_notes.wav");
}

} // namespace
} // namespace halvern
