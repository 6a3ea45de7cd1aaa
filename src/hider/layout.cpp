#include "hider/layout.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

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

// The first and last pixel of a crop window along one axis.
std::pair<long, long> croppedPixels(long resolution, float min, float max)
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

// Of a crop window elsewhere than on the borders of the picture's buckets, buckets begin where it
// does.
void Layout::Axis::layOut(long resolution, float filterWidth)
{
    const bool onBorders = cropped0 <= cropped1 && cropped0 % size == 0 &&
                           ((cropped1 + 1) % size == 0 || cropped1 + 1 == resolution);
    pixel0 = onBorders ? 0 : cropped0;
    pixel1 = onBorders ? resolution - 1 : cropped1;
    count = (pixel1 - pixel0) / size + 1;
    first = (cropped0 - pixel0) / size;
    last = (cropped1 - pixel0) / size;
    const float radius = filterWidth * 0.5f;
    min = static_cast<float>(pixel0) + 0.5f - radius;
    max = static_cast<float>(pixel1) + 0.5f + radius;
    croppedMin = static_cast<float>(cropped0) + 0.5f - radius;
    croppedMax = static_cast<float>(cropped1) + 0.5f + radius;
}

Layout::Layout(const Option& option, const Display& device, const Matrix& cameraToRaster)
    : fFrame(limited(option, device), cameraToRaster)
{
    fX.layOut(device.xDim(), option.filterXwidth);
    fY.layOut(device.yDim(), option.filterYwidth);
}

Option Layout::limited(const Option& asked, const Display& device)
{
    Option option = asked;
    const long xres = device.xDim(), yres = device.yDim();
    std::tie(fX.cropped0, fX.cropped1) = croppedPixels(xres, option.cropXmin, option.cropXmax);
    std::tie(fY.cropped0, fY.cropped1) = croppedPixels(yres, option.cropYmin, option.cropYmax);
    fX.size = option.tuning[1];
    fY.size = option.tuning[2];
    // Whatever is cropped, so that the borders of buckets stay where they are.
    const auto fits = [&] {
        return samplesIn(std::min(fX.size, xres), std::min(fY.size, yres), option) <=
               kMaxBucketSamples;
    };
    while (!fits() && (fX.size > 1 || fY.size > 1)) {
        fX.size = std::max(fX.size / 2, 1L);
        fY.size = std::max(fY.size / 2, 1L);
    }
    // The widest filter takes few enough at one sample a pixel.
    while (!fits()) {
        option.xsamples = std::max(option.xsamples / 2, 1.0f);
        option.ysamples = std::max(option.ysamples / 2, 1.0f);
    }
    return option;
}

std::int64_t Layout::number(BucketPlace place) const
{
    const std::int64_t across = columns();
    const std::int64_t before = (place.row - fY.first) * across;
    if (before < 0) return 0;
    return before + std::clamp<std::int64_t>(place.column - fX.first, 0, across);
}

void Layout::reportLimits(const Option& asked) const
{
    const Option& option = fFrame.option;
    if (fX.size < asked.tuning[1] || fY.size < asked.tuning[2]) {
        error(kRange, kError, "bucket of %ld x %ld takes too many samples, using %ld x %ld",
              asked.tuning[1], asked.tuning[2], fX.size, fY.size);
    }
    if (option.xsamples < asked.xsamples || option.ysamples < asked.ysamples) {
        error(kRange, kError, "sampling rate of %g x %g takes too many samples, using %g x %g",
              double{asked.xsamples}, double{asked.ysamples}, double{option.xsamples},
              double{option.ysamples});
    }
}

std::unique_ptr<Bucket> Layout::makeBucket(BucketPlace place) const
{
    const long x0 = fX.border(place.column), x1 = fX.end(place.column);
    const long y0 = fY.border(place.row), y1 = fY.end(place.row);
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
bool Layout::culled(const Boundw& camera, float room) const
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
    const auto outside = [&](int axis, const Axis& a) {
        return beyond(axis, std::min(a.max, a.croppedMax + room), 1) ||
               beyond(axis, std::max(a.min, a.croppedMin - room), -1);
    };
    return outside(0, fX) || outside(1, fY);
}

bool Layout::holds(const Boundw& camera) const
{
    const Option& option = fFrame.option;
    if (!(option.nearClip * camera.wmax <= camera.zmin &&
          option.farClip * camera.wmin >= camera.zmax)) {
        return false;
    }
    const auto& m = fFrame.cameraToRaster.m;
    const auto within = [&](int axis, double border, double sign) {
        double form[4];
        for (int k = 0; k < 4; ++k) form[k] = sign * (m[k][axis] - border * m[k][3]);
        return least(form, camera) >= 0;
    };
    const auto inside = [&](int axis, const Axis& a) {
        return within(axis, a.croppedMax, -1) && within(axis, a.croppedMin, 1);
    };
    return inside(0, fX) && inside(1, fY);
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
    const auto first = [&](float min, const Axis& axis, float width, long current) {
        const float early = option.quirks ? 0 : std::max(width * 0.5f - 1, 0.0f);
        const float offset = width * 0.5f + axis.min + early;
        return std::max(std::min(bucketOf(div(min, w2), offset, axis.size), axis.count - 1),
                        current);
    };
    const auto last = [&](float max, const Axis& axis) {
        if (!(w1 > kEpsilon)) return axis.count - 1;
        return std::min(bucketOf(div(max, max < 0 ? w2 : w1), axis.min, axis.size), axis.count - 1);
    };
    const auto isInFront = [](const Boundw& b) { return b.wmin > 0 && b.homogenizable(); };
    const bool onScreen = isInFront(raster);
    // What may be moved behind the eye is judged by where it is before.
    const bool front = onScreen || (primitive.displacement() > 0 &&
                                    isInFront(primitive.hull() * fFrame.cameraToRaster));
    primitive.setFiled(front, onScreen ? screenBound(camera, raster) : Bound(), w1,
                       last(raster.xmax, fX), last(raster.ymax, fY));
    return {first(raster.xmin, fX, option.filterXwidth, earliest.column),
            first(raster.ymin, fY, option.filterYwidth, earliest.row)};
}

// The column starts at the current one in later rows too: work only moves forward.
BucketRange Layout::range(const Piece& piece, BucketPlace earliest, BucketPlace lastFiled) const
{
    const Option& option = fFrame.option;
    const Bound& box = piece.box();
    const auto first = [](float min, const Axis& axis, float width, long current) {
        const long bucket = std::max(bucketOf(min, axis.min + width, axis.size) - 1, current);
        return std::max(bucket, axis.first);
    };
    const auto last = [](float max, const Axis& axis, long bound) {
        const long bucket = std::min(bucketOf(max, axis.min, axis.size) + 1, bound);
        return std::min(bucket, axis.last);
    };
    return {{first(box.xmin, fX, option.filterXwidth, earliest.column),
             first(box.ymin, fY, option.filterYwidth, earliest.row)},
            {last(box.xmax, fX, lastFiled.column), last(box.ymax, fY, lastFiled.row)}};
}

}  // namespace zeb
