// What opening the world block makes of the options, and what a reset brings back.
#include <gtest/gtest.h>

#include "math/spaces.h"
#include "state/quark.h"
#include "state/state.h"
#include "support/picture.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

class CameraTest : public testing::Test
{
protected:
    void SetUp() override { zebReset(); }
    void TearDown() override { zebReset(); }

    void open(long xres, long yres, float pixelAspect = 1)
    {
        zebHider(0);
        zebRasterViewport(0, xres, 0, yres);
        zebRasterAspect(pixelAspect);
        zebSceneBegin();
    }
    void expectWindow(float left, float right, float bottom, float top)
    {
        EXPECT_FLOAT_EQ(gOption->left, left);
        EXPECT_FLOAT_EQ(gOption->right, right);
        EXPECT_FLOAT_EQ(gOption->bottom, bottom);
        EXPECT_FLOAT_EQ(gOption->top, top);
        Matrix expected;
        expected.map(left, right, bottom, top, gOption->xres, gOption->yres);
        for (int i = 0; i < 16; ++i) {
            EXPECT_NEAR(gScreenToRaster.m[i / 4][i % 4], expected.m[i / 4][i % 4], 1e-3f);
        }
        EXPECT_EQ(gCameraToRaster, gCameraToScreen * gScreenToRaster);
    }

    zebtest::Reports reports;
};

}  // namespace

TEST_F(CameraTest, TheWorldStartsFromTheCamera)
{
    zebTranslate(1, 2, 3);
    const Matrix camera = gTransform->matrix();
    open(100, 100);
    EXPECT_EQ(gWorldToCamera, camera);
    EXPECT_EQ(gTransform->matrix(), camera);
    zebTranslate(1, 0, 0);
    EXPECT_EQ(gWorldToCamera, camera);
}

TEST_F(CameraTest, ATallPictureSeesTheUnitWidth)
{
    open(200, 400);
    expectWindow(-1, 1, -2, 2);
    EXPECT_EQ(gOption->frameAspect, 0.5f);
}

TEST_F(CameraTest, AWidePictureSeesTheUnitHeight)
{
    open(400, 200);
    expectWindow(-2, 2, -1, 1);
    EXPECT_EQ(gOption->frameAspect, 2);
}

TEST_F(CameraTest, ASquarePictureSeesTheUnitSquare)
{
    open(100, 100);
    expectWindow(-1, 1, -1, 1);
}

TEST_F(CameraTest, WidePixelsWidenThePicture)
{
    open(100, 100, 3);
    expectWindow(-3, 3, -1, 1);
}

TEST_F(CameraTest, TheFrameAspectCountsMoreThanTheResolution)
{
    zebImageAspect(4);
    open(100, 100);
    expectWindow(-4, 4, -1, 1);
}

TEST_F(CameraTest, NegativeSizesAndAspectsAreNone)
{
    zebImageAspect(-4);
    open(-100, -50, -2);
    EXPECT_EQ(gOption->xres, 640);
    EXPECT_EQ(gOption->yres, 480);
    EXPECT_EQ(gOption->pixelAspect, 1);
    expectWindow(-4 / 3.0f, 4 / 3.0f, -1, 1);
    EXPECT_TRUE(reports.empty());
}

TEST_F(CameraTest, AScreenWindowStaysAsItIs)
{
    zebImageWindow(0, 2, 1, 5);
    open(100, 100);
    expectWindow(0, 2, 1, 5);
    EXPECT_EQ(gOption->frameAspect, 0);
}

TEST_F(CameraTest, AnEmptyScreenWindowIsReplaced)
{
    zebImageWindow(-5, 5, 1, 1);
    open(100, 100);
    expectWindow(-1, 1, -1, 1);
}

TEST_F(CameraTest, TheDeviceFillsInWhatIsMissing)
{
    zebtest::Picture picture(3);
    picture.attach();
    zebSceneBegin();
    EXPECT_EQ(gOption->xres, 640);
    EXPECT_EQ(gOption->yres, 480);
    EXPECT_EQ(gOption->pixelAspect, 1);
    EXPECT_EQ(picture.width, 640);
    EXPECT_EQ(picture.height, 480);
    expectWindow(-4 / 3.0f, 4 / 3.0f, -1, 1);
    zebReset();
}

TEST_F(CameraTest, WhatTheFrameFilledInIsForgottenWithIt)
{
    zebFrameBegin();
    open(0, 0);
    EXPECT_GT(gOption->xres, 0);
    zebSceneEnd();
    zebFrameEnd();
    EXPECT_EQ(gOption->xres, 0);
    EXPECT_EQ(gOption->frameAspect, 0);
}

TEST_F(CameraTest, TheSequenceHiderGivesWayToDepth)
{
    zebtest::Picture picture(4);
    picture.attach();
    zebRasterViewport(0, 8, 0, 8);
    zebHider(0x401);
    zebOutputSamples(0x305);
    zebSceneBegin();
    EXPECT_EQ(gOption->hiderType, 0x400);
    zebSceneEnd();
}

