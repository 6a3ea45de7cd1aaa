// Exposure, quantization, dither and adaptive sampling.

#include <array>
#include <limits>
#include <map>
#include <set>
#include <utility>

#include "support/scene.h"

namespace zebtest
{

namespace
{

class Output : public RasterTest
{
};

int gSamplesSeen;
float countingFilter(float, float, float, float)
{
    ++gSamplesSeen;
    return 1;
}

}  // namespace

TEST_F(Output, GainAndGammaShapeColourButNotAlpha)
{
    raster(8, 8);
    zebColorGain(2);
    zebColorGamma(2.2f);
    beginFlat();
    color(0.1f, 0.3f, 0.9f);
    opacity(1, 1, 1);
    rectangle(0, 0, 8, 8, 0.5f);
    zebSceneEnd();
    EXPECT_NEAR(red(4, 4), std::pow(0.2, 1 / 2.2), 1e-5);
    EXPECT_NEAR(green(4, 4), std::pow(0.6, 1 / 2.2), 1e-5);
    EXPECT_NEAR(blue(4, 4), std::pow(1.8, 1 / 2.2), 1e-5);
    EXPECT_EQ(alpha(4, 4), 1);
}

TEST_F(Output, FloatsPassAsTheyWereComputedUnlessQuirksAreKept)
{
    for (const short quirks : {0, 1}) {
        zebReset();
        raster(24, 8);
        zebQuirks(quirks);
        zebFilter(ZEB_FILTER_SINC);
        zebFilterWidth(4, 4);
        zebColorGain(3);
        beginFlat();
        color(0.9f, 0.9f, 0.9f);
        rectangle(-4, -4, 12, 12, 0.5f);
        zebSceneEnd();
        const auto [least, most] = [this] {
            std::pair<float, float> range{1, 0};
            for (long x = 0; x < 24; ++x) {
                range = {std::min(range.first, alpha(x, 4)), std::max(range.second, alpha(x, 4))};
                EXPECT_EQ(alpha(x, 4) < 0, red(x, 4) < 0);
            }
            return range;
        }();
        if (quirks) {
            EXPECT_EQ(least, 0);
            EXPECT_EQ(most, 1);
            EXPECT_EQ(red(4, 4), 1);
        } else {
            // The sinc's integral overshoots by 9 percent at most, and as far below 0.
            EXPECT_LT(least, -0.02f);
            EXPECT_GT(most, 1.02f);
            EXPECT_NEAR(red(4, 4), 2.7 * alpha(4, 4), 1e-5);
        }
    }
}

TEST_F(Output, IntegersEndAtTheirBoundsWithMendedQuirksToo)
{
    raster(8, 8);
    zebColorQuantize(100, 0, 100);
    zebColorJitter(0);
    zebColorGain(3);
    beginFlat();
    color(0.9f, -0.9f, 0.2f);
    rectangle(-2, -2, 10, 10, 0.5f);
    zebSceneEnd();
    EXPECT_EQ(picture.word(4, 4, 0), 100u);
    EXPECT_EQ(picture.word(4, 4, 1), 0u);
    EXPECT_EQ(picture.word(4, 4, 2), 60u);
}

// Weights without end, and colours beyond what a float can hold.
TEST_F(Output, FloatsAreNumbersWhateverTheHostMakesOfThem)
{
    for (const short quirks : {0, 1}) {
        for (const bool filter : {false, true}) {
            zebReset();
            raster(8, 8);
            zebQuirks(quirks);
            zebColorGain(3e38f);
            if (filter) {
                zebCustomFilter([](float dx, float, float, float) {
                    return dx > 0 ? std::numeric_limits<float>::infinity() : 1;
                });
            }
            beginFlat();
            color(3e38f, -3e38f, 0);
            rectangle(0, 0, 4, 8, 0.5f);
            zebSceneEnd();
            for (long x = 0; x < 8; ++x) {
                for (int c = 0; c < 5; ++c) EXPECT_TRUE(std::isfinite(picture.value(x, 4, c)));
            }
            if (!filter && !quirks) {
                EXPECT_GT(red(1, 4), 3e38f);
            }
        }
    }
}

// The weights of a pixel may sum up to less than 0.
TEST_F(Output, NothingIsNoNegativeZero)
{
    raster(40, 40);
    zebFilter(ZEB_FILTER_SINC);
    zebFilterWidth(4, 4);
    zebSampleUniform(1, 1);
    zebSampleJitter(4);
    beginFlat();
    // In the boxes of many buckets, of which only samples know that nothing is there.
    polygon({{0, 0, 0.5f}, {40, 39, 0.5f}, {39, 40, 0.5f}});
    zebSceneEnd();
    EXPECT_GT(picture.sum(3), 0);
    for (const std::uint32_t word : picture.words()) ASSERT_NE(word, 0x80000000u);
}

TEST_F(Output, QuantizationRoundsAndClamps)
{
    raster(8, 8);
    zebColorQuantize(100, 10, 60);
    zebColorJitter(0);
    zebDepthQuantize(1000, 0, 1000);
    zebDepthJitter(0);
    beginFlat();
    color(0.05f, 0.255f, 0.7f);
    rectangle(0, 0, 8, 8, 0.4321f);
    zebSceneEnd();
    EXPECT_EQ(picture.word(4, 4, 0), 10u);
    EXPECT_NEAR(picture.word(4, 4, 1), 25.5, 0.5);
    EXPECT_EQ(picture.word(4, 4, 2), 60u);
    EXPECT_EQ(picture.word(4, 4, 3), 60u) << "alpha is quantized as colour";
    EXPECT_EQ(picture.word(4, 4, 4), 432u);
}

TEST_F(Output, DepthHasAQuantizationOfItsOwn)
{
    const struct {
        float depth;
        std::uint32_t word;
    } cases[] = {{0.1f, 20}, {0.4321f, 43}, {0.9f, 70}};
    for (const auto& c : cases) {
        zebReset();
        raster(4, 4);
        zebDepthQuantize(100, 20, 70);
        beginFlat();
        color(0.25f, 0.25f, 0.25f);
        rectangle(0, 0, 4, 4, c.depth);
        zebSceneEnd();
        EXPECT_EQ(picture.word(2, 2, 4), c.word);
        EXPECT_EQ(red(2, 2), 0.25f) << "colours are floats";
    }
}

// As below, of 30.3 steps.
TEST_F(Output, DepthHasADitherOfItsOwn)
{
    for (const float amplitude : {0.0f, 0.5f}) {
        zebReset();
        raster(100, 100);
        zebColorQuantize(100, 0, 100);
        zebColorJitter(0.5f - amplitude);
        zebDepthQuantize(100, 0, 100);
        zebDepthJitter(amplitude);
        beginFlat();
        color(0.303f, 0.303f, 0.303f);
        rectangle(-5, -5, 105, 105, 0.303f);
        zebSceneEnd();
        int colors = 0, depths = 0;
        for (long y = 0; y < 100; ++y) {
            for (long x = 0; x < 100; ++x) {
                colors += picture.word(x, y, 0) == 31;
                depths += picture.word(x, y, 4) == 31;
            }
        }
        EXPECT_NEAR(amplitude ? depths : colors, 3000, 200);
        EXPECT_EQ(amplitude ? colors : depths, 0);
    }
}

TEST_F(Output, DitherIsUniformWithTheAmplitudeGiven)
{
    // 100.3 steps with amplitude 0.5: the value rounds to 100 unless the draw exceeds 0.2 of
    // -0.5 ... 0.5, which 30 percent do.
    raster(200, 200);
    zebColorQuantize(255, 0, 255);
    zebColorJitter(0.5f);
    beginFlat();
    const float c = 100.3f / 255;
    color(c, c, c);
    rectangle(-5, -5, 205, 205, 0.5f);
    zebSceneEnd();
    std::map<std::uint32_t, int> histogram;
    int differing = 0;
    for (long y = 0; y < 200; ++y) {
        for (long x = 0; x < 200; ++x) {
            ++histogram[picture.word(x, y, 0)];
            differing += picture.word(x, y, 0) != picture.word(x, y, 1);
        }
    }
    ASSERT_EQ(histogram.size(), 2u);
    EXPECT_NEAR(histogram[101] / 40000.0, 0.3, 0.01);
    EXPECT_NEAR(differing / 40000.0, 2 * 0.3 * 0.7, 0.015) << "channels draw for themselves";
}

TEST_F(Output, SamplesDecideTheWordsOfAPixel)
{
    const struct {
        short samples;
        int count;
    } cases[] = {{ZEB_SAMPLES_RGB, 3},  {ZEB_SAMPLES_ALPHA, 1}, {ZEB_SAMPLES_DEPTH, 1},
                 {ZEB_SAMPLES_RGBA, 4}, {ZEB_SAMPLES_RGBZ, 4},  {0x306, 2},
                 {ZEB_SAMPLES_RGBAZ, 5}};
    for (const auto& c : cases) {
        zebReset();
        raster(4, 4);
        zebOutputSamples(c.samples);
        Picture words(c.count);
        words.attachFloat();
        beginFlat();
        color(0.25f, 0.5f, 0.75f);
        rectangle(0, 0, 4, 4, 0.125f);
        zebSceneEnd();
        std::vector<float> expected;
        if (c.samples & 1) expected = {0.25f, 0.5f, 0.75f};
        if (c.samples & 2) expected.push_back(1);
        if (c.samples & 4) expected.push_back(0.125f);
        for (int k = 0; k < c.count; ++k)
            EXPECT_EQ(words.value(2, 2, k), expected[static_cast<std::size_t>(k)]);
    }
}

TEST_F(Output, AdaptiveSamplingStopsAtEightInFlatAreasAndAtNinetySixInNoise)
{
    // Each pixel is filtered from its own samples alone, so the filter's calls count them: one
    // more call a pixel would show as a ninth.
    for (const bool noisy : {false, true}) {
        zebReset();
        raster(12, 12);
        zebSampleAdaptive(1e-6f);
        zebFilterWidth(1, 1);
        zebCustomFilter(countingFilter);
        beginFlat();
        zebShadingRate(0.01f);
        const int stripes = noisy ? 240 : 1;
        for (int k = 0; k < stripes; ++k) {
            const float w = 12.0f / static_cast<float>(stripes), x = w * static_cast<float>(k);
            color(std::fmod(0.618f * static_cast<float>(k), 1.0f), 1, 1);
            rectangle(x, 0, x + w, 12, 0.5f);
        }
        gSamplesSeen = 0;
        zebSceneEnd();
        EXPECT_EQ(gSamplesSeen, 12 * 12 * (noisy ? 96 : 8));
    }
}

TEST_F(Output, AdaptiveCoverageIsThatOfUniformSampling)
{
    raster(48, 48);
    zebSampleAdaptive(0.0005f);
    beginFlat();
    polygon({{5.3f, 4.1f, 0.5f}, {42.2f, 11.7f, 0.5f}, {20.9f, 44.4f, 0.5f}});
    zebSceneEnd();
    const double area = 0.5 * std::fabs((42.2 - 5.3) * (44.4 - 4.1) - (20.9 - 5.3) * (11.7 - 4.1));
    EXPECT_NEAR(picture.sum(3), area, 0.01 * area);
}

TEST_F(Output, ACustomFilterReceivesOffsetsAndWidths)
{
    static float widest;
    static bool widthsRight;
    widest = 0;
    widthsRight = true;
    raster(8, 8);
    zebFilterWidth(2, 3);
    zebCustomFilter([](float dx, float dy, float xw, float yw) {
        widest = std::max(widest, std::max(std::fabs(dx) / 2, std::fabs(dy) / 3));
        widthsRight &= xw == 2 && yw == 3;
        return 1.0f;
    });
    beginFlat();
    rectangle(0, 0, 8, 8, 0.5f);
    zebSceneEnd();
    EXPECT_TRUE(widthsRight);
    EXPECT_GT(widest, 0.4f);
    EXPECT_LT(widest, 0.75f);
    EXPECT_EQ(alpha(4, 4), 1);
}

TEST_F(Output, EachAxisHasItsSamplingRate)
{
    static std::set<float> columns, rows;
    columns.clear();
    rows.clear();
    raster(1, 1);
    zebSampleUniform(3, 5);
    zebSampleJitter(0);
    zebFilterWidth(1, 1);
    zebCustomFilter([](float dx, float dy, float, float) {
        columns.insert(dx);
        rows.insert(dy);
        return 1.0f;
    });
    beginFlat();
    zebSceneEnd();
    ASSERT_EQ(columns.size(), 3u);
    EXPECT_FLOAT_EQ(*columns.begin(), -1 / 3.0f);
    ASSERT_EQ(rows.size(), 5u);
    EXPECT_FLOAT_EQ(*rows.begin(), -2 / 5.0f);
}

TEST_F(Output, TheDeviceIsToldSizeAndOrigin)
{
    using Told = std::array<long, 4>;
    static Told told;
    ZebDisplay device{};
    device.open = [](void*, const char*, long xres, long yres, long x, long y) {
        told = {x, xres, y, yres};
    };
    zebCustomDisplay(&device);
    zebRasterViewport(-3, 8, 5, 6);
    zebSceneBegin();
    zebSceneEnd();
    EXPECT_EQ(told, (Told{-3, 8, 5, 6}));
    zebRasterViewport(-3, -8, 5, -6);
    zebImageCrop(0, 0.01f, 0, 0.01f);
    zebSceneBegin();
    zebSceneEnd();
    EXPECT_EQ(told, (Told{-3, 640, 5, 480})) << "a negative size is none";
    EXPECT_TRUE(reports.empty());
}

TEST_F(Output, ACropKeepsItsPartOfEachAxis)
{
    static std::set<long> columns, rows;
    columns.clear();
    rows.clear();
    ZebDisplay device{};
    device.span = [](void*, long x0, long x1, long y, const unsigned int*) {
        columns.insert({x0, x1});
        rows.insert(y);
    };
    raster(16, 32);
    zebCustomDisplay(&device);
    zebImageCrop(0.125f, 0.75f, 0.25f, 0.875f);
    zebSceneBegin();
    zebSceneEnd();
    EXPECT_EQ(*columns.begin(), 2);
    EXPECT_EQ(*columns.rbegin(), 11);
    EXPECT_EQ(*rows.begin(), 8);
    EXPECT_EQ(*rows.rbegin(), 27);
}

TEST_F(Output, TheSameCallsGiveTheSamePictureWhateverTheHostsFloatModes)
{
    const auto render = [this] {
        zebReset();
        raster(40, 40);
        zebColorQuantize(255, 0, 255);
        beginFlat();
        color(0.3f, 0.6f, 0.9f);
        polygon({{5.3f, 4.1f, 0.3f}, {38.2f, 11.7f, 0.5f}, {20.9f, 37.4f, 0.7f}});
        zebSceneEnd();
        return picture.words();
    };
    const std::vector<std::uint32_t> first = render();
    EXPECT_EQ(render(), first);
#if defined(__SSE2__)
    const unsigned modes = __builtin_ia32_stmxcsr();
    const unsigned odd = modes | 0x8040u | 0x6000u;  // flush to zero, denormals are zero, truncate
    __builtin_ia32_ldmxcsr(odd);
    const std::vector<std::uint32_t> second = render();
    const unsigned after = __builtin_ia32_stmxcsr();
    __builtin_ia32_ldmxcsr(modes);
    EXPECT_EQ(after & ~0x3Fu, odd & ~0x3Fu) << "and the host's modes are its own again";
    EXPECT_EQ(second, first);
#endif
}

}  // namespace zebtest
