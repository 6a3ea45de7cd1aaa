// Depth, opacity, mattes and the order of hits.

#include "support/scene.h"

namespace zebtest
{

namespace
{

class Hiding : public RasterTest
{
};

// A camera that looks down z, orthographic, one unit a pixel: under the clipping range in force.
void orthographic(long width, long height)
{
    zebRasterViewport(0, width, 0, height);
    zebImageWindow(0, static_cast<float>(width), 0, static_cast<float>(height));
    zebTranslate(0, static_cast<float>(height), 0);
    zebScale(1, -1, 1);
    zebViewOrthographic();
    zebOutputSamples(ZEB_SAMPLES_RGBAZ);
    zebFilter(ZEB_FILTER_BOX);
    zebFilterWidth(1, 1);
}

}  // namespace

TEST_F(Hiding, DepthOfATiltedPlaneIsLinearInRaster)
{
    orthographic(32, 32);
    zebClip(2, 12);
    zebSampleJitter(0);
    picture.attachFloat();
    beginFlat();
    // z = 3 + x / 8 + y / 16: depth is (z - 2) / 10.
    const auto at = [](float x, float y) { return Vec{x, y, 3 + x / 8 + y / 16}; };
    polygon({at(0, 0), at(32, 0), at(32, 32), at(0, 32)});
    zebSceneEnd();
    for (long y = 0; y < 32; ++y) {
        for (long x = 0; x < 32; ++x) {
            const double z =
                3 + (static_cast<double>(x) + 0.5) / 8 + (static_cast<double>(y) + 0.5) / 16;
            EXPECT_NEAR(depth(x, y), (z - 2) / 10, 2e-6) << x << ' ' << y;
        }
    }
}

TEST_F(Hiding, DepthWhereNothingIsHitIsOne)
{
    raster(8, 8);
    beginFlat();
    zebSceneEnd();
    for (long y = 0; y < 8; ++y) {
        for (long x = 0; x < 8; ++x) {
            EXPECT_EQ(depth(x, y), 1);
            EXPECT_EQ(alpha(x, y), 0);
            EXPECT_EQ(red(x, y), 0);
        }
    }
}

TEST_F(Hiding, IsRightUnderTheDefaultClippingRange)
{
    // Normalized depths are about 5e-39 here, below the smallest normal float.
    for (const bool farFirst : {true, false}) {
        zebReset();
        orthographic(24, 24);
        picture.attachFloat();
        beginFlat();
        const auto square = [](bool isFar) {
            color(isFar ? 1.0f : 0.0f, isFar ? 0.0f : 1.0f, 0);
            rectangle(0, 0, 24, 24, isFar ? 0.501f : 0.500f);
        };
        square(farFirst);
        square(!farFirst);
        zebSceneEnd();
        for (long y = 0; y < 24; ++y) {
            for (long x = 0; x < 24; ++x) {
                EXPECT_EQ(red(x, y), 0);
                EXPECT_EQ(green(x, y), 1);
                EXPECT_FLOAT_EQ(depth(x, y), 0.5e-38f);
            }
        }
    }
}

TEST_F(Hiding, IntersectingPlanesMeetWhereTheirDepthsDo)
{
    raster(64, 16);
    zebFilter(ZEB_FILTER_BOX);
    zebFilterWidth(1, 1);
    beginFlat();
    color(1, 0, 0);
    polygon({{0, 0, 0.2f}, {64, 0, 0.8f}, {64, 16, 0.8f}, {0, 16, 0.2f}});
    color(0, 1, 0);
    rectangle(0, 0, 64, 16, 0.5f);
    zebSceneEnd();
    // Equal at x = 32.
    for (long y = 0; y < 16; ++y) {
        for (long x = 0; x < 64; ++x) {
            if (x < 32) {
                EXPECT_EQ(red(x, y), 1);
            } else {
                EXPECT_EQ(green(x, y), 1);
            }
        }
    }
}

TEST_F(Hiding, LayersCompositeFrontToBack)
{
    // C = sum of T_k o_k c_k, T multiplied by 1 - o at each layer, channel by channel.
    raster(6, 6);
    beginFlat();
    const float opacities[][3] = {{0.3f, 0.5f, 0.1f}, {0.25f, 0.125f, 0.75f}, {0.6f, 0.2f, 0.4f}};
    const float colors[][3] = {{1, 0.5f, 0.25f}, {0.1f, 0.9f, 0.4f}, {0.7f, 0.3f, 0.8f}};
    // Given in an order that is not that of depth.
    const float depths[] = {0.5f, 0.2f, 0.8f};
    const int order[] = {1, 0, 2};
    for (int k = 0; k < 3; ++k) {
        zebColor(colors[k]);
        zebOpacity(opacities[k]);
        rectangle(0, 0, 6, 6, depths[k]);
    }
    zebSceneEnd();
    double C[3] = {}, T[3] = {1, 1, 1};
    for (const int k : order) {
        for (int c = 0; c < 3; ++c) {
            C[c] += T[c] * double{opacities[k][c]} * colors[k][c];
            T[c] *= 1 - double{opacities[k][c]};
        }
    }
    EXPECT_NEAR(red(3, 3), C[0], 1e-6);
    EXPECT_NEAR(green(3, 3), C[1], 1e-6);
    EXPECT_NEAR(blue(3, 3), C[2], 1e-6);
    EXPECT_NEAR(alpha(3, 3), (3 - T[0] - T[1] - T[2]) / 3, 1e-6);
    EXPECT_FLOAT_EQ(depth(3, 3), 0.2f) << "the nearest hit's";
}

TEST_F(Hiding, AThousandLayersCompositeToTheClosedForm)
{
    raster(4, 4);
    beginFlat();
    opacity(0.01f, 0.002f, 0.001f);
    for (int k = 0; k < 1000; ++k)
        rectangle(0, 0, 4, 4, 0.1f + 0.0008f * static_cast<float>(k % 777));
    zebSceneEnd();
    const auto total = [](double o) { return 1 - std::pow(1 - o, 1000); };
    EXPECT_NEAR(red(1, 1), total(0.01f), 1e-5);
    EXPECT_NEAR(alpha(1, 1), (total(0.01f) + total(0.002f) + total(0.001f)) / 3, 1e-4);
}

TEST_F(Hiding, AMatteCutsAHole)
{
    raster(12, 12);
    zebFilter(ZEB_FILTER_BOX);
    zebFilterWidth(1, 1);
    beginFlat();
    color(1, 0, 0);
    rectangle(0, 0, 12, 12, 0.8f);
    zebAttributePush();
    zebMatteObject(1);
    rectangle(3, 3, 9, 9, 0.5f);
    zebAttributePop();
    opacity(0.5f, 0.5f, 0.5f);
    color(0, 1, 0);
    rectangle(0, 0, 6, 12, 0.2f);
    zebSceneEnd();
    EXPECT_EQ(red(1, 1), 0.5f);
    EXPECT_EQ(red(10, 10), 1);
    EXPECT_EQ(alpha(7, 7), 0) << "the matte hides what is behind and stays empty";
    EXPECT_EQ(depth(7, 7), 1);
    EXPECT_EQ(alpha(4, 4), 0.5f) << "what lies in front of it stays";
    EXPECT_EQ(green(4, 4), 0.5f);
    EXPECT_EQ(red(4, 4), 0);
}

TEST_F(Hiding, TheSequenceHiderShowsThePrimitiveGivenLast)
{
    for (const short hider : {ZEB_HIDER_HIDDEN, ZEB_HIDER_SEQUENCE}) {
        zebReset();
        raster(8, 8);
        zebOutputSamples(ZEB_SAMPLES_RGB);
        Picture plain(3);
        plain.attachFloat();
        zebHider(hider);
        beginFlat();
        color(0, 1, 0);
        rectangle(0, 0, 8, 8, 0.2f);
        color(1, 0, 0);
        rectangle(0, 0, 8, 8, 0.8f);
        zebSceneEnd();
        EXPECT_EQ(plain.value(4, 4, 0), hider == ZEB_HIDER_SEQUENCE ? 1 : 0);
        EXPECT_EQ(plain.value(4, 4, 1), hider == ZEB_HIDER_SEQUENCE ? 0 : 1);
    }
}

TEST_F(Hiding, DepthOutputTurnsTheSequenceHiderOff)
{
    raster(8, 8);
    zebHider(ZEB_HIDER_SEQUENCE);
    beginFlat();
    color(0, 1, 0);
    rectangle(0, 0, 8, 8, 0.2f);
    color(1, 0, 0);
    rectangle(0, 0, 8, 8, 0.8f);
    zebSceneEnd();
    EXPECT_EQ(green(4, 4), 1);
    EXPECT_FLOAT_EQ(depth(4, 4), 0.2f);
}

TEST_F(Hiding, TheNullHiderOpensNoDevice)
{
    raster(8, 8);
    zebHider(ZEB_HIDER_NULL);
    zebSceneBegin();
    rectangle(0, 0, 8, 8, 0.2f);
    zebSceneEnd();
    EXPECT_EQ(picture.opened, 0);
    EXPECT_EQ(picture.closed, 0);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Hiding, BackFacesAreDroppedWhenSurfacesHaveOneSide)
{
    // Raster y runs downwards, so the rectangle as drawn runs clockwise on screen.
    const auto coverage = [this](short sides, bool reversed, short orientation, bool mirrored) {
        zebReset();
        raster(8, 8);
        beginFlat();
        zebBackface(sides);
        zebOrientation(orientation);
        if (mirrored) {
            zebTranslate(8, 0, 0);
            zebScale(-1, 1, 1);
        }
        std::vector<Vec> points = {{1, 1, 0.5f}, {7, 1, 0.5f}, {7, 7, 0.5f}, {1, 7, 0.5f}};
        if (reversed) std::reverse(points.begin(), points.end());
        polygon(points);
        zebSceneEnd();
        return alpha(4, 4);
    };
    for (const bool reversed : {false, true}) {
        EXPECT_EQ(coverage(2, reversed, ZEB_OUTSIDE, false), 1);
        EXPECT_EQ(coverage(2, reversed, ZEB_INSIDE, false), 1);
    }
    const bool seen = coverage(1, false, ZEB_OUTSIDE, false) > 0;
    EXPECT_NE(seen, coverage(1, true, ZEB_OUTSIDE, false) > 0) << "the other winding faces away";
    EXPECT_NE(seen, coverage(1, false, ZEB_INSIDE, false) > 0) << "the other orientation, too";
    EXPECT_EQ(seen, coverage(1, false, ZEB_OUTSIDE, true) > 0)
        << "a mirror turns winding and handedness at once";
    EXPECT_NE(seen, coverage(1, false, ZEB_REVERSE, false) > 0);
}

TEST_F(Hiding, SurfacesOutsideTheClippingRangeAreNotSeen)
{
    orthographic(8, 8);
    zebClip(2, 4);
    picture.attachFloat();
    beginFlat();
    rectangle(0, 0, 2, 8, 1.9f);
    rectangle(2, 0, 4, 8, 2.1f);
    rectangle(4, 0, 6, 8, 3.9f);
    rectangle(6, 0, 8, 8, 4.1f);
    zebSceneEnd();
    EXPECT_EQ(alpha(0, 4), 0);
    EXPECT_EQ(alpha(3, 4), 1);
    EXPECT_EQ(alpha(4, 4), 1);
    EXPECT_EQ(alpha(7, 4), 0);
}

TEST_F(Hiding, DepthAloneIsOfTheNearestSurface)
{
    // Nothing is shaded then: whatever the opacity, the nearest surface decides.
    zebRasterViewport(0, 8, 0, 8);
    zebImageWindow(0, 8, 0, 8);
    zebViewIdentity();
    zebOutputSamples(ZEB_SAMPLES_DEPTH);
    Picture depths(1);
    depths.attachFloat();
    zebSceneBegin();
    opacity(0.1f, 0.1f, 0.1f);
    rectangle(0, 0, 8, 8, 0.25f);
    opacity(1, 1, 1);
    rectangle(0, 0, 8, 8, 0.75f);
    zebSceneEnd();
    EXPECT_FLOAT_EQ(depths.value(4, 4, 0), 0.25f);
}

}  // namespace zebtest
