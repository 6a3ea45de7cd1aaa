#include "state/option.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "math/filter.h"
#include "math/spaces.h"
#include "state/state.h"
#include "support/reports.h"
#include "util/cores.h"

using namespace zeb;

namespace
{

using zebtest::Report;

class OptionTest : public testing::Test
{
protected:
    void SetUp() override { zebReset(); }
    void TearDown() override { zebReset(); }

    void expectReport(const std::string& message)
    {
        ASSERT_EQ(reports.size(), 1u) << message;
        EXPECT_EQ(reports[0].code, 10);
        EXPECT_EQ(reports[0].severity, 0xB04);
        EXPECT_EQ(reports[0].message, message);
        reports.clear();
    }
    zebtest::Reports reports;
};

float own(float, float, float, float) { return 1; }

}  // namespace

TEST_F(OptionTest, Defaults)
{
    const Option o;
    EXPECT_EQ(o.xres, 0);
    EXPECT_EQ(o.yres, 0);
    EXPECT_EQ(o.pixelAspect, 0);
    EXPECT_EQ(o.cropXmin, 0);
    EXPECT_EQ(o.cropXmax, 1);
    EXPECT_EQ(o.cropYmin, 0);
    EXPECT_EQ(o.cropYmax, 1);
    EXPECT_EQ(o.frameAspect, 0);
    EXPECT_EQ(o.left, 0);
    EXPECT_EQ(o.right, 0);
    EXPECT_EQ(o.bottom, 0);
    EXPECT_EQ(o.top, 0);
    EXPECT_TRUE(o.projection);
    EXPECT_FALSE(o.perspective);
    EXPECT_EQ(o.nearClip, 1e-10f);
    EXPECT_EQ(o.farClip, 1e38f);
    EXPECT_EQ(o.fstop, 1e38f);
    EXPECT_EQ(o.shutterOpen, 0);
    EXPECT_EQ(o.shutterClose, 0);
    EXPECT_EQ(o.adaptiveThreshold, -1);
    EXPECT_EQ(o.xsamples, 2);
    EXPECT_EQ(o.ysamples, 2);
    EXPECT_EQ(o.pixelFilter, &zebGaussianFilter);
    EXPECT_EQ(o.filterXwidth, 2);
    EXPECT_EQ(o.filterYwidth, 2);
    EXPECT_EQ(o.gain, 1);
    EXPECT_EQ(o.inverseGamma, 1);
    EXPECT_EQ(o.colorQuantizer.one, 255);
    EXPECT_EQ(o.colorQuantizer.min, 0);
    EXPECT_EQ(o.colorQuantizer.max, 255);
    EXPECT_EQ(o.colorQuantizer.dither, 0.5f);
    EXPECT_EQ(o.depthQuantizer.one, 0);
    EXPECT_EQ(o.outputKind, 0);
    EXPECT_STREQ(o.displayName.text(), "Zebrix");
    EXPECT_EQ(o.samples, 0x301);
    EXPECT_EQ(o.sampleCount, 3);
    EXPECT_TRUE(o.rgb);
    EXPECT_FALSE(o.alpha);
    EXPECT_FALSE(o.depth);
    EXPECT_EQ(o.xorigin, 0);
    EXPECT_EQ(o.yorigin, 0);
    EXPECT_EQ(o.hiderType, 0x400);
    EXPECT_EQ(o.jitter, 0.5f);
    EXPECT_TRUE(o.colorSpace.standard);
    EXPECT_EQ(o.colorSpace.samples, 3);
    EXPECT_EQ(o.detail, 1);
    EXPECT_EQ(o.tuning[0], 32);
    EXPECT_EQ(o.tuning[1], 12);
    EXPECT_EQ(o.tuning[2], 12);
    EXPECT_EQ(o.threads, 1);
}

