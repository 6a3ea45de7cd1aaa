// Light from all around, against what integrals over it say.

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfOutputFile.h>

#include "exr.h"
#include "textured.h"

namespace
{

using zebtest::ExrImage;
using zebtest::GltfPlate;
using zebtest::Outcome;
using zebtest::texturedPlate;

constexpr double kPi = 3.14159265358979;

using Light = std::array<double, 3>;
using LightAt = std::function<Light(int, int)>;

// One pixel of a Radiance file.
std::string rgbe(const Light& light)
{
    const double most = std::max({light[0], light[1], light[2]});
    if (most <= 0) return std::string(4, '\0');
    int exponent = 0;
    std::frexp(most, &exponent);
    std::string bytes;
    for (const double value : light) {
        bytes += static_cast<char>(static_cast<int>(std::ldexp(value, 8 - exponent)));
    }
    return bytes + static_cast<char>(exponent + 128);
}

std::string hdrHeader(int width, int height)
{
    return "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y " + std::to_string(height) + " +X " +
           std::to_string(width) + "\n";
}

std::string hdrOf(int width, int height, const LightAt& at)
{
    std::string file = hdrHeader(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) file += rgbe(at(x, y));
    }
    return file;
}

std::string hdrOf(const Light& light)
{
    return hdrOf(8, 4, [&](int, int) { return light; });
}

// A ball with the normals of one.
std::string ballObj()
{
    constexpr int around = 96, down = 48;
    std::ostringstream text;
    for (int i = 0; i <= down; ++i) {
        for (int j = 0; j < around; ++j) {
            const double t = kPi * i / down, p = 2 * kPi * j / around;
            for (const char* kind : {"v", "vn"}) {
                text << kind << ' ' << std::sin(t) * std::cos(p) << ' ' << std::cos(t) << ' '
                     << std::sin(t) * std::sin(p) << '\n';
            }
        }
    }
    for (int i = 0; i < down; ++i) {
        for (int j = 0; j < around; ++j) {
            const int a = i * around + j + 1, b = i * around + (j + 1) % around + 1;
            text << 'f';
            for (const int n : {a, b, b + around, a + around}) text << ' ' << n << "//" << n;
            text << '\n';
        }
    }
    return text.str();
}

class Environment : public zebtest::Textured
{
protected:
    ExrImage lit(const std::string& model, const std::string& hdr,
                 std::vector<std::string> options = {}) const
    {
        write("around.hdr", hdr);
        options.insert(options.end(), {"--environment", "around.hdr"});
        return ExrImage(render(model, options, "light.exr"));
    }
    std::string plate(double color, double metal, double rough) const
    {
        std::ostringstream text;
        text << R"({"pbrMetallicRoughness":{"baseColorFactor":[)" << color << ',' << color << ','
             << color << R"(,1],"metallicFactor":)" << metal << R"(,"roughnessFactor":)" << rough
             << "}}";
        GltfPlate result = texturedPlate("");
        result.material = text.str();
        return write("plate.gltf", result.text());
    }
    void isRefused(const std::string& name, const std::string& bytes, const std::string& why) const
    {
        write(name, bytes);
        write("model.obj", ballObj());
        const Outcome outcome = run({"model.obj", "-o", "a.png", "--environment", name});
        EXPECT_EQ(outcome.status, 1) << why;
        EXPECT_EQ(outcome.errorLines(), 1) << outcome.err;
        EXPECT_NE(outcome.err.find("zebview: " + name), std::string::npos) << outcome.err;
        EXPECT_NE(outcome.err.find(why), std::string::npos) << outcome.err;
    }
};

TEST_F(Environment, ShowsTheColorOfWhatIsMattInEvenLight)
{
    const std::string ball = write("ball.obj", ballObj());
    for (const char* view : {"0,0", "75,30", "200,-60", "0,90"}) {
        const ExrImage image =
            lit(ball, hdrOf({1, 1, 1}),
                {"--surface", "diffuse", "--color", "1,0.5,0.2", "--view", view});
        for (const auto& [x, y] : {std::pair{80, 60}, {60, 40}, {110, 80}}) {
            EXPECT_NEAR(image.at("R", x, y), 1, 2e-4) << view;
            EXPECT_NEAR(image.at("G", x, y), zebtest::decoded(0.5), 2e-4) << view;
            EXPECT_NEAR(image.at("B", x, y), zebtest::decoded(0.2), 2e-4) << view;
        }
    }
}

