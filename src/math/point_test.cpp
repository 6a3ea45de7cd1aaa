#include "math/point.h"

#include <gtest/gtest.h>

#include <sstream>

#include "math/matrix.h"
#include "math/shading_math.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

void expectNear(const Point& p, const Point& expected, float tolerance = 1e-5f)
{
    EXPECT_NEAR(p.x, expected.x, tolerance);
    EXPECT_NEAR(p.y, expected.y, tolerance);
    EXPECT_NEAR(p.z, expected.z, tolerance);
}

template <class T>
std::string printed(const T& value)
{
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

class PointTest : public testing::Test
{
protected:
    zebtest::Reports reports;
};

using zebtest::Report;

}  // namespace

TEST(Point, DefaultsToTheOrigin)
{
    EXPECT_EQ(Point(), Point(0, 0, 0));
    EXPECT_EQ(gOrigin, Point(0, 0, 0));
}

TEST(Point, ArithmeticIsComponentWise)
{
    EXPECT_EQ(Point(1, 2, 3) + Point(10, 20, 30), Point(11, 22, 33));
    EXPECT_EQ(Point(1, 2, 3) - Point(10, 20, 30), Point(-9, -18, -27));
    EXPECT_EQ(Point(1, 2, 3) * 2, Point(2, 4, 6));
    EXPECT_EQ(2 * Point(1, 2, 3), Point(2, 4, 6));
    EXPECT_EQ(-Point(1, 2, 3), Point(-1, -2, -3));
    EXPECT_EQ(Point(2, 4, 6) / 2, Point(1, 2, 3));
    EXPECT_EQ(Point(2, 6, 12) / Point(2, 3, 4), Point(1, 2, 3));
    Point p(1, 2, 3);
    p *= Point(4, 5, 6);
    EXPECT_EQ(p, Point(4, 10, 18));
}

TEST(Point, EqualityIsOfEveryComponent)
{
    EXPECT_TRUE(Point(1, 2, 3) == Point(1, 2, 3));
    EXPECT_TRUE(Point(1, 2, 3) != Point(0, 2, 3));
    EXPECT_TRUE(Point(1, 2, 3) != Point(1, 0, 3));
    EXPECT_TRUE(Point(1, 2, 3) != Point(1, 2, 0));
}

TEST_F(PointTest, DivisionByAScalarNearZeroIsReportedAndLeavesThePoint)
{
    for (float divisor : {0.0f, 0.9e-10f, -0.9e-10f}) {
        reports.clear();
        EXPECT_EQ(Point(1, 2, 3) / divisor, Point(1, 2, 3));
        Point p(1, 2, 3);
        p /= divisor;
        EXPECT_EQ(p, Point(1, 2, 3));
        ASSERT_EQ(reports.size(), 2u);
        EXPECT_EQ(reports[0], (Report{15, 2820, "dividing point by zero"}));
        EXPECT_EQ(reports[1], reports[0]);
    }
}

TEST_F(PointTest, TheBoundsOfNearZeroAreOpen)
{
    EXPECT_NEAR((Point(1e-10f, 0, 0) / 1e-10f).x, 1.0f, 1e-6f);
    EXPECT_NEAR((Point(1e-10f, 0, 0) / -1e-10f).x, -1.0f, 1e-6f);
    EXPECT_TRUE(reports.empty());
}

TEST_F(PointTest, DivisionByAPointWithAComponentNearZeroDividesNothing)
{
    for (const Point& divisor : {Point(0, 2, 2), Point(2, 0.9e-10f, 2), Point(2, 2, -0.9e-10f)}) {
        reports.clear();
        EXPECT_EQ(Point(1, 2, 3) / divisor, Point(1, 2, 3));
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0], (Report{15, 2820, "dividing by zero point"}));
    }
}

TEST(Point, CrossProduct)
{
    EXPECT_EQ(Point(1, 0, 0) ^ Point(0, 1, 0), Point(0, 0, 1));
    // (2*6 - 3*5, 3*4 - 1*6, 1*5 - 2*4)
    EXPECT_EQ(Point(1, 2, 3) ^ Point(4, 5, 6), Point(-3, 6, -3));
    Point p(1, 2, 3);
    p ^= Point(4, 5, 6);
    EXPECT_EQ(p, Point(-3, 6, -3));
}

