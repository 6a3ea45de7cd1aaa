// zebview without a file shows the model in a window, and turns it.

#include <cmath>
#include <functional>
#include <memory>

#include "mouse.h"
#include "window_test.h"
#include "zebview/gltf_animation.h"
#include "zebview/image.h"
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
    static bool eventually(const std::function<bool()>& holds)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!holds()) {
            if (std::chrono::steady_clock::now() > end) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return true;
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

// A window that shows a model, and somebody who waits until it has no more to do.
class TurningWindow : public ZebviewWindow
{
protected:
    // A block that looks different from every side, one unit wide, two high and three deep.
    static constexpr const char* kBlock =
        "v -0.5 -1 -1.5\nv 0.5 -1 -1.5\nv 0.5 1 -1.5\nv -0.5 1 -1.5\n"
        "v -0.5 -1 1.5\nv 0.5 -1 1.5\nv 0.5 1 1.5\nv -0.5 1 1.5\n"
        "f 4 3 2 1\nf 5 6 7 8\nf 1 2 6 5\nf 2 3 7 6\nf 3 4 8 7\nf 4 1 5 8\n";
    static constexpr std::uint32_t kBackdrop = 0x333333;

    ~TurningWindow() override
    {
        if (pid > 0) {
            desktop->pressEscape(window);
            EXPECT_EQ(finish(pid).status, 0);
        }
    }

    void open(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.end(), {"--size", size});
        pid = start(arguments);
        window = waitFor(arguments[0]);
        mouse = takeMouse(window);
    }
    void openBlock(std::vector<std::string> options = {})
    {
        options.insert(options.begin(), "block.obj");
        write("block.obj", kBlock);
        open(options);
    }

    // What is saved is the picture at its finest: whoever asks for it waits until it is there.
    Image settled()
    {
        const std::string name = "block_" + std::to_string(++saved) + ".png";
        mouse->press("s");
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (files(name).empty() && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return Image(path(name));
    }
    std::vector<std::string> files(const std::string& name)
    {
        std::vector<std::string> found;
        for (const std::string& file : Zebview::files()) {
            if (file == name) found.push_back(file);
        }
        return found;
    }
    // As a file that is rendered with the same settings.
    Image rendered(std::vector<std::string> options)
    {
        options.insert(options.begin(), "block.obj");
        options.insert(options.end(), {"--size", size, "-o", "rendered.png"});
        EXPECT_EQ(Zebview::run(options).status, 0);
        return Image(path("rendered.png"));
    }

    static void expectSame(const Image& a, const Image& b)
    {
        ASSERT_EQ(a.width, b.width);
        ASSERT_EQ(a.height, b.height);
        for (int y = 0; y < a.height; ++y) {
            for (int x = 0; x < a.width; ++x) ASSERT_EQ(a.at(x, y), b.at(x, y)) << x << ' ' << y;
        }
    }
    // Sides of a block that is seen from straight above lie along rows of samples, where rounding
    // counts: a sample more or less.
    static void expectSameShape(const Image& a, const Image& b)
    {
        ASSERT_EQ(a.width, b.width);
        ASSERT_EQ(a.height, b.height);
        for (int y = 0; y < a.height; ++y) {
            for (int x = 0; x < a.width; ++x) {
                ASSERT_NEAR(a.alpha(x, y), b.alpha(x, y), 20) << x << ' ' << y;
            }
        }
    }
    static bool same(const Image& a, const Image& b)
    {
        for (int y = 0; y < a.height; ++y) {
            for (int x = 0; x < a.width; ++x) {
                if (a.at(x, y) != b.at(x, y)) return false;
            }
        }
        return a.width == b.width && a.height == b.height;
    }

    pid_t pid = -1;
    Desktop::Window window = 0;
    std::unique_ptr<Mouse> mouse;
    int saved = 0;
    std::string size = "160x120";
};

TEST_F(TurningWindow, SavesThePictureThatAFileWouldGet)
{
    openBlock();
    expectSame(settled(), rendered({}));
}

TEST_F(TurningWindow, SavesTheBackgroundToo)
{
    openBlock({"--background", "1,0.5,0"});
    const Image picture = settled();
    EXPECT_EQ(picture.at(2, 2), (Pixel{255, 128, 0, 255}));
    EXPECT_FALSE(picture.hasAlpha);
    const std::uint32_t shown = desktop->shoot(window).at(2, 2);
    EXPECT_TRUE(shown == 0xFF8000 || shown == 0xFF7F00) << shown;
}

TEST_F(TurningWindow, ShowsWhatItSaves)
{
    openBlock();
    const Image picture = settled();
    // Saying so covers the bottom.
    const Shot shot = desktop->shoot(window);
    EXPECT_EQ(shot.at(2, 2), kBackdrop);
    for (int y = 0; y < 60; ++y) {
        for (int x = 0; x < 160; ++x) {
            if (picture.alpha(x, y) < 255) continue;
            const std::uint32_t color = shot.at(x, y);
            for (std::size_t c = 0; c < 3; ++c) {
                const int shown = static_cast<int>(color >> (16 - 8 * c) & 255);
                EXPECT_NEAR(shown, picture.at(x, y)[c], 1) << x << ' ' << y;
            }
        }
    }
}

TEST_F(TurningWindow, IsTurnedByTheMouseAndTellsHowFar)
{
    openBlock({"--view", "0,0", "--fit", "sphere"});
    settled();
    // The model follows the mouse: the eye goes the other way. 0.4 degrees a pixel.
    mouse->drag(100, 60, 50, 85);
    const Image turned = settled();
    expectSame(turned, rendered({"--view", "20,10", "--fit", "sphere"}));
    mouse->press("question", true);
    settled();
    desktop->pressEscape(window);
    const Outcome outcome = finish(pid);
    pid = -1;
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.out.find("--view 20,10\n"), std::string::npos) << outcome.out;
}

