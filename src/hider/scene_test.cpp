#include "hider/scene.h"

#include <gtest/gtest.h>

#include "math/spaces.h"
#include "support/scene.h"

using namespace zeb;

namespace
{

struct Log {
    int diced = 0, split = 0, gone = 0;
    std::vector<long> doneBefore;  // progress at each split
};

// A box that is never small enough, or always.
class Probe : public Primitive
{
public:
    Probe(const Boundw& box, bool small, Log* log) : fBox(box), fSmall(small), fLog(log) {}
    ~Probe() override { ++fLog->gone; }
    Boundw bound() const override { return fBox; }
    bool diceable(Dicing&, float) const override { return fSmall; }
    std::unique_ptr<Grid> dice(const Dicing& dicing) const override
    {
        ++fLog->diced;
        return Primitive::dice(dicing);
    }
    void split(PrimitiveSink& sink) override
    {
        ++fLog->split;
        fLog->doneBefore.push_back(gScene->progress());
        if (fPiece) sink.add(std::move(fPiece));
    }
    std::unique_ptr<Primitive> fPiece;

private:
    Boundw fBox;
    bool fSmall;
    Log* fLog;
};

class SceneTest : public zebtest::RasterTest
{
protected:
    std::unique_ptr<Probe> probe(float x0, float x1, float y0, float y1, float z0, float z1,
                                 bool small = false)
    {
        return std::make_unique<Probe>(Boundw(x0, x1, y0, y1, z0, z1, 1, 1), small, &log);
    }
    // Whether a box of camera space is kept; raster y runs downwards.
    bool filed(float x0, float x1, float y0, float y1, float z0, float z1)
    {
        const int before = log.gone;
        gScene->add(probe(x0, x1, y0, y1, z0, z1));
        return log.gone == before;
    }

    Log log;
};

}  // namespace

TEST_F(SceneTest, A100By100PictureHas9By9Buckets)
{
    raster(100, 100);
    zebSceneBegin();
    EXPECT_EQ(gScene->columns(), 9);
    EXPECT_EQ(gScene->rows(), 9);
    zebSceneEnd();
    EXPECT_EQ(picture.spans, 9 * 100);
}

TEST_F(SceneTest, BucketsAreAsLargeAsTuned)
{
    raster(100, 50);
    zebTune(32, 25, 10);
    zebSceneBegin();
    EXPECT_EQ(gScene->columns(), 4);
    EXPECT_EQ(gScene->rows(), 5);
    zebSceneEnd();
}

// 4 samples a pixel, of 510 + 2 and 511 + 2 pixels: 2048 x 2048 are 2^22.
TEST_F(SceneTest, BucketsOfTooManySamplesAreRefused)
{
    for (const long side : {510, 511}) {
        raster(600, 600);
        zebSampleUniform(4, 4);
        zebTune(32, side, side);
        zebSceneBegin();
        EXPECT_EQ(gScene->columns(), side == 510 ? 2 : 3) << "600 / 510, 600 / 255";
        EXPECT_EQ(gScene->rows(), gScene->columns());
        if (side == 511) {
            ASSERT_EQ(reports.size(), 1u);
            EXPECT_EQ(reports[0],
                      (zebtest::Report{10, ZEB_ERROR,
                                       "zebSceneBegin: bucket of 511 x 511 takes too many samples, "
                                       "using 255 x 255"}));
        } else {
            EXPECT_TRUE(reports.empty());
        }
        zebReset();
    }
}

