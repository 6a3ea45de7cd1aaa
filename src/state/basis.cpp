#include "state/basis.h"

namespace zeb
{

namespace
{
constexpr float kBezier[4][4] = {{-1, 3, -3, 1}, {3, -6, 3, 0}, {-3, 3, 0, 0}, {1, 0, 0, 0}};
constexpr float kBSpline[4][4] = {{-1.0f / 6, 0.5f, -0.5f, 1.0f / 6},
                                  {0.5f, -1, 0.5f, 0},
                                  {-0.5f, 0, 0.5f, 0},
                                  {1.0f / 6, 2.0f / 3, 1.0f / 6, 0}};
constexpr float kCatmullRom[4][4] = {
    {-0.5f, 1.5f, -1.5f, 0.5f}, {1, -2.5f, 2, -0.5f}, {-0.5f, 0, 0.5f, 0}, {0, 1, 0, 0}};
constexpr float kHermite[4][4] = {{2, 1, -2, 1}, {-3, -2, 3, -1}, {0, 1, 0, 0}, {1, 0, 0, 0}};
}  // namespace

// Ready before any code runs: the default attributes need them.
constinit const Matrix zebBezierBasis(kBezier);
constinit const Matrix zebBSplineBasis(kBSpline);
constinit const Matrix zebCatmullRomBasis(kCatmullRom);
constinit const Matrix zebHermiteBasis(kHermite);
constinit const Matrix zebPowerBasis;

}  // namespace zeb
