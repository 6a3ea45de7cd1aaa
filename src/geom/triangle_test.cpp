#include "geom/triangle.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <vector>

#include "geom/convex_polygon.h"
#include "geom/grid.h"
#include "state/quark.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

struct Pieces : PrimitiveSink {
    void add(std::unique_ptr<Primitive> piece) override { list.push_back(std::move(piece)); }
    const Triangle& triangle(std::size_t i) const
    {
        return dynamic_cast<const Triangle&>(*list.at(i));
    }
    std::vector<std::unique_ptr<Primitive>> list;
};

class TriangleTest : public testing::Test
{
protected:
    TriangleTest()
    {
        zebReset();
        zebShadingRate(1);
    }
    ~TriangleTest() override { zebReset(); }

    Triangle make(std::array<Point, 3> corners)
    {
        float points[9];
        for (std::size_t i = 0; i < 3; ++i) {
            points[3 * i] = corners[i].x;
            points[3 * i + 1] = corners[i].y;
            points[3 * i + 2] = corners[i].z;
        }
        tokens[0] = kQPoint;
        values[0] = points;
        const ConvexPolygon parent(3, count, tokens, values);
        const long indices[3] = {0, 1, 2};
        return Triangle(parent, 0, indices);
    }
    void give(unsigned short token, const float* value)
    {
        tokens[count] = token;
        values[count++] = const_cast<float*>(value);
    }
    struct Answer {
        bool diceable;
        int u, v;
        bool operator==(const Answer&) const = default;
    };
    Answer test(const Triangle& triangle, float maxSize = -1)
    {
        const RenderFrame frame(option, toRaster);
        Dicing dicing{frame};
        const bool ok = triangle.diceable(dicing, maxSize);
        return {ok, dicing.fUSteps, dicing.fVSteps};
    }
    static void expectCorners(const Triangle& t, const Point& a, const Point& b, const Point& c)
    {
        EXPECT_EQ(t.vertex(0), a);
        EXPECT_EQ(t.vertex(1), b);
        EXPECT_EQ(t.vertex(2), c);
    }
    using Steps = std::pair<int, int>;
    static Steps balanced(int u, int v, long limit = 32)
    {
        auto us = static_cast<unsigned short>(u), vs = static_cast<unsigned short>(v);
        balanceSteps(us, vs, limit);
        return {us, vs};
    }

    Option option;
    Matrix toRaster;
    long count = 1;
    unsigned short tokens[4] = {};
    void* values[4] = {};
    zebtest::Reports reports;
};

}  // namespace

TEST_F(TriangleTest, IsParametrizedFromItsFirstCorner)
{
    const Triangle t = make({Point(1, 1, 1), Point(5, 1, 1), Point(1, 9, 3)});
    EXPECT_EQ(t.evalP(0, 0), Pointw(1, 1, 1, 1));
    EXPECT_EQ(t.evalP(1, 0), Pointw(5, 1, 1, 1));
    EXPECT_EQ(t.evalP(0, 1), Pointw(1, 9, 3, 1));
    EXPECT_EQ(t.evalP(0.5f, 0.25f), Pointw(3, 3, 1.5f, 1));
    EXPECT_EQ(t.evaldPdu(0.3f, 0.3f), Pointw(4, 0, 0, 1));
    EXPECT_EQ(t.evaldPdv(0.3f, 0.3f), Pointw(0, 8, 2, 1));
    EXPECT_FALSE(t.rational());
    EXPECT_EQ(t.type(), 0);
}

TEST_F(TriangleTest, SplitsIntoFourTheMiddleOneReversed)
{
    Triangle t = make({Point(0, 0, 0), Point(4, 0, 0), Point(0, 8, 0)});
    Pieces pieces;
    t.split(pieces);
    ASSERT_EQ(pieces.list.size(), 4u);
    expectCorners(pieces.triangle(0), {0, 0, 0}, {2, 0, 0}, {0, 4, 0});
    expectCorners(pieces.triangle(1), {0, 4, 0}, {2, 4, 0}, {0, 8, 0});
    expectCorners(pieces.triangle(2), {2, 0, 0}, {4, 0, 0}, {2, 4, 0});
    expectCorners(pieces.triangle(3), {2, 4, 0}, {0, 4, 0}, {2, 0, 0});
}

