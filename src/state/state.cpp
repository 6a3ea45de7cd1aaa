#include "state/state.h"

#include "math/spaces.h"
#include "state/callback.h"
#include "state/quark.h"
#include "state/upcalls.h"
#include "util/cancel.h"
#include "util/number.h"

namespace zeb
{

State* gState = nullptr;
Transform* gTransform = nullptr;

namespace
{

// Which records a block saves.
bool savesOptions(unsigned short block) { return block == kFrameBlock; }
bool savesTransform(unsigned short block) { return block != kMotionBlock; }
bool savesAttribs(unsigned short block) { return savesTransform(block) && block != kMatrixBlock; }
bool ownsThings(unsigned short block) { return block == kFrameBlock || block == kWorldBlock; }

}  // namespace

short verify(unsigned short mask, long code) { return gState->verify(mask, code); }

SpaceContext spaceContext() { return {gTransform->matrix(), gOption->nearClip, gOption->farClip}; }

State::~State() = default;

void State::point()
{
    gTransform = fTransforms.top();
    gAttrib = fAttribs.top();
    gOption = fOptions.top();
}

void State::init()
{
    initQuark();
    define(nullptr);

    Stack<Objects> doomed = std::move(fObjects);
    fObjects = {};
    fModes.flush();
    fTransforms.flush();
    fAttribs.flush();
    fOptions.flush();
    fLights.flush();
    fMotionFirst = 0;

    fModes.push(kOutsideBlocks);
    fDepth = 1;
    fTransforms.push();
    fAttribs.push();
    fOptions.push();
    fLights.push({});
    fObjects.push({});
    point();
    gTransform->init();
    gAttrib->init();

    gWorldToCamera = gCameraToScreen = gScreenToRaster = gIdentity;
    gScreenToRaster.map(-4.0f / 3, 4.0f / 3, -1, 1, 640, 480);
    gCameraToRaster = gCameraToScreen * gScreenToRaster;

    // The free functions of procedurals and the device may call in. They find the state standing
    // again, and a world open, so that they can't begin one that would be torn down with the old.
    const ProceduralScope world(*this, *gAttrib, *gTransform);
    doomed.flush();
    upcall::flushScene();
    upcall::closeDisplay();
}

void State::reset()
{
    if (CallbackScope::left()) {
        CallbackScope::forget();
        setAttribNames(nullptr, nullptr);
    }
    if (CallbackScope::active()) {
        error(kState, kError, nullptr);
    } else {
        init();
    }
}

short State::verify(unsigned short mask, long code)
{
    if (!CallbackScope::allowsCalls()) return 0;
    if (!(block() & mask)) {
        error(code, kError, nullptr);
        return 0;
    }
    if (mask == kMotionBlock || block() != kMotionBlock) return 1;
    // Of all the calls in a motion block the first alone counts: motion is its first sample.
    const short first = static_cast<short>(fMotionFirst);
    fMotionFirst = 0;
    return first;
}

// Pushes copies of the records in force: those of a procedural while it builds.
short State::open(unsigned short mask, unsigned short block, bool attributes, bool transformation)
{
    if (!verify(mask, kState)) return 0;
    fModes.push(block);
    ++fDepth;
    if (savesOptions(block)) {
        fOptions.push();
        fOptions.top()->cameraToScreenBefore = gCameraToScreen;
    }
    if (attributes) fAttribs.push();
    if (transformation) fTransforms.push();
    if (ownsThings(block)) {
        fLights.push({});
        fObjects.push({});
    }
    point();
    return 1;
}

void State::define(Object* object)
{
    fObject = object;
    upcall::defineObject(object);
}

void State::closeTo(long depth)
{
    if (fDepth <= depth) return;
    while (fDepth > depth) close();
    define(nullptr);
}

void State::close()
{
    const unsigned short block = this->block();
    fModes.pop();
    --fDepth;
    if (savesOptions(block)) {
        // The quirk: a projection outlives its frame.
        if (!gOption->quirks) setCameraToScreen(gOption->cameraToScreenBefore);
        fOptions.pop();
    }
    if (savesAttribs(block)) fAttribs.pop();
    if (savesTransform(block)) fTransforms.pop();
    point();
}

State::Doomed State::takeLightAndObj()
{
    return {std::move(*fLights.top()), std::move(*fObjects.top())};
}

State::Doomed State::popLightAndObj()
{
    Doomed doomed = takeLightAndObj();
    fLights.pop();
    fObjects.pop();
    return doomed;
}

short State::frameBegin() { return open(kOutsideBlocks, kFrameBlock, true, true); }

short State::frameEnd()
{
    if (!verify(kFrameBlock, kBadNesting)) return 0;
    const Doomed doomed = popLightAndObj();
    close();
    return 1;
}

short State::sceneBegin()
{
    if (!open(kOutsideBlocks | kFrameBlock, kWorldBlock, true, true)) return 0;
    gCancelled = false;
    fixCamera();
    return 1;
}

void State::fixCamera()
{
    gWorldToCamera = gTransform->matrix();
    const upcall::DeviceDefaults device = upcall::createDisplay();
    Option& option = *gOption;
    if (option.xres <= 0) option.xres = device.xres;
    if (option.yres <= 0) option.yres = device.yres;
    if (!(option.pixelAspect > kEpsilon)) option.pixelAspect = device.aspect;
    if (option.hiderType != kHiderNull) {
        // Depth means nothing where hits are ordered by sequence.
        if (option.hiderType == kHiderSequence && option.depth) option.hiderType = kHiderHidden;
        upcall::openDisplay();
    }
    if (nearZero(option.right - option.left) || nearZero(option.top - option.bottom)) {
        if (!(option.frameAspect > kEpsilon)) {
            option.frameAspect = static_cast<float>(option.xres) * option.pixelAspect /
                                 static_cast<float>(option.yres);
        }
        const float a = option.frameAspect;
        option.right = a >= 1 ? a : 1;
        option.top = a >= 1 ? 1 : 1 / a;
        option.left = -option.right;
        option.bottom = -option.top;
    }
    gScreenToRaster = gIdentity;
    gScreenToRaster.map(option.left, option.right, option.bottom, option.top, option.xres,
                        option.yres);
    gCameraToRaster = gCameraToScreen * gScreenToRaster;
    if (option.hiderType != kHiderNull) upcall::initScene();
}

short State::sceneEnd()
{
    if (!verify(kWorldBlock, kBadNesting)) return 0;
    if (CallbackScope::active()) {
        error(kState, kError, nullptr);
        return 0;
    }
    // The block stays open while its picture is made, so that procedurals may build. What a
    // callback leaves open is closed before anything goes.
    const long depth = fDepth;
    if (gOption->hiderType != kHiderNull) upcall::renderScene();
    closeTo(depth);
    static_cast<void>(takeLightAndObj());
    closeTo(depth);
    upcall::closeDisplay();
    closeTo(depth);
    const Doomed late = popLightAndObj();
    close();
    return 1;
}

short State::attributePush() { return open(kUsualBlocks, kAttributeBlock, true, true); }

short State::attributePop()
{
    if (!verify(kAttributeBlock, kBadNesting)) return 0;
    close();
    return 1;
}

short State::matrixPush() { return open(kUsualBlocks, kMatrixBlock, false, true); }

short State::matrixPop()
{
    if (!verify(kMatrixBlock, kBadNesting)) return 0;
    close();
    return 1;
}

short State::solidBegin() { return open(kInWorld, kSolidBlock, true, true); }

short State::solidEnd()
{
    if (!verify(kSolidBlock, kBadNesting)) return 0;
    close();
    return 1;
}

Object* State::objectBegin()
{
    if (!open(kUsualBlocks, kObjectBlock, true, true)) return nullptr;
    std::shared_ptr<Object> object = upcall::makeObject();
    define(object.get());
    fObjects.top()->add(std::move(object));
    return fObject;
}

short State::objectEnd()
{
    if (!verify(kObjectBlock, kBadNesting)) return 0;
    define(nullptr);
    close();
    return 1;
}

short State::motionBegin(long)
{
    if (!open(kUsualBlocks, kMotionBlock, false, false)) return 0;
    fMotionFirst = 1;
    return 1;
}

short State::motionEnd()
{
    if (!verify(kMotionBlock, kBadNesting)) return 0;
    close();
    return 1;
}

std::shared_ptr<Light> State::liveLight(const void* handle) const
{
    for (const Lights& block : fLights.elements()) {
        for (const auto& light : block) {
            if (light.get() == handle) return light;
        }
    }
    return nullptr;
}

std::shared_ptr<Object> State::liveObject(const void* handle) const
{
    for (const Objects& block : fObjects.elements()) {
        for (const auto& object : block) {
            if (object.get() == handle) return object;
        }
    }
    return nullptr;
}

State::ProceduralScope::ProceduralScope(State& state, const Attrib& attrib,
                                        const Transform& transform)
    : fState(state), fDepth(state.fDepth), fMotionFirst(state.fMotionFirst), fObject(state.fObject)
{
    state.fModes.push(kWorldBlock);
    ++state.fDepth;
    state.fAttribs.push(attrib);
    state.fTransforms.push(transform);
    state.point();
    state.define(nullptr);
}

State::ProceduralScope::~ProceduralScope()
{
    fState.closeTo(fDepth);
    fState.fMotionFirst = fMotionFirst;
    fState.define(fObject);
}

}  // namespace zeb
