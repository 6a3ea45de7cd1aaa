#include "geom/grid.h"

#include <algorithm>

#include "geom/vertex_kernel.h"
#include "state/quark.h"

namespace zeb
{

namespace
{

// The variables that shading knows by name, or all others; positions are neither.
ArgList inCamera(const ArgList& args, const Matrix& toCamera, bool flip, bool known)
{
    ArgList taken;
    for (const ArgAssoc& assoc : args) {
        const bool isColor = Quark::isVertexColor(assoc.token);
        // Nothing reads other values of single control points.
        if (assoc.token <= kQPointw || (assoc.storage() == kVertexClass && !isColor)) continue;
        if ((assoc.token <= kQOpacity || isColor) == known) taken.add(assoc);
    }
    taken.project(toCamera, flip);
    return taken;
}

}  // namespace

Grid::Grid(unsigned short usize, unsigned short vsize, std::shared_ptr<const Attrib> attrib,
           const Transform& transform, std::uint32_t seq, bool flip, bool triangular,
           const ArgList& args, const Edges& edges, bool transposed)
    : fUSize(usize),
      fVSize(vsize),
      fAttrib(std::move(attrib)),
      fSeq(seq),
      fFlip(flip),
      fTriangular(triangular),
      fSmooth(fAttrib->interpolation == kSmoothShading),
      fMatte(fAttrib->matte),
      fTransposed(transposed),
      fEdges(edges),
      fVertexArgs(inCamera(args, transform.matrix(), flip, true)),
      fOtherArgs(inCamera(args, transform.matrix(), flip, false))
{
    std::size_t count = 0;
    for (int j = 0; j <= fVSize; ++j) count += static_cast<std::size_t>(vertexCount(j));
    const std::size_t rows = fVSize + 1u;
    constexpr std::size_t kBeyond = VertexBlock::kMultiple;
    fLasting = makeArray<std::byte>(rows * (sizeof(std::uint32_t) + sizeof(Bound)) +
                                    (3 * count + kBeyond) * sizeof(float));
    fRowStarts = new (fLasting.get()) std::uint32_t[rows];
    fRowBounds = new (fRowStarts + rows) Bound[rows];
    float* const planes = new (fRowBounds + rows) float[3 * count + kBeyond];
    for (std::size_t axis = 0; axis < 3; ++axis) fRaster[axis] = planes + axis * count;
    std::fill_n(planes + 3 * count, kBeyond, 0.0f);
    std::uint32_t start = 0;
    for (int j = 0; j <= fVSize; ++j) {
        fRowStarts[j] = start;
        start += static_cast<std::uint32_t>(vertexCount(j));
    }
    fVertices = makeArray<Vertex>(count);
}

void Grid::wantCell(int i, int j) const
{
    if (fCounts) ++fCounts->seen;
    wantVertex(i, j);
    if (!fSmooth) return;
    wantVertex(i + 1, j);
    wantVertex(i, j + 1);
    wantVertex(i + 1, j + 1);
}

void Grid::shade() const
{
    if (fColors.complete || !fFrame) return;
    for (int j = 0; fCounts && j < fVSize; ++j) {
        for (int i = 0; i < cellCount(j); ++i) {
            fCounts->seen += fColors.mark(at(i, j), ColorPlane::kSeen, *this);
        }
    }
    for (int j = 0; j < fVSize + fSmooth; ++j) {
        const int count = fSmooth ? vertexCount(j) : cellCount(j);
        for (int i = 0; i < count; ++i) {
            wantVertex(i, j);
            if (fOpacityVaries) knowOpacity(i, j);
        }
    }
    shadeWanted();
    fColors.isComplete();
    if (fOpacityVaries) fOpacities.isComplete();
    fVertices.reset();
    fWanted = {};
}

void Grid::ColorPlane::begin(const Grid& grid)
{
    const std::size_t count = grid.vertexCount();
    values = makeArray<Color>(count);
    marks = makeArray<std::uint8_t>(count);
    std::fill_n(marks.get(), count, std::uint8_t{0});
}

void Grid::project(const RenderFrame& frame)
{
    Projection projection;
    std::copy_n(&frame.cameraToRaster.m[0][0], 16, &projection.toRaster[0][0]);
    projection.isScaled = frame.option.projection;
    projection.near = frame.option.nearClip;
    projection.range = frame.depthRange();
    const VertexKernel kernel = frame.plain ? vertexKernel(1) : vertexKernel();
    const std::size_t count = vertexCount();
    PointBlock block;
    for (std::size_t done = 0; done < count; done += PointBlock::kMost) {
        const std::size_t size = std::min<std::size_t>(count - done, PointBlock::kMost);
        block.count = static_cast<int>(size);
        const int most = (block.count + PointBlock::kMultiple - 1) & -PointBlock::kMultiple;
        for (int k = 0; k < most; ++k) {
            // The last one, as often as it takes.
            const int n = std::min(k, block.count - 1);
            const Point& P = fVertices[done + static_cast<std::size_t>(n)].P;
            block.x[k] = P.x;
            block.y[k] = P.y;
            block.z[k] = P.z;
        }
        kernel.project(projection, block);
        std::copy_n(block.x, size, fRaster[0] + done);
        std::copy_n(block.y, size, fRaster[1] + done);
        std::copy_n(block.z, size, fRaster[2] + done);
    }
    fBound = Bound::empty();
    for (int j = 0; j <= fVSize; ++j) {
        Bound bound = Bound::empty();
        for (int i = 0; i < vertexCount(j); ++i) bound.add(raster(i, j));
        fRowBounds[j] = bound;
        fBound.add(Point(bound.xmin, bound.ymin, bound.zmin));
        fBound.add(Point(bound.xmax, bound.ymax, bound.zmax));
    }
}

}  // namespace zeb
