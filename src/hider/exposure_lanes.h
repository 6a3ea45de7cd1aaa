// Included after ZEB_LANES is defined.
#pragma once

#include "hider/exposure_kernel.h"
#include "util/lane_math.h"

namespace zeb
{
namespace
{

void expose(float gain, float gamma, float* values, int count)
{
    for (int k = 0; k < count; k += kLanes) {
        Float x = Float::load(values + k) * gain;
        if (gamma != 1) {
            const Float size = power(abs(x), gamma);
            x = select(x == 0.0f, x, select(x < 0.0f, -size, size));
        }
        x.store(values + k);
    }
}

}  // namespace
}  // namespace zeb
