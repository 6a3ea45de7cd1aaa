// Pictures in windows: what the screen shows is the picture, whatever its user does to the window.

#include "window_test.h"

#include <algorithm>

#if !defined(_WIN32)
#include <sys/resource.h>
#endif

namespace zebtest
{

namespace
{

class Windows : public WindowTest
{
protected:
    // The world is still open.
    static void showHalfABall()
    {
        zebOutputDisplay("ball");
        beginBall();
        zebRenderInit();
        while (zebProgress() < 50) zebRenderBucket();
    }
};

TEST_F(Windows, ShowThePictureThatAHostReceives)
{
    const Shot picture = ballOfTheHost();
    showBall();
    EXPECT_EQ(zebWindowEvents(0), 1);
    EXPECT_TRUE(shows(only("ball"), picture));
    EXPECT_NE(picture.at(0, 0), picture.at(kWidth / 2, kHeight / 2));
}

#if ZEB_PNG
TEST_F(Windows, ShowThePictureThatAFileHas)
{
    const Shot picture = ballInAFile(ZEB_FILE_PNG);
    showBall();
    EXPECT_TRUE(shows(only("ball"), picture));
}
#endif

TEST_F(Windows, HaveTheTitleGivenOrZebrix)
{
    beginBall();
    zebSceneEnd();
    only("Zebrix");
    zebOutputDisplay("second");
    zebLoadIdentity();
    beginBall();
    zebSceneEnd();
    only("second");
    EXPECT_EQ(zebWindowEvents(0), 2);
}

TEST_F(Windows, AreAsLargeAsThePictureAndStaySo)
{
    showBall();
    const auto window = only("ball");
    const Shot shot = desktop->shoot(window);
    EXPECT_EQ(shot.width, kWidth);
    EXPECT_EQ(shot.height, kHeight);
    EXPECT_FALSE(desktop->canBeResized(window));
}

TEST_F(Windows, Are640By480WhereNoSizeIsGiven)
{
    zebOutputDisplay("ball");
    zebSceneBegin();
    zebSceneEnd();
    const Shot shot = desktop->shoot(only("ball"));
    EXPECT_EQ(shot.width, 640);
    EXPECT_EQ(shot.height, 480);
}

TEST_F(Windows, WearTheLibrarysIcon)
{
    showBall();
    const Shot icon = desktop->icon(only("ball"));
    EXPECT_GE(icon.width, 32);
    EXPECT_EQ(icon.height, icon.width);
    const auto middle = icon.at(icon.width / 2, icon.height / 4);
    EXPECT_NE(middle, 0u);
    EXPECT_NE(middle, icon.at(0, 0)) << "a ball";
    EXPECT_LT(redness(icon), 30) << "and no sheet of messages";
}

TEST_F(Windows, AreBlackBeforeTheFirstRow)
{
    zebOutputDisplay("ball");
    beginBall();
    const Shot black{kWidth, kHeight, std::vector<std::uint32_t>(kWidth * kHeight, 0)};
    EXPECT_TRUE(shows(only("ball"), black));
}

TEST_F(Windows, ShowRowsAsTheyAreFinished)
{
    const Shot picture = ballOfTheHost();
    showHalfABall();
    // Rows of buckets are 12 pixels high: half of them are done, but for the last bucket.
    const auto window = only("ball");
    EXPECT_TRUE(until([&] {
        const Shot shot = desktop->shoot(window);
        return std::equal(shot.colors.begin(), shot.colors.begin() + 24 * kWidth,
                          picture.colors.begin());
    }));
    EXPECT_EQ(desktop->shoot(window).at(kWidth - 1, kHeight - 1), 0u) << "not rendered yet";
    while (zebRenderBucket()) {
    }
    zebSceneEnd();
    EXPECT_TRUE(shows(window, picture));
}

// A procedural that looks at the screen: it belongs to the bottom of the picture.
struct Onlooker {
    Desktop* desktop;
    Shot seen;
};

TEST_F(Windows, ShowRowsWhileTheWorldsEndRenders)
{
    const long width = 480, height = 480;
    zebOutputDisplay("ball");
    zebSampleUniform(6, 6);
    beginBall(ZEB_SAMPLES_RGB, width, height);
    Onlooker onlooker{desktop.get(), {}};
    // y from -1.1 to -1: below the ball.
    const float bound[6] = {-1, 1, -1.3f, -1.2f, 0, 0.1f};
    zebProcedural(
        &onlooker, bound,
        [](void* data, float) {
            auto& self = *static_cast<Onlooker*>(data);
            const auto found = self.desktop->find("ball");
            if (!found.empty()) self.seen = self.desktop->shoot(found[0]);
        },
        [](void*) {});
    zebSceneEnd();
    ASSERT_EQ(onlooker.seen.width, width);
    const auto isColored = [](std::uint32_t color) { return color != 0; };
    const long colored =
        std::count_if(onlooker.seen.colors.begin(), onlooker.seen.colors.end(), isColored);
    EXPECT_GT(colored, width * height / 2);
    EXPECT_LT(colored, width * height);
}

TEST_F(Windows, RepaintWithoutTheHostsHelpWhenUncoveredMovedOrRestored)
{
    const Shot picture = ballOfTheHost();
    showBall();
    const auto window = only("ball");
    ASSERT_TRUE(shows(window, picture));
#if defined(_WIN32)
    const auto showsByItself = [&] { return shows(window, picture); };
#else
    // Only on X does nobody have to run a message loop.
    const auto showsByItself = [&] {
        return eventually([&] { return desktop->shoot(window) == picture; }, [] {});
    };
#endif
    desktop->cover(window);
    EXPECT_TRUE(until([&] { return desktop->shoot(window).at(3, 3) == 0xFFFFFF; }));
    desktop->uncover();
    EXPECT_TRUE(showsByItself());
    desktop->minimize(window);
    desktop->restore(window);
    EXPECT_TRUE(showsByItself());
    desktop->move(window, 300, 200);
    EXPECT_TRUE(showsByItself());
    desktop->move(window, -40, -30);
    zebWindowEvents(0);
    desktop->move(window, 50, 60);
    EXPECT_TRUE(showsByItself());
}

TEST_F(Windows, RepaintWhileTheyAreRendered)
{
    const Shot picture = ballOfTheHost();
    showHalfABall();
    const auto window = only("ball");
    desktop->cover(window);
    zebRenderBucket();
    desktop->uncover();
    while (zebRenderBucket()) {
    }
    zebSceneEnd();
    EXPECT_TRUE(shows(window, picture));
}

TEST_F(Windows, EveryWorldHasOneOfItsOwn)
{
    const Shot picture = ballOfTheHost();
    showBall("ball");
    showBall("second");
    showBall("second");
    EXPECT_EQ(zebWindowEvents(0), 3);
    ASSERT_TRUE(until([this] { return desktop->find("second").size() == 2; }));
    desktop->move(only("ball"), 500, 400);
    EXPECT_TRUE(shows(only("ball"), picture));
    desktop->close(desktop->find("second")[0]);
    EXPECT_TRUE(until([] { return zebWindowEvents(0) == 2; }));
    EXPECT_EQ(desktop->find("second").size(), 1u);
}

TEST_F(Windows, CloseByTheirButton)
{
    showBall();
    desktop->close(only("ball"));
    EXPECT_TRUE(until([] { return zebWindowEvents(0) == 0; }));
    EXPECT_TRUE(desktop->find("ball").empty());
}

TEST_F(Windows, CloseByTheEscapeKey)
{
    showBall();
    desktop->pressEscape(only("ball"));
    EXPECT_TRUE(until([] { return zebWindowEvents(0) == 0; }));
    EXPECT_TRUE(desktop->find("ball").empty());
}

TEST_F(Windows, EventsCanBeWaitedFor)
{
    showBall();
    desktop->close(only("ball"));
    while (zebWindowEvents(1) > 0) {
    }
    EXPECT_TRUE(desktop->find("ball").empty()) << "it is gone at once";
    EXPECT_EQ(zebWindowEvents(1), 0) << "waiting where no window is open would never end";
}

TEST_F(Windows, ClosedWhileTheyAreRenderedDropTheRestAndNothingElse)
{
    Reports reports;
    showHalfABall();
    desktop->close(only("ball"));
    ASSERT_TRUE(until([] { return zebWindowEvents(0) == 0; }));
    while (zebRenderBucket()) {
    }
    zebSceneEnd();
    EXPECT_TRUE(reports.empty());
    EXPECT_TRUE(desktop->find("ball").empty());
    const Shot picture = ballOfTheHost();
    showBall();
    EXPECT_TRUE(shows(only("ball"), picture)) << "the next picture is none the worse";
}

TEST_F(Windows, MayCloseInTheMiddleOfTheWorldsEnd)
{
    Reports reports;
    zebOutputDisplay("ball");
    zebSampleUniform(6, 6);
    beginBall(ZEB_SAMPLES_RGB, 480, 480);
    const auto window = only("ball");
    struct Closer {
        Desktop* desktop;
        Desktop::Window window;
    } closer{desktop.get(), window};
    const float bound[6] = {-1, 1, 0, 0.1f, 0, 0.1f};
    zebProcedural(
        &closer, bound,
        [](void* data, float) {
            const auto& self = *static_cast<Closer*>(data);
            self.desktop->close(self.window);
            EXPECT_TRUE(until([] { return zebWindowEvents(0) == 0; }));
        },
        [](void*) {});
    zebSceneEnd();
    EXPECT_EQ(zebWindowEvents(0), 0);
    EXPECT_TRUE(desktop->find("ball").empty());
    EXPECT_TRUE(reports.empty()) << reports[0].message;
}

// Runs something of the host's at the upper edge of the picture, in its middle and at its lower
// edge, while the world's end renders.
struct Interludes {
    std::function<void()> works[3];

