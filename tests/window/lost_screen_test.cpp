// A screen that goes away takes the windows with it, and nothing else.

#include <csignal>
#include <cstdlib>

#include "window_test.h"

namespace zebtest
{

namespace
{

// Set by with_screen.sh.
void killServer()
{
    const char* server = std::getenv("SCREEN_SERVER");
    ASSERT_NE(server, nullptr);
    ASSERT_EQ(kill(std::atoi(server), SIGKILL), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
}

class LostScreen : public testing::Test
{
protected:
    LostScreen() { zebReset(); }
    Reports reports;
};

TEST_F(LostScreen, EndsWindowsAndNotTheHost)
{
    zebOutputDisplay("ball");
    zebRasterViewport(0, 240, 0, 240);
    zebViewPerspective(45);
    zebTranslate(0, 0, 4);
    zebSceneBegin();
    zebSphere(1, -1, 1, 360, 0);
    zebRenderInit();
    for (int i = 0; i < 50; ++i) zebRenderBucket();
    EXPECT_EQ(zebWindowEvents(0), 1);
    killServer();
    while (zebRenderBucket()) {
    }
    zebSceneEnd();
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(zebWindowEvents(0), 0);
    EXPECT_EQ(zebWindowEvents(1), 0);

    zebSceneBegin();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0],
              (Report{2, ZEB_WARNING,
                      "zebSceneBegin: no window can be opened here, the picture is dropped"}));
    zebSceneEnd();

    zebErrorHandler(static_cast<short>(ZEB_ALL), ZEB_ERROR_PRINT);
    testing::internal::CaptureStderr();
    zebFrameEnd();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "error: Bad begin-end nesting. zebFrameEnd\n");
}

}  // namespace
}  // namespace zebtest
