// Options that no host should ask for.
#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "math/filter.h"
#include "math/spaces.h"
#include "state/state.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

class OptionInputTest : public testing::Test
{
protected:
    void SetUp() override { zebReset(); }
    void TearDown() override { zebReset(); }

    void expectRefused(const char* what, const std::function<void()>& call)
    {
        reports.clear();
        call();
        ASSERT_EQ(reports.size(), 1u) << what;
        EXPECT_TRUE(reports[0].code == 10 || reports[0].code == 11) << what;
        EXPECT_EQ(reports[0].severity, 0xB04) << what;
        EXPECT_EQ(reports[0].message.find(what), 0u) << reports[0].message;
    }
    void expectDefaults()
    {
        const Option o;
        EXPECT_EQ(gOption->pixelAspect, o.pixelAspect);
        EXPECT_EQ(gOption->frameAspect, o.frameAspect);
        EXPECT_EQ(gOption->left, o.left);
        EXPECT_EQ(gOption->top, o.top);
        EXPECT_EQ(gOption->cropXmin, o.cropXmin);
        EXPECT_EQ(gOption->cropYmax, o.cropYmax);
        EXPECT_EQ(gOption->perspective, o.perspective);
        EXPECT_EQ(gOption->nearClip, o.nearClip);
        EXPECT_EQ(gOption->farClip, o.farClip);
        EXPECT_EQ(gOption->adaptiveThreshold, o.adaptiveThreshold);
        EXPECT_EQ(gOption->xsamples, o.xsamples);
        EXPECT_EQ(gOption->ysamples, o.ysamples);
        EXPECT_EQ(gOption->jitter, o.jitter);
        EXPECT_EQ(gOption->pixelFilter, o.pixelFilter);
        EXPECT_EQ(gOption->filterXwidth, o.filterXwidth);
        EXPECT_EQ(gOption->filterYwidth, o.filterYwidth);
        EXPECT_EQ(gOption->gain, o.gain);
        EXPECT_EQ(gOption->inverseGamma, o.inverseGamma);
        EXPECT_EQ(gOption->colorQuantizer.dither, o.colorQuantizer.dither);
        EXPECT_EQ(gOption->depthQuantizer.dither, o.depthQuantizer.dither);
        EXPECT_EQ(gOption->outputKind, o.outputKind);
        EXPECT_EQ(gOption->displayName, o.displayName);
        EXPECT_EQ(gOption->tuning[0], o.tuning[0]);
        EXPECT_EQ(gOption->tuning[1], o.tuning[1]);
        EXPECT_EQ(gOption->tuning[2], o.tuning[2]);
        EXPECT_EQ(gOption->threads, o.threads);
        EXPECT_TRUE(gOption->colorSpace.standard);
        EXPECT_EQ(gOption->colorSpace.samples, 3);
        EXPECT_EQ(gCameraToScreen, gIdentity);
    }
    zebtest::Reports reports;
};

}  // namespace

TEST_F(OptionInputTest, NumbersThatAreNoneAreRefused)
{
    const float infinite = std::numeric_limits<float>::infinity();
    for (float bad : {std::numeric_limits<float>::quiet_NaN(), infinite, -infinite}) {
        expectRefused("zebRasterAspect", [bad] { zebRasterAspect(bad); });
        expectRefused("zebImageAspect", [bad] { zebImageAspect(bad); });
        expectRefused("zebImageWindow", [bad] { zebImageWindow(-1, 1, -1, bad); });
        expectRefused("zebImageWindow", [bad] { zebImageWindow(bad, 1, -1, 1); });
        expectRefused("zebImageCrop", [bad] { zebImageCrop(bad, 1, 0, 1); });
        expectRefused("zebImageCrop", [bad] { zebImageCrop(0, 1, 0, bad); });
        expectRefused("zebSampleAdaptive", [bad] { zebSampleAdaptive(bad); });
        expectRefused("zebSampleUniform", [bad] { zebSampleUniform(bad, 2); });
        expectRefused("zebSampleUniform", [bad] { zebSampleUniform(2, bad); });
        expectRefused("zebSampleJitter", [bad] { zebSampleJitter(bad); });
        expectRefused("zebFilterWidth", [bad] { zebFilterWidth(bad, 2); });
        expectRefused("zebFilterWidth", [bad] { zebFilterWidth(2, bad); });
        expectRefused("zebColorGain", [bad] { zebColorGain(bad); });
        expectRefused("zebColorGamma", [bad] { zebColorGamma(bad); });
        expectRefused("zebColorJitter", [bad] { zebColorJitter(bad); });
        expectRefused("zebDepthJitter", [bad] { zebDepthJitter(bad); });
        expectDefaults();
    }
}

