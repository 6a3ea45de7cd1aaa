// Included after ZEB_LANES is defined. What math/lattice_noise.cpp does for single places, to the
// same bits.
#pragma once

#include "math/noise_kernel.h"
#include "util/lanes.h"

namespace zeb
{
namespace
{

#if ZEB_LANES == 1
using BitLanes = std::uint32_t;
#else
using BitLanes __attribute__((vector_size(4 * ZEB_LANES))) = std::uint32_t;
#endif

inline BitLanes bitsOf(Int x) { return __builtin_bit_cast(BitLanes, x.v); }
inline BitLanes bitsOf(Float x) { return __builtin_bit_cast(BitLanes, x.v); }
inline Float floatOf(BitLanes bits) { return __builtin_bit_cast(FloatLanes, bits); }
inline Int intOf(BitLanes bits) { return Int(__builtin_bit_cast(IntLanes, bits)); }

inline BitLanes mixed(BitLanes x)
{
    x ^= x >> 16;
    x *= 0x7FEB352Du;
    x ^= x >> 15;
    x *= 0x846CA68Bu;
    return x ^ x >> 16;
}

// Of what is less than 2^24. Bytes and pairs of them can be summed up: 256 is 1 more than 255.
inline BitLanes remainderOf3(BitLanes x)
{
    x = (x & 0xFFFFu) + (x >> 16);
    x = (x & 0xFFu) + (x >> 8);
    return x - 3u * (x * 0x5556u >> 16);
}

inline Mask equal(BitLanes a, std::uint32_t b)
{
    return {static_cast<MaskLanes>(a == b - BitLanes{})};
}

template <int dimensions>
Float slope(BitLanes hash, const Float (&way)[dimensions])
{
    if constexpr (dimensions == 1) {
        return way[0] * (toFloat(intOf(hash >> 8)) * (2.0f / 16777216) - 1.0f) * 2.0f;
    }
    const BitLanes left = dimensions == 3 ? remainderOf3(hash >> 8) : (hash >> 8) & 3u;
    Float sum = 0;
    for (int k = 0; k < dimensions; ++k) {
        const auto axis = static_cast<std::uint32_t>(k);
        const Float along = floatOf(bitsOf(way[k]) ^ (hash >> axis & 1u) << 31);
        sum = sum + (dimensions == 2 ? along : select(equal(left, axis), 0.0f, along));
    }
    return sum;
}

template <int dimensions>
Float noiseAt(const NoiseBlock& block, int n)
{
    constexpr float kScale[] = {0, 1, 1, 1, 0.9f};
    constexpr int kCorners = 1 << dimensions;
    Float distance[dimensions], fade[dimensions];
    BitLanes hash[kCorners];
    hash[0] = static_cast<std::uint32_t>(dimensions) - BitLanes{};
    for (int k = 0; k < dimensions; ++k) {
        const Float x = Float::load(block.place[k] + n), whole = toFloat(truncate(x));
        const Float below = select(whole > x, whole - 1.0f, whole);
        const Float d = distance[k] = x - below + 0.0f;  // of -0, too, a 0 without sign
        fade[k] = d * d * d * (d * (d * 6.0f - 15.0f) + 10.0f);
        const BitLanes lower = bitsOf(truncate(below)) + 0x9E3779B9u;
        for (int corner = 0; corner < 1 << k; ++corner) {
            hash[corner + (1 << k)] = mixed(hash[corner] + lower + 1u);
            hash[corner] = mixed(hash[corner] + lower);
        }
    }
    Float values[kCorners];
    for (int corner = 0; corner < kCorners; ++corner) {
        Float way[dimensions];
        for (int k = 0; k < dimensions; ++k) {
            way[k] = corner >> k & 1 ? distance[k] - 1.0f : distance[k];
        }
        values[corner] = slope(hash[corner], way);
    }
    for (int k = dimensions - 1, half = kCorners / 2; k >= 0; --k, half /= 2) {
        for (int i = 0; i < half; ++i) {
            values[i] = values[i] + (values[i + half] - values[i]) * fade[k];
        }
    }
    const Float value = values[0] * kScale[dimensions];
    return select(value < -1.0f, -1.0f, select(value > 1.0f, 1.0f, value));
}

template <int dimensions>
void findNoise(NoiseBlock& block)
{
    for (int k = 0; k < block.count; k += kLanes) {
        noiseAt<dimensions>(block, k).store(block.value + k);
    }
}

void findNoise(NoiseBlock& block)
{
    switch (block.dimensions) {
        case 1:
            return findNoise<1>(block);
        case 2:
            return findNoise<2>(block);
        case 3:
            return findNoise<3>(block);
        default:
            return findNoise<4>(block);
    }
}

}  // namespace
}  // namespace zeb
