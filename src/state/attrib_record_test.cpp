// What attribute setters have in common: legality, the changed-flag, sharing, bad input.
#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "shade/surface.h"
#include "state/quark.h"
#include "state/state.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

const float kBox[] = {-1, 1, -2, 2, -3, 3};
const float kRed[] = {1, 0, 0};
const float kPowerRows[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

struct Setter {
    const char* name;
    std::function<void()> act;
};

const Setter kChanging[] = {
    {"color", [] { gAttrib->color(kRed); }},
    {"opacity", [] { gAttrib->opacity(kRed); }},
    {"textureCoordinates", [] { gAttrib->textureCoordinates(1, 2, 3, 4, 5, 6, 7, 8); }},
    {"lightSource", [] { gAttrib->lightSource(kQOmni, 0, nullptr, nullptr); }},
    {"areaLightSource", [] { gAttrib->areaLightSource(kQOmni, 0, nullptr, nullptr); }},
    {"surface", [] { gAttrib->surface(kQMetal, 0, nullptr, nullptr); }},
    {"atmosphere", [] { gAttrib->atmosphere(kQFog, 0, nullptr, nullptr); }},
    {"shadingRate", [] { gAttrib->shadingRate(4); }},
    {"shadingModel", [] { gAttrib->shadingModel(0x501); }},
    {"matteObject", [] { gAttrib->matteObject(1); }},
    {"bound", [] { gAttrib->bound(kBox); }},
    {"detail", [] { gAttrib->detail(kBox); }},
    {"detailRange", [] { gAttrib->detailRange(0, 1, 2, 3); }},
    {"flatness", [] { gAttrib->flatness(1); }},
    {"orientation", [] { gAttrib->orientation(0x601); }},
    {"reverse", [] { gAttrib->orientation(0x604); }},
    {"backface", [] { gAttrib->backface(1); }},
    {"basis", [] { gAttrib->basis(0x901, 0x802); }},
    {"customBasis", [] { gAttrib->customBasis(0x802, kPowerRows, 1); }},
    {"boundDisplacement", [] { gAttrib->boundDisplacement(1); }},
    {"objectName", [] { gAttrib->objectName("A"); }},
    {"groupName", [] { gAttrib->groupName("B"); }},
};

const Setter kWithoutEffect[] = {
    {"interior", [] { gAttrib->interior(1, 0, nullptr, nullptr); }},
    {"exterior", [] { gAttrib->exterior(1, 0, nullptr, nullptr); }},
    {"displacement", [] { gAttrib->displacement(1, 0, nullptr, nullptr); }},
    {"trimCurve", [] { gAttrib->trimCurve(); }},
};

class AttribRecordTest : public testing::Test
{
protected:
    void SetUp() override { zebReset(); }
    void TearDown() override { zebReset(); }

    void expectRefused(const char* what, const std::function<void()>& call)
    {
        reports.clear();
        const auto before = gAttrib->snapshot();
        call();
        ASSERT_EQ(reports.size(), 1u) << what;
        EXPECT_TRUE(reports[0].code == 10 || reports[0].code == 11) << what;
        EXPECT_EQ(reports[0].severity, 0xB04) << what;
        EXPECT_EQ(reports[0].message.find(what), 0u) << reports[0].message;
        EXPECT_FALSE(gAttrib->changed()) << what;
        EXPECT_EQ(gAttrib->snapshot(), before) << what;
    }
    zebtest::Reports reports;
};

}  // namespace

