// What the dicing test asks of a quadric, many places at once: how long its derivatives are on the
// screen. There is a kernel for each instruction set, all to the same bits.
#pragma once

namespace zeb
{

// A curve swept about the z axis, or part of it, and the way to the screen.
struct Sweep {
    enum Kind {
        kLine,     // base + (1 - t) from + t to, where t is extent v, of a constant slope
        kCircle,   // base + (radius cos, 0, radius sin) of an angle between first and last
        kParabola  // z between first and last; radius where z is last
    };
    Kind kind = kLine;
    double base[3] = {}, from[3] = {}, to[3] = {}, slope[3] = {};
    double extent = 1;
    double radius = 0, first = 0, last = 0;

    double thetaMin = 0, thetaMax = 0, vMin = 0, vMax = 0;
    double origin[3] = {};
    double toRaster[4][4];
};

struct SweepPlaces {
    // As many as any instruction set takes at once.
    static constexpr int kCount = 8;

    double u[kCount], v[kCount];
    // How far it is on the screen from each place to where a derivative leads.
    double alongU[kCount], alongV[kCount];
};

// After a place with a length beyond the limit, those of others may be missing.
using SweepKernel = void (*)(const Sweep& sweep, double limit, SweepPlaces& places);

// For as many lanes as the machine is best at.
SweepKernel sweepKernel();
// For 1, 4, 8 or 16; null where the machine or the build has it not.
SweepKernel sweepKernel(int lanes);

}  // namespace zeb
