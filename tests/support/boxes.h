// Boxes of the quantizer, for tests that cut them by hand.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "display/quantizer.h"

namespace zebtest
{

using Axes = std::array<std::int16_t, 3>;
using Counts = std::vector<std::uint32_t>;
using Boxes = std::vector<const zeb::Colorbox*>;

inline constexpr std::size_t kRed = 0, kGreen = 1, kBlue = 2;

// The darkest colour of a bin.
inline zeb::ScreenColor bin(unsigned r, unsigned g, unsigned b)
{
    return r << 3 | g << 11 | b << 19;
}

inline zeb::ColorImage image(const std::vector<zeb::ScreenColor>& colors)
{
    zeb::ColorImage row(static_cast<long>(colors.size()), 1);
    row.pixels = colors;
    return row;
}

inline Boxes forwards(const zeb::Colorbox* head)
{
    Boxes list;
    for (; head; head = head->next) list.push_back(head);
    return list;
}

// From the last of a list back to its head.
inline Boxes backwards(const zeb::Colorbox* head)
{
    while (head && head->next) head = head->next;
    Boxes list;
    for (; head; head = head->prev) list.push_back(head);
    return list;
}

inline void expectLinkedBothWays(const zeb::Colorbox* head)
{
    Boxes back = backwards(head);
    std::reverse(back.begin(), back.end());
    EXPECT_EQ(forwards(head), back);
}

inline std::pair<Axes, Axes> bounds(const zeb::Colorbox& box) { return {box.min, box.max}; }

inline Axes along(std::size_t axis, std::size_t index)
{
    Axes at{0, 0, 0};
    at[axis] = static_cast<std::int16_t>(index);
    return at;
}

// A box over bins in a line along an axis, with the other two at 0.
struct Line {
    zeb::MedianCut cut;

    Line(std::size_t axis, const Counts& counts)
    {
        for (std::size_t i = 0; i < counts.size(); ++i) {
            const Axes at = along(axis, i);
            cut.histogram().at(at[0], at[1], at[2]) = counts[i];
            cut.used()->total += counts[i];
        }
        cut.used()->min = {0, 0, 0};
        cut.used()->max = along(axis, counts.size() - 1);
    }
};

}  // namespace zebtest
