// Where sizes end: what is too large is refused before it is read, and what is only large is made.

#include "support/scene.h"

namespace zebtest
{

namespace
{

class Limits : public RasterTest
{
};

}  // namespace

// Each direction may have so many, both together may not.
TEST_F(Limits, TooManyControlPointsAreRefused)
{
    constexpr long kMany = 20000;
    std::vector<float> knots;
    for (long k = 0; k < kMany + 2; ++k) knots.push_back(static_cast<float>(k));
    const float point[3] = {0, 0, 0.5f};
    raster(12, 12);
    beginFlat();
    // The points themselves are never looked at: there is only one.
    zebNurbMesh(kMany, 2, knots.data(), 1, 5, kMany, 2, knots.data(), 1, 5, zebQuark("point"),
                point, 0);
    zebSceneEnd();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 10);
    EXPECT_EQ(reports[0].message, "zebNurbMesh: 20000 x 20000 control points out of range");
    EXPECT_EQ(picture.sum(3), 0);
}

// A bucket of 16 x 16 pixels would have 18 x 18 x 120 x 120 samples, more than four millions: it is
// reported, and smaller ones are used.
TEST_F(Limits, APictureOfVeryManySamplesIsTheSameInBucketsOfAnySize)
{
    std::vector<std::uint32_t> words[2];
    for (const long size : {16L, 4L}) {
        zebReset();
        raster(16, 16);
        zebSampleUniform(120, 120);
        zebTune(32, size, size);
        beginFlat();
        color(1, 0.5f, 0.25f);
        polygon({{1, 1, 0.5f}, {15, 1, 0.25f}, {1, 15, 0.75f}});
        zebSceneEnd();
        words[size == 4] = picture.words();
        // Half of a square of 14 x 14, to a sample's share of its edges.
        EXPECT_NEAR(picture.sum(3), 98, 0.1) << size;
    }
    EXPECT_EQ(words[0], words[1]);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 10);
}

}  // namespace zebtest
