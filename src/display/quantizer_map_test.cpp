#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "display/quantizer.h"

using namespace zeb;

namespace
{

// Index and distance.
using Candidates = std::vector<std::pair<int, long>>;

PaletteEntry entry(int red, int green, int blue)
{
    return {static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green),
            static_cast<std::uint8_t>(blue)};
}

Candidates cell(const ColorMap& map, int r, int g, int b)
{
    Candidates all;
    for (const Colorcell::Candidate& candidate : create_colorcell(map, r, g, b).candidates)
        all.emplace_back(candidate.index, candidate.distance);
    return all;
}

std::vector<int> indices(const Candidates& candidates)
{
    std::vector<int> all;
    for (const auto& [index, distance] : candidates) all.push_back(index);
    return all;
}

struct Bin {
    int r, g, b;
};

// The bins of a picture, mapped.
Histogram mapped(const std::vector<Bin>& filled, const ColorMap& map)
{
    Histogram histogram;
    for (const Bin& bin : filled) ++histogram.at(bin.r, bin.g, bin.b);
    map_colortable(histogram, map);
    return histogram;
}

}  // namespace

TEST(CreateColorcell, EntriesOfTheSameUpperTwoBitsAreAtDistanceZero)
{
    EXPECT_EQ(cell({entry(0, 0, 0), entry(63, 63, 63), entry(31, 40, 5)}, 8, 16, 24),
              (Candidates{{0, 0}, {1, 0}, {2, 0}}));
    EXPECT_EQ(cell({entry(192, 64, 128), entry(255, 127, 191)}, 255, 64, 130),
              (Candidates{{0, 0}, {1, 0}}));
}

TEST(CreateColorcell, AnEntryThatDiffersInOneChannelIsNotInTheCell)
{
    const ColorMap map{entry(64, 8, 8), entry(8, 64, 8), entry(8, 8, 64)};
    // 64 squared, and 8 squared twice.
    EXPECT_EQ(cell(map, 0, 0, 0), (Candidates{{0, 4224}, {1, 4224}, {2, 4224}}));
}

TEST(CreateColorcell, AnEntryBelowTheColorIsAsFarAsOneAbove)
{
    EXPECT_EQ(cell({entry(54, 90, 97)}, 64, 100, 100), (Candidates{{0, 100 + 100 + 9}}));
    EXPECT_EQ(cell({entry(74, 110, 130)}, 64, 100, 127), (Candidates{{0, 100 + 100 + 9}}));
}

TEST(CreateColorcell, AChannelThatAgreesCountsAs63)
{
    EXPECT_EQ(cell({entry(60, 100, 101)}, 64, 100, 100), (Candidates{{0, 16 + 3969 + 1}}));
    EXPECT_EQ(cell({entry(64, 70, 100)}, 64, 60, 100), (Candidates{{0, 3969 + 100 + 3969}}));
    EXPECT_EQ(cell({entry(0, 100, 200)}, 64, 100, 200), (Candidates{{0, 4096 + 3969 + 3969}}));
}

TEST(CreateColorcell, DistancesPassSixteenBits)
{
    EXPECT_EQ(cell({entry(255, 255, 255)}, 0, 0, 0), (Candidates{{0, 3 * 65025}}));
    EXPECT_EQ(cell({entry(0, 0, 0)}, 248, 248, 248), (Candidates{{0, 3 * 61504}}));
}

TEST(CreateColorcell, WithNoEntryOfItsOwnTakesAll)
{
    EXPECT_EQ(indices(cell({entry(255, 255, 255), entry(64, 0, 0), entry(0, 128, 0)}, 0, 0, 0)),
              (std::vector<int>{1, 2, 0}));
}

TEST(CreateColorcell, BoundIsTheFarthestCornerFromANearEntry)
{
    // The entry agrees with the colour: 63 in each channel, 11907. 62 * 62 + 2 * 3969 is below it,
    // 63 * 63 + 2 * 3969 is not.
    EXPECT_EQ(cell({entry(8, 0, 0), entry(70, 0, 0)}, 8, 0, 0), (Candidates{{0, 0}, {1, 11782}}));
    EXPECT_EQ(cell({entry(8, 0, 0), entry(71, 0, 0)}, 8, 0, 0), (Candidates{{0, 0}}));
}

