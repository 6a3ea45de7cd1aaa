#include "geom/nurb.h"

#include <gtest/gtest.h>

#include "geom/grid.h"
#include "state/quark.h"
#include "state/state.h"
#include "support/rational.h"

using namespace zeb;
using namespace zebtest;

namespace
{

class NurbTest : public RationalTest
{
};

double value(const NURB::Basis& basis, long column, double s)
{
    double sum = 0;
    for (long row = 0; row < basis.order(); ++row) sum = sum * s + basis(row, column);
    return sum;
}

}  // namespace

TEST_F(NurbTest, BasisFunctionsAreThoseOfTheRecurrenceOnValues)
{
    Numbers n(1);
    for (long order = 2; order <= 8; ++order) {
        for (int k = 0; k < 40; ++k) {
            const Axis axis = Axis::random(order, order, n);
            const double from = axis.knots[static_cast<std::size_t>(order - 1)];
            const double to = axis.knots[static_cast<std::size_t>(order)];
            const double t0 = k % 2 ? from : from + 0.3 * (to - from);
            const double t1 = k % 4 ? to : to - 0.1 * (to - from);
            const NURB::Basis basis = NURB::newBasis(order, axis.knots.data(), t0, t1);
            ASSERT_EQ(basis.order(), order);
            for (int i = 0; i <= 10; ++i) {
                const double s = i / 10.0;
                double sum = 0;
                for (long column = 0; column < order; ++column) {
                    const double found = value(basis, column, s);
                    sum += found;
                    EXPECT_NEAR(found,
                                deBoor(axis.knots, column, order, order - 1, t0 + s * (t1 - t0)),
                                1e-9)
                        << "order " << order << ", function " << column << " at " << s;
                    EXPECT_GE(found, -1e-9);
                }
                EXPECT_NEAR(sum, 1, 1e-9);
            }
        }
    }
}

TEST_F(NurbTest, RowsHoldPowersDownwards)
{
    const float line[] = {0, 0, 1, 1};
    const NURB::Basis linear = NURB::newBasis(2, line, 0, 1);
    EXPECT_EQ(linear(0, 0), -1);
    EXPECT_EQ(linear(1, 0), 1);
    EXPECT_EQ(linear(0, 1), 1);
    EXPECT_EQ(linear(1, 1), 0);
    const float even[] = {0, 1, 2, 3, 4, 5, 6, 7};
    const NURB::Basis cubic = NURB::newBasis(4, even, 3, 4);
    const double sixths[4][4] = {{-1, 3, -3, 1}, {3, -6, 3, 0}, {-3, 0, 3, 0}, {1, 4, 1, 0}};
    for (long i = 0; i < 4; ++i) {
        for (long j = 0; j < 4; ++j) EXPECT_NEAR(cubic(i, j) * 6, sixths[i][j], 1e-12);
    }
}

TEST_F(NurbTest, CoincidentKnotsContributeNothing)
{
    // A factor over knots closer than 1e-10 is dropped instead of dividing by it.
    const float close[] = {0, 0, 5e-11f, 1, 1, 1};
    const NURB::Basis basis = NURB::newBasis(3, close, 0, 1);
    for (long i = 0; i < 3; ++i) {
        for (long j = 0; j < 3; ++j) EXPECT_TRUE(std::isfinite(basis(i, j)));
    }
    for (int i = 0; i <= 4; ++i) {
        const double s = i / 4.0;
        EXPECT_NEAR(value(basis, 0, s), (1 - s) * (1 - s), 1e-9);
        EXPECT_NEAR(value(basis, 1, s), 2 * s * (1 - s), 1e-9);
        EXPECT_NEAR(value(basis, 2, s), s * s, 1e-9);
    }
}

