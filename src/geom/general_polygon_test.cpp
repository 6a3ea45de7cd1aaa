#include "geom/general_polygon.h"

#include <gtest/gtest.h>

#include <vector>

#include "geom/triangle.h"
#include "state/quark.h"
#include "support/outlines.h"
#include "support/reports.h"

using namespace zeb;
using namespace zebtest;

namespace
{

class GeneralPolygonTest : public testing::Test
{
protected:
    GeneralPolygonTest() { zebReset(); }
    ~GeneralPolygonTest() override { zebReset(); }

    static double area(const std::vector<Corners>& loops)
    {
        Areas areas;
        GeneralPolygon p = makePolygon(loops);
        p.split(areas);
        return areas.total();
    }

    Reports reports;
};

Corners reversed(const Corners& loop) { return {loop.rbegin(), loop.rend()}; }

}  // namespace

TEST_F(GeneralPolygonTest, IsAlwaysSplit)
{
    const GeneralPolygon p = makePolygon({kSquare});
    const RenderFrame frame{Option(), Matrix()};
    Dicing dicing{frame};
    EXPECT_FALSE(p.diceable(dicing, 1000));
    EXPECT_EQ(p.type(), 2);
}

TEST_F(GeneralPolygonTest, TheNormalIsTwiceTheAreaOfTheOutline)
{
    EXPECT_EQ(makePolygon({kSquare, hole(1, 1)}).normal(), Point(0, 0, 200));
    EXPECT_EQ(makePolygon({reversed(kSquare)}).normal(), Point(0, 0, -200));
}

TEST_F(GeneralPolygonTest, ConvexMeansNoReflexCorner)
{
    for (const Corners& loop : {kSquare, reversed(kSquare)}) {
        const GeneralPolygon p = makePolygon({loop});
        EXPECT_TRUE(p.convex(p.normal()));
    }
    const GeneralPolygon dart = makePolygon({{{0, 0}, {10, 0}, {2, 2}, {0, 10}}});
    EXPECT_FALSE(dart.convex(dart.normal()));
    const GeneralPolygon straight = makePolygon({{{0, 0}, {5, 0}, {10, 0}, {10, 10}}});
    EXPECT_TRUE(straight.convex(straight.normal()));
}

TEST_F(GeneralPolygonTest, ThreeVerticesMakeATriangle)
{
    GeneralPolygon p = makePolygon({{{0, 0}, {1, 0}, {2, 1}}});
    Pieces pieces;
    p.split(pieces);
    ASSERT_EQ(pieces.list.size(), 1u);
    EXPECT_NE(dynamic_cast<Triangle*>(pieces.list[0].get()), nullptr);
    EXPECT_EQ(pieces.corners(0), (Corners{{0, 0}, {1, 0}, {2, 1}}));
}

TEST_F(GeneralPolygonTest, AConvexOneBecomesAConvexPolygonOfTheSameVertices)
{
    GeneralPolygon p = makePolygon({kSquare});
    Pieces pieces;
    p.split(pieces);
    ASSERT_EQ(pieces.list.size(), 1u);
    EXPECT_EQ(pieces.list[0]->type(), 1);
    EXPECT_EQ(pieces.corners(0), kSquare);
}

TEST_F(GeneralPolygonTest, AConcaveOneIsCutFromItsReflexCornerToTheNearestCandidate)
{
    // The reflex corner is 2; vertex 0 is the only one that is no neighbour.
    GeneralPolygon p = makePolygon({{{0, 0}, {10, 0}, {2, 2}, {0, 10}}});
    Pieces pieces;
    p.split(pieces);
    ASSERT_EQ(pieces.list.size(), 2u);
    EXPECT_EQ(pieces.list[0]->type(), 2);
    EXPECT_EQ(pieces.list[1]->type(), 2);
    EXPECT_EQ(pieces.corners(0), (Corners{{2, 2}, {0, 10}, {0, 0}}));
    EXPECT_EQ(pieces.corners(1), (Corners{{0, 0}, {10, 0}, {2, 2}}));
}

TEST_F(GeneralPolygonTest, TheShortestDiagonalOfAReflexCornerIsTaken)
{
    // An L; its reflex corner (4, 4) is nearer to (0, 3) than to any other candidate.
    GeneralPolygon p = makePolygon({{{0, 0}, {10, 0}, {10, 4}, {4, 4}, {4, 10}, {0, 10}, {0, 3}}});
    Pieces pieces;
    p.split(pieces);
    ASSERT_EQ(pieces.list.size(), 2u);
    EXPECT_EQ(pieces.corners(0), (Corners{{4, 4}, {4, 10}, {0, 10}, {0, 3}}));
    EXPECT_EQ(pieces.corners(1), (Corners{{0, 3}, {0, 0}, {10, 0}, {10, 4}, {4, 4}}));
}

TEST_F(GeneralPolygonTest, ADiagonalThatMeetsAnEdgeCrosses)
{
    // A U: the line between the tips of its arms leaves it and meets no edge inside; the line from
    // one arm's outer foot to the other's tip runs through the notch.
    const GeneralPolygon u =
        makePolygon({{{0, 0}, {10, 0}, {10, 10}, {8, 10}, {8, 2}, {2, 2}, {2, 10}, {0, 10}}});
    EXPECT_TRUE(u.crosses(2, 7, u.normal()));
    EXPECT_FALSE(u.crosses(0, 5, u.normal()));
    EXPECT_FALSE(u.crosses(0, 4, u.normal()));
}

