// Lights that go with the camera or the model, and the cameras and lights of files.

#include <cmath>

#include "exr.h"
#include "gltf.h"
#include "image.h"
#include "process.h"
#include "shapes.h"

namespace
{

using zebtest::cubeObj;
using zebtest::ExrImage;
using zebtest::GltfPlate;
using zebtest::Image;
using zebtest::kMirrored;
using zebtest::kUpright;
using zebtest::Outcome;

using Words = std::vector<std::string>;

const char* const kSphere = "/usr/share/assimp/models/STL/sphereWithHole.stl";

class Lights : public zebtest::Zebview
{
protected:
    Image ball(const Words& options) const { return Image(render(kSphere, options)); }
};

TEST_F(Lights, OfTheModelTurnWithIt)
{
    const auto seen = [&](const char* light, const char* view) {
        return ball({"--light", light, "--view", view, "--fit", "sphere"});
    };
    EXPECT_TRUE(seen("model", "0,0") == seen("camera", "0,0"));
    // From behind, the key light comes from the upper right, and from the far side.
    const Image behind = seen("model", "180,0"), usual = seen("camera", "180,0");
    const int x = behind.width / 2, y = behind.height / 2,
              d = (behind.bottom - behind.top) * 3 / 10;
    EXPECT_LT(behind.brightness(x - d, y + d), usual.brightness(x - d, y + d) / 2);
    EXPECT_GT(behind.brightness(x + d, y - d), behind.brightness(x - d, y - d) + 20);
}

TEST_F(Lights, OfTheCameraAreTheDefault)
{
    EXPECT_TRUE(ball({"--light", "camera"}) == ball({}));
    EXPECT_FALSE(ball({"--light", "model"}) == ball({}));
}

// A plate of white glTF, with lights at nodes from 1 on, or with cameras, which see both its sides.
class Stage : public zebtest::Zebview
{
protected:
    struct Part {
        std::string node, object;  // "camera":0 and the like stand in the node
    };

