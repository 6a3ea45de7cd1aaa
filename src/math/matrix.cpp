#include "math/matrix.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "math/trigonometry.h"
#include "util/number.h"
#include "util/report.h"

namespace zeb
{

const Matrix gIdentity;

Matrix::Matrix(const Point& a, const Point& b, const Point& c, short rows) : Matrix()
{
    const Point* given[3] = {&a, &b, &c};
    for (int i = 0; i < 3; ++i) {
        const double p[3] = {given[i]->x, given[i]->y, given[i]->z};
        for (int j = 0; j < 3; ++j) (rows ? m[i][j] : m[j][i]) = p[j];
    }
}

Matrix::Matrix(const Pointw& a, const Pointw& b, const Pointw& c, const Pointw& d, short rows)
{
    const Pointw* given[4] = {&a, &b, &c, &d};
    for (int i = 0; i < 4; ++i) {
        const double p[4] = {given[i]->x, given[i]->y, given[i]->z, given[i]->w};
        for (int j = 0; j < 4; ++j) (rows ? m[i][j] : m[j][i]) = p[j];
    }
}

Matrix& Matrix::operator*=(const Matrix& b) { return *this = *this * b; }

void Matrix::translate(float tx, float ty, float tz)
{
    for (int c = 0; c < 4; ++c) m[3][c] += tx * m[0][c] + ty * m[1][c] + tz * m[2][c];
}

void Matrix::scale(float sx, float sy, float sz)
{
    for (int c = 0; c < 4; ++c) {
        m[0][c] *= sx;
        m[1][c] *= sy;
        m[2][c] *= sz;
    }
}

void Matrix::rotate(float angle, float x, float y, float z)
{
    if (!(length(Point(x, y, z)) >= kEpsilon)) {
        error(kMath, kError, "rotation basis vector must be non-zero");
        return;
    }
    const Pointd a = normalized({x, y, z});
    const double theta = kDegrees * angle;
    const auto [s, c] = sincos(theta);
    const double k = 1 - c;
    const double rows[3][3] = {
        {k * a.x * a.x + c, k * a.x * a.y + s * a.z, k * a.x * a.z - s * a.y},
        {k * a.x * a.y - s * a.z, k * a.y * a.y + c, k * a.y * a.z + s * a.x},
        {k * a.x * a.z + s * a.y, k * a.y * a.z - s * a.x, k * a.z * a.z + c}};
    Matrix rotation;
    for (int i = 0; i < 3; ++i) std::copy_n(rows[i], 3, rotation.m[i]);
    *this = rotation * *this;
}

void Matrix::skew(float angle, float dx1, float dy1, float dz1, float dx2, float dy2, float dz2)
{
    Point d1(dx1, dy1, dz1), d2(dx2, dy2, dz2);
    if (!(length(d1) >= kEpsilon) || !(length(d2) >= kEpsilon)) {
        error(kMath, kError, "skew basis vectors must be non-zero");
        return;
    }
    d1 = normalize(d1);
    d2 = normalize(d2);
    const Point axis = d2 ^ d1;
    if (!(length(axis) >= kEpsilon)) {
        error(kMath, kError, "skew basis vectors must non-colinear");
        return;
    }
    Matrix turn;
    turn.rotate(-angle, axis.x, axis.y, axis.z);
    const Point r = d1 * turn;
    // With q the unit part of d1 across d2: d1 = (d1.q) q + (d1.d2) d2, and r the same with r, so
    // the shear p + f (p.q) d2 takes d1 to the direction of r when
    // (d1.d2 + f d1.q) / d1.q = r.d2 / r.q. No shear turns d1 across the line of d2.
    const Point q = normalize(d1 - dot(d1, d2) * d2);
    if (!(dot(d1, d2) + kEpsilon <= dot(r, d1)) || !(dot(r, q) > kEpsilon)) {
        error(kRange, kError, "invalid skew angle");
        return;
    }
    const float t = dot(d1, q);
    const float f = dot(r, d2) / dot(r, q) - dot(d1, d2) / t;
    const Point s = f * q;
    *this =
        Matrix(Point(1, 0, 0) + s.x * d2, Point(0, 1, 0) + s.y * d2, Point(0, 0, 1) + s.z * d2, 1) *
        *this;
}

void Matrix::perspective(float fov)
{
    const auto [sine, cosine] = sincos(kDegrees * fov * 0.5);
    const float t = static_cast<float>(sine / cosine);
    const float a = static_cast<float>(static_cast<double>(t) * 1e38 * 1e-38);
    for (int c = 0; c < 4; ++c) {
        const double row2 = m[2][c];
        m[2][c] = a * row2 + t * m[3][c];
        m[3][c] = -a * row2;
    }
}

void Matrix::zmap(float nearz, float farz)
{
    if (nearz > farz) std::swap(nearz, farz);
    const float k = 1 / (farz - nearz);
    for (int c = 0; c < 4; ++c) {
        m[2][c] *= k;
        m[3][c] -= nearz * m[2][c];
    }
}

void Matrix::map(float left, float right, float bottom, float top, long xres, long yres)
{
    if (nearZero(right - left) || nearZero(top - bottom)) {
        error(kBug, kError, "screen space must have non-zero width and height");
        return;
    }
    const double sx = static_cast<double>(xres) / (double{right} - double{left});
    const double sy = static_cast<double>(yres) / (double{top} - double{bottom});
    // The vertical scale is negative: raster y runs against screen y.
    for (int c = 0; c < 4; ++c) {
        m[3][c] += static_cast<double>(yres) * m[1][c];
        m[0][c] *= sx;
        m[1][c] *= -sy;
        m[3][c] -= left * m[0][c] + bottom * m[1][c];
    }
}

bool Matrix::finite() const
{
    return std::all_of(&m[0][0], &m[0][0] + 16, [](double entry) { return isFinite(entry); });
}

Matrix operator*(const Matrix& a, const Matrix& b)
{
    Matrix product;
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            product.m[i][j] = a.m[i][0] * b.m[0][j] + a.m[i][1] * b.m[1][j] +
                              a.m[i][2] * b.m[2][j] + a.m[i][3] * b.m[3][j];
        }
    }
    return product;
}

