#pragma once

// The reverb's first stage, per ear: the predelay line, the colour shelves (low shelf,
// then high shelf) and four diffuser stages run from the longest to the shortest. Its
// output, the early reflections, feeds the late network and the early/late mix.

#include "core/biquad.h"
#include "reverb/delay_line.h"
#include "reverb/room_model.h"

#include <array>

namespace halvern {

struct ZColourSettings {
    double lowDamp = 3.0;    // dB of cut
    double lowFreq = 3.0;    // log10 Hz
    double highDamp = 6.0;   // dB of cut, before the distance term
    double highFreq = 4.0;   // log10 Hz
};

class ZEarlyReflections {
public:
    // Sizes every line for the longest room at this rate.
    void prepare(double sampleRate);
    void configure(const ZRoomGeometry& geometry, const ZColourSettings& colour, double sampleRate);
    void reset();

    void process(float left, float right, double& earlyLeft, double& earlyRight)
    {
        earlyLeft = ear(left, left_) * gainLeft_;
        earlyRight = ear(right, right_) * gainRight_;
    }

private:
    struct Ear {
        ZDelayLine<float> predelay;
        ZBiquad lowShelf;
        ZBiquad highShelf;
        std::array<ZDelayLine<double>, 4> diffusers;
    };

    // One diffuser stage writes (d + x + 1e-15) g and passes d - x on.
    double ear(float input, Ear& ear)
    {
        const float delayed = ear.predelay.read();
        ear.predelay.write(input);
        double x = ear.highShelf.process(ear.lowShelf.process(delayed));
        for (int k = 3; k >= 0; --k) {
            ZDelayLine<double>& line = ear.diffusers[static_cast<size_t>(k)];
            const double d = line.read();
            line.write((d + x + 1e-15) * diffuserGain_);
            x = d - x;
        }
        return x;
    }

    Ear left_;
    Ear right_;
    double diffuserGain_ = 0.0;
    double gainLeft_ = 0.0;
    double gainRight_ = 0.0;
};

} // namespace halvern
