// The exported functions: each is its frame and one call. How they are grouped follows the header;
// those that make primitives are in api_primitives.cpp, extensions in api_extensions.cpp.

#include "api/call_frame.h"
#include "hider/scene.h"
#include "math/spaces.h"
#include "state/quark.h"
#include "state/state.h"
#include "state/upcalls.h"
#include "zebcore/zebcore.h"

// The last named argument of some functions with a variable list is a float or a short, which the C
// standard leaves undefined for va_start. Every calling convention the library is built for passes
// it in a place of its own all the same, and the compilers look at the argument for this warning
// alone.
#if defined(__GNUC__)
#pragma GCC diagnostic ignored "-Wvarargs"
#endif

using namespace zeb;

extern "C" {

// Tokens

unsigned short zebQuark(const char* name)
{
    NameFrame frame("zebQuark");
    if (!CallbackScope::allowsCalls()) return 0;
    return Quark::declare(name, kClassNone, kTypeNone);
}

// Frame and world blocks

void zebFrameBegin(void)
{
    CallFrame frame("zebFrameBegin");
    gState->frameBegin();
}

void zebFrameEnd(void)
{
    CallFrame frame("zebFrameEnd");
    gState->frameEnd();
}

void zebSceneBegin(void)
{
    CallFrame frame("zebSceneBegin");
    gState->sceneBegin();
}

void zebSceneEnd(void)
{
    CallFrame frame("zebSceneEnd");
    gState->sceneEnd();
}

// Options

void zebRasterViewport(long x, long xres, long y, long yres)
{
    CallFrame frame("zebRasterViewport");
    gOption->rasterViewport(x, xres, y, yres);
}

void zebRasterAspect(float aspect)
{
    CallFrame frame("zebRasterAspect");
    gOption->rasterAspect(aspect);
}

void zebImageWindow(float left, float right, float bottom, float top)
{
    CallFrame frame("zebImageWindow");
    gOption->imageWindow(left, right, bottom, top);
}

void zebImageAspect(float aspect)
{
    CallFrame frame("zebImageAspect");
    gOption->imageAspect(aspect);
}

void zebImageCrop(float xmin, float xmax, float ymin, float ymax)
{
    CallFrame frame("zebImageCrop");
    gOption->imageCrop(xmin, xmax, ymin, ymax);
}

void zebViewOrthographic(void)
{
    CallFrame frame("zebViewOrthographic");
    gOption->viewOrthographic();
}

void zebViewPerspective(float fov)
{
    CallFrame frame("zebViewPerspective");
    gOption->viewPerspective(fov);
}

void zebViewIdentity(void)
{
    CallFrame frame("zebViewIdentity");
    gOption->viewIdentity();
}

void zebClip(float nearz, float farz)
{
    CallFrame frame("zebClip");
    gOption->clip(nearz, farz);
}

void zebSampleAdaptive(float threshold)
{
    CallFrame frame("zebSampleAdaptive");
    gOption->sampleAdaptive(threshold);
}

void zebSampleUniform(float xsamples, float ysamples)
{
    CallFrame frame("zebSampleUniform");
    gOption->sampleUniform(xsamples, ysamples);
}

void zebSampleJitter(float amount)
{
    CallFrame frame("zebSampleJitter");
    gOption->sampleJitter(amount);
}

void zebFilter(short id)
{
    CallFrame frame("zebFilter");
    gOption->filter(id);
}

void zebCustomFilter(ZebFilterFunction filter)
{
    CallFrame frame("zebCustomFilter");
    gOption->customFilter(filter);
}

void zebFilterWidth(float xwidth, float ywidth)
{
    CallFrame frame("zebFilterWidth");
    gOption->filterWidth(xwidth, ywidth);
}

void zebColorGain(float gain)
{
    CallFrame frame("zebColorGain");
    gOption->colorGain(gain);
}

void zebColorGamma(float gamma)
{
    CallFrame frame("zebColorGamma");
    gOption->colorGamma(gamma);
}

void zebColorQuantize(long one, long min, long max)
{
    CallFrame frame("zebColorQuantize");
    gOption->colorQuantize(one, min, max);
}

void zebColorJitter(float amplitude)
{
    CallFrame frame("zebColorJitter");
    gOption->colorJitter(amplitude);
}

void zebDepthQuantize(long one, long min, long max)
{
    CallFrame frame("zebDepthQuantize");
    gOption->depthQuantize(one, min, max);
}

void zebDepthJitter(float amplitude)
{
    CallFrame frame("zebDepthJitter");
    gOption->depthJitter(amplitude);
}

void zebOutputDisplay(const char* name)
{
    CallFrame frame("zebOutputDisplay");
    gOption->outputDisplay(name);
}

void zebOutputFile(short kind, const char* name)
{
    CallFrame frame("zebOutputFile");
    gOption->outputFile(kind, name);
}

void zebOutputSamples(short samples)
{
    CallFrame frame("zebOutputSamples");
    gOption->outputSamples(samples);
}

void zebHider(short type)
{
    CallFrame frame("zebHider");
    gOption->hider(type);
}

void zebColorSpace(long n, const float* ntorgb, const float* rgbton)
{
    CallFrame frame("zebColorSpace");
    gOption->setColorSpace(n, ntorgb, rgbton);
}

void zebTune(long gridsize, long width, long height)
{
    CallFrame frame("zebTune");
    gOption->tune(gridsize, width, height);
}

// Attribute blocks and attributes

void zebAttributePush(void)
{
    CallFrame frame("zebAttributePush");
    gState->attributePush();
}

void zebAttributePop(void)
{
    CallFrame frame("zebAttributePop");
    gState->attributePop();
}

void zebColor(const float* color)
{
    CallFrame frame("zebColor");
    gAttrib->color(color);
}

void zebOpacity(const float* opacity)
{
    CallFrame frame("zebOpacity");
    gAttrib->opacity(opacity);
}

void zebShadingRate(float rate)
{
    CallFrame frame("zebShadingRate");
    gAttrib->shadingRate(rate);
}

void zebShadingModel(short model)
{
    CallFrame frame("zebShadingModel");
    gAttrib->shadingModel(model);
}

void zebMatteObject(short on)
{
    CallFrame frame("zebMatteObject");
    gAttrib->matteObject(on);
}

const void* zebLightSource(unsigned short name, ...)
{
    CallFrame frame("zebLightSource");
    std::va_list args;
    va_start(args, name);
    const ParameterPairs list(args);
    va_end(args);
    return gAttrib->lightSource(name, list.n(), list.tokens(), list.values());
}

const void* zebLightSourceV(unsigned short name, long n, const unsigned short* tokens,
                            void* const* values)
{
    CallFrame frame("zebLightSourceV");
    return gAttrib->lightSource(name, n, tokens, values);
}

void zebLightSwitch(const void* light, short on)
{
    CallFrame frame("zebLightSwitch");
    gAttrib->lightSwitch(light, on);
}

void zebSurface(unsigned short name, ...)
{
    CallFrame frame("zebSurface");
    std::va_list args;
    va_start(args, name);
    const ParameterPairs list(args);
    va_end(args);
    gAttrib->surface(name, list.n(), list.tokens(), list.values());
}

void zebSurfaceV(unsigned short name, long n, const unsigned short* tokens, void* const* values)
{
    CallFrame frame("zebSurfaceV");
    gAttrib->surface(name, n, tokens, values);
}

void zebAtmosphere(unsigned short name, ...)
{
    CallFrame frame("zebAtmosphere");
    std::va_list args;
    va_start(args, name);
    const ParameterPairs list(args);
    va_end(args);
    gAttrib->atmosphere(name, list.n(), list.tokens(), list.values());
}

void zebAtmosphereV(unsigned short name, long n, const unsigned short* tokens, void* const* values)
{
    CallFrame frame("zebAtmosphereV");
    gAttrib->atmosphere(name, n, tokens, values);
}

void zebBound(const float* bound)
{
    CallFrame frame("zebBound");
    gAttrib->bound(bound);
}

void zebFlatness(float flatness)
{
    CallFrame frame("zebFlatness");
    gAttrib->flatness(flatness);
}

void zebOrientation(short orientation)
{
    CallFrame frame("zebOrientation");
    gAttrib->orientation(orientation);
}

void zebBackface(short sides)
{
    CallFrame frame("zebBackface");
    gAttrib->backface(sides);
}

void zebObjectName(const char* name)
{
    CallFrame frame("zebObjectName");
    gAttrib->objectName(name);
}

void zebGroupName(const char* name)
{
    CallFrame frame("zebGroupName");
    gAttrib->groupName(name);
}

void zebBasis(short basis, short application)
{
    CallFrame frame("zebBasis");
    gAttrib->basis(basis, application);
}

void zebCustomBasis(short application, ZebMatrix basis, long step)
{
    CallFrame frame("zebCustomBasis");
    gAttrib->customBasis(application, basis, step);
}

// Transformations

void zebMatrixPush(void)
{
    CallFrame frame("zebMatrixPush");
    gState->matrixPush();
}

void zebMatrixPop(void)
{
    CallFrame frame("zebMatrixPop");
    gState->matrixPop();
}

void zebLoadIdentity(void)
{
    CallFrame frame("zebLoadIdentity");
    gTransform->loadIdentity();
}

void zebLoadMatrix(ZebMatrix matrix)
{
    CallFrame frame("zebLoadMatrix");
    gTransform->loadMatrix(matrix);
}

void zebMultMatrix(ZebMatrix matrix)
{
    CallFrame frame("zebMultMatrix");
    gTransform->multMatrix(matrix);
}

void zebPerspective(float fov)
{
    CallFrame frame("zebPerspective");
    gTransform->perspective(fov);
}

void zebTranslate(float x, float y, float z)
{
    CallFrame frame("zebTranslate");
    gTransform->translate(x, y, z);
}

void zebRotate(float angle, float x, float y, float z)
{
    CallFrame frame("zebRotate");
    gTransform->rotate(angle, x, y, z);
}

void zebScale(float x, float y, float z)
{
    CallFrame frame("zebScale");
    gTransform->scale(x, y, z);
}

void zebSkew(float angle, float dx1, float dy1, float dz1, float dx2, float dy2, float dz2)
{
    CallFrame frame("zebSkew");
    gTransform->skew(angle, dx1, dy1, dz1, dx2, dy2, dz2);
}

// Coordinate spaces

void zebMarkSpace(unsigned short space)
{
    CallFrame frame("zebMarkSpace");
    markSpace(space);
}

ZebPoint* zebProjectPoints(unsigned short from, unsigned short to, long n, ZebPoint* points)
{
    CallFrame frame("zebProjectPoints");
    return projectPoints(from, to, n, points);
}

// Procedurals, objects and motion

void zebProcedural(void* data, const float* bound, ZebSubdivideFunction subdivide,
                   ZebFreeFunction free)
{
    CallFrame frame("zebProcedural");
    gScene->procedural(data, bound, subdivide, free);
}

const void* zebObjectBegin(void)
{
    CallFrame frame("zebObjectBegin");
    return gState->objectBegin();
}

void zebObjectEnd(void)
{
    CallFrame frame("zebObjectEnd");
    gState->objectEnd();
}

void zebObjectCall(const void* object)
{
    CallFrame frame("zebObjectCall");
    gScene->objectInstance(object);
}

// Errors

void zebErrorHandler(short mask, short kind)
{
    CallFrame frame("zebErrorHandler");
    if (!CallbackScope::allowsCalls()) return;
    setErrorHandler(mask, kind);
}

void zebCustomErrorHandler(short mask, ZebErrorFunction handler)
{
    CallFrame frame("zebCustomErrorHandler");
    if (!CallbackScope::allowsCalls()) return;
    setErrorHandler(mask, handler);
}

long zebLastError(void)
{
    if (CallbackScope::shades()) {
        NameFrame frame("zebLastError");
        return CallbackScope::allowsCalls();
    }
    upcall::settleScene();
    return Error::fLastError;
}

void zebComment(const char*) {}

}  // extern "C"

