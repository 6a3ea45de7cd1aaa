#include "display/icon.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace zeb
{

namespace
{

struct Rgba {
    int r, g, b, a;
};

Rgba pixel(const IconImage& icon, int x, int y)
{
    const std::uint8_t* bytes = icon.rgba.data() + (y * icon.size + x) * 4;
    return {bytes[0], bytes[1], bytes[2], bytes[3]};
}

}  // namespace

TEST(Icons, AreBallsOnATransparentGround)
{
    for (const Icon which : {Icon::kPicture, Icon::kMessages}) {
        const IconImage& icon = iconImage(which);
        EXPECT_EQ(icon.size, 48);
        ASSERT_EQ(icon.rgba.size(), 48u * 48 * 4);
        EXPECT_EQ(pixel(icon, 0, 0).a, 0);
        EXPECT_EQ(pixel(icon, 47, 0).a, 0);
        EXPECT_EQ(pixel(icon, 24, 10).a, 255);
    }
}

TEST(Icons, OfMessagesHaveASheetWithRedLinesAtTheLowerLeft)
{
    const auto redness = [](const IconImage& icon) {
        int most = 0;
        for (int y = 24; y < 48; ++y) {
            for (int x = 0; x < 24; ++x) {
                const Rgba color = pixel(icon, x, y);
                if (color.a == 255) most = std::max(most, color.r - color.b);
            }
        }
        return most;
    };
    EXPECT_GT(redness(iconImage(Icon::kMessages)), 100);
    EXPECT_LT(redness(iconImage(Icon::kPicture)), 30);
}

}  // namespace zeb
