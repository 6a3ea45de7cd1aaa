// Several views: frames of a turn, models, sheets of both, and the names of their files.

#include <cmath>

#include "image.h"
#include "process.h"
#include "shapes.h"

namespace
{

using zebtest::cubeObj;
using zebtest::Image;
using zebtest::letterObj;
using zebtest::Outcome;
using zebtest::Pixel;
using zebtest::prismObj;

using Words = std::vector<std::string>;

const char* const kSphere = "/usr/share/assimp/models/STL/sphereWithHole.stl";

class Views : public zebtest::Zebview
{
protected:
    const std::string letter = write("letter.obj", letterObj());
    const std::string cube = write("cube.obj", cubeObj());
    const Words kSmall{"--size", "40x30", "--samples", "1"};

    void expectSuccess(Words words) const
    {
        words.insert(words.end(), kSmall.begin(), kSmall.end());
        const Outcome outcome = run(words);
        EXPECT_EQ(outcome.status, 0) << testing::PrintToString(words);
        EXPECT_EQ(outcome.err, "") << testing::PrintToString(words);
    }
    // A view of 40 x 30 pixels by itself.
    Image alone(const std::string& model, Words options = {}) const
    {
        options.insert(options.end(), kSmall.begin(), kSmall.end());
        return Image(render(model, options, "alone.png"));
    }
    Image picture(const std::string& name) const { return Image(path(name)); }
    Image frame(int number, const std::string& start = "f") const
    {
        std::ostringstream name;
        name << start << number << ".png";
        return picture(name.str());
    }
};

// Whether a part of a picture is another one, bit for bit.
bool holds(const Image& sheet, int column, int row, const Image& view)
{
    for (int y = 0; y < view.height; ++y) {
        for (int x = 0; x < view.width; ++x) {
            if (sheet.at(column * view.width + x, row * view.height + y) != view.at(x, y)) {
                return false;
            }
        }
    }
    return true;
}

TEST_F(Views, FramesGoOnceAroundTheModel)
{
    expectSuccess({letter, "--frames", "4", "-o", "f%d.png", "--view", "10,20"});
    EXPECT_EQ(files(), (Words{"cube.obj", "f0.png", "f1.png", "f2.png", "f3.png", "letter.obj"}));
    const char* const views[] = {"10,20", "100,20", "190,20", "280,20"};
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(frame(i) == alone(letter, {"--fit", "sphere", "--view", views[i]})) << i;
    }
}

TEST_F(Views, FramesShareTheTurnThatIsWanted)
{
    expectSuccess({letter, "--frames", "3", "--turn", "-90", "-o", "f%03d.png", "--view", "0,0"});
    const char* const views[] = {"0,0", "-30,0", "-60,0"};
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(frame(i, "f00") == alone(letter, {"--fit", "sphere", "--view", views[i]})) << i;
    }
}

// The margin is 6 % of half the shorter side.
TEST_F(Views, TheSphereFillsThePicture)
{
    for (const char* size : {"240x200", "200x240"}) {
        for (const char* fov : {"5", "35", "60"}) {
            const Image image(render(
                kSphere, {"--fit", "sphere", "--fov", fov, "--size", size, "--filter", "box"}));
            EXPECT_NEAR(image.right - image.left + 1, 188, 2) << size << ' ' << fov;
            EXPECT_NEAR(image.bottom - image.top + 1, 188, 2) << size << ' ' << fov;
        }
    }
}

// A post, and a rod through it that is twice as long.
const char* const kCross =
    "v -0.1 -1 0\nv 0.1 -1 0\nv 0.1 1 0\nv -0.1 1 0\nf 1 2 3 4\n"
    "v -2 -0.1 0\nv 2 -0.1 0\nv 2 0.1 0\nv -2 0.1 0\nf 5 6 7 8\n";

TEST_F(Views, FramesOfATurnHaveOneSize)
{
    const std::string model = write("cross.obj", kCross);
    const auto heights = [&](const Words& more) {
        Words words{model,     "--frames", "5",     "--turn", "100", "-o",
                    "f%d.png", "--view",   "-10,0", "--fov",  "2"};
        words.insert(words.end(), more.begin(), more.end());
        expectSuccess(words);
        std::vector<int> result;
        for (int i = 0; i < 5; ++i) result.push_back(frame(i).bottom - frame(i).top);
        return result;
    };
    const auto sphere = heights({}), tight = heights({"--fit", "tight"});
    EXPECT_GT(sphere[0], 8);
    EXPECT_EQ(sphere, std::vector<int>(5, sphere[0]));
    // The narrower the rod looks, the larger a view that is fitted by itself.
    EXPECT_GT(tight[4], tight[0] + 5);
}

