#include "render.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <map>

#include "console.h"
#include "scene.h"

namespace zebview
{

namespace
{

volatile std::sig_atomic_t gInterrupted = 0;

// The backdrop needs room behind the model.
constexpr float kBackdropRoom = 1.1f;

struct Filter {
    short id;
    float width;
};

// Each as wide as it takes to be itself; those with negative lobes need room for them.
Filter filterNamed(const std::string& name)
{
    static const std::map<std::string, Filter> filters{{"gaussian", {ZEB_FILTER_GAUSSIAN, 2}},
                                                       {"catmull-rom", {ZEB_FILTER_CATMULL_ROM, 4}},
                                                       {"box", {ZEB_FILTER_BOX, 1}},
                                                       {"triangle", {ZEB_FILTER_TRIANGLE, 2}},
                                                       {"sinc", {ZEB_FILTER_SINC, 4}}};
    return filters.at(name);
}

short samplesOf(Channels channels)
{
    switch (channels) {
        case Channels::kRgb:
            return ZEB_SAMPLES_RGB;
        case Channels::kAlpha:
            return ZEB_SAMPLES_ALPHA;
        case Channels::kDepth:
            return ZEB_SAMPLES_DEPTH;
        case Channels::kRgbaz:
            return ZEB_SAMPLES_RGBAZ;
        default:
            return ZEB_SAMPLES_RGBA;
    }
}

// Files get light as it was computed. Windows show what they are sent.
void setOutput(const Settings& settings, const Destination& destination)
{
    if (settings.toWindow()) {
        zebOutputDisplay(destination.name.c_str());
        zebColorGamma(2.2f);
        return;
    }
    if (destination.device) {
        zebCustomDisplay(destination.device);
    } else {
        zebOutputFile(ZEB_FILE_EXR, destination.name.c_str());
    }
    zebOutputSamples(samplesOf(settings.channels));
    zebColorQuantize(0, 0, 0);
}

void setOptions(const Camera& camera, const Settings& settings, const Destination& destination)
{
    zebQuirks(0);
    zebThreads(settings.threads);
    zebRasterViewport(0, settings.width, 0, settings.height);
    setOutput(settings, destination);
    if (settings.threshold) {
        zebSampleAdaptive(static_cast<float>(*settings.threshold));
    } else {
        zebSampleUniform(static_cast<float>(settings.samples),
                         static_cast<float>(settings.samples));
    }
    const Filter filter = filterNamed(settings.filter);
    zebFilter(filter.id);
    zebFilterWidth(filter.width, filter.width);

    if (camera.fov > 0) {
        zebViewPerspective(camera.fov);
    } else {
        zebViewOrthographic();
    }
    zebImageWindow(-camera.halfWidth, camera.halfWidth, -camera.halfHeight, camera.halfHeight);
    zebClip(camera.nearest, camera.farthest * (settings.background ? kBackdropRoom : 1));
    ZebMatrix toCamera;
    std::copy(&camera.toCamera[0][0], &camera.toCamera[0][0] + 16, &toCamera[0][0]);
    zebMultMatrix(toCamera);
}

// Gives the picture up, with what there is of its file, if anything went wrong.
bool givenUp()
{
    if (!gInterrupted && !errorReported()) return false;
    if (gInterrupted) complain("interrupted");
    zebReset();
    return true;
}

// Whether the user has closed the window, with the picture in it.
bool windowClosed(const Settings& settings)
{
    return settings.toWindow() && zebWindowEvents(0) == 0;
}

bool renderBuckets(const Settings& settings, const Destination& destination)
{
    const auto show = [&](long percent) {
        showProgress((destination.number * 100 + percent) / destination.count);
    };
    zebRenderInit();
    show(0);
    std::chrono::steady_clock::time_point looked;
    while (zebRenderBucket()) {
        show(zebProgress());
        if (givenUp()) return false;
        const auto now = std::chrono::steady_clock::now();
        if (now - looked < std::chrono::milliseconds(30)) continue;
        looked = now;
        if (windowClosed(settings)) break;
    }
    if (destination.number + 1 == destination.count) clearProgress();
    return !givenUp();
}

// Says what happens when the process is told to end.
void onStops(void (*handler)(int))
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, handler);
}

void showUntilClosed()
{
    // Nothing is left that would have to be given up.
    onStops(SIG_DFL);
    while (!gInterrupted && zebWindowEvents(1) > 0) {
    }
}

bool renderFrame(Model& model, const Camera& camera, const Settings& settings,
                 const Destination& destination)
{
    zebSceneBegin();
    if (givenUp()) return false;
    if (windowClosed(settings)) {
        // There was none, or its user has been quick.
        const bool missing = featureMissing();
        if (missing) complain("without a screen the picture needs a file: -o FILE");
        zebReset();
        return !missing;
    }
    addSurroundings(model.stage, camera, settings);
    for (Mesh& mesh : model.meshes) {
        addMesh(mesh, settings);
        if (destination.isModelsLast) mesh = Mesh();
        if (givenUp()) return false;
    }
    if (!renderBuckets(settings, destination)) return false;
    if (windowClosed(settings)) {
        zebReset();
        return true;
    }
    zebSceneEnd();
    zebFrameEnd();
    return !errorReported();
}

}  // namespace

void listenToStops()
{
    onStops([](int) { gInterrupted = 1; });
}

bool renderView(Model& model, const Camera& camera, const Settings& settings,
                const Destination& destination)
{
    zebFrameBegin();
    setOptions(camera, settings, destination);
    if (!renderFrame(model, camera, settings, destination)) return false;
    if (settings.toWindow()) showUntilClosed();
    return true;
}

}  // namespace zebview
