// Surfaces made of polynomial pieces, each of its own control points, as Bezier surfaces.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace zebview
{

// Rows and columns of the same number.
using Square = std::vector<std::vector<double>>;

// A control point and all that goes with it.
struct ControlPoint {
    enum { kX, kY, kZ, kS, kT, kRed, kGreen, kBlue, kWeight, kValues };
    std::array<double, kValues> values{};

    double& weight() { return values[kWeight]; }
    // But for the weight.
    void scale(double factor)
    {
        for (std::size_t i = 0; i < kWeight; ++i) values[i] *= factor;
    }
    void add(const ControlPoint& other, double factor)
    {
        for (std::size_t i = 0; i < kValues; ++i) values[i] += factor * other.values[i];
    }
};

// Control points in rows, u running fastest.
struct Net {
    std::array<std::size_t, 2> counts;  // in u and in v
    std::vector<ControlPoint> points;
};

constexpr std::size_t kMostMadePoints = 4'000'000;

// How control points become pieces of a surface, along one of its parameters.
struct Pieces {
    std::size_t degree = 0, step = 0, count = 0;
    // For each control point the factors of the powers of the parameter, from 0 to 1. None: they
    // are Bezier's, and share their ends.
    std::optional<Square> basis;

    std::size_t controlPoints() const { return (count - 1) * step + degree + 1; }
};

// Of a cubic piece through its second and third control points.
Square cardinalBasis();
// The control points are the factors of the powers.
Square powerBasis(std::size_t degree);

// The same surface with Bezier's control points along u, if way is 0, or v. Throws a Failure if
// pieces do not meet, or are too many.
Net converted(const Net& net, std::size_t way, const Pieces& pieces);

}  // namespace zebview
