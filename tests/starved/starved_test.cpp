// What becomes of pictures, reports and hosts when there is no memory.

#include <gtest/gtest.h>
#include <malloc.h>

#include <new>

#include "memory.h"
#include "starve.h"
#include "support/folder.h"
#include "support/posix.h"
#include "support/scene.h"

namespace zebtest
{

namespace
{

namespace fs = std::filesystem;

constexpr short kKinds[] = {ZEB_FILE_PNG, ZEB_FILE_PNG_INDEXED, ZEB_FILE_EXR};

// Forty rows: OpenEXR compresses them in blocks of sixteen, of which the last one is no whole one.
void begin(const fs::path& path, short kind)
{
    zebReset();
    zebRasterViewport(0, 8, 0, 40);
    zebViewIdentity();
    zebOutputFile(kind, path.c_str());
    zebSceneBegin();
    zebSurface(zebQuark("constant"), 0);
    zebRenderInit();
}

void finish()
{
    while (zebRenderBucket()) {
    }
    zebSceneEnd();
}

// Asks twice, and answers how often that is refused in the way that the language has for it.
int refusals()
{
    int count = 0;
    char* volatile memory = new (std::nothrow) char[100];
    if (!memory) ++count;
    try {
        memory = new char[100];
    } catch (const std::bad_alloc&) {
        ++count;
    }
    return count;
}

}  // namespace

// Whatever a writer asks for and does not get: the picture is written and whole, or reported and
// not written.
TEST(Starved, AWriterThatGetsNoMemoryLeavesTheOldFile)
{
    const Folder folder;
    Reports reports;
    const fs::path path = folder / "a";
    for (const short kind : kKinds) {
        begin(path, kind);
        finish();
        const std::string expected = contents(path);
        int failures = 0;
        for (long n = 0;; ++n) {
            put(path, "old");
            begin(path, kind);
            starved::refuseMalloc(n);
            finish();
            starved::refuseNone();
            if (!starved::refused()) break;
            ASSERT_EQ(reports.size(), 1u) << kind << ", " << n;
            EXPECT_EQ(reports[0].code, 10);
            EXPECT_EQ(reports[0].message.rfind("zebSceneEnd: cannot write (", 0), 0u)
                << reports[0].message;
            EXPECT_EQ(contents(path), "old") << kind << ", " << n;
            EXPECT_EQ(folder.size(), 1);
            reports.clear();
            ++failures;
        }
        EXPECT_GT(failures, 5) << kind;
        EXPECT_TRUE(reports.empty());
        EXPECT_EQ(contents(path), expected);
    }
}

TEST(Starved, ACallThatGetsNoMemoryIsReportedUnderItsNameAndEndsTheProcess)
{
    const Folder folder;
    zebReset();
    zebOutputFile(ZEB_FILE_PNG, (folder / "a").c_str());
    starve("zebQuark: ", [] { zebQuark("a name that no other test declares"); });
    starve("zebAttributePush: ", [] { zebAttributePush(); });
    starve("zebSceneBegin: ", [] { zebSceneBegin(); });
    zebSceneBegin();
    starve("zebSphere: ", [] { zebSphere(1, -1, 1, 360, 0); });
    starve("zebSurface: ", [] { zebSurface(zebQuark("plastic"), 0); });
    zebReset();
}

TEST(Starved, SoIsOneThatGoesByNoName)
{
    starve("", [] { zebReset(); });
}

TEST(Starved, APictureThatGetsNoMemoryLeavesTheOldFile)
{
    const Folder folder;
    const fs::path path = folder / "a";
    for (const short kind : kKinds) {
        put(path, "old");
        const auto prepare = [&] {
            begin(path, kind);
            polygon({{-1, -1, 0.5f}, {1, -1, 0.5f}, {0, 1, 0.5f}});
        };
        starve("zebSceneEnd: ", finish, prepare, [&] { EXPECT_EQ(contents(path), "old") << kind; });
        EXPECT_NE(contents(path), "old") << "there is a time with memory for all";
    }
}

// What threads of the library find no memory for is reported by the caller's, under the name of its
// call.
TEST(Starved, APictureWhoseThreadsGetNoMemoryIsReportedUnderTheNameOfTheCall)
{
    const std::string words = "severe error: Out of memory. zebSceneEnd: free store exhausted\n";
    int failures = 0;
    for (const long n : {0, 1, 2, 3, 5, 8, 13, 21, 40, 80, 160, 320, 640, 1280}) {
        const End end = endOf([n] {
            const ZebDisplay nowhere{};
            zebReset();
            zebRasterViewport(0, 200, 0, 150);
            zebCustomDisplay(&nowhere);
            zebThreads(4);
            zebViewPerspective(50);
            zebTranslate(0, 0, 3);
            zebSceneBegin();
            for (int k = 0; k < 20; ++k) {
                zebSphere(1, -1, 1, 360, 0);
                zebTranslate(0.05f, 0, 0.1f);
            }
            starved::refuseOthersFromNew(n);
            zebSceneEnd();
            return 0;
        });
        if (end.status == 0) continue;
        ++failures;
        EXPECT_TRUE(aborted(end)) << end.status << ", " << n;
        EXPECT_EQ(end.words, words) << n;
    }
    EXPECT_GT(failures, 5);
}

// Names of any length are printed with what room there is.
TEST(Starved, AReportWithLongNamesIsCut)
{
    const std::string name(2000, 'x');
    const End end = endOf([&] {
        const Folder folder;
        begin(folder / "a", ZEB_FILE_PNG);
        zebObjectName(name.c_str());
        const float box[6] = {-1, 1, -1, 1, 0.1f, 0.9f};
        zebProcedural(
            nullptr, box,
            [](void*, float) {
                // The next call of the library finds none.
                starved::refuseAllFromNew(0);
                zebAttributePush();
            },
            nullptr);
        finish();
        return 0;
    });
    EXPECT_TRUE(aborted(end));
    const std::string first =
        "severe error: Out of memory. zebAttributePush: free store exhausted\n";
    EXPECT_EQ(end.words, first + ("While rendering object " + name).substr(0, 511) + "\n");
}

// What is set aside for reports may be had as little as the rest: the first call of a process finds
// no memory.
TEST(StarvedDeathTest, TheFirstCallReportsToo)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const std::string words = "free store exhausted\n$";
    EXPECT_DEATH((starved::refuseAll(), zebQuark("a")),
                 "^severe error: Out of memory. zebQuark: " + words);
    EXPECT_DEATH((starved::refuseAll(), zebWindowEvents(0)),
                 "^severe error: Out of memory. zebWindowEvents: " + words);
    EXPECT_DEATH((starved::refuseAll(), zebReset()), "^severe error: Out of memory. " + words);
}

