#include "math/matrix.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "support/reports.h"

using namespace zeb;

namespace
{

using zebtest::Report;

const float kRows[4][4] = {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}, {13, 14, 15, 16}};

void expectNear(const Matrix& m, const Matrix& expected, float tolerance = 1e-4f)
{
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            EXPECT_NEAR(m.m[r][c], expected.m[r][c], tolerance) << r << ", " << c;
        }
    }
}

Matrix diagonal(float a, float b, float c, float d)
{
    Matrix m;
    m.m[0][0] = a;
    m.m[1][1] = b;
    m.m[2][2] = c;
    m.m[3][3] = d;
    return m;
}

Matrix affine()
{
    const float rows[4][4] = {{1, 2, 3, 0}, {0, 1, 4, 0}, {5, 6, 0, 0}, {7, 8, 9, 1}};
    return Matrix(rows);
}

}  // namespace

TEST(Matrix, DefaultsToTheIdentity)
{
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) EXPECT_EQ(Matrix().m[r][c], r == c ? 1 : 0);
    }
    EXPECT_EQ(Matrix(), gIdentity);
}

TEST(Matrix, TakesRows)
{
    const Matrix m(kRows);
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) EXPECT_EQ(m.m[r][c], 4 * r + c + 1);
    }
}

TEST(Matrix, TakesPointsAsRowsOrColumns)
{
    const float rows[4][4] = {{1, 2, 3, 0}, {4, 5, 6, 0}, {7, 8, 9, 0}, {0, 0, 0, 1}};
    const Point a(1, 2, 3), b(4, 5, 6), c(7, 8, 9);
    EXPECT_EQ(Matrix(a, b, c, 1), Matrix(rows));
    EXPECT_EQ(Matrix(a, b, c, 0), transpose(Matrix(rows)));
}

TEST(Matrix, TakesHomogeneousPointsAsRowsOrColumns)
{
    const Pointw a(1, 2, 3, 4), b(5, 6, 7, 8), c(9, 10, 11, 12), d(13, 14, 15, 16);
    EXPECT_EQ(Matrix(a, b, c, d, 1), Matrix(kRows));
    EXPECT_EQ(Matrix(a, b, c, d, 0), transpose(Matrix(kRows)));
}

TEST(Matrix, EqualityIsOfEveryEntry)
{
    for (int i = 0; i < 16; ++i) {
        Matrix m(kRows);
        EXPECT_TRUE(m == Matrix(kRows));
        m.m[i / 4][i % 4] += 1;
        EXPECT_TRUE(m != Matrix(kRows)) << i;
    }
}

TEST(Matrix, ProductIsRowsByColumns)
{
    // Row 0: 1 2 3 4 with the columns of the same matrix: 1 + 10 + 27 + 52 = 90, ...
    const float square[4][4] = {
        {90, 100, 110, 120}, {202, 228, 254, 280}, {314, 356, 398, 440}, {426, 484, 542, 600}};
    EXPECT_EQ(Matrix(kRows) * Matrix(kRows), Matrix(square));
}

TEST(Matrix, ProductInPlaceMultipliesOnTheRight)
{
    Matrix m = affine();
    m *= Matrix(kRows);
    EXPECT_EQ(m, affine() * Matrix(kRows));
    Matrix square(kRows);
    square *= square;
    EXPECT_EQ(square, Matrix(kRows) * Matrix(kRows));
}

TEST(Matrix, FirstAThenBIsATimesB)
{
    Matrix a, b;
    a.translate(1, 0, 0);
    b.scale(2);
    EXPECT_EQ(Point(1, 1, 1) * (a * b), Point(4, 2, 2));
}

TEST(Matrix, APointIsARowOnTheLeft)
{
    EXPECT_EQ(Point(1, 2, 3) * affine(), Point(1 + 15 + 7, 2 + 2 + 18 + 8, 3 + 8 + 9));
}

TEST(Matrix, APointIsDividedByItsWeight)
{
    Matrix m;
    m.m[3][3] = 2;
    EXPECT_EQ(Point(2, 4, -6) * m, Point(1, 2, -3));
    m.m[3][3] = 0;
    EXPECT_EQ(Point(2, 0, -6) * m, Point(1e38f, 0, -1e38f));
}

TEST(Matrix, AHomogeneousPointIsNotDivided)
{
    EXPECT_EQ(Pointw(1, 0, 0, 2) * Matrix(kRows), Pointw(27, 30, 33, 36));
}

TEST(Matrix, DirectionsIgnoreTranslationAndPerspective)
{
    Matrix m = affine();
    m.m[0][3] = 5;
    Point v(1, 2, 3);
    vtransform(v, m);
    EXPECT_EQ(v, Point(16, 22, 11));
}

