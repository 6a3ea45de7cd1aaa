#include "math/shading_math.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>

#include "support/reports.h"

using namespace zeb;

namespace
{

// The C library has names like it.
float quotient(float a, float b) { return zeb::div(a, b); }

// The noise tables, built from the draws that follow seed 1.
struct Tables {
    std::array<Point, 512> G;
    std::array<int, 512> P;

    Tables()
    {
        Random random(1);
        for (std::size_t count = 0; count < 256;) {
            float v[3];
            for (float& c : v) c = static_cast<float>(random.next() % 512 - 256) * 0.00390625f;
            const Point p(v[0], v[1], v[2]);
            if (dot(p, p) > 1) continue;
            G[count++] = normalize(p);
        }
        for (std::size_t i = 0; i < 256; ++i) P[i] = static_cast<int>(i);
        for (std::size_t i = 255;; i -= 2) {
            const auto j = static_cast<std::size_t>(random.next() % 256);
            std::swap(P[i], P[j]);
            if (i == 1) break;
        }
        for (std::size_t i = 0; i < 256; ++i) {
            G[256 + i] = G[i];
            P[256 + i] = P[i];
        }
    }
};

struct Lattice {
    std::size_t i0, i1;
    float f, g, s;

    explicit Lattice(float x)
    {
        const float xs = x + 10000;
        i0 = static_cast<std::size_t>(xs) & 255;
        i1 = (i0 + 1) & 255;
        f = std::fmod(xs, 1.0f);
        g = f - 1;
        s = f * f * (3 - 2 * f);
    }
};

}  // namespace

TEST(Div, Divides)
{
    EXPECT_EQ(quotient(6, 3), 2);
    EXPECT_EQ(quotient(6, -3), -2);
    EXPECT_EQ(quotient(1, 0.25f), 4);
    EXPECT_EQ(quotient(-1, -0.25f), 4);
    EXPECT_EQ(quotient(0, 5), 0);
}

TEST(Div, ClampsToInfinityWithTheSignOfTheDividend)
{
    EXPECT_EQ(quotient(1, 0), 1e38f);
    EXPECT_EQ(quotient(-1, 0), -1e38f);
    EXPECT_EQ(quotient(1e30f, 1e-10f), 1e38f);
    EXPECT_EQ(quotient(1e30f, -1e-10f), 1e38f);  // the divisor's sign is not looked at
    EXPECT_EQ(quotient(-1, -0.0f), -1e38f);
}

TEST(Div, OfZeroByZeroIsZero)
{
    EXPECT_EQ(quotient(0, 0), 0);
    EXPECT_EQ(quotient(0, -0.0f), 0);
}

TEST(Smoothstep, IsZeroBelowOneFromTheTopAndACubicBetween)
{
    EXPECT_EQ(smoothstep(1, 3, 0.5f), 0);
    EXPECT_EQ(smoothstep(1, 3, 1), 0);
    EXPECT_EQ(smoothstep(1, 3, 3), 1);
    EXPECT_EQ(smoothstep(1, 3, 4), 1);
    EXPECT_EQ(smoothstep(1, 3, 1.5f), 0.0625f * 2.5f);  // t = 1/4: t^2 (3 - 2 t)
}

TEST(Smoothstep, TakesItsBoundsInEitherOrder)
{
    EXPECT_EQ(smoothstep(0, 1, 0.5f), 0.5f);
    EXPECT_EQ(smoothstep(1, 0, 0.5f), 0.5f);
    EXPECT_EQ(smoothstep(1, 0, 0.25f), smoothstep(0, 1, 0.25f));
}

TEST(Smoothstep, OfEqualBoundsIsAStep)
{
    EXPECT_EQ(smoothstep(1, 1, 0.5f), 0);
    EXPECT_EQ(smoothstep(1, 1, 1), 1);
}

TEST(Spline, IsLinearThroughEvenKnots)
{
    const float k[] = {0, 1, 2, 3};
    EXPECT_EQ(spline(0.5f, 4, k), 1.5f);
    EXPECT_NEAR(spline(0.25f, 4, k), 1.25f, 1e-6f);
}

TEST(Spline, RunsFromTheSecondKnotToTheLastButOne)
{
    const float k[] = {7, 1, 5, 3, 9};
    EXPECT_EQ(spline(0, 5, k), 1);
    EXPECT_EQ(spline(-1, 5, k), 1);
    EXPECT_EQ(spline(0.5f, 5, k), 5);
    EXPECT_EQ(spline(1, 5, k), 3);
    EXPECT_EQ(spline(2, 5, k), 3);
}

// k = 0, 0, 1, 0 at f = 1/2: a = -3, b = 4, c = 1, d = 0.
TEST(Spline, IsCatmullRomsCubic)
{
    const float k[] = {0, 0, 1, 0};
    EXPECT_EQ(spline(0.5f, 4, k), ((-3 * 0.5f + 4) * 0.5f + 1) * 0.5f * 0.5f);
}

