// The built Halvern.so as a VST 2.4 host drives it; it stays loaded, so tests close their instances.

#include "core/audio_plugin.h"
#include "core/z_object.h"
#include "host/library_module.h"
#include "host/plugin_exports.h"
#include "host/vst2/vst2_abi.h"
#include "host/z_module.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using EntryFunction = AEffect* (*)(audioMasterCallback);
using InterfaceFunction = intptr_t (*)(halvern::ZPlugin*, int32_t, const halvern::ZPluginMessage*);
using InitializeFunction = halvern::ZModule* (*)(const halvern::ZLibrarySettings*);
using DllFunction = bool (*)();
using Channels = std::vector<std::vector<float>>;

std::atomic<int> ioChangedCalls{0};
std::atomic<int> automateCalls{0};

// A VST 2.4 host: version 2400, a running transport at 48 kHz; other requests answer 0.
VstIntPtr HostCallback(AEffect*, int opcode, int, VstIntPtr, void*, float)
{
    static VstTimeInfo time = [] {
        VstTimeInfo info{};
        info.sampleRate = 48000.0;
        info.tempo = 120.0;
        info.timeSigNumerator = info.timeSigDenominator = 4;
        info.flags = kVstTransportPlaying | kVstPpqPosValid | kVstTempoValid | kVstBarsValid | kVstTimeSigValid;
        return info;
    }();
    if (opcode == audioMasterIOChanged)
        ++ioChangedCalls;
    if (opcode == audioMasterAutomate)
        ++automateCalls;
    if (opcode == audioMasterVersion)
        return 2400;
    return opcode == audioMasterGetTime ? reinterpret_cast<VstIntPtr>(&time) : 0;
}

VstIntPtr SilentHostCallback(AEffect*, int, int, VstIntPtr, void*, float) { return 0; }

struct Library {
    void* handle = dlopen(HALVERN_PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL);
    std::string error = handle != nullptr ? "" : dlerror();
    template <typename Function>
    Function find(const char* name) const
    {
        return handle != nullptr ? reinterpret_cast<Function>(dlsym(handle, name)) : nullptr;
    }
    EntryFunction vstPluginMain = find<EntryFunction>("VSTPluginMain");
    EntryFunction main = find<EntryFunction>("main");
    InterfaceFunction effectInterface = find<InterfaceFunction>("HalvernAudioEffectPluginInterface");
    InitializeFunction initialize = find<InitializeFunction>("ZLibraryDLLInitialize");
    DllFunction initDll = find<DllFunction>("InitDll");
    DllFunction exitDll = find<DllFunction>("ExitDll");
};

const Library& Plugin()
{
    static const Library library;
    return library;
}

struct SpeakerLayout {
    alignas(VstSpeakerArrangement) unsigned char bytes[sizeof(VstSpeakerArrangement) + 8 * sizeof(VstSpeakerProperties)]{};
    SpeakerLayout(VstInt32 type, VstInt32 channels)
    {
        record()->type = type;
        record()->numChannels = channels;
    }
    VstSpeakerArrangement* record() { return reinterpret_cast<VstSpeakerArrangement*>(bytes); }
};

