#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "display/quantizer.h"
#include "support/boxes.h"

using namespace zeb;
using namespace zebtest;

namespace
{

// Where a line of red bins is cut: the ends of the lower box and of the upper one.
using Ends = std::array<int, 4>;
Ends cutLine(const Counts& counts)
{
    Line line(kRed, counts);
    Colorbox* upper = line.cut.used();
    line.cut.splitbox(upper);
    const Colorbox* lower = line.cut.used();
    return {lower->min[0], lower->max[0], upper->min[0], upper->max[0]};
}

// The axis that a box with pixels in two opposite corners is split on.
std::size_t axisOf(int red, int green, int blue)
{
    MedianCut cut;
    cut.histogram().at(0, 0, 0) = 1;
    cut.histogram().at(red, green, blue) = 1;
    // In corners of their own, so that no side of either half is drawn in but the one of the cut.
    cut.histogram().at(red, 0, 0) = 1;
    cut.histogram().at(0, green, blue) = 1;
    cut.histogram().at(0, green, 0) = 1;
    cut.histogram().at(red, 0, blue) = 1;
    cut.histogram().at(0, 0, blue) = 1;
    cut.histogram().at(red, green, 0) = 1;
    Colorbox* box = cut.used();
    box->min = {0, 0, 0};
    box->max = {static_cast<std::int16_t>(red), static_cast<std::int16_t>(green),
                static_cast<std::int16_t>(blue)};
    box->total = 8;
    cut.splitbox(box);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (box->min[axis] != 0) return axis;
    }
    return 3;
}

}  // namespace

TEST(SplitBox, CutsTheLongestAxis)
{
    EXPECT_EQ(axisOf(3, 2, 1), kRed);
    EXPECT_EQ(axisOf(3, 1, 2), kRed);
    EXPECT_EQ(axisOf(2, 3, 1), kGreen);
    EXPECT_EQ(axisOf(1, 3, 2), kGreen);
    EXPECT_EQ(axisOf(2, 1, 3), kBlue);
    EXPECT_EQ(axisOf(1, 2, 3), kBlue);
}

TEST(SplitBox, OfEqualAxesCutsRedBeforeOthers)
{
    EXPECT_EQ(axisOf(3, 3, 3), kRed);
    EXPECT_EQ(axisOf(3, 3, 1), kRed);
    EXPECT_EQ(axisOf(3, 1, 3), kRed);
}

TEST(SplitBox, OfEqualGreenAndBlueCutsGreen) { EXPECT_EQ(axisOf(1, 3, 3), kGreen); }

TEST(SplitBox, OfShortEqualAxesCutsTheLongOne)
{
    EXPECT_EQ(axisOf(1, 1, 3), kBlue);
    EXPECT_EQ(axisOf(1, 3, 1), kGreen);
}

TEST(SplitBox, AxesAreComparedByExtentNotByEnd)
{
    MedianCut cut;
    // Red ends at 31 but extends over 1, green extends over 3.
    cut.get_histogram(image({bin(30, 2, 7), bin(31, 2, 7), bin(30, 5, 7), bin(31, 5, 7)}),
                      cut.used());
    Colorbox* upper = cut.used();
    cut.splitbox(upper);
    EXPECT_EQ(bounds(*upper), std::make_pair(Axes{30, 5, 7}, Axes{31, 5, 7}));
    EXPECT_EQ(bounds(*cut.used()), std::make_pair(Axes{30, 2, 7}, Axes{31, 2, 7}));
}

TEST(SplitBox, CutsBelowTheBinThatReachesHalf)
{
    // Half of 8 is 4: 1, 3, 6, 8 reaches it in bin 2.
    EXPECT_EQ(cutLine({1, 2, 3, 2}), (Ends{0, 1, 2, 3}));
}

TEST(SplitBox, ReachingHalfExactlyIsEnough)
{
    // Half of 4 is 2: 1, 2 reaches it in bin 1.
    EXPECT_EQ(cutLine({1, 1, 1, 1}), (Ends{0, 0, 1, 3}));
}

