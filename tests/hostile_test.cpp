// What can't be rendered is reported once, by the name of its call, and leaves no trace.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "support/picture.h"
#include "support/reports.h"
#include "zebcore/zebcore.h"

namespace
{

using zebtest::Picture;
using zebtest::Reports;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr long kAbsurd = (1L << 27) + 1;

const float gSquare[12] = {-1, -1, 3, 1, -1, 3, 1, 1, 3, -1, 1, 3};
const float gHoled[12] = {-1, -1, 3, 1, -1, 3, 1, kNan, 3, -1, 1, 3};
const float gBound[6] = {-1, 1, -1, 1, 2, 4};
const float gBadBound[6] = {-1, 1, -1, kInf, 2, 4};
const float gBadColor[3] = {1, kNan, 1};
const float gGray[3] = {1, 1, 1};
const long gQuad[1] = {4};
const long gIndices[4] = {0, 1, 2, 3};
ZebMatrix gBadMatrix = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, kNan, 0}, {0, 0, 0, 1}};
ZebMatrix gIdentity = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

unsigned short point() { return zebQuark("point"); }
void nothing(void*, float) {}

struct Refusal {
    std::string what;  // begins with the function's name
    std::function<void()> call;
    long code = 10;
    std::string name() const { return what.substr(0, what.find(' ')); }
};

using Refusals = std::vector<Refusal>;

// One refusal for NaN and one for infinity in every place of a call's floats.
template <std::size_t Count>
void addFloats(Refusals& table, const std::string& name, void (*call)(const float (&)[Count]))
{
    for (std::size_t place = 0; place < Count; ++place) {
        for (const float bad : {kNan, kInf, -kInf}) {
            table.push_back(
                {name + " argument " + std::to_string(place) + " " + std::to_string(bad), [=] {
                     float v[Count];
                     for (float& each : v) each = 0.5f;
                     v[place] = bad;
                     call(v);
                 }});
        }
    }
}

Refusals badFloatOptions()
{
    Refusals t;
    using F1 = const float(&)[1];
    using F2 = const float(&)[2];
    using F4 = const float(&)[4];
    addFloats<1>(t, "zebRasterAspect", [](F1 v) { zebRasterAspect(v[0]); });
    addFloats<4>(t, "zebImageWindow", [](F4 v) { zebImageWindow(v[0], v[1], v[2], v[3]); });
    addFloats<1>(t, "zebImageAspect", [](F1 v) { zebImageAspect(v[0]); });
    addFloats<4>(t, "zebImageCrop", [](F4 v) { zebImageCrop(v[0], v[1], v[2], v[3]); });
    addFloats<1>(t, "zebSampleAdaptive", [](F1 v) { zebSampleAdaptive(v[0]); });
    addFloats<2>(t, "zebSampleUniform", [](F2 v) { zebSampleUniform(v[0], v[1]); });
    addFloats<1>(t, "zebSampleJitter", [](F1 v) { zebSampleJitter(v[0]); });
    addFloats<2>(t, "zebFilterWidth", [](F2 v) { zebFilterWidth(v[0], v[1]); });
    addFloats<1>(t, "zebColorGain", [](F1 v) { zebColorGain(v[0]); });
    addFloats<1>(t, "zebColorGamma", [](F1 v) { zebColorGamma(v[0]); });
    addFloats<1>(t, "zebColorJitter", [](F1 v) { zebColorJitter(v[0]); });
    addFloats<1>(t, "zebDepthJitter", [](F1 v) { zebDepthJitter(v[0]); });
    return t;
}

