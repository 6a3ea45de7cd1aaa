#include "hider/bucket.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "support/grids.h"
#include "util/cancel.h"

using namespace zeb;

namespace
{

// What a bucket sends.
struct Device : Display {
    struct Span {
        long x0, x1, y;
        std::vector<std::uint32_t> words;
    };
    explicit Device(int n) : channels(n) {}
    void span(long x0, long x1, long y, const std::uint32_t* words) override
    {
        spans.push_back({x0, x1, y, {words, words + (x1 - x0 + 1) * channels}});
    }
    float value(std::size_t row, std::size_t word) const
    {
        float v;
        std::memcpy(&v, &spans.at(row).words.at(word), sizeof v);
        return v;
    }
    int channels;
    std::vector<Span> spans;
};

struct Position {
    float x, y;
};
std::vector<Position> gPositions;
float recording(float dx, float dy, float, float)
{
    gPositions.push_back({dx, dy});
    return 1;
}
float none(float, float, float, float) { return 0; }

class BucketTest : public testing::Test
{
protected:
    BucketTest()
    {
        gPositions.clear();
        option.projection = false;
        option.samples = 0x307;
        option.sampleCount = 5;
        option.rgb = option.alpha = option.depth = true;
        option.colorQuantizer = {0, 0, 0, 0};
        option.jitter = 0;
    }
    // A grid of one micropolygon, or of a checker of colours n cells across.
    std::shared_ptr<Grid> square(float x0, float y0, float x1, float y1, float z,
                                 const Color& color, int n = 1)
    {
        const auto size = static_cast<unsigned short>(n);
        auto grid =
            std::make_shared<Grid>(size, size, attrib, Transform(), 1, false, false, ArgList());
        for (int j = 0; j <= n; ++j) {
            for (int i = 0; i <= n; ++i) {
                const float u = static_cast<float>(i) / static_cast<float>(n),
                            v = static_cast<float>(j) / static_cast<float>(n);
                grid->vertex(i, j).P = Point(x0 + (x1 - x0) * u, y0 + (y1 - y0) * v, z);
                grid->setColor(i, j, (i + j) % 2 ? gBlack : color);
            }
        }
        grid->project(RenderFrame(option, Matrix()));
        return grid;
    }
    template <class Kind = UniformBucket>
    void render(long x0, long x1, long y0, long y1,
                const std::vector<std::shared_ptr<Grid>>& grids = {})
    {
        const RenderFrame frame(option, Matrix());
        Kind bucket(frame, x0, x1, y0, y1);
        for (const auto& grid : grids) bucket.add(std::make_shared<Piece>(grid));
        bucket.render(device, scratch);
    }
    // Of the words that were sent for one channel, the least and the largest.
    std::pair<std::uint32_t, std::uint32_t> range(int channel) const
    {
        std::vector<std::uint32_t> words;
        for (const Device::Span& span : device.spans) {
            for (std::size_t k = static_cast<std::size_t>(channel); k < span.words.size(); k += 5)
                words.push_back(span.words[k]);
        }
        const auto [least, largest] = std::minmax_element(words.begin(), words.end());
        return {*least, *largest};
    }

    Option option;
    std::shared_ptr<Attrib> attrib = std::make_shared<Attrib>();
    Device device{5};
    BucketScratch scratch;
};

using UniformBucketTest = BucketTest;
using AdaptiveBucketTest = BucketTest;

}  // namespace

TEST_F(BucketTest, TheWindowReachesHalfAFilterBeyondThePixelCentres)
{
    option.filterYwidth = 4;
    const RenderFrame frame(option, Matrix());
    const auto w = UniformBucket(frame, 12, 23, 0, 11).sampleWindow();
    EXPECT_EQ(w.xmin, 11.5f);
    EXPECT_EQ(w.xmax, 24.5f);
    EXPECT_EQ(w.ymin, -1.5f);
    EXPECT_EQ(w.ymax, 13.5f);
}

TEST_F(BucketTest, SendsARowAtATimeFromTheTop)
{
    render(3, 5, 7, 8);
    ASSERT_EQ(device.spans.size(), 2u);
    EXPECT_EQ(device.spans[0].x0, 3);
    EXPECT_EQ(device.spans[0].x1, 5);
    EXPECT_EQ(device.spans[0].y, 7);
    EXPECT_EQ(device.spans[1].y, 8);
}

TEST_F(BucketTest, AnEmptyPixelIsBlackAndFar)
{
    render(0, 0, 0, 0);
    ASSERT_EQ(device.spans.size(), 1u);
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(device.value(0, i), 0);
    EXPECT_EQ(device.value(0, 4), 1);
}

