// Free-form surfaces of OBJ files: exact, and never polygons.

#include <cstring>
#include <numbers>
#include <random>

#include "exr.h"
#include "shapes.h"
#include "spline_models.h"
#include "textured.h"
#include "zebcore/zebcore.h"

namespace
{

using zebtest::bezierObj;
using zebtest::bump;
using zebtest::Control;
using zebtest::difference;
using zebtest::expectNear;
using zebtest::ExrImage;
using zebtest::fieldsPng;
using zebtest::Image;
using zebtest::kFields;
using zebtest::kSphereKnots;
using zebtest::Outcome;
using zebtest::patchObj;
using zebtest::Pixel;
using zebtest::plateAt;
using zebtest::Revolved;
using zebtest::revolved;
using zebtest::sphere;
using zebtest::sphereObj;
using zebtest::surf;
using zebtest::vertices;

using Words = std::vector<std::string>;

constexpr const char* kCubic = "cstype bspline\ndeg 3 3";
constexpr const char* kOneSpan = "0 0 0 0 1 1 1 1";

class FreeForms : public zebtest::Zebview
{
protected:
    Image picture(const std::string& obj, const Words& options = {}, const std::string& said = "",
                  const std::string& name = "model.obj") const
    {
        return Image(render(write(name, obj), options, "picture.png", said));
    }
    // How the line of a surface that is left out begins.
    static std::string at(int line) { return "zebview: model.obj:" + std::to_string(line) + ": "; }
    static std::string leftOut(int line, const std::string& why)
    {
        return at(line) + "a surface is not shown: " + why + '\n';
    }
};

double chord(const Image& image, int y)
{
    double sum = 0;
    for (int x = 0; x < image.width; ++x) sum += image.alpha(x, y) / 255.0;
    return sum;
}

// Polygons that were as good would have some hundreds of sides.
TEST_F(FreeForms, SpheresAreRoundToAFractionOfAPixel)
{
    constexpr int size = 1000;
    const Image image = picture(sphereObj(), {"--size", "1000x1000", "--samples", "4", "--view",
                                              "0,0", "--surface", "constant", "--filter", "box"});
    const double radius = std::sqrt(image.coverage() * size * size / std::numbers::pi);
    // The camera leaves 6 % of half the picture free.
    EXPECT_NEAR(radius, 470, 1);
    double worst = 0;
    for (int y = 0; y < size; ++y) {
        const double up = y + 0.5 - size / 2.0;
        if (std::fabs(up) > 0.9 * radius) continue;
        worst =
            std::max(worst, std::fabs(chord(image, y) - 2 * std::sqrt(radius * radius - up * up)));
    }
    // Of two ends together, whose samples are 1/4 of a pixel apart.
    EXPECT_LT(worst, 0.5);
    EXPECT_EQ(image.holePixels(), 0);
    EXPECT_EQ(image.crackPixels(), 0);
}

// The camera knows the surface itself: its control points reach farther.
TEST_F(FreeForms, PicturesAreFilledBySurfacesAndNotByTheirControlPoints)
{
    for (const char* view : {"0,0", "30,20", "-70,-50", "10,90"}) {
        const Image image = picture(sphereObj(), {"--size", "200x200", "--view", view});
        EXPECT_NEAR(image.left, 6, 1.5) << view;
        EXPECT_NEAR(image.right, 193, 1.5) << view;
        EXPECT_NEAR(image.top, 6, 1.5) << view;
        EXPECT_NEAR(image.bottom, 193, 1.5) << view;
        EXPECT_EQ(image.crackPixels(), 0) << view;
    }
}

// Through the front the back is seen, too.
TEST_F(FreeForms, NothingIsCutOffInFront)
{
    write("m.mtl", "newmtl glass\nKd 0 0 1\nd 0.5\n");
    const std::string glass = "mtllib m.mtl\nusemtl glass\n" + sphereObj();
    EXPECT_NEAR(picture(glass).alpha(80, 60), 191, 1);
    EXPECT_NEAR(picture(glass, {"--fit", "sphere"}).alpha(80, 60), 191, 1);
}

// The host's own picture of the sphere, from the same place.
void renderByHost(const std::string& name, double eye, double reach)
{
    constexpr long size = 120;
    zebFrameBegin();
    zebQuirks(0);
    zebRasterViewport(0, size, 0, size);
    zebOutputFile(ZEB_FILE_EXR, name.c_str());
    zebOutputSamples(ZEB_SAMPLES_RGBAZ);
    zebColorQuantize(0, 0, 0);
    zebSampleUniform(2, 2);
    zebFilter(ZEB_FILTER_GAUSSIAN);
    zebFilterWidth(2, 2);
    zebViewPerspective(35);
    zebImageWindow(-1, 1, -1, 1);
    zebClip(static_cast<float>(eye - reach - 0.02), static_cast<float>(eye + reach + 0.02));
    const auto distance = static_cast<float>(eye);
    ZebMatrix look{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, -1, 0}, {0, 0, distance, 1}};
    zebMultMatrix(look);
    zebSceneBegin();
    const float gray = std::pow((0.8f + 0.055f) / 1.055f, 2.4f);
    const float color[3] = {gray, gray, gray};
    zebColor(color);
    zebSurface(zebQuark("constant"), 0);
    zebShadingModel(ZEB_SMOOTH);
    zebShadingRate(1);
    zebBackface(2);
    const Revolved model = sphere();
    std::vector<float> points;
    const double radius = std::sqrt(3.0);
    for (const auto& [x, y, z, w] : model.net) {
        for (const double value : {x, y, z}) {
            points.push_back(static_cast<float>(value / radius * w));
        }
        points.push_back(static_cast<float>(w));
    }
    const std::vector<float> u(model.turn.begin(), model.turn.end());
    const std::vector<float> v(kSphereKnots.begin(), kSphereKnots.end());
    zebNurbMesh(9, 3, u.data(), 0.0, 1.0, 5, 3, v.data(), 0.0, 1.0, zebQuark("pointw"),
                points.data(), 0);
    zebSceneEnd();
    zebFrameEnd();
}

