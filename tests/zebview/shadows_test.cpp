// Shadows of distant lamps, and the floor that they fall on.

#include "shapes.h"
#include "textured.h"

namespace
{

using zebtest::cubeObj;
using zebtest::difference;
using zebtest::GltfPlate;
using zebtest::Image;
using zebtest::kPicture;
using zebtest::Pixel;
using zebtest::pngOf;
using zebtest::texturedPlate;

class Shadows : public zebtest::Textured
{
protected:
    Image picture(const std::string& model, std::vector<std::string> options,
                  const std::vector<std::string>& more = {}) const
    {
        options.insert(options.end(), more.begin(), more.end());
        return Image(render(model, options));
    }
};

// A wall, and before it a small plate that stands free.
std::string wallObj(double scale)
{
    std::ostringstream text;
    const auto add = [&](double half, double z) {
        for (const auto& [x, y] : {std::pair{-1, -1}, {1, -1}, {1, 1}, {-1, 1}}) {
            text << "v " << scale * half * x << ' ' << scale * half * y << ' ' << scale * z << '\n';
        }
        text << "f -4 -3 -2 -1\n";
    };
    add(1, 0);
    add(0.2, 0.4);
    return text.str();
}

// The lamp is at (-0.8, 1, 1): a shadow falls as far to the right and down as the plate is before
// the wall.
TEST_F(Shadows, FallWhereTheLampIsHidden)
{
    for (const double scale : {1.0, 1e-4, 1e5}) {
        const std::string model = write("wall.obj", wallObj(scale));
        const std::vector<std::string> front{"--view", "0,0", "--fov", "1", "--size", "200x200"};
        const Image open = picture(model, front), shaded = picture(model, front, {"--shadows"});
        const auto share = [&](double x, double y) {
            const int column = static_cast<int>(100 + 94 * x), row = static_cast<int>(100 - 94 * y);
            return double(shaded.brightness(column, row)) / open.brightness(column, row);
        };
        EXPECT_LT(share(0.32, -0.4), 0.6) << scale;
        EXPECT_LT(share(0.44, -0.5), 0.6) << scale;
        EXPECT_NEAR(share(0, 0), 1, 0.01) << scale;
        EXPECT_NEAR(share(-0.4, 0.4), 1, 0.01) << scale;
        EXPECT_NEAR(share(0.7, -0.4), 1, 0.01) << scale;
        EXPECT_NEAR(share(0.32, -0.75), 1, 0.01) << scale;
    }
}

// Nothing is in the way of what faces the lamp.
TEST_F(Shadows, LeaveWhatFacesTheLamp)
{
    const std::string cube = write("cube.obj", cubeObj());
    for (const char* view : {"0,0", "-30,20", "0,45"}) {
        const std::vector<std::string> options{"--view", view, "--light", "model"};
        EXPECT_LE(difference(picture(cube, options), picture(cube, options, {"--shadows"})), 2)
            << view;
    }
}

// Places beside the model that are brighter than the shadow farther out: light that gets in under
// its foot.
int leaks(const Image& model, const Image& shaded)
{
    int count = 0;
    for (int y = 0; y < model.height; ++y) {
        for (int x = 8; x < model.width - 8; ++x) {
            if (model.covered(x, y)) continue;
            for (const int side : {-1, 1}) {
                if (model.alpha(x - side, y) < 255) continue;
                count += 2 * shaded.alpha(x, y) < shaded.alpha(x + 3 * side, y);
            }
        }
    }
    return count;
}

TEST_F(Shadows, TouchTheFootOfTheModel)
{
    const std::string cube = write("cube.obj", cubeObj());
    for (const char* view : {"-30,20", "20,30", "60,15"}) {
        const std::vector<std::string> options{"--view", view, "--shadows"};
        const Image without = picture(cube, options), with = picture(cube, options, {"--ground"});
        EXPECT_GT(with.coverage(), without.coverage() + 0.01) << view;
        EXPECT_EQ(leaks(without, with), 0) << view;
        for (int y = 0; y < with.height; ++y) {
            for (int x = 0; x < with.width; ++x) {
                if (without.alpha(x, y) == 255) {
                    ASSERT_NEAR(with.brightness(x, y), without.brightness(x, y), 2)
                        << view << ' ' << x << ' ' << y;
                    ASSERT_EQ(with.alpha(x, y), 255) << view << ' ' << x << ' ' << y;
                } else if (!without.covered(x, y)) {
                    ASSERT_EQ(with.brightness(x, y), 0) << view << ' ' << x << ' ' << y;
                }
            }
        }
    }
}

TEST_F(Shadows, AreNotSeenFromBelow)
{
    const std::string cube = write("cube.obj", cubeObj());
    const std::vector<std::string> options{"--view", "20,-30", "--shadows"};
    EXPECT_EQ(difference(picture(cube, options), picture(cube, options, {"--ground"})), 0);
}

TEST_F(Shadows, AreAskedForByTheGround)
{
    write("cube.obj", cubeObj());
    const auto outcome = run({"cube.obj", "-o", "a.png", "--ground"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errorLines(), 1) << outcome.err;
}

// A shadow on the floor, seen from behind a plate that shows its front alone.
class PlateShadow : public Shadows
{
protected:
    // alpha  of the texture, from the left to the right
    double dark(const std::function<int(int)>& alpha, const std::string& mode) const
    {
        write("a.png", pngOf(16, 16, [&](int x, int) { return Pixel{255, 255, 255, alpha(x)}; }));
        return darkUnder(texturedPlate(kPicture, mode).text());
    }
    double darkUnder(const std::string& text, const std::string& light = "model") const
    {
        const std::vector<std::string> options{"--view", "180,60", "--light", light, "--shadows"};
        const std::string model = write("plate.gltf", text);
        EXPECT_EQ(picture(model, options).coverage(), 0);
        return picture(model, options, {"--ground"}).coverage();
    }
};

TEST_F(PlateShadow, HasTheHolesThatAreCutOut)
{
    const std::string mask = R"(,"alphaMode":"MASK")";
    const auto evenly = [](int alpha) { return [alpha](int) { return alpha; }; };
    const auto half = [](int x) { return x < 8 ? 0 : 255; };
    const double whole = dark(evenly(255), "");
    EXPECT_GT(whole, 0.05);
    EXPECT_NEAR(dark(evenly(255), mask) / whole, 1, 0.02);
    EXPECT_EQ(dark(evenly(100), mask), 0);
    EXPECT_NEAR(dark(half, mask) / whole, 0.5, 0.05);
    EXPECT_NEAR(dark(half, "") / whole, 1, 0.02);
}

TEST_F(PlateShadow, IsWholeOrNoneWhereTexturesBlend)
{
    const std::string blend = R"(,"alphaMode":"BLEND")";
    const auto evenly = [](int alpha) { return [alpha](int) { return alpha; }; };
    const double whole = dark(evenly(255), "");
    EXPECT_NEAR(dark(evenly(200), blend) / whole, 1, 0.02);
    EXPECT_EQ(dark(evenly(60), blend), 0);
    EXPECT_NEAR(dark([](int x) { return x < 8 ? 60 : 200; }, blend) / whole, 0.5, 0.05);
}

TEST_F(PlateShadow, IsNotThrownByGlass)
{
    const auto darkUnderGlass = [&](const char* amount) {
        const std::string glass =
            std::string(R"(,"extensions":{"KHR_materials_transmission":{"transmissionFactor":)") +
            amount + "}}";
        return darkUnder(texturedPlate("\"roughnessFactor\":1", glass).text());
    };
    EXPECT_GT(darkUnderGlass("0.4"), 0.05);
    EXPECT_EQ(darkUnderGlass("0.6"), 0);
}

// A distant lamp straight before the plate, half above it, throws its shadow behind it; a lamp at a
// place throws none.
TEST_F(PlateShadow, IsThatOfTheFilesDistantLamps)
{
    const auto darkBy = [&](const char* kind, const char* light) {
        GltfPlate plate{"{}"};
        plate.nodes = R"(,{"translation":[0,4,4],"rotation":[-0.3826834,0,0,0.9238795],)"
                      R"("extensions":{"KHR_lights_punctual":{"light":0}}})";
        plate.nodeList = ",1";
        plate.extra = R"(,"extensionsUsed":["KHR_lights_punctual"],"extensions":{)"
                      R"("KHR_lights_punctual":{"lights":[{"type":")" +
                      std::string(kind) + R"("}]}})";
        return darkUnder(plate.text(), light);
    };
    EXPECT_GT(darkBy("directional", "file"), 0.05);
    EXPECT_EQ(darkBy("point", "file"), 0);
    EXPECT_NE(darkBy("directional", "file"), darkBy("directional", "model"));
}

