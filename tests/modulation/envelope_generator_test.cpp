#include "modulation/envelope_generator.h"

#include "tests/modulation/detector_signals.h"

#include <gtest/gtest.h>

namespace halvern {
namespace {

using testing::decibels;
using testing::ToneFeeder;

ZEnvelopeGenerator makeEnvelope(const ZEnvelopeGenerator::Settings& settings)
{
    ZEnvelopeGenerator envelope;
    envelope.prepare(testing::kRate, 48);
    envelope.setSettings(settings);
    return envelope;
}

TEST(EnvelopeGenerator, MidiNotesRunTheAdsr)
{
    auto envelope = makeEnvelope({.attack = 0.010, .decay = 0.020, .sustain = 0.5, .release = 0.040});
    ToneFeeder silence(48); // blocks of 1 ms
    const auto after = [&](double milliseconds) { return silence.feed(envelope, 0.0, 0.0, milliseconds / 1000.0).back(); };

    EXPECT_EQ(after(5), 0.0); // nothing before a note
    envelope.noteOn();
    EXPECT_NEAR(after(5), 0.5, 1e-9);   // halfway up the 10 ms attack
    EXPECT_NEAR(after(15), 0.75, 1e-3); // halfway down the 20 ms decay from 1 to 0.5
    EXPECT_NEAR(after(15), 0.5, 1e-9);  // sustain
    envelope.noteOn();  // a second, overlapping note changes nothing
    envelope.noteOff(); // and neither does its end while the first is held
    EXPECT_NEAR(after(50), 0.5, 1e-9);
    envelope.noteOff();
    EXPECT_NEAR(after(20), 0.25, 1e-9); // halfway through the 40 ms release
    EXPECT_NEAR(after(20), 0.0, 1e-9);
    envelope.noteOff(); // an unmatched note-off is ignored
    envelope.noteOn();
    EXPECT_NEAR(after(5), 0.5, 1e-9);
}

TEST(EnvelopeGenerator, AudioLevelOpensAboveOnAndClosesBelowOff)
{
    auto envelope = makeEnvelope({.mode = ZLFOEnvelopeMode::Audio, .attack = 0.001, .decay = 0.001, .sustain = 1.0,
                                  .release = 0.001, .thresholdOn = -20.0, .thresholdOff = -40.0, .rmsLength = 0.005});
    ToneFeeder feeder(48);
    // Tones given by their RMS level: a sine's amplitude is sqrt(2) times its RMS.
    const auto at = [&](double rmsDb) { return feeder.feed(envelope, std::sqrt(2.0) * decibels(rmsDb), 500.0, 0.1).back(); };

    EXPECT_EQ(at(-30.0), 0.0); // between the thresholds: no start
    EXPECT_EQ(at(-10.0), 1.0); // above Threshold On: started
    EXPECT_EQ(at(-30.0), 1.0); // still above Threshold Off: held
    EXPECT_EQ(at(-50.0), 0.0); // below Threshold Off: released
    envelope.noteOn();         // notes do not trigger in Audio mode
    EXPECT_EQ(at(-50.0), 0.0);
}

} // namespace
} // namespace halvern
