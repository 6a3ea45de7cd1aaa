// When adaptive sampling has seen enough of a pixel, and what such a pixel weighs.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <set>
#include <vector>

#include "hider/bucket.h"

using namespace zeb;

namespace
{

// Keeps the last colour it was sent.
struct Device : Display {
    void span(long, long, long, const std::uint32_t* words) override
    {
        std::memcpy(color, words, sizeof color);
    }
    float color[3] = {};
};

struct Position {
    double x, y;
};
std::vector<Position> gPositions;
float recording(float dx, float dy, float, float)
{
    gPositions.push_back({dx + 0.5, dy + 0.5});
    return 1;
}

// The pixel 0 ... 1, seen through a filter that takes every sample for the same.
class AdaptiveStop : public testing::Test
{
protected:
    AdaptiveStop()
    {
        attrib->interpolation = kSmoothShading;
        option.projection = false;
        option.colorQuantizer = {0, 0, 0, 0};
        option.filterXwidth = option.filterYwidth = 1;
        option.pixelFilter = recording;
    }
    std::shared_ptr<Grid> grid(unsigned short n, float x0, float x1) const
    {
        auto made = std::make_shared<Grid>(n, n, attrib, Transform(), 1, false, false, ArgList());
        for (int j = 0; j <= n; ++j) {
            for (int i = 0; i <= n; ++i) {
                const auto u = static_cast<float>(i) / static_cast<float>(n);
                const auto v = static_cast<float>(j) / static_cast<float>(n);
                made->vertex(i, j).P = Point(x0 + (x1 - x0) * u, 3 * v - 1, 0.5f);
            }
        }
        made->project(RenderFrame(option, Matrix()));
        return made;
    }
    void render(const std::vector<std::shared_ptr<Grid>>& grids)
    {
        gPositions.clear();
        const RenderFrame frame(option, Matrix());
        AdaptiveBucket bucket(frame, 0, 0, 0, 0);
        for (const auto& g : grids) bucket.add(std::make_shared<Piece>(g));
        bucket.render(device, scratch);
    }

    // Colours that change evenly: red along x, green along y, blue along both.
    static constexpr int kChannels = 3;
    struct Slopes {
        double red, green, blue;
    };
    static double channel(const Slopes& s, int k, double x, double y)
    {
        return k == 0 ? s.red * x : k == 1 ? s.green * y : s.blue * (x + y);
    }
    // Renders up to a variance, and leaves the samples' places in gPositions.
    void renderSlopes(const Slopes& s, double variance)
    {
        option.adaptiveThreshold = static_cast<float>(variance);
        const auto cell = grid(1, -1, 2);
        for (const int j : {0, 1}) {
            for (const int i : {0, 1}) {
                const Point& P = cell->vertex(i, j).P;
                const auto value = [&](int k) {
                    return static_cast<float>(channel(s, k, double{P.x}, double{P.y}));
                };
                cell->setColor(i, j, Color(value(0), value(1), value(2)));
            }
        }
        render({cell});
    }

    Option option;
    std::shared_ptr<Attrib> attrib = std::make_shared<Attrib>();
    Device device;
    BucketScratch scratch;
};

constexpr double kQuantiles[12] = {1.239,   5.229,   10.196,  15.678, 21.4386, 27.4208,
                                   33.5693, 39.8488, 46.2349, 52.71,  59.2607, 65.8768};

}  // namespace

// Eight samples a round, two in each quarter of the pixel: m in each after so many rounds. The
// quarters' variances, divided by m, are averaged; the channel that varies most decides; and the
// round's own share of the variance asked for is what it must not exceed.
TEST_F(AdaptiveStop, APixelIsDoneWhenNoChannelVariesTooMuch)
{
    for (const Slopes& s : {Slopes{1, 0.4, 0.3}, Slopes{0.3, 1, 0.4}, Slopes{0.3, 0.4, 0.7}}) {
        renderSlopes(s, 1e-10);
        const std::vector<Position> all = gPositions;
        ASSERT_EQ(all.size(), 96u);
        const auto largest = [&](int rounds) {
            double result = 0;
            for (int k = 0; k < kChannels; ++k) {
                double sum[4] = {}, squares[4] = {}, quarters = 0;
                for (std::size_t i = 0; i < 8u * static_cast<std::size_t>(rounds); ++i) {
                    const double c = channel(s, k, all[i].x, all[i].y);
                    sum[i % 4] += c;
                    squares[i % 4] += c * c;
                }
                const double m = 2 * rounds;
                for (int q = 0; q < 4; ++q) quarters += squares[q] / m - sum[q] / m * (sum[q] / m);
                result = std::max(result, quarters / 4);
            }
            return result;
        };
        std::set<std::size_t> seen;
        for (double variance = 1e-3; variance < 2; variance *= 1.05) {
            int rounds = 1;
            while (rounds < 12 &&
                   largest(rounds) > variance / kQuantiles[11] * kQuantiles[rounds - 1]) {
                ++rounds;
            }
            renderSlopes(s, variance);
            EXPECT_EQ(gPositions.size(), 8u * static_cast<std::size_t>(rounds)) << variance;
            seen.insert(gPositions.size());
        }
        EXPECT_GE(seen.size(), 11u) << "from one round to twelve";
    }
}

// Two pixels in reach: a white one that is done after 8 samples, and one that takes 96 and is half
// white on average. Each weighs as much as a sample of it does.
TEST_F(AdaptiveStop, APixelWeighsTheMeanOfItsSamples)
{
    option.filterXwidth = 2;
    option.adaptiveThreshold = 1e-6f;
    attrib->interpolation = kConstantShading;
    const auto white = grid(1, -3, 0.5f), noise = grid(60, 0.5f, 3.5f);
    white->setColor(0, 0, gWhite);
    for (int j = 0; j < 60; ++j) {
        for (int i = 0; i < 60; ++i) noise->setColor(i, j, (i + j) % 2 ? gWhite : gBlack);
    }
    render({white, noise});
    ASSERT_EQ(gPositions.size(), 8u + 96u);
    EXPECT_NEAR(device.color[0], (1 + 0.5) / 2, 0.06);
}
