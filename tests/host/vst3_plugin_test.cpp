// The built Halvern.vst3 as a VST 3 host drives it; its VST 2.4 entry is the reference.

#include "host/plugin_exports.h"
#include "host/vst2/vst2_abi.h"
#include "host/z_module.h"
#include "vst3_test_host.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <pluginterfaces/base/funknown.h>
#include <pluginterfaces/vst/ivstmidicontrollers.h>
#include <pluginterfaces/vst/ivstunits.h>
#include <pluginterfaces/vst/vsttypes.h>
#include <atomic>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <memory>
#include <random>
#include <thread>

namespace {

using namespace Steinberg;
using namespace Steinberg::Vst;
using vst3host::Channels;
using vst3host::Instance;
using vst3host::ParameterChanges;

constexpr ParamID kDepth = 1;   // "ReverbDepth"
constexpr ParamID kTime = 9;    // "ReverbTime"
constexpr ParamID kMode = 11;   // "ReverbMode", an enumeration
constexpr ParamID kBypass = 35;
constexpr ParamID kProgram = 0x10000;

vst3host::Module& Module() { return vst3host::Module::Load(HALVERN_VST3_MODULE_PATH); }

IPluginFactory* Factory()
{
    IPluginFactory* factory = Module().getFactory();
    factory->release(); // the tests hold no reference of their own
    return factory;
}

Channels Noise(size_t channels, size_t frames, unsigned seed)
{
    std::mt19937 generator(seed);
    std::uniform_real_distribution<float> uniform(-0.5f, 0.5f);
    Channels noise(channels, std::vector<float>(frames));
    for (auto& channel : noise)
        for (float& x : channel)
            x = uniform(generator);
    return noise;
}

Channels Silence(size_t channels, size_t frames) { return Channels(channels, std::vector<float>(frames, 0.0f)); }

Channels RunBlocks(Instance& instance, const Channels& input, size_t block, size_t outputChannels = 2)
{
    Channels output(outputChannels);
    for (size_t at = 0; at < input[0].size(); at += block) {
        const size_t n = std::min(block, input[0].size() - at);
        Channels in(input.size()), out = Silence(outputChannels, n);
        for (size_t c = 0; c < input.size(); ++c)
            in[c].assign(input[c].begin() + static_cast<long>(at), input[c].begin() + static_cast<long>(at + n));
        EXPECT_EQ(instance.process(in, out), kResultOk);
        for (size_t c = 0; c < outputChannels; ++c)
            output[c].insert(output[c].end(), out[c].begin(), out[c].end());
    }
    return output;
}

class Vst2Reference {
public:
    Vst2Reference()
    {
        auto entry = reinterpret_cast<AEffect* (*)(audioMasterCallback)>(dlsym(Module().handle, "VSTPluginMain"));
        effect_ = entry([](AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) -> VstIntPtr {
            return opcode == audioMasterVersion ? 2400 : 0;
        });
    }
    ~Vst2Reference() { dispatch(effClose); }
    VstIntPtr dispatch(VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0, void* ptr = nullptr, float opt = 0.0f)
    {
        return effect_->dispatcher(effect_, opcode, index, value, ptr, opt);
    }
    void start(float rate, VstInt32 block)
    {
        dispatch(effSetSampleRate, 0, 0, nullptr, rate);
        dispatch(effSetBlockSize, 0, block);
        dispatch(effMainsChanged, 0, 1);
    }
    void set(ParamID id, float value) { effect_->setParameter(effect_, static_cast<VstInt32>(id), value); }
    float parameter(ParamID id) { return effect_->getParameter(effect_, static_cast<VstInt32>(id)); }
    std::vector<uint8_t> chunk()
    {
        void* data = nullptr;
        const VstIntPtr size = dispatch(effGetChunk, 0, 0, &data);
        return std::vector<uint8_t>(static_cast<uint8_t*>(data), static_cast<uint8_t*>(data) + size);
    }
    Channels run(const Channels& input, size_t block)
    {
        Channels output = Silence(2, input[0].size());
        for (size_t at = 0; at < input[0].size(); at += block) {
            const auto n = static_cast<VstInt32>(std::min(block, input[0].size() - at));
            float* in[2] = {const_cast<float*>(input[0].data()) + at, const_cast<float*>(input[1].data()) + at};
            float* out[2] = {output[0].data() + at, output[1].data() + at};
            effect_->processReplacing(effect_, in, out, n);
        }
        return output;
    }

private:
    AEffect* effect_;
};

// Silent blocks until the plug-in reports a change of id, for at most a second.
ParameterChanges ReportsOf(Instance& instance, ParamID id)
{
    ParameterChanges reported;
    for (int block = 0; block < 200 && reported.last(id) < 0.0; ++block) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        Channels in = Silence(2, 256), out = Silence(2, 256);
        instance.process(in, out, nullptr, &reported);
    }
    return reported;
}

