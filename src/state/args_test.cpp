#include "state/args.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "state/option.h"
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

const ArgCounts kCounts = {.varying = 4, .uniform = 2, .vertex = 3};

class ArgsTest : public testing::Test
{
protected:
    void SetUp() override { zebReset(); }
    void TearDown() override { zebReset(); }

    static Floats words(const ArgAssoc& assoc, std::size_t n)
    {
        return {assoc.words(), assoc.words() + n};
    }
    void expectBad(const char* what, bool usable)
    {
        EXPECT_FALSE(usable) << what;
        ASSERT_EQ(reports.size(), 1u) << what;
        EXPECT_TRUE(reports[0].code == 10 || reports[0].code == 11) << what;
        EXPECT_EQ(reports[0].severity, 0xB04) << what;
        reports.clear();
    }

    const unsigned short plainFloat = name("args: plain float", 0xD00, 0xE01);
    const unsigned short uniformFloat = name("args: uniform float", 0xD01, 0xE01);
    const unsigned short varyingFloat = name("args: varying float", 0xD02, 0xE01);
    const unsigned short vertexFloat = name("args: vertex float", 0xD03, 0xE01);
    const unsigned short varyingPair = name("args: varying pair", 0xD02, 0xE04);
    const unsigned short varyingPointw = name("args: varying pointw", 0xD02, 0xE06);
    const unsigned short uniformInteger = name("args: uniform integer", 0xD01, 0xE02);
    const unsigned short uniformString = name("args: uniform string", 0xD01, 0xE03);

    const float numbers[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    zebtest::Reports reports;
};

}  // namespace

TEST_F(ArgsTest, TheClassDecidesHowManyValues)
{
    EXPECT_EQ(ArgAssoc(plainFloat, numbers, kCounts).count(), 1);
    EXPECT_EQ(ArgAssoc(uniformFloat, numbers, kCounts).count(), 2);
    EXPECT_EQ(ArgAssoc(varyingFloat, numbers, kCounts).count(), 4);
    EXPECT_EQ(ArgAssoc(vertexFloat, numbers, kCounts).count(), 3);
}

TEST_F(ArgsTest, TheTypeDecidesTheWidthOfAValue)
{
    EXPECT_EQ(words(ArgAssoc(varyingFloat, numbers, kCounts), 4), (Floats{0, 1, 2, 3}));
    EXPECT_EQ(words(ArgAssoc(varyingPair, numbers, kCounts), 8), Floats(numbers, numbers + 8));
    EXPECT_EQ(words(ArgAssoc(kQNormal, numbers, kCounts), 12), Floats(numbers, numbers + 12));
    EXPECT_EQ(words(ArgAssoc(varyingPointw, numbers, kCounts), 16), Floats(numbers, numbers + 16));
    EXPECT_EQ(words(ArgAssoc(kQColor, numbers, kCounts), 12), Floats(numbers, numbers + 12));
    const ArgAssoc normal(kQNormal, numbers, kCounts);
    EXPECT_EQ(normal.point(1), Point(3, 4, 5));
    EXPECT_EQ(normal.storage(), 0xD02);
    EXPECT_EQ(normal.type(), 0xE05);
    EXPECT_EQ(ArgAssoc(kQColor, numbers, kCounts).color(3), Color(9, 10, 11));
}

TEST_F(ArgsTest, IntegersKeepTheirBits)
{
    const std::int32_t integers[] = {-7, 0x7FC00001};
    const ArgAssoc assoc(uniformInteger, integers, kCounts);
    EXPECT_EQ(std::memcmp(assoc.words(), integers, sizeof integers), 0);
}

TEST_F(ArgsTest, AStringIsAlwaysOne)
{
    char text[] = "abc";
    const ArgAssoc assoc(uniformString, text, kCounts);
    text[0] = 'x';
    EXPECT_EQ(assoc.count(), 1);
    ASSERT_NE(assoc.string(), nullptr);
    EXPECT_STREQ(assoc.string()->text(), "abc");
    EXPECT_EQ(assoc.words(), nullptr);
}