Refusals badOptions()
{
    Refusals t = badFloatOptions();
    const Refusals more = {
        {"zebRasterViewport width", [] { zebRasterViewport(0, 1L << 30, 0, 8); }},
        {"zebRasterViewport height", [] { zebRasterViewport(0, 8, 0, kAbsurd); }},
        {"zebSampleUniform absurd", [] { zebSampleUniform(1e9f, 2); }},
        {"zebSampleJitter negative", [] { zebSampleJitter(-0.5f); }},
        {"zebFilter unknown", [] { zebFilter(1); }},
        {"zebCustomFilter null", [] { zebCustomFilter(nullptr); }},
        {"zebFilterWidth zero", [] { zebFilterWidth(0, 2); }},
        {"zebFilterWidth negative", [] { zebFilterWidth(2, -1); }},
        {"zebFilterWidth absurd", [] { zebFilterWidth(1e6f, 2); }},
        {"zebColorGamma zero", [] { zebColorGamma(0); }},
        {"zebColorGamma negative", [] { zebColorGamma(-1); }},
        {"zebOutputFile kind", [] { zebOutputFile(7, "never-written.png"); }},
        {"zebOutputFile null", [] { zebOutputFile(ZEB_FILE_PNG, nullptr); }},
        {"zebOutputFile empty", [] { zebOutputFile(ZEB_FILE_PNG, ""); }},
        {"zebOutputSamples none", [] { zebOutputSamples(0x300); }},
        {"zebOutputSamples unknown", [] { zebOutputSamples(0x308); }},
        {"zebOutputSamples bit 15", [] { zebOutputSamples(static_cast<short>(0x8307)); }},
        {"zebColorSpace zero", [] { zebColorSpace(0, gGray, gGray); }},
        {"zebColorSpace negative", [] { zebColorSpace(-1, gGray, gGray); }},
        {"zebColorSpace absurd", [] { zebColorSpace(kAbsurd, gGray, gGray); }},
        {"zebColorSpace null in", [] { zebColorSpace(1, nullptr, gGray); }},
        {"zebColorSpace null out", [] { zebColorSpace(1, gGray, nullptr); }},
        {"zebColorSpace NaN in", [] { zebColorSpace(1, gBadColor, gGray); }},
        {"zebColorSpace NaN out", [] { zebColorSpace(1, gGray, gBadColor); }},
        {"zebTune grid", [] { zebTune(0, 12, 12); }},
        {"zebTune width", [] { zebTune(32, -4, 12); }},
        {"zebTune height", [] { zebTune(32, 12, 0); }},
        {"zebTune absurd", [] { zebTune(kAbsurd, 12, 12); }},
        {"zebThreads too many", [] { zebThreads(257); }},
        {"zebThreads negative", [] { zebThreads(-1); }},
        {"zebThreads absurd", [] { zebThreads(kAbsurd); }},
        {"zebDeclare class", [] { EXPECT_EQ(zebDeclare("hostile", 5, ZEB_FLOAT), 0); }},
        {"zebDeclare type", [] { EXPECT_EQ(zebDeclare("hostile", ZEB_UNIFORM, 5), 0); }},
        {"zebErrorHandler kind", [] { zebErrorHandler(0xB00, 5); }},
        {"zebErrorHandler mask", [] { zebErrorHandler(0x5, ZEB_ERROR_PRINT); }},
        {"zebCustomErrorHandler mask", [] { zebCustomErrorHandler(0x5, nullptr); }},
    };
    t.insert(t.end(), more.begin(), more.end());
    return t;
}

