#include "host/vst2/vst2_audio_effect.h"

#include "core/trace.h"
#include "core/z_exception.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

// Opcodes are the plain numbers of the VST 2.4 ABI, so a wrong constant shows up here.

namespace halvern {
namespace {

struct HostCall {
    AEffect* effect;
    VstInt32 opcode, index;
    VstIntPtr value;
    void* ptr;
    float opt;
};

struct FakeHost {
    static inline FakeHost* current = nullptr;
    std::vector<HostCall> calls;
    std::map<VstInt32, VstIntPtr> answers;
    std::function<void()> onAutomate = [] {};

    FakeHost() { current = this; }
    ~FakeHost() { current = nullptr; }
    static VstIntPtr callback(AEffect* effect, int opcode, int index, VstIntPtr value, void* ptr, float opt)
    {
        current->calls.push_back({effect, opcode, index, value, ptr, opt});
        if (opcode == 0)
            current->onAutomate();
        const auto answer = current->answers.find(opcode);
        return answer != current->answers.end() ? answer->second : 0;
    }
};

class TestEffect : public ZVST2AudioEffect {
public:
    static inline int destroyed = 0;

    explicit TestEffect(audioMasterCallback host = nullptr) : ZVST2AudioEffect(host, 3, 4) {}
    ~TestEffect() override { ++destroyed; }

    std::vector<std::string> log;
    std::string text;  // what every text hook writes
    float parameters[4] = {};
    std::vector<char> chunk;
    bool chunkIsPreset = false;
    VstSpeakerArrangement *arrangementIn = nullptr, *arrangementOut = nullptr;
    float rate = 0.0f;
    VstInt32 block = 0;
    std::function<void()> thrower = [] {};

