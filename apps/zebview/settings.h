// What the command line asks for.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "color.h"
#include "output_name.h"

namespace zebview
{

// What each pixel of a picture holds.
enum class Channels { kRgba, kRgb, kAlpha, kDepth, kRgbaz };

// How large a model is shown.
enum class Fit { kTight, kSphere };

// Whose lights there are.
enum class Light { kCamera, kModel, kFile };

struct Sheet {
    long columns, rows;
};

struct Settings {
    std::vector<std::string> models;
    OutputName output;           // empty: a window; "-": standard output
    std::optional<Sheet> sheet;  // all views in one picture
    long frames = 1;
    double turn = 360;  // degrees, over all frames
    Channels channels = Channels::kRgba;
    long width = 800, height = 600;   // of a view
    int samples = 4;                  // along x and along y
    std::optional<double> threshold;  // samples adaptively
    double shadingRate = 1;
    std::string filter = "gaussian";
    double azimuth = 30, elevation = 20, fov = 35;  // degrees
    std::string camera;          // of the file; "list": none is used, they are listed
    std::optional<Light> light;  // unset: the file's with a camera of it, if it has any
    Fit fit = Fit::kTight;
    std::string up;        // an axis such as "y" or "-z"; empty: as the file says
    std::string textures;  // a folder that they may be in as well
    std::string surface;   // empty: as the materials of the file say
    // As they are shown.
    std::optional<Color> color;       // unset: the model's own
    std::optional<Color> background;  // unset: transparent

    long threads = 0;      // 0: one a core
    bool verbose = false;  // infos are shown

    bool listsCameras() const { return camera == "list"; }
    bool toWindow() const { return output.empty(); }
    bool toExr() const;
    Light lightFor(bool fileHasLights) const;
    long viewCount() const { return static_cast<long>(models.size()) * frames; }
    // The file that gets a view, or the title of its window.
    std::string viewName(std::size_t model, long frame) const;
};

// The result of a command line: settings to go on with, or the exit status to end with, help and
// complaints having been printed.
struct CommandLine {
    Settings settings;
    std::optional<int> exitStatus;
};
CommandLine readCommandLine(int argc, char** argv);

}  // namespace zebview