// A pixel and the reach of its filter are 64 x 64: at rates of 32 these take 2^22 samples. Where
// one rate is as low as it gets, the other goes on.
TEST_F(SceneTest, RatesAtWhichAPixelTakesTooManySamplesAreHalved)
{
    const struct {
        float x, y, usedX, usedY;
    } cases[] = {{32, 32, 32, 32}, {33, 32, 16.5f, 16}, {128, 128, 32, 32}, {128, 10, 64, 5}};
    for (const auto& rates : cases) {
        SCOPED_TRACE(rates.x);
        raster(2, 2);
        zebTune(32, 1, 1);
        zebFilterWidth(63, 63);
        zebSampleUniform(rates.x, rates.y);
        zebSceneBegin();
        EXPECT_EQ(gScene->frame()->option.xsamples, rates.usedX);
        EXPECT_EQ(gScene->frame()->option.ysamples, rates.usedY);
        EXPECT_EQ(gOption->xsamples, rates.x) << "for the next picture too";
        if (rates.usedX == rates.x) {
            EXPECT_TRUE(reports.empty());
        } else {
            char text[200];
            std::snprintf(text, sizeof text,
                          "zebSceneBegin: sampling rate of %g x %g takes too many samples, using "
                          "%g x %g",
                          double{rates.x}, double{rates.y}, double{rates.usedX},
                          double{rates.usedY});
            ASSERT_EQ(reports.size(), 1u);
            EXPECT_EQ(reports[0], (zebtest::Report{10, ZEB_ERROR, text}));
        }
        zebReset();
        reports.clear();
    }
}

// Of 26 x 26 pixels: 4098 x 26 x 64 samples would be too many.
TEST_F(SceneTest, ABucketLargerThanThePictureTakesThePicturesSamples)
{
    raster(24, 24);
    zebSampleUniform(8, 8);
    zebTune(32, 4096, 4096);
    zebSceneBegin();
    EXPECT_EQ(gScene->columns(), 1);
    EXPECT_TRUE(reports.empty());
    zebSceneEnd();
    EXPECT_EQ(picture.spans, 24);
}

TEST_F(SceneTest, ProgressCountsTheBucketUnderWay)
{
    raster(24, 24);
    EXPECT_EQ(zebProgress(), 0);
    zebSceneBegin();
    zebRenderInit();
    EXPECT_EQ(zebProgress(), 25);
    EXPECT_NE(zebRenderBucket(), 0);
    EXPECT_EQ(zebProgress(), 50);
    EXPECT_NE(zebRenderBucket(), 0);
    EXPECT_NE(zebRenderBucket(), 0);
    EXPECT_EQ(zebProgress(), 100);
    EXPECT_EQ(zebRenderBucket(), 0);
    EXPECT_EQ(zebProgress(), 0);
    EXPECT_EQ(zebRenderBucket(), 0);
    zebSceneEnd();
}

TEST_F(SceneTest, ProgressIsKnownWhereALongCannotCountTheBuckets)
{
    ZebDisplay device{};
    raster(12 << 16, 12 << 16);
    zebCustomDisplay(&device);
    zebSceneBegin();
    ASSERT_EQ(gScene->columns(), 1 << 16);
    ASSERT_EQ(gScene->rows(), 1 << 16);
    EXPECT_EQ(zebProgress(), 0);
    zebReset();
}

TEST_F(SceneTest, EveryRowIsFlushedOnceInsideAndOutsideTheCrop)
{
    for (const auto& [top, bottom] : {std::pair(0.25f, 0.75f), {0.0f, 1.0f}, {0.5f, 0.98f}}) {
        raster(20, 50);
        zebImageCrop(0, 1, top, bottom);
        zebSceneBegin();
        zebSceneEnd();
        std::vector<int> count(50);
        for (const auto& [y0, y1] : picture.flushes) {
            for (long y = y0; y <= y1; ++y) ++count.at(static_cast<std::size_t>(y));
        }
        EXPECT_EQ(count, std::vector<int>(50, 1)) << top << ' ' << bottom;
        zebReset();
    }
}

TEST_F(SceneTest, RowsAboveTheCropAreFlushedFirst)
{
    raster(20, 40);
    zebImageCrop(0, 1, 0.25f, 1);
    zebSceneBegin();
    zebRenderInit();
    EXPECT_EQ(picture.flushes, (std::vector<std::pair<long, long>>{{0, 9}}));
    zebSceneEnd();
}

