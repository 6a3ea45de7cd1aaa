#include "state/option.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <string_view>
#include <vector>

#include "math/filter.h"
#include "math/spaces.h"
#include "math/transform.h"
#include "state/error.h"
#include "state/state.h"
#include "util/cores.h"
#include "util/host_array.h"
#include "util/number.h"

namespace zeb
{

Option* gOption = nullptr;

const ColorSpace& currentColorSpace() { return gOption->colorSpace; }

namespace
{

constexpr unsigned short kOptionBlocks = kOutsideBlocks | kFrameBlock;

// What a picture, a bucket and a grid may need at most, so that none asks for more memory than
// there is.
constexpr long kMaxResolution = 1 << 20;
constexpr float kMaxFilterWidth = 64;
constexpr float kMaxSampleRate = 128;
constexpr long kMaxGridSize = 1024;
constexpr long kMaxBucketSize = 4096;
constexpr long kMaxColorSamples = 4096;
constexpr long kMaxThreads = kMaxCores;

bool legal() { return verify(kOptionBlocks, kOptionState) != 0; }

// The current transformation becomes camera to screen and starts anew.
void takeProjection(bool perspective, float fov)
{
    Matrix screen = gTransform->matrix();
    if (perspective) screen.perspective(fov);
    setCameraToScreen(screen);
    gTransform->set(gIdentity);
}

}  // namespace

Option::Option() : pixelFilter(zebGaussianFilter) {}

void Option::rasterViewport(long x, long xr, long y, long yr)
{
    if (!legal()) return;
    if (xr > kMaxResolution || yr > kMaxResolution) {
        error(kRange, kError, "resolution %ld x %ld is too large", xr, yr);
        return;
    }
    xorigin = x;
    yorigin = y;
    xres = xr;
    yres = yr;
}

void Option::rasterAspect(float aspect)
{
    if (legal() && finiteArguments(NamedValue{"pixel aspect", aspect})) pixelAspect = aspect;
}

void Option::imageWindow(float l, float r, float b, float t)
{
    if (!legal() || !finiteArguments(NamedValue{"left", l}, NamedValue{"right", r},
                                     NamedValue{"bottom", b}, NamedValue{"top", t})) {
        return;
    }
    left = l;
    right = r;
    bottom = b;
    top = t;
}

void Option::imageAspect(float aspect)
{
    if (legal() && finiteArguments(NamedValue{"frame aspect", aspect})) frameAspect = aspect;
}

void Option::imageCrop(float xmin, float xmax, float ymin, float ymax)
{
    if (!legal() || !finiteArguments(NamedValue{"xmin", xmin}, NamedValue{"xmax", xmax},
                                     NamedValue{"ymin", ymin}, NamedValue{"ymax", ymax})) {
        return;
    }
    if (xmin > xmax) std::swap(xmin, xmax);
    if (ymin > ymax) std::swap(ymin, ymax);
    cropXmin = xmin;
    cropXmax = xmax;
    cropYmin = ymin;
    cropYmax = ymax;
    if (xmin < 0 || xmax > 1 || ymin < 0 || ymax > 1) {
        error(kRange, kError, "values should be in range 0 to 1, clamping");
    }
}

void Option::viewOrthographic()
{
    if (!legal()) return;
    projection = true;
    perspective = false;
    takeProjection(false, 0);
}

void Option::viewPerspective(float fov)
{
    // An infinite angle is out of range like any other.
    if (!legal() || (std::isnan(fov) && !finiteArguments(NamedValue{"fov", fov}))) return;
    const bool good = fov >= 1e-10 && fov <= 180;
    projection = true;
    perspective = true;
    takeProjection(true, good ? fov : 90);
    if (!good) error(kRange, kError, "fov %g out of range, using 90 degrees", double{fov});
}

void Option::viewIdentity()
{
    if (!legal()) return;
    projection = false;
    perspective = false;
    takeProjection(false, 0);
}

void Option::clip(float nearz, float farz)
{
    if (!legal()) return;
    if (std::isnan(nearz + farz)) {
        finiteArguments(NamedValue{"near", nearz}, NamedValue{"far", farz});
        return;
    }
    const bool badNear = nearz < 1e-10 || !(nearz < farz - 1e-10);
    const float n = badNear ? 1e-10f : nearz;
    const bool badFar = farz > 1e38f || !(farz > n + 1e-10);
    nearClip = n;
    farClip = badFar ? 1e38f : farz;
    if (badNear) {
        error(kRange, kError, "near clipping distance %g out of range, using minimum",
              double{nearz});
    }
    if (badFar) {
        error(kRange, kError, "far clipping distance %g out of range, using maximum", double{farz});
    }
}

void Option::depthOfField(float stop, float length, float distance)
{
    if (!legal()) return;
    fstop = stop;
    focalLength = length;
    focalDistance = distance;
}

void Option::shutter(float open, float close)
{
    if (!legal()) return;
    shutterOpen = open;
    shutterClose = close;
}

void Option::sampleAdaptive(float threshold)
{
    if (!legal() || !finiteArguments(NamedValue{"threshold", threshold})) return;
    adaptiveThreshold = std::max(threshold, kEpsilon);
}

void Option::sampleUniform(float x, float y)
{
    if (!legal() || !finiteArguments(NamedValue{"x rate", x}, NamedValue{"y rate", y})) return;
    if (x > kMaxSampleRate || y > kMaxSampleRate) {
        error(kRange, kError, "sampling rate %g is too large", double{std::max(x, y)});
        return;
    }
    adaptiveThreshold = 0;
    xsamples = std::max(x, 1.0f);
    ysamples = std::max(y, 1.0f);
}

void Option::sampleJitter(float amount)
{
    if (!legal() || !finiteArguments(NamedValue{"sample jitter", amount})) return;
    if (amount < 0 || amount > kMaxFilterWidth) {
        error(kRange, kError, "sample jitter %g out of range", double{amount});
        return;
    }
    jitter = amount;
}

void Option::filter(short id)
{
    if (!legal()) return;
    switch (id) {
        case ZEB_FILTER_GAUSSIAN:
            pixelFilter = zebGaussianFilter;
            break;
        case ZEB_FILTER_CATMULL_ROM:
            pixelFilter = zebCatmullRomFilter;
            break;
        case ZEB_FILTER_BOX:
            pixelFilter = zebBoxFilter;
            break;
        case ZEB_FILTER_TRIANGLE:
            pixelFilter = zebTriangleFilter;
            break;
        case ZEB_FILTER_SINC:
            pixelFilter = zebSincFilter;
            break;
        default:
            error(kRange, kError, "unknown filter function %d", id);
    }
}

void Option::customFilter(FilterFunction function)
{
    if (!legal()) return;
    if (!function) {
        error(kRange, kError, "filter function is null");
        return;
    }
    pixelFilter = function;
}

void Option::filterWidth(float x, float y)
{
    if (!legal() || !finiteArguments(NamedValue{"x width", x}, NamedValue{"y width", y})) return;
    if (!(x > 0 && y > 0 && x <= kMaxFilterWidth && y <= kMaxFilterWidth)) {
        error(kRange, kError, "filter width %g x %g out of range", double{x}, double{y});
        return;
    }
    filterXwidth = x;
    filterYwidth = y;
}

void Option::colorGain(float value)
{
    if (legal() && finiteArguments(NamedValue{"gain", value})) gain = value;
}

void Option::colorGamma(float gamma)
{
    if (!legal() || !finiteArguments(NamedValue{"gamma", gamma})) return;
    if (gamma < 1e-10) {
        error(kRange, kError, "gamma must be greater than 0");
        return;
    }
    inverseGamma = 1 / gamma;
}

void Option::colorQuantize(long one, long min, long max)
{
    if (!legal()) return;
    colorQuantizer.one = one;
    colorQuantizer.min = min;
    colorQuantizer.max = max;
}

void Option::colorJitter(float amplitude)
{
    if (!legal() || !finiteArguments(NamedValue{"jitter", amplitude})) return;
    colorQuantizer.dither = amplitude;
}

void Option::depthQuantize(long one, long min, long max)
{
    if (!legal()) return;
    depthQuantizer.one = one;
    depthQuantizer.min = min;
    depthQuantizer.max = max;
}

void Option::depthJitter(float amplitude)
{
    if (!legal() || !finiteArguments(NamedValue{"jitter", amplitude})) return;
    depthQuantizer.dither = amplitude;
}

void Option::outputDisplay(const char* name)
{
    if (!legal()) return;
    outputKind = kOutputWindow;
    displayName = name;
}

namespace
{

// What the ending of a file's name says; kOutputAuto for none that is known.
unsigned short kindOf(std::string_view name)
{
    const auto endsIn = [name](std::string_view ending) {
        return name.size() >= ending.size() &&
               std::equal(ending.rbegin(), ending.rend(), name.rbegin(), [](char a, char b) {
                   return a == std::tolower(static_cast<unsigned char>(b));
               });
    };
    return endsIn(".png") ? kOutputPng : endsIn(".exr") ? kOutputExr : kOutputAuto;
}

}  // namespace

void Option::outputFile(short kind, const char* name)
{
    if (!legal()) return;
    if (kind < kOutputAuto || kind > kOutputIndexed) {
        error(kRange, kError, "unknown file kind %d", kind);
        return;
    }
    if (!name || !*name) {
        error(kRange, kError, "file name is empty");
        return;
    }
    const auto chosen = kind == kOutputAuto ? kindOf(name) : static_cast<unsigned short>(kind);
    if (chosen == kOutputAuto) {
        error(kRange, kError, "the ending names no format: \"%s\"", name);
        return;
    }
    outputKind = chosen;
    displayName = name;
}

void Option::customDisplay(const ZebDisplay* device)
{
    if (!legal()) return;
    outputKind = device ? kOutputHost : kOutputWindow;
    hostDisplay = device ? *device : ZebDisplay{};
}

void Option::outputSamples(short s)
{
    if (!legal()) return;
    constexpr int kFamily = 0x300, kRgb = 1, kAlpha = 2, kDepth = 4, kAll = kRgb | kAlpha | kDepth;
    if ((s & ~kAll) != kFamily || !(s & kAll)) {
        error(kRange, kError, "unknown samples %ld", static_cast<long>(s));
        return;
    }
    samples = static_cast<unsigned short>(s);
    rgb = s & kRgb;
    alpha = s & kAlpha;
    depth = s & kDepth;
    sampleCount = static_cast<unsigned short>((rgb ? 3 : 0) + alpha + depth);
}

void Option::hider(short type)
{
    if (!legal()) return;
    const bool known = type == kHiderNull || type == kHiderHidden || type == kHiderSequence;
    hiderType = static_cast<unsigned short>(known ? type : ZEB_HIDER_HIDDEN);
    if (!known) {
        error(kRange, kError, "unknown hider type %ld, using hidden", static_cast<long>(type));
    }
}

void Option::setColorSpace(long n, const float* toRgb, const float* fromRgb)
{
    if (!legal()) return;
    if (n < 1 || n > kMaxColorSamples || !toRgb || !fromRgb) {
        error(kRange, kError, "color space of %ld samples cannot be used", n);
        return;
    }
    toRgb = HostArrays::read("ntorgb", toRgb, 3 * n);
    fromRgb = toRgb ? HostArrays::read("rgbton", fromRgb, 3 * n) : nullptr;
    if (!fromRgb) return;
    const auto size = static_cast<std::size_t>(3 * n);
    if (!allFinite(toRgb, size) || !allFinite(fromRgb, size)) {
        error(kRange, kError, "color space matrix is not finite");
        return;
    }
    colorSpace.standard = false;
    colorSpace.samples = n;
    colorSpace.toRgb.assign(toRgb, toRgb + size);
    colorSpace.fromRgb.assign(fromRgb, fromRgb + size);
}

void Option::relativeDetail(float value)
{
    if (legal()) detail = value;
}

void Option::tune(long gridSize, long width, long height)
{
    if (!legal()) return;
    if (gridSize < 1 || gridSize > kMaxGridSize || width < 1 || width > kMaxBucketSize ||
        height < 1 || height > kMaxBucketSize) {
        error(kRange, kError, "tuning values %ld, %ld, %ld out of range", gridSize, width, height);
        return;
    }
    tuning[0] = gridSize;
    tuning[1] = width;
    tuning[2] = height;
}

void Option::imager(unsigned short, long, const unsigned short*, void* const*) { legal(); }

void Option::setQuirks(short on)
{
    if (legal()) quirks = on != 0;
}

void Option::setDepthNearest(short on)
{
    if (legal()) depthNearest = on != 0;
}

void Option::progressCallback(ProgressFunction function, void* data)
{
    if (!legal()) return;
    progress = function;
    progressData = data;
}

void Option::setThreads(long n)
{
    if (!legal()) return;
    if (n < 0 || n > kMaxThreads) {
        error(kRange, kError, "thread count %ld out of range", n);
        return;
    }
    threads = n;
}

long Option::threadCount() const { return threads == 0 ? usableCores() : threads; }

}  // namespace zeb