TEST(Matrix, NormalsAreTransformedByTheCofactors)
{
    Matrix m;
    m.scale(2, 2, 2);
    Point n(1, 2, 3);
    ntransform(n, m);
    EXPECT_EQ(n, Point(4, 8, 12));
}

TEST(Matrix, NormalsStayPerpendicularUnderAShear)
{
    Matrix m;
    m.m[1][0] = 1;  // y leans over x
    m.translate(5, 6, 7);
    Point n(1, 0, 0), v(0, 1, 0);
    ntransform(n, m);
    vtransform(v, m);
    EXPECT_EQ(n, Point(1, -1, 0));
    EXPECT_EQ(dot(n, v), 0);
}

TEST(Matrix, NormalsComeOutReversedUnderAMirror)
{
    Matrix m;
    m.scale(-1, 1, 1);
    Point n(0, 0, 1);
    ntransform(n, m);
    EXPECT_EQ(n, Point(0, 0, -1));
}

TEST(Matrix, WeightSumsControlPointsWithARow)
{
    const Point P[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 1}};
    EXPECT_EQ(weight(Matrix(kRows), 0, P), Point(1 + 4, 2 + 4, 3 + 4));
    EXPECT_EQ(weight(Matrix(kRows), 2, P), Point(9 + 12, 10 + 12, 11 + 12));
}

TEST(Matrix, AnInfiniteBoxIsReturnedUnchanged)
{
    EXPECT_EQ((Bound() * affine()).finite, 0);
    EXPECT_EQ(Bound() * affine(), Bound());
    const Boundw b = Boundw(Bound(), 1, 2) * affine();
    EXPECT_EQ(b.finite, 0);
    EXPECT_EQ(b.wmin, 1);
}

TEST(Matrix, ABoxBecomesTheBoxOfItsCorners)
{
    Matrix m;
    m.rotate(90, 0, 0, 1);
    const Bound b = Bound(1, 2, 3, 5, 7, 8) * m;  // (x, y) to (-y, x)
    EXPECT_NEAR(b.xmin, -5, 1e-5f);
    EXPECT_NEAR(b.xmax, -3, 1e-5f);
    EXPECT_NEAR(b.ymin, 1, 1e-5f);
    EXPECT_NEAR(b.ymax, 2, 1e-5f);
    EXPECT_NEAR(b.zmin, 7, 1e-5f);
    EXPECT_NEAR(b.zmax, 8, 1e-5f);
    EXPECT_EQ(b.finite, 1);
}

TEST(Matrix, TheCornersOfABoxAreProjected)
{
    Matrix m;
    m.perspective(90);
    const Bound b = Bound(-2, 2, -2, 2, 2, 4) * m;  // x / z
    EXPECT_NEAR(b.xmin, -1, 1e-6f);
    EXPECT_NEAR(b.xmax, 1, 1e-6f);
    EXPECT_NEAR(b.zmin, 0.5f, 1e-6f);
    EXPECT_NEAR(b.zmax, 0.75f, 1e-6f);
}

TEST(Matrix, AHomogeneousBoxHasSixteenCorners)
{
    Matrix m;
    m.translate(10, 0, 0);  // x + 10 w
    const Boundw b = Boundw(0, 1, 2, 3, 4, 5, 1, 2) * m;
    EXPECT_EQ(Bound(b), Bound(10, 21, 2, 3, 4, 5));
    EXPECT_EQ(b.wmin, 1);
    EXPECT_EQ(b.wmax, 2);
    EXPECT_EQ(b.finite, 1);
}

TEST(Matrix, AHomogeneousBoxIsNotDivided)
{
    Matrix m;
    m.perspective(90);
    const Boundw b = Boundw(-2, 2, -3, 3, 2, 4, 1, 1) * m;
    EXPECT_EQ(b.xmin, -2);
    EXPECT_EQ(b.ymax, 3);
    EXPECT_NEAR(b.wmin, 2, 1e-6f);
    EXPECT_NEAR(b.wmax, 4, 1e-6f);
}

TEST(Matrix, PrintsFourBracketedRows)
{
    std::ostringstream stream;
    stream << Matrix(kRows);
    const std::string text = stream.str();
    for (const char* row : {"[1 2 3 4]", "[5 6 7 8]", "[9 10 11 12]", "[13 14 15 16]"}) {
        EXPECT_NE(text.find(row), std::string::npos) << row << " in " << text;
    }
}

