#include "shade/surface.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>

#include "state/quark.h"

using namespace zeb;

namespace
{

// Shines with a colour along L; writes what is asked of it into a log.
class ProbeLight : public Light
{
public:
    ProbeLight(const Point& L, const Color& color, bool ambient, std::string* log)
        : fL(L), fColor(color), fAmbient(ambient), fLog(log)
    {
    }
    bool isambient() const override { return fAmbient; }
    float illuminates(const Point& P, const Point& N, float angle, long n,
                      LightSample& sample) const override
    {
        point = P;
        axis = N;
        coneAngle = angle;
        samples = n;
        sample.L = fL;
        return 1;
    }
    void evaluate(LightSample& sample) const override
    {
        if (fLog) *fLog += fAmbient ? 'a' : 'l';
        sample.Cl = fColor;
    }

    mutable Point point, axis;
    mutable float coneAngle = 0;
    mutable long samples = 0;

private:
    Point fL;
    Color fColor;
    bool fAmbient;
    std::string* fLog;
};

class SurfaceTest : public testing::Test
{
protected:
    SurfaceTest()
    {
        point.lights = &lights;
        point.P = Point(0, 0, 5);
        point.I = Point(0, 0, 5);
        point.N = point.Ng = Point(0, 0, -2);
        point.Cs = Color(0.5f, 1, 0.25f);
        point.Os = Color(1, 0.5f, 0.25f);
    }

    // A light that comes from the direction.
    std::shared_ptr<ProbeLight> lightFrom(const Point& direction, const Color& color)
    {
        auto made = std::make_shared<ProbeLight>(-direction, color, false, &log);
        lights.add(made);
        return made;
    }
    void ambient(const Color& color)
    {
        lights.add(std::make_shared<ProbeLight>(Point(), color, true, &log));
    }
    static void expectColor(const Color& c, double r, double g, double b)
    {
        EXPECT_NEAR(c.r, r, 1e-5);
        EXPECT_NEAR(c.g, g, 1e-5);
        EXPECT_NEAR(c.b, b, 1e-5);
    }

    List<std::shared_ptr<Light>> lights;
    SurfacePoint point;
    std::string log;
};

}  // namespace

TEST_F(SurfaceTest, Defaults)
{
    const MatteSurface matte;
    EXPECT_EQ(matte.ka, 1);
    EXPECT_EQ(matte.kd, 1);
    const MetalSurface metal;
    EXPECT_EQ(metal.ka, 1);
    EXPECT_EQ(metal.ks, 1);
    EXPECT_EQ(metal.roughness, 0.1f);
    const PlasticSurface plastic;
    EXPECT_EQ(plastic.ka, 1);
    EXPECT_EQ(plastic.kd, 0.5f);
    EXPECT_EQ(plastic.ks, 0.5f);
    EXPECT_EQ(plastic.roughness, 0.1f);
    EXPECT_EQ(plastic.specularcolor, gWhite);
}

TEST_F(SurfaceTest, AmbientSumsTheAmbientLightsOnly)
{
    ambient({0.5f, 0, 0.25f});
    ambient({0.25f, 1, 0});
    lightFrom({0, 0, -1}, gWhite);
    expectColor(Surface::ambient(point), 0.75, 1, 0.25);
}

TEST_F(SurfaceTest, AmbientWithoutLightsIsBlack) { EXPECT_EQ(Surface::ambient(point), gBlack); }

TEST_F(SurfaceTest, DiffuseGoesWithTheCosine)
{
    lightFrom({3, 0, -4}, {1, 0.5f, 0});
    expectColor(Surface::diffuse(point, {0, 0, -7}), 0.8, 0.4, 0);
}

TEST_F(SurfaceTest, DiffuseSumsLights)
{
    lightFrom({0, 0, -1}, {1, 0, 0});
    lightFrom({0, 0, -9}, {0, 1, 0});
    expectColor(Surface::diffuse(point, {0, 0, -1}), 1, 1, 0);
}