Refusals badAttributes()
{
    Refusals t;
    using F1 = const float(&)[1];
    using F3 = const float(&)[3];
    using F4 = const float(&)[4];
    using F7 = const float(&)[7];
    addFloats<1>(t, "zebShadingRate", [](F1 v) { zebShadingRate(v[0]); });
    addFloats<1>(t, "zebFlatness", [](F1 v) { zebFlatness(v[0]); });
    addFloats<1>(t, "zebBoundDisplacement", [](F1 v) { zebBoundDisplacement(v[0]); });
    addFloats<1>(t, "zebPerspective", [](F1 v) { zebPerspective(v[0]); });
    addFloats<3>(t, "zebTranslate", [](F3 v) { zebTranslate(v[0], v[1], v[2]); });
    addFloats<4>(t, "zebRotate", [](F4 v) { zebRotate(v[0], v[1], v[2], v[3]); });
    addFloats<3>(t, "zebScale", [](F3 v) { zebScale(v[0], v[1], v[2]); });
    addFloats<7>(t, "zebSkew", [](F7 v) { zebSkew(v[0], v[1], v[2], v[3], v[4], v[5], v[6]); });
    static const float badFloat = kInf;
    static const unsigned short intensity = zebQuark("intensity");
    const Refusals more = {
        {"zebShadingRate zero", [] { zebShadingRate(0); }},
        {"zebFlatness zero", [] { zebFlatness(0); }},
        {"zebShadingModel unknown", [] { zebShadingModel(5); }},
        {"zebOrientation unknown", [] { zebOrientation(5); }},
        {"zebColor null", [] { zebColor(nullptr); }},
        {"zebColor NaN", [] { zebColor(gBadColor); }},
        {"zebOpacity null", [] { zebOpacity(nullptr); }},
        {"zebOpacity NaN", [] { zebOpacity(gBadColor); }},
        {"zebBound null", [] { zebBound(nullptr); }},
        {"zebBound infinite", [] { zebBound(gBadBound); }},
        {"zebLightSource unknown", [] { EXPECT_EQ(zebLightSource(point(), 0), nullptr); }},
        {"zebLightSource infinite",
         [] {
             EXPECT_EQ(zebLightSource(zebQuark("omni"), int{intensity}, &badFloat, 0), nullptr);
         }},
        {"zebLightSourceV null arrays",
         [] { zebLightSourceV(zebQuark("omni"), 1, nullptr, nullptr); }},
        {"zebLightSourceV negative",
         [] { zebLightSourceV(zebQuark("omni"), -1, nullptr, nullptr); }},
        {"zebLightSwitch dead", [] { zebLightSwitch(&gSquare, 1); }},
        {"zebLightSwitch null", [] { zebLightSwitch(nullptr, 0); }},
        {"zebSurface infinite",
         [] { zebSurface(zebQuark("plastic"), int{zebQuark("ka")}, &badFloat, 0); }},
        {"zebSurface null value",
         [] {
             zebSurface(zebQuark("plastic"), int{zebQuark("ka")}, static_cast<void*>(nullptr), 0);
         }},
        {"zebSurfaceV null arrays", [] { zebSurfaceV(zebQuark("plastic"), 2, nullptr, nullptr); }},
        {"zebAtmosphere infinite",
         [] { zebAtmosphere(zebQuark("fog"), int{zebQuark("distance")}, &badFloat, 0); }},
        {"zebAtmosphereV null arrays",
         [] { zebAtmosphereV(zebQuark("fog"), 1, nullptr, nullptr); }},
        {"zebBasis unknown", [] { zebBasis(5, ZEB_APPLY_BOTH); }},
        {"zebBasis application", [] { zebBasis(ZEB_BASIS_BEZIER, 5); }},
        {"zebCustomBasis null", [] { zebCustomBasis(ZEB_APPLY_BOTH, nullptr, 1); }},
        {"zebCustomBasis NaN", [] { zebCustomBasis(ZEB_APPLY_BOTH, gBadMatrix, 1); }},
        {"zebCustomBasis step", [] { zebCustomBasis(ZEB_APPLY_BOTH, gIdentity, 0); }},
        {"zebLoadMatrix null", [] { zebLoadMatrix(nullptr); }},
        {"zebLoadMatrix NaN", [] { zebLoadMatrix(gBadMatrix); }},
        {"zebMultMatrix null", [] { zebMultMatrix(nullptr); }},
        {"zebMultMatrix NaN", [] { zebMultMatrix(gBadMatrix); }},
        {"zebMarkSpace built in", [] { zebMarkSpace(zebQuark("world")); }},
        {"zebProjectPoints negative",
         [] { EXPECT_EQ(zebProjectPoints(32, 35, -1, nullptr), nullptr); }},
        {"zebProjectPoints null", [] { EXPECT_EQ(zebProjectPoints(32, 35, 3, nullptr), nullptr); }},
        {"zebProjectPoints absurd",
         [] {
             ZebPoint one = {0, 0, 0};
             EXPECT_EQ(zebProjectPoints(32, 32, std::numeric_limits<long>::max(), &one), nullptr);
         }},
        {"zebProjectPoints unknown",
         [] {
             ZebPoint one = {0, 0, 0};
             EXPECT_EQ(zebProjectPoints(1, 35, 1, &one), nullptr);
         }},
    };
    t.insert(t.end(), more.begin(), more.end());
    return t;
}