TEST(Spline, OfFewerThanFourKnotsIsReportedAndGivesTheFirst)
{
    zebtest::Reports reports;
    const float k[] = {7, 1, 5};
    EXPECT_EQ(spline(0.5f, 3, k), 7);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0],
              (zebtest::Report{15, 2820, "Catmull-Rom splines require at least 4 control points"}));
}

TEST(Spline, OfNoKnotsIsReportedAndGivesZero)
{
    zebtest::Reports reports;
    EXPECT_EQ(spline(0.5f, 0, static_cast<const float*>(nullptr)), 0);
    EXPECT_EQ(reports.size(), 1u);
}

TEST(Noise, IsAHalfOnTheLattice)
{
    for (float x : {-3.0f, 0.0f, 1.0f, 255.0f, 1000.0f}) {
        EXPECT_EQ(noise(x), 0.5f);
        EXPECT_EQ(noise(x, 2), 0.5f);
        EXPECT_EQ(noise(Point(x, 2, -5)), 0.5f);
    }
}

TEST(Noise, OfOneDimensionUsesTheGradientsInOrder)
{
    const Tables t;
    for (float x = -20; x < 300; x += 0.3125f) {
        const Lattice l(x);
        const float left = l.f * t.G[l.i0].x, right = l.g * t.G[l.i1].x;
        const float n = left + l.s * (right - left);
        ASSERT_NEAR(noise(x), n * 0.75f + 0.5f, 1e-6f) << x;
    }
}

TEST(Noise, OfTwoDimensionsBlendsFourPermutedGradients)
{
    const Tables t;
    const auto corner = [&t](std::size_t i, std::size_t j, float x, float y) {
        const Point& G = t.G[static_cast<std::size_t>(t.P[i]) + j];
        return G.x * x + G.y * y;
    };
    for (float u = -5; u < 5; u += 0.4375f) {
        for (float v = -5; v < 5; v += 0.3125f) {
            const Lattice a(u), b(v);
            const float bottom =
                corner(a.i0, b.i0, a.f, b.f) * (1 - a.s) + corner(a.i1, b.i0, a.g, b.f) * a.s;
            const float top =
                corner(a.i0, b.i1, a.f, b.g) * (1 - a.s) + corner(a.i1, b.i1, a.g, b.g) * a.s;
            const float n = bottom * (1 - b.s) + top * b.s;
            ASSERT_NEAR(noise(u, v), n * 0.75f + 0.5f, 1e-5f) << u << ", " << v;
        }
    }
}

TEST(Noise, RepeatsEvery256)
{
    const float x = 3.25f;
    EXPECT_EQ(noise(x), noise(x + 256));
    EXPECT_EQ(noise(x, 0.5f), noise(x, 256.5f));
    EXPECT_EQ(noise(Point(x, 0.5f, 0.75f)), noise(Point(x + 256, 0.5f, 256.75f)));
}

TEST(Noise, IsContinuousAcrossTheLattice)
{
    for (float x : {-3.0f, 0.0f, 5.0f}) {
        EXPECT_NEAR(noise(x - 0.002f), noise(x + 0.002f), 0.01f);
        EXPECT_NEAR(noise(x - 0.002f, 0.5f), noise(x + 0.002f, 0.5f), 0.01f);
        EXPECT_NEAR(noise(Point(0.5f, 0.5f, x - 0.002f)), noise(Point(0.5f, 0.5f, x + 0.002f)),
                    0.01f);
    }
}

TEST(Noise, VariesAlongEveryCoordinate)
{
    float least[3] = {1, 1, 1}, most[3] = {0, 0, 0};
    for (float x = 0.1f; x < 50; x += 0.7f) {
        const float values[3] = {noise(Point(x, 0.3f, 0.4f)), noise(Point(0.3f, x, 0.4f)),
                                 noise(Point(0.3f, 0.4f, x))};
        for (int i = 0; i < 3; ++i) {
            least[i] = std::fmin(least[i], values[i]);
            most[i] = std::fmax(most[i], values[i]);
        }
    }
    for (int i = 0; i < 3; ++i) EXPECT_GT(most[i] - least[i], 0.2f) << i;
}

TEST(Interpolation, Lerp)
{
    EXPECT_EQ(lerp(0, 2, 6), 2);
    EXPECT_EQ(lerp(0.25f, 2, 6), 3);
    EXPECT_EQ(lerp(1, 2, 6), 6);
}

