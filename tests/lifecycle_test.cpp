// Stages, resets, worlds one after the other, procedurals and objects.

#include <memory>
#include <string>

#include "support/scene.h"

namespace zebtest
{

namespace
{

class Lifecycle : public RasterTest
{
protected:
    void scene()
    {
        beginFlat();
        color(0.3f, 0.7f, 0.9f);
        polygon({{5.3f, 4.1f, 0.5f}, {38.2f, 11.7f, 0.3f}, {20.9f, 28.4f, 0.8f}});
    }
};

struct Growth {
    int built = 0, freed = 0;
    float detail = 0;
};

void build(void* data, float detail)
{
    auto& growth = *static_cast<Growth*>(data);
    ++growth.built;
    growth.detail = detail;
    zebAttributePush();
    rectangle(2, 2, 6, 6, 0.5f);
    zebAttributePop();
}

void release(void* data) { ++static_cast<Growth*>(data)->freed; }

const float kBox[6] = {2, 6, 2, 6, 0.4f, 0.6f};

}  // namespace

TEST_F(Lifecycle, StagesGiveThePictureOfOneGo)
{
    raster(40, 30);
    scene();
    zebSceneEnd();
    const std::vector<std::uint32_t> whole = picture.words();
    for (const int staged : {0, 1, 5, 100}) {
        zebReset();
        raster(40, 30);
        scene();
        zebRenderInit();
        EXPECT_EQ(zebProgress(), 100 / 12) << "4 x 3 buckets, the first under way";
        for (int k = 0; k < staged && zebRenderBucket(); ++k) {
        }
        if (staged == 100) {
            EXPECT_EQ(zebProgress(), 0) << "nothing is left";
            EXPECT_EQ(zebRenderBucket(), 0);
        }
        zebSceneEnd();
        EXPECT_EQ(picture.words(), whole) << staged;
        EXPECT_EQ(picture.flushes.size(), 3u);
    }
    EXPECT_EQ(picture.opened, picture.closed);
}

TEST_F(Lifecycle, AMessageWhileABucketRendersIsTheWorldsEnds)
{
    raster(12, 12);
    beginFlat();
    zebObjectName("thing");
    Growth growth;
    zebProcedural(
        &growth, kBox, [](void*, float) { zebShadingRate(-1); }, release);
    zebRenderInit();
    zebRenderBucket();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].message, "zebShadingRate: shading rate -1 too small");
    zebAttributePush();
    reports.clear();
    zebRenderBucket();
    EXPECT_TRUE(reports.empty()) << "staged rendering is legal in any block";
    zebAttributePop();
    zebSceneEnd();
}

TEST_F(Lifecycle, ResetInTheMiddleOfStagesGivesThePictureUp)
{
    for (const int buckets : {0, 1, 5}) {
        raster(40, 30);
        Growth growth;
        scene();
        const float box[6] = {0, 40, 0, 30, 0.1f, 0.9f};
        zebProcedural(&growth, box, build, release);
        const float late[6] = {30, 40, 25, 30, 0.1f, 0.9f};
        Growth unseen;
        zebProcedural(&unseen, late, build, release);
        zebRenderInit();
        for (int k = 0; k < buckets; ++k) zebRenderBucket();
        zebReset();
        EXPECT_EQ(zebProgress(), 0);
        EXPECT_EQ(growth.freed, 1);
        EXPECT_EQ(unseen.freed, 1);
        EXPECT_EQ(picture.opened, picture.closed);
    }
    EXPECT_TRUE(reports.empty());
    // And everything is as at the start.
    zebFrameBegin();
    zebFrameEnd();
    EXPECT_TRUE(reports.empty());
}

namespace
{

std::string gLeaving;  // who was told to go, in order: a letter each

// A world whose device and two procedurals, one of them in an object, say when they go.
void beginLeaving()
{
    gLeaving.clear();
    ZebDisplay device{};
    device.close = [](void*) { gLeaving += 'd'; };
    zebCustomDisplay(&device);
    zebSceneBegin();
    const auto add = [](ZebFreeFunction leave) {
        zebProcedural(
            nullptr, kBox, [](void*, float) {}, leave);
    };
    add([](void*) { gLeaving += 's'; });
    zebObjectBegin();
    add([](void*) { gLeaving += 'o'; });
    zebObjectEnd();
}

}  // namespace

