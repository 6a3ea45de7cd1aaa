// The vertices of a grid, many at once: from object space to camera space, and on to the screen.
// There is a kernel for each instruction set, all to the same bits.
#pragma once

namespace zeb
{

struct VertexBlock {
    // At a time; the second is what any instruction set takes at once.
    static constexpr int kMost = 64, kMultiple = 16;

    int count = 0;
    // In object space. What lies beyond the last, up to the multiple, repeats it.
    double P[3][kMost], dPdu[3][kMost], dPdv[3][kMost];

    // In camera space.
    struct {
        float P[3][kMost], dPdu[3][kMost], dPdv[3][kMost];
    } camera;
    // The squares of the longer derivative of each vertex lie between these.
    float shortest = 0, longest = 0;
    // Whether the derivatives of none come close to being parallel.
    bool spread = false;
};

// Positions, in camera space before and in raster space afterwards.
struct PointBlock {
    static constexpr int kMost = 64, kMultiple = 16;

    int count = 0;
    float x[kMost], y[kMost], z[kMost];
};

// What brings points from camera space to raster space.
struct Projection {
    double toRaster[4][4];
    // Depths are (z - near) / range, or z itself.
    bool isScaled;
    float near, range;
};

struct VertexKernel {
    void (*place)(const double (&toCamera)[4][4], VertexBlock& block);
    void (*project)(const Projection& projection, PointBlock& block);
};

// For as many lanes as the machine is best at.
VertexKernel vertexKernel();
// For 1, 4, 8 or 16; without functions where the machine or the build has it not.
VertexKernel vertexKernel(int lanes);

}  // namespace zeb
