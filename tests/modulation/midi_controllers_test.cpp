#include "core/z_value_number.h"
#include "modulation/midi_controllers.h"

#include <gtest/gtest.h>

namespace halvern {
namespace {

struct Fixture {
    ZLock lock;
    ZParameterRegistry registry;
    double x = 0.0;
    ZValueDouble xValue{&x, 0, 1, 0, 0.01};
    ZMIDIControllers midi{lock};
    Fixture() { registry.add({"x", "X", "", ZParameterType::Float, "", true}, &xValue); }
};

ZMIDIControllerAssignment assignment(int controller, int channel = 0)
{
    ZMIDIControllerAssignment a;
    a.controller = controller, a.channel = channel;
    a.target.parameter = 0, a.target.rangeMode = ZRangeMode::FullRange; // depth 1: m = -1..1 covers 0..1
    return a;
}

TEST(MIDIControllers, ControllersAftertouchPitchBendAndVelocityScaleIntoTheRange)
{
    Fixture f;
    f.midi.setControllers({assignment(7, 2), assignment(static_cast<int>(ZMIDISource::PitchBend)),
                           assignment(static_cast<int>(ZMIDISource::VelocityOnOff))});
    f.midi.controllerChanged(1, 7, 127, f.registry);
    EXPECT_EQ(f.x, 0.0); // controllers are off until enabled
    f.midi.setControllersEnabled(true);
    f.midi.controllerChanged(1, 7, 127, f.registry); // channel 2 on the wire is 1
    EXPECT_DOUBLE_EQ(f.x, 1.0);
    f.midi.controllerChanged(0, 7, 0, f.registry); // another channel: ignored
    EXPECT_DOUBLE_EQ(f.x, 1.0);
    f.midi.pitchBend(5, 8192, f.registry);
    EXPECT_DOUBLE_EQ(f.x, 0.5); // the centre
    f.midi.pitchBend(5, 0, f.registry);
    EXPECT_DOUBLE_EQ(f.x, 0.0);
    f.midi.note(0, 60, 127, true, f.registry);
    EXPECT_DOUBLE_EQ(f.x, 1.0);
    f.midi.note(0, 60, 0, false, f.registry);
    EXPECT_DOUBLE_EQ(f.x, 0.0);
    EXPECT_TRUE(f.registry.normalized(0) == 0.0);
}

TEST(MIDIControllers, NoteControllersInEveryMode)
{
    Fixture f;
    f.midi.setNoteControllersEnabled(true);
    auto noteController = [](ZNoteControllerMode mode) {
        ZNoteController c;
        c.mode = mode, c.note = 60, c.value = 0.2, c.maxValue = 0.8;
        return c;
    };
    f.midi.setNoteControllers({noteController(ZNoteControllerMode::Linear)});
    f.midi.note(0, 127, 100, true, f.registry);
    EXPECT_DOUBLE_EQ(f.x, 0.8);
    f.midi.note(0, 0, 100, true, f.registry);
    EXPECT_DOUBLE_EQ(f.x, 0.2);

    // Logarithmic: linear in frequency, so the middle note is far below the middle value.
    f.midi.setNoteControllers({noteController(ZNoteControllerMode::Logarithmic)});
    f.midi.note(0, 64, 100, true, f.registry);
    EXPECT_NEAR(f.x, 0.2 + 0.6 * (40.3175 - 1.0) / (1534.38 - 1.0), 1e-5); // 2^(64/12), 2^(127/12)
    const double logarithmic = f.x;

    f.midi.setNoteControllers({noteController(ZNoteControllerMode::OnOff)});
    f.midi.note(0, 72, 100, true, f.registry); // another octave: ignored
    EXPECT_EQ(f.x, logarithmic);
    f.midi.note(0, 60, 100, true, f.registry);
    EXPECT_DOUBLE_EQ(f.x, 0.8);
    f.midi.note(0, 60, 0, false, f.registry);
    EXPECT_DOUBLE_EQ(f.x, 0.2);

    f.midi.setNoteControllers({noteController(ZNoteControllerMode::OnOffAllOctaves)});
    f.midi.note(0, 72, 100, true, f.registry);
    EXPECT_DOUBLE_EQ(f.x, 0.8);

    f.midi.setNoteControllers({noteController(ZNoteControllerMode::SwitchAllOctaves)});
    f.midi.note(0, 48, 100, true, f.registry);
    EXPECT_DOUBLE_EQ(f.x, 0.8);
    f.midi.note(0, 48, 0, false, f.registry); // releases do nothing
    EXPECT_DOUBLE_EQ(f.x, 0.8);
    f.midi.note(0, 84, 100, true, f.registry);
    EXPECT_DOUBLE_EQ(f.x, 0.2);
}

TEST(MIDIControllers, PresetSwitchStepsOnceOnEnteringTheOuterThirds)
{
    Fixture f;
    f.midi.setPresetSwitch({true, 20, 0});
    f.midi.controllerChanged(0, 20, 100, f.registry); // above 66 %
    f.midi.controllerChanged(0, 20, 120, f.registry); // still there: no second step
    EXPECT_EQ(f.midi.takePresetStep(), 1);
    EXPECT_EQ(f.midi.takePresetStep(), 0);
    f.midi.controllerChanged(0, 20, 64, f.registry);
    EXPECT_EQ(f.midi.takePresetStep(), 0);
    f.midi.controllerChanged(0, 20, 10, f.registry); // below 33 %
    EXPECT_EQ(f.midi.takePresetStep(), -1);
}

} // namespace
} // namespace halvern
