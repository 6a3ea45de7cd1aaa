// What the hosts have in common: a picture, a clock, and the command line.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "scenes.h"

namespace zebpeers
{

// Three bytes a pixel, rows from the top.
struct Picture {
    std::vector<unsigned char> bytes = std::vector<unsigned char>(std::size_t{3} * kSize * kSize);

    unsigned char* at(long x, long y)
    {
        return &bytes[static_cast<std::size_t>(3 * (y * kSize + x))];
    }
};

void writePng(const Picture& picture, const std::string& path);

// Finds the scene that the command line names, and the name of the picture. Without any, prints the
// names of the scenes.
bool commandLine(int argc, char** argv, Scene& scene, std::string& path);

// Brings a scene into the form that the host keeps it in, and returns what renders it then.
using Prepare = std::function<std::function<void(Picture&)>(const Scene&)>;

// HOST SCENE PICTURE: renders twice, and prints the milliseconds of processor time, of all threads,
// and of time on the clock that the second round took. What a program does once, such as compiling
// a shader, does not count.
int runHost(int argc, char** argv, const Prepare& prepare);

}  // namespace zebpeers
