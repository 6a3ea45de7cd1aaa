// The building operations of the matrix.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "math/matrix.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

using zebtest::Report;

void expectNear(const Point& p, const Point& expected, float tolerance = 1e-5f)
{
    EXPECT_NEAR(p.x, expected.x, tolerance);
    EXPECT_NEAR(p.y, expected.y, tolerance);
    EXPECT_NEAR(p.z, expected.z, tolerance);
}

void expectNear(const Matrix& m, const Matrix& expected, float tolerance = 1e-4f)
{
    for (int i = 0; i < 16; ++i) {
        EXPECT_NEAR(m.m[i / 4][i % 4], expected.m[i / 4][i % 4], tolerance) << i / 4 << i % 4;
    }
}

Point skewed(const Point& p, float angle, const Point& d1, const Point& d2)
{
    Matrix m;
    m.skew(angle, d1.x, d1.y, d1.z, d2.x, d2.y, d2.z);
    return p * m;
}

class RefusedMatrixTest : public testing::Test
{
protected:
    void expectRefused(const std::function<void(Matrix&)>& operation, const Report& report)
    {
        reports.clear();
        Matrix m;
        m.translate(1, 2, 3);
        const Matrix before = m;
        operation(m);
        EXPECT_EQ(m, before);
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0], report);
    }
    zebtest::Reports reports;
};

}  // namespace

TEST(MatrixBuild, EveryOperationPreMultiplies)
{
    const std::function<void(Matrix&)> operations[] = {
        [](Matrix& m) { m.translate(1, 2, 3); },
        [](Matrix& m) { m.scale(2); },
        [](Matrix& m) { m.scale(2, 3, 4); },
        [](Matrix& m) { m.rotate(30, 1, 2, 3); },
        [](Matrix& m) { m.skew(30, 0, 1, 0, 1, 0, 0); },
        [](Matrix& m) { m.perspective(50); },
        [](Matrix& m) { m.zmap(1, 5); },
        [](Matrix& m) { m.map(-1, 2, -3, 4, 10, 20); },
    };
    const float rows[4][4] = {{1, 2, 3, 4}, {5, 6, 7, 8}, {2, 1, 4, 3}, {3, 5, 1, 2}};
    int number = 0;
    for (const auto& operation : operations) {
        SCOPED_TRACE(number++);
        Matrix built(rows), alone;
        operation(built);
        operation(alone);
        expectNear(built, alone * Matrix(rows));
    }
}

TEST(MatrixBuild, TranslateFillsTheLastRow)
{
    Matrix m;
    m.translate(1, 2, 3);
    EXPECT_EQ(m.m[3][0], 1);
    EXPECT_EQ(m.m[3][1], 2);
    EXPECT_EQ(m.m[3][2], 3);
    EXPECT_EQ(m.m[3][3], 1);
    EXPECT_EQ(Point(0, 0, 0) * m, Point(1, 2, 3));
}

TEST(MatrixBuild, WhatIsBuiltLastActsFirst)
{
    Matrix m;
    m.translate(1, 0, 0);
    m.scale(2);
    EXPECT_EQ(Point(1, 1, 1) * m, Point(3, 2, 2));
}

TEST(MatrixBuild, ScalesEachAxis)
{
    Matrix m;
    m.scale(2, 3, 4);
    EXPECT_EQ(Point(1, 1, 1) * m, Point(2, 3, 4));
    m.scale(2);
    EXPECT_EQ(Point(1, 1, 1) * m, Point(4, 6, 8));
    EXPECT_EQ(m.m[3][3], 1);
}

TEST(MatrixBuild, RotatesFromXToYAboutZ)
{
    Matrix m;
    m.rotate(90, 0, 0, 1);
    expectNear(Point(1, 0, 0) * m, Point(0, 1, 0), 1e-6f);
    Matrix n;
    n.rotate(30, 0, 0, 5);
    expectNear(Point(1, 0, 0) * n, Point(std::sqrt(3.0f) / 2, 0.5f, 0), 1e-6f);
}

