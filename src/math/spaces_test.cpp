#include "math/spaces.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "state/quark.h"
#include "state/state.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

using zebtest::Report;

// A world whose origin lies 5 in front of the camera, seen at a right angle on 200 x 100 pixels:
// the screen window is (-2, 2, -1, 1), so that raster = (50 x + 100, 50 - 50 y).
class SpacesTest : public testing::Test
{
protected:
    void SetUp() override
    {
        zebReset();
        zebHider(0);
        zebRasterViewport(0, 200, 0, 100);
        zebRasterAspect(1);
        zebViewPerspective(90);
        zebClip(1, 11);
        zebTranslate(0, 0, 5);
        zebSceneBegin();
    }
    void TearDown() override { zebReset(); }

    void expectProjected(unsigned short from, unsigned short to, const Point& p,
                         const Point& expected)
    {
        float points[2][3] = {{p.x, p.y, p.z}, {p.x, p.y, p.z}};
        EXPECT_EQ(projectPoints(from, to, 2, points), points);
        for (const auto& point : points) {
            EXPECT_NEAR(point[0], expected.x, 1e-3f);
            EXPECT_NEAR(point[1], expected.y, 1e-3f);
            EXPECT_NEAR(point[2], expected.z, 1e-4f);
        }
    }
    static unsigned short name(const char* text) { return Quark::declare(text, 0xD00, 0xE00); }

    zebtest::Reports reports;
};

}  // namespace

TEST_F(SpacesTest, LevelsCountFromRaster)
{
    EXPECT_EQ(spaceLevel(32), 0);
    EXPECT_EQ(spaceLevel(33), 1);
    EXPECT_EQ(spaceLevel(34), 2);
    EXPECT_EQ(spaceLevel(35), 3);
    EXPECT_EQ(spaceLevel(36), 3);
    const unsigned short mine = name("spaces: level");
    markSpace(mine);
    EXPECT_EQ(spaceLevel(mine), 3);
    EXPECT_TRUE(reports.empty());
}

TEST_F(SpacesTest, TheLevelOfAnUnknownSpaceIsReported)
{
    EXPECT_EQ(spaceLevel(65000), -1);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0], (Report{10, 2820, "unknown coordinate space 65000"}));
}

TEST_F(SpacesTest, MatricesLeadOneLevelDown)
{
    zebScale(2, 2, 2);
    EXPECT_EQ(spaceMatrix(32), gIdentity);
    EXPECT_EQ(spaceMatrix(33), gScreenToRaster);
    EXPECT_EQ(spaceMatrix(34), gCameraToScreen);
    EXPECT_EQ(spaceMatrix(35), gWorldToCamera);
    EXPECT_EQ(spaceMatrix(36), gTransform->matrix());
}

TEST_F(SpacesTest, TheMatrixOfAnUnknownSpaceIsReportedUnderAnotherCode)
{
    EXPECT_EQ(spaceMatrix(65000), gIdentity);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0], (Report{3, 2820, "unknown coordinate space 65000"}));
}

TEST_F(SpacesTest, MarkSpaceKeepsTheCurrentTransformation)
{
    const unsigned short mine = name("spaces: mark");
    zebScale(2, 2, 2);
    const Matrix marked = gTransform->matrix();
    markSpace(mine);
    zebTranslate(1, 1, 1);
    EXPECT_EQ(spaceMatrix(mine), marked);
}

TEST_F(SpacesTest, MarkingTwiceKeepsTheLaterMatrix)
{
    const unsigned short mine = name("spaces: twice");
    markSpace(mine);
    zebScale(2, 2, 2);
    markSpace(mine);
    EXPECT_EQ(spaceMatrix(mine), gTransform->matrix());
}

TEST_F(SpacesTest, SpacesThatShareABucketStayApart)
{
    unsigned short first = 0, second = 0;
    for (char text[] = "spaces: bucket a"; !second; ++text[15]) {
        const unsigned short token = name(text);
        if (!first) {
            first = token;
        } else if (token % 17 == first % 17) {
            second = token;
        }
    }
    markSpace(first);
    zebScale(2, 2, 2);
    markSpace(second);
    EXPECT_EQ(spaceMatrix(first), gWorldToCamera);
    EXPECT_EQ(spaceMatrix(second), gTransform->matrix());
}