// Depth shows where each part of it lies, and not only what it covers.
TEST_F(FreeForms, PicturesAreThoseOfAHostsOwnSurface)
{
    write("model.obj", sphereObj());
    render("model.obj",
           {"--size", "120x120", "--samples", "2", "--view", "0,0", "--fit", "sphere", "--channels",
            "rgbaz", "--surface", "constant"},
           "ours.exr");
    const ExrImage ours(path("ours.exr"));
    // As the box around it is made one in the unit sphere.
    const double radius = static_cast<float>(1 / std::sqrt(3.0));
    const double slope = std::tan(35 * std::numbers::pi / 360) * (1 - 0.06);
    renderByHost(path("host.exr"), radius / std::sin(std::atan(slope)), radius);
    const ExrImage host(path("host.exr"));
    int others = 0, covered = 0;
    for (int y = 0; y < 120; ++y) {
        for (int x = 0; x < 120; ++x) {
            for (const char* channel : {"R", "G", "B", "A"}) {
                others += ours.at(channel, x, y) != host.at(channel, x, y);
            }
            // From one clipping plane to the other, where both are rounded.
            EXPECT_NEAR(ours.at("Z", x, y), host.at("Z", x, y), 2e-6);
            covered += ours.at("A", x, y) > 0;
        }
    }
    EXPECT_EQ(others, 0);
    EXPECT_GT(covered, 8000);
}

TEST_F(FreeForms, BezierPatchesAreBSplinesOfOneSpan)
{
    const Image spline = picture(patchObj(kCubic, kOneSpan, kOneSpan));
    EXPECT_GT(spline.coverage(), 0.2);
    EXPECT_EQ(picture(bezierObj()), spline);
    // What their parameters run through does not matter.
    EXPECT_EQ(picture(patchObj(kCubic, "4 4 4 4 8 8 8 8", "-2 -2 -2 -2 -1 -1 -1 -1")
                          .replace(patchObj(kCubic, "", "").find("0 1 0 1"), 7, "4 8 -2 -1")),
              spline);
}

std::string rows(int columns, int count, const std::string& type, const std::string& u,
                 const std::string& v, const std::string& limits = "0 1 0 1")
{
    std::vector<Control> net;
    for (int row = 0; row < count; ++row) {
        for (int column = 0; column < columns; ++column) {
            net.push_back({static_cast<double>(column), static_cast<double>(row),
                           std::sin(column * 1.3 + row * row), 1});
        }
    }
    return vertices(net, false) + type + '\n' + surf(net.size(), limits) + "parm u " + u +
           "\nparm v " + v + "\nend\n";
}

// Three patches by two share their edges.
TEST_F(FreeForms, BezierPatchesAreAsManyAsTheirParametersSay)
{
    const Image patches = picture(rows(10, 7, "cstype bezier\ndeg 3 3", "0 0.25 0.5 1", "0 0.5 1"));
    EXPECT_EQ(patches, picture(rows(10, 7, kCubic, "0 0 0 0 0.25 0.25 0.25 0.5 0.5 0.5 1 1 1 1",
                                    "0 0 0 0 0.5 0.5 0.5 1 1 1 1")));
    EXPECT_EQ(patches.crackPixels(), 0);
}

