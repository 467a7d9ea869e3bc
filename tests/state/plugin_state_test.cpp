#include "core/z_exception.h"
#include "modulation/audio_effect_plugin_to_audio_plugin_adapter.h"
#include "reverb/halvern_audio_effect_plugin.h"
#include "state/plugin_state_block.h"
#include "state/serialization_context.h"
#include "state/zml_writer.h"
#include "state/zml_element.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <memory>
#include <string>
#include <vector>

namespace halvern {
namespace {

using Core = ZAudioEffectPluginToAudioPluginAdapter;

std::unique_ptr<Core> NewInstance()
{
    return std::make_unique<Core>(std::make_unique<HalvernAudioEffectPlugin>());
}

HalvernAudioEffectPlugin& ReverbOf(Core& core)
{
    return static_cast<HalvernAudioEffectPlugin&>(core.effect());
}

ZMLElement Store(Core& core)
{
    ZMLElement root("settings");
    core.Serialize(ZSerializationContext(root, true));
    return root;
}

void Load(Core& core, ZMLElement& root)
{
    ZLockHolder hold(core.processingLock(), -1);
    core.Serialize(ZSerializationContext(root, false));
}

// The tree as indented text, for comparisons with readable differences.
std::string Dump(const ZMLElement& element)
{
    return ZMLDocumentText(element, ZMLLayout::Indented);
}

std::vector<uint8_t> Block(Core& core)
{
    const ZMemoryStream block = SavePluginState(core);
    return {block.data(), block.data() + block.size()};
}

std::string Inflate(const std::vector<uint8_t>& block)
{
    std::string text(1 << 20, '\0');
    uLongf length = text.size();
    EXPECT_EQ(uncompress(reinterpret_cast<Bytef*>(text.data()), &length, block.data(), block.size()), Z_OK);
    text.resize(length);
    return text;
}

std::vector<uint8_t> Compress(const std::string& text)
{
    uLongf length = compressBound(text.size());
    std::vector<uint8_t> block(length);
    EXPECT_EQ(compress2(block.data(), &length, reinterpret_cast<const Bytef*>(text.data()), text.size(), 9), Z_OK);
    block.resize(length);
    return block;
}

ZModulatorTarget Target(int parameter, double value, ZRangeMode mode)
{
    ZModulatorTarget target;
    target.parameter = parameter, target.value = value, target.range = 0.4, target.rangeMode = mode;
    return target;
}

// Moves every setting the state holds away from its default.
void ConfigureEverything(Core& core)
{
    ZParameterRegistry& registry = core.parameters();
    for (int index = 0; index < core.multiParameterIndex(0); ++index)
        if (ZValue* value = registry.value(index))
            value->setNormalized(0.37);
    HalvernAudioEffectPlugin& reverb = ReverbOf(core);
    reverb.positionAutomation().SetValue(0, 0.2, true);
    reverb.positionAutomation().SetValue(1, 0.7, true);
    reverb.SetMicrophonePosition(0.3, 0.8);

    ZLFO& lfo = core.lfo(1);
    ZLFOSettings settings = lfo.settings();
    settings.enabled = 1, settings.mode = static_cast<int32_t>(ZLFOMode::Random), settings.frequency = 3.3;
    settings.sync = true, settings.lfoAmount = 0.4, settings.project = true;
    lfo.setSettings(settings);
    ZSignalGenerator shape;
    shape.setFamily(ZSignalGenerator::Family::Steps);
    shape.setSteps(std::vector<double>{0.1, -0.5, 1.0});
    lfo.setShape(shape);
    lfo.setFollowerSettings({.attack = 0.05, .mode = ZLFOFollowerMode::Logarithmic});
    ZModulatorTarget curved = Target(4, 0.6, ZRangeMode::Interval);
    curved.shape.addPoint({0.5, 0.9, 2.0});
    curved.shapeEnabled = true;
    lfo.targets().replaceAll({Target(2, 0.25, ZRangeMode::FullRange), curved});

    ZMultiParameter& multi = core.multiParameter(2);
    multi.setEnabled(true);
    multi.valueObject().setNormalized(0.3);
    multi.modeObject().setIndex(static_cast<int32_t>(ZMultiParameterMode::Banks));
    multi.setName("Room & <Hall>");
    multi.setGroup("Space");
    multi.setInfo("Moves \"size\" and time");
    multi.setInterpolate(false);
    multi.replaceTargets({Target(5, 0.1, ZRangeMode::UpOnly), Target(9, 0.9, ZRangeMode::DownOnly)});
    multi.replaceBanks({{0.0, 1.0}, {0.5, 0.25}, {1.0, 0.0}});
    multi.setValueBackup({0.125, 0.75});

    ZMIDIControllerAssignment assignment;
    assignment.controller = 7, assignment.channel = 3, assignment.target = Target(6, 0.8, ZRangeMode::UpAndDown);
    core.midiControllers().setControllers({assignment});
    ZNoteController note;
    note.mode = ZNoteControllerMode::Switch, note.note = 64, note.parameter = 8;
    core.midiControllers().setNoteControllers({note});
    core.midiControllers().setControllersEnabled(true);
    core.midiControllers().setNoteControllersEnabled(true);
    core.midiControllers().setPresetSwitch({true, 20, 2});

    registry.value(core.bypassIndex())->setNormalized(1.0);
    core.SetChannelMode(ZChannelMode::Surround);
    core.SetSurroundChannelMask(0b10110101);
    core.SetMaxSubBlock(128);
    core.presetPosition() = {3, 1, 2};
}

TEST(PluginState, DefaultStateOmitsDefaultItemsReadsBackIdenticalAndAbsentItemsTakeTheirDefaults)
{
    auto fresh = NewInstance();
    ZMLElement root = Store(*fresh);
    EXPECT_EQ(root.getAttribute("Version"), std::to_string(Core::kStateVersion));
    EXPECT_EQ(root.getAttribute("ChannelMode"), "Stereo");
    for (const char* omitted : {"ControllersEnabled", "NoteControllersEnabled", "Bypass", "MaxLFOBlockSize",
                                "SurroundChannelsEnable", "EnableSurroundProcessing", "CurrentPresetIndex"})
        EXPECT_FALSE(root.hasAttribute(omitted)) << omitted;
    EXPECT_FALSE(root.hasChild("PreviousNextPresetController"));
    for (const auto& multi : root.findChild("MultiParameters")->children())
        EXPECT_FALSE(multi->hasAttribute("ValueBackup")) << "nothing taken over, no backup";
    EXPECT_EQ(root.getAttribute("ReverbTime"), "0.500000"); // parameters are always written
    EXPECT_FALSE(root.hasAttribute("PositionX"));           // stored in "Position" instead

    auto reloaded = NewInstance();
    Load(*reloaded, root);
    EXPECT_EQ(Dump(Store(*reloaded)), Dump(root));

    auto core = NewInstance();
    ConfigureEverything(*core);
    ZMLElement empty("settings");
    Load(*core, empty);

    EXPECT_EQ(core->loadedStateVersion(), 0x050300);
    EXPECT_EQ(core->presetPosition().edit, 1) << "no ActivePreset: opens for editing";
    EXPECT_EQ(core->presetPosition().currentPresetIndex, -1);
    // The channel mode stays as it was when absent; everything else returns to its default.
    EXPECT_EQ(core->channelMode(), ZChannelMode::Surround);
    EXPECT_FALSE(core->midiControllers().presetSwitch().enabled);
    EXPECT_EQ(core->maxSubBlock(), 256);
    EXPECT_LT(core->parameters().value(core->bypassIndex())->getNormalized(), 0.5);
    EXPECT_EQ(core->lfo(1).settings().enabled, 0);
    EXPECT_EQ(core->multiParameter(2).bankCount(), ZMultiParameter::kDefaultBankCount);
    EXPECT_TRUE(core->midiControllers().controllers().empty());
    EXPECT_DOUBLE_EQ(ReverbOf(*core).positions().sourceX, 0.5);

    ZMLElement withPreset("settings");
    withPreset.addChild("ActivePreset");
    Load(*core, withPreset);
    EXPECT_EQ(core->presetPosition().edit, 0) << "ActivePreset without Edit";
}

TEST(PluginState, EveryNonDefaultSettingRoundTripsExactly)
{
    auto source = NewInstance();
    ConfigureEverything(*source);
    ZMLElement stored = Store(*source);
    EXPECT_EQ(stored.getAttribute("SurroundChannelsEnable"), "10101101");

    auto copy = NewInstance();
    Load(*copy, stored);
    EXPECT_EQ(Dump(Store(*copy)), Dump(stored));

    // Items the dumps would both miss if storing left them out.
    EXPECT_EQ(copy->surroundChannelMask(), 0b10110101u);
    EXPECT_EQ(copy->lfo(1).shape().family(), ZSignalGenerator::Family::Steps);
    ASSERT_EQ(copy->lfo(1).targets().size(), 2);
    EXPECT_EQ(copy->lfo(1).targets().targets()[1].shape.pointCount(), 3);
    const ZMultiParameter& multi = copy->multiParameter(2);
    EXPECT_EQ(multi.name(), "Room & <Hall>");
    ASSERT_EQ(multi.bankCount(), 3);
    EXPECT_EQ(multi.banks()[1], (std::vector<double>{0.5, 0.25}));
    EXPECT_EQ(multi.valueBackup(), (std::vector<double>{0.125, 0.75}));
    EXPECT_EQ(copy->midiControllers().noteControllers().at(0).note, 64);
    EXPECT_DOUBLE_EQ(ReverbOf(*copy).positions().microphoneY, 0.8);
    EXPECT_EQ(copy->presetPosition().currentActivePreset, 2);
}

TEST(PluginState, OutOfRangeAndUnknownItemsAreBroughtIntoRangeOrIgnored)
{
    auto core = NewInstance();
    core->SetChannelMode(ZChannelMode::Left);
    core->SetParameter(11, 1.0); // "Mode 4"
    ZMLElement root("settings");
    root.setAttribute("ReverbTime", "1e300");
    root.setAttribute("ReverbMode", "Mode 9");
    root.setAttribute("Size", "not a number");
    root.setAttribute("MaxLFOBlockSize", "-5");
    root.setAttribute("ChannelMode", "Quadraphonic");
    root.setAttribute("FutureSetting", "42");
    ZMLElement& lfo = root.addChild("LFOs").addChild("LFO");
    lfo.setAttribute("Mode", "99");
    lfo.setAttribute("Frequency", "-3");
    lfo.addChild("Parameter").setAttribute("ParameterIndex", "9999");
    ZMLElement& multi = root.addChild("MultiParameters").addChild("MultiParameter");
    multi.setAttribute("BankCount", "100000");
    multi.addChild("Banks").addChild("Bank").setAttribute("Values", "2 nan -1 0.5");
    Load(*core, root);

    EXPECT_DOUBLE_EQ(ReverbOf(*core).settings().reverbTime, 30.0);
    EXPECT_DOUBLE_EQ(ReverbOf(*core).settings().size, ReverbOf(*NewInstance()).settings().size);
    EXPECT_EQ(core->maxSubBlock(), 1);
    // Enumerations named by an unknown text keep what they had.
    EXPECT_EQ(core->channelMode(), ZChannelMode::Left);
    EXPECT_EQ(ReverbOf(*core).settings().reverbMode, 3);
    EXPECT_EQ(core->lfo(0).settings().mode, static_cast<int32_t>(ZLFOMode::Pitch));
    EXPECT_DOUBLE_EQ(core->lfo(0).settings().frequency, ZLFO::kMinFrequency);
    ASSERT_EQ(core->lfo(0).targets().size(), 1) << "an invalid target falls back to the default target";
    EXPECT_LT(core->lfo(0).targets().targets()[0].parameter, core->GetParameterCount());
    EXPECT_EQ(core->multiParameter(0).bankCount(), ZMultiParameter::kMaxBankCount);
    EXPECT_EQ(core->multiParameter(0).banks()[0][0], 1.0);
}

TEST(PluginState, BlockIsAZlibDocumentThatReloadsToTheSameBytes)
{
    auto source = NewInstance();
    ConfigureEverything(*source);
    const std::vector<uint8_t> block = Block(*source);
    ASSERT_GE(block.size(), 2u);
    EXPECT_EQ(block[0], 0x78);
    EXPECT_EQ(block[1], 0xDA) << "level 9";
    const std::string text = Inflate(block);
    EXPECT_EQ(text.rfind("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<settings ", 0), 0u);
    EXPECT_EQ(text.find('\r'), std::string::npos);

    auto copy = NewInstance();
    LoadPluginState(*copy, block.data(), static_cast<int32_t>(block.size()));
    EXPECT_EQ(Block(*copy), block);
}

TEST(PluginState, HandWrittenDocumentLoadsIntoTheExpectedValues)
{
    const std::string document = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                                 "<settings Version=\"328448\" ChannelMode=\"3\" ControllersEnabled=\"1\"\n"
                                 "          MaxLFOBlockSize=\"64\" ReverbTime=\"2.500000\">\n"
                                 "  <LFOs><LFO Mode=\"3\"><Parameter ParameterIndex=\"10\" FullRange=\"1\"/></LFO></LFOs>\n"
                                 "  <MultiParameters><MultiParameter/><MultiParameter Name=\"Room &amp; hall\"\n"
                                 "    Mode=\"3\" BankCount=\"3\"><Banks><Bank Values=\"0\"/><Bank Values=\"1\"/></Banks>\n"
                                 "  </MultiParameter></MultiParameters>\n"
                                 "  <Controllers><Controller Controller=\"74\" Channel=\"2\" ParameterIndex=\"12\"/>"
                                 "</Controllers>\n"
                                 "  <ActivePreset Edit=\"1\" CurrentActivePreset=\"4\"/>\n"
                                 "  <Position SourceX=\"0.125\" MicrophoneY=\"0.75\"/>\n"
                                 "  <SomethingNew/>\n"
                                 "</settings>\n";
    const std::vector<uint8_t> block = Compress(document);
    auto core = NewInstance();
    LoadPluginState(*core, block.data(), static_cast<int32_t>(block.size()));

    EXPECT_EQ(core->loadedStateVersion(), 0x050300);
    EXPECT_EQ(core->channelMode(), ZChannelMode::MidSide) << "an enumeration by its index";
    EXPECT_TRUE(core->midiControllers().controllersEnabled());
    EXPECT_EQ(core->maxSubBlock(), 64);
    EXPECT_DOUBLE_EQ(ReverbOf(*core).settings().reverbTime, 2.5);
    ZLFO& lfo = core->lfo(0);
    EXPECT_EQ(lfo.settings().mode, static_cast<int32_t>(ZLFOMode::Random));
    ASSERT_EQ(lfo.targets().size(), 1);
    EXPECT_EQ(lfo.targets().targets()[0].rangeMode, ZRangeMode::FullRange);
    const ZMultiParameter& multi = core->multiParameter(1);
    EXPECT_EQ(multi.name(), "Room & hall");
    ASSERT_EQ(multi.bankCount(), 3) << "two stored banks, the third copies the last";
    EXPECT_EQ(multi.banks()[2][0], 1.0);
    ASSERT_EQ(core->midiControllers().controllers().size(), 1u);
    EXPECT_EQ(core->midiControllers().controllers()[0].controller, 74);
    EXPECT_EQ(core->presetPosition().currentActivePreset, 4);
    EXPECT_DOUBLE_EQ(ReverbOf(*core).positions().microphoneY, 0.75);
}

TEST(PluginState, DamagedBlocksLeaveTheWholeStateUnchanged)
{
    auto source = NewInstance();
    ConfigureEverything(*source);
    const std::vector<uint8_t> good = Block(*source);

    auto target = NewInstance();
    target->lfo(3).setEnabledByUser(true);
    target->SetChannelMode(ZChannelMode::Side);
    const std::string before = Dump(Store(*target));

    std::vector<std::vector<uint8_t>> damaged;
    for (size_t length : {size_t{0}, good.size() / 2, good.size() - 1})
        damaged.emplace_back(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length));
    for (size_t at : {size_t{0}, good.size() / 3, good.size() - 2}) {
        damaged.push_back(good);
        damaged.back()[at] ^= 0x10;
    }
    const std::string notZlib = "<settings Bypass=\"1\"/>";
    damaged.emplace_back(notZlib.begin(), notZlib.end());
    damaged.push_back(Compress("<?xml version=\"1.0\"?>\n<settings Bypass=\"1\"><LFOs></settings>"));
    damaged.push_back(Compress("<settings Bypass=\"1\"/>trailing text"));
    damaged.push_back(Compress("<settings Name=\"&;\"/>"));

    for (size_t i = 0; i < damaged.size(); ++i) {
        const std::vector<uint8_t>& block = damaged[i];
        EXPECT_THROW(LoadPluginState(*target, block.empty() ? nullptr : block.data(), static_cast<int32_t>(block.size())),
                     ZException)
            << "block " << i;
        EXPECT_EQ(Dump(Store(*target)), before) << "block " << i;
    }
}

} // namespace
} // namespace halvern