TEST_F(TurningWindow, StopsStraightAboveAndBelow)
{
    openBlock({"--view", "0,70", "--fit", "sphere"});
    mouse->drag(80, 10, 80, 110);
    expectSameShape(settled(), rendered({"--view", "0,90", "--fit", "sphere"}));
    mouse->drag(80, 110, 80, 0);
    mouse->drag(80, 119, 80, 0);
    mouse->drag(80, 119, 80, 0);
    mouse->drag(80, 119, 80, 0);
    mouse->drag(80, 119, 80, 0);
    expectSameShape(settled(), rendered({"--view", "0,-90", "--fit", "sphere"}));
}

TEST_F(TurningWindow, TheWheelZooms)
{
    openBlock({"--view", "0,0", "--fit", "sphere"});
    const Image before = settled();
    mouse->wheel(true);
    const Image nearer = settled();
    mouse->wheel(false);
    mouse->wheel(false);
    const Image farther = settled();
    const auto width = [](const Image& picture) { return picture.right - picture.left; };
    EXPECT_GT(width(nearer), width(before) + 1);
    EXPECT_LT(width(farther), width(before) - 1);
    mouse->wheel(true);
    expectSame(settled(), before);
}

TEST_F(TurningWindow, ShiftOrTheMiddleButtonMoveTheModel)
{
    // Flat, so that all of it moves as its middle does.
    write("block.obj", kTriangle);
    open({"block.obj", "--view", "0,0", "--fit", "sphere"});
    const Image before = settled();
    mouse->drag(80, 60, 100, 50, MouseButton::kLeft, true);
    const Image moved = settled();
    EXPECT_NEAR(moved.left - before.left, 20, 1);
    EXPECT_NEAR(moved.top - before.top, -10, 1);
    mouse->drag(100, 50, 80, 60, MouseButton::kMiddle);
    expectSame(settled(), before);
}

TEST_F(TurningWindow, TheRightButtonZooms)
{
    openBlock({"--view", "0,0", "--fit", "sphere"});
    const Image before = settled();
    mouse->drag(80, 60, 80, 40, MouseButton::kRight);
    EXPECT_GT(settled().right, before.right + 1);
    mouse->drag(80, 40, 80, 60, MouseButton::kRight);
    expectSame(settled(), before);
}

TEST_F(TurningWindow, EnterBringsTheFirstViewBack)
{
    openBlock();
    const Image before = settled();
    mouse->drag(20, 20, 90, 70);
    mouse->wheel(true);
    mouse->drag(20, 20, 60, 20, MouseButton::kMiddle);
    EXPECT_FALSE(same(settled(), before));
    mouse->press("Return");
    expectSame(settled(), before);
}

