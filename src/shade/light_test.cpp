#include "shade/light.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "math/matrix.h"
#include "state/quark.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

constexpr float kHalfPi = 1.57079633f;
const Point kFacing(0, 0, -1);  // a surface that faces a light shining along +z

float radians(double degrees) { return static_cast<float>(degrees * M_PI / 180); }

class LightTest : public testing::Test
{
protected:
    LightTest() { zebReset(); }
    ~LightTest() override { zebReset(); }

    void give(unsigned short token, std::vector<float> values)
    {
        tokens.push_back(token);
        stored.push_back(std::make_unique<std::vector<float>>(std::move(values)));
    }
    void instance(Light& light, const Matrix& toCamera = gIdentity)
    {
        std::vector<void*> pointers;
        for (auto& values : stored) pointers.push_back(values->data());
        ArgList args;
        args.init(static_cast<long>(tokens.size()), tokens.data(), pointers.data(), {});
        light.declare(kQDistant, std::make_shared<const Transform>(toCamera));
        light.instance(args);
    }
    void expectPoint(const Point& p, float x, float y, float z, float tolerance = 1e-6f)
    {
        EXPECT_NEAR(p.x, x, tolerance);
        EXPECT_NEAR(p.y, y, tolerance);
        EXPECT_NEAR(p.z, z, tolerance);
    }

    std::vector<unsigned short> tokens;
    std::vector<std::unique_ptr<std::vector<float>>> stored;
    LightSample sample;
    zebtest::Reports reports;
};

}  // namespace

TEST_F(LightTest, TheBaseLightReachesNothing)
{
    const Light light;
    EXPECT_FALSE(light.isambient());
    EXPECT_EQ(light.illuminates({0, 0, 1}, kFacing, kPi, 16, sample), 0);
}

TEST_F(LightTest, DefaultOutputsAreBlackAndOpaque)
{
    sample.Cl = Color(1, 2, 3);
    sample.Ol = Color(0.5f, 0.5f, 0.5f);
    Light::defaultOutputs(sample);
    EXPECT_EQ(sample.Cl, gBlack);
    EXPECT_EQ(sample.Ol, gWhite);
}

TEST_F(LightTest, AnAmbientLightIsNeverVisitedButShines)
{
    AmbientLight light;
    give(kQIntensity, {0.5f});
    give(kQColor, {1, 0.5f, 0.25f});
    instance(light);
    EXPECT_TRUE(light.isambient());
    EXPECT_EQ(light.illuminates({0, 0, 1}, kFacing, kPi, 16, sample), 0);
    light.evaluate(sample);
    EXPECT_EQ(sample.Cl, Color(0.5f, 0.25f, 0.125f));
}

TEST_F(LightTest, ADistantLightShinesAlongZByDefault)
{
    DistantLight light;
    instance(light);
    EXPECT_EQ(light.illuminates({7, 8, 9}, kFacing, kHalfPi, 16, sample), 1);
    expectPoint(sample.L, 0, 0, 1);
    light.evaluate(sample);
    EXPECT_EQ(sample.Cl, gWhite);
    EXPECT_FALSE(light.isambient());
}

TEST_F(LightTest, ADistantLightDoesNotReachWhatFacesAway)
{
    DistantLight light;
    instance(light);
    EXPECT_EQ(light.illuminates({0, 0, 1}, {0, 0, 1}, kHalfPi, 16, sample), 0);
}

TEST_F(LightTest, ADistantLightsPointsAreBroughtToCameraSpace)
{
    Matrix m;
    m.translate(5, 0, 0);
    m.rotate(90, 0, 0, 1);  // x to y
    DistantLight light;
    give(kQFrom, {1, 0, 0});
    give(kQTo, {3, 0, 0});
    instance(light, m);
    EXPECT_EQ(light.illuminates({0, 0, 0}, {0, -1, 0}, kHalfPi, 16, sample), 1);
    expectPoint(sample.L, 0, 2, 0);
}

