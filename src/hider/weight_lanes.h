// Included after ZEB_LANES is defined.
#pragma once

#include "hider/weight_kernel.h"
#include "util/lane_math.h"

namespace zeb
{
namespace
{

void weigh(const GaussianWeight& weight, WeightBlock& block)
{
    for (int k = 0; k < block.count; k += kLanes) {
        const Float dx = Float::load(block.dx + k), dy = Float::load(block.dy + k);
        const Mask inside = (abs(dx) <= weight.xreach) & (abs(dy) <= weight.yreach);
        const Float gaussian = exp((dx * dx + dy * dy) * weight.exponent) * weight.scale;
        select(inside, gaussian, 0.0f).store(block.weights + k);
    }
}

}  // namespace
}  // namespace zeb
