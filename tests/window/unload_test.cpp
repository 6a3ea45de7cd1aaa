// A library that is unloaded takes its windows with it: nothing may call into it any more.

#include "window_test.h"
#include "windows/loading.h"

namespace zebtest
{

namespace
{

class Unload : public Loading
{
protected:
    // Opens a window and the console.
    static void open(HMODULE library)
    {
        function<decltype(zebFrameEnd)>(library, "zebFrameEnd")();
        function<decltype(zebOutputDisplay)>(library, "zebOutputDisplay")("unloaded");
        function<decltype(zebSceneBegin)>(library, "zebSceneBegin")();
        function<decltype(zebSceneEnd)>(library, "zebSceneEnd")();
        EXPECT_EQ(function<decltype(zebWindowEvents)>(library, "zebWindowEvents")(0), 1);
    }
    static void handleAllMessages()
    {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
    }

    std::unique_ptr<Desktop> desktop = openDesktop([] {});
};

}  // namespace

TEST_F(Unload, ClosesWindowsAndConsoleAndALaterLoadOpensThemAnew)
{
    for (int round = 0; round < 2; ++round) {
        const HMODULE library = load();
        ASSERT_NE(library, nullptr);
        open(library);
        EXPECT_EQ(desktop->find("unloaded").size(), 1u) << round;
        EXPECT_EQ(desktop->find("ZEB Messages").size(), 1u) << round;
        FreeLibrary(library);
        EXPECT_FALSE(loaded());
        EXPECT_TRUE(desktop->find("unloaded").empty());
        EXPECT_TRUE(desktop->find("ZEB Messages").empty());
        handleAllMessages();
    }
}

}  // namespace zebtest
