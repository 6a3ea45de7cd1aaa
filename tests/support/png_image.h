// Reads picture files back, with the means of libpng alone.
#pragma once

#include <png.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace zebtest
{

struct PngImage {
    long width = 0, height = 0;
    int depth = 0, type = -1, channels = 0;
    std::vector<std::array<int, 3>> palette;  // empty: the samples are colours
    std::vector<std::uint32_t> samples;
    std::uint32_t at(long x, long y, int c) const
    {
        return samples[static_cast<std::size_t>((y * width + x) * channels + c)];
    }
};

inline PngImage readPng(const std::string& name)
{
    PngImage image;
    std::FILE* file = std::fopen(name.c_str(), "rb");
    if (!file) return image;
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_read_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
    image.width = png_get_image_width(png, info);
    image.height = png_get_image_height(png, info);
    image.depth = png_get_bit_depth(png, info);
    image.type = png_get_color_type(png, info);
    image.channels = png_get_channels(png, info);
    png_colorp entries = nullptr;
    int count = 0;
    png_get_PLTE(png, info, &entries, &count);
    for (int i = 0; i < count; ++i) {
        image.palette.push_back({entries[i].red, entries[i].green, entries[i].blue});
    }
    png_bytepp rows = png_get_rows(png, info);
    for (long y = 0; y < image.height; ++y) {
        for (long k = 0; k < image.width * image.channels; ++k) {
            image.samples.push_back(image.depth == 16 ? rows[y][2 * k] * 256u + rows[y][2 * k + 1]
                                                      : rows[y][k]);
        }
    }
    png_destroy_read_struct(&png, &info, nullptr);
    std::fclose(file);
    return image;
}

}  // namespace zebtest
