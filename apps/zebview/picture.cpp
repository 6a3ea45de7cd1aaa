#include "picture.h"

#include <chrono>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <map>
#include <numbers>
#include <utility>

#include "camera.h"
#include "canvas.h"
#include "console.h"
#include "model.h"
#include "output_file.h"
#include "zebcore/zebcore.h"

namespace zebview
{

namespace
{

volatile std::sig_atomic_t gInterrupted = 0;

// The backdrop needs room behind the model.
constexpr float kBackdropRoom = 1.1f;

const Color kDefaultColor = toLight({0.8f, 0.8f, 0.8f});

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
void setOutput(const Settings& settings, const ZebDisplay& device)
{
    if (settings.toWindow()) {
        const std::string title = std::filesystem::path(settings.model).filename().string();
        zebOutputDisplay(title.c_str());
        zebColorGamma(2.2f);
        return;
    }
    if (settings.toExr()) {
        zebOutputFile(ZEB_FILE_EXR, settings.output.c_str());
    } else {
        zebCustomDisplay(&device);
    }
    zebOutputSamples(samplesOf(settings.channels));
    zebColorQuantize(0, 0, 0);
}

void setOptions(const Camera& camera, const Settings& settings, const ZebDisplay& device)
{
    zebQuirks(0);
    zebRasterViewport(0, settings.width, 0, settings.height);
    setOutput(settings, device);
    if (settings.threshold) {
        zebSampleAdaptive(static_cast<float>(*settings.threshold));
    } else {
        zebSampleUniform(static_cast<float>(settings.samples),
                         static_cast<float>(settings.samples));
    }
    const Filter filter = filterNamed(settings.filter);
    zebFilter(filter.id);
    zebFilterWidth(filter.width, filter.width);

    zebViewPerspective(static_cast<float>(settings.fov));
    zebImageWindow(-camera.halfWidth, camera.halfWidth, -camera.halfHeight, camera.halfHeight);
    zebClip(camera.nearest, camera.farthest * (settings.background ? kBackdropRoom : 1));
    ZebMatrix toCamera;
    std::copy(&camera.toCamera[0][0], &camera.toCamera[0][0] + 16, &toCamera[0][0]);
    zebMultMatrix(toCamera);
}

void addDistantLight(float x, float y, float z, float intensity)
{
    const ZebPoint from{x, y, z}, to{0, 0, 0};
    zebLightSource(zebQuark("distant"), zebQuark("intensity"), &intensity, zebQuark("from"), from,
                   zebQuark("to"), to, 0);
}

// Lights stand still as the eye goes around the model: what is seen is always well lit.
void addLights()
{
    zebMatrixPush();
    zebLoadIdentity();
    addDistantLight(-0.8f, 1, -1, 0.95f);
    addDistantLight(1, 0.3f, -0.7f, 0.15f);
    const float glow = 0.04f;
    zebLightSource(zebQuark("ambient"), zebQuark("intensity"), &glow, 0);
    zebMatrixPop();
}

// Behind everything and larger than the picture, with next to no shading to do.
void addBackdrop(const Camera& camera, const Settings& settings)
{
    const float z = camera.farthest * 1.05f;
    const auto slope = static_cast<float>(std::tan(settings.fov * std::numbers::pi / 360));
    const float x = 1.1f * z * slope * camera.halfWidth, y = 1.1f * z * slope * camera.halfHeight;
    const ZebPoint corners[4] = {{-x, -y, z}, {-x, y, z}, {x, y, z}, {x, -y, z}};
    zebAttributePush();
    zebLoadIdentity();
    zebSurface(zebQuark("constant"), 0);
    zebColor(toLight(*settings.background).data());
    zebShadingRate(256);
    zebPolygon(4, zebQuark("point"), corners, 0);
    zebAttributePop();
}

void setSurface(const Settings& settings)
{
    const float kd = 0.8f, ks = 0.3f, shine = 0.8f, dull = 0.15f;
    if (settings.surface == "plastic") {
        zebSurface(zebQuark("plastic"), zebQuark("kd"), &kd, zebQuark("ks"), &ks, 0);
    } else if (settings.surface == "metal") {
        zebSurface(zebQuark("metal"), zebQuark("ks"), &shine, zebQuark("roughness"), &dull, 0);
    } else {
        zebSurface(zebQuark(settings.surface.c_str()), 0);
    }
    zebShadingModel(ZEB_SMOOTH);
    zebShadingRate(static_cast<float>(settings.shadingRate));
}

// The values that go with the vertices of a mesh.
struct Parameters {
    std::vector<unsigned short> tokens;
    std::vector<void*> values;

