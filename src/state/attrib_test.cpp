#include "state/attrib.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "shade/light.h"
#include "shade/surface.h"
#include "shade/volume.h"
#include "state/quark.h"
#include "state/state.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

const float kPowerRows[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

class AttribTest : public testing::Test
{
protected:
    void SetUp() override { zebReset(); }
    void TearDown() override { zebReset(); }

    void expectReport(long code, const std::string& message)
    {
        ASSERT_EQ(reports.size(), 1u) << message;
        EXPECT_EQ(reports[0].code, code);
        EXPECT_EQ(reports[0].severity, 0xB04);
        EXPECT_EQ(reports[0].message, message);
        reports.clear();
    }
    static bool isOn(const void* light)
    {
        for (const auto& active : gAttrib->lights) {
            if (active.get() == light) return true;
        }
        return false;
    }
    static long lightsOn()
    {
        long count = 0;
        for (const auto& active : gAttrib->lights) count += active != nullptr;
        return count;
    }
    template <class T>
    static bool surfaceIs()
    {
        return dynamic_cast<const T*>(gAttrib->surfaceShader.get()) != nullptr;
    }

    zebtest::Reports reports;
};

}  // namespace

TEST_F(AttribTest, Defaults)
{
    const Attrib& a = *gAttrib;
    EXPECT_EQ(a.surfaceColor, gWhite);
    EXPECT_EQ(a.surfaceOpacity, gWhite);
    const float s[] = {0, 1, 0, 1}, t[] = {0, 0, 1, 1};
    EXPECT_TRUE(std::equal(s, s + 4, a.textureS));
    EXPECT_TRUE(std::equal(t, t + 4, a.textureT));
    EXPECT_TRUE(a.lights.empty());
    EXPECT_TRUE(surfaceIs<PlasticSurface>());
    EXPECT_EQ(a.atmosphereShader, nullptr);
    EXPECT_EQ(a.micropolygonSide, 0.5f);
    EXPECT_EQ(a.interpolation, 0x500);
    EXPECT_FALSE(a.matte);
    const float range[] = {0, 0, 1e38f, 1e38f};
    EXPECT_TRUE(std::equal(range, range + 4, a.detailLimits));
    EXPECT_EQ(a.flatnessLimit, 0.5f);
    EXPECT_EQ(a.ubasis, zebBezierBasis);
    EXPECT_EQ(a.vbasis, zebBezierBasis);
    EXPECT_EQ(a.ustep, 3);
    EXPECT_EQ(a.vstep, 3);
    EXPECT_EQ(a.orientationSide, 0x600);
    EXPECT_EQ(a.sides, 2);
    EXPECT_EQ(a.displacementBound, 0);
    EXPECT_TRUE(a.object.empty());
    EXPECT_TRUE(a.group.empty());
    EXPECT_TRUE(a.changed());
}

TEST_F(AttribTest, ColorAndOpacityTakeThreeSamples)
{
    const float color[] = {0.1f, 0.2f, 0.3f}, opacity[] = {0.4f, 0.5f, 0.6f};
    gAttrib->color(color);
    gAttrib->opacity(opacity);
    EXPECT_EQ(gAttrib->surfaceColor, Color(0.1f, 0.2f, 0.3f));
    EXPECT_EQ(gAttrib->surfaceOpacity, Color(0.4f, 0.5f, 0.6f));
}

TEST_F(AttribTest, ColorTakesAsManySamplesAsTheColorSpaceHas)
{
    const float gray[] = {1, 1, 1};
    gOption->setColorSpace(1, gray, gray);
    const float color[] = {0.25f};
    gAttrib->color(color);
    EXPECT_EQ(gAttrib->surfaceColor, Color(0.25f, 0.25f, 0.25f));
}

