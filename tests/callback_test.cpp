// Host code that builds while the picture is rendered.

#include <functional>
#include <string>

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

// The first time, calls that are refused: one with a name, and a reset, which has none.
bool gRefused;
void refuseOnce()
{
    if (std::exchange(gRefused, true)) return;
    zebFlatness(-1);
    zebReset();
}

// A picture of two buckets. In the second the library itself has something to report: a sphere that
// no split makes flat enough.
class CallbackNames : public RasterTest
{
protected:
    std::vector<std::string> messages(const std::function<void()>& option,
                                      const std::function<void()>& inWorld)
    {
        zebReset();
        raster(12, 24);
        gRefused = false;
        reports.clear();
        option();
        beginFlat();
        inWorld();
        zebTranslate(6, 18, 0.5f);
        zebFlatness(1e-9f);
        zebSphere(2, -2, 2, 360, 0);
        zebSceneEnd();
        std::vector<std::string> texts;
        for (std::size_t i = 0; i < reports.size(); ++i) texts.push_back(reports[i].message);
        return texts;
    }
    const std::string named = "zebFlatness: flatness must be greater than 0", nameless = "(null)";
    const std::string outer =
        "zebSceneEnd: surface takes too many splits, parts are coarse or missing";
    const std::vector<std::string> insideFirst{named, nameless, outer};
    const std::vector<std::string> insideLast{outer, named, nameless};
};

}  // namespace

TEST_F(CallbackNames, ReportsFromAFilterCarryTheNameOfItsCall)
{
    const auto option = [] {
        zebCustomFilter([](float, float, float, float) {
            refuseOnce();
            return 1.0f;
        });
    };
    EXPECT_EQ(messages(option, [] {}), insideFirst);
}

TEST_F(CallbackNames, ReportsFromAProceduralCarryTheNameOfItsCall)
{
    static const float box[6] = {2, 4, 2, 4, 0.25f, 0.75f};
    EXPECT_EQ(messages([] {},
                       [] {
                           zebProcedural(
                               nullptr, box, [](void*, float) { refuseOnce(); }, nullptr);
                       }),
              insideFirst);
    EXPECT_EQ(messages([] {},
                       [] {
                           zebProcedural(
                               nullptr, box, [](void*, float) {}, [](void*) { refuseOnce(); });
                       }),
              insideFirst);
}

TEST_F(CallbackNames, ReportsFromADeviceCarryTheNameOfItsCall)
{
    ZebDisplay opens{}, spans{}, flushes{}, closes{};
    opens.open = [](void*, const char*, long, long, long, long) { refuseOnce(); };
    spans.span = [](void*, long, long, long, const unsigned int*) { refuseOnce(); };
    flushes.flush = [](void*, long, long) { refuseOnce(); };
    closes.close = [](void*) { refuseOnce(); };
    for (const ZebDisplay* device : {&opens, &spans, &flushes}) {
        EXPECT_EQ(messages([=] { zebCustomDisplay(device); }, [] {}), insideFirst);
    }
    EXPECT_EQ(messages([&] { zebCustomDisplay(&closes); }, [] {}), insideLast);
}

TEST_F(CallbackNames, TheHalvesOfTheWorldsEndGoByItsName)
{
    ZebDisplay device{};
    device.flush = [](void*, long, long) {
        if (std::exchange(gRefused, true)) return;
        zebRenderInit();
        EXPECT_EQ(zebRenderBucket(), 0);
        zebSceneEnd();
    };
    const std::string halves = "zebSceneEnd";
    EXPECT_EQ(messages([&] { zebCustomDisplay(&device); }, [] {}),
              (std::vector<std::string>{halves, halves, halves, outer}));
}

// Both distances are out of range: the call has a second report to make after the handler ran.
TEST_F(CallbackNames, ReportsFromAHandlerCarryTheNameOfItsCall)
{
    static std::vector<std::string> texts;
    texts.clear();
    gRefused = false;
    zebCustomErrorHandler(ZEB_ALL, [](long, long, const char* message) {
        texts.emplace_back(message ? message : "(null)");
        refuseOnce();
    });
    zebClip(-1, -2);
    EXPECT_EQ(texts,
              (std::vector<std::string>{
                  "zebClip: near clipping distance -1 out of range, using minimum", named, nameless,
                  "zebClip: far clipping distance -2 out of range, using maximum"}));
}

TEST_F(CallbackNames, ReportsFromAPrinterCarryTheNameOfItsCall)
{
    static std::vector<std::string> lines;
    lines.clear();
    gRefused = false;
    zebErrorHandler(ZEB_ALL, ZEB_ERROR_PRINT);
    zebErrorPrinter([](const char* line) {
        lines.emplace_back(line);
        refuseOnce();
    });
    zebClip(-1, -2);
    zebErrorPrinter([](const char* line) { std::fprintf(stderr, "%s\n", line); });
    const std::string range = "error: Parameter out of range. ";
    EXPECT_EQ(lines, (std::vector<std::string>{
                         range + "zebClip: near clipping distance -1 out of range, using minimum",
                         range + named, "error: Invalid state.",
                         range + "zebClip: far clipping distance -2 out of range, using maximum"}));
}

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
