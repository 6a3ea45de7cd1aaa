// The weights of samples by the default filter, many at once. There is a kernel for each
// instruction set, all to the same bits.
#pragma once

namespace zeb
{

// Within the reach the weight is scale * exp(exponent * r^2), where r is the distance from the
// pixel's centre.
struct GaussianWeight {
    float xreach, yreach, exponent, scale;
};

struct WeightBlock {
    static constexpr int kMost = 64;  // a multiple of what any instruction set takes at once

    int count = 0;
    float dx[kMost], dy[kMost];  // from the pixel's centre
    float weights[kMost];        // the result; what lies beyond the last is not used
};

using WeightKernel = void (*)(const GaussianWeight& weight, WeightBlock& block);

// For as many lanes as the machine is best at.
WeightKernel weightKernel();
// For 1, 4, 8 or 16; null where the machine or the build has it not.
WeightKernel weightKernel(int lanes);

}  // namespace zeb