TEST(Point, CrossProductWithItselfInPlace)
{
    Point p(1, 2, 3);
    p ^= p;
    EXPECT_EQ(p, Point(0, 0, 0));
}

TEST(Point, DotProductLengthDistanceDepth)
{
    EXPECT_EQ(dot(Point(1, 2, 3), Point(4, 5, 6)), 32);
    EXPECT_EQ(length(Point(2, 3, 6)), 7);
    EXPECT_EQ(distance(Point(1, 1, 1), Point(3, 4, 7)), 7);
    EXPECT_EQ(depth(Point(1, 2, 3)), 3);
}

TEST_F(PointTest, NormalizeGivesUnitLength)
{
    expectNear(normalize(Point(2, 3, 6)), Point(2 / 7.0f, 3 / 7.0f, 6 / 7.0f), 1e-6f);
    expectNear(normalize(Point(0, 2e-10f, 0)), Point(0, 1, 0), 1e-6f);
}

TEST_F(PointTest, NormalizeLeavesAPointShorterThanTheThresholdWithoutAReport)
{
    EXPECT_EQ(normalize(Point(0, 0, 0)), Point(0, 0, 0));
    EXPECT_EQ(normalize(Point(0, 0.5e-10f, 0)), Point(0, 0.5e-10f, 0));
    EXPECT_TRUE(reports.empty());
}

TEST(Faceforward, TurnsTheNormalByTheSignOfTheReference)
{
    const Point N(1, 2, 3);
    EXPECT_EQ(faceforward(N, Point(0, 0, -2), Point(0, 0, 5)), N);
    EXPECT_EQ(faceforward(N, Point(0, 0, 2), Point(0, 0, 5)), -N);
}

TEST(Faceforward, IsZeroWhenTheIncidentLiesAcrossTheReference)
{
    EXPECT_EQ(faceforward(Point(1, 2, 3), Point(1, 0, 0), Point(0, 0, 1)), Point(0, 0, 0));
}

TEST(Reflect, MirrorsAtTheNormal)
{
    EXPECT_EQ(reflect(Point(1, -1, 0), Point(0, 1, 0)), Point(1, 1, 0));
    // I . N = 4, so I - 8 N: the normal is not normalized.
    EXPECT_EQ(reflect(Point(1, 2, 3), Point(0, 2, 0)), Point(1, -14, 3));
}

// d = -0.8, k = 1 - 0.36 * 0.25 = 0.91: (0.3, -0.4, 0) - (-0.4 + sqrt(0.91)) (0, 1, 0)
TEST(Refract, FollowsSnellsLaw)
{
    expectNear(refract(Point(0.6f, -0.8f, 0), Point(0, 1, 0), 0.5f),
               Point(0.3f, -std::sqrt(0.91f), 0), 1e-6f);
    expectNear(refract(Point(0.6f, -0.8f, 0), Point(0, 1, 0), 1), Point(0.6f, -0.8f, 0), 1e-6f);
}

TEST(Refract, IsZeroUnderTotalInternalReflection)
{
    EXPECT_EQ(refract(Point(0.6f, -0.8f, 0), Point(0, 1, 0), 2), Point(0, 0, 0));
}

// d = 0 and eta = 1 make k = 1 - (1 - 0) * 1 = 0.
TEST(Refract, OnTheEdgeRefracts)
{
    EXPECT_EQ(refract(Point(1, 0, 0), Point(0, 1, 0), 1), Point(1, 0, 0));
}

// ((1 - 2/3) / (1 + 2/3))^2 = (1/5)^2
TEST(Fresnel, AtNormalIncidence)
{
    float Kr, Kt;
    Point R, T;
    fresnel(Point(0, -1, 0), Point(0, 1, 0), 2 / 3.0f, Kr, Kt, R, T);
    EXPECT_NEAR(Kr, 0.04f, 1e-6f);
    EXPECT_NEAR(Kt, 0.96f, 1e-6f);
    expectNear(R, Point(0, 1, 0), 1e-6f);
    expectNear(T, Point(0, -1, 0), 1e-6f);
}

