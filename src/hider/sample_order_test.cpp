// Many hits at one sample: what comes of them is what inserting one after the other into a list
// gives, however many there are.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "hider/hits.h"
#include "support/grids.h"
#include "zebcore/zebcore.h"

using namespace zeb;

namespace
{

// A surface that covers the sample, in one channel.
struct Layer {
    float depth, color, opacity;
    bool matte = false;

    bool opaque() const { return double{opacity} > 0.9999999999; }
};

// The hits of a sample as a list, and what they resolve to.
class List
{
public:
    void add(const Layer& layer)
    {
        std::size_t place = 0;
        if (!fList.empty() && !(layer.depth < fList[0].depth)) {
            std::size_t p = 0;
            while (p + 1 < fList.size() && fList[p + 1].depth < layer.depth) {
                if (fList[++p].opaque()) return;
            }
            place = p + 1;
        }
        fList.insert(fList.begin() + static_cast<std::ptrdiff_t>(place), layer);
        if (layer.opaque()) fList.resize(place + 1, layer);
    }

    void resolve()
    {
        double T = 1;
        for (const Layer& layer : fList) {
            if (layer.matte) break;
            color += T * double{layer.color} * double{layer.opacity};
            T *= 1 - double{layer.opacity};
            if (depth >= 1) depth = double{layer.depth};
        }
        alpha = 1 - T;
    }

    double color = 0, alpha = 0, depth = 1;

private:
    std::vector<Layer> fList;
};

class SampleOrderTest : public testing::Test
{
protected:
    SampleOrderTest()
    {
        zebReset();
        option.projection = false;
        for (auto* attrib : {&fPlain, &fMatte}) *attrib = std::make_shared<Attrib>();
        fMatte->matte = true;
    }
    ~SampleOrderTest() override { zebReset(); }

    std::unique_ptr<Grid> grid(const Layer& layer) const
    {
        auto made = std::make_unique<Grid>(
            static_cast<unsigned short>(1), static_cast<unsigned short>(1),
            layer.matte ? fMatte : fPlain, Transform(), 1u, false, false, ArgList());
        for (const int k : {0, 1, 2, 3}) {
            const int i = k % 2, j = k / 2;
            made->vertex(i, j).P = Point(static_cast<float>(i), static_cast<float>(j), layer.depth);
            made->setColor(i, j, Color(layer.color, layer.color, layer.color));
            made->setOpacity(i, j, Color(layer.opacity, layer.opacity, layer.opacity));
        }
        zebtest::projectAsTheyAre(*made);
        return made;
    }

    // Taken one after the other, and in any order with their ranks.
    void expectAsListed(const std::vector<Layer>& layers)
    {
        const RenderFrame frame(option, Matrix());
        Arena arena;
        Sample sample;
        List list;
        std::vector<std::unique_ptr<Grid>> grids;
        std::vector<std::uint32_t> order;
        for (const Layer& layer : layers) {
            sample.add(SampleHit(double{layer.depth}, Color(layer.color, layer.color, layer.color),
                                 Color(layer.opacity, layer.opacity, layer.opacity), layer.matte),
                       arena);
            list.add(layer);
            order.push_back(static_cast<std::uint32_t>(grids.size()));
            grids.push_back(grid(layer));
        }
        list.resolve();
        const PackedSample packed = sample.pack(1, true);
        const double tolerance = 1e-5 * (1 + std::fabs(list.color));
        ASSERT_NEAR(packed.color.r, list.color, tolerance) << layers.size();
        ASSERT_NEAR(packed.alpha, list.alpha, 1e-5 * (1 + std::fabs(list.alpha)));
        ASSERT_EQ(packed.depth, list.depth);

        std::shuffle(order.begin(), order.end(), fRandom);
        const auto isMoreThanOpaque = [](const Layer& layer) { return layer.opacity > 1; };
        const Hits hits(frame, std::any_of(layers.begin(), layers.end(), isMoreThanOpaque), arena);
        SamplePoint point;
        for (const std::uint32_t k : order) hits.add(point, MicroPolygon(*grids[k]), 0, 0, k);
        const PackedSample resolved = hits.resolve(point);
        ASSERT_EQ(resolved.color, packed.color) << layers.size();
        ASSERT_EQ(resolved.alpha, packed.alpha) << layers.size();
        ASSERT_EQ(resolved.depth, packed.depth) << layers.size();
    }

