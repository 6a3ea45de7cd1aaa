// Small models written by the tests.
#pragma once

#include <array>
#include <cmath>
#include <functional>
#include <sstream>
#include <string>

#include "image.h"

namespace zebtest
{

using Place = std::array<double, 3>;

// Three by five cells: an F, which looks different from every side.
inline constexpr const char* kLetter[5] = {"###", "#..", "##.", "#..", "#.."};

// The letter as an OBJ file of squares; place says where a point of its plane, x to the right and
// y up, lies in the model.
inline std::string letterObj(const std::function<Place(double, double)>& place)
{
    std::ostringstream text;
    for (int row = 0; row < 5; ++row) {
        for (int column = 0; column < 3; ++column) {
            if (kLetter[row][column] != '#') continue;
            const double x = column, y = 4 - row;
            for (const auto& [dx, dy] : {std::pair{0, 0}, {1, 0}, {1, 1}, {0, 1}}) {
                const Place p = place(x + dx, y + dy);
                text << "v " << p[0] << ' ' << p[1] << ' ' << p[2] << '\n';
            }
            text << "f -4 -3 -2 -1\n";
        }
    }
    return text.str();
}

inline std::string letterObj()
{
    return letterObj([](double x, double y) { return Place{x, y, 0}; });
}

// The cells of a letter that fills its box in a picture, in rows from the top.
inline std::string readLetter(const Image& image)
{
    std::string text;
    for (int row = 0; row < 5; ++row) {
        for (int column = 0; column < 3; ++column) {
            const int x = image.left + (image.right - image.left) * (2 * column + 1) / 6;
            const int y = image.top + (image.bottom - image.top) * (2 * row + 1) / 10;
            text += image.covered(x, y) ? '#' : '.';
        }
        text += ' ';
    }
    return text;
}

inline constexpr const char* kUpright = "### #.. ##. #.. #.. ";
inline constexpr const char* kMirrored = "### ..# .## ..# ..# ";

// A cube from -1 to 1. reversed says which faces run the other way; normal is what follows each
// face's direction: 1 for normals that point out, -1 for in, 0 for none at all.
inline std::string cubeObj(
    const std::function<bool(int)>& reversed = [](int) { return false; },
    const std::function<int(int)>& normal = [](int) { return 0; })
{
    static constexpr int corners[6][4] = {{1, 2, 4, 3}, {5, 7, 8, 6}, {1, 5, 6, 2},
                                          {3, 4, 8, 7}, {1, 3, 7, 5}, {2, 6, 8, 4}};
    std::ostringstream text;
    for (int i = 0; i < 8; ++i) {
        text << "v " << ((i & 4) ? 1 : -1) << ' ' << ((i & 2) ? 1 : -1) << ' ' << ((i & 1) ? 1 : -1)
             << '\n';
    }
    for (int axis = 0; axis < 3; ++axis) {
        for (const int side : {-1, 1}) {
            text << "vn";
            for (int k = 0; k < 3; ++k) text << ' ' << (k == axis ? side : 0);
            text << '\n';
        }
    }
    for (int face = 0; face < 6; ++face) {
        text << 'f';
        for (int i = 0; i < 4; ++i) {
            text << ' ' << corners[face][reversed(face) ? 3 - i : i];
            const int way = normal(face);
            if (way) text << "//" << (way > 0 ? face : face ^ 1) + 1;
        }
        text << '\n';
    }
    return text.str();
}

// The upright sides of a prism, the first one in front. reversed says which faces run the other
// way; normal, given a face and a corner of it, is 1 for a normal that points straight out, -1 for
// one that points in. Without it there are none.
inline std::string prismObj(
    int sides, const std::function<bool(int)>& reversed = [](int) { return false; },
    const std::function<int(int, int)>& normal = nullptr)
{
    std::ostringstream text;
    for (int i = 0; i < sides; ++i) {
        const double angle = (i - 0.5) * 2 * 3.14159265358979 / sides;
        const double x = std::sin(angle), z = std::cos(angle);
        for (const int y : {-1, 1}) text << "v " << x << ' ' << y << ' ' << z << '\n';
        text << "vn " << x << " 0 " << z << "\nvn " << -x << " 0 " << -z << '\n';
    }
    for (int face = 0; face < sides; ++face) {
        const int a = face, b = (face + 1) % sides;
        const int column[4] = {a, b, b, a}, height[4] = {0, 0, 1, 1};
        text << 'f';
        for (int i = 0; i < 4; ++i) {
            const int corner = reversed(face) ? 3 - i : i;
            text << ' ' << column[corner] * 2 + height[corner] + 1;
            if (!normal) continue;
            text << "//" << column[corner] * 2 + (normal(face, corner) > 0 ? 1 : 2);
        }
        text << '\n';
    }
    return text.str();
}

}  // namespace zebtest
