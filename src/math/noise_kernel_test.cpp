// Noise by lanes, against one place at a time.

#include "math/noise_kernel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "math/lattice_noise.h"

using namespace zeb;

namespace
{

std::uint32_t bits(float x)
{
    std::uint32_t result;
    std::memcpy(&result, &x, sizeof result);
    return result;
}

// Within the kernels' reach, near lattice points and far from them, on either side of 0.
float coordinate(std::mt19937& random)
{
    const auto unit = [&random] { return static_cast<float>(random() % 65536) / 65536; };
    const float sign = random() % 2 ? 1 : -1;
    switch (random() % 6) {
        case 0:
            return sign * static_cast<float>(random() % 1000);
        case 1:
            return sign * std::exp2(-140 * unit());
        case 2:
            return sign * 1.0737417e9f * unit();
        case 3:
            return std::nextafter(sign * static_cast<float>(random() % 100), 1e9f * sign);
        default:
            return sign * 50 * unit();
    }
}

TEST(NoiseKernels, FindWhatSinglePlacesHave)
{
    std::mt19937 random(3);
    for (const int lanes : {1, 4, 8, 16}) {
        const NoiseKernel kernel = noiseKernel(lanes);
        if (!kernel) continue;
        for (int round = 0; round < 400; ++round) {
            NoiseBlock block;
            block.dimensions = 1 + round % 4;
            block.count = 1 + static_cast<int>(random() % NoiseBlock::kMost);
            for (auto& plane : block.place) {
                for (int k = 0; k < block.count; ++k) plane[k] = coordinate(random);
            }
            kernel(block);
            for (int k = 0; k < block.count; ++k) {
                const float place[4] = {block.place[0][k], block.place[1][k], block.place[2][k],
                                        block.place[3][k]};
                ASSERT_EQ(bits(block.value[k]), bits(latticeNoise(block.dimensions, place)))
                    << lanes << " lanes, " << block.dimensions << " dimensions at " << place[0]
                    << ' ' << place[1] << ' ' << place[2] << ' ' << place[3];
            }
        }
    }
}

TEST(NoiseKernels, LeaveWhatIsTooFarForThem)
{
    const float inf = std::numeric_limits<float>::infinity();
    std::vector<float> planes[3];
    for (int k = 0; k < 300; ++k) {
        for (int axis = 0; axis < 3; ++axis) {
            const bool isOdd = k % 7 == 2 * axis;
            const float odd[] = {inf, -inf, std::nanf(""), 3e38f, -1e30f, 1073741824, -1073741824};
            planes[axis].push_back(isOdd ? odd[k % 11 % 7]
                                         : 0.37f * static_cast<float>(k * (axis + 1)));
        }
    }
    const std::vector<float> before[3] = {planes[0], planes[1], planes[2]};
    float* const places[] = {planes[0].data(), planes[1].data(), planes[2].data()};
    latticeNoise(3, places, 300, places[1]);
    for (std::size_t k = 0; k < 300; ++k) {
        const float place[] = {before[0][k], before[1][k], before[2][k]};
        EXPECT_EQ(bits(planes[1][k]), bits(latticeNoise(3, place))) << k;
        EXPECT_EQ(bits(planes[0][k]), bits(before[0][k]));
    }
}

}  // namespace
