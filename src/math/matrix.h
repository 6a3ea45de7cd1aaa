// The 4 x 4 transformation.
#pragma once

#include <iosfwd>

#include "math/bound.h"
#include "math/point.h"

namespace zeb
{

// Points are row vectors on the left: p' = p M, and first A, then B is A B. The building operations
// pre-multiply: what is built last acts first, in the innermost coordinate system.
//
// Entries are kept, and products formed, in double: a far-away origin that one transformation adds
// and the next takes away leaves no trace.
class Matrix
{
public:
    double m[4][4];

    // The identity.
    constexpr Matrix() : m{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}} {}
    explicit constexpr Matrix(const float (*rows)[4]) : m{}
    {
        for (int i = 0; i < 16; ++i) m[i / 4][i % 4] = double{rows[i / 4][i % 4]};
    }
    // a, b, c as rows 0 ... 2, or as columns if rows is 0.
    Matrix(const Point& a, const Point& b, const Point& c, short rows);
    Matrix(const Pointw& a, const Pointw& b, const Pointw& c, const Pointw& d, short rows);

    Matrix& operator*=(const Matrix& b);

    void translate(float tx, float ty, float tz);
    void scale(float s) { scale(s, s, s); }
    void scale(float sx, float sy, float sz);
    // Degrees about an axis, from x to y about +z.
    void rotate(float angle, float x, float y, float z);
    // Shears along d2 so that d1 turns by the angle, in degrees, towards d2.
    void skew(float angle, float dx1, float dy1, float dz1, float dx2, float dy2, float dz2);
    void perspective(float fov);
    // z' = (z - near) / (far - near)
    void zmap(float nearz, float farz);
    // Screen window to raster; raster y grows downwards.
    void map(float left, float right, float bottom, float top, long xres, long yres);

    bool finite() const;
};

extern const Matrix gIdentity;

Matrix operator*(const Matrix& a, const Matrix& b);
inline Pointwd operator*(const Pointwd& p, const Matrix& a)
{
    const auto& m = a.m;
    return {p.x * m[0][0] + p.y * m[1][0] + p.z * m[2][0] + p.w * m[3][0],
            p.x * m[0][1] + p.y * m[1][1] + p.z * m[2][1] + p.w * m[3][1],
            p.x * m[0][2] + p.y * m[1][2] + p.z * m[2][2] + p.w * m[3][2],
            p.x * m[0][3] + p.y * m[1][3] + p.z * m[2][3] + p.w * m[3][3]};
}
inline Pointw operator*(const Pointw& p, const Matrix& m) { return rounded(Pointwd(p) * m); }
// Divides by w with the clamped division.
inline Pointd operator*(const Pointd& p, const Matrix& m) { return homogenized(Pointwd(p) * m); }
inline Point operator*(const Point& p, const Matrix& m) { return rounded(Pointd(p) * m); }
// The box of the eight projected corners.
Bound operator*(const Bound& b, const Matrix& m);
// The box of the sixteen homogeneous corners, undivided.
Boundw operator*(const Boundw& b, const Matrix& m);
bool operator==(const Matrix& a, const Matrix& b);
inline bool operator!=(const Matrix& a, const Matrix& b) { return !(a == b); }
std::ostream& operator<<(std::ostream& stream, const Matrix& m);

// Directions ignore translation and perspective.
inline void vtransform(Pointd& v, const Matrix& a)
{
    const auto& m = a.m;
    v = {v.x * m[0][0] + v.y * m[1][0] + v.z * m[2][0],
         v.x * m[0][1] + v.y * m[1][1] + v.z * m[2][1],
         v.x * m[0][2] + v.y * m[1][2] + v.z * m[2][2]};
}
inline void vtransform(Point& v, const Matrix& m)
{
    Pointd exact(v);
    vtransform(exact, m);
    v = rounded(exact);
}
// By the cofactors: the length comes out scaled, the direction reversed under a mirror.
void ntransform(Point& n, const Matrix& m);
// The sum of four control points weighted with row k.
Point weight(const Matrix& m, unsigned short k, const Point* P);

// Of the upper left 3 x 3, times the last entry: for affine matrices, to tell their handedness.
double determinant(const Matrix& m);
Matrix transpose(const Matrix& m);
// The cofactors of the upper left 3 x 3, not divided by the determinant.
Matrix invtranspose(const Matrix& m);
// In place, by Gauss-Jordan elimination with partial pivoting. A singular matrix is reported, left
// partly reduced, and answered with null.
Matrix* invert(Matrix* m);

}  // namespace zeb
