#include "state/basis.h"

#include <gtest/gtest.h>

using namespace zeb;

namespace
{

void expectRows(const Matrix& m, const double (&rows)[4][4])
{
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            EXPECT_EQ(m.m[r][c], static_cast<float>(rows[r][c])) << r << ", " << c;
        }
    }
}

}  // namespace

TEST(Basis, Bezier)
{
    expectRows(zebBezierBasis, {{-1, 3, -3, 1}, {3, -6, 3, 0}, {-3, 3, 0, 0}, {1, 0, 0, 0}});
}

TEST(Basis, BSpline)
{
    expectRows(zebBSplineBasis, {{-1 / 6.0, 1 / 2.0, -1 / 2.0, 1 / 6.0},
                                 {1 / 2.0, -1, 1 / 2.0, 0},
                                 {-1 / 2.0, 0, 1 / 2.0, 0},
                                 {1 / 6.0, 2 / 3.0, 1 / 6.0, 0}});
}

TEST(Basis, CatmullRom)
{
    expectRows(zebCatmullRomBasis, {{-1 / 2.0, 3 / 2.0, -3 / 2.0, 1 / 2.0},
                                    {1, -5 / 2.0, 2, -1 / 2.0},
                                    {-1 / 2.0, 0, 1 / 2.0, 0},
                                    {0, 1, 0, 0}});
}

TEST(Basis, Hermite)
{
    expectRows(zebHermiteBasis, {{2, 1, -2, 1}, {-3, -2, 3, -1}, {0, 1, 0, 0}, {1, 0, 0, 0}});
}

TEST(Basis, Power) { EXPECT_EQ(zebPowerBasis, gIdentity); }
