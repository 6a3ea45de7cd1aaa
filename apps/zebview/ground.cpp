#include "ground.h"

#include <algorithm>
#include <cmath>

#include "row.h"

namespace zebview
{

namespace
{

// Shadows fade out between these distances from the model's middle.
constexpr float kWhole = 1.5f, kNone = 3.5f;

struct Floor {
    float up[3], center[3];  // in camera space
};

float alongUp(const Floor& floor, float* const* v, long k)
{
    return floor.up[0] * v[0][k] + floor.up[1] * v[1][k] + floor.up[2] * v[2][k];
}

// 1 where shadows are whole.
float fading(const Floor& floor, const ZebRow& row, long k)
{
    float square = 0;
    for (std::size_t c = 0; c < 3; ++c) {
        const float d = row.P[c][k] - floor.center[c];
        square += d * d;
    }
    const float t = std::clamp((kNone - std::sqrt(square)) / (kNone - kWhole), 0.0f, 1.0f);
    return t * t * (3 - 2 * t);
}

// Of all light that would arrive, the part that shadows take.
void shade(void* data, ZebRow* row)
{
    const Floor& floor = *static_cast<const Floor*>(data);
    const Planes L = newPlanes(*row), Cl = newPlanes(*row), Ol = newPlanes(*row);
    const Planes ambient = newPlanes(*row);
    float* const all = zebRowPlane(row);
    float* const missing = zebRowPlane(row);
    zebRowAmbient(row, ambient.data());
    for (long k = 0; k < row->count; ++k) {
        all[k] = ambient[0][k] + ambient[1][k] + ambient[2][k];
        missing[k] = 0;
    }
    for (long light = 0; light < zebRowLights(row); ++light) {
        zebRowLight(row, light, L.data(), Cl.data(), Ol.data());
        for (long k = 0; k < row->count; ++k) {
            const float cosine = std::max(alongUp(floor, L.data(), k), 0.0f);
            for (std::size_t c = 0; c < 3; ++c) {
                all[k] += cosine * (Cl[c][k] + 1 - Ol[c][k]);
                missing[k] += cosine * (1 - Ol[c][k]);
            }
        }
    }
    for (long k = 0; k < row->count; ++k) {
        const bool fromAbove = alongUp(floor, row->I, k) < 0;
        const float dark = all[k] > 0 && fromAbove ? missing[k] / all[k] : 0;
        for (std::size_t c = 0; c < 3; ++c) {
            row->Ci[c][k] = 0;
            row->Oi[c][k] = dark * fading(floor, *row, k);
        }
    }
}

// How low the model reaches.
float lowest(const Model& model)
{
    float height = 1;
    everyPoint(model, [&](const Vector& p) { height = std::min(height, static_cast<float>(p.y)); });
    return height - static_cast<float>(reachOf(model));
}

// A part of the floor.
struct Part {
    float x0 = kNone, x1 = -kNone, z0 = kNone, z1 = -kNone;

    void add(float x, float z, float around)
    {
        x0 = std::min(x0, std::max(x - around, -kNone));
        x1 = std::max(x1, std::min(x + around, kNone));
        z0 = std::min(z0, std::max(z - around, -kNone));
        z1 = std::max(z1, std::min(z + around, kNone));
    }
    bool isEmpty() const { return x0 >= x1 || z0 >= z1; }
};

// Shading the whole floor would take longer than all the rest.
Part shadowedPart(const Model& model, const Shadows& shadows, float height)
{
    Part part;
    const float around = 1.1f * kWidestEdge + static_cast<float>(reachOf(model));
    for (const auto& shadow : shadows) {
        if (shadow->ahead.y >= 0) continue;
        const auto fall = static_cast<float>(1 / std::max(-shadow->ahead.y, 1e-6));
        const float x = fall * static_cast<float>(shadow->ahead.x);
        const float z = fall * static_cast<float>(shadow->ahead.z);
        everyPoint(model, [&](const Vector& p) {
            const float above = static_cast<float>(p.y) - height;
            part.add(static_cast<float>(p.x) + above * x, static_cast<float>(p.z) + above * z,
                     around * fall);
        });
    }
    return part;
}

}  // namespace

Camera roomForGround(Camera camera)
{
    constexpr float corner = 1.5f * kNone, closest = 0.01f;
    camera.nearest = std::max(camera.nearest - corner, std::min(camera.nearest, closest));
    camera.farthest += corner;
    return camera;
}

void addGround(const Model& model, const Shadows& shadows, const Camera& camera,
               const Settings& settings)
{
    const float y = lowest(model);
    const Part part = shadowedPart(model, shadows, y);
    if (part.isEmpty()) return;
    const auto floor = new Floor{};
    for (unsigned i = 0; i < 3; ++i) {
        floor->up[i] = camera.toCamera[1][i];
        floor->center[i] = camera.toCamera[3][i] + y * floor->up[i];
    }
    const ZebPoint corners[4] = {
        {part.x0, y, part.z0}, {part.x0, y, part.z1}, {part.x1, y, part.z1}, {part.x1, y, part.z0}};
    const ZebShader shader{floor, shade, [](void* data) { delete static_cast<Floor*>(data); },
                           ZEB_SHADE_ANYWHERE | ZEB_SHADE_OPACITY};
    zebAttributePush();
    zebCustomSurface(&shader);
    zebBackface(2);
    zebShadingRate(static_cast<float>(settings.shadingRate));
    zebPolygon(4, zebQuark("point"), corners, 0);
    zebAttributePop();
}

}  // namespace zebview