TEST_F(AttribTest, TextureCoordinatesComeInPairs)
{
    gAttrib->textureCoordinates(1, 2, 3, 4, 5, 6, 7, 8);
    const float s[] = {1, 3, 5, 7}, t[] = {2, 4, 6, 8};
    EXPECT_TRUE(std::equal(s, s + 4, gAttrib->textureS));
    EXPECT_TRUE(std::equal(t, t + 4, gAttrib->textureT));
}

TEST_F(AttribTest, TheNameChoosesTheLight)
{
    using L = const Light;
    const auto* ambient = static_cast<L*>(gAttrib->lightSource(kQAmbient, 0, nullptr, nullptr));
    const auto* distant = static_cast<L*>(gAttrib->lightSource(kQDistant, 0, nullptr, nullptr));
    const auto* omni = static_cast<L*>(gAttrib->lightSource(kQOmni, 0, nullptr, nullptr));
    const auto* spot = static_cast<L*>(gAttrib->lightSource(kQSpot, 0, nullptr, nullptr));
    EXPECT_NE(dynamic_cast<const AmbientLight*>(ambient), nullptr);
    EXPECT_NE(dynamic_cast<const DistantLight*>(distant), nullptr);
    EXPECT_NE(dynamic_cast<const PointLight*>(omni), nullptr);
    EXPECT_NE(dynamic_cast<const SpotLight*>(spot), nullptr);
    EXPECT_TRUE(reports.empty());
}

TEST_F(AttribTest, ANewLightIsOn)
{
    const void* light = gAttrib->lightSource(kQOmni, 0, nullptr, nullptr);
    EXPECT_TRUE(isOn(light));
    EXPECT_EQ(lightsOn(), 1);
}

TEST_F(AttribTest, AnUnknownLightIsReportedAndNull)
{
    EXPECT_EQ(gAttrib->lightSource(kQMetal, 0, nullptr, nullptr), nullptr);
    expectReport(10, "unknown light source 10");
    EXPECT_TRUE(gAttrib->lights.empty());
}

TEST_F(AttribTest, AreaLightsArePointLights)
{
    const void* light = gAttrib->areaLightSource(kQDistant, 0, nullptr, nullptr);
    EXPECT_NE(dynamic_cast<const PointLight*>(static_cast<const Light*>(light)), nullptr);
    EXPECT_TRUE(isOn(light));
}

TEST_F(AttribTest, LightsAreSwitchedOffAndOn)
{
    const void* light = gAttrib->lightSource(kQOmni, 0, nullptr, nullptr);
    gAttrib->lightSwitch(light, 0);
    EXPECT_FALSE(isOn(light));
    gAttrib->lightSwitch(light, 2);
    EXPECT_TRUE(isOn(light));
    EXPECT_TRUE(reports.empty());
}

TEST_F(AttribTest, ALightThatIsOnIsOnOnce)
{
    const void* light = gAttrib->lightSource(kQOmni, 0, nullptr, nullptr);
    gAttrib->lightSwitch(light, 1);
    gAttrib->lightSwitch(light, 1);
    EXPECT_EQ(lightsOn(), 1);
    gAttrib->lightSwitch(light, 0);
    EXPECT_FALSE(isOn(light));
}

TEST_F(AttribTest, SwitchingOffWhatIsOffIsNothing)
{
    const void* light = gAttrib->lightSource(kQOmni, 0, nullptr, nullptr);
    gAttrib->lightSwitch(light, 0);
    gAttrib->lightSwitch(light, 0);
    EXPECT_EQ(lightsOn(), 0);
    EXPECT_TRUE(reports.empty());
}

TEST_F(AttribTest, HandlesThatAreNotLiveAreRefused)
{
    int other = 0;
    for (const void* handle :
         {static_cast<const void*>(nullptr), static_cast<const void*>(&other)}) {
        reports.clear();
        gAttrib->lightSwitch(handle, 1);
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].code, 10);
        EXPECT_EQ(reports[0].severity, 0xB04);
        EXPECT_EQ(lightsOn(), 0);
    }
}

