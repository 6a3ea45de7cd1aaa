// Grids share shaders and lights: two may be shaded, projected and sampled at once.
#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "hider/hits.h"
#include "shade/surface.h"
#include "shade/volume.h"
#include "state/quark.h"

using namespace zeb;

namespace
{

constexpr int kSize = 16;

class Threads : public testing::Test
{
protected:
    Threads()
    {
        attrib->surfaceShader = std::make_shared<PlasticSurface>();
        attrib->atmosphereShader = std::make_shared<FogVolume>();
        attrib->interpolation = kSmoothShading;
        attrib->lights.add(std::make_shared<AmbientLight>());
        attrib->lights.add(std::make_shared<DistantLight>());
        attrib->lights.add(std::make_shared<PointLight>());
        option.nearClip = 1;
        option.farClip = 100;
        option.perspective = true;
        toRaster.scale(8, 8, 1);
    }
    std::unique_ptr<Grid> make(float z) const
    {
        ArgList args;
        const float roughness[1] = {z / 10};
        args.add(ArgAssoc(kQRoughness, roughness, {}));
        auto grid = std::make_unique<Grid>(static_cast<unsigned short>(kSize),
                                           static_cast<unsigned short>(kSize), attrib, Transform(),
                                           static_cast<std::uint32_t>(z), false, false, args);
        for (int j = 0; j <= kSize; ++j) {
            for (int i = 0; i <= kSize; ++i) {
                Vertex& v = grid->vertex(i, j);
                v.P = Point(static_cast<float>(i) / kSize, static_cast<float>(j) / kSize,
                            z + static_cast<float>(i * j) / 100);
                v.dPdu = Point(1, 0, static_cast<float>(j) / 6);
                v.dPdv = Point(0, 1, static_cast<float>(i) / 6);
            }
        }
        return grid;
    }
    std::vector<PackedSample> render(float z, const RenderFrame& frame) const
    {
        const auto grid = make(z);
        grid->project(frame);
        grid->shadeOnDemand(frame);
        Arena arena;
        const Hits hits(frame, false, arena);
        std::vector<SamplePoint> samples(64);
        for (std::size_t k = 0; k < samples.size(); ++k) {
            samples[k].x = static_cast<float>(k % 8) + 0.5f;
            samples[k].y = static_cast<float>(k / 8) + 0.5f;
        }
        GridIterator cells(*grid);
        while (const MicroPolygon* cell = cells++) {
            for (SamplePoint& sample : samples) {
                float s, t;
                if (cell->locate(sample.x, sample.y, s, t)) hits.add(sample, *cell, s, t, 0);
            }
        }
        Wants wants(1, arena);
        ShadingCounts counts;
        for (const SamplePoint& sample : samples) hits.want(sample, wants);
        wants.shade(counts);
        EXPECT_GT(counts.shaded, 0u);
        std::vector<PackedSample> packed;
        for (const SamplePoint& sample : samples) packed.push_back(hits.resolve(sample));
        return packed;
    }

    std::shared_ptr<Attrib> attrib = std::make_shared<Attrib>();
    Option option;
    Matrix toRaster;
};

void expectSame(const std::vector<PackedSample>& a, const std::vector<PackedSample>& b)
{
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t k = 0; k < a.size(); ++k) {
        EXPECT_EQ(a[k].color, b[k].color);
        EXPECT_EQ(a[k].alpha, b[k].alpha);
        EXPECT_EQ(a[k].depth, b[k].depth);
    }
}

}  // namespace

TEST_F(Threads, TwoGridsAtOnceGiveWhatTheyGiveInTurn)
{
    const RenderFrame frame(option, toRaster);
    const auto first = render(2, frame), second = render(5, frame);
    EXPECT_EQ(first[27].alpha, 1);
    EXPECT_NE(first[27].color, second[27].color);
    for (int round = 0; round < 4; ++round) {
        std::vector<PackedSample> a, b;
        std::thread one([&] { a = render(2, frame); });
        std::thread other([&] { b = render(5, frame); });
        one.join();
        other.join();
        expectSame(a, first);
        expectSame(b, second);
    }
}
