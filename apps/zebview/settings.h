// What the command line asks for.
#pragma once

#include <array>
#include <optional>
#include <string>

namespace zebview
{

using Color = std::array<float, 3>;

struct Settings {
    std::string model;
    std::string output;  // empty: a window
    long width = 800, height = 600;
    int samples = 4;                  // along x and along y
    std::optional<double> threshold;  // samples adaptively
    double shadingRate = 1;
    std::string filter = "gaussian";
    double azimuth = 30, elevation = 20, fov = 35;  // degrees
    std::string up;  // an axis such as "y" or "-z"; empty: as the file says
    std::string surface = "plastic";
    std::optional<Color> color;       // unset: the model's own
    std::optional<Color> background;  // unset: transparent
};

// The result of a command line: settings to go on with, or the exit status to end with, help and
// complaints having been printed.
struct CommandLine {
    Settings settings;
    std::optional<int> exitStatus;
};
CommandLine readCommandLine(int argc, char** argv);

}  // namespace zebview
