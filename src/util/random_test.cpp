#include "util/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

using namespace zeb;

// 1 * 214013 + 2531011 = 2745024 = 41 * 65536 + ...
TEST(Random, TheFirstDrawOfSeedOneIs41) { EXPECT_EQ(Random(1).next(), 41); }

TEST(Random, DrawsTheUpperBitsOfALinearCongruentialGenerator)
{
    Random random(12345);
    std::uint32_t state = 12345;
    for (int i = 0; i < 1000; ++i) {
        state = state * 214013u + 2531011u;
        ASSERT_EQ(random.next(), static_cast<int>(state / 65536 % 32768)) << i;
    }
}

TEST(Random, DrawsFrom0To32767)
{
    Random random(1);
    int least = 32767, most = 0;
    for (int i = 0; i < 1'000'000; ++i) {
        const int draw = random.next();
        least = std::min(least, draw);
        most = std::max(most, draw);
    }
    EXPECT_EQ(least, 0);
    EXPECT_EQ(most, 32767);
}

TEST(Random, UnitIsADrawDividedBy32767)
{
    Random a(5), b(5);
    for (int i = 0; i < 100; ++i) {
        const double expected = b.next() / 32767.0;
        EXPECT_NEAR(static_cast<double>(a.unit()), expected, 1e-7);
    }
}

TEST(Random, UnitReachesBothEnds)
{
    Random random(1);
    std::set<float> ends;
    for (int i = 0; i < 1'000'000; ++i) {
        const float unit = random.unit();
        ASSERT_GE(unit, 0.0f);
        ASSERT_LE(unit, 1.0f);
        if (unit == 0.0f || unit == 1.0f) ends.insert(unit);
    }
    EXPECT_EQ(ends.size(), 2u);
}

TEST(Random, EqualSeedsGiveEqualStreams)
{
    Random a(99), b(99);
    for (int i = 0; i < 100; ++i) ASSERT_EQ(a.next(), b.next());
}

// Independent uniform draws lie a third apart on average; those of neighbouring raw seeds, 0.0001.
TEST(Random, NeighbouringSeedsGiveUnrelatedStreamsOnceMixed)
{
    double raw = 0, mixed = 0;
    for (std::uint32_t seed = 0; seed < 4000; ++seed) {
        raw += std::fabs(static_cast<double>(Random(seed).unit() - Random(seed + 1).unit()));
        mixed += std::fabs(
            static_cast<double>(Random(mixBits(seed)).unit() - Random(mixBits(seed + 1)).unit()));
    }
    EXPECT_LT(raw / 4000, 0.01);
    EXPECT_NEAR(mixed / 4000, 1.0 / 3, 0.02);
}

TEST(Random, MixingLosesNoSeed)
{
    std::set<std::uint32_t> mixed;
    for (std::uint32_t seed = 0; seed < 10000; ++seed) mixed.insert(mixBits(seed));
    EXPECT_EQ(mixed.size(), 10000u);
}

TEST(Random, TheOrderOfTwoSeedsMatters)
{
    EXPECT_NE(mixSeeds(1, 2), mixSeeds(2, 1));
    EXPECT_NE(mixSeeds(1, 2), mixSeeds(1, 3));
    EXPECT_EQ(mixSeeds(1, 2), mixSeeds(1, 2));
}
