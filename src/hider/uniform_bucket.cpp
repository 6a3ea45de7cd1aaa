#include <algorithm>
#include <cmath>

#include "geom/grid.h"
#include "hider/bucket.h"
#include "state/error.h"
#include "util/cancel.h"
#include "util/number.h"

namespace zeb
{

namespace
{

// Jitter belongs to a sample's place in the picture, to this fraction of a pixel.
constexpr double kPlacesPerPixel = 1024;

// Where a column or a row of samples lies, and its part of their seeds.
struct SamplePlace {
    double at = 0;
    std::uint32_t seed = 0;
};

SamplePlace samplePlace(long index, double rate, float start)
{
    const double at = (static_cast<double>(index) + 0.5) / rate + double{start};
    return {at, static_cast<std::uint32_t>(
                    static_cast<std::int64_t>(std::floor(at * kPlacesPerPixel + 0.5)))};
}

// The first index at or after a place, and the last at or before it, as far as there are any. Every
// cell asks four times: the library's own rounding would take a tenth of the picture.
long first(float place, long count)
{
    if (!(place > 0)) return 0;
    if (place > static_cast<float>(count)) return count;
    const auto whole = static_cast<long>(place);
    return whole + (static_cast<float>(whole) < place);
}

long last(float place, long count)
{
    if (!(place >= 0)) return -1;
    return place < static_cast<float>(count) ? static_cast<long>(place) : count - 1;
}

}  // namespace

void UniformBucket::placeSamples(const Window& window, Arena& arena)
{
    const Option& option = fFrame.option;
    const double xrate = option.xsamples, yrate = option.ysamples;
    // The x rate serves both axes: the jitter is as wide as it is high.
    fJitter = option.jitter / option.xsamples * 0.5f;
    const auto count = static_cast<std::size_t>(fColumns * fRows);
    fSamples = arena.array<SamplePoint>(count);
    fX = arena.array<float>(count);
    fY = arena.array<float>(count);
    fCovers = arena.array<SampleOrder>(count);
    fOpen = arena.array<bool>(count);
    fTileColumns = (fColumns + kTile - 1) / kTile;
    fTiles =
        arena.array<Tile>(static_cast<std::size_t>(fTileColumns * ((fRows + kTile - 1) / kTile)));
    auto* const columns = arena.array<SamplePlace>(static_cast<std::size_t>(fColumns));
    for (long i = 0; i < fColumns; ++i) columns[i] = samplePlace(i, xrate, window.xmin);
    for (long j = 0; j < fRows; ++j) {
        const SamplePlace row = samplePlace(j, yrate, window.ymin);
        for (long i = 0; i < fColumns; ++i) {
            const SamplePlace column = columns[i];
            Random random(mixSeeds(column.seed, row.seed));
            const double dx = (random.unit() - 0.5) * fJitter;
            const double dy = (random.unit() - 0.5) * fJitter;
            const long k = j * fColumns + i;
            SamplePoint& point = fSamples[k];
            fX[k] = point.x = static_cast<float>(column.at + dx);
            fY[k] = point.y = static_cast<float>(row.at + dy);
            fCovers[k] = point.cover.order;
        }
    }
}

UniformBucket::Range UniformBucket::samplesIn(const Bound& box, const Window& window) const
{
    const float xrate = fFrame.option.xsamples, yrate = fFrame.option.ysamples;
    return {first((box.xmin - window.xmin - fJitter) * xrate - 0.5f, fColumns),
            last((box.xmax - window.xmin + fJitter) * xrate - 0.5f, fColumns),
            first((box.ymin - window.ymin - fJitter) * yrate - 0.5f, fRows),
            last((box.ymax - window.ymin + fJitter) * yrate - 0.5f, fRows)};
}

// Calls visit(index) for every sample in the box, and some more.
template <class Visit>
void UniformBucket::eachSample(const Bound& box, const Window& window, const Visit& visit) const
{
    const Range range = samplesIn(box, window);
    for (long j = range.j0; j <= range.j1; ++j) {
        const long row = j * fColumns;
        for (long k = row + range.i0; k <= row + range.i1; ++k) visit(k);
    }
}

// Whether any of the tiles that samples of the box are in is so.
template <class Is>
bool UniformBucket::anyTile(const Bound& box, const Window& window, const Is& is) const
{
    const Range range = samplesIn(box, window);
    for (long tj = range.j0 / kTile; tj * kTile <= range.j1; ++tj) {
        for (long ti = range.i0 / kTile; ti * kTile <= range.i1; ++ti) {
            if (is(fTiles[tj * fTileColumns + ti])) return true;
        }
    }
    return false;
}

bool UniformBucket::hidden(const Bound& box, SampleOrder least, const Window& window) const
{
    const auto isOpen = [&](Tile& tile) {
        if (!tile.known) learn(tile);
        return !(tile.most < least);
    };
    return fCovered && !anyTile(box, window, isOpen);
}

// Of few samples, all are looked at: tiles of others would have most of them taken for open.
bool UniformBucket::anyOpen(const Bound& box, SampleOrder least, const Window& window) const
{
    constexpr long kFew = 4 * kTile * kTile;
    const Range range = samplesIn(box, window);
    if ((range.i1 - range.i0 + 1) * (range.j1 - range.j0 + 1) > kFew) {
        return !hidden(box, least, window);
    }
    for (long j = range.j0; j <= range.j1; ++j) {
        const long row = j * fColumns;
        for (long k = row + range.i0; k <= row + range.i1; ++k) {
            if (!(fCovers[k] < least) && isIn(box, k)) return true;
        }
    }
    return false;
}

void UniformBucket::learn(Tile& tile) const
{
    const long n = &tile - fTiles, i0 = n % fTileColumns * kTile, j0 = n / fTileColumns * kTile;
    tile.most = -std::numeric_limits<SampleOrder>::infinity();
    tile.known = true;
    for (long j = j0; j < std::min(j0 + kTile, fRows); ++j) {
        for (long i = i0; i < std::min(i0 + kTile, fColumns); ++i) {
            tile.most = std::max(tile.most, fCovers[j * fColumns + i]);
        }
    }
}

void UniformBucket::generate(const Pieces& pieces, const Window& window, BucketScratch& scratch)
{
    checkCancelled();
    Arena& arena = scratch.arena;
    const Option& option = fFrame.option;
    fColumns = static_cast<long>(std::ceil((window.xmax - window.xmin) * option.xsamples));
    fRows = static_cast<long>(std::ceil((window.ymax - window.ymin) * option.ysamples));
    const auto count = static_cast<std::size_t>(fColumns * fRows);
    fEmpty = pieces.empty() && fFilter.builtIn() && !fFrame.plain;
    if (fEmpty) {
        scratch.counts.samples += count;
        return;
    }
    placeSamples(window, arena);
    const Hits hits = this->hits(pieces, arena);
    fSeen = arena.array<SeenPiece>(pieces.size());
    hide(pieces, hits, window, scratch.counts);
    if (fFrame.option.closeSeams) closeSeams(pieces, hits, window, scratch);
    shade(pieces, hits, scratch);
    // A sample serves every pixel its position is within reach of: it is resolved once.
    scratch.counts.samples += count;
    fPacked = arena.array<PackedSample>(count);
    for (std::size_t k = 0; k < count; ++k) {
        checkCancelled();
        fPacked[k] = hits.resolve(fSamples[k]);
    }
}

// Finds the colours of all that is seen.
void UniformBucket::shade(const Pieces& pieces, const Hits& hits, BucketScratch& scratch) const
{
    Wants wants(pieces.size(), scratch.arena);
    for (long k = 0; k < fColumns * fRows; ++k) hits.want(fSamples[k], wants);
    wants.shade(scratch.counts);
}

void UniformBucket::hide(const Pieces& pieces, const Hits& hits, const Window& window,
                         Counts& counts)
{
    Candidates candidates;
    for (const Ranked& ranked : nearestFirst(pieces, window)) {
        checkCancelled();
        Piece& piece = *pieces[ranked.rank];
        if (hidden(piece.box(), ranked.least, window)) continue;
        const Grid& grid = piece.dice(counts);
        fSeen[ranked.rank].grid = &grid;
        hideGrid({grid, ranked.rank, hits, counts, candidates}, window);
    }
}

void UniformBucket::hideGrid(const Hiding& hiding, const Window& window)
{
    const Grid& grid = hiding.grid;
    const AttribNamesScope names(grid.fAttrib->object.text(), grid.fAttrib->group.text());
    const Lattice lattice{window.xmin,
                          window.xmax,
                          window.ymin,
                          window.ymax,
                          fFrame.option.xsamples,
                          fFrame.option.ysamples,
                          fJitter,
                          static_cast<std::int32_t>(fColumns),
                          static_cast<std::int32_t>(fRows),
                          fFrame.depthScale};
    const auto outside = [&](const Bound& b) {
        return window.misses(b) || b.zmax < 0 || b.zmin > fFrame.depthScale;
    };
    const Bound& box = grid.bound();
    if (window.misses(box) || hidden(box, leastOf(box, grid), window)) return;
    // Most of what is transparent is seen, and at hand now.
    if (!grid.isOpaque()) grid.shade(hiding.counts);
    CellRow cells;
    cells.isFlipped = grid.fFlip != grid.fTransposed;
    for (int j = 0; j < grid.fVSize; ++j) {
        checkCancelled();
        const Bound row = joined(grid.rowBound(j), grid.rowBound(j + 1));
        if (outside(row) || hidden(row, leastOf(row, grid), window)) continue;
        const int count = grid.cellCount(j);
        for (int i = 0; i < count; i += CellRow::kMost) {
            cells.count = std::min(count - i, CellRow::kMost);
            for (int axis = 0; axis < 3; ++axis) {
                cells.upper[axis] = grid.rasterPlane(axis) + grid.at(i, j);
                cells.lower[axis] = grid.rasterPlane(axis) + grid.at(i, j + 1);
            }
            fCells(lattice, cells);
            for (int k = 0; k < cells.count; ++k) {
                if (cells.i1[k] < cells.i0[k] || cells.j1[k] < cells.j0[k]) continue;
                const double facing = double{cells.facing[k]};
                if (nearZero(facing) || culled(grid, facing)) continue;
                hideCell(hiding, cells, k,
                         {static_cast<std::uint16_t>(i + k), static_cast<std::uint16_t>(j)});
            }
        }
    }
    hideCandidates(hiding);
}

// Whether a sample is one of them is found without jumps: next to nothing would predict them.
void UniformBucket::hideCell(const Hiding& hiding, const CellRow& cells, int n, VertexPlace cell)
{
    const Bound box{cells.xmin[n], cells.xmax[n], cells.ymin[n],
                    cells.ymax[n], cells.zmin[n], cells.zmax[n]};
    const SampleOrder least = leastOf(box, hiding.grid);
    Candidates& c = hiding.candidates;
    int known = c.count;
    const auto describe = [&] {
        for (int m = known; m < c.count; ++m) {
            c.cell[m] = cell;
            c.x[m] = fX[c.sample[m]];
            c.y[m] = fY[c.sample[m]];
            c.x00[m] = cells.upper[0][n];
            c.x10[m] = cells.upper[0][n + 1];
            c.x01[m] = cells.lower[0][n];
            c.x11[m] = cells.lower[0][n + 1];
            c.y00[m] = cells.upper[1][n];
            c.y10[m] = cells.upper[1][n + 1];
            c.y01[m] = cells.lower[1][n];
            c.y11[m] = cells.lower[1][n + 1];
        }
    };
    for (long j = cells.j0[n]; j <= cells.j1[n]; ++j) {
        for (long i = cells.i0[n]; i <= cells.i1[n]; ++i) {
            const long k = j * fColumns + i;
            c.sample[c.count] = k;
            c.count += isIn(box, k) & (fCovers[k] >= least);
            if (c.count < Candidates::kMost) continue;
            describe();
            hideCandidates(hiding);
            known = 0;
        }
    }
    describe();
}

void UniformBucket::hideCandidates(const Hiding& hiding)
{
    Candidates& c = hiding.candidates;
    MicroPolygon cell(hiding.grid, fBySequence);
    if (fLocate) fLocate(c);
    for (int m = 0; m < c.count; ++m) {
        cell.place(c.cell[m].i, c.cell[m].j);
        auto s = static_cast<float>(c.s[m]), t = static_cast<float>(c.t[m]);
        if (fLocate ? s < 0 : !cell.locate(c.x[m], c.y[m], s, t)) continue;
        ++hiding.counts.hits;
        const long k = c.sample[m];
        SamplePoint& point = fSamples[k];
        hiding.hits.add(point, cell, s, t, hiding.rank);
        if (point.cover.order < fCovers[k]) {
            fCovers[k] = point.cover.order;
            tileOf(k).known = false;
            fCovered = true;
        }
    }
    hiding.counts.tests += static_cast<std::uint64_t>(c.count);
    c.count = 0;
}

// Only samples that may lie in a gap that is seen are looked at closely, and only there do hidden
// pieces count, which may be on the other side of its line.
void UniformBucket::closeSeams(const Pieces& pieces, const Hits& hits, const Window& window,
                               BucketScratch& scratch)
{
    checkCancelled();
    Arena& arena = scratch.arena;
    Seams seams(fBySequence, fFrame.depthScale, arena);
    Lines open;
    if (!openSamples(pieces, seams, window, open)) return;
    const Lines lines = fFrame.plain ? Lines(window.rectangle()) : std::move(open);
    struct Nearby {
        Seams::Near* first = nullptr;
    };
    auto* const near = arena.array<Nearby>(static_cast<std::size_t>(fColumns * fRows));
    for (Piece* piece : pieces) {
        checkCancelled();
        if (!lines.reach(piece->edges(), piece->box())) continue;
        for (Seams::Side& side : seams.sides(piece->dice(scratch.counts), lines)) {
            const Bound box = side.bound();
            eachSample(box, window, [&](long k) {
                if (fOpen[k] && isIn(box, k)) seams.look(side, fX[k], fY[k], near[k].first);
            });
        }
    }
    for (long k = 0; k < fColumns * fRows; ++k) {
        if (!near[k].first) continue;
        checkCancelled();
        closeGaps(fSamples[k], near[k].first, pieces, seams, hits, scratch.counts);
    }
}

// Marks samples by a side that would be seen there, and hit nothing of its layer, and notes the
// lines of these sides; whether there are any.
bool UniformBucket::openSamples(const Pieces& pieces, Seams& seams, const Window& window,
                                Lines& lines)
{
    const Lines everywhere(window.rectangle());
    bool any = false;
    for (std::size_t rank = 0; rank < pieces.size(); ++rank) {
        checkCancelled();
        if (!fSeen[rank].grid) continue;
        const Grid& grid = *fSeen[rank].grid;
        const SampleOrder least = pieces[rank]->least(fFrame);
        const Bound box = Seams::reached(grid);
        if (window.misses(box) || !anyOpen(box, least, window)) continue;
        for (Seams::Side& side : seams.sides(grid, everywhere)) {
            const Bound bySide = side.bound();
            eachSample(bySide, window, [&](long k) {
                if (fCovers[k] < least || !isIn(bySide, k)) return;
                Seams::Near near;
                if (!seams.look(side, fX[k], fY[k], near)) return;
                if (!fFrame.plain && !isSeen(fSamples[k], fCovers[k], near)) return;
                any = fOpen[k] = true;
                lines.add(side.line, fX[k], fY[k]);
            });
        }
    }
    lines.sort();
    return any;
}

// Calls visit(first, count) for every row's samples that may lie within rx and ry of (x, y), and
// some more.
template <class Visit>
void UniformBucket::eachNear(float x, float y, float rx, float ry, const Window& window,
                             const Visit& visit) const
{
    const float xrate = fFrame.option.xsamples, yrate = fFrame.option.ysamples;
    const auto from = [this](float at, float rate) {
        return static_cast<long>(std::ceil((at - fJitter) * rate - 0.5f));
    };
    const auto to = [this](float at, float rate) {
        return static_cast<long>((at + fJitter) * rate - 0.5f);
    };
    const long i0 = std::max(from(x - rx - window.xmin, xrate), 0L);
    const long i1 = std::min(to(x + rx - window.xmin, xrate), fColumns - 1);
    const long j0 = std::max(from(y - ry - window.ymin, yrate), 0L);
    const long j1 = std::min(to(y + ry - window.ymin, yrate), fRows - 1);
    if (i1 < i0) return;
    for (long j = j0; j <= j1; ++j) visit(fPacked + j * fColumns + i0, i1 - i0 + 1);
}

FilteredPixel UniformBucket::filter(float x, float y, const Window& window) const
{
    if (fEmpty) return {gBlack, 0, double{fFrame.depthScale}};
    const float rx = fFilter.xwidth() * 0.5f, ry = fFilter.ywidth() * 0.5f;
    FilteredSamples samples(fFilter, x, y);
    eachNear(x, y, rx, ry, window,
             [&](const PackedSample* first, long count) { samples.add(first, count); });
    return samples.mean().mean(fFrame.depthScale);
}

double UniformBucket::nearestDepth(float x, float y, const Window& window) const
{
    if (fEmpty) return double{fFrame.depthScale};
    NearestDepth nearest(fFilter, fFrame.depthScale);
    eachNear(x, y, 0.5f, 0.5f, window, [&](const PackedSample* first, long count) {
        for (const PackedSample* s = first; s != first + count; ++s) {
            nearest.add(s->x - x, s->y - y, s->depth);
        }
    });
    return nearest.depth();
}

}  // namespace zeb
