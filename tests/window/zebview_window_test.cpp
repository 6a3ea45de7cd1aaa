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
    Desktop::Window waitFor(const std::string& title,
                            std::chrono::microseconds pause = std::chrono::milliseconds(10))
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (std::chrono::steady_clock::now() < end) {
            const auto found = desktop->find(title);
            if (!found.empty()) return found[0];
            std::this_thread::sleep_for(pause);
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

TEST_F(ZebviewWindow, MayBeClosedAtFirstSight)
{
    const std::string triangle = write("triangle.obj", kTriangle);
    for (int i = 0; i < 10; ++i) {
        const pid_t pid = start({triangle, "--size", "200x100"});
        // Stopped, it finds the wish when it first looks at what happened to the window.
        const auto window = waitFor("triangle.obj", std::chrono::microseconds(0));
        kill(pid, SIGSTOP);
        desktop->close(window);
        kill(pid, SIGCONT);
        const Outcome outcome = finish(pid);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.err, "");
    }
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
