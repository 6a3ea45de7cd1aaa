// Lanes of every width against a single one, and that one against what the functions are.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "lanes/probe.h"
#include "math/shading_math.h"
#include "math/trigonometry.h"
#include "util/instruction_set.h"

namespace zebtest
{

namespace
{

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

struct Width {
    int lanes;
    Probes probes;
};

std::vector<Width> widths()
{
    std::vector<Width> found{{4, probes4()}};
#if defined(__x86_64__) || defined(__i386__)
    if (zeb::hasLanes(8)) found.push_back({8, probes8()});
    if (zeb::hasLanes(16)) found.push_back({16, probes16()});
#endif
    return found;
}

std::uint32_t bitsOf(float x)
{
    std::uint32_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    return bits;
}

std::uint64_t bitsOf(double x)
{
    std::uint64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    return bits;
}

// What is no number has no sign that counts.
bool same(float x, float y) { return (std::isnan(x) && std::isnan(y)) || bitsOf(x) == bitsOf(y); }
bool same(double x, double y) { return (std::isnan(x) && std::isnan(y)) || bitsOf(x) == bitsOf(y); }

// Of all sizes, and what is at the ends of them.
float anyFloat(std::mt19937& random)
{
    static const float ends[] = {
        0.0f,       -0.0f,      1.0f,        -1.0f,   0.5f,        -2.0f,     2.0f,
        3.0f,       1e-45f,     -1e-45f,     1e-38f,  1e38f,       -1e38f,    3.4e38f,
        8388607.5f, 8388609.0f, 16777216.0f, kInf,    -kInf,       kNan,      1e-10f,
        1048576.0f, 0x1p-20f,   127.999f,    -149.5f, 0.99999994f, 1.0000001f};
    const auto n = random() % 3;
    if (n == 0) return ends[random() % (sizeof ends / sizeof *ends)];
    if (n == 1) return std::uniform_real_distribution<float>(-4, 4)(random);
    const std::uint32_t bits = static_cast<std::uint32_t>(random());
    float x;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

double anyDouble(std::mt19937& random)
{
    const auto n = random() % 3;
    if (n == 0) return double{anyFloat(random)};
    if (n == 1) return std::uniform_real_distribution<double>(-10, 10)(random);
    const std::uint64_t bits = std::uint64_t{random()} << 32 | random();
    double x;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

// How far a value is from the exact one, in units of the last place.
double ulps(float found, long double exact)
{
    const auto rounded = static_cast<float>(exact);
    if (same(found, rounded) || found == rounded) return 0;
    const float unit = std::nextafter(std::fabs(rounded), kInf) - std::fabs(rounded);
    return static_cast<double>(std::fabs(static_cast<long double>(found) - exact) /
                               static_cast<long double>(unit));
}

}  // namespace

TEST(Lanes, GiveTheSameBitsAtEveryWidth)
{
    for (const Width& width : widths()) {
        std::mt19937 random(7);
        for (int round = 0; round < 3000; ++round) {
            float a[kProbed], b[kProbed], c[kProbed];
            for (float* to : {a, b, c}) {
                for (int k = 0; k < kProbed; ++k) to[k] = anyFloat(random);
            }
            for (int n = 0; probes1().floats[n].name; ++n) {
                float one[kProbed], many[kProbed];
                probes1().floats[n].run(a, b, c, one);
                width.probes.floats[n].run(a, b, c, many);
                for (int k = 0; k < kProbed; ++k) {
                    ASSERT_TRUE(same(one[k], many[k]))
                        << probes1().floats[n].name << " by " << width.lanes << " of " << a[k]
                        << ", " << b[k] << ", " << c[k] << ": " << one[k] << ", " << many[k];
                }
            }
        }
    }
}

TEST(Lanes, OfDoublesGiveTheSameBitsAtEveryWidth)
{
    for (const Width& width : widths()) {
        std::mt19937 random(17);
        for (int round = 0; round < 3000; ++round) {
            double a[kProbed], b[kProbed];
            for (double* to : {a, b}) {
                for (int k = 0; k < kProbed; ++k) to[k] = anyDouble(random);
            }
            for (int n = 0; probes1().doubles[n].name; ++n) {
                double one[kProbed], many[kProbed];
                probes1().doubles[n].run(a, b, one);
                width.probes.doubles[n].run(a, b, many);
                for (int k = 0; k < kProbed; ++k) {
                    ASSERT_TRUE(same(one[k], many[k]))
                        << probes1().doubles[n].name << " by " << width.lanes << " of " << a[k]
                        << ", " << b[k] << ": " << one[k] << ", " << many[k];
                }
            }
        }
    }
}

TEST(Lanes, OfDoublesAreWhatTheScalarFunctionsAre)
{
    const auto value = [](const char* name, double a, double b) {
        for (const DoubleProbe* p = probes1().doubles; p->name; ++p) {
            if (std::strcmp(p->name, name) != 0) continue;
            const std::vector<double> as(kProbed, a), bs(kProbed, b);
            double out[kProbed];
            p->run(as.data(), bs.data(), out);
            return out[0];
        }
        ADD_FAILURE() << name;
        return 0.0;
    };
    std::mt19937 random(18);
    for (int round = 0; round < 20000; ++round) {
        const double a = anyDouble(random), b = anyDouble(random);
        ASSERT_TRUE(same(value("sqrt", a, b), std::sqrt(a))) << a;
        ASSERT_TRUE(same(value("abs", a, b), std::fabs(a))) << a;
        ASSERT_TRUE(same(value("negation", a, b), -a)) << a;
        ASSERT_TRUE(same(value("least", a, b), a < b ? a : b)) << a << ", " << b;
        ASSERT_TRUE(same(value("most", a, b), a > b ? a : b)) << a << ", " << b;
        // Larger angles are no affair of the kernels.
        if (!(std::fabs(a) <= 1e5)) continue;
        const auto [sine, cosine] = zeb::sincos(a);
        ASSERT_TRUE(same(value("sine", a, b), sine)) << a;
        ASSERT_TRUE(same(value("cosine", a, b), cosine)) << a;
    }
}

TEST(Lanes, AreWhatTheScalarFunctionsAre)
{
    const auto value = [](const char* name, float a, float b, float c) {
        for (const Probe* p = probes1().floats; p->name; ++p) {
            if (std::strcmp(p->name, name) != 0) continue;
            const std::vector<float> as(kProbed, a), bs(kProbed, b), cs(kProbed, c);
            float out[kProbed];
            p->run(as.data(), bs.data(), cs.data(), out);
            return out[0];
        }
        ADD_FAILURE() << name;
        return 0.0f;
    };
    const auto sum = [](const zeb::Point& p) { return p.x + p.y * 2 + p.z * 4; };
    std::mt19937 random(8);
    for (int round = 0; round < 20000; ++round) {
        const float a = anyFloat(random), b = anyFloat(random), c = anyFloat(random);
        const zeb::Point p(a, b, c);
        EXPECT_TRUE(same(value("sqrt", a, b, c), std::sqrt(a))) << a;
        EXPECT_TRUE(same(value("abs", a, b, c), std::fabs(a))) << a;
        EXPECT_TRUE(same(value("select", a, b, c), a < b ? c : a));
        EXPECT_TRUE(same(value("andNot", a, b, c), a < b && !(b < c)));
        EXPECT_TRUE(
            same(value("sum in double", a, b, c), static_cast<float>(double{a} + double{b})));
        EXPECT_TRUE(same(value("length", a, b, c), zeb::length(p)));
        EXPECT_TRUE(same(value("cross", a, b, c),
                         sum(rounded(zeb::Pointd(p) ^ zeb::Pointd(zeb::Point(b, c, a))))));
        EXPECT_TRUE(same(value("normalize", a, b, c), sum(zeb::normalize(p)))) << p;
        EXPECT_TRUE(same(value("scaled", a, b, c), sum(zeb::scaled(p)))) << p;
        EXPECT_TRUE(
            same(value("faceforward", a, b, c), sum(zeb::faceforward(p, {b, a, c}, {c, b, a}))))
            << p;
        EXPECT_TRUE(same(value("power", a, b, c), zeb::power(a, b))) << a << ", " << b;
        EXPECT_TRUE(same(value("exp", a, b, c), zeb::exponential(a))) << a;
        if (HasFailure()) return;
    }
}

TEST(Lanes, PowersAreWithinOneUnitInTheLastPlace)
{
    std::mt19937 random(9);
    std::uniform_real_distribution<float> cosine(0, 1), exponent(-30, 30), size(-100, 100);
    double worst = 0;
    for (int k = 0; k < 1000000; ++k) {
        const float x = k % 2 ? cosine(random) : std::exp2(size(random));
        const float y = k % 3 ? exponent(random) : 10.0f;
        worst = std::max(worst, ulps(zeb::power(x, y), std::pow(static_cast<long double>(x),
                                                                static_cast<long double>(y))));
    }
    EXPECT_LE(worst, 0.51);
}

TEST(Lanes, ExponentialsAreWithinOneUnitInTheLastPlace)
{
    std::mt19937 random(10);
    std::uniform_real_distribution<float> any(-110, 95);
    double worst = 0;
    for (int k = 0; k < 1000000; ++k) {
        const float x = any(random);
        worst = std::max(worst, ulps(zeb::exponential(x), std::exp(static_cast<long double>(x))));
    }
    EXPECT_LE(worst, 0.51);
    EXPECT_EQ(zeb::exponential(0), 1);
    EXPECT_EQ(zeb::exponential(-kInf), 0);
    EXPECT_EQ(zeb::exponential(kInf), kInf);
    EXPECT_EQ(zeb::exponential(1000), kInf);
    EXPECT_TRUE(std::isnan(zeb::exponential(kNan)));
}

TEST(Lanes, PowersEndAsThoseOfC)
{
    const float some[] = {0,     1,     -1,   2,          -2,         0.5f,
                          -0.5f, 3,     -3,   2.5f,       1e30f,      1e-40f,
                          kInf,  -kInf, kNan, 8388607.5f, 8388609.0f, 33554432.0f};
    for (const float x : some) {
        for (const float y : some) {
            // Infinitely far below zero, and -1 to the power infinity, no shader gets.
            if (x == -kInf || (x == -1 && std::isinf(y))) continue;
            const float expected = std::pow(x, y), found = zeb::power(x, y);
            EXPECT_TRUE(same(found, expected) ||
                        ulps(found, static_cast<long double>(expected)) <= 1)
                << x << " to the power " << y << ": " << found << ", not " << expected;
        }
    }
}

TEST(Lanes, AreAsManyAsTheMachineHas)
{
    EXPECT_TRUE(zeb::hasLanes(1));
    EXPECT_TRUE(zeb::hasLanes(4));
    for (const int none : {-1, 0, 2, 3, 5, 32}) EXPECT_FALSE(zeb::hasLanes(none)) << none;
    EXPECT_TRUE(zeb::hasLanes(zeb::bestLanes()));
}

}  // namespace zebtest
