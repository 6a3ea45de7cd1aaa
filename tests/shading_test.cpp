// Surfaces, lights and atmospheres against their formulas, as pictures.

#include "support/scene.h"

namespace zebtest
{

namespace
{

// A camera at the origin that looks down z, 90 degrees across 33 pixels, and a wall at z = 4: the
// middle pixel's centre looks straight ahead.
class Shading : public RasterTest
{
protected:
    static constexpr long kMiddle = 16;
    static constexpr float kWall = 4;

    void camera(bool perspective = true)
    {
        zebReset();
        zebRasterViewport(0, 33, 0, 33);
        if (perspective) {
            zebViewPerspective(90);
        } else {
            zebViewOrthographic();
        }
        zebOutputSamples(ZEB_SAMPLES_RGBAZ);
        zebFilter(ZEB_FILTER_BOX);
        zebFilterWidth(1, 1);
        zebSampleUniform(1, 1);
        zebSampleJitter(0);
        zebQuirks(0);
        picture.attachFloat();
        zebSceneBegin();
        zebShadingModel(ZEB_SMOOTH);
    }
    // Renders the wall and answers the colour where the camera looks.
    Vec wall()
    {
        // Off centre, so that the middle sample lies on no edge that two triangles share.
        rectangle(-20, -19, 21, 20, kWall);
        zebSceneEnd();
        return {red(kMiddle, kMiddle), green(kMiddle, kMiddle), blue(kMiddle, kMiddle)};
    }
};

void expectColor(const Vec& actual, double r, double g, double b, double tolerance = 1e-4)
{
    EXPECT_NEAR(actual[0], r, tolerance);
    EXPECT_NEAR(actual[1], g, tolerance);
    EXPECT_NEAR(actual[2], b, tolerance);
}

void parameter(std::vector<unsigned short>& tokens, std::vector<void*>& values, const char* name,
               float* value)
{
    tokens.push_back(zebQuark(name));
    values.push_back(value);
}

using Parameters = std::vector<std::pair<const char*, std::vector<float>>>;

template <class Call>
auto call(const Call& function, const char* shader, Parameters parameters)
{
    std::vector<unsigned short> tokens;
    std::vector<void*> values;
    for (auto& [name, value] : parameters) parameter(tokens, values, name, value.data());
    return function(zebQuark(shader), static_cast<long>(tokens.size()), tokens.data(),
                    values.data());
}

const void* light(const char* name, Parameters parameters)
{
    return call(zebLightSourceV, name, std::move(parameters));
}
void surface(const char* name, Parameters parameters = {})
{
    call(zebSurfaceV, name, std::move(parameters));
}
void atmosphere(const char* name, Parameters parameters)
{
    call(zebAtmosphereV, name, std::move(parameters));
}

}  // namespace

TEST_F(Shading, AConstantSurfaceShowsItsColourUnderAnyLight)
{
    camera();
    surface("constant");
    color(0.2f, 0.4f, 0.6f);
    light("distant", {{"intensity", {5}}});
    expectColor(wall(), 0.2, 0.4, 0.6);
}

TEST_F(Shading, AMatteSurfaceIsBlackWithoutLight)
{
    camera();
    surface("diffuse");
    expectColor(wall(), 0, 0, 0);
    EXPECT_EQ(alpha(kMiddle, kMiddle), 1);
}

TEST_F(Shading, AmbientLightIsScaledByKa)
{
    camera();
    surface("diffuse", {{"ka", {0.5f}}});
    color(0.2f, 0.4f, 0.6f);
    light("ambient", {{"intensity", {0.5f}}, {"color", {1, 0.5f, 0.25f}}});
    expectColor(wall(), 0.2 * 0.5 * 0.5, 0.4 * 0.5 * 0.5 * 0.5, 0.6 * 0.5 * 0.5 * 0.25);
}

TEST_F(Shading, DiffuseLightFollowsTheCosine)
{
    for (const float tilt : {0.0f, 0.5f, 1.0f, 2.5f}) {
        camera();
        surface("diffuse", {{"kd", {0.8f}}});
        light("distant", {{"from", {0, 0, 0}}, {"to", {tilt, 0, 1}}});
        expectColor(wall(), 0.8 / std::hypot(1.0, tilt), 0.8 / std::hypot(1.0, tilt),
                    0.8 / std::hypot(1.0, tilt));
    }
}

TEST_F(Shading, LightFromBehindTheSurfaceDoesNotReachItsFront)
{
    camera();
    surface("diffuse");
    light("distant", {{"from", {0, 0, 0}}, {"to", {0, 0, -1}}});
    light("omni", {{"from", {0, 0, 9}}, {"intensity", {100}}});
    expectColor(wall(), 0, 0, 0);
}

TEST_F(Shading, APointLightFallsOffWithTheSquareOfTheDistance)
{
    camera();
    surface("diffuse");
    light("omni", {{"from", {0, 0, 1}}, {"intensity", {4.5f}}});
    expectColor(wall(), 0.5, 0.5, 0.5, 1e-3);
    // Off axis by x on the wall: distance squared 9 + x^2, cosine 3 over the distance.
    const double x = 4.0 * (24 - 16) / 16.5, r2 = 9 + x * x;
    EXPECT_NEAR(red(24, 16), 4.5 / r2 * 3 / std::sqrt(r2), 1e-3);
}

TEST_F(Shading, ASpotLightFollowsItsBeamAndItsCone)
{
    camera();
    zebShadingRate(0.01f);
    surface("diffuse");
    light("spot", {{"from", {0, 0, 2}},
                   {"to", {0, 0, 4}},
                   {"intensity", {2}},
                   {"coneangle", {30}},
                   {"conedeltaangle", {5}}});
    expectColor(wall(), 0.5, 0.5, 0.5);
    for (long px = 0; px < 33; ++px) {
        const double x = 4.0 * static_cast<double>(px - 16) / 16.5, r2 = 4 + x * x,
                     c = 2 / std::sqrt(r2);
        const double lo = std::cos(M_PI / 6), hi = std::cos(25 * M_PI / 180);
        const double t = std::clamp((c - lo) / (hi - lo), 0.0, 1.0);
        const double expected = 2 * c * c / r2 * t * t * (3 - 2 * t) * c;
        EXPECT_NEAR(red(px, 16), expected, 4e-3) << px;
    }
}

TEST_F(Shading, AnUnsetConeIsThirtyDegreesOnlyOnceTheQuirksAreOff)
{
    for (const short quirks : {0, 1}) {
        zebReset();
        zebRasterViewport(0, 33, 0, 33);
        zebViewPerspective(90);
        zebOutputSamples(ZEB_SAMPLES_RGBAZ);
        zebFilter(ZEB_FILTER_BOX);
        zebFilterWidth(1, 1);
        zebSampleJitter(0);
        zebQuirks(quirks);
        picture.attachFloat();
        zebSceneBegin();
        zebShadingModel(ZEB_SMOOTH);
        surface("diffuse");
        light("spot", {{"from", {0, 0, -20}}, {"to", {0, 0, 4}}, {"intensity", {288}}});
        wall();
        // 1.7 degrees off the axis: inside a cone of 30, outside one of 30 * pi / 180.
        EXPECT_EQ(red(19, 16) > 0.1f, quirks == 0);
        EXPECT_GT(red(16, 16), 0.4f);
    }
}

TEST_F(Shading, MetalAndPlasticShineByTheHalfwayVector)
{
    // Light along z and the eye at the origin: at x on the wall V leans by atan(x / 4), H by half.
    for (const char* name : {"metal", "plastic"}) {
        camera();
        surface(name, {{"roughness", {0.25f}}});
        color(0.5f, 1, 0.25f);
        light("distant", {});
        wall();
        for (const long px : {16L, 20L, 26L}) {
            const double x = 4.0 * static_cast<double>(px - 16) / 16.5, lean = std::atan(x / 4) / 2;
            const double shine = std::pow(std::cos(lean), 4);
            const bool metal = std::string(name) == "metal";
            EXPECT_NEAR(red(px, 16), metal ? 0.5 * shine : 0.5 * 0.5 + 0.5 * shine, 2e-3)
                << name << px;
            EXPECT_NEAR(green(px, 16),
                        metal ? std::min(1.0, shine) : std::min(1.0, 0.5 + 0.5 * shine), 2e-3);
        }
    }
}

TEST_F(Shading, LightsSwitchOffAndOn)
{
    camera();
    surface("diffuse");
    const void* lamp = light("ambient", {});
    zebLightSwitch(lamp, 0);
    expectColor(wall(), 0, 0, 0);
    camera();
    surface("diffuse");
    const void* first = light("ambient", {{"intensity", {0.25f}}});
    light("ambient", {{"intensity", {0.5f}}});
    zebLightSwitch(first, 0);
    zebLightSwitch(first, 1);
    zebLightSwitch(first, 1);
    expectColor(wall(), 0.75, 0.75, 0.75);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Shading, ALightLivesOnBeyondTheAttributeBlockThatMadeIt)
{
    camera();
    surface("diffuse");
    zebAttributePush();
    const void* lamp = light("ambient", {{"intensity", {0.5f}}});
    zebAttributePop();
    zebLightSwitch(lamp, 1);
    expectColor(wall(), 0.5, 0.5, 0.5);
    EXPECT_TRUE(reports.empty());
    zebLightSwitch(lamp, 1);
    ASSERT_EQ(reports.size(), 1u) << "dead after the world's end";
    EXPECT_EQ(reports[0].code, 10);
}

TEST_F(Shading, DepthCueIsLinearInZ)
{
    camera();
    surface("constant");
    color(0.8f, 0.4f, 0.2f);
    atmosphere("depthcue", {{"hither", {2}}, {"yon", {10}}, {"color", {0, 0, 1}}});
    const double t = (4.0 - 2) / (10 - 2);
    expectColor(wall(), 0.8 * (1 - t), 0.4 * (1 - t), 0.2 * (1 - t) + t);
}

TEST_F(Shading, FogIsExponentialInTheDistanceFromTheEye)
{
    camera();
    surface("constant");
    atmosphere("fog", {{"distance", {8}}, {"color", {0.5f, 0.25f, 0}}});
    const Vec middle = wall();
    const auto fogged = [](double distance, double fog) {
        return 1 + (fog - 1) * (1 - std::exp(-distance / 8));
    };
    expectColor(middle, fogged(4, 0.5), fogged(4, 0.25), fogged(4, 0));
    const double x = 4.0 * (30 - 16) / 16.5;
    EXPECT_NEAR(red(30, 16), fogged(std::hypot(4, x), 0.5), 1e-3);
}

TEST_F(Shading, AtmospheresLeaveOpacityAlone)
{
    camera();
    surface("constant");
    opacity(0.5f, 0.5f, 0.5f);
    atmosphere("fog", {{"distance", {0.001f}}, {"color", {1, 1, 1}}});
    wall();
    EXPECT_FLOAT_EQ(alpha(kMiddle, kMiddle), 0.5f);
    EXPECT_NEAR(red(kMiddle, kMiddle), 0.5, 1e-5) << "the fog's colour, weighed by the opacity";
}

TEST_F(Shading, OrthographicRaysRunAlongZ)
{
    // So the specular lobe of a light along z is the same everywhere.
    camera(false);
    surface("metal");
    light("distant", {});
    rectangle(-20, -20, 20, 20, kWall);
    zebSceneEnd();
    EXPECT_FLOAT_EQ(red(2, 30), red(16, 16));
    EXPECT_NEAR(red(2, 30), 1, 1e-5);
}

TEST_F(Shading, GivenNormalsAreUsedAndMirroredWithTheGeometry)
{
    // A normal leaning 45 degrees to +x, seen as is and through a mirror: lit from +x it is bright
    // as given, dark mirrored, and the other way round from -x.
    const auto brightness = [this](bool mirrored, float lightX) {
        camera();
        surface("diffuse");
        light("distant", {{"from", {lightX, 0, 0}}, {"to", {0, 0, 1}}});
        if (mirrored) zebScale(-1, 1, 1);
        // The polygon's own normal faces the eye: (P1 - P0) x (P3 - P0) points to -z.
        const Vec p[4] = {{-20, -20, 4}, {-20, 20, 4}, {20, 20, 4}, {20, -20, 4}};
        const Vec n[4] = {{1, 0, -1}, {1, 0, -1}, {1, 0, -1}, {1, 0, -1}};
        zebPolygon(4, zebQuark("point"), p, zebQuark("normal"), n, 0);
        zebSceneEnd();
        return red(kMiddle, kMiddle);
    };
    EXPECT_NEAR(brightness(false, 1), 1, 1e-4);
    EXPECT_NEAR(brightness(false, -1), 0, 1e-4);
    EXPECT_NEAR(brightness(true, -1), 1, 1e-4);
    EXPECT_NEAR(brightness(true, 1), 0, 1e-4);
}

TEST_F(Shading, SmoothInterpolationIsContinuousAndConstantIsNot)
{
    const auto steps = [this](short model) {
        zebReset();
        raster(64, 4);
        beginFlat();
        zebShadingModel(model);
        zebShadingRate(64);
        const Vec p[4] = {{0, 0, 0.5f}, {64, 0, 0.5f}, {64, 4, 0.5f}, {0, 4, 0.5f}};
        const Vec c[4] = {{0, 0, 0}, {1, 1, 1}, {1, 1, 1}, {0, 0, 0}};
        zebPolygon(4, zebQuark("point"), p, zebQuark("color"), c, 0);
        zebSceneEnd();
        double largest = 0;
        for (long x = 2; x < 62; ++x)
            largest = std::max(largest, std::fabs(double{red(x + 1, 2)} - red(x, 2)));
        return largest;
    };
    EXPECT_LT(steps(ZEB_SMOOTH), 0.02) << "1 / 64 a pixel";
    EXPECT_GT(steps(ZEB_CONSTANT), 0.04) << "micropolygons 8 pixels wide show";
}

TEST_F(Shading, VaryingOpacityIsInterpolated)
{
    raster(32, 4);
    beginFlat();
    zebShadingModel(ZEB_SMOOTH);
    const Vec p[4] = {{0, 0, 0.5f}, {32, 0, 0.5f}, {32, 4, 0.5f}, {0, 4, 0.5f}};
    const Vec o[4] = {{0, 0, 0}, {1, 1, 1}, {1, 1, 1}, {0, 0, 0}};
    zebPolygon(4, zebQuark("point"), p, zebQuark("opacity"), o, 0);
    zebSceneEnd();
    for (long x = 2; x < 30; ++x)
        EXPECT_NEAR(alpha(x, 2), (static_cast<double>(x) + 0.5) / 32, 5e-3) << x;
}

TEST_F(Shading, ColoursComeInTheHostsColourSpace)
{
    // Two samples: the first is red and green, the second blue.
    const float toRgb[6] = {1, 1, 0, 0, 0, 1}, fromRgb[6] = {0.5f, 0, 0.5f, 0, 0, 1};
    zebReset();
    zebRasterViewport(0, 8, 0, 8);
    zebImageWindow(0, 8, 0, 8);
    zebViewIdentity();
    zebColorSpace(2, toRgb, fromRgb);
    picture.attachFloat();
    zebOutputSamples(ZEB_SAMPLES_RGBAZ);
    zebSceneBegin();
    surface("constant");
    const float samples[2] = {0.25f, 0.75f};
    zebColor(samples);
    rectangle(0, 0, 8, 8, 0.5f);
    zebSceneEnd();
    EXPECT_EQ(red(4, 4), 0.25f);
    EXPECT_EQ(green(4, 4), 0.25f);
    EXPECT_EQ(blue(4, 4), 0.75f);
}

}  // namespace zebtest
