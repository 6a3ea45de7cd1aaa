// Pictures that are given up, and how far they are.

#include <csignal>
#include <thread>

#include "support/scene.h"
#include "support/surfaces.h"

namespace zebtest
{

namespace
{

// What the device of a test hears, and what it does then.
struct Heard {
    int opened = 0, spans = 0, closed = 0;
    void (*onSpan)() = nullptr;
};

class Cancel : public RasterTest
{
protected:
    Cancel() { reports.hearInfos(); }
    // Four rows of four buckets.
    void begin()
    {
        zebReset();
        raster(48, 48);
        attach();
        beginFlat();
    }
    void attach()
    {
        ZebDisplay device{};
        device.data = &heard;
        device.open = [](void* data, const char*, long, long, long, long) {
            ++static_cast<Heard*>(data)->opened;
        };
        device.span = [](void* data, long, long, long, const unsigned int*) {
            auto& self = *static_cast<Heard*>(data);
            if (++self.spans == 1 && self.onSpan) self.onSpan();
        };
        device.close = [](void* data) { ++static_cast<Heard*>(data)->closed; };
        zebCustomDisplay(&device);
    }
    static void square() { polygon({{1, 1, 0.5f}, {47, 1, 0.5f}, {47, 47, 0.5f}, {1, 47, 0.5f}}); }
    // The picture was given up, in order.
    void expectCancelled()
    {
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].code, 0);
        EXPECT_EQ(reports[0].severity, ZEB_INFO);
        EXPECT_EQ(reports[0].message, "zebSceneEnd: picture cancelled");
        reports.clear();
        EXPECT_EQ(heard.closed, heard.opened);
        EXPECT_EQ(zebProgress(), 0);
        zebSceneBegin();
        EXPECT_TRUE(reports.empty()) << "the world block is closed";
        zebSceneEnd();
    }

    Heard heard;
};

void cancel() { zebCancel(); }

}  // namespace

TEST_F(Cancel, FromADeviceStopsAtTheNextRow)
{
    heard.onSpan = cancel;
    begin();
    square();
    zebSceneEnd();
    EXPECT_EQ(heard.spans, 1);
    expectCancelled();
}

TEST_F(Cancel, FromASignalHandlerStops)
{
    std::signal(SIGINT, [](int) { zebCancel(); });
    heard.onSpan = [] { std::raise(SIGINT); };
    begin();
    square();
    zebSceneEnd();
    std::signal(SIGINT, SIG_DFL);
    EXPECT_EQ(heard.spans, 1);
    expectCancelled();
}

TEST_F(Cancel, FromAnotherThreadStops)
{
    heard.onSpan = [] { std::thread(cancel).join(); };
    begin();
    square();
    zebSceneEnd();
    EXPECT_EQ(heard.spans, 1);
    expectCancelled();
}

TEST_F(Cancel, FromAProceduralStopsBeforeAnyRow)
{
    static const float box[6] = {0, 48, 0, 48, 0.25f, 0.75f};
    static int freed;
    freed = 0;
    begin();
    zebProcedural(
        nullptr, box, [](void*, float) { zebCancel(); }, [](void*) { ++freed; });
    square();
    zebSceneEnd();
    EXPECT_EQ(heard.spans, 0);
    EXPECT_EQ(freed, 1);
    expectCancelled();
}

TEST_F(Cancel, FromAFilterStops)
{
    zebReset();
    raster(48, 48);
    attach();
    zebCustomFilter([](float, float, float, float) {
        zebCancel();
        return 1.0f;
    });
    beginFlat();
    square();
    zebSceneEnd();
    EXPECT_EQ(heard.spans, 1);
    expectCancelled();
}

TEST_F(Cancel, WhileTheWorldIsDescribedStopsAtItsEnd)
{
    begin();
    zebCancel();
    square();
    EXPECT_TRUE(reports.empty());
    zebSceneEnd();
    EXPECT_EQ(heard.spans, 0);
    expectCancelled();
}

