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

constexpr int kRoundSamples = 8;

enum : std::uint32_t { kRoundDraws = 3 };

// Lower 1% quantiles of the chi-square distribution with 8 k - 1 degrees of freedom.
constexpr float kChiSquare[AdaptiveBucket::kRounds] = {1.239f,   5.229f,   10.196f,  15.678f,
                                                       21.4386f, 27.4208f, 33.5693f, 39.8488f,
                                                       46.2349f, 52.71f,   59.2607f, 65.8768f};

// The colours of the samples in one quarter of a pixel.
struct Quadrant {
    double sum[3] = {}, squares[3] = {};

    void add(const Color& c)
    {
        const double values[3] = {c.r, c.g, c.b};
        for (int k = 0; k < 3; ++k) {
            sum[k] += values[k];
            squares[k] += values[k] * values[k];
        }
    }
    // Of m samples.
    double variance(int k, int m) const
    {
        const double mean = sum[k] / m;
        return (squares[k] + mean * (m * mean - 2 * sum[k])) / m;
    }
};

}  // namespace

AdaptiveBucket::AdaptiveBucket(const RenderFrame& frame, long x0, long x1, long y0, long y1)
    : Bucket(frame, x0, x1, y0, y1)
{
    maxVariance(frame.option.adaptiveThreshold, fChiSquare);
}

void AdaptiveBucket::maxVariance(float v, float (&chiSquare)[kRounds])
{
    for (int i = 0; i < kRounds; ++i) {
        chiSquare[i] = (v / kChiSquare[kRounds - 1]) * kChiSquare[i];
    }
}

// Calls visit(pixel) for every pixel whose square the box touches.
template <class Visit>
void AdaptiveBucket::eachPixel(const Bound& bound, const Window& window, const Visit& visit)
{
    const auto first = [](float x, long count) { return clampToLong(std::ceil(x) - 1, 0, count); };
    const auto last = [](float x, long count) { return clampToLong(std::floor(x), -1, count - 1); };
    const long i0 = first(bound.xmin - window.xmin, fColumns);
    const long i1 = last(bound.xmax - window.xmin, fColumns);
    const long j0 = first(bound.ymin - window.ymin, fRows);
    const long j1 = last(bound.ymax - window.ymin, fRows);
    for (long j = j0; j <= j1; ++j) {
        for (long i = i0; i <= i1; ++i) visit(at(i, j));
    }
}

// Files every cell under the pixels whose square its bound touches, the nearest grids first: each
// round of each pixel looks at those alone. Cells seen edge-on are kept, unlike in the uniform
// bucket.
void AdaptiveBucket::collect(const Grid& grid, const Ranked& ranked, const Window& window,
                             Arena& arena)
{
    const AttribNamesScope names(grid.fAttrib->object.text(), grid.fAttrib->group.text());
    GridIterator cells(grid, fBySequence);
    checkCancelled();
    while (const MicroPolygon* cell = cells++) {
        const Bound bound = cell->bound();
        if (bound.zmax < 0 || bound.zmin > fFrame.depthScale) continue;
        if (culled(grid, cell->znormal())) continue;
        const Candidate* candidate = nullptr;
        eachPixel(bound, window, [&](MultiSample& pixel) {
            if (!candidate)
                candidate = arena.make<Candidate>(*cell, bound, leastOf(bound, grid), ranked.rank);
            Reference* reference = arena.make<Reference>(candidate, ranked.least, nullptr);
            (pixel.last ? pixel.last->next : pixel.first) = reference;
            pixel.last = reference;
        });
    }
}

// Whether the sample may lie in a gap that would be seen.
bool AdaptiveBucket::isOpen(const SamplePoint& point, const MultiSample& pixel,
                            const Seams& seams) const
{
    for (const SideReference* r = pixel.sides; r; r = r->next) {
        Seams::Near near;
        if (fFrame.plain) return true;
        if (r->least > point.cover.order || !seams.look(*r->side, point.x, point.y, near)) continue;
        if (isSeen(point, point.cover.order, near)) return true;
    }
    return false;
}

// Finds what a sample hits.
void AdaptiveBucket::hide(SamplePoint& point, const MultiSample& pixel, const Pieces& pieces,
                          const Seams& seams, const Hits& hits, Counts& counts) const
{
    // Behind its cover lie all grids from the first on that does.
    for (const Reference* r = pixel.first; r && r->least <= point.cover.order; r = r->next) {
        const auto& [cell, b, least, rank] = *r->candidate;
        const bool apart =
            point.x < b.xmin || point.x > b.xmax || point.y < b.ymin || point.y > b.ymax;
        float u, v;
        if (!apart && least <= point.cover.order && cell.locate(point.x, point.y, u, v)) {
            hits.add(point, cell, u, v, rank);
        }
    }
    if (!isOpen(point, pixel, seams)) return;
    Seams::Near* near = nullptr;
    for (const SideReference* r = pixel.sides; r; r = r->next) {
        seams.look(*r->side, point.x, point.y, near);
    }
    closeGaps(point, near, pieces, seams, hits, counts);
}