    void add()
    {
        const float heights[3] = {1.4f, 0, -1.4f};
        for (int i = 0; i < 3; ++i) {
            const float bound[6] = {-0.1f, 0.1f, heights[i], heights[i] + 0.01f, 0, 0.1f};
            zebProcedural(
                &works[i], bound,
                [](void* data, float) { (*static_cast<std::function<void()>*>(data))(); },
                [](void*) {});
        }
    }
};

// Windows are looked at some thirty times a second.
void letTimePass() { std::this_thread::sleep_for(std::chrono::milliseconds(100)); }

TEST_F(Windows, CloseWhileTheWorldsEndRendersWithoutTheHostsHelp)
{
    Reports reports;
    zebOutputDisplay("ball");
    beginBall();
    const auto window = only("ball");
    std::size_t left = 9;
    Interludes interludes{{[&] { desktop->close(window); }, letTimePass,
                           [&] { left = desktop->find("ball").size(); }}};
    interludes.add();
    zebSceneEnd();
    EXPECT_EQ(left, 0u);
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(zebWindowEvents(0), 0);
}

TEST_F(Windows, OfEarlierPicturesCloseWhileTheNextIsRenderedAndTakeNothingOfIt)
{
    const Shot picture = ballOfTheHost();
    showBall("first");
    const auto first = only("first");
    zebOutputDisplay("ball");
    beginBall();
    std::size_t left = 9;
    Interludes interludes{{[&] { desktop->close(first); }, letTimePass,
                           [&] { left = desktop->find("first").size(); }}};
    interludes.add();
    zebSceneEnd();
    EXPECT_EQ(left, 0u);
    EXPECT_TRUE(shows(only("ball"), picture));
}

TEST_F(Windows, KeepWhatThereIsOfAPictureGivenUp)
{
    const Shot picture = ballOfTheHost();
    showHalfABall();
    zebReset();
    EXPECT_EQ(zebWindowEvents(0), 1);
    const auto window = only("ball");
    EXPECT_TRUE(until([&] { return desktop->shoot(window).at(50, 20) == picture.at(50, 20); }));
    EXPECT_EQ(desktop->shoot(window).at(50, 70), 0u);
}

TEST_F(Windows, ShowAlphaAloneAsGrey)
{
    const Shot picture = ballOfTheHost(ZEB_SAMPLES_ALPHA, 1);
    zebOutputDisplay("ball");
    beginBall(ZEB_SAMPLES_ALPHA);
    zebSceneEnd();
    EXPECT_TRUE(shows(only("ball"), picture));
    EXPECT_EQ(picture.at(40, 40), 0xFFFFFFu);
}

TEST_F(Windows, ShowDepthAloneAsGrey)
{
    zebClip(1, 9);
    zebDepthQuantize(255, 0, 255);
    const Shot picture = ballOfTheHost(ZEB_SAMPLES_DEPTH, 1);
    zebOutputDisplay("ball");
    beginBall(ZEB_SAMPLES_DEPTH);
    zebSceneEnd();
    EXPECT_TRUE(shows(only("ball"), picture));
    EXPECT_LT(picture.at(kWidth / 2, kHeight / 2), picture.at(1, 1)) << "the ball is nearer";
    EXPECT_EQ(picture.at(1, 1) % 0x010101, 0u);
}

TEST_F(Windows, ShowFloatsClamped)
{
    zebOutputDisplay("ball");
    zebColorQuantize(0, 0, 0);
    zebColorGain(2);
    zebRasterViewport(0, 24, 0, 24);
    zebSceneBegin();
    const float half[3] = {0.75f, 0.25f, -1};
    const float plane[4][3] = {{-9, -9, 2}, {9, -9, 2}, {9, 9, 2}, {-9, 9, 2}};
    zebColor(half);
    zebSurface(zebQuark("constant"), 0);
    zebPolygon(4, zebQuark("point"), plane, 0);
    zebSceneEnd();
    const auto window = only("ball");
    // Twice 0.75 is more than white, twice 0.25 is 127.5 of 255, rounded upwards.
    EXPECT_TRUE(until([&] { return desktop->shoot(window).at(12, 12) == 0xFF8000u; }));
}

TEST_F(Windows, OfEarlierPicturesCloseWhileAnotherIsRenderedElsewhere)
{
    showBall();
    const auto window = only("ball");
    Picture picture(3);
    picture.attach();
    beginBall();
    zebRenderInit();
    desktop->close(window);
    letTimePass();
    while (zebRenderBucket()) {
    }
    EXPECT_TRUE(desktop->find("ball").empty());
    zebSceneEnd();
    EXPECT_EQ(picture.closed, 1);
}

TEST_F(Windows, TakeTitlesInUtf8AndTitlesThatAreNone)
{
    const std::string title = "k\xC3\xBCrbis \xCE\xB1 \xE8\xA1\xA8";
    showBall(title.c_str());
    desktop->close(only(title));
    EXPECT_TRUE(until([] { return zebWindowEvents(0) == 0; }));
    const std::string longTitle(5000, 'x');
    for (const char* odd :
         {"", static_cast<const char*>(nullptr), "null", "caf\xE9", longTitle.c_str()}) {
        zebOutputDisplay(odd);
        beginBall(ZEB_SAMPLES_RGB, 12, 12);
        zebSceneEnd();
        zebLoadIdentity();
    }
    EXPECT_EQ(zebWindowEvents(0), 5);
    closeAll();
}

TEST_F(Windows, AreRefusedWherePicturesAreTooLarge)
{
    Reports reports;
    zebOutputDisplay("ball");
    zebRasterViewport(0, 40000, 0, 2);
    zebSceneBegin();
    EXPECT_EQ(zebWindowEvents(0), 0);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0], (Report{10, ZEB_ERROR,
                                  "zebSceneBegin: a picture of 40000 x 2 is too "
                                  "large for a window"}));
    zebSceneEnd();
    // As many pixels as a window may have, and 24,575 more.
    zebRasterViewport(0, 32767, 0, 8193);
    zebImageCrop(0, 0.001f, 0, 0.001f);
    zebSceneBegin();
    zebSceneEnd();
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[1].code, 10);
    EXPECT_EQ(reports[1].message,
              "zebSceneBegin: a picture of 32767 x 8193 is too large for a window");
}

#if !defined(_WIN32) && !defined(ZEB_SANITIZED)
TEST_F(Windows, AreRefusedWhereThereIsNoMemoryForThem)
{
    Reports reports;
    showBall("second");
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &limit), 0);
    rlimit little = limit;
    little.rlim_cur = rlim_t{1} << 30;
    ASSERT_EQ(setrlimit(RLIMIT_AS, &little), 0);
    zebOutputDisplay("ball");
    zebRasterViewport(0, 16384, 0, 16384);
    zebImageCrop(0, 0.001f, 0, 0.001f);
    zebSceneBegin();
    EXPECT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
    zebSceneEnd();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].message,
              "zebSceneBegin: a picture of 16384 x 16384 is too large for a window");
    EXPECT_EQ(zebWindowEvents(0), 1);
}
#endif

}  // namespace
}  // namespace zebtest
