#include "host/vst2/vst2_audio_effect.h"

#include "core/trace.h"
#include "core/z_exception.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

// The effect is driven through its AEffect record exactly as a host drives it. Opcodes
// are written as the plain numbers of the VST 2.4 ABI, so a wrong constant in the
// plug-in shows up here.

namespace halvern {
namespace {

struct HostCall {
    AEffect* effect;
    VstInt32 opcode;
    VstInt32 index;
    VstIntPtr value;
    void* ptr;
    float opt;
};

// A host callback that records every call and answers from a table.
class FakeHost {
public:
    FakeHost() { current_ = this; }
    ~FakeHost() { current_ = nullptr; }

    static VstIntPtr callback(AEffect* effect, int opcode, int index, VstIntPtr value, void* ptr, float opt)
    {
        FakeHost* host = current_;
        HostCall call{effect, opcode, index, value, ptr, opt};
        host->calls.push_back(call);
        if (host->onCall)
            host->onCall(call);
        auto answer = host->answers.find(opcode);
        return answer != host->answers.end() ? answer->second : 0;
    }

    std::vector<HostCall> calls;
    std::map<VstInt32, VstIntPtr> answers;
    std::function<void(const HostCall&)> onCall;

private:
    static inline FakeHost* current_ = nullptr;
};

// An effect whose hooks record what reached them and answer what a test sets.
class TestEffect : public ZVST2AudioEffect {
public:
    static inline int destroyed = 0;
    static inline bool closed = false;

    explicit TestEffect(audioMasterCallback host = nullptr) : ZVST2AudioEffect(host, 3, 4) {}
    ~TestEffect() override { ++destroyed; }

    std::vector<std::string> log;
    std::string text;            // what every text hook writes
    float parameters[4] = {};
    std::vector<char> chunk;
    void* chunkData = nullptr;   // what setChunk received
    VstInt32 chunkSize = 0;
    bool chunkIsPreset = false;
    const char* canDoText = nullptr;
    VstSpeakerArrangement* arrangementIn = nullptr;
    VstSpeakerArrangement* arrangementOut = nullptr;
    float rate = 0.0f;
    VstInt32 block = 0;
    std::function<void()> thrower = [] {};

    void open() override { log.push_back("open"); }
    void close() override
    {
        closed = true;
        thrower();
    }
    void setProgram(VstInt32 program) override
    {
        log.push_back("setProgram " + std::to_string(program));
        ZVST2AudioEffect::setProgram(program);
    }
    void setProgramName(char* name) override { log.push_back(std::string("setProgramName ") + name); }
    void getProgramName(char* name) override { copyText(name, text, kTextBufferSize - 1); }
    bool getProgramNameIndexed(VstInt32 category, VstInt32 index, char* name) override
    {
        log.push_back("getProgramNameIndexed " + std::to_string(category) + " " + std::to_string(index));
        copyText(name, text, kTextBufferSize - 1);
        return true;
    }
    void getParameterName(VstInt32 index, char* name) override
    {
        log.push_back("getParameterName " + std::to_string(index));
        copyText(name, text, kTextBufferSize - 1);
    }
    void getParameterDisplay(VstInt32, char* display) override { copyText(display, text, kTextBufferSize - 1); }
    void getParameterLabel(VstInt32, char* label) override { copyText(label, text, kTextBufferSize - 1); }
    bool getEffectName(char* name) override { return copyText(name, text, kTextBufferSize - 1), true; }
    bool getVendorString(char* vendor) override { return copyText(vendor, text, kTextBufferSize - 1), true; }
    bool getProductString(char* product) override { return copyText(product, text, kTextBufferSize - 1), true; }