const unsigned short* pointToken()
{
    static const unsigned short token = point();
    return &token;
}

void* const* squareValue()
{
    static void* const value = const_cast<float*>(gSquare);
    return &value;
}

Refusals badPolygons()
{
    static const long negative[1] = {-3}, two[1] = {2}, absurd[1] = {kAbsurd};
    static const long below[4] = {0, 1, -1, 3}, above[4] = {0, 1, kAbsurd, 3}, one[1] = {1};
    return {
        {"zebPolygon two", [] { zebPolygon(2, int{point()}, gSquare, 0); }},
        {"zebPolygon none", [] { zebPolygon(0, int{point()}, gSquare, 0); }},
        {"zebPolygon negative", [] { zebPolygon(-4, int{point()}, gSquare, 0); }},
        {"zebPolygon absurd", [] { zebPolygon(kAbsurd, int{point()}, gSquare, 0); }},
        {"zebPolygon NaN", [] { zebPolygon(4, int{point()}, gHoled, 0); }},
        {"zebPolygon null points",
         [] { zebPolygon(4, int{point()}, static_cast<void*>(nullptr), 0); }},
        {"zebPolygon without points", [] { zebPolygon(4, 0); }, 13},
        {"zebPolygon points twice",
         [] { zebPolygon(4, int{point()}, gSquare, int{point()}, gSquare, 0); }, 11},
        {"zebPolygonV null arrays", [] { zebPolygonV(4, 1, nullptr, nullptr); }},
        {"zebPolygonV null values", [] { zebPolygonV(4, 1, pointToken(), nullptr); }},
        {"zebPolygonV negative list", [] { zebPolygonV(4, -1, pointToken(), squareValue()); }},
        {"zebPolygonV absurd list",
         [] { zebPolygonV(4, std::numeric_limits<long>::max(), pointToken(), squareValue()); }},
        {"zebPolygonV empty list", [] { zebPolygonV(4, 0, nullptr, nullptr); }, 13},
        {"zebGeneralPolygon no loops",
         [] { zebGeneralPolygon(0, gQuad, int{point()}, gSquare, 0); }},
        {"zebGeneralPolygon negative",
         [] { zebGeneralPolygon(-1, gQuad, int{point()}, gSquare, 0); }},
        {"zebGeneralPolygon absurd",
         [] { zebGeneralPolygon(kAbsurd, gQuad, int{point()}, gSquare, 0); }},
        {"zebGeneralPolygon null", [] { zebGeneralPolygon(1, nullptr, int{point()}, gSquare, 0); }},
        {"zebGeneralPolygon two", [] { zebGeneralPolygon(1, two, int{point()}, gSquare, 0); }},
        {"zebGeneralPolygonV NaN",
         [] {
             void* const value = const_cast<float*>(gHoled);
             zebGeneralPolygonV(1, gQuad, 1, pointToken(), &value);
         }},
        {"zebGeneralPolygonV without points",
         [] { zebGeneralPolygonV(1, gQuad, 0, nullptr, nullptr); }, 13},
        {"zebPolygonMesh none",
         [] { zebPolygonMesh(0, gQuad, gIndices, int{point()}, gSquare, 0); }},
        {"zebPolygonMesh absurd",
         [] { zebPolygonMesh(kAbsurd, gQuad, gIndices, int{point()}, gSquare, 0); }},
        {"zebPolygonMesh null counts",
         [] { zebPolygonMesh(1, nullptr, gIndices, int{point()}, gSquare, 0); }},
        {"zebPolygonMesh null indices",
         [] { zebPolygonMesh(1, gQuad, nullptr, int{point()}, gSquare, 0); }},
        {"zebPolygonMesh negative count",
         [] { zebPolygonMesh(1, negative, gIndices, int{point()}, gSquare, 0); }},
        {"zebPolygonMesh absurd count",
         [] { zebPolygonMesh(1, absurd, gIndices, int{point()}, gSquare, 0); }},
        {"zebPolygonMesh negative index",
         [] { zebPolygonMesh(1, gQuad, below, int{point()}, gSquare, 0); }},
        {"zebPolygonMesh absurd index",
         [] { zebPolygonMesh(1, gQuad, above, int{point()}, gSquare, 0); }},
        {"zebPolygonMeshV without points",
         [] { zebPolygonMeshV(1, gQuad, gIndices, 0, nullptr, nullptr); }, 13},
        {"zebGeneralPolygonMesh none",
         [] { zebGeneralPolygonMesh(-2, one, gQuad, gIndices, int{point()}, gSquare, 0); }},
        {"zebGeneralPolygonMesh null loops",
         [] { zebGeneralPolygonMesh(1, nullptr, gQuad, gIndices, int{point()}, gSquare, 0); }},
        {"zebGeneralPolygonMesh null counts",
         [] { zebGeneralPolygonMesh(1, one, nullptr, gIndices, int{point()}, gSquare, 0); }},
        {"zebGeneralPolygonMesh null indices",
         [] { zebGeneralPolygonMesh(1, one, gQuad, nullptr, int{point()}, gSquare, 0); }},
        {"zebGeneralPolygonMesh negative loops",
         [] { zebGeneralPolygonMesh(1, negative, gQuad, gIndices, int{point()}, gSquare, 0); }},
        {"zebGeneralPolygonMesh negative index",
         [] { zebGeneralPolygonMesh(1, one, gQuad, below, int{point()}, gSquare, 0); }},
        {"zebGeneralPolygonMeshV NaN",
         [] {
             void* const value = const_cast<float*>(gHoled);
             zebGeneralPolygonMeshV(1, one, gQuad, gIndices, 1, pointToken(), &value);
         }},
        {"zebProcedural null bound", [] { zebProcedural(nullptr, nullptr, nothing, nullptr); }},
        {"zebProcedural infinite bound",
         [] { zebProcedural(nullptr, gBadBound, nothing, nullptr); }},
        {"zebProcedural null subdivide", [] { zebProcedural(nullptr, gBound, nullptr, nullptr); }},
        {"zebObjectCall null", [] { zebObjectCall(nullptr); }},
        {"zebObjectCall dead", [] { zebObjectCall(&gSquare); }},
    };
}

