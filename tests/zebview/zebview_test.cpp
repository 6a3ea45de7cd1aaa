// What the options do, and how models are turned, lit and coloured.

#include <poll.h>
#include <pty.h>

#include <cstdio>

#include "image.h"
#include "process.h"
#include "shapes.h"

namespace
{

using zebtest::cubeObj;
using zebtest::difference;
using zebtest::Image;
using zebtest::kMirrored;
using zebtest::kUpright;
using zebtest::letterObj;
using zebtest::Outcome;
using zebtest::Pixel;
using zebtest::Place;
using zebtest::prismObj;
using zebtest::readLetter;

const char* const kSphere = "/usr/share/assimp/models/STL/sphereWithHole.stl";

class Orientation : public zebtest::Zebview
{
protected:
    // The letter as it appears when its plane lies in the model as place says.
    std::string seen(const std::function<Place(double, double)>& place,
                     const std::vector<std::string>& options)
    {
        return readLetter(Image(render(write("f.obj", letterObj(place)), options)));
    }
};

TEST_F(Orientation, TheFrontIsSeenFromWhereZIsLargest)
{
    const auto front = [](double x, double y) { return Place{x, y, 0}; };
    EXPECT_EQ(seen(front, {"--view", "0,0"}), kUpright);
    EXPECT_EQ(seen(front, {"--view", "180,0"}), kMirrored);
}

TEST_F(Orientation, AzimuthGoesToTheRightAndElevationUp)
{
    const auto rightSide = [](double x, double y) { return Place{0, y, -x}; };
    const auto leftSide = [](double x, double y) { return Place{0, y, x}; };
    const auto top = [](double x, double y) { return Place{x, 0, -y}; };
    const auto bottom = [](double x, double y) { return Place{x, 0, y}; };
    EXPECT_EQ(seen(rightSide, {"--view", "90,0"}), kUpright);
    EXPECT_EQ(seen(leftSide, {"--view", "-90,0"}), kUpright);
    EXPECT_EQ(seen(top, {"--view", "0,90"}), kUpright);
    EXPECT_EQ(seen(bottom, {"--view", "0,-90"}), kUpright);
}

TEST_F(Orientation, AnyAxisMayPointUp)
{
    const std::vector<std::string> front{"--view", "0,0", "--up"};
    const auto up = [&](const char* axis) {
        auto options = front;
        options.emplace_back(axis);
        return options;
    };
    EXPECT_EQ(seen([](double x, double y) { return Place{x, y, 0}; }, up("y")), kUpright);
    EXPECT_EQ(seen([](double x, double y) { return Place{x, 0, y}; }, up("z")), kUpright);
    EXPECT_EQ(seen([](double x, double y) { return Place{y, -x, 0}; }, up("x")), kUpright);
    EXPECT_EQ(seen([](double x, double y) { return Place{-x, -y, 0}; }, up("-y")), kUpright);
    EXPECT_EQ(seen([](double x, double y) { return Place{x, 0, -y}; }, up("-z")), kUpright);
    EXPECT_EQ(seen([](double x, double y) { return Place{-y, x, 0}; }, up("-x")), kUpright);
}

TEST_F(Orientation, SizeAndPlaceOfTheModelDoNotMatter)
{
    for (const double size : {1e-30, 1e-3, 1e6, 1e30}) {
        const auto scaled = [size](double x, double y) { return Place{x * size, y * size, 0}; };
        EXPECT_EQ(seen(scaled, {"--view", "0,0"}), kUpright) << size;
    }
    const auto far = [](double x, double y) { return Place{x + 1e5, y - 1e5, 1e5}; };
    EXPECT_EQ(seen(far, {"--view", "0,0"}), kUpright);
}

// The letter under nodes of a scene graph, each with a matrix, row by row.
std::string letterDae(const std::string& outer, const std::string& inner, bool normals)
{
    const std::string accessor = R"(<param name="X" type="float"/><param name="Y" type="float"/>
<param name="Z" type="float"/></accessor></technique_common></source>)";
    return R"(<?xml version="1.0"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
<asset><up_axis>Y_UP</up_axis></asset>
<library_geometries><geometry id="g"><mesh>
<source id="p"><float_array id="a" count="36">0 0 0 1 0 0 1 5 0 0 5 0  1 4 0 3 4 0 3 5 0 1 5 0
 1 2 0 2 2 0 2 3 0 1 3 0</float_array><technique_common>
<accessor source="#a" count="12" stride="3">)" +
           accessor + R"(<source id="q"><float_array id="b" count="3">0 0 1</float_array>
