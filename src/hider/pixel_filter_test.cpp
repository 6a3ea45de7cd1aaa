#include "hider/pixel_filter.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace zeb;

namespace
{

float flat(float, float, float, float) { return 3; }

}  // namespace

TEST(PixelFilter, TheDefaultAgreesWithTheGaussian)
{
    Option option;
    option.filterXwidth = 3;
    option.filterYwidth = 2;
    const PixelFilter filter(option);
    for (float dx = -2; dx <= 2; dx += 0.25f) {
        for (float dy = -2; dy <= 2; dy += 0.25f)
            EXPECT_NEAR(filter(dx, dy), zebGaussianFilter(dx, dy, 3, 2), 1e-6);
    }
    EXPECT_TRUE(filter.builtIn());
}

TEST(PixelFilter, TheGaussianIsADensityOfOneDimension)
{
    // s = sqrt((2^2 + 2^2) / 4) / 2
    const double s = std::sqrt(2.0) / 2;
    EXPECT_NEAR(PixelFilter(Option())(0, 0), 1 / (s * std::sqrt(2 * M_PI)), 1e-6);
    EXPECT_NEAR(PixelFilter(Option())(0.6f, 0.8f),
                std::exp(-1 / (2 * s * s)) / (s * std::sqrt(2 * M_PI)), 1e-6);
}

TEST(PixelFilter, TheEdgeIsInside)
{
    Option option;
    EXPECT_GT(PixelFilter(option)(1, -1), 0);
    EXPECT_EQ(PixelFilter(option)(1.0001f, 0), 0);
    option.pixelFilter = zebBoxFilter;
    EXPECT_EQ(PixelFilter(option)(1, -1), 1);
    EXPECT_EQ(PixelFilter(option)(0, -1.0001f), 0);
}

TEST(PixelFilter, TheOtherFiltersAreAskedThemselves)
{
    Option option;
    option.pixelFilter = zebTriangleFilter;
    EXPECT_EQ(PixelFilter(option)(0.25f, -0.5f), 0.5f);
    option.pixelFilter = zebSincFilter;
    EXPECT_EQ(PixelFilter(option)(0, 0), 1);
    EXPECT_NEAR(PixelFilter(option)(0.3f, 0.4f), 2 / M_PI, 1e-6);
    option.pixelFilter = zebCatmullRomFilter;
    EXPECT_EQ(PixelFilter(option)(0, 0), 1);
    EXPECT_NEAR(PixelFilter(option)(1, 0), 0, 1e-6);
    option.pixelFilter = flat;
    EXPECT_EQ(PixelFilter(option)(9, 9), 3);
    EXPECT_FALSE(PixelFilter(option).builtIn());
}

TEST(PixelFilter, AMeanIsWeighted)
{
    WeightedMean mean;
    mean.add(1, Color(1, 0, 0), 1, 0.5);
    mean.add(3, Color(0, 1, 0), 0, 0.25);
    const FilteredPixel p = mean.mean(1);
    EXPECT_EQ(p.color, Color(0.25f, 0.75f, 0));
    EXPECT_EQ(p.alpha, 0.25f);
    EXPECT_EQ(p.depth, 0.3125);
    EXPECT_EQ(mean.meanWeight(), 2);
}

TEST(NearestDepth, IsTheLeastInThePixelsSquare)
{
    NearestDepth nearest(PixelFilter(Option()), 1);
    nearest.add(0.6f, 0, 0.1);
    nearest.add(-0.5f, 0.49f, 0.4);
    nearest.add(0, -0.5f, 0.3);
    nearest.add(0.1f, 0.1f, 0.5);
    nearest.add(0, 0.5f, 0.2);  // the next pixel's
    EXPECT_EQ(nearest.depth(), 0.3);
}

TEST(NearestDepth, TakesTheUpperAndTheLeftBorderToThePixel)
{
    for (const Point& border : {Point(-0.5f, 0, 0), Point(0, -0.5f, 0)}) {
        NearestDepth nearest(PixelFilter(Option()), 1);
        nearest.add(0, 0, 0.5);
        nearest.add(border.x, border.y, 0.25);
        EXPECT_EQ(nearest.depth(), 0.25);
    }
}

TEST(NearestDepth, LooksNoFurtherThanANarrowFilter)
{
    Option option;
    option.filterXwidth = 0.5f;
    NearestDepth nearest(PixelFilter(option), 1);
    nearest.add(0.3f, 0, 0.1);
    nearest.add(0.2f, 0.45f, 0.2);
    EXPECT_EQ(nearest.depth(), 0.2);
}

TEST(NearestDepth, WithoutSamplesInTheSquareIsThatOfTheNextOne)
{
    NearestDepth nearest(PixelFilter(Option()), 1);
    EXPECT_EQ(nearest.depth(), 1);
    nearest.add(0.9f, 0, 0.1);
    nearest.add(0.6f, 0, 0.3);
    nearest.add(0.6f, 0.6f, 0.2);
    EXPECT_EQ(nearest.depth(), 0.3);
}

TEST(PixelFilter, WithoutWeightAPixelIsBlackAndFar)
{
    WeightedMean mean;
    mean.add(1e-11, gWhite, 1, 0.5);
    EXPECT_EQ(mean.meanWeight(), 0);
    mean.add(1, gWhite, 1, 0.5);
    mean.add(-1, gWhite, 1, 0.5);
    const FilteredPixel p = mean.mean(1);
    EXPECT_EQ(p.color, gBlack);
    EXPECT_EQ(p.alpha, 0);
    EXPECT_EQ(p.depth, 1);
}