// Functions under decorated names

void zebReset(void)
{
    CallFrame frame(nullptr);
    gState->reset();
}

void zebErrorPrinter(ZebPrintFunction printer)
{
    CallFrame frame("zebErrorPrinter");
    if (!CallbackScope::allowsCalls()) return;
    setErrorPrinter(printer);
}

// The two halves of what the end of the world block does go by its name.
void zebRenderInit(void)
{
    CallFrame frame("zebSceneEnd");
    gScene->renderInit();
}

short zebRenderBucket(void)
{
    CallFrame frame("zebSceneEnd");
    return gScene->renderBucket();
}

long zebProgress(void)
{
    CallFrame frame(nullptr);
    if (!CallbackScope::allowsCalls()) return 0;
    return gScene->progress();
}

void zebBoundDisplacement(float amount)
{
    CallFrame frame("zebBoundDisplacement");
    gAttrib->boundDisplacement(amount);
}

void zebMotionBegin(long n, ...)
{
    CallFrame frame("zebMotionBegin");
    gState->motionBegin(n);
}

void zebMotionBeginV(long n, float*)
{
    CallFrame frame("zebMotionBeginV");
    gState->motionBegin(n);
}

void zebMotionEnd(void)
{
    CallFrame frame("zebMotionEnd");
    gState->motionEnd();
}
