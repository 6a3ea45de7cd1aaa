// What the transformation calls do to points, as zebProjectPoints tells.

#include "support/scene.h"

namespace zebtest
{

namespace
{

void expectNear(const Vec& actual, const Vec& expected)
{
    for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(actual[k], expected[k], 1e-5) << k;
}

// A world whose camera stands at (-1, -2, -3): camera space is world space moved by (1, 2, 3).
class Transformation : public testing::Test
{
protected:
    Transformation()
    {
        zebReset();
        zebHider(ZEB_HIDER_NULL);
        zebRasterViewport(0, 100, 0, 50);
        zebImageWindow(-2, 2, -1, 1);
        zebTranslate(1, 2, 3);
        zebSceneBegin();
    }
    ~Transformation() override { zebReset(); }

    static Vec project(const char* from, const char* to, Vec p)
    {
        ZebPoint points[1] = {{p[0], p[1], p[2]}};
        EXPECT_EQ(zebProjectPoints(zebQuark(from), zebQuark(to), 1, points), points);
        return {points[0][0], points[0][1], points[0][2]};
    }
    // Where a point of the current coordinate system lies in the world.
    static Vec inWorld(const Vec& p) { return project("model", "world", p); }
    static Vec inCamera(const Vec& p)
    {
        const Vec w = inWorld(p);
        return {w[0] + 1, w[1] + 2, w[2] + 3};
    }

