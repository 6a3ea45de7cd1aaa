// Closed meshes have no holes, from wherever they are seen.

#include <map>
#include <random>

#include "support/scene.h"

namespace zebtest
{

namespace
{

struct Mesh {
    std::vector<Vec> points;
    std::vector<long> sizes, indices;
};

// An icosahedron divided level times and blown up to the unit sphere.
Mesh icosphere(int level)
{
    const float t = (1 + std::sqrt(5.0f)) / 2;
    Mesh mesh;
    mesh.points = {{-1, t, 0},  {1, t, 0},  {-1, -t, 0}, {1, -t, 0}, {0, -1, t},  {0, 1, t},
                   {0, -1, -t}, {0, 1, -t}, {t, 0, -1},  {t, 0, 1},  {-t, 0, -1}, {-t, 0, 1}};
    std::vector<long> triangles = {0, 11, 5, 0, 5,  1,  0,  1,  7,  0,  7, 10, 0, 10, 11,
                                   1, 5,  9, 5, 11, 4,  11, 10, 2,  10, 7, 6,  7, 1,  8,
                                   3, 9,  4, 3, 4,  2,  3,  2,  6,  3,  6, 8,  3, 8,  9,
                                   4, 9,  5, 2, 4,  11, 6,  2,  10, 8,  6, 7,  9, 8,  1};
    for (int k = 0; k < level; ++k) {
        std::map<std::pair<long, long>, long> middles;
        const auto middle = [&](long a, long b) {
            const auto key = std::minmax(a, b);
            const auto [it, fresh] =
                middles.try_emplace({key.first, key.second}, static_cast<long>(mesh.points.size()));
            if (fresh) {
                const Vec p = mesh.points[static_cast<std::size_t>(a)],
                          q = mesh.points[static_cast<std::size_t>(b)];
                mesh.points.push_back({(p[0] + q[0]) / 2, (p[1] + q[1]) / 2, (p[2] + q[2]) / 2});
            }
            return it->second;
        };
        std::vector<long> finer;
        for (std::size_t i = 0; i < triangles.size(); i += 3) {
            const long a = triangles[i], b = triangles[i + 1], c = triangles[i + 2];
            const long ab = middle(a, b), bc = middle(b, c), ca = middle(c, a);
            for (const long v : {a, ab, ca, b, bc, ab, c, ca, bc, ab, bc, ca}) finer.push_back(v);
        }
        triangles = finer;
    }
    for (Vec& p : mesh.points) {
        const auto r = static_cast<float>(std::sqrt(dot(p, p)));
        p = {p[0] / r, p[1] / r, p[2] / r};
    }
    mesh.indices = triangles;
    mesh.sizes.assign(triangles.size() / 3, 3);
    return mesh;
}

Mesh torus(int nu, int nv)
{
    Mesh mesh;
    for (int j = 0; j < nv; ++j) {
        for (int i = 0; i < nu; ++i) {
            const double u = 2 * M_PI * i / nu, v = 2 * M_PI * j / nv, r = 0.8 + 0.35 * std::cos(v);
            mesh.points.push_back({static_cast<float>(r * std::cos(u)),
                                   static_cast<float>(r * std::sin(u)),
                                   static_cast<float>(0.35 * std::sin(v))});
            const long a = j * nu + i, b = j * nu + (i + 1) % nu;
            const long c = (j + 1) % nv * nu + (i + 1) % nu, d = (j + 1) % nv * nu + i;
            for (const long k : {a, b, c, d}) mesh.indices.push_back(k);
            mesh.sizes.push_back(4);
        }
    }
    return mesh;
}

class Watertight : public testing::Test
{
protected:
    ~Watertight() override { zebReset(); }