    void setParameter(VstInt32 index, float value) override
    {
        thrower();
        parameters[index] = value;
    }
    float getParameter(VstInt32 index) override
    {
        thrower();
        return parameters[index];
    }
    bool string2parameter(VstInt32 index, char* value) override
    {
        log.push_back("string2parameter " + std::to_string(index) + (value ? " text" : " query"));
        return true;
    }

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
    VstInt32 setChunk(void* data, VstInt32 size, bool isPreset) override
    {
        chunkData = data;
        chunkSize = size;
        chunkIsPreset = isPreset;
        return 1;
    }
    VstInt32 processEvents(VstEvents* events) override { return events->numEvents; }
    bool getInputProperties(VstInt32 index, VstPinProperties* pin) override
    {
        std::memset(pin->label, 'L', sizeof(pin->label));  // unterminated on purpose
        pin->flags = kVstPinIsActive | kVstPinIsStereo;
        return index < 2;
    }
    bool getParameterProperties(VstInt32, VstParameterProperties* properties) override
    {
        std::memset(properties->categoryLabel, 'C', sizeof(properties->categoryLabel));
        return true;
    }
    bool setSpeakerArrangement(VstSpeakerArrangement* in, VstSpeakerArrangement* out) override
    {
        arrangementIn = in;
        arrangementOut = out;
        return true;
    }
    VstInt32 canDo(const char* what) override
    {
        thrower();
        canDoText = what;
        return std::strcmp(what, "bypass") == 0 ? -1 : 1;
    }
    VstInt32 getTailSize() override
    {
        thrower();
        return 96000;
    }
    bool setBypass(bool onOff) override { return log.push_back(onOff ? "bypass on" : "bypass off"), true; }
    VstInt32 startProcess() override { return log.push_back("startProcess"), 1; }
    VstInt32 stopProcess() override { return log.push_back("stopProcess"), 1; }
    bool setProcessPrecision(VstInt32 precision) override { return precision == kVstProcessPrecision32; }
    VstInt32 getNumMidiInputChannels() override { return 16; }

