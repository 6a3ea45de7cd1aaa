// What kinds of free-form surfaces there are, along each of their parameters.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "spline_pieces.h"

namespace zebview
{

// The names of the parameters.
inline constexpr const char* kWays[] = {"u", "v"};

// A B-spline along one of its parameters.
struct SplineWay {
    std::size_t degree = 0;
    std::vector<double> knots;  // the range that the control points make is 0 to 1
    double min = 0, max = 1;    // the part that shows

    std::size_t count() const { return knots.size() - degree - 1; }
};

// As files tell it. All throw a Failure if it is not that of any surface.
struct SplineKind {
    std::string type;
    bool isRational = false;
    std::array<std::size_t, 2> degrees{}, steps{};
    std::array<std::vector<double>, 2> bases;  // of the type bmatrix

    void checkDegrees() const;
    // Of the type bspline. Returns the number of control points.
    std::size_t setKnots(const std::vector<double>& parameters, std::size_t way,
                         SplineWay& spline) const;
    // Of others: sets the knots that they have with Bezier's control points.
    Pieces piecesOf(const std::vector<double>& parameters, std::size_t way,
                    SplineWay& spline) const;

private:
    Pieces kindOfPieces(std::size_t way, std::size_t count) const;
};

// Brings knots, once they are set, to where their range is 0 to 1: the renderer counts in short
// floats. False if the limits lie outside of it.
bool setLimits(double least, double most, std::size_t way, SplineWay& spline);

}  // namespace zebview