TEST_F(TurningWindow, KeysLookFromTheSides)
{
    openBlock({"--fit", "sphere"});
    const struct {
        const char* key;
        const char* view;
    } sides[] = {{"1", "0,0"}, {"3", "90,0"}, {"7", "0,90"}, {"9", "45,35.264"}};
    for (const auto& [key, view] : sides) {
        mouse->press(key);
        expectSame(settled(), rendered({"--view", view, "--fit", "sphere"}));
    }
}

TEST_F(TurningWindow, PicturesAreAsLargeAsTheWindow)
{
    openBlock({"--fit", "sphere"});
    settled();
    mouse->resizeWindow(240, 90);
    Image picture = settled();
    for (int i = 0; i < 50 && picture.width != 240; ++i) picture = settled();
    EXPECT_EQ(picture.width, 240);
    EXPECT_EQ(picture.height, 90);
    EXPECT_EQ(
        Zebview::run({"block.obj", "--fit", "sphere", "--size", "240x90", "-o", "r.png"}).status,
        0);
    expectSame(picture, Image(path("r.png")));
}

// Such a model is shown by fewer faces as long as it moves.
TEST_F(TurningWindow, HasAllFacesInTheEnd)
{
    constexpr int side = 120;
    std::ostringstream model;
    for (int y = 0; y <= side; ++y) {
        for (int x = 0; x <= side; ++x) {
            model << "v " << x << ' ' << y << ' ' << 2 * std::sin(x * 0.9) * std::cos(y * 0.7)
                  << '\n';
        }
    }
    for (int y = 0; y < side; ++y) {
        for (int x = 1; x <= side; ++x) {
            const int corner = y * (side + 1) + x;
            model << "f " << corner << ' ' << corner + 1 << ' ' << corner + side + 2 << ' '
                  << corner + side + 1 << '\n';
        }
    }
    write("block.obj", model.str());
    open({"block.obj", "--view", "0,0", "--fit", "sphere"});
    expectSame(settled(), rendered({"--view", "0,0", "--fit", "sphere"}));
    mouse->drag(100, 60, 50, 85);
    expectSame(settled(), rendered({"--view", "20,10", "--fit", "sphere"}));
}

TEST_F(TurningWindow, IsNoLargerThanTheScreen)
{
    write("block.obj", kTriangle);
    pid = start({"block.obj", "--size", "65536x65536", "--samples", "1"});
    window = waitFor("block.obj");
    mouse = takeMouse(window);
    const Shot shot = desktop->shoot(window);
    EXPECT_LE(shot.width, 4096);
    const Image picture = settled();
    EXPECT_EQ(picture.width, shot.width);
    EXPECT_EQ(picture.height, shot.height);
}

TEST_F(TurningWindow, ShowsHelpTheNameAndTimes)
{
    openBlock();
    settled();
    mouse->drag(80, 60, 81, 60);
    settled();
    const auto hasHelp = [&] { return desktop->shoot(window).at(2, 2) == 0x181818u; };
    mouse->press("h");
    EXPECT_TRUE(eventually(hasHelp));
    mouse->press("h");
    EXPECT_TRUE(eventually([&] { return !hasHelp(); }));
    // The finest picture has reached the screen by now.
    const Shot before = desktop->shoot(window);
    mouse->press("n");
    EXPECT_TRUE(eventually([&] { return !(desktop->shoot(window) == before); }));
    mouse->press("n");
    EXPECT_TRUE(eventually([&] { return desktop->shoot(window) == before; }));
}

TEST_F(TurningWindow, ArrowsGoFromModelToModelAndRound)
{
    write("first.obj", kTriangle);
    write("second.obj", kBlock);
    open({"first.obj", "second.obj"});
    mouse->press("Right");
    EXPECT_NE(waitFor("second.obj"), 0u);
    mouse->press("Right");
    EXPECT_NE(waitFor("first.obj"), 0u);
    mouse->press("Left");
    EXPECT_NE(waitFor("second.obj"), 0u);
}

TEST_F(TurningWindow, AModelThatCanNotBeReadLeavesTheOneThatIsShown)
{
    write("broken.obj", "f 1 2 3\n");
    write("block.obj", kBlock);
    open({"block.obj", "broken.obj"});
    const Image before = settled();
    mouse->press("Right");
    expectSame(settled(), before);
    EXPECT_EQ(desktop->find("block.obj").size(), 1u);
    desktop->pressEscape(window);
    const Outcome outcome = finish(pid);
    pid = -1;
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errorLines(), 1) << outcome.err;
    EXPECT_NE(outcome.err.find("broken.obj"), std::string::npos) << outcome.err;
}