TEST_F(Lifecycle, AtTheWorldsEndTheDeviceGoesLast)
{
    raster(12, 12);
    beginLeaving();
    zebSceneEnd();
    EXPECT_EQ(gLeaving, "sod") << "rendered, objects released, closed";
}

TEST_F(Lifecycle, InAResetTheDeviceGoesLast)
{
    raster(12, 12);
    beginLeaving();
    zebReset();
    EXPECT_EQ(gLeaving, "osd") << "stacks emptied, scene flushed, closed";
}

// By then the default screen window, whose middle is (0, 0), is mapped to 640 x 480 pixels.
TEST_F(Lifecycle, WhatGoesInAResetFindsTheStartingState)
{
    static ZebPoint middle;
    static short block;
    for (const bool inObject : {false, true}) {
        raster(12, 12);
        zebTranslate(5, 6, 7);
        zebSceneBegin();
        if (inObject) zebObjectBegin();
        middle[0] = middle[1] = 0;
        block = 0;
        zebProcedural(
            nullptr, kBox, [](void*, float) {},
            [](void*) {
                zebProjectPoints(zebQuark("world"), zebQuark("raster"), 1, &middle);
                block = 1;
                zebSceneBegin();
                zebAttributePush();
            });
        reports.clear();
        zebReset();
        EXPECT_EQ(block, 1);
        EXPECT_EQ(middle[0], 320);
        EXPECT_EQ(middle[1], 240);
        ASSERT_EQ(reports.size(), 1u) << "it is no place to begin a world at";
        EXPECT_EQ(reports[0], (Report{8, ZEB_ERROR, "zebSceneBegin"}));
        reports.clear();
        zebFrameBegin();
        zebFrameEnd();
        EXPECT_TRUE(reports.empty()) << "and no block is left open";
    }
}

TEST_F(Lifecycle, WhatGoesAtTheWorldsEndIsStillInIt)
{
    raster(12, 12);
    ZebDisplay device{};
    device.close = [](void*) {
        zebMatrixPush();
        zebFrameBegin();
    };
    zebCustomDisplay(&device);
    zebSceneBegin();
    zebObjectBegin();
    zebProcedural(
        nullptr, kBox, [](void*, float) {},
        [](void*) {
            zebAttributePush();
            zebObjectBegin();
            zebFrameBegin();
        });
    zebObjectEnd();
    zebSceneEnd();
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0], (Report{8, ZEB_ERROR, "zebFrameBegin"}));
    EXPECT_EQ(reports[1], reports[0]);
    reports.clear();
    zebFrameBegin();
    zebFrameEnd();
    EXPECT_TRUE(reports.empty()) << "the blocks left open are closed";
}

TEST_F(Lifecycle, AnObjectLeftOpenIsClosedBeforeItGoes)
{
    raster(12, 12);
    ZebDisplay device{};
    device.flush = [](void*, long, long) {
        zebObjectBegin();
        zebProcedural(
            nullptr, kBox, [](void*, float) {}, [](void*) { zebDisk(0, 1, 360, 0); });
    };
    zebCustomDisplay(&device);
    zebSceneBegin();
    zebSceneEnd();
    ASSERT_EQ(reports.size(), 1u) << "it takes no member any more";
    EXPECT_EQ(reports[0], (Report{7, ZEB_ERROR, "zebDisk"}));
}

TEST_F(Lifecycle, WorldsFollowOneAnother)
{
    std::vector<std::uint32_t> first;
    raster(40, 30);
    for (int k = 0; k < 4; ++k) {
        scene();
        zebSceneEnd();
        if (k == 0) first = picture.words();
        EXPECT_EQ(picture.words(), first) << k;
    }
    EXPECT_EQ(picture.opened, 4);
    EXPECT_EQ(picture.closed, 4);
}

TEST_F(Lifecycle, AFrameGivesItsOptionsBack)
{
    raster(40, 30);
    zebFrameBegin();
    zebRasterViewport(0, 20, 0, 10);
    scene();
    zebSceneEnd();
    EXPECT_EQ(picture.width, 20);
    zebFrameEnd();
    scene();
    zebSceneEnd();
    EXPECT_EQ(picture.width, 40);
    EXPECT_EQ(picture.height, 30);
}