TEST_F(AttribTest, TheNameChoosesTheSurface)
{
    gAttrib->surface(kQConstant, 0, nullptr, nullptr);
    EXPECT_TRUE(surfaceIs<ConstantSurface>());
    gAttrib->surface(kQDiffuse, 0, nullptr, nullptr);
    EXPECT_TRUE(surfaceIs<MatteSurface>());
    gAttrib->surface(kQMetal, 0, nullptr, nullptr);
    EXPECT_TRUE(surfaceIs<MetalSurface>());
    gAttrib->surface(kQPlastic, 0, nullptr, nullptr);
    EXPECT_TRUE(surfaceIs<PlasticSurface>());
}

TEST_F(AttribTest, AnyOtherSurfaceIsPlasticWithoutAMessage)
{
    gAttrib->surface(kQMetal, 0, nullptr, nullptr);
    gAttrib->surface(kQFog, 0, nullptr, nullptr);
    EXPECT_TRUE(surfaceIs<PlasticSurface>());
    EXPECT_TRUE(reports.empty());
}

TEST_F(AttribTest, SurfacesTakeTheirParameters)
{
    float ka = 0.25f, roughness = 0.75f;
    const unsigned short tokens[] = {kQKa, kQRoughness};
    void* const values[] = {&ka, &roughness};
    gAttrib->surface(kQMetal, 2, tokens, values);
    const auto& metal = dynamic_cast<const MetalSurface&>(*gAttrib->surfaceShader);
    EXPECT_EQ(metal.ka, 0.25f);
    EXPECT_EQ(metal.roughness, 0.75f);
    EXPECT_EQ(metal.ks, 1);
}

TEST_F(AttribTest, TheNameChoosesTheAtmosphere)
{
    float color[] = {0.1f, 0.2f, 0.3f};
    const unsigned short tokens[] = {kQColor};
    void* const values[] = {color};
    gAttrib->atmosphere(kQDepthCue, 1, tokens, values);
    const auto* cue = dynamic_cast<const DepthCueVolume*>(gAttrib->atmosphereShader.get());
    ASSERT_NE(cue, nullptr);
    EXPECT_EQ(cue->color, Color(0.1f, 0.2f, 0.3f));  // of varying class, yet a declaration counts
    gAttrib->atmosphere(kQFog, 0, nullptr, nullptr);
    EXPECT_NE(dynamic_cast<const FogVolume*>(gAttrib->atmosphereShader.get()), nullptr);
    EXPECT_TRUE(reports.empty());
}

TEST_F(AttribTest, AnUnknownAtmosphereIsReportedAndLeavesNone)
{
    gAttrib->atmosphere(kQFog, 0, nullptr, nullptr);
    gAttrib->atmosphere(kQMetal, 0, nullptr, nullptr);
    expectReport(10, "unknown atmosphere 10");
    EXPECT_EQ(gAttrib->atmosphereShader, nullptr);
}

TEST_F(AttribTest, SomeShadersAreAcceptedWithoutEffect)
{
    const auto before = gAttrib->snapshot();
    gAttrib->interior(kQFog, 0, nullptr, nullptr);
    gAttrib->exterior(kQFog, 0, nullptr, nullptr);
    gAttrib->displacement(kQMetal, 0, nullptr, nullptr);
    gAttrib->trimCurve();
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(gAttrib->snapshot(), before);
}

TEST_F(AttribTest, TheShadingRateIsKeptAsItsSquareRoot)
{
    gAttrib->shadingRate(4);
    EXPECT_EQ(gAttrib->micropolygonSide, 2);
    for (const auto& [rate, text] :
         {std::pair<float, const char*>{0, "0"}, {-1, "-1"}, {0.5e-10f, "5e-11"}}) {
        gAttrib->shadingRate(rate);
        expectReport(10, "shading rate " + std::string(text) + " too small");
        EXPECT_EQ(gAttrib->micropolygonSide, 2);
    }
    gAttrib->shadingRate(0.0001f);
    EXPECT_TRUE(reports.empty());
    EXPECT_NEAR(gAttrib->micropolygonSide, 0.01f, 1e-8f);
}