TEST_F(GeneralPolygonTest, AnEdgeOfAHoleIsCrossedToo)
{
    const GeneralPolygon p = makePolygon({kSquare, hole(4, 4, 2)});
    EXPECT_TRUE(p.crosses(0, 2, p.normal()));
    EXPECT_FALSE(p.crosses(0, 4, p.normal()));
    EXPECT_TRUE(p.crosses(0, 6, p.normal()));
}

TEST_F(GeneralPolygonTest, ConcavePiecesCoverTheWhole)
{
    EXPECT_NEAR(area({{{0, 0}, {10, 0}, {2, 2}, {0, 10}}}), 20, 1e-4);
    EXPECT_NEAR(area({{{0, 0}, {10, 0}, {10, 10}, {8, 10}, {8, 2}, {2, 2}, {2, 10}, {0, 10}}}), 52,
                1e-4);
}

TEST_F(GeneralPolygonTest, AHoleIsBridgedAtTheClosestPair)
{
    // Outline vertex 0 and hole vertex 0 are the closest: the bridge runs to and fro.
    GeneralPolygon p = makePolygon({kSquare, hole(2, 2)});
    Pieces pieces;
    p.split(pieces);
    ASSERT_EQ(pieces.list.size(), 1u);
    EXPECT_EQ(pieces.list[0]->type(), 2);
    EXPECT_EQ(
        pieces.corners(0),
        (Corners{
            {0, 0}, {2, 2}, {2, 3}, {3, 3}, {3, 2}, {2, 2}, {0, 0}, {10, 0}, {10, 10}, {0, 10}}));
}

TEST_F(GeneralPolygonTest, ABridgeMayStartAnywhereInTheHole)
{
    // Closest: outline vertex 2 (10, 10) and the hole's vertex 2 (9, 9).
    GeneralPolygon p = makePolygon({kSquare, hole(8, 8)});
    Pieces pieces;
    p.split(pieces);
    ASSERT_EQ(pieces.list.size(), 1u);
    EXPECT_EQ(
        pieces.corners(0),
        (Corners{
            {0, 0}, {10, 0}, {10, 10}, {9, 9}, {9, 8}, {8, 8}, {8, 9}, {9, 9}, {10, 10}, {0, 10}}));
}

TEST_F(GeneralPolygonTest, AHoleGivenInTheOutlinesDirectionIsTakenReversed)
{
    EXPECT_NEAR(area({kSquare, hole(2, 2, 3)}), 91, 1e-4);
    EXPECT_NEAR(area({kSquare, reversed(hole(2, 2, 3))}), 91, 1e-4);
}

TEST_F(GeneralPolygonTest, EveryHoleSurvivesTheBridgeOfAnother)
{
    EXPECT_NEAR(area({kSquare, hole(1, 1), hole(4, 4, 2), hole(8, 7)}), 100 - 1 - 4 - 1, 1e-4);
    EXPECT_NEAR(area({kSquare, hole(7, 7, 2), hole(1, 1, 2)}), 92, 1e-4);
}

TEST_F(GeneralPolygonTest, OneBridgeTakesOneHole)
{
    GeneralPolygon p = makePolygon({kSquare, hole(5, 5), hole(1, 1)});
    Pieces pieces;
    p.split(pieces);
    ASSERT_EQ(pieces.list.size(), 1u);
    // The second hole is nearer; the first one follows the bridged outline.
    const Corners corners = pieces.corners(0);
    ASSERT_EQ(corners.size(), 14u);
    EXPECT_EQ(corners[1], std::pair(1.0f, 1.0f));
    EXPECT_EQ(Corners(corners.begin() + 10, corners.end()), hole(5, 5));
}

TEST_F(GeneralPolygonTest, AMeshSplitsFaceByFace)
{
    const std::vector<float> points{0, 0, 0, 9, 0, 0, 9, 9, 0, 0, 9, 0, 2, 2, 0, 2, 4, 0, 4, 4, 0};
    const unsigned short token = kQPoint;
    void* const value = const_cast<float*>(points.data());
    const long loops[] = {1, 2, 1}, sizes[] = {3, 4, 3, 4};
    const long indices[] = {0, 1, 2, 0, 1, 2, 3, 4, 5, 6, 3, 2, 1, 0};
    GeneralPolygonMesh mesh(3, loops, sizes, indices, 1, &token, &value);
    EXPECT_EQ(mesh.type(), 4);
    Pieces pieces;
    mesh.split(pieces);
    ASSERT_EQ(pieces.list.size(), 3u);
    EXPECT_NE(dynamic_cast<Triangle*>(pieces.list[0].get()), nullptr);
    EXPECT_EQ(pieces.list[1]->type(), 2);
    EXPECT_EQ(pieces.list[2]->type(), 2);
    EXPECT_EQ(pieces.corners(1).size(), 7u);
    EXPECT_EQ(pieces.corners(2), (Corners{{0, 9}, {9, 9}, {9, 0}, {0, 0}}));
}
