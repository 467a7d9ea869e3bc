#include "editor/lfo_settings.h"

#include "core/value_displays.h"
#include "core/z_format.h"
#include "editor/value_scale_log.h"

#include <cmath>

namespace halvern {
namespace {

using Mirror = ZSettingMirror<ZLFOSnapshot>;
using S = ZLFOSnapshot;

// Which of the LFO's setters takes a setting.
enum Part { General, Follower, Envelope, Random, Pitch, AutoTune };

constexpr double kLongestTime = 60.0;
constexpr double kLongestRMS = 10.0;

std::unique_ptr<ZValue> fourthRoot(std::unique_ptr<ZValue> inner)
{
    return std::make_unique<ZValueScalePower<4>>(std::move(inner));
}

std::function<std::unique_ptr<ZValue>(std::unique_ptr<ZValue>)> logarithmic(double minimum, double maximum)
{
    return [minimum, maximum](std::unique_ptr<ZValue> inner) {
        return std::make_unique<ZValueScaleLog>(std::move(inner), minimum, maximum);
    };
}

bool parseHertz(std::string_view text, double& hertz)
{
    double logHertz = 0.0;
    if (!ParseLogFrequency(text, logHertz))
        return false;
    hertz = std::pow(10.0, logHertz);
    return true;
}

void asTime(ZValueDouble& value)
{
    value.setFormatter(FormatTime);
    value.setParser(ParseTime);
}

void asPercent(ZValueDouble& value)
{
    value.setFormatter(FormatPercent);
    value.setParser(ParsePercent);
}

void asFrequency(ZValueDouble& value)
{
    value.setFormatter([](double hz) { return FormatFrequency(hz); });
    value.setParser(parseHertz);
}

// A time from 0 to the longest, tapered towards short times.
void addTime(Mirror& mirror, const std::string& key, Mirror::Access access, double longest, double defaultValue)
{
    asTime(mirror.AddNumber(key, std::move(access), 0.0, longest, defaultValue, fourthRoot));
}

void addDecibels(Mirror& mirror, const std::string& key, Mirror::Access access, double lowest, double highest,
                 double defaultValue)
{
    mirror.AddNumber(key, std::move(access), lowest, highest, defaultValue).setFormat("{+0.2} dB");
}

void addPercent(Mirror& mirror, const std::string& key, Mirror::Access access, double defaultValue)
{
    asPercent(mirror.AddNumber(key, std::move(access), 0.0, 1.0, defaultValue));
}

void addFrequency(Mirror& mirror, const std::string& key, Mirror::Access access, double lowest, double highest,
                  double defaultValue)
{
    asFrequency(mirror.AddNumber(key, std::move(access), lowest, highest, defaultValue, logarithmic(lowest, highest)));
}

void writePart(ZLFO& lfo, const ZLFOSnapshot& settings, int part)
{
    switch (static_cast<Part>(part)) {
    case General:
        lfo.setSettings(settings.lfo);
        break;
    case Follower:
        lfo.setFollowerSettings(settings.follower);
        break;
    case Envelope:
        lfo.setEnvelopeSettings(settings.envelope);
        break;
    case Random:
        lfo.setRandomSettings(settings.random);
        break;
    case Pitch:
        lfo.setPitchSettings(settings.pitch);
        break;
    case AutoTune:
        lfo.setAutoTuneSettings(settings.autoTune);
        break;
    }
}

void defineSettings(Mirror& m)
{
    const ZLFOSettings lfo;
    const ZLevelFollower::Settings follower;
    const ZEnvelopeGenerator::Settings envelope;
    const ZRandomModulator::Settings random;
    const ZPitchDetector::Settings pitch;
    const ZAutoTune::Settings autoTune;

    // ---- general and oscillator ----
    m.AddEnum("Mode", Mirror::Field(&S::lfo, &ZLFOSettings::mode), ZLFOMode::Normal);
    m.Describe("Mode", "Mode",
               "<name>Mode</name> <p>What drives the LFO: its oscillator alone (Normal), the input's level "
               "(Envelope), an envelope started by notes or by the input (MIDI Envelope), a random sequence locked "
               "to the song (Random) or the input's pitch (Pitch).</p>");
    m.AddSwitch("RestoreWhenDisabled", Mirror::Field(&S::lfo, &ZLFOSettings::restoreWhenDisabled), false);
    m.Describe("RestoreWhenDisabled", "Restore when disabled",
               "<name>Restore when disabled</name> <p>When the LFO is disabled by automation or modulation, the "
               "parameters it controlled get back the values they had before. Turning it off by hand always "
               "restores them.</p>");
    m.AddSwitch("High-speed", Mirror::Field(&S::lfo, &ZLFOSettings::highSpeed), false);
    m.Describe("High-speed", "High-speed", "<name>High-speed</name> <p>Runs the oscillator ten times faster.</p>");
    ZValueInt& group = m.AddInteger("PhaseSyncGroup", Mirror::Field(&S::lfo, &ZLFOSettings::syncGroup), 0,
                                    ZLFO::kSyncGroups, 0);
    group.setFormatter([](int number) { return number == 0 ? std::string("Disabled") : "Group " + std::to_string(number); });
    m.Describe("PhaseSyncGroup", "Sync group",
               "<name>Sync group</name> <p>LFOs of one group run in phase: the first enabled member leads the "
               "others.</p>");
    m.AddSwitch("Sync", Mirror::Field(&S::lfo, &ZLFOSettings::sync), false);
    m.Describe("Sync", "Sync",
               "<name>Sync</name> <p>Takes the oscillator's phase from the host's song position, so the LFO "
               "follows the song; Phase is then the offset from the beat.</p>");
    addPercent(m, "Phase", Mirror::Field(&S::lfo, &ZLFOSettings::phase), lfo.phase);
    m.Describe("Phase", "Phase",
               "<name>Phase</name> <p>Where the oscillator starts after a reset, or its offset from the song "
               "position with Sync.</p>");
    m.AddSwitch("UseSideChain", Mirror::Field(&S::lfo, &ZLFOSettings::useSideChain), false);
    m.Describe("UseSideChain", "Use side-chain",
               "<name>Use side-chain</name> <p>The detector listens to the side-chain input instead of the main "
               "input.</p>");

    // ---- projection onto the shape (Envelope, MIDI Envelope, Random) ----
    m.AddSwitch("Project.enabled", Mirror::Field(&S::lfo, &ZLFOSettings::project), false);
    m.Describe("Project.enabled", "Project onto the LFO shape",
               "<name>Project onto the LFO shape</name> <p>The detected value reads the LFO's shape instead of "
               "moving the targets directly: rising values climb the shape from Phase over Interval.</p>");
    addPercent(m, "Project.Phase", Mirror::Field(&S::lfo, &ZLFOSettings::projectPhase), lfo.projectPhase);
    m.Describe("Project.Phase", "Phase",
               "<name>Phase</name> <p>Where on the shape the lowest detected value reads. At 75 % sine and "
               "triangle are at their lowest.</p>");
    m.AddNumber("Project.Interval", Mirror::Field(&S::lfo, &ZLFOSettings::projectInterval), -4.0, 4.0,
                lfo.projectInterval)
        .setFormat("{0;.2}");
    m.Describe("Project.Interval", "Interval",
               "<name>Interval</name> <p>How much of the shape, in cycles, the detected range covers; negative "
               "values read it backwards.</p>");

    // ---- level follower ("Envelope" mode) ----
    addTime(m, "Follower.Attack", Mirror::Field(&S::follower, &ZLevelFollower::Settings::attack), kLongestTime,
            follower.attack);
    m.Describe("Follower.Attack", "Attack", "<name>Attack</name> <p>How fast the follower rises to a louder level.</p>",
               Follower);
    addTime(m, "Follower.Release", Mirror::Field(&S::follower, &ZLevelFollower::Settings::release), kLongestTime,
            follower.release);
    m.Describe("Follower.Release", "Release",
               "<name>Release</name> <p>How fast the follower falls to a quieter level.</p>", Follower);
    addTime(m, "Follower.Hold", Mirror::Field(&S::follower, &ZLevelFollower::Settings::hold), kLongestTime,
            follower.hold);
    m.Describe("Follower.Hold", "Hold", "<name>Hold</name> <p>How long a peak is held before the release starts.</p>",
               Follower);
    addTime(m, "Follower.RMSLength", Mirror::Field(&S::follower, &ZLevelFollower::Settings::rmsLength), kLongestRMS,
            follower.rmsLength);
    m.Describe("Follower.RMSLength", "RMS length",
               "<name>RMS length</name> <p>The span the level is averaged over; 0 follows the peaks.</p>", Follower);
    addDecibels(m, "Follower.LevelMin", Mirror::Field(&S::follower, &ZLevelFollower::Settings::levelMin), -120.0,
                24.0, follower.levelMin);
    m.Describe("Follower.LevelMin", "Level min",
               "<name>Level min</name> <p>The level that gives the lowest output.</p>", Follower);
    addDecibels(m, "Follower.LevelMax", Mirror::Field(&S::follower, &ZLevelFollower::Settings::levelMax), -120.0,
                24.0, follower.levelMax);
    m.Describe("Follower.LevelMax", "Level max",
               "<name>Level max</name> <p>The level that gives the highest output.</p>", Follower);
    m.AddEnum("Follower.Mode", Mirror::Field(&S::follower, &ZLevelFollower::Settings::mode), follower.mode);
    m.Describe("Follower.Mode", "Follower mode",
               "<name>Follower mode</name> <p>How the level maps onto the output: by amplitude (Linear), power "
               "(Squared) or decibels (Logarithmic) between Level min and Level max, or the amplitude itself "
               "(Direct).</p>",
               Follower);
    m.AddSwitch("Follower.Maximize", Mirror::Field(&S::follower, &ZLevelFollower::Settings::maximize),
                follower.maximize);
    m.Describe("Follower.Maximize", "Maximize",
               "<name>Maximize</name> <p>The range runs from Threshold up to the loudest level lately followed, so "
               "any input uses the whole range.</p>",
               Follower);
    addDecibels(m, "Follower.Threshold", Mirror::Field(&S::follower, &ZLevelFollower::Settings::threshold), -120.0,
                24.0, follower.threshold);
    m.Describe("Follower.Threshold", "Threshold",
               "<name>Threshold</name> <p>With Maximize, levels below it read as the lowest output.</p>", Follower);
    m.AddSwitch("Follower.BandPass", Mirror::Field(&S::follower, &ZLevelFollower::Settings::bandPass),
                follower.bandPass);
    m.Describe("Follower.BandPass", "Band-pass",
               "<name>Band-pass</name> <p>Follows only the band between Minimum and Maximum.</p>", Follower);
    addFrequency(m, "Follower.Minimum", Mirror::Field(&S::follower, &ZLevelFollower::Settings::bandMinimum), 10.0,
                 20000.0, follower.bandMinimum);
    m.Describe("Follower.Minimum", "Minimum", "<name>Minimum</name> <p>The band's lowest frequency.</p>", Follower);
    addFrequency(m, "Follower.Maximum", Mirror::Field(&S::follower, &ZLevelFollower::Settings::bandMaximum), 10.0,
                 20000.0, follower.bandMaximum);
    m.Describe("Follower.Maximum", "Maximum", "<name>Maximum</name> <p>The band's highest frequency.</p>", Follower);
    m.AddNumber("Follower.Q", Mirror::Field(&S::follower, &ZLevelFollower::Settings::bandQ), 0.1, 20.0,
                follower.bandQ, logarithmic(0.1, 20.0))
        .setFormat("{0;.2}");
    m.Describe("Follower.Q", "Q", "<name>Q</name> <p>The steepness of the band's edges.</p>", Follower);

    // ---- envelope ("MIDI Envelope" mode) ----
    m.AddEnum("Envelope.EnvelopeMode", Mirror::Field(&S::envelope, &ZEnvelopeGenerator::Settings::mode), envelope.mode);
    m.Describe("Envelope.EnvelopeMode", "Envelope mode",
               "<name>Envelope mode</name> <p>What starts and releases the envelope: MIDI notes, or the input's "
               "level crossing Threshold On and Threshold Off (Audio).</p>",
               Envelope);
    addDecibels(m, "Envelope.Threshold On", Mirror::Field(&S::envelope, &ZEnvelopeGenerator::Settings::thresholdOn),
                -120.0, 24.0, envelope.thresholdOn);
    m.Describe("Envelope.Threshold On", "Threshold On",
               "<name>Threshold On</name> <p>The input level that starts the envelope in Audio mode.</p>", Envelope);
    addDecibels(m, "Envelope.Threshold Off", Mirror::Field(&S::envelope, &ZEnvelopeGenerator::Settings::thresholdOff),
                -120.0, 24.0, envelope.thresholdOff);
    m.Describe("Envelope.Threshold Off", "Threshold Off",
               "<name>Threshold Off</name> <p>The input level below which the envelope releases; never above "
               "Threshold On.</p>",
               Envelope);
    addTime(m, "Envelope.RMSLength", Mirror::Field(&S::envelope, &ZEnvelopeGenerator::Settings::rmsLength),
            kLongestRMS, envelope.rmsLength);
    m.Describe("Envelope.RMSLength", "RMS length",
               "<name>RMS length</name> <p>The span the input level is averaged over in Audio mode.</p>", Envelope);
    addTime(m, "Envelope.ADSR.Attack", Mirror::Field(&S::envelope, &ZEnvelopeGenerator::Settings::attack),
            kLongestTime, envelope.attack);
    m.Describe("Envelope.ADSR.Attack", "Attack", "<name>Attack</name> <p>The time from 0 to the top.</p>", Envelope);
    addTime(m, "Envelope.ADSR.Decay", Mirror::Field(&S::envelope, &ZEnvelopeGenerator::Settings::decay), kLongestTime,
            envelope.decay);
    m.Describe("Envelope.ADSR.Decay", "Decay", "<name>Decay</name> <p>The time from the top down to Sustain.</p>",
               Envelope);
    addPercent(m, "Envelope.ADSR.Sustain", Mirror::Field(&S::envelope, &ZEnvelopeGenerator::Settings::sustain),
               envelope.sustain);
    m.Describe("Envelope.ADSR.Sustain", "Sustain",
               "<name>Sustain</name> <p>The level held while the envelope is on.</p>", Envelope);
    addTime(m, "Envelope.ADSR.Release", Mirror::Field(&S::envelope, &ZEnvelopeGenerator::Settings::release),
            kLongestTime, envelope.release);
    m.Describe("Envelope.ADSR.Release", "Release",
               "<name>Release</name> <p>The time from the released level down to 0.</p>", Envelope);

    // ---- random ----
    ZValueDouble& speed = m.AddNumber("Random.Speed", Mirror::Field(&S::random, &ZRandomModulator::Settings::speed),
                                      -1.0, 1.0, random.speed);
    speed.setFormatter([](double relative) { return ZFormat("{+0.1} %").arg(relative * 100.0).text(); });
    speed.setParser(ParsePercent);
    m.Describe("Random.Speed", "Speed",
               "<name>Speed</name> <p>How often a new value comes, relative to the song's tempo: 0 % gives one "
               "per beat, +100 % sixteen, -100 % one every sixteen beats.</p>",
               Random);
    addPercent(m, "Random.Smoothness", Mirror::Field(&S::random, &ZRandomModulator::Settings::smoothness),
               random.smoothness);
    m.Describe("Random.Smoothness", "Smoothness",
               "<name>Smoothness</name> <p>0 % jumps to each new value; 100 % glides all the way.</p>", Random);

    // ---- pitch: the mapping, the shift, the detector and the auto-tune ----
    addFrequency(m, "MinFrequency", Mirror::Field(&S::lfo, &ZLFOSettings::minFrequency), 20.0, 20000.0,
                 lfo.minFrequency);
    m.Describe("MinFrequency", "Min frequency",
               "<name>Min frequency</name> <p>The pitch that gives the lowest output.</p>");
    addFrequency(m, "MaxFrequency", Mirror::Field(&S::lfo, &ZLFOSettings::maxFrequency), 20.0, 20000.0,
                 lfo.maxFrequency);
    m.Describe("MaxFrequency", "Max frequency",
               "<name>Max frequency</name> <p>The pitch that gives the highest output.</p>");
    m.AddInteger("Octaves", Mirror::Field(&S::lfo, &ZLFOSettings::octaves), -10, 10, 0).setFormat("{+0}");
    m.Describe("Octaves", "Octaves", "<name>Octaves</name> <p>Shifts the detected pitch by whole octaves.</p>");
    m.AddInteger("Semitones", Mirror::Field(&S::lfo, &ZLFOSettings::semitones), -12, 12, 0).setFormat("{+0}");
    m.Describe("Semitones", "Semitones", "<name>Semitones</name> <p>Shifts the detected pitch by semitones.</p>");
    m.AddNumber("Cents", Mirror::Field(&S::lfo, &ZLFOSettings::cents), -100.0, 100.0, 0.0).setFormat("{+0.1}");
    m.Describe("Cents", "Cents", "<name>Cents</name> <p>Shifts the detected pitch by hundredths of a semitone.</p>");
    addFrequency(m, "PitchDetector.MinFrequencyRec",
                 Mirror::Field(&S::pitch, &ZPitchDetector::Settings::minFrequency), 20.0, 20000.0, pitch.minFrequency);
    m.Describe("PitchDetector.MinFrequencyRec", "Min frequency",
               "<name>Min frequency</name> <p>The lowest pitch the detector looks for.</p>", Pitch);
    addFrequency(m, "PitchDetector.MaxFrequencyRec",
                 Mirror::Field(&S::pitch, &ZPitchDetector::Settings::maxFrequency), 20.0, 20000.0, pitch.maxFrequency);
    m.Describe("PitchDetector.MaxFrequencyRec", "Max frequency",
               "<name>Max frequency</name> <p>The highest pitch the detector looks for.</p>", Pitch);
    addPercent(m, "PitchDetector.Stabilization", Mirror::Field(&S::pitch, &ZPitchDetector::Settings::stabilization),
               pitch.stabilization);
    m.Describe("PitchDetector.Stabilization", "Stabilization",
               "<name>Stabilization</name> <p>Removes stray octave jumps and dropouts at the cost of some "
               "delay.</p>",
               Pitch);
    addPercent(m, "PitchDetector.Speed", Mirror::Field(&S::pitch, &ZPitchDetector::Settings::speed), pitch.speed);
    m.Describe("PitchDetector.Speed", "Speed",
               "<name>Speed</name> <p>How fast the reported pitch glides to a new one.</p>", Pitch);
    addPercent(m, "PitchDetector.Accuracy", Mirror::Field(&S::pitch, &ZPitchDetector::Settings::accuracy),
               pitch.accuracy);
    m.Describe("PitchDetector.Accuracy", "Accuracy",
               "<name>Accuracy</name> <p>Longer analysis is steadier and finer; shorter answers sooner.</p>", Pitch);
    addDecibels(m, "PitchDetector.Threshold", Mirror::Field(&S::pitch, &ZPitchDetector::Settings::threshold), -120.0,
                0.0, pitch.threshold);
    m.Describe("PitchDetector.Threshold", "Threshold",
               "<name>Threshold</name> <p>Input quieter than this is not analysed; the last output is kept.</p>",
               Pitch);
    m.AddSwitch("Auto-tune.Enabled", Mirror::Field(&S::lfo, &ZLFOSettings::autoTune), false);
    m.Describe("Auto-tune.Enabled", "Auto-tune",
               "<name>Auto-tune</name> <p>Pulls the detected pitch towards the nearest semitone.</p>");
    addPercent(m, "Auto-tune.Speed", Mirror::Field(&S::autoTune, &ZAutoTune::Settings::speed), autoTune.speed);
    m.Describe("Auto-tune.Speed", "Speed",
               "<name>Speed</name> <p>How fast the correction follows a new note.</p>", AutoTune);
    addPercent(m, "Auto-tune.Depth", Mirror::Field(&S::autoTune, &ZAutoTune::Settings::depth), autoTune.depth);
    m.Describe("Auto-tune.Depth", "Depth",
               "<name>Depth</name> <p>0 % leaves the pitch; 100 % puts it on the semitone.</p>", AutoTune);
}

} // namespace

ZLFOSnapshot ZLFOSnapshot::Of(const ZLFO& lfo)
{
    return {lfo.settings(),        lfo.follower().settings(),      lfo.envelope().settings(),
            lfo.random().settings(), lfo.pitchDetector().settings(), lfo.autoTune().settings()};
}

std::shared_ptr<ZLFOSettingValues> MakeLFOSettingValues(ZLFO& lfo, ZLock& processingLock)
{
    auto values = Mirror::Create(
        processingLock, [&lfo] { return ZLFOSnapshot::Of(lfo); },
        [&lfo](const ZLFOSnapshot& settings, int part) { writePart(lfo, settings, part); });
    defineSettings(*values);
    values->Pull();
    return values;
}

} // namespace halvern