TEST_F(SceneTest, APrimitiveWithoutBucketsIsRefused)
{
    gScene->add(probe(0, 1, 0, 1, 0.5f, 0.5f));
    EXPECT_EQ(log.gone, 1);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 7);
}

TEST_F(SceneTest, UnderTheNullHiderAPrimitiveGoesSilently)
{
    zebHider(ZEB_HIDER_NULL);
    gScene->add(probe(0, 1, 0, 1, 0.5f, 0.5f));
    EXPECT_EQ(log.gone, 1);
    EXPECT_TRUE(reports.empty());
}

TEST_F(SceneTest, WhatLiesOutsideTheClippingRangeIsNotFiled)
{
    raster(24, 24);
    zebClip(2, 10);
    zebSceneBegin();
    EXPECT_FALSE(filed(5, 6, 5, 6, 0, 1.9f));
    EXPECT_FALSE(filed(5, 6, 5, 6, 10.1f, 20));
    EXPECT_TRUE(filed(5, 6, 5, 6, 1, 2.1f));
    EXPECT_TRUE(filed(5, 6, 5, 6, 9.9f, 20));
    zebSceneEnd();
}

TEST_F(SceneTest, AnEmptyBoundIsNotFiled)
{
    raster(24, 24);
    zebSceneBegin();
    EXPECT_FALSE(filed(6, 5, 5, 6, 0.5f, 0.5f));
    EXPECT_FALSE(filed(5, 6, 6, 5, 0.5f, 0.5f));
    EXPECT_FALSE(filed(5, 6, 5, 6, 0.6f, 0.5f));
    EXPECT_TRUE(filed(5, 5, 5, 5, 0.5f, 0.5f));
    zebSceneEnd();
}

TEST_F(SceneTest, WhatTouchesNoSampleIsNotFiled)
{
    raster(24, 24);
    zebSceneBegin();
    // Samples reach from -0.5 to 24.5. World and camera space are one here, up to a shift in y.
    Boundw all(0, 24, 0, 24, 0.5f, 0.5f, 1, 1);
    const Point corner = Point(0, 0, 0.5f) * gCameraToRaster;
    const float sign = (Point(0, 1, 0.5f) * gCameraToRaster).y > corner.y ? 1.0f : -1.0f;
    const auto x = [&](float raster) { return raster - corner.x; };
    const float y = (12 - corner.y) * sign;
    EXPECT_FALSE(filed(x(-3), x(-0.6f), y, y, 0.5f, 0.5f));
    EXPECT_TRUE(filed(x(-3), x(-0.4f), y, y, 0.5f, 0.5f));
    EXPECT_TRUE(filed(x(24.4f), x(30), y, y, 0.5f, 0.5f));
    EXPECT_FALSE(filed(x(24.6f), x(30), y, y, 0.5f, 0.5f));
    zebSceneEnd();
}

TEST_F(SceneTest, WhatStraddlesTheEyePlaneIsSplitNeverDiced)
{
    zebRasterViewport(0, 24, 0, 24);
    zebViewPerspective(90);
    picture.attach();
    zebOutputSamples(ZEB_SAMPLES_RGBAZ);
    zebSceneBegin();
    gScene->add(probe(-1, 1, -1, 1, -1, 1, true));
    gScene->add(probe(-1, 1, -1, 1, 2, 3, true));
    zebSceneEnd();
    EXPECT_EQ(log.split, 1);
    EXPECT_EQ(log.diced, 1);
    EXPECT_EQ(log.gone, 2);
}

