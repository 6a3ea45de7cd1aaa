// What files say of their materials.

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
using zebtest::gltfColor;
using zebtest::GltfPlate;
using zebtest::Image;
using zebtest::Outcome;
using zebtest::Pixel;

using Words = std::vector<std::string>;

class Materials : public zebtest::Zebview
{
protected:
    // A plate that faces the eye, with a material for OBJ.
    std::string obj(const std::string& material) const
    {
        write("m.mtl", "newmtl paint\n" + material);
        return write("plate.obj",
                     "mtllib m.mtl\nusemtl paint\n"
                     "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nf 1 2 3 4\n");
    }
    std::string gltf(const GltfPlate& plate) const { return write("plate.gltf", plate.text()); }
    Pixel center(const std::string& model, const Words& options = {"--view", "0,0"}) const
    {
        const Image image(render(model, options));
        return image.at(image.width / 2, image.height / 2);
    }
    int alpha(const std::string& model) const { return center(model)[3]; }
    // The light of a channel that comes back from the plate's middle, seen from afar.
    double light(const std::string& model, const char* channel) const
    {
        return ExrImage(render(model, {"--view", "0,0", "--fov", "1"}, "light.exr"))
            .at(channel, 80, 60);
    }
};

TEST_F(Materials, DissolveIsOpacity)
{
    EXPECT_EQ(alpha(obj("Kd 1 1 1\nd 0.4\n")), 102);
    EXPECT_EQ(alpha(obj("Kd 1 1 1\nTr 0.6\n")), 102);
    EXPECT_EQ(alpha(obj("Kd 1 1 1\n")), 255);
}

// Files that mean the opposite would show nothing.
TEST_F(Materials, NoOpacityAtAllIsTakenForAMistake)
{
    EXPECT_EQ(alpha(obj("Kd 1 1 1\nd 0\n")), 255);
}

TEST_F(Materials, AlphaOfGltfIsOpacityWhereItsModeSaysSo)
{
    EXPECT_EQ(alpha(gltf({gltfColor("1,1,1,0.4")})), 255);
    EXPECT_EQ(alpha(gltf({gltfColor("1,1,1,0.4", R"(,"alphaMode":"BLEND")")})), 102);
    EXPECT_EQ(alpha(gltf({gltfColor("1,1,1,0.4", R"(,"alphaMode":"MASK")")})), 0);
    EXPECT_EQ(alpha(gltf({gltfColor("1,1,1,0.6", R"(,"alphaMode":"MASK")")})), 255);
    EXPECT_EQ(alpha(gltf({gltfColor("1,1,1,0.4", R"(,"alphaMode":"MASK","alphaCutoff":0.3)")})),
              255);
}

// 0.66 * 0.85 is 0.561, which shows as 197, and 0.8 * 0.5 is 0.4, or 102 of 255.
TEST_F(Materials, VerticesOfGltfAreFactors)
{
    GltfPlate plate{gltfColor("0.66,0,1,0.8")};
    for (int corner = 0; corner < 4; ++corner) {
        for (const float value : {0.85f, 1.0f, 1.0f, 0.5f}) plate.colors.push_back(value);
    }
    const Words unlit{"--view", "0,0", "--surface", "constant"};
    EXPECT_EQ(center(gltf(plate), unlit), (Pixel{197, 0, 255, 255}));
    plate.material = gltfColor("0.66,0,1,0.8", R"(,"alphaMode":"BLEND")");
    EXPECT_EQ(alpha(gltf(plate)), 102);
}

// A mirror image of a plate has its front where the plate has.
TEST_F(Materials, BacksOfGltfAreSeenIfTheMaterialSaysSo)
{
    const auto alphaFrom = [&](const std::string& more, const char* view, bool mirrored = false) {
        GltfPlate plate{gltfColor("1,1,1,1", more)};
        std::string text = plate.text();
        if (mirrored) text.replace(text.find(R"("mesh":0)"), 8, R"("mesh":0,"scale":[-1,1,1])");
        return center(write("plate.gltf", text), {"--view", view})[3];
    };
    for (const bool mirrored : {false, true}) {
        EXPECT_EQ(alphaFrom("", "0,0", mirrored), 255);
        EXPECT_EQ(alphaFrom("", "180,0", mirrored), 0);
        EXPECT_EQ(alphaFrom(R"(,"doubleSided":true)", "180,0", mirrored), 255);
    }
    const Words plastic{"--view", "180,0", "--surface", "plastic"};
    EXPECT_EQ(center(gltf({gltfColor("1,1,1,1")}), plastic)[3], 255);
    EXPECT_EQ(center(obj("Kd 1 1 1\n"), {"--view", "180,0"})[3], 255);
}

