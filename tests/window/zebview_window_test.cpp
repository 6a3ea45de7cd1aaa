// zebview without a file shows the model in a window.

#include "window_test.h"
#include "zebview/process.h"

namespace zebtest
{

namespace
{

class ZebviewWindow : public Zebview
{
protected:
    Desktop::Window waitFor(const std::string& title)
    {
        for (int i = 0; i < 1000; ++i) {
            const auto found = desktop->find(title);
            if (!found.empty()) return found[0];
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        ADD_FAILURE() << "no window " << title;
        return 0;
    }
    bool isRunning(pid_t pid) { return waitpid(pid, nullptr, WNOHANG) == 0; }

    const std::string kTriangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
    std::unique_ptr<Desktop> desktop = openDesktop([] {});
};

TEST_F(ZebviewWindow, StaysUntilEscapeIsPressed)
{
    const pid_t pid = start({write("triangle.obj", kTriangle), "--size", "200x100"});
    const auto window = waitFor("triangle.obj");
    const Shot shot = desktop->shoot(window);
    EXPECT_EQ(shot.width, 200);
    EXPECT_EQ(shot.height, 100);
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_TRUE(isRunning(pid));
    EXPECT_NE(desktop->shoot(window).at(100, 50), 0u);
    desktop->pressEscape(window);
    const Outcome outcome = finish(pid);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(files(), std::vector<std::string>{"triangle.obj"});
}

TEST_F(ZebviewWindow, StaysUntilItsCloseButtonIsPressed)
{
    const pid_t pid = start({write("triangle.obj", kTriangle), "--size", "200x100"});
    const auto window = waitFor("triangle.obj");
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_TRUE(isRunning(pid));
    desktop->close(window);
    EXPECT_EQ(finish(pid).status, 0);
}

TEST_F(ZebviewWindow, ClosedWhileItRendersEndsTheRendering)
{
    const pid_t pid = start({write("triangle.obj", kTriangle), "--size", "900x700", "--samples",
                             "64", "--rate", "0.01"});
    desktop->close(waitFor("triangle.obj"));
    const Outcome outcome = finish(pid);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
}

TEST_F(ZebviewWindow, EndsWhenItIsToldTo)
{
    const pid_t pid = start({write("triangle.obj", kTriangle), "--size", "200x100"});
    waitFor("triangle.obj");
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    kill(pid, SIGTERM);
    EXPECT_EQ(finish(pid).status, 1000 + SIGTERM);
    EXPECT_TRUE(desktop->find("triangle.obj").empty());
}

}  // namespace
}  // namespace zebtest