TEST_F(SurfaceTest, LightIsGatheredFromTheHalfSpaceAboutTheUnitNormal)
{
    const auto light = lightFrom({0, 0, -1}, gWhite);
    Surface::diffuse(point, {0, 0, -7});
    EXPECT_EQ(light->point, Point(0, 0, 5));
    EXPECT_EQ(light->axis, Point(0, 0, -1));
    EXPECT_FLOAT_EQ(light->coneAngle, 1.57079633f);
    EXPECT_EQ(light->samples, 16);
}

TEST_F(SurfaceTest, SpecularIsThePowerOfTheHalfwayCosine)
{
    // N and V along -z, the light 60 degrees off: the halfway vector is 30 degrees off.
    lightFrom({std::sqrt(3.0f), 0, -1}, gWhite);
    Point V(0, 0, -4);
    const double h = std::cos(M_PI / 6);
    expectColor(Surface::specular(point, {0, 0, -3}, V, 0.25f), std::pow(h, 4), std::pow(h, 4),
                std::pow(h, 4));
}

TEST_F(SurfaceTest, SpecularNormalizesTheCallersV)
{
    Point V(0, 3, -4);
    Surface::specular(point, {0, 0, -1}, V, 0.1f);
    EXPECT_FLOAT_EQ(V.y, 0.6f);
    EXPECT_FLOAT_EQ(V.z, -0.8f);
}

TEST_F(SurfaceTest, SpecularBehindTheSurfaceIsNothing)
{
    lightFrom({0, 0, 1}, gWhite);
    Point V(0, 1, 0.5f);
    EXPECT_EQ(Surface::specular(point, {0, 0, -1}, V, 1), gBlack);
}

TEST_F(SurfaceTest, PhongIsThePowerOfTheMirrorCosine)
{
    // V 45 degrees to one side; the light 15 degrees from its mirror direction.
    lightFrom({std::sin(static_cast<float>(M_PI / 6)), 0, -std::cos(static_cast<float>(M_PI / 6))},
              gWhite);
    const double c = std::pow(std::cos(M_PI / 12), 20);
    expectColor(Surface::phong(point, {0, 0, -3}, {-2, 0, -2}, 20), c, c, c);
}

// The even power of a negative cosine would shine.
TEST_F(SurfaceTest, PhongAwayFromTheMirrorDirectionIsNothing)
{
    lightFrom({-1, 0, -0.1f}, gWhite);
    EXPECT_EQ(Surface::phong(point, {0, 0, -1}, {-1, 0, -0.1f}, 2), gBlack);
}

TEST_F(SurfaceTest, ThereIsNoRayTracing)
{
    EXPECT_EQ(Surface::trace({1, 2, 3}, {4, 5, 6}), gBlack);
}

TEST_F(SurfaceTest, AConstantSurfaceShowsItsColourUnlit)
{
    ConstantSurface().evaluate(point);
    EXPECT_EQ(point.Oi, Color(1, 0.5f, 0.25f));
    expectColor(point.Ci, 0.5, 0.5, 0.0625);
}

TEST_F(SurfaceTest, WithoutLightsAMatteSurfaceIsBlack)
{
    MatteSurface().evaluate(point);
    EXPECT_EQ(point.Ci, gBlack);
    EXPECT_EQ(point.Oi, Color(1, 0.5f, 0.25f));
}

TEST_F(SurfaceTest, AMatteSurfaceAddsAmbientAndDiffuse)
{
    ambient({0.5f, 0.5f, 0.5f});
    lightFrom({0, 0, -1}, gWhite);
    MatteSurface matte;
    matte.ka = 0.5f;
    matte.kd = 0.25f;
    matte.evaluate(point);
    expectColor(point.Ci, 0.5 * 0.5, 0.5 * 0.5, 0.0625 * 0.5);
}

TEST_F(SurfaceTest, AMetalSurfaceTintsItsHighlight)
{
    ambient({0.5f, 0.5f, 0.5f});
    lightFrom({0, 0, -1}, gWhite);
    MetalSurface metal;
    metal.ks = 0.5f;
    metal.evaluate(point);
    expectColor(point.Ci, 0.5, 0.5, 0.0625);
    EXPECT_EQ(point.Oi, Color(1, 0.5f, 0.25f));
}

