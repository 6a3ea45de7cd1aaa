// Where polygons are cut.

#include <gtest/gtest.h>

#include <vector>

#include "geom/convex_polygon.h"
#include "geom/general_polygon.h"
#include "geom/triangle.h"
#include "state/quark.h"
#include "support/outlines.h"
#include "support/reports.h"

using namespace zeb;
using namespace zebtest;

namespace
{

class PolygonSplit : public testing::Test
{
protected:
    PolygonSplit() { zebReset(); }
    ~PolygonSplit() override { zebReset(); }

    static Pieces split(const std::vector<Corners>& loops)
    {
        GeneralPolygon polygon = makePolygon(loops);
        Pieces pieces;
        polygon.split(pieces);
        return pieces;
    }
    // Whether the outline is cut in two between the vertices a and b.
    static void expectCut(const Corners& outline, std::size_t a, std::size_t b)
    {
        const Pieces pieces = split({outline});
        ASSERT_EQ(pieces.list.size(), 2u);
        const auto run = [&](std::size_t from, std::size_t to) {
            Corners part;
            for (std::size_t k = from; k != to; k = (k + 1) % outline.size())
                part.push_back(outline[k]);
            part.push_back(outline[to]);
            return part;
        };
        EXPECT_EQ(pieces.corners(0), run(a, b));
        EXPECT_EQ(pieces.corners(1), run(b, a));
    }
    // The same turned about the line x = y: it runs the other way, so its order is reversed too.
    static Corners mirrored(const Corners& outline)
    {
        Corners result;
        for (auto it = outline.rbegin(); it != outline.rend(); ++it)
            result.emplace_back(it->second, it->first);
        return result;
    }

    Reports reports;
};

}  // namespace

// The diagonal from (0, 0) to (10, 0); one corner leans towards it by an angle whose cosine is
// 4/5, all others are wider.
TEST_F(PolygonSplit, CosMinAngleLooksAtBothEdgesOfBothEnds)
{
    const auto cosine = [](float x1, float y1, float x3, float y3) {
        const float points[12] = {0, 0, 0, x1, y1, 0, 10, 0, 0, x3, y3, 0};
        const unsigned short token = kQPoint;
        void* const value = const_cast<float*>(points);
        return ConvexPolygon(4, 1, &token, &value).cosMinAngle(0, 2);
    };
    EXPECT_NEAR(cosine(8, -6, 5, 8), 0.8, 1e-6) << "at the first end, the edge after it";
    EXPECT_NEAR(cosine(5, -8, 8, 6), 0.8, 1e-6) << "at the first end, the edge before it";
    EXPECT_NEAR(cosine(2, -6, 5, 8), 0.8, 1e-6) << "at the other end, the edge before it";
    EXPECT_NEAR(cosine(5, -8, 2, 6), 0.8, 1e-6) << "at the other end, the edge after it";
}

// Corner 1 lies between edges of length 1, which meet at 180 degrees and a bit.
TEST_F(PolygonSplit, ACornerIsReflexFromACrossProductOf1em10On)
{
    const auto convex = [](float bend) {
        const GeneralPolygon p = makePolygon({{{-1, bend}, {0, 0}, {1, 0}, {0, 5}}});
        return p.convex(p.normal());
    };
    EXPECT_TRUE(convex(0.9e-10f));
    EXPECT_TRUE(convex(1.1e-10f)) << "bends outwards";
    EXPECT_TRUE(convex(-0.9e-10f));
    EXPECT_FALSE(convex(-1.1e-10f));
}

// An L with its reflex corner at (4, 1). Of its vertices (5, 0) is the nearest; it lies on the
// inner side of one of the corner's edges, but not of the other.
TEST_F(PolygonSplit, ACandidateLiesOnTheInnerSideOfEitherEdge)
{
    const Corners l{{0, 0}, {5, 0}, {10, 0}, {10, 1}, {4, 1}, {4, 10}, {0, 10}};
    expectCut(l, 4, 1);
    expectCut(mirrored(l), 2, 5);
}

