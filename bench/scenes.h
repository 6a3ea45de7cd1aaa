// Scenes that the benchmarks and their counters are about.
#pragma once

#include <cmath>
#include <vector>

#include "generators.h"
#include "zebcore/zebcore.h"

namespace zebbench
{

struct Mesh {
    std::vector<Vec> points, normals;
    std::vector<long> sizes, indices;

    void add(const char* shader) const
    {
        zebSurface(zebQuark(shader), 0);
        add();
    }
    void add() const
    {
        zebPolygonMesh(static_cast<long>(sizes.size()), sizes.data(), indices.data(),
                       zebQuark("point"), points.data(), zebQuark("normal"), normals.data(), 0);
    }
};

// A bumpy sphere of 2 x n x n triangles.
inline Mesh bumpySphere(int n)
{
    Mesh mesh;
    for (int j = 0; j <= n; ++j) {
        for (int i = 0; i <= n; ++i) {
            const double u = 2 * M_PI * i / n, v = M_PI * j / n;
            const double r = 1 + 0.03 * std::sin(9 * u) * std::sin(11 * v);
            const Vec d = {static_cast<float>(std::cos(u) * std::sin(v)),
                           static_cast<float>(std::cos(v)),
                           static_cast<float>(std::sin(u) * std::sin(v))};
            const auto s = static_cast<float>(r);
            mesh.points.push_back({s * d[0], s * d[1], s * d[2]});
            mesh.normals.push_back(d);
        }
    }
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) {
            const long a = static_cast<long>(j) * (n + 1) + i, b = a + 1, c = a + n + 1, d = c + 1;
            for (const long k : {a, b, d, a, d, c}) mesh.indices.push_back(k);
            mesh.sizes.push_back(3);
            mesh.sizes.push_back(3);
        }
    }
    return mesh;
}

// A picture that goes nowhere, seen in perspective and lit by a distant and an ambient light.
inline void begin(long width, long height)
{
    zebReset();
    zebRasterViewport(0, width, 0, height);
    const ZebDisplay nowhere{};
    zebCustomDisplay(&nowhere);
    zebQuirks(0);
    zebViewPerspective(40);
    zebTranslate(0, 0, 4);
    zebSceneBegin();
    static const float from[3] = {0, 0, 0}, to[3] = {0.5f, -0.6f, 1}, dim = 0.2f;
    zebLightSource(zebQuark("distant"), zebQuark("from"), from, zebQuark("to"), to, 0);
    zebLightSource(zebQuark("ambient"), zebQuark("intensity"), &dim, 0);
}

inline void square(float size, float z)
{
    const Vec p[4] = {{-size, -size, z}, {size, -size, z}, {size, size, z}, {-size, size, z}};
    zebPolygon(4, zebQuark("point"), p, 0);
}

}  // namespace zebbench