<technique_common><accessor source="#b" count="1" stride="3">)" +
           accessor + R"(<vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
<polylist count="3"><input semantic="VERTEX" source="#v" offset="0"/>)" +
           (normals ? R"(<input semantic="NORMAL" source="#q" offset="1"/>
<vcount>4 4 4</vcount><p>0 0 1 0 2 0 3 0 4 0 5 0 6 0 7 0 8 0 9 0 10 0 11 0</p></polylist>)"
                    : R"(<vcount>4 4 4</vcount><p>0 1 2 3 4 5 6 7 8 9 10 11</p></polylist>)") +
           R"(</mesh></geometry></library_geometries>
<library_visual_scenes><visual_scene id="s"><node id="n"><matrix>)" +
           outer + "</matrix><node id=\"m\"><matrix>" + inner +
           R"(</matrix><instance_geometry url="#g"/></node></node></visual_scene>
</library_visual_scenes><scene><instance_visual_scene url="#s"/></scene></COLLADA>)";
}

TEST_F(Orientation, NodesCarryTheirMeshes)
{
    const std::string mirror = "-1 0 0 7 0 1 0 0 0 0 1 0 0 0 0 1";
    const std::string flat = "1 0 0 0 0 1 0 0 0 0 0 3 0 0 0 1";
    const auto picture = [&](const std::string& outer, const std::string& inner) {
        return Image(render(write("f.dae", letterDae(outer, inner, false)), {"--view", "0,0"}));
    };
    const Image mirrored = picture(mirror, flat), twice = picture(mirror, mirror);
    EXPECT_EQ(readLetter(mirrored), kMirrored);
    EXPECT_EQ(readLetter(twice), kUpright);
    // Lit from the front, whichever way its polygons are wound by now.
    const int x = mirrored.right - 5, y = (mirrored.top + mirrored.bottom) / 2;
    EXPECT_GT(mirrored.brightness(x, y), 100);
    EXPECT_NEAR(mirrored.brightness(x, y), twice.brightness(twice.left + 5, y), 12);
}

TEST_F(Orientation, NodesTurnNormalsAsTheyTurnFaces)
{
    const char* const places[][2] = {
        {"0.5 0 0.866 0 0 1 0 0 -0.866 0 0.5 0 0 0 0 1", "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1"},
        {"3 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1", "0.7 0 0.7 0 0 1 0 0 -0.7 0 0.7 0 0 0 0 1"},
        {"1 0 0 0 0 0.5 0 0 0 0 -4 0 0 0 0 1", "0.7 0 0.7 0 0 1 0 0 -0.7 0 0.7 0 0 0 0 1"},
        {"1 0 0 0 0 1 0 0 0 0 0 0 0 0 0 1", "0.7 0 0.7 0 0 1 0 0 -0.7 0 0.7 0 0 0 0 1"},
    };
    for (const auto& [outer, inner] : places) {
        const Image with(render(write("with.dae", letterDae(outer, inner, true)), {}, "with.png"));
        const Image without(render(write("without.dae", letterDae(outer, inner, false))));
        EXPECT_GT(with.coverage(), 0.05);
        EXPECT_LE(difference(with, without), 2) << outer;
    }
}

class Shading : public zebtest::Zebview
{
protected:
    Image shot(const std::string& model, const std::vector<std::string>& options = {})
    {
        return Image(render(write("m.obj", model), options));
    }
};

