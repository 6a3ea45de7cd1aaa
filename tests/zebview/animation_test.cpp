// Moved nodes, skins and morphed meshes are where the formulas say that they are.

#include <cmath>
#include <limits>

#include "gltf_animation.h"
#include "image.h"
#include "process.h"

namespace
{

using zebtest::Gltf;
using zebtest::Image;
using zebtest::Outcome;

using Words = std::vector<std::string>;
using Floats = std::vector<float>;

const float kNan = std::numeric_limits<float>::quiet_NaN();

class Animation : public zebtest::Zebview
{
protected:
    // Where the plate is in the picture, in the file's units, within a pixel's 0.02.
    struct Box {
        double left, right, bottom, top;
    };
    Box shown(const std::string& file, const Words& more = {}) const
    {
        Words options{"--camera", "eye", "--light", "camera", "--size", "200x200"};
        options.insert(options.end(), more.begin(), more.end());
        const Image image(render(file, options));
        const auto unit = [](int pixel) { return pixel / 50.0 - 2; };
        return {unit(image.left), unit(image.right + 1), -unit(image.bottom + 1), -unit(image.top)};
    }
    Box shown(const Gltf& file, const Words& more = {}) const
    {
        return shown(write("file.gltf", file.text()), more);
    }
    static void expectBox(const Box& box, double left, double right, double bottom, double top)
    {
        // The filter reaches a pixel farther.
        EXPECT_NEAR(box.left, left, 0.045);
        EXPECT_NEAR(box.right, right, 0.045);
        EXPECT_NEAR(box.bottom, bottom, 0.045);
        EXPECT_NEAR(box.top, top, 0.045);
    }
    void expectFailure(const Words& arguments, int status, const std::string& part) const
    {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, status) << testing::PrintToString(arguments);
        EXPECT_EQ(outcome.errorLines(), 1) << outcome.err;
        EXPECT_NE(outcome.err.find(part), std::string::npos) << outcome.err;
    }
};

TEST_F(Animation, PositionsLieBetweenTheirKeys)
{
    Gltf file;
    file.animate(0, "translation", {1, 3}, {0, 0, 0, 0.8f, -0.4f, 0}, "VEC3");
    expectBox(shown(file), -1, 1, -1, 1);
    expectBox(shown(file, {"--time", "1.5"}), -0.8, 1.2, -1.1, 0.9);
    expectBox(shown(file, {"--time", "2.5"}), -0.4, 1.6, -1.3, 0.7);
    // Beyond the keys the nearest counts.
    expectBox(shown(file, {"--time", "-7"}), -1, 1, -1, 1);
    expectBox(shown(file, {"--time", "7"}), -0.2, 1.8, -1.4, 0.6);
}

// By 120 degrees in all: a quarter is 30 of them, and not the 27.8 of a straight line.
TEST_F(Animation, RotationsGoAlongTheSphere)
{
    Gltf file;
    file.animate(0, "rotation", {0, 4}, {0, 0, 0, 1, 0, 0, std::sqrt(0.75f), 0.5f}, "VEC4");
    const Words finely{"--size", "800x800", "--camera", "eye", "--light", "camera"};
    Words options = finely;
    options.insert(options.end(), {"--time", "1"});
    const Image image(render(write("file.gltf", file.text()), options));
    EXPECT_NEAR(image.right + 1 - image.left, 400 * (std::sqrt(0.75) + 0.5), 2.1);
}

TEST_F(Animation, ScalesAndParentsCount)
{
    Gltf file;
    file.nodes = R"({"children":[1],"name":"parent"},{"mesh":0,"translation":[0.5,0,0]})";
    file.nodeCount = 2;
    file.animate(0, "scale", {0, 1}, {1, 1, 1, 0.5f, 1.5f, 1}, "VEC3");
    expectBox(shown(file, {"--time", "0"}), -0.5, 1.5, -1, 1);
    expectBox(shown(file, {"--time", "1"}), -0.25, 0.75, -1.5, 1.5);
}

// The right side hangs on the second joint by three quarters. What the mesh's node does is of no
// account.
class Skin : public Animation
{
protected:
    Skin()
    {
        file.nodes = R"({"mesh":0,"skin":0,"translation":[50,0,0]},)"
                     R"({"name":"a","translation":[0,0.5,0],"children":[2]},{"name":"b"})";
        file.nodeCount = 3;
        file.scene = "0,1";
        const int joints =
            file.add<std::uint8_t>({0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0}, 5121, "VEC4");
        const int shares = file.addFloats(
            {1, 0, 0, 0, 0.25f, 0.75f, 0, 0, 0.25f, 0.75f, 0, 0, 1, 0, 0, 0}, "VEC4");
        file.attributes = R"(,"JOINTS_0":)" + std::to_string(joints) + R"(,"WEIGHTS_0":)" +
                          std::to_string(shares);
        const int inverse = file.addFloats({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0.5f, 0, 1,
                                            1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0,    0, 1},
                                           "MAT4");
        file.more =
            R"(,"skins":[{"joints":[1,2],"inverseBindMatrices":)" + std::to_string(inverse) + "}]";
    }
    Gltf file;
};