// The library sets some aside, and gives it back before it reports.
TEST(Starved, AHandlerOfTheHostFindsSomeMemory)
{
    zebReset();
    static std::size_t before;
    before = mallinfo2().uordblks;
    EXPECT_EQ(inChild([] {
                  zebCustomErrorHandler(ZEB_ALL, [](long, long, const char*) {
                      _exit(mallinfo2().uordblks + 60000 < before ? 0 : 1);
                  });
                  starved::refuseAllFromNew(0);
                  zebAttributePush();
                  return 2;
              }),
              0);
}

TEST(Starved, WhatTheHostAllocatesInItsCallbacksFailsAsItWould)
{
    static int count;
    count = 0;
    static const auto ask = [] {
        starved::refuseAll();
        count += refusals();
        starved::refuseNone();
    };
    ZebDisplay device;
    device.data = nullptr;
    device.open = [](void*, const char*, long, long, long, long) { ask(); };
    device.span = [](void*, long, long, long, const unsigned int*) { ask(); };
    device.flush = [](void*, long, long) { ask(); };
    device.close = [](void*) { ask(); };
    zebReset();
    zebRasterViewport(0, 4, 0, 2);
    zebViewIdentity();
    zebCustomDisplay(&device);
    zebSceneBegin();
    const float box[6] = {-1, 1, -1, 1, 0.1f, 0.9f};
    zebProcedural(
        nullptr, box, [](void*, float) { ask(); }, [](void*) { ask(); });
    zebSceneEnd();
    EXPECT_EQ(count, 14) << "open, two spans, a flush, close and the two of the procedural, twice";
    zebReset();
}

// The library is at work on this thread while the other one finds no memory.
TEST(Starved, AnotherThreadsAllocationsFailAsTheyWould)
{
    static int count;
    count = 0;
    starved::atNextNew([] {
        std::thread([] {
            starved::refuseAll();
            count = refusals();
            starved::refuseNone();
        }).join();
    });
    zebAttributePush();
    EXPECT_EQ(count, 2);
    zebAttributePop();
}

}  // namespace zebtest