class Instance {
public:
    explicit Instance(EntryFunction entry = Plugin().vstPluginMain) : effect_(entry(HostCallback)) {}
    ~Instance() { close(); }
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    AEffect* effect() const { return effect_; }
    void close()
    {
        if (effect_ != nullptr)
            dispatch(effClose);
        effect_ = nullptr;
    }
    VstIntPtr dispatch(VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0, void* ptr = nullptr, float opt = 0.0f)
    {
        return effect_->dispatcher(effect_, opcode, index, value, ptr, opt);
    }
    // A missing terminator shows as a length of 256.
    std::string text(VstInt32 opcode, VstInt32 index)
    {
        char buffer[256];
        std::memset(buffer, 'x', sizeof buffer);
        buffer[0] = '\0';
        dispatch(opcode, index, 0, buffer);
        return std::string(buffer, strnlen(buffer, sizeof buffer));
    }
    VstIntPtr arrange(SpeakerLayout& input, SpeakerLayout& output)
    {
        return dispatch(effSetSpeakerArrangement, 0, reinterpret_cast<VstIntPtr>(input.record()), output.record());
    }
    void prepare(float rate, VstInt32 block)
    {
        dispatch(effSetSampleRate, 0, 0, nullptr, rate);
        dispatch(effSetBlockSize, 0, block);
        dispatch(effMainsChanged, 0, 1);
    }
    std::vector<uint8_t> chunk()
    {
        void* data = nullptr;
        const VstIntPtr size = dispatch(effGetChunk, 0, 0, &data);
        const auto* bytes = static_cast<const uint8_t*>(data);
        return bytes != nullptr && size > 0 ? std::vector<uint8_t>(bytes, bytes + size) : std::vector<uint8_t>{};
    }
    VstIntPtr setChunk(std::vector<uint8_t> bytes)
    {
        return dispatch(effSetChunk, 0, static_cast<VstIntPtr>(bytes.size()), bytes.data());
    }
    std::vector<float> parameters()
    {
        std::vector<float> values;
        for (VstInt32 i = 0; i < effect_->numParams; ++i)
            values.push_back(effect_->getParameter(effect_, i));
        return values;
    }
    VstInt32 parameterIndex(const std::string& name)
    {
        for (VstInt32 i = 0; i < effect_->numParams; ++i)
            if (text(effGetParamName, i) == name)
                return i;
        return -1;
    }
    void setParameter(const std::string& name, float value)
    {
        const VstInt32 index = parameterIndex(name);
        ASSERT_GE(index, 0) << name;
        effect_->setParameter(effect_, index, value);
    }
    void process(Channels& in, Channels& out)
    {
        std::vector<float*> inputs, outputs;
        for (auto& channel : in)
            inputs.push_back(channel.data());
        for (auto& channel : out)
            outputs.push_back(channel.data());
        effect_->processReplacing(effect_, inputs.data(), outputs.data(), static_cast<VstInt32>(out[0].size()));
    }

private:
    AEffect* effect_;
};

bool AllFinite(const Channels& channels)
{
    return std::all_of(channels.begin(), channels.end(), [](const std::vector<float>& channel) {
        return std::all_of(channel.begin(), channel.end(), [](float sample) { return std::isfinite(sample); });
    });
}

// An impulse on every channel followed by silence, through blocks of blockSize.
Channels RenderImpulse(Instance& instance, size_t channels, int blocks, size_t blockSize)
{
    Channels rendered(channels);
    for (int block = 0; block < blocks; ++block) {
        Channels in(channels, std::vector<float>(blockSize)), out(channels, std::vector<float>(blockSize));
        for (auto& channel : in)
            channel[0] = block == 0 ? 1.0f : 0.0f;
        instance.process(in, out);
        for (size_t c = 0; c < channels; ++c)
            rendered[c].insert(rendered[c].end(), out[c].begin(), out[c].end());
    }
    return rendered;
}

std::string ModuleName(const char* givenName)
{
    const halvern::ZLibrarySettings settings{nullptr, 0, givenName};
    const halvern::ZModule* module = Plugin().initialize(&settings);
    return module != nullptr ? module->name() : "<no module>";
}

class VST2Plugin : public ::testing::Test {
protected:
    void SetUp() override
    {
        const Library& library = Plugin();
        ASSERT_NE(library.handle, nullptr) << library.error;
        ASSERT_TRUE(library.vstPluginMain && library.main && library.effectInterface && library.initialize &&
                    library.initDll && library.exitDll)
            << "an export is missing";
    }
};

