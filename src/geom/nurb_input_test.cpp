#include <gtest/gtest.h>

#include "geom/nurb.h"
#include "state/quark.h"
#include "state/state.h"
#include "support/rational.h"

using namespace zeb;
using namespace zebtest;

// What the interface may be given, and what it says.

namespace
{

class NurbInputTest : public RationalTest
{
};

constexpr char kFewPoints[] = "number of control points may not be less than the order";
constexpr char kDecreasing[] = "knot values must appear in non-decreasing order";
constexpr char kNoRange[] = "parametric limit min must be less than max";
constexpr char kOutsideKnots[] = "parametric limits must lie between knot[order-1] and knot[n]";

}  // namespace

TEST_F(NurbInputTest, PointsHaveWeightsOfOne)
{
    Rational r = even(5, 3, 4, 4, 20);
    std::vector<Point> points;
    for (Pointw& p : r.points) {
        p.w = 1;
        points.emplace_back(p.x, p.y, p.z);
    }
    const auto mesh = make(r, {kQPoint}, {points.data()});
    ASSERT_NE(mesh, nullptr);
    Numbers n(21);
    for (int k = 0; k < 30; ++k) {
        const float u = n.unit(), v = n.unit();
        EXPECT_LE(apart(exact(mesh->evalP(u, v)), r.at(u, v)), 1e-5);
    }
}

TEST_F(NurbInputTest, HeightsStandOnTheUnitSquare)
{
    Numbers n(22);
    const Rational r(Axis(4, 2, {0, 0, 1, 2, 3, 3}), Axis(3, 2, {0, 0, 1, 2, 2}), n, 1, 1);
    float heights[12];
    for (int i = 0; i < 12; ++i) heights[i] = static_cast<float>(i);
    const auto mesh = make(r, {kQHeight}, {heights});
    ASSERT_NE(mesh, nullptr);
    // Linear: control points are where their knots are.
    const auto expectAt = [&](float u, float v, const Exact& e) {
        EXPECT_LE(apart(divided(exact(mesh->evalP(u, v))), e), 1e-6) << at(u, v);
    };
    expectAt(0, 0, {0, 0, 0, 1});
    expectAt(1, 0, {1, 0, 3, 1});
    expectAt(0, 0.5f, {0, 0.5, 4, 1});
    expectAt(1.0f / 3, 1, {1.0 / 3, 1, 9, 1});
    expectAt(1, 1, {1, 1, 11, 1});
}

TEST_F(NurbInputTest, ExactlyOneTokenGivesPositions)
{
    const Rational r = even(4, 4, 4, 4, 23);
    EXPECT_TRUE(check(r, {kQPoint}));
    EXPECT_TRUE(check(r, {kQHeight}));
    EXPECT_TRUE(check(r, {kQPointw}));
    EXPECT_TRUE(reports.empty());
    EXPECT_FALSE(check(r, {}));
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0], (zebtest::Report{13, 2820, "required argument missing"}));
    for (const unsigned short other : {kQPoint, kQHeight, kQPointw}) {
        EXPECT_FALSE(check(r, {kQPointw, other}));
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0], (zebtest::Report{11, 2820, "required argument specified 2 times"}));
    }
    EXPECT_FALSE(check(r, {kQPointw, kQHeight, kQPoint}));
    EXPECT_EQ(reports.last().message, "required argument specified 3 times");
}

TEST_F(NurbInputTest, FewerPointsThanTheOrderAreRefused)
{
    Rational r = even(4, 4, 4, 4, 24);
    for (Axis* axis : {&r.u, &r.v}) {
        axis->order = 5;
        EXPECT_FALSE(check(r));
        expectReports({kFewPoints});
        axis->min = 9;  // nothing else is looked at
        EXPECT_FALSE(check(r));
        expectReports({kFewPoints});
        *axis = Axis::even(4, 4);
    }
    EXPECT_TRUE(check(r));
}

TEST_F(NurbInputTest, DecreasingKnotsAreReportedOnceAndTheSurfaceIsBuilt)
{
    Numbers n(25);
    Rational r(Axis(6, 4, {0, 0, 0, 0, 2, 1, 3, 3, 3, 3}), Axis(5, 3, {0, 0, 0, 2, 1, 3, 3, 3}), n,
               0.5f, 2);
    EXPECT_TRUE(check(r));
    expectReports({kDecreasing});
    r.v = Axis::bezier(5);
    reports.clear();
    const auto mesh = make(r);
    expectReports({kDecreasing});
    ASSERT_NE(mesh, nullptr);
    EXPECT_FALSE(mesh->empty());
    const auto patches = leaves(*mesh);
    EXPECT_FALSE(patches.empty());
    for (const auto& patch : patches) EXPECT_TRUE(finite(patch->evalP(0.3f, 0.6f)));
    expectBoundHolds(*mesh, 8);
}

TEST_F(NurbInputTest, EmptyRangesAreRefused)
{
    Rational r = even(4, 4, 4, 4, 26);  // knots 3 ... 4
    for (Axis* axis : {&r.u, &r.v}) {
        axis->min = axis->max;
        EXPECT_FALSE(check(r));
        expectReports({kNoRange});
        axis->min = 4;
        axis->max = 3;
        EXPECT_FALSE(check(r));
        expectReports({kNoRange});
        axis->min = 3;
        axis->max = 4;
    }
}

TEST_F(NurbInputTest, LimitsOutsideTheKnotsAreReportedAndTheSurfaceIsBuilt)
{
    Rational r = even(5, 4, 5, 4, 27);  // knots 3 ... 5
    for (Axis* axis : {&r.u, &r.v}) {
        for (const auto& [min, max] :
             {std::pair(2.5f, 4.0f), std::pair(4.0f, 5.5f), std::pair(0.0f, 9.0f)}) {
            axis->min = min;
            axis->max = max;
            reports.clear();
            const auto mesh = make(r);
            expectReports({kOutsideKnots});
            ASSERT_NE(mesh, nullptr);
            EXPECT_FALSE(mesh->empty());
            for (const auto& patch : leaves(*mesh)) {
                EXPECT_TRUE(finite(patch->evalP(0, 1)));
                expectBoundHolds(*patch, 8);
            }
        }
        axis->min = 3;
        axis->max = 5;
    }
    r.u.min = r.v.min = 2;
    EXPECT_TRUE(check(r));
    expectReports({kOutsideKnots});
}

TEST_F(NurbInputTest, ChecksGoOnAfterWhatIsOnlyReported)
{
    Numbers n(28);
    Rational r(Axis(6, 4, {0, 0, 0, 0, 2, 1, 3, 3, 3, 3}), Axis::bezier(3), n, 1, 1);
    r.u.max = 10;
    EXPECT_TRUE(check(r));
    expectReports({kDecreasing, kOutsideKnots});
    EXPECT_FALSE(check(r, {}));
    ASSERT_EQ(reports.size(), 3u);
    EXPECT_EQ(reports[0].message, kDecreasing);
    EXPECT_EQ(reports[1].message, kOutsideKnots);
    EXPECT_EQ(reports[2].code, 13);
    r.u.min = 20;  // neither a range nor within the knots
    EXPECT_FALSE(check(r));
    expectReports({kDecreasing, kNoRange});
    r.u.order = 7;
    EXPECT_FALSE(check(r));
    expectReports({kFewPoints});
}
