#include "hider/micropolygon.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>

#include "support/grids.h"

using namespace zeb;

namespace
{

class MicroPolygonTest : public testing::Test
{
protected:
    // One cell, its corners in the order (0, 0), (1, 0), (1, 1), (0, 1).
    Grid& make(const std::array<Point, 4>& p, bool flip = false)
    {
        grid =
            std::make_unique<Grid>(static_cast<unsigned short>(1), static_cast<unsigned short>(1),
                                   attrib, Transform(), 42u, flip, false, ArgList());
        grid->vertex(0, 0).P = p[0];
        grid->vertex(1, 0).P = p[1];
        grid->vertex(1, 1).P = p[2];
        grid->vertex(0, 1).P = p[3];
        zebtest::projectAsTheyAre(*grid);
        const Color colors[4] = {Color(1, 0, 0), Color(0, 1, 0), Color(1, 1, 1), Color(0, 0, 1)};
        for (const int k : {0, 1, 2, 3}) {
            grid->setColor(k % 2, k / 2, colors[k]);
            grid->setOpacity(k % 2, k / 2, k == 0 ? gWhite : gBlack);
        }
        return *grid;
    }
    bool sample(float x, float y, bool bySequence = false)
    {
        const MicroPolygon cell(*grid, bySequence);
        float s, t;
        if (!cell.locate(x, y, s, t)) return false;
        order = cell.orderAt(s, t);
        color = cell.colorAt(s, t);
        opacity = cell.opacityAt(s, t);
        return true;
    }

    std::shared_ptr<Attrib> attrib = std::make_shared<Attrib>();
    std::unique_ptr<Grid> grid;
    SampleOrder order = 0;
    Color color, opacity;
};

const std::array<Point, 4> kUnit{Point(0, 0, 0), Point(1, 0, 1), Point(1, 1, 3), Point(0, 1, 2)};

}  // namespace

TEST_F(MicroPolygonTest, TheBoundHoldsTheFourCorners)
{
    make({Point(3, 1, 9), Point(5, 2, 7), Point(4, 8, 8), Point(2, 6, 6)});
    EXPECT_EQ(MicroPolygon(*grid).bound(), Bound(2, 5, 1, 8, 6, 9));
}

TEST_F(MicroPolygonTest, FacingIsMinusTwiceTheSignedArea)
{
    make({Point(0, 0, 0), Point(2, 0, 0), Point(2, 3, 0), Point(0, 3, 0)});
    EXPECT_EQ(MicroPolygon(*grid).znormal(), -12.0);
    make({Point(0, 3, 0), Point(2, 3, 0), Point(2, 0, 0), Point(0, 0, 0)});
    EXPECT_EQ(MicroPolygon(*grid).znormal(), 12.0);
}

TEST_F(MicroPolygonTest, AFlippedGridFacesTheOtherWay)
{
    make({Point(0, 0, 0), Point(2, 0, 0), Point(2, 3, 0), Point(0, 3, 0)}, true);
    EXPECT_EQ(MicroPolygon(*grid).znormal(), 12.0);
}

TEST_F(MicroPolygonTest, DepthIsInterpolatedOverTheCell)
{
    make(kUnit);
    ASSERT_TRUE(sample(0.5f, 0.25f));
    EXPECT_NEAR(order, 1, 1e-6);  // s + 2 t
    ASSERT_TRUE(sample(0.25f, 0.75f));
    EXPECT_NEAR(order, 1.75, 1e-6);
}

TEST_F(MicroPolygonTest, BySequenceTheLaterIsInFront)
{
    make(kUnit);
    ASSERT_TRUE(sample(0.5f, 0.25f, true));
    EXPECT_EQ(order, -42);
}

TEST_F(MicroPolygonTest, FlatShadingTakesTheFirstCornerEverywhere)
{
    attrib->interpolation = kConstantShading;
    make(kUnit);
    ASSERT_TRUE(sample(0.9f, 0.9f));
    EXPECT_EQ(color, Color(1, 0, 0));
    EXPECT_EQ(opacity, Color(1, 1, 1));
}

TEST_F(MicroPolygonTest, SmoothShadingInterpolates)
{
    attrib->interpolation = kSmoothShading;
    make(kUnit);
    ASSERT_TRUE(sample(0.5f, 0.5f));
    EXPECT_EQ(color, Color(0.5f, 0.5f, 0.5f));
    EXPECT_EQ(opacity, Color(0.25f, 0.25f, 0.25f));
    ASSERT_TRUE(sample(1, 0));
    EXPECT_EQ(color, Color(0, 1, 0));
}

