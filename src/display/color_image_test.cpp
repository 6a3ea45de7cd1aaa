#include "display/color_image.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <vector>

using namespace zeb;

namespace
{

enum Samples { kRgb = 1, kAlpha = 2, kDepth = 4 };

// Integer words, of which the given one stands for white.
PixelFormat format(int samples, long one = 255, bool quirks = true)
{
    PixelFormat all{Option()};
    all.rgb = samples & kRgb;
    all.alpha = samples & kAlpha;
    all.depth = samples & kDepth;
    all.color = all.depthQuantizer = {one, 0, one, 0};
    all.quirks = quirks;
    return all;
}

PixelFormat floatFormat(int samples)
{
    PixelFormat all = format(samples);
    all.color = all.depthQuantizer = {0, 0, 0, 0};
    return all;
}

ScreenColor color(const PixelFormat& format, const std::vector<std::uint32_t>& words)
{
    return screenColor(format, words.data());
}

ScreenColor color(const PixelFormat& format, const std::vector<float>& values)
{
    std::vector<std::uint32_t> words;
    for (const float value : values) words.push_back(std::bit_cast<std::uint32_t>(value));
    return screenColor(format, words.data());
}

using Words = std::vector<std::uint32_t>;
using Floats = std::vector<float>;

}  // namespace

TEST(ColorImage, IsBlackAtFirst)
{
    const ColorImage image(4, 3);
    EXPECT_EQ(image.pixels, std::vector<ScreenColor>(12, 0));
}

TEST(ColorImage, RowsFollowEachOther)
{
    ColorImage image(4, 3);
    EXPECT_EQ(image.row(0), image.pixels.data());
    EXPECT_EQ(image.row(2), image.pixels.data() + 8);
}

TEST(ScreenColor, HasRedInTheLowestByteThenGreenThenBlue)
{
    EXPECT_EQ(color(format(kRgb), Words{0x12, 0x34, 0x56}), 0x563412u);
    EXPECT_EQ(color(format(kRgb), Words{255, 255, 255}), 0xFFFFFFu);
}

TEST(ScreenColor, OfRedAndBlueTakesTheLowByte)
{
    EXPECT_EQ(color(format(kRgb), Words{0xABCDEF12, 0, 0}), 0x12u);
    EXPECT_EQ(color(format(kRgb), Words{0, 0, 0xABCDEF12}), 0x120000u);
}

TEST(ScreenColor, OfGreenTakesTwoBytesOfWhichTheUpperReachesBlue)
{
    EXPECT_EQ(color(format(kRgb), Words{0, 0xABCD3456, 0}), 0x345600u);
    EXPECT_EQ(color(format(kRgb), Words{0x01, 0x0110, 0x80}), 0x811001u);
}

TEST(ScreenColor, BitsOfGreenAndBlueThatMeetAreNotAdded)
{
    EXPECT_EQ(color(format(kRgb), Words{0, 0x0300, 0x05}), 0x070000u);
    EXPECT_EQ(color(format(kRgb), Words{0, 0xFF00, 0xFF}), 0xFF0000u);
}

TEST(ScreenColor, OfRgbIgnoresAlphaAndDepth)
{
    EXPECT_EQ(color(format(kRgb | kAlpha | kDepth), Words{1, 2, 3, 0xFF, 0xFF}), 0x030201u);
}

TEST(ScreenColor, OfAlphaAloneIsGrey)
{
    EXPECT_EQ(color(format(kAlpha), Words{0x7B}), 0x7B7B7Bu);
    EXPECT_EQ(color(format(kAlpha), Words{0xABCDEF12}), 0x121212u) << "the low byte";
}

TEST(ScreenColor, OfDepthAloneIsGrey)
{
    EXPECT_EQ(color(format(kDepth), Words{0x7B}), 0x7B7B7Bu);
    EXPECT_EQ(color(format(kDepth), Words{0xABCDEF12}), 0x121212u) << "the low byte";
}

TEST(ScreenColor, OfAlphaAndDepthIsAlpha)
{
    EXPECT_EQ(color(format(kAlpha | kDepth), Words{0x7B, 0x21}), 0x7B7B7Bu);
}

TEST(ScreenColor, OfFloatsIsScaledTo255)
{
    EXPECT_EQ(color(floatFormat(kRgb), Floats{0, 1, 0}), 0x00FF00u);
    EXPECT_EQ(color(floatFormat(kRgb), Floats{0.2f, 0.4f, 0.6f}), 0x996633u);
}

