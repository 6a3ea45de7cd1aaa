#include "geom/patch.h"

#include <gtest/gtest.h>

#include <functional>

#include "geom/grid.h"
#include "state/quark.h"
#include "state/state.h"
#include "support/bases.h"
#include "support/reports.h"
#include "support/sampling.h"

using namespace zeb;
using namespace zebtest;

namespace
{

Exact bicubic(const Point* p, Basis ubasis, Basis vbasis, double u, double v)
{
    const Weights a = ubasis(u), b = vbasis(v);
    Exact sum;
    for (std::size_t j = 0; j < 4; ++j) {
        for (std::size_t i = 0; i < 4; ++i) {
            const double w = a[i] * b[j];
            sum.x += w * p[j * 4 + i].x;
            sum.y += w * p[j * 4 + i].y;
            sum.z += w * p[j * 4 + i].z;
        }
    }
    return sum;
}

// Sixteen points over a square of the plane z, evenly.
std::vector<Point> flatPoints(float x, float side, float z)
{
    std::vector<Point> points;
    for (int i = 0; i < 16; ++i) {
        points.emplace_back(x + side * static_cast<float>(i % 4) / 3,
                            side * static_cast<float>(i / 4) / 3, z);
    }
    return points;
}

template <class Surface>
std::unique_ptr<Surface> make(const std::vector<Point>& points)
{
    const unsigned short token = kQPoint;
    void* const value = const_cast<Point*>(points.data());
    return std::make_unique<Surface>(1, &token, &value);
}

class PatchTest : public testing::Test
{
protected:
    PatchTest()
    {
        zebReset();
        zebShadingRate(1);
    }
    ~PatchTest() override { zebReset(); }

    static std::unique_ptr<Grid> dice(const Primitive& patch, unsigned short u, unsigned short v)
    {
        const RenderFrame frame{Option(), Matrix()};
        return patch.dice(Dicing{frame, u, v});
    }

    zebtest::Reports reports;
};

}  // namespace

TEST_F(PatchTest, TypesAndKinds)
{
    Numbers n(1);
    const auto bilinear = make<BilinearPatch>(randomPoints(n, 4));
    const auto cubic = make<BicubicPatch>(randomPoints(n, 16));
    for (const Primitive* patch : {static_cast<const Primitive*>(bilinear.get()),
                                   static_cast<const Primitive*>(cubic.get())}) {
        EXPECT_EQ(patch->type(), 5);
        EXPECT_FALSE(patch->rational());
        EXPECT_TRUE(patch->canSplit());
        EXPECT_EQ(patch->evalP(0.3f, 0.8f).w, 1);
    }
}

TEST_F(PatchTest, ABilinearPatchInterpolatesItsCorners)
{
    Numbers n(2);
    for (int k = 0; k < 50; ++k) {
        const auto p = randomPoints(n, 4);
        const auto patch = make<BilinearPatch>(p);
        EXPECT_EQ(patch->evalP(0, 0), Pointw(p[0]));
        EXPECT_EQ(patch->evalP(1, 0), Pointw(p[1]));
        EXPECT_EQ(patch->evalP(0, 1), Pointw(p[2]));
        EXPECT_EQ(patch->evalP(1, 1), Pointw(p[3]));
        for (int i = 0; i < 20; ++i) {
            const float u = n.unit(), v = n.unit();
            const double a = (1 - double{u}) * (1 - v), b = u * (1 - double{v});
            const double c = (1 - double{u}) * v, d = double{u} * v;
            const Exact e = {a * p[0].x + b * p[1].x + c * p[2].x + d * p[3].x,
                             a * p[0].y + b * p[1].y + c * p[2].y + d * p[3].y,
                             a * p[0].z + b * p[1].z + c * p[2].z + d * p[3].z, 1};
            EXPECT_LE(apart(exact(patch->evalP(u, v)), e), 2e-6);
            expectDerivatives(*patch, u, v, 1e-3);
        }
    }
}

