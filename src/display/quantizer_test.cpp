#include "display/quantizer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "support/boxes.h"

using namespace zeb;
using namespace zebtest;

namespace
{

std::uint64_t sum(const Histogram& histogram)
{
    std::uint64_t total = 0;
    for (int r = 0; r < 32; ++r) {
        for (int g = 0; g < 32; ++g) {
            for (int b = 0; b < 32; ++b) total += histogram.at(r, g, b);
        }
    }
    return total;
}

}  // namespace

TEST(MedianCut, StartsWithOneUsedBoxAnd255FreeOnes)
{
    const MedianCut cut;
    EXPECT_EQ(forwards(cut.used()).size(), 1u);
    EXPECT_EQ(forwards(cut.free()).size(), 255u);
}

TEST(MedianCut, ListsAreLinkedBothWays)
{
    const MedianCut cut;
    expectLinkedBothWays(cut.used());
    expectLinkedBothWays(cut.free());
}

TEST(MedianCut, NoBoxIsBothUsedAndFree)
{
    const MedianCut cut;
    const Boxes free = forwards(cut.free());
    EXPECT_EQ(std::count(free.begin(), free.end(), cut.used()), 0);
}

TEST(MedianCut, HistogramStartsAtZero)
{
    MedianCut cut;
    EXPECT_EQ(sum(cut.histogram()), 0u);
}

TEST(GetHistogram, CountsByTheUpperFiveBitsOfEachChannel)
{
    MedianCut cut;
    // 0x07 and 0x00 share a bin; 0x08 begins the next.
    cut.get_histogram(image({0x00F80F07, 0x00FF0800, 0x00F70808}), cut.used());
    EXPECT_EQ(cut.histogram().at(0, 1, 31), 2u);
    EXPECT_EQ(cut.histogram().at(1, 1, 30), 1u);
    EXPECT_EQ(sum(cut.histogram()), 3u);
}

TEST(GetHistogram, LooksAtNoBitAboveBlue)
{
    MedianCut cut;
    cut.get_histogram(image({0xFF000000}), cut.used());
    EXPECT_EQ(cut.histogram().at(0, 0, 0), 1u);
}

TEST(GetHistogram, BoundsAreThoseOfTheColors)
{
    MedianCut cut;
    cut.get_histogram(image({bin(3, 20, 9), bin(5, 10, 9), bin(4, 31, 0)}), cut.used());
    EXPECT_EQ(bounds(*cut.used()), std::make_pair(Axes{3, 10, 0}, Axes{5, 31, 9}));
}

TEST(GetHistogram, BoundsReachFirstAndLastBin)
{
    MedianCut cut;
    cut.get_histogram(image({0x00000000, 0x00FFFFFF}), cut.used());
    EXPECT_EQ(bounds(*cut.used()), std::make_pair(Axes{0, 0, 0}, Axes{31, 31, 31}));
}

TEST(GetHistogram, TotalIsWidthTimesHeight)
{
    MedianCut cut;
    cut.get_histogram(ColorImage(7, 5), cut.used());
    EXPECT_EQ(cut.used()->total, 35);
    EXPECT_EQ(cut.histogram().at(0, 0, 0), 35u);
}

TEST(GetHistogram, OfNothingIsABoxFrom999ToMinus1)
{
    MedianCut cut;
    cut.get_histogram(ColorImage(0, 0), cut.used());
    EXPECT_EQ(bounds(*cut.used()), std::make_pair(Axes{999, 999, 999}, Axes{-1, -1, -1}));
    EXPECT_EQ(cut.used()->total, 0);
    EXPECT_EQ(cut.largest_box(), nullptr);
}

namespace
{

// Three used boxes of given totals, each of two bins, in list order.
struct Three {
    Line line{kRed, {1, 1, 1, 1, 1, 1}};
    std::vector<Colorbox*> boxes;

    Three(std::int64_t first, std::int64_t second, std::int64_t third)
    {
        line.cut.splitbox(line.cut.used());
        line.cut.splitbox(line.cut.used()->next);
        for (Colorbox* box = line.cut.used(); box; box = box->next) {
            box->min = {2, 3, 4};
            box->max = {3, 3, 4};
            boxes.push_back(box);
        }
        boxes.at(0)->total = first;
        boxes.at(1)->total = second;
        boxes.at(2)->total = third;
    }
};

}  // namespace

TEST(LargestBox, HasTheMostPixels)
{
    Three first(9, 5, 7), second(5, 9, 7), third(5, 7, 9);
    EXPECT_EQ(first.line.cut.largest_box(), first.boxes[0]);
    EXPECT_EQ(second.line.cut.largest_box(), second.boxes[1]);
    EXPECT_EQ(third.line.cut.largest_box(), third.boxes[2]);
}

