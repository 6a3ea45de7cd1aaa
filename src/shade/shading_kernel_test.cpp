// The kernels against the classes that they stand for, bit for bit.

#include "shade/shading_kernel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

#include "shade/surface.h"
#include "shade/volume.h"
#include "state/quark.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

class ShadingKernels : public testing::Test
{
protected:
    float within(float a, float b) { return std::uniform_real_distribution<float>(a, b)(random); }
    bool chance(int n) { return random() % static_cast<unsigned>(n) == 0; }
    Color color() { return {within(-0.2f, 1.5f), within(0, 1), within(0, 1)}; }
    // Of any length, sometimes none at all, or along an axis.
    Point vector()
    {
        const float length = chance(4) ? std::exp2(within(-60, 60)) : 1;
        Point v(within(-1, 1), within(-1, 1), within(-1, 1));
        if (chance(8)) v.x = 0;
        if (chance(8)) v.y = -0.0f;
        if (chance(20)) v = gOrigin;
        return v * length;
    }
    SurfacePoint point()
    {
        SurfacePoint p;
        p.P = vector();
        p.dPdu = vector();
        p.dPdv = chance(20) ? p.dPdu : vector();
        p.N = vector();
        p.Cs = color();
        p.Os = chance(2) ? gWhite : color();
        return p;
    }
    // What a grid's shading finds out of that, once for a block's worth of points.
    static void complete(std::vector<SurfacePoint>& points, const ShadingBlock& block)
    {
        for (SurfacePoint& p : points) {
            p.I = p.P - (block.isPerspective ? gOrigin : Point(p.P.x, p.P.y, 0));
            p.Ng = rounded(Pointd(p.dPdu) ^ Pointd(p.dPdv));
            if (block.isFlipped) p.Ng = -p.Ng;
            if (!block.hasNormals) p.N = p.Ng;
            if (!block.hasColors) p.Cs = points[0].Cs;
            if (!block.hasOpacities) p.Os = points[0].Os;
        }
    }
    LightParms lightParms()
    {
        LightParms parms;
        parms.intensity = within(-1, 5);
        parms.color = color();
        parms.from = vector();
        parms.to = chance(9) ? parms.from : vector();
        return parms;
    }
    std::shared_ptr<Light> light()
    {
        const LightParms parms = lightParms();
        switch (random() % 4) {
            case 0:
                return std::make_shared<AmbientLight>(parms);
            case 1:
                return std::make_shared<DistantLight>(parms);
            case 2:
                return std::make_shared<PointLight>(parms);
            default: {
                SpotParms spot;
                static_cast<LightParms&>(spot) = parms;
                spot.coneangle = within(0, chance(5) ? 400 : 90);
                spot.conedeltaangle = within(-10, 90);
                spot.beamdistribution = chance(2) ? 2 : within(-1, 5);
                auto made = std::make_shared<SpotLight>(spot);
                made->instance(ArgList());
                return made;
            }
        }
    }
    std::unique_ptr<Surface> surface()
    {
        const float roughness = chance(9) ? 0 : within(0.01f, 1);
        switch (random() % 4) {
            case 0:
                return std::make_unique<ConstantSurface>();
            case 1: {
                auto made = std::make_unique<MatteSurface>();
                made->ka = within(0, 2);
                made->kd = within(0, 2);
                return made;
            }
            case 2: {
                auto made = std::make_unique<MetalSurface>();
                made->ka = within(0, 2);
                made->ks = within(0, 2);
                made->roughness = roughness;
                return made;
            }
            default: {
                auto made = std::make_unique<PlasticSurface>();
                made->ka = within(0, 2);
                made->kd = within(0, 2);
                made->ks = within(0, 2);
                made->roughness = roughness;
                made->specularcolor = color();
                return made;
            }
        }
    }
    std::unique_ptr<Volume> volume()
    {
        switch (random() % 3) {
            case 0: {
                auto made = std::make_unique<DepthCueVolume>();
                made->hither = within(-1, 1);
                made->yon = chance(5) ? made->hither : within(-1, 3);
                made->color = color();
                return made;
            }
            case 1: {
                auto made = std::make_unique<FogVolume>();
                made->distance = chance(5) ? 0 : within(-2, 5);
                made->color = color();
                return made;
            }
            default:
                return nullptr;
        }
    }
    static void put(ShadingBlock& block, int k, const SurfacePoint& p)
    {
        const float values[6][3] = {{p.P.x, p.P.y, p.P.z},          {p.dPdu.x, p.dPdu.y, p.dPdu.z},
                                    {p.dPdv.x, p.dPdv.y, p.dPdv.z}, {p.N.x, p.N.y, p.N.z},
                                    {p.Cs.r, p.Cs.g, p.Cs.b},       {p.Os.r, p.Os.g, p.Os.b}};
        ShadingBlock::Planes* const planes[6] = {&block.P, &block.dPdu, &block.dPdv,
                                                 &block.N, &block.Cs,   &block.Os};
        for (int n = 0; n < 6; ++n) {
            for (int c = 0; c < 3; ++c) (*planes[n])[c][k] = values[n][c];
        }
    }
    // As the classes see it.
    static Color plain(const Surface& surface, const Volume* volume, bool coversAll, SurfacePoint p)
    {
        surface.evaluate(p);
        if (!volume) return p.Ci;
        VolumePoint seen{p.P, p.I, p.Ci, p.Oi, coversAll ? gWhite : p.Oi};
        volume->evaluate(seen);
        return seen.Ci;
    }
    static bool same(float a, float b)
    {
        return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
    }

