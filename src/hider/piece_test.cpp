#include "hider/piece.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "hider/scene.h"
#include "support/plain.h"
#include "support/scene.h"

using namespace zeb;

namespace
{

class PieceTest : public zebtest::RasterTest
{
protected:
    // Where depth is wanted, too, the order of calls decides nothing.
    void bySequence()
    {
        zebOutputSamples(ZEB_SAMPLES_RGBA);
        picture.setChannels(4);
        picture.attachFloat();
        zebHider(ZEB_HIDER_SEQUENCE);
    }
    // A world seen by its counts.
    template <class Add>
    Counts counts(const Add& add, bool sequence = false)
    {
        raster(48, 48);
        if (sequence) bySequence();
        beginFlat();
        add();
        zebSceneEnd();
        const Counts result = gScene->counts();
        zebReset();
        return result;
    }
};

}  // namespace

TEST_F(PieceTest, WhatIsHiddenIsNotDiced)
{
    for (const bool nearestFirst : {true, false}) {
        const Counts taken = counts([nearestFirst] {
            for (const bool near : {nearestFirst, !nearestFirst}) {
                zebtest::rectangle(-9, -9, 60, 60, near ? 0.25f : 0.75f);
            }
        });
        EXPECT_GT(taken.grids, 0u);
        EXPECT_EQ(taken.pieces, 2 * taken.grids);
    }
}

TEST_F(PieceTest, WhatIsBehindTransparentSurfacesIsDiced)
{
    const Counts taken = counts([] {
        zebtest::rectangle(-9, -9, 60, 60, 0.75f);
        zebtest::opacity(1, 1, 0.5f);
        zebtest::rectangle(-9, -9, 60, 60, 0.25f);
    });
    EXPECT_EQ(taken.pieces, taken.grids);
}

TEST_F(PieceTest, BehindMattesNothingIsDiced)
{
    const Counts taken = counts([] {
        zebtest::rectangle(-9, -9, 60, 60, 0.75f);
        zebtest::opacity(0, 0, 0);
        zebMatteObject(1);
        zebtest::rectangle(-9, -9, 60, 60, 0.25f);
    });
    EXPECT_EQ(taken.pieces, 2 * taken.grids);
}

TEST_F(PieceTest, TheSequenceHidesAsDepthDoes)
{
    const auto add = [] {
        zebtest::rectangle(-9, -9, 60, 60, 0.25f);
        zebtest::rectangle(-4, -4, 52, 52, 0.75f);
    };
    const Counts taken = counts(add, true);
    EXPECT_GT(taken.pieces, taken.grids) << "what was given first is hidden";
}

TEST_F(PieceTest, OnlyWhatIsSeenIsShaded)
{
    const auto shaded = [this](bool far, bool near) {
        return counts([=] {
                   zebShadingRate(1);
                   if (far) zebtest::rectangle(0, 0, 24, 24, 0.75f);
                   if (near) zebtest::rectangle(0, 0, 12, 24, 0.25f);
               })
            .shaded;
    };
    const std::uint64_t far = shaded(true, false), near = shaded(false, true);
    EXPECT_GE(far, 24u * 24u);
    EXPECT_NEAR(static_cast<double>(shaded(true, true) - near), static_cast<double>(far) / 2,
                static_cast<double>(far) / 10);
}

// However many buckets share a grid.
TEST_F(PieceTest, WhatIsSeenIsCountedOnce)
{
    const auto taken = [this](float opacity, bool near) {
        return counts([=] {
            zebShadingModel(ZEB_SMOOTH);
            zebShadingRate(1);
            zebtest::rectangle(0, 0, 12, 24, 0.75f);
            if (near) zebtest::rectangle(0, 0, 12, 24, 0.25f);
            zebtest::opacity(1, 1, opacity);
            zebtest::rectangle(12, 0, 24, 24, 0.5f);
        });
    };
    const Counts opaque = taken(1, false);
    EXPECT_LE(opaque.seen, opaque.micropolygons);
    EXPECT_GE(opaque.seen, 24u * 24u);
    EXPECT_EQ(taken(1, true).seen, opaque.seen) << "and half of that is hidden";
    const Counts half = taken(0.5f, true);
    EXPECT_GE(half.seen, opaque.seen) << "all of what is transparent";
    EXPECT_LE(half.seen, opaque.micropolygons);
    EXPECT_GT(half.shaded, half.seen);
}

TEST_F(PieceTest, MattesAreNotShaded)
{
    const Counts taken = counts([] {
        zebMatteObject(1);
        zebtest::rectangle(0, 0, 24, 24, 0.75f);
    });
    EXPECT_GT(taken.hits, 0u);
    EXPECT_EQ(taken.shaded, 0u);
}

// 12 micropolygons of half a pixel reach 6 pixels; there is room for 20, of which gaps take 2.5.
TEST_F(PieceTest, ABoxMuchLargerThanWhatIsDicedIsLoose)
{
    const RenderFrame frame(*gOption, Matrix());
    const auto isLoose = [&frame](float width, float height) {
        auto primitive = std::make_unique<Primitive>();
        primitive->setFiled(true, Bound(0, width, 0, height, 0, 1), 1, 0, 0);
        return Piece(std::move(primitive), Dicing{frame, 8, 4}).isLoose();
    };
    EXPECT_FALSE(isLoose(17, 17));
    EXPECT_TRUE(isLoose(18, 1));
    EXPECT_TRUE(isLoose(1, 18));
    EXPECT_TRUE(isLoose(1, std::numeric_limits<float>::quiet_NaN()));
}

// The second covers all that the first says it takes; but that is wrong.
TEST_F(PieceTest, WhatABoundDoesNotHoldIsNotHiddenWithIt)
{
    raster(48, 48);
    bySequence();
    beginFlat();
    zebAttributePush();
    zebShadingRate(1);
    const float bound[6] = {20, 28, 20, 28, 0, 1};
    zebBound(bound);
    zebtest::rectangle(20, 20, 40, 40, 0.5f);
    zebAttributePop();
    zebtest::color(0, 1, 0);
    zebtest::rectangle(16, 16, 32, 32, 0.5f);
    zebSceneEnd();
    EXPECT_EQ(red(30, 30), 0);
    EXPECT_EQ(alpha(34, 34), 1) << "in a bucket that the bound reaches";
}

// What is more than opaque drops what it hides; what comes later shows through it.
TEST_F(PieceTest, WhereOpacitiesGoBeyond1AllIsTakenInItsOrder)
{
    const float depths[3] = {0.25f, 0.5f, 0.75f}, opacities[3] = {1.5f, 1, 1};
    int order[3] = {0, 1, 2};
    do {
        std::vector<std::uint32_t> words[2];
        for (const bool plain : {true, false}) {
            zebtest::renderPlainly(plain);
            raster(8, 8);
            zebQuirks(1);
            beginFlat();
            for (const int k : order) {
                const float value = 0.2f * static_cast<float>(k + 1);
                zebtest::color(value, value, value);
                zebtest::opacity(opacities[k], opacities[k], opacities[k]);
                zebtest::rectangle(-4, -4, 12, 12, depths[k]);
            }
            zebSceneEnd();
            words[plain] = picture.words();
            zebReset();
        }
        EXPECT_EQ(words[0], words[1]) << order[0] << order[1] << order[2];
    } while (std::next_permutation(order, order + 3));
}