TEST_F(LightTest, ADistantLightDoesNotFallOff)
{
    DistantLight light;
    give(kQIntensity, {3});
    give(kQTo, {0, 0, 10});
    instance(light);
    light.illuminates({0, 0, 0}, kFacing, kHalfPi, 16, sample);
    light.evaluate(sample);
    EXPECT_EQ(sample.Cl, Color(3, 3, 3));
}

TEST_F(LightTest, APointLightFallsOffWithTheSquareOfTheDistance)
{
    PointLight light;
    give(kQIntensity, {8});
    give(kQColor, {1, 0.5f, 0});
    give(kQFrom, {0, 0, 1});
    instance(light);
    EXPECT_EQ(light.illuminates({0, 0, 3}, kFacing, kHalfPi, 16, sample), 1);
    expectPoint(sample.L, 0, 0, 2);
    light.evaluate(sample);
    EXPECT_EQ(sample.Cl, Color(2, 1, 0));
}

TEST_F(LightTest, APointLightsPositionIsBroughtToCameraSpace)
{
    Matrix m;
    m.translate(1, 2, 3);
    PointLight light;
    instance(light, m);
    light.illuminates({1, 2, 5}, kFacing, kHalfPi, 16, sample);
    expectPoint(sample.L, 0, 0, 2);
}

TEST_F(LightTest, APointLightGivesNothingToWhatFacesAway)
{
    PointLight light;
    instance(light);
    EXPECT_EQ(light.illuminates({0, 0, 2}, {0, 0, 1}, kHalfPi, 16, sample), 0);
    // ... unless the surface takes light from everywhere.
    EXPECT_EQ(light.illuminates({0, 0, 2}, {0, 0, 1}, kPi, 16, sample), 1);
}

TEST_F(LightTest, APointLightInsideTheSurfaceIsReportedAndNotAttenuated)
{
    PointLight light;
    give(kQIntensity, {2});
    instance(light);
    sample.L = Point(1e-6f, 0, 0);
    light.evaluate(sample);
    EXPECT_EQ(sample.Cl, Color(2, 2, 2));
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 15);
    EXPECT_EQ(reports[0].message, "dividing color by zero");
}

TEST_F(LightTest, ASpotLightsAnglesAreDegrees)
{
    SpotLight light;
    give(kQConeAngle, {30});
    give(kQConeDeltaAngle, {5});
    instance(light);
    EXPECT_NEAR(light.cosoutside(), std::cos(M_PI / 6), 1e-6);
    EXPECT_NEAR(light.cosinside(), std::cos(25 * M_PI / 180), 1e-6);
}

TEST_F(LightTest, ASpotLightOnItsAxisFallsOffWithTheSquare)
{
    SpotLight light;
    give(kQConeAngle, {30});
    give(kQConeDeltaAngle, {5});
    give(kQIntensity, {4});
    give(kQColor, {1, 0.5f, 0.25f});
    instance(light);
    EXPECT_EQ(light.illuminates({0, 0, 2}, kFacing, kHalfPi, 16, sample), 1);
    light.evaluate(sample);
    EXPECT_EQ(sample.Cl, Color(1, 0.5f, 0.25f));
}

TEST_F(LightTest, AnUnsetConeIsConvertedTwice)
{
    SpotLight light;
    instance(light);
    const double twice = M_PI / 180 * M_PI / 180;
    EXPECT_NEAR(std::acos(double{light.cosoutside()}), 30 * twice, 2e-5);
    EXPECT_NEAR(std::acos(double{light.cosinside()}), 25 * twice, 2e-5);
    EXPECT_EQ(light.illuminates({0, 0, 1}, kFacing, kHalfPi, 16, sample), 1);
    EXPECT_EQ(light.illuminates({0.1f, 0, 1}, kFacing, kHalfPi, 16, sample), 0);
}

