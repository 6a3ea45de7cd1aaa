// What functions of the host's cost: "plastic" in C beside the built-in one, and a moved surface.

#include <cmath>

#include "pictures.h"
#include "zebcore/zebcore.h"

namespace zebbench
{

namespace
{

struct Planes {
    float* planes[3];

    explicit Planes(const ZebRow* row)
    {
        for (float*& plane : planes) plane = zebRowPlane(row);
    }
};

void plastic(void*, ZebRow* row)
{
    const Planes N(row), V(row), ambient(row), diffuse(row), specular(row);
    for (int c = 0; c < 3; ++c) {
        for (long k = 0; k < row->count; ++k) V.planes[c][k] = -row->I[c][k];
    }
    zebRowFacing(row, row->N, N.planes);
    zebRowAmbient(row, ambient.planes);
    zebRowDiffuse(row, N.planes, diffuse.planes);
    zebRowSpecular(row, N.planes, V.planes, 0.1f, specular.planes);
    for (int c = 0; c < 3; ++c) {
        const float *const a = ambient.planes[c], *const d = diffuse.planes[c];
        const float *const s = specular.planes[c], *const Cs = row->Cs[c], *const Os = row->Os[c];
        float* const Ci = row->Ci[c];
        for (long k = 0; k < row->count; ++k) {
            Ci[k] = Os[k] * (Cs[k] * (a[k] + 0.5f * d[k]) + 0.5f * s[k]);
        }
    }
}

// Outwards, by noise of the place.
void bumps(void*, ZebRow* row)
{
    const Planes P(row);
    float* const height = zebRowPlane(row);
    for (int c = 0; c < 3; ++c) {
        for (long k = 0; k < row->count; ++k) P.planes[c][k] = 8 * row->P[c][k];
    }
    zebRowNoise(row, 3, P.planes, nullptr, height);
    for (long k = 0; k < row->count; ++k) {
        const float x = row->N[0][k], y = row->N[1][k], z = row->N[2][k];
        const float by = 0.05f * height[k] / std::sqrt(x * x + y * y + z * z);
        for (int c = 0; c < 3; ++c) row->P[c][k] += by * row->N[c][k];
    }
}

ZebShader shader(ZebShadeFunction function)
{
    ZebShader made{};
    made.shade = function;
    made.flags = ZEB_SHADE_ANYWHERE;
    return made;
}

void usePlastic(bool byHost)
{
    zebShadingModel(ZEB_SMOOTH);
    const ZebShader made = shader(plastic);
    if (byHost) {
        zebCustomSurface(&made);
    } else {
        zebSurface(zebQuark("plastic"), 0);
    }
}

void plasticSpheres(benchmark::State& state)
{
    picture(state, 640, 640, [&state] {
        usePlastic(state.range(0) != 0);
        for (int k = 0; k < 400; ++k) {
            zebMatrixPush();
            zebTranslate(-1.2f + 0.12f * static_cast<float>(k % 20),
                         -1.2f + 0.12f * static_cast<float>(k / 20), 0);
            zebSphere(0.06f, -0.06f, 0.06f, 360, 0);
            zebMatrixPop();
        }
    });
}

void plasticMesh(benchmark::State& state)
{
    const Mesh mesh = bumpySphere(100);
    picture(state, 640, 640, [&] {
        usePlastic(state.range(0) != 0);
        mesh.add();
    });
}

void movedSphere(benchmark::State& state)
{
    picture(state, 640, 640, [&state] {
        const ZebShader made = shader(bumps);
        if (state.range(0)) zebCustomDisplacement(&made);
        zebBoundDisplacement(0.05f);
        zebSphere(1, -1, 1, 360, 0);
    });
}

}  // namespace

BENCHMARK(plasticSpheres)->ArgName("host")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(plasticMesh)->ArgName("host")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(movedSphere)->ArgName("moved")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace zebbench