TEST_F(OptionTest, PlainSettersStoreTheirValues)
{
    gOption->rasterViewport(-3, 320, 4, 240);
    EXPECT_EQ(gOption->xorigin, -3);
    EXPECT_EQ(gOption->xres, 320);
    EXPECT_EQ(gOption->yorigin, 4);
    EXPECT_EQ(gOption->yres, 240);
    gOption->rasterAspect(1.5f);
    EXPECT_EQ(gOption->pixelAspect, 1.5f);
    gOption->imageAspect(1.25f);
    EXPECT_EQ(gOption->frameAspect, 1.25f);
    gOption->imageWindow(-1, 2, -3, 4);
    EXPECT_EQ(gOption->left, -1);
    EXPECT_EQ(gOption->right, 2);
    EXPECT_EQ(gOption->bottom, -3);
    EXPECT_EQ(gOption->top, 4);
    gOption->depthOfField(2.8f, 0.05f, 3);
    EXPECT_EQ(gOption->fstop, 2.8f);
    EXPECT_EQ(gOption->focalLength, 0.05f);
    EXPECT_EQ(gOption->focalDistance, 3);
    gOption->shutter(0.25f, 0.75f);
    EXPECT_EQ(gOption->shutterOpen, 0.25f);
    EXPECT_EQ(gOption->shutterClose, 0.75f);
    gOption->sampleJitter(0.125f);
    EXPECT_EQ(gOption->jitter, 0.125f);
    gOption->filterWidth(3, 4);
    EXPECT_EQ(gOption->filterXwidth, 3);
    EXPECT_EQ(gOption->filterYwidth, 4);
    gOption->colorGain(1.5f);
    EXPECT_EQ(gOption->gain, 1.5f);
    gOption->relativeDetail(0.5f);
    EXPECT_EQ(gOption->detail, 0.5f);
    gOption->tune(16, 8, 24);
    EXPECT_EQ(gOption->tuning[0], 16);
    EXPECT_EQ(gOption->tuning[1], 8);
    EXPECT_EQ(gOption->tuning[2], 24);
    EXPECT_TRUE(reports.empty());
}

TEST_F(OptionTest, QuantizersStoreTheirValues)
{
    gOption->colorQuantize(1023, -5, 1000);
    gOption->colorJitter(0.25f);
    EXPECT_EQ(gOption->colorQuantizer.one, 1023);
    EXPECT_EQ(gOption->colorQuantizer.min, -5);
    EXPECT_EQ(gOption->colorQuantizer.max, 1000);
    EXPECT_EQ(gOption->colorQuantizer.dither, 0.25f);
    gOption->depthQuantize(65535, 1, 60000);
    gOption->depthJitter(0.75f);
    EXPECT_EQ(gOption->depthQuantizer.one, 65535);
    EXPECT_EQ(gOption->depthQuantizer.min, 1);
    EXPECT_EQ(gOption->depthQuantizer.max, 60000);
    EXPECT_EQ(gOption->depthQuantizer.dither, 0.75f);
    EXPECT_TRUE(reports.empty());
}

TEST_F(OptionTest, CropBoundsAreExchangedWhenBackward)
{
    gOption->imageCrop(0.8f, 0.2f, 0, 1);
    EXPECT_EQ(gOption->cropXmin, 0.2f);
    EXPECT_EQ(gOption->cropXmax, 0.8f);
    EXPECT_EQ(gOption->cropYmin, 0);
    EXPECT_EQ(gOption->cropYmax, 1);
    gOption->imageCrop(0, 1, 0.75f, 0.25f);
    EXPECT_EQ(gOption->cropYmin, 0.25f);
    EXPECT_EQ(gOption->cropYmax, 0.75f);
    EXPECT_TRUE(reports.empty());
}