    // Stacks of up to 60 layers; a share of them are mattes, and a share as opaque as said.
    struct Stacks {
        double mattes = 0, opaques = 0;
        float opacity = 1;           // of the opaque ones
        float nearest = 1.0f / 128;  // and from there on by 1/64
        int depths = 60;             // how many there are: fewer than layers make ties
    };
    void expectStacksAsListed(const Stacks& stacks)
    {
        std::mt19937 random(static_cast<unsigned>(stacks.depths));
        std::uniform_real_distribution<double> unit(0, 1);
        for (int round = 0; round < 2000 && !HasFatalFailure(); ++round) {
            std::vector<Layer> layers;
            for (int k = 0, n = 1 + round % 60; k < n; ++k) {
                const auto step = static_cast<float>(unit(random) * stacks.depths);
                Layer layer{stacks.nearest + std::floor(step) / 64, static_cast<float>(k + 1),
                            static_cast<float>(0.05 + 0.1 * unit(random))};
                layer.matte = unit(random) < stacks.mattes;
                if (unit(random) < stacks.opaques) layer.opacity = stacks.opacity;
                layers.push_back(layer);
            }
            expectAsListed(layers);
        }
    }

private:
    Option option;
    std::mt19937 fRandom{1};
    std::shared_ptr<Attrib> fPlain, fMatte;
};

}  // namespace

TEST_F(SampleOrderTest, LayersAreSortedByDepth) { expectStacksAsListed({}); }

TEST_F(SampleOrderTest, TiesGoBehindTheHeadButBeforeLaterOnes)
{
    expectStacksAsListed({.depths = 1});
    expectStacksAsListed({.depths = 5});
    expectStacksAsListed({.depths = 12});
}

TEST_F(SampleOrderTest, TheFirstMatteEndsTheStack)
{
    expectStacksAsListed({.mattes = 0.05});
    expectStacksAsListed({.mattes = 0.2, .depths = 5});
    expectStacksAsListed({.mattes = 1, .depths = 5});
}

TEST_F(SampleOrderTest, AnOpaqueLayerEndsTheStack)
{
    expectStacksAsListed({.opaques = 0.05});
    expectStacksAsListed({.opaques = 0.2, .depths = 5});
    expectStacksAsListed({.opaques = 1, .depths = 5});
}

TEST_F(SampleOrderTest, OpaqueMattesAndTiesTogether)
{
    expectStacksAsListed({.mattes = 0.1, .opaques = 0.1, .depths = 5});
    expectStacksAsListed({.mattes = 0.5, .opaques = 0.5, .depths = 12});
}

// From 1 on the depths of later layers replace it.
TEST_F(SampleOrderTest, DepthIsThatOfTheNearestLayerOrFrom1OnOfTheLast)
{
    expectStacksAsListed({.nearest = 0.9f, .depths = 40});
    expectStacksAsListed({.nearest = 1, .depths = 40});
    expectStacksAsListed({.mattes = 0.1, .nearest = 1, .depths = 40});
}

// What is more than opaque lets through less than nothing, and what is kept behind it shows.
TEST_F(SampleOrderTest, BehindAHeadThatIsMoreThanOpaqueLaterLayersAreKept)
{
    expectStacksAsListed({.opaques = 0.05, .opacity = 1.157f});
    expectStacksAsListed({.opaques = 0.2, .opacity = 1.5f, .depths = 5});
    expectStacksAsListed({.opaques = 1, .opacity = 1.25f, .depths = 12});
    expectStacksAsListed({.mattes = 0.1, .opaques = 0.3, .opacity = 1.157f, .depths = 5});
}

TEST_F(SampleOrderTest, BehindAnOpaqueHeadAtADepthOf1LaterDepthsCount)
{
    expectStacksAsListed({.opaques = 0.3, .nearest = 0.9f, .depths = 10});
    expectStacksAsListed({.opaques = 0.3, .nearest = 1, .depths = 10});
    expectStacksAsListed({.opaques = 1, .nearest = 1, .depths = 40});
}