TEST_F(VST2Plugin, ExportsAgreeRefuseANonHostAndAnswerTheirCalls)
{
    EXPECT_EQ(reinterpret_cast<void*>(Plugin().main), reinterpret_cast<void*>(Plugin().vstPluginMain));
    // A refused caller builds no module, so the next ZLibraryDLLInitialize names a fresh one.
    EXPECT_EQ(Plugin().vstPluginMain(SilentHostCallback), nullptr);
    EXPECT_EQ(Plugin().main(SilentHostCallback), nullptr);
    EXPECT_EQ(Plugin().vstPluginMain(nullptr), nullptr);
    EXPECT_EQ(ModuleName("refused-host probe"), "refused-host probe");
    Instance cleanup; // takes that module over; closing it removes it again

    const intptr_t created = Plugin().effectInterface(nullptr, 7, nullptr);
    ASSERT_NE(created, 0);
    auto* effect = reinterpret_cast<halvern::ZPlugin*>(created);
    const uint64_t slots[2] = {48000, 512};
    const halvern::ZPluginMessage message{slots, 2};
    EXPECT_EQ(Plugin().effectInterface(effect, 7, &message), created);
    EXPECT_EQ(Plugin().effectInterface(effect, 7, nullptr), created);
    delete effect;
    EXPECT_TRUE(Plugin().initDll());
    EXPECT_TRUE(Plugin().exitDll());
}

TEST_F(VST2Plugin, ModuleLivesAsLongAsAnInstance)
{
    Instance first, second;
    ASSERT_TRUE(first.effect() != nullptr && second.effect() != nullptr);
    const halvern::ZLibrarySettings alpha{nullptr, 0, "alpha"};
    halvern::ZModule* module = Plugin().initialize(&alpha);
    ASSERT_NE(module, nullptr);
    const std::string builtName = module->name();
    EXPECT_NE(builtName, "alpha");
    first.close();
    EXPECT_EQ(ModuleName("gamma"), builtName) << "the module went with the first of two instances";
    second.close();
    EXPECT_EQ(ModuleName("delta"), "delta") << "the module outlived its last instance";
    Instance third;
    EXPECT_EQ(ModuleName("epsilon"), "delta");
    third.close();
    Instance fourth;
    EXPECT_EQ(ModuleName("zeta"), "");
}

TEST_F(VST2Plugin, AnnouncesIdentityChannelsParametersCapabilitiesAndPins)
{
    const int ioChangedBefore = ioChangedCalls;
    Instance instance;
    const AEffect* effect = instance.effect();
    ASSERT_NE(effect, nullptr);
    EXPECT_GT(ioChangedCalls, ioChangedBefore) << "the latency report at construction reaches the host";
    EXPECT_EQ(effect->magic, kEffectMagic);
    EXPECT_EQ(effect->uniqueID, 0x5A416572);  // 'ZAer'
    EXPECT_EQ(effect->flags & 0x131, 0x31);    // editor, canReplacing, programChunks; no synth
    EXPECT_EQ(effect->numInputs, 2);
    EXPECT_EQ(effect->numOutputs, 2);
    EXPECT_EQ(effect->numPrograms, 0);
    EXPECT_EQ(instance.text(effGetEffectName, 0), "Halvern");
    EXPECT_EQ(instance.text(effGetVendorString, 0), "Quessane");
    std::unique_ptr<halvern::ZAudioPlugin> core(halvern::CreatePluginCore());
    ASSERT_NE(core, nullptr);
    ASSERT_EQ(effect->numParams, core->GetParameterCount());
    EXPECT_EQ(effect->numParams, 52);
    for (VstInt32 i = 0; i < effect->numParams; ++i) {
        SCOPED_TRACE("parameter " + std::to_string(i));
        EXPECT_FALSE(core->GetParameterID(i).empty());
        EXPECT_EQ(instance.text(effGetParamName, i), core->GetParameterID(i).substr(0, 24));
    }
    EXPECT_EQ(instance.text(effGetParamName, 48), "AH");
    EXPECT_EQ(instance.text(effGetParamDisplay, 48), "A");
    EXPECT_EQ(instance.text(effGetParamName, effect->numParams), "");
    EXPECT_EQ(instance.text(effGetParamName, -1), "");

    const std::pair<const char*, VstIntPtr> answers[] = {
        {"receiveVstMidiEvent", 1}, {"receiveVstEvents", 1}, {"sendVstMidiEvent", -1}, {"sendVstEvents", -1},
        {"plugAsSend", 1}, {"plugAsChannelInsert", 1}, {"receiveVstTimeInfo", 1}, {"canMono", 1},
        {"bypass", -1}, {"offline", 0}, {"", 0}, {"plugAsSendX", 0}, {"plugAs", 0}, {"Bypass", 0}};
    for (const auto& [text, answer] : answers)
        EXPECT_EQ(instance.dispatch(effCanDo, 0, 0, const_cast<char*>(text)), answer) << '"' << text << '"';

    for (VstInt32 opcode : {effGetInputProperties, effGetOutputProperties}) {
        SCOPED_TRACE(opcode == effGetInputProperties ? "inputs" : "outputs");
        VstPinProperties pin{};
        EXPECT_EQ(instance.dispatch(opcode, 2, 0, &pin), 0);
        EXPECT_EQ(instance.dispatch(opcode, -1, 0, &pin), 0);
        for (VstInt32 index = 0; index < 2; ++index) {
            pin = VstPinProperties{};
            ASSERT_EQ(instance.dispatch(opcode, index, 0, &pin), 1);
            EXPECT_EQ(pin.flags, kVstPinIsActive | kVstPinIsStereo);
            EXPECT_EQ(pin.arrangementType, kSpeakerArrStereo);
            EXPECT_GT(strnlen(pin.label, sizeof pin.label), 0u);
        }
    }
}