TEST_F(PatchTest, ABicubicPatchInEveryPairOfBases)
{
    Numbers n(3);
    for (int a = 0; a < 6; ++a) {
        for (int b = 0; b < 6; ++b) {
            SCOPED_TRACE(std::to_string(a) + ", " + std::to_string(b));
            setBasis(a, ZEB_APPLY_U);
            setBasis(b, ZEB_APPLY_V);
            const auto p = randomPoints(n, 16);
            const auto patch = make<BicubicPatch>(p);
            for (int i = 0; i < 60; ++i) {
                const float u = i ? n.unit() : 0, v = i > 1 ? n.unit() : 1;
                EXPECT_LE(apart(exact(patch->evalP(u, v)),
                                bicubic(p.data(), gBases[a], gBases[b], double{u}, double{v})),
                          2e-5)
                    << at(u, v);
            }
            for (int i = 0; i < 10; ++i) {
                expectDerivatives(*patch, n.uniform(0.1f, 0.9f), n.uniform(0.1f, 0.9f), 5e-3);
            }
        }
    }
}

TEST_F(PatchTest, BasesAreThoseInForceWhenThePatchIsMade)
{
    Numbers n(4);
    setBasis(1, ZEB_APPLY_BOTH);
    const auto p = randomPoints(n, 16);
    const auto patch = make<BicubicPatch>(p);
    setBasis(0, ZEB_APPLY_BOTH);
    const auto other = make<BicubicPatch>(p);
    for (int i = 0; i < 10; ++i) {  // in turns
        const float u = n.unit(), v = n.unit();
        EXPECT_LE(apart(exact(patch->evalP(u, v)), bicubic(p.data(), bspline, bspline, u, v)),
                  1e-5);
        EXPECT_LE(apart(exact(other->evalP(u, v)), bicubic(p.data(), bezier, bezier, u, v)), 1e-5);
    }
}

TEST_F(PatchTest, HeightsStandOnTheUnitSquare)
{
    const unsigned short token = kQHeight;
    float heights[16];
    for (int i = 0; i < 16; ++i) heights[i] = static_cast<float>(i * i);
    void* const value = heights;
    ASSERT_TRUE(BilinearPatch::verify(1, &token, &value));
    const BilinearPatch bilinear(1, &token, &value);
    EXPECT_EQ(bilinear.evalP(1, 0), Pointw(1, 0, 1, 1));
    EXPECT_EQ(bilinear.evalP(0, 1), Pointw(0, 1, 4, 1));
    EXPECT_EQ(bilinear.evalP(1, 1), Pointw(1, 1, 9, 1));
    ASSERT_TRUE(BicubicPatch::verify(1, &token, &value));
    const BicubicPatch cubic(1, &token, &value);
    EXPECT_EQ(cubic.evalP(0, 0), Pointw(0, 0, 0, 1));
    EXPECT_EQ(cubic.evalP(1, 0), Pointw(1, 0, 9, 1));
    EXPECT_EQ(cubic.evalP(0, 1), Pointw(0, 1, 144, 1));
    EXPECT_EQ(cubic.evalP(1, 1), Pointw(1, 1, 225, 1));
    // Control points stand at thirds, so a Bezier patch is even.
    EXPECT_LE(std::fabs(cubic.evalP(0.3f, 0.6f).x - 0.3f), 1e-6f);
    EXPECT_LE(std::fabs(cubic.evalP(0.3f, 0.6f).y - 0.6f), 1e-6f);
    EXPECT_TRUE(reports.empty());
}

