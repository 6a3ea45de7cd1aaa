// scene NAME: renders one of the scenes that two versions of the library are compared by, and
// prints the processor time in milliseconds, the peak of memory in MB, and a hash of the picture's
// words. Uses the public header alone, so that one program runs with any version.

#include <sys/resource.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <map>
#include <string>

#include "../generators.h"
#include "../scenes.h"

using namespace zebbench;

namespace
{

std::uint64_t gHash = 14695981039346656037u;

// FNV-1a, a word at a time.
void hashWord(std::uint64_t word) { gHash = (gHash ^ word) * 1099511628211u; }

void span(void*, long x0, long x1, long y, const unsigned int* words)
{
    hashWord(static_cast<std::uint64_t>(y) << 32 | static_cast<std::uint64_t>(x0));
    for (long k = 0; k < 3 * (x1 - x0 + 1); ++k) hashWord(words[k]);
}

void spheres(int count, float radius)
{
    for (const Ball& ball : balls(count)) {
        zebMatrixPush();
        zebTranslate(ball.center[0], ball.center[1], ball.center[2]);
        zebColor(ball.color.data());
        zebSphere(radius, -radius, radius, 360, 0);
        zebMatrixPop();
    }
}

void layers(int count)
{
    const float half[3] = {0.5f, 0.5f, 0.5f};
    zebOpacity(half);
    zebSurface(zebQuark("constant"), 0);
    for (int k = 0; k < count; ++k) square(3, 0.001f * static_cast<float>(k));
}

void nurbs()
{
    const Nurbs waves = zebbench::waves();
    zebNurbMesh(waves.size, waves.order, waves.knots.data(), 0, waves.end(), waves.size,
                waves.order, waves.knots.data(), 0, waves.end(), zebQuark("point"),
                waves.points.data(), 0);
}

struct Scene {
    long size;
    std::function<void()> options, add;
};

const std::map<std::string, Scene>& scenes()
{
    static const auto none = [] {};
    static const auto adaptive = [] { zebSampleAdaptive(0.01f); };
    static const auto sequence = [] { zebHider(ZEB_HIDER_SEQUENCE); };
    static const auto depth = [] { zebOutputSamples(ZEB_SAMPLES_DEPTH); };
    static const auto some = [] { spheres(400, 0.16f); };
    static const auto mesh = [](int n) { bumpySphere(n).add("plastic"); };
    static const std::map<std::string, Scene> list = {
        {"400-spheres", {1024, none, some}},
        {"400-spheres-constant",
         {1024, none,
          [] {
              zebShadingModel(ZEB_CONSTANT);
              some();
          }}},
        {"400-spheres-sequence", {1024, sequence, some}},
        {"400-spheres-adaptive", {256, adaptive, some}},
        {"10000-spheres", {1024, none, [] { spheres(10000, 0.02f); }}},
        {"mesh-70000", {1024, none, [] { mesh(187); }}},
        {"mesh-500000", {1024, none, [] { mesh(500); }}},
        {"mesh-70000-adaptive", {256, adaptive, [] { mesh(187); }}},
        {"nurbs", {1024, none, nurbs}},
        {"polygon-rate-0.25",
         {1024, none,
          [] {
              zebShadingRate(0.25f);
              square(3, 0);
          }}},
        {"sphere-rate-0.25",
         {1024, none,
          [] {
              zebShadingRate(0.25f);
              zebSphere(1.2f, -1.2f, 1.2f, 360, 0);
          }}},
        {"64-layers", {512, none, [] { layers(64); }}},
    };
    return list;
}

void render(const Scene& scene)
{
    zebReset();
    zebRasterViewport(0, scene.size, 0, scene.size);
    ZebDisplay device{};
    device.span = span;
    zebCustomDisplay(&device);
    zebQuirks(0);
    scene.options();
    zebViewPerspective(40);
    zebTranslate(0, 0, 4);
    zebSceneBegin();
    const float ways[3][3] = {{0.5f, -0.6f, 1}, {-0.8f, -0.3f, 0.6f}, {0, 1, 0.4f}};
    const float from[3] = {0, 0, 0}, dim = 0.2f, bright = 0.4f;
    for (const float(&way)[3] : ways) {
        zebLightSource(zebQuark("distant"), zebQuark("from"), from, zebQuark("to"), way,
                       zebQuark("intensity"), &bright, 0);
    }
    zebLightSource(zebQuark("ambient"), zebQuark("intensity"), &dim, 0);
    zebSurface(zebQuark("plastic"), 0);
    // About a micropolygon a pixel, as zebview renders.
    zebShadingRate(1);
    zebShadingModel(ZEB_SMOOTH);
    scene.add();
    zebSceneEnd();
}

}  // namespace

int main(int argc, char** argv)
{
    const auto scene = argc == 2 ? scenes().find(argv[1]) : scenes().end();
    if (scene == scenes().end()) {
        for (const auto& [name, unused] : scenes()) std::puts(name.c_str());
        return argc == 1 ? 0 : 2;
    }
    const std::clock_t begin = std::clock();
    render(scene->second);
    const double milliseconds = 1e3 * static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%.0f %ld %016llx\n", milliseconds, usage.ru_maxrss / 1024,
                static_cast<unsigned long long>(gHash));
}