TEST_F(Lifecycle, AnUnsetResolutionIsTheDevices)
{
    picture.attachFloat();
    zebOutputSamples(ZEB_SAMPLES_RGBAZ);
    zebSceneBegin();
    zebSceneEnd();
    EXPECT_EQ(picture.width, 640);
    EXPECT_EQ(picture.height, 480);
}

TEST_F(Lifecycle, AProceduralBuildsUnderItsOwnAttributes)
{
    raster(12, 12);
    beginFlat();
    Growth growth;
    zebAttributePush();
    color(1, 0, 0);
    zebTranslate(1, 2, 0);
    zebProcedural(&growth, kBox, build, release);
    zebAttributePop();
    color(0, 1, 0);
    zebSceneEnd();
    EXPECT_EQ(growth.built, 1);
    EXPECT_EQ(growth.freed, 1);
    EXPECT_EQ(growth.detail, 16) << "the bound's area in pixels";
    EXPECT_EQ(red(5, 6), 1);
    EXPECT_EQ(green(5, 6), 0);
    EXPECT_EQ(alpha(2, 2), 0) << "moved with its transformation";
}

TEST_F(Lifecycle, AttributesSetInAProceduralStayInIt)
{
    raster(24, 12);
    beginFlat();
    color(1, 0, 0);
    Growth growth;
    zebProcedural(
        &growth, kBox,
        [](void*, float) {
            color(0, 0, 1);
            zebTranslate(1, 0, 0);
            zebMatrixPush();
            rectangle(2, 2, 6, 6, 0.5f);
        },
        release);
    rectangle(12, 2, 20, 6, 0.5f);
    zebSceneEnd();
    EXPECT_EQ(blue(5, 4), 1);
    EXPECT_EQ(red(15, 4), 1) << "made under the same record, before the procedural ran";
    EXPECT_TRUE(reports.empty()) << "the block left open is closed";
}

TEST_F(Lifecycle, AnUnseenProceduralIsNeverBuiltButFreed)
{
    raster(12, 12);
    beginFlat();
    Growth growth;
    const float away[6] = {100, 110, 0, 5, 0.2f, 0.5f};
    zebProcedural(&growth, away, build, release);
    EXPECT_EQ(growth.freed, 1);
    zebSceneEnd();
    EXPECT_EQ(growth.built, 0);
    EXPECT_EQ(growth.freed, 1);
}

TEST_F(Lifecycle, AProceduralAcrossTheEyePlaneHasInfiniteDetail)
{
    zebRasterViewport(0, 16, 0, 16);
    zebViewPerspective(90);
    picture.attachFloat();
    zebOutputSamples(ZEB_SAMPLES_RGBAZ);
    beginFlat();
    Growth growth;
    const float across[6] = {-1, 1, -1, 1, -1, 5};
    zebProcedural(
        &growth, across,
        [](void* data, float detail) {
            static_cast<Growth*>(data)->detail = detail;
            rectangle(-10, -10, 10, 10, 4);
        },
        release);
    zebSceneEnd();
    EXPECT_EQ(growth.detail, 1e38f);
    EXPECT_EQ(alpha(8, 8), 1);
}

TEST_F(Lifecycle, ProceduralsNest)
{
    raster(64, 64);
    beginFlat();
    // Each halves its square until it is a pixel wide.
    struct Square {
        float x, y, size;
    };
    static int alive;
    alive = 0;
    static const auto grow = [](const Square& s, auto subdivide) {
        const float box[6] = {s.x, s.x + s.size, s.y, s.y + s.size, 0.5f, 0.5f};
        ++alive;
        zebProcedural(new Square(s), box, subdivide, [](void* data) {
            --alive;
            delete static_cast<Square*>(data);
        });
    };
    struct Recursion {
        static void subdivide(void* data, float detail)
        {
            const Square s = *static_cast<Square*>(data);
            if (detail <= 4) {
                rectangle(s.x, s.y, s.x + s.size, s.y + s.size, 0.5f);
                return;
            }
            const float h = s.size / 2;
            for (const float dx : {0.0f, h}) {
                for (const float dy : {0.0f, h}) grow({s.x + dx, s.y + dy, h}, subdivide);
            }
        }
    };
    grow({0, 0, 64}, Recursion::subdivide);
    zebSceneEnd();
    EXPECT_EQ(alive, 0);
    for (long y = 1; y < 63; ++y) {
        for (long x = 1; x < 63; ++x) EXPECT_EQ(alpha(x, y), 1);
    }
}