TEST_F(LightTest, AMendedUnsetConeIs30And5Degrees)
{
    SpotLight light = SpotLight::inDegrees();
    instance(light);
    EXPECT_NEAR(light.cosoutside(), std::cos(M_PI / 6), 1e-6);
    EXPECT_NEAR(light.cosinside(), std::cos(25 * M_PI / 180), 1e-6);
}

TEST_F(LightTest, ASpotLightFadesByTheBeamAndTheRim)
{
    SpotLight light;
    give(kQConeAngle, {60});
    give(kQConeDeltaAngle, {30});
    give(kQBeamDistribution, {3});
    instance(light);
    // 45 degrees off the axis: d = cos 45, at a distance of sqrt 2.
    ASSERT_EQ(light.illuminates({1, 0, 1}, kFacing, kPi, 16, sample), 1);
    light.evaluate(sample);
    const double d = std::sqrt(0.5), lo = 0.5, hi = std::sqrt(0.75);
    const double t = (d - lo) / (hi - lo);
    EXPECT_NEAR(sample.Cl.r, std::pow(d, 3) / 2 * t * t * (3 - 2 * t), 1e-6);
}

TEST_F(LightTest, ASpotLightShinesFromFromToTo)
{
    Matrix m;
    m.translate(0, 10, 0);
    SpotLight light;
    give(kQConeAngle, {10});
    give(kQConeDeltaAngle, {1});
    give(kQFrom, {1, 0, 0});
    give(kQTo, {4, 0, 0});
    instance(light, m);
    EXPECT_EQ(light.illuminates({6, 10, 0}, {-1, 0, 0}, kHalfPi, 16, sample), 1);
    expectPoint(sample.L, 5, 0, 0);
    EXPECT_EQ(light.illuminates({1, 10, 5}, {0, 0, -1}, kHalfPi, 16, sample), 0);
    light.illuminates({3, 10, 0}, {-1, 0, 0}, kHalfPi, 16, sample);
    light.evaluate(sample);
    EXPECT_NEAR(sample.Cl.g, 0.25, 1e-6);
}

TEST_F(LightTest, IlluminateSetsLEvenWhenNothingArrives)
{
    EXPECT_EQ(Light::illuminate({1, 2, 3}, kFacing, kPi, {0, 0, 9}, {0, 0, 1}, 0.1f, sample), 0);
    expectPoint(sample.L, 1, 2, -6);
}

TEST_F(LightTest, IlluminateLooksAtTheLightsConeFirst)
{
    const Point P(1, 0, 1);  // 45 degrees off the axis
    const Point axis(0, 0, 5);
    EXPECT_EQ(Light::illuminate(P, kFacing, kPi, gOrigin, axis, radians(44), sample), 0);
    EXPECT_EQ(Light::illuminate(P, kFacing, kPi, gOrigin, axis, radians(46), sample), 1);
}

TEST_F(LightTest, IlluminateLooksAtTheSurfacesCone)
{
    const Point N(3, 0, -3);  // 45 degrees from the light
    const Point P(0, 0, 2);
    EXPECT_EQ(Light::illuminate(P, N, radians(44), gOrigin, gOrigin, kPi, sample), 0);
    EXPECT_EQ(Light::illuminate(P, N, radians(46), gOrigin, gOrigin, kPi, sample), 1);
}

TEST_F(LightTest, TheEdgesOfBothConesAreLit)
{
    // On the axis, head-on: all cosines are 1, and so are those of cones that are closed.
    EXPECT_EQ(Light::illuminate({0, 0, 5}, kFacing, kPi, gOrigin, {0, 0, 1}, 0, sample), 1);
    EXPECT_EQ(Light::illuminate({0, 0, 5}, kFacing, 0, gOrigin, gOrigin, kPi, sample), 1);
    EXPECT_EQ(Light::solar(gOrigin, kFacing, 0, {0, 0, 1}, 0, 16, sample), 1);
}

