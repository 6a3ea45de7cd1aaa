// Gain and gamma by lanes, against one number at a time and against what they are.

#include "hider/exposure_kernel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>

#include "math/color.h"
#include "math/shading_math.h"

using namespace zeb;

namespace
{

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

void expose(Color& c, float gain, float gamma)
{
    float values[kExposureMultiple] = {c.r, c.g, c.b};
    exposureKernel()(gain, gamma, values, 3);
    c = Color(values[0], values[1], values[2]);
}

std::uint32_t bitsOf(float x)
{
    std::uint32_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    return bits;
}

bool same(float x, float y) { return (std::isnan(x) && std::isnan(y)) || bitsOf(x) == bitsOf(y); }

}  // namespace

TEST(Exposure, IsTheSameAtEveryWidth)
{
    std::mt19937 random(13);
    std::uniform_real_distribution<float> value(-2, 2);
    const float ends[] = {0.0f, -0.0f, 1.0f, -1.0f, 1e-45f, -1e30f, kInf, -kInf, kNan};
    for (int round = 0; round < 2000; ++round) {
        float values[64];
        for (float& x : values) x = random() % 8 ? value(random) : ends[random() % 9];
        const int count = static_cast<int>(random() % 65);
        const float gain = value(random), gamma = random() % 4 ? value(random) : 1;
        for (const int lanes : {1, 4, 8, 16}) {
            const ExposureKernel kernel = exposureKernel(lanes);
            if (!kernel) continue;
            float found[64];
            std::copy(std::begin(values), std::end(values), found);
            kernel(gain, gamma, found, count);
            for (int k = 0; k < count; ++k) {
                float expected = values[k] * gain;
                if (gamma != 1 && expected != 0) {
                    expected = std::copysign(power(std::fabs(expected), gamma), expected);
                }
                ASSERT_TRUE(same(found[k], expected)) << values[k] << " by " << lanes << " lanes";
            }
        }
    }
}

TEST(Exposure, MultipliesThenRaisesTheMagnitude)
{
    Color c(8, -8, 0);
    expose(c, 0.5f, 0.5f);
    EXPECT_FLOAT_EQ(c.r, 2);
    EXPECT_FLOAT_EQ(c.g, -2);
    EXPECT_EQ(c.b, 0);
}

TEST(Exposure, TakesTheExponentAsGiven)
{
    Color c(2, 3, 4);
    expose(c, 1, 2);
    EXPECT_FLOAT_EQ(c.r, 4);
    EXPECT_FLOAT_EQ(c.g, 9);
    EXPECT_FLOAT_EQ(c.b, 16);
}

TEST(Exposure, IsWithinTwoUnitsInTheLastPlace)
{
    std::mt19937 random(6);
    std::uniform_real_distribution<float> value(-2, 2), exponent(0.1f, 4);
    double worst = 0;
    for (int k = 0; k < 300000; ++k) {
        const float x = value(random), gamma = exponent(random);
        Color c(x, 0, 0);
        expose(c, 1, gamma);
        const long double exact = std::copysign(
            std::pow(std::fabs(static_cast<long double>(x)), static_cast<long double>(gamma)),
            static_cast<long double>(x));
        const float size = std::fabs(static_cast<float>(exact));
        const auto unit = static_cast<long double>(std::nextafter(size, kInf) - size);
        worst = std::max(
            worst, static_cast<double>(std::fabs(static_cast<long double>(c.r) - exact) / unit));
    }
    EXPECT_LE(worst, 0.51);
}

TEST(Exposure, LeavesWhatIsNoNumberAndWhatIsInfinite)
{
    Color c(kInf, -kInf, kNan);
    expose(c, 2, 0.5f);
    EXPECT_EQ(c.r, kInf);
    EXPECT_EQ(c.g, -kInf);
    EXPECT_TRUE(std::isnan(c.b));
}

TEST(Exposure, ZeroStaysZeroWhateverTheExponent)
{
    Color c(0, 0, 0);
    expose(c, 1, 0);
    EXPECT_EQ(c, gBlack);
}
