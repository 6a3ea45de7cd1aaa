// examples/turntable.sh makes frames and a contact sheet.

#include <cstdlib>

#include "image.h"
#include "process.h"
#include "shapes.h"

namespace
{

using zebtest::Image;

using Words = std::vector<std::string>;

class Turntable : public zebtest::Zebview
{
protected:
    const std::string model = path(write("model.obj", zebtest::letterObj()));

    // What the script prints; status is that of the process.
    std::string script(const std::string& arguments, int& status) const
    {
        const std::string command =
            std::string(TURNTABLE) + " " + arguments + " >'" + path("printed") + "' 2>&1";
        status = std::system(command.c_str());
        const std::string printed = read(path("printed"));
        std::filesystem::remove(path("printed"));
        return printed;
    }
    std::string made(const std::string& folder, const std::string& more) const
    {
        int status = -1;
        const std::string printed =
            script(std::string(ZEBVIEW) + " " + model + " '" + path(folder) + "' " + more, status);
        EXPECT_EQ(status, 0) << printed;
        return printed;
    }
};

TEST_F(Turntable, MakesFramesAndASheet)
{
    const std::string out = path("out");
    EXPECT_EQ(made("out", "5 32x24 --samples 1"),
              out + "/frame-000.png to " + out + "/frame-004.png\n" + out + "/sheet.png\n");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(out), {}), 6);
    const Image first(out + "/frame-000.png"), last(out + "/frame-004.png");
    EXPECT_EQ(first.width, 32);
    EXPECT_EQ(first.height, 24);
    EXPECT_GT(first.coverage(), 0.05);
    EXPECT_FALSE(first == last);
    // Three columns and two rows of half the size.
    const Image sheet(out + "/sheet.png");
    EXPECT_EQ(sheet.width, 48);
    EXPECT_EQ(sheet.height, 24);
}

TEST_F(Turntable, ShowsEveryFrameOnTheSheet)
{
    made("out", "4 32x24 --samples 1");
    made("half", "4 16x12 --samples 1");
    const Image sheet(path("out/sheet.png"));
    ASSERT_EQ(sheet.width, 32);
    ASSERT_EQ(sheet.height, 24);
    const char* const frames[] = {"frame-000", "frame-001", "frame-002", "frame-003"};
    for (int i = 0; i < 4; ++i) {
        const Image frame(path("half/") + frames[i] + ".png");
        for (int y = 0; y < 12; ++y) {
            for (int x = 0; x < 16; ++x) {
                ASSERT_EQ(sheet.at(i % 2 * 16 + x, i / 2 * 12 + y), frame.at(x, y)) << i;
            }
        }
    }
}

TEST_F(Turntable, TakesFoldersOfAnyName)
{
    made("100% a b", "1 16x12 --samples 1");
    EXPECT_EQ(Image(path("100% a b/frame-000.png")).width, 16);
    EXPECT_EQ(Image(path("100% a b/sheet.png")).width, 8);
}

TEST_F(Turntable, RefusesWhatItCannotMake)
{
    const std::string start = std::string(ZEBVIEW) + " " + model + " " + path("out") + " ";
    for (const char* more : {"0", "x", "-1", "5 32", "5 0x24", "5 32x24 --nonsense"}) {
        int status = 0;
        const std::string printed = script(start + more, status);
        EXPECT_NE(status, 0) << more;
        EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), 1) << printed;
    }
    EXPECT_FALSE(std::filesystem::exists(path("out/sheet.png")));
    int status = 0;
    EXPECT_NE(script("", status).find("usage"), std::string::npos);
    EXPECT_NE(status, 0);
}

}  // namespace