TEST_F(Lifecycle, InstancesShareWhatTheLastCallSaysUnlessTheQuirksAreOff)
{
    for (const short quirks : {1, 0}) {
        zebReset();
        raster(36, 12);
        zebQuirks(quirks);
        beginFlat();
        const void* object = zebObjectBegin();
        rectangle(2, 2, 10, 10, 0.5f);
        zebObjectEnd();
        const float colors[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
        for (int k = 0; k < 3; ++k) {
            zebAttributePush();
            zebColor(colors[k]);
            zebTranslate(12 * static_cast<float>(k), 0, 0);
            zebObjectCall(object);
            zebAttributePop();
        }
        zebSceneEnd();
        if (quirks) {
            EXPECT_EQ(alpha(6, 6), 0) << "the first call's place is taken by the last";
            EXPECT_EQ(blue(30, 6), 1);
            EXPECT_EQ(red(30, 6), 0);
        } else {
            EXPECT_EQ(red(6, 6), 1);
            EXPECT_EQ(green(18, 6), 1);
            EXPECT_EQ(blue(30, 6), 1);
        }
        EXPECT_TRUE(reports.empty());
    }
}

TEST_F(Lifecycle, AnObjectHoldsOneKindOfPrimitive)
{
    raster(12, 12);
    beginFlat();
    zebObjectBegin();
    rectangle(2, 2, 10, 10, 0.5f);
    const long sizes[1] = {3};
    const Vec p[3] = {{0, 0, 0.5f}, {1, 0, 0.5f}, {0, 1, 0.5f}};
    zebGeneralPolygon(1, sizes, zebQuark("point"), p, 0);
    zebObjectEnd();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 11);
    EXPECT_EQ(reports[0].message,
              "zebGeneralPolygon: all object primitives must be of the same type");
    zebSceneEnd();
    EXPECT_EQ(picture.sum(3), 0) << "an object alone is not drawn";
}

TEST_F(Lifecycle, AnObjectOfAFrameServesItsWorlds)
{
    raster(12, 12);
    zebFrameBegin();
    const void* object = zebObjectBegin();
    rectangle(2, 2, 10, 10, 0.5f);
    zebObjectEnd();
    for (int k = 0; k < 2; ++k) {
        beginFlat();
        // The definition was made outside the world, where the raster's transformation was reset.
        zebObjectCall(object);
        zebSceneEnd();
        EXPECT_EQ(alpha(6, 6), 1) << k;
    }
    zebFrameEnd();
    reports.clear();
    beginFlat();
    zebObjectCall(object);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 10);
    zebSceneEnd();
}

TEST_F(Lifecycle, PrimitivesOutsideAWorldAreRefused)
{
    rectangle(0, 0, 1, 1, 1);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0], (Report{7, ZEB_ERROR, "zebPolygon"}));
}

TEST_F(Lifecycle, PrimitivesAfterTheLastBucketAreRefused)
{
    raster(12, 12);
    beginFlat();
    zebRenderInit();
    EXPECT_EQ(zebRenderBucket(), 0);
    rectangle(0, 0, 12, 12, 0.5f);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0], (Report{7, ZEB_ERROR, "zebPolygon"}));
    zebSceneEnd();
}

TEST_F(Lifecycle, HandlesThatAreNotLiveAreNamed)
{
    const auto* handle = reinterpret_cast<const void*>(0x1A2B);
    raster(40, 30);
    beginFlat();
    zebObjectCall(handle);
    zebLightSwitch(handle, 1);
    zebSceneEnd();
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0].message, "zebObjectCall: object handle 0x1a2b is not live");
    EXPECT_EQ(reports[1].message, "zebLightSwitch: light handle 0x1a2b is not live");
}

}  // namespace zebtest