TEST_F(PatchTest, ExactlyOneTokenGivesPositions)
{
    Numbers n(5);
    const auto p = randomPoints(n, 16);
    const float heights[16] = {};
    const unsigned short tokens[] = {kQPoint, kQHeight, kQPoint};
    void* const values[] = {const_cast<Point*>(p.data()), const_cast<float*>(heights),
                            const_cast<Point*>(p.data())};
    for (const auto verify : {&BilinearPatch::verify, &BicubicPatch::verify}) {
        reports.clear();
        EXPECT_TRUE(verify(1, tokens, values));
        EXPECT_TRUE(verify(1, tokens + 1, values + 1));
        EXPECT_TRUE(reports.empty());
        EXPECT_FALSE(verify(0, nullptr, nullptr));
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports.last(), (zebtest::Report{13, 2820, "required argument missing"}));
        for (const long twice : {2, 3}) {
            reports.clear();
            EXPECT_FALSE(verify(twice, tokens, values));
            ASSERT_EQ(reports.size(), 1u);
            EXPECT_EQ(reports.last(), (zebtest::Report{11, 2820,
                                                       "required argument specified " +
                                                           std::to_string(twice) + " times"}));
        }
    }
}

TEST_F(PatchTest, ABilinearBoundHoldsThePatch)
{
    Numbers n(6);
    for (int k = 0; k < 100; ++k) {
        zebLoadIdentity();
        if (k % 2) applyRandomTransformation(n);
        expectBoundHolds(*make<BilinearPatch>(randomPoints(n, 4)), 16);
    }
}

TEST_F(PatchTest, ABicubicBoundHoldsThePatchInEveryBasis)
{
    Numbers n(7);
    for (int k = 0; k < 120; ++k) {
        zebLoadIdentity();
        if (k % 2) applyRandomTransformation(n);
        setBasis(k % 6, ZEB_APPLY_U);
        setBasis(k / 6 % 6, ZEB_APPLY_V);
        const auto patch = make<BicubicPatch>(randomPoints(n, 16));
        expectBoundHolds(*patch, 40);
        Pieces pieces = split(*patch);
        for (int i = 0; i < 4; ++i) expectBoundHolds(*pieces.list[static_cast<std::size_t>(i)], 12);
    }
}

// A spike so narrow that samples miss it.
TEST_F(PatchTest, ABicubicBoundHoldsWhatSamplesMiss)
{
    Numbers n(8);
    for (int k = 0; k < 50; ++k) {
        auto p = flatPoints(0, 1, 0);
        p[static_cast<std::size_t>(n.integer(0, 15))].z = 1e4f;
        const auto patch = make<BicubicPatch>(p);
        expectBoundHolds(*patch, 64);
        const Boundw bound = patch->bound(), hull = patch->hull();
        EXPECT_GE(hull.zmin, bound.zmin);
        EXPECT_LE(hull.zmax, bound.zmax);
    }
}

TEST_F(PatchTest, TheHullLiesInTheBoundAndHoldsThePatch)
{
    Numbers n(9);
    for (int k = 0; k < 60; ++k) {
        zebLoadIdentity();
        applyRandomTransformation(n);
        setBasis(k % 6, ZEB_APPLY_BOTH);
        const auto patch = make<BicubicPatch>(randomPoints(n, 16));
        const Boundw bound = patch->bound(), hull = patch->hull();
        EXPECT_TRUE(hull.xmin >= bound.xmin && hull.xmax <= bound.xmax);
        EXPECT_TRUE(hull.ymin >= bound.ymin && hull.ymax <= bound.ymax);
        EXPECT_TRUE(hull.zmin >= bound.zmin && hull.zmax <= bound.zmax);
        for (int i = 0; i < 200; ++i) {
            const Exact p = exact(patch->evalP(n.unit(), n.unit())) * patch->matrix();
            EXPECT_LE(outside(hull, p), 1e-3);
        }
    }
}