TEST(SplitBox, HalfOfAnOddTotalIsRoundedDown)
{
    // Half of 5 is 2: 1, 2 reaches it in bin 1, where 2.5 and 3 would be reached in bin 2.
    EXPECT_EQ(cutLine({1, 1, 1, 1, 1}), (Ends{0, 0, 1, 4}));
    // Half of 7 is 3: 1, 3 reaches it in bin 1, where 4 would be reached in bin 2.
    EXPECT_EQ(cutLine({1, 2, 4}), (Ends{0, 0, 1, 2}));
}

TEST(SplitBox, AFirstBinOfHalfIsCutOffAlone)
{
    EXPECT_EQ(cutLine({4, 1, 2, 1}), (Ends{0, 0, 1, 3}));
    EXPECT_EQ(cutLine({9, 1}), (Ends{0, 0, 1, 1}));
    EXPECT_EQ(cutLine({1, 1}), (Ends{0, 0, 1, 1}));
}

TEST(SplitBox, ALastBinOfHalfIsCutOffAlone)
{
    EXPECT_EQ(cutLine({1, 1, 1, 9}), (Ends{0, 2, 3, 3}));
}

TEST(SplitBox, CutsEveryAxisAtItsMedian)
{
    for (const std::size_t axis : {kRed, kGreen, kBlue}) {
        Line line(axis, {1, 2, 3, 2});
        Colorbox* upper = line.cut.used();
        line.cut.splitbox(upper);
        EXPECT_EQ(bounds(*line.cut.used()), std::make_pair(Axes{0, 0, 0}, along(axis, 1)));
        EXPECT_EQ(bounds(*upper), std::make_pair(along(axis, 2), along(axis, 3)));
    }
}

TEST(SplitBox, CountsOverTheWholeOfTheOtherAxes)
{
    MedianCut cut;
    // By red 2, 2, 6, 2: half of 12 is 6, which 2, 4, 10 reaches in bin 12.
    for (int r = 10; r < 14; ++r) {
        cut.histogram().at(r, 5, 7) = 1;
        cut.histogram().at(r, 6, 8) = 1;
    }
    cut.histogram().at(12, 6, 7) = 4;
    Colorbox* upper = cut.used();
    upper->min = {10, 5, 7};
    upper->max = {13, 6, 8};
    upper->total = 12;
    cut.splitbox(upper);
    EXPECT_EQ(upper->min[kRed], 12);
    EXPECT_EQ(cut.used()->max[kRed], 11);
}

TEST(SplitBox, CountsNothingOutsideTheBox)
{
    Line line(kRed, {1, 1, 1, 1, 1, 1});
    line.cut.histogram().at(0, 1, 0) = 100;
    line.cut.histogram().at(0, 0, 1) = 100;
    line.cut.histogram().at(6, 0, 0) = 100;
    Colorbox* upper = line.cut.used();
    line.cut.splitbox(upper);
    // Half of 6 is 3: bin 2 reaches it.
    EXPECT_EQ(upper->min[kRed], 2);
    EXPECT_EQ(upper->total, 4);
    EXPECT_EQ(line.cut.used()->total, 2);
}

TEST(SplitBox, TheLowerHalfBecomesTheFirstUsedBox)
{
    Line line(kRed, {1, 1, 1, 1});
    Colorbox* old = line.cut.used();
    line.cut.splitbox(old);
    EXPECT_EQ(line.cut.used()->max[kRed], 0);
    EXPECT_EQ(line.cut.used()->next, old);
    EXPECT_EQ(old->min[kRed], 1);
    expectLinkedBothWays(line.cut.used());
}

TEST(SplitBox, OfALaterBoxPutsTheLowerHalfFirstToo)
{
    Line line(kRed, {1, 1, 1, 1});
    Colorbox* old = line.cut.used();
    line.cut.splitbox(old);
    const Colorbox* lowest = line.cut.used();
    line.cut.splitbox(old);
    // Of bins 1, 2, 3: half of 3 is 1, which the first reaches.
    EXPECT_EQ(forwards(line.cut.used()), (Boxes{line.cut.used(), lowest, old}));
    EXPECT_EQ(line.cut.used()->min[kRed], 1);
    EXPECT_EQ(line.cut.used()->max[kRed], 1);
    expectLinkedBothWays(line.cut.used());
}

TEST(SplitBox, TakesTheFirstFreeBox)
{
    Line line(kRed, {1, 1, 1, 1});
    const Boxes free = forwards(line.cut.free());
    line.cut.splitbox(line.cut.used());
    EXPECT_EQ(line.cut.used(), free[0]);
    EXPECT_EQ(forwards(line.cut.free()), Boxes(free.begin() + 1, free.end()));
    expectLinkedBothWays(line.cut.free());
}

