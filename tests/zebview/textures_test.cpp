// Pictures on surfaces: where they lie, and what their numbers mean.

#include "textured.h"

namespace
{

using zebtest::decoded;
using zebtest::difference;
using zebtest::encoded;
using zebtest::expectNear;
using zebtest::fieldsPng;
using zebtest::GltfPlate;
using zebtest::Image;
using zebtest::kFields;
using zebtest::kPicture;
using zebtest::kUnlit;
using zebtest::Pixel;
using zebtest::plateAt;
using zebtest::pngOf;
using zebtest::texturedPlate;

using Words = std::vector<std::string>;

class Textures : public zebtest::Textured
{
protected:
    // A plate with the whole picture on it, and a material for OBJ.
    Image obj(const std::string& material, const std::array<double, 3>& normal = {0, 0, 1},
              Words options = {}) const
    {
        options.insert(options.end(), {"--view", "0,0", "--fov", "1"});
        write("m.mtl", "newmtl paint\n" + material);
        std::ostringstream text;
        text << "mtllib m.mtl\nusemtl paint\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\n"
             << "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
             << "vn " << normal[0] << ' ' << normal[1] << ' ' << normal[2] << '\n'
             << "f 1/1/1 2/2/1 3/3/1 4/4/1\n";
        return Image(render(write("plate.obj", text.str()), options));
    }

    // Looks at the middles of 8 x 8 parts of the plate.
    void expectFields(const GltfPlate& plate,
                      const std::function<std::pair<double, double>(double, double)>& place,
                      const std::string& what) const
    {
        write("a.png", fieldsPng());
        const Image image = picture(plate);
        for (int j = 0; j < 8; ++j) {
            for (int i = 0; i < 8; ++i) {
                const double x = (i + 0.5) / 8, y = (j + 0.5) / 8;
                const auto [u, v] = place(x, y);
                // Between two fields there is neither.
                const auto nearEdge = [](double w) {
                    return std::fabs(w * 2 - std::round(w * 2)) < 0.18;
                };
                if (nearEdge(u) || nearEdge(v)) continue;
                EXPECT_EQ(plateAt(image, x, y), kFields[(v > 0.5) * 2 + (u > 0.5)])
                    << what << ": " << x << ", " << y;
            }
        }
    }
};

// Numbers that are shown come out as they went in.
TEST_F(Textures, PixelsLieWhereCoordinatesSayAndKeepTheirColors)
{
    expectFields(
        texturedPlate(kPicture, kUnlit),
        [](double x, double y) {
            return std::pair{x, y};
        },
        "whole");
    GltfPlate turned = texturedPlate(kPicture, kUnlit);
    turned.places = {0, 0, 0, 1, 1, 1, 1, 0};
    expectFields(
        turned,
        [](double x, double y) {
            return std::pair{1 - y, x};
        },
        "turned");
}

// A texel of 188 is 0.5029 of the light, and half of that shows as 137.
TEST_F(Textures, FactorsAreFactorsOfLight)
{
    write("a.png", pngOf({188, 188, 188, 255}));
    const Image image = picture(
        texturedPlate(R"("baseColorFactor":[0.5,1,0,1],"baseColorTexture":{"index":0})", kUnlit));
    const int half = static_cast<int>(std::lround(255 * encoded(0.5 * decoded(188 / 255.0))));
    EXPECT_EQ(half, 137);
    EXPECT_EQ(plateAt(image, 0.5, 0.5), (Pixel{half, 188, 0, 255}));
}

double wrapped(int mode, double w)
{
    if (mode == 10497) return w - std::floor(w);
    if (mode == 33648) return 1 - std::fabs(w - 2 * std::floor(w / 2) - 1);
    // The fields are wider than this.
    return std::clamp(w, 0.2, 0.8);
}

TEST_F(Textures, PicturesGoOnAsTheSamplerSays)
{
    for (const int across : {10497, 33648, 33071}) {
        for (const int down : {10497, 33648, 33071}) {
            const std::string sampler = R"({"wrapS":)" + std::to_string(across) + R"(,"wrapT":)" +
                                        std::to_string(down) + "}";
            GltfPlate plate = texturedPlate(kPicture, kUnlit, sampler);
            plate.places = {-1, 1.5, 2, 1.5, 2, -0.75, -1, -0.75};
            const auto place = [&](double x, double y) {
                return std::pair{wrapped(across, 3 * x - 1), wrapped(down, 2.25 * y - 0.75)};
            };
            expectFields(plate, place, sampler);
        }
    }
}

// Turned the other way round than the picture is seen to turn, scaled before and moved after.
TEST_F(Textures, PicturesAreMovedAsTheMaterialSays)
{
    const double angle = 0.4, ox = 0.3, oy = -0.2, sx = 0.6, sy = 0.8;
    const auto place = [&](double x, double y) {
        const double u = sx * x, v = sy * y;
        return std::pair{wrapped(10497, std::cos(angle) * u + std::sin(angle) * v + ox),
                         wrapped(10497, -std::sin(angle) * u + std::cos(angle) * v + oy)};
    };
    const std::string moved =
        R"("baseColorTexture":{"index":0,"extensions":{"KHR_texture_transform":)"
        R"({"offset":[0.3,-0.2],"rotation":0.4,"scale":[0.6,0.8]}}})";
    expectFields(texturedPlate(moved, kUnlit), place, "moved");
}

TEST_F(Textures, CoordinatesAreThoseOfTheChannelThatIsNamed)
{
    GltfPlate plate = texturedPlate(R"("baseColorTexture":{"index":0,"texCoord":1})", kUnlit);
    plate.otherPlaces = {1, 1, 0, 1, 0, 0, 1, 0};
    expectFields(
        plate,
        [](double x, double y) {
            return std::pair{1 - x, y};
        },
        "second channel");
}

TEST_F(Textures, ObjFilesHaveThemToo)
{
    write("a.png", fieldsPng());
    const Image image = obj("Kd 1 1 1\nillum 0\nmap_Kd a.png\n");
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(plateAt(image, 0.25 + 0.5 * static_cast<double>(i % 2),
                          0.25 + 0.5 * static_cast<double>(i / 2)),
                  kFields[i]);
    }
}

