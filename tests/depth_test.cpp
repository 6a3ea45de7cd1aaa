// The depth of a pixel: filtered, or the least of its own samples.

#include <vector>

#include "support/scene.h"

namespace zebtest
{

namespace
{

constexpr int kSide = 32;

class Depth : public RasterTest
{
protected:
    void begin(bool nearest, bool adaptive = false)
    {
        zebReset();
        raster(kSide, kSide);
        zebDepthNearest(nearest);
        zebSampleUniform(4, 4);
        if (adaptive) zebSampleAdaptive(0.01f);
    }
    // Left of x is a surface, right of it nothing.
    static void edgeAt(float x, float z)
    {
        beginFlat();
        rectangle(-2, -2, x, kSide + 2, z);
        zebSceneEnd();
    }
    // As deep as a sixty-fourth of x says, and a spot in front.
    static void slope()
    {
        beginFlat();
        color(0.25f, 0.5f, 0.75f);
        polygon({{-4, -4, -4 / 64.0f},
                 {68, -4, 68 / 64.0f},
                 {68, 68, 68 / 64.0f},
                 {-4, 68, -4 / 64.0f}});
        opacity(0.5f, 0.5f, 0.5f);
        rectangle(7.3f, 9.2f, 14.1f, 21.7f, 0.01f);
        zebSceneEnd();
    }
};

}  // namespace

TEST_F(Depth, AtAnEdgeIsAMeanUnlessTheNearestIsWanted)
{
    for (const bool adaptive : {false, true}) {
        begin(false, adaptive);
        edgeAt(8.8f, 0.25f);
        for (const long x : {8, 9}) {
            EXPECT_GT(depth(x, 9), 0.26f) << adaptive << x;
            EXPECT_LT(depth(x, 9), 0.99f) << adaptive << x;
        }
        begin(true, adaptive);
        edgeAt(8.8f, 0.25f);
        for (long y = 0; y < kSide; ++y) {
            for (long x = 0; x < kSide; ++x) {
                ASSERT_EQ(depth(x, y), x < 9 ? 0.25f : 1.0f) << adaptive << x << ' ' << y;
            }
        }
    }
}

// The samples of a row lie an eighth of a pixel apart, the first one half of that from the border.
TEST_F(Depth, OfThePixelsNearestSampleIsTakenWhereSurfacesSlope)
{
    begin(true);
    zebSampleUniform(8, 8);
    zebSampleJitter(0);
    slope();
    for (long x = 0; x < kSide; ++x) {
        EXPECT_NEAR(depth(x, 28), (static_cast<double>(x) + 1 / 16.0) / 64, 1e-6) << x;
    }
    begin(false);
    zebSampleUniform(8, 8);
    zebSampleJitter(0);
    slope();
    EXPECT_NEAR(depth(20, 28), 20.5 / 64, 1e-6) << "otherwise it is that of the centre";
}

TEST_F(Depth, IsThatOfTheLeastOfAPixelsSamples)
{
    begin(true);
    zebSampleUniform(4, 4);
    zebSampleJitter(0);
    beginFlat();
    rectangle(-2, -2, kSide + 2, kSide + 2, 0.75f);
    // Covers the samples at x = 10.375 alone.
    rectangle(10.3f, -2, 10.4f, kSide + 2, 0.25f);
    rectangle(10.3f, -2, 10.4f, kSide + 2, 0.5f);
    zebSceneEnd();
    EXPECT_EQ(depth(9, 5), 0.75f);
    EXPECT_EQ(depth(10, 5), 0.25f);
    EXPECT_EQ(depth(11, 5), 0.75f);
}

TEST_F(Depth, NearestLeavesColoursAlone)
{
    for (const bool adaptive : {false, true}) {
        for (const float width : {0.5f, 1.0f, 2.0f, 4.0f}) {
            std::vector<std::uint32_t> words[2];
            for (const bool nearest : {false, true}) {
                begin(nearest, adaptive);
                zebFilterWidth(width, width);
                slope();
                words[nearest] = picture.words();
            }
            std::size_t deeper = 0;
            for (std::size_t k = 0; k < words[0].size(); ++k) {
                if (k % 5 == 4) {
                    deeper += words[0][k] != words[1][k];
                } else {
                    ASSERT_EQ(words[0][k], words[1][k]) << width;
                }
            }
            EXPECT_GT(deeper, static_cast<std::size_t>(kSide)) << width;
        }
    }
}

TEST_F(Depth, NearestIsTheSameWhateverTheBuckets)
{
    for (const float width : {0.5f, 1.0f, 2.0f, 4.0f}) {
        std::vector<std::uint32_t> words[2];
        for (const bool small : {false, true}) {
            begin(true);
            zebFilterWidth(width, width);
            if (small) zebTune(32, 5, 7);
            slope();
            words[small] = picture.words();
        }
        EXPECT_EQ(words[0], words[1]) << width;
    }
}

TEST_F(Depth, StaysBetweenZeroAndOneWhateverFiltersMakeOfIt)
{
    for (const bool nearest : {false, true}) {
        begin(nearest);
        zebFilter(ZEB_FILTER_SINC);
        zebFilterWidth(4, 4);
        edgeAt(8.8f, 0.01f);
        for (long x = 0; x < kSide; ++x) {
            EXPECT_GE(depth(x, 9), 0) << x;
            EXPECT_LE(depth(x, 9), 1) << x;
        }
    }
}

TEST_F(Depth, NearestEndsWithItsFrameAndAtAReset)
{
    const auto atEdge = [this] {
        raster(kSide, kSide);
        edgeAt(8.8f, 0.25f);
        return depth(8, 9);
    };
    zebFrameBegin();
    zebDepthNearest(1);
    zebFrameEnd();
    EXPECT_NE(atEdge(), 0.25f);
    zebReset();
    zebDepthNearest(2);
    EXPECT_EQ(atEdge(), 0.25f);
    zebReset();
    EXPECT_NE(atEdge(), 0.25f);
}

}  // namespace zebtest