    void render(const Mesh& mesh, std::mt19937& random, float size, bool adaptive)
    {
        std::uniform_real_distribution<float> angle(0, 360), axis(-1, 1), off(-0.3f, 0.3f);
        zebReset();
        zebRasterViewport(0, 80, 0, 60);
        zebViewPerspective(40);
        zebOutputSamples(ZEB_SAMPLES_ALPHA);
        zebFilter(ZEB_FILTER_BOX);
        zebFilterWidth(1, 1);
        if (adaptive) zebSampleAdaptive(0.001f);
        picture.attachFloat();
        zebTranslate(off(random), off(random), 5);
        zebRotate(angle(random), axis(random), axis(random), axis(random));
        zebScale(size, size, size);
        zebSceneBegin();
        zebSurface(zebQuark("constant"), 0);
        zebPolygonMesh(static_cast<long>(mesh.sizes.size()), mesh.sizes.data(), mesh.indices.data(),
                       zebQuark("point"), mesh.points.data(), 0);
        zebSceneEnd();
    }

    // Pixels that are not whole though all their neighbours are covered: background inside.
    long holes() const
    {
        long count = 0;
        for (long y = 1; y + 1 < picture.height; ++y) {
            for (long x = 1; x + 1 < picture.width; ++x) {
                bool surrounded = true;
                for (long dy = -1; dy <= 1; ++dy) {
                    for (long dx = -1; dx <= 1; ++dx) {
                        if (dx || dy) surrounded &= picture.value(x + dx, y + dy, 0) == 1;
                    }
                }
                count += surrounded && picture.value(x, y, 0) < 1;
            }
        }
        return count;
    }

    Picture picture{1};
    Reports reports;
};

}  // namespace

TEST_F(Watertight, SpheresAtFiftyRandomViews)
{
    std::mt19937 random(1);
    const Mesh coarse = icosphere(1), fine = icosphere(4);
    for (int k = 0; k < 50; ++k) {
        const float size = 0.1f + 0.06f * static_cast<float>(k);
        render(k % 2 ? coarse : fine, random, size, k % 5 == 0);
        EXPECT_EQ(holes(), 0) << "view " << k;
        EXPECT_GT(picture.sum(0), 3);
    }
}

TEST_F(Watertight, QuadrilateralMeshesAtFiftyRandomViews)
{
    std::mt19937 random(2);
    for (int k = 0; k < 50; ++k) {
        const Mesh mesh = torus(6 + k, 5 + k / 2);
        render(mesh, random, 0.4f + 0.04f * static_cast<float>(k), k % 5 == 0);
        EXPECT_EQ(holes(), 0) << "view " << k;
    }
}

TEST_F(Watertight, AClosedSphereCoversTheDiskOfItsSilhouette)
{
    std::mt19937 random(3);
    zebReset();
    zebRasterViewport(0, 200, 0, 200);
    zebViewPerspective(40);
    zebOutputSamples(ZEB_SAMPLES_ALPHA);
    picture.attachFloat();
    zebTranslate(0, 0, 5);
    zebSceneBegin();
    const Mesh mesh = icosphere(6);
    zebPolygonMesh(static_cast<long>(mesh.sizes.size()), mesh.sizes.data(), mesh.indices.data(),
                   zebQuark("point"), mesh.points.data(), 0);
    zebSceneEnd();
    // The silhouette of a unit sphere at distance 5: tan(asin(1 / 5)) over tan 20, in pixels.
    const double r = 100 * std::tan(std::asin(0.2)) / std::tan(M_PI / 9);
    EXPECT_NEAR(picture.sum(0), M_PI * r * r, 0.003 * M_PI * r * r);
    for (long y = 0; y < 200; ++y) {
        for (long x = 0; x < 200; ++x) {
            const double d =
                std::hypot(static_cast<double>(x) - 99.5, static_cast<double>(y) - 99.5);
            if (d < r - 2) {
                EXPECT_EQ(picture.value(x, y, 0), 1) << x << ' ' << y;
            }
            if (d > r + 2) {
                EXPECT_EQ(picture.value(x, y, 0), 0) << x << ' ' << y;
            }
        }
    }
}

}  // namespace zebtest
