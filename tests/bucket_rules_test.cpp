// What the order of buckets, and of surfaces within them, does to a picture.

#include "support/scene.h"

namespace zebtest
{

namespace
{

class BucketRules : public RasterTest
{
protected:
    // Buckets of 12 x 12 pixels, and surfaces that dice up to `size` pixels.
    void buckets(long columns, long rows, long size = 32, bool adaptive = false)
    {
        zebReset();
        raster(12 * columns, 12 * rows);
        zebFilter(ZEB_FILTER_BOX);
        zebFilterWidth(1, 1);
        zebTune(size, 12, 12);
        if (adaptive) zebSampleAdaptive(0.1f);
        beginFlat();
        zebShadingRate(1);
    }
};

// One primitive, unlike a polygon.
void patch(float x0, float y0, float x1, float y1)
{
    const Vec points[] = {{x0, y0, 0.5f}, {x1, y0, 0.5f}, {x0, y1, 0.5f}, {x1, y1, 0.5f}};
    zebPatch(ZEB_BILINEAR, zebQuark("point"), points, 0);
}

void redPatch(float x0, float y0, float x1, float y1)
{
    color(1, 0, 0);
    patch(x0, y0, x1, y1);
}

void greenPatch(float x0, float y0, float x1, float y1)
{
    color(0, 1, 0);
    patch(x0, y0, x1, y1);
}

}  // namespace

// The latest primitive is diced first, and of grids the latest is sampled first: it stays in front
// of what is as deep.
TEST_F(BucketRules, OfCoincidentSurfacesInABucketTheFirstGivenShows)
{
    for (const bool adaptive : {false, true}) {
        buckets(1, 1, 32, adaptive);
        redPatch(1, 1, 11, 11);
        greenPatch(1, 1, 11, 11);
        zebSceneEnd();
        EXPECT_EQ(red(6, 6), 1) << adaptive;
        EXPECT_EQ(green(6, 6), 0) << adaptive;
    }
}

TEST_F(BucketRules, ASurfaceOfAnEarlierBucketGivesWayToACoincidentOne)
{
    for (const bool adaptive : {false, true}) {
        for (const bool redFirst : {false, true}) {
            buckets(2, 1, 32, adaptive);
            if (redFirst) redPatch(2, 1, 22, 11);  // reaches from the first bucket into the second
            greenPatch(14, 1, 22, 11);
            if (!redFirst) redPatch(2, 1, 22, 11);
            zebSceneEnd();
            EXPECT_EQ(red(6, 6), 1) << redFirst << adaptive;
            EXPECT_EQ(green(18, 6), 1) << redFirst << adaptive;
        }
    }
}

// In the bucket where they are split the pieces of the latest come first, as if nothing had been
// split; those that go on to the next bucket come there in the order in which they were split.
TEST_F(BucketRules, OfCoincidentSurfacesThatSplitTheLastGivenShowsInTheNextBucket)
{
    for (const bool adaptive : {false, true}) {
        buckets(2, 1, 16, adaptive);
        redPatch(3, 1, 23, 11);  // halves meet at x = 13, beyond the second bucket's first pixel
        greenPatch(3, 1, 23, 11);
        zebSceneEnd();
        EXPECT_EQ(red(6, 6), 1) << adaptive;
        EXPECT_EQ(green(18, 6), 1) << adaptive;
    }
}

// Work only moves forward: what a procedural makes outside its bound, in buckets further left, is
// lost there, in later rows too.
TEST_F(BucketRules, GridsStartAtTheColumnUnderWayInLaterRowsToo)
{
    buckets(2, 2);
    const float bound[6] = {14, 20, 2, 8, 0.5f, 0.5f};  // in the second bucket
    zebProcedural(
        nullptr, bound, [](void*, float) { redPatch(2, 2, 22, 22); }, nullptr);
    zebSceneEnd();
    EXPECT_EQ(alpha(18, 6), 1);
    EXPECT_EQ(alpha(18, 18), 1);
    EXPECT_EQ(alpha(6, 6), 0);
    EXPECT_EQ(alpha(6, 18), 0);
}

// Of 20 pixels, the window 0.23 ... 0.71 runs from 4.6 to 14.2: its first pixel is 5, and its last
// the one that 13.2 is rounded up to.
TEST_F(BucketRules, ACropThatFallsBetweenPixelsIsRoundedUp)
{
    struct Crop {
        float from, to;
        long first, last;
    };
    for (const Crop& x : {Crop{0.23f, 0.71f, 5, 14}, {0, 0.23f, 0, 4}, {0.71f, 1, 15, 19}}) {
        for (const Crop& y : {Crop{0.12f, 0.88f, 3, 17}, {0.24f, 0.26f, 5, 5}}) {
            zebReset();
            raster(20, 20);
            zebImageCrop(x.from, x.to, y.from, y.to);
            beginFlat();
            rectangle(-5, -5, 25, 25, 0.5f);
            zebSceneEnd();
            for (long j = 0; j < 20; ++j) {
                for (long i = 0; i < 20; ++i) {
                    const bool inside = i >= x.first && i <= x.last && j >= y.first && j <= y.last;
                    EXPECT_EQ(alpha(i, j), inside ? 1 : 0) << i << ' ' << j;
                }
            }
        }
    }
}

// A light in the surface tells: shading divides by its distance.
TEST_F(BucketRules, DepthAloneAndMattesAreNotShaded)
{
    const auto shaded = [this](short samples, int channels, bool matte) {
        zebReset();
        reports.clear();
        raster(12, 12);
        zebOutputSamples(samples);
        picture.setChannels(channels);
        zebSceneBegin();
        zebSurface(zebQuark("diffuse"), 0);
        zebShadingModel(ZEB_SMOOTH);
        zebMatteObject(matte);
        const float from[3] = {3, 3, 0.5f};
        zebLightSource(zebQuark("omni"), zebQuark("from"), from, 0);
        rectangle(3, 3, 9, 9, 0.5f);
        zebSceneEnd();
        for (std::size_t k = 0; k < reports.size(); ++k) {
            EXPECT_NE(reports[k].message.find("dividing color by zero"), std::string::npos)
                << reports[k].message;
        }
        return !reports.empty();
    };
    EXPECT_TRUE(shaded(ZEB_SAMPLES_RGB, 3, false));
    EXPECT_TRUE(shaded(ZEB_SAMPLES_RGBAZ, 5, false));
    EXPECT_TRUE(shaded(ZEB_SAMPLES_ALPHA | ZEB_SAMPLES_DEPTH, 2, false));
    EXPECT_FALSE(shaded(ZEB_SAMPLES_DEPTH, 1, false));
    EXPECT_FALSE(shaded(ZEB_SAMPLES_RGB, 3, true));
    EXPECT_FALSE(shaded(ZEB_SAMPLES_RGBAZ, 5, true));
}

TEST_F(BucketRules, AlphaWithDepthIsShadedForItsOpacity)
{
    raster(12, 12);
    zebOutputSamples(ZEB_SAMPLES_ALPHA | ZEB_SAMPLES_DEPTH);
    picture.setChannels(2);
    beginFlat();
    opacity(0.25f, 0.25f, 0.25f);
    rectangle(0, 0, 12, 12, 0.5f);
    zebSceneEnd();
    EXPECT_FLOAT_EQ(picture.value(6, 6, 0), 0.25f);
    EXPECT_FLOAT_EQ(picture.value(6, 6, 1), 0.5f);
}

}  // namespace zebtest