TEST(Fresnel, AveragesTheTwoPolarizations)
{
    float Kr, Kt;
    Point R, T;
    fresnel(Point(0.6f, -0.8f, 0), Point(0, 1, 0), 0.5f, Kr, Kt, R, T);
    const double d = -0.8, c = -std::sqrt(0.91), eta = 0.5;
    const double parallel = (eta * d - c) / (eta * d + c);
    const double across = (d - eta * c) / (eta * c + d);
    EXPECT_NEAR(Kr, (parallel * parallel + across * across) / 2, 1e-6);
    EXPECT_NEAR(Kr + Kt, 1, 1e-6);
    expectNear(R, Point(0.6f, 0.8f, 0), 1e-6f);
    expectNear(T, refract(Point(0.6f, -0.8f, 0), Point(0, 1, 0), 0.5f), 1e-6f);
}

TEST(Fresnel, ReflectsAllUnderTotalInternalReflection)
{
    float Kr = -1, Kt = -1;
    Point R, T(9, 9, 9);
    fresnel(Point(0.6f, -0.8f, 0), Point(0, 1, 0), 2, Kr, Kt, R, T);
    EXPECT_EQ(Kr, 1);
    EXPECT_EQ(Kt, 0);
    EXPECT_EQ(T, gOrigin);
    expectNear(R, Point(0.6f, 0.8f, 0), 1e-6f);
}

// Where refract() still refracts: k = 0 is below the threshold here.
TEST(Fresnel, ReflectsAllOnTheEdge)
{
    float Kr = -1, Kt = -1;
    Point R, T(9, 9, 9);
    fresnel(Point(1, 0, 0), Point(0, 1, 0), 1, Kr, Kt, R, T);
    EXPECT_EQ(Kr, 1);
    EXPECT_EQ(Kt, 0);
    EXPECT_EQ(T, gOrigin);
    EXPECT_EQ(R, Point(1, 0, 0));
}

TEST(Point, ShadingTransformLeavesAPointWhereItIs)
{
    EXPECT_EQ(transform(32, 36, Point(1, 2, 3)), Point(1, 2, 3));
}

TEST(Homogenize, DividesByW)
{
    float x = 2, y = 4, z = -6, w = 2;
    homogenize(x, y, z, w);
    EXPECT_EQ(Pointw(x, y, z, w), Pointw(1, 2, -3, 1));
}

TEST(Homogenize, ClampsADivisionByZero)
{
    float x = 1, y = 2, z = 3, w = 0;
    homogenize(x, y, z, w);
    EXPECT_EQ(Pointw(x, y, z, w), Pointw(1e38f, 1e38f, 1e38f, 1));
}

TEST(Homogenize, IgnoresTheSignOfAZeroDivisor)
{
    float x = -1, y = 0, z = 1, w = -0.0f;
    homogenize(x, y, z, w);
    EXPECT_EQ(Pointw(x, y, z, w), Pointw(-1e38f, 0, 1e38f, 1));
}

TEST(Point, FromAHomogeneousPointDividesByW)
{
    EXPECT_EQ(Point(Pointw(2, 4, 6, 2)), Point(1, 2, 3));
    EXPECT_EQ(Point(Pointw(-1, 0, 1, 0)), Point(-1e38f, 0, 1e38f));
    Point p;
    p = Pointw(2, 4, 6, -2);
    EXPECT_EQ(p, Point(-1, -2, -3));
}

TEST(Pointw, DefaultsToTheOrigin) { EXPECT_EQ(Pointw(), Pointw(0, 0, 0, 1)); }

TEST(Pointw, ArithmeticIsComponentWise)
{
    EXPECT_EQ(Pointw(1, 2, 3, 4) + Pointw(10, 20, 30, 40), Pointw(11, 22, 33, 44));
    EXPECT_EQ(Pointw(1, 2, 3, 4) - Pointw(10, 20, 30, 40), Pointw(-9, -18, -27, -36));
    EXPECT_EQ(Pointw(1, 2, 3, 4) * 2, Pointw(2, 4, 6, 8));
    EXPECT_TRUE(Pointw(1, 2, 3, 4) != Pointw(1, 2, 3, 5));
}