// Half of 188, as light.
TEST_F(Textures, ColorsOfObjFilesAreFactorsAndBlackIsNone)
{
    write("a.png", pngOf({188, 188, 188, 255}));
    const int half =
        static_cast<int>(std::lround(255 * encoded(decoded(188 / 255.0) * decoded(188 / 255.0))));
    const std::string more = "illum 0\nmap_Kd a.png\n";
    EXPECT_EQ(plateAt(obj("Kd 0.737255 0.737255 1\n" + more), 0.5, 0.5),
              (Pixel{half, half, 188, 255}));
    EXPECT_EQ(plateAt(obj("Kd 0 0 0\n" + more), 0.5, 0.5), (Pixel{188, 188, 188, 255}));
}

// Lit, what is one color all over is what the built-in surface makes of it.
TEST_F(Textures, SurfacesOfObjFilesStayWhatTheyAre)
{
    write("a.png", pngOf({100, 188, 20, 255}));
    write("k.png", pngOf({255, 188, 0, 255}));
    const std::string shine = "Ns 20\nillum 2\n";
    const Image mapped = obj("Kd 1 1 1\nKs 0.5 0.5 0.5\nmap_Kd a.png\nmap_Ks k.png\n" + shine);
    const auto product = [](double shown, int texel) {
        return std::to_string(encoded(decoded(shown) * decoded(texel / 255.0)));
    };
    const Image plain =
        obj("Kd 0.392157 0.737255 0.078431\nKs 0.5 " + product(0.5, 188) + " 0\n" + shine);
    EXPECT_LE(difference(mapped, plain), 1);
    EXPECT_GT(difference(mapped, obj("Kd 0.392157 0.737255 0.078431\n")), 5);
}

TEST_F(Textures, PicturesOfExponentsAreFactors)
{
    write("n.png", pngOf({102, 102, 102, 255}));
    write("white.png", pngOf({255, 255, 255, 255}));
    std::string sky = "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 4 +X 8\n";
    for (int i = 0; i < 32; ++i) sky += i < 8 ? "\x80\x80\x80\x83" : "\x80\x80\x80\x79";
    write("sky.hdr", sky);
    const std::string shine = "Kd 0 0 0\nKs 1 1 1\nillum 2\n";
    for (const Words& light : {Words{}, {"--environment", "sky.hdr"}}) {
        const auto shown = [&](const std::string& more) {
            return obj(shine + more, {0, 0.6, 0.8}, light);
        };
        const Image plain = shown("Ns 20\n");
        EXPECT_LE(difference(shown("Ns 50\nmap_Ns n.png\n"), plain), 1);
        EXPECT_LE(difference(shown("Ns 20\nmap_Ns white.png\n"), plain), 1);
        EXPECT_GT(difference(shown("Ns 50\n"), plain), 5);
    }
}

TEST_F(Textures, PicturesWithinAModelAreThoseBesideIt)
{
    write("a.png", fieldsPng());
    GltfPlate plate = texturedPlate(kPicture);
    const Image beside = picture(plate);
    plate.extra.replace(plate.extra.find("a.png"), 5,
                        "data:image/png;base64," + zebtest::base64(fieldsPng()));
    std::filesystem::remove(path("a.png"));
    EXPECT_EQ(picture(plate), beside);
    EXPECT_GT(beside.contrast(), 40);
}