TEST_F(ArgsTest, ANameWithoutATypeHasNoValues)
{
    const ArgAssoc assoc(kQMetal, numbers, kCounts);
    EXPECT_EQ(assoc.words(), nullptr);
    EXPECT_EQ(assoc.string(), nullptr);
}

TEST_F(ArgsTest, ColorsAreReadInTheColorSpace)
{
    const float toRgb[] = {1, 0, 0, 0, 2, 4}, fromRgb[] = {1, 0, 0, 0.25f, 0, 0.125f};
    gOption->setColorSpace(2, toRgb, fromRgb);
    const ArgAssoc assoc(kQColor, numbers, kCounts);
    for (long i = 0; i < 4; ++i) {
        const float a = numbers[2 * i], b = numbers[2 * i + 1];
        EXPECT_EQ(assoc.color(i), Color(a, 2 * b, 4 * b));
    }
}

TEST_F(ArgsTest, ValuesAreCopied)
{
    float values[] = {1, 2, 3, 4};
    const ArgAssoc assoc(varyingFloat, values, kCounts);
    values[0] = 9;
    EXPECT_EQ(assoc.words()[0], 1);
    ArgAssoc copy(assoc);
    EXPECT_EQ(words(copy, 4), (Floats{1, 2, 3, 4}));
    EXPECT_TRUE(copy == assoc);
}

TEST_F(ArgsTest, WhatChangesACopyLeavesTheOriginalAlone)
{
    const float points[] = {1, 2, 3};
    const ArgAssoc original(kQPoint, points, ArgCounts{1, 1, 1});
    ArgAssoc copy(original);
    Matrix m;
    m.translate(5, 0, 0);
    copy.project(m, false);
    EXPECT_EQ(copy.point(0), Point(6, 2, 3));
    EXPECT_EQ(original.point(0), Point(1, 2, 3));
}

TEST_F(ArgsTest, EqualityIsOfTheTokens)
{
    EXPECT_TRUE(ArgAssoc(varyingFloat, numbers, kCounts) ==
                ArgAssoc(varyingFloat, numbers + 1, kCounts));
    EXPECT_FALSE(ArgAssoc(varyingFloat, numbers, kCounts) ==
                 ArgAssoc(vertexFloat, numbers, kCounts));
    EXPECT_TRUE((ParmAssoc{1, nullptr} == ParmAssoc{1, this}));
    EXPECT_FALSE((ParmAssoc{1, nullptr} == ParmAssoc{2, nullptr}));
}

TEST_F(ArgsTest, AListHoldsWhatTheHostGives)
{
    float a[] = {1, 2}, b[] = {3, 4, 5, 6};
    const unsigned short tokens[] = {uniformFloat, varyingFloat};
    void* const values[] = {a, b};
    ArgList list;
    list.init(2, tokens, values, kCounts);
    EXPECT_EQ(words(*list.find(uniformFloat), 2), (Floats{1, 2}));
    EXPECT_EQ(words(*list.find(varyingFloat), 4), (Floats{3, 4, 5, 6}));
    EXPECT_EQ(list.find(vertexFloat), nullptr);
}

TEST_F(ArgsTest, NullTokensAreSkippedWithoutAMessage)
{
    float a[] = {1, 2};
    const unsigned short tokens[] = {0, uniformFloat, 0};
    void* const values[] = {nullptr, a, nullptr};
    EXPECT_TRUE(ArgList::usable(3, tokens, values, kCounts));
    ArgList list;
    list.init(3, tokens, values, kCounts);
    long entries = 0;
    for (const ArgAssoc& assoc : list) entries += assoc.count() > 0;
    EXPECT_EQ(entries, 1);
    EXPECT_NE(list.find(uniformFloat), nullptr);
    EXPECT_TRUE(reports.empty());
}

