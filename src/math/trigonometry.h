// Sines and cosines with the same bits on every machine, which those of C libraries have not.
#pragma once

namespace zeb
{

struct SinCos {
    double sin, cos;
};

// Of angles up to 1e5 either way, within 0.85 units in the last place; of larger ones, of what is
// left of them without whole turns, each as long as a double can tell. The sine is odd and the
// cosine even to the last bit; those of 0 are 0 and 1.
SinCos sincos(double angle);

// Of -1 ... 1, to within 3e-16; odd, and 0 of 0.
double arcsine(double x);
// Of -1 ... 1, as close.
double arccosine(double x);

}  // namespace zeb