TEST_F(OptionTest, CropBoundsOutsideAreReportedAndKept)
{
    const float crops[][4] = {
        {-0.5f, 1, 0, 1}, {0, 1.5f, 0, 1}, {0, 1, -0.5f, 1}, {0, 1, 0, 1.5f}, {1.5f, 0, 0, 1}};
    for (const auto& c : crops) {
        gOption->imageCrop(c[0], c[1], c[2], c[3]);
        expectReport("values should be in range 0 to 1, clamping");
        EXPECT_EQ(gOption->cropXmin, std::min(c[0], c[1]));
        EXPECT_EQ(gOption->cropXmax, std::max(c[0], c[1]));
        EXPECT_EQ(gOption->cropYmin, c[2]);
        EXPECT_EQ(gOption->cropYmax, c[3]);
    }
}

TEST_F(OptionTest, ViewsSetProjectionAndPerspective)
{
    gOption->viewPerspective(60);
    EXPECT_TRUE(gOption->projection);
    EXPECT_TRUE(gOption->perspective);
    gOption->viewIdentity();
    EXPECT_FALSE(gOption->projection);
    EXPECT_FALSE(gOption->perspective);
    gOption->viewOrthographic();
    EXPECT_TRUE(gOption->projection);
    EXPECT_FALSE(gOption->perspective);
}

TEST_F(OptionTest, ViewsTakeTheTransformationOverAsTheProjection)
{
    for (auto view : {&Option::viewOrthographic, &Option::viewIdentity}) {
        gTransform->translate(1, 2, 3);
        const Matrix built = gTransform->matrix();
        gTransform->snapshot();
        (gOption->*view)();
        EXPECT_EQ(gCameraToScreen, built);
        EXPECT_EQ(gCameraToRaster, gCameraToScreen * gScreenToRaster);
        EXPECT_EQ(gTransform->matrix(), gIdentity);
        EXPECT_TRUE(gTransform->changed());
    }
}

TEST_F(OptionTest, PerspectiveActsBeforeTheTransformation)
{
    gTransform->scale(2, 2, 1);
    Matrix expected = gTransform->matrix();
    expected.perspective(60);
    gOption->viewPerspective(60);
    EXPECT_EQ(gCameraToScreen, expected);
    EXPECT_EQ(gCameraToRaster, gCameraToScreen * gScreenToRaster);
    EXPECT_EQ(gTransform->matrix(), gIdentity);
    EXPECT_TRUE(gTransform->changed());
}

TEST_F(OptionTest, AFieldOfViewOutOfRangeBecomesARightAngle)
{
    Matrix right;
    right.perspective(90);
    for (const auto& [fov, text] :
         {std::pair<float, const char*>{0, "0"}, {181, "181"}, {-1, "-1"}, {0.5e-10f, "5e-11"}}) {
        gOption->viewPerspective(fov);
        expectReport("fov " + std::string(text) + " out of range, using 90 degrees");
        EXPECT_EQ(gCameraToScreen, right);
    }
    gOption->viewPerspective(180);
    EXPECT_TRUE(reports.empty());
    EXPECT_NE(gCameraToScreen, right);
}

TEST_F(OptionTest, ClipStoresARange)
{
    gOption->clip(1, 10);
    EXPECT_EQ(gOption->nearClip, 1);
    EXPECT_EQ(gOption->farClip, 10);
    EXPECT_TRUE(reports.empty());
}

TEST_F(OptionTest, NearClippingOutOfRangeBecomesTheMinimum)
{
    gOption->clip(0, 10);
    expectReport("near clipping distance 0 out of range, using minimum");
    EXPECT_EQ(gOption->nearClip, 1e-10f);
    EXPECT_EQ(gOption->farClip, 10);
    gOption->clip(5, 5);
    expectReport("near clipping distance 5 out of range, using minimum");
    EXPECT_EQ(gOption->nearClip, 1e-10f);
    EXPECT_EQ(gOption->farClip, 5);
    gOption->clip(7, 5);
    expectReport("near clipping distance 7 out of range, using minimum");
}