TEST_F(VST2Plugin, ImpulseLeavesAReverbTailAndRatesOutsideTheAudioRangeAreNotTaken)
{
    Instance instance, twin;
    ASSERT_TRUE(instance.effect() != nullptr && twin.effect() != nullptr);
    for (Instance* each : {&instance, &twin}) {
        each->prepare(48000.0f, 512);
        each->setParameter("ReverbTime", 1.0f);
        RenderImpulse(*each, 2, 1, 512); // the change is taken with the next block
    }
    const VstIntPtr tail = instance.dispatch(effGetTailSize);
    EXPECT_GT(tail, 48000) << "a reverb time of seconds gives a tail of seconds";
    // 1e8 once sized 3 GB of delay lines, 1e9 did not return.
    for (float rate : {44.0f, 1e8f, 1e9f, 768001.0f})
        instance.dispatch(effSetSampleRate, 0, 0, nullptr, rate);
    EXPECT_EQ(instance.dispatch(effGetTailSize), tail);
    EXPECT_EQ(instance.effect()->initialDelay, twin.effect()->initialDelay);
    const Channels rendered = RenderImpulse(instance, 2, 60, 512); // 0.64 s
    ASSERT_TRUE(AllFinite(rendered));
    EXPECT_TRUE(rendered == RenderImpulse(twin, 2, 60, 512)) << "the sound changed after the refused rates";
    instance.dispatch(effSetSampleRate, 0, 0, nullptr, 96000.0f);
    EXPECT_GT(instance.dispatch(effGetTailSize), tail);
    EXPECT_TRUE(AllFinite(RenderImpulse(instance, 2, 8, 512)));
}

