#include "hider/pixel_filter.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

using namespace zeb;

namespace
{

float flat(float, float, float, float) { return 3; }

// Of one sample, so far from the pixel's centre.
float weight(const PixelFilter& filter, float dx, float dy)
{
    WeightBlock block;
    block.count = 1;
    block.dx[0] = dx;
    block.dy[0] = dy;
    filter.weigh(block);
    return block.weights[0];
}

// What the host's filter was asked, one after the other.
std::vector<std::array<float, 4>> gAsked;
float noting(float dx, float dy, float xwidth, float ywidth)
{
    gAsked.push_back({dx, dy, xwidth, ywidth});
    return dx - dy;
}

class SamplesToFilter : public testing::Test
{
protected:
    static constexpr float kX = 7.5f, kY = 3.5f;

    // Around the pixel, some of them outside the filter's box, with colours of all kinds.
    std::vector<PackedSample> samples(std::size_t count)
    {
        constexpr float kInf = std::numeric_limits<float>::infinity();
        std::uniform_real_distribution<float> offset(-1.3f, 1.3f), value(-0.5f, 2);
        std::vector<PackedSample> made;
        for (std::size_t k = 0; k < count; ++k) {
            PackedSample s{kX + offset(random), kY + offset(random),
                           Color(value(random), value(random), value(random)), value(random),
                           double{value(random)} * 1e-38};
            if (std::fabs(s.x - kX) > 1) {
                // Counts for nothing.
                s.color.r = std::numeric_limits<float>::quiet_NaN();
                s.depth = double{kInf};
            }
            made.push_back(s);
        }
        return made;
    }
    // One sample after the other, by the formula.
    static FilteredPixel meanOneByOne(const PixelFilter& filter,
                                      const std::vector<PackedSample>& samples)
    {
        double sum = 0, red = 0, green = 0, blue = 0, alpha = 0, depth = 0;
        for (const PackedSample& s : samples) {
            const double w = double{weight(filter, s.x - kX, s.y - kY)};
            if (!(std::fabs(w) >= 1e-10)) continue;
            sum += w;
            red += w * double{s.color.r};
            green += w * double{s.color.g};
            blue += w * double{s.color.b};
            alpha += w * double{s.alpha};
            depth += w * s.depth;
        }
        if (std::fabs(sum) < 1e-10) return {gBlack, 0, 1};
        return {Color(static_cast<float>(red / sum), static_cast<float>(green / sum),
                      static_cast<float>(blue / sum)),
                static_cast<float>(alpha / sum), depth / sum};
    }
    static FilteredPixel mean(const PixelFilter& filter, const std::vector<PackedSample>& samples)
    {
        FilteredSamples filtered(filter, kX, kY);
        // In two parts, as rows come.
        const long half = static_cast<long>(samples.size() / 2);
        filtered.add(samples.data(), half);
        filtered.add(samples.data() + half, static_cast<long>(samples.size()) - half);
        return filtered.mean().mean(1);
    }
    static void expectSame(const FilteredPixel& a, const FilteredPixel& b)
    {
        EXPECT_EQ(a.color, b.color);
        EXPECT_EQ(a.alpha, b.alpha);
        EXPECT_EQ(a.depth, b.depth);
    }

    std::mt19937 random{12};
};

}  // namespace

TEST(PixelFilter, TheDefaultAgreesWithTheGaussian)
{
    Option option;
    option.filterXwidth = 3;
    option.filterYwidth = 2;
    const PixelFilter filter(option);
    for (float dx = -2; dx <= 2; dx += 0.25f) {
        for (float dy = -2; dy <= 2; dy += 0.25f)
            EXPECT_NEAR(weight(filter, dx, dy), zebGaussianFilter(dx, dy, 3, 2), 1e-6);
    }
    EXPECT_TRUE(filter.builtIn());
}

TEST(PixelFilter, TheGaussianIsADensityOfOneDimension)
{
    // s = sqrt((2^2 + 2^2) / 4) / 2
    const double s = std::sqrt(2.0) / 2;
    EXPECT_NEAR(weight(PixelFilter(Option()), 0, 0), 1 / (s * std::sqrt(2 * M_PI)), 1e-6);
    EXPECT_NEAR(weight(PixelFilter(Option()), 0.6f, 0.8f),
                std::exp(-1 / (2 * s * s)) / (s * std::sqrt(2 * M_PI)), 1e-6);
}

