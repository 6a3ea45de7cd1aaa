#include "pictures.h"

#include <filesystem>
#include <optional>

#include "canvas.h"
#include "console.h"
#include "output_file.h"
#include "render.h"

namespace zebview
{

namespace
{

// A file with a canvas of its own.
class PngPicture
{
public:
    PngPicture(const std::string& name, const Sheet& sheet, const Settings& settings)
        : fFile(name),
          fCanvas(sheet.columns * settings.width, sheet.rows * settings.height, settings.channels,
                  settings.background)
    {
    }
    CanvasCell cell(long x, long y) { return {fCanvas, x, y}; }
    void save() { fFile.save(fCanvas); }

private:
    OutputFile fFile;
    Canvas fCanvas;
};

std::string whatThereIs(const Model& model)
{
    std::size_t vertices = 0, faces = 0;
    for (const Mesh& mesh : model.meshes) {
        vertices += mesh.vertexCount();
        for (const FaceList* list : {&mesh.convex, &mesh.concave, &mesh.flatConcave}) {
            faces += list->sizes.size();
        }
    }
    const auto counted = [](std::size_t n, const char* one, const char* many) {
        return std::to_string(n) + ' ' + (n == 1 ? one : many);
    };
    return counted(model.meshes.size(), "mesh", "meshes") + ", " +
           counted(vertices, "vertex", "vertices") + ", " + counted(faces, "face", "faces") + ", " +
           counted(model.stage.cameras.size(), "camera", "cameras") + ", " +
           counted(model.stage.lamps.size(), "light", "lights");
}

class Pictures
{
public:
    explicit Pictures(const Settings& settings) : fSettings(settings)
    {
        if (settings.sheet) fSheet.emplace(settings.output.text(), *settings.sheet, settings);
    }

    bool make()
    {
        for (std::size_t i = 0; i < fSettings.models.size(); ++i) {
            Model model = loadModel(fSettings.models[i], fSettings);
            const std::string& name = fSettings.models[i];
            if (fSettings.verbose) complain(name + ": " + whatThereIs(model));
            if (!model.notShown.empty()) complain(name + ": " + model.notShown);
            for (long frame = 0; frame < fSettings.frames; ++frame) {
                if (!makeView(model, i, frame)) return false;
            }
        }
        if (fSheet) fSheet->save();
        return true;
    }

private:
    bool makeView(Model& model, std::size_t index, long frame)
    {
        Destination destination;
        destination.name = fSettings.viewName(index, frame);
        destination.number = static_cast<long>(index) * fSettings.frames + frame;
        destination.count = fSettings.viewCount();
        destination.isModelsLast = frame + 1 == fSettings.frames;
        const Camera camera = cameraFor(model, frame);
        if (fSheet) return makeCell(model, camera, destination);
        if (fSettings.toWindow() || fSettings.toExr()) {
            return renderView(model, camera, fSettings, destination);
        }
        PngPicture picture(destination.name, {1, 1}, fSettings);
        CanvasCell cell = picture.cell(0, 0);
        const ZebDisplay device = cell.device();
        destination.device = &device;
        if (!renderView(model, camera, fSettings, destination)) return false;
        picture.save();
        return true;
    }

    Camera cameraFor(const Model& model, long frame) const
    {
        const double turned =
            fSettings.turn * static_cast<double>(frame) / static_cast<double>(fSettings.frames);
        if (fSettings.camera.empty()) {
            return frameModel(model.meshes, fSettings.azimuth + turned, fSettings);
        }
        const FileCamera& source = findCamera(model.stage, fSettings.camera);
        return lookThrough(source, turned, model.meshes, fSettings);
    }

    bool makeCell(Model& model, const Camera& camera, Destination destination)
    {
        const long columns = fSettings.sheet->columns;
        CanvasCell cell = fSheet->cell(destination.number % columns * fSettings.width,
                                       destination.number / columns * fSettings.height);
        const ZebDisplay device = cell.device();
        destination.device = &device;
        return renderView(model, camera, fSettings, destination);
    }

    const Settings& fSettings;
    std::optional<PngPicture> fSheet;
};

void listCameras(const Settings& settings)
{
    for (const std::string& name : settings.models) {
        const Model model = loadModel(name, settings);
        if (settings.models.size() > 1) answer(name + ":");
        for (std::size_t i = 0; i < model.stage.cameras.size(); ++i) {
            answer(std::to_string(i) + ' ' + model.stage.cameras[i].name);
        }
    }
}

}  // namespace

bool makePictures(const Settings& settings)
{
    if (settings.listsCameras()) {
        listCameras(settings);
        return true;
    }
    listenToStops();
    receiveReports(settings.verbose);
    return Pictures(settings).make();
}

}  // namespace zebview