TEST_F(VST2Plugin, ModulatorMovesReachTheHostAsAutomation)
{
    Instance instance;
    instance.prepare(48000.0f, 512);
    RenderImpulse(instance, 2, 4, 512);
    const int before = automateCalls;
    instance.setParameter("LFO1Enabled", 1.0f);
    instance.setParameter("LFO1Amount", 1.0f);
    for (int round = 0; round < 50 && automateCalls == before; ++round) {
        RenderImpulse(instance, 2, 4, 512);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_GT(automateCalls, before) << "the LFO's target never reached the host";
}

TEST_F(VST2Plugin, SpeakerArrangementsWithinTheChannelCounts)
{
    Instance instance;
    ASSERT_NE(instance.effect(), nullptr);
    SpeakerLayout stereo(kSpeakerArrStereo, 2), mono(kSpeakerArrMono, 1), surround(kSpeakerArr60Music, 6);
    EXPECT_EQ(instance.arrange(stereo, surround), 0);
    EXPECT_EQ(instance.arrange(surround, stereo), 0);
    EXPECT_EQ(instance.arrange(stereo, stereo), 1);
    EXPECT_EQ(instance.arrange(mono, mono), 1);
    Instance reference, unarranged;
    for (Instance* each : {&instance, &reference, &unarranged})
        each->prepare(48000.0f, 256);
    const Channels stereoPath = RenderImpulse(reference, 2, 20, 256);
    const Channels monoPath = RenderImpulse(instance, 1, 20, 256);
    EXPECT_TRUE(monoPath[0] == stereoPath[0]) << "mono is the stereo path's left side";
    ASSERT_EQ(unarranged.dispatch(effSetSpeakerArrangement, 0, 0, nullptr), 1);
    EXPECT_TRUE(RenderImpulse(unarranged, 2, 20, 256) == stereoPath);
}

TEST_F(VST2Plugin, ChunksCarryTheStateAndDamagedOnesAreRefusedChangingNothing)
{
    Instance source, target;
    ASSERT_TRUE(source.effect() != nullptr && target.effect() != nullptr);
    source.setParameter("ReverbDepth", 0.8f);
    const std::vector<uint8_t> good = source.chunk();
    ASSERT_GT(good.size(), 16u);
    const std::vector<uint8_t> before = target.chunk();
    const std::vector<float> parametersBefore = target.parameters();
    EXPECT_EQ(target.setChunk({good.begin(), good.end() - 1}), 0);
    EXPECT_EQ(target.dispatch(effSetChunk, 0, 0, nullptr), 0);
    EXPECT_EQ(target.dispatch(effSetChunk, 0, static_cast<VstIntPtr>(good.size()), nullptr), 0);
    EXPECT_EQ(target.chunk(), before);
    EXPECT_EQ(target.parameters(), parametersBefore);
    EXPECT_EQ(target.setChunk(good), 1);
    EXPECT_EQ(target.parameters(), source.parameters());
    EXPECT_EQ(target.chunk(), good);
}

// Two threads in processReplacing at once on the mono path, whose bus mapping is per call:
// each refills its outputs with a marker after every call and checks before the next that
// no other call wrote there.
TEST_F(VST2Plugin, ConcurrentProcessReplacingIsSafe)
{
    static constexpr size_t kBlock = 256;
    static constexpr float kMarker = 12345.0f;
    Instance instance;
    ASSERT_NE(instance.effect(), nullptr);
    SpeakerLayout layout(kSpeakerArrMono, 1);
    ASSERT_EQ(instance.arrange(layout, layout), 1);
    instance.prepare(48000.0f, kBlock);
    struct Caller {
        Channels in = Channels(1, std::vector<float>(kBlock));
        Channels out = Channels(1, std::vector<float>(kBlock, kMarker));
        int nonFinite = 0, strayWrites = 0;
    } callers[2];
    std::atomic<bool> go{false};
    auto run = [&](Caller& caller, unsigned seed) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<float> noise(-0.5f, 0.5f);
        while (!go)
            std::this_thread::yield();
        for (int block = 0; block < 2000; ++block) {
            std::generate(caller.in[0].begin(), caller.in[0].end(), [&] { return noise(random); });
            if (std::any_of(caller.out[0].begin(), caller.out[0].end(), [](float sample) { return sample != kMarker; }))
                ++caller.strayWrites;
            instance.process(caller.in, caller.out);
            if (!AllFinite(caller.out))
                ++caller.nonFinite;
            std::fill(caller.out[0].begin(), caller.out[0].end(), kMarker);
            // A busy wait keeps both threads running, so the calls keep colliding.
            const auto until = std::chrono::steady_clock::now() + std::chrono::microseconds(20);
            while (std::chrono::steady_clock::now() < until) {
            }
        }
    };
    std::thread first(run, std::ref(callers[0]), 1u), second(run, std::ref(callers[1]), 2u);
    go = true;
    first.join();
    second.join();
    for (const Caller& caller : callers) {
        EXPECT_EQ(caller.nonFinite, 0);
        EXPECT_EQ(caller.strayWrites, 0) << "blocks whose outputs were written outside their caller's call";
    }
    EXPECT_TRUE(AllFinite(RenderImpulse(instance, 1, 4, kBlock)));
}

} // namespace
