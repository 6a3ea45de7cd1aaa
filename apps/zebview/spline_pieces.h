// Curves made of polynomial pieces, each of its own control points, as Bezier curves.
#pragma once

#include <cstddef>
#include <vector>

namespace zebview
{

// Rows and columns of the same number.
using Square = std::vector<std::vector<double>>;

// Of a cubic piece through its second and third control points.
Square cardinalBasis();
// The control points are the factors of the powers.
Square powerBasis(std::size_t degree);

// What takes the control points of a piece to those of the same piece in Bezier's form.
//
// basis  for each control point the factors of the powers of the parameter, from 0 to 1
Square toBezier(const Square& basis);

}  // namespace zebview
