// The built-in pixel filters: the weight of a sample (dx, dy) from a pixel's centre. Outside the
// box of the widths each is 0; the edge is inside. All give the same bits on every machine.
#pragma once

namespace zeb
{

float zebBoxFilter(float dx, float dy, float xwidth, float ywidth);
float zebTriangleFilter(float dx, float dy, float xwidth, float ywidth);
// Radial, and normalized as a density of one dimension.
float zebGaussianFilter(float dx, float dy, float xwidth, float ywidth);
// Radial, through the spline of shading_math.h.
float zebCatmullRomFilter(float dx, float dy, float xwidth, float ywidth);
// Radial: sin(pi r) / (pi r).
float zebSincFilter(float dx, float dy, float xwidth, float ywidth);

}  // namespace zeb
