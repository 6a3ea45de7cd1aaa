// Noise at many places at once. There is a kernel for each instruction set, all to the same bits as
// one place after the other.
#pragma once

namespace zeb
{

struct NoiseBlock {
    // At a time; the second is what any instruction set takes at once.
    static constexpr int kMost = 64, kMultiple = 16;
    // Coordinates are less than this.
    static constexpr float kFarthest = 1 << 30;

    int dimensions = 0, count = 0;
    // What lies beyond the last, up to the multiple, is some place, too.
    float place[4][kMost] = {};
    float value[kMost];
};

using NoiseKernel = void (*)(NoiseBlock& block);

// For as many lanes as the machine is best at.
NoiseKernel noiseKernel();
// For 1, 4, 8 or 16; null where the machine or the build has it not.
NoiseKernel noiseKernel(int lanes);

}  // namespace zeb