// The number in the message is the near distance.
TEST_F(OptionTest, FarClippingOutOfRangeBecomesTheMaximum)
{
    gOption->clip(2, 2e38f);
    EXPECT_EQ(gOption->nearClip, 2);
    EXPECT_EQ(gOption->farClip, 1e38f);
    expectReport("far clipping distance 2e+38 out of range, using maximum");
}

TEST_F(OptionTest, BothClippingDistancesCanBeOutOfRange)
{
    gOption->clip(5, -1);
    EXPECT_EQ(gOption->nearClip, 1e-10f);
    EXPECT_EQ(gOption->farClip, 1e38f);
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0].message, "near clipping distance 5 out of range, using minimum");
    EXPECT_EQ(reports[1].code, 10);
    EXPECT_EQ(reports[1].message.find("far clipping distance "), 0u);
}

TEST_F(OptionTest, AdaptiveSamplingHasALeastThreshold)
{
    gOption->sampleAdaptive(0.25f);
    EXPECT_EQ(gOption->adaptiveThreshold, 0.25f);
    gOption->sampleAdaptive(0);
    EXPECT_EQ(gOption->adaptiveThreshold, 1e-10f);
    gOption->sampleAdaptive(-5);
    EXPECT_EQ(gOption->adaptiveThreshold, 1e-10f);
    EXPECT_TRUE(reports.empty());
}

TEST_F(OptionTest, UniformSamplingIsAtLeastOneAndEndsAdaptiveSampling)
{
    gOption->sampleAdaptive(0.25f);
    gOption->sampleUniform(0.5f, 3);
    EXPECT_EQ(gOption->adaptiveThreshold, 0);
    EXPECT_EQ(gOption->xsamples, 1);
    EXPECT_EQ(gOption->ysamples, 3);
    gOption->sampleUniform(4, 0);
    EXPECT_EQ(gOption->xsamples, 4);
    EXPECT_EQ(gOption->ysamples, 1);
    EXPECT_TRUE(reports.empty());
}

TEST_F(OptionTest, FiltersGoByNumber)
{
    const FilterFunction filters[] = {zebGaussianFilter, zebCatmullRomFilter, zebBoxFilter,
                                      zebTriangleFilter, zebSincFilter};
    for (short i = 0; i < 5; ++i) {
        gOption->filter(static_cast<short>(0x100 + i));
        EXPECT_EQ(gOption->pixelFilter, filters[i]);
    }
    gOption->filter(0x105);
    expectReport("unknown filter function 261");
    gOption->filter(0);
    expectReport("unknown filter function 0");
    EXPECT_EQ(gOption->pixelFilter, &zebSincFilter);
}

TEST_F(OptionTest, TheHostsFilterIsStored)
{
    gOption->customFilter(own);
    EXPECT_EQ(gOption->pixelFilter, &own);
}

TEST_F(OptionTest, GammaIsStoredAsItsReciprocal)
{
    gOption->colorGamma(2.2f);
    EXPECT_FLOAT_EQ(gOption->inverseGamma, 1 / 2.2f);
    for (float gamma : {0.0f, -1.0f, 0.5e-10f}) {
        gOption->colorGamma(gamma);
        expectReport("gamma must be greater than 0");
        EXPECT_FLOAT_EQ(gOption->inverseGamma, 1 / 2.2f);
    }
}

TEST_F(OptionTest, OutputDisplayNamesAWindow)
{
    gOption->outputFile(0x201, "picture.png");
    EXPECT_STREQ(gOption->displayName.text(), "picture.png");
    EXPECT_NE(gOption->outputKind, 0);
    gOption->outputDisplay("title");
    EXPECT_EQ(gOption->outputKind, 0);
    EXPECT_STREQ(gOption->displayName.text(), "title");
    EXPECT_TRUE(reports.empty());
}

