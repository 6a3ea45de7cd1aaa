#include "hider/bucket.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>

#include "geom/grid.h"
#include "hider/exposure_kernel.h"
#include "math/shading_math.h"
#include "state/callback.h"
#include "util/cancel.h"
#include "util/number.h"

namespace zeb
{

namespace
{

enum : std::uint32_t { kDitherDraws = 2 };

// Never the word of what is not a number.
std::uint32_t floatWord(double value, double min, double max)
{
    const double number = value == value ? value : 0;
    // Nor that of a negative zero, which filters make of nothing.
    const float clamped = static_cast<float>(std::clamp(number, min, max)) + 0.0f;
    std::uint32_t word;
    std::memcpy(&word, &clamped, sizeof word);
    return word;
}

// Dither belongs to the pixel and the channel, so that the same picture comes out the same.
std::uint32_t integerWord(double value, const Quantizer& q, long x, long y, std::uint32_t channel)
{
    Random random(mixSeeds(mixSeeds(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)),
                           kDitherDraws + channel));
    return static_cast<std::uint32_t>(
        quantize(static_cast<float>(value), q.one, q.min, q.max, q.dither, random));
}

// The word of a channel of colour, or of alpha. The quirk: floats end at 0 and 1 as well.
std::uint32_t colorWord(float value, const Option& option, long x, long y, std::uint32_t channel)
{
    constexpr double kMost = std::numeric_limits<float>::max();
    if (option.colorQuantizer.one >= 1) {
        return integerWord(double{value}, option.colorQuantizer, x, y, channel);
    }
    return option.quirks ? floatWord(double{value}, 0, 1) : floatWord(double{value}, -kMost, kMost);
}

std::uint32_t depthWord(double value, const Quantizer& q, long x, long y)
{
    return q.one < 1 ? floatWord(value, 0, 1) : integerWord(value, q, x, y, 4);
}

}  // namespace

Bucket::Bucket(const RenderFrame& frame, long x0, long x1, long y0, long y1)
    : fFrame(frame),
      fFilter(frame.option, frame.plain ? weightKernel(1) : weightKernel()),
      fBySequence(frame.option.hiderType == kHiderSequence),
      fX0(x0),
      fX1(x1),
      fY0(y0),
      fY1(y1)
{
}

Bucket::Window Bucket::sampleWindow() const
{
    const float rx = fFilter.xwidth() * 0.5f, ry = fFilter.ywidth() * 0.5f;
    return {static_cast<float>(fX0) + 0.5f - rx, static_cast<float>(fX1) + 0.5f + rx,
            static_cast<float>(fY0) + 0.5f - ry, static_cast<float>(fY1) + 0.5f + ry};
}

Hits Bucket::hits(const Pieces& pieces, Arena& arena) const
{
    const auto moreThanOpaque = [](const Piece* piece) { return piece->mayBeMoreThanOpaque(); };
    const bool inOrder =
        fFrame.option.quirks && std::any_of(pieces.begin(), pieces.end(), moreThanOpaque);
    return {fFrame, inOrder, arena};
}

std::vector<Bucket::Ranked> Bucket::nearestFirst(const Pieces& pieces, const Window& window) const
{
    std::vector<Ranked> order;
    order.reserve(pieces.size());
    for (std::uint32_t k = 0; k < pieces.size(); ++k) {
        if (fFrame.plain || !window.misses(pieces[k]->box())) {
            order.push_back({pieces[k]->least(fFrame), k});
        }
    }
    std::sort(order.begin(), order.end(), [](const Ranked& a, const Ranked& b) {
        return a.least != b.least ? a.least < b.least : a.rank < b.rank;
    });
    return order;
}

