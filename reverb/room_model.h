#pragma once

// The room model: from the room's size and width ratio, the diffusion, the predelay and
// the positions of source and microphone on the floor plan, the lengths and gains of the
// reverb's first stage — two predelay lines (one per ear), the colour shelves, and four
// early diffusers per ear — and the direct sound's pan and distance. All distances are
// in seconds of sound travel.

#include "reverb/prime_table.h"

#include <array>

namespace halvern {

struct ZRoomInputs {
    double size = 0.04;        // room length L
    double width = 1.0;        // width-to-length ratio control, 0..1
    double predelay = 0.25;    // seconds; 0.25 means automatic
    double diffusion = 1.0;    // 0..1
    double sourceX = 0.5, sourceY = 0.5;
    double microphoneX = 0.5, microphoneY = 1.0;
    double sampleRate = 48000.0;
};

struct ZRoomGeometry {
    double roomWidth = 0.0;     // W = L (0.9 Width + 0.1)
    double angle = 0.0;         // direction of the direct sound, radians
    double distance = 0.0;      // direct distance
    double pan = 0.0;           // (angle - pi/2) * 2/pi
    double centre = 0.0;        // mean of the two side-wall paths (or the manual predelay)
    double difference = 0.0;    // side-wall path difference, never below 0.01 Width in size
    int predelayLeft = 1;       // samples, line 1
    int predelayRight = 1;      // samples, line 2
    std::array<int, 4> diffusersLeft{};  // stage k = 0..3
    std::array<int, 4> diffusersRight{};
    double stereoOffset = 0.0;  // samples: spreads the diffusers and the late lines
    double diffuserGain = 0.0;  // g, the same in all eight stages
    double earlyGainLeft = 0.0;
    double earlyGainRight = 0.0;
};

// Computes the geometry; takes the eight diffuser lengths from the prime table in the
// order left 0, right 0, left 1, right 1, … (the late network's lines come after).
ZRoomGeometry ComputeRoomGeometry(const ZRoomInputs& inputs, ZPrimeTable& primes);

// Seconds the first stage takes to fall by fallDb after an impulse: the longer predelay,
// then the slowest diffuser stage, the longest line, whose loop loses -20 log10 g dB per
// pass; the shorter stages in series with it have died away well before it has.
double EarlyRingingSeconds(const ZRoomGeometry& geometry, double sampleRate, double fallDb);

constexpr double kAutomaticPredelay = 0.25;
bool IsAutomaticPredelay(double predelay);

} // namespace halvern