Bound operator*(const Bound& b, const Matrix& m)
{
    if (!b.finite) return b;
    Bound result = Bound::empty();
    for (const float x : {b.xmin, b.xmax}) {
        for (const float y : {b.ymin, b.ymax}) {
            for (const float z : {b.zmin, b.zmax}) result.add(Point(x, y, z) * m);
        }
    }
    return result;
}

Boundw operator*(const Boundw& b, const Matrix& m)
{
    if (!b.finite) return b;
    Boundw result = Boundw::empty();
    for (const float w : {b.wmin, b.wmax}) {
        for (const float x : {b.xmin, b.xmax}) {
            for (const float y : {b.ymin, b.ymax}) {
                for (const float z : {b.zmin, b.zmax}) result.add(Pointw(x, y, z, w) * m);
            }
        }
        if (b.wmin == b.wmax) break;
    }
    return result;
}

bool operator==(const Matrix& a, const Matrix& b)
{
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            if (a.m[i][j] != b.m[i][j]) return false;
        }
    }
    return true;
}

std::ostream& operator<<(std::ostream& stream, const Matrix& m)
{
    for (const auto& row : m.m) stream << rounded(Pointwd(row[0], row[1], row[2], row[3]));
    return stream;
}

void ntransform(Point& n, const Matrix& m) { vtransform(n, invtranspose(m)); }

Point weight(const Matrix& m, unsigned short k, const Point* P)
{
    Pointd sum;
    for (int i = 0; i < 4; ++i) sum = sum + Pointd(P[i]) * m.m[k][i];
    return rounded(sum);
}

double determinant(const Matrix& a)
{
    const auto& m = a.m;
    return (m[0][0] * m[1][1] * m[2][2] + m[0][1] * m[1][2] * m[2][0] +
            m[0][2] * m[1][0] * m[2][1] - m[0][2] * m[1][1] * m[2][0] -
            m[0][1] * m[1][0] * m[2][2] - m[0][0] * m[1][2] * m[2][1]) *
           m[3][3];
}

Matrix transpose(const Matrix& a)
{
    Matrix t;
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) t.m[i][j] = a.m[j][i];
    }
    return t;
}

Matrix invtranspose(const Matrix& a)
{
    Matrix cofactors;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            const int r0 = (i + 1) % 3, r1 = (i + 2) % 3, c0 = (j + 1) % 3, c1 = (j + 2) % 3;
            cofactors.m[i][j] = a.m[r0][c0] * a.m[r1][c1] - a.m[r0][c1] * a.m[r1][c0];
        }
    }
    return cofactors;
}

Matrix* invert(Matrix* result)
{
    Matrix a = *result;
    *result = gIdentity;
    for (int i = 0; i < 4; ++i) {
        int pivot = i;
        for (int r = i + 1; r < 4; ++r) {
            if (std::fabs(a.m[pivot][i]) < std::fabs(a.m[r][i])) pivot = r;
        }
        std::swap(a.m[i], a.m[pivot]);
        std::swap(result->m[i], result->m[pivot]);
        const double p = a.m[i][i];
        if (nearZero(p)) {
            error(kMath, kError, "cannot invert a singular Matrix");
            return nullptr;
        }
        for (int c = 0; c < 4; ++c) {
            a.m[i][c] /= p;
            result->m[i][c] /= p;
        }
        for (int r = 0; r < 4; ++r) {
            if (r == i) continue;
            const double f = a.m[r][i];
            for (int c = 0; c < 4; ++c) {
                a.m[r][c] -= f * a.m[i][c];
                result->m[r][c] -= f * result->m[i][c];
            }
        }
    }
    return result;
}

}  // namespace zeb