TEST_F(Textures, BinaryFilesShowWhatTextFilesShow)
{
    const std::string folder = "/usr/share/assimp/models/glTF2/BoxTextured-glTF";
    const Image binary(render(folder + "-Binary/BoxTextured.glb"));
    EXPECT_EQ(Image(render(folder + "-Embedded/BoxTextured.gltf")), binary);
}

// Half the pixels of the picture are black and half are white, some 80 of them to one that is
// shown.
TEST_F(Textures, WhatIsTooFineToBeSeenIsItsMean)
{
    write("a.png", pngOf(1024, 1024, [](int x, int y) {
              const int value = (x + y) % 2 ? 255 : 0;
              return Pixel{value, value, value, 255};
          }));
    const Image image = picture(texturedPlate(kPicture, kUnlit));
    for (double y = 0.05; y < 0.96; y += 0.01) {
        for (double x = 0.05; x < 0.96; x += 0.01) {
            ASSERT_NEAR(plateAt(image, x, y)[0], 188, 2) << x << ", " << y;
        }
    }
}

TEST_F(Textures, ColorOptionTakesTheirPlace)
{
    write("a.png", fieldsPng());
    const std::string model = write("plate.gltf", texturedPlate(kPicture, kUnlit).text());
    const Image image(render(model, {"--view", "0,0", "--color", "0.2,0.4,0.6"}));
    EXPECT_EQ(plateAt(image, 0.25, 0.25), (Pixel{51, 102, 153, 255}));
}

// Alpha of the fields from the upper left: 0, 100, 200 and 255.
std::string alphaPng()
{
    return pngOf(16, 16, [](int x, int y) {
        return Pixel{200, 100, 50,
                     std::array{0, 100, 200, 255}[static_cast<std::size_t>((y / 8) * 2 + x / 8)]};
    });
}

TEST_F(Textures, AlphaCountsAsTheMaterialsModeSays)
{
    write("a.png", alphaPng());
    const auto alphas = [&](const std::string& mode, const char* factor = "1") {
        GltfPlate plate = texturedPlate(
            std::string(R"("baseColorFactor":[1,1,1,)") + factor + "]," + kPicture, kUnlit + mode);
        const Image image = picture(plate);
        Pixel found;
        for (std::size_t i = 0; i < 4; ++i) {
            const Pixel p = image.at(80 + (i % 2 ? 25 : -25), 60 + (i / 2 ? 25 : -25));
            found[i] = p[3];
            if (p[3] > 0) expectNear(p, {200, 100, 50, p[3]}, 1, mode);
        }
        return found;
    };
    EXPECT_EQ(alphas(""), (Pixel{255, 255, 255, 255}));
    EXPECT_EQ(alphas(R"(,"alphaMode":"MASK")"), (Pixel{0, 0, 255, 255}));
    EXPECT_EQ(alphas(R"(,"alphaMode":"MASK","alphaCutoff":0.3)"), (Pixel{0, 255, 255, 255}));
    EXPECT_EQ(alphas(R"(,"alphaMode":"BLEND")"), (Pixel{0, 100, 200, 255}));
    EXPECT_EQ(alphas(R"(,"alphaMode":"BLEND")", "0.5"), (Pixel{0, 50, 100, 128}));
    EXPECT_EQ(alphas(R"(,"alphaMode":"MASK")", "0.5"), (Pixel{0, 0, 0, 255}));
}

// 200 / 255 * 0.5 * 0.8 of 255.
TEST_F(Textures, AlphaOfVerticesIsAFactorOfIt)
{
    write("a.png", pngOf({255, 255, 255, 200}));
    GltfPlate plate = texturedPlate(std::string(R"("baseColorFactor":[1,1,1,0.5],)") + kPicture,
                                    std::string(kUnlit) + R"(,"alphaMode":"BLEND")");
    for (int corner = 0; corner < 4; ++corner) {
        for (const float value : {1.0f, 0.5f, 0.0f, 0.8f}) plate.colors.push_back(value);
    }
    EXPECT_EQ(plateAt(picture(plate), 0.5, 0.5), (Pixel{255, 188, 0, 80}));
}

TEST_F(Textures, TransparencyMapsMakeHoles)
{
    write("d.png", pngOf(16, 16, [](int x, int) {
              const int value = x < 8 ? 0 : 128;
              return Pixel{value, value, value, 255};
          }));
    const Image image = obj("Kd 1 1 1\nmap_d d.png\n");
    EXPECT_EQ(image.alpha(55, 60), 0);
    EXPECT_EQ(image.alpha(105, 60), 128);
}