TEST_F(NurbTest, WeightSumsPointsWithARow)
{
    const float even[] = {0, 1, 2, 3, 4, 5};
    const NURB::Basis basis = NURB::newBasis(3, even, 2, 3);
    const Pointwd p[] = {{1, 2, 3, 4}, {5, -6, 7, 8}, {9, 10, -11, 12}};
    for (long row = 0; row < 3; ++row) {
        const Pointwd sum = NURB::weight(3, basis, row, p);
        EXPECT_DOUBLE_EQ(sum.x, basis(row, 0) * 1 + basis(row, 1) * 5 + basis(row, 2) * 9);
        EXPECT_DOUBLE_EQ(sum.y, basis(row, 0) * 2 + basis(row, 1) * -6 + basis(row, 2) * 10);
        EXPECT_DOUBLE_EQ(sum.z, basis(row, 0) * 3 + basis(row, 1) * 7 + basis(row, 2) * -11);
        EXPECT_DOUBLE_EQ(sum.w, basis(row, 0) * 4 + basis(row, 1) * 8 + basis(row, 2) * 12);
        EXPECT_DOUBLE_EQ(NURB::weight(2, basis, row, p).w, basis(row, 0) * 4 + basis(row, 1) * 8);
    }
}

TEST_F(NurbTest, TypesAndKinds)
{
    const Rational r = even(4, 4, 3, 3, 2);
    const auto mesh = make(r);
    const auto patch = makePatch(r);
    ASSERT_TRUE(mesh && patch);
    EXPECT_EQ(mesh->type(), 7);
    EXPECT_EQ(patch->type(), 5);
    EXPECT_TRUE(mesh->rational());
    EXPECT_TRUE(patch->rational());
    EXPECT_FALSE(mesh->empty());
    const RenderFrame frame{Option(), Matrix()};
    Dicing dicing{frame};
    EXPECT_FALSE(mesh->diceable(dicing, 1e9f));
    EXPECT_TRUE(reports.empty());
}

TEST_F(NurbTest, AMeshIsTheRationalSurface)
{
    each(3, 150, 0.01f, 100, [](const Rational& r, Numbers& n) {
        const auto mesh = make(r);
        ASSERT_NE(mesh, nullptr);
        for (int k = 0; k < 30; ++k) {
            const float u = n.uniform(0.001f, 0.999f), v = n.uniform(0.001f, 0.999f);
            EXPECT_LE(apart(divided(exact(mesh->evalP(u, v))), r.at(u, v)), 1e-5) << at(u, v);
        }
    });
}

TEST_F(NurbTest, LeavesAreTheSpansAndShareTheVariablesEvenly)
{
    each(4, 80, 0.01f, 100, [](const Rational& r, Numbers& n) {
        const Variables variables(r.count());
        const auto mesh = make(r, variables.tokens(kQPointw), variables.values(r.values()));
        ASSERT_NE(mesh, nullptr);
        variables.expectRange(*mesh, 0, 1, 0, 1);
        const auto us = r.u.spans(), vs = r.v.spans();
        const float nu = static_cast<float>(us.size()), nv = static_cast<float>(vs.size());
        const auto patches = leaves(*mesh);
        ASSERT_EQ(patches.size(), us.size() * vs.size());
        std::vector<int> seen(patches.size(), 0);
        for (const auto& patch : patches) {
            EXPECT_EQ(patch->type(), 5);
            EXPECT_NE(dynamic_cast<NuPatch*>(patch.get()), nullptr);
            const auto range = variables.range(*patch);
            const auto i = static_cast<std::size_t>(std::lround(range[0] * nu));
            const auto j = static_cast<std::size_t>(std::lround(range[2] * nv));
            ASSERT_TRUE(i < us.size() && j < vs.size());
            ++seen[j * us.size() + i];
            const float fi = static_cast<float>(i), fj = static_cast<float>(j);
            variables.expectRange(*patch, fi / nu, (fi + 1) / nu, fj / nv, (fj + 1) / nv);
            for (int k = 0; k < 8; ++k) {
                const float s = k ? n.unit() : 0, t = k > 1 ? n.unit() : 1;
                EXPECT_LE(apart(divided(exact(patch->evalP(s, t))), r.at(us[i], s, vs[j], t)), 1e-5)
                    << at(s, t);
            }
        }
        for (const int times : seen) EXPECT_EQ(times, 1);
    });
}