TEST(CreateColorcell, BoundTakes63LessADifferenceBelow32)
{
    // 63 - 31 is 32: 1024 + 2 * 3969 is 8962. The others are at 94, 2, 11 and 93, 12, 13.
    EXPECT_EQ(cell({entry(31, 0, 0), entry(94, 2, 11)}, 0, 0, 0), (Candidates{{0, 0}, {1, 8961}}));
    EXPECT_EQ(cell({entry(31, 0, 0), entry(93, 12, 13)}, 0, 0, 0), (Candidates{{0, 0}}));
    // 63 - 10 is 53: 2809 + 2 * 3969 is 10747.
    EXPECT_EQ(cell({entry(10, 0, 0), entry(103, 4, 11)}, 0, 0, 0),
              (Candidates{{0, 0}, {1, 10746}}));
    EXPECT_EQ(cell({entry(10, 0, 0), entry(89, 15, 51)}, 0, 0, 0), (Candidates{{0, 0}}));
}

TEST(CreateColorcell, BoundTakesADifferenceFrom32OnAsItIs)
{
    // 32 is 32: 8962 again.
    EXPECT_EQ(cell({entry(32, 0, 0), entry(94, 2, 11)}, 0, 0, 0), (Candidates{{0, 0}, {1, 8961}}));
    EXPECT_EQ(cell({entry(32, 0, 0), entry(93, 12, 13)}, 0, 0, 0), (Candidates{{0, 0}}));
    // 1600 + 2 * 3969 is 9538.
    EXPECT_EQ(cell({entry(40, 0, 0), entry(97, 8, 8)}, 0, 0, 0), (Candidates{{0, 0}, {1, 9537}}));
    EXPECT_EQ(cell({entry(40, 0, 0), entry(85, 3, 48)}, 0, 0, 0), (Candidates{{0, 0}}));
}

TEST(CreateColorcell, BoundTakesANegativeDifferenceWithoutItsSign)
{
    // 8 - 40 wraps to 65504, which is not below 32, and whose square is 32 * 32: 8962 again.
    EXPECT_EQ(cell({entry(8, 0, 0), entry(134, 2, 11)}, 40, 0, 0), (Candidates{{0, 0}, {1, 8961}}));
    EXPECT_EQ(cell({entry(8, 0, 0), entry(133, 12, 13)}, 40, 0, 0), (Candidates{{0, 0}}));
    // 8 - 9 wraps too, so it is not replaced by 64 or 62: 1 + 2 * 3969 is 7939.
    EXPECT_EQ(cell({entry(8, 0, 0), entry(98, 1, 4)}, 9, 0, 0), (Candidates{{0, 0}, {1, 7938}}));
    EXPECT_EQ(cell({entry(8, 0, 0), entry(98, 3, 3)}, 9, 0, 0), (Candidates{{0, 0}}));
}

TEST(CreateColorcell, BoundIsSeparateForEachChannel)
{
    // 32, 53, 40: 5433. The others are at 68, 18, 22 and 73, 2, 10.
    EXPECT_EQ(cell({entry(31, 10, 40), entry(68, 18, 22)}, 0, 0, 0),
              (Candidates{{0, 0}, {1, 5432}}));
    EXPECT_EQ(cell({entry(31, 10, 40), entry(73, 2, 10)}, 0, 0, 0), (Candidates{{0, 0}}));
}

TEST(CreateColorcell, BoundIsTheSmallestOfAllEntriesOfTheCell)
{
    // Bounds 10747 and 8962, in both orders.
    const PaletteEntry far = entry(10, 0, 0), near = entry(31, 0, 0), other = entry(93, 12, 13);
    EXPECT_EQ(cell({far, near, other}, 0, 0, 0), (Candidates{{0, 0}, {1, 0}}));
    EXPECT_EQ(cell({near, far, other}, 0, 0, 0), (Candidates{{0, 0}, {1, 0}}));
    EXPECT_EQ(cell({other, far}, 0, 0, 0), (Candidates{{1, 0}, {0, 8962}}));
}

TEST(CreateColorcell, AnEntryOfTheCellMayFollowOthers)
{
    // The bound is known before any other entry is looked at.
    EXPECT_EQ(cell({entry(93, 12, 13), entry(31, 0, 0)}, 0, 0, 0), (Candidates{{1, 0}}));
}

TEST(CreateColorcell, CandidatesAscendByDistance)
{
    // 4096 and squares of 30, 20, 25, 8.
    const ColorMap map{entry(64, 30, 30), entry(64, 20, 20), entry(64, 25, 25), entry(64, 8, 8)};
    EXPECT_EQ(cell(map, 0, 0, 0), (Candidates{{3, 4224}, {1, 4896}, {2, 5346}, {0, 5896}}));
}

