#pragma once

// The distinct-prime rule for delay lengths: every line of one update gets its own prime
// length, so no two lines share a period and their echoes never pile up on one another.

#include <array>
#include <cstddef>

namespace halvern {

class ZPrimeTable {
public:
    static constexpr int kCount = 1229;    // the primes below 10000
    static constexpr int kLargest = 9973;

    // Frees every prime for a new round of assignments.
    void clearUsed() { used_.fill(false); }

    // The first unused prime not below wanted (at least 1), marked used. A wanted length
    // above the table's largest prime, or one with every prime from it on taken, is
    // returned unchanged.
    int take(int wanted);

    static int prime(int index) { return kPrimes[static_cast<std::size_t>(index)]; }

private:
    static const std::array<int, kCount> kPrimes;
    std::array<bool, kCount> used_{};
};

} // namespace halvern