bool Clean(const Channels& channels)
{
    for (const auto& channel : channels)
        for (float x : channel)
            if (!std::isfinite(x) || (x != 0.0f && std::fabs(x) < 1.17549435e-38f))
                return false;
    return true;
}

TEST(VST3Factory, AnnouncesTheMakerAndOneClassAndIsOneObject)
{
    IPluginFactory* first = Module().getFactory();
    IPluginFactory* second = Module().getFactory();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first, second);
    const uint32 count = first->addRef();
    EXPECT_EQ(first->release(), count - 1);
    EXPECT_GE(count, 3u);
    first->release();
    second->release();

    PFactoryInfo info;
    ASSERT_EQ(first->getFactoryInfo(&info), kResultOk);
    EXPECT_STREQ(info.vendor, "Quessane");
    EXPECT_EQ(info.flags, PFactoryInfo::kUnicode);
    EXPECT_EQ(first->countClasses(), 1);

    FUnknownPtr<IPluginFactory2> factory2(first);
    ASSERT_TRUE(factory2);
    PClassInfo2 record;
    ASSERT_EQ(factory2->getClassInfo2(0, &record), kResultOk);
    EXPECT_EQ(std::memcmp(record.cid, "QuessaneZAerZAer", 16), 0);
    EXPECT_EQ(record.cardinality, PClassInfo::kManyInstances);
    EXPECT_STREQ(record.category, "Audio Module Class");
    EXPECT_STREQ(record.name, "Halvern");
    EXPECT_STREQ(record.subCategories, "Fx|Reverb");
    EXPECT_EQ(first->getClassInfo(1, nullptr), kInvalidArgument);
    EXPECT_TRUE(FUnknownPtr<IPluginFactory3>(first));
    void* object = nullptr;
    EXPECT_NE(first->createInstance("NotOurClassIDxxx", IComponent::iid, &object), kResultOk);
    EXPECT_EQ(object, nullptr);
}

// The module instance's name after ZLibraryDLLInitialize offered it givenName.
std::string ModuleName(const char* givenName)
{
    using Initialize = halvern::ZModule* (*)(const halvern::ZLibrarySettings*);
    const auto initialize = reinterpret_cast<Initialize>(dlsym(Module().handle, "ZLibraryDLLInitialize"));
    const halvern::ZLibrarySettings settings{nullptr, 0, givenName};
    const halvern::ZModule* module = initialize(&settings);
    return module != nullptr ? module->name() : "<no module>";
}

TEST(VST3Plugin, ModuleLivesAsLongAsAnInstance)
{
    auto first = std::make_unique<Instance>(Factory());
    auto second = std::make_unique<Instance>(Factory());
    const std::string builtName = ModuleName("alpha"); // an existing module keeps its name
    EXPECT_NE(builtName, "alpha");
    first.reset();
    EXPECT_EQ(ModuleName("beta"), builtName) << "the module went with the first of two instances";
    second.reset();
    EXPECT_EQ(ModuleName("gamma"), "gamma") << "the module outlived its last instance";
    { Instance takeover(Factory()); } // removes that module again
}

