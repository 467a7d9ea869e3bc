#pragma once

// The plug-in core's only way back to its host. Each host adapter implements it and
// registers itself with the core.

#include <cstdint>

namespace halvern {

struct ZMIDIEvent {
    int32_t sampleOffset = 0;
    uint8_t bytes[4] = {};
};

class ZAudioPluginAdapter {
public:
    virtual ~ZAudioPluginAdapter() = default;
    // The core's latency changed; the host should re-read it.
    virtual void ReportLatency(int32_t samples) = 0;
    // A parameter changed inside the plug-in; never called on the audio thread.
    virtual void SendAutomation(int32_t index, double normalized) = 0;
    // Queues a MIDI event for the host; sent at the end of the block.
    virtual void QueueMIDIEvent(const ZMIDIEvent& event) = 0;
};

} // namespace halvern
