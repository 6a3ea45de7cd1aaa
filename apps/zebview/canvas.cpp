#include "canvas.h"

#include <png.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

#include "failure.h"

namespace zebview
{

namespace
{

// libpng's own limits, for a side and for the whole.
constexpr long kMaxSide = 1'000'000;
constexpr std::uint64_t kMaxSamples = 0xFFFFFFFF;

struct Layout {
    png_uint_32 format;
    std::size_t channels, bytes;  // of a pixel
};

Layout layoutOf(Channels channels)
{
    switch (channels) {
        case Channels::kRgb:
            return {PNG_FORMAT_RGB, 3, 3};
        case Channels::kAlpha:
            return {PNG_FORMAT_GRAY, 1, 1};
        case Channels::kDepth:
            return {PNG_FORMAT_LINEAR_Y, 1, 2};
        default:
            return {PNG_FORMAT_RGBA, 4, 4};
    }
}

// Of 0 to 1; what the renderer's filters have driven beyond is cut off.
unsigned rounded(float value, float full)
{
    if (!(value > 0)) return 0;
    return static_cast<unsigned>(std::lround(std::min(value, 1.0f) * full));
}

void storeDepth(float depth, std::uint8_t* pixel)
{
    const auto value = static_cast<std::uint16_t>(rounded(depth, 65535));
    std::memcpy(pixel, &value, sizeof value);
}

}  // namespace

Canvas::Canvas(long width, long height, Channels channels, const std::optional<Color>& background)
    : fWidth(width), fHeight(height), fChannels(channels)
{
    const Layout layout = layoutOf(channels);
    const auto pixels = static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
    if (width > kMaxSide || height > kMaxSide || pixels > kMaxSamples / layout.channels) {
        throw Failure("the picture is too large for a PNG file");
    }
    fPixelBytes = layout.bytes;
    fBytes.resize(pixels * layout.bytes);
    if (channels == Channels::kDepth) std::fill(fBytes.begin(), fBytes.end(), 0xFF);
    if (!background || channels == Channels::kDepth) return;
    std::uint8_t pixel[4];
    const float light[4] = {toLight((*background)[0]), toLight((*background)[1]),
                            toLight((*background)[2]), 1};
    drawColor(light, true, pixel);
    for (std::size_t i = 0; i < fBytes.size(); ++i) fBytes[i] = pixel[i % fPixelBytes];
}

// What the renderer sends is multiplied by alpha, both as filters have driven them beyond 1.
void Canvas::drawColor(const float* light, bool hasAlpha, std::uint8_t* pixel) const
{
    const float alpha = hasAlpha ? light[3] : 1;
    for (int i = 0; i < 3; ++i) {
        pixel[i] = static_cast<std::uint8_t>(
            alpha > 0 ? rounded(toShown(std::max(light[i] / alpha, 0.0f)), 255) : 0);
    }
    if (fChannels == Channels::kRgba) pixel[3] = static_cast<std::uint8_t>(rounded(alpha, 255));
}

void Canvas::draw(long x, long y, long count, const unsigned int* words)
{
    const auto place = static_cast<std::size_t>(y) * static_cast<std::size_t>(fWidth) +
                       static_cast<std::size_t>(x);
    std::uint8_t* pixel = &fBytes[place * fPixelBytes];
    const bool gray = fChannels == Channels::kAlpha || fChannels == Channels::kDepth;
    const std::size_t wordCount = gray ? 1 : fPixelBytes;
    float values[4];
    for (long i = 0; i < count; ++i, pixel += fPixelBytes, words += wordCount) {
        std::memcpy(values, words, wordCount * sizeof(float));
        if (fChannels == Channels::kDepth) {
            storeDepth(values[0], pixel);
        } else if (fChannels == Channels::kAlpha) {
            *pixel = static_cast<std::uint8_t>(rounded(values[0], 255));
        } else {
            drawColor(values, fChannels == Channels::kRgba, pixel);
        }
    }
}

bool Canvas::write(std::FILE* file) const
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(fWidth);
    image.height = static_cast<png_uint_32>(fHeight);
    image.format = layoutOf(fChannels).format;
    errno = 0;
    const bool written = png_image_write_to_stdio(&image, file, 0, fBytes.data(), 0, nullptr) != 0;
    const int error = errno;
    png_image_free(&image);
    errno = error;
    return written;
}

ZebDisplay CanvasCell::device()
{
    ZebDisplay display{};
    display.data = this;
    display.span = [](void* data, long x0, long x1, long y, const unsigned int* words) {
        const auto& cell = *static_cast<CanvasCell*>(data);
        cell.fCanvas.draw(cell.fX + x0, cell.fY + y, x1 - x0 + 1, words);
    };
    return display;
}

}  // namespace zebview