// Rounding may move what a sample hits.
void expectSame(const Image& a, const Image& b)
{
    ASSERT_EQ(a.width, b.width);
    int others = 0;
    for (int y = 0; y < a.height; ++y) {
        for (int x = 0; x < a.width; ++x) {
            const Pixel p = a.at(x, y), q = b.at(x, y);
            for (std::size_t c = 0; c < 4; ++c) others += std::abs(p[c] - q[c]) > 2;
        }
    }
    EXPECT_LE(others, 4);
    EXPECT_GT(a.coverage(), 0.1);
}

TEST_F(FreeForms, BasesAreWhatTheirMatricesSay)
{
    const std::string degrees = "\ndeg 3 3\nstep 1 1\n";
    // Sixths of (1 4 1 0), (0 4 2 0), (0 2 4 0), (0 1 4 1) in Bezier's form: the uniform B-spline.
    const std::string sixth =
        " 0.16666666666666666 -0.5 0.5 -0.16666666666666666"
        " 0.66666666666666666 0 -1 0.5"
        " 0.16666666666666666 0.5 0.5 -0.5"
        " 0 0 0 0.16666666666666666\n";
    const std::string matrix =
        "cstype bmatrix" + degrees + "bmat u" + sixth + "bmat v" + sixth + "\n";
    expectSame(
        picture(rows(6, 5, matrix, "0 1 2 3", "0 1 2", "0 3 0 2")),
        picture(rows(6, 5, kCubic, "-3 -2 -1 0 1 2 3 4 5 6", "-3 -2 -1 0 1 2 3 4 5", "0 3 0 2")));
    // Two of a kind.
    const std::string spline = " 0 -0.5 1 -0.5  1 0 -2.5 1.5  0 0.5 2 -1.5  0 0 -0.5 0.5\n";
    expectSame(
        picture(rows(6, 5, "cstype bmatrix" + degrees + "bmat u" + spline + "bmat v" + spline,
                     "0 1 2 3", "0 1 2", "0 3 0 2")),
        picture(rows(6, 5, "cstype cardinal\ndeg 3 3", "0 1 2 3", "0 1 2", "0 3 0 2")));
}

// It runs through its second point and its last but one, and not through its ends.
TEST_F(FreeForms, CardinalSurfacesRunThroughTheirInnerPoints)
{
    const Words front{"--view", "0,0", "--fov", "1", "--size", "200x200"};
    const Image image =
        picture(rows(6, 4, "cstype cardinal\ndeg 3 3", "0 1 2 3", "0 1", "0 3 0 1"), front);
    // From 1 to 4 across, and from 1 to 2 up.
    EXPECT_NEAR(double(image.right - image.left) / (image.bottom - image.top), 3, 0.1);
}

// x = u, y = v, z = u^2 - v^2, which Bezier's points are known of.
TEST_F(FreeForms, TaylorSurfacesArePolynomials)
{
    const std::string powers = vertices({{0, 0, 0, 1},
                                         {1, 0, 0, 1},
                                         {0, 0, 1, 1},
                                         {0, 1, 0, 1},
                                         {0, 0, 0, 1},
                                         {0, 0, 0, 1},
                                         {0, 0, -1, 1},
                                         {0, 0, 0, 1},
                                         {0, 0, 0, 1}},
                                        false);
    std::vector<Control> net;
    for (int j = 0; j < 3; ++j) {
        for (int i = 0; i < 3; ++i) net.push_back({i / 2.0, j / 2.0, double(i / 2 - j / 2), 1});
    }
    const std::string rest = "\ndeg 2 2\n" + surf(9) + "parm u 0 1\nparm v 0 1\nend\n";
    expectSame(picture(powers + "cstype taylor" + rest),
               picture(vertices(net, false) + "cstype bezier" + rest));
}

TEST_F(FreeForms, OnlyWhatLiesBetweenTheLimitsShows)
{
    const Words front{"--view", "0,0", "--fov", "1", "--size", "200x200"};
    const auto shape = [&](const std::string& limits) {
        const Image image =
            picture(vertices({{0, 0, 0, 1}, {4, 0, 0, 1}, {0, 4, 0, 1}, {4, 4, 0, 1}}, false) +
                        "cstype bspline\ndeg 1 1\n" + surf(4, limits) +
                        "parm u 0 0 2 2\nparm v 0 0 2 2\nend\n",
                    front);
        return double(image.right - image.left) / (image.bottom - image.top);
    };
    EXPECT_NEAR(shape("0 2 0 2"), 1, 0.03);
    EXPECT_NEAR(shape("0.5 1.5 0 2"), 0.5, 0.03);
    EXPECT_NEAR(shape("0 2 1.5 2"), 4, 0.15);
}