// Half of what is white is neither more nor less than white.
TEST_F(Environment, LosesNothingOfWhatIsWhiteAndNoMetal)
{
    for (const double rough : {0.0, 0.3, 1.0}) {
        const ExrImage image = lit(plate(1, 0, rough), hdrOf({1, 1, 1}), {"--view", "50,0"});
        EXPECT_NEAR(image.at("G", 80, 60), 1, 2e-3) << rough;
    }
}

TEST_F(Environment, LeavesTheExposureToTheUser)
{
    const std::string ball = write("ball.obj", ballObj());
    const ExrImage image = lit(ball, hdrOf({2, 1, 0.5}),
                               {"--surface", "diffuse", "--color", "1,1,1", "--exposure", "-2"});
    EXPECT_NEAR(image.at("R", 80, 60), 0.5, 1e-4);
    EXPECT_NEAR(image.at("G", 80, 60), 0.25, 1e-4);
    EXPECT_NEAR(image.at("B", 80, 60), 0.125, 1e-4);
}

// Columns and rows by their numbers.
const LightAt kNumbered = [](int x, int y) { return Light{x + 1.0, y + 1.0, 0}; };

TEST_F(Environment, ShowsItsPixelsInAMirror)
{
    const std::string mirror = plate(1, 1, 0);
    for (const double angle : {20.0, 45.0, 65.0}) {
        for (const double turn : {0.0, -30.0}) {
            const ExrImage image = lit(mirror, hdrOf(64, 32, kNumbered),
                                       {"--view", std::to_string(angle) + ",0", "--fov", "1",
                                        "--environment-turn", std::to_string(turn)});
            // An eye on the right sees what is behind it on the left.
            const double column = (angle - turn) / 360 * 64 - 0.5;
            EXPECT_NEAR(image.at("R", 80, 60), column + 1, 0.12) << angle << ' ' << turn;
            EXPECT_NEAR(image.at("G", 80, 60), 16.5, 0.12) << angle << ' ' << turn;
        }
    }
}

TEST_F(Environment, StandsBehindTheModel)
{
    const std::string ball = write("ball.obj", ballObj());
    const double half = std::tan(45 * kPi / 180);
    for (const double azimuth : {0.0, 90.0}) {
        const ExrImage image = lit(ball, hdrOf(64, 32, kNumbered),
                                   {"--background", "environment", "--fov", "90", "--view",
                                    std::to_string(azimuth) + ",0"});
        for (const int x : {2, 157}) {
            const double angle = std::atan((x + 0.5 - 80) / 60 * half) * 180 / kPi;
            const double column = 31.5 + (angle - azimuth) / 360 * 64;
            EXPECT_NEAR(image.at("R", x, 60), column + 1, 0.15) << azimuth << ' ' << x;
        }
    }
}

// What GGX mirrors that are white send to the eye of light 1 from everywhere: Walter et al., 2007,
// with the shadowing of both ways together.
double shareOfRoughMetal(double rough, double slant)
{
    const double a2 = std::pow(rough, 4), NV = std::cos(slant);
    double sum = 0;
    constexpr int steps = 400;
    for (int i = 0; i < steps; ++i) {
        for (int j = 0; j < steps; ++j) {
            const double t = kPi / 2 * (i + 0.5) / steps, p = 2 * kPi * (j + 0.5) / steps;
            const double NL = std::cos(t);
            const double x = std::sin(t) * std::cos(p) + std::sin(slant),
                         y = std::sin(t) * std::sin(p);
            const double z = NL + NV, NH = z / std::sqrt(x * x + y * y + z * z);
            const double spread = NH * NH * (a2 - 1) + 1, D = a2 / (kPi * spread * spread);
            const double seen =
                NL * std::sqrt(NV * NV * (1 - a2) + a2) + NV * std::sqrt(NL * NL * (1 - a2) + a2);
            sum += D / (2 * seen) * NL * std::sin(t) * kPi / 2 / steps * 2 * kPi / steps;
        }
    }
    return sum;
}

