// Axes and grid are where the file's space says.

#include "gltf_animation.h"
#include "image.h"
#include "process.h"

namespace
{

using zebtest::Gltf;
using zebtest::Image;
using zebtest::Outcome;
using zebtest::Pixel;

using Words = std::vector<std::string>;

constexpr Pixel kRed{219, 56, 51, 255}, kGreen{92, 168, 46, 255}, kBlue{51, 112, 224, 255};

class Guides : public zebtest::Zebview
{
protected:
    // Pictures of 200 x 200 pixels, unless they are larger, of a plate from -1 to 1 in x and y, by
    // a camera that shows -2 to 2 and from which z points to the eye.
    Image shown(const Words& more, const std::string& said = "") const
    {
        write("plate.gltf", file.text());
        Words options{"--light", "camera"};
        options.insert(options.end(), more.begin(), more.end());
        const auto size = std::find(more.begin(), more.end(), "--size");
        if (size == more.end()) options.insert(options.end(), {"--size", "200x200"});
        return Image(render("plate.gltf", options, "x.png", said));
    }
    Image axes(const Words& more) const
    {
        Words options{"--axes", "--size", "400x400"};
        options.insert(options.end(), more.begin(), more.end());
        return shown(options);
    }
    // A ball of an axis whose end lies there, in 400 x 400 pixels: arms are 40 of them long and
    // begin at 68, 332.
    static void expectBall(const Image& picture, double right, double up, const Pixel& color)
    {
        const int x = static_cast<int>(std::lround(68 + 40 * right));
        const int y = static_cast<int>(std::lround(332 - 40 * up));
        // Between the letter and the ball's edge, 12.4 pixels from its middle.
        for (const auto& [dx, dy] : {std::pair(-10, 0), {9, 0}, {0, -11}, {0, 10}}) {
            for (std::size_t c = 0; c < 4; ++c) {
                EXPECT_NEAR(picture.at(x + dx, y + dy)[c], color[c], 4) << x << ' ' << y;
            }
        }
    }
    // Where alpha is along a row, as the middles of what is not empty.
    static std::vector<double> lines(const Image& picture, int y)
    {
        std::vector<double> found;
        double sum = 0, moment = 0;
        for (int x = 0; x < picture.width; ++x) {
            const double alpha = picture.alpha(x, y);
            sum += alpha;
            moment += alpha * (x + 0.5);
            if (alpha == 0 && sum > 0) {
                found.push_back(moment / sum);
                sum = moment = 0;
            }
        }
        return found;
    }
    static void expectLines(const std::vector<double>& found, double first, double step, int count)
    {
        ASSERT_EQ(found.size(), static_cast<std::size_t>(count)) << testing::PrintToString(found);
        for (int i = 0; i < count; ++i) {
            EXPECT_NEAR(found[static_cast<std::size_t>(i)], first + i * step, 0.1) << i;
        }
    }

