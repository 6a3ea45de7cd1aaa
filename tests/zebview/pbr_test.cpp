// Materials of glTF, under lamps, against what those who described such surfaces wrote.

#include "exr.h"
#include "textured.h"

namespace
{

using zebtest::decoded;
using zebtest::difference;
using zebtest::ExrImage;
using zebtest::GltfPlate;
using zebtest::Image;
using zebtest::Pixel;
using zebtest::pngOf;
using zebtest::texturedPlate;

using Vector = std::array<double, 3>;
using Words = std::vector<std::string>;

double dot(const Vector& a, const Vector& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

Vector unit(const Vector& v)
{
    const double length = std::sqrt(dot(v, v));
    return {v[0] / length, v[1] / length, v[2] / length};
}

// What of a surface is asked for one channel.
struct Facets {
    double albedo, facing, rough;
};

double schlick(double facing, double edge, double cosine)
{
    return facing + (edge - facing) * std::pow(1 - cosine, 5);
}

// Pi times what leaves a surface of GGX mirrors towards V, for light from L: Walter et al., 2007,
// equation 33, and the shadowing of both ways together.
double reflected(const Facets& f, const Vector& N, const Vector& V, const Vector& L)
{
    const double pi = 3.14159265358979, a = f.rough * f.rough;
    const Vector H = unit({L[0] + V[0], L[1] + V[1], L[2] + V[2]});
    const double NL = dot(N, L), NV = dot(N, V), NH = dot(N, H);
    if (NL <= 0) return 0;
    const double tangent = std::sqrt(1 - NH * NH) / NH;
    const double D = a * a / (pi * std::pow(NH, 4) * std::pow(a * a + tangent * tangent, 2));
    const auto lambda = [&](double cosine) {
        return (std::sqrt(1 + a * a * (1 / (cosine * cosine) - 1)) - 1) / 2;
    };
    const double G = 1 / (1 + lambda(NL) + lambda(NV));
    const double F = schlick(f.facing, std::min(50 * f.facing, 1.0), dot(V, H));
    return NL * (pi * D * G * F / (4 * NL * NV) + (1 - F) * f.albedo);
}

const Vector kKey = unit({-0.8, 1, 1}), kFill = unit({1, 0.3, 0.7});

// Under zebview's own lamps. Metals mirror half of what a white matt surface would show that faces
// where they mirror.
double lit(const Facets& f, const Vector& N)
{
    const Vector V{0, 0, 1};
    const double NV = dot(N, V), a = f.rough * f.rough;
    Vector sky;
    for (std::size_t i = 0; i < 3; ++i) {
        const double mirrored = 2 * NV * N[i] - V[i];
        sky[i] = mirrored + a * (N[i] - mirrored);
    }
    sky = unit(sky);
    const double around =
        0.95 * std::max(dot(sky, kKey), 0.0) + 0.15 * std::max(dot(sky, kFill), 0.0);
    const double edge = std::min(std::min(50 * f.facing, 1.0), 1 - f.rough);
    const double F = schlick(f.facing, std::max(edge, f.facing), NV);
    return 0.95 * reflected(f, N, V, kKey) + 0.15 * reflected(f, N, V, kFill) +
           0.04 * ((1 - F) * f.albedo + F) + 0.5 * around * F;
}

class Pbr : public zebtest::Textured
{
protected:
    double light(const GltfPlate& plate, const char* channel, const char* view = "0,0") const
    {
        const std::string model = write("plate.gltf", plate.text());
        return ExrImage(render(model, {"--view", view, "--fov", "1"}, "light.exr"))
            .at(channel, 80, 60);
    }
};

GltfPlate plate(double color, double metal, double rough, const std::string& more = "")
{
    std::ostringstream text;
    text << R"({"pbrMetallicRoughness":{"baseColorFactor":[)" << color << ',' << color << ','
         << color << R"(,1],"metallicFactor":)" << metal << R"(,"roughnessFactor":)" << rough << "}"
         << more << "}";
    GltfPlate result = texturedPlate("");
    result.material = text.str();
    return result;
}

TEST_F(Pbr, SurfacesAreOfTinyMirrors)
{
    for (const double metal : {0.0, 0.4, 1.0}) {
        for (const double rough : {0.2, 0.5, 1.0}) {
            for (const double angle : {0.0, 0.7, -1.2}) {
                const double color = 0.6;
                const Facets facets{color * (1 - metal), 0.04 + metal * (color - 0.04), rough};
                const double expected = lit(facets, {-std::sin(angle), 0, std::cos(angle)});
                const std::string view = std::to_string(angle * 180 / 3.14159265358979) + ",0";
                EXPECT_NEAR(light(plate(color, metal, rough), "R", view.c_str()), expected,
                            0.01 * expected)
                    << metal << ' ' << rough << ' ' << angle;
            }
        }
    }
}

// As matt as can be: but for the 4 % that is mirrored, and what goes into the rims of mirrors.
TEST_F(Pbr, RoughSurfacesAreNearlyMatt)
{
    const double matt = 0.95 * kKey[2] + 0.15 * kFill[2] + 0.04;
    EXPECT_NEAR(light(plate(1, 0, 1), "R"), matt, 0.04 * matt);
    EXPECT_LT(light(plate(1, 1, 1), "R"), 0.95 + 0.15 + 0.04);
}

TEST_F(Pbr, MetalsMirrorInTheirColorAndBlackNothing)
{
    GltfPlate red = plate(0, 1, 0.4);
    red.material.replace(red.material.find("[0,0,0,1]"), 9, "[1,0,0,1]");
    EXPECT_GT(light(red, "R"), 0.2);
    EXPECT_LT(light(red, "G"), 0.001);
    EXPECT_EQ(light(plate(0, 1, 0.4), "R"), 0);
}

std::string glossy(double color, double specular, double gloss, const std::string& more = "")
{
    std::ostringstream text;
    text << R"({"extensions":{"KHR_materials_pbrSpecularGlossiness":{"diffuseFactor":[)" << color
         << ',' << color << ',' << color << R"(,1],"specularFactor":[)" << specular << ','
         << specular << ',' << specular << R"(],"glossinessFactor":)" << gloss << more << "}}}";
    return text.str();
}

TEST_F(Pbr, SpecularAndGlossinessSayTheSame)
{
    GltfPlate said = plate(0, 0, 0);
    for (const double angle : {0.0, 0.7}) {
        const Vector N{-std::sin(angle), 0, std::cos(angle)};
        const std::string view = std::to_string(angle * 180 / 3.14159265358979) + ",0";
        said.material = glossy(0.5, 0.3, 0.6);
        const double expected = lit({0.5 * 0.7, 0.3, 0.4}, N);
        EXPECT_NEAR(light(said, "R", view.c_str()), expected, 0.01 * expected) << angle;
    }
}

// Green is roughness, blue is metal: 128 and 51 of 255.
TEST_F(Pbr, MapsAreFactors)
{
    write("a.png", pngOf({0, 128, 51, 255}));
    GltfPlate mapped = plate(0.6, 0, 0);
    mapped.material = R"({"pbrMetallicRoughness":{"baseColorFactor":[0.6,0.6,0.6,1],)"
                      R"("metallicFactor":0.5,"metallicRoughnessTexture":{"index":0}}})";
    const double metal = 0.5 * 51 / 255, rough = 128 / 255.0;
    EXPECT_NEAR(light(mapped, "R"), light(plate(0.6, metal, rough), "R"), 1e-5);
}

// Its color is shown as 188, its alpha is an amount.
TEST_F(Pbr, MapOfSpecularHoldsGlossinessInAlpha)
{
    write("a.png", pngOf({188, 188, 188, 128}));
    GltfPlate said = plate(0, 0, 0);
    said.material = glossy(0.5, 0.4, 0.9, R"(,"specularGlossinessTexture":{"index":0})");
    const double mapped = light(said, "R");
    said.material = glossy(0.5, 0.4 * decoded(188 / 255.0), 0.9 * 128 / 255);
    EXPECT_NEAR(mapped, light(said, "R"), 1e-5);
}

TEST_F(Pbr, EmissionIsAdded)
{
    write("a.png", pngOf({188, 100, 0, 255}));
    const double before = light(plate(0.3, 0, 0.5), "R");
    const GltfPlate plain = plate(0.3, 0, 0.5, R"(,"emissiveFactor":[0.5,0.25,1])");
    EXPECT_NEAR(light(plain, "R") - before, 0.5, 1e-5);
    const GltfPlate mapped =
        plate(0.3, 0, 0.5, R"(,"emissiveFactor":[0.5,0.25,1],"emissiveTexture":{"index":0})");
    EXPECT_NEAR(light(mapped, "R") - before, 0.5 * decoded(188 / 255.0), 1e-5);
    EXPECT_NEAR(light(mapped, "G") - before, 0.25 * decoded(100 / 255.0), 1e-5);
    EXPECT_NEAR(light(mapped, "B") - before, 0, 1e-5);
}

TEST_F(Pbr, UnlitSurfacesEmitNothing)
{
    const GltfPlate unlit =
        plate(0.3, 0, 0.5, std::string(R"(,"emissiveFactor":[0.5,0.5,0.5])") + zebtest::kUnlit);
    EXPECT_NEAR(light(unlit, "R"), 0.3, 1e-6);
}

TEST_F(Pbr, OpacityGoesWithTheColorOfEitherKind)
{
    GltfPlate said = plate(0, 0, 0);
    said.material = glossy(0.5, 0.3, 0.6);
    said.material.replace(said.material.find("0.5,1]"), 6, "0.5,0.4]");
    said.material.replace(said.material.size() - 1, 1, R"(,"alphaMode":"BLEND"})");
    EXPECT_EQ(picture(said).alpha(80, 60), 102);
}

// What comes from lamps stays; of 0.04 from all around, and of what is mirrored, a part is left.
TEST_F(Pbr, OcclusionTakesFromWhatIsAround)
{
    write("a.png", pngOf({51, 255, 255, 255}));
    const auto occluded = [&](const std::string& strength) {
        return light(
            plate(0.6, 0, 1, R"(,"occlusionTexture":{"index":0,"strength":)" + strength + "}"),
            "R");
    };
    const double sky = 0.95 * kKey[2] + 0.15 * kFill[2];
    const double around = 0.04 * (0.96 * 0.6 + 0.04) + 0.5 * sky * 0.04;
    const double open = light(plate(0.6, 0, 1), "R");
    EXPECT_NEAR(open - occluded("1"), 0.8 * around, 1e-4);
    EXPECT_NEAR(open - occluded("0.5"), 0.4 * around, 1e-4);
}

// A map of one normal, to the right and up, is a plate with that normal.
TEST_F(Pbr, MapsOfNormalsBendThem)
{
    const double x = 50 / 127.0, y = 30 / 127.0, z = 110 / 127.0;
    const Vector N = unit({x, y, z});
    write("a.png", pngOf({128 + 50, 128 + 30, 128 + 110, 255}));
    GltfPlate mapped = plate(0.6, 0, 0.5, R"(,"normalTexture":{"index":0})");
    GltfPlate bent = plate(0.6, 0, 0.5);
    for (int corner = 0; corner < 4; ++corner) {
        for (const double value : N) bent.normals.push_back(static_cast<float>(value));
    }
    const Image expected = picture(bent);
    EXPECT_LE(difference(picture(mapped), expected), 1);
    EXPECT_GT(difference(picture(plate(0.6, 0, 0.5)), expected), 5) << "it should be seen";

    // A quarter turn of the picture turns its normals, too; mirrored, so are they.
    mapped.places = {0, 0, 0, 1, 1, 1, 1, 0};
    for (std::size_t i = 0; i < bent.normals.size(); i += 3) {
        bent.normals[i] = static_cast<float>(-N[1]);
        bent.normals[i + 1] = static_cast<float>(N[0]);
    }
    EXPECT_LE(difference(picture(mapped), picture(bent)), 1);
    mapped.places = {1, 1, 0, 1, 0, 0, 1, 0};
    for (std::size_t i = 0; i < bent.normals.size(); i += 3) {
        bent.normals[i] = static_cast<float>(-N[0]);
        bent.normals[i + 1] = static_cast<float>(N[1]);
    }
    EXPECT_LE(difference(picture(mapped), picture(bent)), 1);
}

TEST_F(Pbr, MapsOfNormalsHaveAScale)
{
    write("a.png", pngOf({128 + 100, 128, 128 + 80, 255}));
    const GltfPlate half = plate(0.6, 0, 0.5, R"(,"normalTexture":{"index":0,"scale":0.5})");
    const Image scaled = picture(half);
    write("a.png", pngOf({128 + 50, 128, 128 + 80, 255}));
    const GltfPlate whole = plate(0.6, 0, 0.5, R"(,"normalTexture":{"index":0})");
    EXPECT_LE(difference(scaled, picture(whole)), 1);
}

std::string coated(double amount, double rough, const std::string& more = "")
{
    std::ostringstream text;
    text << R"(,"extensions":{"KHR_materials_clearcoat":{"clearcoatFactor":)" << amount
         << R"(,"clearcoatRoughnessFactor":)" << rough << more << "}}";
    return text.str();
}

const Facets kVarnish{0, 0.04, 0.3};

// What a coat mirrors is taken from what comes from below it.
TEST_F(Pbr, CoatsLieOverSurfaces)
{
    const Facets below{0.6, 0.04, 0.8};
    for (const double amount : {0.3, 1.0}) {
        for (const double angle : {0.0, 0.7, -1.2}) {
            const Vector N{-std::sin(angle), 0, std::cos(angle)};
            const double taken = amount * schlick(0.04, 1, N[2]);
            const double expected = (1 - taken) * lit(below, N) + amount * lit(kVarnish, N);
            const std::string view = std::to_string(angle * 180 / 3.14159265358979) + ",0";
            EXPECT_NEAR(light(plate(0.6, 0, 0.8, coated(amount, 0.3)), "R", view.c_str()), expected,
                        0.01 * expected)
                << amount << ' ' << angle;
        }
    }
    EXPECT_EQ(light(plate(0.6, 0, 0.8, coated(0, 0.3)), "R"), light(plate(0.6, 0, 0.8), "R"));
}

// Red is how much there is of a coat, green its roughness: 204 and 128 of 255.
TEST_F(Pbr, MapsOfCoatsAreFactors)
{
    write("a.png", pngOf({204, 128, 7, 255}));
    const GltfPlate mapped = plate(0.6, 0, 0.8,
                                   coated(0.9, 0.8,
                                          R"(,"clearcoatTexture":{"index":0},)"
                                          R"("clearcoatRoughnessTexture":{"index":0})"));
    const GltfPlate plain = plate(0.6, 0, 0.8, coated(0.9 * 204 / 255, 0.8 * 128 / 255));
    EXPECT_NEAR(light(mapped, "R"), light(plain, "R"), 1e-5);
    EXPECT_GT(std::fabs(light(mapped, "R") - light(plate(0.6, 0, 0.8), "R")), 1e-3);
}

// The normals of the surface are not those of its coat, nor the other way round.
TEST_F(Pbr, CoatsHaveNormalsOfTheirOwn)
{
    const Vector N = unit({50, 30, 110});
    write("a.png", pngOf({128 + 50, 128 + 30, 128 + 110, 255}));
    const Vector straight{0, 0, 1};
    const Facets below{0.6, 0.04, 0.8};
    const auto expected = [&](const Vector& surface, const Vector& coat) {
        return (1 - schlick(0.04, 1, coat[2])) * lit(below, surface) + lit(kVarnish, coat);
    };
    const GltfPlate bentCoat =
        plate(0.6, 0, 0.8, coated(1, 0.3, R"(,"clearcoatNormalTexture":{"index":0})"));
    EXPECT_NEAR(light(bentCoat, "R"), expected(straight, N), 0.01);
    const GltfPlate bentSurface =
        plate(0.6, 0, 0.8, R"(,"normalTexture":{"index":0})" + coated(1, 0.3));
    EXPECT_NEAR(light(bentSurface, "R"), expected(N, straight), 0.01);
    EXPECT_GT(std::fabs(expected(straight, N) - expected(N, straight)), 0.05);
    write("a.png", pngOf({128 + 100, 128 + 60, 128 + 110, 255}));
    const GltfPlate scaled =
        plate(0.6, 0, 0.8, coated(1, 0.3, R"(,"clearcoatNormalTexture":{"index":0,"scale":0.5})"));
    EXPECT_NEAR(light(scaled, "R"), expected(straight, N), 0.01);
}

TEST_F(Pbr, CoatsLieOverWhatShinesByItself)
{
    const std::string shines = R"(,"emissiveFactor":[0.5,0.5,0.5])";
    const double more = light(plate(0.3, 0, 0.5, shines + coated(1, 0.3)), "R") -
                        light(plate(0.3, 0, 0.5, coated(1, 0.3)), "R");
    EXPECT_NEAR(more, 0.96 * 0.5, 1e-5);
}

std::string glass(double amount, const std::string& more = "")
{
    std::ostringstream text;
    text << R"(,"extensions":{"KHR_materials_transmission":{"transmissionFactor":)" << amount
         << more << "}}";
    return text.str();
}

// In its own color, but for what it mirrors; what goes through is not scattered.
TEST_F(Pbr, LightGoesThroughWhatIsSaidToBeGlass)
{
    const auto seen = [&](const GltfPlate& plate) {
        const std::string model = write("plate.gltf", plate.text());
        const Words white{"--view", "0,0", "--fov", "1", "--background", "1,1,1"};
        return ExrImage(render(model, white, "light.exr")).at("R", 80, 60);
    };
    const Vector N{0, 0, 1};
    for (const double amount : {0.25, 1.0}) {
        const double through = amount * 0.6 * (1 - 0.04);
        const double expected = lit({0.6 * (1 - amount), 0.04, 0.5}, N) + through;
        EXPECT_NEAR(seen(plate(0.6, 0, 0.5, glass(amount))), expected, 0.01 * expected) << amount;
        EXPECT_NEAR(picture(plate(0.6, 0, 0.5, glass(amount))).alpha(80, 60), 255 * (1 - through),
                    1);
    }
    EXPECT_NEAR(seen(plate(0.6, 1, 0.5, glass(1))), seen(plate(0.6, 1, 0.5)), 1e-5)
        << "nothing goes through metal";
    write("a.png", pngOf({51, 9, 7, 255}));
    EXPECT_NEAR(seen(plate(0.6, 0, 0.5, glass(0.8, R"(,"transmissionTexture":{"index":0})"))),
                seen(plate(0.6, 0, 0.5, glass(0.8 * 51 / 255))), 1e-5);
    // A coat keeps some of it out.
    std::string both = glass(1) + coated(1, 0.3);
    both.replace(both.find(R"(}},"extensions":{)"), 17, "},");
    const double under = lit({0, 0.04, 0.5}, N) + 0.6 * 0.96;
    EXPECT_NEAR(seen(plate(0.6, 0, 0.5, both)), 0.96 * under + lit(kVarnish, N), 0.01);
}

}  // namespace