TEST_F(AttribTest, TheShadingModelIsConstantOrSmooth)
{
    gAttrib->shadingModel(0x501);
    EXPECT_EQ(gAttrib->interpolation, 0x501);
    gAttrib->shadingModel(0x502);
    expectReport(10, "unknown shading interpolation 1282");
    EXPECT_EQ(gAttrib->interpolation, 0x501);
    gAttrib->shadingModel(0x500);
    EXPECT_EQ(gAttrib->interpolation, 0x500);
}

TEST_F(AttribTest, PlainSettersStoreTheirValues)
{
    gAttrib->matteObject(1);
    EXPECT_TRUE(gAttrib->matte);
    gAttrib->matteObject(0);
    EXPECT_FALSE(gAttrib->matte);
    gAttrib->backface(1);
    EXPECT_EQ(gAttrib->sides, 1);
    zebBoundDisplacement(0.5f);
    EXPECT_EQ(gAttrib->displacementBound, 0.5f);
    char name[] = "A";
    gAttrib->objectName(name);
    gAttrib->groupName("B");
    name[0] = 'x';
    EXPECT_STREQ(gAttrib->object.text(), "A");
    EXPECT_STREQ(gAttrib->group.text(), "B");
    EXPECT_TRUE(reports.empty());
}

TEST_F(AttribTest, BoundAndDetailBothStoreABox)
{
    const float box[] = {-1, 1, -2, 2, -3, 3}, other[] = {0, 1, 0, 2, 0, 3};
    gAttrib->bound(box);
    EXPECT_EQ(gAttrib->objectBound, Bound(box));
    EXPECT_EQ(gAttrib->objectBound.finite, 1);
    gAttrib->detail(other);
    EXPECT_EQ(gAttrib->objectBound, Bound(other));
}

TEST_F(AttribTest, DetailRangeMustNotFall)
{
    gAttrib->detailRange(0, 1, 1, 2);
    const float stored[] = {0, 1, 1, 2};
    EXPECT_TRUE(std::equal(stored, stored + 4, gAttrib->detailLimits));
    EXPECT_TRUE(reports.empty());
    const float falling[][4] = {{0, 2, 1, 3}, {2, 1, 3, 4}, {0, 1, 3, 2}};
    for (const auto& r : falling) {
        gAttrib->detailRange(r[0], r[1], r[2], r[3]);
        expectReport(10, "arguments must increase in value");
    }
    const float negative[][4] = {{-1, 1, 2, 3}, {0, -1, 2, 3}, {0, 1, -2, 3}, {0, 1, 2, -3}};
    for (const auto& r : negative) {
        gAttrib->detailRange(r[0], r[1], r[2], r[3]);
        expectReport(10, "negative number encountered");
    }
    EXPECT_TRUE(std::equal(stored, stored + 4, gAttrib->detailLimits));
}

TEST_F(AttribTest, FlatnessIsPositive)
{
    gAttrib->flatness(0.25f);
    EXPECT_EQ(gAttrib->flatnessLimit, 0.25f);
    gAttrib->flatness(0);
    expectReport(10, "flatness must be greater than 0");
    EXPECT_EQ(gAttrib->flatnessLimit, 0.25f);
}

TEST_F(AttribTest, OrientationFollowsTheHandOfTheTransformation)
{
    gAttrib->orientation(0x601);
    EXPECT_EQ(gAttrib->orientationSide, 0x601);
    gAttrib->orientation(0x600);
    EXPECT_EQ(gAttrib->orientationSide, 0x600);
    gAttrib->orientation(0x602);
    EXPECT_EQ(gAttrib->orientationSide, 0x601);
    gAttrib->orientation(0x603);
    EXPECT_EQ(gAttrib->orientationSide, 0x600);
    zebScale(-1, 1, 1);
    gAttrib->orientation(0x603);
    EXPECT_EQ(gAttrib->orientationSide, 0x601);
    gAttrib->orientation(0x602);
    EXPECT_EQ(gAttrib->orientationSide, 0x600);
    zebScale(1, 0, 1);  // a determinant of 0 is not negative
    gAttrib->orientation(0x602);
    EXPECT_EQ(gAttrib->orientationSide, 0x601);
    EXPECT_TRUE(reports.empty());
}

