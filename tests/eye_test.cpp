// Surfaces at, through and behind the eye.

#include "support/scene.h"

namespace zebtest
{

namespace
{

class Eye : public RasterTest
{
protected:
    void camera()
    {
        zebReset();
        zebRasterViewport(0, 64, 0, 64);
        zebViewPerspective(90);
        zebOutputSamples(ZEB_SAMPLES_RGBAZ);
        zebFilter(ZEB_FILTER_BOX);
        zebFilterWidth(1, 1);
        zebQuirks(0);
        picture.attachFloat();
    }
    double rowAlpha(long y) const
    {
        double sum = 0;
        for (long x = 0; x < 64; ++x) sum += static_cast<double>(alpha(x, y));
        return sum / 64;
    }
};

}  // namespace

TEST_F(Eye, AGroundPlaneUnderTheEyeFillsTheLowerHalf)
{
    camera();
    beginFlat();
    polygon({{-1e4f, -1, -1e4f}, {1e4f, -1, -1e4f}, {1e4f, -1, 1e4f}, {-1e4f, -1, 1e4f}});
    zebSceneEnd();
    for (long y = 0; y < 31; ++y) EXPECT_EQ(rowAlpha(y), 0) << y;
    for (long y = 33; y < 64; ++y) EXPECT_EQ(rowAlpha(y), 1) << y;
    EXPECT_TRUE(reports.empty());
}

TEST_F(Eye, ACorridorAroundTheEyeFillsThePictureButForItsEnd)
{
    camera();
    beginFlat();
    for (const float s : {-1.0f, 1.0f}) {
        polygon({{-1, s, -50}, {1, s, -50}, {1, s, 16}, {-1, s, 16}});
        polygon({{s, -1, -50}, {s, 1, -50}, {s, 1, 16}, {s, -1, 16}});
    }
    zebSceneEnd();
    // The end, at z = 16, is a square of 64 / 16 = 4 pixels.
    EXPECT_NEAR(picture.sum(3), 64 * 64 - 16, 1);
    EXPECT_EQ(alpha(32, 32), 0);
    EXPECT_EQ(alpha(0, 0), 1);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Eye, APlaneThroughTheEyeEndsWithOneReportAtMost)
{
    // Seen edge-on it covers nothing; tilted in its own plane it still holds the eye.
    const std::vector<std::vector<Vec>> planes = {
        {{-5, 0, -5}, {5, 0, -5}, {5, 0, 5}, {-5, 0, 5}},
        {{0, -5, -5}, {0, 5, -5}, {0, 5, 5}, {0, -5, 5}},
        {{-5, -5, -5}, {5, 5, -5}, {5, 5, 5}, {-5, -5, 5}},
    };
    for (const auto& plane : planes) {
        camera();
        beginFlat();
        reports.clear();
        polygon(plane);
        rectangle(-100, -100, 100, 100, 50);
        zebSceneEnd();
        EXPECT_LE(reports.size(), 1u);
        EXPECT_EQ(alpha(10, 20), 1) << "what is behind it shows";
    }
}

TEST_F(Eye, ACornerThatReachesBehindTheEyeIsCutAtThePictureAlone)
{
    // The half-space x > 0 of a wall slanting back past the eye: x from 0 to 40 at z = 4 - x / 5.
    camera();
    beginFlat();
    polygon({{0, -400, 4}, {40, -400, -4}, {40, 400, -4}, {0, 400, 4}});
    zebSceneEnd();
    for (long y = 1; y < 63; y += 7) {
        EXPECT_EQ(alpha(10, y), 0);
        for (long x = 33; x < 64; ++x) EXPECT_EQ(alpha(x, y), 1) << x << ' ' << y;
    }
    // On screen column x, tan = (x - 31.5) / 32 = X / Z with Z = 4 - X / 5.
    const double t = (63.5 - 32) / 32, z = 4 / (1 + t / 5);
    EXPECT_NEAR(depth(63, 32) * 1e38, z, 0.02);
}

TEST_F(Eye, WhatLiesBehindTheEyeIsNotSeen)
{
    camera();
    beginFlat();
    rectangle(-100, -100, 100, 100, -1);
    rectangle(-100, -100, 100, 100, 0);
    zebSceneEnd();
    EXPECT_EQ(picture.sum(3), 0);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Eye, ASurfaceCloseToTheEyeIsSeenAtAnyScale)
{
    for (const float scale : {1e-8f, 1e-3f, 1.0f, 1e6f, 1e20f}) {
        camera();
        beginFlat();
        rectangle(-0.5f * scale, -0.5f * scale, 0.5f * scale, 0.5f * scale, scale);
        zebSceneEnd();
        EXPECT_NEAR(picture.sum(3), 32 * 32, 1) << scale;
    }
}

TEST_F(Eye, CoordinatesOfAnySizeEnd)
{
    for (const float size : {1e10f, 1e20f, 1e30f, 1e37f, 3e38f}) {
        camera();
        beginFlat();
        polygon({{-size, -1, -size}, {size, -1, -size}, {size, -1, size}, {-size, -1, size}});
        polygon({{-size, -size, 1}, {size, -size, 1}, {size, size, 1}, {-size, size, 1}});
        zebSceneEnd();
        EXPECT_EQ(picture.closed, picture.opened) << size;
    }
}

TEST_F(Eye, AFieldOfViewOfHalfACircleDoesNotCrash)
{
    zebReset();
    zebRasterViewport(0, 16, 0, 16);
    zebViewPerspective(180);
    picture.attachFloat();
    zebOutputSamples(ZEB_SAMPLES_RGBAZ);
    beginFlat();
    rectangle(-1, -1, 1, 1, 2);
    zebSceneEnd();
    EXPECT_EQ(picture.closed, picture.opened);
}

}  // namespace zebtest