TEST_F(SurfaceTest, APlasticSurfaceHeadOnAddsHalfAndHalf)
{
    ambient({0.25f, 0.5f, 1});
    lightFrom({0, 0, -1}, gWhite);
    PlasticSurface plastic;
    plastic.specularcolor = Color(1, 0, 0.5f);
    plastic.evaluate(point);
    expectColor(point.Ci, 1 * (0.5 * 0.75 + 0.5), 0.5 * (1 * 1.0), 0.25 * (0.25 * 1.5 + 0.25));
    EXPECT_EQ(point.Oi, Color(1, 0.5f, 0.25f));
}

TEST_F(SurfaceTest, APlasticSurfaceGathersSpecularThenDiffuseThenAmbient)
{
    ambient(gWhite);
    lightFrom({0, 0, -1}, gWhite);
    PlasticSurface().evaluate(point);
    EXPECT_EQ(log, "lla");
}

TEST_F(SurfaceTest, NormalsAreTurnedTowardsTheEye)
{
    lightFrom({0, 0, -1}, gWhite);
    point.N = point.Ng = Point(0, 0, 1);
    point.Cs = point.Os = gWhite;
    MatteSurface().evaluate(point);
    expectColor(point.Ci, 1, 1, 1);
}

TEST_F(SurfaceTest, TheGeometricNormalDecidesWhichWayTheShadingNormalTurns)
{
    const auto light = lightFrom({0, 0, -1}, gWhite);
    point.N = Point(0, 3, -3);
    point.Ng = Point(0, 0, 1);  // faces away, so N is turned as well
    MatteSurface().evaluate(point);
    EXPECT_NEAR(light->axis.y, -std::sqrt(0.5), 1e-6);
    EXPECT_NEAR(light->axis.z, std::sqrt(0.5), 1e-6);
}

TEST_F(SurfaceTest, ANormalAcrossTheLineOfSightGivesNoDiffuseAndNoSpecular)
{
    lightFrom({0, 0, -1}, gWhite);
    ambient({0.5f, 0.5f, 0.5f});
    point.N = point.Ng = Point(0, 1, 0);
    point.Cs = point.Os = gWhite;
    MatteSurface().evaluate(point);
    expectColor(point.Ci, 0.5, 0.5, 0.5);
    PlasticSurface().evaluate(point);
    expectColor(point.Ci, 0.5, 0.5, 0.5);
    MetalSurface().evaluate(point);
    expectColor(point.Ci, 0.5, 0.5, 0.5);
}

TEST_F(SurfaceTest, ARoughnessOfZeroLeavesOnlyTheMirrorDirection)
{
    lightFrom({1, 0, -1}, gWhite);
    MetalSurface metal;
    metal.roughness = 0;
    metal.evaluate(point);
    EXPECT_EQ(point.Ci, gBlack);
}

TEST_F(SurfaceTest, ParametersAreTakenByName)
{
    const float ka = 0.1f, kd = 0.2f, ks = 0.3f, roughness = 0.4f, c[3] = {0.5f, 0.6f, 0.7f};
    const unsigned short tokens[] = {kQKa, kQKd, kQKs, kQRoughness, kQSpecularColor};
    void* const values[] = {const_cast<float*>(&ka), const_cast<float*>(&kd),
                            const_cast<float*>(&ks), const_cast<float*>(&roughness),
                            const_cast<float*>(c)};
    ArgList args;
    args.init(5, tokens, values, {});
    PlasticSurface plastic;
    plastic.instance(args);
    EXPECT_EQ(plastic.ka, ka);
    EXPECT_EQ(plastic.kd, kd);
    EXPECT_EQ(plastic.ks, ks);
    EXPECT_EQ(plastic.roughness, roughness);
    EXPECT_EQ(plastic.specularcolor, Color(0.5f, 0.6f, 0.7f));
    MetalSurface metal;
    metal.instance(args);
    EXPECT_EQ(metal.ks, ks);
    MatteSurface matte;
    matte.instance(args);
    EXPECT_EQ(matte.kd, kd);
}