TEST_F(BucketTest, APixelWithoutWeightIsBlackAndFar)
{
    option.pixelFilter = none;
    render(0, 0, 0, 0, {square(-5, -5, 5, 5, 0.5f, gWhite)});
    EXPECT_EQ(device.value(0, 0), 0);
    EXPECT_EQ(device.value(0, 3), 0);
    EXPECT_EQ(device.value(0, 4), 1);
}

TEST_F(BucketTest, WordsAreRedGreenBlueAlphaDepth)
{
    render(0, 0, 0, 0, {square(-5, -5, 5, 5, 0.625f, Color(0.25f, 0.5f, 0.75f))});
    EXPECT_EQ(device.value(0, 0), 0.25f);
    EXPECT_EQ(device.value(0, 1), 0.5f);
    EXPECT_EQ(device.value(0, 2), 0.75f);
    EXPECT_NEAR(device.value(0, 3), 1, 1e-6);
    EXPECT_EQ(device.value(0, 4), 0.625f);
}

TEST_F(BucketTest, OnlyTheChosenSamplesAreSent)
{
    option.rgb = false;
    option.sampleCount = 2;
    device.channels = 2;
    render(0, 0, 0, 0, {square(-5, -5, 5, 5, 0.625f, gWhite)});
    EXPECT_NEAR(device.value(0, 0), 1, 1e-6);
    EXPECT_EQ(device.value(0, 1), 0.625f);
}

TEST_F(BucketTest, FloatsAreClamped)
{
    render(0, 0, 0, 0, {square(-5, -5, 5, 5, 0.5f, Color(3, -2, 1))});
    EXPECT_EQ(device.value(0, 0), 1);
    EXPECT_EQ(device.value(0, 1), 0);
}

TEST_F(BucketTest, FloatsPassWithMendedQuirks)
{
    option.quirks = false;
    render(0, 0, 0, 0, {square(-5, -5, 5, 5, 0.5f, Color(3, -2, 1))});
    EXPECT_EQ(device.value(0, 0), 3);
    EXPECT_EQ(device.value(0, 1), -2);
}

TEST_F(BucketTest, ColoursAreExposed)
{
    option.gain = 0.5f;
    option.inverseGamma = 2;
    render(0, 0, 0, 0, {square(-5, -5, 5, 5, 0.5f, Color(1, 0.5f, 0))});
    EXPECT_NEAR(device.value(0, 0), 0.25, 1e-6);
    EXPECT_NEAR(device.value(0, 1), 0.0625, 1e-6);
    EXPECT_NEAR(device.value(0, 3), 1, 1e-6) << "alpha is not";
}

TEST_F(BucketTest, QuantizedWordsAreIntegers)
{
    option.colorQuantizer = {100, 10, 90, 0};
    option.depthQuantizer = {1000, 0, 1000, 0};
    render(0, 0, 0, 0, {square(-5, -5, 5, 5, 0.25f, Color(0, 0.5f, 1))});
    EXPECT_EQ(device.spans.at(0).words, (std::vector<std::uint32_t>{10, 50, 90, 90, 250}));
}

TEST_F(BucketTest, AOneOf1StillMakesIntegers)
{
    option.colorQuantizer = option.depthQuantizer = {1, 0, 1, 0};
    render(0, 0, 0, 0, {square(-5, -5, 5, 5, 0.25f, Color(0.25f, 0.5f, 0.75f))});
    EXPECT_EQ(device.spans.at(0).words, (std::vector<std::uint32_t>{0, 1, 1, 1, 0}));
}

TEST_F(BucketTest, AlphaIsJitteredAsColourIs)
{
    option.colorQuantizer = {1000, 0, 2000, 50};
    option.depthQuantizer = {1000, 0, 1000, 0};
    render(0, 9, 0, 9, {square(-5, -5, 20, 20, 0.5f, gWhite)});
    for (const int channel : {0, 3}) {
        const auto [least, largest] = range(channel);
        EXPECT_GE(least, 950u);
        EXPECT_LT(least, 970u);
        EXPECT_GT(largest, 1030u);
        EXPECT_LE(largest, 1050u);
    }
    EXPECT_EQ(range(4), std::pair(500u, 500u)) << "depth has a jitter of its own";
}

