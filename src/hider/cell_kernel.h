// The cells of a grid's row, many at once: how large they are, which samples may lie in them, and
// which way they face. There is a kernel for each instruction set, all to the same bits.
#pragma once

#include <cstdint>

namespace zeb
{

// The samples of a bucket: column i lies about xmin + (i + 1/2) / xrate, and strays by the jitter.
struct Lattice {
    float xmin, xmax, ymin, ymax;  // where they are
    float xrate, yrate, jitter;
    std::int32_t columns, rows;
    float far;  // what is deeper is not seen
};

struct CellRow {
    static constexpr int kMost = 64;
    // Of what any instruction set takes at once; what lies beyond the last cell is not used.
    static constexpr int kMultiple = 16;

    int count = 0;
    bool isFlipped = false;  // the grid's vertices run the other way round
    // x, y and depth of the vertices above the cells and below them, one more than there are cells.
    // As many more as kMultiple are read.
    const float *upper[3], *lower[3];

    // Of the cells.
    float xmin[kMost], xmax[kMost], ymin[kMost], ymax[kMost], zmin[kMost], zmax[kMost];
    // Columns i0 ... i1 of rows j0 ... j1 of the samples: none of what is not seen.
    std::int32_t i0[kMost], i1[kMost], j0[kMost], j1[kMost];
    // Positive: faces away; negative: faces the viewer; 0: edge-on.
    float facing[kMost];
};

using CellKernel = void (*)(const Lattice& lattice, CellRow& row);

// For as many lanes as the machine is best at.
CellKernel cellKernel();
// For 1, 4, 8 or 16; null where the machine or the build has it not.
CellKernel cellKernel(int lanes);

}  // namespace zeb