TEST_F(FreeForms, FilesMayBeWrittenInManyWays)
{
    const Image plain = picture(bezierObj());
    // Counted from the first one, with normals and continued lines.
    std::string other =
        "# a patch \\\n\r\n" + vertices(bump(), false) +
        "vn 0 0 1\n\tcstype\tbezier # that is its kind\r\ndeg 3 3\n  surf 0 1 \\\n0 1";
    for (int i = 1; i <= 16; ++i) {
        other += (i % 5 ? " " : " \\\r\n ") + std::to_string(i) + "//1";
    }
    other += "\nparm u +0.0 \\\n1e0\nparm v 0\nparm v 1\ng a b\nend";
    EXPECT_EQ(picture(other), plain);
    EXPECT_EQ(picture(bezierObj() + "curv2 1 2\nparm u 0 1\nend\n"), plain);
    EXPECT_EQ(picture("ctech cparm 1\nstech cparma 1 1\nvp 0 0\nvp 1 1\n" + bezierObj()), plain);
    EXPECT_EQ(picture(bezierObj(), {}, "", "model.OBJ"), plain);
    // Vertices that nothing uses may hold anything.
    EXPECT_EQ(picture("v a b c\nv 1 2 3 0\nv\nvt x\nvn\n" + bezierObj()), plain);
}

TEST_F(FreeForms, WeightsCountOnRationalSurfacesAlone)
{
    std::string weighted = bezierObj();
    std::size_t found = 0;
    for (int i = 0; i < 6; ++i) found = weighted.find('\n', found + 1);
    weighted.insert(found, " 9");
    EXPECT_EQ(picture(weighted), picture(bezierObj()));
    const auto rational = [](std::string text) {
        return text.replace(text.find("cstype "), 7, "cstype rat ");
    };
    EXPECT_GT(difference(picture(rational(weighted)), picture(bezierObj())), 20);
    EXPECT_EQ(picture(rational(bezierObj())), picture(bezierObj()));
}

// Six numbers are a point and a color, and seven have a weight between the two.
TEST_F(FreeForms, ColorsOfControlPointsAreNoWeights)
{
    const Words flat{"--surface", "constant", "--view", "0,0"};
    const auto plate = [](const std::string& more, const char* type = "cstype rat bezier") {
        return "v 0 0 0 " + more + "\nv 1 0 0 " + more + "\nv 0 1 0 " + more + "\nv 1 1 0 " + more +
               '\n' + type + "\ndeg 1 1\n" + surf(4) + "parm u 0 1\nparm v 0 1\nend\n";
    };
    expectNear(picture(plate("0.2 0.4 0.6"), flat).at(80, 60), {51, 102, 153, 255}, 1, "six");
    expectNear(picture(plate("5 0.2 0.4 0.6"), flat).at(80, 60), {51, 102, 153, 255}, 1, "seven");
    expectNear(picture(plate("5"), flat).at(80, 60), {204, 204, 204, 255}, 1, "four");
    Words red = flat;
    red.insert(red.end(), {"--color", "1,0,0"});
    expectNear(picture(plate("0.2 0.4 0.6"), red).at(80, 60), {255, 0, 0, 255}, 1, "--color");
}

std::string plate(double x, const std::string& corners = "-4 -3 -2 -1")
{
    return vertices({{x, 0, 0, 1}, {x + 1, 0, 0, 1}, {x, 1, 0, 1}, {x + 1, 1, 0, 1}}, false) +
           "cstype bezier\ndeg 1 1\nsurf 0 1 0 1 " + corners + "\nparm u 0 1\nparm v 0 1\nend\n";
}

