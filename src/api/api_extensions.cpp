// The exported functions of the header's last section, but for those that make primitives.

#include "api/call_frame.h"
#include "display/screen.h"
#include "math/spaces.h"
#include "state/quark.h"
#include "state/state.h"
#include "util/cancel.h"
#include "zebcore/zebcore.h"

using namespace zeb;

extern "C" {

void zebCustomDisplay(const ZebDisplay* device)
{
    CallFrame frame("zebCustomDisplay");
    gOption->customDisplay(device);
}

unsigned short zebDeclare(const char* name, short storage, short type)
{
    NameFrame frame("zebDeclare");
    if (!CallbackScope::allowsCalls()) return 0;
    return Quark::declareTyped(name, storage, type);
}

void zebArray(const void* array, long count, long stride)
{
    NameFrame frame("zebArray");
    if (!CallbackScope::allowsCalls()) return;
    HostArrays::describe(array, count, stride);
}

void zebQuirks(short on)
{
    CallFrame frame("zebQuirks");
    gOption->setQuirks(on);
}

void zebDepthNearest(short on)
{
    CallFrame frame("zebDepthNearest");
    gOption->setDepthNearest(on);
}

void zebLookAt(const float* eye, const float* at, const float* up)
{
    CallFrame frame("zebLookAt");
    gTransform->lookAt(eye, at, up);
}

// Without a frame: signal handlers and other threads call it.
void zebCancel(void) { gCancelled = true; }

void zebProgressCallback(ZebProgressFunction function, void* data)
{
    CallFrame frame("zebProgressCallback");
    gOption->progressCallback(function, data);
}

void zebThreads(long n)
{
    CallFrame frame("zebThreads");
    gOption->setThreads(n);
}

void zebCustomSurface(const ZebShader* shader)
{
    CallFrame frame("zebCustomSurface");
    gAttrib->customSurface(shader);
}

void zebCustomAtmosphere(const ZebShader* shader)
{
    CallFrame frame("zebCustomAtmosphere");
    gAttrib->customAtmosphere(shader);
}

const void* zebCustomLight(const ZebShader* shader)
{
    CallFrame frame("zebCustomLight");
    return gAttrib->customLight(shader);
}

void zebCustomDisplacement(const ZebShader* shader)
{
    CallFrame frame("zebCustomDisplacement");
    gAttrib->customDisplacement(shader);
}

void zebTextureCoordinates(float s1, float t1, float s2, float t2, float s3, float t3, float s4,
                           float t4)
{
    CallFrame frame("zebTextureCoordinates");
    gAttrib->textureCoordinates(s1, t1, s2, t2, s3, t3, s4, t4);
}

short zebWindowEvents(short wait)
{
    CallFrame frame("zebWindowEvents");
    if (!CallbackScope::allowsCalls()) return 0;
    return windowEvents(wait != 0);
}

long zebVersion(void) { return ZEB_VERSION_NUMBER; }

}  // extern "C"