TEST(MatrixBuild, RotatesCyclicallyAboutTheOtherAxes)
{
    Matrix x, y;
    x.rotate(90, 1, 0, 0);
    y.rotate(90, 0, 1, 0);
    expectNear(Point(0, 1, 0) * x, Point(0, 0, 1), 1e-6f);
    expectNear(Point(0, 0, 1) * y, Point(1, 0, 0), 1e-6f);
}

// A third of a turn about the diagonal takes x to y to z.
TEST(MatrixBuild, RotatesAboutAnAxisOfAnyLength)
{
    Matrix m;
    m.rotate(120, 7, 7, 7);
    expectNear(Point(1, 0, 0) * m, Point(0, 1, 0), 1e-6f);
    expectNear(Point(0, 1, 0) * m, Point(0, 0, 1), 1e-6f);
    expectNear(Point(2, 2, 2) * m, Point(2, 2, 2));
}

TEST_F(RefusedMatrixTest, RotationAboutAZeroAxis)
{
    const Report report{15, 2820, "rotation basis vector must be non-zero"};
    expectRefused([](Matrix& m) { m.rotate(30, 0, 0, 0); }, report);
    expectRefused([](Matrix& m) { m.rotate(30, 0, 0.5e-10f, 0); }, report);
}

TEST(MatrixBuild, SkewTurnsOneDirectionTowardsTheOther)
{
    // y leans 45 degrees over x.
    expectNear(skewed(Point(0, 1, 0), 45, Point(0, 1, 0), Point(1, 0, 0)), Point(1, 1, 0));
    expectNear(skewed(Point(5, 2, 3), 45, Point(0, 1, 0), Point(1, 0, 0)), Point(7, 2, 3));
    const float t = std::tan(3.1415927f / 6);
    expectNear(skewed(Point(0, 1, 0), 30, Point(0, 7, 0), Point(3, 0, 0)), Point(t, 1, 0));
}

TEST(MatrixBuild, SkewAwayHasANegativeAngle)
{
    expectNear(skewed(Point(0, 1, 0), -45, Point(0, 1, 0), Point(1, 0, 0)), Point(-1, 1, 0));
}

TEST(MatrixBuild, SkewWorksAlongEveryAxis)
{
    expectNear(skewed(Point(1, 0, 0), 45, Point(1, 0, 0), Point(0, 1, 0)), Point(1, 1, 0));
    expectNear(skewed(Point(1, 0, 0), 45, Point(1, 0, 0), Point(0, 0, 1)), Point(1, 0, 1));
    expectNear(skewed(Point(0, 0, 1), 45, Point(0, 0, 1), Point(1, 0, 0)), Point(1, 0, 1));
}

// 20 of the 45 degrees between y and the diagonal.
TEST(MatrixBuild, SkewOfDirectionsThatAreNotPerpendicular)
{
    const Point d1(0, 1, 0), d2(1, 1, 0);
    const Point image = normalize(skewed(d1, 20, d1, d2));
    const float angle = 20 * 3.1415927f / 180;
    expectNear(image, Point(std::sin(angle), std::cos(angle), 0));
    expectNear(skewed(d2, 20, d1, d2), d2);
    expectNear(skewed(Point(0, 0, 1), 20, d1, d2), Point(0, 0, 1));
}

TEST(MatrixBuild, SkewInSpace)
{
    const Point d1 = normalize(Point(1, 2, 3)), d2 = normalize(Point(-2, 1, 2));
    const float angle = 25 * 3.1415927f / 180;
    const Point image = normalize(skewed(d1, 25, d1, d2));
    EXPECT_NEAR(dot(image, d1), std::cos(angle), 1e-5f);
    EXPECT_NEAR(dot(image, d2), std::cos(std::acos(dot(d1, d2)) - angle), 1e-5f);
    expectNear(skewed(d2, 25, d1, d2), d2);
    expectNear(skewed(d1 ^ d2, 25, d1, d2), d1 ^ d2);
}

TEST(MatrixBuild, SkewKeepsWhatIsPerpendicularToTheShear)
{
    expectNear(skewed(Point(4, 0, 3), 45, Point(0, 1, 0), Point(1, 0, 0)), Point(4, 0, 3));
}

