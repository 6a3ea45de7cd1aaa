// Whole pictures, from the first call to the last row. One thread.

#include "pictures.h"

namespace zebbench
{

namespace
{

void hugePolygon(benchmark::State& state)
{
    const float rate = static_cast<float>(state.range(0)) / 100;
    picture(state, 1024, 1024, [rate] {
        zebShadingRate(rate);
        square(3, 0);
    });
}

void triangleMesh(benchmark::State& state)
{
    const Mesh mesh = bumpySphere(static_cast<int>(std::sqrt(state.range(0) / 2.0)));
    picture(state, 1024, 1024, [&mesh] { mesh.add("plastic"); });
}

void separatePolygons(benchmark::State& state)
{
    const auto side = static_cast<int>(std::sqrt(static_cast<double>(state.range(0))));
    picture(state, 1024, 1024, [side] {
        const float step = 2.6f / static_cast<float>(side);
        for (int j = 0; j < side; ++j) {
            for (int i = 0; i < side; ++i) {
                const float x = -1.3f + step * static_cast<float>(i),
                            y = -1.3f + step * static_cast<float>(j);
                const Vec p[4] = {
                    {x, y, 0}, {x + step, y, 0}, {x + step, y + step, 0}, {x, y + step, 0}};
                zebPolygon(4, zebQuark("point"), p, 0);
            }
        }
    });
}

void layers(long count)
{
    const float half[3] = {0.5f, 0.5f, 0.5f}, faint[3] = {0.01f, 0.01f, 0.01f};
    zebOpacity(count > 100 ? faint : half);
    zebSurface(zebQuark("constant"), 0);
    for (long k = 0; k < count; ++k) square(3, 0.001f * static_cast<float>(k % 97));
}

void transparentLayers(benchmark::State& state)
{
    const long size = state.range(0), count = state.range(1);
    picture(state, size, size, [=] {
        zebShadingRate(1);
        layers(count);
    });
}

// Memory must follow the width of the picture, not its height.
void wideCrop(benchmark::State& state)
{
    const long height = state.range(0);
    resetPeak();
    zeb::Counts counts;
    for (auto _ : state) {
        zebReset();
        zebRasterViewport(0, 16384, 0, height);
        const float rows = 48.0f / static_cast<float>(height);
        zebImageCrop(0, 1, 0.5f, 0.5f + rows);
        zebImageWindow(-1, 1, -1, 1);
        const ZebDisplay nowhere{};
        zebCustomDisplay(&nowhere);
        zebViewOrthographic();
        zebTranslate(0, 0, 1);
        zebSceneBegin();
        zebSurface(zebQuark("constant"), 0);
        zebShadingRate(4);
        square(1, 0);
        zebSceneEnd();
        counts = zeb::gScene->counts();
    }
    state.counters["Mmp"] = static_cast<double>(counts.micropolygons) / 1e6;
    state.counters["peakMB"] = peakMegabytes();
    zebReset();
}

}  // namespace

BENCHMARK(hugePolygon)->ArgName("rate%")->Arg(25)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(triangleMesh)->ArgName("N")->Arg(500000)->Arg(2000000)->Unit(benchmark::kMillisecond);
BENCHMARK(separatePolygons)->ArgName("N")->Arg(75000)->Arg(300000)->Unit(benchmark::kMillisecond);
BENCHMARK(transparentLayers)
    ->ArgNames({"size", "N"})
    ->Args({512, 64})
    ->Args({1024, 64})
    ->Args({2048, 64})
    ->Args({128, 250})
    ->Args({128, 1000})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(wideCrop)->ArgName("height")->Arg(4096)->Arg(16384)->Unit(benchmark::kMillisecond);

}  // namespace zebbench
