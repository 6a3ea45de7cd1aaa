// Plates with textures on them.
#pragma once

#include <png.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "gltf.h"
#include "image.h"
#include "process.h"

namespace zebtest
{

// A PNG file of a picture, given by the pixel at each place, from the top.
inline std::string pngOf(int width, int height, const std::function<Pixel(int, int)>& pixelAt)
{
    std::vector<png_byte> bytes;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (const int value : pixelAt(x, y)) bytes.push_back(static_cast<png_byte>(value));
        }
    }
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(width);
    png.height = static_cast<png_uint_32>(height);
    png.format = PNG_FORMAT_RGBA;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(png);
    std::string file(size, '\0');
    EXPECT_TRUE(png_image_write_to_memory(&png, file.data(), &size, 0, bytes.data(), 0, nullptr));
    file.resize(size);
    return file;
}

inline std::string pngOf(const Pixel& color)
{
    return pngOf(4, 4, [&](int, int) { return color; });
}

// Four fields of one color each: from the upper left, row by row.
inline const Pixel kFields[4] = {
    {200, 30, 40, 255}, {20, 180, 60, 255}, {10, 90, 250, 255}, {240, 230, 70, 255}};

inline std::string fieldsPng()
{
    return pngOf(16, 16, [](int x, int y) { return kFields[(y / 8) * 2 + x / 8]; });
}

inline double decoded(double shown)
{
    return shown <= 0.04045 ? shown / 12.92 : std::pow((shown + 0.055) / 1.055, 2.4);
}

inline double encoded(double light)
{
    return light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

// The whole picture on the plate.
inline const std::vector<float> kWholePicture{0, 1, 1, 1, 1, 0, 0, 0};

// A plate whose material says these things of its base color, and others after it.
inline GltfPlate texturedPlate(const std::string& base, const std::string& more = "",
                               const std::string& sampler = "{}")
{
    GltfPlate plate;
    plate.material = R"({"pbrMetallicRoughness":{"metallicFactor":0,)" + base + "}" + more + "}";
    plate.places = kWholePicture;
    plate.extra =
        R"(,"images":[{"uri":"a.png"}],"samplers":[)" + sampler +
        R"(],"textures":[{"source":0,"sampler":0}],"extensionsUsed":[)" +
        R"("KHR_materials_unlit","KHR_texture_transform","KHR_materials_clearcoat","KHR_materials_transmission",)" +
        R"("KHR_materials_pbrSpecularGlossiness"])";
    return plate;
}

inline constexpr const char* kUnlit = R"(,"extensions":{"KHR_materials_unlit":{}})";
inline constexpr const char* kPicture = R"("baseColorTexture":{"index":0})";

class Textured : public Zebview
{
protected:
    Image picture(const GltfPlate& plate) const
    {
        return Image(render(write("plate.gltf", plate.text()), {"--view", "0,0", "--fov", "1"}));
    }
};

// What is seen at a part of the plate's width and height, from the upper left.
inline Pixel plateAt(const Image& image, double x, double y)
{
    return image.at(image.left + static_cast<int>(std::lround(x * (image.right - image.left))),
                    image.top + static_cast<int>(std::lround(y * (image.bottom - image.top))));
}

inline void expectNear(const Pixel& found, const Pixel& expected, int tolerance,
                       const std::string& where)
{
    for (std::size_t c = 0; c < 4; ++c) {
        EXPECT_NEAR(found[c], expected[c], tolerance) << where << ", channel " << c;
    }
}

}  // namespace zebtest