TEST(VST3Plugin, BusesMonoProcessingParametersUnitsAndMIDIMapping)
{
    Instance instance(Factory());
    IComponent* component = instance.component();
    EXPECT_EQ(component->getBusCount(kAudio, kInput), 1);
    EXPECT_EQ(component->getBusCount(kAudio, kOutput), 1);
    EXPECT_EQ(component->getBusCount(kEvent, kInput), 1);
    BusInfo bus;
    ASSERT_EQ(component->getBusInfo(kAudio, kOutput, 0, bus), kResultOk);
    EXPECT_EQ(bus.channelCount, 2);
    EXPECT_EQ(bus.busType, kMain);
    EXPECT_NE(component->getBusInfo(kAudio, kOutput, 1, bus), kResultOk);
    SpeakerArrangement mono = SpeakerArr::kMono, stereo = SpeakerArr::kStereo, surround = SpeakerArr::k51;
    EXPECT_EQ(instance.processor()->setBusArrangements(&mono, 1, &mono, 1), kResultTrue);
    EXPECT_EQ(instance.processor()->setBusArrangements(&surround, 1, &stereo, 1), kResultFalse);
    EXPECT_EQ(instance.processor()->setBusArrangements(&stereo, 1, nullptr, 0), kResultFalse);
    SpeakerArrangement arrangement = 0;
    ASSERT_EQ(instance.processor()->getBusArrangement(kInput, 0, arrangement), kResultTrue);
    EXPECT_EQ(arrangement, SpeakerArr::kMono);
    EXPECT_EQ(instance.processor()->canProcessSampleSize(kSample32), kResultTrue);
    EXPECT_EQ(instance.processor()->canProcessSampleSize(kSample64), kResultFalse);
    const Channels monoInput = Noise(1, 3000, 3);
    Instance stereoInstance(Factory());
    ASSERT_EQ(instance.start(44100.0, 256, 1, 1), kResultOk);
    ASSERT_EQ(stereoInstance.start(44100.0, 256), kResultOk);
    EXPECT_EQ(RunBlocks(instance, monoInput, 256, 1)[0],
              RunBlocks(stereoInstance, Channels{monoInput[0], monoInput[0]}, 256)[0])
        << "a mono bus carries the left channel of the stereo path";
    IEditController* controller = instance.controller();
    ASSERT_EQ(controller->getParameterCount(), 53); // the core's 52 and the program change
    ParameterInfo info;
    ASSERT_EQ(controller->getParameterInfo(0, info), kResultOk); // "Globals": a panel without a value
    EXPECT_NE(info.flags & ParameterInfo::kIsHidden, 0);
    EXPECT_NE(info.flags & ParameterInfo::kIsReadOnly, 0);
    ASSERT_EQ(controller->getParameterInfo(static_cast<int32>(kMode), info), kResultOk);
    EXPECT_EQ(info.stepCount, 3); // four modes
    EXPECT_NE(info.flags & ParameterInfo::kIsList, 0);
    EXPECT_NE(info.flags & ParameterInfo::kCanAutomate, 0);
    ASSERT_EQ(controller->getParameterInfo(static_cast<int32>(kBypass), info), kResultOk);
    EXPECT_NE(info.flags & ParameterInfo::kIsBypass, 0);
    EXPECT_EQ(info.stepCount, 1);
    ASSERT_EQ(controller->getParameterInfo(52, info), kResultOk);
    EXPECT_EQ(info.id, kProgram);
    EXPECT_NE(info.flags & ParameterInfo::kIsProgramChange, 0);
    EXPECT_EQ(controller->getParameterInfo(53, info), kInvalidArgument);
    String128 text;
    ParamValue value = -1.0;
    char16_t typed[] = u"2.5 s";
    ASSERT_EQ(controller->getParamValueByString(kTime, reinterpret_cast<TChar*>(typed), value), kResultOk);
    EXPECT_EQ(controller->getParamStringByValue(kTime, value, text), kResultOk);
    EXPECT_EQ(std::u16string(reinterpret_cast<char16_t*>(text)), u"2.50 s");
    EXPECT_DOUBLE_EQ(controller->normalizedParamToPlain(kMode, 2.0 / 3.0), 2.0);
    EXPECT_DOUBLE_EQ(controller->plainParamToNormalized(kMode, 3.0), 1.0);
    FUnknownPtr<IUnitInfo> units(controller);
    ASSERT_TRUE(units);
    for (int32 i = 0; i < controller->getParameterCount(); ++i) {
        ASSERT_EQ(controller->getParameterInfo(i, info), kResultOk);
        EXPECT_LT(info.unitId, units->getUnitCount()) << i;
    }
    ASSERT_EQ(units->getProgramListCount(), 1);
    ProgramListInfo programs;
    ASSERT_EQ(units->getProgramListInfo(0, programs), kResultOk);
    EXPECT_GE(programs.programCount, 16);
    UnitInfo root;
    ASSERT_EQ(units->getUnitInfo(0, root), kResultOk);
    EXPECT_EQ(root.programListId, programs.id);
    String128 programName;
    ASSERT_EQ(units->getProgramName(programs.id, 1, programName), kResultOk);
    ASSERT_EQ(controller->getParamStringByValue(kProgram, 1.0 / (programs.programCount - 1), text), kResultOk);
    EXPECT_EQ(std::u16string(reinterpret_cast<char16_t*>(text)), std::u16string(reinterpret_cast<char16_t*>(programName)));
    FUnknownPtr<IMidiMapping> mapping(controller);
    ParamID id = 0;
    EXPECT_TRUE(mapping && mapping->getMidiControllerAssignment(0, 0, 7, id) == kResultFalse) << "nothing assigned";
}

