// A PNG file read back, and what can be said about the shape in it.
#pragma once

#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace zebtest
{

using Pixel = std::array<int, 4>;  // red, green, blue, alpha; 0 to 255

class Image
{
public:
    explicit Image(const std::string& name)
    {
        png_image png{};
        png.version = PNG_IMAGE_VERSION;
        if (!png_image_begin_read_from_file(&png, name.c_str())) {
            ADD_FAILURE() << name << ": " << png.message;
            return;
        }
        hasAlpha = (png.format & PNG_FORMAT_FLAG_ALPHA) != 0;
        png.format = PNG_FORMAT_RGBA;
        fBytes.resize(PNG_IMAGE_SIZE(png));
        if (!png_image_finish_read(&png, nullptr, fBytes.data(), 0, nullptr)) {
            ADD_FAILURE() << name << ": " << png.message;
            return;
        }
        width = static_cast<int>(png.width);
        height = static_cast<int>(png.height);
        findBox();
    }

    Pixel at(int x, int y) const
    {
        const png_byte* p = &fBytes[index(x, y) * 4];
        return {p[0], p[1], p[2], p[3]};
    }
    int alpha(int x, int y) const { return at(x, y)[3]; }
    bool covered(int x, int y) const { return alpha(x, y) > 0; }
    int brightness(int x, int y) const
    {
        const Pixel p = at(x, y);
        return (p[0] + p[1] + p[2]) / 3;
    }
    bool opaqueAround(int x0, int y0, int distance) const
    {
        for (int y = y0 - distance; y <= y0 + distance; ++y) {
            for (int x = x0 - distance; x <= x0 + distance; ++x) {
                if (alpha(x, y) < 255) return false;
            }
        }
        return true;
    }
    bool operator==(const Image& other) const = default;

    // The part of the picture that the shape covers.
    double coverage() const
    {
        double sum = 0;
        forEach([&](int x, int y) { sum += alpha(x, y) / 255.0; });
        return sum / (width * height);
    }
    // How far apart the darkest and the brightest of what is fully covered are.
    int contrast() const
    {
        int least = 255, most = 0;
        forEach([&](int x, int y) {
            if (alpha(x, y) < 255) return;
            least = std::min(least, brightness(x, y));
            most = std::max(most, brightness(x, y));
        });
        return most - least;
    }
    // Transparent pixels that cannot be reached from the border.
    int holePixels() const
    {
        std::vector<bool> seen(index(width - 1, height - 1) + 1);
        std::vector<std::pair<int, int>> open;
        const auto visit = [&](int x, int y) {
            if (x < 0 || y < 0 || x >= width || y >= height || covered(x, y)) return;
            const std::size_t place = index(x, y);
            if (seen[place]) return;
            seen[place] = true;
            open.emplace_back(x, y);
        };
        forEach([&](int x, int y) {
            if (x == 0 || y == 0 || x == width - 1 || y == height - 1) visit(x, y);
        });
        while (!open.empty()) {
            const auto [x, y] = open.back();
            open.pop_back();
            for (int dy = -1; dy <= 1; ++dy) {
                for (int dx = -1; dx <= 1; ++dx) visit(x + dx, y + dy);
            }
        }
        int holes = 0;
        forEach([&](int x, int y) { holes += !covered(x, y) && !seen[index(x, y)]; });
        return holes;
    }
    // Transparent pixels between the first and the last covered one of their row.
    int gapPixels() const
    {
        int gaps = 0;
        for (int y = 0; y < height; ++y) {
            int first = 0, last = width - 1;
            while (first < width && !covered(first, y)) ++first;
            while (last > first && !covered(last, y)) --last;
            for (int x = first; x < last; ++x) gaps += !covered(x, y);
        }
        return gaps;
    }
    // Pixels that are not opaque although no transparent one is near: what cracks look like.
    int crackPixels() const
    {
        int cracks = 0;
        for (int y = 2; y < height - 2; ++y) {
            for (int x = 2; x < width - 2; ++x) {
                bool inside = true;
                for (int dy = -2; dy <= 2; ++dy) {
                    for (int dx = -2; dx <= 2; ++dx) inside &= covered(x + dx, y + dy);
                }
                cracks += inside && alpha(x, y) < 255;
            }
        }
        return cracks;
    }

    int width = 0, height = 0;
    bool hasAlpha = false;
    int left = 0, right = -1, top = 0, bottom = -1;  // of the shape

private:
    std::size_t index(int x, int y) const
    {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
               static_cast<std::size_t>(x);
    }
    template <class Visit>
    void forEach(const Visit& visit) const
    {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) visit(x, y);
        }
    }
    void findBox()
    {
        left = width;
        top = height;
        forEach([&](int x, int y) {
            if (!covered(x, y)) return;
            left = std::min(left, x);
            right = std::max(right, x);
            top = std::min(top, y);
            bottom = std::max(bottom, y);
        });
    }

    std::vector<png_byte> fBytes;
};

// The largest difference between two pictures of one size, in any channel.
inline int difference(const Image& a, const Image& b)
{
    if (a.width != b.width || a.height != b.height) return 256;
    int most = 0;
    for (int y = 0; y < a.height; ++y) {
        for (int x = 0; x < a.width; ++x) {
            const Pixel p = a.at(x, y), q = b.at(x, y);
            for (std::size_t c = 0; c < 4; ++c) most = std::max(most, std::abs(p[c] - q[c]));
        }
    }
    return most;
}

}  // namespace zebtest