TEST_F(OptionTest, OutputSamplesAreCounted)
{
    const unsigned short counts[] = {0, 3, 1, 4, 1, 4, 2, 5};
    for (unsigned short bits = 1; bits < 8; ++bits) {
        gOption->outputSamples(static_cast<short>(0x300 + bits));
        EXPECT_EQ(gOption->samples, 0x300 + bits);
        EXPECT_EQ(gOption->sampleCount, counts[bits]) << bits;
        EXPECT_EQ(gOption->rgb, (bits & 1) != 0);
        EXPECT_EQ(gOption->alpha, (bits & 2) != 0);
        EXPECT_EQ(gOption->depth, (bits & 4) != 0);
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(OptionTest, UnknownOutputSamplesAreRefused)
{
    gOption->outputSamples(0x302);
    for (short samples : {0x300, 0x309, 0x381, 0x201, 0x001}) {
        gOption->outputSamples(samples);
        expectReport("unknown samples " + std::to_string(samples));
        EXPECT_EQ(gOption->samples, 0x302);
        EXPECT_EQ(gOption->sampleCount, 1);
        EXPECT_TRUE(gOption->alpha);
    }
}

TEST_F(OptionTest, HidersGoByNumber)
{
    for (short type : {0, 0x401, 0x400}) {
        gOption->hider(type);
        EXPECT_EQ(gOption->hiderType, type);
    }
    EXPECT_TRUE(reports.empty());
    gOption->hider(0x401);
    gOption->hider(0x402);
    expectReport("unknown hider type 1026, using hidden");
    EXPECT_EQ(gOption->hiderType, 0x400);
}

TEST_F(OptionTest, AColorSpaceIsCopied)
{
    float toRgb[] = {1, 2, 3, 4, 5, 6}, fromRgb[] = {7, 8, 9, 10, 11, 12};
    gOption->setColorSpace(2, toRgb, fromRgb);
    toRgb[0] = fromRgb[5] = 0;
    EXPECT_FALSE(gOption->colorSpace.standard);
    EXPECT_EQ(gOption->colorSpace.samples, 2);
    EXPECT_EQ(gOption->colorSpace.toRgb, (std::vector<float>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(gOption->colorSpace.fromRgb, (std::vector<float>{7, 8, 9, 10, 11, 12}));
    EXPECT_EQ(currentColorSpace().samples, 2);
}

TEST_F(OptionTest, ACopyHasItsOwnNameAndMatrices)
{
    const float toRgb[] = {1, 2, 3}, fromRgb[] = {4, 5, 6};
    gOption->outputDisplay("first");
    gOption->setColorSpace(1, toRgb, fromRgb);
    zebFrameBegin();
    gOption->outputDisplay("second");
    gOption->setColorSpace(1, fromRgb, toRgb);
    zebFrameEnd();
    EXPECT_STREQ(gOption->displayName.text(), "first");
    EXPECT_EQ(gOption->colorSpace.toRgb[0], 1);
}

TEST_F(OptionTest, ImagerChangesNothing)
{
    gOption->imager(1, 0, nullptr, nullptr);
    EXPECT_TRUE(reports.empty());
}

TEST_F(OptionTest, QuirksAreKeptUnlessMended)
{
    EXPECT_TRUE(gOption->quirks);
    gOption->setQuirks(0);
    EXPECT_FALSE(gOption->quirks);
}

TEST_F(OptionTest, DepthIsFilteredUnlessTheNearestIsWanted)
{
    EXPECT_FALSE(gOption->depthNearest);
    gOption->setDepthNearest(1);
    EXPECT_TRUE(gOption->depthNearest);
    gOption->setDepthNearest(0);
    EXPECT_FALSE(gOption->depthNearest);
}

TEST_F(OptionTest, ThreadsAreUpTo256)
{
    for (long n = 256; n >= 0; --n) {
        gOption->setThreads(n);
        EXPECT_EQ(gOption->threads, n);
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(OptionTest, OtherNumbersOfThreadsAreRefused)
{
    constexpr long kLeast = std::numeric_limits<long>::min();
    constexpr long kMost = std::numeric_limits<long>::max();
    for (const long before : {0L, 3L}) {
        gOption->setThreads(before);
        for (const long n : {-1L, 257L, -256L, kLeast, kMost}) {
            gOption->setThreads(n);
            expectReport("thread count " + std::to_string(n) + " out of range");
            EXPECT_EQ(gOption->threads, before);
        }
    }
}

TEST_F(OptionTest, NoNumberOfThreadsIsOneACore)
{
    Option o;
    EXPECT_EQ(o.threadCount(), 1);
    o.threads = 256;
    EXPECT_EQ(o.threadCount(), 256);
    o.threads = 0;
    EXPECT_EQ(o.threadCount(), usableCores());
}

TEST_F(OptionTest, AFrameGivesItsThreadsBack)
{
    zebThreads(3);
    zebFrameBegin();
    EXPECT_EQ(gOption->threads, 3);
    zebThreads(5);
    zebFrameEnd();
    EXPECT_EQ(gOption->threads, 3);
    zebReset();
    EXPECT_EQ(gOption->threads, 1);
}

TEST_F(OptionTest, SettersAreRefusedInAWorldBlock)
{
    zebHider(0);
    zebSceneBegin();
    const float identity[] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    const std::function<void()> setters[] = {
        [] { gOption->rasterViewport(1, 2, 3, 4); },
        [] { gOption->rasterAspect(2); },
        [] { gOption->imageWindow(1, 2, 3, 4); },
        [] { gOption->imageAspect(2); },
        [] { gOption->imageCrop(0.5f, 0.6f, 0.5f, 0.6f); },
        [] { gOption->viewOrthographic(); },
        [] { gOption->viewPerspective(200); },
        [] { gOption->viewIdentity(); },
        [] { gOption->clip(0, 0); },
        [] { gOption->depthOfField(1, 2, 3); },
        [] { gOption->shutter(1, 2); },
        [] { gOption->sampleAdaptive(1); },
        [] { gOption->sampleUniform(1, 1); },
        [] { gOption->sampleJitter(0); },
        [] { gOption->filter(0); },
        [] { gOption->customFilter(own); },
        [] { gOption->filterWidth(1, 1); },
        [] { gOption->colorGain(2); },
        [] { gOption->colorGamma(0); },
        [] { gOption->colorQuantize(1, 1, 1); },
        [] { gOption->colorJitter(0); },
        [] { gOption->depthQuantize(1, 1, 1); },
        [] { gOption->depthJitter(1); },
        [] { gOption->outputDisplay("other"); },
        [] { gOption->outputFile(0x201, "other"); },
        [] { gOption->customDisplay(nullptr); },
        [] { gOption->outputSamples(0); },
        [] { gOption->hider(5); },
        [&] { gOption->setColorSpace(3, identity, identity); },
        [] { gOption->relativeDetail(2); },
        [] { gOption->tune(1, 1, 1); },
        [] { gOption->imager(1, 0, nullptr, nullptr); },
        [] { gOption->setQuirks(0); },
        [] { gOption->setDepthNearest(1); },
        [] { gOption->setThreads(2); },
    };
    int number = 0;
    for (const auto& setter : setters) {
        reports.clear();
        setter();
        ASSERT_EQ(reports.size(), 1u) << number;
        EXPECT_EQ(reports[0], (Report{5, 0xB04, "(null)"})) << number++;
    }
    EXPECT_EQ(gOption->cropXmin, 0);
    EXPECT_EQ(gOption->nearClip, 1e-10f);
    EXPECT_EQ(gOption->jitter, 0.5f);
    EXPECT_EQ(gOption->tuning[0], 32);
    EXPECT_EQ(gOption->hiderType, 0);
    EXPECT_EQ(gOption->threads, 1);
    EXPECT_TRUE(gOption->colorSpace.standard);
}