TEST(CreateColorcell, CandidatesOfEqualDistanceKeepTheOrderOfThePalette)
{
    const ColorMap map{entry(64, 30, 20), entry(64, 8, 8), entry(64, 20, 30), entry(20, 64, 30),
                       entry(64, 8, 8)};
    EXPECT_EQ(indices(cell(map, 0, 0, 0)), (std::vector<int>{1, 4, 0, 2, 3}));
}

TEST(CreateColorcell, EntriesOfTheCellComeFirstInTheOrderOfThePalette)
{
    const ColorMap map{entry(64, 8, 8), entry(16, 0, 0), entry(64, 7, 8), entry(8, 0, 0)};
    EXPECT_EQ(cell(map, 0, 0, 0), (Candidates{{1, 0}, {3, 0}, {2, 4209}, {0, 4224}}));
}

TEST(CreateColorcell, HoldsUpTo256Candidates)
{
    EXPECT_EQ(cell(ColorMap(256, entry(1, 2, 3)), 0, 0, 0).size(), 256u);
    EXPECT_EQ(cell(ColorMap(256, entry(100, 2, 3)), 0, 0, 0).size(), 256u);
}

TEST(MapColortable, EmptyBinsHoldNoIndex)
{
    const Histogram bins = mapped({{1, 2, 3}, {31, 31, 31}}, {entry(8, 16, 24)});
    long empty = 0;
    for (int r = 0; r < 32; ++r) {
        for (int g = 0; g < 32; ++g) {
            for (int b = 0; b < 32; ++b) empty += bins.at(r, g, b) == 0xFFFFFFFF;
        }
    }
    EXPECT_EQ(empty, 32 * 32 * 32 - 2);
    EXPECT_EQ(bins.at(1, 2, 3), 0u);
    EXPECT_EQ(bins.at(31, 31, 31), 0u);
}

TEST(MapColortable, CountsDoNotMatter)
{
    Histogram bins;
    bins.at(1, 2, 3) = 0xFFFFFFFE;
    bins.at(20, 2, 3) = 7;
    map_colortable(bins, {entry(160, 16, 24), entry(8, 16, 24)});
    EXPECT_EQ(bins.at(1, 2, 3), 1u);
    EXPECT_EQ(bins.at(20, 2, 3), 0u);
}

TEST(MapColortable, ABinGetsTheNearestEntryOfItsCell)
{
    const ColorMap map{entry(0, 0, 0), entry(20, 0, 0), entry(56, 0, 0)};
    const Histogram bins = mapped({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {4, 0, 0}, {5, 0, 0}}, map);
    EXPECT_EQ(bins.at(0, 0, 0), 0u);
    EXPECT_EQ(bins.at(1, 0, 0), 0u) << "8 from the first, 12 from the second";
    EXPECT_EQ(bins.at(2, 0, 0), 1u);
    EXPECT_EQ(bins.at(4, 0, 0), 1u) << "12 from the second, 24 from the third";
    EXPECT_EQ(bins.at(5, 0, 0), 2u) << "20 from the second, 16 from the third";
}

TEST(MapColortable, DistanceIsTakenOverAllChannels)
{
    // From 16, 16, 16: 432, 400 and 401.
    const ColorMap map{entry(4, 28, 4), entry(16, 36, 16), entry(16, 17, 36)};
    EXPECT_EQ(mapped({{2, 2, 2}}, map).at(2, 2, 2), 1u);
    // The same by green and blue alone.
    EXPECT_EQ(mapped({{2, 2, 2}}, {entry(16, 16, 40), entry(16, 0, 16)}).at(2, 2, 2), 1u);
}

TEST(MapColortable, OfEqualEntriesTheFirstIsTaken)
{
    EXPECT_EQ(mapped({{2, 0, 0}}, {entry(8, 0, 0), entry(24, 0, 0)}).at(2, 0, 0), 0u);
    EXPECT_EQ(mapped({{2, 0, 0}}, {entry(24, 0, 0), entry(8, 0, 0)}).at(2, 0, 0), 0u);
    EXPECT_EQ(mapped({{2, 0, 0}}, {entry(0, 9, 0), entry(16, 0, 8), entry(16, 8, 0)}).at(2, 0, 0),
              1u);
}