TEST_F(SpacesTest, StandardSpacesCannotBeRedefined)
{
    for (unsigned short token = 32; token <= 36; ++token) {
        reports.clear();
        markSpace(token);
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0],
                  (Report{10, 2820,
                          "cannot redefine standard coordinate system " + std::to_string(token)}));
    }
    EXPECT_EQ(spaceMatrix(33), gScreenToRaster);
}

TEST_F(SpacesTest, MarkedSpacesSurviveAReset)
{
    const unsigned short mine = name("spaces: reset");
    zebScale(2, 2, 2);
    const Matrix marked = gTransform->matrix();
    markSpace(mine);
    zebReset();
    EXPECT_EQ(spaceMatrix(mine), marked);
}

TEST_F(SpacesTest, MarkAndProjectAreRefusedInAnObjectBlock)
{
    const unsigned short mine = name("spaces: object");
    gState->objectBegin();
    markSpace(mine);
    float point[1][3] = {{1, 2, 3}};
    EXPECT_EQ(projectPoints(36, 35, 1, point), nullptr);
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0].code, 8);
    EXPECT_EQ(reports[1].code, 8);
    EXPECT_EQ(point[0][2], 3);
    EXPECT_EQ(spaceLevel(mine), -1);
}

// Camera (4, 2, 2) is screen (2, 1, (2 - 1) / 2).
TEST_F(SpacesTest, EyeToRasterTakesZThroughTheProjection)
{
    expectProjected(34, 32, Point(4, 2, 2), Point(200, 0, 0.5f));
}

TEST_F(SpacesTest, EyeToImageIsTheProjectionAlone)
{
    expectProjected(34, 33, Point(4, 2, 2), Point(2, 1, 0.5f));
}

TEST_F(SpacesTest, ImageToRasterMapsTheScreenWindow)
{
    expectProjected(33, 32, Point(-2, 1, 7), Point(0, 0, 7));
    expectProjected(33, 32, Point(2, -1, 7), Point(200, 100, 7));
}

// Camera z is 8. The range acts on the world's z, before the camera: (3 - 1) / 10 + 5.
TEST_F(SpacesTest, WorldToRasterReplacesTheProjectionOfZByTheClippingRange)
{
    expectProjected(35, 32, Point(8, -4, 3), Point(150, 75, 5.2f));
}

TEST_F(SpacesTest, WorldToImage)
{
    expectProjected(35, 33, Point(8, -4, 3), Point(1, -0.5f, 5.2f));
}

TEST_F(SpacesTest, WorldToEye) { expectProjected(35, 34, Point(8, -4, 3), Point(8, -4, 8)); }

TEST_F(SpacesTest, ModelToRaster)
{
    zebScale(2, 2, 2);
    // Camera (8, -4, 2 * 1.5 + 5); z: 2 * (1.5 - 1) / 10 + 5.
    expectProjected(36, 32, Point(4, -2, 1.5f), Point(150, 75, 5.1f));
}

// The screen point (1, -0.5, 0.875) is camera (8, -4, 8); z: (0.875 - 1) / 0.875, forwards.
TEST_F(SpacesTest, AwayFromRasterXAndYAreInvertedButZIsNot)
{
    expectProjected(32, 34, Point(150, 75, 0.875f), Point(8, -4, -1 / 7.0f));
}

TEST_F(SpacesTest, RasterToImage)
{
    expectProjected(32, 33, Point(150, 75, 7), Point(1, -0.5f, 7));
}

TEST_F(SpacesTest, RasterToWorldLeavesZToTheForwardRange)
{
    // (8, -4, 8) in the camera is (8, -4) in the world; z: (0.875 - 1) / 10 + 5.
    expectProjected(32, 35, Point(150, 75, 0.875f), Point(8, -4, 4.9875f));
}

