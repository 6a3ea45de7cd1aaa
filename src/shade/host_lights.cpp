// The light that functions which shade ask for.

#include <algorithm>

#include "shade/host_row.h"
#include "state/error.h"

namespace zeb
{

bool HostRow::mayAskLights() const
{
    if (!fWithoutLight) return true;
    error(kState, kError, "%s", fWithoutLight);
    return false;
}

SurfacePoint HostRow::lit(std::size_t k) const
{
    SurfacePoint point;
    point.P = pointAt(fRow.P, k);
    point.lights = &fValues.attrib().lights;
    point.row = this;
    point.number = k;
    return point;
}

// By lanes, unless some light is more than the kernels know, or something has to be reported.
template <class One>
void HostRow::gather(RowGathering row, Triple result, const One& one) const
{
    if (!mayAskLights()) return;
    float* found[3];
    take(found);
    const LightRecords* const lights = fKernel ? lightRecords() : nullptr;
    if (lights) {
        row.count = static_cast<int>(fSize);
        row.lights = lights->data();
        row.lightCount = static_cast<int>(lights->size());
        row.P = fRow.P;
        row.result = found;
    }
    if (!lights || !fKernel.gather(row)) {
        for (std::size_t k = 0; k < fCount; ++k) put(found, k, one(k));
        fill(found);
    }
    for (int k = 0; k < 3; ++k) std::copy_n(found[k], fSize, result[k]);
}

void HostRow::ambient(Triple result) const
{
    gather({}, result, [&](std::size_t k) { return Surface::ambient(lit(k)); });
}

void HostRow::diffuse(Triple N, Triple result) const
{
    RowGathering row;
    row.kind = RowGathering::kDiffuse;
    row.N = N;
    gather(row, result, [&](std::size_t k) {
        SurfacePoint point = lit(k);
        return Surface::diffuse(point, pointAt(N, k));
    });
}

void HostRow::specular(Triple N, Triple V, float roughness, Triple result) const
{
    RowGathering row;
    row.kind = RowGathering::kSpecular;
    row.N = N;
    row.V = V;
    row.shine = roughness;
    gather(row, result, [&](std::size_t k) {
        SurfacePoint point = lit(k);
        Point toEye = pointAt(V, k);
        return Surface::specular(point, pointAt(N, k), toEye, roughness);
    });
}

void HostRow::phong(Triple N, Triple V, float size, Triple result) const
{
    RowGathering row;
    row.kind = RowGathering::kPhong;
    row.N = N;
    row.V = V;
    row.shine = size;
    gather(row, result, [&](std::size_t k) {
        SurfacePoint point = lit(k);
        return Surface::phong(point, pointAt(N, k), pointAt(V, k), size);
    });
}

long HostRow::lightCount() const
{
    long count = 0;
    for (const auto& light : fValues.attrib().lights) count += !light->isambient();
    return count;
}

bool HostRow::light(long number, Triple L, Triple Cl, Triple Ol) const
{
    if (!mayAskLights()) return false;
    const Light* asked = nullptr;
    std::size_t place = 0, places = 0;
    for (const auto& light : fValues.attrib().lights) {
        if (!light->isambient() && number-- == 0) {
            asked = light.get();
            place = places;
        }
        ++places;
    }
    if (!asked) return false;
    const LightRecords* const lights = fKernel ? lightRecords() : nullptr;
    const bool done =
        lights && fKernel.arrive({static_cast<int>(fSize), &(*lights)[place], fRow.P, L, Cl});
    for (std::size_t k = 0; k < fCount && !done; ++k) {
        LightSample sample;
        sample.row = this;
        sample.point = k;
        const bool arrives = asked->illuminates(pointAt(fRow.P, k), gOrigin, kPi, 0, sample) > 0;
        if (arrives) asked->evaluate(sample);
        put(L, k, normalize(scaled(-sample.L)));
        put(Cl, k, arrives ? sample.Cl : gBlack);
    }
    fill(L);
    fill(Cl);
    const float* const* const opacities = asked->host() ? planes(*asked).Ol : nullptr;
    for (int k = 0; Ol && k < 3; ++k) {
        if (opacities) {
            std::copy_n(opacities[k], fSize, Ol[k]);
        } else {
            std::fill_n(Ol[k], fSize, 1.0f);
        }
    }
    return true;
}

void HostRow::facing(Triple N, Triple result) const
{
    if (fKernel) return fKernel.face({static_cast<int>(fSize), N, fRow.I, fRow.Ng, result});
    for (std::size_t k = 0; k < fSize; ++k) {
        put(result, k,
            faceforward(normalize(scaled(pointAt(N, k))), scaled(pointAt(fRow.I, k)),
                        scaled(pointAt(fRow.Ng, k))));
    }
}

}  // namespace zeb
