// Renders and measures whole pictures.
#pragma once

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <fstream>
#include <string>

#include "hider/scene.h"
#include "scenes.h"

namespace zebbench
{

// The peak of resident memory, in MB, since the last reset; both are Linux's own.
inline double peakMegabytes()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0) return std::stod(line.substr(6)) / 1024;
    }
    return 0;
}

inline void resetPeak()
{
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << 5;
}

// Renders a picture a round, and counts.
template <class Build>
void picture(benchmark::State& state, long width, long height, const Build& build)
{
    resetPeak();
    zeb::Counts counts;
    for (auto _ : state) {
        begin(width, height);
        build();
        zebSceneEnd();
        counts = zeb::gScene->counts();
    }
    using benchmark::Counter;
    const auto micropolygons = static_cast<double>(counts.micropolygons);
    const auto millions = [](std::uint64_t count) { return static_cast<double>(count) / 1e6; };
    state.counters["kpieces"] = static_cast<double>(counts.pieces) / 1e3;
    state.counters["kgrids"] = static_cast<double>(counts.grids) / 1e3;
    state.counters["Mmp"] = millions(counts.micropolygons);
    state.counters["Mshaded"] = millions(counts.shaded);
    state.counters["Mseen"] = millions(counts.seen);
    state.counters["Mtests"] = millions(counts.tests);
    state.counters["Mhits"] = millions(counts.hits);
    // Of the whole picture's time.
    const auto timePer = [](std::uint64_t count) {
        return Counter(static_cast<double>(count),
                       Counter::kIsIterationInvariantRate | Counter::kInvert);
    };
    if (counts.shaded) state.counters["s/shaded"] = timePer(counts.shaded);
    if (counts.tests) state.counters["s/test"] = timePer(counts.tests);
    state.counters["mp/s"] = Counter(micropolygons, Counter::kIsIterationInvariantRate);
    state.counters["samples/s"] =
        Counter(static_cast<double>(counts.samples), Counter::kIsIterationInvariantRate);
    state.counters["peakMB"] = peakMegabytes();
    zebReset();
}

}  // namespace zebbench
