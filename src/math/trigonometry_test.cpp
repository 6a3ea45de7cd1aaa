// Sines and cosines against those of long doubles, and their bits.

#include "math/trigonometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>

using namespace zeb;

namespace
{

constexpr double kQuarter = 1.57079632679489661923;

// How far a value is from the exact one, in units of the last place.
double ulps(double found, long double exact)
{
    const double size = std::fabs(static_cast<double>(exact));
    const double unit = std::nextafter(size, std::numeric_limits<double>::infinity()) - size;
    const long double off = std::fabs(static_cast<long double>(found) - exact);
    return static_cast<double>(off / static_cast<long double>(unit));
}

double within(std::mt19937& random, double limit)
{
    return std::uniform_real_distribution<double>(-limit, limit)(random);
}

// Fowler, Noll and Vo's, of the bits.
void add(std::uint64_t& hash, double x)
{
    std::uint64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    for (int k = 0; k < 64; k += 8) hash = (hash ^ (bits >> k & 0xFF)) * 0x100000001B3;
}

// Windows' long sines take those of the processor, which are off by more than doubles are. That the
// bits are those of other systems is tested there, too.
#ifdef _WIN32
constexpr bool kIsExact = false;
#else
constexpr bool kIsExact = true;
#endif

}  // namespace

TEST(Trigonometry, IsWithinOneUnitInTheLastPlace)
{
    if (!kIsExact) GTEST_SKIP() << "nothing exact to compare with";
    std::mt19937 random(1);
    for (const double limit : {0.8, 13.0, 1e5}) {
        double worst = 0;
        for (int k = 0; k < 1000000; ++k) {
            double x = within(random, limit);
            // Near the multiples of a quarter turn, where one of them is next to nothing.
            if (k % 4 == 0) x = std::round(x / kQuarter) * kQuarter * (1 + within(random, 1e-14));
            const auto [sine, cosine] = sincos(x);
            const auto exact = static_cast<long double>(x);
            worst = std::max({worst, ulps(sine, std::sin(exact)), ulps(cosine, std::cos(exact))});
        }
        EXPECT_LE(worst, limit > 100 ? 0.85 : 0.81) << limit;
    }
}

TEST(Trigonometry, OfNothingIsExact)
{
    EXPECT_EQ(sincos(0).sin, 0);
    EXPECT_EQ(sincos(0).cos, 1);
    EXPECT_EQ(sincos(-0.0).sin, 0);
    EXPECT_EQ(sincos(-0.0).cos, 1);
    for (const double tiny : {1e-300, 5e-324, 1e-20, 1e-9}) {
        EXPECT_EQ(sincos(tiny).sin, tiny);
        EXPECT_EQ(sincos(tiny).cos, 1);
    }
}

TEST(Trigonometry, IsTheSameEitherWayRound)
{
    std::mt19937 random(2);
    for (int k = 0; k < 100000; ++k) {
        const double x = within(random, k % 2 ? 7 : 1e5);
        ASSERT_EQ(sincos(-x).sin, -sincos(x).sin) << x;
        ASSERT_EQ(sincos(-x).cos, sincos(x).cos) << x;
    }
}

TEST(Trigonometry, StaysWithinTheCircle)
{
    std::mt19937 random(3);
    for (int k = 0; k < 1000000; ++k) {
        const double x = std::round(within(random, 20)) * kQuarter + within(random, 1e-7);
        ASSERT_LE(std::fabs(sincos(x).sin), 1) << x;
        ASSERT_LE(std::fabs(sincos(x).cos), 1) << x;
    }
}

TEST(Trigonometry, OfWhatIsNoAngleIsNoNumber)
{
    const double inf = std::numeric_limits<double>::infinity();
    for (const double x : {inf, -inf, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_TRUE(std::isnan(sincos(x).sin));
        EXPECT_TRUE(std::isnan(sincos(x).cos));
    }
}

TEST(Trigonometry, FindsTheAngleOfASine)
{
    if (!kIsExact) GTEST_SKIP() << "nothing exact to compare with";
    std::mt19937 random(4);
    double worst = 0;
    for (int k = 0; k < 1000000; ++k) {
        double x = within(random, 1);
        if (k % 3 == 0) x = std::ldexp(x, -static_cast<int>(random() % 60));
        if (k % 3 == 1) x = 1 - std::ldexp(std::fabs(x), -static_cast<int>(random() % 60));
        const long double exact = std::asin(static_cast<long double>(x));
        const auto found = static_cast<long double>(arcsine(x));
        worst = std::max(worst, static_cast<double>(std::fabs(found - exact)));
        ASSERT_EQ(arcsine(-x), -arcsine(x)) << x;
    }
    EXPECT_LE(worst, 3e-16);
    EXPECT_EQ(arcsine(0), 0);
    EXPECT_EQ(arcsine(1), kQuarter);
    EXPECT_EQ(arcsine(-1), -kQuarter);
    EXPECT_TRUE(std::isnan(arcsine(std::numeric_limits<double>::quiet_NaN())));
}

TEST(Trigonometry, FindsTheAngleOfACosine)
{
    if (!kIsExact) GTEST_SKIP() << "nothing exact to compare with";
    std::mt19937 random(5);
    for (int k = 0; k < 100000; ++k) {
        const double x = within(random, 1);
        const long double exact = std::acos(static_cast<long double>(x));
        ASSERT_NEAR(arccosine(x), static_cast<double>(exact), 6e-16) << x;
    }
    EXPECT_EQ(arccosine(1), 0);
    EXPECT_EQ(arccosine(-1), 2 * kQuarter);
}

// Beyond it the series would be of no use: what is left without whole turns is.
TEST(Trigonometry, TakesAnglesOfAnySize)
{
    for (const double x : {1.1e5, -3e7, 1e15, 1e38, 1.7e308}) {
        const auto [sine, cosine] = sincos(x);
        EXPECT_NEAR(sine * sine + cosine * cosine, 1, 1e-15) << x;
        EXPECT_EQ(sine, sincos(std::fmod(x, 4 * kQuarter)).sin) << x;
        EXPECT_EQ(sincos(-x).sin, -sine) << x;
    }
    EXPECT_NEAR(sincos(1.1e5).sin, std::sin(1.1e5), 1e-10);
}

// The bits are those that they were where this was written.
TEST(Trigonometry, HasTheSameBitsEverywhere)
{
    std::uint64_t hash = 0xCBF29CE484222325;
    for (int k = -100000; k <= 100000; ++k) {
        const auto [sine, cosine] = sincos(k * (1 / 1024.0));
        add(hash, sine);
        add(hash, cosine);
        add(hash, arcsine(k * 1e-5));
    }
    EXPECT_EQ(hash, 0xC33F2FAF50930F28u);
}
