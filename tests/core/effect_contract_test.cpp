#include "core/audio_effect_plugin.h"
#include "core/audio_plugin.h"
#include "core/midi_processor.h"
#include "core/z_lock.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace halvern {
namespace {

class RecordingEffect : public ZAudioEffectPlugin {
public:
    std::vector<std::string> calls;
    const ZHostTimeInfo* context = nullptr;
    int processed = 0;

    void Update() override { calls.push_back("update"); }
    void Reset() override { calls.push_back("reset"); }
    int32_t GetTailLength() override { return 4096; }
    int32_t GetLatency() override { return 12; }
    int32_t GetProcessingFlags() override { return kFlagNeedsSeparateInputs; }
    void Process(const ZHostTimeInfo* info, float* const*, float* const* outputs, int32_t n) override
    {
        context = info;
        processed = n;
        outputs[0][0] = 1.0f;
    }
};

// Integer arguments stand in the second 32-bit word of their 8-byte slot.
uint64_t integerSlot(int32_t value)
{
    uint32_t words[2] = {0xDEADBEEFu, static_cast<uint32_t>(value)};
    uint64_t slot;
    std::memcpy(&slot, words, sizeof(slot));
    return slot;
}

uint64_t pointerSlot(const void* pointer)
{
    return static_cast<uint64_t>(reinterpret_cast<uintptr_t>(pointer));
}

TEST(EffectContract, MessagesReachTheEffectsOperations)
{
    RecordingEffect effect;
    const ZPluginMessage none;
    EXPECT_EQ(effect.HandleMessage(ZAudioEffectPlugin::kMessageCreate, none), reinterpret_cast<intptr_t>(&effect));

    const uint64_t prepare[2] = {integerSlot(44100), integerSlot(512)};
    EXPECT_EQ(effect.HandleMessage(100, ZPluginMessage{prepare, 2}), 0);
    EXPECT_EQ(effect.sampleRate(), 44100.0);
    EXPECT_EQ(effect.maxBlockSize(), 512);
    ZHostTimeInfo info;
    float sample = 0.0f;
    float* outputs[1] = {&sample};
    const uint64_t process[4] = {pointerSlot(&info), pointerSlot(nullptr), pointerSlot(outputs), integerSlot(64)};
    EXPECT_EQ(effect.HandleMessage(101, ZPluginMessage{process, 4}), 0);
    EXPECT_EQ(effect.context, &info);
    EXPECT_EQ(effect.processed, 64);
    EXPECT_EQ(sample, 1.0f);
    EXPECT_EQ(effect.HandleMessage(102, none), 4096);
    EXPECT_EQ(effect.HandleMessage(103, none), 12);
    EXPECT_EQ(effect.HandleMessage(105, none), ZAudioEffectPlugin::kFlagNeedsSeparateInputs);
    const uint64_t active[1] = {integerSlot(1)};
    EXPECT_EQ(effect.HandleMessage(104, ZPluginMessage{active, 1}), 0);
    EXPECT_EQ(effect.HandleMessage(106, none), 0);
    EXPECT_EQ(effect.HandleMessage(107, none), 0);
    EXPECT_EQ(effect.calls, (std::vector<std::string>{"reset", "reset", "update"}));
    EXPECT_EQ(effect.HandleMessage(55, none), 0);
    EXPECT_EQ(none.argument(1), 0);
}

TEST(Lock, TryOnceFailsWhileAnotherThreadHoldsAndReentersOnTheSameThread)
{
    ZLock lock;
    ASSERT_TRUE(lock.Acquire(-1));
    EXPECT_TRUE(lock.Acquire(0)); // re-entrant on the owning thread
    lock.Release();
    bool otherGotIt = true;
    std::thread([&] { otherGotIt = lock.Acquire(0); }).join();
    EXPECT_FALSE(otherGotIt);
    lock.Release();
    std::thread([&] { ZLockHolder hold(lock, 0); otherGotIt = true; }).join();
    EXPECT_TRUE(otherGotIt);
}

TEST(MidiProcessor, DecodesChannelMessagesAndKeepsTheState)
{
    struct Recorder : ZMIDIProcessor {
        std::vector<std::string> seen;
        void ProcessAftertouch(int channel, int value, int32_t) override
        {
            seen.push_back("at " + std::to_string(channel) + " " + std::to_string(value));
        }
    } midi;
    midi.ProcessMIDIMessage(0x93, 60, 100, 0);      // note on, channel 4
    midi.ProcessMIDIMessage(0x93, 64, 90, 0);
    midi.ProcessMIDIMessage(0x93, 60, 0, 5);        // velocity 0 is a note-off
    EXPECT_FALSE(midi.midiState().isNoteHeld(3, 60));
    EXPECT_TRUE(midi.midiState().isNoteHeld(3, 64));
    midi.ProcessMIDIMessage(0xB3, 7, 99, 0);
    EXPECT_EQ(midi.midiState().controller(3, 7), 99);
    midi.ProcessMIDIMessage(0xB3, 123, 0, 0);       // all notes off
    EXPECT_EQ(midi.midiState().heldNoteCount(3), 0);
    midi.ProcessMIDIMessage(0xE0, 0x7F, 0x7F, 0);   // pitch-bend fully up
    EXPECT_EQ(midi.midiState().pitchBend(0), 16383);
    midi.ProcessMIDIMessage(0xD1, 0xFF, 0, 0);      // data bytes are masked to 7 bits
    EXPECT_EQ(midi.seen, (std::vector<std::string>{"at 1 127"}));
    midi.ProcessMIDIMessage(0xF8, 0, 0, 0);         // clock: nothing to do
}

} // namespace
} // namespace halvern
