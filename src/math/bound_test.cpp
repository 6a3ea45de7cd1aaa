#include "math/bound.h"

#include <gtest/gtest.h>

#include <sstream>

#include "math/matrix.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

void expectBound(const Bound& b, const Bound& expected)
{
    EXPECT_FLOAT_EQ(b.xmin, expected.xmin);
    EXPECT_FLOAT_EQ(b.xmax, expected.xmax);
    EXPECT_FLOAT_EQ(b.ymin, expected.ymin);
    EXPECT_FLOAT_EQ(b.ymax, expected.ymax);
    EXPECT_FLOAT_EQ(b.zmin, expected.zmin);
    EXPECT_FLOAT_EQ(b.zmax, expected.zmax);
}

template <class T>
std::string printed(const T& value)
{
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

// All extents of absolute value e, with a range of w.
Boundw cube(float e, float wmin, float wmax) { return {-e, e, -e, e, -e, e, wmin, wmax}; }

}  // namespace

TEST(Bound, DefaultsToTheInfiniteBox)
{
    const Bound b;
    expectBound(b, Bound(-1e38f, 1e38f, -1e38f, 1e38f, -1e38f, 1e38f));
    EXPECT_EQ(b.finite, 0);
    const Boundw bw;
    EXPECT_EQ(bw.wmin, -1e38f);
    EXPECT_EQ(bw.wmax, 1e38f);
    EXPECT_EQ(bw.finite, 0);
}

TEST(Bound, EveryOtherConstructorMakesAFiniteBox)
{
    EXPECT_EQ(Bound(2), Bound(2, 2, 2, 2, 2, 2));
    EXPECT_EQ(Bound(2).finite, 1);
    EXPECT_EQ(Bound(1, 2, 3, 4, 5, 6).finite, 1);
    const float values[] = {1, 2, 3, 4, 5, 6};
    const Bound b(values);
    EXPECT_EQ(b.xmin, 1);
    EXPECT_EQ(b.xmax, 2);
    EXPECT_EQ(b.ymin, 3);
    EXPECT_EQ(b.ymax, 4);
    EXPECT_EQ(b.zmin, 5);
    EXPECT_EQ(b.zmax, 6);
    EXPECT_EQ(b.finite, 1);
}

TEST(Boundw, TakesSixExtentsAndTheRangeOfW)
{
    const Boundw b(1, 2, 3, 4, 5, 6, 7, 8);
    EXPECT_EQ(Bound(b), Bound(1, 2, 3, 4, 5, 6));
    EXPECT_EQ(b.wmin, 7);
    EXPECT_EQ(b.wmax, 8);
    EXPECT_EQ(b.finite, 1);
}

TEST(Boundw, TakesABoxWithItsFlag)
{
    EXPECT_EQ(Boundw(Bound(1), 2, 3).finite, 1);
    const Boundw b(Bound(), 2, 3);
    EXPECT_EQ(b.finite, 0);
    EXPECT_EQ(b.wmin, 2);
    EXPECT_EQ(b.wmax, 3);
}

TEST(Bound, EqualityComparesTheExtentsAndNotTheFlag)
{
    EXPECT_TRUE(Bound() == Bound(-1e38f, 1e38f, -1e38f, 1e38f, -1e38f, 1e38f));
    const float values[] = {1, 2, 3, 4, 5, 6};
    for (int i = 0; i < 6; ++i) {
        float other[6];
        std::copy(values, values + 6, other);
        other[i] = 9;
        EXPECT_TRUE(Bound(values) != Bound(other)) << i;
    }
}

TEST(Bound, IntersectionTakesTheLargerMinAndTheSmallerMax)
{
    Bound b(0, 10, 0, 10, 0, 10);
    b.intersect(Bound(2, 12, -2, 8, 3, 4));
    EXPECT_EQ(b, Bound(2, 10, 0, 8, 3, 4));
    EXPECT_EQ(b.finite, 1);
}

TEST(Bound, IntersectionWithTheInfiniteBoxIsTheFiniteOne)
{
    Bound b;
    b.intersect(Bound(1, 2, 3, 4, 5, 6));
    EXPECT_EQ(b, Bound(1, 2, 3, 4, 5, 6));
    EXPECT_EQ(b.finite, 1);
    b.intersect(Bound());
    EXPECT_EQ(b, Bound(1, 2, 3, 4, 5, 6));
    EXPECT_EQ(b.finite, 1);
}

TEST(Bound, TwoInfiniteBoxesIntersectToAnInfiniteOne)
{
    Bound b;
    b.intersect(Bound());
    EXPECT_EQ(b, Bound());
    EXPECT_EQ(b.finite, 0);
}

TEST(Bound, AnEmptyIntersectionIsNotLookedFor)
{
    Bound b(0, 1, 0, 1, 0, 1);
    b.intersect(Bound(2, 3, 0, 1, 0, 1));
    EXPECT_EQ(b.xmin, 2);
    EXPECT_EQ(b.xmax, 1);
    EXPECT_EQ(b.finite, 1);
}

TEST(Boundw, IntersectsTheRangeOfWToo)
{
    Boundw b(0, 10, 0, 10, 0, 10, 1, 5);
    b.intersect(Boundw(2, 12, -2, 8, 3, 4, 2, 9));
    EXPECT_EQ(Bound(b), Bound(2, 10, 0, 8, 3, 4));
    EXPECT_EQ(b.wmin, 2);
    EXPECT_EQ(b.wmax, 5);
}