TEST(PixelFilter, TheEdgeIsInside)
{
    Option option;
    EXPECT_GT(weight(PixelFilter(option), 1, -1), 0);
    EXPECT_EQ(weight(PixelFilter(option), 1.0001f, 0), 0);
    option.pixelFilter = zebBoxFilter;
    EXPECT_EQ(weight(PixelFilter(option), 1, -1), 1);
    EXPECT_EQ(weight(PixelFilter(option), 0, -1.0001f), 0);
}

TEST(PixelFilter, TheOtherFiltersAreAskedThemselves)
{
    Option option;
    option.pixelFilter = zebTriangleFilter;
    EXPECT_EQ(weight(PixelFilter(option), 0.25f, -0.5f), 0.5f);
    option.pixelFilter = zebSincFilter;
    EXPECT_EQ(weight(PixelFilter(option), 0, 0), 1);
    EXPECT_NEAR(weight(PixelFilter(option), 0.3f, 0.4f), 2 / M_PI, 1e-6);
    option.pixelFilter = zebCatmullRomFilter;
    EXPECT_EQ(weight(PixelFilter(option), 0, 0), 1);
    EXPECT_NEAR(weight(PixelFilter(option), 1, 0), 0, 1e-6);
    option.pixelFilter = flat;
    EXPECT_EQ(weight(PixelFilter(option), 9, 9), 3);
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

TEST_F(SamplesToFilter, AreSummedUpOneAfterTheOther)
{
    const FilterFunction filters[] = {zebGaussianFilter, zebBoxFilter, zebTriangleFilter,
                                      zebCatmullRomFilter, zebSincFilter};
    for (const FilterFunction function : filters) {
        Option option;
        option.pixelFilter = function;
        const PixelFilter filter(option);
        for (const std::size_t count : {0, 1, 2, 15, 16, 17, 63, 64, 65, 128, 129, 200}) {
            const auto some = samples(count);
            expectSame(mean(filter, some), meanOneByOne(filter, some));
        }
    }
}

TEST_F(SamplesToFilter, GiveTheSameBitsAtEveryWidth)
{
    const auto some = samples(150);
    for (const int lanes : {4, 8, 16}) {
        if (!weightKernel(lanes)) continue;
        expectSame(mean(PixelFilter(Option(), weightKernel(lanes)), some),
                   mean(PixelFilter(Option(), weightKernel(1)), some));
    }
}

TEST_F(SamplesToFilter, OfAHostAreAskedForInTheirOrder)
{
    Option option;
    option.pixelFilter = noting;
    option.filterXwidth = 3;
    option.filterYwidth = 4;
    const auto some = samples(100);
    gAsked.clear();
    mean(PixelFilter(option), some);
    ASSERT_EQ(gAsked.size(), some.size());
    for (std::size_t k = 0; k < some.size(); ++k) {
        const std::array<float, 4> expected{some[k].x - kX, some[k].y - kY, 3, 4};
        EXPECT_EQ(gAsked[k], expected) << k;
    }
}

// As where the filter is narrower than samples are apart.
TEST_F(SamplesToFilter, AllOutsideAreBlackAndFar)
{
    Option option;
    option.filterXwidth = option.filterYwidth = 0.1f;
    const PackedSample apart[] = {{kX - 0.2f, kY, gWhite, 1, 0.5}, {kX + 0.2f, kY, gWhite, 1, 0.5}};
    const PixelFilter filter(option);
    FilteredSamples filtered(filter, kX, kY);
    filtered.add(apart, 2);
    expectSame(filtered.mean().mean(1), {gBlack, 0, 1});
}

TEST_F(SamplesToFilter, ThatAreNoNumbersMakeOnlyTheirChannelNone)
{
    constexpr float kInf = std::numeric_limits<float>::infinity();
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    const PackedSample some[] = {{kX, kY, Color(kNan, kInf, 0.5f), 0.25f, 0.5},
                                 {kX, kY, Color(1, 1, 0.5f), 0.25f, 0.5}};
    const PixelFilter filter{Option()};
    FilteredSamples filtered(filter, kX, kY);
    filtered.add(some, 2);
    const FilteredPixel p = filtered.mean().mean(1);
    EXPECT_TRUE(std::isnan(p.color.r));
    EXPECT_EQ(p.color.g, kInf);
    EXPECT_EQ(p.color.b, 0.5f);
    EXPECT_EQ(p.alpha, 0.25f);
    EXPECT_EQ(p.depth, 0.5);
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
