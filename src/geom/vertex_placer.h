// Takes the vertices of a grid from object space to camera space.
#pragma once

#include <algorithm>

#include "geom/grid.h"
#include "geom/vertex_kernel.h"

namespace zeb
{

class VertexPlacer
{
public:
    VertexPlacer(Grid& grid, const Matrix& toCamera, bool plain)
        : fTo(grid.vertices()),
          fToCamera(toCamera),
          fKernel(plain ? vertexKernel(1) : vertexKernel())
    {
    }

    // The next vertex, row by row.
    void add(const Pointd& P, const Pointd& dPdu, const Pointd& dPdv)
    {
        put(fBlock.P, P);
        put(fBlock.dPdu, dPdu);
        put(fBlock.dPdv, dPdv);
        if (++fBlock.count == VertexBlock::kMost) place();
    }
    // After the last one: whether all have derivatives that clearly tell where the normal is.
    bool finish();

private:
    using Planes = double[3][VertexBlock::kMost];
    void put(Planes& planes, const Pointd& p) const
    {
        planes[0][fBlock.count] = p.x;
        planes[1][fBlock.count] = p.y;
        planes[2][fBlock.count] = p.z;
    }
    void place();

    Vertex* fTo;
    const Matrix& fToCamera;
    const VertexKernel fKernel;
    VertexBlock fBlock;
    float fShortest = kInfinity, fLongest = 0;
    bool fSpread = true;
};

}  // namespace zeb
