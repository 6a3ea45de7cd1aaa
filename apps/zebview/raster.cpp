#include "raster.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace zebview
{

namespace
{

constexpr std::size_t kChannels = 4;

// What toShown() makes of light, in bytes: within one of them, and far faster.
class ShownBytes
{
public:
    ShownBytes()
    {
        for (std::size_t i = 0; i < fBytes.size(); ++i) {
            const float light = static_cast<float>(i) / kScale;
            fBytes[i] = static_cast<std::uint8_t>(std::lround(toShown(light) * 255));
        }
    }
    std::uint8_t operator()(float light) const
    {
        if (!(light > 0)) return 0;
        return fBytes[static_cast<std::size_t>(std::lround(std::min(light, 1.0f) * kScale))];
    }

private:
    static constexpr float kScale = 4095;
    std::array<std::uint8_t, 4096> fBytes;
};

const ShownBytes& shownBytes()
{
    static const ShownBytes bytes;
    return bytes;
}

void showPixel(const float* pixel, const Color& backdrop, const ShownBytes& shown,
               std::uint8_t* bytes)
{
    for (std::size_t c = 0; c < 3; ++c) bytes[c] = shown(pixel[c] + (1 - pixel[3]) * backdrop[c]);
}

// Where along a side a pixel of a larger picture lies: between two pixels, and how near the second.
struct Between {
    long first, second;
    float weight;

    Between(long at, long size, long shownSize)
    {
        const float place = (static_cast<float>(at) + 0.5f) * static_cast<float>(size) /
                                static_cast<float>(shownSize) -
                            0.5f;
        const float inside = std::clamp(place, 0.0f, static_cast<float>(size - 1));
        first = static_cast<long>(inside);
        second = std::min(first + 1, size - 1);
        weight = inside - static_cast<float>(first);
    }
};

}  // namespace

void Raster::resize(long width, long height)
{
    fWidth = width;
    fHeight = height;
    fValues.assign(static_cast<std::size_t>(width * height) * kChannels, 0);
}

const float* Raster::pixel(long x, long y) const
{
    return &fValues[static_cast<std::size_t>(y * fWidth + x) * kChannels];
}

void Raster::set(long x0, long x1, long y, const unsigned int* words)
{
    const auto count = static_cast<std::size_t>(x1 - x0 + 1) * kChannels;
    std::memcpy(const_cast<float*>(pixel(x0, y)), words, count * sizeof(float));
}

void Raster::showSpan(const Color& backdrop, long x0, long x1, long y,
                      std::vector<std::uint8_t>& bytes) const
{
    const ShownBytes& shown = shownBytes();
    std::uint8_t* to = &bytes[static_cast<std::size_t>(y * fWidth + x0) * 3];
    for (long x = x0; x <= x1; ++x, to += 3) showPixel(pixel(x, y), backdrop, shown, to);
}

void Raster::show(const Color& backdrop, long width, long height,
                  std::vector<std::uint8_t>& bytes) const
{
    bytes.resize(static_cast<std::size_t>(width * height) * 3);
    if (width == fWidth && height == fHeight) {
        for (long y = 0; y < height; ++y) showSpan(backdrop, 0, width - 1, y, bytes);
        return;
    }
    const ShownBytes& shown = shownBytes();
    std::uint8_t* to = bytes.data();
    for (long y = 0; y < height; ++y) {
        const Between row(y, fHeight, height);
        for (long x = 0; x < width; ++x, to += 3) {
            const Between column(x, fWidth, width);
            const float* const corners[4] = {
                pixel(column.first, row.first), pixel(column.second, row.first),
                pixel(column.first, row.second), pixel(column.second, row.second)};
            float mixed[kChannels];
            for (std::size_t c = 0; c < kChannels; ++c) {
                const float upper = corners[0][c] + column.weight * (corners[1][c] - corners[0][c]);
                const float lower = corners[2][c] + column.weight * (corners[3][c] - corners[2][c]);
                mixed[c] = upper + row.weight * (lower - upper);
            }
            showPixel(mixed, backdrop, shown, to);
        }
    }
}

void Raster::drawOn(Canvas& canvas, const Color* backdrop) const
{
    const std::size_t kept = backdrop ? 3 : kChannels;
    std::vector<unsigned int> words(static_cast<std::size_t>(fWidth) * kept);
    for (long y = 0; y < fHeight; ++y) {
        for (long x = 0; x < fWidth; ++x) {
            const float* from = pixel(x, y);
            float light[kChannels];
            std::copy_n(from, kChannels, light);
            for (std::size_t c = 0; backdrop && c < 3; ++c) {
                light[c] += (1 - from[3]) * (*backdrop)[c];
            }
            std::memcpy(&words[static_cast<std::size_t>(x) * kept], light, kept * sizeof(float));
        }
        canvas.draw(0, y, fWidth, words.data());
    }
}

}  // namespace zebview