TEST_F(MicroPolygonTest, CoverageIsExactAndIncludesTheEdges)
{
    make(kUnit);
    for (const float x : {0.0f, 0.5f, 1.0f}) {
        for (const float y : {0.0f, 0.5f, 1.0f}) EXPECT_TRUE(sample(x, y)) << x << ' ' << y;
    }
    EXPECT_FALSE(sample(-0.001f, 0.5f));
    EXPECT_FALSE(sample(1.001f, 0.5f));
    EXPECT_FALSE(sample(0.5f, -0.001f));
    EXPECT_FALSE(sample(0.5f, 1.001f));
}

TEST_F(MicroPolygonTest, ASharedEdgeBelongsToBothCells)
{
    Grid two(2, 1, attrib, Transform(), 1, false, false, ArgList());
    const float x[2][3] = {{0, 1.1f, 2.3f}, {0.2f, 1.7f, 2.9f}},
                y[2][3] = {{0, 0.1f, 0}, {1, 2, 1}};
    for (int j = 0; j < 2; ++j) {
        for (int i = 0; i < 3; ++i) two.vertex(i, j).P = Point(x[j][i], y[j][i], 0);
    }
    zebtest::projectAsTheyAre(two);
    // The end points of the edge between them.
    for (const auto& [px, py] : {std::pair(1.1f, 0.1f), {1.7f, 2.0f}}) {
        MicroPolygon left(two), right(two);
        right.place(1, 0);
        float s, t;
        EXPECT_TRUE(left.locate(px, py, s, t));
        EXPECT_TRUE(right.locate(px, py, s, t));
    }
}

TEST_F(MicroPolygonTest, ADegenerateCellIsNeverHit)
{
    make({Point(1, 1, 0), Point(1, 1, 0), Point(1, 1, 0), Point(1, 1, 0)});
    EXPECT_FALSE(sample(1, 1));
    make({Point(0, 0, 0), Point(2, 0, 0), Point(2, 0, 0), Point(0, 0, 0)});
    EXPECT_FALSE(sample(1, 0));
}

TEST_F(MicroPolygonTest, ATrapezoidIsInvertedByTheQuadratic)
{
    make({Point(0, 0, 0), Point(4, 0, 4), Point(3, 2, 4), Point(1, 2, 0)});
    // Half way up the cell runs from 0.5 to 3.5; a quarter along is 1.25.
    ASSERT_TRUE(sample(1.25f, 1));
    EXPECT_NEAR(order, 1, 1e-6);
    EXPECT_FALSE(sample(0.25f, 1));
    EXPECT_FALSE(sample(3.75f, 1));
}

TEST_F(MicroPolygonTest, ABowTieIsHitInBothWings)
{
    make({Point(0, 0, 0), Point(4, 0, 0), Point(0, 2, 0), Point(4, 2, 0)});
    EXPECT_TRUE(sample(2, 0.25f));
    EXPECT_TRUE(sample(2, 1.75f));
    EXPECT_FALSE(sample(0.25f, 1));
    EXPECT_FALSE(sample(3.75f, 1));
}

// A dart: beyond its inner corner (1, 1) the cell folds back, and x = y is met twice: where
// s = t and 4 s - 3 s^2 = 1.25, at 1/2 and 5/6. Depth is s.
TEST_F(MicroPolygonTest, WhereACellIsFoldedTheRootWithPlusComesFirst)
{
    make({Point(0, 0, 0), Point(4, 0, 1), Point(1, 1, 1), Point(0, 4, 0)});
    ASSERT_TRUE(sample(1.25f, 1.25f));
    EXPECT_NEAR(order, 5.0 / 6, 1e-6) << "A = 12: the larger";
    // Seen in a mirror.
    make({Point(0, 0, 0), Point(0, 4, 1), Point(1, 1, 1), Point(4, 0, 0)});
    ASSERT_TRUE(sample(1.25f, 1.25f));
    EXPECT_NEAR(order, 0.5, 1e-6) << "A = -12: the smaller";
}

// Short of (1, 1) the first root lies beyond the cell, at more than 1.
TEST_F(MicroPolygonTest, WhereTheFirstRootIsOutsideTheOtherIsTried)
{
    make({Point(0, 0, 0), Point(4, 0, 1), Point(1, 1, 1), Point(0, 4, 0)});
    ASSERT_TRUE(sample(0.8125f, 0.8125f));  // 4 s - 3 s^2 at 1/4, or 13/12
    EXPECT_NEAR(order, 0.25, 1e-6);
}

// So small that s is taken for linear, though it is not: 0.47 instead of 0.5. Along x, where the
// cell is hardly slanted, t would then be in the hundreds. Depth is t.
TEST_F(MicroPolygonTest, WhereXGivesNoTInTheCellYIsTried)
{
    make({Point(0, 0, 0), Point(1e-5f, 0, 0), Point(1.0001e-5f, 3.5e-5f, 1),
          Point(1e-9f, 4e-5f, 1)});
    ASSERT_TRUE(sample(5e-6f, 2e-5f));
    EXPECT_NEAR(order, 2 / (4 - 0.5 * 0.4706), 1e-3);
}