TEST(ScreenColor, OfFloatsIsClamped)
{
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(color(floatFormat(kRgb), Floats{-0.5f, 1.5f, -1e30f}), 0x00FF00u);
    EXPECT_EQ(color(floatFormat(kRgb), Floats{1e38f, -infinity, infinity}), 0xFF00FFu);
}

TEST(ScreenColor, OfNoNumberIsBlack)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(color(floatFormat(kRgb), Floats{nan, 1, -nan}), 0x00FF00u);
    EXPECT_EQ(color(floatFormat(kAlpha), Floats{nan}), 0u);
}

TEST(ScreenColor, OfFloatAlphaOrDepthAloneIsGrey)
{
    EXPECT_EQ(color(floatFormat(kAlpha), Floats{0.2f}), 0x333333u);
    EXPECT_EQ(color(floatFormat(kDepth), Floats{0.6f}), 0x999999u);
    EXPECT_EQ(color(floatFormat(kDepth), Floats{1e38f}), 0xFFFFFFu);
    EXPECT_EQ(color(floatFormat(kAlpha | kDepth), Floats{0.2f, 0.6f}), 0x333333u);
}

TEST(ScreenColor, WordsAreFloatsIfOneIsBelowOne)
{
    PixelFormat negative = floatFormat(kRgb);
    negative.color.one = -5;
    EXPECT_EQ(color(negative, Floats{0.2f, 0.4f, 0.6f}), 0x996633u);
    EXPECT_EQ(color(format(kRgb, 1), Words{1, 0, 1}), 0x010001u);
}

TEST(ScreenColor, OfDepthGoesByTheQuantizerOfDepth)
{
    PixelFormat mixed = format(kDepth);
    mixed.depthQuantizer = {0, 0, 0, 0};
    EXPECT_EQ(color(mixed, Floats{0.2f}), 0x333333u);
    mixed = floatFormat(kDepth);
    mixed.depthQuantizer = {255, 0, 255, 0};
    EXPECT_EQ(color(mixed, Words{0x7B}), 0x7B7B7Bu);
}

TEST(ScreenColor, OfAlphaGoesByTheQuantizerOfColor)
{
    for (const int samples : {+kAlpha, kAlpha | kDepth}) {
        PixelFormat mixed = format(samples);
        mixed.depthQuantizer = {0, 0, 0, 0};
        EXPECT_EQ(color(mixed, Words{0x7B, 0}), 0x7B7B7Bu);
        mixed = floatFormat(samples);
        mixed.depthQuantizer = {255, 0, 255, 0};
        EXPECT_EQ(color(mixed, Floats{0.2f, 0}), 0x333333u);
    }
}

TEST(ScreenColor, OfWideWordsIsTheirLowByte)
{
    EXPECT_EQ(color(format(kRgb, 65535), Words{0xFF01, 0x02, 0xFF03}), 0x030201u);
    EXPECT_EQ(color(format(kAlpha, 65535), Words{0xFF01}), 0x010101u);
}

TEST(ScreenColor, OfWideWordsIsScaledWithMendedQuirks)
{
    // 65535 is 255 * 257.
    const PixelFormat wide = format(kRgb, 65535, false);
    EXPECT_EQ(color(wide, Words{65535, 0, 257 * 16}), 0x1000FFu);
    EXPECT_EQ(color(wide, Words{257, 257 * 100, 257 * 254}), 0xFE6401u);
    EXPECT_EQ(color(format(kRgb, 510, false), Words{510, 20, 256}), 0x800AFFu);
}

TEST(ScreenColor, OfWideGreyIsScaledWithMendedQuirks)
{
    EXPECT_EQ(color(format(kAlpha, 65535, false), Words{257 * 16}), 0x101010u);
    EXPECT_EQ(color(format(kDepth, 65535, false), Words{257 * 16}), 0x101010u);
}

TEST(ScreenColor, OfBytesIsTheSameWithMendedQuirks)
{
    EXPECT_EQ(color(format(kRgb, 255, false), Words{0x12, 0x34, 0x56}), 0x563412u);
    EXPECT_EQ(color(format(kRgb, 100, false), Words{100, 50, 7}), 0x073264u) << "is not scaled up";
}