    Reports reports;
};

// Rows that no two are alike of; a point (x, y, z) goes to (2 x + 3 y + 5 z + 7, x + 4 y + 6 z + 8,
// 9 x + y + 2 z + 10).
ZebMatrix kMatrix = {{2, 1, 9, 0}, {3, 4, 1, 0}, {5, 6, 2, 0}, {7, 8, 10, 1}};

}  // namespace

TEST_F(Transformation, TheWorldIsWhereItBegins)
{
    EXPECT_EQ(inWorld({4, 5, 6}), (Vec{4, 5, 6}));
    EXPECT_EQ(inCamera({4, 5, 6}), (Vec{5, 7, 9}));
}

TEST_F(Transformation, AMatrixLoadedLeadsToTheWorld)
{
    zebTranslate(100, 200, 300);
    zebLoadMatrix(kMatrix);
    EXPECT_EQ(inWorld({1, 2, 3}), (Vec{30, 35, 27}));
}

TEST_F(Transformation, AMatrixMultipliedActsBeforeTheOnesThere)
{
    zebTranslate(100, 200, 300);
    zebMultMatrix(kMatrix);
    EXPECT_EQ(inWorld({1, 2, 3}), (Vec{130, 235, 327}));
}

TEST_F(Transformation, TheIdentityIsCameraSpace)
{
    zebTranslate(100, 200, 300);
    zebLoadIdentity();
    EXPECT_EQ(inCamera({4, 5, 6}), (Vec{4, 5, 6}));
}

TEST_F(Transformation, ATranslationAndAScaleActAlongTheirAxes)
{
    zebTranslate(10, 20, 30);
    zebScale(2, 3, 4);
    EXPECT_EQ(inWorld({1, 1, 1}), (Vec{12, 23, 34})) << "the last one given acts first";
}

// A quarter turn about a = (2, 3, 6) / 7 takes a point p to a (a . p) + a x p.
TEST_F(Transformation, ARotationTurnsAboutItsAxis)
{
    zebRotate(90, 2, 3, 6);
    expectNear(inWorld({1, 0, 0}), {4 / 49.0f, 48 / 49.0f, -9 / 49.0f});
    expectNear(inWorld({2, 3, 6}), {2, 3, 6});
}

TEST_F(Transformation, ARotationTurnsByItsAngleInDegrees)
{
    zebRotate(30, 0, 0, 1);
    expectNear(inWorld({2, 0, 0}), {std::sqrt(3.0f), 1, 0});
}

// By 45 degrees from y towards x: y leans over to (1, 1, 0), x and z stay.
TEST_F(Transformation, AShearLeansTheFirstDirectionOver)
{
    zebSkew(45, 0, 1, 0, 1, 0, 0);
    expectNear(inWorld({0, 1, 0}), {1, 1, 0});
    expectNear(inWorld({1, 0, 0}), {1, 0, 0});
    expectNear(inWorld({0, 0, 1}), {0, 0, 1});
}

// The first direction turns by the angle, in the plane of both, towards the second, which stays.
TEST_F(Transformation, AShearTakesTwoDirectionsAndAnAngle)
{
    const Vec a = {1, 2, 4}, b = {3, -1, 5};
    zebSkew(20, 1, 2, 4, 3, -1, 5);
    expectNear(inWorld(b), b);
    const Vec leaned = inWorld(a);
    const Vec n = {14, 7, -7};  // a x b
    EXPECT_NEAR(dot(leaned, n), 0, 1e-4);
    const auto angle = [](const Vec& p, const Vec& q) {
        return std::acos(dot(p, q) / std::sqrt(dot(p, p) * dot(q, q))) * 180 / M_PI;
    };
    EXPECT_NEAR(angle(a, leaned), 20, 1e-3);
    EXPECT_NEAR(angle(leaned, b), angle(a, b) - 20, 1e-3);
}

// With a field of view of 2 atan(1/2), (x, y, z) goes to (2 x / z, 2 y / z, (z - 1) / z).
TEST_F(Transformation, APerspectiveDividesByTheDistance)
{
    zebPerspective(static_cast<float>(2 * std::atan(0.5) * 180 / M_PI));
    expectNear(inWorld({3, 5, 4}), {1.5f, 2.5f, 0.75f});
}

TEST_F(Transformation, AMarkedSpaceStaysWhereItWas)
{
    zebTranslate(10, 20, 30);
    zebScale(2, 3, 4);
    zebMarkSpace(zebQuark("marked"));
    zebTranslate(5, 5, 5);
    EXPECT_EQ(project("marked", "world", {1, 1, 1}), (Vec{12, 23, 34}));
    expectNear(project("world", "marked", {12, 23, 34}), {1, 1, 1});
    expectNear(project("model", "marked", {0, 0, 0}), {5, 5, 5});
    zebMarkSpace(zebQuark("marked"));
    expectNear(project("model", "marked", {0, 0, 0}), {0, 0, 0});
}

// The camera sees (-1, -1.5) at (0, 0.5). The screen, -2 ... 2 by -1 ... 1, is 100 x 50 pixels, y
// downwards.
TEST_F(Transformation, PointsGoFromOneSpaceToTheOther)
{
    const Vec raster = project("world", "raster", {-1, -1.5f, 4});
    EXPECT_EQ(raster[0], 50);
    EXPECT_EQ(raster[1], 12.5f);
    const Vec world = project("raster", "world", {50, 12.5f, 0});
    EXPECT_FLOAT_EQ(world[0], -1);
    EXPECT_FLOAT_EQ(world[1], -1.5f);
    EXPECT_EQ(project("eye", "raster", {1, -1, 0}), (Vec{75, 50, 0}));
    EXPECT_EQ(project("image", "raster", {1, -1, 0}), (Vec{75, 50, 0}));
    EXPECT_EQ(project("raster", "raster", {1, 2, 3}), (Vec{1, 2, 3}));
    EXPECT_TRUE(reports.empty());
}

TEST_F(Transformation, AllPointsAreProjected)
{
    ZebPoint points[3] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    zebTranslate(1, 0, 0);
    EXPECT_EQ(zebProjectPoints(zebQuark("model"), zebQuark("world"), 2, points), points);
    EXPECT_EQ(points[0][0], 2);
    EXPECT_EQ(points[1][0], 5);
    EXPECT_EQ(points[2][0], 7) << "beyond the count";
}

TEST_F(Transformation, ARefusedProjectionAnswersNullAndLeavesThePoints)
{
    ZebPoint points[1] = {{1, 2, 3}};
    const unsigned short world = zebQuark("world"), nowhere = zebQuark("never marked");
    EXPECT_EQ(zebProjectPoints(nowhere, world, 1, points), nullptr);
    EXPECT_EQ(zebProjectPoints(world, nowhere, 1, points), nullptr);
    zebScale(0, 1, 1);
    EXPECT_EQ(zebProjectPoints(world, zebQuark("model"), 1, points), nullptr);
    ASSERT_EQ(reports.size(), 3u);
    const std::string unknown =
        "zebProjectPoints: unknown coordinate space " + std::to_string(nowhere);
    EXPECT_EQ(reports[0], (Report{10, ZEB_ERROR, unknown}));
    EXPECT_EQ(reports[1], reports[0]);
    EXPECT_EQ(reports[2],
              (Report{15, ZEB_ERROR, "zebProjectPoints: cannot invert a singular Matrix"}));
    EXPECT_EQ(points[0][0], 1);
    EXPECT_EQ(points[0][1], 2);
    EXPECT_EQ(points[0][2], 3);
    EXPECT_EQ(zebProjectPoints(zebQuark("model"), world, 1, points), points)
        << "the other way needs no inverse";
    EXPECT_EQ(zebProjectPoints(world, world, 0, nullptr), nullptr) << "no points are no error";
    EXPECT_EQ(reports.size(), 3u);
}

}  // namespace zebtest
