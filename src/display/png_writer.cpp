#include <png.h>

#include <cmath>
#include <csetjmp>
#include <cstring>
#include <vector>

#include "display/file_display.h"
#include "display/quantizer.h"
#include "math/shading_math.h"

namespace zeb
{

namespace
{

float asFloat(std::uint32_t word)
{
    float value;
    std::memcpy(&value, &word, sizeof value);
    return value;
}

// A word as a fraction of its full scale.
double fraction(std::uint32_t word, const Quantizer& quantizer)
{
    if (quantizer.one < 1) return asFloat(word);
    return static_cast<double>(static_cast<std::int32_t>(word)) /
           static_cast<double>(quantizer.one);
}

bool needs16Bits(const Quantizer& quantizer) { return quantizer.one < 1 || quantizer.max > 255; }

// Which words of a pixel a file holds, and how.
struct PngLayout {
    const PixelFormat& format;
    bool wide;
    int color;  // words of colour or grey: 3 or 1

    explicit PngLayout(const PixelFormat& f)
        : format(f),
          wide(((f.rgb || f.alpha) && needs16Bits(f.color)) ||
               (!f.rgb && f.depth && needs16Bits(f.depthQuantizer))),
          color(f.rgb ? 3 : 1)
    {
    }
    bool hasAlpha() const { return format.alpha && (format.rgb || format.depth); }
    int type() const
    {
        if (color == 3) return hasAlpha() ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB;
        return hasAlpha() ? PNG_COLOR_TYPE_GRAY_ALPHA : PNG_COLOR_TYPE_GRAY;
    }
    std::size_t rowBytes(long width) const
    {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(color + hasAlpha()) *
               (wide ? 2 : 1);
    }

    void store(double value, png_bytep& out) const
    {
        const double full = wide ? 65535 : 255;
        const double scaled = std::floor(value * full + 0.5);
        const auto sample = static_cast<unsigned>(scaled > 0 ? std::fmin(scaled, full) : 0);
        if (wide) *out++ = static_cast<png_byte>(sample >> 8);
        *out++ = static_cast<png_byte>(sample & 0xFF);
    }

    // What colours have been multiplied by. They come as (c a)^(1 / gamma); the format wants
    // c^(1 / gamma).
    double weight(double alpha) const
    {
        return format.inverseGamma == 1 || !(alpha > 0)
                   ? alpha
                   : double{power(static_cast<float>(alpha), format.inverseGamma)};
    }

    void encode(const std::uint32_t* words, long width, png_bytep out) const
    {
        const int channels = format.channels();
        for (long x = 0; x < width; ++x, words += channels) {
            if (format.rgb) {
                const double alpha = format.alpha ? fraction(words[3], format.color) : 1;
                const double divisor = weight(alpha);
                for (int c = 0; c < 3; ++c) {
                    const double value = fraction(words[c], format.color);
                    store(divisor > 0 ? value / divisor : 0, out);
                }
                if (format.alpha) store(alpha, out);
            } else if (format.depth) {
                store(fraction(words[channels - 1], format.depthQuantizer), out);
                if (format.alpha) store(fraction(words[0], format.color), out);
            } else {
                store(fraction(words[0], format.color), out);
            }
        }
    }
};

// Nothing with a destructor lives here: libpng leaves it by a jump when writing fails.
void writeRows(png_structp png, png_infop info, const Picture& picture, const PngLayout& layout,
               const std::uint32_t* emptyRow, png_bytep row)
{
    if (setjmp(png_jmpbuf(png))) return;
    png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width),
                 static_cast<png_uint_32>(picture.height), layout.wide ? 16 : 8, layout.type(),
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    for (long y = 0; y < picture.height; ++y) {
        const std::uint32_t* words = picture.rows[static_cast<std::size_t>(y)].get();
        layout.encode(words ? words : emptyRow, picture.width, row);
        png_write_row(png, row);
    }
    png_write_end(png, nullptr);
}

// Likewise.
void writeIndexedRows(png_structp png, png_infop info, const ColorImage& image,
                      const Palette& palette, const png_color* colors, png_bytep row)
{
    if (setjmp(png_jmpbuf(png))) return;
    png_set_IHDR(png, info, static_cast<png_uint_32>(image.width),
                 static_cast<png_uint_32>(image.height), 8, PNG_COLOR_TYPE_PALETTE,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_PLTE(png, info, colors, static_cast<int>(palette.map.size()));
    png_write_info(png, info);
    for (long y = 0; y < image.height; ++y) {
        const ScreenColor* color = image.row(y);
        for (long x = 0; x < image.width; ++x) row[x] = palette.index(color[x]);
        png_write_row(png, row);
    }
    png_write_end(png, nullptr);
}

void ignoreMessage(png_structp, png_const_charp) {}
[[noreturn]] void onError(png_structp png, png_const_charp message)
{
    static_cast<OutputFile*>(png_get_error_ptr(png))->fail(message);
    png_longjmp(png, 1);
}
void onWrite(png_structp png, png_bytep bytes, std::size_t size)
{
    auto* file = static_cast<OutputFile*>(png_get_io_ptr(png));
    if (!file->write(reinterpret_cast<const char*>(bytes), size)) png_error(png, "");
}
void onFlush(png_structp) {}

// Makes what libpng needs, and lets write use it.
template <typename Write>
void withPng(OutputFile& file, const Write& write)
{
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &file, onError, ignoreMessage);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (info) {
        png_set_write_fn(png, &file, onWrite, onFlush);
        write(png, info);
    } else {
        file.fail("no memory for libpng");
    }
    png_destroy_write_struct(&png, &info);
}

}  // namespace

void writePng(const Picture& picture, OutputFile& file)
{
    const PngLayout layout(picture.format);
    const std::vector<std::uint32_t> emptyRow(static_cast<std::size_t>(picture.width) *
                                              static_cast<std::size_t>(picture.format.channels()));
    std::vector<png_byte> row(layout.rowBytes(picture.width));
    withPng(file, [&](png_structp png, png_infop info) {
        writeRows(png, info, picture, layout, emptyRow.data(), row.data());
    });
}

void writeIndexedPng(const Picture& picture, OutputFile& file)
{
    ColorImage image(picture.width, picture.height);
    const int channels = picture.format.channels();
    for (long y = 0; y < image.height; ++y) {
        const std::uint32_t* words = picture.rows[static_cast<std::size_t>(y)].get();
        if (!words) continue;
        ScreenColor* color = image.row(y);
        for (long x = 0; x < image.width; ++x, words += channels) {
            color[x] = screenColor(picture.format, words);
        }
    }
    const Palette palette = makePalette(image);
    std::vector<png_color> colors;
    for (const auto& entry : palette.map) colors.push_back({entry.red, entry.green, entry.blue});
    std::vector<png_byte> row(static_cast<std::size_t>(image.width));
    withPng(file, [&](png_structp png, png_infop info) {
        writeIndexedRows(png, info, image, palette, colors.data(), row.data());
    });
}

}  // namespace zeb
