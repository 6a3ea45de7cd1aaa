// Numbers by lanes: as many side by side as an instruction set computes at once. What is written
// over them once gives the same bits at every width, because every operation here does, lane by
// lane, what IEEE 754 says.
//
// Included by one translation unit an instruction set, which defines ZEB_LANES: 1, 4, 8 or 16.
// Everything is local to it, and nothing is included that has inline functions of its own: the
// linker would keep one copy for all, made of instructions that not every machine has.
#pragma once

#ifndef ZEB_LANES
#error "ZEB_LANES says how many numbers lie side by side"
#endif

#include <cstdint>
#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace zeb
{
namespace
{

constexpr int kLanes = ZEB_LANES;
// Doubles are twice as wide: half as many lie side by side.
constexpr int kDoubleLanes = ZEB_LANES == 1 ? 1 : ZEB_LANES / 2;

#if ZEB_LANES == 1
using FloatLanes = float;
using DoubleLanes = double;
using WordLanes = std::uint64_t;
using IntLanes = std::int32_t;
using MaskLanes = bool;
using WideMaskLanes = bool;
#else
using FloatLanes __attribute__((vector_size(4 * ZEB_LANES))) = float;
using DoubleLanes __attribute__((vector_size(4 * ZEB_LANES))) = double;
using WordLanes __attribute__((vector_size(4 * ZEB_LANES))) = std::uint64_t;
using IntLanes __attribute__((vector_size(4 * ZEB_LANES))) = std::int32_t;
using MaskLanes = IntLanes;
using WideMaskLanes __attribute__((vector_size(4 * ZEB_LANES))) = std::int64_t;
#endif

// Yes or no for every lane.
struct Mask {
    MaskLanes v;

    friend Mask operator&(Mask a, Mask b) { return {static_cast<MaskLanes>(a.v & b.v)}; }
    friend Mask andNot(Mask a, Mask b)
    {
        return {static_cast<MaskLanes>(a.v & (b.v == MaskLanes{}))};
    }
    friend Mask operator|(Mask a, Mask b) { return {static_cast<MaskLanes>(a.v | b.v)}; }
};

struct Float {
    FloatLanes v;

    Float() = default;
#if ZEB_LANES == 1
    Float(float x) : v(x) {}
#else
    Float(FloatLanes lanes) : v(lanes) {}
    // The same in every lane.
    Float(float x) : v(x - FloatLanes{}) {}
#endif
    static Float load(const float* from)
    {
        Float f;
        __builtin_memcpy(&f.v, from, sizeof f.v);
        return f;
    }
    void store(float* to) const { __builtin_memcpy(to, &v, sizeof v); }

    friend Float operator+(Float a, Float b) { return a.v + b.v; }
    friend Float operator-(Float a, Float b) { return a.v - b.v; }
    friend Float operator*(Float a, Float b) { return a.v * b.v; }
    friend Float operator/(Float a, Float b) { return a.v / b.v; }
    friend Float operator-(Float a) { return -a.v; }
    friend Mask operator<(Float a, Float b) { return {a.v < b.v}; }
    friend Mask operator>(Float a, Float b) { return {a.v > b.v}; }
    friend Mask operator<=(Float a, Float b) { return {a.v <= b.v}; }
    friend Mask operator>=(Float a, Float b) { return {a.v >= b.v}; }
    friend Mask operator==(Float a, Float b) { return {a.v == b.v}; }
    friend Mask operator!=(Float a, Float b) { return {a.v != b.v}; }
};

inline Float select(Mask m, Float yes, Float no) { return m.v ? yes.v : no.v; }
// Where one is no number, the second.
inline Float least(Float a, Float b) { return select(a < b, a, b); }
inline Float most(Float a, Float b) { return select(a > b, a, b); }

// 32 bits, for indices.
struct Int {
    IntLanes v;

    Int() = default;
    explicit Int(IntLanes lanes) : v(lanes) {}
#if ZEB_LANES > 1
    explicit Int(std::int32_t x) : v(x - IntLanes{}) {}
#endif
    void store(std::int32_t* to) const { __builtin_memcpy(to, &v, sizeof v); }

    friend Int operator+(Int a, Int b) { return Int(a.v + b.v); }
};

inline Int select(Mask m, Int yes, Int no) { return Int(m.v ? yes.v : no.v); }

// Yes or no for every lane of a Double.
struct WideMask {
    WideMaskLanes v;

    friend WideMask operator&(WideMask a, WideMask b)
    {
        return {static_cast<WideMaskLanes>(a.v & b.v)};
    }
    friend WideMask andNot(WideMask a, WideMask b)
    {
        return {static_cast<WideMaskLanes>(a.v & (b.v == WideMaskLanes{}))};
    }
    friend WideMask operator|(WideMask a, WideMask b)
    {
        return {static_cast<WideMaskLanes>(a.v | b.v)};
    }
};

// Half as many lanes as a Float has; as many where that is one.
struct Double {
    DoubleLanes v;

    Double() = default;
#if ZEB_LANES == 1
    Double(double x) : v(x) {}
#else
    Double(DoubleLanes lanes) : v(lanes) {}
    Double(double x) : v(x - DoubleLanes{}) {}
#endif
    static Double load(const double* from)
    {
        Double d;
        __builtin_memcpy(&d.v, from, sizeof d.v);
        return d;
    }
    void store(double* to) const { __builtin_memcpy(to, &v, sizeof v); }

    friend Double operator+(Double a, Double b) { return a.v + b.v; }
    friend Double operator-(Double a, Double b) { return a.v - b.v; }
    friend Double operator*(Double a, Double b) { return a.v * b.v; }
    friend Double operator/(Double a, Double b) { return a.v / b.v; }
    friend Double operator-(Double a) { return -a.v; }
    friend WideMask operator<(Double a, Double b) { return {a.v < b.v}; }
    friend WideMask operator>(Double a, Double b) { return {a.v > b.v}; }
    friend WideMask operator<=(Double a, Double b) { return {a.v <= b.v}; }
    friend WideMask operator>=(Double a, Double b) { return {a.v >= b.v}; }
    friend WideMask operator!=(Double a, Double b) { return {a.v != b.v}; }
};

inline Double select(WideMask m, Double yes, Double no) { return m.v ? yes.v : no.v; }
inline WideMask select(WideMask m, WideMask yes, WideMask no) { return (m & yes) | andNot(no, m); }

inline Double least(Double a, Double b) { return a.v < b.v ? a.v : b.v; }
inline Double most(Double a, Double b) { return a.v > b.v ? a.v : b.v; }

// 0 where it is less than the limit, in magnitude.
inline Double zeroWithin(Double x, double limit)
{
    const Double l = limit, nothing = 0.0;
    return (x.v < l.v) & (x.v > -l.v) ? nothing.v : x.v;
}

// The bits of doubles.
inline WordLanes bitsOf(Double d) { return __builtin_bit_cast(WordLanes, d.v); }
inline Double ofBits(WordLanes bits) { return __builtin_bit_cast(DoubleLanes, bits); }

inline Double abs(Double x) { return ofBits(bitsOf(x) & 0x7FFFFFFFFFFFFFFF); }
// A size that is not negative, with the sign of another number.
inline Double withSign(Double size, Double sign)
{
    return ofBits(bitsOf(size) | (bitsOf(sign) & 0x8000000000000000));
}

// Of what fits into 32 bits: towards zero.
#if ZEB_LANES == 1
inline Int truncate(Float x) { return Int(static_cast<std::int32_t>(x.v)); }
inline Float toFloat(Int x) { return static_cast<float>(x.v); }
#else
inline Int truncate(Float x) { return Int(__builtin_convertvector(x.v, IntLanes)); }
inline Float toFloat(Int x) { return __builtin_convertvector(x.v, FloatLanes); }
#endif

#if ZEB_LANES == 1

inline Float sqrt(Float x) { return __builtin_sqrtf(x.v); }
inline Double sqrt(Double x) { return __builtin_sqrt(x.v); }
inline Float abs(Float x) { return __builtin_fabsf(x.v); }
inline bool any(Mask m) { return m.v; }
inline bool any(WideMask m) { return m.v; }
inline Double lowHalf(Float x) { return static_cast<double>(x.v); }
template <class Function, class... Floats>
Float inDouble(Function f, Floats... x)
{
    return static_cast<float>(f(lowHalf(x)...).v);
}

#else

inline Float abs(Float x)
{
    return __builtin_bit_cast(FloatLanes, __builtin_bit_cast(MaskLanes, x.v) & 0x7FFFFFFF);
}

#if ZEB_LANES == 16
inline Float sqrt(Float x) { return _mm512_sqrt_ps(x.v); }
inline Double sqrt(Double x) { return _mm512_sqrt_pd(x.v); }
inline bool any(Mask m)
{
    const __m512i bits = __builtin_bit_cast(__m512i, m.v);
    return _mm512_test_epi32_mask(bits, bits) != 0;
}
inline bool any(WideMask m)
{
    const __m512i bits = __builtin_bit_cast(__m512i, m.v);
    return _mm512_test_epi64_mask(bits, bits) != 0;
}
inline Double lowHalf(Float x) { return _mm512_cvtps_pd(_mm512_castps512_ps256(x.v)); }
inline Double highHalf(Float x) { return _mm512_cvtps_pd(_mm512_extractf32x8_ps(x.v, 1)); }
inline Float join(Double low, Double high)
{
    return _mm512_insertf32x8(_mm512_castps256_ps512(_mm512_cvtpd_ps(low.v)),
                              _mm512_cvtpd_ps(high.v), 1);
}
#elif ZEB_LANES == 8
inline Float sqrt(Float x) { return _mm256_sqrt_ps(x.v); }
inline Double sqrt(Double x) { return _mm256_sqrt_pd(x.v); }
inline bool any(Mask m) { return _mm256_movemask_ps(__builtin_bit_cast(__m256, m.v)) != 0; }
inline bool any(WideMask m) { return _mm256_movemask_pd(__builtin_bit_cast(__m256d, m.v)) != 0; }
inline Double lowHalf(Float x) { return _mm256_cvtps_pd(_mm256_castps256_ps128(x.v)); }
inline Double highHalf(Float x) { return _mm256_cvtps_pd(_mm256_extractf128_ps(x.v, 1)); }
inline Float join(Double low, Double high)
{
    return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm256_cvtpd_ps(low.v)),
                                _mm256_cvtpd_ps(high.v), 1);
}
#elif defined(__SSE2__)
inline Float sqrt(Float x) { return _mm_sqrt_ps(x.v); }
inline Double sqrt(Double x) { return _mm_sqrt_pd(x.v); }
inline bool any(Mask m) { return _mm_movemask_ps(__builtin_bit_cast(__m128, m.v)) != 0; }
inline bool any(WideMask m) { return _mm_movemask_pd(__builtin_bit_cast(__m128d, m.v)) != 0; }
inline Double lowHalf(Float x) { return _mm_cvtps_pd(x.v); }
inline Double highHalf(Float x) { return _mm_cvtps_pd(_mm_movehl_ps(x.v, x.v)); }
inline Float join(Double low, Double high)
{
    return _mm_movelh_ps(_mm_cvtpd_ps(low.v), _mm_cvtpd_ps(high.v));
}
#else
// For any machine, one lane after the other where the compiler finds nothing better.
inline Float sqrt(Float x)
{
    for (int k = 0; k < kLanes; ++k) x.v[k] = __builtin_sqrtf(x.v[k]);
    return x;
}
inline Double sqrt(Double x)
{
    for (int k = 0; k < kDoubleLanes; ++k) x.v[k] = __builtin_sqrt(x.v[k]);
    return x;
}
inline bool any(Mask m)
{
    std::int32_t all = 0;
    for (int k = 0; k < kLanes; ++k) all |= m.v[k];
    return all != 0;
}
inline bool any(WideMask m)
{
    std::int64_t all = 0;
    for (int k = 0; k < kDoubleLanes; ++k) all |= m.v[k];
    return all != 0;
}
inline Double lowHalf(Float x) { return DoubleLanes{double{x.v[0]}, double{x.v[1]}}; }
inline Double highHalf(Float x) { return DoubleLanes{double{x.v[2]}, double{x.v[3]}}; }
inline Float join(Double low, Double high)
{
    return FloatLanes{static_cast<float>(low.v[0]), static_cast<float>(low.v[1]),
                      static_cast<float>(high.v[0]), static_cast<float>(high.v[1])};
}
#endif

// f of the numbers, computed in double and rounded once.
template <class Function, class... Floats>
Float inDouble(Function f, Floats... x)
{
    return join(f(lowHalf(x)...), f(highHalf(x)...));
}

#endif

// Doubles from k on, which at(k) gives by lanes of their own, rounded.
template <class At>
Float roundedFrom(int k, const At& at)
{
#if ZEB_LANES == 1
    return static_cast<float>(at(k).v);
#else
    return join(at(k), at(k + kDoubleLanes));
#endif
}

}  // namespace
}  // namespace zeb
