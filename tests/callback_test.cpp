// Host code that builds while the picture is rendered.

#include "support/scene.h"

namespace zebtest
{

// A device hears of a row of buckets when the next one is still to come: it may add to what is
// left. After the last row there is nothing to add to.
TEST(Callbacks, ADeviceMayAddToTheRowsThatAreLeft)
{
    static int flushes;
    static double rows[24];
    flushes = 0;
    std::fill(std::begin(rows), std::end(rows), 0);
    Reports reports;
    zebReset();
    zebRasterViewport(0, 16, 0, 24);
    zebImageWindow(-1, 1, -1, 1);
    zebViewIdentity();
    zebFilter(ZEB_FILTER_BOX);
    zebFilterWidth(1, 1);
    zebOutputSamples(ZEB_SAMPLES_ALPHA);
    zebColorQuantize(0, 0, 0);
    ZebDisplay device{};
    device.span = [](void*, long x0, long x1, long y, const unsigned int* words) {
        for (long x = 0; x <= x1 - x0; ++x) {
            float alpha;
            std::memcpy(&alpha, &words[x], sizeof alpha);
            rows[y] += double{alpha};
        }
    };
    device.flush = [](void*, long, long) {
        ++flushes;
        rectangle(-2, -2, 2, 2, 0.5f);
    };
    zebCustomDisplay(&device);
    zebSceneBegin();
    zebSurface(zebQuark("constant"), 0);
    zebSceneEnd();
    EXPECT_EQ(flushes, 2);
    EXPECT_EQ(rows[11], 0) << "these were done";
    EXPECT_EQ(rows[12], 16) << "these were to come";
    EXPECT_EQ(rows[23], 16);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 7);
    EXPECT_EQ(zebProgress(), 0);
    zebReset();
}

}  // namespace zebtest