TEST_F(BucketTest, DepthIsJitteredByItsOwnAmplitude)
{
    option.colorQuantizer = {1000, 0, 2000, 0};
    option.depthQuantizer = {1000, 0, 1000, 50};
    render(0, 9, 0, 9, {square(-5, -5, 20, 20, 0.5f, gWhite)});
    const auto [least, largest] = range(4);
    EXPECT_GE(least, 450u);
    EXPECT_LT(least, 470u);
    EXPECT_GT(largest, 530u);
    EXPECT_LE(largest, 550u);
    EXPECT_EQ(range(0), std::pair(1000u, 1000u));
    EXPECT_EQ(range(3), std::pair(1000u, 1000u));
}

TEST_F(BucketTest, AGridGoesWithTheLastBucketThatHoldsIt)
{
    const RenderFrame frame(option, Matrix());
    std::weak_ptr<Attrib> alive;
    {
        UniformBucket a(frame, 0, 0, 0, 0);
        {
            AdaptiveBucket b(frame, 0, 0, 0, 0);
            const auto piece = std::make_shared<Piece>(square(-5, -5, 5, 5, 0.5f, gWhite));
            a.add(piece);
            b.add(piece);
            EXPECT_EQ(piece.use_count(), 3);
            alive = attrib;
            attrib.reset();
        }
        EXPECT_FALSE(alive.expired());
        a.render(device, scratch);
        EXPECT_TRUE(alive.expired()) << "released as soon as it was sampled";
    }
    EXPECT_EQ(device.value(0, 0), 1);
}

// All grids come before the samples are counted: a wish that is there already is noticed in the
// first of them, or where gaps are looked for.
TEST_F(UniformBucketTest, IsGivenUpWhileItTakesItsSamples)
{
    gCancelled = true;
    option.closeSeams = false;
    EXPECT_THROW(render(0, 3, 0, 3, {square(0, 0, 4, 4, 0.5f, gWhite)}), Cancelled);
    EXPECT_EQ(scratch.counts.samples, 0u);
    option.closeSeams = true;
    EXPECT_THROW(render(0, 3, 0, 3), Cancelled);
    EXPECT_EQ(scratch.counts.samples, 0u);
    option.closeSeams = false;
    EXPECT_THROW(render(0, 3, 0, 3), Cancelled);
    EXPECT_TRUE(device.spans.empty());
    gCancelled = false;
    render(0, 3, 0, 3);
    EXPECT_EQ(device.spans.size(), 4u);
}

TEST_F(UniformBucketTest, HasAsManySamplesAsTheWindowHolds)
{
    render(0, 11, 0, 11);
    EXPECT_EQ(scratch.counts.samples, 26u * 26u);
    scratch.counts.samples = 0;
    option.xsamples = 3;
    option.ysamples = 1;
    render(0, 1, 0, 0);
    EXPECT_EQ(scratch.counts.samples, 9u * 2u);
}

TEST_F(UniformBucketTest, WithoutJitterSamplesSitOnTheLattice)
{
    option.pixelFilter = recording;
    render(0, 0, 0, 0);
    // The window is -0.5 ... 1.5 about the centre 0.5: offsets of -0.75 ... 0.75.
    ASSERT_EQ(gPositions.size(), 16u);
    for (int k = 0; k < 16; ++k) {
        EXPECT_FLOAT_EQ(gPositions[static_cast<std::size_t>(k)].x,
                        -0.75f + 0.5f * static_cast<float>(k % 4));
        EXPECT_FLOAT_EQ(gPositions[static_cast<std::size_t>(k)].y,
                        -0.75f + 0.5f * static_cast<float>(k / 4));
    }
}

TEST_F(UniformBucketTest, JitterIsAQuarterOfTheXSpacingAtMostOnBothAxes)
{
    option.pixelFilter = recording;
    option.filterXwidth = option.filterYwidth = 8;
    option.jitter = 1;
    option.xsamples = 2;
    option.ysamples = 4;
    render(0, 0, 0, 0);
    ASSERT_EQ(gPositions.size(), 16u * 32u);
    float xmost = 0, ymost = 0;
    for (std::size_t k = 0; k < gPositions.size(); ++k) {
        const float x = -3.75f + 0.5f * static_cast<float>(k % 16);
        const float y = -3.875f + 0.25f * static_cast<float>(k / 16);
        xmost = std::max(xmost, std::fabs(gPositions[k].x - x));
        ymost = std::max(ymost, std::fabs(gPositions[k].y - y));
    }
    // h = 1 / 2 / 2, and half of it either way
    EXPECT_LE(xmost, 0.12501f);
    EXPECT_GT(xmost, 0.12f);
    EXPECT_LE(ymost, 0.12501f);
    EXPECT_GT(ymost, 0.12f);
}

