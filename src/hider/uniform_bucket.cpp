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

std::uint32_t placeSeed(double x, double y)
{
    const auto place = [](double v) {
        return static_cast<std::uint32_t>(
            static_cast<std::int64_t>(std::floor(v * kPlacesPerPixel + 0.5)));
    };
    return mixSeeds(place(x), place(y));
}

// Three operands at once; vertices are finite or compare as neither.
float least(float a, float b) { return a < b ? a : b; }
float most(float a, float b) { return a > b ? a : b; }

Bound joined(const Bound& a, const Bound& b)
{
    return {least(a.xmin, b.xmin), most(a.xmax, b.xmax),  least(a.ymin, b.ymin),
            most(a.ymax, b.ymax),  least(a.zmin, b.zmin), most(a.zmax, b.zmax)};
}

Bound edgeBound(const Point& a, const Point& b)
{
    return {least(a.x, b.x), most(a.x, b.x),  least(a.y, b.y),
            most(a.y, b.y),  least(a.z, b.z), most(a.z, b.z)};
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
    fColumns = static_cast<long>(std::ceil((window.xmax - window.xmin) * option.xsamples));
    fRows = static_cast<long>(std::ceil((window.ymax - window.ymin) * option.ysamples));
    fSamples = arena.array<Sample>(static_cast<std::size_t>(fColumns * fRows));
    for (long j = 0; j < fRows; ++j) {
        const double y = (static_cast<double>(j) + 0.5) / yrate + double{window.ymin};
        for (long i = 0; i < fColumns; ++i) {
            const double x = (static_cast<double>(i) + 0.5) / xrate + double{window.xmin};
            Random random(placeSeed(x, y));
            const double dx = (random.unit() - 0.5) * fJitter;
            const double dy = (random.unit() - 0.5) * fJitter;
            at(i, j).place(static_cast<float>(x + dx), static_cast<float>(y + dy));
        }
    }
}

// Calls visit(index) for every sample in the box.
template <class Visit>
void UniformBucket::eachSample(const Bound& bound, const Window& window, const Visit& visit) const
{
    const float xrate = fFrame.option.xsamples, yrate = fFrame.option.ysamples;
    const long i0 = first((bound.xmin - window.xmin - fJitter) * xrate - 0.5f, fColumns);
    const long i1 = last((bound.xmax - window.xmin + fJitter) * xrate - 0.5f, fColumns);
    const long j0 = first((bound.ymin - window.ymin - fJitter) * yrate - 0.5f, fRows);
    const long j1 = last((bound.ymax - window.ymin + fJitter) * yrate - 0.5f, fRows);
    for (long j = j0; j <= j1; ++j) {
        for (long i = i0; i <= i1; ++i) {
            const long k = j * fColumns + i;
            const Sample& sample = fSamples[k];
            const bool apart = sample.x < bound.xmin || sample.x > bound.xmax ||
                               sample.y < bound.ymin || sample.y > bound.ymax;
            if (!apart) visit(k);
        }
    }
}

void UniformBucket::generate(const Window& window, BucketScratch& scratch)
{
    Arena& arena = scratch.arena;
    placeSamples(window, arena);
    const auto count = static_cast<std::size_t>(fColumns * fRows);
    for (const auto& grid : fGrids) sampleGrid(*grid, window, arena);
    if (fFrame.option.closeSeams) closeSeams(window, arena);
    fGrids.flush();
    // A sample serves every pixel its position is within reach of: it is resolved once.
    scratch.samples += count;
    fPacked = arena.array<PackedSample>(count);
    for (std::size_t k = 0; k < count; ++k) {
        checkCancelled();
        fPacked[k] = fSamples[k].pack(fFrame.depthScale, fFrame.option.quirks);
    }
}

void UniformBucket::sampleGrid(const Grid& grid, const Window& window, Arena& arena)
{
    const AttribNamesScope names(grid.fAttrib->object.text(), grid.fAttrib->group.text());
    const auto outside = [&](const Bound& b) {
        return window.misses(b) || b.zmax < 0 || b.zmin > fFrame.depthScale;
    };
    MicroPolygon cell(grid, fBySequence);
    for (int j = 0; j < grid.fVSize; ++j) {
        checkCancelled();
        if (outside(joined(grid.rowBound(j), grid.rowBound(j + 1)))) continue;
        const int count = grid.cellCount(j);
        const Vertex *upper = &grid.vertex(0, j), *lower = &grid.vertex(0, j + 1);
        Bound left = edgeBound(upper[0].P, lower[0].P);
        for (int i = 0; i < count; ++i) {
            const Bound right = edgeBound(upper[i + 1].P, lower[i + 1].P);
            const Bound bound = joined(left, right);
            left = right;
            if (outside(bound)) continue;
            cell.place(i, j);
            const double facing = cell.znormal();
            if (nearZero(facing) || culled(grid, facing)) continue;
            eachSample(bound, window, [&](long k) { fSamples[k].sample(cell, arena); });
        }
    }
}

void UniformBucket::closeSeams(const Window& window, Arena& arena)
{
    const auto count = static_cast<std::size_t>(fColumns * fRows);
    Seams seams(fBySequence, fFrame.depthScale, arena);
    struct Nearby {
        Seams::Near* first = nullptr;
    };
    Nearby* near = arena.array<Nearby>(count);
    for (const auto& grid : fGrids) {
        checkCancelled();
        for (const Seams::Side& side : seams.sides(*grid)) {
            const Bound box = side.bound();
            if (window.misses(box)) continue;
            eachSample(box, window, [&](long k) { seams.look(side, fSamples[k], near[k].first); });
        }
    }
    for (std::size_t k = 0; k < count; ++k) {
        checkCancelled();
        seams.close(fSamples[k], near[k].first, fGrids);
    }
}

// Calls visit(sample) for every sample that may lie within rx and ry of (x, y), and some more.
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
    for (long j = j0; j <= j1; ++j) {
        for (long i = i0; i <= i1; ++i) visit(fPacked[j * fColumns + i]);
    }
}

FilteredPixel UniformBucket::filter(float x, float y, const Window& window) const
{
    const float rx = fFilter.xwidth() * 0.5f, ry = fFilter.ywidth() * 0.5f;
    WeightedMean mean;
    eachNear(x, y, rx, ry, window, [&](const PackedSample& s) {
        mean.add(fFilter(s.x - x, s.y - y), s.color, s.alpha, s.depth);
    });
    return mean.mean(fFrame.depthScale);
}

double UniformBucket::nearestDepth(float x, float y, const Window& window) const
{
    NearestDepth nearest(fFilter, fFrame.depthScale);
    eachNear(x, y, 0.5f, 0.5f, window,
             [&](const PackedSample& s) { nearest.add(s.x - x, s.y - y, s.depth); });
    return nearest.depth();
}

}  // namespace zeb