TEST_F(Shading, TheKeyLightComesFromTheUpperLeft)
{
    const Image image(render(kSphere));
    const int x = image.width / 2, y = image.height / 2, r = (image.bottom - image.top) / 2;
    const int d = r * 6 / 10;
    const int upperLeft = image.brightness(x - d, y - d);
    EXPECT_GT(upperLeft, image.brightness(x + d, y - d) + 20);
    EXPECT_GT(upperLeft, image.brightness(x - d, y + d) + 20);
    EXPECT_GT(upperLeft, image.brightness(x + d, y + d) + 60);
    EXPECT_GT(image.brightness(x + d, y + d), 15) << "the shadow side is black";
}

TEST_F(Shading, WindingAndDirectionOfNormalsDoNotMatter)
{
    const auto odd = [](int face) { return face % 2 == 1; };
    const auto none = [](int) { return false; };
    const auto out = [](int) { return 1; };
    const auto in = [](int) { return -1; };
    const auto mixed = [](int face) { return face < 3 ? 1 : -1; };
    const Image plain = shot(cubeObj());
    EXPECT_GT(plain.contrast(), 40);
    EXPECT_LE(difference(plain, shot(cubeObj(odd))), 2);
    EXPECT_LE(difference(plain, shot(cubeObj(none, out))), 2);
    EXPECT_LE(difference(plain, shot(cubeObj(none, in))), 2);
    EXPECT_LE(difference(plain, shot(cubeObj(odd, out))), 2);
    EXPECT_LE(difference(plain, shot(cubeObj(odd, mixed))), 2);
}

TEST_F(Shading, FacesWithNormalsToBothSidesAreLitByTheirWinding)
{
    const std::string corners = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";
    const Image plain = shot(corners + "f 1 2 3 4\n", {"--view", "0,0"});
    const Image mixed =
        shot(corners + "vn 0 0 1\nvn 0 0 -1\nf 1//1 2//2 3//1 4//2\n", {"--view", "0,0"});
    EXPECT_LE(difference(plain, mixed), 2);
}

// The largest step of brightness from pixel to pixel across the middle of a shape.
int largestStep(const Image& image)
{
    int most = 0;
    const int y = image.height / 2, aside = (image.right - image.left) / 5;
    for (int x = image.left + aside; x < image.right - aside; ++x) {
        most = std::max(most, std::abs(image.brightness(x, y) - image.brightness(x + 1, y)));
    }
    return most;
}

const std::vector<std::string> kDull{"--surface", "diffuse", "--view", "5,0", "--rate", "0.25"};

TEST_F(Shading, EdgesStaySharpAndCurvesAreSmooth)
{
    EXPECT_GT(largestStep(shot(prismObj(6), kDull)), 12);
    EXPECT_LE(largestStep(shot(prismObj(12), kDull)), 5);
}

TEST_F(Shading, SmoothingSeesPastTheWindingOfNeighbours)
{
    const auto odd = [](int face) { return face % 2 == 1; };
    const Image plain = shot(prismObj(12), kDull);
    EXPECT_LE(difference(plain, shot(prismObj(12, odd), kDull)), 2);
}

TEST_F(Shading, NormalsOfTheFileAreKept)
{
    const auto none = [](int) { return false; };
    const auto odd = [](int face) { return face % 2 == 1; };
    const auto out = [](int, int) { return 1; };
    const auto in = [](int, int) { return -1; };
    // Six sides would have sharp edges without them.
    const Image plain = shot(prismObj(6, none, out), kDull);
    EXPECT_LE(largestStep(plain), 5);
    EXPECT_LE(difference(plain, shot(prismObj(6, none, in), kDull)), 4);
    EXPECT_LE(difference(plain, shot(prismObj(6, odd, out), kDull)), 4);
}

TEST_F(Shading, NormalsThatContradictEachOtherAreMadeAnew)
{
    const auto none = [](int) { return false; };
    const auto mixed = [](int, int corner) { return corner % 2 ? 1 : -1; };
    const Image plain = shot(prismObj(12), kDull);
    EXPECT_LE(difference(plain, shot(prismObj(12, none, mixed), kDull)), 2);
}

