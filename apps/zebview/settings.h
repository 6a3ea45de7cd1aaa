// What the command line asks for.
#pragma once

#include <optional>
#include <string>

#include "color.h"

namespace zebview
{

// What each pixel of a picture holds.
enum class Channels { kRgba, kRgb, kAlpha, kDepth, kRgbaz };

// How large a model is shown.
enum class Fit { kTight, kSphere };

struct Settings {
    std::string model;
    std::string output;  // empty: a window; "-": standard output
    Channels channels = Channels::kRgba;
    long width = 800, height = 600;
    int samples = 4;                  // along x and along y
    std::optional<double> threshold;  // samples adaptively
    double shadingRate = 1;
    std::string filter = "gaussian";
    double azimuth = 30, elevation = 20, fov = 35;  // degrees
    Fit fit = Fit::kTight;
    std::string up;  // an axis such as "y" or "-z"; empty: as the file says
    std::string surface = "plastic";
    // As they are shown.
    std::optional<Color> color;       // unset: the model's own
    std::optional<Color> background;  // unset: transparent

    bool toWindow() const { return output.empty(); }
    bool toExr() const;
};

// The result of a command line: settings to go on with, or the exit status to end with, help and
// complaints having been printed.
struct CommandLine {
    Settings settings;
    std::optional<int> exitStatus;
};
CommandLine readCommandLine(int argc, char** argv);

}  // namespace zebview
