// What more threads and more machines give: how long pictures take with one thread and with two,
// how much of that is serial, what memory a thread takes, and what tiles cost beyond the picture.

#include <malloc.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "peers/zebcore_scene.h"
#include "util/crew.h"

extern "C" int forestExample(int argc, char** argv);

// Where the forest's picture goes: nowhere, as the others'.
extern "C" void forestOutput(short, const char*)
{
    const ZebDisplay nowhere{};
    zebCustomDisplay(&nowhere);
}

// It says what it has built.
extern "C" int forestSilence(const char*, ...) { return 0; }

namespace
{

using namespace zebpeers;

constexpr int kRounds = 5;
constexpr int kTilesAcross = 16;
constexpr long kBucket = 12;  // pixels a side

double seconds(clockid_t clock)
{
    timespec time;
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// What the caller's thread spends in tasks, which any other could have taken.
double gInTasks = 0, gTaskBegan = 0;
long gTasks = 0;
void watch(bool begins)
{
    const double now = seconds(CLOCK_THREAD_CPUTIME_ID);
    if (begins) {
        gTaskBegan = now;
        ++gTasks;
    } else {
        gInTasks += now - gTaskBegan;
    }
}

// Of a look at that clock: one for each task falls between tasks.
double lookTime()
{
    constexpr int kLooks = 20000;
    const double began = seconds(CLOCK_THREAD_CPUTIME_ID);
    for (int k = 0; k < kLooks; ++k) seconds(CLOCK_THREAD_CPUTIME_ID);
    return (seconds(CLOCK_THREAD_CPUTIME_ID) - began) / kLooks;
}

struct Cost {
    double wall = 0, cpu = 0;
    double serial = 0;  // of the processor's time: what only the caller's thread could do

    double serialShare() const { return serial / cpu; }
};

Cost costOf(const std::function<void()>& render)
{
    static const double look = lookTime();
    gInTasks = 0;
    gTasks = 0;
    const double wall = seconds(CLOCK_MONOTONIC), cpu = seconds(CLOCK_PROCESS_CPUTIME_ID);
    const double own = seconds(CLOCK_THREAD_CPUTIME_ID);
    render();
    Cost cost;
    cost.wall = seconds(CLOCK_MONOTONIC) - wall;
    cost.cpu = seconds(CLOCK_PROCESS_CPUTIME_ID) - cpu;
    cost.serial =
        seconds(CLOCK_THREAD_CPUTIME_ID) - own - gInTasks - look * static_cast<double>(gTasks);
    return cost;
}

// Amdahl's law (G. Amdahl, 1967).
double speedUp(double serialShare, int threads)
{
    return 1 / (serialShare + (1 - serialShare) / threads);
}

struct Subject {
    std::string name;
    std::function<void(long threads)> render;
    std::function<void(int tiles)> renderTiles;  // across; null where it is not asked for
};

double borderAt(long tile, int tiles)
{
    const long buckets = (kSize + kBucket - 1) / kBucket;
    const long pixel = std::min<long>(tile * buckets / tiles * kBucket, kSize);
    if (tile == tiles) return 1;
    return std::max((static_cast<double>(pixel) - 0.5) / kSize, 0.0);
}

Subject subjectOf(const std::string& name)
{
    const auto scene = std::make_shared<const Scene>(makeScene(name));
    const auto lists = std::make_shared<const Lists>(makeLists(*scene));
    const auto whole = [=](long threads) {
        const ZebDisplay nowhere{};
        setUp(nowhere, kSize);
        zebThreads(threads);
        zebSceneBegin();
        addLights();
        addSurface();
        addShapes(*scene, *lists);
        zebSceneEnd();
    };
    const auto inTiles = [=](int tiles) {
        const ZebDisplay nowhere{};
        setUp(nowhere, kSize);
        zebThreads(1);
        zebFrameBegin();
        // A mesh is kept for all tiles.
        const bool kept = !scene->curved() && scene->spheres.empty();
        const void* object = nullptr;
        if (kept) {
            object = zebObjectBegin();
            addMesh(scene->meshes.front(), lists->meshes.front());
            zebObjectEnd();
        }
        for (long j = 0; j < tiles; ++j) {
            for (long i = 0; i < tiles; ++i) {
                const auto at = [=](long k) { return static_cast<float>(borderAt(k, tiles)); };
                zebImageCrop(at(i), at(i + 1), at(j), at(j + 1));
                zebSceneBegin();
                addLights();
                addSurface();
                if (kept) {
                    zebColor(scene->meshes.front().color.data());
                    zebObjectCall(object);
                } else {
                    addShapes(*scene, *lists);
                }
                zebSceneEnd();
            }
        }
        zebFrameEnd();
    };
    return {name, whole, inTiles};
}

Subject forest()
{
    const auto render = [](long threads) {
        zebReset();
        zebThreads(threads);
        char name[] = "forest", file[] = "none", samples[] = "4";
        char* arguments[] = {name, file, samples, nullptr};
        forestExample(3, arguments);
    };
    return {"forest", render, nullptr};
}

// The peak of resident memory since the last reset; both are Linux's own.
double peakMegabytes()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0) return std::stod(line.substr(6)) / 1024;
    }
    return 0;
}

