// The interface from C.

#include <gtest/gtest.h>

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
    zebtest::Picture picture(3);
    picture.attachFloat();
    zebImageWindow(-1, 1, -1, 1);
    zebViewIdentity();
    zebSceneBegin();
    zebSurface(zebQuark("constant"), 0);
    c_host_lists();
    zebSceneEnd();
    ASSERT_EQ(reports.size(), 3u) << "the builders of curved surfaces";
    for (std::size_t i = 0; i < reports.size(); ++i) EXPECT_EQ(reports[i].code, 2);
    EXPECT_EQ(reports[0].message, "zebSphere");
    EXPECT_EQ(reports[1].message, "zebPatch");
    EXPECT_EQ(reports[2].message, "zebPatchMesh");
    // Of coincident surfaces the one filed last lies behind the head; the first polygon is red.
    EXPECT_EQ(picture.value(2, 2, 0), 1);
    zebReset();
}