TEST(Matrix, DeterminantIsOfTheUpperLeftBlock)
{
    EXPECT_EQ(determinant(gIdentity), 1);
    EXPECT_EQ(determinant(diagonal(2, 3, 4, 1)), 24);
    // 1 (1 0 - 4 6) + 2 (4 5 - 0 0) + 3 (0 6 - 1 5) = -24 + 40 - 15
    EXPECT_EQ(determinant(affine()), 1);
}

TEST(Matrix, DeterminantMultipliesByTheLastEntryAndIgnoresTheOthers)
{
    Matrix m = affine();
    m.m[3][3] = 3;
    m.m[0][3] = 100;
    m.m[1][3] = 200;
    EXPECT_EQ(determinant(m), 3);
}

TEST(Matrix, DeterminantOfAPerspectiveIsZero)
{
    Matrix m;
    m.perspective(60);
    EXPECT_EQ(determinant(m), 0);
}

TEST(Matrix, DeterminantOfAMirrorIsNegative) { EXPECT_LT(determinant(diagonal(-1, 1, 1, 1)), 0); }

TEST(Matrix, TransposeExchangesRowsAndColumns)
{
    const Matrix m = transpose(Matrix(kRows));
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) EXPECT_EQ(m.m[r][c], kRows[c][r]);
    }
}

TEST(Matrix, InvtransposeHoldsTheCofactors)
{
    const float cofactors[4][4] = {{-24, 20, -5, 0}, {18, -15, 4, 0}, {5, -4, 1, 0}, {0, 0, 0, 1}};
    Matrix m = affine();
    m.m[2][3] = 100;
    m.m[3][3] = 2;
    EXPECT_EQ(invtranspose(m), Matrix(cofactors));
}

TEST(Matrix, InvtransposeIsNotDividedByTheDeterminant)
{
    EXPECT_EQ(invtranspose(diagonal(2, 3, 4, 1)), diagonal(12, 8, 6, 1));
}

TEST(Matrix, InverseTimesMatrixIsTheIdentity)
{
    Matrix m = affine();
    m.m[0][3] = 0.5f;
    Matrix inverse = m;
    EXPECT_EQ(invert(&inverse), &inverse);
    expectNear(m * inverse, gIdentity);
    expectNear(inverse * m, gIdentity);
}

TEST(Matrix, InvertsAPermutation)
{
    const float rows[4][4] = {{0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}, {1, 0, 0, 0}};
    Matrix m(rows);
    ASSERT_EQ(invert(&m), &m);
    EXPECT_EQ(m, transpose(Matrix(rows)));
}

TEST(Matrix, ASingularMatrixIsReportedAndAnsweredWithNull)
{
    zebtest::Reports reports;
    Matrix m = diagonal(1, 1, 0, 1);
    EXPECT_EQ(invert(&m), nullptr);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0], (Report{15, 2820, "cannot invert a singular Matrix"}));
}

TEST(Matrix, ASingularMatrixIsLeftPartlyReduced)
{
    zebtest::Reports reports;
    Matrix m = diagonal(2, 0, 4, 1);
    EXPECT_EQ(invert(&m), nullptr);
    EXPECT_EQ(m, diagonal(0.5f, 1, 1, 1));
}

// The two equal pivots of column 0: had the later row come first, row 0 would read (0, 1, 0, 0).
TEST(Matrix, TiedPivotsKeepTheEarlierRow)
{
    zebtest::Reports reports;
    const float rows[4][4] = {{1, 0, 0, 0}, {1, 0, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
    Matrix m(rows);
    EXPECT_EQ(invert(&m), nullptr);
    const float reduced[4][4] = {{1, 0, 0, 0}, {-1, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
    EXPECT_EQ(m, Matrix(reduced));
}

TEST(Matrix, TheLargestPivotIsTaken)
{
    zebtest::Reports reports;
    const float rows[4][4] = {{1, 0, 0, 0}, {-2, 0, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
    Matrix m(rows);
    EXPECT_EQ(invert(&m), nullptr);
    const float reduced[4][4] = {{0, -0.5f, 0, 0}, {1, 0.5f, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
    EXPECT_EQ(m, Matrix(reduced));
}

TEST(Matrix, TheBoundsOfASingularPivotAreOpen)
{
    zebtest::Reports reports;
    Matrix m = diagonal(1, 1, 1, 1e-10f);
    EXPECT_NE(invert(&m), nullptr);
    m = diagonal(1, 1, 1, 0.9e-10f);
    EXPECT_EQ(invert(&m), nullptr);
    m = diagonal(1, 1, 1, -0.9e-10f);
    EXPECT_EQ(invert(&m), nullptr);
    EXPECT_EQ(reports.size(), 2u);
}