TEST_F(OptionInputTest, AFieldOfViewThatIsNoNumberIsRefused)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    expectRefused("zebViewPerspective", [nan] { zebViewPerspective(nan); });
    expectDefaults();
}

TEST_F(OptionInputTest, AClippingDistanceThatIsNoNumberIsRefused)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    expectRefused("zebClip", [nan] { zebClip(nan, 10); });
    expectDefaults();
    expectRefused("zebClip", [nan] { zebClip(1, nan); });
    expectDefaults();
}

TEST_F(OptionInputTest, InfiniteDistancesAndAnglesAreOutOfRange)
{
    const float infinite = std::numeric_limits<float>::infinity();
    zebClip(1, infinite);
    EXPECT_EQ(gOption->nearClip, 1);
    EXPECT_EQ(gOption->farClip, 1e38f);
    zebClip(-infinite, 10);
    EXPECT_EQ(gOption->nearClip, 1e-10f);
    EXPECT_EQ(gOption->farClip, 10);
    Matrix right;
    right.perspective(90);
    zebViewPerspective(infinite);
    EXPECT_EQ(gCameraToScreen, right);
    EXPECT_EQ(reports.size(), 3u);
}

TEST_F(OptionInputTest, NumbersOutOfAnyUseAreRefused)
{
    expectRefused("zebFilterWidth", [] { zebFilterWidth(0, 2); });
    expectRefused("zebFilterWidth", [] { zebFilterWidth(2, -1); });
    expectRefused("zebSampleJitter", [] { zebSampleJitter(-0.5f); });
    expectRefused("zebTune", [] { zebTune(0, 12, 12); });
    expectRefused("zebTune", [] { zebTune(32, 0, 12); });
    expectRefused("zebTune", [] { zebTune(32, 12, -1); });
    expectRefused("zebThreads", [] { zebThreads(-1); });
    expectRefused("zebThreads", [] { zebThreads(257); });
    expectDefaults();
}

TEST_F(OptionInputTest, NullPointersAreRefused)
{
    const float matrix[] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    expectRefused("zebCustomFilter", [] { zebCustomFilter(nullptr); });
    expectRefused("zebColorSpace", [&] { zebColorSpace(3, nullptr, matrix); });
    expectRefused("zebColorSpace", [&] { zebColorSpace(3, matrix, nullptr); });
    expectRefused("zebOutputFile", [] { zebOutputFile(0x201, nullptr); });
    expectDefaults();
}

TEST_F(OptionInputTest, BadColorSpacesAreRefused)
{
    const float matrix[] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    const float bad[] = {1, 0, 0, 0, std::numeric_limits<float>::quiet_NaN(), 0, 0, 0, 1};
    expectRefused("zebColorSpace", [&] { zebColorSpace(0, matrix, matrix); });
    expectRefused("zebColorSpace", [&] { zebColorSpace(-3, matrix, matrix); });
    expectRefused("zebColorSpace", [&] { zebColorSpace(3, bad, matrix); });
    expectRefused("zebColorSpace", [&] { zebColorSpace(3, matrix, bad); });
    expectDefaults();
}

TEST_F(OptionInputTest, UnknownFilesAreRefused)
{
    expectRefused("zebOutputFile", [] { zebOutputFile(0x2FF, "picture.png"); });
    expectRefused("zebOutputFile", [] { zebOutputFile(0x201, ""); });
    expectDefaults();
}

TEST_F(OptionInputTest, PicturesNoMemoryCouldHoldAreRefused)
{
    expectRefused("zebRasterViewport",
                  [] { zebRasterViewport(0, 2'000'000'000, 0, 2'000'000'000); });
    EXPECT_EQ(gOption->xres, 0);
    EXPECT_EQ(gOption->yres, 0);
    EXPECT_EQ(gOption->xorigin, 0);
}