TEST_F(Textures, AlphaOfColorsIsOpacityUnlessThereIsAMapOfIt)
{
    write("a.png", pngOf({200, 200, 200, 51}));
    write("d.png", pngOf({128, 128, 128, 255}));
    EXPECT_EQ(obj("Kd 1 1 1\nmap_Kd a.png\n").alpha(80, 60), 51);
    EXPECT_EQ(obj("Kd 1 1 1\nmap_Kd a.png\nmap_d d.png\n").alpha(80, 60), 128);
    // What the other one hides has a color all the same.
    write("a.png", pngOf({200, 100, 50, 0}));
    EXPECT_EQ(obj("Kd 1 1 1\nillum 0\nmap_Kd a.png\nmap_d d.png\n").at(80, 60),
              (Pixel{200, 100, 50, 128}));
    EXPECT_EQ(obj("Kd 1 1 1\nd 0.5\nmap_d d.png\n").alpha(80, 60), 64);
}

// Black to the left, white to the right, and 8 of 255 between two of its 16 columns: with what the
// manual says, a slope of 16 / 255.
TEST_F(Textures, BumpsAreSlopes)
{
    write("b.png", pngOf(16, 16, [](int x, int) { return Pixel{x * 8, x * 8, x * 8, 255}; }));
    const auto middle = [&](const std::string& material) {
        return obj("Kd 1 1 1\n" + material).at(80, 60);
    };
    const auto tilted = [&](double slope) {
        const Image image = obj("Kd 1 1 1\n", {-slope, 0, 1});
        return image.at(80, 60);
    };
    expectNear(middle("map_Bump b.png\n"), tilted(16 / 255.0), 1, "as it is");
    expectNear(middle("map_Bump -bm 6 b.png\n"), tilted(6 * 16 / 255.0), 1, "six times");
    EXPECT_GT(std::abs(tilted(6 * 16 / 255.0)[0] - tilted(0)[0]), 5);
}

std::string chunk(int id, const std::string& data)
{
    const auto size = static_cast<std::uint32_t>(data.size() + 6);
    return zebtest::bytesOf<std::uint16_t>({static_cast<std::uint16_t>(id)}) +
           zebtest::bytesOf<std::uint32_t>({size}) + data;
}

// A plate of 3DS whose picture covers the middle third of it each way.
std::string plate3ds(std::uint16_t tiling)
{
    using zebtest::bytesOf;
    const auto text = [](const char* name) { return std::string(name) + '\0'; };
    const auto counted = [](std::uint16_t count) { return bytesOf<std::uint16_t>({count}); };
    const std::string white =
        chunk(0xA020, chunk(0x0011, "\xFF\xFF\xFF")) + chunk(0xA084, chunk(0x0030, counted(100)));
    const std::string map =
        chunk(0xA200, chunk(0xA300, text("a.png")) + chunk(0xA351, counted(tiling)));
    const std::string paint = chunk(0xAFFF, chunk(0xA000, text("paint")) + white + map);
    const std::string points =
        counted(4) + bytesOf<float>({-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0});
    const std::string faces =
        counted(2) + bytesOf<std::uint16_t>({0, 1, 2, 7, 0, 2, 3, 7}) +
        chunk(0x4130, text("paint") + counted(2) + bytesOf<std::uint16_t>({0, 1}));
    const std::string places = counted(4) + bytesOf<float>({-1, -1, 2, -1, 2, 2, -1, 2});
    const std::string mesh =
        chunk(0x4100, chunk(0x4110, points) + chunk(0x4120, faces) + chunk(0x4140, places));
    return chunk(0x4D4D, chunk(0x3D3D, paint + chunk(0x4000, text("plate") + mesh)));
}

// What does not go on leaves white.
TEST_F(Textures, PicturesThatEndAreSeenOnce)
{
    write("a.png", pngOf({0, 0, 255, 255}));
    const auto at = [&](std::uint16_t tiling, double x, double y) {
        const Image image(render(write("plate.3ds", plate3ds(tiling)),
                                 {"--view", "0,0", "--fov", "1", "--up", "y"}));
        return plateAt(image, x, y)[0] > 128 ? "bare" : "blue";
    };
    for (const auto& [x, y] : {std::pair{0.15, 0.5}, {0.5, 0.15}, {0.85, 0.85}}) {
        EXPECT_STREQ(at(0x10, x, y), "bare");
        EXPECT_STREQ(at(0, x, y), "blue");
    }
    EXPECT_STREQ(at(0x10, 0.5, 0.5), "blue");
    EXPECT_STREQ(at(0x10, 0.36, 0.64), "blue");
}

}  // namespace