TEST_F(ArgsTest, OfATokenGivenTwiceTheFirstIsFound)
{
    float a[] = {1, 2}, b[] = {3, 4};
    const unsigned short tokens[] = {uniformFloat, uniformFloat};
    void* const values[] = {a, b};
    ArgList list;
    list.init(2, tokens, values, kCounts);
    EXPECT_EQ(list.find(uniformFloat)->words()[0], 1);
}

TEST_F(ArgsTest, ACopyOfAListIsDeep)
{
    ArgList list, copy;
    list.add(ArgAssoc(varyingFloat, numbers, kCounts));
    list.add(ArgAssoc(uniformString, "abc", kCounts));
    copy.init(list);
    list.detach(varyingFloat);
    list.detach(uniformString);
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(words(*copy.find(varyingFloat), 4), (Floats{0, 1, 2, 3}));
    EXPECT_STREQ(copy.find(uniformString)->string()->text(), "abc");
}

TEST_F(ArgsTest, UnreadableListsAreReported)
{
    float a[] = {1, 2};
    const float nan = std::numeric_limits<float>::quiet_NaN();
    float b[] = {1, nan}, c[] = {std::numeric_limits<float>::infinity(), 1};
    const unsigned short tokens[] = {uniformFloat};
    void *const good[] = {a}, *const null[] = {nullptr}, *const none[] = {b}, *const inf[] = {c};
    EXPECT_TRUE(ArgList::usable(1, tokens, good, kCounts));
    EXPECT_TRUE(ArgList::usable(0, nullptr, nullptr, kCounts));
    EXPECT_TRUE(reports.empty());
    expectBad("no tokens", ArgList::usable(1, nullptr, good, kCounts));
    expectBad("no values", ArgList::usable(1, tokens, nullptr, kCounts));
    expectBad("a null value", ArgList::usable(1, tokens, null, kCounts));
    expectBad("a negative count", ArgList::usable(-1, tokens, good, kCounts));
    expectBad("not a number", ArgList::usable(1, tokens, none, kCounts));
    expectBad("infinite", ArgList::usable(1, tokens, inf, kCounts));
}

TEST_F(ArgsTest, IntegersThatLookLikeNoNumberAreFine)
{
    std::int32_t integers[] = {0x7FC00001, -1};
    const unsigned short tokens[] = {uniformInteger};
    void* const values[] = {integers};
    EXPECT_TRUE(ArgList::usable(1, tokens, values, kCounts));
}

TEST_F(ArgsTest, PointsAreProjectedAsPoints)
{
    ArgList list;
    list.add(ArgAssoc(kQPoint, numbers, kCounts));
    list.add(ArgAssoc(kQColor, numbers, kCounts));
    list.add(ArgAssoc(vertexFloat, numbers, kCounts));
    Matrix m;
    m.translate(10, 20, 30);
    list.project(m, false);
    EXPECT_EQ(list.find(kQPoint)->point(0), Point(10, 21, 32));
    EXPECT_EQ(list.find(kQPoint)->point(2), Point(16, 27, 38));
    EXPECT_EQ(list.find(kQColor)->color(0), Color(0, 1, 2));
    EXPECT_EQ(list.find(vertexFloat)->words()[1], 1);
}

TEST_F(ArgsTest, NormalsAndPlanesAreProjectedByTheCofactors)
{
    Matrix m;
    m.translate(10, 20, 30);
    m.scale(2, 2, 2);
    const float direction[] = {1, 2, 3};
    for (bool flip : {false, true}) {
        ArgList list;
        list.add(ArgAssoc(kQNormal, direction, {}));
        list.add(ArgAssoc(kQPlane, direction, {}));
        list.project(m, flip);
        const float sign = flip ? -4 : 4;
        EXPECT_EQ(list.find(kQNormal)->point(0), Point(sign, 2 * sign, 3 * sign));
        EXPECT_EQ(list.find(kQPlane)->point(0), Point(sign, 2 * sign, 3 * sign));
    }
}