TEST(VST3Plugin, ParameterTextsAgreeInBothStandardsAndShowTheUnitOnce)
{
    const std::vector<int> panels = {0, 5, 12, 24};
    Instance instance(Factory());
    Vst2Reference reference;
    auto vst2Text = [&](VstInt32 opcode, VstInt32 index) {
        char text[256] = {};
        reference.dispatch(opcode, index, 0, text);
        return std::string(text);
    };
    auto utf8 = [](const String128 text) {
        std::string narrow;
        for (const TChar* c = text; *c != 0; ++c)
            narrow += static_cast<char>(*c); // the names and units are ASCII
        return narrow;
    };
    for (int index = 0; index < 52; ++index) {
        SCOPED_TRACE("parameter " + std::to_string(index));
        VstParameterProperties properties{};
        ASSERT_EQ(reference.dispatch(effGetParameterProperties, index, 0, &properties), 1);
        const std::string display = vst2Text(effGetParamDisplay, index);
        const std::string label = vst2Text(effGetParamLabel, index);
        EXPECT_EQ(display.empty(), std::count(panels.begin(), panels.end(), index) == 1);
        EXPECT_TRUE(label.empty() || display.find(label) == std::string::npos) << display << " " << label;
        ParameterInfo info;
        ASSERT_EQ(instance.controller()->getParameterInfo(index, info), kResultOk);
        EXPECT_EQ(utf8(info.title), properties.label);
        EXPECT_EQ(utf8(info.title), index == 1 ? "Dry/wet" : index == 51 ? "AGC" : properties.label);
        String128 text;
        ASSERT_EQ(instance.controller()->getParamStringByValue(info.id, info.defaultNormalizedValue, text), kResultOk);
        EXPECT_EQ(utf8(text), display);
        EXPECT_TRUE(utf8(info.units).empty() || display.find(utf8(info.units)) == std::string::npos);
    }
    EXPECT_EQ(vst2Text(effGetParamDisplay, 25), "20.0 Hz");
    EXPECT_EQ(vst2Text(effGetParamDisplay, 26), "20.0 kHz");

    constexpr ParamID kGate = 19, kAGC = 51;
    for (ParamID id : {kGate, kBypass, kAGC})
        for (auto [typed, expected] : {std::pair{" ON ", 1.0}, {"off", 0.0}}) {
            SCOPED_TRACE(std::to_string(id) + " " + typed);
            std::string text = typed;
            ASSERT_EQ(reference.dispatch(effString2Parameter, static_cast<VstInt32>(id), 0, text.data()), 1);
            EXPECT_EQ(reference.parameter(id), expected);
            std::u16string wide(text.begin(), text.end());
            ParamValue value = -1.0;
            ASSERT_EQ(instance.controller()->getParamValueByString(id, reinterpret_cast<TChar*>(wide.data()), value), kResultOk);
            EXPECT_EQ(value, expected);
        }
    std::string unknown = "Maybe";
    EXPECT_EQ(reference.dispatch(effString2Parameter, kGate, 0, unknown.data()), 0);
}