TEST(SplitBox, EachHalfHasTheTotalOfItsOwnBins)
{
    Line line(kRed, {1, 2, 3, 5});
    Colorbox* upper = line.cut.used();
    line.cut.splitbox(upper);
    EXPECT_EQ(line.cut.used()->total, 3);
    EXPECT_EQ(upper->total, 8);
}

TEST(SplitBox, DrawsBothHalvesIn)
{
    MedianCut cut;
    cut.get_histogram(image({bin(0, 4, 1), bin(2, 5, 3), bin(20, 9, 6), bin(25, 7, 9)}),
                      cut.used());
    // Half of 4 is 2, which red bin 2 reaches: 0 ... 1 and 2 ... 25.
    Colorbox* upper = cut.used();
    cut.splitbox(upper);
    EXPECT_EQ(bounds(*cut.used()), std::make_pair(Axes{0, 4, 1}, Axes{0, 4, 1}));
    EXPECT_EQ(bounds(*upper), std::make_pair(Axes{2, 5, 3}, Axes{25, 9, 9}));
}

namespace
{

std::pair<Axes, Axes> shrunk(const std::vector<Axes>& filled, const Axes& min, const Axes& max)
{
    MedianCut cut;
    for (const Axes& at : filled) cut.histogram().at(at[0], at[1], at[2]) = 1;
    Colorbox box;
    box.min = min;
    box.max = max;
    cut.shrinkbox(&box);
    return bounds(box);
}

}  // namespace

TEST(ShrinkBox, DrawsBothEndsOfEveryAxisIn)
{
    EXPECT_EQ(shrunk({{3, 9, 11}, {5, 7, 14}}, {0, 0, 0}, {31, 31, 31}),
              std::make_pair(Axes{3, 7, 11}, Axes{5, 9, 14}));
}

TEST(ShrinkBox, LeavesATightBoxAlone)
{
    EXPECT_EQ(shrunk({{3, 7, 11}, {5, 9, 14}}, {3, 7, 11}, {5, 9, 14}),
              std::make_pair(Axes{3, 7, 11}, Axes{5, 9, 14}));
}

TEST(ShrinkBox, OfOneFilledBinIsThatBin)
{
    EXPECT_EQ(shrunk({{8, 9, 10}}, {0, 0, 0}, {31, 31, 31}),
              std::make_pair(Axes{8, 9, 10}, Axes{8, 9, 10}));
    EXPECT_EQ(shrunk({{0, 0, 0}}, {0, 0, 0}, {31, 31, 31}),
              std::make_pair(Axes{0, 0, 0}, Axes{0, 0, 0}));
    EXPECT_EQ(shrunk({{31, 31, 31}}, {0, 0, 0}, {31, 31, 31}),
              std::make_pair(Axes{31, 31, 31}, Axes{31, 31, 31}));
}

TEST(ShrinkBox, KeepsGapsInside)
{
    EXPECT_EQ(shrunk({{2, 0, 0}, {9, 0, 0}}, {0, 0, 0}, {12, 0, 0}),
              std::make_pair(Axes{2, 0, 0}, Axes{9, 0, 0}));
}

TEST(ShrinkBox, SeesNothingOutsideTheOtherAxes)
{
    // Red 1 and 9 are filled too, but beside the box in green or blue.
    EXPECT_EQ(shrunk({{1, 6, 4}, {9, 4, 1}, {3, 4, 4}, {5, 5, 5}}, {0, 3, 3}, {10, 5, 5}),
              std::make_pair(Axes{3, 4, 4}, Axes{5, 5, 5}));
}

TEST(ShrinkBox, OfNoPixelStopsAtTheMaxima)
{
    EXPECT_EQ(shrunk({}, {2, 3, 4}, {5, 6, 7}), std::make_pair(Axes{5, 6, 7}, Axes{5, 6, 7}));
}

TEST(ShrinkBox, LeavesAnAxisOfOneBinAlone)
{
    EXPECT_EQ(shrunk({{9, 4, 9}}, {2, 3, 4}, {2, 5, 4}),
              std::make_pair(Axes{2, 5, 4}, Axes{2, 5, 4}));
}
