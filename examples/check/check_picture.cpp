// check_picture FILE WIDTH HEIGHT: succeeds if FILE is a picture of that size with something on it.
// Reads PNG, binary portable pixmaps and, where the build has it, OpenEXR.

#include <png.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

#if ZEB_EXR
#include <ImfArray.h>
#include <ImfRgbaFile.h>
#endif

namespace
{

struct Picture {
    long width = 0, height = 0;
    std::vector<std::uint32_t> pixels;  // red, green, blue and alpha, a byte each
};

std::uint32_t packed(unsigned r, unsigned g, unsigned b, unsigned a)
{
    return r | g << 8 | b << 16 | a << 24;
}

Picture readPng(const std::string& path)
{
    png_image header{};
    header.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&header, path.c_str())) {
        throw std::runtime_error(header.message);
    }
    header.format = PNG_FORMAT_RGBA;
    std::vector<png_byte> bytes(PNG_IMAGE_SIZE(header));
    if (!png_image_finish_read(&header, nullptr, bytes.data(), 0, nullptr)) {
        throw std::runtime_error(header.message);
    }
    Picture picture{static_cast<long>(header.width), static_cast<long>(header.height), {}};
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
        picture.pixels.push_back(packed(bytes[i], bytes[i + 1], bytes[i + 2], bytes[i + 3]));
    }
    return picture;
}

Picture readPixmap(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::string kind;
    Picture picture;
    long full = 0;
    file >> kind >> picture.width >> picture.height >> full;
    if (!file || kind != "P6" || full != 255) throw std::runtime_error("no binary pixmap");
    file.get();
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    if (static_cast<double>(bytes.size()) !=
        3.0 * static_cast<double>(picture.width) * static_cast<double>(picture.height)) {
        throw std::runtime_error("the pixmap is cut short");
    }
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        picture.pixels.push_back(packed(byte(i), byte(i + 1), byte(i + 2), 255));
    }
    return picture;
}

#if ZEB_EXR
Picture readExr(const std::string& path)
{
    OPENEXR_IMF_NAMESPACE::RgbaInputFile file(path.c_str());
    const auto window = file.dataWindow();
    Picture picture{window.max.x - window.min.x + 1L, window.max.y - window.min.y + 1L, {}};
    OPENEXR_IMF_NAMESPACE::Array2D<OPENEXR_IMF_NAMESPACE::Rgba> pixels(picture.height,
                                                                       picture.width);
    file.setFrameBuffer(&pixels[0][0] - window.min.x - window.min.y * picture.width, 1,
                        static_cast<std::size_t>(picture.width));
    file.readPixels(window.min.y, window.max.y);
    const auto byte = [](float value) {
        return static_cast<unsigned>(std::lround(255 * std::clamp(value, 0.0f, 1.0f)));
    };
    for (long y = 0; y < picture.height; ++y) {
        for (long x = 0; x < picture.width; ++x) {
            const auto& p = pixels[y][x];
            picture.pixels.push_back(packed(byte(p.r), byte(p.g), byte(p.b), byte(p.a)));
        }
    }
    return picture;
}
#endif

Picture readPicture(const std::string& path)
{
    const auto endsIn = [&](const std::string& ending) {
        return path.size() >= ending.size() &&
               path.compare(path.size() - ending.size(), ending.size(), ending) == 0;
    };
    if (endsIn(".ppm")) return readPixmap(path);
#if ZEB_EXR
    if (endsIn(".exr")) return readExr(path);
#endif
    return readPng(path);
}

// What is wrong with a picture that should have something on it; empty if nothing is.
std::string faultOf(const Picture& picture, long width, long height)
{
    if (picture.width != width || picture.height != height) {
        return "the size is " + std::to_string(picture.width) + " x " +
               std::to_string(picture.height);
    }
    std::unordered_map<std::uint32_t, long> counts;
    for (const std::uint32_t pixel : picture.pixels) ++counts[pixel];
    if (counts.size() < 64) return "it has " + std::to_string(counts.size()) + " colours only";
    long most = 0;
    for (const auto& [pixel, count] : counts) most = std::max(most, count);
    if (most > 0.9 * static_cast<double>(picture.pixels.size())) {
        return "nearly all of it is of one colour";
    }
    return {};
}

}  // namespace

int main(int argc, char** argv)
try {
    if (argc != 4) throw std::runtime_error("usage: check_picture FILE WIDTH HEIGHT");
    const std::string fault = faultOf(readPicture(argv[1]), std::strtol(argv[2], nullptr, 10),
                                      std::strtol(argv[3], nullptr, 10));
    if (fault.empty()) return 0;
    std::fprintf(stderr, "%s: %s\n", argv[1], fault.c_str());
    return 1;
} catch (const std::exception& problem) {
    std::fprintf(stderr, "%s: %s\n", argc > 1 ? argv[1] : "check_picture", problem.what());
    return 1;
}