bool Bucket::isSeen(const SamplePoint& point, SampleOrder cover, const Seams::Near& near) const
{
    if (!near.outside) return false;
    MicroPolygon by(*near.side->grid, fBySequence);
    by.place(near.side->i, near.side->j);
    if (by.orderAt(near.s, near.t) > cover) return false;
    bool isHit = false;
    point.eachHit([&](const Hit& hit) {
        if (isHit || hit.grid->fSeq != near.side->grid->fSeq || hit.order > cover) return;
        MicroPolygon cell(*hit.grid);
        cell.place(hit.column, hit.row);
        isHit = (cell.znormal() > 0) == near.side->away &&
                Seams::covers(cell, hit.s, hit.t, near, near.side->room);
    });
    return !isHit;
}

void Bucket::closeGaps(SamplePoint& point, Seams::Near* list, const Pieces& pieces,
                       const Seams& seams, const Hits& hits, Counts& counts) const
{
    const SampleOrder cover = hits.coverOf(point);
    seams.close(
        point.x, point.y, list, pieces, counts,
        [&](const Seams::Near& near) { return isSeen(point, cover, near); },
        [&](const MicroPolygon& cell, float s, float t) {
            if (!cell.grid().isOpaque()) cell.grid().shade(counts);
            hits.add(point, cell, s, t, Hits::kLast);
        });
}

// Finds the colours of the row's pixels, red, green and blue, after gain and gamma.
void Bucket::exposeRow(float inverseGamma, BucketScratch& scratch) const
{
    const std::size_t count = 3 * scratch.pixels.size();
    scratch.colors.assign((count / kExposureMultiple + 1) * kExposureMultiple, 0);
    float* to = scratch.colors.data();
    for (const FilteredPixel& pixel : scratch.pixels) {
        for (const float x : {pixel.color.r, pixel.color.g, pixel.color.b}) *to++ = x;
    }
    const ExposureKernel expose = fFrame.plain ? exposureKernel(1) : exposureKernel();
    expose(fFrame.option.gain, inverseGamma, scratch.colors.data(), static_cast<int>(count));
}

void Bucket::fillRow(long y, bool linear, BucketScratch& scratch, std::uint32_t* words) const
{
    const Option& option = fFrame.option;
    const Window window = sampleWindow();
    const float cy = static_cast<float>(y) + 0.5f;
    scratch.pixels.clear();
    for (long x = fX0; x <= fX1; ++x) {
        scratch.pixels.push_back(filter(static_cast<float>(x) + 0.5f, cy, window));
    }
    if (option.rgb) exposeRow(linear ? 1 : option.inverseGamma, scratch);
    const FilteredPixel* pixel = scratch.pixels.data();
    const float* color = scratch.colors.data();
    for (long x = fX0; x <= fX1; ++x, ++pixel) {
        if (option.rgb) {
            for (std::uint32_t c = 0; c < 3; ++c) *words++ = colorWord(*color++, option, x, y, c);
        }
        if (option.alpha) *words++ = colorWord(pixel->alpha, option, x, y, 3);
        if (option.depth) {
            const double depth = option.depthNearest
                                     ? nearestDepth(static_cast<float>(x) + 0.5f, cy, window)
                                     : pixel->depth;
            *words++ = depthWord(depth / double{fFrame.depthScale}, option.depthQuantizer, x, y);
        }
    }
}

void Bucket::sample(BucketScratch& scratch)
{
    scratch.arena.reset();
    // The latest is the first that counts.
    Pieces pieces;
    pieces.reserve(fPieces.size());
    std::transform(fPieces.rbegin(), fPieces.rend(), std::back_inserter(pieces),
                   [](const std::shared_ptr<Piece>& piece) { return piece.get(); });
    generate(pieces, sampleWindow(), scratch);
    fPieces = {};
}

void Bucket::render(Display& display, BucketScratch& scratch)
{
    if (fX1 < fX0 || fY1 < fY0) return;
    sample(scratch);
    scratch.words.resize(rowWords());
    for (long y = fY0; y <= fY1; ++y) {
        checkCancelled();
        if (filtersByHost()) {
            CallbackScope scope;
            fillRow(y, display.isLinear(), scratch, scratch.words.data());
        } else {
            fillRow(y, display.isLinear(), scratch, scratch.words.data());
        }
        display.span(fX0, fX1, y, scratch.words.data());
    }
}

}  // namespace zeb
