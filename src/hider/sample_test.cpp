#include "hider/sample.h"

#include <gtest/gtest.h>

#include <vector>

using namespace zeb;

namespace
{

class SampleTest : public testing::Test
{
protected:
    void hit(float z, const Color& color, const Color& opacity, bool matte = false)
    {
        sample.add(SampleHit(double{z}, color, opacity, matte), arena);
    }
    std::vector<float> reds() const
    {
        std::vector<float> result;
        for (const auto* node = sample.hits().head(); node; node = node->next)
            result.push_back(node->value.color.r);
        return result;
    }

    SampleTest() { sample.place(0.5f, 0.5f); }
    Sample sample;
    Arena arena;
};

const Color kHalf(0.5f, 0.5f, 0.5f);

}  // namespace

TEST_F(SampleTest, WithoutHitsItIsBlackAndFar)
{
    const PackedSample p = sample.pack(1, true);
    EXPECT_EQ(p.color, gBlack);
    EXPECT_EQ(p.alpha, 0);
    EXPECT_EQ(p.depth, 1);
    EXPECT_EQ(p.x, 0.5f);
    EXPECT_EQ(p.y, 0.5f);
}

TEST_F(SampleTest, HitsAreCompositedFrontToBack)
{
    hit(0.75f, Color(1, 1, 1), gWhite);
    hit(0.25f, Color(1, 0, 0), Color(0.5f, 0.25f, 0));
    const PackedSample p = sample.pack(1, true);
    EXPECT_EQ(p.color, Color(1, 0.75f, 1));
    EXPECT_NEAR(p.alpha, 1, 1e-6);
    EXPECT_EQ(p.depth, 0.25);
}

TEST_F(SampleTest, ColoursAreTakenAsTheyComeWithMendedQuirks)
{
    hit(0.75f, Color(0, 0.25f, 1), gWhite);
    hit(0.25f, Color(0.5f, 0.25f, 0), Color(0.5f, 0.25f, 0));
    const PackedSample p = sample.pack(1, false);
    EXPECT_EQ(p.color, Color(0.5f, 0.4375f, 1)) << "0.25 and three quarters of 0.25";
    EXPECT_NEAR(p.alpha, 1, 1e-6);
}

TEST_F(SampleTest, AlphaIsTheMeanOfWhatIsHidden)
{
    hit(0.5f, gWhite, Color(0.75f, 0.5f, 0.25f));
    EXPECT_NEAR(sample.pack(1, true).alpha, 0.5, 1e-6);
}

TEST_F(SampleTest, OnlyFullOpacityIsOpaque)
{
    EXPECT_TRUE(SampleHit(0, gWhite, Color(1, 1, 1), false).opaque());
    EXPECT_FALSE(SampleHit(0, gWhite, Color(1, 1, 0.99f), false).opaque());
    EXPECT_FALSE(SampleHit(0, gWhite, Color(1, 0.9999999f, 1), false).opaque());
}

TEST_F(SampleTest, AnOpaqueHitDropsAllBehindIt)
{
    hit(0.75f, Color(3, 0, 0), kHalf);
    hit(0.25f, Color(1, 0, 0), kHalf);
    hit(0.5f, Color(2, 0, 0), gWhite);
    EXPECT_EQ(reds(), (std::vector<float>{1, 2}));
}

TEST_F(SampleTest, AnAlmostOpaqueHitDoesNotCutTheList)
{
    hit(0.75f, Color(3, 0, 0), kHalf);
    hit(0.5f, Color(2, 0, 0), Color(1, 1, 0.99f));
    EXPECT_EQ(reds(), (std::vector<float>{2, 3}));
}

TEST_F(SampleTest, ATieWithTheHeadGoesBehindItButBeforeLaterOnes)
{
    hit(0.5f, Color(1, 0, 0), kHalf);
    hit(0.5f, Color(2, 0, 0), kHalf);
    hit(0.5f, Color(3, 0, 0), kHalf);
    EXPECT_EQ(reds(), (std::vector<float>{1, 3, 2}));
}

TEST_F(SampleTest, AMatteHitHidesWhatIsBehindAndStaysEmpty)
{
    hit(0.75f, gWhite, gWhite);
    hit(0.5f, gWhite, gWhite, true);
    const PackedSample p = sample.pack(1, true);
    EXPECT_EQ(p.color, gBlack);
    EXPECT_EQ(p.alpha, 0);
    EXPECT_EQ(p.depth, 1);
}

TEST_F(SampleTest, WhatIsInFrontOfAMatteHitShows)
{
    hit(0.5f, gWhite, gWhite, true);
    hit(0.25f, Color(0.5f, 1, 0), kHalf);
    const PackedSample p = sample.pack(1, true);
    EXPECT_EQ(p.color, Color(0.25f, 0.5f, 0));
    EXPECT_NEAR(p.alpha, 0.5, 1e-6);
    EXPECT_EQ(p.depth, 0.25);
}

TEST_F(SampleTest, HitsAreOrderedByTheirOrder)
{
    const SampleHit near(0.25, gWhite, gWhite, false), far(0.5, gWhite, gWhite, false);
    EXPECT_TRUE(near < far);
    EXPECT_FALSE(far < near);
    EXPECT_FALSE(near < near);
}