void expectRefused(const Refusals& table, Reports& reports)
{
    for (const Refusal& refusal : table) {
        SCOPED_TRACE(refusal.what);
        reports.clear();
        refusal.call();
        if (reports.size() != 1) {
            ADD_FAILURE() << reports.size() << " reports";
            continue;
        }
        EXPECT_EQ(reports[0].code, refusal.code) << reports[0].message;
        EXPECT_EQ(reports[0].severity, ZEB_ERROR);
        EXPECT_TRUE(reports[0].message.starts_with(refusal.name() + ":")) << reports[0].message;
    }
}

// A lit square under everything that an option or attribute can change; with or without refused
// calls on the way.
std::vector<std::uint32_t> render(bool hostile, Reports& reports)
{
    zebReset();
    Picture picture(5);
    zebRasterViewport(0, 24, 0, 16);
    zebOutputSamples(ZEB_SAMPLES_RGBAZ);
    zebClip(1, 10);
    zebViewPerspective(60);
    picture.attach();
    if (hostile) expectRefused(badOptions(), reports);
    zebSceneBegin();
    zebLightSource(zebQuark("distant"), 0);
    zebRotate(20, 0, 1, 0);
    if (hostile) {
        expectRefused(badAttributes(), reports);
        expectRefused(badPolygons(), reports);
    }
    zebPolygon(4, int{point()}, gSquare, 0);
    zebSceneEnd();
    const std::vector<std::uint32_t> words = picture.words();
    zebReset();
    return words;
}

}  // namespace