    std::mt19937 random{11};
    zebtest::Reports reports;
};

}  // namespace

TEST_F(ShadingKernels, GiveTheBitsThatTheClassesGive)
{
    int shaded = 0;
    for (int round = 0; round < 2000; ++round) {
        const auto surface = this->surface();
        const auto volume = this->volume();
        List<std::shared_ptr<Light>> lights;
        std::vector<LightRecord> lightRecords;
        for (unsigned k = random() % 5; k > 0; --k) lights.add(light());
        for (const auto& light : lights) {
            ASSERT_TRUE(light->describe(lightRecords.emplace_back()));
        }
        SurfaceRecord surfaceRecord;
        VolumeRecord volumeRecord;
        ASSERT_TRUE(surface->describe(surfaceRecord));
        ASSERT_TRUE(!volume || volume->describe(volumeRecord));
        volumeRecord.coversAll = chance(2);

        ShadingBlock block;
        block.count = 1 + static_cast<int>(random() % ShadingBlock::kMost);
        std::vector<SurfacePoint> points;
        for (int k = 0; k < ShadingBlock::kMost; ++k) {
            points.push_back(k < block.count ? point() : points.back());
            points.back().lights = &lights;
            put(block, k, points.back());
        }
        block.isPerspective = chance(2);
        block.isFlipped = chance(2);
        block.hasNormals = chance(2);
        block.hasColors = chance(2);
        block.hasOpacities = chance(2);
        complete(points, block);
        const std::size_t before = reports.size();
        std::vector<Color> expected;
        for (const SurfacePoint& p : points) {
            expected.push_back(plain(*surface, volume.get(), volumeRecord.coversAll, p));
        }
        const bool reported = reports.size() > before;
        for (const int lanes : {1, 4, 8, 16}) {
            const ShadingKernel kernel = shadingKernel(lanes);
            if (!kernel) continue;
            const bool done =
                kernel.shade(surfaceRecord, lightRecords.data(),
                             static_cast<int>(lightRecords.size()), volumeRecord, block);
            EXPECT_EQ(done, !reported) << "round " << round << ", " << lanes << " lanes";
            if (!done) continue;
            shaded += block.count;
            for (int k = 0; k < block.count; ++k) {
                const Color& c = expected[static_cast<std::size_t>(k)];
                const bool equal = same(block.Ci[0][k], c.r) && same(block.Ci[1][k], c.g) &&
                                   same(block.Ci[2][k], c.b);
                ASSERT_TRUE(equal)
                    << "round " << round << ", " << lanes << " lanes, point " << k << ", surface "
                    << surfaceRecord.kind << ": " << block.Ci[0][k] << ", not " << c.r;
            }
        }
    }
    EXPECT_GT(shaded, 50000);
}

TEST_F(ShadingKernels, LeaveWhatNeedsAReportToTheClasses)
{
    LightParms parms;
    parms.from = Point(1, 2, 3);
    LightRecord record;
    ASSERT_TRUE(PointLight(parms).describe(record));
    SurfaceRecord surface;
    ASSERT_TRUE(MatteSurface().describe(surface));
    ShadingBlock block;
    block.count = 1;
    SurfacePoint p;
    p.P = Point(1, 2, 5);
    p.dPdu = Point(1, 0, 0);
    p.dPdv = Point(0, -1, 0);
    for (int k = 0; k < ShadingBlock::kMost; ++k) put(block, k, p);
    EXPECT_TRUE(shadingKernel().shade(surface, &record, 1, {}, block));
    p.P = Point(1, 2, 3);
    // Light that comes from no direction is in the half-space: its cosine is 0.
    for (int k = 0; k < ShadingBlock::kMost; ++k) put(block, k, p);
    EXPECT_FALSE(shadingKernel().shade(surface, &record, 1, {}, block));
}
