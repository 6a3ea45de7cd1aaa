// Rational surfaces with weights that differ by more than rounding lets apart.

#include "support/scene.h"

namespace zebtest
{

namespace
{

class Lopsided : public RasterTest
{
protected:
    // A square within a frame, flat, of 10 x 10 points and 7 x 7 spans; one point in its middle has
    // a weight of its own.
    void show(float weight, float frame)
    {
        zebReset();
        raster(kSize, kSize);
        beginFlat();
        std::vector<float> knots, points;
        for (int i = 0; i < 14; ++i) {
            knots.push_back(static_cast<float>(std::min(std::max(i - 3, 0), 7)));
        }
        for (int j = 0; j < 10; ++j) {
            for (int i = 0; i < 10; ++i) {
                const float w = i == 5 && j == 5 ? weight : 1;
                const auto place = [&](int k) {
                    return w * (frame + static_cast<float>(k) * (kSize - 2 * frame) / 9);
                };
                points.insert(points.end(), {place(i), place(j), w * 0.5f, w});
            }
        }
        zebNurbMesh(10, 4, knots.data(), 0, 7, 10, 4, knots.data(), 0, 7, zebQuark("pointw"),
                    points.data(), 0);
        zebSceneEnd();
    }

    static constexpr long kSize = 90;
};

}  // namespace

// The weight's point rules spans 2 to 5 of 7 in both directions. Of the others, the first two end
// near point 3, at 28.7, and the last begins at 73.1.
TEST_F(Lopsided, OneHugeWeightLeavesTheSpansThatItDoesNotRuleAlone)
{
    for (const float weight : {1e8f, 1e18f, 1e30f, 3e36f}) {
        show(weight, -4);
        ASSERT_EQ(reports.size(), 1u) << weight;
        EXPECT_EQ(reports[0].code, 10);
        EXPECT_EQ(reports[0].severity, ZEB_WARNING);
        EXPECT_EQ(reports[0].message,
                  "zebSceneEnd: surface takes too many splits, parts are coarse or missing");
        reports.clear();
        for (long y = 0; y < kSize; ++y) {
            for (long x = 0; x < kSize; ++x) {
                const bool ruled = x > 26 && x < 77 && y > 26 && y < 77;
                if (ruled) continue;
                EXPECT_EQ(alpha(x, y), 1) << weight << ": " << x << ' ' << y;
            }
        }
    }
}

// The rest would be anywhere.
TEST_F(Lopsided, WhatRoundingScattersIsNotDrawn)
{
    for (const float weight : {1e18f, 1e30f, 3e36f}) {
        show(weight, 20);
        reports.clear();
        for (long y = 0; y < kSize; ++y) {
            for (long x = 0; x < kSize; ++x) {
                const bool inside = x >= 19 && x <= 70 && y >= 19 && y <= 70;
                if (inside) continue;
                EXPECT_EQ(alpha(x, y), 0) << weight << ": " << x << ' ' << y;
            }
        }
    }
}

// Micropolygons that the weight bends out of shape may miss a sample.
TEST_F(Lopsided, WeightsThatDifferLessAreDrawnWhole)
{
    for (const float weight : {1e-6f, 1e-3f, 1e3f, 1e6f}) {
        show(weight, -4);
        EXPECT_TRUE(reports.empty()) << weight;
        EXPECT_GE(picture.sum(3), kSize * kSize - 1) << weight;
    }
}

}  // namespace zebtest
