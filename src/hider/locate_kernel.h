// Where samples lie in cells, many at once: what MicroPolygon::locate finds, to the same bits.
// There is a kernel for each instruction set.
#pragma once

#include <cstdint>

namespace zeb
{

// Samples, each with the cell that it may lie in.
struct LocateBlock {
    static constexpr int kMost = 128;
    // Of what any instruction set takes at once; what lies beyond the last one is not used.
    static constexpr int kMultiple = 16;
    static constexpr int kRoom = kMost + kMultiple;

    int count = 0;
    float x[kRoom] = {}, y[kRoom] = {};
    // The cell's corners at (s, t) of (0, 0), (1, 0), (0, 1) and (1, 1).
    float x00[kRoom] = {}, x10[kRoom] = {}, x01[kRoom] = {}, x11[kRoom] = {};
    float y00[kRoom] = {}, y10[kRoom] = {}, y01[kRoom] = {}, y11[kRoom] = {};
    // Found: s is negative where the sample lies outside.
    double s[kRoom], t[kRoom];
};

using LocateKernel = void (*)(LocateBlock& block);

// For as many lanes as the machine is best at.
LocateKernel locateKernel();
// For 1, 4, 8 or 16; null where the machine or the build has it not.
LocateKernel locateKernel(int lanes);

}  // namespace zeb
