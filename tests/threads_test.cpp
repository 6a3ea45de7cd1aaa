// Pictures, rows and reports are the same however many threads render, and the host is called on
// its own thread, in the order that one thread would call it in.

#include <gtest/gtest.h>
#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>

#include "support/folder.h"
#endif

#include <algorithm>
#include <csetjmp>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "support/random_scene.h"
#include "support/reports.h"
#include "support/scene.h"

namespace zebtest
{

namespace
{

constexpr long kThreads[] = {1, 2, 3, 7, 16};

unsigned sceneCount()
{
    const char* const count = std::getenv("THREAD_SCENES");
    return count ? static_cast<unsigned>(std::atol(count)) : 60;
}

// Lets tasks begin and end late, so that work falls otherwise every time.
void delayBy(long seed)
{
    const std::string text = std::to_string(seed * 1009 % 1000003);
#ifdef _WIN32
    _putenv_s("ZEBCORE_DELAYS", text.c_str());
#else
    setenv("ZEBCORE_DELAYS", text.c_str(), 1);
#endif
}

// All that a host hears of a picture, in the order in which it does.
class Host
{
public:
    Host() { zebCustomErrorHandler(static_cast<short>(0xB0F), heard); }
    ~Host()
    {
        zebReset();
        zebErrorHandler(static_cast<short>(0xB01), ZEB_ERROR_IGNORE);
        zebErrorHandler(static_cast<short>(0xB06), ZEB_ERROR_PRINT);
        zebErrorHandler(static_cast<short>(0xB08), ZEB_ERROR_ABORT);
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // The device of what follows; a picture of so many words a pixel.
    static void attach(int channels)
    {
        fChannels = channels;
        ZebDisplay device{};
        device.span = [](void*, long x0, long x1, long y, const unsigned* words) {
            std::uint32_t hash = 0x811C9DC5;
            for (long k = 0; k < (x1 - x0 + 1) * fChannels; ++k) {
                hash = (hash ^ words[k]) * 0x01000193;
            }
            note("span " + std::to_string(x0) + " " + std::to_string(x1) + " " + std::to_string(y) +
                 ": " + std::to_string(hash));
            if (fInSpan) fInSpan(x0, y);
        };
        device.flush = [](void*, long y0, long y1) {
            note("flush " + std::to_string(y0) + " " + std::to_string(y1));
        };
        zebCustomDisplay(&device);
        zebProgressCallback(
            [](void*, long percent) {
                note("progress " + std::to_string(percent));
                return short{0};
            },
            nullptr);
        zebThreads(fThreads);
    }
    static void note(const std::string& what)
    {
        EXPECT_EQ(std::this_thread::get_id(), fOwn) << what;
        fLog.push_back(what);
    }
    // What render() makes the host hear with so many threads.
    template <class Render>
    static std::vector<std::string> log(long threads, const Render& render)
    {
        fLog.clear();
        fThreads = threads;
        zebReset();
        render();
        return fLog;
    }
    // Renders by all numbers of threads.
    template <class Render>
    static void expectSame(const Render& render, const std::string& what)
    {
        const auto serial = log(1, render);
        for (const long threads : kThreads) {
            delayBy(threads);
            const auto log = Host::log(threads, render);
            EXPECT_EQ(log.size(), serial.size()) << what << ", " << threads << " threads";
            std::size_t k = 0;
            while (k < log.size() && k < serial.size() && log[k] == serial[k]) ++k;
            EXPECT_TRUE(k == serial.size())
                << what << ", " << threads << " threads: heard " << k << " is '"
                << (k < log.size() ? log[k] : "nothing") << "' instead of '" << serial[k] << "'";
        }
    }

    static inline std::function<void(long x, long y)> fInSpan;
    static long threads() { return fThreads; }

private:
    static void heard(long code, long severity, const char* message)
    {
        note("report " + std::to_string(code) + " " + std::to_string(severity) + " " +
             (message ? message : "(null)"));
    }

    static inline std::vector<std::string> fLog;
    static inline int fChannels = 3;
    static inline long fThreads = 1;
    static inline const std::thread::id fOwn = std::this_thread::get_id();
};

class Threads : public testing::Test
{
protected:
    Threads() { Host::fInSpan = nullptr; }
    ~Threads() override { Host::fInSpan = nullptr; }

