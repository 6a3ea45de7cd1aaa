// Curved surfaces: whole pictures, and what evaluation costs in each family.

#include <cmath>
#include <cstring>
#include <functional>

#include "geom/grid.h"
#include "geom/nurb.h"
#include "geom/patch_mesh.h"
#include "geom/quadric.h"
#include "math/spaces.h"
#include "pictures.h"
#include "state/quark.h"
#include "state/state.h"
#include "teapot.h"

namespace zebbench
{

namespace
{

using Weighted = std::array<float, 4>;

// n x n heights over a square of 2 x 2 units.
std::vector<Vec> terrain(int n)
{
    std::vector<Vec> points;
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) {
            const float x = 2 * static_cast<float>(i) / static_cast<float>(n - 1) - 1;
            const float y = 2 * static_cast<float>(j) / static_cast<float>(n - 1) - 1;
            points.push_back({1.3f * x, 1.3f * y, 0.1f * std::sin(9 * x) * std::cos(7 * y)});
        }
    }
    return points;
}

// Knots 0, 0, 0, 0, 1 ... spans, of a cubic.
std::vector<float> cubicKnots(int spans)
{
    std::vector<float> knots;
    for (int k = -3; k <= spans + 3; ++k) {
        knots.push_back(static_cast<float>(std::min(std::max(k, 0), spans)));
    }
    return knots;
}

void sphere(benchmark::State& state)
{
    const float rate = static_cast<float>(state.range(0)) / 100;
    picture(state, 1024, 1024, [rate] {
        zebShadingRate(rate);
        zebSphere(1.2f, -1.2f, 1.2f, 360, 0);
    });
}

void smallSpheres(benchmark::State& state)
{
    const int side = 100;
    picture(state, 1024, 1024, [=] {
        for (int k = 0; k < side * side; ++k) {
            zebMatrixPush();
            zebTranslate(-1.2f + 2.4f * static_cast<float>(k % side) / side,
                         -1.2f + 2.4f * static_cast<float>(k / side) / side, 0);
            zebSphere(0.011f, -0.011f, 0.011f, 360, 0);
            zebMatrixPop();
        }
    });
}

void teapot(benchmark::State& state)
{
    picture(state, 1024, 1024, [] {
        zebRotate(-70, 1, 0, 0);
        zebScale(0.4f, 0.4f, 0.4f);
        zebTranslate(0, 0, -1.5f);
        addTeapot();
    });
}

void bicubicMesh(benchmark::State& state)
{
    const std::vector<Vec> points = terrain(97);
    picture(state, 1024, 1024, [&] {
        zebPatchMesh(ZEB_BICUBIC, 97, ZEB_NONPERIODIC, 97, ZEB_NONPERIODIC, zebQuark("point"),
                     points.data(), 0);
    });
}

void nurbsSurface(benchmark::State& state)
{
    const std::vector<Vec> points = terrain(13);
    const std::vector<float> knots = cubicKnots(10);
    picture(state, 1024, 1024, [&] {
        zebNurbMesh(13, 4, knots.data(), 0, 10, 13, 4, knots.data(), 0, 10, zebQuark("point"),
                    points.data(), 0);
    });
}

// Whole pictures of the other families, at the same size and rate.
void family(benchmark::State& state)
{
    static const float p[3] = {1.1f, 0.3f, -0.6f}, q[3] = {1.1f, -0.3f, 0.6f};
    static const Vec corners[4] = {
        {-1.2f, -1.2f, 0.2f}, {1.2f, -1.2f, -0.2f}, {-1.2f, 1.2f, 0}, {1.2f, 1.2f, 0.3f}};
    static const std::vector<std::pair<const char*, std::function<void()>>> families = {
        {"cone", [] { zebCone(1.1f, 1.2f, 1.2f, 360, 0); }},
        {"cylinder", [] { zebCylinder(1, -0.8f, 0.8f, 360, 0); }},
        {"hyperboloid", [] { zebHyperboloid(p, q, 360, 0); }},
        {"paraboloid", [] { zebParaboloid(1.1f, 0, 1.2f, 360, 0); }},
        {"disk", [] { zebDisk(0, 1.2f, 360, 0); }},
        {"torus", [] { zebTorus(0.8f, 0.4f, 0, 360, 360, 0); }},
        {"bilinear", [] { zebPatch(ZEB_BILINEAR, zebQuark("point"), corners, 0); }},
        {"bicubic", [] { zebPatch(ZEB_BICUBIC, zebQuark("point"), terrain(4).data(), 0); }},
    };
    const auto& [name, add] = families[static_cast<std::size_t>(state.range(0))];
    state.SetLabel(name);
    picture(state, 1024, 1024, [&, build = add] {
        zebRotate(-50, 1, 0, 0);
        build();
    });
}

