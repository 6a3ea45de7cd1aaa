// What tests of curved surfaces do over and over: random numbers, sampling, and comparing.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "geom/primitive.h"
#include "zebcore/zebcore.h"

namespace zebtest
{

struct Pieces : zeb::PrimitiveSink {
    void add(std::unique_ptr<zeb::Primitive> piece) override { list.push_back(std::move(piece)); }
    std::size_t size() const { return list.size(); }
    zeb::Primitive& operator[](std::size_t i) { return *list[i]; }
    std::vector<std::unique_ptr<zeb::Primitive>> list;
};

inline Pieces split(zeb::Primitive& primitive)
{
    Pieces pieces;
    primitive.split(pieces);
    return pieces;
}

// Numbers that are the same in every run.
class Numbers
{
public:
    explicit Numbers(unsigned seed) : fEngine(seed) {}
    float uniform(float lo, float hi)
    {
        const double unit = static_cast<double>(fEngine()) / 4294967296.0;
        return static_cast<float>(double{lo} + unit * (double{hi} - double{lo}));
    }
    float unit() { return uniform(0, 1); }
    long integer(long lo, long hi)
    {
        return lo + static_cast<long>(fEngine() % static_cast<unsigned long>(hi - lo + 1));
    }
    zeb::Point point(float size)
    {
        const float x = uniform(-size, size), y = uniform(-size, size);
        return {x, y, uniform(-size, size)};
    }

private:
    std::mt19937 fEngine;
};

// Four numbers in double: a homogeneous point, or three and a one.
struct Exact {
    double x = 0, y = 0, z = 0, w = 1;
};

inline Exact exact(const zeb::Pointw& p) { return {p.x, p.y, p.z, p.w}; }
inline Exact divided(const Exact& p) { return {p.x / p.w, p.y / p.w, p.z / p.w, 1}; }
inline Exact operator*(const Exact& p, const zeb::Matrix& matrix)
{
    const auto& m = matrix.m;
    const auto column = [&](int i) {
        return p.x * double{m[0][i]} + p.y * double{m[1][i]} + p.z * double{m[2][i]} +
               p.w * double{m[3][i]};
    };
    return {column(0), column(1), column(2), column(3)};
}
inline double apart(const Exact& a, const Exact& b)
{
    return std::max(
        {std::fabs(a.x - b.x), std::fabs(a.y - b.y), std::fabs(a.z - b.z), std::fabs(a.w - b.w)});
}
// Of a derivative only x, y and z say something, unless it is homogeneous.
inline double apart3(const Exact& a, const Exact& b)
{
    return std::max({std::fabs(a.x - b.x), std::fabs(a.y - b.y), std::fabs(a.z - b.z)});
}
inline double size(const Exact& p)
{
    return std::max({std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
}
inline bool finite(const zeb::Pointw& p)
{
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z) && std::isfinite(p.w);
}

inline std::string at(float u, float v)
{
    return "at (" + std::to_string(u) + ", " + std::to_string(v) + ")";
}

// The same place of a part of the parameters.
inline float between(float lo, float hi, float t) { return lo + t * (hi - lo); }

// A random transformation with a translation, shears and perhaps a mirror, well away from singular.
inline void applyRandomTransformation(Numbers& numbers)
{
    ZebMatrix m = {};
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 3; ++j) m[i][j] = numbers.uniform(-1, 1);
    }
    for (int i = 0; i < 3; ++i) m[i][i] += numbers.unit() < 0.5f ? -2.5f : 2.5f;
    for (float& t : m[3]) t *= 10;
    m[3][3] = 1;
    zebMultMatrix(m);
}

// How far a homogeneous point in camera space lies outside a box; negative inside.
inline double outside(const zeb::Boundw& b, const Exact& p)
{
    return std::max({double{b.xmin} - p.x, p.x - double{b.xmax}, double{b.ymin} - p.y,
                     p.y - double{b.ymax}, double{b.zmin} - p.z, p.z - double{b.zmax}});
}

inline double extent(const zeb::Boundw& b)
{
    return std::max({double{b.xmax} - double{b.xmin}, double{b.ymax} - double{b.ymin},
                     double{b.zmax} - double{b.zmin}});
}

