// Whatever goes wrong is said in one line and by the exit status, and leaves no file behind.

#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "process.h"
#include "shapes.h"

namespace
{

using zebtest::cubeObj;
using zebtest::Outcome;

using Words = std::vector<std::string>;

class Failures : public zebtest::Zebview
{
protected:
    void expectFailure(const Words& arguments, int status, const std::string& part)
    {
        const Words before = files();
        const Outcome outcome = run(arguments);
        const std::string what = testing::PrintToString(arguments);
        EXPECT_EQ(outcome.status, status) << what;
        EXPECT_EQ(outcome.out, "") << what;
        EXPECT_EQ(outcome.errorLines(), 1) << what << outcome.err;
        EXPECT_EQ(outcome.err.rfind("zebview: ", 0), 0U) << outcome.err;
        EXPECT_NE(outcome.err.find(part), std::string::npos) << what << outcome.err;
        EXPECT_EQ(files(), before) << what;
    }
    void expectWrongUsage(const Words& arguments, const std::string& part)
    {
        expectFailure(arguments, 2, part);
        expectFailure(arguments, 2, "Run with --help for more information.");
    }
};

TEST_F(Failures, WrongUsageIsStatusTwo)
{
    const std::string cube = write("cube.obj", cubeObj());
    expectWrongUsage({}, "MODEL is required");
    expectWrongUsage({cube, "--nonsense"}, "--nonsense");
    expectWrongUsage({cube, "--size"}, "--size");
    expectWrongUsage({cube, "-o", "picture.jpg"}, "picture.jpg");
    expectWrongUsage({cube, "-o", "picture"}, "ends neither");
    expectWrongUsage({cube, "--samples", "2", "--adaptive", "0.1"}, "excludes");
    expectWrongUsage({cube, "-o", "a.png", "--channels", "rgbaz"}, "ends in .exr");
    expectWrongUsage({cube, "-o", "-", "--channels", "rgbaz"}, "ends in .exr");
    expectWrongUsage({cube, "--channels", "rgb"}, "add -o FILE");
    expectWrongUsage({cube, "-o", "a.png", "--channels", "alpha", "--background", "1,1,1"},
                     "no colours");
    const std::pair<const char*, Words> wrong[] = {
        {"--size", {"0x10", "10", "10x", "-5x5", "10x10x10", "1.5x2", "axb", "70000x1", "nanx1"}},
        {"--samples", {"0", "65", "x", "-1", "2.5"}},
        {"--adaptive", {"0", "-1", "x", "inf", "nan", "0.1x"}},
        {"--rate", {"0", "-1", "x", "inf"}},
        {"--filter", {"gauss", "Box", ""}},
        {"--view", {"30", "30,91", "30,-91", "30,20,10", "x,y", "nan,0", ","}},
        {"--fov", {"0", "180", "-10", "wide"}},
        {"--channels", {"RGB", "rgbx", "z", ""}},
        {"--light", {"sun", "Camera", ""}},
        {"--frames", {"0", "-1", "1.5", "x", "100001"}},
        {"--turn", {"x", "inf", "nan", "9e9", ""}},
        {"--sheet", {"2", "0x2", "2x", "2x2x2", "1.5x2", "-1x1", "1001x1"}},
        {"--fit", {"loose", "Sphere", ""}},
        {"--threads", {"-1", "257", "1.5", "x", "", "99999999999999999999"}},
        {"--up", {"w", "xy", "", "+z"}},
        {"--surface", {"wood", "plastic2"}},
        {"--color", {"1,1", "1,1,2", "-1,0,0", "red", "1,1,1,1", "nan,0,0"}},
        {"--background", {"1,1", "1,1,2", "0,0,-0.1", "white", "#fff"}},
    };
    for (const auto& [option, values] : wrong) {
        for (const std::string& value : values) {
            expectFailure({cube, option, value}, 2, "Run with --help");
        }
    }
}

TEST_F(Failures, ViewsThatHaveNoPlace)
{
    const std::string cube = write("cube.obj", cubeObj());
    expectWrongUsage({cube, "--frames", "2"}, "more than one view needs a file");
    expectWrongUsage({cube, "--sheet", "2x2"}, "a sheet needs a file");
    expectWrongUsage({cube, "--frames", "2", "-o", "a.png"}, "more than one view would be 'a.png'");
    expectWrongUsage({cube, "--frames", "2", "-o", "-"}, "more than one view would be '-'");
    expectWrongUsage({cube, "--frames", "2", "-o", "%s.png"}, "would be 'cube.png'");
    expectWrongUsage({cube, "other/cube.ply", "-o", "%s.png"}, "would be 'cube.png'");
    expectWrongUsage({cube, cube, "--frames", "2", "-o", "a.png"}, "would be 'a.png'");
    expectWrongUsage({cube, cube, "-o", "a.exr"}, "a sheet is a PNG file");
    expectWrongUsage({cube, "-o", "a%d.png", "--sheet", "1x1"}, "have no place in its name");
    expectWrongUsage({cube, "--frames", "7", "-o", "a.png", "--sheet", "3x2"},
                     "room for 6 of 7 views");
    for (const char* name : {"a%.png", "%3d.png", "%x.png", "a.png%", "%00%.png", "%04s.png"}) {
        expectWrongUsage({cube, "-o", name}, "has a % that is none of %d, %03d, %s and %%");
    }
    expectFailure({cube, "-o", "a.png", "--sheet", "1000x1000", "--size", "1001x10"}, 1,
                  "too large for a PNG file");
}

TEST_F(Failures, OneModelOfASheetThatCannotBeRead)
{
    const std::string cube = write("cube.obj", cubeObj());
    expectFailure({cube, "missing.obj", "-o", "sheet.png", "--size", "40x30"}, 1,
                  "missing.obj: cannot read it");
}

TEST_F(Failures, ModelsThatCannotBeRead)
{
    std::filesystem::create_directory(path("folder.obj"));
    std::filesystem::create_symlink("nowhere.obj", path("dangling.obj"));
    ASSERT_EQ(mkfifo(path("pipe.obj").c_str(), 0600), 0);
    expectFailure({"missing.obj"}, 1, "missing.obj: cannot read it: No such file");
    expectFailure({"no/such/folder.obj"}, 1, "No such file");
    expectFailure({"dangling.obj"}, 1, "No such file");
    expectFailure({"folder.obj"}, 1, "folder.obj: it is a directory");
    expectFailure({"pipe.obj"}, 1, "it is not a file");
    expectFailure({write("empty.obj", "")}, 1, "empty.obj: the file is empty");
    expectFailure({write("text.txt", "no model at all\n")}, 1, "text.txt: cannot be read");
    expectFailure({write("line\nbreak.txt", "x")}, 1, "line break.txt");
    expectFailure({write("broken.obj", "v 0 0 0\nf 1 2 3\n")}, 1, "broken.obj: ");
    expectFailure({write("broken.stl", std::string(100, 'x'))}, 1, "broken.stl: ");
    expectFailure({write("short.ply", "ply\nformat ascii 1.0\nelement vertex 3\n")}, 1, "header");
    expectFailure({write("broken.ply", "ply\nformat ascii 1.0\nend_header\n")}, 1, "broken.ply: ");
    expectFailure({write("broken.glb", "glTF too short")}, 1, "broken.glb: ");
    expectFailure({write("broken.off", "OFF\n3 1 0\n0 0 0\n")}, 1, "broken.off: ");
}

TEST_F(Failures, ModelsWithNothingToSee)
{
    const std::string nothing = "it has nothing to show";
    expectFailure({write("line.obj", "v 0 0 0\nv 1 0 0\nv 2 0 0\nf 1 2 3\n")}, 1, nothing);
    expectFailure({write("dot.obj", "v 1 1 1\nf 1 1 1\n")}, 1, nothing);
}

TEST_F(Failures, VerticesThatAreNotFinite)
{
    const std::string rest = " 0 0\n1 0 0\n0 1 0\n3 0 1 2\n";
    const std::string head =
        "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
        "property float z\nelement face 1\nproperty list uchar int vertex_indices\nend_header\n";
    expectFailure({write("nan.ply", head + "nan" + rest)}, 1, "not a finite point");
    expectFailure({write("inf.ply", head + "inf" + rest)}, 1, "not a finite point");
}

TEST_F(Failures, GiganticFiles)
{
    write("huge.obj", cubeObj());
    std::error_code failed;
    std::filesystem::resize_file(path("huge.obj"), (std::uintmax_t{4} << 30) + 1, failed);
    ASSERT_FALSE(failed) << failed.message();
    expectFailure({"huge.obj"}, 1, "larger than 4 GiB");
}

// One polygon of many corners, shown many times.
std::string crowd(int corners, int nodes)
{
    std::ostringstream text;
    text << R"(<?xml version="1.0"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
<library_geometries><geometry id="g"><mesh><source id="p"><float_array id="a" count="9">)"
         << R"(0 0 0 1 0 0 0 1 0</float_array><technique_common>
<accessor source="#a" count="3" stride="3"><param name="X" type="float"/>
<param name="Y" type="float"/><param name="Z" type="float"/></accessor></technique_common></source>
<vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
<polylist count="1"><input semantic="VERTEX" source="#v" offset="0"/><vcount>)"
         << corners << "</vcount><p>";
    for (int i = 0; i < corners; ++i) text << i % 3 << ' ';
    text << R"(</p></polylist></mesh></geometry></library_geometries>
