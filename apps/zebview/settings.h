// What the command line asks for.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "color.h"
#include "output_name.h"
#include "scalar.h"

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

// Of an animation, in seconds.
struct Times {
    double from, to;
};

struct Settings {
    std::vector<std::string> models;
    OutputName output;           // empty: a window; "-": standard output
    std::string format;          // png or exr; empty: as its name ends
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
    std::string animation;       // of the file; "list": none is used, they are listed
    std::optional<Times> times;  // unset: with an animation all of it, in several frames
    std::optional<Light> light;  // unset: the file's with a camera of it, if it has any
    Fit fit = Fit::kTight;
    std::string up;        // an axis such as "y" or "-z"; empty: as the file says
    std::string textures;  // a folder that they may be in as well
    std::string surface;   // empty: as the materials of the file say
    double readLimit = 0;  // seconds of processor time; 0: as the file's size allows
    // As they are shown.
    std::optional<Color> color;       // unset: the model's own
    std::optional<Color> background;  // unset: transparent, or the environment

    std::string scalar;  // shows as colors; "list": none does, they are listed; empty: none
    std::string colormap = "viridis";
    std::optional<Range> scalarRange;  // unset: that of its values
    bool bar = true;                   // of colors, with a scalar

    bool edges = false;
    std::optional<Color> edgeColor;   // as it is shown; unset: nearly black
    double lineWidth = 1.5;           // pixels
    std::optional<double> pointSize;  // in the file's units; unset: as there are many
    bool axes = false, grid = false;
    std::optional<double> gridUnit;  // unset: as the model's size has it
    bool shadows = false, ground = false;
    std::string environment;        // a file; empty: none
    double environmentTurn = 0;     // degrees to the right
    double exposure = 0;            // of the environment, in stops
    bool showsEnvironment = false;  // behind the model

    long threads = 0;      // 0: one a core
    bool verbose = false;  // infos are shown

    bool listsCameras() const { return camera == "list"; }
    bool listsAnimations() const { return animation == "list"; }
    bool listsScalars() const { return scalar == "list"; }
    bool lists() const { return listsCameras() || listsAnimations() || listsScalars(); }
    // Whether a time of an animation is shown.
    bool isAnimated() const { return !listsAnimations() && (times || !animation.empty()); }
    // Whether it is another one in each frame.
    bool movesInTime() const;
    // length  the animation's, in seconds
    double secondsAt(long frame, double length) const;
    bool toWindow() const { return output.empty(); }
    bool toExr() const;
    bool hasBackground() const { return background || showsEnvironment; }
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
