#include "geom/grid.h"

#include <algorithm>
#include <mutex>

#include "geom/vertex_kernel.h"
#include "state/quark.h"

namespace zeb
{

namespace
{

// The variables that shading knows by name, or all others; positions are neither.
ArgList inCamera(const ArgList& args, const Matrix& toCamera, bool flip, bool known, bool corners)
{
    ArgList taken;
    for (const ArgAssoc& assoc : args) {
        const bool isColor = Quark::isVertexColor(assoc.token);
        // What control points have is elsewhere, unless they are corners.
        const bool isVertex = assoc.storage() == kVertexClass && !isColor;
        if (assoc.token <= kQPointw || (isVertex && !corners)) continue;
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
      fVertexArgs(inCamera(args, transform.matrix(), flip, true, triangular)),
      fOtherArgs(inCamera(args, transform.matrix(), flip, false, triangular))
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

void Grid::want(int i, int j, Places& wanted) const
{
    if (!mark(i, j, kFound)) return;
    if (wanted.empty()) wanted.reserve(vertexCount());
    wanted.push_back({static_cast<std::uint16_t>(i), static_cast<std::uint16_t>(j)});
}

void Grid::wantCell(VertexPlace cell, Places& wanted, ShadingCounts& counts) const
{
    const auto [i, j] = cell;
    if (!mark(i, j, kSeen)) return;
    ++counts.seen;
    want(i, j, wanted);
    if (!fSmooth) return;
    want(i + 1, j, wanted);
    want(i, j + 1, wanted);
    want(i + 1, j + 1, wanted);
}

void Grid::shade(const AskedCells* cells, ShadingCounts& counts) const
{
    if (!fFrame) return;
    const std::lock_guard lock(fLock);
    if (!fComplete && shadedByHost()) complete(counts);
    if (!fComplete) {
        beginShading();
        Places wanted;
        for (const AskedCells* block = cells; block; block = block->next) {
            for (int k = 0; k < block->count; ++k) wantCell(block->cells[k], wanted, counts);
        }
        shadeVertices(wanted, counts);
    }
    logReports(cells);
}

void Grid::shade(ShadingCounts& counts) const
{
    if (!fFrame) return;
    if (!fComplete.load(std::memory_order_acquire)) {
        const std::lock_guard lock(fLock);
        if (!fComplete) complete(counts);
    }
    if (fAllReports) tellInTurn(fAllReports);
    if (fReports.empty()) return;
    eachPoint([this](VertexPlace place) { logReports(place); });
}

void Grid::complete(ShadingCounts& counts) const
{
    beginShading();
    for (int j = 0; j < fVSize; ++j) {
        for (int i = 0; i < cellCount(j); ++i) counts.seen += mark(i, j, kSeen);
    }
    Places wanted;
    eachPoint([&](VertexPlace place) { want(place.i, place.j, wanted); });
    shadeVertices(wanted, counts);
    fVertices.reset();
    fMarks.reset();
    fComplete.store(true, std::memory_order_release);
}

void Grid::beginShading() const
{
    if (fMarks) return;
    const std::size_t count = vertexCount();
    if (!fColors.values) fColors.values = makeArray<Color>(count);
    fMarks = makeArray<std::uint8_t>(count);
    std::fill_n(fMarks.get(), count, std::uint8_t{0});
}

// What was reported of a point is told where it is first asked for, whoever was the first to shade
// it.
void Grid::logReports(VertexPlace place) const
{
    for (const VertexReports& known : fReports) {
        if (known.place.i == place.i && known.place.j == place.j) {
            tellInTurn(known.log);
        }
    }
}

void Grid::logReports(const AskedCells* cells) const
{
    if (fAllReports) tellInTurn(fAllReports);
    if (fReports.empty()) return;
    for (; cells; cells = cells->next) {
        for (int k = 0; k < cells->count; ++k) {
            for (const int j : {0, fSmooth ? 1 : 0}) {
                for (const int i : {0, fSmooth ? 1 : 0}) {
                    logReports({static_cast<std::uint16_t>(cells->cells[k].i + i),
                                static_cast<std::uint16_t>(cells->cells[k].j + j)});
                }
            }
        }
    }
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