TEST_F(AttribRecordTest, EverySetterMarksTheChange)
{
    for (const Setter& setter : kChanging) {
        zebReset();
        gAttrib->snapshot();
        EXPECT_FALSE(gAttrib->changed());
        setter.act();
        EXPECT_TRUE(gAttrib->changed()) << setter.name;
    }
    const void* light = gAttrib->lightSource(kQOmni, 0, nullptr, nullptr);
    for (short on : {0, 1}) {
        gAttrib->snapshot();
        gAttrib->lightSwitch(light, on);
        EXPECT_TRUE(gAttrib->changed());
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(AttribRecordTest, EverySetterIsRefusedInAnObjectBlock)
{
    const void* light = gAttrib->lightSource(kQOmni, 0, nullptr, nullptr);
    gState->objectBegin();
    const auto before = gAttrib->snapshot();
    const auto expectRefusal = [&](const char* name) {
        ASSERT_EQ(reports.size(), 1u) << name;
        EXPECT_EQ(reports[0], (zebtest::Report{6, 0xB04, "(null)"})) << name;
        EXPECT_EQ(gAttrib->snapshot(), before) << name;
        reports.clear();
    };
    for (const Setter& setter : kChanging) {
        setter.act();
        expectRefusal(setter.name);
    }
    for (const Setter& setter : kWithoutEffect) {
        setter.act();
        expectRefusal(setter.name);
    }
    gAttrib->lightSwitch(light, 0);
    expectRefusal("lightSwitch");
}

TEST_F(AttribRecordTest, SnapshotsAreSharedUntilTheRecordChanges)
{
    const auto first = gAttrib->snapshot();
    EXPECT_EQ(gAttrib->snapshot(), first);
    gAttrib->color(kRed);
    const auto second = gAttrib->snapshot();
    EXPECT_NE(second, first);
    EXPECT_EQ(first->surfaceColor, gWhite);
    EXPECT_EQ(second->surfaceColor, Color(1, 0, 0));
}

TEST_F(AttribRecordTest, CopiesShareTheShaders)
{
    gAttrib->surface(kQMetal, 0, nullptr, nullptr);
    const Attrib copy(*gAttrib);
    EXPECT_EQ(copy.surfaceShader, gAttrib->surfaceShader);
}

TEST_F(AttribRecordTest, AShaderLivesAsLongAsARecordUsesIt)
{
    gAttrib->surface(kQMetal, 0, nullptr, nullptr);
    const std::weak_ptr<Surface> metal = gAttrib->surfaceShader;
    zebAttributePush();
    gAttrib->surface(kQDiffuse, 0, nullptr, nullptr);
    const std::weak_ptr<Surface> matte = gAttrib->surfaceShader;
    EXPECT_FALSE(metal.expired());
    zebAttributePop();
    EXPECT_TRUE(matte.expired());
    EXPECT_FALSE(metal.expired());
    gAttrib->surface(kQConstant, 0, nullptr, nullptr);
    EXPECT_TRUE(metal.expired());
}

TEST_F(AttribRecordTest, NumbersThatAreNoneAreRefused)
{
    const float infinite = std::numeric_limits<float>::infinity();
    for (float bad : {std::numeric_limits<float>::quiet_NaN(), infinite, -infinite}) {
        const float color[] = {0, bad, 0};
        const float box[] = {-1, 1, -2, 2, -3, bad};
        float rows[4][4] = {{1, 0, 0, 0}, {0, 1, bad, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
        float value = bad;
        const unsigned short tokens[] = {kQKa};
        const unsigned short intensity[] = {kQIntensity};
        const unsigned short distance[] = {kQDistance};
        void* const values[] = {&value};
        expectRefused("zebColor", [&] { zebColor(color); });
        expectRefused("zebOpacity", [&] { zebOpacity(color); });
        expectRefused("zebShadingRate", [&] { zebShadingRate(bad); });
        expectRefused("zebBound", [&] { zebBound(box); });
        expectRefused("zebFlatness", [&] { zebFlatness(bad); });
        expectRefused("zebBoundDisplacement", [&] { zebBoundDisplacement(bad); });
        expectRefused("zebCustomBasis", [&] { zebCustomBasis(0x802, rows, 1); });
        expectRefused("zebSurfaceV", [&] { zebSurfaceV(kQMetal, 1, tokens, values); });
        expectRefused("zebAtmosphereV", [&] { zebAtmosphereV(kQFog, 1, distance, values); });
        expectRefused("zebLightSourceV",
                      [&] { EXPECT_EQ(zebLightSourceV(kQOmni, 1, intensity, values), nullptr); });
    }
}

TEST_F(AttribRecordTest, NullPointersAndNegativeCountsAreRefused)
{
    const unsigned short tokens[] = {kQKa};
    void* const nothing[] = {nullptr};
    float value = 1;
    void* const values[] = {&value};
    expectRefused("zebColor", [] { zebColor(nullptr); });
    expectRefused("zebOpacity", [] { zebOpacity(nullptr); });
    expectRefused("zebBound", [] { zebBound(nullptr); });
    expectRefused("zebCustomBasis", [] { zebCustomBasis(0x802, nullptr, 1); });
    expectRefused("zebSurfaceV", [&] { zebSurfaceV(kQMetal, 1, nullptr, values); });
    expectRefused("zebSurfaceV", [&] { zebSurfaceV(kQMetal, 1, tokens, nullptr); });
    expectRefused("zebSurfaceV", [&] { zebSurfaceV(kQMetal, 1, tokens, nothing); });
    expectRefused("zebSurfaceV", [&] { zebSurfaceV(kQMetal, -1, tokens, values); });
    expectRefused("zebAtmosphereV", [&] { zebAtmosphereV(kQFog, 1, nullptr, nullptr); });
    expectRefused("zebLightSourceV", [&] { zebLightSourceV(kQOmni, 1, nullptr, nullptr); });
}

TEST_F(AttribRecordTest, ABasisWithoutAStepIsRefused)
{
    ZebMatrix m = {};
    expectRefused("zebCustomBasis", [&m] { zebCustomBasis(0x802, m, 0); });
    expectRefused("zebCustomBasis", [&m] { zebCustomBasis(0x802, m, -1); });
}

TEST_F(AttribRecordTest, NullNamesAreNoNames)
{
    gAttrib->objectName("A");
    gAttrib->objectName(nullptr);
    gAttrib->groupName(nullptr);
    EXPECT_TRUE(gAttrib->object.empty());
    EXPECT_TRUE(gAttrib->group.empty());
}
