#include "editor/target_list_editor.h"
#include "tests/editor/modulator_page_fixture.h"
#include "ui/controls/button.h"
#include "ui/controls/list_view.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <thread>

namespace halvern {
namespace {

// The audio thread counts its allocations; the editing thread asks, at each of its own, whether
// another thread (the lock is re-entrant) could take the processing lock at that moment.
thread_local bool tAudioThread = false;
thread_local bool tEditingThread = false;
std::atomic<int> gAudioAllocations{0};
std::atomic<int> gAllocationsUnderLock{0};
ZLock* gWatchedLock = nullptr;

void Watch()
{
    if (tAudioThread)
        gAudioAllocations.fetch_add(1, std::memory_order_relaxed);
    if (tEditingThread && gWatchedLock != nullptr) {
        tEditingThread = false; // the probe's own work is not watched
        bool lockFree = false;
        std::thread([&lockFree] {
            lockFree = gWatchedLock->Acquire(0);
            if (lockFree)
                gWatchedLock->Release();
        }).join();
        if (!lockFree)
            gAllocationsUnderLock.fetch_add(1, std::memory_order_relaxed);
        tEditingThread = true;
    }
}

} // namespace
} // namespace halvern

// Every form but the aligned ones (which keep the library's own); out of line so that the
// compiler does not pair a free below with a new.
namespace {

[[gnu::noinline]] void* Allocate(std::size_t size) noexcept
{
    halvern::Watch();
    return std::malloc(size != 0 ? size : 1);
}

[[gnu::noinline]] void Release(void* memory) noexcept
{
    halvern::Watch();
    std::free(memory);
}

void* AllocateOrThrow(std::size_t size)
{
    if (void* memory = Allocate(size))
        return memory;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size) { return AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { Release(memory); }
void operator delete[](void* memory) noexcept { Release(memory); }
void operator delete(void* memory, std::size_t) noexcept { Release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { Release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { Release(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { Release(memory); }

namespace halvern {
namespace {

class TargetListEditorTest : public ::testing::Test, public ZModulatorPageFixture {
protected:
    ZModulatorTargetList& targets() { return core->lfo(0).targets(); }
    ZTargetListEditor& editor() { return dynamic_cast<ZTargetListEditor&>(*root->content()); }
    void ShowEditor() { Show(std::make_unique<ZTargetListEditor>(context, targets(), "LFO 1")); }
    std::pair<double, double> Swept(int target)
    {
        const ZModulatorTarget& t = targets().targets()[static_cast<size_t>(target)];
        return {TargetValueFor(t, targets().targets().front(), -1.0), TargetValueFor(t, targets().targets().front(), 1.0)};
    }
};

TEST_F(TargetListEditorTest, LearnAndClearAndLearnRecordExactlyTheParametersAndRangesTouched)
{
    ShowEditor();
    const int dryWet = targets().targets().front().parameter;
    const int reverbTime = IndexOf("ReverbTime"), diffusion = IndexOf("Diffusion");
    Click(Find("Learn"));
    ASSERT_NE(listener, nullptr);
    listener->ParameterTouched(reverbTime, 0.6, 0.2); // moved down: the range is the same
    listener->ParameterTouched(IndexOf("Globals"), 0.0, 1.0); // a panel without a value is no target
    ASSERT_EQ(targets().size(), 2);
    EXPECT_EQ(targets().targets()[1].parameter, reverbTime);
    EXPECT_EQ(Swept(1), std::make_pair(0.2, 0.6));
    listener->ParameterTouched(reverbTime, 0.5, 0.7); // moved again: the range covers both moves
    listener->ParameterTouched(dryWet, 0.4, 0.1);     // already a target: it takes the moved range
    ASSERT_EQ(targets().size(), 2);
    EXPECT_EQ(Swept(1), std::make_pair(0.2, 0.7));
    EXPECT_EQ(Swept(0), std::make_pair(0.1, 0.4));
    Click(Find("Learn"));
    EXPECT_EQ(listener, nullptr);
    EXPECT_FALSE(dynamic_cast<ZButton&>(Find("Learn")).checked());
    // Clear & Learn: the first target stays as the placeholder until the first touch.
    Click(Find("Clear & Learn"));
    ASSERT_NE(listener, nullptr);
    ASSERT_EQ(targets().size(), 1);
    listener->ParameterTouched(diffusion, 0.25, 0.75);
    ASSERT_EQ(targets().size(), 1);
    EXPECT_EQ(targets().targets()[0].parameter, diffusion);
    EXPECT_EQ(Swept(0), std::make_pair(0.25, 0.75));
    listener->ParameterTouched(reverbTime, 0.3, 0.35);
    ASSERT_EQ(targets().size(), 2);
    EXPECT_EQ(Swept(1), std::make_pair(0.3, 0.35));
    // A second editor that learns takes over; an editor that goes stops learning.
    auto other = std::make_unique<ZTargetListEditor>(context, core->lfo(1).targets(), "LFO 2");
    other->StartLearning(false);
    EXPECT_FALSE(editor().learning());
    EXPECT_TRUE(other->learning());
    other.reset();
    EXPECT_EQ(listener, nullptr);
}

TEST_F(TargetListEditorTest, EditsPublishNewListsAndTheLastTargetCannotBeRemoved)
{
    ShowEditor();
    Click(Find("Remove"));
    EXPECT_EQ(targets().size(), 1);
    EXPECT_EQ(Find("Message").Text(), "There must be at least one parameter for each modulator.");
    const ZModulatorTarget* before = targets().targets().data();
    Click(Find("Add"));
    ASSERT_EQ(targets().size(), 2);
    EXPECT_NE(targets().targets().data(), before) << "a new list is published, never the old one changed";
    EXPECT_EQ(editor().selectedTarget(), 1);
    Click(Find("Parameter"));
    Choose("Room  \u203A");
    Choose("Reverb time");
    EXPECT_EQ(targets().targets()[1].parameter, IndexOf("ReverbTime"));
    Click(Find("RangeMode"));
    Choose("Interval");
    EXPECT_EQ(targets().targets()[1].rangeMode, ZRangeMode::Interval);
    Tick();
    EXPECT_TRUE(Find("MaxValue").visible());
    EXPECT_FALSE(Find("Depth").visible());
    Click(Find("Invert"));
    EXPECT_TRUE(targets().targets()[1].invert);
    ZWheelEvent notch;
    notch.position = Find("MaxValue").bounds().center();
    notch.steps = -1.0;
    root->Wheel(notch);
    EXPECT_NEAR(targets().targets()[1].maxValue, 1.0 - theme.wheelStep, 1e-9);
    Tick();
    EXPECT_EQ(Find("MaxValue").Text(), core->parameters().value(IndexOf("ReverbTime"))->displayTextAt(1.0 - theme.wheelStep));
    // A change from elsewhere shows within a tick.
    ZModulatorTarget added;
    added.parameter = IndexOf("Diffusion");
    targets().add(added);
    Tick();
    const auto& rows = dynamic_cast<ZListView&>(Find("Targets")).rows();
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[2].rfind("Diffusion", 0), 0u) << rows[2];
    dynamic_cast<ZListView&>(Find("Targets")).SetSelectedRow(-1);
    editor().SelectTarget(2);
    Click(Find("Remove"));
    EXPECT_EQ(targets().size(), 2);
    EXPECT_EQ(editor().selectedTarget(), 1);
}

TEST_F(TargetListEditorTest, EditsWhileAudioRunsNeverAllocateOnTheAudioThreadNorUnderTheLock)
{
    core->SetSampleRate(48000.0);
    core->SetMaxBlockSize(256);
    core->InitProcessing();
    ZLFOSettings settings = core->lfo(0).settings();
    settings.enabled = 1;
    core->lfo(0).setSettings(settings);
    ShowEditor();
    // Edits allocate only while the lock is free: the audio thread waits for the swap alone.
    gWatchedLock = &core->processingLock();
    tEditingThread = true;
    Click(Find("Add"));
    Click(Find("Invert"));
    Click(Find("RangeMode"));
    Choose("Full range");
    Click(Find("Remove"));
    tEditingThread = false;
    gWatchedLock = nullptr;
    EXPECT_EQ(gAllocationsUnderLock.load(), 0);
    EXPECT_EQ(targets().size(), 1);
    // The same edits while a second thread processes block after block.
    std::atomic<bool> running{true};
    std::atomic<int> blocks{0};
    std::thread audio([&] {
        tAudioThread = true;
        std::vector<float> left(256, 0.1f), right(256, 0.1f);
        float* io[2] = {left.data(), right.data()};
        while (running.load()) {
            core->ProcessBlock(io, io, 256, true);
            blocks.fetch_add(1);
        }
        tAudioThread = false;
    });
    while (blocks.load() < 10)
        std::this_thread::yield();
    const int allocationsBefore = gAudioAllocations.load();
    const int blocksBefore = blocks.load();
    for (int round = 0; round < 20; ++round) {
        Click(Find("Add"));
        Click(Find("Invert"));
        ZWheelEvent notch;
        notch.position = Find("Depth").bounds().center();
        notch.steps = 1.0;
        root->Wheel(notch);
        if (round % 2 == 1)
            Click(Find("Remove"));
    }
    const int blocksDuringEdits = blocks.load() - blocksBefore;
    running = false;
    audio.join();
    EXPECT_EQ(gAudioAllocations.load(), allocationsBefore);
    EXPECT_GT(blocksDuringEdits, 0) << "the audio thread kept running through the edits";
    EXPECT_EQ(targets().size(), 11);
}

} // namespace
} // namespace halvern