TEST_F(PatchTest, ABicubicBoundIsPadded)
{
    // At least a tenth of a unit on each side, a tenth of the range otherwise.
    for (const float z : {0.0f, 5.0f, -70.0f}) {
        const Boundw b = make<BicubicPatch>(flatPoints(0, 20, z))->bound();
        EXPECT_NEAR(b.zmin, z - 0.1f, 1e-5);
        EXPECT_NEAR(b.zmax, z + 0.1f, 1e-5);
        EXPECT_NEAR(b.xmin, -2, 1e-5);
        EXPECT_NEAR(b.xmax, 22, 1e-5);
        EXPECT_NEAR(b.ymin, -2, 1e-5);
        EXPECT_NEAR(b.ymax, 22, 1e-5);
        EXPECT_NEAR(b.wmin, 0.9f, 1e-5);
        EXPECT_NEAR(b.wmax, 1.1f, 1e-5);
    }
    const Boundw tiny = make<BicubicPatch>(flatPoints(3, 0.01f, 0))->bound();
    EXPECT_NEAR(tiny.xmin, 2.9f, 1e-5);
    EXPECT_NEAR(tiny.xmax, 3.11f, 1e-5);
}

TEST_F(PatchTest, TheBoundAttributeClips)
{
    const float box[6] = {-1, 3, 5, 8, -50, 50};
    zebTranslate(100, 0, 0);
    zebBound(box);
    const auto cubic = make<BicubicPatch>(flatPoints(0, 20, 0));
    const auto bilinear =
        make<BilinearPatch>({Point(0, 0, 0), Point(20, 0, 0), Point(0, 20, 0), Point(20, 20, 0)});
    const Boundw a = cubic->bound(), b = bilinear->bound();
    EXPECT_EQ(a.xmin, 99);
    EXPECT_EQ(b.xmin, 100);
    for (const Boundw& c : {a, b}) {
        EXPECT_EQ(c.xmax, 103);
        EXPECT_EQ(c.ymin, 5);
        EXPECT_EQ(c.ymax, 8);
    }
}

TEST_F(PatchTest, BoundPointAddsAPointInCameraSpace)
{
    zebTranslate(1, 2, 3);
    const auto patch = make<BicubicPatch>(flatPoints(0, 3, 0));
    Boundw box = Boundw::empty();
    patch->boundPoint(box, 1, 0);
    EXPECT_EQ(box.xmin, 4);
    EXPECT_EQ(box.xmax, 4);
    patch->boundPoint(box, 0, 1);
    EXPECT_EQ(static_cast<const Bound&>(box), Bound(1, 4, 2, 5, 3, 3));
    EXPECT_EQ(box.wmin, 1);
    EXPECT_EQ(box.wmax, 1);
}

TEST_F(PatchTest, SplitIntoFourQuarters)
{
    Numbers n(10);
    for (int k = 0; k < 36; ++k) {
        setBasis(k % 6, ZEB_APPLY_U);
        setBasis(k / 6, ZEB_APPLY_V);
        expectQuarters(*make<BilinearPatch>(randomPoints(n, 4)), 3e-6);
        const auto patch = make<BicubicPatch>(randomPoints(n, 16));
        expectQuarters(*patch, 3e-5);
        Pieces pieces = split(*patch);
        for (int depth = 0; depth < 4; ++depth) {
            Primitive& piece = pieces[static_cast<std::size_t>(n.integer(0, 3))];
            expectQuarters(piece, 3e-5);
            pieces = split(piece);
        }
    }
}

TEST_F(PatchTest, DerivativesOfAPieceAreScaled)
{
    Numbers n(11);
    const auto patch = make<BicubicPatch>(randomPoints(n, 16));
    Pieces pieces = split(*patch);
    const Exact whole = exact(patch->evaldPdu(0.75f, 0.25f) * 0.5f);
    EXPECT_LE(apart3(exact(pieces[1].evaldPdu(0.5f, 0.5f)), whole), 1e-5);
    const Exact wholeV = exact(patch->evaldPdv(0.75f, 0.25f) * 0.5f);
    EXPECT_LE(apart3(exact(pieces[1].evaldPdv(0.5f, 0.5f)), wholeV), 1e-5);
}

