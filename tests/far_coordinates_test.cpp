// Coordinates that are large against the distance of the eye: a planet under one's feet, a city in
// the coordinates of a country. What is closed stays closed, and nothing shakes.

#include "support/families.h"

namespace zebtest
{

namespace
{

constexpr long kWidth = 128, kHeight = 96;

class FarCoordinates : public testing::Test
{
protected:
    ~FarCoordinates() override { zebReset(); }

    void begin()
    {
        zebReset();
        zebQuirks(0);
        zebRasterViewport(0, kWidth, 0, kHeight);
        zebFilter(ZEB_FILTER_BOX);
        zebFilterWidth(1, 1);
        zebViewPerspective(60);
        zebOutputSamples(ZEB_SAMPLES_ALPHA);
        picture.attachFloat();
    }
    // All pixels of the rows from first on are whole.
    void expectWholeFrom(long first)
    {
        double missing = 0;
        for (long y = first; y < kHeight; ++y) {
            for (long x = 0; x < kWidth; ++x) missing += 1 - double{picture.value(x, y, 0)};
        }
        EXPECT_EQ(missing, 0) << "pixels' worth of samples see through";
    }
    void expectNothingUpTo(long last)
    {
        for (long y = 0; y <= last; ++y) {
            for (long x = 0; x < kWidth; ++x) ASSERT_EQ(picture.value(x, y, 0), 0) << x << ' ' << y;
        }
    }

    Picture picture{1};
    Reports reports;
};

}  // namespace

TEST_F(FarCoordinates, ASphereUnderTheEyeIsClosedUpToItsHorizon)
{
    for (const float eye : {1.0f, 2.0f}) {
        for (const float radius : {100.0f, 1e3f, 1e4f, 1e5f, 1e6f, 6.4e6f}) {
            SCOPED_TRACE(radius);
            begin();
            zebTranslate(0, -(radius + eye), 0);
            zebRotate(30, 1, 0.3f, 0.1f);
            zebSceneBegin();
            zebSurface(zebQuark("constant"), 0);
            zebSphere(radius, -radius, radius, 360, 0);
            zebSceneEnd();
            // The horizon lies acos(R / (R + eye)) below the line of sight, which is row 48.
            const double dip = std::acos(double{radius} / (double{radius} + double{eye}));
            const double row = 48 + 48 * std::tan(dip) / std::tan(M_PI / 6);
            expectNothingUpTo(static_cast<long>(std::floor(row)) - 2);
            expectWholeFrom(static_cast<long>(std::ceil(row)) + 8);
        }
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(FarCoordinates, AGroundPlaneFarFromItsOriginIsClosed)
{
    for (const float away : {1e2f, 1e4f, 1e6f, 5e6f}) {
        SCOPED_TRACE(away);
        begin();
        zebTranslate(-away, -1, -away);
        zebSceneBegin();
        zebSurface(zebQuark("constant"), 0);
        const float w = 2e6f;
        polygon({{away - w, 0, away - w},
                 {away + w, 0, away - w},
                 {away + w, 0, away + w},
                 {away - w, 0, away + w}});
        zebSceneEnd();
        expectNothingUpTo(47);
        expectWholeFrom(50);
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(FarCoordinates, ACityStandsStillWhenItsOriginIsFarAway)
{
    // The same houses, once about the origin, once about a place whose coordinates the camera takes
    // away again; both turned.
    const auto render = [&](float x, float z, Picture& to) {
        zebReset();
        zebQuirks(0);
        zebRasterViewport(0, kWidth, 0, kHeight);
        zebViewPerspective(60);
        zebOutputSamples(0x303);
        to.attachFloat();
        zebTranslate(0, -3, 30);
        zebRotate(-20, 1, 0, 0);
        zebRotate(37, 0, 1, 0);
        zebTranslate(-x, 0, -z);
        zebSceneBegin();
        zebLightSource(zebQuark("distant"), 0);
        zebSurface(zebQuark("diffuse"), 0);
        for (int house = 0; house < 9; ++house) {
            zebAttributePush();
            zebTranslate(x + 8 * static_cast<float>(house % 3 - 1), 0,
                         z + 8 * static_cast<float>(house / 3 - 1));
            zebRotate(10 * static_cast<float>(house), 0, 1, 0);
            addCube(4);
            zebAttributePop();
        }
        zebSceneEnd();
    };
    Picture here(4), there(4);
    render(0, 0, here);
    ASSERT_GT(here.sum(3), 1500);
    for (const float x : {1e4f, 5e6f, 1.6e7f}) {
        render(x, -2 * x, there);
        long differing = 0;
        for (long y = 0; y < kHeight; ++y) {
            for (long px = 0; px < kWidth; ++px) {
                for (int c = 0; c < 4; ++c) {
                    differing += std::fabs(here.value(px, y, c) - there.value(px, y, c)) > 0.002f;
                }
            }
        }
        EXPECT_EQ(differing, 0) << x;
    }
}

TEST_F(FarCoordinates, ASurfaceGivenFarFromItsOriginIsTheSameNearIt)
{
    // A quadrilateral and a patch so near that they are split many times over.
    const auto render = [&](float o, bool patch, Picture& to) {
        begin();
        to.attachFloat();
        zebTranslate(-o, -o, -o + 1);
        zebSceneBegin();
        const Vec p[4] = {{o - 64, o - 64, o},
                          {o + 64, o - 64, o + 64},
                          {o - 64, o + 64, o + 32},
                          {o + 64, o + 64, o + 96}};
        if (patch) {
            zebPatch(ZEB_BILINEAR, zebQuark("point"), p, 0);
        } else {
            polygon({p[0], p[1], p[3], p[2]});
        }
        zebSceneEnd();
    };
    Picture here(1), there(1);
    for (const bool patch : {false, true}) {
        render(0, patch, here);
        ASSERT_GT(here.sum(0), 9000);
        render(5e6f, patch, there);
        EXPECT_EQ(here.words(), there.words());
    }
}

}  // namespace zebtest