TEST_F(NurbTest, DerivativesAreThoseOfTheHomogeneousSurface)
{
    each(5, 60, 0.01f, 100, [](const Rational& r, Numbers& n) {
        const auto mesh = make(r);
        for (const auto& patch : leaves(*mesh)) {
            double most = 0;
            for (int k = 0; k < 16; ++k) {
                const Exact p = exact(
                    patch->evalP(static_cast<float>(k % 4) / 3, static_cast<float>(k / 4) / 3));
                most = std::max({most, size(p), p.w});
            }
            expectDerivatives(*patch, n.uniform(0.1f, 0.9f), n.uniform(0.1f, 0.9f), 2e-4 * most);
        }
    });
}

TEST_F(NurbTest, ASinglePatchIsItsOnlySpan)
{
    Numbers n(6);
    for (long order = 2; order <= 8; ++order) {
        const Rational r(Axis::random(order, order, n), Axis::random(3, 3, n), n, 0.01f, 100);
        const auto patch = makePatch(r);
        ASSERT_NE(patch, nullptr);
        for (int k = 0; k < 20; ++k) {
            const float u = n.unit(), v = n.unit();
            EXPECT_LE(apart(divided(exact(patch->evalP(u, v))), r.at(u, v)), 1e-5);
        }
        expectQuarters(*patch, 1e-4);
    }
    Rational trimmed(Axis::bezier(4), Axis::bezier(4), n, 0.01f, 100);
    trimmed.u.min = 0.25f;
    trimmed.v.max = 0.5f;
    const auto patch = makePatch(trimmed);
    ASSERT_NE(patch, nullptr);
    EXPECT_LE(apart(divided(exact(patch->evalP(0, 1))), trimmed.at(0, 1)), 1e-5);
    EXPECT_LE(apart(divided(exact(patch->evalP(0.5f, 0.5f))),
                    trimmed.at({3, 0, 1}, 0.625, {3, 0, 1}, 0.25)),
              1e-5);
}

TEST_F(NurbTest, AMeshOfOneSpanSplitsOnceIntoIt)
{
    const Rational r = even(4, 4, 3, 3, 7);
    const Variables variables(r.count());
    const auto mesh = make(r, variables.tokens(kQPointw), variables.values(r.values()));
    Pieces pieces = split(*mesh);
    ASSERT_EQ(pieces.size(), 1u);
    EXPECT_EQ(pieces[0].type(), 5);
    EXPECT_TRUE(pieces[0].rational());
    variables.expectRange(pieces[0], 0, 1, 0, 1);
    expectPart(pieces[0], *mesh, 0, 1, 0, 1, 1e-5);
    Pieces quarters = split(pieces[0]);
    ASSERT_EQ(quarters.size(), 4u);
    variables.expectRange(quarters[0], 0, 0.5f, 0, 0.5f);
    variables.expectRange(quarters[1], 0.5f, 1, 0, 0.5f);
    variables.expectRange(quarters[2], 0, 0.5f, 0.5f, 1);
    variables.expectRange(quarters[3], 0.5f, 1, 0.5f, 1);
}

TEST_F(NurbTest, ThreeSpansAreCutAfterTheFirst)
{
    const Rational r = even(6, 4, 3, 3, 8);  // 3 x 1 spans
    const Variables variables(r.count());
    const auto mesh = make(r, variables.tokens(kQPointw), variables.values(r.values()));
    Pieces pieces = split(*mesh);
    ASSERT_EQ(pieces.size(), 2u);
    const float third = 1.0f / 3;
    EXPECT_EQ(pieces[0].type(), 5);
    EXPECT_EQ(pieces[1].type(), 7);
    variables.expectRange(pieces[0], 0, third, 0, 1);
    variables.expectRange(pieces[1], third, 1, 0, 1);
    expectPart(pieces[1], *mesh, third, 1, 0, 1, 1e-4);
    Pieces right = split(pieces[1]);
    ASSERT_EQ(right.size(), 2u);
    variables.expectRange(right[0], third, 2 * third, 0, 1);
    variables.expectRange(right[1], 2 * third, 1, 0, 1);
}

