#include "geom/nurb.h"

#include <gtest/gtest.h>

#include "geom/grid.h"
#include "state/quark.h"
#include "state/state.h"
#include "support/rational.h"
#include "support/reports.h"

using namespace zeb;
using namespace zebtest;

namespace
{

// Checked and built, as the interface does it.
std::unique_ptr<NuPatchMesh> make(const Rational& r, const std::vector<unsigned short>& tokens,
                                  const std::vector<void*>& values)
{
    const long n = static_cast<long>(tokens.size());
    const auto u = r.u.direction(), v = r.v.direction();
    if (!NuPatchMesh::verify(u, v, n, tokens.data(), values.data())) return nullptr;
    return std::make_unique<NuPatchMesh>(u, v, n, tokens.data(), values.data());
}
std::unique_ptr<NuPatchMesh> make(const Rational& r) { return make(r, {kQPointw}, {r.values()}); }

std::unique_ptr<NuPatch> makePatch(const Rational& r)
{
    const unsigned short token = kQPointw;
    void* const value = r.values();
    return NuPatch::make(r.u.direction(), r.v.direction(), 1, &token, &value);
}

class NurbTest : public testing::Test
{
protected:
    NurbTest() { zebReset(); }
    ~NurbTest() override { zebReset(); }

    // Surfaces of all orders, with knots and weights of all kinds; some are trimmed.
    static void each(unsigned seed, int count, float wmin, float wmax,
                     const std::function<void(const Rational&, Numbers&)>& visit)
    {
        Numbers n(seed);
        for (int k = 0; k < count; ++k) {
            const auto axis = [&] {
                const long order = n.integer(2, 5);
                Axis a = Axis::random(order + n.integer(0, 5), order, n);
                if (n.unit() < 0.4f) {
                    const float room = a.max - a.min;
                    a.min += room * n.uniform(0, 0.4f);
                    a.max -= room * n.uniform(0, 0.4f);
                }
                return a;
            };
            const Axis u = axis(), v = axis();
            const Rational r(u, v, n, wmin, wmax);
            SCOPED_TRACE("surface " + std::to_string(k));
            visit(r, n);
            if (HasFailure()) return;
        }
    }
    static Rational even(long nu, long uorder, long nv, long vorder, unsigned seed)
    {
        Numbers n(seed);
        return {Axis::even(nu, uorder), Axis::even(nv, vorder), n, 0.5f, 2};
    }
    // Reports of checking a list, in their order.
    bool check(const Rational& r, const std::vector<unsigned short>& tokens = {kQPointw})
    {
        reports.clear();
        const std::vector<void*> values(tokens.size(), r.values());
        return NuPatchMesh::verify(r.u.direction(), r.v.direction(),
                                   static_cast<long>(tokens.size()), tokens.data(), values.data());
    }
    void expectReports(const std::vector<const char*>& messages) const
    {
        ASSERT_EQ(reports.size(), messages.size());
        for (std::size_t i = 0; i < messages.size(); ++i) {
            EXPECT_EQ(reports[i], (zebtest::Report{10, 2820, messages[i]})) << i;
        }
    }

    zebtest::Reports reports;
};

constexpr char kFewPoints[] = "number of control points may not be less than the order";
constexpr char kDecreasing[] = "knot values must appear in non-decreasing order";
constexpr char kNoRange[] = "parametric limit min must be less than max";
constexpr char kOutsideKnots[] = "parametric limits must lie between knot[order-1] and knot[n]";

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
    const Coefficient p[] = {{1, 2, 3, 4}, {5, -6, 7, 8}, {9, 10, -11, 12}};
    for (long row = 0; row < 3; ++row) {
        const Coefficient sum = NURB::weight(3, basis, row, p);
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
