// Which call is legal in which block: every exported function against every kind of block.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "state/state.h"
#include "support/reports.h"
#include "zebcore/zebcore.h"

namespace zeb
{

namespace
{

float square[12] = {0, 0, 5, 1, 0, 5, 1, 1, 5, 0, 1, 5};
float white[3] = {1, 1, 1};
float box[6] = {-1, 1, -1, 1, 4, 6};
float knots[8] = {0, 0, 0, 0, 1, 1, 1, 1};
ZebMatrix identity = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
const long quad[1] = {4};
const long loops[1] = {1};
const long corners[4] = {0, 1, 2, 3};
const unsigned short pointToken[1] = {1};
void* const pointValue[1] = {square};

void emptySubdivide(void*, float) {}
void emptyFree(void*) {}
void shadeNothing(void*, ZebRow*) {}
const ZebShader shader = {nullptr, shadeNothing, nullptr, 0};
float boxFilter(float, float, float, float) { return 1; }

constexpr unsigned short kAnywhere = 255;
constexpr unsigned short kOptions = 3, kBegins = 63, kAttribs = 191, kPrimitives = 252;

struct Call {
    const char* name;
    unsigned short mask;
    long code;
    std::function<void()> call;
    // The name that messages carry: another one for the two halves of the world's end.
    const char* says = nullptr;
};

const std::vector<Call>& calls()
{
    static const std::vector<Call> table = {
        {"zebQuark", kAnywhere, 0, [] { zebQuark("legality"); }},
        {"zebFrameBegin", 1, 8, [] { zebFrameBegin(); }},
        {"zebFrameEnd", 2, 4, [] { zebFrameEnd(); }},
        {"zebSceneBegin", 3, 8, [] { zebSceneBegin(); }},
        {"zebSceneEnd", 4, 4, [] { zebSceneEnd(); }},
        {"zebRasterViewport", kOptions, 5, [] { zebRasterViewport(0, 8, 0, 8); }},
        {"zebRasterAspect", kOptions, 5, [] { zebRasterAspect(1); }},
        {"zebImageWindow", kOptions, 5, [] { zebImageWindow(-1, 1, -1, 1); }},
        {"zebImageAspect", kOptions, 5, [] { zebImageAspect(1); }},
        {"zebImageCrop", kOptions, 5, [] { zebImageCrop(0, 1, 0, 1); }},
        {"zebViewOrthographic", kOptions, 5, [] { zebViewOrthographic(); }},
        {"zebViewPerspective", kOptions, 5, [] { zebViewPerspective(40); }},
        {"zebViewIdentity", kOptions, 5, [] { zebViewIdentity(); }},
        {"zebClip", kOptions, 5, [] { zebClip(1, 10); }},
        {"zebSampleAdaptive", kOptions, 5, [] { zebSampleAdaptive(0.1f); }},
        {"zebSampleUniform", kOptions, 5, [] { zebSampleUniform(1, 1); }},
        {"zebSampleJitter", kOptions, 5, [] { zebSampleJitter(0); }},
        {"zebFilter", kOptions, 5, [] { zebFilter(ZEB_FILTER_BOX); }},
        {"zebCustomFilter", kOptions, 5, [] { zebCustomFilter(boxFilter); }},
        {"zebFilterWidth", kOptions, 5, [] { zebFilterWidth(1, 1); }},
        {"zebColorGain", kOptions, 5, [] { zebColorGain(1); }},
        {"zebColorGamma", kOptions, 5, [] { zebColorGamma(1); }},
        {"zebColorQuantize", kOptions, 5, [] { zebColorQuantize(255, 0, 255); }},
        {"zebColorJitter", kOptions, 5, [] { zebColorJitter(0); }},
        {"zebDepthQuantize", kOptions, 5, [] { zebDepthQuantize(0, 0, 0); }},
        {"zebDepthJitter", kOptions, 5, [] { zebDepthJitter(0); }},
        {"zebOutputDisplay", kOptions, 5, [] { zebOutputDisplay("window"); }},
        {"zebOutputFile", kOptions, 5, [] { zebOutputFile(ZEB_FILE_PNG, "never-written.png"); }},
        {"zebOutputSamples", kOptions, 5, [] { zebOutputSamples(ZEB_SAMPLES_RGB); }},
        {"zebHider", kOptions, 5, [] { zebHider(ZEB_HIDER_HIDDEN); }},
        {"zebColorSpace", kOptions, 5, [] { zebColorSpace(1, white, white); }},
        {"zebTune", kOptions, 5, [] { zebTune(32, 12, 12); }},
        {"zebAttributePush", kBegins, 8, [] { zebAttributePush(); }},
        {"zebAttributePop", 8, 4, [] { zebAttributePop(); }},
        {"zebColor", kAttribs, 6, [] { zebColor(white); }},
        {"zebOpacity", kAttribs, 6, [] { zebOpacity(white); }},
        {"zebShadingRate", kAttribs, 6, [] { zebShadingRate(1); }},
        {"zebShadingModel", kAttribs, 6, [] { zebShadingModel(ZEB_SMOOTH); }},
        {"zebMatteObject", kAttribs, 6, [] { zebMatteObject(0); }},
        {"zebLightSource", kAttribs, 6, [] { zebLightSource(17, 0); }},
        {"zebLightSourceV", kAttribs, 6, [] { zebLightSourceV(17, 0, nullptr, nullptr); }},
        {"zebLightSwitch", kAttribs, 6, [] { zebLightSwitch(nullptr, 0); }},
        {"zebSurface", kAttribs, 6, [] { zebSurface(9, 0); }},
        {"zebSurfaceV", kAttribs, 6, [] { zebSurfaceV(9, 0, nullptr, nullptr); }},
        {"zebAtmosphere", kAttribs, 6, [] { zebAtmosphere(28, 0); }},
        {"zebAtmosphereV", kAttribs, 6, [] { zebAtmosphereV(28, 0, nullptr, nullptr); }},
        {"zebBound", kAttribs, 6, [] { zebBound(box); }},
        {"zebFlatness", kAttribs, 6, [] { zebFlatness(1); }},
        {"zebOrientation", kAttribs, 6, [] { zebOrientation(ZEB_OUTSIDE); }},
        {"zebBackface", kAttribs, 6, [] { zebBackface(2); }},
        {"zebBoundDisplacement", kAttribs, 6, [] { zebBoundDisplacement(0); }},
        {"zebObjectName", kAttribs, 6, [] { zebObjectName("object"); }},
        {"zebGroupName", kAttribs, 6, [] { zebGroupName("group"); }},
        {"zebBasis", kAttribs, 6, [] { zebBasis(ZEB_BASIS_BEZIER, ZEB_APPLY_BOTH); }},
        {"zebCustomBasis", kAttribs, 6, [] { zebCustomBasis(ZEB_APPLY_BOTH, identity, 1); }},
        {"zebMatrixPush", kBegins, 8, [] { zebMatrixPush(); }},
        {"zebMatrixPop", 16, 4, [] { zebMatrixPop(); }},
        {"zebLoadIdentity", kAttribs, 6, [] { zebLoadIdentity(); }},
        {"zebLoadMatrix", kAttribs, 6, [] { zebLoadMatrix(identity); }},
        {"zebMultMatrix", kAttribs, 6, [] { zebMultMatrix(identity); }},
        {"zebPerspective", kAttribs, 6, [] { zebPerspective(40); }},
        {"zebTranslate", kAttribs, 6, [] { zebTranslate(0, 0, 1); }},
        {"zebRotate", kAttribs, 6, [] { zebRotate(10, 0, 0, 1); }},
        {"zebScale", kAttribs, 6, [] { zebScale(1, 1, 1); }},
        {"zebSkew", kAttribs, 6, [] { zebSkew(10, 1, 0, 0, 0, 1, 0); }},
        {"zebMarkSpace", kBegins, 8, [] { zebMarkSpace(zebQuark("here")); }},
        {"zebProjectPoints", kBegins, 8, [] { zebProjectPoints(32, 32, 0, nullptr); }},
        {"zebPolygon", kPrimitives, 7, [] { zebPolygon(4, 1, square, 0); }},
        {"zebPolygonV", kPrimitives, 7, [] { zebPolygonV(4, 1, pointToken, pointValue); }},
        {"zebGeneralPolygon", kPrimitives, 7, [] { zebGeneralPolygon(1, quad, 1, square, 0); }},
        {"zebGeneralPolygonV", kPrimitives, 7,
         [] { zebGeneralPolygonV(1, quad, 1, pointToken, pointValue); }},
        {"zebPolygonMesh", kPrimitives, 7, [] { zebPolygonMesh(1, quad, corners, 1, square, 0); }},
        {"zebPolygonMeshV", kPrimitives, 7,
         [] { zebPolygonMeshV(1, quad, corners, 1, pointToken, pointValue); }},
        {"zebGeneralPolygonMesh", kPrimitives, 7,
         [] { zebGeneralPolygonMesh(1, loops, quad, corners, 1, square, 0); }},
        {"zebGeneralPolygonMeshV", kPrimitives, 7,
         [] { zebGeneralPolygonMeshV(1, loops, quad, corners, 1, pointToken, pointValue); }},
        {"zebPatch", kPrimitives, 7, [] { zebPatch(ZEB_BILINEAR, 1, square, 0); }},
        {"zebPatchV", kPrimitives, 7, [] { zebPatchV(ZEB_BILINEAR, 1, pointToken, pointValue); }},
        {"zebPatchMesh", kPrimitives, 7,
         [] { zebPatchMesh(ZEB_BILINEAR, 2, ZEB_NONPERIODIC, 2, ZEB_NONPERIODIC, 1, square, 0); }},
        {"zebPatchMeshV", kPrimitives, 7,
         [] {
             zebPatchMeshV(ZEB_BILINEAR, 2, ZEB_NONPERIODIC, 2, ZEB_NONPERIODIC, 1, pointToken,
                           pointValue);
         }},
        {"zebNurb", kPrimitives, 7, [] { zebNurb(2, knots, 0, 1, 2, knots, 0, 1, 1, square, 0); }},
        {"zebNurbV", kPrimitives, 7,
         [] { zebNurbV(2, knots, 0, 1, 2, knots, 0, 1, 1, pointToken, pointValue); }},
        {"zebNurbMesh", kPrimitives, 7,
         [] { zebNurbMesh(2, 2, knots, 0, 1, 2, 2, knots, 0, 1, 1, square, 0); }},
        {"zebNurbMeshV", kPrimitives, 7,
         [] { zebNurbMeshV(2, 2, knots, 0, 1, 2, 2, knots, 0, 1, 1, pointToken, pointValue); }},
        {"zebSphere", kPrimitives, 7, [] { zebSphere(1, -1, 1, 360, 0); }},
        {"zebSphereV", kPrimitives, 7, [] { zebSphereV(1, -1, 1, 360, 0, nullptr, nullptr); }},
        {"zebCone", kPrimitives, 7, [] { zebCone(1, 1, 1, 360, 0); }},
        {"zebConeV", kPrimitives, 7, [] { zebConeV(1, 1, 1, 360, 0, nullptr, nullptr); }},
        {"zebCylinder", kPrimitives, 7, [] { zebCylinder(1, 0, 1, 360, 0); }},
        {"zebCylinderV", kPrimitives, 7, [] { zebCylinderV(1, 0, 1, 360, 0, nullptr, nullptr); }},
        {"zebHyperboloid", kPrimitives, 7, [] { zebHyperboloid(square, square + 3, 360, 0); }},
        {"zebHyperboloidV", kPrimitives, 7,
         [] { zebHyperboloidV(square, square + 3, 360, 0, nullptr, nullptr); }},
        {"zebParaboloid", kPrimitives, 7, [] { zebParaboloid(1, 0, 1, 360, 0); }},
        {"zebParaboloidV", kPrimitives, 7,
         [] { zebParaboloidV(1, 0, 1, 360, 0, nullptr, nullptr); }},
        {"zebDisk", kPrimitives, 7, [] { zebDisk(0, 1, 360, 0); }},
        {"zebDiskV", kPrimitives, 7, [] { zebDiskV(0, 1, 360, 0, nullptr, nullptr); }},
        {"zebTorus", kPrimitives, 7, [] { zebTorus(2, 1, 0, 360, 360, 0); }},
        {"zebTorusV", kPrimitives, 7, [] { zebTorusV(2, 1, 0, 360, 360, 0, nullptr, nullptr); }},
        {"zebProcedural", 124, 7, [] { zebProcedural(nullptr, box, emptySubdivide, emptyFree); }},
        {"zebObjectBegin", kBegins, 8, [] { zebObjectBegin(); }},
        {"zebObjectEnd", 64, 4, [] { zebObjectEnd(); }},
        {"zebObjectCall", 60, 7, [] { zebObjectCall(nullptr); }},
        {"zebMotionBegin", kBegins, 8, [] { zebMotionBegin(1, 0.0); }},
        {"zebMotionBeginV", kBegins, 8, [] { zebMotionBeginV(1, white); }},
        {"zebMotionEnd", 128, 4, [] { zebMotionEnd(); }},
        {"zebErrorHandler", kAnywhere, 0, [] { zebErrorHandler(0xB00, ZEB_ERROR_PRINT); }},
        {"zebCustomErrorHandler", kAnywhere, 0, [] { zebCustomErrorHandler(0xB00, nullptr); }},
        {"zebErrorPrinter", kAnywhere, 0, [] { zebErrorPrinter(nullptr); }},
        {"zebLastError", kAnywhere, 0, [] { zebLastError(); }},
        {"zebComment", kAnywhere, 0, [] { zebComment("any text %s %n"); }},
        {"zebReset", kAnywhere, 0, [] { zebReset(); }},
        {"zebRenderInit", kAnywhere, 0, [] { zebRenderInit(); }},
        {"zebRenderBucket", kAnywhere, 0, [] { zebRenderBucket(); }},
        {"zebProgress", kAnywhere, 0, [] { zebProgress(); }},
        {"zebCustomDisplay", kOptions, 5, [] { zebCustomDisplay(nullptr); }},
        {"zebDeclare", kAnywhere, 0, [] { zebDeclare("typed", ZEB_UNIFORM, ZEB_FLOAT); }},
        {"zebArray", kAnywhere, 0, [] { zebArray(white, 1, 0); }},
        {"zebQuirks", kOptions, 5, [] { zebQuirks(1); }},
        {"zebLookAt", kAttribs, 6, [] { zebLookAt(white, box, white); }},
        {"zebSpheres", kPrimitives, 7, [] { zebSpheres(1, white, white, 0); }},
        {"zebSpheresV", kPrimitives, 7, [] { zebSpheresV(1, white, white, 0, nullptr, nullptr); }},
        {"zebCancel", kAnywhere, 0, [] { zebCancel(); }},
        {"zebProgressCallback", kOptions, 5, [] { zebProgressCallback(nullptr, nullptr); }},
        {"zebDepthNearest", kOptions, 5, [] { zebDepthNearest(0); }},
        {"zebThreads", kOptions, 5, [] { zebThreads(2); }},
        {"zebCustomSurface", kAttribs, 6, [] { zebCustomSurface(&shader); }},
        {"zebCustomAtmosphere", kAttribs, 6, [] { zebCustomAtmosphere(&shader); }},
        {"zebCustomLight", kAttribs, 6, [] { zebCustomLight(&shader); }},
        {"zebCustomDisplacement", kAttribs, 6, [] { zebCustomDisplacement(&shader); }},
        {"zebTextureCoordinates", kAttribs, 6,
         [] { zebTextureCoordinates(0, 0, 1, 0, 0, 1, 1, 1); }},
        {"zebImage", kAnywhere, 0, [] { zebImageFree(zebImage(1, 1, 1, white, ZEB_IMAGE_CLAMP)); }},
        {"zebImageFree", kAnywhere, 0, [] { zebImageFree(nullptr); }},
        {"zebWindowEvents", kAnywhere, 0, [] { zebWindowEvents(0); }},
        {"zebVersion", kAnywhere, 0, [] { zebVersion(); }},
    };
    return table;
}

// Opens a block of the kind, in the shortest legal way.
void enter(unsigned short block)
{
    zebReset();
    zebRasterViewport(0, 8, 0, 8);
    const ZebDisplay nothing{};
    zebCustomDisplay(&nothing);
    if (block == kOutsideBlocks) return;
    if (block == kFrameBlock) {
        zebFrameBegin();
        return;
    }
    zebSceneBegin();
    switch (block) {
        case kAttributeBlock:
            zebAttributePush();
            break;
        case kMatrixBlock:
            zebMatrixPush();
            break;
        case kSolidBlock:
            gState->solidBegin();
            break;
        case kObjectBlock:
            zebObjectBegin();
            break;
        case kMotionBlock:
            zebMotionBegin(1, 0.0);
            break;
        default:
            break;
    }
}

bool isStateCode(long code) { return code >= 4 && code <= 8; }

}  // namespace

TEST(Legality, EveryCallInEveryBlock)
{
    zebtest::Reports reports;
    for (unsigned short block = 1; block <= kMotionBlock;
         block = static_cast<unsigned short>(block * 2)) {
        for (const Call& call : calls()) {
            SCOPED_TRACE(std::string(call.name) + " in block " + std::to_string(block));
            enter(block);
            ASSERT_EQ(gState->block(), block);
            reports.clear();
            call.call();
            std::vector<zebtest::Report> refusals;
            for (std::size_t i = 0; i < reports.size(); ++i) {
                if (isStateCode(reports[i].code)) refusals.push_back(reports[i]);
            }
            if (call.mask & block) {
                EXPECT_TRUE(refusals.empty());
                continue;
            }
            ASSERT_EQ(refusals.size(), 1u);
            EXPECT_EQ(reports.size(), 1u) << "a refused call looks at nothing else";
            EXPECT_EQ(refusals[0], (zebtest::Report{call.code, ZEB_ERROR, call.name}));
            EXPECT_EQ(gState->block(), block);
        }
    }
    zebReset();
}

// On the caller's thread, and on others.
TEST(Legality, NoCallButThoseForRowsFromAFunctionThatShades)
{
    zebtest::Reports reports;
    static int refused;
    for (const long flags : {0, ZEB_SHADE_ANYWHERE}) {
        refused = 0;
        enter(kOutsideBlocks);
        zebThreads(4);
        zebSceneBegin();
        ZebShader all = shader;
        all.flags = flags;
        all.shade = [](void*, ZebRow*) {
            for (const Call& call : calls()) {
                const std::string name = call.name;
                if (name == "zebCancel" || name == "zebVersion" || name == "zebComment") continue;
                call.call();
                ++refused;
            }
        };
        zebCustomSurface(&all);
        reports.clear();
        zebPolygon(4, zebQuark("point"), square, 0);
        zebSceneEnd();
        ASSERT_GT(refused, 0) << "it was called";
        // Of an image that was refused, another call is told that it is none.
        EXPECT_GE(reports.size(), static_cast<std::size_t>(refused));
        for (std::size_t k = 0; k < reports.size(); ++k) {
            EXPECT_EQ(reports[k].code, 8) << reports[k].message;
        }
    }
    zebReset();
}

TEST(Legality, SolidBlocksOpenInWorldsAndWhatNestsInThem)
{
    zebtest::Reports reports;
    for (unsigned short block = 1; block <= kMotionBlock;
         block = static_cast<unsigned short>(block * 2)) {
        enter(block);
        reports.clear();
        const bool legal = (60 & block) != 0;
        EXPECT_EQ(gState->solidBegin() != 0, legal) << block;
        if (!legal) {
            EXPECT_EQ(reports.last().code, 8);
        }
        enter(block);
        reports.clear();
        EXPECT_EQ(gState->solidEnd() != 0, block == kSolidBlock) << block;
        if (block != kSolidBlock) {
            EXPECT_EQ(reports.last().code, 4);
        }
    }
    zebReset();
}

TEST(Legality, OfTheCallsInAMotionBlockOnlyTheFirstCounts)
{
    zebtest::Reports reports;
    for (const Call& call : calls()) {
        const bool counts =
            (call.mask & kMotionBlock) && call.mask != kAnywhere && call.mask != kMotionBlock;
        if (!counts) continue;
        SCOPED_TRACE(call.name);
        enter(kMotionBlock);
        zebTranslate(1, 0, 0);
        reports.clear();
        call.call();
        EXPECT_TRUE(reports.empty()) << "ignored without a message";
        zebMotionEnd();
        EXPECT_EQ(gState->block(), kWorldBlock);
    }
    enter(kMotionBlock);
    zebTranslate(1, 0, 0);
    zebTranslate(0, 1, 0);
    zebMotionEnd();
    const double(&row)[4] = gTransform->matrix().m[3];
    EXPECT_EQ(row[0], 1);
    EXPECT_EQ(row[1], 0);
    zebReset();
}

TEST(Legality, TheTableListsEveryExportedFunction)
{
    // The header is the source of truth; see the test of the symbol table for the library's side.
    EXPECT_EQ(calls().size(), 133u);
}

}  // namespace zeb
