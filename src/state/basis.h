// The built-in spline bases.
#pragma once

#include "math/matrix.h"

namespace zeb
{

extern const Matrix zebBezierBasis, zebBSplineBasis, zebCatmullRomBasis, zebHermiteBasis,
    zebPowerBasis;

}  // namespace zeb