// The first joint and its matrix move by 0.5 each.
TEST_F(Skin, GoesWithItsJointsInTheFilesPose)
{
    const Box box = shown(file);
    expectBox(box, -1, 1, -1 + 0.25 + 0.75 * 0.5, 2);
}

TEST_F(Skin, BendsAsTheyMove)
{
    file.animate(2, "translation", {0, 1}, {0, 0, 0, 0.8f, 0, 0}, "VEC3");
    const Box box = shown(file, {"--time", "0.5"});
    EXPECT_NEAR(box.left, -1, 0.045);
    EXPECT_NEAR(box.right, 1 + 0.75 * 0.4, 0.045);
}

// As light as a plate that its node has turned as far.
TEST_F(Skin, TurnsItsNormals)
{
    const Words options{"--camera", "eye", "--light", "camera", "--surface", "diffuse"};
    file.nodes = R"({"mesh":0,"skin":0},{"name":"a","translation":[0,-0.5,0],"children":[2],)"
                 R"("rotation":[0,0.6,0,0.8]},{"name":"b","translation":[0,0.5,0]})";
    const Image skin(render(write("skin.gltf", file.text()), options));
    Gltf turned;
    turned.nodes = R"({"mesh":0,"rotation":[0,0.6,0,0.8]})";
    const Image plate(render(write("turned.gltf", turned.text()), options));
    Gltf flat;
    const Image straight(render(write("flat.gltf", flat.text()), options));
    const auto middle = [](const Image& image) { return image.brightness(80, 60); };
    EXPECT_GT(std::abs(middle(plate) - middle(straight)), 20);
    EXPECT_NEAR(middle(skin), middle(plate), 1);
}

class Morph : public Animation
{
protected:
    Morph()
    {
        const int moves = file.add<float>({0, 0, 0, 0.8f, 0, 0, 0.8f, 0, 0, 0, 0, 0}, 5126, "VEC3",
                                          R"(,"min":[0,0,0],"max":[0.8,0,0])");
        const int lifts = file.add<float>({0, 0, 0, 0, 0, 0, 0, 0.6f, 0, 0, 0.6f, 0}, 5126, "VEC3",
                                          R"(,"min":[0,0,0],"max":[0,0.6,0])");
        file.targets = R"(,"targets":[{"POSITION":)" + std::to_string(moves) + R"(},{"POSITION":)" +
                       std::to_string(lifts) + "}]";
        file.weights = R"("weights":[0.5,0],)";
    }
    Gltf file;
};

TEST_F(Morph, HasTheWeightsOfTheMesh) { expectBox(shown(file), -1, 1.4, -1, 1); }