TEST(Interpolation, BilerpRunsOverFourCorners)
{
    EXPECT_EQ(bilerp(0, 0, 1, 2, 4, 8), 1);
    EXPECT_EQ(bilerp(1, 0, 1, 2, 4, 8), 2);
    EXPECT_EQ(bilerp(0, 1, 1, 2, 4, 8), 4);
    EXPECT_EQ(bilerp(1, 1, 1, 2, 4, 8), 8);
    EXPECT_EQ(bilerp(0.5f, 0.25f, 1, 2, 4, 8), 1.5f * 0.75f + 6 * 0.25f);
}

TEST(Interpolation, TrilerpRunsOverEightCorners)
{
    const float corners[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    for (int i = 0; i < 8; ++i) {
        const float u = i & 1 ? 1 : 0, v = i & 2 ? 1 : 0, w = i & 4 ? 1 : 0;
        EXPECT_EQ(trilerp(u, v, w, corners), corners[i]) << i;
    }
    EXPECT_EQ(trilerp(0.5f, 0.5f, 0.25f, corners), 3.5f);
}

TEST(Interpolation, BarylerpRunsOverATriangle)
{
    EXPECT_EQ(barylerp(0, 0, 1, 2, 4), 1);
    EXPECT_EQ(barylerp(1, 0, 1, 2, 4), 2);
    EXPECT_EQ(barylerp(0, 1, 1, 2, 4), 4);
    EXPECT_EQ(barylerp(0.5f, 0.25f, 1, 2, 4), 1 + 0.5f * 1 + 0.25f * 3);
    EXPECT_EQ(barylerp(1, 1, 1, 2, 4), 5);  // the fourth corner of the parallelogram
}

TEST(Quantize, ScalesAndRounds)
{
    Random random(1);
    EXPECT_EQ(quantize(1, 255, 0, 255, 0, random), 255);
    EXPECT_EQ(quantize(0.5f, 255, 0, 255, 0, random), 128);  // 127.5
    EXPECT_EQ(quantize(0.25f, 100, 0, 255, 0, random), 25);
}

TEST(Quantize, RoundsHalfAwayFromZero)
{
    Random random(1);
    EXPECT_EQ(quantize(0.5f, 1, -10, 10, 0, random), 1);
    EXPECT_EQ(quantize(-0.5f, 1, -10, 10, 0, random), -1);
    EXPECT_EQ(quantize(2.5f, 1, -10, 10, 0, random), 3);
    EXPECT_EQ(quantize(-2.5f, 1, -10, 10, 0, random), -3);
    EXPECT_EQ(quantize(0.49f, 1, -10, 10, 0, random), 0);
}

// Whatever the value, to the number that floor() and ceil() give.
TEST(Quantize, RoundsBeforeItClamps)
{
    constexpr float kInf = std::numeric_limits<float>::infinity();
    std::mt19937 values(5);
    std::uniform_real_distribution<float> near(-6, 6);
    for (int k = 0; k < 100000; ++k) {
        const float x = k % 2 ? near(values) : std::round(near(values) * 2) / 2;
        const double rounded = x >= 0 ? std::floor(double{x} + 0.5) : std::ceil(double{x} - 0.5);
        const auto expected = static_cast<long>(std::clamp(rounded, -4.0, 3.0));
        Random random(1);
        ASSERT_EQ(quantize(x, 1, -4, 3, 0, random), expected) << x;
    }
    Random random(1);
    EXPECT_EQ(quantize(kInf, 1, -4, 3, 0, random), 3);
    EXPECT_EQ(quantize(-kInf, 1, -4, 3, 0, random), -4);
    EXPECT_EQ(quantize(std::numeric_limits<float>::quiet_NaN(), 1, -4, 3, 0, random), -4);
}

TEST(Quantize, ClampsAfterRounding)
{
    Random random(1);
    EXPECT_EQ(quantize(-0.002f, 255, 0, 255, 0, random), 0);
    EXPECT_EQ(quantize(-0.002f, 255, -5, 255, 0, random), -1);
    EXPECT_EQ(quantize(2, 255, 0, 255, 0, random), 255);
    EXPECT_EQ(quantize(2, 255, 0, 300, 0, random), 300);
    EXPECT_EQ(quantize(1e30f, 255, 0, 255, 0, random), 255);
    EXPECT_EQ(quantize(-1e30f, 255, 0, 255, 0, random), 0);
}

TEST(Quantize, DithersByADrawBetweenMinusOneAndOne)
{
    Random random(3), draws(3);
    for (int i = 0; i < 100; ++i) {
        const double r = draws.next() * (1.0 / 32767) * 2 - 1;
        EXPECT_EQ(quantize(0.5f, 100, -1000, 1000, 40, random), std::lround(r * 40 + 50)) << i;
    }
}

TEST(Quantize, DrawsOnceEvenWithoutDither)
{
    Random random(3), draws(3);
    quantize(0.5f, 255, 0, 255, 0, random);
    draws.next();
    EXPECT_EQ(random.next(), draws.next());
}
