#include "hider/layout.h"

#include <algorithm>
#include <cmath>

#include "display/display.h"
#include "math/shading_math.h"
#include "state/error.h"
#include "util/number.h"

namespace zeb
{

namespace
{

// Samples of one bucket: what memory can be counted on to hold.
constexpr double kMaxBucketSamples = 1 << 22;

struct Pixels {
    long first, last;
};

// The pixels of a crop window along one axis.
Pixels croppedPixels(long resolution, float min, float max)
{
    const auto size = static_cast<float>(resolution);
    return {clampToLong(std::ceil(size * min), 0, resolution - 1),
            clampToLong(std::ceil(size * max - 1), 0, resolution - 1)};
}

// Those of a bucket of some sides.
double samplesIn(long width, long height, const Option& option)
{
    const auto across = [&option](long side, float filterWidth, float rate) {
        const double perPixel = option.adaptiveThreshold >= 1e-10 ? 10 : rate;
        return (static_cast<double>(side) + double{filterWidth}) * perPixel;
    };
    return across(width, option.filterXwidth, option.xsamples) *
           across(height, option.filterYwidth, option.ysamples);
}

// The bucket that a raster coordinate falls into, counted from an offset.
long bucketOf(float coordinate, float offset, long size)
{
    const double bucket = std::floor((double{coordinate} - offset) / static_cast<double>(size));
    return clampToLong(bucket, -1, 1L << 30);
}

}  // namespace

Layout::Layout(const Option& option, const Display& device, const Matrix& cameraToRaster)
    : fFrame(limited(option, device), cameraToRaster),
      fColumns((fX1 - fX0) / fBucketWidth + 1),
      fRows((fY1 - fY0) / fBucketHeight + 1)
{
    const float rx = option.filterXwidth * 0.5f, ry = option.filterYwidth * 0.5f;
    fXmin = static_cast<float>(fX0) + 0.5f - rx;
    fXmax = static_cast<float>(fX1) + 0.5f + rx;
    fYmin = static_cast<float>(fY0) + 0.5f - ry;
    fYmax = static_cast<float>(fY1) + 0.5f + ry;
}

Option Layout::limited(const Option& asked, const Display& device)
{
    Option option = asked;
    const Pixels x = croppedPixels(device.xDim(), option.cropXmin, option.cropXmax);
    const Pixels y = croppedPixels(device.yDim(), option.cropYmin, option.cropYmax);
    fX0 = x.first;
    fX1 = x.last;
    fY0 = y.first;
    fY1 = y.last;
    fBucketWidth = option.tuning[1];
    fBucketHeight = option.tuning[2];
    const auto fits = [&] {
        return samplesIn(std::min(fBucketWidth, fX1 - fX0 + 1),
                         std::min(fBucketHeight, fY1 - fY0 + 1), option) <= kMaxBucketSamples;
    };
    while (!fits() && (fBucketWidth > 1 || fBucketHeight > 1)) {
        fBucketWidth = std::max(fBucketWidth / 2, 1L);
        fBucketHeight = std::max(fBucketHeight / 2, 1L);
    }
    // The widest filter takes few enough at one sample a pixel.
    while (!fits()) {
        option.xsamples = std::max(option.xsamples / 2, 1.0f);
        option.ysamples = std::max(option.ysamples / 2, 1.0f);
    }
    return option;
}

void Layout::reportLimits(const Option& asked) const
{
    const Option& option = fFrame.option;
    if (fBucketWidth < asked.tuning[1] || fBucketHeight < asked.tuning[2]) {
        error(kRange, kError, "bucket of %ld x %ld takes too many samples, using %ld x %ld",
              asked.tuning[1], asked.tuning[2], fBucketWidth, fBucketHeight);
    }
    if (option.xsamples < asked.xsamples || option.ysamples < asked.ysamples) {
        error(kRange, kError, "sampling rate of %g x %g takes too many samples, using %g x %g",
              double{asked.xsamples}, double{asked.ysamples}, double{option.xsamples},
              double{option.ysamples});
    }
}

std::unique_ptr<Bucket> Layout::makeBucket(BucketPlace place) const
{
    const auto [column, row] = place;
    const long x0 = fX0 + column * fBucketWidth, y0 = fY0 + row * fBucketHeight;
    const long x1 = column + 1 == fColumns ? fX1 : x0 + fBucketWidth - 1;
    const long y1 = row + 1 == fRows ? fY1 : y0 + fBucketHeight - 1;
    if (fFrame.option.adaptiveThreshold >= 1e-10) {
        return std::make_unique<AdaptiveBucket>(fFrame, x0, x1, y0, y1);
    }
    return std::make_unique<UniformBucket>(fFrame, x0, x1, y0, y1);
}

namespace
{

// The least that a linear form takes over a box: whatever its sign, every term has its own least.
double least(const double (&form)[4], const Boundw& b)
{
    const auto term = [](double factor, float min, float max) {
        return factor * double{factor > 0 ? min : max};
    };
    return term(form[0], b.xmin, b.xmax) + term(form[1], b.ymin, b.ymax) +
           term(form[2], b.zmin, b.zmax) + term(form[3], b.wmin, b.wmax);
}

}  // namespace

// In homogeneous form, so that nothing is divided. What can be seen has a positive w, and x no
// larger than w times that of the window's right border: the difference is linear in camera space,
// and where all of a box is beyond it, nothing of the box can be seen. The other borders likewise.
bool Layout::culled(const Boundw& camera) const
{
    const Option& option = fFrame.option;
    if (option.nearClip * camera.wmin > camera.zmax || option.farClip * camera.wmax < camera.zmin) {
        return true;
    }
    if (camera.xmax + kEpsilon < camera.xmin || camera.ymax + kEpsilon < camera.ymin ||
        camera.zmax + kEpsilon < camera.zmin) {
        return true;
    }
    const auto& m = fFrame.cameraToRaster.m;
    const auto beyond = [&](int axis, double border, double sign) {
        double form[4];
        for (int k = 0; k < 4; ++k) form[k] = sign * (m[k][axis] - border * m[k][3]);
        return least(form, camera) > 0;
    };
    return beyond(0, fXmax, 1) || beyond(0, fXmin, -1) || beyond(1, fYmax, 1) ||
           beyond(1, fYmin, -1);
}

// On the screen, with depths of the hider.
Bound Layout::screenBound(const Boundw& camera, Boundw raster) const
{
    // So near the eye nothing is known of it.
    if (raster.wmin < kEpsilon) return {};
    raster.homogenize();
    raster.zmin = -kInfinity;
    raster.zmax = kInfinity;
    if (!(camera.wmin > 0)) return raster;
    const float zmin = camera.zmin / (camera.zmin > 0 ? camera.wmax : camera.wmin);
    const float zmax = camera.zmax / (camera.zmax > 0 ? camera.wmin : camera.wmax);
    const double room = depthRounding(zmin, zmax);
    raster.zmin = fFrame.hiderDepth(static_cast<float>(double{zmin} - room));
    raster.zmax = fFrame.hiderDepth(static_cast<float>(double{zmax} + room));
    return raster;
}

// The first bucket counts from the centre of the first pixel, the last one from the edge of the
// sample window: a primitive is filed where a filter of up to two pixels first needs it.
BucketPlace Layout::file(Primitive& primitive, const Boundw& camera, const Boundw& raster,
                         BucketPlace earliest) const
{
    const Option& option = fFrame.option;
    const float w1 = raster.wmin, w2 = raster.wmax;
    const auto first = [&](float min, float windowMin, float width, long size, long current,
                           long count) {
        const float early = option.quirks ? 0 : std::max(width * 0.5f - 1, 0.0f);
        const float offset = width * 0.5f + windowMin + early;
        return std::max(std::min(bucketOf(div(min, w2), offset, size), count - 1), current);
    };
    const auto last = [&](float max, float windowMin, long size, long count) {
        if (!(w1 > kEpsilon)) return count - 1;
        return std::min(bucketOf(div(max, max < 0 ? w2 : w1), windowMin, size), count - 1);
    };
    const bool front = w1 > 0 && raster.homogenizable();
    primitive.setFiled(front, front ? screenBound(camera, raster) : Bound(), w1,
                       last(raster.xmax, fXmin, fBucketWidth, fColumns),
                       last(raster.ymax, fYmin, fBucketHeight, fRows));
    return {first(raster.xmin, fXmin, option.filterXwidth, fBucketWidth, earliest.column, fColumns),
            first(raster.ymin, fYmin, option.filterYwidth, fBucketHeight, earliest.row, fRows)};
}

// The column starts at the current one in later rows too: work only moves forward.
BucketRange Layout::range(const Piece& piece, BucketPlace earliest, BucketPlace lastFiled) const
{
    const Option& option = fFrame.option;
    const Bound& box = piece.box();
    const auto first = [](float min, float windowMin, float width, long size, long current) {
        return std::max(bucketOf(min, windowMin + width, size) - 1, current);
    };
    const auto last = [](float max, float windowMin, long size, long bound) {
        return std::min(bucketOf(max, windowMin, size) + 1, bound);
    };
    return {{first(box.xmin, fXmin, option.filterXwidth, fBucketWidth, earliest.column),
             first(box.ymin, fYmin, option.filterYwidth, fBucketHeight, earliest.row)},
            {last(box.xmax, fXmin, fBucketWidth, lastFiled.column),
             last(box.ymax, fYmin, fBucketHeight, lastFiled.row)}};
}

}  // namespace zeb
