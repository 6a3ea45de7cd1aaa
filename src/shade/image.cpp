#include "shade/image.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <mutex>

#include "util/host_array.h"
#include "util/number.h"
#include "util/report.h"

namespace zeb
{

namespace
{

// Looked up on any thread. Never destroyed: threads may still look when the process ends.
struct Kept {
    std::mutex mutex;
    std::map<const void*, std::shared_ptr<const Image>> images;

    static Kept& all()
    {
        static Kept& kept = *new Kept;
        return kept;
    }
};

}  // namespace

std::shared_ptr<const Image> Image::make(long width, long height, long channels,
                                         const float* pixels, short wrap)
{
    constexpr long kMostSide = 1 << 20, kMostChannels = 64;
    constexpr double kMostValues = 1 << 30;
    const double values = double(width) * double(height) * double(channels);
    if (width < 1 || height < 1 || width > kMostSide || height > kMostSide || channels < 1 ||
        channels > kMostChannels || values > kMostValues) {
        error(kRange, kError, "an image of %ld x %ld pixels with %ld channels", width, height,
              channels);
        return nullptr;
    }
    if (wrap < kClamp || wrap > kBlack) {
        error(kRange, kError, "unknown wrap %ld", static_cast<long>(wrap));
        return nullptr;
    }
    const long count = width * height * channels;
    if (pixels && !(pixels = HostArrays::read("pixels", pixels, count))) return nullptr;
    if (!pixels || !allFinite(pixels, static_cast<std::size_t>(count))) {
        error(kRange, kError, pixels ? "a pixel is not finite" : "pixels are null");
        return nullptr;
    }
    std::shared_ptr<Image> image(new Image);
    image->fChannels = channels;
    image->fWrap = wrap;
    image->fLevels.push_back({width, height, std::vector<float>(pixels, pixels + count)});
    while (image->fLevels.back().width > 1 || image->fLevels.back().height > 1) image->halve();
    return image;
}

const void* Image::keep(std::shared_ptr<const Image> image)
{
    Kept& kept = Kept::all();
    const std::lock_guard lock(kept.mutex);
    const void* const handle = image.get();
    kept.images[handle] = std::move(image);
    return handle;
}

bool Image::release(const void* handle)
{
    Kept& kept = Kept::all();
    const std::lock_guard lock(kept.mutex);
    return kept.images.erase(handle) != 0;
}

std::shared_ptr<const Image> Image::find(const void* handle)
{
    Kept& kept = Kept::all();
    const std::lock_guard lock(kept.mutex);
    const auto found = kept.images.find(handle);
    return found == kept.images.end() ? nullptr : found->second;
}

// Of an odd number of pixels, each of the smaller copy stands for more than two, and some share
// one.
void Image::halve()
{
    const Level& from = fLevels.back();
    Level to{std::max(from.width / 2, 1L), std::max(from.height / 2, 1L), {}};
    to.pixels.resize(static_cast<std::size_t>(to.width * to.height * fChannels));
    // What a pixel of the copy covers of the row or column it comes from: first, and weights.
    struct Share {
        long first;
        std::vector<double> weights;
    };
    const auto shares = [](long size, long smaller) {
        std::vector<Share> all;
        const double step = static_cast<double>(size) / static_cast<double>(smaller);
        for (long k = 0; k < smaller; ++k) {
            const double begin = static_cast<double>(k) * step, end = begin + step;
            Share share{static_cast<long>(begin), {}};
            for (long i = share.first; i < size && static_cast<double>(i) < end; ++i) {
                const double overlap = std::min(static_cast<double>(i + 1), end) -
                                       std::max(static_cast<double>(i), begin);
                share.weights.push_back(overlap / step);
            }
            all.push_back(std::move(share));
        }
        return all;
    };
    const auto columns = shares(from.width, to.width), rows = shares(from.height, to.height);
    float* out = to.pixels.data();
    for (const Share& row : rows) {
        for (const Share& column : columns) {
            for (long c = 0; c < fChannels; ++c) {
                double sum = 0;
                for (std::size_t j = 0; j < row.weights.size(); ++j) {
                    const long y = row.first + static_cast<long>(j);
                    const float* const line = &from.pixels[static_cast<std::size_t>(
                        (y * from.width + column.first) * fChannels + c)];
                    for (std::size_t i = 0; i < column.weights.size(); ++i) {
                        sum += row.weights[j] * column.weights[i] *
                               double{line[static_cast<long>(i) * fChannels]};
                    }
                }
                *out++ = static_cast<float>(sum);
            }
        }
    }
    fLevels.push_back(std::move(to));
}

// Negative where there is nothing.
std::int64_t Image::wrapped(std::int64_t i, std::int64_t size) const
{
    switch (fWrap) {
        case kRepeat:
            i %= size;
            return i < 0 ? i + size : i;
        case kMirror:
            i %= 2 * size;
            if (i < 0) i += 2 * size;
            return i < size ? i : 2 * size - 1 - i;
        case kBlack:
            return i < size ? i : -1;
        default:
            return std::clamp<std::int64_t>(i, 0, size - 1);
    }
}

// Adds what lies there, so many times. Pixels are known in their middles.
void Image::bilinear(const Level& level, double s, double t, float weight, float* channels) const
{
    const double x = s * static_cast<double>(level.width) - 0.5;
    const double y = t * static_cast<double>(level.height) - 0.5;
    const double left = std::floor(x), top = std::floor(y);
    const auto fx = static_cast<float>(x - left), fy = static_cast<float>(y - top);
    const auto i = static_cast<std::int64_t>(left), j = static_cast<std::int64_t>(top);
    for (int corner = 0; corner < 4; ++corner) {
        const int right = corner & 1, low = corner >> 1;
        const std::int64_t column = wrapped(i + right, level.width);
        const std::int64_t row = wrapped(j + low, level.height);
        if (column < 0 || row < 0) continue;
        const float share = weight * (right ? fx : 1 - fx) * (low ? fy : 1 - fy);
        const float* const pixel =
            &level.pixels[static_cast<std::size_t>((row * level.width + column) * fChannels)];
        for (long c = 0; c < fChannels; ++c) channels[c] += share * pixel[c];
    }
}

void Image::look(float s, float t, float pixels, float* channels) const
{
    std::fill_n(channels, fChannels, 0.0f);
    // Beyond this there are no parts of a pixel any more.
    constexpr float kFar = 1 << 24;
    if (!(std::fabs(s) < kFar && std::fabs(t) < kFar)) return;
    // The logarithm of the width in pixels, linear between powers of two.
    const auto last = static_cast<double>(fLevels.size() - 1);
    double level = last;
    if (!(pixels > 1)) {
        level = 0;
    } else if (pixels < kFar) {
        int exponent;
        const double mantissa = std::frexp(double{pixels}, &exponent);
        level = std::min(exponent - 1 + (2 * mantissa - 1), last);
    }
    const auto lower = static_cast<std::size_t>(level);
    const auto between = static_cast<float>(level - std::floor(level));
    bilinear(fLevels[lower], double{s}, double{t}, 1 - between, channels);
    if (between > 0) {
        bilinear(fLevels[lower + 1], double{s}, double{t}, between, channels);
    }
}

}  // namespace zeb