TEST_F(SpacesTest, ModelToWorldAndBack)
{
    zebTranslate(1, 2, 3);
    zebScale(2, 2, 2);
    expectProjected(36, 35, Point(1, 1, 1), Point(3, 4, 5));
    expectProjected(35, 36, Point(3, 4, 5), Point(1, 1, 1));
}

TEST_F(SpacesTest, BetweenMarkedSpaces)
{
    const unsigned short a = name("spaces: a"), b = name("spaces: b");
    zebTranslate(1, 0, 0);
    markSpace(a);
    zebScale(2, 2, 2);
    markSpace(b);
    expectProjected(b, a, Point(1, 2, 3), Point(2, 4, 6));
    expectProjected(a, b, Point(2, 4, 6), Point(1, 2, 3));
}

TEST_F(SpacesTest, TheSameSpaceLeavesThePoints)
{
    for (unsigned short space : {32, 33, 34}) {
        expectProjected(space, space, Point(1.5f, -2.5f, 3.5f), Point(1.5f, -2.5f, 3.5f));
    }
    expectProjected(35, 35, Point(1.5f, -2.5f, 3.5f), Point(1.5f, -2.5f, 3.5f));
}

TEST_F(SpacesTest, TheClippingRangeIsThatOfTheOptions)
{
    zebReset();
    zebHider(0);
    zebClip(2, 4);
    float point[1][3] = {{0, 0, 3}};
    ASSERT_NE(projectPoints(35, 33, 1, point), nullptr);
    EXPECT_NEAR(point[0][2], 0.5f, 1e-6f);
}

TEST_F(SpacesTest, UnknownSpacesGiveNull)
{
    float point[1][3] = {{1, 2, 3}};
    EXPECT_EQ(projectPoints(65000, 32, 1, point), nullptr);
    EXPECT_EQ(reports.last(), (Report{10, 2820, "unknown coordinate space 65000"}));
    EXPECT_EQ(projectPoints(32, 65000, 1, point), nullptr);
    EXPECT_EQ(reports.last(), (Report{10, 2820, "unknown coordinate space 65000"}));
    EXPECT_EQ(point[0][0], 1);
    EXPECT_EQ(point[0][1], 2);
    EXPECT_EQ(point[0][2], 3);
}

TEST_F(SpacesTest, ASingularMatrixGivesNullAndLeavesThePoints)
{
    zebScale(0, 1, 1);
    for (unsigned short from : {35, 32}) {
        reports.clear();
        float point[1][3] = {{1, 2, 3}};
        EXPECT_EQ(projectPoints(from, 36, 1, point), nullptr);
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0], (Report{15, 2820, "cannot invert a singular Matrix"}));
        EXPECT_EQ(point[0][0], 1);
        EXPECT_EQ(point[0][1], 2);
        EXPECT_EQ(point[0][2], 3);
    }
}

TEST_F(SpacesTest, NoPointsAreASuccess)
{
    float point[1][3] = {{1, 2, 3}};
    EXPECT_EQ(projectPoints(35, 32, 0, point), point);
    EXPECT_EQ(point[0][0], 1);
    EXPECT_TRUE(reports.empty());
}

TEST_F(SpacesTest, BadPointArraysAreRefused)
{
    EXPECT_EQ(projectPoints(35, 32, 1, nullptr), nullptr);
    float point[1][3] = {{1, 2, 3}};
    EXPECT_EQ(projectPoints(35, 32, -1, point), nullptr);
    ASSERT_EQ(reports.size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_TRUE(reports[i].code == 10 || reports[i].code == 11);
        EXPECT_EQ(reports[i].severity, 0xB04);
    }
}

TEST_F(SpacesTest, PointsThatAreNoNumbersAreRefused)
{
    float points[2][3] = {{1, 2, 3}, {1, std::numeric_limits<float>::quiet_NaN(), 3}};
    EXPECT_EQ(projectPoints(35, 32, 2, points), nullptr);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_TRUE(reports[0].code == 10 || reports[0].code == 11);
    EXPECT_EQ(points[0][2], 3);
}