    const Words kFromAbove{"--grid", "--camera", "eye", "--up", "z"};
    Gltf file;
};

TEST_F(Guides, AxesTurnWithTheView)
{
    const Image front = axes({"--view", "0,0"});
    expectBall(front, 1, 0, kRed);
    expectBall(front, 0, 1, kGreen);
    // Towards the eye, and before the others.
    expectBall(front, 0, 0, kBlue);
    const Image right = axes({"--view", "90,0"});
    expectBall(right, 0, 0, kRed);
    expectBall(right, 0, 1, kGreen);
    expectBall(right, -1, 0, kBlue);
    const Image above = axes({"--view", "0,90"});
    expectBall(above, 1, 0, kRed);
    expectBall(above, 0, 0, kGreen);
    expectBall(above, 0, -1, kBlue);
    const double a = 0.6108652, sine = std::sin(a), cosine = std::cos(a);  // 35 degrees
    const Image between = axes({"--view", "35,35"});
    expectBall(between, cosine, -sine * sine, kRed);
    expectBall(between, 0, cosine, kGreen);
    expectBall(between, -sine, -sine * cosine, kBlue);
}

TEST_F(Guides, AxesAreThoseOfTheFile)
{
    const Image upright = axes({"--view", "0,0", "--up", "z"});
    expectBall(upright, 1, 0, kRed);
    expectBall(upright, 0, 1, kBlue);
    const Image lying = axes({"--view", "0,0", "--up", "x"});
    expectBall(lying, 0, 1, kRed);
    expectBall(lying, -1, 0, kGreen);
}

TEST_F(Guides, AxesLieInFrontOfEverything)
{
    file.nodes = R"({"mesh":0,"scale":[9,9,9]})";
    const Image picture = axes({"--camera", "eye"});
    EXPECT_EQ(picture.alpha(200, 200), 255);
    expectBall(picture, 1, 0, kRed);
    expectBall(picture, 0, 1, kGreen);
    expectBall(picture, 0, 0, kBlue);
}

// Nothing else of the picture knows of them.
TEST_F(Guides, AxesLeaveTheRestAsItIs)
{
    const Image with = shown({"--axes"}), without = shown({});
    for (int y = 0; y < 200; ++y) {
        for (int x = 0; x < 200; ++x) {
            if (x < 70 && y >= 130) continue;
            for (std::size_t c = 0; c < 4; ++c) {
                EXPECT_NEAR(with.at(x, y)[c], without.at(x, y)[c], 1) << x << ' ' << y;
            }
        }
    }
}

// The plate is two units wide: ten lines a fifth apart, and one more at each side.
TEST_F(Guides, GridLinesAreOnRoundMultiples)
{
    const Image picture = shown(kFromAbove);
    // Beside the plate.
    expectLines(lines(picture, 45), 40, 10, 13);
    for (int line = -6; line <= 6; ++line) {
        EXPECT_GT(picture.alpha(45, 100 + 10 * line), 0) << line;
        EXPECT_EQ(picture.alpha(45, 105 + 10 * line), 0) << line;
    }
    EXPECT_EQ(picture.left, 39);
    EXPECT_EQ(picture.top, 39);
    EXPECT_EQ(picture.at(100, 90), picture.at(105, 95)) << "a line on the plate";
}

TEST_F(Guides, GridLinesCountFromTheFilesOrigin)
{
    file.nodes = R"({"mesh":0,"translation":[0.13,0,0]})";
    expectLines(lines(shown(kFromAbove), 45), 40, 10, 14);
}

TEST_F(Guides, GridLinesAreAsFarApartAsIsAskedFor)
{
    Words options = kFromAbove;
    options.insert(options.end(), {"--grid-unit", "0.5"});
    expectLines(lines(shown(options), 45), 25, 25, 7);
    // Of lines a long way apart there is one, a little longer than the model.
    options.back() = "1e6";
    expectLines(lines(shown(options), 45), 100, 0, 1);
    options.back() = "1e-9";
    expectLines(
        lines(shown(options, "zebview: plate.gltf: --grid-unit makes more than 1000 lines\n"), 45),
        40, 10, 13);
}

TEST_F(Guides, TheSpacingIsTold)
{
    write("plate.gltf", file.text());
    const Outcome outcome = run({"plate.gltf", "-v", "--grid", "-o", "x.png", "--size", "8x8"});
    EXPECT_NE(outcome.err.find("zebview: plate.gltf: the grid's lines are 0.2 apart\n"),
              std::string::npos)
        << outcome.err;
}

TEST_F(Guides, WrongUsage)
{
    write("plate.gltf", file.text());
    EXPECT_EQ(run({"plate.gltf", "--grid-unit", "1", "-o", "x.png"}).status, 2);
    for (const char* const wrong : {"0", "-1", "x", "nan", "inf"}) {
        EXPECT_EQ(run({"plate.gltf", "--grid", "--grid-unit", wrong, "-o", "x.png"}).status, 2);
    }
    EXPECT_EQ(files(), Words{"plate.gltf"});
}

}  // namespace
