// Blocks, options, tokens, errors and the extensions.

#include "player.h"

namespace zebfuzz
{

namespace
{

void errorHandler(Player& p)
{
    const short kind = p.in.enumerator(0xC00, 3);
    // An aborting handler of anything but infos would end the run, and severe reports shall.
    const short mask = p.in.enumerator(0xB00, 8);
    const bool aborts = kind == ZEB_ERROR_ABORT;
    zebErrorHandler(static_cast<short>(mask & (aborts ? ~0xE : ~8)), kind);
}

void customErrorHandler(Player& p)
{
    const short mask = p.in.enumerator(0xB00, 8);
    zebCustomErrorHandler(static_cast<short>(mask & ~8),
                          p.in.oneIn(4) ? nullptr : handlerThatCalls);
}

void customFilter(Player& p)
{
    static const ZebFilterFunction filters[4] = {filterThatCalls, filterOfHostileWeights,
                                                 filterThatCalls, nullptr};
    zebCustomFilter(filters[p.in.upTo(4)]);
}

void customDisplay(Player& p)
{
    const ZebDisplay device = p.device();
    zebCustomDisplay(p.in.oneIn(16) ? nullptr : &device);
}

void colorSpace(Player& p)
{
    const long n = p.in.count();
    const float* toRgb = p.floatsOrNull(9);
    zebColorSpace(n, toRgb, p.floatsOrNull(9));
}

// C++ leaves the order of arguments' evaluation open; an input must mean the same everywhere.
struct Floats {
    explicit Floats(Player& p)
    {
        for (float& v : values) v = p.in.number();
    }
    float operator[](int i) const { return values[i]; }
    float values[7];
};

struct Longs {
    explicit Longs(Player& p)
    {
        for (long& v : values) v = p.in.integer();
    }
    long operator[](int i) const { return values[i]; }
    long values[4];
};

}  // namespace

const std::vector<Call>& optionCalls()
{
    static const std::vector<Call> calls = {
        [](Player& p) { zebQuark(p.name()); },
        [](Player&) { zebFrameBegin(); },
        [](Player&) { zebFrameEnd(); },
        [](Player& p) { p.beginScene(); },
        [](Player& p) { p.beginScene(); },
        [](Player&) { zebSceneEnd(); },
        [](Player&) { zebSceneEnd(); },
        [](Player& p) {
            const Longs v(p);
            zebRasterViewport(v[0], v[1], v[2], v[3]);
        },
        [](Player& p) { zebRasterAspect(p.in.number()); },
        [](Player& p) {
            const Floats v(p);
            zebImageWindow(v[0], v[1], v[2], v[3]);
        },
        [](Player& p) { zebImageAspect(p.in.number()); },
        [](Player& p) {
            const Floats v(p);
            zebImageCrop(v[0] / 4, v[1] / 4, v[2] / 4, v[3] / 4);
        },
        [](Player&) { zebViewOrthographic(); },
        [](Player& p) { zebViewPerspective(p.in.number() * 32); },
        [](Player&) { zebViewIdentity(); },
        [](Player& p) {
            const Floats v(p);
            zebClip(v[0], v[1]);
        },
        [](Player& p) { zebSampleAdaptive(p.in.number() / 8); },
        [](Player& p) {
            const Floats v(p);
            zebSampleUniform(v[0], v[1]);
        },
        [](Player& p) { zebSampleJitter(p.in.number()); },
        [](Player& p) { zebFilter(p.in.enumerator(0x100, 5)); },
        customFilter,
        [](Player& p) {
            const Floats v(p);
            zebFilterWidth(v[0] * 2, v[1] * 2);
        },
        [](Player& p) { zebColorGain(p.in.number()); },
        [](Player& p) { zebColorGamma(p.in.number()); },
        [](Player& p) {
            const Longs v(p);
            zebColorQuantize(v[0], v[1], v[2]);
        },
        [](Player& p) { zebColorJitter(p.in.number()); },
        [](Player& p) {
            const Longs v(p);
            zebDepthQuantize(v[0], v[1], v[2]);
        },
        [](Player& p) { zebDepthJitter(p.in.number()); },
        [](Player& p) { zebOutputDisplay(p.name()); },
        [](Player& p) { p.outputFile(); },
        [](Player& p) { zebOutputSamples(p.in.enumerator(0x300, 8)); },
        [](Player& p) {
            zebHider(p.in.oneIn(8) ? short{ZEB_HIDER_NULL} : p.in.enumerator(0x400, 2));
        },
        colorSpace,
        [](Player& p) {
            const Longs v(p);
            zebTune(v[0], v[1], v[2]);
        },
        errorHandler,
        customErrorHandler,
        [](Player&) { zebErrorPrinter(printerThatCalls); },
        [](Player& p) { zebErrorPrinter(p.in.oneIn(4) ? nullptr : printerThatCalls); },
        [](Player&) { zebLastError(); },
        [](Player& p) { zebComment(p.name()); },
        [](Player& p) {
            if (p.in.oneIn(4)) zebReset();
        },
        [](Player&) { zebRenderInit(); },
        [](Player& p) {
            for (unsigned buckets = p.in.upTo(8); buckets > 0; --buckets) zebRenderBucket();
        },
        [](Player&) { zebProgress(); },
        customDisplay,
        customDisplay,
        [](Player& p) {
            const char* name = p.name();
            const short storage = p.in.enumerator(ZEB_CLASS_NONE, 4);
            zebDeclare(name, storage, p.in.enumerator(ZEB_TYPE_NONE, 8));
        },
        [](Player& p) { zebQuirks(static_cast<short>(p.in.upTo(3))); },
        [](Player& p) { zebDepthNearest(static_cast<short>(p.in.upTo(2))); },
        // As many as may be would take longer to start than to render.
        [](Player& p) {
            const long n = p.in.integer();
            zebThreads(n > 8 && n <= 256 ? n % 8 + 1 : n);
        },
        [](Player& p) {
            if (p.in.oneIn(8)) zebCancel();
        },
        [](Player& p) {
            const bool none = p.in.oneIn(2);
            zebProgressCallback(none ? nullptr : progressThatCalls, nullptr);
        },
        [](Player&) { zebWindowEvents(0); },
        [](Player&) { zebVersion(); },
    };
    return calls;
}

const std::vector<Call>& attributeCalls()
{
    static const std::vector<Call> calls = {
        [](Player&) { zebAttributePush(); },
        [](Player&) { zebAttributePop(); },
        [](Player&) { zebMatrixPush(); },
        [](Player&) { zebMatrixPop(); },
        [](Player& p) { zebColor(p.floatsOrNull(3)); },
        [](Player& p) { zebOpacity(p.floatsOrNull(3)); },
        [](Player& p) { p.shadingRate(); },
        [](Player& p) { zebShadingModel(p.in.enumerator(0x500, 2)); },
        [](Player& p) { zebMatteObject(static_cast<short>(p.in.upTo(2))); },
        [](Player& p) {
            const unsigned short name = static_cast<unsigned short>(17 + p.in.upTo(5));
            const Player::List list = p.list(false);
            p.lights.push_back(
                list.spread([&](auto... pairs) { return zebLightSource(name, pairs...); }));
        },
        [](Player& p) {
            const unsigned short name = p.token();
            const Player::List list = p.list(false);
            p.lights.push_back(zebLightSourceV(name, list.n, list.tokenArray, list.valueArray));
        },
        [](Player& p) {
            const void* light = p.handle(p.lights);
            zebLightSwitch(light, static_cast<short>(p.in.upTo(2)));
        },
        [](Player& p) {
            const unsigned short name = static_cast<unsigned short>(8 + p.in.upTo(5));
            const Player::List list = p.list(false);
            list.spread([&](auto... pairs) { zebSurface(name, pairs...); });
        },
        [](Player& p) {
            const unsigned short name = static_cast<unsigned short>(8 + p.in.upTo(5));
            const Player::List list = p.list(false);
            zebSurfaceV(name, list.n, list.tokenArray, list.valueArray);
        },
        [](Player& p) {
            const unsigned short name = static_cast<unsigned short>(27 + p.in.upTo(3));
            const Player::List list = p.list(false);
            list.spread([&](auto... pairs) { zebAtmosphere(name, pairs...); });
        },
        [](Player& p) {
            const unsigned short name = p.token();
            const Player::List list = p.list(false);
            zebAtmosphereV(name, list.n, list.tokenArray, list.valueArray);
        },
        [](Player& p) { zebBound(p.floatsOrNull(6)); },
        [](Player& p) { zebFlatness(p.in.number()); },
        [](Player& p) { zebOrientation(p.in.enumerator(0x600, 5)); },
        [](Player& p) { zebBackface(static_cast<short>(p.in.upTo(4))); },
        [](Player& p) { zebObjectName(p.name()); },
        [](Player& p) { zebGroupName(p.name()); },
        [](Player& p) {
            const short basis = p.in.enumerator(0x900, 5);
            zebBasis(basis, p.in.enumerator(0x800, 3));
        },
        [](Player& p) {
            const short application = p.in.enumerator(0x800, 3);
            auto* matrix = reinterpret_cast<float(*)[4]>(p.floatsOrNull(16));
            zebCustomBasis(application, matrix, p.in.integer());
        },
        [](Player& p) { zebBoundDisplacement(p.in.number()); },
        [](Player&) { zebLoadIdentity(); },
        [](Player& p) { zebLoadMatrix(reinterpret_cast<float(*)[4]>(p.floatsOrNull(16))); },
        [](Player& p) { zebMultMatrix(reinterpret_cast<float(*)[4]>(p.floatsOrNull(16))); },
        [](Player& p) { zebPerspective(p.in.number() * 32); },
        [](Player& p) {
            const float* eye = p.floatsOrNull(3);
            const float* at = p.floatsOrNull(3);
            zebLookAt(eye, at, p.floatsOrNull(3));
        },
        [](Player& p) {
            const Floats v(p);
            zebTranslate(v[0], v[1], v[2]);
        },
        [](Player& p) {
            const Floats v(p);
            zebRotate(v[0] * 90, v[1], v[2], v[3]);
        },
        [](Player& p) {
            const Floats v(p);
            zebScale(v[0], v[1], v[2]);
        },
        [](Player& p) {
            const Floats v(p);
            zebSkew(v[0] * 30, v[1], v[2], v[3], v[4], v[5], v[6]);
        },
        [](Player& p) { zebMarkSpace(p.token()); },
        [](Player& p) {
            const unsigned short from = static_cast<unsigned short>(31 + p.in.upTo(7));
            const unsigned short to = static_cast<unsigned short>(31 + p.in.upTo(7));
            const long n = p.in.count();
            zebProjectPoints(from, to, n, reinterpret_cast<ZebPoint*>(p.floatsOrNull(24)));
        },
    };
    return calls;
}

}  // namespace zebfuzz
