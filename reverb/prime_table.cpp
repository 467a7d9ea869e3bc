#include "reverb/prime_table.h"

#include <algorithm>

namespace halvern {
namespace {

// Sieve of Eratosthenes, evaluated once by the compiler.
constexpr std::array<int, ZPrimeTable::kCount> sievePrimes()
{
    constexpr int limit = 10000;
    std::array<bool, limit> composite{};
    std::array<int, ZPrimeTable::kCount> primes{};
    size_t count = 0;
    for (int n = 2; n < limit; ++n) {
        if (composite[static_cast<size_t>(n)])
            continue;
        primes[count++] = n;
        for (int multiple = n * n; multiple < limit; multiple += n)
            composite[static_cast<size_t>(multiple)] = true;
    }
    return primes;
}

} // namespace

constexpr std::array<int, ZPrimeTable::kCount> ZPrimeTable::kPrimes = sievePrimes();

int ZPrimeTable::take(int wanted)
{
    wanted = std::max(wanted, 1);
    if (wanted > kLargest)
        return wanted;
    const auto first = std::lower_bound(kPrimes.begin(), kPrimes.end(), wanted);
    for (auto it = first; it != kPrimes.end(); ++it) {
        bool& used = used_[static_cast<size_t>(it - kPrimes.begin())];
        if (!used) {
            used = true;
            return *it;
        }
    }
    return wanted;
}

} // namespace halvern