TEST(LargestBox, OfEqualsIsTheFirstInTheList)
{
    Three all(6, 6, 6), last(5, 6, 6);
    EXPECT_EQ(all.line.cut.largest_box(), all.boxes[0]);
    EXPECT_EQ(last.line.cut.largest_box(), last.boxes[1]);
}

TEST(LargestBox, IsNeverOneOfASingleBin)
{
    Three three(5, 9, 7);
    three.boxes[1]->max = three.boxes[1]->min;
    EXPECT_EQ(three.line.cut.largest_box(), three.boxes[2]);
}

TEST(LargestBox, MayExtendOnAnyAxis)
{
    for (const std::size_t axis : {kRed, kGreen, kBlue}) {
        MedianCut cut;
        cut.used()->min = {4, 4, 4};
        cut.used()->max = {4, 4, 4};
        cut.used()->max[axis] = 5;
        cut.used()->total = 2;
        EXPECT_EQ(cut.largest_box(), cut.used()) << axis;
    }
}

TEST(LargestBox, MayHoldNoPixel)
{
    MedianCut cut;
    cut.used()->min = {4, 4, 4};
    cut.used()->max = {4, 5, 4};
    cut.used()->total = 0;
    EXPECT_EQ(cut.largest_box(), cut.used());
}

TEST(LargestBox, IsNoneIfNoneCanBeSplit)
{
    Three three(5, 9, 7);
    for (Colorbox* box : three.boxes) box->max = box->min;
    EXPECT_EQ(three.line.cut.largest_box(), nullptr);
}

TEST(SplitAll, CutsUntilEveryBoxIsOneBin)
{
    MedianCut cut;
    cut.get_histogram(image({bin(1, 2, 3), bin(9, 2, 3), bin(9, 30, 3)}), cut.used());
    cut.splitAll();
    const Boxes boxes = forwards(cut.used());
    EXPECT_EQ(boxes.size(), 3u);
    for (const Colorbox* box : boxes) EXPECT_EQ(box->min, box->max);
}

TEST(SplitAll, EmptiesTheFreeListWhenNoneCanBeSplit)
{
    MedianCut cut;
    cut.get_histogram(image({bin(1, 2, 3)}), cut.used());
    cut.splitAll();
    EXPECT_EQ(forwards(cut.used()).size(), 1u);
    EXPECT_EQ(cut.free(), nullptr);
}

TEST(SplitAll, CutsTheLargestFirst)
{
    MedianCut cut;
    // Red 0, 1 | 2, 3 after the first cut at half of 12, with 5 and 7 pixels.
    std::vector<ScreenColor> colors;
    for (const auto& [red, times] : {std::pair{0u, 4}, {1u, 1}, {2u, 1}, {3u, 6}})
        colors.insert(colors.end(), static_cast<std::size_t>(times), bin(red, 0, 0));
    cut.get_histogram(image(colors), cut.used());
    cut.splitAll();
    // 4, 5, 6 reaches 6 in bin 2. Bins 2 and 3 are cut next, and put bin 2 before bin 0.
    std::vector<int> reds;
    for (const Colorbox* box : forwards(cut.used())) reds.push_back(box->min[kRed]);
    EXPECT_EQ(reds, (std::vector<int>{0, 2, 1, 3}));
}

TEST(ColorMap, EntriesAreTheCentresOfBoxes)
{
    MedianCut cut;
    cut.used()->min = {0, 3, 31};
    cut.used()->max = {31, 4, 31};
    const ColorMap map = cut.colorMap();
    ASSERT_EQ(map.size(), 1u);
    EXPECT_EQ(map[0].red, 124) << "31 * 8 / 2";
    EXPECT_EQ(map[0].green, 28) << "7 * 8 / 2";
    EXPECT_EQ(map[0].blue, 248) << "62 * 8 / 2";
}

TEST(ColorMap, FlagsAreAlwaysFour)
{
    Line line(kRed, {1, 1, 1, 1});
    line.cut.splitAll();
    const ColorMap map = line.cut.colorMap();
    ASSERT_EQ(map.size(), 4u);
    for (const PaletteEntry& entry : map) EXPECT_EQ(entry.flags, 4);
}

TEST(ColorMap, RunsInTheOrderOfTheUsedBoxes)
{
    Line line(kGreen, {1, 1, 1, 1});
    line.cut.splitbox(line.cut.used());
    line.cut.splitbox(line.cut.used()->next);
    // 0 was cut off first, then 1; the upper part stayed last: 2 ... 3.
    const ColorMap map = line.cut.colorMap();
    ASSERT_EQ(map.size(), 3u);
    EXPECT_EQ(map[0].green, 8);
    EXPECT_EQ(map[1].green, 0);
    EXPECT_EQ(map[2].green, 20);
}
