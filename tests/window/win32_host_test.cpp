// A host with windows and a message loop of its own.

#include <windows.h>

#include "window_test.h"

namespace zebtest
{

namespace
{

class Win32Host : public WindowTest
{
protected:
    static HWND handle(Desktop::Window window) { return reinterpret_cast<HWND>(window); }
};

TEST_F(Win32Host, MayDestroyAPicture)
{
    showBall();
    DestroyWindow(handle(only("ball")));
    EXPECT_EQ(zebWindowEvents(0), 0);
}

TEST_F(Win32Host, MayHideAPictureForGood)
{
    showBall();
    ShowWindow(handle(only("ball")), SW_HIDE);
    EXPECT_EQ(zebWindowEvents(0), 0);
}

TEST_F(Win32Host, MayMinimizeAPicture)
{
    showBall();
    ShowWindow(handle(only("ball")), SW_MINIMIZE);
    EXPECT_EQ(zebWindowEvents(0), 1);
}

TEST_F(Win32Host, HearsThatThereIsNoPaletteToRealize)
{
    showBall();
    EXPECT_EQ(SendMessageW(handle(only("ball")), WM_QUERYNEWPALETTE, 0, 0), 0);
}

TEST_F(Win32Host, MayDestroyAPictureWhileItRenders)
{
    zebOutputDisplay("ball");
    beginBall();
    zebRenderInit();
    ASSERT_TRUE(zebRenderBucket());
    DestroyWindow(handle(only("ball")));
    while (zebRenderBucket()) {
    }
    zebSceneEnd();
    EXPECT_EQ(zebLastError(), 0);
    EXPECT_EQ(zebWindowEvents(0), 0);
}

TEST_F(Win32Host, LearnsThatItsProcessIsToEnd)
{
    showBall();
    PostQuitMessage(3);
    EXPECT_EQ(zebWindowEvents(1), 0);
    MSG message{};
    ASSERT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
    EXPECT_EQ(message.wParam, 3u);
    EXPECT_EQ(zebWindowEvents(0), 1);
}

int calls = 0;

LRESULT CALLBACK onMessage(HWND window, UINT message, WPARAM w, LPARAM l)
{
    if (message == WM_APP) ++calls;
    return DefWindowProcW(window, message, w, l);
}

// Messages to its own windows wait while it renders, and are handled when it waits.
TEST_F(Win32Host, IsNotCalledBackWhileItRenders)
{
    calls = 0;
    WNDCLASSW own{};
    own.lpfnWndProc = onMessage;
    own.hInstance = GetModuleHandleW(nullptr);
    own.lpszClassName = L"own";
    RegisterClassW(&own);
    const HWND window = CreateWindowW(L"own", L"own", WS_OVERLAPPEDWINDOW, 0, 0, 100, 100, nullptr,
                                      nullptr, own.hInstance, nullptr);
    ASSERT_NE(window, nullptr);
    PostMessageW(window, WM_APP, 0, 0);
    showBall();
    EXPECT_EQ(calls, 0);
    zebWindowEvents(1);
    EXPECT_EQ(calls, 1);
    DestroyWindow(window);
    UnregisterClassW(L"own", own.hInstance);
}

}  // namespace
}  // namespace zebtest