TEST(VST3Plugin, ProcessesLikeTheVST2PathAndStoresTheSameBlock)
{
    const Channels input = Noise(2, 6000, 1);
    Instance instance(Factory());
    Vst2Reference reference;
    for (auto [id, value] : {std::pair{kDepth, 0.75}, std::pair{kTime, 0.625}, std::pair{kMode, 1.0}}) {
        ASSERT_EQ(instance.controller()->setParamNormalized(id, value), kResultOk);
        reference.set(id, static_cast<float>(value));
    }
    ASSERT_EQ(instance.start(48000.0, 512), kResultOk);
    reference.start(48000.0f, 512);
    EXPECT_EQ(instance.processor()->getLatencySamples(), 0u);
    EXPECT_EQ(instance.processor()->getTailSamples(), static_cast<uint32>(reference.dispatch(effGetTailSize)));

    EXPECT_EQ(RunBlocks(instance, input, 512), reference.run(input, 512));
    EXPECT_EQ(instance.state(), reference.chunk());
    const std::vector<uint8_t> block = instance.state();
    Instance copy(Factory());
    ASSERT_EQ(copy.setState(block), kResultOk);
    EXPECT_EQ(copy.parameters(), instance.parameters());
    EXPECT_EQ(copy.state(), block);

    std::vector<uint8_t> damaged = block;
    damaged[damaged.size() / 2] ^= 0x5A;
    ASSERT_EQ(copy.controller()->setParamNormalized(kDepth, 0.25), kResultOk);
    const std::vector<uint8_t> before = copy.state();
    EXPECT_NE(copy.setState(damaged), kResultOk);
    EXPECT_EQ(copy.state(), before);
}

TEST(VST3Plugin, AppliesAParameterChangeAtItsSampleAndFlushesWithoutAudio)
{
    const Channels input = Noise(2, 512, 2);
    Instance changed(Factory()), unchanged(Factory());
    ASSERT_EQ(changed.start(48000.0, 512), kResultOk);
    ASSERT_EQ(unchanged.start(48000.0, 512), kResultOk);
    ParameterChanges changes;
    changes.add(kDepth, 100, 1.0);
    Channels in = input, out = Silence(2, 512), reference = Silence(2, 512);
    ASSERT_EQ(changed.process(in, out, &changes), kResultOk);
    in = input;
    ASSERT_EQ(unchanged.process(in, reference), kResultOk);
    size_t first = 0;
    while (first < 512 && out[0][first] == reference[0][first])
        ++first;
    EXPECT_EQ(first, 100u);
    EXPECT_DOUBLE_EQ(changed.controller()->getParamNormalized(kDepth), 1.0);
    ParameterChanges flush;
    flush.add(kBypass, 0, 1.0);
    flush.add(kMode, 0, 1.0);
    EXPECT_EQ(changed.flush(flush), kResultOk);
    EXPECT_DOUBLE_EQ(changed.controller()->getParamNormalized(kBypass), 1.0);
    EXPECT_DOUBLE_EQ(changed.controller()->getParamNormalized(kMode), 1.0);
    Instance restored(Factory());
    ASSERT_EQ(restored.setState(changed.state()), kResultOk);
    EXPECT_DOUBLE_EQ(restored.controller()->getParamNormalized(kBypass), 1.0);
}