TEST_F(TurningWindow, UpReadsTheModelAgain)
{
    openBlock();
    const Image before = settled();
    write("block.obj", kTriangle);
    mouse->press("Up");
    EXPECT_FALSE(same(settled(), before));
}

// A plate that goes to the right by half its width a second, before a camera that stands still.
class Playing : public TurningWindow
{
protected:
    static zebtest::Gltf movingPlate(float seconds)
    {
        zebtest::Gltf file;
        file.animate(0, "translation", {0, seconds}, {0, 0, 0, seconds, 0, 0}, "VEC3");
        return file;
    }
    void openPlate(const zebtest::Gltf& file)
    {
        write("block.gltf", file.text());
        open({"block.gltf", "--camera", "eye", "--light", "camera"});
    }
    // What the window has told on the terminal, once it is closed.
    std::string told()
    {
        desktop->pressEscape(window);
        const Outcome outcome = finish(pid);
        pid = -1;
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.err, "");
        return outcome.out;
    }
    void askForView()
    {
        mouse->press("question", true);
        // Printed, as the picture after it is saved.
        settled();
    }
    static double timeIn(const std::string& told)
    {
        const std::size_t found = told.rfind("--time ");
        EXPECT_NE(found, std::string::npos) << told;
        return found == std::string::npos ? -1 : std::stod(told.substr(found + 7));
    }
    // 30 pixels a unit, and the camera's middle is that of the picture.
    static double unit(double pixel) { return (pixel - 80) / 30; }
    static double middle(const Image& picture)
    {
        return unit((picture.left + picture.right + 1) / 2.0);
    }
    static void sleep(int milliseconds)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    }
};

TEST_F(Playing, SpacePlaysAndPauses)
{
    openPlate(movingPlate(100));
    EXPECT_NEAR(middle(settled()), 0, 0.03);
    mouse->press("space");
    sleep(400);
    mouse->press("space");
    const Image paused = settled();
    sleep(300);
    expectSame(settled(), paused);
    askForView();
    const double seconds = timeIn(told());
    EXPECT_GT(seconds, 0);
    EXPECT_NEAR(unit(paused.left), seconds - 1, 0.06);
}

TEST_F(Playing, GoesOnWhereItWasPausedAndSavingPauses)
{
    openPlate(movingPlate(100));
    mouse->press("space");
    sleep(900);
    const Image first = settled();
    expectSame(settled(), first);
    mouse->press("space");
    sleep(100);
    EXPECT_GT(settled().left, first.left);
}

TEST_F(Playing, BeginsAnewAtTheEnd)
{
    openPlate(movingPlate(0.25f));
    mouse->press("space");
    sleep(1000);
    askForView();
    const double seconds = timeIn(told());
    EXPECT_GE(seconds, 0);
    EXPECT_LT(seconds, 0.25);
}

TEST_F(Playing, BeginsAtTheTimeThatIsAskedFor)
{
    write("block.gltf", movingPlate(100).text());
    open({"block.gltf", "--camera", "eye", "--light", "camera", "--time", "0.5"});
    EXPECT_NEAR(middle(settled()), 0.5, 0.03);
    mouse->press("w");
    askForView();
    // There is but one, which has its beginning.
    EXPECT_EQ(timeIn(told()), 0);
}

TEST_F(Playing, FramesTheModelForAllItsTimes)
{
    write("block.gltf", movingPlate(20).text());
    open({"block.gltf", "--view", "0,0"});
    mouse->press("space");
    sleep(200);
    const Image early = settled();
    // Two of the 22 units that the plate goes through lie across the picture.
    EXPECT_GT(early.left, 0);
    EXPECT_NEAR(early.right - early.left, 160 * 2 / 22.0, 4);
    EXPECT_LT(early.right, 60);
}

