#include "math/filter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

using namespace zeb;

namespace
{

using Filter = float (*)(float, float, float, float);
const Filter kFilters[] = {zebBoxFilter, zebTriangleFilter, zebGaussianFilter, zebCatmullRomFilter,
                           zebSincFilter};

// How far a value is from the exact one, in units of the last place.
double ulps(float found, long double exact)
{
    const float size = std::fabs(static_cast<float>(exact));
    const float unit = std::nextafter(size, std::numeric_limits<float>::infinity()) - size;
    return static_cast<double>(std::fabs(static_cast<long double>(found) - exact) /
                               static_cast<long double>(unit));
}

}  // namespace

TEST(Filter, IsZeroOutsideItsBox)
{
    for (Filter filter : kFilters) {
        EXPECT_EQ(filter(1.01f, 0, 2, 4), 0);
        EXPECT_EQ(filter(-1.01f, 0, 2, 4), 0);
        EXPECT_EQ(filter(0, 2.01f, 2, 4), 0);
        EXPECT_EQ(filter(0, -2.01f, 2, 4), 0);
        EXPECT_NE(filter(0.25f, 0.25f, 2, 4), 0);
    }
}

TEST(Filter, IsSymmetric)
{
    for (Filter filter : kFilters) {
        const float value = filter(0.25f, 0.5f, 3, 3);
        EXPECT_EQ(filter(-0.25f, 0.5f, 3, 3), value);
        EXPECT_EQ(filter(0.25f, -0.5f, 3, 3), value);
        EXPECT_EQ(filter(0.5f, 0.25f, 3, 3), value);
    }
}

TEST(BoxFilter, IsOneWithItsEdge)
{
    EXPECT_EQ(zebBoxFilter(0, 0, 2, 4), 1);
    EXPECT_EQ(zebBoxFilter(1, 0, 2, 4), 1);
    EXPECT_EQ(zebBoxFilter(-1, -2, 2, 4), 1);
}

TEST(TriangleFilter, FallsToTheEdgeOfTheNearerSide)
{
    EXPECT_EQ(zebTriangleFilter(0, 0, 2, 4), 1);
    EXPECT_EQ(zebTriangleFilter(0.5f, 0, 2, 4), 0.5f);
    EXPECT_EQ(zebTriangleFilter(0, 0.5f, 2, 4), 0.75f);
    EXPECT_EQ(zebTriangleFilter(0.25f, -1.5f, 2, 4), 0.25f);
    EXPECT_EQ(zebTriangleFilter(1, 0, 2, 4), 0);
}

// s = sqrt((4 + 4) / 4) / 2, s^2 = 1/2
TEST(GaussianFilter, IsADensityOfOneDimension)
{
    const float peak = 1 / (std::sqrt(0.5f) * 2.50662827462f);
    EXPECT_NEAR(zebGaussianFilter(0, 0, 2, 2), peak, 1e-6f);
    EXPECT_NEAR(zebGaussianFilter(1, 0, 2, 2), peak * std::exp(-1.0f), 1e-6f);
    EXPECT_NEAR(zebGaussianFilter(0.6f, 0.8f, 2, 2), peak * std::exp(-1.0f), 1e-6f);
    EXPECT_NEAR(zebGaussianFilter(1, 1, 2, 2), peak * std::exp(-2.0f), 1e-6f);
}

// s = sqrt((36 + 64) / 4) / 2 = 2.5
TEST(GaussianFilter, TakesItsSpreadFromBothWidths)
{
    EXPECT_NEAR(zebGaussianFilter(0, 2.5f, 6, 8), std::exp(-0.5f) / (2.5f * 2.50662827462f), 1e-6f);
}

TEST(CatmullRomFilter, IsOneAtTheCentreAndZeroAtWholePixels)
{
    EXPECT_EQ(zebCatmullRomFilter(0, 0, 8, 8), 1);
    EXPECT_NEAR(zebCatmullRomFilter(1, 0, 8, 8), 0, 1e-6f);
    EXPECT_EQ(zebCatmullRomFilter(0, 2, 8, 8), 0);
    EXPECT_EQ(zebCatmullRomFilter(0, 3, 8, 8), 0);
}

