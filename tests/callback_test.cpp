// Host code that builds while the picture is rendered.

#include "support/scene.h"

namespace zebtest
{

namespace
{

// Filters reach no neighbouring pixel; words are floats.
void beginAlphas(long width, long height, const ZebDisplay& device)
{
    zebReset();
    zebRasterViewport(0, width, 0, height);
    zebImageWindow(-1, 1, -1, 1);
    zebViewIdentity();
    zebFilter(ZEB_FILTER_BOX);
    zebFilterWidth(1, 1);
    zebOutputSamples(ZEB_SAMPLES_ALPHA);
    zebColorQuantize(0, 0, 0);
    zebCustomDisplay(&device);
    zebSceneBegin();
    zebSurface(zebQuark("constant"), 0);
}

}  // namespace

// A device hears of a row of buckets when the next one is still to come: it may add to what is
// left. After the last row there is nothing to add to.
TEST(Callbacks, ADeviceMayAddToTheRowsThatAreLeft)
{
    static int flushes;
    static double rows[24];
    flushes = 0;
    std::fill(std::begin(rows), std::end(rows), 0);
    Reports reports;
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
    beginAlphas(16, 24, device);
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

// It hears of the rows of a bucket when the bucket is done: it may add to those that are left. What
// it adds starts at the next one's column, in later rows too.
TEST(Callbacks, ADeviceMayAddToTheBucketsThatAreLeft)
{
    static float alphas[24][24];
    static long when, spans, progress;
    // The four buckets, where the spans of the k-th have been numbers 12 * k to 12 * k + 11.
    const float expected[4][4] = {{0, 1, 0, 1}, {0, 0, 1, 1}, {0, 0, 0, 1}, {0, 0, 0, 0}};
    for (long bucket = 0; bucket < 4; ++bucket) {
        when = 12 * bucket + 5;
        spans = 0;
        Reports reports;
        ZebDisplay device{};
        device.span = [](void*, long x0, long x1, long y, const unsigned int* words) {
            std::memcpy(&alphas[y][x0], words, static_cast<std::size_t>(x1 - x0 + 1) * 4);
            if (spans++ != when) return;
            progress = zebProgress();
            rectangle(-2, -2, 2, 2, 0.5f);
        };
        beginAlphas(24, 24, device);
        zebSceneEnd();
        EXPECT_EQ(progress, 25 * (bucket + 1));
        for (int k = 0; k < 4; ++k) {
            EXPECT_EQ(alphas[k / 2 * 12 + 6][k % 2 * 12 + 6], expected[bucket][k])
                << bucket << ", " << k;
        }
        EXPECT_EQ(reports.size(), bucket == 3 ? 1u : 0u) << "after the last there is none";
    }
    zebReset();
}

}  // namespace zebtest