// What turns is lit from elsewhere in each frame, by the camera's lamp.
TEST_F(Shadows, AreThoseOfEachFrame)
{
    const std::string model = write("wall.obj", wallObj(1));
    const std::vector<std::string> options{"--shadows", "--ground", "--fit", "sphere"};
    const Image sheet = picture(
        model, options, {"--view", "-40,20", "--frames", "2", "--turn", "120", "--sheet", "2x1"});
    for (int frame = 0; frame < 2; ++frame) {
        const Image alone = picture(model, options, {"--view", frame == 0 ? "-40,20" : "20,20"});
        for (int y = 0; y < alone.height; ++y) {
            for (int x = 0; x < alone.width; ++x) {
                ASSERT_EQ(sheet.at(x + frame * alone.width, y), alone.at(x, y)) << x << ' ' << y;
            }
        }
    }
}

TEST_F(Shadows, DoNotDependOnThreads)
{
    const std::string model = write("wall.obj", wallObj(1));
    const std::vector<std::string> options{"--shadows", "--ground", "--view", "30,30"};
    EXPECT_EQ(difference(picture(model, options, {"--threads", "1"}),
                         picture(model, options, {"--threads", "4"})),
              0);
}

// How many columns of a row the edge of a shadow takes.
int edgeWidth(const Image& open, const Image& shaded, int row)
{
    int count = 0;
    for (int x = 0; x < open.width; ++x) {
        const double share =
            double(shaded.brightness(x, row)) / std::max(open.brightness(x, row), 1);
        count += share > 0.55 && share < 0.95;
    }
    return count;
}