TEST(Boundw, TwoInfiniteBoxesStayAsTheyAre)
{
    Boundw b(Bound(), 1, 2);
    b.intersect(Boundw(Bound(), 1.5f, 1.75f));
    EXPECT_EQ(b.wmin, 1);
    EXPECT_EQ(b.wmax, 2);
    EXPECT_EQ(b.finite, 0);
}

TEST(Bound, AnInfiniteBoxStaysUnderAMatrix)
{
    Matrix m;
    m.scale(2);
    Bound b;
    b *= m;
    EXPECT_EQ(b, Bound());
    EXPECT_EQ(b.finite, 0);
    Boundw bw(Bound(), 1, 2);
    bw *= m;
    EXPECT_EQ(Bound(bw), Bound());
    EXPECT_EQ(bw.wmin, 1);
    EXPECT_EQ(bw.wmax, 2);
    EXPECT_EQ(bw.finite, 0);
}

TEST(Bound, AFiniteBoxMovesWithAMatrix)
{
    Matrix m;
    m.translate(10, 20, 30);
    Bound b(0, 1, 2, 3, 4, 5);
    b *= m;
    EXPECT_EQ(b, Bound(10, 11, 22, 23, 34, 35));
    Boundw bw(0, 1, 2, 3, 4, 5, 1, 1);
    bw *= m;
    EXPECT_EQ(Bound(bw), Bound(10, 11, 22, 23, 34, 35));
    EXPECT_EQ(bw.wmax, 1);
}

TEST(Boundw, IsHomogenizableWhenWStaysAwayFromZero)
{
    EXPECT_TRUE(cube(1e38f, 1, 2).homogenizable());
    EXPECT_TRUE(cube(1e38f, -2, -1).homogenizable());
}

TEST(Boundw, IsHomogenizableWhenTheQuotientsStayBelowInfinity)
{
    EXPECT_TRUE(cube(0.49e38f, 0.5f, 2).homogenizable());
    EXPECT_FALSE(cube(0.51e38f, 0.5f, 2).homogenizable());
    EXPECT_TRUE(cube(0.24e38f, -0.5f, 0.25f).homogenizable());  // the smaller of |wmin|, |wmax|
    EXPECT_FALSE(cube(0.26e38f, -0.5f, 0.25f).homogenizable());
}

TEST(Boundw, HomogenizableLooksAtEveryExtent)
{
    for (int i = 0; i < 6; ++i) {
        float e[6] = {};
        e[i] = i % 2 ? 0.6e38f : -0.6e38f;
        EXPECT_FALSE(Boundw(Bound(e), 0.5f, 2).homogenizable()) << i;
    }
}

TEST(Boundw, IsNotHomogenizableWhenWReachesZero)
{
    EXPECT_FALSE(cube(0, 0, 2).homogenizable());
    EXPECT_FALSE(cube(0, -0.5f, 0).homogenizable());
}

// Each extent is divided by the end of 2 ... 4 that keeps the box largest.
TEST(Boundw, HomogenizesToTheTightestBox)
{
    Boundw b(-4, 4, 2, 8, -8, -2, 2, 4);
    b.homogenize();
    expectBound(b, Bound(-2, 2, 0.5f, 4, -4, -0.5f));
    EXPECT_EQ(b.wmin, 1);
    EXPECT_EQ(b.wmax, 1);
    EXPECT_EQ(b.finite, 1);
}

TEST(Boundw, ABoxSplitByTheEyePlaneCannotBeHomogenized)
{
    for (float wmin : {0.9e-10f, 0.0f, -1.0f}) {
        zebtest::Reports reports;
        Boundw b(-4, 4, 2, 8, -8, -2, wmin, 4);
        b.homogenize();
        EXPECT_EQ(Bound(b), Bound(-4, 4, 2, 8, -8, -2));
        EXPECT_EQ(b.wmin, wmin);
        EXPECT_EQ(b.wmax, 4);
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0], (zebtest::Report{15, 2820, "cannot homogenize a split bound"}));
    }
}

TEST(Bound, PrintsItsExtentsInBrackets)
{
    EXPECT_EQ(printed(Bound(1, 2, 3, 4, 5, 6.5f)), "[1 2 3 4 5 6.5]");
    EXPECT_EQ(printed(Boundw(1, 2, 3, 4, 5, 6.5f, 7, 8)), "[1 2 3 4 5 6.5 7 8]");
}

TEST(Bound, GrowsFromEmptyByPoints)
{
    Bound b = Bound::empty();
    b.add(Point(1, 2, 3));
    EXPECT_EQ(b, Bound(1, 1, 2, 2, 3, 3));
    b.add(Point(-1, 5, 3));
    EXPECT_EQ(b, Bound(-1, 1, 2, 5, 3, 3));
}

TEST(Boundw, GrowsFromEmptyByHomogeneousPoints)
{
    Boundw b = Boundw::empty();
    b.add(Pointw(1, 2, 3, 4));
    b.add(Pointw(0, 3, 3, -4));
    EXPECT_EQ(Bound(b), Bound(0, 1, 2, 3, 3, 3));
    EXPECT_EQ(b.wmin, -4);
    EXPECT_EQ(b.wmax, 4);
}

TEST(Boundw, GrowsByAnotherBox)
{
    Boundw b(0, 1, 0, 1, 0, 1, 1, 2);
    b.add(Boundw(-1, 0.5f, 2, 3, 0.5f, 0.75f, 0, 1));
    EXPECT_EQ(Bound(b), Bound(-1, 1, 0, 3, 0, 1));
    EXPECT_EQ(b.wmin, 0);
    EXPECT_EQ(b.wmax, 2);
}