TEST_F(Playing, WGoesToTheNextAnimation)
{
    zebtest::Gltf file;
    const std::string right =
        file.animation("right", 0, "translation", {0, 9}, {0, 0, 0, 9, 0, 0}, "VEC3");
    const std::string left =
        file.animation("left", 0, "translation", {0, 9}, {-1, 0, 0, -10, 0, 0}, "VEC3");
    file.more = R"(,"animations":[)" + right + ',' + left + ']';
    openPlate(file);
    mouse->drag(80, 60, 85, 60);
    mouse->press("w");
    EXPECT_NEAR(middle(settled()), 0, 0.03);
    mouse->press("w");
    EXPECT_NEAR(unit(settled().right + 1), 0, 0.06);
    askForView();
    mouse->press("w");
    EXPECT_NEAR(middle(settled()), 0, 0.03);
    // From where the user looks.
    const std::string options = "--view -2,0 --animation 1 --time 0.000000\n";
    EXPECT_NE(told().find(options), std::string::npos);
}

TEST_F(Playing, ModelsThatDoNotMoveStay)
{
    openBlock();
    const Image before = settled();
    mouse->press("space");
    expectSame(settled(), before);
    desktop->pressEscape(window);
    const Outcome outcome = finish(pid);
    pid = -1;
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "zebview: block.obj: it has no animations\n");
}

// The other model has no part in it.
TEST_F(Playing, EndsWithTheModel)
{
    write("block.obj", kBlock);
    write("block.gltf", movingPlate(100).text());
    open({"block.gltf", "block.obj"});
    mouse->press("space");
    sleep(100);
    mouse->press("Right");
    const Image block = settled();
    expectSame(settled(), block);
    askForView();
    EXPECT_EQ(told().find("--time"), std::string::npos);
}

TEST_F(TurningWindow, KeysShowAxesAndAGrid)
{
    openBlock();
    const Image before = settled();
    mouse->press("x");
    expectSame(settled(), rendered({"--axes"}));
    mouse->press("g");
    expectSame(settled(), rendered({"--axes", "--grid"}));
    mouse->press("x");
    mouse->press("g");
    expectSame(settled(), before);
}

TEST_F(TurningWindow, EShowsEdges)
{
    openBlock();
    const Image before = settled();
    mouse->press("e");
    expectSame(settled(), rendered({"--edges"}));
    mouse->press("e");
    expectSame(settled(), before);
}

TEST_F(TurningWindow, BHidesTheBarOfAScalar)
{
    size = "320x240";
    openBlock({"--scalar", "y"});
    const Image before = settled();
    expectSame(before, rendered({"--scalar", "y"}));
    mouse->press("b");
    const Image after = settled();
    expectSame(after, rendered({"--scalar", "y", "--no-bar"}));
    EXPECT_FALSE(before == after);
    mouse->press("b");
    expectSame(settled(), before);
}

// So many that fewer move.
TEST_F(TurningWindow, ScalarsOfManyFacesMove)
{
    constexpr int side = 120;
    std::string vertices, faces;
    for (int i = 0; i < side * side; ++i) {
        const int x = i % side, y = i / side;
        vertices +=
            std::to_string(x) + ' ' + std::to_string(y) + " 0 " + std::to_string(x * y) + '\n';
        if (x + 1 == side || y + 1 == side) continue;
        faces += '4';
        for (const int corner : {i, i + 1, i + side + 1, i + side}) {
            faces += ' ' + std::to_string(corner);
        }
        faces += '\n';
    }
    write("block.ply", "ply\nformat ascii 1.0\nelement vertex " + std::to_string(side * side) +
                           "\nproperty float x\nproperty float y\nproperty float z\n"
                           "property float q\nelement face " +
                           std::to_string((side - 1) * (side - 1)) +
                           "\nproperty list uchar int vertex_indices\nend_header\n" + vertices +
                           faces);
    open({"block.ply", "--scalar", "q"});
    const Image before = settled();
    mouse->drag(100, 60, 50, 85);
    EXPECT_FALSE(settled() == before);
    mouse->press("Return");
    expectSame(settled(), before);
}

TEST_F(TurningWindow, FilesThatAreThereStay)
{
    write("block_1.png", "mine");
    openBlock();
    saved = 1;
    settled();
    EXPECT_EQ(read(path("block_1.png")), "mine");
}

TEST_F(TurningWindow, ComesBackFromAsFarAndAsNearAsItGoes)
{
    openBlock();
    for (int i = 0; i < 60; ++i) mouse->wheel(true);
    settled();
    for (int i = 0; i < 200; ++i) mouse->wheel(false);
    settled();
    mouse->press("Return");
    expectSame(settled(), rendered({}));
}

}  // namespace
}  // namespace zebtest
