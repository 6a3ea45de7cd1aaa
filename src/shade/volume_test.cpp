#include "shade/volume.h"

#include <gtest/gtest.h>

#include <cmath>

#include "state/quark.h"

using namespace zeb;

namespace
{

void expectColor(const Color& c, double r, double g, double b)
{
    EXPECT_NEAR(c.r, r, 1e-6);
    EXPECT_NEAR(c.g, g, 1e-6);
    EXPECT_NEAR(c.b, b, 1e-6);
}

VolumePoint at(float z, const Point& I = {0, 0, 1})
{
    return {Point(0, 0, z), I, Color(1, 0.5f, 0), Color(0.25f, 0.5f, 0.75f)};
}

Color cued(const Volume& volume, VolumePoint point)
{
    volume.evaluate(point);
    EXPECT_EQ(point.Oi, Color(0.25f, 0.5f, 0.75f)) << "opacity stays";
    return point.Ci;
}

}  // namespace

TEST(DepthCue, Defaults)
{
    const DepthCueVolume cue;
    EXPECT_EQ(cue.hither, 0);
    EXPECT_EQ(cue.yon, 1);
    EXPECT_EQ(cue.color, gBlack);
}

TEST(DepthCue, IsLinearInCameraDepth)
{
    DepthCueVolume cue;
    cue.hither = 2;
    cue.yon = 6;
    cue.color = Color(0, 0, 1);
    expectColor(cued(cue, at(3, {100, 100, 100})), 0.75, 0.375, 0.25);
}

TEST(DepthCue, CoversAsMuchAsTheSurface)
{
    DepthCueVolume cue;
    cue.yon = 4;
    cue.color = Color(1, 0.5f, 1);
    VolumePoint point = at(3);
    point.cover = Color(0.25f, 0.5f, 0);
    expectColor(cued(cue, point), 0.25 * 1 + 0.75 * 0.25, 0.25 * 0.5 + 0.75 * 0.25, 0);
}

TEST(DepthCue, NearerThanHitherTheColourStays)
{
    DepthCueVolume cue;
    cue.hither = 2;
    cue.yon = 6;
    EXPECT_EQ(cued(cue, at(1)), Color(1, 0.5f, 0));
}

TEST(DepthCue, BeyondYonTheCueColourShowsExactly)
{
    DepthCueVolume cue;
    cue.hither = 2;
    cue.yon = 6;
    cue.color = Color(0.5f, 0.25f, 1);
    EXPECT_EQ(cued(cue, at(7)), Color(0.5f, 0.25f, 1));
}

TEST(DepthCue, EqualPlanesMakeARangeOfOne)
{
    DepthCueVolume cue;
    cue.hither = cue.yon = 2;
    expectColor(cued(cue, at(2.25f)), 0.75, 0.375, 0);
    EXPECT_EQ(cued(cue, at(3.5f)), gBlack);
}

TEST(DepthCue, SwappedPlanesCueTheNear)
{
    DepthCueVolume cue;
    cue.hither = 6;
    cue.yon = 2;
    expectColor(cued(cue, at(5)), 0.75, 0.375, 0);
    EXPECT_EQ(cued(cue, at(1)), gBlack);
}

TEST(Fog, Defaults)
{
    const FogVolume fog;
    EXPECT_EQ(fog.distance, 1);
    EXPECT_EQ(fog.color, gBlack);
}

TEST(Fog, AtTheEyeTheColourStays)
{
    EXPECT_EQ(cued(FogVolume(), at(0, {0, 0, 0})), Color(1, 0.5f, 0));
}

TEST(Fog, IsExponentialInTheLengthOfI)
{
    FogVolume fog;
    fog.distance = 10;
    fog.color = Color(0, 0, 1);
    const double kept = std::exp(-0.5);
    expectColor(cued(fog, at(99, {3, 0, 4})), kept, kept / 2, 1 - kept);
}

TEST(Fog, FarAwayOnlyFogIsLeft)
{
    FogVolume fog;
    fog.color = Color(0.5f, 0.5f, 0.5f);
    expectColor(cued(fog, at(0, {0, 0, 1000})), 0.5, 0.5, 0.5);
}

TEST(Fog, ADistanceOfZeroCountsAsOne)
{
    FogVolume fog;
    fog.distance = 0;
    expectColor(cued(fog, at(0, {0, 0, 1})), std::exp(-1.0), std::exp(-1.0) / 2, 0);
}

TEST(Fog, ANegativeDistancePushesAwayFromTheFogUnclamped)
{
    FogVolume fog;
    fog.distance = -1;
    fog.color = Color(0, 0, 1);
    const double e = std::exp(1.0);
    expectColor(cued(fog, at(0, {0, 0, 1})), e, e / 2, 1 - e);
}

TEST(Volumes, TakeTheirParametersByName)
{
    const float hither = 3, yon = 5, distance = 7, color[3] = {0.5f, 0.25f, 0.125f};
    const unsigned short tokens[] = {kQHither, kQYon, kQDistance, kQColor};
    void* const values[] = {const_cast<float*>(&hither), const_cast<float*>(&yon),
                            const_cast<float*>(&distance), const_cast<float*>(color)};
    ArgList args;
    args.init(4, tokens, values, {});
    DepthCueVolume cue;
    cue.instance(args);
    EXPECT_EQ(cue.hither, 3);
    EXPECT_EQ(cue.yon, 5);
    EXPECT_EQ(cue.color, Color(0.5f, 0.25f, 0.125f));
    FogVolume fog;
    fog.instance(args);
    EXPECT_EQ(fog.distance, 7);
    EXPECT_EQ(fog.color, Color(0.5f, 0.25f, 0.125f));
}
