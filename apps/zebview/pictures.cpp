#include "pictures.h"

#include <cstdio>
#include <filesystem>
#include <optional>

#include "canvas.h"
#include "color_bar.h"
#include "console.h"
#include "guides.h"
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

std::string counted(std::size_t n, const char* one, const char* many)
{
    return std::to_string(n) + ' ' + (n == 1 ? one : many);
}

std::size_t bytesOf(const Mesh& mesh)
{
    std::size_t numbers = mesh.points.size() + mesh.normals.size() + mesh.colors.size() +
                          mesh.opacities.size() + mesh.scalars.size();
    for (const std::vector<float>& pairs : mesh.coordinates) numbers += pairs.size();
    std::size_t bytes = numbers * sizeof(float);
    for (const FaceList* list : {&mesh.convex, &mesh.concave, &mesh.flatConcave}) {
        bytes += (list->sizes.size() + list->corners.size()) * sizeof(long);
    }
    return bytes;
}

// Meshes that show in several places, and what they would take up in each; empty without any.
std::string whatIsShared(const Model& model)
{
    std::size_t places = 0;
    double saved = 0;
    for (const Mesh& mesh : model.meshes) {
        if (mesh.copies.empty()) continue;
        places += 1 + mesh.copies.size();
        saved += static_cast<double>(bytesOf(mesh)) * static_cast<double>(mesh.copies.size());
    }
    if (places == 0) return "";
    char text[40];
    std::snprintf(text, sizeof text, "%.3g MiB", saved / (1 << 20));
    return ", " + counted(places, "instance", "instances") + " that share " + text;
}

std::string whatThereIs(const Model& model)
{
    std::size_t vertices = 0, faces = 0;
    for (const Mesh& mesh : model.meshes) {
        vertices += mesh.vertexCount();
        for (const FaceList* list : {&mesh.convex, &mesh.concave, &mesh.flatConcave}) {
            faces += list->sizes.size();
        }
    }
    return counted(model.meshes.size(), "mesh", "meshes") + ", " +
           counted(vertices, "vertex", "vertices") + ", " + counted(faces, "face", "faces") +
           (model.surfaces.empty() ? ""
                                   : ", " + counted(model.surfaces.size(), "surface", "surfaces")) +
           ", " + counted(model.stage.cameras.size(), "camera", "cameras") + ", " +
           counted(model.stage.lamps.size(), "light", "lights") + whatIsShared(model);
}

class Pictures
{
public:
    explicit Pictures(const Settings& settings)
        : fSettings(settings), fEnvironment(readEnvironment(settings))
    {
        if (settings.sheet) fSheet.emplace(settings.output.text(), *settings.sheet, settings);
    }

    bool make()
    {
        for (std::size_t i = 0; i < fSettings.models.size(); ++i) {
            const std::string& name = fSettings.models[i];
            std::optional<ModelFile> file(std::in_place, name, fSettings);
            Model model = file->model(0);
            if (!fSettings.movesInTime()) file.reset();
            if (fSettings.verbose) complain(name + ": " + whatThereIs(model));
            tellOfGrid(name, model, fSettings);
            tellOfScalar(name, model, fSettings);
            if (!model.notShown.empty()) complain(name + ": " + model.notShown);
            for (long frame = 0; frame < fSettings.frames; ++frame) {
                if (file && frame > 0) model = file->model(frame);
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
        destination.isModelsLast = fSettings.movesInTime() || frame + 1 == fSettings.frames;
        const double turned =
            fSettings.turn * static_cast<double>(frame) / static_cast<double>(fSettings.frames);
        const Camera camera = chooseCamera(model, turned, fSettings);
        if (fSheet) return makeCell(model, camera, destination);
        if (fSettings.toExr()) {
            return renderView(model, camera, fSettings, fEnvironment, destination);
        }
        PngPicture picture(destination.name, {1, 1}, fSettings);
        CanvasCell cell = picture.cell(0, 0);
        const ZebDisplay device = cell.device();
        destination.device = &device;
        if (!renderView(model, camera, fSettings, fEnvironment, destination)) return false;
        picture.save();
        return true;
    }

    bool makeCell(Model& model, const Camera& camera, Destination destination)
    {
        const long columns = fSettings.sheet->columns;
        CanvasCell cell = fSheet->cell(destination.number % columns * fSettings.width,
                                       destination.number / columns * fSettings.height);
        const ZebDisplay device = cell.device();
        destination.device = &device;
        return renderView(model, camera, fSettings, fEnvironment, destination);
    }

    const Settings& fSettings;
    const std::shared_ptr<const Environment> fEnvironment;
    std::optional<PngPicture> fSheet;
};

void listCameras(const Settings& settings)
{
    for (const std::string& name : settings.models) {
        const Model model = ModelFile(name, settings).model(0);
        if (settings.models.size() > 1) answer(name + ":");
        for (std::size_t i = 0; i < model.stage.cameras.size(); ++i) {
            answer(std::to_string(i) + ' ' + model.stage.cameras[i].name);
        }
    }
}

void listAnimations(const Settings& settings)
{
    for (const std::string& name : settings.models) {
        const std::vector<std::string> lines = ModelFile(name, settings).animations();
        if (settings.models.size() > 1) answer(name + ":");
        for (const std::string& line : lines) answer(line);
    }
}

void listScalars(const Settings& settings)
{
    for (const std::string& name : settings.models) {
        const std::vector<std::string> lines = ModelFile(name, settings).scalars();
        if (settings.models.size() > 1) answer(name + ":");
        for (const std::string& line : lines) answer(line);
    }
}

}  // namespace

bool makePictures(const Settings& settings)
{
    if (settings.listsCameras()) {
        listCameras(settings);
        return true;
    }
    if (settings.listsAnimations()) {
        listAnimations(settings);
        return true;
    }
    if (settings.listsScalars()) {
        listScalars(settings);
        return true;
    }
    listenToStops();
    receiveReports(settings.verbose);
    return Pictures(settings).make();
}

}  // namespace zebview
