// Long and thin pieces are cut in two, across the direction in which the screen shows them longer.

#include <gtest/gtest.h>

#include "geom/convex_polygon.h"
#include "geom/patch.h"
#include "geom/quadric.h"
#include "geom/triangle.h"
#include "state/quark.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

struct Pieces : PrimitiveSink {
    void add(std::unique_ptr<Primitive> piece) override { list.push_back(std::move(piece)); }
    const Primitive& operator[](std::size_t i) const { return *list.at(i); }
    std::vector<std::unique_ptr<Primitive>> list;
};

class SplitAcross : public testing::Test
{
protected:
    SplitAcross() { zebReset(); }
    ~SplitAcross() override { zebReset(); }

    // A raster x is as wide as a unit of space, a y as many as this.
    static Pieces halves(Primitive& surface, float yScale = 1)
    {
        Matrix toRaster;
        toRaster.m[1][1] = yScale;
        const RenderFrame frame(Option(), toRaster);
        Pieces pieces;
        surface.splitAcross(pieces, frame);
        EXPECT_EQ(pieces.list.size(), 2u);
        return pieces;
    }
    static void expectHalvesAlongU(const Primitive& surface, const Pieces& pieces)
    {
        for (const float u : {0.0f, 0.25f, 1.0f}) {
            for (const float v : {0.0f, 0.25f, 1.0f}) {
                EXPECT_EQ(pieces[0].evalP(u, v), surface.evalP(0.5f * u, v));
                EXPECT_EQ(pieces[1].evalP(u, v), surface.evalP(0.5f + 0.5f * u, v));
            }
        }
        EXPECT_NE(pieces[0].edges().umax, 0u);
        EXPECT_EQ(pieces[0].edges().umax, pieces[1].edges().umin);
        EXPECT_EQ(pieces[0].edges().umin, surface.edges().umin);
        EXPECT_EQ(pieces[1].edges().umax, surface.edges().umax);
    }
    static void expectHalvesAlongV(const Primitive& surface, const Pieces& pieces)
    {
        for (const float u : {0.0f, 0.25f, 1.0f}) {
            for (const float v : {0.0f, 0.25f, 1.0f}) {
                EXPECT_EQ(pieces[0].evalP(u, v), surface.evalP(u, 0.5f * v));
                EXPECT_EQ(pieces[1].evalP(u, v), surface.evalP(u, 0.5f + 0.5f * v));
            }
        }
        EXPECT_NE(pieces[0].edges().vmax, 0u);
        EXPECT_EQ(pieces[0].edges().vmax, pieces[1].edges().vmin);
        EXPECT_EQ(pieces[0].edges().vmin, surface.edges().vmin);
        EXPECT_EQ(pieces[1].edges().vmax, surface.edges().vmax);
    }
    // A triangle among others on all sides.
    static Triangle triangle(const std::vector<Point>& p)
    {
        const unsigned short token = kQPoint;
        void* const value = const_cast<Point*>(p.data());
        const ConvexPolygon parent(3, 1, &token, &value);
        const long indices[3] = {0, 1, 2};
        const Triangle whole(parent, 0, indices);
        return {whole, 0, {0, 0, 1, 0, 0, 1}, {.umin = 11, .umax = 13, .vmin = 15}};
    }
    struct Expected {
        Point a, b, c;
        std::uint32_t umin, umax, vmin;  // 0 for the line between the halves
    };
    static void expectTriangle(const Primitive& piece, const Expected& e, std::uint32_t between)
    {
        const auto& t = dynamic_cast<const Triangle&>(piece);
        EXPECT_EQ(t.vertex(0), e.a);
        EXPECT_EQ(t.vertex(1), e.b);
        EXPECT_EQ(t.vertex(2), e.c);
        EXPECT_EQ(t.edges().umin, e.umin ? e.umin : between);
        EXPECT_EQ(t.edges().umax, e.umax ? e.umax : between);
        EXPECT_EQ(t.edges().vmin, e.vmin ? e.vmin : between);
    }

    zebtest::Reports reports;
};

// The same patch, 3 wide and 2 high: what counts is what the screen shows.
TEST_F(SplitAcross, APatchIsHalvedWhereItIsLonger)
{
    const std::vector<Point> points{{0, 0, 1}, {3, 0, 1}, {0, 2, 1}, {3, 2, 1}};
    const unsigned short token = kQPoint;
    void* const value = const_cast<Point*>(points.data());
    BilinearPatch patch(1, &token, &value);
    expectHalvesAlongU(patch, halves(patch));
    expectHalvesAlongV(patch, halves(patch, 2));
}

// Round its axis, which the screen shows as y, and along it.
TEST_F(SplitAcross, AQuadricIsHalvedWhereItIsLonger)
{
    zebRotate(90, 1, 0, 0);
    Cylinder cylinder(CylinderCurve(1, 0, 3), 180, 0, nullptr, nullptr);
    // Seen from aside half a circle is at most 2 long, its height 3.
    expectHalvesAlongV(cylinder, halves(cylinder));
    expectHalvesAlongU(cylinder, halves(cylinder, 0.5f));
}

TEST_F(SplitAcross, ATriangleIsCutThroughItsLongestSide)
{
    const Point a(0, 0, 1), b(8, 0, 1), c(2, 2, 1);
    const auto cut = [](Triangle t) { return halves(t); };
    {
        const Pieces p = cut(triangle({a, b, c}));
        const Point m(4, 0, 1);
        const std::uint32_t between = p[0].edges().umax;
        EXPECT_NE(between, 0u);
        expectTriangle(p[0], {a, m, c, 11, 0, 15}, between);
        expectTriangle(p[1], {m, b, c, 0, 13, 15}, between);
    }
    {
        const Pieces p = cut(triangle({a, c, b}));
        const Point m(4, 0, 1);
        const std::uint32_t between = p[0].edges().umax;
        EXPECT_NE(between, 0u);
        expectTriangle(p[0], {a, c, m, 11, 0, 15}, between);
        expectTriangle(p[1], {m, c, b, 11, 13, 0}, between);
    }
    {
        const Pieces p = cut(triangle({c, a, b}));
        const Point m(4, 0, 1);
        const std::uint32_t between = p[0].edges().umin;
        EXPECT_NE(between, 0u);
        expectTriangle(p[0], {c, a, m, 0, 13, 15}, between);
        expectTriangle(p[1], {c, m, b, 11, 13, 0}, between);
    }
}

}  // namespace
