// Weights by lanes, against one sample at a time.

#include "hider/weight_kernel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>

#include "math/shading_math.h"

using namespace zeb;

namespace
{

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

std::uint32_t bitsOf(float x)
{
    std::uint32_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    return bits;
}

bool same(float x, float y) { return (std::isnan(x) && std::isnan(y)) || bitsOf(x) == bitsOf(y); }

class WeightKernels : public testing::Test
{
protected:
    float within(float a, float b) { return std::uniform_real_distribution<float>(a, b)(random); }
    float offset()
    {
        static const float ends[] = {0.0f, -0.0f, 1.0f, -1.0f, 1e-45f, 1e30f, -kInf, kInf, kNan};
        return random() % 8 ? within(-1.2f, 1.2f) : ends[random() % (sizeof ends / sizeof *ends)];
    }
    // Some filters so narrow or so wide that their factors are no numbers any more.
    GaussianWeight weight()
    {
        static const float ends[] = {0.0f, 1e-30f, 1e30f, kInf};
        if (random() % 8 == 0) {
            const float reach = ends[random() % (sizeof ends / sizeof *ends)];
            return {reach, reach, -1 / (2 * reach * reach), 1 / reach};
        }
        return {within(0, 1.2f), within(0, 1.2f), within(-5, 0), within(0.1f, 2)};
    }
    WeightBlock block(int count)
    {
        WeightBlock made;
        made.count = count;
        for (int k = 0; k < WeightBlock::kMost; ++k) {
            made.dx[k] = offset();
            made.dy[k] = offset();
            made.weights[k] = -9;
        }
        return made;
    }

    std::mt19937 random{11};
};

}  // namespace

TEST_F(WeightKernels, GiveTheSameAtEveryWidth)
{
    for (int round = 0; round < 5000; ++round) {
        const GaussianWeight w = weight();
        WeightBlock one = block(static_cast<int>(random() % (WeightBlock::kMost + 1)));
        const WeightBlock samples = one;
        weightKernel(1)(w, one);
        for (const int lanes : {4, 8, 16}) {
            const WeightKernel kernel = weightKernel(lanes);
            if (!kernel) continue;
            WeightBlock many = samples;
            kernel(w, many);
            for (int k = 0; k < one.count; ++k) {
                ASSERT_TRUE(same(one.weights[k], many.weights[k]))
                    << lanes << " lanes: " << one.weights[k] << ", " << many.weights[k];
            }
        }
    }
}

TEST_F(WeightKernels, FindTheWeightOfASingleSample)
{
    int inside = 0, outside = 0;
    for (int round = 0; round < 1000; ++round) {
        const GaussianWeight w = weight();
        WeightBlock b = block(WeightBlock::kMost);
        weightKernel()(w, b);
        for (int k = 0; k < b.count; ++k) {
            const float x = b.dx[k], y = b.dy[k];
            const bool isInside = std::fabs(x) <= w.xreach && std::fabs(y) <= w.yreach;
            const float expected =
                isInside ? exponential((x * x + y * y) * w.exponent) * w.scale : 0.0f;
            ASSERT_TRUE(same(b.weights[k], expected)) << x << ", " << y;
            (isInside ? inside : outside) += 1;
        }
    }
    EXPECT_GT(inside, 1000);
    EXPECT_GT(outside, 1000);
}

TEST_F(WeightKernels, AreThoseOfTheMachine)
{
    EXPECT_TRUE(weightKernel(1));
    EXPECT_TRUE(weightKernel(4));
    EXPECT_FALSE(weightKernel(3));
    EXPECT_TRUE(weightKernel());
}