// LFO 1's first target is Dry/wet.
TEST(VST3Plugin, StatesAndSlotsLoadedWhileAnLFORunsKeepTheirValues)
{
    constexpr ParamID kLFO1 = 36, kSlot = 48;
    Instance instance(Factory());
    ASSERT_EQ(instance.start(48000.0, 256), kResultOk);
    auto set = [&](std::initializer_list<std::pair<ParamID, double>> values) {
        ParameterChanges changes;
        for (auto [id, value] : values)
            changes.add(id, 0, value);
        ASSERT_EQ(instance.flush(changes), kResultOk);
    };
    auto runWithLFO = [&](double depth) {
        set({{kDepth, depth}, {kLFO1, 1.0}});
        RunBlocks(instance, Silence(2, 20 * 256), 256);
    };
    auto switchTo = [&](int slot) {
        ParameterChanges change;
        change.add(kSlot, 0, slot / 7.0);
        Channels in = Silence(2, 256), out = Silence(2, 256);
        ASSERT_EQ(instance.process(in, out, &change), kResultOk);
        ReportsOf(instance, kSlot);
        RunBlocks(instance, Silence(2, 256), 256);
    };
    set({{kDepth, 0.8}});
    const std::vector<uint8_t> saved = instance.state();
    runWithLFO(0.2);
    ASSERT_EQ(instance.setState(saved), kResultOk);
    RunBlocks(instance, Silence(2, 256), 256);
    EXPECT_DOUBLE_EQ(instance.controller()->getParamNormalized(kDepth), 0.8);
    switchTo(1);
    runWithLFO(0.2);
    switchTo(0);
    EXPECT_DOUBLE_EQ(instance.controller()->getParamNormalized(kDepth), 0.8);
}

TEST(VST3Plugin, SlotSwitchesAndProgramChangesRunOffTheAudioThreadAndAreReportedBack)
{
    constexpr ParamID kSlot = 48; // eight steps
    Instance instance(Factory());
    ASSERT_EQ(instance.start(48000.0, 256), kResultOk);
    ParameterInfo info;
    ASSERT_EQ(instance.controller()->getParameterInfo(static_cast<int32>(kDepth), info), kResultOk);
    ParameterChanges inSlotA;
    inSlotA.add(kDepth, 0, 0.9);
    ASSERT_EQ(instance.flush(inSlotA), kResultOk);
    ParameterChanges toSlotB;
    toSlotB.add(kSlot, 0, 1.0 / 7.0);
    Channels in = Silence(2, 256), out = Silence(2, 256);
    ASSERT_EQ(instance.process(in, out, &toSlotB), kResultOk);
    EXPECT_DOUBLE_EQ(ReportsOf(instance, kDepth).last(kDepth), info.defaultNormalizedValue);
    EXPECT_DOUBLE_EQ(instance.controller()->getParamNormalized(kDepth), info.defaultNormalizedValue);

    const double last = 1.0; // the last factory preset
    String128 name;
    ASSERT_EQ(instance.controller()->getParamStringByValue(kProgram, last, name), kResultOk);
    const std::vector<uint8_t> before = instance.state();
    ParameterChanges change;
    change.add(kProgram, 0, last);
    ASSERT_EQ(instance.process(in, out, &change), kResultOk);
    ParameterChanges reported = ReportsOf(instance, kTime);
    EXPECT_DOUBLE_EQ(instance.controller()->getParamNormalized(kProgram), last);
    EXPECT_DOUBLE_EQ(reported.last(kTime), instance.controller()->getParamNormalized(kTime));
    EXPECT_NE(instance.state(), before);
}

TEST(VST3Plugin, InactiveMissingChannelsAndSilenceAfterTheTailGiveFlaggedOrCleanOutput)
{
    Instance instance(Factory());
    Channels in = Noise(2, 480, 9), out(2, std::vector<float>(480, 7.0f));
    uint64 flags = 0;
    ASSERT_EQ(instance.process(in, out, nullptr, nullptr, 0, &flags), kResultOk); // never activated
    EXPECT_EQ(out, Silence(2, 480));
    EXPECT_EQ(flags, 3u);
    ASSERT_EQ(instance.start(48000.0, 256), kResultOk);
    float* inputs[2] = {in[0].data(), nullptr};
    float* outputs[2] = {out[0].data(), nullptr};
    AudioBusBuffers inputBus{}, outputBus{};
    inputBus.numChannels = outputBus.numChannels = 2;
    inputBus.channelBuffers32 = inputs;
    outputBus.channelBuffers32 = outputs;
    ProcessData data{};
    data.symbolicSampleSize = kSample32;
    data.numSamples = 480; // longer than announced, too
    data.numInputs = data.numOutputs = 1;
    data.inputs = &inputBus;
    data.outputs = &outputBus;
    EXPECT_EQ(instance.processor()->process(data), kResultOk);
    EXPECT_TRUE(Clean(Channels{out[0]}));

    in = Noise(2, 480, 5);
    ASSERT_EQ(instance.process(in, out, nullptr, nullptr, 0, &flags), kResultOk);
    EXPECT_EQ(flags, 0u);
    for (int block = 0; block < 400; ++block) { // four seconds of silence
        in = Silence(2, 480);
        instance.process(in, out, nullptr, nullptr, 3, &flags);
    }
    EXPECT_EQ(flags, 3u);
    EXPECT_EQ(out, Silence(2, 480));
}

