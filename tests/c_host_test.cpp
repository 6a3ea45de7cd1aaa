// The interface from C.

#include <gtest/gtest.h>

#include <array>

#include "support/picture.h"
#include "support/reports.h"

extern "C" {
extern int c_host_spans;
long c_host_decorated(void);
void c_host_lists(void);
}

TEST(CHost, CallsTheFunctionsUnderDecoratedNames)
{
    zebtest::Reports reports;
    EXPECT_EQ(c_host_decorated(), 1) << "two buckets: non-zero after the first alone";
    EXPECT_EQ(c_host_spans, 24) << "twelve rows of two buckets";
    EXPECT_TRUE(reports.empty());
}

TEST(CHost, ReadsVariableListsBehindEveryTypeOfArgument)
{
    zebtest::Reports reports;
    zebReset();
    zebRasterViewport(0, 4, 0, 4);
    zebFilter(ZEB_FILTER_BOX);
    zebFilterWidth(1, 1);
    zebtest::Picture picture(3);
    picture.attachFloat();
    zebImageWindow(-1, 1, -1, 1);
    zebViewIdentity();
    zebSceneBegin();
    zebSurface(zebQuark("constant"), 0);
    c_host_lists();
    zebSceneEnd();
    EXPECT_TRUE(reports.empty());
    // Screen y runs upwards: the first row shows the upper strip.
    const auto pixel = [&](long x, long y) {
        return std::array{picture.value(x, y, 0), picture.value(x, y, 1), picture.value(x, y, 2)};
    };
    EXPECT_EQ(pixel(0, 0), (std::array{0.0f, 1.0f, 0.0f})) << "the patch";
    EXPECT_EQ(pixel(0, 3), (std::array{1.0f, 1.0f, 1.0f})) << "the mesh";
    EXPECT_EQ(pixel(0, 1)[0], 1) << "polygons";
    EXPECT_EQ(pixel(0, 1)[2], 0) << "polygons";
    EXPECT_GT(pixel(1, 1)[2], 0.5f) << "the sphere";
    zebReset();
}