TEST_F(FreeForms, MaterialsAndTexturesAreThoseOfTheFile)
{
    write("m.mtl",
          "newmtl red paint\nKd 1 0 0\nillum 0\nnewmtl glass\nKd 0 0 1\nd 0.4\n"
          "newmtl picture\nKd 1 1 1\nillum 0\nmap_Kd a.png\n");
    write("a.png", fieldsPng());
    const Words front{"--view", "0,0", "--fov", "1"};
    const std::string places = "vt 0 0\nvt 1 0\nvt 0 1\nvt 1 1\n";
    const std::string placed = "-4/-4 -3/-3 -2/-2/-1 -1/-1/";
    const Image image = picture("mtllib m.mtl\nusemtl red paint\n" + plate(0) + "usemtl glass\n" +
                                    plate(1) + places + "usemtl picture\n" + plate(2, placed),
                                front);
    expectNear(plateAt(image, 1 / 6.0, 0.5), {255, 0, 0, 255}, 1, "red");
    EXPECT_NEAR(plateAt(image, 0.5, 0.5)[3], 102, 1);
    for (int i = 0; i < 4; ++i) {
        const double x = (2.3 + 0.5 * (i % 2)) / 3, y = 0.25 + 0.5 * (i / 2);
        expectNear(plateAt(image, x, y), kFields[i], 2, "field " + std::to_string(i));
    }
    // Between control points they are not bilinear: the middle of the net lies low and to the left.
    std::string net = vertices({{0, 0, 0, 1},
                                {1, 0, 0, 1},
                                {2, 0, 0, 1},
                                {0, 1, 0, 1},
                                {1, 1, 0, 1},
                                {2, 1, 0, 1},
                                {0, 2, 0, 1},
                                {1, 2, 0, 1},
                                {2, 2, 0, 1}},
                               false);
    for (const char* v : {" 0", " 0", " 1"}) {
        for (const char* u : {"vt 0", "vt 0", "vt 1"}) net += std::string(u) + v + '\n';
    }
    net += "cstype bezier\ndeg 2 2\nsurf 0 1 0 1";
    for (int i = 9; i > 0; --i) net += " -" + std::to_string(i) + "/-" + std::to_string(i);
    const Image squared =
        picture("mtllib m.mtl\nusemtl picture\n" + net + "\nparm u 0 1\nparm v 0 1\nend\n", front);
    // Half the picture is reached at the square root of a half.
    for (const auto& [x, field] : {std::pair{0.6, 2}, {0.8, 3}}) {
        expectNear(plateAt(squared, x, 0.4), kFields[field], 2, "squared");
        expectNear(plateAt(squared, x, 0.2), kFields[field - 2], 2, "squared");
    }
    // Without places on it a texture can't show, as with polygons.
    picture("mtllib m.mtl\nusemtl picture\n" + plate(0), front,
            "zebview: model.obj: 1 texture is not shown\n");
    picture("mtllib m.mtl\nusemtl picture\n" + places + plate(0, "-4/-4 -3 -2 -1"), front,
            at(13) +
                "its textures are not shown: some of its control points have no texture vertex\n"
                "zebview: model.obj: 1 texture is not shown\n");
    // A material that is not there is none.
    picture("usemtl none\n" + plate(0), front);
}

TEST_F(FreeForms, PolygonsOfTheSameFileAreThereToo)
{
    const Words front{"--view", "0,0", "--fov", "1", "--verbose"};
    const std::string square = "v 2 0 0 5\nv 3 0 0 5\nv 3 1 0 5\nv 2 1 0 5\nf -4 -3 -2 -1\n";
    const std::string said =
        "zebview: model.obj: 1 mesh, 4 vertices, 1 face, 1 surface, 0 cameras, 0 lights\n";
    for (const std::string& text : {plate(0) + square, square + plate(0)}) {
        const Image image = picture(text, front, said);
        EXPECT_EQ(plateAt(image, 1 / 6.0, 0.5)[3], 255);
        EXPECT_EQ(plateAt(image, 0.5, 0.5)[3], 0);
        // Their corners do not move by weights.
        EXPECT_EQ(plateAt(image, 5 / 6.0, 0.5)[3], 255);
        EXPECT_NEAR(double(image.right - image.left) / (image.bottom - image.top), 3, 0.05);
    }
    picture(plate(0) + plate(2), front,
            "zebview: model.obj: 0 meshes, 0 vertices, 0 faces, 2 surfaces, 0 cameras, 0 lights\n");
}

TEST_F(FreeForms, ShadowsFallFromThemAndOnThem)
{
    const Image without = picture(sphereObj());
    const Image with = picture(sphereObj(), {"--shadows", "--ground", "--fit", "sphere"});
    EXPECT_GT(with.coverage(), without.coverage());
    // The side that is turned away from the lamps is no darker than without: only edges differ.
    const Image alone = picture(sphereObj(), {"--shadows"});
    EXPECT_EQ(alone.coverage(), without.coverage());
    // Of a sphere on a plate behind it.
    const std::string both =
        sphereObj() +
        vertices({{-3, -3, -2, 1}, {3, -3, -2, 1}, {-3, 3, -2, 1}, {3, 3, -2, 1}}, false) +
        "cstype bezier\ndeg 1 1\nsurf 0 1 0 1 -4 -3 -2 -1\nparm u 0 1\nparm v 0 1\nend\n";
    const auto darkest = [&](const Words& options) {
        const Image image = picture(both, options);
        int least = 255;
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                const bool onPlate = x < image.left + 30 || x > image.right - 30;
                if (onPlate && image.alpha(x, y) == 255)
                    least = std::min(least, image.brightness(x, y));
            }
        }
        return least;
    };
    EXPECT_LT(darkest({"--shadows", "--view", "0,0"}), darkest({"--view", "0,0"}) - 40);
}

