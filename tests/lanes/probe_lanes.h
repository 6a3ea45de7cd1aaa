// Included after ZEB_LANES is defined.
#pragma once

#include "lanes/probe.h"
#include "util/lane_math.h"
#include "util/lane_vector.h"

namespace zeb
{
namespace
{

template <class Function>
void each(const float* a, const float* b, const float* c, float* out, Function function)
{
    for (int k = 0; k < zebtest::kProbed; k += kLanes) {
        function(Float::load(a + k), Float::load(b + k), Float::load(c + k)).store(out + k);
    }
}

Float asNumber(Mask m) { return select(m, 1.0f, 0.0f); }
Float sumOf(Vector v) { return v.x + v.y * 2.0f + v.z * 4.0f; }

#define PROBE(name, expression)                                              \
    {                                                                        \
        name, [](const float* p, const float* q, const float* r, float* o) { \
            each(p, q, r, o, [](Float a, Float b, Float c) -> Float {        \
                (void)a, (void)b, (void)c;                                   \
                return expression;                                           \
            });                                                              \
        }                                                                    \
    }

constexpr zebtest::Probe kProbes[] = {
    PROBE("broadcast", Float(3.5f)),
    PROBE("broadcast of -0", Float(1.0f) / Float(-0.0f)),
    PROBE("+", a + b),
    PROBE("-", a - b),
    PROBE("*", a* b),
    PROBE("/", a / b),
    PROBE("negation", -a),
    PROBE("abs", abs(a)),
    PROBE("sqrt", sqrt(a)),
    PROBE("<", asNumber(a < b)),
    PROBE(">", asNumber(a > b)),
    PROBE("<=", asNumber(a <= b)),
    PROBE(">=", asNumber(a >= b)),
    PROBE("==", asNumber(a == b)),
    PROBE("!=", asNumber(a != b)),
    PROBE("&", asNumber((a < b) & (b < c))),
    PROBE("|", asNumber((a < b) | (b < c))),
    PROBE("andNot", asNumber(andNot(a < b, b < c))),
    PROBE("select", select(a < b, c, a)),
    PROBE("least", least(a, b)),
    PROBE("most", most(a, b)),
    PROBE("sum in double", inDouble([](Double x, Double y) { return x + y; }, a, b)),
    PROBE("difference in double", inDouble([](Double x, Double y) { return x * x - y * y; }, a, b)),
    PROBE("quotient in double", inDouble([](Double x, Double y) { return x / y; }, a, b)),
    PROBE("least in double", inDouble([](Double x, Double y) { return least(x, y); }, a, b)),
    PROBE("most in double", inDouble([](Double x, Double y) { return most(x, y); }, a, b)),
    PROBE("power", power(a, b)),
    PROBE("exp", exp(a)),
    PROBE("dot", dot({a, b, c}, {b, c, a})),
    PROBE("length", length({a, b, c})),
    PROBE("cross", sumOf(cross({a, b, c}, {b, c, a}))),
    PROBE("normalize", sumOf(normalize({a, b, c}))),
    PROBE("scaled", sumOf(scaled({a, b, c}))),
    PROBE("faceforward", sumOf(faceforward({a, b, c}, {b, a, c}, {c, b, a}))),
    PROBE("lerp", sumOf(lerp(a, {b, c, a}, {c, a, b}))),
    {nullptr, nullptr},
};

template <class Function>
void eachDouble(const double* a, const double* b, double* out, Function function)
{
    for (int k = 0; k < zebtest::kProbed; k += kDoubleLanes) {
        function(Double::load(a + k), Double::load(b + k)).store(out + k);
    }
}

Double sineOf(Double angle)
{
    Double sine, cosine;
    sincos(angle, sine, cosine);
    return sine;
}

Double cosineOf(Double angle)
{
    Double sine, cosine;
    sincos(angle, sine, cosine);
    return cosine;
}

#define DOUBLE_PROBE(name, expression)                             \
    {                                                              \
        name, [](const double* p, const double* q, double* o) {    \
            eachDouble(p, q, o, [](Double a, Double b) -> Double { \
                (void)a, (void)b;                                  \
                return expression;                                 \
            });                                                    \
        }                                                          \
    }

constexpr zebtest::DoubleProbe kDoubleProbes[] = {
    DOUBLE_PROBE("broadcast", Double(3.5)),
    DOUBLE_PROBE("+", a + b),
    DOUBLE_PROBE("-", a - b),
    DOUBLE_PROBE("*", a* b),
    DOUBLE_PROBE("/", a / b),
    DOUBLE_PROBE("negation", -a),
    DOUBLE_PROBE("abs", abs(a)),
    DOUBLE_PROBE("sqrt", sqrt(a)),
    DOUBLE_PROBE("least", least(a, b)),
    DOUBLE_PROBE("most", most(a, b)),
    DOUBLE_PROBE("sine", sineOf(a)),
    DOUBLE_PROBE("cosine", cosineOf(a)),
    {nullptr, nullptr},
};

}  // namespace
}  // namespace zeb