// At 2.2 samples a pixel the lattice lies differently about each: some of its places are outside a
// filter's reach by less than jitter moves them.
TEST_F(UniformBucketTest, AFilterFindsTheSamplesThatJitterBroughtIntoItsReach)
{
    constexpr int kSide = 6;
    const auto inReach = [](float d) { return std::fabs(d) < 1.0999f; };
    option.pixelFilter = recording;
    option.filterXwidth = option.filterYwidth = 2.2f;
    option.xsamples = option.ysamples = 2.2f;
    option.jitter = 1;
    render(0, kSide - 1, 0, kSide - 1);
    // Each pixel looks at rows of samples from the top down, 0.45 apart.
    std::vector<std::vector<Position>> pixels;
    for (std::size_t k = 0; k < gPositions.size(); ++k) {
        if (k == 0 || gPositions[k].y < gPositions[k - 1].y - 0.5f) pixels.emplace_back();
        pixels.back().push_back(gPositions[k]);
    }
    ASSERT_EQ(pixels.size(), static_cast<std::size_t>(kSide * kSide));
    for (int a = 0; a < kSide * kSide; ++a) {
        for (int b = 0; b < kSide * kSide; ++b) {
            // What pixel b saw, as a should see it.
            for (Position p : pixels[static_cast<std::size_t>(b)]) {
                p.x += static_cast<float>(b % kSide - a % kSide);
                p.y += static_cast<float>(b / kSide - a / kSide);
                if (!inReach(p.x) || !inReach(p.y)) continue;
                const auto& own = pixels[static_cast<std::size_t>(a)];
                EXPECT_TRUE(std::any_of(own.begin(), own.end(),
                                        [&](const Position& q) {
                                            return std::fabs(q.x - p.x) < 1e-4f &&
                                                   std::fabs(q.y - p.y) < 1e-4f;
                                        }))
                    << a << ' ' << b << ' ' << p.x << ' ' << p.y;
            }
        }
    }
}

// A bow tie: as much of it faces the viewer as faces away.
TEST_F(BucketTest, CellsSeenEdgeOnAreSampledAdaptivelyOnly)
{
    const auto bowTie = [this] {
        const auto grid = square(-2, -1, 3, 2, 0.5f, gWhite);
        std::swap(grid->vertex(0, 1).P.x, grid->vertex(1, 1).P.x);
        zebtest::projectAsTheyAre(*grid);
        return grid;
    };
    render(0, 0, 0, 0, {bowTie()});
    EXPECT_EQ(device.value(0, 3), 0);
    option.adaptiveThreshold = 1;
    render<AdaptiveBucket>(0, 0, 0, 0, {bowTie()});
    EXPECT_GT(device.value(1, 3), 0.1f);
}

TEST_F(UniformBucketTest, BackFacesAreDroppedWhenAsked)
{
    render(0, 0, 0, 0, {square(-5, 5, 5, -5, 0.5f, gWhite)});
    EXPECT_EQ(device.value(0, 0), 1);
    attrib->sides = 1;
    render(0, 0, 0, 0, {square(-5, 5, 5, -5, 0.5f, gWhite)});
    EXPECT_EQ(device.value(1, 0), 0);
    render(0, 0, 0, 0, {square(-5, -5, 5, 5, 0.5f, gWhite)});
    EXPECT_EQ(device.value(2, 0), 1);
}

TEST_F(UniformBucketTest, WhatLiesOutsideTheDepthRangeIsNotSampled)
{
    render(0, 0, 0, 0, {square(-5, -5, 5, 5, -0.01f, gWhite)});
    render(0, 0, 0, 0, {square(-5, -5, 5, 5, 1.01f, gWhite)});
    render(0, 0, 0, 0, {square(-5, -5, 5, 5, 1, gWhite)});
    EXPECT_EQ(device.value(0, 0), 0);
    EXPECT_EQ(device.value(1, 0), 0);
    EXPECT_EQ(device.value(2, 0), 1);
}

TEST_F(UniformBucketTest, BoxFilteredCoverageIsTheShareOfSamples)
{
    option.pixelFilter = zebBoxFilter;
    option.filterXwidth = option.filterYwidth = 1;
    option.xsamples = option.ysamples = 4;
    render(0, 0, 0, 0, {square(0, 0, 0.25f, 1, 0.5f, gWhite)});
    EXPECT_FLOAT_EQ(device.value(0, 3), 0.25f);
}