TEST_F(PatchTest, PiecesTakeTheirShareOfTheVariables)
{
    Numbers n(12);
    const auto p = randomPoints(n, 16);
    for (const long points : {4L, 16L}) {
        const Variables variables(points);
        const auto tokens = variables.tokens(kQPoint);
        const auto values = variables.values(p.data());
        std::unique_ptr<Primitive> patch;
        if (points == 4) patch = std::make_unique<BilinearPatch>(5, tokens.data(), values.data());
        if (points == 16) patch = std::make_unique<BicubicPatch>(5, tokens.data(), values.data());
        variables.expectRange(*patch, 0, 1, 0, 1);
        EXPECT_EQ(patch->args().find(kQPoint), nullptr);
        Pieces pieces = split(*patch);
        variables.expectRange(pieces[0], 0, 0.5f, 0, 0.5f);
        variables.expectRange(pieces[1], 0.5f, 1, 0, 0.5f);
        variables.expectRange(pieces[2], 0, 0.5f, 0.5f, 1);
        variables.expectRange(pieces[3], 0.5f, 1, 0.5f, 1);
        Pieces smaller = split(pieces[1]);
        variables.expectRange(smaller[2], 0.5f, 0.75f, 0.25f, 0.5f);
    }
}

TEST_F(PatchTest, ABicubicGridIsTransposed)
{
    Numbers n(13);
    zebTranslate(1, 2, 3);
    zebScale(1, 2, 1);
    const auto p = randomPoints(n, 16);
    const auto patch = make<BicubicPatch>(p);
    const auto grid = dice(*patch, 5, 9);
    EXPECT_EQ(grid->fUSize, 9);
    EXPECT_EQ(grid->fVSize, 5);
    EXPECT_TRUE(grid->fTransposed);
    EXPECT_FALSE(grid->fTriangular);
    EXPECT_FALSE(grid->fFlip);
    EXPECT_EQ(grid->fSeq, patch->common().fSeq);
    for (int j = 0; j <= 5; ++j) {
        for (int i = 0; i <= 9; ++i) {
            const float u = static_cast<float>(j) / 5, v = static_cast<float>(i) / 9;
            const Vertex& vertex = grid->vertex(i, j);
            const Exact e = bicubic(p.data(), bezier, bezier, u, v);
            EXPECT_LE(distance(vertex.P,
                               Point(static_cast<float>(e.x) + 1, static_cast<float>(e.y) * 2 + 2,
                                     static_cast<float>(e.z) + 3)),
                      1e-4f);
            Point du = patch->evaldPdu(u, v), dv = patch->evaldPdv(u, v);
            du.y *= 2;
            dv.y *= 2;
            EXPECT_LE(distance(vertex.dPdu, du), 1e-3f);
            EXPECT_LE(distance(vertex.dPdv, dv), 1e-3f);
        }
    }
    EXPECT_FALSE(dice(*make<BilinearPatch>(randomPoints(n, 4)), 3, 2)->fTransposed);
}

TEST_F(PatchTest, ForwardDifferencesKeepToTheSurfaceOver256Steps)
{
    Numbers n(14);
    for (int k = 0; k < 6; ++k) {
        setBasis(k, ZEB_APPLY_BOTH);
        const auto p = randomPoints(n, 16);
        const auto patch = make<BicubicPatch>(p);
        const auto grid = dice(*patch, 256, 256);
        double worst = 0, worstSlope = 0, most = 0, mostSlope = 0;
        for (int j = 0; j <= 256; ++j) {
            for (int i = 0; i <= 256; ++i) {
                const float u = static_cast<float>(j) / 256, v = static_cast<float>(i) / 256;
                const Vertex& vertex = grid->vertex(i, j);
                const Exact e = bicubic(p.data(), gBases[k], gBases[k], u, v);
                worst = std::max(worst, apart(exact(vertex.P), e));
                most = std::max(most, size(e));
                const Exact du = exact(patch->evaldPdu(u, v)), dv = exact(patch->evaldPdv(u, v));
                worstSlope = std::max(
                    {worstSlope, apart3(exact(vertex.dPdu), du), apart3(exact(vertex.dPdv), dv)});
                mostSlope = std::max({mostSlope, size(du), size(dv)});
            }
        }
        EXPECT_LE(worst, 1e-4 * most) << "basis " << k;
        EXPECT_LE(worstSlope, 1e-4 * mostSlope) << "basis " << k;
    }
}