<library_visual_scenes><visual_scene id="s">)";
    for (int i = 0; i < nodes; ++i) {
        // Stretched differently, so that they have nothing in common.
        text << "<node id=\"n" << i << "\"><scale>1 " << 1 + i * 0.001
             << " 1</scale><instance_geometry url=\"#g\"/></node>\n";
    }
    text << R"(</visual_scene></library_visual_scenes>
<scene><instance_visual_scene url="#s"/></scene></COLLADA>)";
    return text.str();
}

TEST_F(Failures, TooManyVertices)
{
    expectFailure({write("crowd.dae", crowd(100001, 1000))}, 1, "more than 100 million vertices");
}

TEST_F(Failures, OutputThatCannotBeWritten)
{
    const std::string cube = write("cube.obj", cubeObj());
    std::filesystem::create_directory(path("folder.png"));
    std::filesystem::create_symlink("/dev/full", path("full.png"));
    std::filesystem::create_symlink("/dev/full", path("full.exr"));
    const Words small{"--size", "32x24", "--samples", "1"};
    const auto to = [&](const char* name) {
        Words words{cube, "-o", name};
        words.insert(words.end(), small.begin(), small.end());
        return words;
    };
    expectFailure(to("no/such/picture.png"), 1, "No such file or directory");
    expectFailure(to("no/such/picture.exr"), 1, "No such file or directory");
    expectFailure(to("folder.png"), 1, "folder.png");
    expectFailure(to("cube.obj/picture.png"), 1, "Not a directory");
    expectFailure(to("full.png"), 1, "No space left on device");
    expectFailure(to("full.exr"), 1, "full.exr");
}