TEST_F(NurbTest, QuadrantsComeInTheirOrder)
{
    const Rational r = even(6, 3, 4, 3, 9);  // 4 x 2 spans
    const Variables variables(r.count());
    const auto mesh = make(r, variables.tokens(kQPointw), variables.values(r.values()));
    Pieces pieces = split(*mesh);
    ASSERT_EQ(pieces.size(), 4u);
    variables.expectRange(pieces[0], 0, 0.5f, 0, 0.5f);
    variables.expectRange(pieces[1], 0.5f, 1, 0, 0.5f);
    variables.expectRange(pieces[2], 0, 0.5f, 0.5f, 1);
    variables.expectRange(pieces[3], 0.5f, 1, 0.5f, 1);
    for (const auto& piece : pieces.list) EXPECT_EQ(piece->type(), 7);
    expectPart(pieces[2], *mesh, 0, 0.5f, 0.5f, 1, 1e-4);
    const Rational tall = even(3, 3, 4, 3, 10);  // 1 x 2 spans
    Pieces halves = split(*make(tall));
    ASSERT_EQ(halves.size(), 2u);
    EXPECT_EQ(halves[0].type(), 5);
    EXPECT_EQ(halves[1].type(), 5);
}

TEST_F(NurbTest, EmptySpansMakeNoPatch)
{
    Numbers n(11);
    // Two of the five intervals are empty.
    const Axis u(7, 3, {0, 0, 0, 1, 1, 2, 2, 4, 4, 4});
    const Rational r(u, Axis::bezier(2), n, 0.5f, 2);
    ASSERT_EQ(u.spans().size(), 3u);
    const Variables variables(r.count());
    const auto mesh = make(r, variables.tokens(kQPointw), variables.values(r.values()));
    ASSERT_NE(mesh, nullptr);
    EXPECT_TRUE(reports.empty());
    const auto patches = leaves(*mesh);
    ASSERT_EQ(patches.size(), 3u);
    const float third = 1.0f / 3;
    variables.expectRange(*patches[0], 0, third, 0, 1);
    variables.expectRange(*patches[1], third, 2 * third, 0, 1);
    variables.expectRange(*patches[2], 2 * third, 1, 0, 1);
}

TEST_F(NurbTest, AMeshOfWhichNothingLiesWithinTheLimitsIsEmpty)
{
    Rational r = even(3, 3, 4, 4, 33);  // knots 2 ... 3 in u
    EXPECT_FALSE(make(r)->empty());
    for (const auto& [min, max] : {std::pair(3.0f, 6.0f), std::pair(-1.0f, 2.0f)}) {
        r.u.min = min;
        r.u.max = max;
        const auto mesh = make(r);
        ASSERT_NE(mesh, nullptr);
        EXPECT_TRUE(mesh->empty());
        EXPECT_EQ(makePatch(r), nullptr);
    }
}

TEST_F(NurbTest, SpansThatAreAllButEmptyLeaveNoHole)
{
    Numbers n(32);
    for (const float gap : {1e-12f, 5e-11f, 2e-10f, 1e-6f}) {
        SCOPED_TRACE(gap);
        Rational r(Axis(4, 3, {0, 0, 0, gap, 1, 1, 1}), Axis::bezier(2), n, 0.5f, 2);
        const auto mesh = make(r);
        ASSERT_NE(mesh, nullptr);
        for (const auto& patch : leaves(*mesh)) {
            for (int k = 0; k < 20; ++k) {
                const Pointw p = patch->evalP(n.unit(), n.unit());
                ASSERT_TRUE(finite(p));
                EXPECT_GT(p.w, 0);
                EXPECT_LE(size(divided(exact(p))), 5.001);  // among the control points
            }
        }
    }
}