TEST(BadInput, IsReportedOnceAndLeavesThePictureAsItWas)
{
    Reports reports;
    const auto clean = render(false, reports);
    EXPECT_TRUE(reports.empty());
    const auto hostile = render(true, reports);
    ASSERT_FALSE(clean.empty());
    EXPECT_EQ(clean, hostile);
    EXPECT_NE(*std::max_element(clean.begin(), clean.end()), 0u);
}

TEST(BadInput, InfiniteFieldsOfViewAndClippingDistancesAreReplacedWithAReport)
{
    Reports reports;
    zebReset();
    for (const float bad : {kNan, kInf, -kInf, 0.0f, 181.0f}) {
        reports.clear();
        zebViewPerspective(bad);
        ASSERT_EQ(reports.size(), 1u) << bad;
        EXPECT_EQ(reports[0].code, 10);
        EXPECT_TRUE(reports[0].message.starts_with("zebViewPerspective:"));
        reports.clear();
        zebClip(kNan, bad);
        EXPECT_GE(reports.size(), 1u) << bad;
        for (std::size_t i = 0; i < reports.size(); ++i) EXPECT_EQ(reports[i].code, 10);
    }
    zebReset();
}

TEST(BadInput, ANullNameIsNoToken)
{
    Reports reports;
    EXPECT_EQ(zebQuark(nullptr), 0);
    EXPECT_EQ(zebDeclare(nullptr, ZEB_UNIFORM, ZEB_FLOAT), 0);
    zebComment(nullptr);
    EXPECT_TRUE(reports.empty());
}

namespace
{

// Host code of every kind runs this from inside a call.
struct Inside {
    static void call()
    {
        if (gBusy) return;
        gBusy = true;
        ++gTimes;
        zebReset();
        zebSceneEnd();
        zebRenderInit();
        gBuckets += zebRenderBucket();
        gToken = zebQuark("from inside");
        zebAttributePush();
        zebShadingRate(1);
        zebAttributePop();
        gBusy = false;
    }
    static void record(long code, long, const char*)
    {
        gCodes.push_back(code);
        call();
    }
    static inline bool gBusy = false;
    static inline int gTimes = 0, gBuckets = 0;
    static inline unsigned short gToken = 0;
    static inline std::vector<long> gCodes;
};

// Renders a square with host code of one kind, which "provoke" puts in place, calling back in.
void expectRefusedInside(const std::function<void()>& option, const std::function<void()>& inWorld)
{
    zebReset();
    Inside::gTimes = Inside::gBuckets = 0;
    Inside::gCodes.clear();
    zebCustomErrorHandler(ZEB_ALL, Inside::record);
    Picture picture(3);
    zebRasterViewport(0, 16, 0, 16);
    zebViewPerspective(60);
    picture.attach();
    option();
    zebSceneBegin();
    inWorld();
    zebPolygon(4, int{point()}, gSquare, 0);
    zebSceneEnd();
    EXPECT_GE(Inside::gTimes, 1);
    EXPECT_EQ(Inside::gBuckets, 0);
    EXPECT_NE(Inside::gToken, 0);
    // Four refusals a time, whatever else was reported.
    EXPECT_EQ(std::count(Inside::gCodes.begin(), Inside::gCodes.end(), 8), 4 * Inside::gTimes);
    zebReset();
    EXPECT_EQ(zebProgress(), 0);
}

}  // namespace

