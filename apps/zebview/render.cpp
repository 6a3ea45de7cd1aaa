#include "render.h"

#include <algorithm>
#include <csignal>
#include <map>

#include "color_bar.h"
#include "console.h"
#include "ground.h"
#include "guides.h"
#include "lights.h"
#include "lines.h"
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

// Light as it was computed.
void setOutput(const Settings& settings, const Destination& destination)
{
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
    // As if no picture had been there before.
    zebLoadIdentity();
    zebRasterAspect(0);
    zebImageAspect(0);
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
    zebClip(camera.nearest, camera.farthest * (settings.hasBackground() ? kBackdropRoom : 1));
    ZebMatrix toCamera;
    std::copy(&camera.toCamera[0][0], &camera.toCamera[0][0] + 16, &toCamera[0][0]);
    zebMultMatrix(toCamera);
}

// Says what happens when the process is told to end.
void onStops(void (*handler)(int))
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, handler);
}

// Bucket by bucket, on the host's demand, a picture would be rendered by one thread alone: it is
// the library that asks.
void askWhileRendering(const GoesOn& goesOn)
{
    zebProgressCallback(
        [](void* data, long) -> short { return (*static_cast<const GoesOn*>(data))() ? 0 : 1; },
        const_cast<GoesOn*>(&goesOn));
}

// What the lamps see. False if it is given up.
bool renderShadows(const Model& model, const Shadows& shadows, const Settings& settings,
                   const GoesOn& goesOn)
{
    for (const auto& shadow : shadows) {
        beginShadow(*shadow, settings);
        askWhileRendering(goesOn);
        zebSceneBegin();
        for (const Mesh& mesh : model.meshes) {
            if (throwsShadow(mesh.material)) addCaster(mesh, settings);
            if (!goesOn()) return false;
        }
        for (const FreeForm& surface : model.surfaces) {
            if (throwsShadow(surface.material)) addCaster(surface, settings);
            if (!goesOn()) return false;
        }
        zebSceneEnd();
        zebFrameEnd();
        if (!goesOn()) return false;
    }
    return true;
}

bool renderScene(Model& model, const Camera& camera, const Settings& settings,
                 const std::shared_ptr<const Environment>& environment, const Shadows& shadows,
                 const Destination& destination, const GoesOn& goesOn)
{
    zebFrameBegin();
    setOptions(camera, settings, destination);
    askWhileRendering(goesOn);
    zebSceneBegin();
    if (!goesOn()) return false;
    const auto around = lookAround(environment, camera);
    const auto map = std::make_shared<const Colormap>(settings.colormap);
    std::optional<ScalarColors> scalar;
    if (model.scalar) scalar.emplace(map, model, camera);
    addSurroundings(model.stage, camera, settings, around, shadows);
    if (settings.ground) addGround(model, shadows, camera, settings);
    if (settings.grid) addGrid(model, camera, settings);
    if (settings.axes) addAxes(model.space, camera);
    if (showsBar(model, settings)) addColorBar(*model.shownRange, map, camera);
    for (Mesh& mesh : model.meshes) {
        addMesh(mesh, settings, around, scalar);
        addLines(mesh, camera, settings, around, scalar);
        if (settings.edges) addEdges(mesh, camera, settings, around);
        if (destination.isModelsLast) mesh = Mesh();
        if (!goesOn()) return false;
    }
    for (const FreeForm& surface : model.surfaces) {
        addFreeForm(surface, settings, around, scalar);
        if (!goesOn()) return false;
    }
    zebSceneEnd();
    zebFrameEnd();
    return goesOn();
}

}  // namespace

void listenToStops()
{
    onStops([](int) {
        gInterrupted = 1;
        zebCancel();
    });
}

bool renderPicture(Model& model, const Camera& closeCamera, const Settings& settings,
                   const std::shared_ptr<const Environment>& environment,
                   const Destination& destination, const GoesOn& goesOn)
{
    Camera camera = roomForLines(closeCamera, model, settings);
    if (settings.ground) camera = roomForGround(camera);
    camera = roomForGuides(camera, model, settings);
    const Shadows shadows = shadowsOf(model.stage, camera, settings);
    const bool whole =
        renderShadows(model, shadows, settings, goesOn) &&
        renderScene(model, camera, settings, environment, shadows, destination, goesOn);
    // What is left of it goes, too.
    if (!whole) zebReset();
    return whole;
}

bool renderView(Model& model, const Camera& camera, const Settings& settings,
                const std::shared_ptr<const Environment>& environment,
                const Destination& destination)
{
    const auto goesOn = [&] {
        showProgress((destination.number * 100 + zebProgress()) / destination.count);
        return !gInterrupted && !errorReported();
    };
    const bool whole = renderPicture(model, camera, settings, environment, destination, goesOn);
    if (!whole || destination.number + 1 == destination.count) clearProgress();
    if (gInterrupted) complain("interrupted");
    return whole;
}

}  // namespace zebview