TEST_F(NurbTest, LimitsTrimTheSurface)
{
    Rational r = even(8, 3, 3, 3, 12);  // knots 2 ... 8 in u
    r.u.min = 3.5f;
    r.u.max = 5.25f;
    EXPECT_EQ(leaves(*make(r)).size(), 3u);
    const auto us = r.u.spans();
    const auto mesh = make(r);
    EXPECT_LE(apart(divided(exact(mesh->evalP(0, 0))), r.at({3, 3, 4}, 0.5, {2, 2, 3}, 0)), 1e-5);
    EXPECT_LE(apart(divided(exact(mesh->evalP(1, 1))), r.at({5, 5, 6}, 0.25, {2, 2, 3}, 1)), 1e-5);
    // Limits on knots leave nothing of the spans beyond them.
    r.u.min = 4;
    r.u.max = 6;
    EXPECT_EQ(leaves(*make(r)).size(), 2u);
    r.u.min = 4.25f;
    r.u.max = 4.75f;
    EXPECT_EQ(leaves(*make(r)).size(), 1u);
    EXPECT_TRUE(reports.empty());
}

TEST_F(NurbTest, PiecesJoinWithoutAGap)
{
    Numbers n(13);
    for (int k = 0; k < 40; ++k) {
        // Knots that do not coincide: the surface is in one piece.
        const long order = n.integer(2, 5);
        const Rational r(Axis::even(order + 1, order), Axis::even(order + 1, order), n, 0.1f, 10);
        const auto patches = leaves(*make(r));
        ASSERT_EQ(patches.size(), 4u);
        for (float t = 0; t <= 1; t += 0.0625f) {
            const auto place = [&](std::size_t i, float u, float v) {
                return divided(exact(patches[i]->evalP(u, v)));
            };
            EXPECT_LE(apart(place(0, 1, t), place(1, 0, t)), 2e-6);
            EXPECT_LE(apart(place(2, 1, t), place(3, 0, t)), 2e-6);
            EXPECT_LE(apart(place(0, t, 1), place(2, t, 0)), 2e-6);
            EXPECT_LE(apart(place(1, t, 1), place(3, t, 0)), 2e-6);
        }
    }
}

TEST_F(NurbTest, BoundsHoldTheHomogeneousSurface)
{
    Numbers transformations(14);
    each(15, 60, 0.01f, 100, [&](const Rational& r, Numbers& n) {
        zebLoadIdentity();
        if (n.unit() < 0.5f) applyRandomTransformation(transformations);
        const auto mesh = make(r);
        expectBoundHolds(*mesh, 40);
        for (const auto& patch : leaves(*mesh)) {
            expectBoundHolds(*patch, 16);
            Pieces pieces = split(*patch);
            expectBoundHolds(pieces[static_cast<std::size_t>(n.integer(0, 3))], 16);
        }
    });
}

TEST_F(NurbTest, TheMeshBoundHoldsEveryPatch)
{
    each(16, 40, 0.1f, 10, [](const Rational& r, Numbers& n) {
        zebTranslate(n.uniform(-9, 9), 0, 0);
        const auto mesh = make(r);
        const Boundw bound = mesh->bound();
        for (const auto& patch : leaves(*mesh)) {
            for (int k = 0; k < 30; ++k) {
                const Exact p = exact(patch->evalP(n.unit(), n.unit())) * mesh->matrix();
                EXPECT_LE(outside(bound, p), 1e-3);
                EXPECT_TRUE(p.w >= bound.wmin - 1e-4 && p.w <= bound.wmax + 1e-4);
            }
        }
    });
}

TEST_F(NurbTest, TheHullLiesInTheBoundAndHoldsTheSurface)
{
    each(17, 60, 0.2f, 5, [](const Rational& r, Numbers& n) {
        const auto mesh = make(r);
        std::vector<std::unique_ptr<Primitive>> all = leaves(*mesh);
        all.push_back(mesh->copy(true));
        for (const auto& surface : all) {
            Boundw hull = surface->hull();
            ASSERT_GT(hull.wmin, 0);
            hull.homogenize();
            for (int k = 0; k < 60; ++k) {
                EXPECT_LE(outside(hull, divided(exact(surface->evalP(n.unit(), n.unit())))), 1e-4);
            }
        }
    });
}