TEST_F(Shading, OneBadNormalSpoilsNothingElse)
{
    const auto none = [](int) { return false; };
    const auto out = [](int, int) { return 1; };
    // Of the face in front.
    const auto bad = [](int face, int corner) { return face == 0 && corner == 0 ? -1 : 1; };
    const Image plain = shot(prismObj(12, none, out), kDull);
    const Image spoilt = shot(prismObj(12, none, bad), kDull);
    EXPECT_FALSE(plain == spoilt);
    EXPECT_LE(difference(plain, spoilt), 30);
}

TEST_F(Shading, ConcavePolygonsKeepTheirShape)
{
    const std::string letter =
        "v 0 0 0\nv 1 0 0\nv 1 2 0\nv 2 2 0\nv 2 3 0\nv 1 3 0\nv 1 4 0\nv 3 4 0\nv 3 5 0\nv 0 5 0\n"
        "f 1 2 3 4 5 6 7 8 9 10\n";
    EXPECT_EQ(readLetter(shot(letter, {"--view", "0,0"})), kUpright);
}

TEST_F(Shading, StrayVerticesAreLeftOut)
{
    const std::string stray = "v 100 0 0\nv 0 -100 0\n";
    const Image image = shot(stray + letterObj(), {"--view", "0,0"});
    EXPECT_EQ(readLetter(image), kUpright);
    EXPECT_GT(image.bottom - image.top, 100) << "they take up room";
}

Pixel center(const Image& image) { return image.at(image.width / 2, image.height / 2); }

TEST_F(Shading, ColorsComeFromOptionThenVerticesThenMaterial)
{
    const std::string color = " 1 0 0\n";
    const std::string vertices = "v 0 0 0" + color + "v 1 0 0" + color + "v 1 1 0" + color +
                                 "v 0 1 0" + color + "f 1 2 3 4\n";
    const std::string material =
        "mtllib m.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nusemtl paint\nf 1 2 3 4\n";
    write("m.mtl", "newmtl paint\nKd 0 0 1\n");
    const std::vector<std::string> plain{"--view", "0,0", "--surface", "constant"};
    EXPECT_EQ(center(shot(vertices, plain)), (Pixel{255, 0, 0, 255}));
    EXPECT_EQ(center(shot(material, plain)), (Pixel{0, 0, 255, 255}));
    auto green = plain;
    green.insert(green.end(), {"--color", "0,1,0"});
    EXPECT_EQ(center(shot(vertices, green)), (Pixel{0, 255, 0, 255}));
    EXPECT_EQ(center(shot(material, green)), (Pixel{0, 255, 0, 255}));
}

class Options : public zebtest::Zebview
{
protected:
    Image ball(const std::vector<std::string>& options) { return Image(render(kSphere, options)); }
};

TEST_F(Options, SizeIsThatOfThePicture)
{
    const Image wide = ball({"--size", "90x31"}), tall = ball({"--size", "20x77"});
    EXPECT_EQ(wide.width, 90);
    EXPECT_EQ(wide.height, 31);
    EXPECT_EQ(tall.width, 20);
    EXPECT_EQ(tall.height, 77);
    // A ball stays round, and fits into the shorter side.
    for (const Image* image : {&wide, &tall}) {
        EXPECT_NEAR(image->right - image->left, image->bottom - image->top, 2);
        EXPECT_GE(image->left, 1);
        EXPECT_GE(image->top, 1);
        EXPECT_GT(image->right - image->left, std::min(image->width, image->height) * 8 / 10);
    }
}

TEST_F(Options, WithoutBackgroundThePictureIsTransparent)
{
    const Image image = ball({});
    EXPECT_TRUE(image.hasAlpha);
    EXPECT_EQ(image.alpha(0, 0), 0);
    EXPECT_EQ(image.alpha(image.width / 2, image.height / 2), 255);
}

