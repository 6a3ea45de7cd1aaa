// Powers, exponentials, sines and cosines by lanes, within one unit in the last place, and the same
// on every machine, which those of C libraries are not. Included after lanes.h.
#pragma once

#include "util/lanes.h"

namespace zeb
{
namespace
{

// a / b, clamped as div() clamps it.
inline Double quotient(Double a, Double b)
{
    constexpr double kInf = 1e38f;
    const Double size = abs(b);
    const Double clamped = select(a > 0.0, kInf, select(a < 0.0, -kInf, 0.0));
    return select((size >= 1.0) | (kInf * size > abs(a)), a / b, clamped);
}

// Of positive numbers, normal in double, to 40 bits. x is 2^e m with m between the square roots of
// 1/2 and 2, and the logarithm of m the series in s = (m - 1) / (m + 1).
inline Double log2(Double x)
{
    constexpr std::uint64_t kSqrtHalf = 0x3FE6A09E667F3BCD, kOne = 0x3FF0000000000000;
    constexpr std::uint64_t kFraction = 0x000FFFFFFFFFFFFF;
    // 2^52, whose last bits count ones.
    constexpr std::uint64_t kCounter = 0x4330000000000000;
    constexpr double k2OverLn2 = 2.8853900817779268147;
    const WordLanes moved = bitsOf(x) + (kOne - kSqrtHalf);
    const Double e = ofBits((moved >> 52) | kCounter) - Double(4503599627370496.0 + 1023);
    const Double m = ofBits((moved & kFraction) + kSqrtHalf);
    const Double s = (m - 1.0) / (m + 1.0);
    const Double z = s * s;
    const Double series =
        (((((z * (1 / 13.0) + 1 / 11.0) * z + 1 / 9.0) * z + 1 / 7.0) * z + 1 / 5.0) * z +
         1 / 3.0) *
            z +
        1.0;
    return e + s * k2OverLn2 * series;
}

// To 36 bits; of less than -300 as of -300, of more than 300 as of 300: floats end before. The
// whole part becomes the exponent, the rest goes into the exponential series.
inline Double exp2(Double x)
{
    constexpr double kRounder = 6755399441055744.0;  // 1.5 * 2^52: ones are its last bits
    constexpr double kLn2 = 0.69314718055994530942;
    x = most(-300.0, least(300.0, x));
    const Double shifted = x + kRounder;
    const Double z = (x - (shifted - kRounder)) * kLn2;
    const Double upper =
        (((z * (1 / 362880.0) + 1 / 40320.0) * z + 1 / 5040.0) * z + 1 / 720.0) * z + 1 / 120.0;
    const Double series = ((((upper * z + 1 / 24.0) * z + 1 / 6.0) * z + 0.5) * z + 1.0) * z + 1.0;
    const Double power = ofBits((bitsOf(shifted) << 52) + 0x3FF0000000000000);
    return series * power;
}

// x to the power y as C has it, but for zeros and infinities below zero, which count as above.
inline Float power(Float x, Float y)
{
    constexpr float kInf = __builtin_inff(), kNan = __builtin_nanf("");
    const Float size = abs(x);
    const Mask usual = (size > 0.0f) & (size < kInf);
    Float result = inDouble([](Double a, Double b) { return exp2(b * log2(a)); },
                            select(usual, size, 1.0f), y);
    if (any(x <= 0.0f)) {
        // From 2^23 on all floats are whole.
        const auto isWhole = [](Float v) {
            const Float rounder = 8388608.0f, a = abs(v);
            return ((a + rounder) - rounder == a) | (a >= rounder);
        };
        const Float odd = select(isWhole(y * 0.5f), result, -result);
        result = select(x < 0.0f, select(isWhole(y), odd, kNan), result);
    }
    const Float atEnd =
        select(((size == 0.0f) & (y < 0.0f)) | ((size == kInf) & (y > 0.0f)), kInf, 0.0f);
    result = select((size == 0.0f) | (size == kInf), atEnd, result);
    result = select((x != x) | (y != y), kNan, result);
    return select((y == 0.0f) | (x == 1.0f), 1.0f, result);
}

inline Float exp(Float x)
{
    constexpr double kLog2E = 1.4426950408889634074;
    return inDouble([](Double a) { return exp2(a * kLog2E); }, x);
}

// Of angles up to 1e5 either way, within 0.85 units in the last place of a double. The sine is odd
// and the cosine even to the last bit; those of 0 are 0 and 1.
//
// x is n quarter turns and r + rest, an eighth of a turn at most either way. A quarter turn comes
// in three parts: n times the first or the second has no more bits than a double, so that nothing
// is lost but the last bits of the rest. Then r and the rest go into the Taylor series, and the
// last two bits of n say which series is which, with what sign.
inline void sincos(Double x, Double& sine, Double& cosine)
{
    constexpr double kRounder = 6755399441055744.0;  // 1.5 * 2^52: ones are its last bits
    constexpr double kQuartersPerRadian = 0.6366197723675814;
    constexpr double kQuarter1 = 0x1.921fb544p+0;
    constexpr double kQuarter2 = 0x1.0b4611a6p-34;
    constexpr double kQuarter3 = 0x1.3198a2e037073p-69;
    const Double shifted = x * kQuartersPerRadian + kRounder;
    const Double n = shifted - kRounder;
    const Double first = x - n * kQuarter1, second = n * kQuarter2;
    const Double r = first - second;
    const Double rest = ((first - r) - second) - n * kQuarter3;

    const Double z = r * r, half = z * 0.5, mostOfCosine = 1.0 - half;
    const Double sineUpper =
        ((z * (1 / 355687428096000.0) - 1 / 1307674368000.0) * z + 1 / 6227020800.0) * z -
        1 / 39916800.0;
    const Double sineSeries =
        (((sineUpper * z + 1 / 362880.0) * z - 1 / 5040.0) * z + 1 / 120.0) * z - 1 / 6.0;
    const Double s = r + (r * z * sineSeries + rest * mostOfCosine);
    const Double cosineUpper =
        ((z * (1 / 20922789888000.0) - 1 / 87178291200.0) * z + 1 / 479001600.0) * z -
        1 / 3628800.0;
    const Double cosineSeries = ((cosineUpper * z + 1 / 40320.0) * z - 1 / 720.0) * z + 1 / 24.0;
    const Double c =
        mostOfCosine + (((1.0 - mostOfCosine) - half) + (z * z * cosineSeries - r * rest));

    const WordLanes quarters = bitsOf(shifted), odd = WordLanes{} - (quarters & 1);
    const WordLanes exchanged = (bitsOf(s) ^ bitsOf(c)) & odd;
    sine = ofBits(bitsOf(s) ^ exchanged ^ ((quarters & 2) << 62));
    cosine = ofBits(bitsOf(c) ^ exchanged ^ (((quarters + 1) & 2) << 62));
}

}  // namespace
}  // namespace zeb
