#include "geom/vertex_placer.h"

namespace zeb
{

void VertexPlacer::place()
{
    const int count = fBlock.count;
    const int most = std::min((count + VertexBlock::kMultiple - 1) & -VertexBlock::kMultiple,
                              VertexBlock::kMost);
    for (auto* planes : {&fBlock.P, &fBlock.dPdu, &fBlock.dPdv}) {
        for (double* plane : *planes) std::fill(plane + count, plane + most, plane[count - 1]);
    }
    fKernel.place(fToCamera.m, fBlock);
    const auto at = [](const float(&planes)[3][VertexBlock::kMost], int k) {
        return Point(planes[0][k], planes[1][k], planes[2][k]);
    };
    const auto& camera = fBlock.camera;
    for (int k = 0; k < count; ++k) {
        *fTo++ = {at(camera.P, k), at(camera.dPdu, k), at(camera.dPdv, k)};
    }
    fShortest = std::min(fShortest, fBlock.shortest);
    fLongest = std::max(fLongest, fBlock.longest);
    fSpread = fSpread && fBlock.spread;
    fBlock.count = 0;
}

bool VertexPlacer::finish()
{
    if (fBlock.count) place();
    // Squares of lengths.
    constexpr float kShort = 1e-9f;
    return fSpread && fShortest > kShort * fLongest;
}

}  // namespace zeb