TEST_F(Options, BackgroundFillsWhatTheModelLeaves)
{
    const Image clear = ball({}), image = ball({"--background", "0.2,0.4,1"});
    EXPECT_FALSE(image.hasAlpha);
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            if (clear.covered(x, y)) continue;
            ASSERT_EQ(image.at(x, y), (Pixel{51, 102, 255, 255})) << x << ", " << y;
        }
    }
    const Pixel inside = center(image);
    EXPECT_EQ(inside[0], inside[2]) << "the model is grey";
    for (const char* view : {"0,90", "77,-90", "180,0"}) {
        const Image other = ball({"--background", "1,1,1", "--view", view, "--fov", "150"});
        EXPECT_EQ(other.at(0, 0), (Pixel{255, 255, 255, 255}));
        EXPECT_EQ(other.at(other.width - 1, other.height - 1), (Pixel{255, 255, 255, 255}));
    }
}

TEST_F(Options, SamplesSmoothTheOutline)
{
    const auto levels = [](const Image& image) {
        std::vector<bool> seen(256);
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                seen[static_cast<std::size_t>(image.alpha(x, y))] = true;
            }
        }
        return std::count(seen.begin(), seen.end(), true);
    };
    const Image box1 = ball({"--samples", "1", "--filter", "box"});
    EXPECT_EQ(levels(box1), 2) << "one sample covers a pixel or does not";
    EXPECT_GT(levels(ball({"--samples", "8", "--filter", "box"})), 30);
    EXPECT_GT(levels(ball({"--adaptive", "0.0001", "--filter", "box"})), 8);
    EXPECT_FALSE(ball({"--adaptive", "0.0001"}) == ball({"--adaptive", "100"}));
}

TEST_F(Options, FiltersDiffer)
{
    std::vector<Image> images;
    for (const char* name : {"gaussian", "catmull-rom", "box", "triangle", "sinc"}) {
        images.push_back(ball({"--filter", name}));
        EXPECT_EQ(images.back().crackPixels(), 0) << name;
        for (std::size_t i = 0; i + 1 < images.size(); ++i) {
            EXPECT_FALSE(images[i] == images.back()) << name;
        }
    }
    EXPECT_TRUE(images[0] == ball({})) << "gaussian is the default";
}

TEST_F(Options, FiltersShowNoSeams)
{
    for (const char* name : {"gaussian", "catmull-rom", "box", "triangle", "sinc"}) {
        const Image image(
            render("/usr/share/glmark2/models/bunny.obj",
                   {"--filter", name, "--surface", "constant", "--color", "0.4,0.4,0.4"}));
        int seen = 0;
        for (int y = 4; y < image.height - 4; ++y) {
            for (int x = 4; x < image.width - 4; ++x) {
                if (!image.opaqueAround(x, y, 4)) continue;
                ++seen;
                // Dither may move a value by one.
                for (std::size_t c = 0; c < 3; ++c) {
                    ASSERT_NEAR(image.at(x, y)[c], 102, 1) << name << ' ' << x << ' ' << y;
                }
            }
        }
        EXPECT_GT(seen, 1000) << name;
    }
}

TEST_F(Options, RateChangesShadingButNotTheOutline)
{
    const Image fine = ball({"--rate", "0.25"}), coarse = ball({"--rate", "400"});
    EXPECT_FALSE(fine == coarse);
    EXPECT_NEAR(fine.coverage(), coarse.coverage(), 1e-3);
    EXPECT_TRUE(ball({"--rate", "1"}) == ball({})) << "1 is the default";
}

TEST_F(Options, FieldOfViewChangesThePerspective)
{
    const std::string cube = write("cube.obj", cubeObj());
    const auto picture = [&](const char* fov) {
        return Image(render(cube, {"--fov", fov, "--view", "0,40"}));
    };
    // The far edge of the top looks shorter than the near one, the more the wider the view.
    const auto topEdge = [](const Image& image) {
        int first = image.width, last = 0;
        for (int x = 0; x < image.width; ++x) {
            if (!image.covered(x, image.top + 2)) continue;
            first = std::min(first, x);
            last = x;
        }
        return static_cast<double>(last - first) / (image.right - image.left);
    };
    EXPECT_GT(topEdge(picture("2")), 0.93);
    EXPECT_LT(topEdge(picture("70")), 0.75);
    EXPECT_TRUE(picture("35") == Image(render(cube, {"--view", "0,40"}))) << "35 is the default";
}