TEST_F(PatchTest, GridsOfNeighboursMeet)
{
    Numbers n(15);
    const auto patch = make<BicubicPatch>(randomPoints(n, 16));
    Pieces pieces = split(*patch);
    const auto a = dice(pieces[0], 16, 16), b = dice(pieces[1], 16, 16);
    for (int i = 0; i <= 16; ++i) {
        EXPECT_LE(distance(a->vertex(i, 16).P, b->vertex(i, 0).P), 1e-5f) << i;
    }
}

TEST_F(PatchTest, ABicubicPatchIsDicedUpTo256MicropolygonSides)
{
    Option option;
    option.tuning[0] = 1000;
    const RenderFrame frame(option, Matrix());
    const auto diceable = [&](const Primitive& patch, float maxSize = -1) {
        Dicing dicing{frame};
        return patch.diceable(dicing, maxSize) ? int{dicing.fUSteps} : 0;
    };
    EXPECT_EQ(diceable(*make<BicubicPatch>(flatPoints(0, 255.5f, 0))), 256);
    EXPECT_EQ(diceable(*make<BicubicPatch>(flatPoints(0, 256.5f, 0))), 0);
    // What the caller asks for is not looked at.
    EXPECT_EQ(diceable(*make<BicubicPatch>(flatPoints(0, 255.5f, 0)), 10), 256);
    EXPECT_EQ(diceable(*make<BicubicPatch>(flatPoints(0, 256.5f, 0)), 9000), 0);
    zebShadingRate(4);
    EXPECT_EQ(diceable(*make<BicubicPatch>(flatPoints(0, 511, 0))), 256);
    EXPECT_EQ(diceable(*make<BicubicPatch>(flatPoints(0, 513, 0))), 0);
}

TEST_F(PatchTest, BelowTheCapTheTuningDecides)
{
    Option option;
    const RenderFrame frame(option, Matrix());
    Dicing dicing{frame};
    EXPECT_TRUE(make<BicubicPatch>(flatPoints(0, 31.5f, 0))->diceable(dicing));
    EXPECT_EQ(dicing.fUSteps, 32);
    EXPECT_EQ(dicing.fVSteps, 32);
    EXPECT_FALSE(make<BicubicPatch>(flatPoints(0, 32.5f, 0))->diceable(dicing));
}

TEST_F(PatchTest, ACopyIsWholeUnlessQuirksAreKept)
{
    Numbers n(16);
    const auto p = randomPoints(n, 16);
    const auto cubic = make<BicubicPatch>(p);
    const auto bilinear = make<BilinearPatch>(randomPoints(n, 4));
    for (const Primitive* patch : {static_cast<const Primitive*>(cubic.get()),
                                   static_cast<const Primitive*>(bilinear.get())}) {
        const auto whole = patch->copy(false), bare = patch->copy(true);
        EXPECT_EQ(whole->type(), 5);
        EXPECT_EQ(bare->type(), 5);
        for (int i = 0; i < 20; ++i) {
            const float u = n.unit(), v = n.unit();
            EXPECT_EQ(whole->evalP(u, v), patch->evalP(u, v));
            EXPECT_EQ(bare->evalP(u, v), Pointw());
        }
        EXPECT_EQ(split(*bare).size(), 0u);
    }
}
