// The weighted mean of samples.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "hider/sample.h"
#include "hider/weight_kernel.h"
#include "math/filter.h"
#include "state/option.h"

namespace zeb
{

// A pixel filter and its box, with what the default filter needs worked out once.
class PixelFilter
{
public:
    explicit PixelFilter(const Option& option, WeightKernel kernel = weightKernel())
        : fFunction(option.pixelFilter),
          fXwidth(option.filterXwidth),
          fYwidth(option.filterYwidth),
          fKernel(fFunction == zebGaussianFilter ? kernel : nullptr)
    {
        const float s = std::sqrt((fXwidth * fXwidth + fYwidth * fYwidth) * 0.25f) * 0.5f;
        fGaussian = {fXwidth * 0.5f, fYwidth * 0.5f, -1 / (2 * s * s), 1 / (s * 2.50662827462f)};
    }

    void weigh(WeightBlock& block) const
    {
        if (fKernel) return fKernel(fGaussian, block);
        for (int k = 0; k < block.count; ++k) {
            block.weights[k] = fFunction(block.dx[k], block.dy[k], fXwidth, fYwidth);
        }
    }
    float xwidth() const { return fXwidth; }
    float ywidth() const { return fYwidth; }
    bool builtIn() const
    {
        return fFunction == zebGaussianFilter || fFunction == zebBoxFilter ||
               fFunction == zebTriangleFilter || fFunction == zebCatmullRomFilter ||
               fFunction == zebSincFilter;
    }

private:
    FilterFunction fFunction;
    float fXwidth, fYwidth;
    WeightKernel fKernel;  // of the default filter alone
    GaussianWeight fGaussian;
};

// Colour, alpha and depth of a pixel, or of a part of one.
struct FilteredPixel {
    Color color = gBlack;
    float alpha = 0;
    double depth = 0;
};

// Sums samples up by weight. In double: depths near 1e-38 would crawl in float, and a mean of equal
// values comes out as exactly that value.
class WeightedMean
{
public:
    void add(double w, const Color& color, double alpha, double depth)
    {
        if (!(std::fabs(w) >= 1e-10)) return;
        ++fCount;
        fSums[0] += Pair{1, depth} * w;
        fSums[1] += Pair{color.r, color.g} * w;
        fSums[2] += Pair{color.b, alpha} * w;
    }
    // What nothing was added to is black, and as deep as `empty`.
    FilteredPixel mean(double empty) const
    {
        const double sum = fSums[0][0];
        if (std::fabs(sum) < 1e-10) return {gBlack, 0, empty};
        return {Color(static_cast<float>(fSums[1][0] / sum), static_cast<float>(fSums[1][1] / sum),
                      static_cast<float>(fSums[2][0] / sum)),
                static_cast<float>(fSums[2][1] / sum), fSums[0][1] / sum};
    }
    double meanWeight() const { return fCount ? fSums[0][0] / static_cast<double>(fCount) : 0; }

private:
    // Two numbers that are computed with at once.
    using Pair __attribute__((vector_size(16))) = double;

    long fCount = 0;
    Pair fSums[3] = {};  // of weights and depths, reds and greens, blues and alphas
};

// The weighted mean of the samples around a pixel's centre, in the order in which they come. They
// are weighed many at once.
class FilteredSamples
{
public:
    FilteredSamples(const PixelFilter& filter, float x, float y) : fFilter(filter), fX(x), fY(y) {}

    void add(const PackedSample* samples, long count)
    {
        for (const PackedSample* s = samples; s != samples + count; ++s) {
            if (fBlock.count == WeightBlock::kMost) sumUp();
            const int k = fBlock.count++;
            fBlock.dx[k] = s->x - fX;
            fBlock.dy[k] = s->y - fY;
            fSamples[k] = s;
        }
    }
    const WeightedMean& mean()
    {
        sumUp();
        return fMean;
    }

private:
    void sumUp()
    {
        fFilter.weigh(fBlock);
        for (int k = 0; k < fBlock.count; ++k) {
            const PackedSample& s = *fSamples[k];
            fMean.add(double{fBlock.weights[k]}, s.color, double{s.alpha}, s.depth);
        }
        fBlock.count = 0;
    }

    const PixelFilter& fFilter;
    const float fX, fY;
    WeightBlock fBlock;
    const PackedSample* fSamples[WeightBlock::kMost];
    WeightedMean fMean;
};

// The least depth among the samples in a pixel's own square, or in the filter's box where that is
// narrower: beyond it not every pixel has samples. Jitter may leave the square empty; the sample
// next to the centre then stands for it.
class NearestDepth
{
public:
    NearestDepth(const PixelFilter& filter, double empty)
        : fXreach(std::min(filter.xwidth() * 0.5f, 0.5f)),
          fYreach(std::min(filter.ywidth() * 0.5f, 0.5f)),
          fDepth(empty)
    {
    }
    // A sample so far from the pixel's centre. Squares share no border.
    void add(float dx, float dy, double depth)
    {
        if (dx >= -fXreach && dx < fXreach && dy >= -fYreach && dy < fYreach) {
            fDepth = fInside ? std::min(fDepth, depth) : depth;
            fInside = true;
        } else if (const float distance = dx * dx + dy * dy; !fInside && distance < fNext) {
            fDepth = depth;
            fNext = distance;
        }
    }
    double depth() const { return fDepth; }

private:
    float fXreach, fYreach;
    double fDepth;  // `empty` as long as there is no sample
    bool fInside = false;
    float fNext = std::numeric_limits<float>::infinity();  // the square of that one's distance
};

}  // namespace zeb