TEST(VST3Plugin, SuspendResumeReinitialiseBlockSizesAndRatesKeepWorking)
{
    const Channels input = Noise(2, 2048, 4);
    Steinberg::Vst::HostApplication host; // outlives the instance that holds it
    Instance instance(Factory());
    for (size_t block : {512, 7, 1}) {
        ASSERT_EQ(instance.start(48000.0, 512), kResultOk);
        EXPECT_TRUE(Clean(RunBlocks(instance, input, block))) << block;
        instance.stop();
    }
    ASSERT_EQ(instance.start(48000.0, 512), kResultOk);
    ProcessSetup setup{kRealtime, kSample32, 1024, 96000.0};
    EXPECT_EQ(instance.processor()->setupProcessing(setup), kResultFalse);
    instance.stop();
    ASSERT_EQ(instance.component()->terminate(), kResultOk);
    ASSERT_EQ(instance.component()->initialize(static_cast<IHostApplication*>(&host)), kResultOk);
    EXPECT_EQ(instance.component()->getBusCount(kAudio, kInput), 1);
    for (double rate : {100.0, 768001.0, 1e9})
        EXPECT_EQ(instance.start(rate, 256), kResultFalse) << rate;
    ASSERT_EQ(instance.start(768000.0, 256), kResultOk);
    instance.stop();
    ASSERT_EQ(instance.start(96000.0, 8192), kResultOk);
    EXPECT_TRUE(Clean(RunBlocks(instance, input, 2048)));
}

TEST(VST3Plugin, AStateLoadWhileProcessingSupersedesThePadAndSlotChangesAskedBeforeIt)
{
    constexpr ParamID kSlot = 48, kPadU = 49, kPadV = 50;
    std::vector<std::vector<uint8_t>> states;
    {
        Instance source(Factory());
        source.controller()->setParamNormalized(kDepth, 0.9);
        states.push_back(source.state());
        source.controller()->setParamNormalized(kDepth, 0.2);
        source.controller()->setParamNormalized(kPadU, 0.3);
        source.controller()->setParamNormalized(kPadV, 0.7);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        states.push_back(source.state());
    }
    Instance instance(Factory());
    ASSERT_EQ(instance.start(48000.0, 256), kResultOk);
    std::atomic<bool> done{false}, clean{true};
    std::thread audio([&] {
        for (unsigned block = 0; !done; ++block)
            clean = Clean(RunBlocks(instance, Noise(2, 256, block), 256)) && clean;
    });
    std::mt19937 generator(5);
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    String128 text;
    for (int i = 0; i < 150; ++i) {
        instance.controller()->getParamStringByValue(generator() % 52, uniform(generator), text);
        instance.controller()->setParamNormalized(kPadU, uniform(generator));
        instance.controller()->setParamNormalized(kPadV, uniform(generator));
        if (i % 3 == 0)
            instance.controller()->setParamNormalized(kSlot, (generator() % 8) / 7.0);
        if (i % 5 == 0)
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        const std::vector<uint8_t>& loaded = states[static_cast<size_t>(i) % 2];
        ASSERT_EQ(instance.setState(loaded), kResultOk);
        ASSERT_EQ(instance.state(), loaded) << "iteration " << i;
    }
    done = true;
    audio.join();
    EXPECT_TRUE(clean);
}

} // namespace