// What is seen through the gaps between grids: from inside a closed surface there is no way past
// it.
void gaps(benchmark::State& state)
{
    const long size = state.range(1);
    static double alpha;
    ZebDisplay device{};
    device.span = [](void*, long x0, long x1, long, const unsigned int* words) {
        for (long x = 0; x <= x1 - x0; ++x) {
            float value;
            std::memcpy(&value, &words[x], sizeof value);
            alpha += static_cast<double>(value);
        }
    };
    std::vector<Vec> ring;
    for (int k = 0; k < 48; ++k) {
        const double u = 2 * M_PI * (k % 8) / 8, v = 2 * M_PI * (k / 8) / 6;
        const double r = 1 + 0.5 * std::cos(v);
        ring.push_back({static_cast<float>(r * std::cos(u)), static_cast<float>(r * std::sin(u)),
                        static_cast<float>(0.5 * std::sin(v))});
    }
    static const char* const names[] = {"sphere", "torus", "bicubic mesh"};
    state.SetLabel(names[state.range(0)]);
    for (auto _ : state) {
        alpha = 0;
        zebReset();
        zebRasterViewport(0, size, 0, size);
        zebCustomDisplay(&device);
        zebOutputSamples(ZEB_SAMPLES_ALPHA);
        zebColorQuantize(0, 0, 0);
        zebFilter(ZEB_FILTER_BOX);
        zebFilterWidth(1, 1);
        zebViewPerspective(60);
        zebClip(0.001f, 100);
        zebSceneBegin();
        zebSurface(zebQuark("constant"), 0);
        zebRotate(40, 1, 0.5f, 0.2f);
        zebTranslate(state.range(0) ? -0.8f : 0, 0, 0);
        if (state.range(0) == 0) zebSphere(1, -1, 1, 360, 0);
        if (state.range(0) == 1) zebTorus(1, 0.5f, 0, 360, 360, 0);
        if (state.range(0) == 2) {
            zebBasis(ZEB_BASIS_BSPLINE, ZEB_APPLY_BOTH);
            zebPatchMesh(ZEB_BICUBIC, 8, ZEB_PERIODIC, 6, ZEB_PERIODIC, zebQuark("point"),
                         ring.data(), 0);
        }
        zebSceneEnd();
    }
    state.counters["gaps/Msample"] = 1e6 * (1 - alpha / static_cast<double>(size * size));
    zebReset();
}

// One primitive of each family.
std::unique_ptr<zeb::Primitive> make(int kind)
{
    using namespace zeb;
    static const float p[3] = {1, 0.3f, -0.6f}, q[3] = {1, -0.3f, 0.6f};
    static std::vector<Vec> points = terrain(4);
    static const unsigned short token = kQPoint;
    static void* const value = points.data();
    static std::vector<Weighted> weighted(64, Weighted{1, 2, 3, 1});
    static const unsigned short weightedToken = kQPointw;
    static void* const weightedValue = weighted.data();
    static const std::vector<float> knots = cubicKnots(1),
                                    high = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1};
    switch (kind) {
        case 0:
            return std::make_unique<Sphere>(SphereCurve(1, -1, 1), 360, 0, nullptr, nullptr);
        case 1:
            return std::make_unique<Cone>(ConeCurve(1, 1, 1), 360, 0, nullptr, nullptr);
        case 2:
            return std::make_unique<Cylinder>(CylinderCurve(1, 0, 1), 360, 0, nullptr, nullptr);
        case 3:
            return std::make_unique<Hyperboloid>(HyperboloidCurve(p, q), 360, 0, nullptr, nullptr);
        case 4:
            return std::make_unique<Paraboloid>(ParaboloidCurve(1, 0, 1), 360, 0, nullptr, nullptr);
        case 5:
            return std::make_unique<Disk>(DiskCurve(0, 1), 360, 0, nullptr, nullptr);
        case 6:
            return std::make_unique<Torus>(TorusCurve(1, 0.3f, 0, 360), 360, 0, nullptr, nullptr);
        case 7:
            return std::make_unique<BilinearPatch>(1, &token, &value);
        case 8:
            return std::make_unique<BicubicPatch>(1, &token, &value);
        case 9: {
            const NurbNet::Direction d{4, 4, knots.data(), 0, 1};
            return NuPatch::make(d, d, 1, &token, &value);
        }
        default: {
            const NurbNet::Direction d{8, 8, high.data(), 0, 1};
            return NuPatch::make(d, d, 1, &weightedToken, &weightedValue);
        }
    }
}

constexpr const char* kKinds[] = {"sphere",     "cone",          "cylinder",     "hyperboloid",
                                  "paraboloid", "disk",          "torus",        "bilinear",
                                  "bicubic",    "nurbs order 4", "nurbs order 8"};

// A grid of 32 x 32 micropolygons.
void diceCurve(benchmark::State& state)
{
    begin(640, 480);
    {
        const auto primitive = make(static_cast<int>(state.range(0)));
        state.SetLabel(kKinds[state.range(0)]);
        const zeb::RenderFrame frame(*zeb::gOption, zeb::gCameraToRaster);
        for (auto _ : state) benchmark::DoNotOptimize(primitive->dice({frame, 32, 32}));
        state.counters["vertices/s"] =
            benchmark::Counter(33 * 33, benchmark::Counter::kIsIterationInvariantRate);
    }
    zebReset();
}

}  // namespace

BENCHMARK(sphere)->ArgName("rate%")->Arg(25)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(smallSpheres)->Unit(benchmark::kMillisecond);
BENCHMARK(teapot)->Unit(benchmark::kMillisecond);
BENCHMARK(bicubicMesh)->Unit(benchmark::kMillisecond);
BENCHMARK(nurbsSurface)->Unit(benchmark::kMillisecond);
BENCHMARK(family)->ArgName("kind")->DenseRange(0, 7)->Unit(benchmark::kMillisecond);
BENCHMARK(gaps)
    ->ArgNames({"kind", "size"})
    ->ArgsProduct({{0, 1, 2}, {64, 256, 1024}})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(diceCurve)->ArgName("kind")->DenseRange(0, 10);

}  // namespace zebbench