TEST_F(NurbTest, ThePatchBoundIsPadded)
{
    Numbers n(18);
    Rational r(Axis::bezier(3), Axis::bezier(3), n, 1, 1);
    for (std::size_t i = 0; i < 9; ++i) {
        r.points[i] = {10 * static_cast<float>(i % 3), 10 * static_cast<float>(i / 3), 7, 1};
    }
    const Boundw b = makePatch(r)->bound();
    EXPECT_LE(b.zmin, 6.9f + 1e-5f);
    EXPECT_GE(b.zmax, 7.1f - 1e-5f);
    EXPECT_LE(b.xmin, -2 + 1e-5f);
    EXPECT_GE(b.ymax, 22 - 1e-5f);
    EXPECT_LE(b.wmin, 0.9f + 1e-5f);
    EXPECT_GE(b.wmax, 1.1f - 1e-5f);
}

TEST_F(NurbTest, TheBoundAttributeClipsInEuclideanSpace)
{
    const float box[6] = {-1, 2, -100, 100, -100, 100};
    zebBound(box);
    Numbers n(19);
    for (const float w : {0.1f, 1.0f, 8.0f}) {
        Rational r(Axis::bezier(3), Axis::bezier(3), n, 1, 1);
        for (std::size_t i = 0; i < 9; ++i) {
            const float own = i % 2 ? w : 2 * w;
            r.points[i] = {10 * static_cast<float>(i % 3) * own,
                           10 * static_cast<float>(i / 3) * own, 7 * own, own};
        }
        const auto mesh = make(r);
        const auto patch = makePatch(r);
        for (const Primitive* surface : {static_cast<const Primitive*>(mesh.get()),
                                         static_cast<const Primitive*>(patch.get())}) {
            Boundw b = surface->bound();
            ASSERT_TRUE(b.homogenizable());
            b.homogenize();
            EXPECT_LE(b.xmax, 2.0001f) << w;
            EXPECT_GE(b.xmax, 2 - 1e-4f) << w;
            EXPECT_LE(b.xmin, 1e-4f) << w;
            EXPECT_GE(b.ymax, 20 - 1e-3f) << w;
            EXPECT_LE(b.zmin, 7.001f) << w;
            EXPECT_GE(b.zmax, 6.999f) << w;
        }
    }
}

TEST_F(NurbTest, AGridIsTheSurfaceInCameraSpace)
{
    zebTranslate(1, 2, 3);
    const Rational r = even(4, 4, 3, 3, 29);
    const auto patch = makePatch(r);
    const RenderFrame frame{Option(), Matrix()};
    const auto grid = patch->dice(Dicing{frame, 6, 4});
    ASSERT_EQ(grid->fUSize, 6);
    ASSERT_EQ(grid->fVSize, 4);
    EXPECT_FALSE(grid->fTransposed);
    for (int j = 0; j <= 4; ++j) {
        for (int i = 0; i <= 6; ++i) {
            Exact e = r.at(static_cast<float>(i) / 6, static_cast<float>(j) / 4);
            e.x += 1;
            e.y += 2;
            e.z += 3;
            EXPECT_LE(apart(exact(grid->vertex(i, j).P), e), 1e-5) << i << ", " << j;
        }
    }
}

TEST_F(NurbTest, CopiesAreWholeButForPatchesUnderQuirks)
{
    const Rational r = even(5, 4, 4, 3, 30);
    const auto mesh = make(r);
    const auto copy = mesh->copy(true);
    EXPECT_EQ(copy->type(), 7);
    expectPart(*copy, *mesh, 0, 1, 0, 1, 0);
    const Rational one = even(4, 4, 3, 3, 31);
    const auto patch = makePatch(one);
    expectPart(*patch->copy(false), *patch, 0, 1, 0, 1, 0);
    const auto bare = patch->copy(true);
    EXPECT_EQ(bare->type(), 5);
    EXPECT_EQ(bare->evalP(0.5f, 0.5f), Pointw());
}
