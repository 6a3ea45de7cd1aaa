// Variables of the pieces of a primitive, and parameters of shaders.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "math/shading_math.h"
#include "state/args.h"
#include "state/quark.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

using zebtest::Report;
using Floats = std::vector<float>;

unsigned short name(const char* text, short storage, short type)
{
    return Quark::declare(text, storage, type);
}

Floats words(const ArgList& list, unsigned short token, std::size_t n)
{
    const float* first = list.find(token)->words();
    return {first, first + n};
}

class ArgsSplitTest : public testing::Test
{
protected:
    void add(unsigned short token, const void* values, const ArgCounts& counts)
    {
        from.add(ArgAssoc(token, values, counts));
    }

    const unsigned short uniformFloat = name("args: uniform float", 0xD01, 0xE01);
    const unsigned short varyingFloat = name("args: varying float", 0xD02, 0xE01);
    const unsigned short vertexFloat = name("args: vertex float", 0xD03, 0xE01);
    const unsigned short varyingPair = name("args: varying pair", 0xD02, 0xE04);
    const unsigned short varyingPointw = name("args: varying pointw", 0xD02, 0xE06);
    const unsigned short uniformInteger = name("args: uniform integer", 0xD01, 0xE02);
    const unsigned short uniformString = name("args: uniform string", 0xD01, 0xE03);
    const unsigned short uniformPair = name("args: uniform pair", 0xD01, 0xE04);
    const unsigned short uniformPoint = name("args: uniform point", 0xD01, 0xE05);
    const unsigned short uniformPointw = name("args: uniform pointw", 0xD01, 0xE06);
    const unsigned short uniformColor = name("args: uniform color", 0xD01, 0xE07);
    const unsigned short varyingInteger = name("args: varying integer", 0xD02, 0xE02);
    const unsigned short varyingString = name("args: varying string", 0xD02, 0xE03);

    const float numbers[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    ArgList from, to;
    zebtest::Reports reports;
};

class ParmTest : public ArgsSplitTest
{
};

}  // namespace

TEST_F(ArgsSplitTest, ASubRectangleInterpolatesVaryingCorners)
{
    const float corners[] = {1, 2, 4, 8};
    add(varyingFloat, corners, {.varying = 4});
    to.split(0.25f, 0.5f, 0, 0.75f, from);
    EXPECT_EQ(words(to, varyingFloat, 4),
              (Floats{bilerp(0.25f, 0, 1, 2, 4, 8), bilerp(0.5f, 0, 1, 2, 4, 8),
                      bilerp(0.25f, 0.75f, 1, 2, 4, 8), bilerp(0.5f, 0.75f, 1, 2, 4, 8)}));
    EXPECT_EQ(to.find(varyingFloat)->count(), 4);
}

TEST_F(ArgsSplitTest, ASubRectangleInterpolatesEveryComponent)
{
    add(varyingPair, numbers, {.varying = 4});
    add(varyingPointw, numbers, {.varying = 4});
    add(kQNormal, numbers, {.varying = 4});
    add(kQColor, numbers, {.varying = 4});
    to.split(0.5f, 1, 0.5f, 1, from);
    EXPECT_EQ(words(to, varyingPair, 8), (Floats{3, 4, 4, 5, 5, 6, 6, 7}));
    EXPECT_EQ(words(to, varyingPointw, 4), (Floats{6, 7, 8, 9}));
    EXPECT_EQ(to.find(kQNormal)->point(0), Point(4.5f, 5.5f, 6.5f));
    EXPECT_EQ(to.find(kQNormal)->point(3), Point(9, 10, 11));
    EXPECT_EQ(to.find(kQColor)->color(1), Color(6, 7, 8));
}

TEST_F(ArgsSplitTest, ASubRectangleCopiesTheOtherClasses)
{
    const std::int32_t integers[] = {-7, 0x7FC00001};
    const ArgCounts counts{.varying = 4, .uniform = 2, .vertex = 5};
    add(uniformFloat, numbers, counts);
    add(vertexFloat, numbers, counts);
    add(uniformInteger, integers, counts);
    add(uniformString, "abc", counts);
    to.split(0.25f, 0.5f, 0, 0.75f, from);
    EXPECT_EQ(words(to, uniformFloat, 2), (Floats{0, 1}));
    EXPECT_EQ(to.find(vertexFloat)->count(), 5);
    EXPECT_EQ(words(to, vertexFloat, 5), (Floats{0, 1, 2, 3, 4}));
    EXPECT_EQ(std::memcmp(to.find(uniformInteger)->words(), integers, sizeof integers), 0);
    EXPECT_STREQ(to.find(uniformString)->string()->text(), "abc");
}

