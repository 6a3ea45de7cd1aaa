// The hot kernels, each alone.

#include <benchmark/benchmark.h>

#include "geom/convex_polygon.h"
#include "geom/grid.h"
#include "geom/triangle.h"
#include "hider/micropolygon.h"
#include "hider/pixel_filter.h"
#include "math/spaces.h"
#include "scenes.h"
#include "state/quark.h"
#include "state/state.h"

namespace zebbench
{

namespace
{

using namespace zeb;

// A triangle of about 300 micropolygons in the middle of a picture that waits to be rendered.
class Kernel
{
public:
    Kernel()
    {
        begin(640, 480);
        zebShadingModel(ZEB_SMOOTH);
        frame = std::make_unique<RenderFrame>(*gOption, gCameraToRaster);
        static float points[9] = {0, 0, 0, 0.06f, 0, 0, 0, 0.06f, 0};
        const unsigned short tokens[1] = {kQPoint};
        void* const values[1] = {points};
        polygon = std::make_unique<ConvexPolygon>(3, 1, tokens, values);
        const long corners[3] = {0, 1, 2};
        triangle = std::make_unique<Triangle>(*polygon, 0u, corners);
    }
    ~Kernel()
    {
        triangle.reset();
        polygon.reset();
        zebReset();
    }
    std::unique_ptr<Grid> grid() const
    {
        Dicing dicing{*frame};
        triangle->diceable(dicing);
        return triangle->dice(dicing);
    }

    std::unique_ptr<RenderFrame> frame;
    std::unique_ptr<ConvexPolygon> polygon;
    std::unique_ptr<Triangle> triangle;
};

double cells(const Grid& grid)
{
    double total = 0;
    for (int j = 0; j < grid.fVSize; ++j) total += grid.cellCount(j);
    return total;
}

void perCell(benchmark::State& state, const Grid& grid)
{
    state.counters["cells"] = cells(grid);
    state.counters["cells/s"] =
        benchmark::Counter(cells(grid), benchmark::Counter::kIsIterationInvariantRate);
}

void dicingTest(benchmark::State& state)
{
    const Kernel kernel;
    Dicing dicing{*kernel.frame};
    for (auto _ : state) benchmark::DoNotOptimize(kernel.triangle->diceable(dicing));
}

void dice(benchmark::State& state)
{
    const Kernel kernel;
    Dicing dicing{*kernel.frame};
    kernel.triangle->diceable(dicing);
    for (auto _ : state) benchmark::DoNotOptimize(kernel.triangle->dice(dicing));
    perCell(state, *kernel.grid());
}

void project(benchmark::State& state)
{
    const Kernel kernel;
    const std::unique_ptr<Grid> grid = kernel.grid();
    for (auto _ : state) {
        grid->project(*kernel.frame);
        benchmark::ClobberMemory();
    }
    perCell(state, *grid);
}

// Beyond the light and the ambient of the scene, so many more distant ones.
void shade(benchmark::State& state)
{
    Kernel kernel;
    for (long k = 0; k < state.range(0); ++k) zebLightSource(zebQuark("distant"), 0);
    kernel.polygon->common().inherit(0);
    const std::unique_ptr<Grid> grid = kernel.grid();
    std::vector<AskedCells> cells(1);
    for (int j = 0; j < grid->fVSize; ++j) {
        for (int i = 0; i < grid->cellCount(j); ++i) {
            if (cells.back().count == AskedCells::kMost) cells.emplace_back();
            cells.back().cells[cells.back().count++] = {static_cast<std::uint16_t>(i),
                                                        static_cast<std::uint16_t>(j)};
        }
    }
    for (std::size_t k = 1; k < cells.size(); ++k) cells[k - 1].next = &cells[k];
    ShadingCounts counts;
    for (auto _ : state) {
        grid->shadeOnDemand(*kernel.frame);
        grid->shade(cells.data(), counts);
        benchmark::ClobberMemory();
    }
    perCell(state, *grid);
}

void micropolygonTest(benchmark::State& state)
{
    const Kernel kernel;
    const std::unique_ptr<Grid> grid = kernel.grid();
    grid->project(*kernel.frame);
    MicroPolygon cell(*grid);
    const Bound box = cell.bound();
    const float x = (box.xmin + box.xmax) / 2, y = (box.ymin + box.ymax) / 2;
    float s, t;
    for (auto _ : state) {
        cell.place(0, 0);
        benchmark::DoNotOptimize(cell.locate(x, y, s, t));
    }
    state.counters["tests/s"] =
        benchmark::Counter(1, benchmark::Counter::kIsIterationInvariantRate);
}

void filter(benchmark::State& state)
{
    zebReset();
    zebFilter(static_cast<short>(state.range(0)));
    const PixelFilter pixelFilter(*gOption);
    WeightBlock block;
    block.count = WeightBlock::kMost;
    for (int k = 0; k < block.count; ++k) {
        block.dx[k] = static_cast<float>(k - block.count / 2) / static_cast<float>(block.count / 2);
        block.dy[k] = 0.3f;
    }
    for (auto _ : state) {
        pixelFilter.weigh(block);
        benchmark::DoNotOptimize(block.weights);
    }
    state.counters["weights/s"] =
        benchmark::Counter(block.count, benchmark::Counter::kIsIterationInvariantRate);
    zebReset();
}

}  // namespace

BENCHMARK(dicingTest);
BENCHMARK(dice);
BENCHMARK(project);
BENCHMARK(shade)->ArgName("lights")->Arg(0)->Arg(1)->Arg(4);
BENCHMARK(micropolygonTest);
BENCHMARK(filter)->ArgName("id")->DenseRange(0x100, 0x104);

}  // namespace zebbench