// From the reflex corner (4, 4), (x, 7) is the nearest vertex, and hardly on the inner side of the
// edge to (4, 6): by a sine of (4 - x) / 3.
TEST_F(PolygonSplit, ACandidateLeavesTheCornerByASineOf001)
{
    const auto outline = [](float x) {
        return Corners{{0, 0}, {10, 0}, {10, 4}, {4, 4}, {4, 6}, {x, 7}, {0, 7}};
    };
    expectCut(outline(4 - 0.0315f), 3, 5);
    expectCut(outline(4 - 0.0285f), 3, 6);
    expectCut(mirrored(outline(4 - 0.0315f)), 3, 1);
    expectCut(mirrored(outline(4 - 0.0285f)), 3, 0);
}

TEST_F(PolygonSplit, OfEquallyLongCutsTheFirstIsTaken)
{
    // (1, 0) and (0, 1) are both 5 away from the reflex corner (4, 4).
    const Corners l{{1, 0}, {10, 0}, {10, 4}, {4, 4}, {4, 10}, {0, 10}, {0, 1}};
    expectCut(l, 3, 0);
    // A T whose reflex corners (6, 4) and (4, 4) see each other.
    expectCut({{0, 0}, {10, 0}, {10, 4}, {6, 4}, {6, 9}, {4, 9}, {4, 4}, {0, 4}}, 3, 6);
}

// A bow tie: each of its two reflex corners, (2, 4) and (8, 4), has an edge between itself and the
// vertices below it, or reaches them from outside.
TEST_F(PolygonSplit, WithoutAUsableCutVertex0IsCutFromTheOneHalfWayRound)
{
    expectCut({{0, 0}, {5, 0}, {10, 0}, {2, 4}, {8, 4}}, 0, 2);
}

TEST_F(PolygonSplit, OfEquallyLongBridgesTheFirstIsTaken)
{
    // Each corner of the square is as far from one of the hole's.
    EXPECT_EQ(
        split({kSquare, hole(4, 4, 2)}).corners(0),
        (Corners{
            {0, 0}, {4, 4}, {4, 6}, {6, 6}, {6, 4}, {4, 4}, {0, 0}, {10, 0}, {10, 10}, {0, 10}}));
    // Two holes, both as far from the first corner: the one given first.
    const Corners low = hole(3, 1, 1), high = hole(1, 3, 1);
    EXPECT_EQ(split({kSquare, low, high}).corners(0)[1], low[0]);
    EXPECT_EQ(split({kSquare, high, low}).corners(0)[1], high[0]);
    // Two vertices of one hole.
    EXPECT_EQ(split({kSquare, {{3, 1}, {1, 3}, {4, 4}}}).corners(0)[1], std::pair(3.0f, 1.0f));
}

TEST_F(PolygonSplit, AFaceOfThreeVerticesIsATriangleOnlyWithoutHoles)
{
    const float points[] = {0, 0, 0, 9, 0, 0, 0, 9, 0, 2, 2, 0, 2, 4, 0, 4, 2, 0};
    const unsigned short token = kQPoint;
    void* const value = const_cast<float*>(points);
    const long loops[] = {2, 1}, sizes[] = {3, 3, 3};
    const long indices[] = {0, 1, 2, 3, 4, 5, 0, 1, 2};
    GeneralPolygonMesh mesh(2, loops, sizes, indices, 1, &token, &value);
    Pieces pieces;
    mesh.split(pieces);
    ASSERT_EQ(pieces.list.size(), 2u);
    EXPECT_EQ(pieces.list[0]->type(), 2);
    EXPECT_EQ(pieces.corners(0).size(), 6u);
    EXPECT_NE(dynamic_cast<Triangle*>(pieces.list[1].get()), nullptr);
    Areas triangles;
    pieces.list[0]->split(triangles);
    EXPECT_NEAR(triangles.total(), 40.5 - 2, 1e-5);
}

TEST_F(PolygonSplit, ThreeVerticesOnALineAreATriangleToo)
{
    const Pieces pieces = split({{{0, 0}, {1, 1}, {3, 3}}});
    ASSERT_EQ(pieces.list.size(), 1u);
    EXPECT_NE(dynamic_cast<Triangle*>(pieces.list[0].get()), nullptr);
}