TEST_F(LightTest, SolarFromEverywhereComesAgainstTheNormal)
{
    EXPECT_EQ(Light::solar({1, 2, 3}, {0, 2, 0}, 0.1f, {0, 0, 1}, 3.14159274f, 16, sample), 1);
    expectPoint(sample.L, 0, -2, 0);
}

TEST_F(LightTest, SolarInsideTheSurfacesConeArrivesWhole)
{
    const Point N(0, std::sin(radians(30)), -std::cos(radians(30)));
    EXPECT_EQ(Light::solar(gOrigin, N, radians(60), {0, 0, 4}, radians(29), 16, sample), 1);
    expectPoint(sample.L, 0, 0, 4);
}

TEST_F(LightTest, SolarOutsideTheSurfacesConeIsLost)
{
    const Point N(0, std::sin(radians(60)), -std::cos(radians(60)));
    EXPECT_EQ(Light::solar(gOrigin, N, radians(30), {0, 0, 4}, radians(29), 16, sample), 0);
}

TEST_F(LightTest, PartialSolarTurnsLTowardsTheSurface)
{
    const Point N(std::sin(radians(60)), 0, -std::cos(radians(60)));
    Light::solar(gOrigin, N, radians(50), {0, 0, 1}, radians(30), 16, sample);
    expectPoint(sample.L, -std::sin(radians(40)), 0, std::cos(radians(40)), 1e-5f);
}

TEST_F(LightTest, PartialSolarTakesAMultipleOfFourSamples)
{
    const Point N(std::sin(radians(60)), std::sin(radians(10)), -std::cos(radians(60)));
    for (const auto& [n, m] : {std::pair(0L, 4), {1L, 4}, {4L, 4}, {5L, 8}, {16L, 16}}) {
        bool finest = false;
        for (int k = 0; k < 200; ++k) {
            const float f =
                Light::solar(gOrigin, N, radians(50), {0, 0, 1}, radians(40), n, sample);
            const float hits = f * static_cast<float>(m);
            EXPECT_EQ(hits, std::round(hits)) << n;
            EXPECT_GE(f, 0);
            EXPECT_LE(f, 1);
            finest |= static_cast<int>(hits) % 2 == 1;
        }
        EXPECT_TRUE(finest) << n;
    }
}

TEST_F(LightTest, SolarSamplesLieInOneQuarterOfTheLight)
{
    const float s = std::sin(radians(60)) * std::sqrt(0.5f), c = std::cos(radians(60));
    const Point down(0, -1, 0);
    const float towards =
        Light::solar(gOrigin, {s, c, s}, radians(50), down, radians(80), 4000, sample);
    EXPECT_GT(towards, 0.75f);
    EXPECT_LT(towards, 0.92f);
    EXPECT_EQ(Light::solar(gOrigin, {-s, c, -s}, radians(50), down, radians(80), 400, sample), 0);
}

TEST_F(LightTest, SolarTurnsTheLightToTheYAxisOfItsSamples)
{
    // Light along +z: what was y becomes z, and -z becomes y.
    const float s = std::sin(radians(60)) * std::sqrt(0.5f), c = std::cos(radians(60));
    const Point along(0, 0, 1);
    const float towards =
        Light::solar(gOrigin, {s, s, -c}, radians(50), along, radians(80), 4000, sample);
    EXPECT_GT(towards, 0.75f);
    EXPECT_LT(towards, 0.92f);
    EXPECT_EQ(Light::solar(gOrigin, {-s, -s, -c}, radians(50), along, radians(80), 400, sample), 0);
}

// The light comes across: d is the arc cosine of 0.
TEST_F(LightTest, SolarAtTheInnerEdgeArrivesWhole)
{
    const float d = std::acos(0.0f), spread = 0.5f;
    EXPECT_EQ(Light::solar(gOrigin, {1, 0, 0}, d + spread, {0, 0, 1}, spread, 16, sample), 1);
    expectPoint(sample.L, 0, 0, 1);
}

