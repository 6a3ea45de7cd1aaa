// The exported functions that are at the service of the host's while these shade a row.

#include "api/call_frame.h"
#include "shade/host_row.h"
#include "zebcore/zebcore.h"

using namespace zeb;

extern "C" {

float* zebRowPlane(const ZebRow* row)
{
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

}  // extern "C"