TEST_F(ArgsSplitTest, ASubTriangleInterpolatesOverTheTriangle)
{
    const float corners[] = {1, 2, 4};
    add(varyingFloat, corners, {.varying = 3});
    add(uniformFloat, numbers, {});
    const float uv[6] = {0.5f, 0, 0, 0.5f, 0.5f, 0.5f};
    to.split(uv, from);
    EXPECT_EQ(words(to, varyingFloat, 3), (Floats{1.5f, 2.5f, 3}));
    EXPECT_EQ(to.find(varyingFloat)->count(), 3);
    EXPECT_EQ(words(to, uniformFloat, 1), (Floats{0}));
}

TEST_F(ArgsSplitTest, AFaceTakesItsOwnValues)
{
    const ArgCounts counts{.varying = 5, .uniform = 3, .vertex = 5};
    add(uniformFloat, numbers, counts);
    add(varyingFloat, numbers, counts);
    add(kQPoint, numbers, counts);
    const long indices[] = {4, 0, 2};
    to.split(3, indices, from, 1);
    EXPECT_EQ(to.find(uniformFloat)->count(), 1);
    EXPECT_EQ(words(to, uniformFloat, 1), (Floats{1}));
    EXPECT_EQ(to.find(varyingFloat)->count(), 3);
    EXPECT_EQ(words(to, varyingFloat, 3), (Floats{4, 0, 2}));
    EXPECT_EQ(to.find(kQPoint)->count(), 3);
    EXPECT_EQ(to.find(kQPoint)->point(0), Point(12, 13, 14));
    EXPECT_EQ(to.find(kQPoint)->point(1), Point(0, 1, 2));
    EXPECT_EQ(to.find(kQPoint)->point(2), Point(6, 7, 8));
}

TEST_F(ArgsSplitTest, ExactlyOneRequiredVariablePasses)
{
    const unsigned short one[] = {kQColor, kQPoint, 0};
    EXPECT_EQ(verify(3, one, {kQPoint, kQPointw}), 1);
    const unsigned short other[] = {kQPointw};
    EXPECT_EQ(verify(1, other, {kQPoint, kQPointw}), 1);
    EXPECT_TRUE(reports.empty());
}

TEST_F(ArgsSplitTest, AMissingVariableIsReported)
{
    const unsigned short tokens[] = {kQColor};
    EXPECT_EQ(verify(1, tokens, {kQPoint, kQPointw}), 0);
    EXPECT_EQ(verify(0, nullptr, {kQPoint}), 0);
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0], (Report{13, 0xB04, "required argument missing"}));
    EXPECT_EQ(reports[1], reports[0]);
}

TEST_F(ArgsSplitTest, SeveralVariablesAreReportedWithTheirNumber)
{
    const unsigned short two[] = {kQPoint, kQPointw}, three[] = {kQPoint, kQPoint, kQPoint};
    EXPECT_EQ(verify(2, two, {kQPoint, kQPointw}), 0);
    EXPECT_EQ(verify(3, three, {kQPoint, kQPointw}), 0);
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0], (Report{11, 0xB04, "required argument specified 2 times"}));
    EXPECT_EQ(reports[1], (Report{11, 0xB04, "required argument specified 3 times"}));
}

TEST_F(ParmTest, ADeclarationSetsParametersOfEveryClass)
{
    float ka = 1, kd = 1;
    Color color = gWhite;
    ParmList parms{{kQKa, &ka}, {kQKd, &kd}, {kQColor, &color}};
    add(kQKa, numbers + 5, {});
    add(kQColor, numbers + 1, {});
    add(kQKs, numbers + 2, {});
    parms.init(from);
    EXPECT_EQ(ka, 5);
    EXPECT_EQ(kd, 1);
    EXPECT_EQ(color, Color(1, 2, 3));
}

TEST_F(ParmTest, OverrideCopiesUniformVariablesOfEveryType)
{
    float f = -1, pair[3] = {-1, -1, -1};
    std::int32_t integer = -1;
    String string("old");
    Point point[2];
    Pointw pointw;
    Color color[2];
    const std::int32_t seven = 7;
    ParmList parms{{uniformFloat, &f},       {uniformPair, pair},   {uniformInteger, &integer},
                   {uniformString, &string}, {uniformPoint, point}, {uniformPointw, &pointw},
                   {uniformColor, color}};
    add(uniformFloat, numbers + 1, {});
    add(uniformPair, numbers + 2, {});
    add(uniformInteger, &seven, {});
    add(uniformString, "new", {});
    add(uniformPoint, numbers + 4, {});
    add(uniformPointw, numbers + 7, {});
    add(uniformColor, numbers + 11, {});
    parms.override(from);
    EXPECT_EQ(f, 1);
    EXPECT_EQ(Floats(pair, pair + 3), (Floats{2, 3, -1}));
    EXPECT_EQ(integer, 7);
    EXPECT_STREQ(string.text(), "new");
    EXPECT_EQ(point[0], Point(4, 5, 6));
    EXPECT_EQ(point[1], Point());
    EXPECT_EQ(pointw, Pointw(7, 8, 9, 10));
    EXPECT_EQ(color[0], Color(11, 12, 13));
    EXPECT_EQ(color[1], Color());
}