void AdaptiveBucket::samplePixel(MultiSample& pixel, float left, float top, const Pieces& pieces,
                                 const Seams& seams, const Hits& hits, Wants& wants,
                                 BucketScratch& scratch) const
{
    const auto place = [](float v) {
        return static_cast<std::uint32_t>(static_cast<std::int64_t>(std::floor(v * 1024.0 + 0.5)));
    };
    Random random(mixSeeds(mixSeeds(place(left), place(top)), kRoundDraws));
    Quadrant quadrants[4];
    pixel.samples = scratch.arena.array<PackedSample>(kRounds * kRoundSamples);
    for (int round = 0; round < kRounds; ++round) {
        SamplePoint points[kRoundSamples];
        for (int s = 0; s < kRoundSamples; ++s) {
            checkCancelled();
            const float dx = random.unit() * 0.5f, dy = random.unit() * 0.5f;
            points[s].x = left + 0.5f + (s & 1 ? -dx : dx);
            points[s].y = top + 0.5f + (s & 2 ? -dy : dy);
            hide(points[s], pixel, pieces, seams, hits, scratch.counts);
            hits.want(points[s], wants);
        }
        wants.shade(scratch.counts);
        for (int s = 0; s < kRoundSamples; ++s) {
            const PackedSample packed = hits.resolve(points[s]);
            quadrants[s % 4].add(packed.color);
            pixel.samples[pixel.count++] = packed;
        }
        const int m = 2 * (round + 1);
        double variance = 0;
        for (int k = 0; k < 3; ++k) {
            double sum = 0;
            for (const Quadrant& q : quadrants) sum += q.variance(k, m);
            variance = std::max(variance, sum / 4);
        }
        if (!(variance > fChiSquare[round])) return;
    }
}

void AdaptiveBucket::generate(const Pieces& pieces, const Window& window, BucketScratch& scratch)
{
    Arena& arena = scratch.arena;
    fColumns = static_cast<long>(std::ceil(window.xmax - window.xmin));
    fRows = static_cast<long>(std::ceil(window.ymax - window.ymin));
    fPixels = arena.array<MultiSample>(static_cast<std::size_t>(fColumns * fRows));
    Seams seams(fBySequence, fFrame.depthScale, arena);
    const Hits hits = this->hits(pieces, arena);
    // Whole squares are sampled, also those that reach beyond the window.
    const Window squares{window.xmin, window.xmin + static_cast<float>(fColumns), window.ymin,
                         window.ymin + static_cast<float>(fRows)};
    auto* const seen = arena.array<SeenPiece>(pieces.size());
    for (const Ranked& ranked : nearestFirst(pieces, squares)) {
        const Grid& grid = pieces[ranked.rank]->dice(scratch.counts);
        if (!grid.isOpaque()) grid.shade(scratch.counts);
        collect(grid, ranked, window, arena);
        seen[ranked.rank].grid = &grid;
    }
    Wants wants(pieces.size(), arena);
    for (std::size_t rank = 0; rank < pieces.size(); ++rank) {
        if (!fFrame.option.closeSeams || !seen[rank].grid) continue;
        const SampleOrder least = pieces[rank]->least(fFrame);
        for (const Seams::Side& side : seams.sides(*seen[rank].grid, Lines(squares.rectangle()))) {
            Seams::Side* kept = nullptr;
            eachPixel(side.bound(), window, [&](MultiSample& pixel) {
                if (!kept) kept = arena.make<Seams::Side>(side);
                pixel.sides = arena.make<SideReference>(kept, least, pixel.sides);
            });
        }
    }
    for (long j = 0; j < fRows; ++j) {
        for (long i = 0; i < fColumns; ++i) {
            samplePixel(at(i, j), static_cast<float>(i) + window.xmin,
                        static_cast<float>(j) + window.ymin, pieces, seams, hits, wants, scratch);
            scratch.counts.samples += static_cast<std::uint64_t>(at(i, j).count);
        }
    }
}

// Calls visit(pixel) for every square that reaches within rx and ry of (x, y).
template <class Visit>
void AdaptiveBucket::eachNear(float x, float y, float rx, float ry, const Window& window,
                              const Visit& visit) const
{
    const auto last = [](float to) { return static_cast<long>(double{to} - 1e-10); };
    const long i0 = std::max(static_cast<long>(x - rx - window.xmin), 0L);
    const long i1 = std::min(last(x + rx - window.xmin), fColumns - 1);
    const long j0 = std::max(static_cast<long>(y - ry - window.ymin), 0L);
    const long j1 = std::min(last(y + ry - window.ymin), fRows - 1);
    for (long j = j0; j <= j1; ++j) {
        for (long i = i0; i <= i1; ++i) visit(fPixels[j * fColumns + i]);
    }
}

FilteredPixel AdaptiveBucket::filter(float x, float y, const Window& window) const
{
    const float rx = fFilter.xwidth() * 0.5f, ry = fFilter.ywidth() * 0.5f;
    WeightedMean total;
    eachNear(x, y, rx, ry, window, [&](const MultiSample& pixel) {
        FilteredSamples samples(fFilter, x, y);
        samples.add(pixel.samples, pixel.count);
        const WeightedMean& part = samples.mean();
        const FilteredPixel value = part.mean(fFrame.depthScale);
        total.add(part.meanWeight(), value.color, value.alpha, value.depth);
    });
    return total.mean(fFrame.depthScale);
}

// The squares that were sampled lie about the corners of pixels where the filter is 2 wide.
double AdaptiveBucket::nearestDepth(float x, float y, const Window& window) const
{
    NearestDepth nearest(fFilter, fFrame.depthScale);
    eachNear(x, y, 0.5f, 0.5f, window, [&](const MultiSample& pixel) {
        for (int k = 0; k < pixel.count; ++k) {
            const PackedSample& s = pixel.samples[k];
            nearest.add(s.x - x, s.y - y, s.depth);
        }
    });
    return nearest.depth();
}

}  // namespace zeb