TEST_F(Views, ASheetIsItsViewsRowByRow)
{
    expectSuccess({letter, "--frames", "5", "-o", "f%d.png"});
    expectSuccess({letter, "--frames", "5", "-o", "sheet.png", "--sheet", "3x2"});
    const Image sheet = picture("sheet.png");
    ASSERT_EQ(sheet.width, 120);
    ASSERT_EQ(sheet.height, 60);
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(holds(sheet, i % 3, i / 3, frame(i))) << i;
    }
    for (int y = 30; y < 60; ++y) {
        for (int x = 80; x < 120; ++x) ASSERT_EQ(sheet.at(x, y), (Pixel{0, 0, 0, 0}));
    }
}

TEST_F(Views, WhatIsFreeOnASheetIsBackground)
{
    expectSuccess({cube, "-o", "sheet.png", "--sheet", "2x2", "--background", "0.2,0.4,1"});
    const Image sheet = picture("sheet.png");
    EXPECT_TRUE(holds(sheet, 0, 0, alone(cube, {"--background", "0.2,0.4,1"})));
    for (int y = 0; y < 60; ++y) {
        for (int x = y < 30 ? 40 : 0; x < 80; ++x) {
            ASSERT_EQ(sheet.at(x, y), (Pixel{51, 102, 255, 255})) << x << ", " << y;
        }
    }
    expectSuccess({cube, "-o", "depth.png", "--sheet", "2x1", "--channels", "depth"});
    EXPECT_EQ(picture("depth.png").at(60, 15), (Pixel{255, 255, 255, 255})) << "as far as can be";
}

TEST_F(Views, SheetsHoldAnyChannels)
{
    for (const char* channels : {"rgb", "alpha", "depth"}) {
        expectSuccess({cube, letter, "-o", "sheet.png", "--channels", channels});
        const Image sheet = picture("sheet.png");
        EXPECT_TRUE(holds(sheet, 0, 0, alone(cube, {"--channels", channels}))) << channels;
        EXPECT_TRUE(holds(sheet, 1, 0, alone(letter, {"--channels", channels}))) << channels;
    }
}

TEST_F(Views, ModelsStandSideBySide)
{
    expectSuccess({letter, cube, letter, "-o", "row.png"});
    const Image row = picture("row.png");
    ASSERT_EQ(row.width, 120);
    ASSERT_EQ(row.height, 30);
    EXPECT_TRUE(holds(row, 0, 0, alone(letter)));
    EXPECT_TRUE(holds(row, 1, 0, alone(cube)));
    EXPECT_TRUE(holds(row, 2, 0, alone(letter)));
}

TEST_F(Views, ModelsGetFilesOfTheirOwn)
{
    expectSuccess({letter, cube, "-o", "%s.png"});
    EXPECT_TRUE(picture("letter.png") == alone(letter));
    EXPECT_TRUE(picture("cube.png") == alone(cube));
    expectSuccess({letter, cube, "-o", "n%02d.png"});
    EXPECT_TRUE(picture("n00.png") == alone(letter));
    EXPECT_TRUE(picture("n01.png") == alone(cube));
    expectSuccess({letter, cube, "--frames", "2", "-o", "all%d.png"});
    expectSuccess({letter, cube, "--frames", "2", "-o", "%s-%d%%.png"});
    EXPECT_TRUE(picture("all1.png") == picture("letter-1%.png"));
    EXPECT_TRUE(picture("all3.png") == picture("cube-1%.png"));
    EXPECT_FALSE(picture("all0.png") == picture("all1.png"));
}

TEST_F(Views, FramesCanBeOpenExr)
{
    expectSuccess({cube, "--frames", "2", "-o", "f%d.exr"});
    EXPECT_EQ(files(), (Words{"cube.obj", "f0.exr", "f1.exr", "letter.obj"}));
    EXPECT_NE(read(path("f0.exr")), read(path("f1.exr")));
}

TEST_F(Views, StandardOutputTakesASheet)
{
    expectSuccess({cube, "--frames", "2", "--sheet", "2x1", "-o", "sheet.png"});
    const std::string file = read(path("sheet.png"));
    expectSuccess({cube, "--frames", "2", "--sheet", "2x1", "-o", "-"});
    EXPECT_TRUE(run({cube, "--frames", "2", "--sheet", "2x1", "-o", "-", "--size", "40x30",
                     "--samples", "1"})
                    .out == file);
}

}  // namespace