TEST(Callbacks, CannotEndWhatTheyAreCalledFrom)
{
    Reports restoresHandlers;
    const auto nothingMore = [] {};
    {
        SCOPED_TRACE("filter");
        expectRefusedInside(
            [] {
                zebCustomFilter([](float, float, float, float) {
                    Inside::call();
                    return 1.0f;
                });
            },
            nothingMore);
    }
    {
        SCOPED_TRACE("procedural");
        expectRefusedInside(nothingMore, [] {
            zebProcedural(
                nullptr, gBound, [](void*, float) { Inside::call(); },
                [](void*) { Inside::call(); });
        });
    }
    {
        SCOPED_TRACE("handler");
        expectRefusedInside(nothingMore, [] { zebColor(nullptr); });
    }
    {
        SCOPED_TRACE("device");
        static const ZebDisplay device = {
            nullptr, nullptr, [](void*, long, long, long, const unsigned int*) { Inside::call(); },
            [](void*, long, long) { Inside::call(); }, nullptr};
        expectRefusedInside([] { zebCustomDisplay(&device); }, nothingMore);
    }
}

// Blocks that host code opens and leaves open end with the world they were opened in.
TEST(Callbacks, LeaveNoBlockOpenBehindTheWorld)
{
    Reports reports;
    zebReset();
    const ZebDisplay device = {nullptr, nullptr, nullptr,
                               [](void*, long, long) {
                                   zebAttributePush();
                                   zebMotionBegin(0);
                               },
                               nullptr};
    zebCustomDisplay(&device);
    zebRasterViewport(0, 16, 0, 16);
    zebFrameBegin();
    zebSceneBegin();
    zebSceneEnd();
    reports.clear();
    zebFrameEnd();
    EXPECT_TRUE(reports.empty());
    zebReset();
}

TEST(Procedural, IsReleasedExactlyOnceWhateverBecomesOfIt)
{
    static int frees, builds;
    const auto add = [](const float* bound) {
        zebProcedural(
            &frees, bound, [](void*, float) { ++builds; },
            [](void* data) { ++*static_cast<int*>(data); });
    };
    static const float behind[6] = {-1, 1, -1, 1, -4, -2};
    const struct {
        const char* what;
        std::function<void()> run;
        int built;
    } fates[] = {
        {"split", [&] { add(gBound); }, 1},
        {"culled", [&] { add(behind); }, 0},
        {"null bound", [&] { add(nullptr); }, 0},
        {"in a motion block",
         [&] {
             zebMotionBegin(0);
             add(gBound);
             zebMotionEnd();
         },
         0},
        {"outside the world",
         [&] {
             zebSceneEnd();
             add(gBound);
         },
         0},
        {"reset half-way",
         [&] {
             add(gBound);
             zebRenderInit();
             zebReset();
         },
         0},
    };
    Reports reports;
    const auto world = [] {
        zebReset();
        const ZebDisplay device{};
        zebCustomDisplay(&device);
        zebRasterViewport(0, 16, 0, 16);
        zebViewPerspective(60);
        zebSceneBegin();
        frees = builds = 0;
    };
    for (const auto& fate : fates) {
        SCOPED_TRACE(fate.what);
        world();
        fate.run();
        zebSceneEnd();
        EXPECT_EQ(frees, 1);
        EXPECT_EQ(builds, fate.built);
    }
    for (const int instances : {0, 1, 3}) {
        SCOPED_TRACE(instances);
        world();
        const void* object = zebObjectBegin();
        add(gBound);
        zebObjectEnd();
        for (int i = 0; i < instances; ++i) zebObjectCall(object);
        zebSceneEnd();
        EXPECT_EQ(frees, 1);
        EXPECT_EQ(builds, instances);
    }
    zebReset();
}
