#include "editor/target_list_editor.h"
#include "tests/editor/modulator_page_fixture.h"
#include "ui/controls/button.h"
#include "ui/controls/list_view.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <new>
#include <thread>

namespace halvern {
namespace {

// Allocations are watched on two threads: the audio thread counts every one it makes;
// the editing thread asks, for every one it makes, whether the processing lock is free
// at that moment (whether the audio thread could run). A separate prober answers, since
// the editing thread itself could always take the re-entrant lock.
thread_local bool tAudioThread = false;
thread_local bool tEditingThread = false;
std::atomic<int> gAudioAllocations{0};
std::atomic<int> gAllocationsUnderLock{0};

class LockProber {
public:
    explicit LockProber(ZLock& lock) : lock_(lock), thread_([this] { serve(); }) {}
    ~LockProber()
    {
        {
            std::lock_guard<std::mutex> hold(mutex_);
            stop_ = true;
        }
        wake_.notify_all();
        thread_.join();
    }
    // True when another thread can take the lock now.
    bool LockIsFree()
    {
        std::unique_lock<std::mutex> hold(mutex_);
        asked_ = true;
        wake_.notify_all();
        wake_.wait(hold, [this] { return !asked_; });
        return free_;
    }

private:
    void serve()
    {
        std::unique_lock<std::mutex> hold(mutex_);
        while (true) {
            wake_.wait(hold, [this] { return asked_ || stop_; });
            if (stop_)
                return;
            free_ = lock_.Acquire(0);
            if (free_)
                lock_.Release();
            asked_ = false;
            wake_.notify_all();
        }
    }

    ZLock& lock_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool asked_ = false;
    bool free_ = true;
    bool stop_ = false;
    std::thread thread_;
};

LockProber* gProber = nullptr;

void Watch()
{
    if (tAudioThread)
        gAudioAllocations.fetch_add(1, std::memory_order_relaxed);
    if (tEditingThread && gProber != nullptr) {
        tEditingThread = false; // the probe's own work is not watched
        if (!gProber->LockIsFree())
            gAllocationsUnderLock.fetch_add(1, std::memory_order_relaxed);
        tEditingThread = true;
    }
}

} // namespace
} // namespace halvern

// Every form but the aligned ones, so that each allocation pairs with its release (the
// aligned forms keep the library's own, which pair among themselves). Kept out of line,
// so that the compiler does not pair a free below with a new.
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
    // The range a target's parameter is driven over as the modulator runs from -1 to 1.
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
    EXPECT_TRUE(dynamic_cast<ZButton&>(Find("Learn")).checked());
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
    Tick();
    EXPECT_EQ(dynamic_cast<ZListView&>(Find("Targets")).rows().size(), 2u);

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
    EXPECT_EQ(editor().message(), Find("Message").Text());

    const ZModulatorTarget* before = targets().targets().data();
    Click(Find("Add"));
    ASSERT_EQ(targets().size(), 2);
    EXPECT_NE(targets().targets().data(), before) << "a new list is published, never the old one changed";
    EXPECT_EQ(Find("Message").Text(), "");
    EXPECT_NE(targets().targets()[1].parameter, targets().targets()[0].parameter);
    EXPECT_EQ(editor().selectedTarget(), 1);

    // The selected target's settings, through the pointer and the keyboard.
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
    before = targets().targets().data();
    Click(Find("Invert"));
    EXPECT_TRUE(targets().targets()[1].invert);
    EXPECT_NE(targets().targets().data(), before);
    ZWheelEvent notch;
    notch.position = Find("MaxValue").bounds().center();
    notch.steps = -1.0;
    root->Wheel(notch);
    EXPECT_NEAR(targets().targets()[1].maxValue, 1.0 - theme.wheelStep, 1e-9);
    Tick();
    // Value and MaxValue show in the units of the parameter they drive.
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

    // Edits made with the audio thread stopped: every allocation they make finds the
    // lock free, so the audio thread is held back by the swap alone.
    {
        LockProber prober(core->processingLock());
        gProber = &prober;
        tEditingThread = true;
        Click(Find("Add"));
        Click(Find("Invert"));
        Click(Find("RangeMode"));
        Choose("Full range");
        Click(Find("Remove"));
        tEditingThread = false;
        gProber = nullptr;
    }
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