TEST_F(Shadows, AreSofterFartherFromWhatThrowsThem)
{
    int widths[2];
    for (const bool isFar : {false, true}) {
        std::string text = wallObj(1);
        // The plate's corners are the last four.
        const double z = isFar ? 0.7 : 0.1;
        std::string::size_type at = 0;
        while ((at = text.find(" 0.4\n", at)) != std::string::npos) {
            text.replace(at, 4, ' ' + std::to_string(z));
        }
        const std::string model = write("wall.obj", text);
        const std::vector<std::string> front{"--view", "0,0",     "--fov",   "1",
                                             "--size", "400x400", "--light", "model"};
        const Image open = picture(model, front), shaded = picture(model, front, {"--shadows"});
        // Through the middle of the shadow.
        widths[isFar] = edgeWidth(open, shaded, static_cast<int>(200 + 188 * z));
    }
    EXPECT_GT(widths[0], 0);
    EXPECT_GT(widths[1], 2.5 * widths[0]);
}

// Straight down from its edge, the floor lies right at the lowest point of what stands on it.
TEST_F(Shadows, FallOnAFloorAtTheLowestPoint)
{
    // A plate that lies in the air, and a thin leg, out of the way, that reaches down from it.
    const auto model = [&](double foot) {
        std::ostringstream text;
        text << "v -1 0 -1\nv -1 0 1\nv 1 0 1\nv 1 0 -1\nf 1 2 3 4\n"
             << "v -1 0 -1\nv -0.99 0 -1\nv -1 " << foot << " -1\nf 5 6 7\n";
        return write("table.obj", text.str());
    };
    for (const double foot : {-0.2, -1.4}) {
        const std::vector<std::string> options{"--view",  "0,90",   "--fov",    "1",
                                               "--light", "model",  "--size",   "300x120",
                                               "--fit",   "sphere", "--shadows"};
        const Image plate = picture(model(foot), options);
        const Image shaded = picture(model(foot), options, {"--ground"});
        // The lamp is at (-0.8, 1, 1): where the shadow's edge is half as dark as it is inside.
        const double unit = (plate.right - plate.left + 1) / 2.0;
        const int row = static_cast<int>(60 + 0.8 * unit * foot);
        const int most = shaded.alpha(plate.right + 2, row);
        int edge = plate.right + 2;
        while (edge + 1 < shaded.width && 2 * shaded.alpha(edge, row) > most) ++edge;
        EXPECT_GT(most, 60) << foot;
        EXPECT_NEAR(edge - plate.right, -0.8 * foot * unit, 3) << foot;
    }
}

}  // namespace