    std::string withLights(const std::vector<Part>& lights) const
    {
        GltfPlate plate{"{}"};
        std::string list;
        for (std::size_t i = 0; i < lights.size(); ++i) {
            const std::string number = std::to_string(i);
            plate.nodes.append(",{").append(lights[i].node);
            plate.nodes.append(R"(,"extensions":{"KHR_lights_punctual":{"light":)");
            plate.nodes.append(number).append("}}}");
            plate.nodeList.append(",").append(std::to_string(i + 1));
            list.append(i ? "," : "").append(lights[i].object);
        }
        plate.extra = R"(,"extensionsUsed":["KHR_lights_punctual"],"extensions":{)"
                      R"("KHR_lights_punctual":{"lights":[)" +
                      list + "]}}";
        return write("plate.gltf", plate.text());
    }
    std::string withCameras(const std::vector<Part>& cameras) const
    {
        GltfPlate plate{R"({"doubleSided":true})"};
        std::string list;
        for (std::size_t i = 0; i < cameras.size(); ++i) {
            plate.nodes.append(",{\"camera\":").append(std::to_string(i));
            plate.nodes.append(",").append(cameras[i].node).append("}");
            plate.nodeList.append(",").append(std::to_string(i + 1));
            list.append(i ? "," : "").append(cameras[i].object);
        }
        plate.extra = ",\"cameras\":[" + list + "]";
        return write("plate.gltf", plate.text());
    }
    // The light that a white plate throws back in its middle, and in the middle of its right edge.
    std::pair<double, double> lit(const std::vector<Part>& lights) const
    {
        const ExrImage image(render(withLights(lights),
                                    {"--light", "file", "--surface", "diffuse", "--view", "0,0",
                                     "--fov", "1", "--size", "200x200"},
                                    "light.exr"));
        // The margin is 6 of 100 pixels.
        return {image.at("R", 100, 100), image.at("R", 192, 100)};
    }
};

const char* const kSun = R"({"type":"directional","intensity":3})";
const char* const kBulb = R"({"type":"point","intensity":12})";
const char* const kInFront = R"("translation":[0,0,2])";

TEST_F(Stage, LightsAreThoseOfTheFile)
{
    const auto [middle, edge] = lit({{kInFront, kSun}});
    EXPECT_NEAR(middle, 1, 0.002);
    EXPECT_NEAR(edge, 1, 0.002);
}

// Turned by 60 degrees about y: the node's -z, where it shines, comes from the right.
TEST_F(Stage, LightsComeFromWhereTheirNodesPoint)
{
    const auto [middle, edge] = lit({{R"("rotation":[0,0.5,0,0.8660254])", kSun}});
    EXPECT_NEAR(middle, 0.5, 0.002);
    EXPECT_NEAR(edge, 0.5, 0.002);
}

// At x = 92 / 94 of the plate, 2 below the lamp: as the cube of the cosine.
TEST_F(Stage, LampsFallOffWithTheSquareOfTheDistance)
{
    const auto [middle, edge] = lit({{kInFront, kBulb}});
    const double x = 92.5 / 94;
    EXPECT_NEAR(middle, 1, 0.002);
    EXPECT_NEAR(edge, std::pow(4 / (4 + x * x), 1.5), 0.004);
}

// 12 at a distance of 2 is as bright as the 3 of the sun: half and half.
TEST_F(Stage, LightsKeepTheirBrightnessAmongEachOther)
{
    const auto [middle, edge] =
        lit({{R"("rotation":[0,0.5,0,0.8660254])", kSun}, {kInFront, kBulb}});
    const double x = 92.5 / 94;
    EXPECT_NEAR(middle, 0.25 + 0.5, 0.003);
    EXPECT_NEAR(edge, 0.25 + 0.5 * std::pow(4 / (4 + x * x), 1.5), 0.004);
}

// The plate's edge is 0.457 from the axis of a lamp that is 2 away.
TEST_F(Stage, SpotsLightACone)
{
    const auto spot = [](const char* outer) {
        return R"({"type":"spot","intensity":1,"spot":{"innerConeAngle":0.3,"outerConeAngle":)" +
               std::string(outer) + "}}";
    };
    EXPECT_NEAR(lit({{kInFront, spot("0.44")}}).first, 1, 0.002);
    EXPECT_EQ(lit({{kInFront, spot("0.44")}}).second, 0);
    EXPECT_GT(lit({{kInFront, spot("0.6")}}).second, 0.2);
}

// Half the height of what a camera sees of the plate, in pixels.
double halfHeight(const Image& image) { return (image.bottom - image.top + 1) / 2.0; }

const char* const kWide =
    R"({"type":"perspective","perspective":{"yfov":0.8,"aspectRatio":2,"znear":0.1}})";
const char* const kFar = R"("translation":[0,0,4])";

TEST_F(Stage, CamerasShowWhatTheySee)
{
    const std::string model = withCameras({{kFar, kWide}});
    const Image same(render(model, {"--camera", "0", "--size", "160x80", "--filter", "box"}));
    EXPECT_NEAR(halfHeight(same), 40 / (4 * std::tan(0.4)), 0.6);
    EXPECT_NEAR(same.left + same.right, 159, 1);
    // In a square picture what is twice as wide as high is seen to its left and right ends.
    const Image square(render(model, {"--camera", "0", "--size", "80x80", "--filter", "box"}));
    EXPECT_NEAR(halfHeight(square), 20 / (4 * std::tan(0.4)), 0.6);
}

TEST_F(Stage, CamerasCanDoWithoutPerspective)
{
    const std::string model = withCameras(
        {{kFar,
          R"({"type":"orthographic","orthographic":{"xmag":2,"ymag":2,"znear":0.1,"zfar":9}})"}});
    const Image image(render(model, {"--camera", "0", "--size", "80x80", "--filter", "box"}));
    EXPECT_NEAR(halfHeight(image), 20, 0.6);
    const Image background(
        render(model, {"--camera", "0", "--size", "80x80", "--background", "0,1,0"}));
    EXPECT_EQ(background.at(0, 0), (zebtest::Pixel{0, 255, 0, 255}));
    EXPECT_NE(background.at(40, 40), (zebtest::Pixel{0, 255, 0, 255}));
}

TEST_F(Stage, CamerasStandWhereTheirNodesAre)
{
    // Half a plate to the right: the plate's left edge is 1.5 from the axis, its right one 0.5.
    const Image aside(render(withCameras({{R"("translation":[0.5,0,4])", kWide}}),
                             {"--camera", "0", "--size", "160x80", "--filter", "box"}));
    const double pixels = 40 / (4 * std::tan(0.4));
    EXPECT_NEAR(aside.left, 80 - 1.5 * pixels, 1);
    EXPECT_NEAR(aside.right, 80 + 0.5 * pixels, 1);
    // From behind, turned by half a turn about y.
    const Image behind(
        render(withCameras({{R"("translation":[0.5,0,-4],"rotation":[0,1,0,0])", kWide}}),
               {"--camera", "0", "--size", "160x80", "--filter", "box"}));
    EXPECT_NEAR(behind.right, 80 + 1.5 * pixels, 1);
    EXPECT_NEAR(behind.left, 80 - 0.5 * pixels, 1);
}

TEST_F(Stage, CamerasGoAroundTheModelInFrames)
{
    const std::string model = withCameras({{R"("translation":[0.5,0,4])", kWide}});
    const Outcome outcome = run({model, "--camera", "0", "--size", "160x80", "--filter", "box",
                                 "--frames", "8", "-o", "f%d.png"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const double pixels = 40 / (4 * std::tan(0.4));
    const Image behind(path("f4.png"));
    EXPECT_NEAR(behind.left, 80 - 1.5 * pixels, 1) << "what was on its left still is";
    EXPECT_NEAR(behind.right, 80 + 0.5 * pixels, 1);
    // An eighth of a turn takes it to the right, where the plate's right edge is nearer.
    const Image turned(path("f1.png"));
    const auto height = [&](int x) {
        int count = 0;
        for (int y = 0; y < turned.height; ++y) count += turned.covered(x, y);
        return count;
    };
    EXPECT_GT(height(turned.right - 2), height(turned.left + 2) + 4);
}

TEST_F(Stage, CamerasInsideTheModelSeeWhatIsInFrontOfThem)
{
    const std::string model = withCameras({{R"("translation":[0,0,0.1])", kWide}});
    const Image image(render(model, {"--camera", "0", "--channels", "alpha"}));
    EXPECT_EQ(image.at(80, 60)[0], 255);
    EXPECT_EQ(image.at(0, 0)[0], 255);
    const std::string away = withCameras({{R"("translation":[0,0,-4])", kWide}});
    EXPECT_EQ(Image(render(away, {"--camera", "0", "--channels", "alpha"})).at(80, 60)[0], 0);
}

TEST_F(Stage, CamerasAreListedAndFoundByName)
{
    const std::string model = withCameras({{R"("name":"left","translation":[-1,0,4])", kWide},
                                           {R"("name":"right","translation":[1,0,4])", kWide}});
    const Outcome list = run({model, "--camera", "list"});
    EXPECT_EQ(list.status, 0);
    EXPECT_EQ(list.out, "0 left\n1 right\n");
    EXPECT_EQ(list.err, "");
    const Outcome both = run({model, model, "--camera", "list"});
    EXPECT_EQ(both.out, "plate.gltf:\n0 left\n1 right\nplate.gltf:\n0 left\n1 right\n");
    EXPECT_TRUE(Image(render(model, {"--camera", "right"}, "a.png")) ==
                Image(render(model, {"--camera", "1"}, "b.png")));
    EXPECT_FALSE(Image(path("a.png")) == Image(render(model, {"--camera", "0"}, "c.png")));
}

TEST_F(Stage, CamerasBringTheFilesLightsAlong)
{
    GltfPlate plate{"{}"};
    plate.nodes =
        R"(,{"camera":0,"translation":[0,0,4]},)"
        R"({"rotation":[0,0.5,0,0.8660254],"extensions":{"KHR_lights_punctual":{"light":0}}})";
    plate.nodeList = ",1,2";
    plate.extra = ",\"cameras\":[" + std::string(kWide) +
                  R"(],"extensionsUsed":["KHR_lights_punctual"],"extensions":{)"
                  R"("KHR_lights_punctual":{"lights":[)" +
                  kSun + "]}}";
    const std::string model = write("plate.gltf", plate.text());
    const auto seen = [&](const Words& options) {
        Words words{"--camera", "0", "--surface", "diffuse"};
        words.insert(words.end(), options.begin(), options.end());
        return ExrImage(render(model, words, "light.exr")).at("R", 80, 60);
    };
    EXPECT_NEAR(seen({}), 0.5, 0.002);
    EXPECT_NEAR(seen({"--light", "file"}), 0.5, 0.002);
    EXPECT_GT(seen({"--light", "camera"}), 0.55);
}

TEST_F(Stage, WhatIsNotThereIsSaid)
{
    const std::string cube = write("cube.obj", cubeObj());
    const std::string model = withCameras({{kFar, kWide}});
    const auto said = [&](Words words, int status) {
        words.insert(words.end(), {"-o", "a.png"});
        const Words before = files();
        const Outcome outcome = run(words);
        EXPECT_EQ(outcome.status, status) << outcome.err;
        EXPECT_EQ(outcome.errorLines(), 1);
        EXPECT_EQ(files(), before);
        return outcome.err;
    };
    EXPECT_EQ(said({cube, "--camera", "0"}, 1), "zebview: cube.obj: it has no cameras\n");
    EXPECT_EQ(said({cube, "--camera", "list"}, 1), "zebview: cube.obj: it has no cameras\n");
    EXPECT_EQ(said({cube, "--light", "file"}, 1), "zebview: cube.obj: it has no lights\n");
    for (const char* camera : {"1", "-1", "00", "0x"}) {
        const std::string text = said({model, "--camera", camera}, 1);
        EXPECT_EQ(text, "zebview: plate.gltf: it has no camera '" + std::string(camera) +
                            "': --camera list names those it has\n");
    }
    for (const auto& [option, value] :
         {std::pair{"--view", "0,0"}, {"--fov", "30"}, {"--fit", "tight"}}) {
        EXPECT_NE(said({model, "--camera", "0", option, value}, 2).find("excludes"),
                  std::string::npos);
    }
    said({model, "--light", "sun"}, 2);
    said({model, "--camera", ""}, 2);
}

}  // namespace
