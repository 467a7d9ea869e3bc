#include "reverb/prime_table.h"

#include <gtest/gtest.h>

namespace halvern {
namespace {

TEST(PrimeTable, HoldsExactlyThePrimesBelowTenThousand)
{
    int index = 0;
    for (int n = 2; n < 10000; ++n) {
        bool prime = true;
        for (int d = 2; d * d <= n && prime; ++d)
            prime = n % d != 0;
        if (prime) {
            ASSERT_EQ(ZPrimeTable::prime(index++), n);
        }
    }
    EXPECT_EQ(index, ZPrimeTable::kCount);
}

TEST(PrimeTable, TakesTheFirstFreePrimeNotBelowTheWantedLength)
{
    ZPrimeTable primes;
    EXPECT_EQ(primes.take(1), 2);
    EXPECT_EQ(primes.take(2), 3);       // 2 is taken
    EXPECT_EQ(primes.take(-7), 5);      // at least 1; 2 and 3 are taken
    EXPECT_EQ(primes.take(1000), 1009);
    EXPECT_EQ(primes.take(1000), 1013); // equal wishes get the next free prime
    EXPECT_EQ(primes.take(1013), 1019);
    EXPECT_EQ(primes.take(9974), 9974); // beyond the table: unchanged
    // Exhaustion: 9967 and 9973 are the last two primes.
    EXPECT_EQ(primes.take(9970), 9973);
    EXPECT_EQ(primes.take(9970), 9970);
    EXPECT_EQ(primes.take(9960), 9967);
    EXPECT_EQ(primes.take(9960), 9960);
    primes.clearUsed();
    EXPECT_EQ(primes.take(9970), 9973);
}

} // namespace
} // namespace halvern