    void close() override { thrower(); }
    void setProgramName(char* name) override { log.push_back(name); }
    void getProgramName(char* name) override { write(name); }
    void getParameterName(VstInt32, char* name) override { log.push_back("name"), write(name); }
    void getParameterDisplay(VstInt32, char* display) override { write(display); }
    void getParameterLabel(VstInt32, char* label) override { write(label); }
    bool getEffectName(char* name) override { return write(name), true; }
    bool getVendorString(char* vendor) override { return write(vendor), true; }
    void setParameter(VstInt32 index, float value) override { thrower(), parameters[index] = value; }
    float getParameter(VstInt32 index) override { return thrower(), parameters[index]; }
    void setSampleRate(float r) override { rate = r; }
    void setBlockSize(VstInt32 size) override { block = size; }
    void suspend() override { log.push_back("suspend"); }
    void resume() override { log.push_back("resume"); }
    VstInt32 getChunk(void** data, bool isPreset) override
    {
        chunkIsPreset = isPreset;
        *data = chunk.data();
        return static_cast<VstInt32>(chunk.size());
    }
    bool getInputProperties(VstInt32 index, VstPinProperties* pin) override
    {
        std::memset(pin->label, 'L', sizeof(pin->label));  // unterminated on purpose
        return index < 2;
    }
    bool getParameterProperties(VstInt32, VstParameterProperties* properties) override
    {
        std::memset(properties->categoryLabel, 'C', sizeof(properties->categoryLabel));
        return true;
    }
    bool setSpeakerArrangement(VstSpeakerArrangement* in, VstSpeakerArrangement* out) override
    {
        arrangementIn = in, arrangementOut = out;
        return true;
    }
    VstInt32 canDo(const char*) override { return thrower(), 1; }
    VstInt32 getTailSize() override { return thrower(), 96000; }
    void processReplacing(float** inputs, float** outputs, VstInt32 frames) override
    {
        thrower();
        for (VstInt32 s = 0; s < frames; ++s)
            outputs[0][s] = 2.0f * inputs[0][s];
    }

private:
    void write(char* to) { copyText(to, text, kTextBufferSize - 1); }
};

VstIntPtr dispatch(ZVST2AudioEffect& effect, VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0,
                   void* ptr = nullptr, float opt = 0.0f)
{
    AEffect* record = effect.getAeffect();
    return record->dispatcher(record, opcode, index, value, ptr, opt);
}

// Reads the record the way a host compiled against the ABI does: by byte offset.
template <typename T>
T at(const AEffect* record, size_t offset)
{
    T value;
    std::memcpy(&value, reinterpret_cast<const unsigned char*>(record) + offset, sizeof(T));
    return value;
}

struct TraceCapture {
    std::vector<std::string> lines;
    TraceSink previous = SetTraceSink([this](std::string_view text, std::string_view location) {
        lines.push_back(std::string(location) + ": " + std::string(text));
    });
    ~TraceCapture() { SetTraceSink(previous); }
};

TEST(VST2AudioEffect, RecordHoldsTheAbiValuesAndAZeroTail)
{
    TestEffect effect;
    const AEffect* record = effect.getAeffect();
    EXPECT_EQ(at<int32_t>(record, 0), ('V' << 24) | ('s' << 16) | ('t' << 8) | 'P');
    EXPECT_EQ(record->numPrograms, 3);
    EXPECT_EQ(record->numParams, 4);
    EXPECT_EQ(record->object, &effect);
    EXPECT_EQ(record->float1, 1.0f);                     // output/input sample ratio
    EXPECT_EQ(record->processDoubleReplacing, nullptr);
    effect.canProcessReplacing();
    effect.programsAreChunks();
    effect.isSynth();
    effect.hasEditor();
    EXPECT_EQ(at<int32_t>(record, 56), 0x131);
    effect.isSynth(false);
    effect.noTail();
    EXPECT_EQ(at<int32_t>(record, 56), 0x231);
    EXPECT_EQ(at<int32_t>(record, 60), 0);
    for (size_t offset = 136; offset < 192; offset += 8)
        EXPECT_EQ(at<int64_t>(record, offset), 0) << offset;
}

TEST(VST2AudioEffect, TextsAreCutToTheirLimitsInWholeCharactersAndTerminated)
{
    TestEffect effect;
    char buffer[128];
    auto ask = [&](VstInt32 opcode, const std::string& text, VstInt32 index = 1) {
        effect.text = text;
        std::memset(buffer, '#', sizeof(buffer));
        dispatch(effect, opcode, index, 0, buffer);
        return std::string(buffer);
    };
    const std::string full(ZVST2AudioEffect::kTextBufferSize - 1, 'x');
    const std::pair<VstInt32, size_t> limits[] = {{8, 24}, {7, 24}, {6, 8}, {5, 24}, {45, 32}, {47, 64}};
    for (const auto& [opcode, limit] : limits) {
        EXPECT_EQ(ask(opcode, full), full.substr(0, limit)) << opcode;
        EXPECT_EQ(buffer[limit + 1], '#') << opcode;
    }
    EXPECT_EQ(ask(8, std::string(23, 'a') + "\xC3\xA9"), std::string(23, 'a'));
    effect.log.clear();
    EXPECT_EQ(ask(8, "Ghost", 4) + ask(8, "Ghost", -1), "");
    EXPECT_TRUE(effect.log.empty()) << "an index outside the parameters reached the effect";
    char hostName[40];
    std::memset(hostName, 'p', sizeof(hostName));  // unterminated
    dispatch(effect, 4, 0, 0, hostName);
    EXPECT_EQ(effect.log.back(), std::string(24, 'p'));
    const std::pair<size_t, const char*> cuts[] = {{0, ""}, {4, "ab"}, {5, "ab\xE2\x82\xAC"}};
    for (const auto& [limit, expected] : cuts) {
        ZVST2AudioEffect::copyText(buffer, "ab\xE2\x82\xAC" "c", limit);
        EXPECT_STREQ(buffer, expected) << limit;
    }
    ZVST2AudioEffect::copyText(buffer, std::string_view("in\0side", 7), 10);  // stops at a terminator
    EXPECT_STREQ(buffer, "in");
    ZVST2AudioEffect::copyText(nullptr, "ignored", 4);
}

TEST(VST2AudioEffect, SetUpKeepsOnlyUsableRates)
{
    TestEffect effect;
    EXPECT_EQ(effect.sampleRate(), 44100.0f);
    dispatch(effect, 10, 0, 0, nullptr, 48000.0f);
    dispatch(effect, 10, 0, 0, nullptr, 0.0f);  // reaches the hook but is not kept
    EXPECT_EQ(effect.rate, 0.0f);
    EXPECT_EQ(effect.sampleRate(), 48000.0f);
    dispatch(effect, 43, 0, 256, nullptr, 96000.0f);  // block size and rate together
    EXPECT_EQ(effect.block, 256);
    EXPECT_EQ(effect.rate, 96000.0f);
    EXPECT_EQ(effect.sampleRate(), 96000.0f);
    dispatch(effect, 12, 0, 1);
    dispatch(effect, 12, 0, 0);
    EXPECT_EQ(effect.log, (std::vector<std::string>{"resume", "suspend"}));
}

TEST(VST2AudioEffect, RecordsFromTheHostAreClearedAndTerminatedAndNullOrOutOfRangeInputIsHarmless)
{
    TestEffect effect;
    VstParameterProperties properties;
    std::memset(&properties, 0xFF, sizeof(properties));
    EXPECT_EQ(dispatch(effect, 56, 0, 0, &properties), 1);
    EXPECT_EQ(std::strlen(properties.categoryLabel), sizeof(properties.categoryLabel) - 1);
    EXPECT_EQ(properties.flags, 0);
    VstPinProperties pin;
    std::memset(&pin, 0xFF, sizeof(pin));
    EXPECT_EQ(dispatch(effect, 33, 1, 0, &pin), 1);
    EXPECT_EQ(std::strlen(pin.label), sizeof(pin.label) - 1);
    EXPECT_EQ(pin.arrangementType, 0);
    VstSpeakerArrangement in{}, out{};
    EXPECT_EQ(dispatch(effect, 42, 0, reinterpret_cast<VstIntPtr>(&in), &out), 1);
    EXPECT_EQ(effect.arrangementIn, &in);
    EXPECT_EQ(effect.arrangementOut, &out);
    void* data = &effect;
    EXPECT_EQ(dispatch(effect, 23, 1, 0, &data), 0);
    EXPECT_EQ(data, nullptr);
    EXPECT_TRUE(effect.chunkIsPreset);
    ERect* rect = reinterpret_cast<ERect*>(&effect);
    EXPECT_EQ(dispatch(effect, 13, 0, 0, &rect), 0);
    EXPECT_EQ(rect, nullptr);
    EXPECT_EQ(dispatch(effect, 26, 4), 0);  // no automation beyond the parameter count
    EXPECT_EQ(dispatch(effect, 52), 96000);  // tail size
    EXPECT_EQ(dispatch(effect, 58), 2400);
    EXPECT_EQ(dispatch(effect, 999), 0);
    for (VstInt32 opcode : {4, 5, 6, 7, 8, 13, 23, 24, 25, 29, 33, 34, 45, 47, 48, 51, 56, 69})
        EXPECT_EQ(dispatch(effect, opcode, 0, 16), 0) << opcode;
    EXPECT_TRUE(effect.log.empty());
    AEffect* record = effect.getAeffect();
    EXPECT_EQ(record->dispatcher(nullptr, 58, 0, 0, nullptr, 0.0f), 0);
    EXPECT_EQ(record->getParameter(nullptr, 0), 0.0f);
    record->setParameter(nullptr, 0, 1.0f);
    record->process(nullptr, nullptr, nullptr, 64);
    record->processReplacing(nullptr, nullptr, nullptr, 64);
    AEffect orphan = *record;
    orphan.object = nullptr;
    EXPECT_EQ(orphan.dispatcher(&orphan, 58, 0, 0, nullptr, 0.0f), 0);
    record->setParameter(record, 4, 1.0f);
    record->setParameter(record, -1, 1.0f);
    EXPECT_EQ(record->getParameter(record, 4), 0.0f);
    ZVST2AudioEffect plain(nullptr, 0, 0);
    AEffect* plainRecord = plain.getAeffect();
    float left[3] = {1, 1, 1};
    float* outputs[] = {left, nullptr};
    plainRecord->processReplacing(plainRecord, nullptr, outputs, 3);
    EXPECT_EQ(left[0] + left[1] + left[2], 0.0f);
    plainRecord->processReplacing(plainRecord, nullptr, nullptr, 3);
}

TEST(VST2AudioEffect, HostHelpersTheAdapterUsesSendTheirOpcodes)
{
    FakeHost host;
    TestEffect effect(&FakeHost::callback);
    EXPECT_EQ(effect.getMasterVersion(), 1);  // a host answering 0 counts as version 1
    effect.ioChanged();
    effect.wantEvents();
    VstEvents events{};
    effect.sendVstEventsToHost(&events);
    effect.sendVstEventsToHost(nullptr);  // not sent
    VstTimeInfo time{};
    host.answers[7] = reinterpret_cast<VstIntPtr>(&time);
    EXPECT_EQ(effect.getTimeInfo(kVstTempoValid | kVstPpqPosValid), &time);
    ASSERT_EQ(host.calls.size(), 5u);
    const VstInt32 opcodes[] = {1, 13, 6, 8, 7};
    for (size_t i = 0; i < host.calls.size(); ++i) {
        EXPECT_EQ(host.calls[i].opcode, opcodes[i]) << i;
        EXPECT_EQ(host.calls[i].effect, effect.getAeffect()) << i;
    }
    EXPECT_EQ(host.calls[2].value, 1);  // all MIDI events wanted
    EXPECT_EQ(host.calls[3].ptr, &events);
    EXPECT_EQ(host.calls[4].value, (1 << 10) | (1 << 9));  // the time filter in the value word
    float valueWhenTold = -1.0f;
    host.onAutomate = [&] { valueWhenTold = effect.parameters[2]; };
    effect.setParameterAutomated(2, 0.25f);
    EXPECT_EQ(valueWhenTold, 0.25f);
    EXPECT_EQ(host.calls.back().index, 2);
    EXPECT_EQ(host.calls.back().opt, 0.25f);
    TestEffect alone(nullptr);
    EXPECT_EQ(alone.getTimeInfo(0), nullptr);
    alone.setParameterAutomated(1, 0.75f);
    EXPECT_EQ(alone.parameters[1], 0.75f);
}

TEST(VST2AudioEffect, ExceptionsDoNotReachTheHost)
{
    TraceCapture trace;
    TestEffect effect;
    AEffect* record = effect.getAeffect();
    char text[] = "receiveVstEvents";
    effect.thrower = [] { throw ZException("broken state"); };
    EXPECT_EQ(dispatch(effect, 51, 0, 0, text), 0);
    effect.thrower = [] { throw std::runtime_error("out of range"); };
    EXPECT_EQ(dispatch(effect, 52), 0);
    effect.thrower = [] { throw 42; };
    EXPECT_EQ(record->getParameter(record, 1), 0.0f);
    record->setParameter(record, 1, 0.5f);
    float in[4] = {1, 2, 3, 4}, out[4] = {};
    float* ins[] = {in, in};
    float* outs[] = {out, out};
    record->processReplacing(record, ins, outs, 4);
    ASSERT_EQ(trace.lines.size(), 5u);
    EXPECT_EQ(trace.lines[0], "ZVST2AudioEffect::dispatcher: broken state");
    EXPECT_EQ(trace.lines[1], "ZVST2AudioEffect::dispatcher: SYSTEM EXCEPTION! out of range");
    EXPECT_EQ(trace.lines[2], "ZVST2AudioEffect::getParameter: SYSTEM EXCEPTION! unknown");
    EXPECT_NE(trace.lines[4].find("ZVST2AudioEffect::processReplacing"), std::string::npos);
    effect.thrower = [] {};
    EXPECT_EQ(dispatch(effect, 52), 96000);
    record->processReplacing(record, ins, outs, 4);
    EXPECT_EQ(out[3], 8.0f) << "the effect works on afterwards";
    TestEffect::destroyed = 0;
    auto* closing = new TestEffect;
    closing->thrower = [] { throw std::runtime_error("close failed"); };
    EXPECT_EQ(dispatch(*closing, 1), 1);
    EXPECT_EQ(TestEffect::destroyed, 1);
    EXPECT_EQ(trace.lines.size(), 6u);
}

} // namespace
} // namespace halvern
