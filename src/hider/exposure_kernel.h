// Gain and gamma, for many numbers at once. There is a kernel for each instruction set, all to the
// same bits.
#pragma once

namespace zeb
{

// Of what any instruction set takes at once: values have to go on as far, and change there too.
constexpr int kExposureMultiple = 16;

// Multiplies by the gain, then raises the magnitudes to the power gamma as given: callers pass the
// reciprocal of the display gamma. Zeros stay as they are.
using ExposureKernel = void (*)(float gain, float gamma, float* values, int count);

// For as many lanes as the machine is best at.
ExposureKernel exposureKernel();
// For 1, 4, 8 or 16; null where the machine or the build has it not.
ExposureKernel exposureKernel(int lanes);

}  // namespace zeb