TEST_F(RefusedMatrixTest, SkewOfZeroVectors)
{
    const Report report{15, 2820, "skew basis vectors must be non-zero"};
    expectRefused([](Matrix& m) { m.skew(30, 0, 0, 0, 1, 0, 0); }, report);
    expectRefused([](Matrix& m) { m.skew(30, 1, 0, 0, 0, 0, 0.5e-10f); }, report);
}

TEST_F(RefusedMatrixTest, SkewOfParallelVectors)
{
    const Report report{15, 2820, "skew basis vectors must non-colinear"};
    expectRefused([](Matrix& m) { m.skew(30, 1, 0, 0, 2, 0, 0); }, report);
    expectRefused([](Matrix& m) { m.skew(30, 1, 0, 0, -2, 0, 0); }, report);
}

TEST_F(RefusedMatrixTest, SkewThatReachesTheSecondVector)
{
    const Report report{10, 2820, "invalid skew angle"};
    expectRefused([](Matrix& m) { m.skew(95, 0, 1, 0, 1, 0, 0); }, report);
    expectRefused([](Matrix& m) { m.skew(50, 0, 1, 0, 1, 1, 0); }, report);
}

// t = 1: (x, y, z) to (x / z, y / z, (z - 1) / z).
TEST(MatrixBuild, PerspectiveOfARightAngle)
{
    Matrix m;
    m.perspective(90);
    expectNear(Point(2, 3, 4) * m, Point(0.5f, 0.75f, 0.75f), 1e-6f);
}

TEST(MatrixBuild, PerspectiveDividesByTheTangentOfHalfTheFieldOfView)
{
    Matrix m;
    m.perspective(60);
    const float t = 1 / std::sqrt(3.0f);
    expectNear(Point(2, 3, 4) * m, Point(2 / (t * 4), 3 / (t * 4), 0.75f));
}

TEST(MatrixBuild, PerspectiveTakesTheNearestDepthToZero)
{
    Matrix m;
    m.perspective(60);
    EXPECT_NEAR((Point(0, 0, 1) * m).z, 0, 1e-6f);
    EXPECT_NEAR((Point(0, 0, 1e6f) * m).z, 1, 1e-5f);
}

TEST(MatrixBuild, ZmapTakesTheRangeTo0And1)
{
    Matrix m;
    m.zmap(1, 10);
    expectNear(Point(3, 4, 1) * m, Point(3, 4, 0), 1e-6f);
    expectNear(Point(3, 4, 10) * m, Point(3, 4, 1), 1e-6f);
    expectNear(Point(3, 4, 5.5f) * m, Point(3, 4, 0.5f), 1e-6f);
}

TEST(MatrixBuild, ZmapExchangesABackwardRange)
{
    Matrix a, b;
    a.zmap(10, 1);
    b.zmap(1, 10);
    EXPECT_EQ(a, b);
}

TEST(MatrixBuild, MapTakesTheScreenWindowToTheRasterWithYDown)
{
    Matrix m;
    m.map(-1, 1, -1, 1, 640, 480);
    expectNear(Point(-1, 1, 7) * m, Point(0, 0, 7), 1e-4f);
    expectNear(Point(1, -1, 7) * m, Point(640, 480, 7), 1e-4f);
}

// x: (1.5 - 1) * 100 / 2; y: 60 - (11 - 10) * 60 / 5
TEST(MatrixBuild, MapOfAnOffCentreWindow)
{
    Matrix m;
    m.map(1, 3, 10, 15, 100, 60);
    expectNear(Point(1.5f, 11, 0) * m, Point(25, 48, 0), 1e-4f);
}

TEST_F(RefusedMatrixTest, MapOfAnEmptyScreenWindow)
{
    const Report report{3, 2820, "screen space must have non-zero width and height"};
    expectRefused([](Matrix& m) { m.map(1, 1, -1, 1, 640, 480); }, report);
    expectRefused([](Matrix& m) { m.map(-1, 1, 2, 2, 640, 480); }, report);
    expectRefused([](Matrix& m) { m.map(0, 0.9e-10f, -1, 1, 640, 480); }, report);
    expectRefused([](Matrix& m) { m.map(-1, 1, 0.9e-10f, 0, 640, 480); }, report);
}
