#include "math/color.h"

#include <gtest/gtest.h>

#include <sstream>

#include "math/shading_math.h"
#include "state/option.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

using zebtest::Report;

class ColorTest : public testing::Test
{
protected:
    void SetUp() override { zebReset(); }
    void TearDown() override { zebReset(); }

    // Two samples: the first is red, the second twice the green and four times the blue.
    void useTwoSamples()
    {
        const float toRgb[] = {1, 0, 0, 0, 2, 4};
        const float fromRgb[] = {1, 0, 0, 0.25f, 0, 0.125f};
        gOption->setColorSpace(2, toRgb, fromRgb);
    }

    zebtest::Reports reports;
};

}  // namespace

TEST(Color, Constants)
{
    EXPECT_EQ(Color(), Color(0, 0, 0));
    EXPECT_EQ(gBlack, Color(0, 0, 0));
    EXPECT_EQ(gWhite, Color(1, 1, 1));
}

TEST(Color, ArithmeticIsComponentWise)
{
    EXPECT_EQ(Color(1, 2, 3) + Color(10, 20, 30), Color(11, 22, 33));
    EXPECT_EQ(Color(1, 2, 3) - Color(10, 20, 30), Color(-9, -18, -27));
    EXPECT_EQ(Color(1, 2, 3) * 2, Color(2, 4, 6));
    EXPECT_EQ(2 * Color(1, 2, 3), Color(2, 4, 6));
    EXPECT_EQ(Color(1, 2, 3) * Color(4, 5, 6), Color(4, 10, 18));
    EXPECT_EQ(Color(2, 4, 6) / 2, Color(1, 2, 3));
    EXPECT_EQ(Color(2, 6, 12) / Color(2, 3, 4), Color(1, 2, 3));
}

TEST(Color, EqualityIsOfEveryComponent)
{
    EXPECT_TRUE(Color(1, 2, 3) == Color(1, 2, 3));
    EXPECT_TRUE(Color(1, 2, 3) != Color(0, 2, 3));
    EXPECT_TRUE(Color(1, 2, 3) != Color(1, 0, 3));
    EXPECT_TRUE(Color(1, 2, 3) != Color(1, 2, 0));
}

TEST_F(ColorTest, DivisionByAScalarNearZeroIsReportedAndLeavesTheColor)
{
    for (float divisor : {0.0f, 0.9e-10f, -0.9e-10f}) {
        reports.clear();
        EXPECT_EQ(Color(1, 2, 3) / divisor, Color(1, 2, 3));
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0], (Report{15, 2820, "dividing color by zero"}));
    }
}

TEST_F(ColorTest, TheBoundsOfNearZeroAreOpen)
{
    EXPECT_NEAR((Color(1e-10f, 0, 0) / 1e-10f).r, 1.0f, 1e-6f);
    EXPECT_TRUE(reports.empty());
}

TEST_F(ColorTest, DivisionByAColorWithAComponentNearZeroDividesNothing)
{
    for (const Color& divisor : {Color(0, 2, 2), Color(2, 0.9e-10f, 2), Color(2, 2, -0.9e-10f)}) {
        reports.clear();
        EXPECT_EQ(Color(1, 2, 3) / divisor, Color(1, 2, 3));
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0], (Report{15, 2820, "dividing by zero color"}));
    }
}

TEST(Color, PrintsItsComponentsInBrackets)
{
    std::ostringstream stream;
    stream << Color(1, 0.5f, 0.25f);
    EXPECT_EQ(stream.str(), "[1 0.5 0.25]");
}

TEST_F(ColorTest, RgbSamplesAreCopied)
{
    const float samples[] = {0.1f, 0.2f, 0.3f};
    const Color c(samples);
    EXPECT_EQ(c, Color(0.1f, 0.2f, 0.3f));
    float out[3] = {};
    c.toNsamples(out);
    EXPECT_EQ(Color(out[0], out[1], out[2]), c);
}

TEST_F(ColorTest, SamplesOfAnotherSpaceAreMixedIntoRgb)
{
    useTwoSamples();
    const float samples[] = {0.5f, 0.125f};
    EXPECT_EQ(Color(samples), Color(0.5f, 0.25f, 0.5f));
    Color c(9, 9, 9);
    c.fromNsamples(samples);
    EXPECT_EQ(c, Color(0.5f, 0.25f, 0.5f));
}

// r (1, 0) + g (0, 0.25) + b (0, 0.125)
TEST_F(ColorTest, RgbIsMixedIntoTheSamplesOfAnotherSpace)
{
    useTwoSamples();
    float out[] = {-1, -1, -1};
    Color(0.5f, 0.25f, 0.75f).toNsamples(out);
    EXPECT_EQ(out[0], 0.5f);
    EXPECT_EQ(out[1], 0.25f * 0.25f + 0.75f * 0.125f);
    EXPECT_EQ(out[2], -1);
}