TEST(Point, TimesAMatrixInPlace)
{
    Matrix m;
    m.translate(1, 2, 3);
    Point p(10, 20, 30);
    p *= m;
    EXPECT_EQ(p, Point(11, 22, 33));
    Pointw q(10, 20, 30, 2);
    q *= m;
    EXPECT_EQ(q, Pointw(12, 24, 36, 2));
}

TEST(Point, PrintsItsComponentsInBrackets)
{
    EXPECT_EQ(printed(Point(1, -2, 0.5f)), "[1 -2 0.5]");
    EXPECT_EQ(printed(Pointw(1, -2, 0.5f, 4)), "[1 -2 0.5 4]");
}

TEST(Point, InterpolatesEachComponent)
{
    const Point a(0, 0, 0), b(1, 10, 100), c(2, 20, 200), d(5, 50, 500);
    EXPECT_EQ(lerp(0.5f, a, b), Point(0.5f, 5, 50));
    const float e = bilerp(0.25f, 0.5f, 0, 1, 2, 5);
    expectNear(bilerp(0.25f, 0.5f, a, b, c, d), Point(e, 10 * e, 100 * e), 1e-4f);
    const float f = barylerp(0.25f, 0.5f, 0, 1, 2);
    expectNear(barylerp(0.25f, 0.5f, a, b, c), Point(f, 10 * f, 100 * f), 1e-4f);
    const Point corners[8] = {a, b, c, d, d, c, b, a};
    const float values[8] = {0, 1, 2, 5, 5, 2, 1, 0};
    const float g = trilerp(0.25f, 0.5f, 0.75f, values);
    expectNear(trilerp(0.25f, 0.5f, 0.75f, corners), Point(g, 10 * g, 100 * g), 1e-4f);
}

TEST(Pointw, InterpolatesAllFourComponents)
{
    const Pointw a(0, 0, 0, 1), b(1, 10, 100, 2), c(2, 20, 200, 3), d(5, 50, 500, 8);
    const Pointw p = bilerp(0.25f, 0.5f, a, b, c, d);
    EXPECT_FLOAT_EQ(p.x, bilerp(0.25f, 0.5f, 0, 1, 2, 5));
    EXPECT_FLOAT_EQ(p.y, bilerp(0.25f, 0.5f, 0, 10, 20, 50));
    EXPECT_FLOAT_EQ(p.z, bilerp(0.25f, 0.5f, 0, 100, 200, 500));
    EXPECT_FLOAT_EQ(p.w, bilerp(0.25f, 0.5f, 1, 2, 3, 8));
    const Pointw q = barylerp(0.25f, 0.5f, a, b, c);
    EXPECT_FLOAT_EQ(q.w, barylerp(0.25f, 0.5f, 1, 2, 3));
    EXPECT_FLOAT_EQ(q.x, barylerp(0.25f, 0.5f, 0, 1, 2));
}

TEST(Point, SplineRunsThroughEachComponent)
{
    const Point knots[5] = {{0, 1, 5}, {1, 4, 3}, {4, 2, 2}, {9, 0, 8}, {3, 3, 3}};
    const float x[5] = {0, 1, 4, 9, 3}, y[5] = {1, 4, 2, 0, 3}, z[5] = {5, 3, 2, 8, 3};
    const Point p = spline(0.3f, 5, knots);
    EXPECT_EQ(p, Point(spline(0.3f, 5, x), spline(0.3f, 5, y), spline(0.3f, 5, z)));
}

TEST(Point, RandomFillsTheLastComponentFirst)
{
    Random draws = processRandom();
    const Point p = randomp();
    EXPECT_EQ(p.z, draws.unit());
    EXPECT_EQ(p.y, draws.unit());
    EXPECT_EQ(p.x, draws.unit());
}

TEST(Point, NoiseOffsetsItsSecondAndThirdComponent)
{
    const float u = 0.3f, v = 1.7f;
    EXPECT_EQ(noisep(u, v), Point(noise(u, v), noise(u + 123.456f, v + 123.456f),
                                  noise(u + 456.789f, v + 456.789f)));
    const Point p(0.3f, 1.7f, -2.6f);
    EXPECT_EQ(noisep(p), Point(noise(p), noise(p + Point(123.456f, 123.456f, 123.456f)),
                               noise(p + Point(456.789f, 456.789f, 456.789f))));
}