TEST_F(TriangleTest, PiecesShareTheSequenceNumber)
{
    Triangle t = make({Point(0, 0, 0), Point(4, 0, 0), Point(0, 8, 0)});
    const std::uint32_t next = PrimitiveCommon::fCurSeq;
    Pieces pieces;
    t.split(pieces);
    for (const auto& piece : pieces.list) EXPECT_EQ(piece->common().fSeq, t.common().fSeq);
    EXPECT_EQ(PrimitiveCommon::fCurSeq, next);
}

TEST_F(TriangleTest, PiecesTakeVaryingVariablesAtTheirCorners)
{
    const unsigned short own = zebDeclare("triangle test: heat", 0xD02, 0xE01);
    const float heat[3] = {0, 4, 8};
    give(own, heat);
    Triangle t = make({Point(0, 0, 0), Point(4, 0, 0), Point(0, 8, 0)});
    Pieces pieces;
    t.split(pieces);
    ASSERT_EQ(pieces.list.size(), 4u);
    const ArgAssoc* middle = pieces.triangle(3).args().find(own);
    ASSERT_NE(middle, nullptr);
    ASSERT_EQ(middle->count(), 3);
    EXPECT_EQ(middle->words()[0], 6);
    EXPECT_EQ(middle->words()[1], 4);
    EXPECT_EQ(middle->words()[2], 2);
}

TEST_F(TriangleTest, APinpointGetsAGridOfOne)
{
    EXPECT_EQ(test(make({Point(0, 0, 1), Point(0.1f, 0, 1), Point(0, 0.1f, 1)})),
              (Answer{true, 1, 1}));
}

TEST_F(TriangleTest, ASideOfMoreThan32PixelsSplits)
{
    EXPECT_EQ(test(make({Point(0, 0, 1), Point(32, 0, 1), Point(0, 32, 1)})),
              (Answer{true, 32, 32}));
    EXPECT_FALSE(test(make({Point(0, 0, 1), Point(32.01f, 0, 1), Point(0, 1, 1)})).diceable);
    EXPECT_FALSE(test(make({Point(0, 0, 1), Point(1, 0, 1), Point(0, 32.01f, 1)})).diceable);
}

TEST_F(TriangleTest, ALimitCanBeGiven)
{
    const Triangle t = make({Point(0, 0, 1), Point(8, 0, 1), Point(0, 8, 1)});
    EXPECT_TRUE(test(t, 8).diceable);
    EXPECT_FALSE(test(t, 7.9f).diceable);
}

TEST_F(TriangleTest, LengthsAreMeasuredOnTheScreen)
{
    EXPECT_EQ(test(make({Point(0, 0, 1), Point(2.5f, 0, 500), Point(0, 2.5f, -500)})),
              (Answer{true, 3, 3}));
}

TEST_F(TriangleTest, StepsComeToAPowerOfTwoRatio)
{
    EXPECT_EQ(balanced(5, 5), Steps(5, 5));
    EXPECT_EQ(balanced(8, 7), Steps(8, 8));   // nearer to 1 : 1
    EXPECT_EQ(balanced(8, 5), Steps(10, 5));  // nearer to 2 : 1
    EXPECT_EQ(balanced(9, 4), Steps(8, 4));
    EXPECT_EQ(balanced(8, 2), Steps(8, 2));
    EXPECT_EQ(balanced(7, 2), Steps(8, 2));
    EXPECT_EQ(balanced(8, 3), Steps(12, 3));
    EXPECT_EQ(balanced(32, 1), Steps(32, 1));
}

TEST_F(TriangleTest, StepsAreBalancedTheSameWayAlongV)
{
    for (int u = 1; u <= 32; ++u) {
        for (int v = 1; v <= 32; ++v) {
            const Steps a = balanced(u, v), b = balanced(v, u);
            EXPECT_EQ(a, Steps(b.second, b.first)) << u << ' ' << v;
        }
    }
}

TEST_F(TriangleTest, BalancedStepsDivideEachOtherByAPowerOfTwo)
{
    for (int u = 1; u <= 32; ++u) {
        for (int v = 1; v <= 32; ++v) {
            const Steps s = balanced(u, v);
            const int high = std::max(s.first, s.second), low = std::min(s.first, s.second);
            ASSERT_GT(low, 0);
            EXPECT_EQ(high % low, 0) << u << ' ' << v;
            EXPECT_EQ((high / low) & (high / low - 1), 0) << u << ' ' << v;
        }
    }
}