// Normals of (0.6, 0, 0.8), as the plate's own would be if they were those.
TEST_F(Morph, MovesItsNormals)
{
    const Words options{"--camera", "eye", "--light", "camera", "--surface", "diffuse"};
    const auto middle = [&](const Gltf& plate) {
        return Image(render(write("file.gltf", plate.text()), options)).brightness(80, 60);
    };
    Gltf plain, bent, morphed;
    const std::string tilted = std::to_string(
        bent.addFloats({0.6f, 0, 0.8f, 0.6f, 0, 0.8f, 0.6f, 0, 0.8f, 0.6f, 0, 0.8f}, "VEC3"));
    bent.normals = tilted;
    const int still = morphed.add<float>({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 5126, "VEC3",
                                         R"(,"min":[0,0,0],"max":[0,0,0])");
    const int tilts =
        morphed.addFloats({1.2f, 0, -0.4f, 1.2f, 0, -0.4f, 1.2f, 0, -0.4f, 1.2f, 0, -0.4f}, "VEC3");
    morphed.targets = R"(,"targets":[{"POSITION":)" + std::to_string(still) + R"(,"NORMAL":)" +
                      std::to_string(tilts) + "}]";
    morphed.weights = R"("weights":[0.5],)";
    EXPECT_GT(std::abs(middle(bent) - middle(plain)), 20);
    EXPECT_NEAR(middle(morphed), middle(bent), 1);
}

TEST_F(Morph, HasTheWeightsOfItsKeys)
{
    file.animate(0, "weights", {0, 2}, {0, 1, 1, 0.5f}, "SCALAR");
    expectBox(shown(file, {"--time", "0"}), -1, 1, -1, 1.6);
    expectBox(shown(file, {"--time", "1"}), -1, 1.4, -1, 1 + 0.75 * 0.6);
}

TEST_F(Animation, CamerasMoveWithTheirNodes)
{
    Gltf file;
    file.animate(1, "translation", {0, 1}, {0, 0, 10, 1, 0, 10}, "VEC3");
    expectBox(shown(file, {"--time", "0.5"}), -1.5, 0.5, -1, 1);
}

// Seen from the front as large as it can be: four places with the same distance between them.
TEST_F(Animation, FramesAreSpreadOverTimeAndDoNotJump)
{
    Gltf file;
    file.animate(0, "translation", {0, 4}, {0, 0, 0, 8, 0, 0}, "VEC3");
    write("file.gltf", file.text());
    const auto lefts = [&](const Words& more) {
        Words arguments{"file.gltf", "-o",     "f%d.png",  "--view", "0,0",       "--fov", "1",
                        "--size",    "440x60", "--frames", "4",      "--samples", "2"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        std::vector<int> result;
        for (const char* name : {"f0.png", "f1.png", "f2.png", "f3.png"}) {
            const Image image(path(name));
            EXPECT_EQ(image.bottom - image.top,
                      Image(path("f0.png")).bottom - Image(path("f0.png")).top);
            result.push_back(image.left);
        }
        return result;
    };
    // At 0, 2, 4 and 6: with the plate's own width, 8 across.
    const std::vector<int> all = lefts({"--animation", "one"});
    const double step = (all[3] - all[0]) / 3.0;
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(all[0] + i * step, all[static_cast<std::size_t>(i)], 1);
    EXPECT_GT(step, 30);
    EXPECT_EQ(lefts({"--time", "0:4"}), all);
    EXPECT_EQ(lefts({"--time", "3:-1"}), std::vector<int>(all.rbegin(), all.rend()));
    // One time in all of them: the eye goes around.
    const Words arguments{"file.gltf", "-o", "g%d.png", "--frames", "4",
                          "--time",    "1",  "--size",  "40x30"};
    EXPECT_EQ(run(arguments).status, 0);
    EXPECT_FALSE(Image(path("g0.png")) == Image(path("g1.png")));
}

TEST_F(Animation, HasANameOrANumber)
{
    Gltf file;
    const std::string first =
        file.animation("walk", 0, "translation", {0, 2.5f}, {0, 0, 0, 1, 0, 0}, "VEC3");
    const std::string second =
        file.animation("", 0, "translation", {0, 1}, {0, 0, 0, 0, 1, 0}, "VEC3");
    file.more = ",\"animations\":[" + first + ',' + second + ']';
    expectBox(shown(file, {"--time", "9"}), 0, 2, -1, 1);
    expectBox(shown(file, {"--time", "9", "--animation", "walk"}), 0, 2, -1, 1);
    expectBox(shown(file, {"--time", "9", "--animation", "1"}), -1, 1, 0, 2);
    expectBox(shown(file, {"--animation", "1"}), -1, 1, -1, 1);
    const Outcome listed = run({"file.gltf", "--animation", "list"});
    EXPECT_EQ(listed.status, 0);
    EXPECT_EQ(listed.out, "0 walk (2.5 s)\n1 (1 s)\n");
    expectFailure({"file.gltf", "--animation", "run", "-o", "a.png"}, 1, "no animation 'run'");
    expectFailure({"file.gltf", "--animation", "2", "-o", "a.png"}, 1, "no animation '2'");
}

TEST_F(Animation, ThatIsNotThereOrNoTime)
{
    write("still.gltf", Gltf().text());
    expectFailure({"still.gltf", "--time", "1", "-o", "a.png"}, 1, "it has no animations");
    expectFailure({"still.gltf", "--animation", "list"}, 1, "it has no animations");
    expectFailure({"still.gltf", "--animation", "", "-o", "a.png"}, 2, "without a name");
    for (const char* time :
         {"", "x", "nan", "1:", ":1", "0:1:2", "2000000", "0:inf", "0:2000000"}) {
        expectFailure({"still.gltf", "--time", time, "-o", "a.png"}, 2, "--time");
    }
}

TEST_F(Animation, KeysThatAreNoNumbersMoveNothing)
{
    Gltf file;
    file.animate(0, "translation", {0, 1}, {kNan, 0, 0, kNan, 0, 0}, "VEC3");
    expectBox(shown(file, {"--time", "0.5"}), -1, 1, -1, 1);
    Gltf timeless;
    timeless.animate(0, "translation", {kNan, kNan}, {0.5f, 0, 0, 0.5f, 0, 0}, "VEC3");
    const Outcome outcome = run({write("timeless.gltf", timeless.text()), "--time", "0.5", "-o",
                                 "a.png", "--size", "40x30"});
    EXPECT_LE(outcome.status, 1);
    EXPECT_EQ(outcome.errorLines(), outcome.status);
}

}  // namespace