double peakOf(const std::function<void()>& render)
{
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << 5;
    render();
    return peakMegabytes();
}

void measureThreads(const Subject& subject)
{
    Cost one, two;
    for (int round = 0; round < kRounds; ++round) {
        const auto better = [round](Cost& best, const Cost& cost) {
            if (round == 0 || cost.wall < best.wall) best = cost;
        };
        better(one, costOf([&] { subject.render(1); }));
        better(two, costOf([&] { subject.render(2); }));
    }
    const double few = peakOf([&] { subject.render(1); });
    const double many = peakOf([&] { subject.render(8); });
    const double share = two.serialShare();
    std::printf("%-14s %8.0f %8.0f %8.2f %8.1f %6.1f %6.1f %6.1f %8.1f\n", subject.name.c_str(),
                one.wall * 1e3, two.wall * 1e3, one.wall / two.wall, share * 100, speedUp(share, 8),
                speedUp(share, 16), speedUp(share, 64), (many - few) / 7);
    std::fflush(stdout);
}

void measureTiles(const Subject& subject)
{
    double whole = 0, tiled = 0;
    for (int round = 0; round < kRounds; ++round) {
        const auto better = [round](double& best, const Cost& cost) {
            best = round == 0 ? cost.cpu : std::min(best, cost.cpu);
        };
        better(whole, costOf([&] { subject.render(1); }));
        better(tiled, costOf([&] { subject.renderTiles(kTilesAcross); }));
    }
    std::printf("%-14s %8.0f %8.0f %8.2f\n", subject.name.c_str(), whole * 1e3, tiled * 1e3,
                tiled / whole);
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> asked(argv + 1, argv + argc);
    std::vector<Subject> subjects;
    for (const char* const name : {"spheres-400", "bunny", "teapot", "forest"}) {
        if (!asked.empty() && std::find(asked.begin(), asked.end(), name) == asked.end()) continue;
        subjects.push_back(name == std::string("forest") ? forest() : subjectOf(name));
    }
    zeb::Crew::watch(watch);
    std::printf("%-14s %8s %8s %8s %8s %20s %8s\n", "", "1 thread", "2", "", "serial",
                "speed-up to expect", "MB a");
    std::printf("%-14s %8s %8s %8s %8s %6s %6s %6s %8s\n", "scene", "ms", "ms", "ratio", "%", "8",
                "16", "64", "thread");
    for (const Subject& subject : subjects) measureThreads(subject);
    std::printf("\n%-14s %8s %8s %8s\n", "processor ms", "whole", "256", "ratio");
    for (const Subject& subject : subjects) {
        if (subject.renderTiles) measureTiles(subject);
    }
    zebReset();
    return 0;
}