TEST_F(CameraTest, TheSequenceHiderStaysWithoutDepth)
{
    zebtest::Picture picture(3);
    picture.attach();
    zebRasterViewport(0, 8, 0, 8);
    zebHider(0x401);
    zebSceneBegin();
    EXPECT_EQ(gOption->hiderType, 0x401);
    zebSceneEnd();
}

TEST_F(CameraTest, ADeviceIsOpenedAndClosedOnceAWorld)
{
    zebtest::Picture picture(3);
    picture.attach();
    zebRasterViewport(0, 8, 0, 6);
    zebSceneBegin();
    EXPECT_EQ(picture.opened, 1);
    EXPECT_EQ(picture.closed, 0);
    zebSceneEnd();
    EXPECT_EQ(picture.closed, 1);
    EXPECT_EQ(picture.width, 8);
    EXPECT_EQ(picture.height, 6);
    EXPECT_GT(picture.spans, 0);
    zebSceneBegin();
    zebSceneEnd();
    EXPECT_EQ(picture.opened, 2);
    EXPECT_EQ(picture.closed, 2);
}

TEST_F(CameraTest, TheNullHiderOpensNoDevice)
{
    zebtest::Picture picture(3);
    picture.attach();
    open(8, 8);
    zebSceneEnd();
    EXPECT_EQ(picture.opened, 0);
    EXPECT_EQ(picture.closed, 0);
    EXPECT_EQ(picture.spans, 0);
    EXPECT_EQ(gOption->hiderType, 0);
}

TEST_F(CameraTest, ResetClosesTheDevice)
{
    zebtest::Picture picture(3);
    picture.attach();
    zebRasterViewport(0, 8, 0, 8);
    zebSceneBegin();
    zebReset();
    EXPECT_EQ(picture.opened, 1);
    EXPECT_EQ(picture.closed, 1);
    EXPECT_EQ(picture.spans, 0);
}

TEST_F(CameraTest, ResetBringsTheStartBack)
{
    zebFrameBegin();
    zebColorGain(3);
    zebViewPerspective(60);
    zebTranslate(1, 2, 3);
    open(100, 200);
    const void* light = zebLightSource(kQOmni, 0);
    zebFlatness(3);
    zebAttributePush();
    zebReset();
    EXPECT_EQ(gState->block(), kOutsideBlocks);
    EXPECT_EQ(gOption->gain, 1);
    EXPECT_EQ(gOption->xres, 0);
    EXPECT_FALSE(gOption->perspective);
    EXPECT_EQ(gAttrib->flatnessLimit, 0.5f);
    EXPECT_TRUE(gAttrib->lights.empty());
    EXPECT_EQ(gTransform->matrix(), gIdentity);
    EXPECT_EQ(gWorldToCamera, gIdentity);
    EXPECT_EQ(gCameraToScreen, gIdentity);
    EXPECT_EQ(gState->liveLight(light), nullptr);
    EXPECT_TRUE(reports.empty());
}

TEST_F(CameraTest, ResetMapsTheDefaultWindowToTheDefaultRaster)
{
    open(100, 200);
    zebReset();
    Matrix expected;
    expected.map(-4 / 3.0f, 4 / 3.0f, -1, 1, 640, 480);
    EXPECT_EQ(gScreenToRaster, expected);
    EXPECT_EQ(gCameraToRaster, gCameraToScreen * gScreenToRaster);
}

TEST_F(CameraTest, ResetEmptiesTheScene)
{
    zebtest::Picture picture(3);
    picture.attachFloat();
    zebRasterViewport(0, 8, 0, 8);
    zebSceneBegin();
    float corners[] = {-1, -1, 5, -1, 1, 5, 1, 1, 5, 1, -1, 5};
    zebSurface(kQConstant, 0);
    zebPolygon(4, kQPoint, corners, 0);
    zebReset();
    zebtest::Picture second(3);
    second.attachFloat();
    zebRasterViewport(0, 8, 0, 8);
    zebSceneBegin();
    zebSceneEnd();
    EXPECT_EQ(second.sum(0), 0);
    EXPECT_EQ(second.closed, 1);
}

TEST_F(CameraTest, AProjectionOutlivesItsFrame)
{
    zebFrameBegin();
    zebViewPerspective(40);
    const Matrix projection = gCameraToScreen;
    zebFrameEnd();
    EXPECT_NE(projection, gIdentity);
    EXPECT_EQ(gCameraToScreen, projection);
}

TEST_F(CameraTest, WithoutQuirksTheProjectionFromBeforeIsBack)
{
    zebViewPerspective(70);
    const Matrix before = gCameraToScreen;
    zebFrameBegin();
    zebQuirks(0);
    zebViewPerspective(40);
    open(100, 100);
    zebSceneEnd();
    EXPECT_NE(gCameraToScreen, before);
    zebFrameEnd();
    EXPECT_EQ(gCameraToScreen, before);
    EXPECT_EQ(gCameraToRaster, gCameraToScreen * gScreenToRaster);
}