// In front of the eye, but with a w so small that 24 divided by it is no number below 1e38.
TEST_F(SceneTest, WhatCannotBeDividedByWIsSplitNeverDiced)
{
    for (const float w : {1e-37f, 1e-36f}) {
        log = {};
        raster(24, 24);
        zebSceneBegin();
        const Boundw box(-24, 24, -24, 24, 0.5f, 0.5f, w, 1);
        gScene->add(std::make_unique<Probe>(box, true, &log));
        zebSceneEnd();
        EXPECT_EQ(log.split, w < 2.4e-37f) << w;
        EXPECT_EQ(log.diced, w > 2.4e-37f) << w;
        zebReset();
    }
}

// 13 x 13 pixels are sampled: four times each, or eight times.
TEST_F(SceneTest, SamplingIsAdaptiveFromAVarianceOf1em10On)
{
    const auto samples = [this](float variance) {
        raster(12, 12);
        gOption->adaptiveThreshold = variance;
        zebSceneBegin();
        zebSceneEnd();
        const std::uint64_t count = gScene->counts().samples;
        zebReset();
        return count;
    };
    EXPECT_EQ(samples(0.999e-10f), 13u * 13u * 4u);
    EXPECT_EQ(samples(1e-10f), 13u * 13u * 8u);
}

TEST_F(SceneTest, APieceIsFiledNoEarlierThanTheBucketUnderWay)
{
    raster(48, 24);  // 4 x 2 buckets
    zebSceneBegin();
    const Point corner = Point(0, 0, 0.5f) * gCameraToRaster;
    const float sign = (Point(0, 1, 0.5f) * gCameraToRaster).y > corner.y ? 1.0f : -1.0f;
    const auto box = [&](float x, float row) {
        const float y = (row - corner.y) * sign;
        return probe(x - corner.x, x - corner.x, y, y, 0.5f, 0.5f);
    };
    // Split in bucket (2, 0): one piece lies in (0, 1), another in (0, 0).
    auto late = box(30, 6);
    late->fPiece = box(6, 18);
    gScene->add(std::move(late));
    auto early = box(30, 6);
    early->fPiece = box(6, 6);
    gScene->add(std::move(early));
    zebSceneEnd();
    std::sort(log.doneBefore.begin(), log.doneBefore.end());
    // Buckets (2, 0), three times, and (2, 1): (index + 1) * 100 / 8
    EXPECT_EQ(log.doneBefore, (std::vector<long>{37, 37, 37, 87}));
    EXPECT_EQ(log.gone, 4);
}

TEST_F(SceneTest, FlushDropsEverythingUnrendered)
{
    raster(24, 24);
    zebSceneBegin();
    gScene->add(probe(0, 1, 0, 1, 0.5f, 0.5f));
    gScene->flush();
    EXPECT_EQ(log.gone, 1);
    EXPECT_EQ(gScene->frame(), nullptr);
    EXPECT_EQ(gScene->progress(), 0);
}

TEST_F(SceneTest, APictureKeepsNoMemory)
{
    zebReset();
    const std::size_t before = Pool::regions();
    raster(100, 100);
    zebSceneBegin();
    for (int k = 0; k < 10000; ++k) {
        const auto u = static_cast<float>(k % 100) / 50, v = static_cast<float>(k / 100) / 50;
        zebMatrixPush();
        zebTranslate(u - 1, v - 1, 0.5f);
        zebSphere(0.02f, -0.02f, 0.02f, 360, 0);
        zebMatrixPop();
    }
    zebRenderInit();
    zebRenderBucket();
    if (!Pool::kFromHeap) {
        EXPECT_GE(Pool::regions(), before + 2);
    }
    zebSceneEnd();
    zebReset();
    EXPECT_EQ(Pool::regions(), before);
}

TEST_F(SceneTest, AMatteSurfaceStaysEmpty)
{
    raster(12, 12);
    beginFlat();
    zebtest::color(1, 1, 1);
    zebMatteObject(1);
    zebtest::rectangle(-5, -5, 20, 20, 0.5f);
    zebSceneEnd();
    EXPECT_EQ(red(6, 6), 0);
    EXPECT_EQ(alpha(6, 6), 0);
    EXPECT_EQ(depth(6, 6), 1);
}
