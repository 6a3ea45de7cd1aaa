// Points, lines and edges: where they are, how large, and in which colors.

#include <cmath>
#include <numbers>

#include "gltf_animation.h"
#include "image.h"
#include "process.h"

namespace
{

using zebtest::Gltf;
using zebtest::Image;
using zebtest::Pixel;

using Words = std::vector<std::string>;

constexpr const char* kAsPoints = R"(,"mode":0)";
// Six indices 0, 1, 2, 0, 2, 3: the lower side, the diagonal twice over, and the upper side.
constexpr const char* kAsLines = R"(,"mode":1)";

class Marks : public zebtest::Zebview
{
protected:
    // Pictures of 200 x 200 pixels of a plate from -1 to 1 in x and y, by a camera that shows -2 to
    // 2: 50 pixels are a unit.
    Image shown(Words options) const
    {
        options.insert(options.end(), {"--camera", "eye"});
        return shot("plate.gltf", file.text(), options, "200x200");
    }
    Image shot(const std::string& name, const std::string& text, Words options,
               const std::string& size = "200x150") const
    {
        options.insert(options.end(), {"--size", size, "--samples", "8"});
        return Image(render(write(name, text), options));
    }
    // Colors for the four vertices of the plate.
    void color(const std::vector<float>& colors)
    {
        file.attributes = R"(,"COLOR_0":)" + std::to_string(file.addFloats(colors, "VEC3"));
    }
    // How many pixels are covered in a part of a picture.
    static double area(const Image& picture, int x0, int y0, int x1, int y1)
    {
        double sum = 0;
        for (int y = y0; y < y1; ++y) {
            for (int x = x0; x < x1; ++x) sum += picture.alpha(x, y) / 255.0;
        }
        return sum;
    }
    // As many points as there are values, on the x axis.
    static std::string cloud(const std::vector<double>& values)
    {
        std::ostringstream text;
        text << "ply\nformat ascii 1.0\nelement vertex " << values.size()
             << "\nproperty float x\nproperty float y\nproperty float z\nend_header\n";
        for (const double x : values) text << x << " 0 0\n";
        return text.str();
    }

