// What surfaces add by their opacity: once, or twice by default.

#include "support/scene.h"

namespace zebtest
{

namespace
{

class Opacity : public RasterTest
{
protected:
    void begin(short quirks = 0, short hider = ZEB_HIDER_HIDDEN)
    {
        zebReset();
        raster(4, 4);
        // The sequence hider knows no depth.
        zebOutputSamples(ZEB_SAMPLES_RGBA);
        picture.setChannels(4);
        zebHider(hider);
        zebQuirks(quirks);
        beginFlat();
    }
    static void layer(const Vec& c, const Vec& o, float z)
    {
        zebColor(c.data());
        zebOpacity(o.data());
        rectangle(-2, -2, 6, 6, z);
    }
    void expectPixel(double r, double g, double b, double a) const
    {
        EXPECT_NEAR(red(2, 2), r, 1e-6);
        EXPECT_NEAR(green(2, 2), g, 1e-6);
        EXPECT_NEAR(blue(2, 2), b, 1e-6);
        EXPECT_NEAR(alpha(2, 2), a, 1e-6);
    }
};

const Vec kWhite{1, 1, 1}, kBlack{0, 0, 0}, kHalf{0.5f, 0.5f, 0.5f};

}  // namespace

TEST_F(Opacity, CountsOnceUnlessQuirksAreKept)
{
    begin(0);
    layer(kWhite, kHalf, 0.5f);
    zebSceneEnd();
    expectPixel(0.5, 0.5, 0.5, 0.5);
    begin(1);
    layer(kWhite, kHalf, 0.5f);
    zebSceneEnd();
    expectPixel(0.25, 0.25, 0.25, 0.5);
}

TEST_F(Opacity, CountsOnceInEveryChannel)
{
    begin();
    layer({0.2f, 0.4f, 0.8f}, kWhite, 0.6f);
    layer({0.5f, 0.5f, 0.5f}, {1, 0.25f, 0}, 0.5f);
    zebSceneEnd();
    expectPixel(0.5, 0.5 * 0.25 + 0.75 * 0.4, 0.8, 1);
}

TEST_F(Opacity, CountsOnceUnderAdaptiveSamplingToo)
{
    raster(4, 4);
    zebSampleAdaptive(0.001f);
    beginFlat();
    layer(kWhite, kHalf, 0.5f);
    zebSceneEnd();
    expectPixel(0.5, 0.5, 0.5, 0.5);
}

TEST_F(Opacity, CountsOnceInTheOrderOfTheHider)
{
    for (const short hider : {ZEB_HIDER_HIDDEN, ZEB_HIDER_SEQUENCE}) {
        begin(0, hider);
        layer({1, 0, 0}, kHalf, 0.2f);
        layer({0, 1, 0}, {0.25f, 0.25f, 0.25f}, 0.7f);
        zebSceneEnd();
        if (hider == ZEB_HIDER_HIDDEN) {
            expectPixel(0.5, 0.5 * 0.25, 0, 0.625);
        } else {
            expectPixel(0.75 * 0.5, 0.25, 0, 0.625);
        }
    }
}

TEST_F(Opacity, CountsOnceBeforeAMatteAndIsNothingInIt)
{
    begin();
    layer(kWhite, kHalf, 0.2f);
    zebMatteObject(1);
    layer(kWhite, kHalf, 0.5f);
    zebSceneEnd();
    expectPixel(0.5, 0.5, 0.5, 0.5);
}

// Light of 0.5 on a white surface that faces it, and a highlight of 0.5 in the same place: what
// they add is weighed like the colour.
TEST_F(Opacity, WeighsLitSurfaces)
{
    const float half = 0.5f;
    const struct {
        const char* name;
        double lit;
    } surfaces[] = {{"diffuse", 0.5}, {"metal", 0.5}, {"plastic", 0.25 + 0.25}};
    for (const auto& surface : surfaces) {
        begin();
        zebLightSource(zebQuark("distant"), zebQuark("intensity"), &half, 0);
        zebSurface(zebQuark(surface.name), 0);
        layer(kWhite, kHalf, 0.5f);
        zebSceneEnd();
        expectPixel(surface.lit / 2, surface.lit / 2, surface.lit / 2, 0.5);
    }
}

// So thick that nothing but the fog is left, or but the cue.
TEST_F(Opacity, WeighsTheAtmosphereOnceEitherWay)
{
    const float thin = 0.001f;
    const Vec gray{0.8f, 0.4f, 0.2f};
    for (const char* name : {"fog", "depthcue"}) {
        for (const short quirks : {0, 1}) {
            begin(quirks);
            zebAtmosphere(zebQuark(name), zebQuark(name[0] == 'f' ? "distance" : "yon"), &thin,
                          zebQuark("color"), gray.data(), 0);
            layer(kWhite, {0.5f, 0.25f, 0}, 0.5f);
            zebSceneEnd();
            expectPixel(0.4, 0.1, 0, 0.25);
        }
    }
}

// Half way: a mean of the surface's colour and the cue's, times the opacity.
TEST_F(Opacity, WeighsWhatTheAtmosphereMixes)
{
    begin();
    zebAtmosphere(zebQuark("depthcue"), zebQuark("color"), kBlack.data(), 0);
    layer(kWhite, {0.5f, 0.25f, 0}, 0.5f);
    zebSceneEnd();
    expectPixel(0.25, 0.125, 0, 0.25);
}

TEST_F(Opacity, EndsAtZeroAndOneUnlessQuirksAreKept)
{
    begin(0);
    layer({0.2f, 0.4f, 0.8f}, kWhite, 0.6f);
    layer({0.1f, 0.1f, 0.1f}, {2, 0.5f, -1}, 0.5f);
    zebSceneEnd();
    expectPixel(0.1, 0.05 + 0.5 * 0.4, 0.8, 1);
    begin(1);
    layer({0.2f, 0.4f, 0.8f}, kWhite, 0.6f);
    layer({0.1f, 0.1f, 0.1f}, {2, 0.5f, -1}, 0.5f);
    zebSceneEnd();
    expectPixel(4 * 0.1 - 0.2, 0.25 * 0.1 + 0.5 * 0.4, 1, 1);
}

TEST_F(Opacity, OfAPrimitiveEndsAtZeroAndOneToo)
{
    const float points[4][3] = {{-2, -2, 0.5f}, {6, -2, 0.5f}, {6, 6, 0.5f}, {-2, 6, 0.5f}};
    for (const float o : {3.0f, -3.0f}) {
        const float opacities[4][3] = {{o, o, o}, {o, o, o}, {o, o, o}, {o, o, o}};
        begin();
        color(0.1f, 0.2f, 0.3f);
        zebPolygon(4, zebQuark("point"), points, zebQuark("opacity"), opacities, 0);
        zebSceneEnd();
        const double shown = o > 0 ? 1 : 0;
        expectPixel(0.1 * shown, 0.2 * shown, 0.3 * shown, shown);
    }
}

}  // namespace zebtest