TEST_F(FreeForms, TheyTurnWithTheModel)
{
    const std::string text = plate(0) + plate(1);
    const auto shape = [&](const Words& options) {
        const Image image = picture(text, options);
        return double(image.right - image.left) / (image.bottom - image.top);
    };
    EXPECT_NEAR(shape({"--view", "0,0", "--fov", "1"}), 2, 0.05);
    EXPECT_NEAR(shape({"--view", "0,0", "--fov", "1", "--up", "x"}), 0.5, 0.05);
    EXPECT_NEAR(shape({"--view", "60,0", "--fov", "1"}), 1, 0.05);
}

TEST_F(FreeForms, TrimmedSurfacesAreShownWholeAndSaidToBe)
{
    const auto trimmed = [](std::string text) {
        return text.insert(text.find("end\n"), "trim 0 1 1\nhole 0 1 1\nscrv 0 1 1\nsp 1\n");
    };
    const Image plain = picture(bezierObj());
    EXPECT_EQ(picture(trimmed(bezierObj()), {}, at(19) + "trimming curves are not followed\n"),
              plain);
    picture(trimmed(plate(0)) + trimmed(plate(1)), {},
            at(7) + "trimming curves are not followed, nor those of another surface\n");
    picture(trimmed(plate(0)) + trimmed(plate(1)) + trimmed(plate(2)), {},
            at(7) + "trimming curves are not followed, nor those of 2 other surfaces\n");
    EXPECT_EQ(picture(bezierObj() + "curv 0 1 1 2 3 4\nparm u 0 1\nend\ncurv 0 1 1 2\nend\n", {},
                      at(23) + "curves are not shown\n"),
              plain);
}

