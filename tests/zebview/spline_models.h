// OBJ files of free-form surfaces, written by the tests.
#pragma once

#include <array>
#include <cmath>
#include <sstream>
#include <string>
#include <vector>

namespace zebtest
{

// A point and its weight.
using Control = std::array<double, 4>;

struct Revolved {
    std::vector<Control> net;  // nine points a row
    std::vector<double> turn{0, 0, 0, 0.25, 0.25, 0.5, 0.5, 0.75, 0.75, 1, 1, 1};
};

// Turns a profile of radius, height and weight once around the y axis, exactly.
inline Revolved revolved(const std::vector<std::array<double, 3>>& profile)
{
    const double half = std::sqrt(0.5);
    const double circle[9][3] = {{1, 0, 1},     {1, 1, half},  {0, 1, 1},
                                 {-1, 1, half}, {-1, 0, 1},    {-1, -1, half},
                                 {0, -1, 1},    {1, -1, half}, {1, 0, 1}};
    Revolved result;
    for (const auto& [radius, height, weight] : profile) {
        for (const auto& [x, z, w] : circle) {
            result.net.push_back({radius * x, height, -radius * z, weight * w});
        }
    }
    return result;
}

// From pole to pole, of radius 1.
inline Revolved sphere()
{
    const double half = std::sqrt(0.5);
    return revolved({{0, -1, 1}, {1, -1, half}, {1, 0, 1}, {1, 1, half}, {0, 1, 1}});
}
inline const std::vector<double> kSphereKnots{0, 0, 0, 0.5, 0.5, 1, 1, 1};

inline std::string words(const std::vector<double>& numbers)
{
    std::ostringstream text;
    text.precision(17);
    for (const double number : numbers) text << ' ' << number;
    return text.str();
}

inline std::string vertices(const std::vector<Control>& net, bool weighted)
{
    std::string text;
    for (const auto& [x, y, z, w] : net) {
        text += 'v' + words({x, y, z});
        if (weighted) text += words({w});
        text += '\n';
    }
    return text;
}

// A surface of the last points, all of them.
inline std::string surf(std::size_t points, const std::string& limits = "0 1 0 1")
{
    std::string text = "surf " + limits;
    for (std::size_t i = points; i > 0; --i) text += " -" + std::to_string(i);
    return text + '\n';
}

inline std::string sphereObj()
{
    const Revolved model = sphere();
    return vertices(model.net, true) + "cstype rat bspline\ndeg 2 2\n" + surf(model.net.size()) +
           "parm u" + words(model.turn) + "\nparm v" + words(kSphereKnots) + "\nend\n";
}

// A bump, and a way to say what kind of surface its 4 x 4 points are.
inline std::vector<Control> bump(double x0 = 0)
{
    std::vector<Control> net;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            const bool inner = column % 3 != 0 && row % 3 != 0;
            net.push_back({x0 + column, static_cast<double>(row), inner ? 2.0 : 0.1 * column, 1});
        }
    }
    return net;
}

inline std::string patchObj(const std::string& type, const std::string& u, const std::string& v)
{
    return vertices(bump(), false) + type + '\n' + surf(16) + "parm u " + u + "\nparm v " + v +
           "\nend\n";
}
inline std::string bezierObj() { return patchObj("cstype bezier\ndeg 3 3", "0 1", "0 1"); }

}  // namespace zebtest