    void processReplacing(float** inputs, float** outputs, VstInt32 frames) override
    {
        thrower();
        for (VstInt32 s = 0; s < frames; ++s)
            outputs[0][s] = 2.0f * inputs[0][s];
    }
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

class TraceCapture {
public:
    TraceCapture()
    {
        previous_ = SetTraceSink([this](std::string_view text, std::string_view location) {
            lines.push_back(std::string(location) + ": " + std::string(text));
        });
    }
    ~TraceCapture() { SetTraceSink(previous_); }
    std::vector<std::string> lines;

private:
    TraceSink previous_;
};

TEST(VST2AudioEffect, RecordReadsAsTheAbiLaysItOut)
{
    TestEffect effect;
    const AEffect* record = effect.getAeffect();
    EXPECT_EQ(at<int32_t>(record, 0), ('V' << 24) | ('s' << 16) | ('t' << 8) | 'P');
    EXPECT_EQ(at<int32_t>(record, 40), 3);  // programs
    EXPECT_EQ(at<int32_t>(record, 44), 4);  // parameters
    EXPECT_EQ(at<void*>(record, 96), &effect);
    EXPECT_EQ(at<float>(record, 92), 1.0f);  // output/input sample ratio
    EXPECT_EQ(at<int32_t>(record, 116), 1);  // version
    EXPECT_NE(record->dispatcher, nullptr);
    EXPECT_NE(record->process, nullptr);
    EXPECT_NE(record->processReplacing, nullptr);
    EXPECT_NE(record->setParameter, nullptr);
    EXPECT_NE(record->getParameter, nullptr);
    EXPECT_EQ(record->processDoubleReplacing, nullptr);  // no 64-bit processing announced

    effect.setUniqueID(CCONST('Z', 'A', 'e', 'r'));
    effect.setNumInputs(1);
    effect.setNumOutputs(6);
    effect.setInitialDelay(480);
    EXPECT_EQ(at<int32_t>(record, 112), 0x5A416572);
    EXPECT_EQ(at<int32_t>(record, 48), 1);
    EXPECT_EQ(at<int32_t>(record, 52), 6);
    EXPECT_EQ(at<int32_t>(record, 80), 480);

    // The flags are one 32-bit word; the 4 bytes after it stay zero.
    EXPECT_EQ(at<int32_t>(record, 56), 0);
    effect.canProcessReplacing();
    effect.programsAreChunks();
    EXPECT_EQ(at<int32_t>(record, 56), 0x30);
    effect.isSynth();
    effect.hasEditor();
    EXPECT_EQ(at<int32_t>(record, 56), 0x131);
    effect.isSynth(false);
    effect.noTail();
    EXPECT_EQ(at<int32_t>(record, 56), 0x231);
    EXPECT_EQ(effect.getFlags(), 0x231);
    EXPECT_EQ(at<int32_t>(record, 60), 0);

    // A host may read the whole 192-byte record; the reserved tail is there and zero.
    for (size_t offset = 136; offset < 192; offset += 8)
        EXPECT_EQ(at<int64_t>(record, offset), 0) << offset;
}

TEST(VST2AudioEffect, ParameterTextsAreCutToTheirLimitsAndTerminated)
{
    TestEffect effect;
    char buffer[64];
    auto ask = [&](VstInt32 opcode, VstInt32 index, const std::string& text) {
        effect.text = text;
        std::memset(buffer, '#', sizeof(buffer));
        return dispatch(effect, opcode, index, 0, buffer);
    };

    // Name (8): up to 24 characters.
    ask(8, 1, "Reverb time of the late field");
    EXPECT_STREQ(buffer, "Reverb time of the late ");
    EXPECT_EQ(buffer[25], '#');  // nothing written past the terminator
    ask(8, 1, "Size");
    EXPECT_STREQ(buffer, "Size");
    EXPECT_EQ(buffer[5], '#');
    // A cut that would split "é" (two bytes) drops it whole.
    ask(8, 1, std::string(23, 'a') + "\xC3\xA9");
    EXPECT_EQ(std::string(buffer), std::string(23, 'a'));
    // A hook that fills its whole scratch buffer is cut as well.
    ask(8, 1, std::string(ZVST2AudioEffect::kTextBufferSize - 1, 'x'));
    EXPECT_EQ(std::string(buffer), std::string(24, 'x'));

    // Display (7): up to 24; label (6): up to 8.
    ask(7, 2, "1234.5 ms at 48 kHz, predelay included");
    EXPECT_STREQ(buffer, "1234.5 ms at 48 kHz, pre");
    ask(6, 2, "seconds/beat");
    EXPECT_STREQ(buffer, "seconds/");
    EXPECT_EQ(buffer[9], '#');

    // An index outside the parameters gives an empty text without asking the effect.
    effect.log.clear();
    ask(8, 4, "Ghost");
    EXPECT_STREQ(buffer, "");
    ask(8, -1, "Ghost");
    EXPECT_STREQ(buffer, "");
    EXPECT_TRUE(effect.log.empty());
}

TEST(VST2AudioEffect, ProgramAndIdentityTextsRespectTheirLimits)
{
    TestEffect effect;
    char buffer[128];
    auto ask = [&](VstInt32 opcode, const std::string& text, VstInt32 index = 0, VstIntPtr value = 0) {
        effect.text = text;
        std::memset(buffer, '#', sizeof(buffer));
        return dispatch(effect, opcode, index, value, buffer);
    };
    const std::string longText(100, 'n');

    EXPECT_EQ(ask(45, longText), 1);  // effect name: 32
    EXPECT_EQ(std::strlen(buffer), 32u);
    EXPECT_EQ(ask(47, longText), 1);  // vendor: 64
    EXPECT_EQ(std::strlen(buffer), 64u);
    EXPECT_EQ(ask(48, "Halvern"), 1);  // product: 64
    EXPECT_STREQ(buffer, "Halvern");
    ask(5, longText);  // program name: 24
    EXPECT_EQ(std::strlen(buffer), 24u);
    // Indexed program names: index is the program, value the category.
    EXPECT_EQ(ask(29, "Hall", 2, 7), 1);
    EXPECT_STREQ(buffer, "Hall");
    EXPECT_EQ(effect.log.back(), "getProgramNameIndexed 7 2");

    // A program name from the host is read only up to its length.
    char hostName[40];
    std::memset(hostName, 'p', sizeof(hostName));  // unterminated
    dispatch(effect, 4, 0, 0, hostName);
    EXPECT_EQ(effect.log.back(), "setProgramName " + std::string(24, 'p'));

    // Programs: only numbers below the program count are set.
    effect.log.clear();
    dispatch(effect, 2, 0, 2);
    dispatch(effect, 2, 0, 3);
    dispatch(effect, 2, 0, -1);
    EXPECT_EQ(effect.log, std::vector<std::string>{"setProgram 2"});
    EXPECT_EQ(dispatch(effect, 3), 2);

    // Without hooks the answers are 0 and the texts empty.
    ZVST2AudioEffect plain(nullptr, 0, 0);
    for (VstInt32 opcode : {45, 47, 48, 5}) {
        std::memset(buffer, '#', sizeof(buffer));
        EXPECT_EQ(dispatch(plain, opcode, 0, 0, buffer), 0) << opcode;
        EXPECT_STREQ(buffer, "") << opcode;
    }
}

TEST(VST2AudioEffect, SetUpOpcodesReachTheirHooks)
{
    TestEffect effect;
    EXPECT_EQ(effect.sampleRate(), 44100.0f);
    EXPECT_EQ(effect.blockSize(), 1024);

    dispatch(effect, 0);  // open
    dispatch(effect, 10, 0, 0, nullptr, 48000.0f);
    EXPECT_EQ(effect.rate, 48000.0f);
    EXPECT_EQ(effect.sampleRate(), 48000.0f);
    // A rate of 0 still reaches the hook but is not kept.
    dispatch(effect, 10, 0, 0, nullptr, 0.0f);
    EXPECT_EQ(effect.rate, 0.0f);
    EXPECT_EQ(effect.sampleRate(), 48000.0f);

    dispatch(effect, 11, 0, 512);
    EXPECT_EQ(effect.block, 512);
    EXPECT_EQ(effect.blockSize(), 512);
    dispatch(effect, 43, 0, 256, nullptr, 96000.0f);  // block size and rate together
    EXPECT_EQ(effect.block, 256);
    EXPECT_EQ(effect.rate, 96000.0f);

    dispatch(effect, 12, 0, 1);
    dispatch(effect, 12, 0, 0);
    dispatch(effect, 71);
    dispatch(effect, 72);
    EXPECT_EQ(effect.log, (std::vector<std::string>{"open", "resume", "suspend", "startProcess", "stopProcess"}));
}

TEST(VST2AudioEffect, ChunksPassThePointersBothWays)
{
    TestEffect effect;
    effect.chunk = {'<', 's', 'e', 't', '/', '>'};

    void* data = nullptr;
    EXPECT_EQ(dispatch(effect, 23, 1, 0, &data), 6);  // index 1: one program
    EXPECT_EQ(data, effect.chunk.data());
    EXPECT_TRUE(effect.chunkIsPreset);
    EXPECT_EQ(dispatch(effect, 23, 0, 0, &data), 6);  // index 0: the bank
    EXPECT_FALSE(effect.chunkIsPreset);
    // A chunk with a size but no data is no chunk.
    effect.chunk.clear();
    data = &effect;
    EXPECT_EQ(dispatch(effect, 23, 0, 0, &data), 0);
    EXPECT_EQ(data, nullptr);

    char state[] = "state bytes";
    EXPECT_EQ(dispatch(effect, 24, 1, 11, state), 1);
    EXPECT_EQ(effect.chunkData, state);
    EXPECT_EQ(effect.chunkSize, 11);
    EXPECT_TRUE(effect.chunkIsPreset);
    // No data, or no bytes: the hook is not asked.
    effect.chunkData = nullptr;
    EXPECT_EQ(dispatch(effect, 24, 0, 11, nullptr), 0);
    EXPECT_EQ(dispatch(effect, 24, 0, 0, state), 0);
    EXPECT_EQ(dispatch(effect, 23, 0, 0, nullptr), 0);
    EXPECT_EQ(effect.chunkData, nullptr);
}

TEST(VST2AudioEffect, QueriesReachTheirHooks)
{
    TestEffect effect;
    char bypass[] = "bypass";
    char send[] = "plugAsSend";
    EXPECT_EQ(dispatch(effect, 51, 0, 0, bypass), -1);
    EXPECT_EQ(effect.canDoText, bypass);
    EXPECT_EQ(dispatch(effect, 51, 0, 0, send), 1);
    EXPECT_EQ(dispatch(effect, 52), 96000);  // tail size
    EXPECT_EQ(dispatch(effect, 58), 2400);
    EXPECT_EQ(dispatch(effect, 44, 0, 1), 1);
    EXPECT_EQ(effect.log.back(), "bypass on");
    EXPECT_EQ(dispatch(effect, 77, 0, 0), 1);  // 32-bit precision taken
    EXPECT_EQ(dispatch(effect, 77, 0, 1), 0);  // 64-bit refused
    EXPECT_EQ(dispatch(effect, 78), 16);
    EXPECT_EQ(dispatch(effect, 79), 0);

    VstEvents events{};
    events.numEvents = 3;
    EXPECT_EQ(dispatch(effect, 25, 0, 0, &events), 3);

    // Parameters: automation and text input; a null text only asks.
    EXPECT_EQ(dispatch(effect, 26, 3), 1);
    EXPECT_EQ(dispatch(effect, 26, 4), 0);
    char value[] = "0.5";
    EXPECT_EQ(dispatch(effect, 27, 1, 0, value), 1);
    EXPECT_EQ(dispatch(effect, 27, 1), 1);
    EXPECT_EQ(effect.log.back(), "string2parameter 1 query");

    // Records from the host are cleared before the hook and their texts terminated.
    VstParameterProperties properties;
    std::memset(&properties, 0xFF, sizeof(properties));
    EXPECT_EQ(dispatch(effect, 56, 0, 0, &properties), 1);
    EXPECT_EQ(std::strlen(properties.categoryLabel), sizeof(properties.categoryLabel) - 1);
    EXPECT_EQ(properties.flags, 0);
    VstPinProperties pin;
    std::memset(&pin, 0xFF, sizeof(pin));
    EXPECT_EQ(dispatch(effect, 33, 1, 0, &pin), 1);
    EXPECT_EQ(std::strlen(pin.label), sizeof(pin.label) - 1);
    EXPECT_EQ(pin.flags, 3);
    EXPECT_EQ(pin.arrangementType, 0);
    EXPECT_EQ(dispatch(effect, 33, 2, 0, &pin), 0);
    EXPECT_EQ(dispatch(effect, 34, 0, 0, &pin), 0);  // outputs keep the default

    // The input arrangement travels in the value word, the output in the pointer.
    VstSpeakerArrangement in{}, out{};
    EXPECT_EQ(dispatch(effect, 42, 0, reinterpret_cast<VstIntPtr>(&in), &out), 1);
    EXPECT_EQ(effect.arrangementIn, &in);
    EXPECT_EQ(effect.arrangementOut, &out);

    // Neutral answers of the base class.
    ZVST2AudioEffect plain(nullptr, 0, 2);
    EXPECT_EQ(dispatch(plain, 52), 0);
    EXPECT_EQ(dispatch(plain, 58), 2400);
    EXPECT_EQ(dispatch(plain, 51, 0, 0, send), 0);
    EXPECT_EQ(dispatch(plain, 26, 1), 1);  // parameters may be automated
    EXPECT_EQ(dispatch(plain, 35), kPlugCategUnknown);
    plain.isSynth();
    EXPECT_EQ(dispatch(plain, 35), kPlugCategSynth);
    EXPECT_EQ(dispatch(plain, 63), -1);  // no MIDI programs
    ERect* rect = reinterpret_cast<ERect*>(&plain);
    EXPECT_EQ(dispatch(plain, 13, 0, 0, &rect), 0);  // no editor
    EXPECT_EQ(rect, nullptr);
    EXPECT_EQ(dispatch(plain, 14, 0, 0, &rect), 0);
    EXPECT_EQ(dispatch(plain, 999), 0);
}

TEST(VST2AudioEffect, HostHelpersSendTheirOpcodes)
{
    FakeHost host;
    TestEffect effect(&FakeHost::callback);
    host.answers = {{1, 2400}, {16, 0}, {17, 256}};

    EXPECT_EQ(effect.getMasterVersion(), 2400);
    host.answers[1] = 0;
    EXPECT_EQ(effect.getMasterVersion(), 1);  // a host answering 0 counts as version 1
    effect.ioChanged();
    effect.wantEvents();
    VstEvents events{};
    effect.sendVstEventsToHost(&events);
    effect.sendVstEventsToHost(nullptr);  // not sent
    effect.beginEdit(3);
    effect.endEdit(3);
    effect.updateDisplay();
    effect.sizeWindow(640, 480);
    EXPECT_EQ(effect.canHostDo("sizeWindow"), 0);

    ASSERT_EQ(host.calls.size(), 10u);
    const VstInt32 opcodes[] = {1, 1, 13, 6, 8, 43, 44, 42, 15, 37};
    for (size_t i = 0; i < host.calls.size(); ++i) {
        EXPECT_EQ(host.calls[i].opcode, opcodes[i]) << i;
        EXPECT_EQ(host.calls[i].effect, effect.getAeffect()) << i;
    }
    EXPECT_EQ(host.calls[3].value, 1);  // all MIDI events wanted
    EXPECT_EQ(host.calls[4].ptr, &events);
    EXPECT_EQ(host.calls[5].index, 3);
    EXPECT_EQ(host.calls[6].index, 3);
    EXPECT_EQ(host.calls[8].index, 640);
    EXPECT_EQ(host.calls[8].value, 480);
    EXPECT_STREQ(static_cast<const char*>(host.calls[9].ptr), "sizeWindow");

    // Time information: the filter goes in the value word, the host's record comes back.
    VstTimeInfo time{};
    host.answers[7] = reinterpret_cast<VstIntPtr>(&time);
    EXPECT_EQ(effect.getTimeInfo(kVstTempoValid | kVstPpqPosValid), &time);
    EXPECT_EQ(host.calls.back().opcode, 7);
    EXPECT_EQ(host.calls.back().value, (1 << 10) | (1 << 9));

    // Sample rate and block size: an answer of 0 keeps the last known value.
    dispatch(effect, 10, 0, 0, nullptr, 48000.0f);
    EXPECT_EQ(effect.getSampleRate(), 48000.0f);
    EXPECT_EQ(host.calls.back().opcode, 16);
    host.answers[16] = 96000;
    EXPECT_EQ(effect.getSampleRate(), 96000.0f);
    EXPECT_EQ(effect.sampleRate(), 96000.0f);
    EXPECT_EQ(effect.getBlockSize(), 256);
    EXPECT_EQ(host.calls.back().opcode, 17);
    host.answers[17] = 0;
    EXPECT_EQ(effect.getBlockSize(), 256);

    // Automation: the effect has the value before the host hears of it.
    float valueWhenTold = -1.0f;
    host.onCall = [&](const HostCall& call) {
        if (call.opcode == 0)
            valueWhenTold = effect.parameters[2];
    };
    effect.setParameterAutomated(2, 0.25f);
    EXPECT_EQ(valueWhenTold, 0.25f);
    EXPECT_EQ(host.calls.back().opcode, 0);
    EXPECT_EQ(host.calls.back().index, 2);
    EXPECT_EQ(host.calls.back().opt, 0.25f);
}

TEST(VST2AudioEffect, HelpersWithoutAHostAnswerNeutrally)
{
    TestEffect effect(nullptr);
    VstEvents events{};
    EXPECT_EQ(effect.getMasterVersion(), 1);
    EXPECT_FALSE(effect.ioChanged());
    EXPECT_FALSE(effect.wantEvents());
    EXPECT_FALSE(effect.sendVstEventsToHost(&events));
    EXPECT_EQ(effect.getTimeInfo(0), nullptr);
    EXPECT_EQ(effect.getSampleRate(), 44100.0f);
    EXPECT_EQ(effect.getBlockSize(), 1024);
    EXPECT_FALSE(effect.beginEdit(0));
    EXPECT_FALSE(effect.endEdit(0));
    EXPECT_FALSE(effect.updateDisplay());
    EXPECT_FALSE(effect.sizeWindow(1, 1));
    EXPECT_EQ(effect.canHostDo("sizeWindow"), 0);
    EXPECT_EQ(effect.callHost(audioMasterGetTime), 0);
    effect.setParameterAutomated(1, 0.75f);  // the effect still takes the value
    EXPECT_EQ(effect.parameters[1], 0.75f);
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
    EXPECT_NE(trace.lines[2].find("ZVST2AudioEffect::getParameter"), std::string::npos);
    EXPECT_NE(trace.lines[3].find("ZVST2AudioEffect::setParameter"), std::string::npos);
    EXPECT_NE(trace.lines[4].find("ZVST2AudioEffect::processReplacing"), std::string::npos);

    // The effect works on afterwards.
    effect.thrower = [] {};
    EXPECT_EQ(dispatch(effect, 52), 96000);
    record->processReplacing(record, ins, outs, 4);
    EXPECT_EQ(out[3], 8.0f);
}

TEST(VST2AudioEffect, CloseEndsTheInstance)
{
    TestEffect::destroyed = 0;
    TestEffect::closed = false;
    auto* effect = new TestEffect;
    EXPECT_EQ(dispatch(*effect, 1), 1);
    EXPECT_TRUE(TestEffect::closed);
    EXPECT_EQ(TestEffect::destroyed, 1);

    // A close() that throws still ends the instance.
    TraceCapture trace;
    effect = new TestEffect;
    effect->thrower = [] { throw std::runtime_error("close failed"); };
    EXPECT_EQ(dispatch(*effect, 1), 1);
    EXPECT_EQ(TestEffect::destroyed, 2);
    EXPECT_EQ(trace.lines.size(), 1u);
}

TEST(VST2AudioEffect, NullPointersFromTheHostAreHarmless)
{
    TestEffect effect;
    // Every opcode that writes through or reads from the pointer.
    for (VstInt32 opcode : {4, 5, 6, 7, 8, 13, 23, 24, 25, 29, 33, 34, 45, 47, 48, 51, 56, 69})
        EXPECT_EQ(dispatch(effect, opcode, 0, 16), 0) << opcode;
    EXPECT_TRUE(effect.log.empty());
    EXPECT_EQ(effect.canDoText, nullptr);

    // Entries called with a null record, or a record without its object.
    AEffect* record = effect.getAeffect();
    EXPECT_EQ(record->dispatcher(nullptr, 58, 0, 0, nullptr, 0.0f), 0);
    EXPECT_EQ(record->getParameter(nullptr, 0), 0.0f);
    record->setParameter(nullptr, 0, 1.0f);
    record->process(nullptr, nullptr, nullptr, 64);
    record->processReplacing(nullptr, nullptr, nullptr, 64);
    AEffect orphan = *record;
    orphan.object = nullptr;
    EXPECT_EQ(orphan.dispatcher(&orphan, 58, 0, 0, nullptr, 0.0f), 0);

    // Parameter indices outside the count never reach the effect.
    record->setParameter(record, 4, 1.0f);
    record->setParameter(record, -1, 1.0f);
    EXPECT_EQ(record->getParameter(record, 4), 0.0f);

    // The default replacing process writes silence and skips missing channels.
    ZVST2AudioEffect plain(nullptr, 0, 0);
    AEffect* plainRecord = plain.getAeffect();
    float left[3] = {1, 1, 1};
    float* outputs[] = {left, nullptr};
    plainRecord->processReplacing(plainRecord, nullptr, outputs, 3);
    EXPECT_EQ(left[0] + left[1] + left[2], 0.0f);
    plainRecord->processReplacing(plainRecord, nullptr, nullptr, 3);
}

TEST(VST2AudioEffect, CopyTextCutsWholeCharacters)
{
    char buffer[16];
    ZVST2AudioEffect::copyText(buffer, "exact", 5);
    EXPECT_STREQ(buffer, "exact");
    ZVST2AudioEffect::copyText(buffer, std::string_view("in\0side", 7), 10);  // stops at a terminator
    EXPECT_STREQ(buffer, "in");
    ZVST2AudioEffect::copyText(buffer, "anything", 0);
    EXPECT_STREQ(buffer, "");
    // "€" is three bytes: a cut after one or two of them drops it whole.
    ZVST2AudioEffect::copyText(buffer, "ab\xE2\x82\xAC", 3);
    EXPECT_STREQ(buffer, "ab");
    ZVST2AudioEffect::copyText(buffer, "ab\xE2\x82\xAC", 4);
    EXPECT_STREQ(buffer, "ab");
    ZVST2AudioEffect::copyText(buffer, "ab\xE2\x82\xAC" "c", 5);
    EXPECT_STREQ(buffer, "ab\xE2\x82\xAC");
    ZVST2AudioEffect::copyText(nullptr, "ignored", 4);
}

} // namespace
} // namespace halvern