// What is wrong is left out, and what stands before and after it is shown.
TEST_F(FreeForms, SurfacesThatAreNotWellFormedAreLeftOut)
{
    const std::string both = "parm u 0 1\nparm v 0 1\nend\n";
    const std::string knots = "parm u 0 0 1 1\nparm v 0 0 1 1\nend\n";
    const std::string numbers = "surf 0 1 0 1 1 2 3 4\n";
    const struct {
        std::string text, why;
        int line = 1;  // of its own
    } cases[] = {
        {"surf 0 1 0 1 1 2 3 5\n" + both, "there is no vertex 5"},
        {"surf 0 1 0 1 1 2 3 -5\n" + both, "there is no vertex -5"},
        {"surf 0 1 0 1 1 2 3 0\n" + both, "there is no vertex 0"},
        {"surf 0 1 0 1 1/1 2 3 4\n" + both, "there is no texture vertex 1"},
        {"surf 0 1 0 1 1 2 3 x\n" + both, "x is not a number"},
        {"surf 0 1 0 1 1 2 3 " + std::string(10000, 'x') + '\n' + both,
         std::string(40, 'x') + "... is not a number"},
        {"surf 0 1 0 1 1 2 3 4x\n" + both, "4x is not a number"},
        {"surf 0 1 0 nan 1 2 3 4\n" + both, "nan is not a number"},
        {"surf 0 1 0 1e999 1 2 3 4\n" + both, "1e999 is not a number"},
        {"surf 0 1 0 1\n" + both, "it has no control points"},
        {"surf 0 1 0 1 1 2 3\n" + both,
         "it has 3 control points, and its parameters are those of 2 x 2"},
        {"surf 0 1 0 1 1 2 3 4 1\n" + both,
         "it has 5 control points, and its parameters are those of 2 x 2"},
        {numbers + "parm u 0 1\nend\n", "it has 0 parameters in v, and takes 2 at least"},
        {numbers + "parm u 0 inf\nparm v x\nparm v 0 1\nend\n", "inf is not a number", 2},
        {numbers + "parm w 0 1\nend\n", "parm is for u or for v", 2},
        {numbers + "parm u 0 0\nparm v 0 1\nend\n", "its parameters do not increase in u"},
        {numbers + "parm u 0 1\nparm v 1 0\nend\n", "its parameters do not increase in v"},
        {numbers + "parm u 0 1\nparm v 0 1\n", "it has no end"},
        {"surf 1 0 0 1 1 2 3 4\n" + both, "its limits do not increase in u"},
        {"surf 0 1 0 0 1 2 3 4\n" + both, "its limits do not increase in v"},
        {"deg 0 1\n" + numbers + both, "its degrees are not from 1 to 19", 2},
        {"deg 1\n" + numbers + both, "its degrees are not from 1 to 19", 2},
        {"deg 1 20\n" + numbers + both, "its degrees are not from 1 to 19", 2},
        {"deg 1 99999999999999999999\n" + numbers + both, "its degrees are not from 1 to 19", 2},
        {"cstype\n" + numbers + both, "it has no type", 2},
        {"cstype rat nurbs\n" + numbers + both, "its type nurbs is not known", 2},
        {"cstype cardinal\n" + numbers + both, "a cardinal surface is of degree 3", 2},
        {"cstype bmatrix\nbmat u 1 2 3\n" + numbers + both,
         "its basis in u has 3 numbers instead of 4", 3},
        {"cstype bmatrix\nbmat u 1 2 3 x\n" + numbers + both,
         "its basis in u holds what is no number", 3},
        {"cstype bmatrix\nbmat u 1 -1 0 1\n" + numbers + both,
         "its steps are not from 1 to its degree and 1", 3},
        {"cstype bmatrix\nbmat u 1 -1 0 1\nstep 3 1\n" + numbers + both,
         "its steps are not from 1 to its degree and 1", 4},
        {"cstype taylor\nsurf 0 1 0 1 1 2 3 4 1 2 3\nparm u 0 0.5 1\nparm v 0 1\nend\n",
         "it has 7 control points, and its parameters are those of 4 x 2", 2},
        {"cstype bspline\n" + numbers + "parm u 0 0 1\nparm v 0 0 1 1\nend\n",
         "it has 3 parameters in u, and takes 4 at least", 2},
        {"cstype bspline\n" + numbers + "parm u 0 1 0 1\nparm v 0 0 1 1\nend\n",
         "its knots decrease in u", 2},
        {"cstype bspline\n" + numbers + "parm u 0 0 1 1\nparm v 1 1 1 1\nend\n",
         "its knots are all the same in v", 2},
        {"cstype bspline\n" + numbers + "parm u -1e200 0 1 1\nparm v 0 0 1 1\nend\n",
         "its knots are too far apart in u", 2},
        {"cstype bspline\nsurf 2 3 0 1 1 2 3 4\n" + knots,
         "there is nothing of it between its limits in u", 2},
        {"v nan 0 0\nsurf 0 1 0 1 1 2 3 5\n" + both, "vertex 5 is not a finite point", 2},
        {"v 1 2\nsurf 0 1 0 1 1 2 3 5\n" + both, "vertex 5 is not a finite point", 2},
        {"v 1e200 0 0\nsurf 0 1 0 1 1 2 3 5\n" + both, "vertex 5 is not a finite point", 2},
        {"v 0 0 0 0\ncstype rat bezier\nsurf 0 1 0 1 1 2 3 5\n" + both,
         "the weight of vertex 5 is not from 1e-30 to 1e30", 3},
        {"v 0 0 0 -1\ncstype rat bezier\nsurf 0 1 0 1 1 2 3 5\n" + both,
         "the weight of vertex 5 is not from 1e-30 to 1e30", 3},
    };
    const Words front{"--view", "0,0", "--fov", "1"};
    for (const auto& [text, why, own] : cases) {
        const int line = 10 + own;
        const Image image = picture(plate(0) + text + plate(2), front, leftOut(line, why));
        EXPECT_EQ(plateAt(image, 1 / 6.0, 0.5)[3], 255) << why;
        EXPECT_EQ(plateAt(image, 5 / 6.0, 0.5)[3], 255) << why;
        EXPECT_NEAR(double(image.right - image.left) / (image.bottom - image.top), 3, 0.05) << why;
    }
}

TEST_F(FreeForms, PiecesThatDoNotMeetAreLeftOut)
{
    const std::string parameters = "parm u 0 1 2\nparm v 0 1\nend\n";
    const std::string text = vertices({{0, 0, 0, 1},
                                       {1, 0, 0, 1},
                                       {5, 0, 0, 1},
                                       {1, 0, 0, 1},
                                       {0, 1, 0, 1},
                                       {0, 0, 0, 1},
                                       {0, 1, 0, 1},
                                       {0, 0, 0, 1}},
                                      false) +
                             "cstype taylor\ndeg 1 1\n" + surf(8, "0 2 0 1") + parameters;
    picture(plate(0) + text, {}, leftOut(21, "its pieces do not meet, which is not supported"));
}