    // The library takes values as pointers to what it does not change.
    void add(const char* name, const std::vector<float>& list)
    {
        tokens.push_back(zebQuark(name));
        values.push_back(const_cast<float*>(list.data()));
    }
    long count() const { return static_cast<long>(tokens.size()); }
};

void addConvex(const FaceList& faces, const Parameters& list)
{
    if (faces.sizes.empty()) return;
    zebPolygonMeshV(static_cast<long>(faces.sizes.size()), faces.sizes.data(), faces.corners.data(),
                    list.count(), list.tokens.data(), list.values.data());
}

void addConcave(const FaceList& faces, const Parameters& list)
{
    if (faces.sizes.empty()) return;
    const std::vector<long> loops(faces.sizes.size(), 1);
    zebGeneralPolygonMeshV(static_cast<long>(loops.size()), loops.data(), faces.sizes.data(),
                           faces.corners.data(), list.count(), list.tokens.data(),
                           list.values.data());
}

void addMesh(const Mesh& mesh, const Settings& settings)
{
    const Color color =
        settings.color ? toLight(*settings.color) : mesh.material.value_or(kDefaultColor);
    zebColor(color.data());
    Parameters list;
    list.add("point", mesh.points);
    if (!settings.color && !mesh.colors.empty()) list.add("color", mesh.colors);
    addConcave(mesh.flatConcave, list);
    list.add("normal", mesh.normals);
    addConvex(mesh.convex, list);
    addConcave(mesh.concave, list);
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

bool renderBuckets(const Settings& settings)
{
    zebRenderInit();
    showProgress(0);
    std::chrono::steady_clock::time_point looked;
    while (zebRenderBucket()) {
        showProgress(zebProgress());
        if (givenUp()) return false;
        const auto now = std::chrono::steady_clock::now();
        if (now - looked < std::chrono::milliseconds(30)) continue;
        looked = now;
        if (windowClosed(settings)) break;
    }
    clearProgress();
    return !givenUp();
}

bool renderWorld(std::vector<Mesh> meshes, const Camera& camera, const Settings& settings)
{
    addLights();
    if (settings.background) addBackdrop(camera, settings);
    setSurface(settings);
    for (Mesh& mesh : meshes) {
        addMesh(mesh, settings);
        mesh = Mesh();
        if (givenUp()) return false;
    }
    return renderBuckets(settings);
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

bool renderPicture(std::vector<Mesh> meshes, const Camera& camera, const Settings& settings,
                   const ZebDisplay& device)
{
    setOptions(camera, settings, device);
    zebSceneBegin();
    if (givenUp()) return false;
    if (windowClosed(settings)) {
        complain("without a screen the picture needs a file: -o FILE");
        zebReset();
        return false;
    }
    if (!renderWorld(std::move(meshes), camera, settings)) return false;
    if (windowClosed(settings)) {
        zebReset();
        return true;
    }
    zebSceneEnd();
    if (settings.toWindow()) showUntilClosed();
    return !errorReported();
}

}  // namespace

bool makePicture(const Settings& settings)
{
    onStops([](int) { gInterrupted = 1; });
    receiveReports();
    std::vector<Mesh> meshes = loadModel(settings);
    const Camera camera = frameModel(meshes, settings.azimuth, settings);
    if (settings.toWindow() || settings.toExr()) {
        return renderPicture(std::move(meshes), camera, settings, {});
    }
    OutputFile file(settings.output);
    Canvas canvas(settings.width, settings.height, settings.channels, settings.background);
    CanvasCell cell(canvas, 0, 0);
    if (!renderPicture(std::move(meshes), camera, settings, cell.device())) return false;
    file.save(canvas);
    return true;
}

}  // namespace zebview