TEST_F(Environment, LosesOfRoughMetalWhatMirrorsHideFromEachOther)
{
    for (const double rough : {0.4, 0.7, 1.0}) {
        for (const double slant : {0.0, 0.6, 1.2}) {
            const ExrImage image =
                lit(plate(1, 1, rough), hdrOf({1, 1, 1}),
                    {"--fov", "1", "--view", std::to_string(slant * 180 / kPi) + ",0"});
            EXPECT_NEAR(image.at("R", 80, 60), shareOfRoughMetal(rough, slant), 0.01)
                << rough << ' ' << slant;
        }
    }
}

// A lamp so small and bright lights as its cosine says.
TEST_F(Environment, LightsFromWhereItIsBright)
{
    constexpr int width = 64, height = 32;
    const auto lamp = [](int x, int y) {
        return x == 0 && y == height / 2 ? Light{1024, 1024, 1024} : Light{};
    };
    const double low = kPi / height, sky = 2 * kPi / width * std::sin(low);
    const std::string wall = plate(1, 0, 1);
    for (const double turn : {0.0, 40.0, -60.0, 130.0}) {
        const ExrImage image = lit(wall, hdrOf(width, height, lamp),
                                   {"--surface", "diffuse", "--color", "1,1,1", "--view", "0,0",
                                    "--environment-turn", std::to_string(turn)});
        const double cosine = std::cos((turn + 180.0 / width) * kPi / 180) * std::cos(low / 2);
        const double expected = 1024 * sky / kPi * std::max(cosine, 0.0);
        EXPECT_NEAR(image.at("G", 80, 60), expected, 0.02 * 1024 * sky / kPi) << turn;
    }
}

// How much light jumps between pixels more than it does on the way there.
double largestCrease(const ExrImage& image)
{
    double most = 0, brightest = 0;
    for (int y = 30; y < 90; ++y) {
        for (int x = 50; x < 110; ++x) {
            const auto at = [&](int dx, int dy) { return image.at("G", x + dx, y + dy); };
            most = std::max({most, std::abs(double{at(-1, 0) - 2 * at(0, 0) + at(1, 0)}),
                             std::abs(double{at(0, -1) - 2 * at(0, 0) + at(0, 1)})});
            brightest = std::max(brightest, double{at(0, 0)});
        }
    }
    return most / brightest;
}

TEST_F(Environment, HasNoSeams)
{
    // Bright around a place beside the upper pole, and beside the edges of the picture.
    const auto blots = [](int x, int y) {
        const double pole = y < 5 && x > 20 && x < 90 ? 4 : 0;
        const double edge = (x < 7 || x > 121) && y > 28 && y < 38 ? 4 : 0;
        return Light{0, 0.1 + pole + edge, 0};
    };
    const std::string ball = write("ball.obj", ballObj());
    for (const char* surface : {"metal", "diffuse", "plastic"}) {
        for (const char* view : {"0,0", "0,90", "0,60", "180,30"}) {
            const ExrImage image = lit(ball, hdrOf(128, 64, blots),
                                       {"--surface", surface, "--view", view, "--samples", "4"});
            const double most = surface == std::string("metal") ? 0.07 : 0.015;
            EXPECT_LT(largestCrease(image), most) << surface << ' ' << view;
        }
    }
}

