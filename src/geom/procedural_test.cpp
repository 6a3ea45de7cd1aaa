#include "geom/procedural.h"

#include <gtest/gtest.h>

#include "math/spaces.h"
#include "state/error.h"
#include "state/state.h"
#include "support/scene.h"

using namespace zeb;

namespace
{

const float kUnitBox[6] = {0, 1, 0, 1, 0, 1};

struct Calls {
    int subdivided = 0, freed = 0;
    float detail = -1;
    std::string order;
    zeb::Color color;
    zeb::Point origin;
    const char* function = "";
};

void subdivide(void* data, float detail)
{
    auto& calls = *static_cast<Calls*>(data);
    ++calls.subdivided;
    calls.detail = detail;
    calls.order += 's';
    calls.color = gAttrib->surfaceColor;
    calls.origin = gOrigin * gTransform->matrix();
    calls.function = Error::fFuncName;
}

void release(void* data)
{
    auto& calls = *static_cast<Calls*>(data);
    ++calls.freed;
    calls.order += 'f';
}

class ProceduralTest : public zebtest::RasterTest
{
protected:
    Procedural make(const float* bound = kUnitBox)
    {
        return {std::make_shared<Procedural::Data>(&calls, release), bound, subdivide};
    }
    Calls calls;
};

}  // namespace

TEST_F(ProceduralTest, IsNeverDiced)
{
    const RenderFrame frame{Option(), Matrix()};
    Dicing dicing{frame};
    EXPECT_FALSE(make().diceable(dicing, 1000));
    EXPECT_EQ(make().type(), 16);
}

TEST_F(ProceduralTest, TheBoundIsInCameraSpaceWithAWOfOne)
{
    zebTranslate(5, 0, 0);
    zebScale(2, 1, 1);
    const Boundw b = make().bound();
    EXPECT_EQ(static_cast<const Bound&>(b), Bound(5, 7, 0, 1, 0, 1));
    EXPECT_EQ(b.wmin, 1);
    EXPECT_EQ(b.wmax, 1);
}

TEST_F(ProceduralTest, TheBoundIsClippedByTheBoundAttributeInObjectSpace)
{
    zebTranslate(5, 0, 0);
    const float box[6] = {0.25f, 9, -9, 0.5f, -9, 9};
    zebBound(box);
    EXPECT_EQ(static_cast<const Bound&>(make().bound()), Bound(5.25f, 6, 0, 0.5f, 0, 1));
}

TEST_F(ProceduralTest, DataIsReleasedOnceWhenTheLastIsGone)
{
    {
        const Procedural a = make();
        {
            const Procedural b(a);
        }
        EXPECT_EQ(calls.freed, 0);
    }
    EXPECT_EQ(calls.freed, 1);
}

TEST_F(ProceduralTest, AHostSeesTheDetailTheRecordsAndNoFunctionName)
{
    raster(24, 24);
    beginFlat();
    zebtest::color(1, 0, 0);
    zebMatrixPush();
    zebTranslate(2, 3, 0);
    const float box[6] = {0, 4, 0, 5, 0.25f, 0.75f};
    zebProcedural(&calls, box, subdivide, release);
    zebMatrixPop();
    zebtest::color(0, 1, 0);
    zebSceneEnd();
    EXPECT_EQ(calls.order, "sf");
    EXPECT_NEAR(calls.detail, 20, 1e-4);
    EXPECT_EQ(calls.color, zeb::Color(1, 0, 0));
    EXPECT_EQ(calls.function, nullptr);
    EXPECT_TRUE(reports.empty());
}

TEST_F(ProceduralTest, TheRecordsOfTheCallerReturn)
{
    raster(24, 24);
    beginFlat();
    zebtest::color(1, 0, 0);
    const float box[6] = {0, 4, 0, 5, 0.25f, 0.75f};
    zebProcedural(&calls, box, subdivide, release);
    zebtest::color(0, 1, 0);
    zebRenderInit();
    zebRenderBucket();
    EXPECT_EQ(calls.subdivided, 1);
    EXPECT_EQ(gAttrib->surfaceColor, zeb::Color(0, 1, 0));
    zebSceneEnd();
}

TEST_F(ProceduralTest, ABoundThatCrossesTheEyePlaneHasAnEndlessDetail)
{
    zebRasterViewport(0, 24, 0, 24);
    zebViewPerspective(90);
    picture.attach();
    zebOutputSamples(ZEB_SAMPLES_RGBAZ);
    zebSceneBegin();
    const float box[6] = {-1, 1, -1, 1, -1, 1};
    zebProcedural(&calls, box, subdivide, release);
    zebSceneEnd();
    EXPECT_EQ(calls.subdivided, 1);
    EXPECT_EQ(calls.detail, 1e38f);
    EXPECT_EQ(calls.freed, 1);
}

// Under a camera whose w is z: a box 1 x 1 at its nearest place w covers 1 / w^2 pixels.
TEST_F(ProceduralTest, ABoundHasADetailFromAWOf1em10On)
{
    gCameraToRaster.m[2][3] = 1;
    gCameraToRaster.m[3][3] = 0;
    gCameraToRaster.m[3][0] = gCameraToRaster.m[3][1] = 0;
    gCameraToRaster.m[0][0] = gCameraToRaster.m[1][1] = 1;
    const auto detail = [this](float z) {
        const float box[6] = {0, 1, 0, 1, z, 1};
        return make(box).detail();
    };
    EXPECT_NEAR(detail(1e-10f), 1e20f, 1e14f);
    EXPECT_EQ(detail(0.999e-10f), 1e38f);
    EXPECT_EQ(detail(0), 1e38f);
}

TEST_F(ProceduralTest, WhatCannotBeSeenIsReleasedUnbuilt)
{
    raster(24, 24);
    beginFlat();
    const float box[6] = {100, 104, 0, 5, 0.25f, 0.75f};
    zebProcedural(&calls, box, subdivide, release);
    EXPECT_EQ(calls.freed, 1);
    zebSceneEnd();
    EXPECT_EQ(calls.order, "f");
}