// The bound holds n x n samples; w too. Rounding may be in the way by parts of a millionth.
inline void expectBoundHolds(const zeb::Primitive& primitive, int n, double slack = 2e-6)
{
    const zeb::Boundw box = primitive.bound();
    ASSERT_TRUE(std::isfinite(box.xmin) && std::isfinite(box.xmax) && std::isfinite(box.wmin));
    double worst = -1e300, room = 0;
    for (int j = 0; j <= n; ++j) {
        for (int i = 0; i <= n; ++i) {
            const float u = static_cast<float>(i) / static_cast<float>(n);
            const float v = static_cast<float>(j) / static_cast<float>(n);
            const zeb::Pointw p = primitive.evalP(u, v);
            ASSERT_TRUE(finite(p)) << at(u, v);
            const Exact c = exact(p) * primitive.matrix();
            worst =
                std::max({worst, outside(box, c), double{box.wmin} - c.w, c.w - double{box.wmax}});
            room = std::max({room, size(c), std::fabs(c.w)});
        }
    }
    EXPECT_LE(worst, slack * room) << box;
}

// The derivatives are those of the surface, by differences of the fourth order.
inline void expectDerivatives(const zeb::Primitive& primitive, float u, float v, double tolerance,
                              float h = 1.0f / 64)
{
    const auto difference = [&](float du, float dv) {
        const auto f = [&](float s) { return exact(primitive.evalP(u + s * du, v + s * dv)); };
        const Exact a = f(h), b = f(-h), c = f(2 * h), d = f(-2 * h);
        const double n = 12 * double{h};
        const auto slope = [n](double p, double m, double pp, double mm) {
            return (8 * (p - m) - (pp - mm)) / n;
        };
        return Exact{slope(a.x, b.x, c.x, d.x), slope(a.y, b.y, c.y, d.y),
                     slope(a.z, b.z, c.z, d.z), slope(a.w, b.w, c.w, d.w)};
    };
    const Exact du = exact(primitive.evaldPdu(u, v)), dv = exact(primitive.evaldPdv(u, v));
    const Exact eu = difference(1, 0), ev = difference(0, 1);
    if (primitive.rational()) {
        EXPECT_LE(apart(du, eu), tolerance) << "along u " << at(u, v);
        EXPECT_LE(apart(dv, ev), tolerance) << "along v " << at(u, v);
        return;
    }
    EXPECT_LE(apart3(du, eu), tolerance) << "along u " << at(u, v);
    EXPECT_LE(apart3(dv, ev), tolerance) << "along v " << at(u, v);
    EXPECT_EQ(du.w, 1);
    EXPECT_EQ(dv.w, 1);
}

// A piece is the parent over a rectangle of its parameters.
inline void expectPart(const zeb::Primitive& piece, const zeb::Primitive& parent, float umin,
                       float umax, float vmin, float vmax, double tolerance, int n = 8)
{
    for (int j = 0; j <= n; ++j) {
        for (int i = 0; i <= n; ++i) {
            const float s = static_cast<float>(i) / static_cast<float>(n);
            const float t = static_cast<float>(j) / static_cast<float>(n);
            const float u = between(umin, umax, s), v = between(vmin, vmax, t);
            EXPECT_LE(apart(divided(exact(piece.evalP(s, t))), divided(exact(parent.evalP(u, v)))),
                      tolerance)
                << at(s, t) << " of the piece, " << at(u, v) << " of the parent";
        }
    }
}

// Two pieces have one edge: the last u (v) of a is the first of b, to the last bit.
inline void expectJoinAlongU(const zeb::Primitive& a, const zeb::Primitive& b)
{
    for (int i = 0; i <= 16; ++i) {
        const float t = static_cast<float>(i) / 16;
        EXPECT_EQ(a.evalP(1, t), b.evalP(0, t)) << t;
    }
}
inline void expectJoinAlongV(const zeb::Primitive& a, const zeb::Primitive& b)
{
    for (int i = 0; i <= 16; ++i) {
        const float t = static_cast<float>(i) / 16;
        EXPECT_EQ(a.evalP(t, 1), b.evalP(t, 0)) << t;
    }
}