// Channel by channel, in runs and as they are.
TEST_F(Environment, ReadsPackedRows)
{
    const auto light = [](int x, int y) { return Light{x < 9 ? 1.0 : 0.25, y / 16.0, 0.5}; };
    constexpr int width = 32, height = 16;
    std::string packed = hdrHeader(width, height);
    for (int y = 0; y < height; ++y) {
        packed += std::string("\2\2\0", 3) + static_cast<char>(width);
        for (std::size_t c = 0; c < 4; ++c) {
            packed += static_cast<char>(128 + 9);
            packed += rgbe(light(0, y))[c];
            packed += static_cast<char>(width - 9);
            for (int x = 9; x < width; ++x) packed += rgbe(light(x, y))[c];
        }
    }
    const std::string ball = write("ball.obj", ballObj());
    const std::string flat = hdrOf(width, height, light);
    EXPECT_NE(packed, flat);
    const ExrImage a = lit(ball, flat, {"--surface", "metal"});
    const ExrImage b = lit(ball, packed, {"--surface", "metal"});
    for (int y = 0; y < a.height; ++y) {
        for (int x = 0; x < a.width; ++x) ASSERT_EQ(a.at("R", x, y), b.at("R", x, y));
    }
}

TEST_F(Environment, ReadsOpenExr)
{
    constexpr int width = 16, height = 8;
    std::vector<float> pixels(width * height, 0.75f);
    Imf::Header header(width, height);
    Imf::FrameBuffer buffer;
    for (const char* name : {"R", "G", "B"}) {
        header.channels().insert(name, Imf::Channel(Imf::FLOAT));
        buffer.insert(name, Imf::Slice(Imf::FLOAT, reinterpret_cast<char*>(pixels.data()),
                                       sizeof(float), sizeof(float) * width));
    }
    {
        Imf::OutputFile file(path("around.exr").c_str(), header);
        file.setFrameBuffer(buffer);
        file.writePixels(height);
    }
    const std::vector<std::string> options{"--surface", "diffuse",       "--color",
                                           "1,1,1",     "--environment", "around.exr"};
    const ExrImage image(render(write("ball.obj", ballObj()), options, "light.exr"));
    EXPECT_NEAR(image.at("B", 80, 60), 0.75, 1e-4);

    const std::string whole = read(path("around.exr"));
    isRefused("half.exr", whole.substr(0, whole.size() / 2), "cannot be read");
}

TEST_F(Environment, RefusesWhatIsNoPictureOfAllDirections)
{
    const std::string good = hdrOf({1, 1, 1});
    isRefused("a.hdr", "", "neither a Radiance nor an OpenEXR file");
    isRefused("a.hdr", "#?RADIANCE\n", "it ends early");
    isRefused("a.hdr", good.substr(0, good.size() - 3), "it ends early");
    isRefused("a.hdr", hdrHeader(32768, 16384), "it ends early");
    isRefused("a.hdr", hdrHeader(2000000000, 1000000000), "its size is wrong");
    isRefused("a.hdr", "#?RADIANCE\n\n+Y 4 +X 8\n", "from the top to the bottom");
    isRefused("a.hdr", "#?RADIANCE\nFORMAT=32-bit_rle_xyze\n\n-Y 4 +X 8\n", "red, green and blue");
    isRefused("a.hdr", hdrHeader(8, 4) + std::string("\2\2\0\x09", 4), "another length");
    isRefused("a.hdr", hdrHeader(8, 4) + std::string("\2\2\0\x08\xFF\1", 6), "another length");
    isRefused("a.hdr", hdrHeader(8, 4) + std::string("\2\2\0\x08\0", 5), "another length");
    isRefused("a.hdr", hdrHeader(8, 4) + std::string("\1\1\1\1", 4), "another length");
    isRefused("a.hdr", hdrOf(4, 4, [](int, int) { return Light{1, 1, 1}; }), "twice as wide");
    isRefused("a.exr", std::string("v/1\x01\2\0\0\0", 8), "cannot be read");
}

TEST_F(Environment, IsAskedForWhereItIsUsed)
{
    write("model.obj", ballObj());
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"--background", "environment"},
          {"--exposure", "1"},
          {"--environment-turn", "9"},
          {"--environment", "none.hdr"}}) {
        std::vector<std::string> arguments{"model.obj", "-o", "a.png"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 2) << options[0];
        EXPECT_EQ(outcome.errorLines(), 1) << outcome.err;
    }
}

}  // namespace