TEST_F(Failures, APictureThatWasThereStays)
{
    write("picture.png", "old");
    expectFailure({write("broken.obj", "f 1 2 3\n"), "-o", "picture.png"}, 1, "broken.obj");
    EXPECT_EQ(read(path("picture.png")), "old");
}

TEST_F(Failures, TooLargePicturesAreRefusedAtOnce)
{
    const std::string cube = write("cube.obj", cubeObj());
    expectFailure({cube, "-o", "a.png", "--size", "65536x65536"}, 1, "too large for a PNG file");
}

TEST_F(Failures, WithoutAScreenThePictureNeedsAFile)
{
    unsetenv("DISPLAY");
    const std::string cube = write("cube.obj", cubeObj());
    const Outcome outcome = run({cube});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("the picture needs a file: -o FILE\n"), std::string::npos)
        << outcome.err;
    EXPECT_EQ(files(), Words{"cube.obj"});
}

TEST_F(Failures, InterruptionLeavesNothing)
{
    const std::string cube = write("cube.obj", cubeObj());
    for (const int signal : {SIGINT, SIGTERM}) {
        const pid_t pid = start({cube, "-o", "big.png", "--size", "4000x4000", "--samples", "16"});
        // The unfinished picture shows that rendering is under way.
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (files().size() < 2 && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        ASSERT_EQ(kill(pid, signal), 0);
        const Outcome outcome = finish(pid);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.err, "zebview: interrupted\n");
        EXPECT_EQ(files(), Words{"cube.obj"});
    }
}

}  // namespace
