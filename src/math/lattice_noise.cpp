#include "math/lattice_noise.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "math/noise_kernel.h"

namespace zeb
{

namespace
{

// Mixes the bits of an integer well (C. Wellons, 2018).
std::uint32_t mixed(std::uint32_t x)
{
    x ^= x >> 16;
    x *= 0x7FEB352Du;
    x ^= x >> 15;
    x *= 0x846CA68Bu;
    return x ^ x >> 16;
}

// The lattice coordinates on both sides of a place, and how far it is from the lower one.
struct Between {
    std::uint32_t lower, upper;
    float distance;

    Between(float x, long period)
    {
        const double below = std::floor(double{x});
        distance = static_cast<float>(double{x} - below);
        double next = below + 1;
        // Beyond this floats are whole, and noise is 0.
        constexpr double kMost = 1 << 30;
        double at = below;
        if (period > 0) {
            const auto every = static_cast<double>(period);
            at -= every * std::floor(at / every);
            next -= every * std::floor(next / every);
        }
        lower = toInteger(at, kMost);
        upper = toInteger(next, kMost);
    }

    static std::uint32_t toInteger(double x, double most)
    {
        const double within = x < -most ? -most : x > most ? most : x;
        return static_cast<std::uint32_t>(static_cast<std::int32_t>(within));
    }
};

// The product of the way to a lattice point with its gradient: of one dimension a slope, of more
// the way to the middle of one of the edges of a cube, so that all are about as steep.
template <int dimensions>
float slope(std::uint32_t hash, const float (&way)[dimensions])
{
    if constexpr (dimensions == 1) {
        return way[0] * (static_cast<float>(hash >> 8) * (2.0f / 16777216) - 1) * 2;
    }
    float sum = 0;
    const int left = dimensions == 2 ? -1 : static_cast<int>((hash >> 8) % dimensions);
    for (int k = 0; k < dimensions; ++k) {
        if (k == left) continue;
        sum += hash >> k & 1 ? -way[k] : way[k];
    }
    return sum;
}

template <int dimensions>
float noiseAt(const float* place, const long* periods)
{
    // What brings the largest values to 1.
    constexpr float kScale[] = {0, 1, 1, 1, 0.9f};
    constexpr int kCorners = 1 << dimensions;
    std::uint32_t lower[dimensions], upper[dimensions];
    float distance[dimensions], fade[dimensions];
    for (int k = 0; k < dimensions; ++k) {
        const float x = place[k];
        if (x - x != 0) return 0;
        const Between between(x, periods ? periods[k] : 0);
        lower[k] = between.lower;
        upper[k] = between.upper;
        const float d = distance[k] = between.distance;
        fade[k] = d * d * d * (d * (d * 6 - 15) + 10);
    }
    float values[kCorners];
    for (int corner = 0; corner < kCorners; ++corner) {
        std::uint32_t hash = dimensions;
        float way[dimensions];
        for (int k = 0; k < dimensions; ++k) {
            const bool isUpper = corner >> k & 1;
            hash = mixed(hash + 0x9E3779B9u + (isUpper ? upper[k] : lower[k]));
            way[k] = isUpper ? distance[k] - 1 : distance[k];
        }
        values[corner] = slope(hash, way);
    }
    for (int k = dimensions - 1, half = kCorners / 2; k >= 0; --k, half /= 2) {
        for (int n = 0; n < half; ++n) values[n] += (values[n + half] - values[n]) * fade[k];
    }
    const float value = values[0] * kScale[dimensions];
    return value < -1 ? -1 : value > 1 ? 1 : value;
}

}  // namespace

float latticeNoise(int dimensions, const float* place, const long* periods)
{
    switch (dimensions) {
        case 1:
            return noiseAt<1>(place, periods);
        case 2:
            return noiseAt<2>(place, periods);
        case 3:
            return noiseAt<3>(place, periods);
        default:
            return noiseAt<4>(place, periods);
    }
}

void latticeNoise(int dimensions, const float* const* places, std::size_t count, float* result)
{
    static const NoiseKernel kernel = noiseKernel();
    NoiseBlock block;
    block.dimensions = dimensions;
    for (std::size_t first = 0; first < count; first += NoiseBlock::kMost) {
        block.count = static_cast<int>(std::min(count - first, std::size_t{NoiseBlock::kMost}));
        bool far[NoiseBlock::kMost] = {};
        bool anyFar = false;
        for (int axis = 0; axis < dimensions; ++axis) {
            for (int k = 0; k < block.count; ++k) {
                const float x = places[axis][first + static_cast<std::size_t>(k)];
                const bool near = std::fabs(x) < NoiseBlock::kFarthest;
                block.place[axis][k] = near ? x : 0;
                far[k] |= !near;
                anyFar |= !near;
            }
        }
        kernel(block);
        for (int k = 0; anyFar && k < block.count; ++k) {
            if (!far[k]) continue;
            float place[4];
            for (int axis = 0; axis < dimensions; ++axis) {
                place[axis] = places[axis][first + static_cast<std::size_t>(k)];
            }
            block.value[k] = latticeNoise(dimensions, place);
        }
        std::copy_n(block.value, block.count, result + first);
    }
}

}  // namespace zeb