TEST_F(FreeForms, LimitsBeyondTheParametersAreThoseOfTheParameters)
{
    const std::string text = patchObj(kCubic, kOneSpan, kOneSpan);
    std::string wider = text;
    wider.replace(wider.find("0 1 0 1"), 7, "0 1 -1 2");
    EXPECT_EQ(picture(wider, {}, at(19) + "its limits lie outside of its parameters in v\n"),
              picture(text));
}

TEST_F(FreeForms, FilesWithoutAnyThatIsWellFormedAreRefused)
{
    const auto refused = [&](const std::string& text) {
        const Outcome outcome = run({write("model.obj", text), "-o", "picture.png"});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(files(), Words{"model.obj"});
        return outcome.err;
    };
    const std::string none = "zebview: model.obj: it has nothing to show\n";
    EXPECT_EQ(refused("surf\n"), leftOut(1, "it has no control points") + none);
    EXPECT_EQ(refused("v 0 0 0\nv 1 0 0\nv 0 1 0\nsurf 0 1 0 1 1 2 3\n"),
              leftOut(4, "it has no end") + none);
    EXPECT_EQ(refused("curv 0 1 1 2\nend\n"), at(1) + "curves are not shown\n" + none);
    EXPECT_EQ(refused("parm u 0 1\nsurf\n"),
              leftOut(1, "parm belongs to none") + leftOut(2, "it has no control points") + none);
    std::string many;
    for (int i = 0; i < 25; ++i) many += "surf\nend\n";
    const std::string said = refused(many);
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 22);
    EXPECT_NE(said.find("zebview: model.obj: 5 more surfaces are not shown\n"), std::string::npos);
    // All of it in one place.
    EXPECT_EQ(refused("v 1 1 1\ncstype bezier\ndeg 1 1\nsurf 0 1 0 1 1 1 1 1\n"
                      "parm u 0 1\nparm v 0 1\nend\n"),
              none);
}

TEST_F(FreeForms, AnythingAtAllComesToAnEnd)
{
    std::mt19937 random(5);
    const std::string start = sphereObj();
    for (int turn = 0; turn < 60; ++turn) {
        std::string text = start;
        for (int change = 0; change < 1 + turn % 12; ++change) {
            text[random() % text.size()] = static_cast<char>(random());
        }
        if (turn % 10 == 0) {
            for (char& c : text) c = static_cast<char>(random());
            text += "\nsurf\n";
        }
        const Outcome outcome = run(
            {write("model.obj", text), "-o", "picture.png", "--size", "20x20", "--samples", "1"});
        EXPECT_TRUE(outcome.status == 0 || outcome.status == 1) << turn << ": " << outcome.status;
        EXPECT_TRUE(outcome.status == 0 || outcome.errorLines() > 0) << turn;
        EXPECT_LE(outcome.errorLines(), 24) << turn;
    }
}

// A net of a million control points, and one whose parameters promise more than there are.
TEST_F(FreeForms, LargeOnesAreShownAndLargerOnesRefused)
{
    constexpr int side = 300;
    std::string text = "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\n";
    std::string corners, parameters;
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            text += "v " + std::to_string(column) + ' ' + std::to_string(row) + ' ' +
                    std::to_string((column * 7 + row * 3) % 5) + '\n';
        }
    }
    for (int i = 0; i < side * side; ++i) corners += ' ' + std::to_string(i + 5);
    for (int i = 0; i < side; ++i) parameters += ' ' + std::to_string(i);
    const std::string mesh = "cstype bezier\ndeg 1 1\nsurf 0 299 0 299" + corners + "\nparm u" +
                             parameters + "\nparm v" + parameters + "\nend\n";
    EXPECT_GT(picture(text + mesh).coverage(), 0.3);
    // 300 x 300 pieces of degree 19 would take 32 million points.
    std::string basis;
    for (int i = 0; i < 400; ++i) basis += " 0";
    const std::string steps = "cstype bmatrix\ndeg 19 19\nstep 1 1\nbmat u" + basis + "\nbmat v" +
                              basis + "\nsurf 0 280 0 280" + corners;
    std::string fewer;
    for (int i = 0; i <= side - 19; ++i) fewer += ' ' + std::to_string(i);
    picture(plate(0) + text + steps + "\nparm u" + fewer + "\nparm v" + fewer + "\nend\n", {},
            leftOut(90020, "it has too many control points"));
}

}  // namespace