    const double kPi = std::numbers::pi;
    Gltf file;
};

TEST_F(Marks, PointsAreSpheresOfTheSizeAskedFor)
{
    file.targets = kAsPoints;
    const Image picture = shown({"--point-size", "0.8"});
    for (const int x : {0, 100}) {
        for (const int y : {0, 100}) {
            EXPECT_NEAR(area(picture, x, y, x + 100, y + 100), kPi * 20 * 20, 4);
        }
    }
    for (const auto& [x, y] : {std::pair(50, 50), {150, 50}, {50, 150}, {150, 150}}) {
        EXPECT_TRUE(picture.opaqueAround(x, y, 12));
        // Lit from the upper left, they are seen from outside.
        EXPECT_GT(picture.brightness(x - 9, y - 9), picture.brightness(x + 9, y + 9) + 40);
    }
    EXPECT_EQ(picture.left, 29);
    EXPECT_EQ(picture.top, 29);
}

TEST_F(Marks, PointsAreAsLargeAsTheirNumberNeeds)
{
    const Words far{"--view", "0,0", "--fov", "1"};
    // Of a row of points side by side, in units of half its length.
    const auto radius = [&](int count) {
        std::vector<double> values;
        for (int i = 0; i < count; ++i) values.push_back(2.0 * i / (count - 1) - 1);
        const Image picture = shot("row.ply", cloud(values), far, "800x40");
        const double r = area(picture, 300, 0, 500, 40) / 400;
        // The outermost pixels are those that the filter reaches.
        return r / ((picture.right - picture.left - 1) / 2.0 - r);
    };
    EXPECT_NEAR(radius(1600), 1 / std::sqrt(1600), 5e-4);
    EXPECT_NEAR(radius(2500), 1 / std::sqrt(2500), 5e-4);
    const Image two = shot("two.ply", cloud({-1, 1}), far, "400x80");
    const double r = std::sqrt(area(two, 0, 0, 200, 80) / kPi);
    EXPECT_NEAR(r / ((two.right - two.left - 1) / 2.0 - r), 0.03, 1e-3);
}

TEST_F(Marks, PointsLieWhollyInThePicture)
{
    const auto expectCircle = [&](const Words& options, double center, double radius) {
        const Image picture = shot("cloud.ply", cloud({7}), options, "100x100");
        EXPECT_NEAR(picture.left + picture.right, 2 * center, 1);
        EXPECT_NEAR(picture.top + picture.bottom, 2 * center, 1);
        EXPECT_NEAR(std::sqrt(picture.coverage() * 10000 / kPi), radius, 0.5);
    };
    // All but the margin, whatever its size is.
    expectCircle({}, 49.5, 47);
    expectCircle({"--point-size", "1e-5"}, 49.5, 47);
    expectCircle({"--point-size", "1e9"}, 49.5, 47);
    expectCircle({"--fit", "sphere"}, 49.5, 47);
    const Image two = shot("cloud.ply", cloud({-1, 1}), {"--view", "0,0", "--point-size", "1"});
    EXPECT_NEAR(two.left, 6, 1.5);
    EXPECT_NEAR(two.right, 193, 1.5);
    EXPECT_EQ(two.holePixels(), 0);
}

TEST_F(Marks, MarksHaveTheColorsOfTheirVertices)
{
    color({1, 0, 0, 1, 0, 0, 0, 1, 0, 0, 1, 0});
    const auto expectColors = [](const Image& picture, int bottom, int top) {
        const Pixel red = picture.at(50, bottom), green = picture.at(50, top);
        EXPECT_GT(red[0], 150);
        EXPECT_LT(red[1], 110);
        EXPECT_GT(green[1], 150);
        EXPECT_LT(green[0], 110);
    };
    file.targets = kAsPoints;
    expectColors(shown({"--point-size", "0.8"}), 150, 50);
    file.targets = kAsLines;
    expectColors(shown({"--line-width", "8"}), 150, 50);
    // The option counts more.
    const Words blue{"--color", "0,0,1", "--line-width", "8", "--surface", "constant"};
    EXPECT_EQ(shown(blue).at(100, 150), (Pixel{0, 0, 255, 255}));
    file.targets = kAsPoints;
    EXPECT_EQ(shown(blue).at(50, 150), (Pixel{0, 0, 255, 255}));
    color({1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 1, 0});
    file.targets = kAsLines;
    const Pixel middle = shown({"--line-width", "8", "--surface", "constant"}).at(100, 150);
    EXPECT_NEAR(middle[0], 188, 2) << "half of the light of each end";
    EXPECT_NEAR(middle[2], 188, 2);
}

TEST_F(Marks, LinesAreAsWideAsIsAskedFor)
{
    file.targets = kAsLines;
    for (const double width : {1.0, 1.5, 4.0, 20.0}) {
        const Image picture = shown({"--line-width", std::to_string(width)});
        EXPECT_NEAR(area(picture, 140, 120, 141, 180), width, 0.04 * width);
        EXPECT_NEAR(area(picture, 60, 20, 61, 80), width, 0.04 * width);
        // The diagonal, along which a column is cut at 45 degrees.
        EXPECT_NEAR(area(picture, 100, 80, 101, 120), width * std::sqrt(2), 0.06 * width);
        // No others: the left and the right side.
        EXPECT_EQ(picture.alpha(50, 100), 0);
        EXPECT_EQ(picture.alpha(150, 100), 0);
    }
    EXPECT_NEAR(area(shown({}), 140, 120, 141, 180), 1.5, 0.06);
}

// Of pixels, however far away they are.
TEST_F(Marks, LinesAreAsWideFarAway)
{
    // From left to right, away from the eye.
    const std::string text = "v -1 0 2\nv 1 0 -20\nl 1 2\n";
    const Image picture = shot("line.obj", text, {"--view", "0,0", "--line-width", "6"});
    // Towards the right end it is seen more and more from its end.
    const int first = picture.left + 8, last = picture.right - 8;
    for (const int x : {first, (first + last) / 2, last}) {
        EXPECT_NEAR(area(picture, x, 0, x + 1, 150), 6, 0.3) << x;
    }
}

TEST_F(Marks, LinesAreNotCutOffBesideTheEye)
{
    const Words wide{"--line-width", "100", "--view", "0,0"};
    const Image picture = shot("line.obj", "v -1 0 0\nv 1 0 0\nl 1 2\n", wide);
    EXPECT_NEAR(area(picture, 100, 0, 101, 150), 100, 1);
    EXPECT_EQ(picture.holePixels(), 0);
    EXPECT_EQ(picture.gapPixels(), 0);
}

TEST_F(Marks, EverythingIsShownWhereverItsMeshIs)
{
    file.nodes = R"({"mesh":0,"translation":[-0.5,0,0]},{"mesh":0,"translation":[0.5,0.4,0]})";
    file.nodeCount = 2;
    file.scene = "0,1";
    file.targets = kAsPoints;
    const Image points = shown({"--point-size", "0.2"});
    for (const int x : {25, 125}) {
        EXPECT_EQ(points.alpha(x, 50), 255);
        EXPECT_EQ(points.alpha(x + 50, 30), 255);
        EXPECT_EQ(points.alpha(x + 50, 50), 0);
    }
    file.targets = kAsLines;
    const Image lines = shown({});
    EXPECT_NEAR(area(lines, 85, 140, 86, 160), 1.5, 0.06);
    EXPECT_NEAR(area(lines, 165, 120, 166, 140), 1.5, 0.06);
    file.targets = "";
    const Image edges = shown({"--edges", "--edge-color", "1,0,0", "--surface", "constant"});
    EXPECT_GT(edges.at(35, 150)[0], 2 * edges.at(35, 150)[1]);
    EXPECT_GT(edges.at(165, 130)[0], 2 * edges.at(165, 130)[1]);
}

TEST_F(Marks, EdgesAreThoseOfTheFilesPolygons)
{
    const std::string square = "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\n";
    const Words options{"--view", "0,0",     "--edges", "--edge-color", "1,0,0",   "--line-width",
                        "4",      "--color", "1,1,1",   "--surface",    "constant"};
    const Pixel red{255, 0, 0, 255}, white{255, 255, 255, 255};
    const Image one = shot("square.obj", square + "f 1 2 3 4\n", options, "150x150");
    for (int k = one.left + 4; k < one.right - 4; ++k) {
        EXPECT_EQ(one.at(k, one.top + 2), red) << k;
        EXPECT_EQ(one.at(k, one.bottom - 2), red) << k;
        EXPECT_EQ(one.at(one.left + 2, k), red) << k;
        EXPECT_EQ(one.at(one.right - 2, k), red) << k;
    }
    EXPECT_EQ(one.at(75, 75), white) << "there is no diagonal";
    EXPECT_EQ(one.at(50, 100), white);
    const Image two = shot("square.obj", square + "f 1 2 3\nf 1 3 4\n", options, "150x150");
    for (int k = 20; k < 130; ++k) EXPECT_GT(two.at(k, 149 - k)[0], 6 * two.at(k, 149 - k)[1]) << k;
    EXPECT_EQ(two.at(50, 50), white);
}

// A box hides what lies behind it.
TEST_F(Marks, EdgesBehindAreHidden)
{
    std::ostringstream box;
    for (int i = 0; i < 8; ++i) {
        box << "v " << (i & 1 ? 1 : -1) << ' ' << (i & 2 ? 1 : -1) << ' ' << (i & 4 ? 1 : -1)
            << '\n';
    }
    box << "f 1 3 4 2\nf 5 6 8 7\nf 1 2 6 5\nf 3 7 8 4\nf 1 5 7 3\nf 2 4 8 6\n";
    const Words options{"--view",    "0,0",      "--edges", "--edge-color", "1,0,0",
                        "--surface", "constant", "--color", "1,1,1"};
    const Image picture = shot("box.obj", box.str(), options, "150x150");
    // The rear side looks smaller, and lies within the front.
    for (int x = picture.left + 4; x < picture.right - 4; ++x) {
        EXPECT_EQ(picture.at(x, 75), (Pixel{255, 255, 255, 255})) << x;
    }
}

TEST_F(Marks, ShadowsFallFromPointsToo)
{
    const std::string one = cloud({0});
    const Image without = shot("cloud.ply", one, {"--view", "0,20"});
    const Image with = shot("cloud.ply", one, {"--view", "0,20", "--shadows", "--ground"});
    EXPECT_GT(with.coverage(), without.coverage() + 0.01);
}

TEST_F(Marks, EnvironmentsLightThem)
{
    std::string sky = "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 4 +X 8\n";
    for (int i = 0; i < 32; ++i) sky += "\x80\x80\x80\x81";  // light of 1 from everywhere
    write("sky.hdr", sky);
    file.targets = kAsPoints;
    EXPECT_GT(shown({"--environment", "sky.hdr"}).brightness(50, 50), 100);
}

TEST_F(Marks, WrongUsage)
{
    write("plate.gltf", file.text());
    const auto status = [&](Words options) {
        options.insert(options.begin(), {"plate.gltf", "-o", "x.png"});
        return run(options).status;
    };
    EXPECT_EQ(status({"--edge-color", "1,0,0"}), 2) << "there are no edges";
    EXPECT_EQ(status({"--edges", "--edge-color", "1,0"}), 2);
    for (const char* const wrong : {"0", "-1", "x", "nan", "inf"}) {
        EXPECT_EQ(status({"--line-width", wrong}), 2) << wrong;
        EXPECT_EQ(status({"--point-size", wrong}), 2) << wrong;
    }
    EXPECT_EQ(status({"--line-width", "100.5"}), 2);
    EXPECT_EQ(files(), Words{"plate.gltf"});
}

}  // namespace