TEST_F(Materials, UnlitOnesAreConstant)
{
    GltfPlate plate{gltfColor("0.561,0,1,1", R"(,"extensions":{"KHR_materials_unlit":{}})")};
    plate.extra = R"(,"extensionsUsed":["KHR_materials_unlit"])";
    EXPECT_EQ(center(gltf(plate)), (Pixel{197, 0, 255, 255}));
    EXPECT_EQ(center(obj("Kd 0.561 0 1\nillum 0\n")), (Pixel{143, 0, 255, 255}));
}

// The lamps shine from (-0.8, 1, 1) and (1, 0.3, 0.7) on a plate that faces z, as the eye does.
double lampLight(double exponent)
{
    const auto half = [](double cosine) { return std::sqrt((1 + cosine) / 2); };
    const double key = half(1 / std::sqrt(0.8 * 0.8 + 1 + 1));
    const double fill = half(0.7 / std::sqrt(1 + 0.3 * 0.3 + 0.7 * 0.7));
    return 0.95 * std::pow(key, exponent) + 0.15 * std::pow(fill, exponent);
}

TEST_F(Materials, HighlightsAreThoseOfTheFile)
{
    EXPECT_NEAR(light(obj("Kd 0 0 0\nKs 1 0.5 0\nNs 10\nillum 2\n"), "R"), lampLight(10), 0.003);
    EXPECT_NEAR(light(obj("Kd 0 0 0\nKs 1 0.5 0\nNs 30\nillum 2\n"), "R"), lampLight(30), 0.003);
    // 0.5 shows what is 0.2140 of the light.
    EXPECT_NEAR(light(obj("Kd 0 0 0\nKs 1 0.5 0\nNs 10\nillum 2\n"), "G"), 0.2140 * lampLight(10),
                0.003);
    EXPECT_EQ(light(obj("Kd 0 0 0\n"), "R"), 0) << "none is said to be there";
}

TEST_F(Materials, SurfaceOptionTakesTheirPlace)
{
    const Words plastic{"--view", "0,0", "--surface", "plastic"};
    EXPECT_EQ(center(obj("Kd 1 0 0\nillum 0\n"), plastic), center(obj("Kd 1 0 0\n"), plastic));
    EXPECT_NE(center(obj("Kd 1 0 0\nillum 0\n")), center(obj("Kd 1 0 0\n")));
}

TEST_F(Materials, WhatIsNotShownIsCounted)
{
    const auto said = [&](const std::string& material) {
        const Outcome outcome =
            run({obj(material), "-o", "picture.png", "--size", "16x12", "--samples", "1"});
        EXPECT_EQ(outcome.status, 0);
        return outcome.err;
    };
    // The plate has no texture coordinates.
    EXPECT_EQ(said("map_Kd a.png\n"), "zebview: plate.obj: 1 texture is not shown\n");
    EXPECT_EQ(said("map_Kd a.png\nmap_Ks b.png\nmap_d c.png\n"),
              "zebview: plate.obj: 3 textures are not shown\n");
    EXPECT_EQ(said("map_Kd a.png\nmap_Ks a.png\n"), "zebview: plate.obj: 1 texture is not shown\n");
    EXPECT_EQ(said("Kd 1 0 0\n\nnewmtl unused\nmap_Kd a.png\n"), "");
}

TEST_F(Materials, WhatThereIsIsToldIfAsked)
{
    const Words small{"-o", "picture.png", "--size", "16x12", "--samples", "1"};
    const auto said = [&](Words arguments) {
        arguments.insert(arguments.end(), small.begin(), small.end());
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 0);
        return outcome.err;
    };
    const std::string cube = write("cube.obj", cubeObj());
    const std::string plate = obj("Kd 1 0 0\n");
    EXPECT_EQ(said({cube}), "");
    EXPECT_EQ(said({cube, "--verbose"}),
              "zebview: cube.obj: 1 mesh, 24 vertices, 6 faces, 0 cameras, 0 lights\n");
    EXPECT_EQ(said({plate, cube, "-v"}),
              "zebview: plate.obj: 1 mesh, 4 vertices, 1 face, 0 cameras, 0 lights\n"
              "zebview: cube.obj: 1 mesh, 24 vertices, 6 faces, 0 cameras, 0 lights\n");
}

}  // namespace