// The four quarters of a surface, in their order, that join.
inline void expectQuarters(zeb::Primitive& parent, double tolerance)
{
    Pieces pieces = split(parent);
    ASSERT_EQ(pieces.size(), 4u);
    for (unsigned i = 0; i < 4; ++i) {
        const float u = i % 2 ? 0.5f : 0, v = i / 2 ? 0.5f : 0;
        EXPECT_EQ(pieces[i].type(), parent.type());
        EXPECT_EQ(pieces[i].common().fSeq, parent.common().fSeq);
        expectPart(pieces[i], parent, u, u + 0.5f, v, v + 0.5f, tolerance);
    }
    expectJoinAlongU(pieces[0], pieces[1]);
    expectJoinAlongU(pieces[2], pieces[3]);
    expectJoinAlongV(pieces[0], pieces[2]);
    expectJoinAlongV(pieces[1], pieces[3]);
}

// Varying, uniform and vertex variables of a surface: s and t are its parameters.
struct Variables {
    unsigned short s = zebDeclare("surface test: s", ZEB_VARYING, ZEB_FLOAT);
    unsigned short t = zebDeclare("surface test: t", ZEB_VARYING, ZEB_FLOAT);
    unsigned short uniform = zebDeclare("surface test: uniform", ZEB_UNIFORM, ZEB_FLOAT);
    unsigned short vertex = zebDeclare("surface test: vertex", ZEB_VERTEX, ZEB_FLOAT);
    float sCorners[4] = {0, 1, 0, 1}, tCorners[4] = {0, 0, 1, 1};
    float uniformValue = 17;
    std::vector<float> vertexValues;

    explicit Variables(long points)
    {
        for (long i = 0; i < points; ++i) vertexValues.push_back(static_cast<float>(i * i) + 0.5f);
    }
    // The list that holds positions under a token, and all of these.
    std::vector<unsigned short> tokens(unsigned short position) const
    {
        return {position, s, t, uniform, vertex};
    }
    std::vector<void*> values(const void* positions) const
    {
        return {const_cast<void*>(positions), const_cast<float*>(sCorners),
                const_cast<float*>(tCorners), const_cast<float*>(&uniformValue),
                const_cast<float*>(vertexValues.data())};
    }

    // The varying ones are those of a rectangle of the whole; the others are as they were.
    void expectRange(const zeb::Primitive& piece, float umin, float umax, float vmin,
                     float vmax) const
    {
        const float corners[2][4] = {{umin, umax, umin, umax}, {vmin, vmin, vmax, vmax}};
        for (int k = 0; k < 2; ++k) {
            const zeb::ArgAssoc* varying = piece.args().find(k ? t : s);
            ASSERT_NE(varying, nullptr);
            ASSERT_EQ(varying->count(), 4);
            for (int i = 0; i < 4; ++i) {
                EXPECT_NEAR(varying->words()[i], corners[k][i], 1e-6) << (k ? "t" : "s") << i;
            }
        }
        const zeb::ArgAssoc* one = piece.args().find(uniform);
        ASSERT_NE(one, nullptr);
        ASSERT_EQ(one->count(), 1);
        EXPECT_EQ(one->words()[0], uniformValue);
        const zeb::ArgAssoc* each = piece.args().find(vertex);
        ASSERT_NE(each, nullptr);
        ASSERT_EQ(each->count(), static_cast<long>(vertexValues.size()));
        EXPECT_TRUE(std::equal(vertexValues.begin(), vertexValues.end(), each->words()));
    }
    // The rectangle that the varying variables of a piece say it covers: u and v from, to.
    std::array<float, 4> range(const zeb::Primitive& piece) const
    {
        const float* u = piece.args().find(s)->words();
        const float* v = piece.args().find(t)->words();
        return {u[0], u[1], v[0], v[2]};
    }
};

// Splits meshes until single surfaces remain, in the order they come.
inline std::vector<std::unique_ptr<zeb::Primitive>> leaves(zeb::Primitive& mesh)
{
    std::vector<std::unique_ptr<zeb::Primitive>> all;
    Pieces pieces = split(mesh);
    for (auto& piece : pieces.list) {
        if (piece->type() != mesh.type()) {
            all.push_back(std::move(piece));
            continue;
        }
        for (auto& leaf : leaves(*piece)) all.push_back(std::move(leaf));
    }
    return all;
}

}  // namespace zebtest