    Host host;
};

// Of small buckets: there are some thirty.
void begin(short quirks = 0)
{
    Host::attach(3);
    zebColorQuantize(0, 0, 0);
    zebRasterViewport(0, 40, 0, 40);
    zebQuirks(quirks);
    zebTune(16, 8, 6);
    zebViewPerspective(60);
    zebTranslate(0, 0, 3);
    zebSceneBegin();
    zebSurface(zebQuark("constant"), 0);
}

void ball(float x, float y, float z, float radius)
{
    zebMatrixPush();
    zebTranslate(x, y, z);
    zebSphere(radius, -radius, radius, 360, 0);
    zebMatrixPop();
}

}  // namespace

TEST_F(Threads, RandomScenesAreTheSame)
{
    for (unsigned number = 1, count = sceneCount(); number <= count; ++number) {
        const auto render = [&] {
            Picture picture(3);
            RandomScene(number).render(picture, [&] {
                Host::attach(picture.channels());
                zebTune(16, 8, 6);
            });
        };
        Host::expectSame(render, "scene " + std::to_string(number));
    }
}

// A device may add geometry for the buckets that are left.
TEST_F(Threads, GeometryFromTheDeviceIsSeenByTheBucketsThatAreLeft)
{
    const auto render = [] {
        int added = 0;
        Host::fInSpan = [&added](long x, long y) {
            if (y % 6 != 5 || x % 16 != 0 || added == 6) return;
            ++added;
            color(1, 0.1f * static_cast<float>(added), 0);
            ball(0.1f * static_cast<float>(added), 0.5f, -0.2f * static_cast<float>(added), 0.7f);
        };
        begin();
        color(0, 0, 1);
        ball(0, 0, 0, 1.2f);
        ball(0.3f, 0.3f, 0, 1.1f);
        zebSceneEnd();
        EXPECT_EQ(added, 6);
    };
    Host::expectSame(render, "added by the device");
}

TEST_F(Threads, StagedRenderingIsTheSame)
{
    const auto render = [] {
        begin();
        color(0, 1, 0);
        ball(0, 0, 0, 1.2f);
        zebRenderInit();
        for (int k = 0; k < 11; ++k) {
            zebRenderBucket();
            if (k == 4) ball(0, 1, -1, 0.5f);
        }
        zebSceneEnd();
    };
    Host::expectSame(render, "staged");
}

namespace
{

// A box that becomes four smaller ones, and these spheres at last.
struct Boxes {
    static void subdivide(void* data, float detail)
    {
        const int level = *static_cast<int*>(data);
        Host::note("subdivide " + std::to_string(level) + " " + std::to_string(detail));
        if (level == 0) {
            color(1, 1, 0);
            zebSphere(0.5f, -0.5f, 0.5f, 360, 0);
            zebCone(-1, 0, 0, 0, zebQuark("nothing"), nullptr, 0);
            return;
        }
        for (int k = 0; k < 4; ++k) {
            zebMatrixPush();
            zebTranslate(k % 2 ? 0.5f : -0.5f, k / 2 ? 0.5f : -0.5f, 0.1f * static_cast<float>(k));
            zebScale(0.5f, 0.5f, 0.5f);
            add(level - 1);
            zebMatrixPop();
        }
    }
    static void add(int level, float x = 0)
    {
        const float bound[6] = {x - 1, x + 1, -1, 1, -1, 1};
        zebProcedural(new int(level), bound, subdivide, [](void* data) {
            Host::note("free " + std::to_string(*static_cast<int*>(data)));
            delete static_cast<int*>(data);
        });
    }
};

}  // namespace

TEST_F(Threads, ProceduralsAreCalledInTurn)
{
    const auto render = [] {
        begin();
        color(0, 0, 1);
        ball(0, 0, 0.5f, 1.2f);
        Boxes::add(3);
        ball(1, 1, 0, 0.6f);
        zebSceneEnd();
    };
    Host::expectSame(render, "procedurals");
}

// In objects, too, where some can't be seen.
TEST_F(Threads, ProceduralsOfObjectsAreFreedOnTheThreadOfTheHost)
{
    const auto render = [] {
        begin();
        const void* const object = zebObjectBegin();
        Boxes::add(1);
        Boxes::add(1, 100);
        zebObjectEnd();
        zebTranslate(-1.5f, -1.5f, 0);
        for (int k = 0; k < 30; ++k) {
            zebObjectCall(object);
            zebTranslate(0.1f, 0.1f, 0);
        }
        zebSceneEnd();
    };
    Host::expectSame(render, "procedurals of objects");
}

// As long as quirks are kept, the last of an object's instances decides for all that are not
// rendered yet.
TEST_F(Threads, InstancesFromTheDeviceMoveTheOthers)
{
    for (const short quirks : {0, 1}) {
        const auto render = [quirks] {
            const void* object = nullptr;
            int added = 0;
            Host::fInSpan = [&](long x, long y) {
                if (x != 16 || y % 12 != 5 || added == 2) return;
                ++added;
                zebTranslate(0.1f, 0.3f, 0);
                zebObjectCall(object);
            };
            begin(quirks);
            object = zebObjectBegin();
            ball(0, 0, 0, 0.5f);
            zebObjectEnd();
            color(1, 0, 0);
            zebObjectCall(object);
            color(0, 1, 0);
            zebTranslate(0, -0.7f, 0);
            zebObjectCall(object);
            zebSceneEnd();
        };
        Host::expectSame(render, quirks ? "instances with quirks" : "instances");
    }
}

// Of surfaces that are too steep by the point of a huge weight: which of their pieces may still be
// split, and which are given up, is a matter of turn.
TEST_F(Threads, SurfacesThatTakeTooManySplitsAreTheSame)
{
    const auto render = [] {
        begin();
        color(0, 0, 1);
        ball(0, 0, 0.5f, 1.2f);
        const float knots[8] = {0, 0, 0, 0, 1, 1, 1, 1};
        for (int k = 0; k < 3; ++k) {
            color(1, 0.4f * static_cast<float>(k), 0);
            std::vector<std::array<float, 4>> points;
            for (int i = 0; i < 16; ++i) {
                const float w = i == 5 + k ? 1e18f : 1;
                points.push_back({w * (static_cast<float>(i % 4) / 3 - 0.8f),
                                  w * (static_cast<float>(i / 4) / 2 - 0.8f),
                                  w * (-0.2f - 0.1f * static_cast<float>(k)), w});
            }
            zebNurbMesh(4, 4, knots, 0, 1, 4, 4, knots, 0, 1, zebQuark("pointw"), points.data(), 0);
        }
        zebSceneEnd();
    };
    Host::expectSame(render, "too many splits");
    const auto log = Host::log(3, render);
    EXPECT_EQ(std::count_if(log.begin(), log.end(),
                            [](const std::string& line) {
                                return line.find("too many splits") != std::string::npos;
                            }),
              3);
}

// More threads than there is work for.
TEST_F(Threads, APictureOfOneBucketIsTheSame)
{
    const auto render = [] {
        begin();
        zebSceneEnd();
        zebReset();
        Host::attach(3);
        zebRasterViewport(0, 3, 0, 2);
        zebSceneBegin();
        ball(0, 0, 2, 0.5f);
        zebSceneEnd();
    };
    Host::expectSame(render, "one bucket");
}

TEST_F(Threads, ACustomFilterIsCalledInTurn)
{
    static long calls;
    calls = 0;
    const auto render = [] {
        calls = 0;
        Host::attach(3);
        zebRasterViewport(0, 30, 0, 20);
        zebCustomFilter([](float x, float y, float, float) {
            if (++calls % 997 == 0) Host::note("filter " + std::to_string(calls));
            return 1 - 0.25f * (x * x + y * y);
        });
        zebViewPerspective(60);
        zebTranslate(0, 0, 3);
        zebSceneBegin();
        ball(0, 0, 0, 1);
        zebSceneEnd();
    };
    Host::expectSame(render, "custom filter");
}

#ifndef _WIN32
// A filter is called while a bucket is delivered, too, whatever the device.
TEST_F(Threads, GeometryFromAFilterIsSeenByTheBucketsThatAreLeft)
{
    const Folder folder;
    const auto path = folder / "picture.png";
    // So that the host hears of nothing else.
    zebErrorHandler(static_cast<short>(0xB0F), ZEB_ERROR_IGNORE);
    static long calls;
    const auto render = [&] {
        calls = 0;
        zebOutputFile(ZEB_FILE_PNG, path.c_str());
        zebRasterViewport(0, 40, 0, 40);
        zebThreads(Host::threads());
        zebTune(16, 8, 6);
        zebCustomFilter([](float x, float y, float, float) {
            if (++calls % 4000 == 0) {
                color(1, 0.1f * static_cast<float>(calls / 4000), 0);
                ball(0.3f, 0.4f, -1.2f - 0.1f * static_cast<float>(calls / 4000), 0.4f);
            }
            return 1 - 0.25f * (x * x + y * y);
        });
        zebViewPerspective(60);
        zebTranslate(0, 0, 3);
        zebSceneBegin();
        zebSurface(zebQuark("constant"), 0);
        color(0, 0, 1);
        ball(0, 0, 0, 1.2f);
        zebSceneEnd();
        Host::note("calls " + std::to_string(calls));
        EXPECT_FALSE(contents(path).empty());
        Host::note(contents(path));
    };
    Host::expectSame(render, "added by a filter");
    EXPECT_GT(calls, 12000);
}
#endif

TEST_F(Threads, APictureThatIsGivenUpEndsInOrder)
{
    const auto render = [] {
        int rows = 0;
        Host::fInSpan = [&rows](long, long) {
            if (++rows == 40) zebCancel();
        };
        begin();
        ball(0, 0, 0, 1.2f);
        zebSceneEnd();
    };
    Host::expectSame(render, "given up");
}

#ifndef ZEB_SANITIZED
// Some host leaves a callback by a jump, against the rules: it may begin anew. What is jumped over
// is lost, which sanitizers would mind.
TEST_F(Threads, APictureThatWasLeftByAJumpCanBeDropped)
{
    static std::jmp_buf place;
    Host::fInSpan = [](long x, long y) {
        if (x == 8 && y == 10) std::longjmp(place, 1);
    };
    if (setjmp(place) == 0) {
        Host::log(3, [] {
            begin();
            ball(0, 0, 0, 1.2f);
            zebSceneEnd();
        });
        FAIL();
    }
    Host::fInSpan = nullptr;
    Host::expectSame(
        [] {
            begin();
            ball(0, 0, 0, 1.2f);
            zebSceneEnd();
        },
        "after a jump");
}
#endif

#ifndef _WIN32
// In the middle of a picture, too: the child goes on alone.
TEST_F(Threads, AForkedChildRendersTheRest)
{
#ifdef ZEB_SANITIZED
    GTEST_SKIP() << "sanitizers do not follow forks";
#endif
    static pid_t child;
    const auto render = [] {
        begin();
        ball(0, 0, 0, 1.2f);
        zebSceneEnd();
    };
    const auto serial = Host::log(1, render);
    int forks = 0;
    Host::fInSpan = [&forks](long x, long y) {
        if (x == 8 && y == 10 && ++forks == 1) child = fork();
    };
    const auto log = Host::log(3, render);
    if (child == 0) {
        Host::fInSpan = nullptr;
        const bool again = Host::log(3, render) == serial;
        _exit(log == serial && again ? 0 : 1);
    }
    EXPECT_TRUE(log == serial);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

#ifndef ZEB_SANITIZED
TEST_F(Threads, AHostMayExitFromACallback)
{
    EXPECT_EXIT(
        {
            Host::fInSpan = [](long x, long y) {
                if (x == 8 && y == 10) std::exit(3);
            };
            Host::log(3, [] {
                begin();
                ball(0, 0, 0, 1.2f);
                zebSceneEnd();
            });
        },
        testing::ExitedWithCode(3), "");
}
#endif
#endif

}  // namespace zebtest