TEST_F(ParmTest, OverrideLeavesOtherClassesAndOtherNames)
{
    float varying = -1, vertex = -1, other = -1;
    ParmList parms{{varyingFloat, &varying}, {vertexFloat, &vertex}, {kQKa, &other}};
    add(varyingFloat, numbers, {.varying = 4});
    add(vertexFloat, numbers, {.vertex = 4});
    add(uniformFloat, numbers, {});
    parms.override(from);
    EXPECT_EQ(varying, -1);
    EXPECT_EQ(vertex, -1);
    EXPECT_EQ(other, -1);
}

TEST_F(ParmTest, AUniformColorOverridesAndAVaryingOneIsInterpolated)
{
    Color uniform = gWhite, varying = gWhite;
    ParmList parms{{uniformColor, &uniform}, {kQColor, &varying}};
    add(uniformColor, numbers + 1, {.varying = 4});
    add(kQColor, numbers, {.varying = 4});
    parms.override(from);
    EXPECT_EQ(uniform, Color(1, 2, 3));
    EXPECT_EQ(varying, gWhite);
    parms.bilerp(0.5f, 1, from);
    EXPECT_EQ(uniform, Color(1, 2, 3));
    EXPECT_EQ(varying, Color(7.5f, 8.5f, 9.5f));
}

TEST_F(ParmTest, BilerpInterpolatesFourCorners)
{
    float f = -1, pair[2];
    Point normal;
    Pointw pointw;
    ParmList parms{
        {varyingFloat, &f}, {varyingPair, pair}, {kQNormal, &normal}, {varyingPointw, &pointw}};
    const float corners[] = {1, 2, 4, 8};
    add(varyingFloat, corners, {.varying = 4});
    add(varyingPair, numbers, {.varying = 4});
    add(kQNormal, numbers, {.varying = 4});
    add(varyingPointw, numbers, {.varying = 4});
    parms.bilerp(0.25f, 0.75f, from);
    EXPECT_EQ(f, bilerp(0.25f, 0.75f, 1, 2, 4, 8));
    // The corners' numbers rise by the width along u and twice that along v: 0.25 + 1.5 widths.
    EXPECT_EQ(pair[0], 3.5f);
    EXPECT_EQ(pair[1], 4.5f);
    EXPECT_EQ(normal, Point(5.25f, 6.25f, 7.25f));
    EXPECT_EQ(pointw, Pointw(7, 8, 9, 10));
}

TEST_F(ParmTest, BilerpTakesFewerThanFourCornersAsATriangle)
{
    float f = -1;
    ParmList parms{{varyingFloat, &f}};
    const float corners[] = {1, 2, 4};
    add(varyingFloat, corners, {.varying = 3});
    parms.bilerp(0.5f, 0.25f, from);
    EXPECT_EQ(f, barylerp(0.5f, 0.25f, 1, 2, 4));
}

TEST_F(ParmTest, BilerpLeavesUniformAndVertexVariables)
{
    float uniform = -1, vertex = -1;
    ParmList parms{{uniformFloat, &uniform}, {vertexFloat, &vertex}};
    add(uniformFloat, numbers + 1, {.uniform = 4});
    add(vertexFloat, numbers + 1, {.vertex = 4});
    parms.bilerp(0.5f, 0.5f, from);
    EXPECT_EQ(uniform, -1);
    EXPECT_EQ(vertex, -1);
}

TEST_F(ParmTest, IntegersAndStringsCannotBeInterpolated)
{
    const Report report{3, 0xB04, "cannot interpolate integers nor strings"};
    const std::int32_t integers[] = {1, 2, 3, 4};
    std::int32_t integer = -1;
    String string("old");
    ParmAssoc integerParm{varyingInteger, &integer}, stringParm{varyingString, &string};
    const ArgAssoc integerArg(varyingInteger, integers, {.varying = 4});
    const ArgAssoc stringArg(varyingString, "new", {.varying = 4});
    integerParm.bilerp(0.5f, 0.5f, integerArg);
    integerParm.barylerp(0.5f, 0.5f, integerArg);
    stringParm.bilerp(0.5f, 0.5f, stringArg);
    stringParm.barylerp(0.5f, 0.5f, stringArg);
    ASSERT_EQ(reports.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(reports[i], report);
    EXPECT_EQ(integer, -1);
    EXPECT_STREQ(string.text(), "old");
}

TEST_F(ParmTest, NamesTellsWhetherAVariableIsAParameter)
{
    float ka = 1;
    const ParmList parms{{kQKa, &ka}};
    EXPECT_FALSE(parms.names(from));
    add(uniformFloat, numbers, {});
    EXPECT_FALSE(parms.names(from));
    add(kQKa, numbers, {});
    EXPECT_TRUE(parms.names(from));
}