TEST_F(AttribTest, OrientationReversesTwiceToItself)
{
    gAttrib->orientation(0x604);
    EXPECT_EQ(gAttrib->orientationSide, 0x601);
    gAttrib->orientation(0x604);
    EXPECT_EQ(gAttrib->orientationSide, 0x600);
}

TEST_F(AttribTest, UnknownOrientationsAreRefused)
{
    gAttrib->orientation(0x605);
    expectReport(10, "unknown orientation 1541");
    EXPECT_EQ(gAttrib->orientationSide, 0x600);
    gAttrib->orientationSide = 7;
    gAttrib->orientation(0x604);
    expectReport(3, "unknown orientation");
}

TEST_F(AttribTest, BasesGoByNumberWithTheirSteps)
{
    const Matrix* const bases[] = {&zebBezierBasis, &zebBSplineBasis, &zebCatmullRomBasis,
                                   &zebHermiteBasis, &zebPowerBasis};
    const long steps[] = {3, 1, 1, 2, 4};
    for (short i = 0; i < 5; ++i) {
        gAttrib->basis(static_cast<short>(0x900 + i), 0x802);
        EXPECT_EQ(gAttrib->ubasis, *bases[i]);
        EXPECT_EQ(gAttrib->vbasis, *bases[i]);
        EXPECT_EQ(gAttrib->ustep, steps[i]);
        EXPECT_EQ(gAttrib->vstep, steps[i]);
    }
}

TEST_F(AttribTest, TheApplicationChoosesUOrV)
{
    gAttrib->basis(0x901, 0x800);
    gAttrib->basis(0x903, 0x801);
    EXPECT_EQ(gAttrib->ubasis, zebBSplineBasis);
    EXPECT_EQ(gAttrib->ustep, 1);
    EXPECT_EQ(gAttrib->vbasis, zebHermiteBasis);
    EXPECT_EQ(gAttrib->vstep, 2);
}

TEST_F(AttribTest, UnknownBasesAndApplicationsAreRefused)
{
    gAttrib->basis(0x905, 0x802);
    expectReport(10, "unknown bicubic patch basis 2309");
    gAttrib->basis(0x901, 0x803);
    expectReport(10, "unknown basis application 2051");
    gAttrib->customBasis(0x7FF, kPowerRows, 1);
    expectReport(10, "unknown basis application 2047");
    EXPECT_EQ(gAttrib->ubasis, zebBezierBasis);
    EXPECT_EQ(gAttrib->vstep, 3);
}

TEST_F(AttribTest, CustomBasesAreStored)
{
    const float rows[4][4] = {{2, 0, 0, 0}, {0, 2, 0, 0}, {0, 0, 2, 0}, {0, 0, 0, 1}};
    const Matrix m(rows);
    gAttrib->customBasis(0x800, rows, 5);
    EXPECT_EQ(gAttrib->ubasis, m);
    EXPECT_EQ(gAttrib->ustep, 5);
    EXPECT_EQ(gAttrib->vbasis, zebBezierBasis);
    gAttrib->customBasis(0x801, rows, 6);
    EXPECT_EQ(gAttrib->vbasis, m);
    EXPECT_EQ(gAttrib->vstep, 6);
    gAttrib->customBasis(0x802, kPowerRows, 7);
    EXPECT_EQ(gAttrib->ubasis, gIdentity);
    EXPECT_EQ(gAttrib->ustep, 7);
    EXPECT_EQ(gAttrib->vstep, 7);
}
