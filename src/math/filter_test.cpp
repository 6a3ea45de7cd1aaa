#include "math/filter.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace zeb;

namespace
{

using Filter = float (*)(float, float, float, float);
const Filter kFilters[] = {zebBoxFilter, zebTriangleFilter, zebGaussianFilter, zebCatmullRomFilter,
                           zebSincFilter};

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