TEST(MapColortable, AnEntryOfAnotherCellMayBeNearest)
{
    // From 56, 8, 8: 64, 4 and 4 squared twice are 96; the cell's own is 2304 + 64 + 64 away.
    EXPECT_EQ(mapped({{7, 1, 1}}, {entry(8, 16, 16), entry(64, 12, 12)}).at(7, 1, 1), 1u);
}

TEST(MapColortable, EveryColorFindsAnEntryHoweverFar)
{
    const ColorMap map{entry(248, 0, 248)};
    const Histogram bins = mapped({{0, 31, 0}, {0, 0, 0}, {31, 31, 31}, {31, 0, 31}}, map);
    EXPECT_EQ(bins.at(0, 31, 0), 0u);
    EXPECT_EQ(bins.at(0, 0, 0), 0u);
    EXPECT_EQ(bins.at(31, 31, 31), 0u);
    EXPECT_EQ(bins.at(31, 0, 31), 0u);
}

// 64, 56, 56 is 8 from bin 7, 7, 7, but 10368 from bin 0, 0, 0: 4096 and twice 3136.
TEST(MapColortable, ACellIsMeasuredFromItsFirstFilledBin)
{
    const ColorMap map{entry(0, 0, 0), entry(64, 56, 56)};
    // From 56, 56, 56 it is 64 + 2 * 3969, below the bound of 3 * 3136: it is looked at.
    EXPECT_EQ(mapped({{7, 7, 7}}, map).at(7, 7, 7), 1u);
    // From 0, 0, 0 it joins the cell, but beyond 3 * 3136, the distance of the first entry.
    EXPECT_EQ(mapped({{0, 0, 0}, {7, 7, 7}}, map).at(7, 7, 7), 0u);
}

TEST(MapColortable, ACellsFirstBinIsByRedThenGreenThenBlue)
{
    // Bin 7, 0, 0 sees the second entry only in a cell of its own; red 0 comes before it.
    const ColorMap byRed{entry(0, 0, 0), entry(64, 8, 8)};
    EXPECT_EQ(mapped({{7, 0, 0}}, byRed).at(7, 0, 0), 1u);
    EXPECT_EQ(mapped({{7, 0, 0}, {0, 7, 7}}, byRed).at(7, 0, 0), 0u);
    EXPECT_EQ(mapped({{7, 0, 0}, {7, 7, 7}}, byRed).at(7, 0, 0), 1u);
    // Green 0 comes before green 7, whatever blue is.
    const ColorMap byGreen{entry(0, 0, 0), entry(8, 64, 8)};
    EXPECT_EQ(mapped({{0, 7, 0}}, byGreen).at(0, 7, 0), 1u);
    EXPECT_EQ(mapped({{0, 7, 0}, {0, 0, 7}}, byGreen).at(0, 7, 0), 0u);
    EXPECT_EQ(mapped({{0, 7, 0}, {0, 7, 7}}, byGreen).at(0, 7, 0), 1u);
}

TEST(MapColortable, AFilledBinOfAnotherCellIsNotACellsFirst)
{
    const ColorMap map{entry(0, 0, 0), entry(64, 56, 56)};
    EXPECT_EQ(mapped({{8, 0, 0}, {0, 8, 0}, {0, 0, 8}, {7, 7, 7}}, map).at(7, 7, 7), 1u);
}

TEST(MapColortable, StopsAtACandidateThatIsJustAsFarInTheCell)
{
    // From bin 7, 7, 7 the first entry is at 9408. Cells measured from 0, 0, 0 hold the second at
    // 7744 + 1600 + 64, which is 9408 too, or at 7569 + 1600 + 64, which is 9233.
    const std::vector<Bin> filled{{0, 0, 0}, {7, 7, 7}};
    EXPECT_EQ(mapped(filled, {entry(0, 0, 0), entry(88, 40, 8)}).at(7, 7, 7), 0u);
    EXPECT_EQ(mapped(filled, {entry(0, 0, 0), entry(87, 40, 8)}).at(7, 7, 7), 1u);
}

TEST(MapColortable, WhatTheCellLeftOutIsNeverFound)
{
    // 40, 40, 40 bounds the cell of bin 0, 0, 0 to 4800: the second entry, at 10368, is not in it,
    // though it is 8 from bin 7, 7, 7 and the first is at 768.
    const ColorMap map{entry(40, 40, 40), entry(64, 56, 56)};
    EXPECT_EQ(mapped({{0, 0, 0}, {7, 7, 7}}, map).at(7, 7, 7), 0u);
}