TEST_F(TriangleTest, TheTuningLimitsTheRatioTried) { EXPECT_EQ(balanced(32, 1, 4), Steps(8, 1)); }

TEST_F(TriangleTest, BalancingBelongsToTheDicingTest)
{
    EXPECT_EQ(test(make({Point(0, 0, 1), Point(7.5f, 0, 1), Point(0, 4.5f, 1)})),
              (Answer{true, 10, 5}));
}

TEST_F(TriangleTest, AnUnevenOneSplitsAbove16Micropolygons)
{
    toRaster.m[2][3] = 1;
    toRaster.m[3][3] = 0;  // w = z: the far corner shrinks
    const std::array<Point, 3> corners{Point(0, 0, 1), Point(10, 0, 1), Point(0, 200, 10)};
    EXPECT_FALSE(test(make(corners)).diceable);
    zebShadingRate(400);
    EXPECT_TRUE(test(make(corners)).diceable);
}

TEST_F(TriangleTest, DicesIntoATriangularGrid)
{
    zebTranslate(0, 0, 3);
    const Triangle t = make({Point(0, 0, 0), Point(4, 0, 0), Point(0, 8, 0)});
    const RenderFrame frame(option, toRaster);
    const auto grid = t.dice(Dicing{frame, 4, 4});
    EXPECT_TRUE(grid->fTriangular);
    EXPECT_EQ(grid->fUSize, 4);
    EXPECT_EQ(grid->fVSize, 4);
    EXPECT_EQ(grid->fSeq, t.common().fSeq);
    EXPECT_EQ(grid->vertex(1, 2).P, Point(1, 4, 3));
    EXPECT_EQ(grid->vertex(1, 2).dPdu, Point(4, 0, 0));
    EXPECT_EQ(grid->vertex(1, 2).dPdv, Point(0, 8, 0));
    EXPECT_EQ(grid->vertex(4, 0).P, Point(4, 0, 3));
    EXPECT_EQ(grid->vertex(0, 4).P, Point(0, 8, 3));
}

TEST_F(TriangleTest, VerticesBeyondTheHypotenuseArePulledOntoItInV)
{
    const Triangle t = make({Point(0, 0, 0), Point(4, 0, 0), Point(0, 8, 0)});
    const RenderFrame frame(option, toRaster);
    const auto grid = t.dice(Dicing{frame, 4, 2});
    EXPECT_EQ(grid->vertex(4, 1).P, Point(4, 0, 0));  // u = 1, v = 1 - u
    EXPECT_EQ(grid->vertex(3, 1).P, Point(3, 2, 0));
    EXPECT_EQ(grid->vertex(2, 1).P, Point(2, 4, 0));
}

TEST_F(TriangleTest, VerticesBeyondTheHypotenuseArePulledOntoItInUWhereVIsFiner)
{
    const Triangle t = make({Point(0, 0, 0), Point(4, 0, 0), Point(0, 8, 0)});
    const RenderFrame frame(option, toRaster);
    const auto grid = t.dice(Dicing{frame, 2, 4});
    EXPECT_EQ(grid->vertex(2, 1).P, Point(3, 2, 0));  // v = 1/4, u = 1 - v
    EXPECT_EQ(grid->vertex(1, 3).P, Point(1, 6, 0));
}

TEST_F(TriangleTest, GivenNormalsPointTheWayTheGeometrysDo)
{
    const float up[9] = {0, 0, 1, 0, 0, 1, 0, 0, 1};
    give(kQNormal, up);
    const RenderFrame frame(option, toRaster);
    for (const bool mirrored : {false, true}) {
        for (const bool inside : {false, true}) {
            zebReset();
            zebRotate(30, 1, 2, 3);
            if (mirrored) zebScale(1, -2, 1);
            if (inside) zebOrientation(ZEB_INSIDE);
            const auto grid =
                make({Point(0, 0, 0), Point(1, 0, 0), Point(0, 1, 0)}).dice(Dicing{frame});
            const ArgAssoc* normal = grid->fVertexArgs.find(kQNormal);
            ASSERT_NE(normal, nullptr);
            const Vertex& v = grid->vertex(0, 0);
            Point Ng = v.dPdu ^ v.dPdv;
            if (grid->fFlip) Ng = -Ng;
            EXPECT_NEAR(dot(normalize(normal->point(0)), normalize(Ng)), 1, 1e-5)
                << mirrored << inside;
        }
    }
}