TEST_F(Cancel, BetweenPicturesDoesNothing)
{
    zebCancel();
    begin();
    square();
    zebSceneEnd();
    zebCancel();
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(heard.spans, 4 * 48);
    begin();
    zebSceneEnd();
    EXPECT_EQ(heard.spans, 2 * 4 * 48);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Cancel, BetweenStagesEndsThePicture)
{
    begin();
    square();
    ASSERT_NE(zebRenderBucket(), 0);
    zebCancel();
    EXPECT_EQ(zebRenderBucket(), 0);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(zebRenderBucket(), 0);
    EXPECT_EQ(heard.closed, 0) << "as ever, the device is closed at the world's end";
    zebSceneEnd();
    EXPECT_EQ(heard.spans, 12);
    expectCancelled();
}

// The first row comes after all samples of a bucket: what cancels while they are taken shows in
// none.
TEST_F(Cancel, WithinABucketStopsToo)
{
    for (const bool adaptive : {false, true}) {
        zebReset();
        raster(12, 12);
        attach();
        if (adaptive) zebSampleAdaptive(0.01f);
        beginFlat();
        zebFlatness(1e-9f);  // a report while the bucket's pieces are made
        zebCustomErrorHandler(ZEB_ALL, [](long, long, const char*) { zebCancel(); });
        zebTranslate(6, 6, 0.5f);
        zebSphere(4, -4, 4, 360, 0);
        const int before = heard.spans;
        zebSceneEnd();
        EXPECT_EQ(heard.spans, before);
    }
}

TEST_F(Cancel, TheStateIsAsAfterAnyPicture)
{
    heard.onSpan = cancel;
    begin();
    zebAttributePush();
    square();
    zebAttributePop();
    zebSceneEnd();
    reports.clear();
    zebAttributePop();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 4) << "no block is left open";
    heard.onSpan = nullptr;
    zebReset();
    raster(12, 12);
    beginFlat();
    square();
    zebSceneEnd();
    EXPECT_EQ(alpha(6, 6), 1);
}

namespace
{

struct Progress {
    std::vector<long> heard;
    long cancelAt = 1000;
};

short listen(void* data, long percent)
{
    auto& progress = *static_cast<Progress*>(data);
    progress.heard.push_back(percent);
    return percent >= progress.cancelAt;
}

}  // namespace

TEST_F(Cancel, ProgressIsHeardAfterEveryBucket)
{
    Progress progress;
    zebReset();
    raster(24, 24);
    zebProgressCallback(listen, &progress);
    beginFlat();
    square();
    EXPECT_TRUE(progress.heard.empty());
    zebSceneEnd();
    EXPECT_EQ(progress.heard, (std::vector<long>{25, 50, 75, 100}));
    EXPECT_TRUE(reports.empty());
}

// 21 x 12 buckets: a percent is 2.52 of them, and each is heard once.
TEST_F(Cancel, ProgressOfManyBucketsIsHeardOnceAPercent)
{
    Progress progress;
    zebReset();
    raster(252, 144);
    zebProgressCallback(listen, &progress);
    beginFlat();
    zebSceneEnd();
    ASSERT_EQ(progress.heard.size(), 100u);
    for (long k = 0; k < 100; ++k) EXPECT_EQ(progress.heard[static_cast<std::size_t>(k)], k + 1);
}

TEST_F(Cancel, TheAnswerOfTheProgressCallbackGivesUp)
{
    Progress progress;
    progress.cancelAt = 50;
    zebReset();
    raster(24, 24);
    attach();
    zebProgressCallback(listen, &progress);
    beginFlat();
    square();
    zebSceneEnd();
    EXPECT_EQ(progress.heard, (std::vector<long>{25, 50}));
    EXPECT_EQ(heard.spans, 24);
    expectCancelled();
}

TEST_F(Cancel, NoProgressCallbackIsTheDefault)
{
    Progress progress;
    zebReset();
    raster(24, 24);
    zebProgressCallback(listen, &progress);
    zebProgressCallback(nullptr, nullptr);
    beginFlat();
    zebSceneEnd();
    EXPECT_TRUE(progress.heard.empty());
}

}  // namespace zebtest
