// A file of defaults counts where the command line says nothing.

#include "image.h"
#include "process.h"
#include "shapes.h"

namespace
{

using zebtest::cubeObj;
using zebtest::Image;
using zebtest::Outcome;

using Words = std::vector<std::string>;

class Defaults : public zebtest::Zebview
{
protected:
    Defaults()
    {
        setenv("XDG_CONFIG_HOME", path("settings").c_str(), 1);
        std::filesystem::create_directories(path("settings/zebview"));
        write("cube.obj", cubeObj());
    }
    void defaults(const std::string& lines) const { write("settings/zebview/config", lines); }
    Image rendered(const Words& more = {}) const
    {
        Words arguments{"cube.obj", "-o", "x.png"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.err, "");
        return Image(path("x.png"));
    }
    void expectSize(const Image& image, int width, int height) const
    {
        EXPECT_EQ(image.width, width);
        EXPECT_EQ(image.height, height);
    }
    void expectWrong(const std::string& lines, const std::string& part) const
    {
        defaults(lines);
        const Outcome outcome = run({"cube.obj", "-o", "y.png"});
        EXPECT_EQ(outcome.status, 2) << lines;
        EXPECT_EQ(outcome.errorLines(), 1) << outcome.err;
        EXPECT_NE(outcome.err.find(path("settings/zebview/config") + ":2: "), std::string::npos)
            << outcome.err;
        EXPECT_NE(outcome.err.find(part), std::string::npos) << outcome.err;
        EXPECT_FALSE(std::filesystem::exists(path("y.png")));
    }
};

TEST_F(Defaults, CountUnlessTheCommandLineSaysOtherwise)
{
    defaults("# small and red\n\n  size=32x24\r\ncolor = 1,0,0\nsurface = constant\n");
    const Image image = rendered();
    expectSize(image, 32, 24);
    EXPECT_EQ(image.at(16, 12), (zebtest::Pixel{255, 0, 0, 255}));
    const Image other = rendered({"--size", "20x30", "--color", "0,1,0"});
    expectSize(other, 20, 30);
    EXPECT_EQ(other.at(10, 15), (zebtest::Pixel{0, 255, 0, 255}));
}

TEST_F(Defaults, FlagsStandAlone)
{
    defaults("verbose\nsize = 16x12\n");
    const Outcome outcome = run({"cube.obj", "-o", "x.png"});
    EXPECT_NE(outcome.err.find("1 mesh"), std::string::npos) << outcome.err;
}

// A view of one's own is no reason to refuse a camera of the file.
TEST_F(Defaults, GiveWayToWhatExcludesThem)
{
    defaults("size = 16x12\nview = 10,20\nsamples = 3\n");
    EXPECT_EQ(run({"cube.obj", "-o", "x.png", "--camera", "0"}).err,
              "zebview: cube.obj: it has no cameras\n");
    expectSize(rendered({"--adaptive", "0.1"}), 16, 12);
}

TEST_F(Defaults, AreLeftOutOnDemand)
{
    defaults("size = 16x12\n");
    expectSize(rendered({"--no-config"}), 800, 600);
    write("mine", "size = 18x14\n");
    expectSize(rendered({"--config", "mine"}), 18, 14);
    // Not even read.
    defaults("nonsense\n");
    expectSize(rendered({"--no-config", "--size", "10x10"}), 10, 10);
    EXPECT_EQ(run({"--help"}).status, 0);
    EXPECT_EQ(run({"--version"}).status, 0);
}

TEST_F(Defaults, AreLookedForInTheHomeFolder)
{
    std::filesystem::create_directories(path(".config/zebview"));
    write(".config/zebview/config", "size = 14x10\n");
    const std::string home = std::getenv("HOME") ? std::getenv("HOME") : "";
    setenv("HOME", path("").c_str(), 1);
    // A folder that is not told in full counts for nothing.
    for (const char* const config : {"", "settings"}) {
        setenv("XDG_CONFIG_HOME", config, 1);
        expectSize(rendered(), 14, 10);
    }
    setenv("HOME", home.c_str(), 1);
}

TEST_F(Defaults, WhatIsWrongIsToldWithItsLine)
{
    expectWrong("\nnonsense\n", "there is no option 'nonsense' for defaults");
    expectWrong("\nhelp\n", "there is no option 'help' for defaults");
    expectWrong("\nno-config\n", "there is no option 'no-config' for defaults");
    expectWrong("\n= 3\n", "there is no option '' for defaults");
    expectWrong("\nsize\n", "the option 'size' has no value");
    expectWrong("\nshadows = 1\n", "the option 'shadows' stands alone");
    expectWrong("size = 10x10\nrate = fine\n", "--rate: 'fine' is not a number");
    expectWrong("size = 10x10\nfilter = nothing\n", "--filter");
    const Outcome outcome = run({"cube.obj", "--config", "missing"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.err.find("missing"), std::string::npos) << outcome.err;
}

TEST_F(Defaults, TheFormatMayBeSaid)
{
    EXPECT_EQ(run({"cube.obj", "-o", "cube", "--format", "png", "--size", "8x6"}).err, "");
    expectSize(Image(path("cube")), 8, 6);
    EXPECT_EQ(run({"cube.obj", "-o", "light.png", "--format", "exr", "--size", "8x6"}).err, "");
    EXPECT_EQ(read(path("light.png")).substr(0, 4), "\x76\x2f\x31\x01");
    const Outcome outcome = run({"cube.obj", "-o", "-", "--format", "exr"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.err.find("standard output takes PNG files"), std::string::npos);
    EXPECT_EQ(outcome.out, "");
}

}  // namespace