TEST_F(AdaptiveBucketTest, TheThresholdsFollowTheTable)
{
    const float base[12] = {1.239f,   5.229f,   10.196f,  15.678f, 21.4386f, 27.4208f,
                            33.5693f, 39.8488f, 46.2349f, 52.71f,  59.2607f, 65.8768f};
    float thresholds[AdaptiveBucket::kRounds];
    AdaptiveBucket::maxVariance(0.25f, thresholds);
    for (int k = 0; k < 12; ++k) EXPECT_FLOAT_EQ(thresholds[k], 0.25f / base[11] * base[k]) << k;
    EXPECT_FLOAT_EQ(thresholds[11], 0.25f);
}

TEST_F(AdaptiveBucketTest, AFlatPixelTakesEightSamples)
{
    option.adaptiveThreshold = 1e-6f;
    render<AdaptiveBucket>(0, 0, 0, 0, {square(-5, -5, 5, 5, 0.5f, Color(0.5f, 0.25f, 1))});
    EXPECT_EQ(scratch.counts.samples, 4u * 8u) << "2 x 2 pixels in the window";
    EXPECT_EQ(device.value(0, 0), 0.5f);
    EXPECT_EQ(device.value(0, 4), 0.5f);
}

TEST_F(AdaptiveBucketTest, ANoisyPixelTakes96Samples)
{
    option.adaptiveThreshold = 1e-6f;
    render<AdaptiveBucket>(0, 0, 0, 0, {square(-1, -1, 2, 2, 0.5f, gWhite, 48)});
    EXPECT_EQ(scratch.counts.samples, 4u * 96u);
    EXPECT_NEAR(device.value(0, 0), 0.5, 0.15);
}

TEST_F(AdaptiveBucketTest, SamplesComeInRoundsOfEight)
{
    option.adaptiveThreshold = 0.25f;
    render<AdaptiveBucket>(0, 0, 0, 0, {square(-1, -1, 2, 2, 0.5f, gWhite, 48)});
    EXPECT_EQ(scratch.counts.samples % 8, 0u);
    EXPECT_GE(scratch.counts.samples, 32u);
    EXPECT_LE(scratch.counts.samples, 4u * 96u);
}

TEST_F(AdaptiveBucketTest, EveryQuadrantGetsTwoSamplesARound)
{
    option.adaptiveThreshold = 1;
    option.pixelFilter = recording;
    option.filterXwidth = option.filterYwidth = 1;
    render<AdaptiveBucket>(0, 0, 0, 0);
    ASSERT_EQ(gPositions.size(), 8u);
    int count[4] = {};
    for (const Position& p : gPositions) {
        EXPECT_LE(std::fabs(p.x), 0.5f);
        EXPECT_LE(std::fabs(p.y), 0.5f);
        ++count[(p.x < 0) + 2 * (p.y < 0)];
    }
    for (int q : count) EXPECT_EQ(q, 2);
}

TEST_F(AdaptiveBucketTest, BackFacesAreDroppedWhenAsked)
{
    option.adaptiveThreshold = 1;
    attrib->sides = 1;
    render<AdaptiveBucket>(0, 0, 0, 0, {square(-5, 5, 5, -5, 0.5f, gWhite)});
    EXPECT_EQ(device.value(0, 3), 0);
    attrib->sides = 2;
    render<AdaptiveBucket>(0, 0, 0, 0, {square(-5, 5, 5, -5, 0.5f, gWhite)});
    EXPECT_NEAR(device.value(1, 3), 1, 1e-6);
}

TEST_F(AdaptiveBucketTest, WhatLiesOutsideTheDepthRangeIsNotSampled)
{
    option.adaptiveThreshold = 1;
    render<AdaptiveBucket>(0, 0, 0, 0, {square(-5, -5, 5, 5, -0.01f, gWhite)});
    render<AdaptiveBucket>(0, 0, 0, 0, {square(-5, -5, 5, 5, 1.01f, gWhite)});
    render<AdaptiveBucket>(0, 0, 0, 0, {square(-5, -5, 5, 5, 1, gWhite)});
    render<AdaptiveBucket>(0, 0, 0, 0, {square(-5, -5, 5, 5, 0, gWhite)});
    EXPECT_EQ(device.value(0, 3), 0);
    EXPECT_EQ(device.value(1, 3), 0);
    EXPECT_NEAR(device.value(2, 3), 1, 1e-6);
    EXPECT_NEAR(device.value(3, 3), 1, 1e-6);
}
