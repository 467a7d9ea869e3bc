#pragma once

// What the offline renderer plays audio through: the reverb core built into the
// program, or a VST 2.4 plug-in library loaded through its entry point. Both are driven
// the same way: rate and block length, parameters by key or index, then prepare, then
// stereo blocks.

#include "analysis/impulse_render.h"

#include <string>

namespace halvern::tools {

// The processing itself is the block processor's: process and tailLength.
class RenderTarget : public ZBlockProcessor {
public:
    virtual int parameterCount() = 0;
    // The parameter's storage key ("ReverbTime"), the name a user types after --set.
    virtual std::string parameterKey(int index) = 0;
    // Sets a parameter from a value as the user would type it; false when the text is
    // not a value of that parameter.
    virtual bool setFromText(int index, const std::string& text) = 0;
    virtual void setNormalized(int index, double normalized) = 0;

    // The sample rate and the longest block, given first, as a host does.
    virtual void setup(double sampleRate, int maxBlock) = 0;
    // Prepares processing; called after the parameters are set.
    virtual void start() = 0;
};

} // namespace halvern::tools