TEST_F(LightTest, SolarAtTheOuterEdgeIsSampled)
{
    const float d = std::acos(0.0f), spread = 0.5f;
    EXPECT_EQ(Light::solar(gOrigin, {1, 0, 0}, d - spread, {0, 0, 1}, spread, 16, sample), 0);
    // Where nothing arrives for sure L stays; here it has been turned by half of both angles.
    expectPoint(sample.L, -std::sin(d / 2), 0, std::cos(d / 2));
}

// The fraction again, from the same draws: theta, then phi, of a quarter of the light's cone. The
// normal is turned with the light, which becomes the y axis; one that shines along y stays as it
// is, either way.
TEST_F(LightTest, PartialSolarIsTheShareOfSamplesInTheSurfacesCone)
{
    const auto share = [](const Point& normal, double angle, const Point& axis, double spread,
                          int m) {
        Pointd a = Pointd(normal) * (1 / std::sqrt(dot(Pointd(normal), Pointd(normal))));
        const Pointd b = Pointd(axis) * (-1 / std::sqrt(dot(Pointd(axis), Pointd(axis))));
        if (b.x != 0 || b.z != 0) {
            // Rodrigues about the horizontal axis across b.
            const Pointd k = Pointd(-b.z, 0, b.x) * (1 / std::hypot(b.x, b.z));
            const double s = std::hypot(b.x, b.z), c = b.y;
            a = a * c + (k ^ a) * s + k * (dot(k, a) * (1 - c));
        }
        Random random{1};
        int count = 0;
        for (int i = 0; i < m; ++i) {
            const double theta = double{random.unit()} * spread;
            const double phi = double{random.unit()} * M_PI / 2;
            const Pointd direction(std::cos(phi) * std::sin(theta), std::cos(theta),
                                   std::sin(phi) * std::sin(theta));
            count += dot(a, direction) >= std::cos(angle);
        }
        return static_cast<double>(count) / m;
    };
    const Point normals[] = {{1, 2, 0.5f}, {-1, 0.5f, 2}, {0.2f, -1, 0.3f}, {2, 0.1f, 2}};
    const Point axes[] = {{0, -3, 0}, {0, 1, 0}, {1, -1, 0.5f}, {-0.3f, 0.2f, -2}};
    int partial = 0;
    for (const Point& normal : normals) {
        for (const Point& axis : axes) {
            for (const float angle : {0.7f, 1.5f}) {
                for (const float spread : {0.4f, 1.2f}) {
                    LightSample fresh;
                    const float f = Light::solar(gOrigin, normal, angle, axis, spread, 256, fresh);
                    const double d = std::acos(double{-dot(normalize(normal), normalize(axis))});
                    if (d + double{spread} <= double{angle}) {
                        EXPECT_EQ(f, 1);
                    } else if (double{angle} + double{spread} < d) {
                        EXPECT_EQ(f, 0);
                    } else {
                        const auto a = double{angle}, s = double{spread};
                        EXPECT_NEAR(f, share(normal, a, axis, s, 256), 0.5 / 256);
                        partial += f > 0 && f < 1;
                    }
                }
            }
        }
    }
    EXPECT_GE(partial, 8);
}

// Nothing is divided that would be reported: the length of L is 0, and what comes of that is no
// number.
TEST_F(LightTest, ASpotLightAtNoDistanceIsNotReported)
{
    SpotLight light;
    give(kQConeAngle, {100});
    instance(light);
    EXPECT_EQ(light.illuminates(gOrigin, kFacing, kHalfPi, 16, sample), 1);
    light.evaluate(sample);
    EXPECT_FALSE(std::isfinite(sample.Cl.r));
    EXPECT_TRUE(reports.empty());
}