TEST_F(Options, ViewHasAThreeQuarterDefault)
{
    const std::string cube = write("cube.obj", cubeObj());
    const Image usual(render(cube));
    EXPECT_TRUE(usual == Image(render(cube, {"--view", "30,20"})));
    EXPECT_FALSE(usual == Image(render(cube, {"--view", "0,0"})));
}

TEST_F(Options, SurfacesDiffer)
{
    const Image constant = ball({"--surface", "constant", "--color", "1,0.6,0.2"});
    EXPECT_EQ(constant.contrast(), 0);
    EXPECT_EQ(center(constant), (Pixel{255, 153, 51, 255}));
    const Image diffuse = ball({"--surface", "diffuse"}), metal = ball({"--surface", "metal"});
    const Image plastic = ball({"--surface", "plastic"});
    EXPECT_GT(difference(diffuse, plastic), 20);
    EXPECT_GT(difference(metal, plastic), 20);
    EXPECT_GT(difference(metal, diffuse), 20);
    EXPECT_TRUE(plastic == ball({})) << "plastic is the default";
}

TEST_F(Options, ThreadsChangeNothing)
{
    const Image usual = ball({});
    for (const char* threads : {"0", "1", "2", "256"}) {
        EXPECT_TRUE(usual == ball({"--threads", threads})) << threads;
    }
}

TEST_F(Options, ExrIsWritten)
{
    const std::string file = read(render(kSphere, {}, "picture.EXR"));
    ASSERT_GT(file.size(), 1000U);
    EXPECT_EQ(file.substr(0, 4), "\x76\x2f\x31\x01");
}

TEST_F(Options, HelpNamesEveryOption)
{
    const Outcome outcome = run({"--help"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    for (const char* name :
         {"MODEL",  "--output",  "--channels", "--sheet",    "--frames", "--turn",
          "--fit",  "--size",    "--samples",  "--adaptive", "--rate",   "--filter",
          "--view", "--fov",     "--up",       "--surface",  "--color",  "--background",
          "--help", "--version", "--threads"}) {
        EXPECT_NE(outcome.out.find(name), std::string::npos) << name;
    }
}

TEST_F(Options, VersionIsPrinted)
{
    const Outcome outcome = run({"--version"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    int major = -1, minor = -1, patch = -1, length = 0;
    const int found =
        std::sscanf(outcome.out.c_str(), "zebview %d.%d.%d\n%n", &major, &minor, &patch, &length);
    EXPECT_EQ(found, 3) << outcome.out;
    EXPECT_EQ(static_cast<std::size_t>(length), outcome.out.size()) << outcome.out;
    EXPECT_TRUE(major >= 0 && minor >= 0 && patch >= 0) << outcome.out;
}

TEST_F(Options, ProgressIsShownOnTerminalsOnly)
{
    int master = -1, slave = -1;
    char name[256] = "";
    ASSERT_EQ(openpty(&master, &slave, name, nullptr, nullptr), 0);
    // Read while it is written: a terminal holds little.
    std::string shown;
    const pid_t pid = start({kSphere, "--size", "160x120", "-o", "p.png"}, name);
    pollfd ready{master, POLLIN, 0};
    bool running = true;
    int status = -1;
    while (running || poll(&ready, 1, 200) > 0) {
        char buffer[4096];
        if (poll(&ready, 1, 50) > 0) {
            const ssize_t count = ::read(master, buffer, sizeof buffer);
            if (count > 0) shown.append(buffer, static_cast<std::size_t>(count));
        }
        if (running) running = waitpid(pid, &status, WNOHANG) == 0;
    }
    close(slave);
    close(master);
    EXPECT_EQ(status, 0);
    EXPECT_NE(shown.find("\r["), std::string::npos);
    EXPECT_NE(shown.find(" 50%"), std::string::npos) << shown;
    EXPECT_EQ(shown.substr(shown.size() - 4), "\r\033[K") << "the bar is taken away at the end";
    EXPECT_EQ(run({kSphere, "--size", "40x30", "-o", "p.png"}).err, "");
}

}  // namespace
