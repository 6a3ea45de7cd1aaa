// The exported functions that are at the service of the host's while these shade a row.

#include "api/call_frame.h"
#include "shade/host_row.h"
#include "zebcore/zebcore.h"

using namespace zeb;

namespace
{

bool isWithin(const char* name, long count, long most)
{
    if (count >= 1 && count <= most) return true;
    error(kRange, kError, "%s must be 1 to %ld, not %ld", name, most, count);
    return false;
}
bool isDimension(long count) { return isWithin("dimensions", count, 4); }

}  // namespace

extern "C" {

float* zebRowPlane(const ZebRow* row)
{
    // Most often nothing is needed of what a frame is for.
    if (float* const spare = HostRow::sparePlane(row)) return spare;
    NameFrame frame("zebRowPlane");
    const HostRow* const points = HostRow::underWay(row);
    return points ? points->plane() : nullptr;
}

float* zebRowVariable(const ZebRow* row, unsigned short token, long component)
{
    NameFrame frame("zebRowVariable");
    const HostRow* const points = HostRow::underWay(row);
    return points ? points->variable(token, component) : nullptr;
}

const int* zebRowInteger(const ZebRow* row, unsigned short token)
{
    NameFrame frame("zebRowInteger");
    const HostRow* const points = HostRow::underWay(row);
    return points ? points->integers(token) : nullptr;
}

const char* zebRowString(const ZebRow* row, unsigned short token)
{
    NameFrame frame("zebRowString");
    const HostRow* const points = HostRow::underWay(row);
    return points ? points->string(token) : nullptr;
}

void zebRowAmbient(const ZebRow* row, float* const* result)
{
    NameFrame frame("zebRowAmbient");
    const HostRow* const points = HostRow::underWay(row);
    if (points && points->owns(result)) points->ambient(result);
}

void zebRowDiffuse(const ZebRow* row, float* const* N, float* const* result)
{
    NameFrame frame("zebRowDiffuse");
    const HostRow* const points = HostRow::underWay(row);
    if (points && points->owns(N) && points->owns(result)) points->diffuse(N, result);
}

void zebRowSpecular(const ZebRow* row, float* const* N, float* const* V, float roughness,
                    float* const* result)
{
    NameFrame frame("zebRowSpecular");
    const HostRow* const points = HostRow::underWay(row);
    if (points && points->owns(N) && points->owns(V) && points->owns(result)) {
        points->specular(N, V, roughness, result);
    }
}

void zebRowPhong(const ZebRow* row, float* const* N, float* const* V, float size,
                 float* const* result)
{
    NameFrame frame("zebRowPhong");
    const HostRow* const points = HostRow::underWay(row);
    if (points && points->owns(N) && points->owns(V) && points->owns(result)) {
        points->phong(N, V, size, result);
    }
}

long zebRowLights(const ZebRow* row)
{
    NameFrame frame("zebRowLights");
    const HostRow* const points = HostRow::underWay(row);
    return points ? points->lightCount() : 0;
}

short zebRowLight(const ZebRow* row, long number, float* const* L, float* const* Cl,
                  float* const* Ol)
{
    NameFrame frame("zebRowLight");
    const HostRow* const points = HostRow::underWay(row);
    if (!points || !points->owns(L) || !points->owns(Cl) || (Ol && !points->owns(Ol))) return 0;
    return points->light(number, L, Cl, Ol);
}

void zebRowFacing(const ZebRow* row, float* const* N, float* const* result)
{
    NameFrame frame("zebRowFacing");
    const HostRow* const points = HostRow::underWay(row);
    if (points && points->owns(N) && points->owns(result)) points->facing(N, result);
}

void zebRowDifferences(const ZebRow* row, const float* values, float* along1, float* along2)
{
    NameFrame frame("zebRowDifferences");
    const HostRow* const points = HostRow::underWay(row);
    if (points && points->owns(values) && points->owns(along1) && points->owns(along2)) {
        points->differences(values, along1, along2);
    }
}

void zebRowNormals(const ZebRow* row, float* const* positions, float* const* result)
{
    NameFrame frame("zebRowNormals");
    const HostRow* const points = HostRow::underWay(row);
    if (points && points->owns(positions) && points->owns(result)) {
        points->normals(positions, result);
    }
}

void zebRowTransform(const ZebRow* row, unsigned short from, unsigned short to, short kind,
                     float* const* points, float* const* result)
{
    NameFrame frame("zebRowTransform");
    const HostRow* const shaded = HostRow::underWay(row);
    if (shaded && shaded->owns(points) && shaded->owns(result)) {
        shaded->transform(from, to, kind, points, result);
    }
}

void zebRowNoise(const ZebRow* row, long dimensions, float* const* places, const long* periods,
                 float* result)
{
    NameFrame frame("zebRowNoise");
    const HostRow* const points = HostRow::underWay(row);
    if (points && isDimension(dimensions) && points->owns(places, dimensions) &&
        points->owns(result)) {
        points->noise(dimensions, places, periods, result);
    }
}

void zebRowTurbulence(const ZebRow* row, long dimensions, float* const* places, long octaves,
                      float gain, short absolute, float* result)
{
    NameFrame frame("zebRowTurbulence");
    const HostRow* const points = HostRow::underWay(row);
    if (points && isDimension(dimensions) && isWithin("octaves", octaves, 32) &&
        points->owns(places, dimensions) && points->owns(result)) {
        points->turbulence(dimensions, places, octaves, gain, absolute != 0, result);
    }
}

void zebRowStep(const ZebRow* row, float edge, const float* values, float* result)
{
    NameFrame frame("zebRowStep");
    const HostRow* const points = HostRow::underWay(row);
    if (points && points->owns(values) && points->owns(result)) points->step(edge, values, result);
}

void zebRowChecks(const ZebRow* row, const float* s, const float* t, float* result)
{
    NameFrame frame("zebRowChecks");
    const HostRow* const points = HostRow::underWay(row);
    if (points && points->owns(s) && points->owns(t) && points->owns(result)) {
        points->checks(s, t, result);
    }
}

const void* zebImage(long width, long height, long channels, const float* pixels, short wrap)
{
    CallFrame frame("zebImage");
    if (!CallbackScope::allowsCalls()) return nullptr;
    auto image = Image::make(width, height, channels, pixels, wrap);
    return image ? Image::keep(std::move(image)) : nullptr;
}

void zebImageFree(const void* image)
{
    CallFrame frame("zebImageFree");
    if (!CallbackScope::allowsCalls() || Image::release(image)) return;
    error(kRange, kError, "image handle %p is not live", image);
}

void zebRowImage(const ZebRow* row, const void* image, const float* s, const float* t, float blur,
                 float* const* results)
{
    NameFrame frame("zebRowImage");
    const HostRow* const points = HostRow::underWay(row);
    if (!points) return;
    const std::shared_ptr<const Image> found = Image::find(image);
    if (!found) {
        error(kRange, kError, "image handle %p is not live", image);
    } else if (points->owns(s) && points->owns(t) && points->owns(results, found->channels())) {
        points->look(*found, s, t, blur, results);
    }
}

}  // extern "C"
