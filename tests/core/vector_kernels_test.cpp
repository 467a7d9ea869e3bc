#include "core/vector_kernels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace halvern {
namespace {

// The peak four lanes at a time equals the plain one at every length and alignment,
// passing NaN samples over as fmax does.
TEST(VectorKernels, PeakMatchesThePlainLoopAndPassesNaNOver)
{
    std::mt19937 generator(11);
    std::uniform_real_distribution<float> uniform(-2.0f, 2.0f);
    std::vector<float> samples(64);
    for (float& sample : samples)
        sample = uniform(generator);
    samples[13] = std::numeric_limits<float>::quiet_NaN();
    samples[40] = -3.5f;
    for (int offset = 0; offset < 4; ++offset)
        for (int count = 0; count + offset <= 60; ++count) {
            float expected = 0.0f;
            for (int i = 0; i < count; ++i)
                expected = std::fmax(expected, std::fabs(samples[static_cast<size_t>(offset + i)]));
            float peak = -1.0f;
            ASSERT_EQ(kernels::Peak(samples.data() + offset, count, peak), 0);
            EXPECT_EQ(peak, expected) << "offset " << offset << ", count " << count;
        }
    float peak = 0.0f;
    EXPECT_EQ(kernels::Peak(nullptr, 4, peak), -8);
}

} // namespace
} // namespace halvern