// r = 0.5: the knots 0 1 0 0 at 1/2, ((3/2 - 5) / 2) / 2 + 2, halved.
// r = 1.5: the knots 1 0 0 0 at 1/2, ((-1/2 + 2) / 2 - 1) / 2, halved.
TEST(CatmullRomFilter, IsTheSplineOverTheDistance)
{
    EXPECT_NEAR(zebCatmullRomFilter(0.5f, 0, 8, 8), 0.5625f, 1e-6f);
    EXPECT_NEAR(zebCatmullRomFilter(0.3f, 0.4f, 8, 8), 0.5625f, 1e-6f);
    EXPECT_NEAR(zebCatmullRomFilter(1.5f, 0, 8, 8), -0.0625f, 1e-6f);
}

TEST(SincFilter, IsOneAtTheCentre)
{
    EXPECT_EQ(zebSincFilter(0, 0, 4, 4), 1);
    EXPECT_EQ(zebSincFilter(1e-11f, 0, 4, 4), 1);
}

TEST(SincFilter, IsTheSineOverTheAngle)
{
    const float pi = 3.14159274f;
    EXPECT_NEAR(zebSincFilter(0.5f, 0, 4, 4), 2 / pi, 1e-6f);
    EXPECT_NEAR(zebSincFilter(0.3f, 0.4f, 4, 4), 2 / pi, 1e-6f);
    EXPECT_NEAR(zebSincFilter(1, 0, 4, 4), 0, 1e-6f);
    EXPECT_NEAR(zebSincFilter(0, 1.5f, 4, 4), -2 / (3 * pi), 1e-6f);
}

// At whole pixels, where it is next to nothing, to as little.
TEST(SincFilter, IsWithinTwoUnitsInTheLastPlace)
{
    const long double pi = 3.14159265358979323846264338328L;
    std::mt19937 random(3);
    double worst = 0, worstAtWholes = 0;
    for (int k = 0; k < 1000000; ++k) {
        const float width = k % 2 ? 4.0f : 100.0f;
        std::uniform_real_distribution<float> offset(-width / 2, width / 2);
        const float dx = offset(random), dy = k % 3 ? offset(random) : 0;
        const float found = zebSincFilter(dx, dy, width, width);
        const long double x = static_cast<long double>(dx), y = static_cast<long double>(dy);
        const long double t = std::sqrt(x * x + y * y) * pi;
        if (t == 0) continue;
        const long double exact = std::sin(t) / t;
        if (std::fabs(exact) > 1e-6L) {
            worst = std::max(worst, ulps(found, exact));
        } else {
            worstAtWholes =
                std::max(worstAtWholes,
                         static_cast<double>(std::fabs(static_cast<long double>(found) - exact)));
        }
    }
    EXPECT_LE(worst, 0.51);
    EXPECT_LE(worstAtWholes, 1e-13);
}

TEST(SincFilter, ChangesSignWithEveryPixel)
{
    for (int n = 0; n < 40; ++n) {
        const float value = zebSincFilter(static_cast<float>(n) + 0.5f, 0, 100, 100);
        EXPECT_EQ(value > 0, n % 2 == 0) << n;
        EXPECT_EQ(zebSincFilter(static_cast<float>(n + 1), 0, 100, 100), 0) << n;
    }
}

TEST(GaussianFilter, IsWithinTwoUnitsInTheLastPlaceOfItsExponential)
{
    std::mt19937 random(4);
    std::uniform_real_distribution<float> offset(-2, 2);
    double worst = 0;
    for (int k = 0; k < 1000000; ++k) {
        const float dx = offset(random), dy = offset(random);
        const float s = std::sqrt(2.0f);
        const long double exact =
            std::exp(static_cast<long double>(-(dx * dx + dy * dy) / (2 * s * s))) /
            static_cast<long double>(s * 2.50662827462f);
        worst = std::max(worst, ulps(zebGaussianFilter(dx, dy, 4, 4), exact));
    }
    EXPECT_LE(worst, 1.6);
}
