// The message console, read with the user's means.

#if defined(_WIN32)
#include <windows.h>
#else
#include <FL/Fl.H>
#endif

#include "window_test.h"

namespace zebtest
{

namespace
{

constexpr const char* kTitle = "ZEB Messages";

class Console : public WindowTest
{
protected:
    // Refused with a message that holds the number.
    static void complain(int number) { zebFilterWidth(static_cast<float>(-number), 2); }
    static std::string complaint(int number)
    {
        return "error: Parameter out of range. zebFilterWidth: filter width -" +
               std::to_string(number) + " x 2 out of range";
    }
    std::string selection()
    {
        std::string text = desktop->copySelection(only(kTitle));
        while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
        return text;
    }
    // A row of the console, as it is copied from there.
    std::string row(int line)
    {
        std::string text;
        until([&] {
            desktop->selectLine(only(kTitle), line);
            text = selection();
            return !text.empty();
        });
        return text;
    }
    // Messages come a moment after they were made.
    bool shows(int line, const std::string& text)
    {
        return until([&] { return row(line) == text; });
    }
};

TEST_F(Console, IsOpenedByTheFirstMessageBeforeAnyFrame)
{
    zebWindowEvents(0);
    EXPECT_TRUE(desktop->find(kTitle).empty());
    complain(7);
    const auto window = only(kTitle);
    const Shot icon = desktop->icon(window);
    EXPECT_GE(icon.width, 32);
    EXPECT_GT(redness(icon), 100);
    EXPECT_EQ(zebWindowEvents(0), 0) << "it is no picture";
    EXPECT_TRUE(shows(0, complaint(7)));
}

TEST_F(Console, StaysWhereItIsAndTakesAllMessages)
{
    complain(1);
    complain(2);
    zebFrameEnd();
    EXPECT_EQ(desktop->find(kTitle).size(), 1u);
    EXPECT_TRUE(shows(1, complaint(2)));
    EXPECT_TRUE(shows(2, "error: Bad begin-end nesting. zebFrameEnd"));
}

TEST_F(Console, HasRoomFor80ColumnsAnd10LinesAndShowsTheNewest)
{
    for (int i = 1; i <= 40; ++i) complain(i);
    // The last of the ten is the empty one after the newest message's end.
    EXPECT_TRUE(shows(8, complaint(40)));
    EXPECT_TRUE(shows(0, complaint(32)));
    EXPECT_EQ(complaint(40).size(), 80u) << "and fits into a row";
#if !defined(_WIN32)
    // There the font may be narrower than its metrics say.
    complain(100);
    EXPECT_TRUE(shows(8, "range")) << "of 81 characters the last word goes to the next row";
#endif
}

TEST_F(Console, CannotBeTypedInto)
{
    complain(5);
    desktop->typeText(only(kTitle), "typed");
    zebWindowEvents(0);
    complain(6);
    EXPECT_TRUE(shows(0, complaint(5)));
    EXPECT_TRUE(shows(1, complaint(6)));
}

TEST_F(Console, LeavesSelectedWhatItsUserHasSelected)
{
    complain(5);
    desktop->selectLine(only(kTitle), 0);
    for (int i = 1; i <= 20; ++i) complain(i);
    EXPECT_EQ(selection(), complaint(5));
    EXPECT_TRUE(shows(8, complaint(20))) << "and shows the newest all the same";
    // The first half of so much text is dropped.
    for (int i = 1; i <= 700; ++i) complain(100);
    complain(7);
    ASSERT_TRUE(shows(8, complaint(7)));
    for (int i = 1; i <= 200; ++i) complain(100);
    EXPECT_EQ(selection(), complaint(7));
}

TEST_F(Console, OpensAgainAfterItWasClosed)
{
    complain(3);
    desktop->close(only(kTitle));
    ASSERT_TRUE(until([&] { return desktop->find(kTitle).empty(); }));
    complain(4);
    EXPECT_TRUE(shows(1, complaint(4))) << "earlier messages are still there";
}

TEST_F(Console, IsNotForPicturesThatGoElsewhere)
{
    zebOutputFile(ZEB_FILE_AUTO, "never.png");
    testing::internal::CaptureStderr();
    complain(6);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), complaint(6) + "\n");
    zebWindowEvents(0);
    EXPECT_TRUE(desktop->find(kTitle).empty());
}

TEST_F(Console, IsNotForTheLastWordsOfAProcess)
{
    EXPECT_DEATH(
        {
            zebErrorHandler(ZEB_ALL, ZEB_ERROR_ABORT);
            complain(9);
        },
        complaint(9));
}

TEST_F(Console, KeepsUpWithAFloodAndShowsTheNewest)
{
    for (int i = 1; i <= 20000; ++i) complain(i);
    complain(7);
    EXPECT_TRUE(shows(8, complaint(7)));
}

TEST_F(Console, ShowsTheEndOfAFloodOnceTheHostsOwnLoopRuns)
{
    for (int i = 1; i <= 6000; ++i) complain(i);
    complain(7);
    const auto begin = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - begin < std::chrono::milliseconds(300)) {
#if defined(_WIN32)
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
#else
        Fl::wait(0.01);
#endif
    }
    const auto window = desktop->find(kTitle).at(0);
    const Shot shot = desktop->shoot(window);
    zebWindowEvents(0);
    EXPECT_TRUE(desktop->shoot(window) == shot) << "there was something left to show";
    EXPECT_TRUE(shows(8, complaint(7)));
}

#if defined(_WIN32)
TEST_F(Console, OpensAgainAfterTheHostDestroyedIt)
{
    complain(3);
    DestroyWindow(reinterpret_cast<HWND>(only(kTitle)));
    complain(4);
    EXPECT_TRUE(shows(0, complaint(4)));
}
#endif

TEST_F(Console, TakesNamesInAnyEncoding)
{
    zebObjectName("k\xC3\xBCrbis");
    zebObjectName("caf\xE9");
    complain(2);
    EXPECT_TRUE(shows(0, complaint(2)));
}

TEST_F(Console, IsNotForHostsThatPrintThemselves)
{
    static std::string line;
    zebErrorPrinter([](const char* text) { line = text; });
    complain(8);
    EXPECT_EQ(line, complaint(8));
    EXPECT_TRUE(desktop->find(kTitle).empty());
}

TEST_F(Console, ShowsMessagesOfAPictureBesideIt)
{
    testing::internal::CaptureStderr();
    zebOutputDisplay("ball");
    beginBall();
    zebClip(1, 2);
    zebSceneEnd();
    only("ball");
    EXPECT_TRUE(shows(0, "error: Invalid state for parameters. zebClip"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace zebtest
