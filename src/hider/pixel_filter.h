// The weighted mean of samples.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "hider/sample.h"
#include "math/filter.h"
#include "math/shading_math.h"
#include "state/option.h"

namespace zeb
{

// A pixel filter and its box, with what the default filter needs worked out once.
class PixelFilter
{
public:
    explicit PixelFilter(const Option& option)
        : fFunction(option.pixelFilter),
          fXwidth(option.filterXwidth),
          fYwidth(option.filterYwidth),
          fGaussian(fFunction == zebGaussianFilter)
    {
        const float s = std::sqrt((fXwidth * fXwidth + fYwidth * fYwidth) * 0.25f) * 0.5f;
        fExponent = -1 / (2 * s * s);
        fScale = 1 / (s * 2.50662827462f);
    }

    float operator()(float dx, float dy) const
    {
        if (!fGaussian) return fFunction(dx, dy, fXwidth, fYwidth);
        if (!(std::fabs(dx) <= fXwidth * 0.5f && std::fabs(dy) <= fYwidth * 0.5f)) return 0;
        return exponential((dx * dx + dy * dy) * fExponent) * fScale;
    }
    float xwidth() const { return fXwidth; }
    float ywidth() const { return fYwidth; }
    bool builtIn() const
    {
        return fGaussian || fFunction == zebBoxFilter || fFunction == zebTriangleFilter ||
               fFunction == zebCatmullRomFilter || fFunction == zebSincFilter;
    }

private:
    FilterFunction fFunction;
    float fXwidth, fYwidth;
    bool fGaussian;
    float fExponent, fScale;
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
        fSum += w;
        fRed += w * color.r;
        fGreen += w * color.g;
        fBlue += w * color.b;
        fAlpha += w * alpha;
        fDepth += w * depth;
    }
    // What nothing was added to is black, and as deep as `empty`.
    FilteredPixel mean(double empty) const
    {
        if (std::fabs(fSum) < 1e-10) return {gBlack, 0, empty};
        return {Color(static_cast<float>(fRed / fSum), static_cast<float>(fGreen / fSum),
                      static_cast<float>(fBlue / fSum)),
                static_cast<float>(fAlpha / fSum), fDepth / fSum};
    }
    double meanWeight() const { return fCount ? fSum / static_cast<double>(fCount) : 0; }

private:
    long fCount = 0;
    double fSum = 0, fRed = 0, fGreen = 0, fBlue = 0, fAlpha = 0, fDepth = 0;
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
