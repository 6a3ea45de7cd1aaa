// The one-lane instances of what the kernels compute with.
#define ZEB_LANES 1
#include "util/lane_math.h"

#include "math/shading_math.h"

namespace zeb
{

float power(float x, float y) { return power(Float{x}, Float{y}).v; }
float exponential(float x) { return exp(Float{x}).v; }

}  // namespace zeb
