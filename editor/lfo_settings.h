#pragma once

// The settings of one LFO as value objects for the LFO page's controls, by the keys of
// the LFO's stored state: "Mode", "Phase", "Follower.Attack", "Envelope.ADSR.Sustain",
// "PitchDetector.Speed", "Auto-tune.Enabled", "Project.Phase" and so on, each with the
// label its control shows and its help. The host-visible settings (enable, "Frequency",
// "LFOAmount") are host parameters and not here.

#include "core/z_lock.h"
#include "editor/setting_mirror.h"
#include "modulation/lfo.h"

#include <memory>

namespace halvern {

// Everything of an LFO that the page edits, as one copy.
struct ZLFOSnapshot {
    ZLFOSettings lfo;
    ZLevelFollower::Settings follower;
    ZEnvelopeGenerator::Settings envelope;
    ZRandomModulator::Settings random;
    ZPitchDetector::Settings pitch;
    ZAutoTune::Settings autoTune;

    static ZLFOSnapshot Of(const ZLFO& lfo);
};

using ZLFOSettingValues = ZSettingMirror<ZLFOSnapshot>;

// The LFO's settings as value objects, pulled from the LFO at once; each edit goes to
// the LFO through the setter of its part.
std::shared_ptr<ZLFOSettingValues> MakeLFOSettingValues(ZLFO& lfo, ZLock& processingLock);

} // namespace halvern