TEST_F(ColorTest, TheRowsOfAFourSampleSpaceAreFourLong)
{
    const float toRgb[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    const float fromRgb[] = {1, 2, 3, 4, 10, 20, 30, 40, 100, 200, 300, 400};
    gOption->setColorSpace(4, toRgb, fromRgb);
    float out[4];
    Color(1, 2, 3).toNsamples(out);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(out[i], 321 * (i + 1)) << i;
    const float third[] = {0, 0, 1, 0};
    EXPECT_EQ(Color(third), Color(7, 8, 9));
}

TEST_F(ColorTest, CompReadsAComponent)
{
    const Color c(0.1f, 0.2f, 0.3f);
    EXPECT_EQ(c.comp(0), 0.1f);
    EXPECT_EQ(c.comp(1), 0.2f);
    EXPECT_EQ(c.comp(2), 0.3f);
    EXPECT_TRUE(reports.empty());
}

TEST_F(ColorTest, CompOutsideTheSpaceIsReportedAndReadsZero)
{
    const Color c(0.1f, 0.2f, 0.3f);
    EXPECT_EQ(c.comp(3), 0);
    EXPECT_EQ(c.comp(-1), 0);
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0], (Report{10, 2820, "color component 3 out of range"}));
    EXPECT_EQ(reports[1], (Report{10, 2820, "color component -1 out of range"}));
}

TEST_F(ColorTest, SetcompOutsideTheSpaceIsReportedAndChangesNothing)
{
    Color c(0.1f, 0.2f, 0.3f);
    c.setcomp(3, 9);
    c.setcomp(-1, 9);
    EXPECT_EQ(c, Color(0.1f, 0.2f, 0.3f));
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0], (Report{10, 2820, "color component 3 out of range"}));
}

TEST_F(ColorTest, SetcompSetsAComponent)
{
    Color c(0.1f, 0.2f, 0.3f);
    c.setcomp(0, 1);
    c.setcomp(1, 2);
    c.setcomp(2, 3);
    EXPECT_EQ(c, Color(1, 2, 3));
}

TEST_F(ColorTest, CompReadsASampleOfAnotherSpace)
{
    useTwoSamples();
    const Color c(0.5f, 0.25f, 0.75f);
    EXPECT_EQ(c.comp(0), 0.5f);
    EXPECT_EQ(c.comp(1), 0.25f * 0.25f + 0.75f * 0.125f);
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(c.comp(2), 0);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0], (Report{10, 2820, "color component 2 out of range"}));
}

TEST_F(ColorTest, SetcompGoesThroughTheSamplesOfAnotherSpace)
{
    useTwoSamples();
    Color c(0.5f, 0.25f, 0.75f);
    c.setcomp(1, 0.5f);
    EXPECT_EQ(c, Color(0.5f, 1, 2));
}

TEST(Color, InterpolatesEachComponent)
{
    const Color a(0, 0, 0), b(1, 2, 3), c(2, 4, 6), d(8, 16, 24);
    EXPECT_EQ(lerp(0.25f, b, d), Color(2.75f, 5.5f, 8.25f));
    const float e = bilerp(0.25f, 0.5f, 0, 1, 2, 8);
    EXPECT_EQ(bilerp(0.25f, 0.5f, a, b, c, d), Color(e, 2 * e, 3 * e));
    const float f = barylerp(0.25f, 0.5f, 0, 1, 2);
    EXPECT_EQ(barylerp(0.25f, 0.5f, a, b, c), Color(f, 2 * f, 3 * f));
    const Color corners[8] = {a, b, c, d, d, c, b, a};
    const float values[8] = {0, 1, 2, 8, 8, 2, 1, 0};
    const float g = trilerp(0.25f, 0.5f, 0.75f, values);
    EXPECT_EQ(trilerp(0.25f, 0.5f, 0.75f, corners), Color(g, 2 * g, 3 * g));
}

TEST(Color, SplineRunsThroughEachComponent)
{
    const Color knots[4] = {{0, 1, 5}, {1, 4, 3}, {4, 2, 2}, {9, 0, 8}};
    const float r[4] = {0, 1, 4, 9}, g[4] = {1, 4, 2, 0}, b[4] = {5, 3, 2, 8};
    EXPECT_EQ(spline(0.3f, 4, knots),
              Color(spline(0.3f, 4, r), spline(0.3f, 4, g), spline(0.3f, 4, b)));
}

TEST(Color, RandomFillsTheLastComponentFirst)
{
    Random draws = processRandom();
    const Color c = randomc();
    EXPECT_EQ(c.b, draws.unit());
    EXPECT_EQ(c.g, draws.unit());
    EXPECT_EQ(c.r, draws.unit());
}

TEST(Color, NoiseOffsetsItsSecondAndThirdComponent)
{
    const float u = 0.3f, v = 1.7f;
    EXPECT_EQ(noisec(u, v), Color(noise(u, v), noise(u + 123.456f, v + 123.456f),
                                  noise(u + 456.789f, v + 456.789f)));
    const Point p(0.3f, 1.7f, -2.6f);
    EXPECT_EQ(noisec(p), Color(noise(p), noise(p + Point(123.456f, 123.456f, 123.456f)),
                               noise(p + Point(456.789f, 456.789f, 456.789f))));
}
