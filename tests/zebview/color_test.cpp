// The numbers that colours become in files.

#include <cmath>

#include "exr.h"
#include "gltf.h"
#include "image.h"
#include "process.h"
#include "shapes.h"

namespace
{

using zebtest::ExrImage;
using zebtest::gltfColor;
using zebtest::GltfPlate;
using zebtest::Image;
using zebtest::Pixel;

using Words = std::vector<std::string>;

const Words kUnlit{"--view", "0,0", "--surface", "constant"};
const char* const kSphere = "/usr/share/assimp/models/STL/sphereWithHole.stl";
const char* const kPlate = "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\n";

class Colors : public zebtest::Zebview
{
protected:
    Pixel center(const std::string& model, const Words& options = kUnlit) const
    {
        const Image image(render(model, options));
        return image.at(image.width / 2, image.height / 2);
    }
    std::string gltf(const GltfPlate& plate) const { return write("plate.gltf", plate.text()); }
};

// The sRGB curve takes 0.561 to 0.774, which is 197 of 255.
TEST_F(Colors, FactorsOfGltfAreLight)
{
    EXPECT_EQ(center(gltf({gltfColor("0.561,0.561,0.561,1")})), (Pixel{197, 197, 197, 255}));
    EXPECT_EQ(center(gltf({gltfColor("0.561,0,1,1")})), (Pixel{197, 0, 255, 255}));
}

// 143 is 0.561 of 255.
TEST_F(Colors, ColorsOfOtherFilesAndOfOptionsAreAsTheyAreShown)
{
    write("m.mtl", "newmtl paint\nKd 0.561 0 1\n");
    const std::string painted =
        write("painted.obj", std::string("mtllib m.mtl\nusemtl paint\n") + kPlate + "f 1 2 3 4\n");
    EXPECT_EQ(center(painted), (Pixel{143, 0, 255, 255}));
    Words options = kUnlit;
    options.insert(options.end(), {"--color", "0.2,0.561,0.8"});
    EXPECT_EQ(center(painted, options), (Pixel{51, 143, 204, 255}));
}

TEST_F(Colors, VertexColorsAreTakenAsTheFileMeansThem)
{
    const char* const vertices =
        "v -1 -1 0 0.561 0 1\nv 1 -1 0 0.561 0 1\nv 1 1 0 0.561 0 1\nv -1 1 0 0.561 0 1\n"
        "f 1 2 3 4\n";
    EXPECT_EQ(center(write("vertices.obj", vertices)), (Pixel{143, 0, 255, 255}));
    GltfPlate plate;
    for (int corner = 0; corner < 4; ++corner) {
        for (const float value : {0.561f, 0.0f, 1.0f, 1.0f}) plate.colors.push_back(value);
    }
    EXPECT_EQ(center(gltf(plate)), (Pixel{197, 0, 255, 255}));
}

TEST_F(Colors, ShadesOfGreyAreMeant)
{
    EXPECT_EQ(center(gltf({gltfColor("1,1,1,1")})), (Pixel{255, 255, 255, 255}));
}

// Unlit colours are the same from the middle of a shape to its rim, however little of it a pixel
// holds.
TEST_F(Colors, EdgesHaveNoFringes)
{
    for (const char* filter : {"gaussian", "sinc"}) {
        const Image image(render(
            kSphere, {"--surface", "constant", "--color", "0.2,0.4,0.6", "--filter", filter}));
        int edges = 0;
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                const Pixel p = image.at(x, y);
                if (p[3] == 0) continue;
                ASSERT_EQ(p, (Pixel{51, 102, 153, p[3]})) << filter << ' ' << x << ", " << y;
                edges += p[3] < 255;
            }
        }
        EXPECT_GT(edges, 100);
    }
}

TEST_F(Colors, ExrHoldsTheLightThatPngShows)
{
    const std::string model = gltf({gltfColor("0.561,0.02,1,1")});
    const ExrImage unlit(render(model, kUnlit, "unlit.exr"));
    EXPECT_NEAR(unlit.at("R", 80, 60), 0.561, 1e-6);
    EXPECT_NEAR(unlit.at("G", 80, 60), 0.02, 1e-6);
    // Lit, too.
    const Words lit{"--surface", "diffuse"};
    const ExrImage exr(render(model, lit, "lit.exr"));
    const Image png(render(model, lit));
    for (int i = 0; i < 3; ++i) {
        const float light = exr.at(std::string(1, "RGB"[i]), 80, 60);
        const double shown =
            light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
        EXPECT_EQ(png.at(80, 60)[static_cast<std::size_t>(i)], std::lround(255 * shown)) << i;
    }
}

}  // namespace
