#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "geom/grid.h"
#include "shade/surface.h"
#include "shade/volume.h"
#include "state/error.h"
#include "state/quark.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

// Keeps every point it is asked to shade, and colours it by how many there were before.
class ProbeSurface : public Surface
{
public:
    explicit ProbeSurface(std::vector<SurfacePoint>* seen) : fSeen(seen) {}
    void evaluate(SurfacePoint& point) const override
    {
        fSeen->push_back(point);
        roughnesses->push_back(roughness);
        point.Ci = Color(static_cast<float>(fSeen->size()), point.u, point.v);
        point.Oi = Color(0.5f, 0.25f, 0.125f);
    }
    ParmList parameters() override { return {{kQRoughness, &roughness}, {kQKa, &ka}}; }
    std::unique_ptr<Surface> clone() const override
    {
        return std::make_unique<ProbeSurface>(*this);
    }

    float roughness = 0.1f, ka = 1;
    std::shared_ptr<std::vector<float>> roughnesses = std::make_shared<std::vector<float>>();

private:
    std::vector<SurfacePoint>* fSeen;
};

class ProbeVolume : public Volume
{
public:
    explicit ProbeVolume(std::vector<VolumePoint>* seen) : fSeen(seen) {}
    void evaluate(VolumePoint& point) const override
    {
        fSeen->push_back(point);
        point.Ci = Color(7, 8, 9);
        point.Oi *= opacity;
    }

    Color opacity = gWhite;

private:
    std::vector<VolumePoint>* fSeen;
};

class GridShading : public testing::Test
{
protected:
    GridShading() : surface(std::make_shared<ProbeSurface>(&seen))
    {
        zebReset();
        attrib = std::make_shared<Attrib>();
        attrib->surfaceShader = surface;
        attrib->interpolation = kSmoothShading;
        option.perspective = true;
    }
    ~GridShading() override { zebReset(); }

    // A grid over x = i, y = j, z = 10; its derivatives cross to +z.
    Grid& make(unsigned short nu, unsigned short nv, bool flip = false, bool triangular = false)
    {
        grid = std::make_unique<Grid>(nu, nv, attrib, Transform(), 1, flip, triangular, args);
        for (int j = 0; j <= nv; ++j) {
            for (int i = 0; i < grid->vertexCount(j); ++i) {
                Vertex& v = grid->vertex(i, j);
                v.P = Point(static_cast<float>(i), static_cast<float>(j), 10);
                v.dPdu = Point(2, 0, 0);
                v.dPdv = Point(0, 3, 0);
            }
        }
        return *grid;
    }
    void shade()
    {
        frame = std::make_unique<RenderFrame>(option, Matrix());
        grid->shadeOnDemand(*frame);
        grid->shade(counts);
    }
    template <std::size_t N>
    void give(unsigned short token, const float (&values)[N], const ArgCounts& perFace)
    {
        args.add(ArgAssoc(token, values, perFace));
    }

    std::vector<SurfacePoint> seen;
    std::vector<VolumePoint> fogged;
    std::shared_ptr<ProbeSurface> surface;
    std::shared_ptr<Attrib> attrib;
    Option option;
    std::unique_ptr<RenderFrame> frame;
    ShadingCounts counts;
    ArgList args;
    std::unique_ptr<Grid> grid;
    zebtest::Reports reports;
};

}  // namespace

TEST_F(GridShading, SmoothShadesEveryVertexRowByRow)
{
    make(2, 4);
    shade();
    ASSERT_EQ(seen.size(), 15u);
    EXPECT_EQ(seen[4].P, Point(1, 1, 10));
    EXPECT_EQ(seen[4].u, 0.5f);
    EXPECT_EQ(seen[4].v, 0.25f);
    EXPECT_EQ(grid->color(1, 1), Color(5, 0.5f, 0.25f));
}

TEST_F(GridShading, SurfaceColourAndOpacityComeFromTheAttributes)
{
    attrib->surfaceColor = Color(0.1f, 0.2f, 0.3f);
    attrib->surfaceOpacity = Color(0.4f, 0.5f, 0.6f);
    make(1, 1);
    shade();
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(seen[0].Cs, Color(0.1f, 0.2f, 0.3f));
    EXPECT_EQ(seen[0].Os, Color(0.4f, 0.5f, 0.6f));
}

TEST_F(GridShading, InPerspectiveTheEyeIsTheOrigin)
{
    make(1, 1);
    shade();
    ASSERT_EQ(seen.size(), 4u);
    EXPECT_EQ(seen[3].E, gOrigin);
    EXPECT_EQ(seen[3].I, Point(1, 1, 10));
}

TEST_F(GridShading, WithoutPerspectiveTheLineOfSightRunsAlongZ)
{
    option.perspective = false;
    make(1, 1);
    shade();
    ASSERT_EQ(seen.size(), 4u);
    EXPECT_EQ(seen[3].E, Point(1, 1, 0));
    EXPECT_EQ(seen[3].I, Point(0, 0, 10));
}

TEST_F(GridShading, TheGeometricNormalIsTheCrossProductOfTheDerivatives)
{
    make(1, 1);
    shade();
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(seen[0].dPdu, Point(2, 0, 0));
    EXPECT_EQ(seen[0].dPdv, Point(0, 3, 0));
    EXPECT_EQ(seen[0].Ng, Point(0, 0, 6));
    EXPECT_EQ(seen[0].N, Point(0, 0, 6));
}

TEST_F(GridShading, AReversedOrientationTurnsTheNormalRound)
{
    make(1, 1, true);
    shade();
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(seen[0].Ng, Point(0, 0, -6));
    EXPECT_EQ(seen[0].N, Point(0, 0, -6));
}

TEST_F(GridShading, TextureCoordinatesAreInterpolatedOverTheCorners)
{
    const float s[4] = {0, 4, 8, 12}, t[4] = {1, 1, 3, 7};
    std::copy(s, s + 4, attrib->textureS);
    std::copy(t, t + 4, attrib->textureT);
    make(2, 2);
    shade();
    ASSERT_EQ(seen.size(), 9u);
    EXPECT_EQ(seen[4].s, 6);
    EXPECT_EQ(seen[4].t, 3);
    EXPECT_EQ(seen[2].s, 4);
    EXPECT_EQ(seen[6].t, 3);
}

TEST_F(GridShading, VaryingNormalsReplaceTheShadingNormalOnly)
{
    const float n[12] = {1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 1, 1};
    give(kQNormal, n, {.varying = 4, .uniform = 1, .vertex = 4});
    make(2, 2);
    shade();
    ASSERT_EQ(seen.size(), 9u);
    EXPECT_EQ(seen[4].N, Point(0.5f, 0.5f, 0.5f));
    EXPECT_EQ(seen[4].Ng, Point(0, 0, 6));
}

TEST_F(GridShading, VaryingColourAndOpacityReplaceTheAttributes)
{
    const float c[12] = {1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 1, 1};
    const float o[12] = {0, 0, 0, 1, 1, 1, 0, 0, 0, 1, 1, 1};
    give(kQColor, c, {.varying = 4, .uniform = 1, .vertex = 4});
    give(kQOpacity, o, {.varying = 4, .uniform = 1, .vertex = 4});
    make(2, 2);
    shade();
    ASSERT_EQ(seen.size(), 9u);
    EXPECT_EQ(seen[4].Cs, Color(0.5f, 0.5f, 0.5f));
    EXPECT_EQ(seen[0].Cs, Color(1, 0, 0));
    EXPECT_EQ(seen[5].Os, Color(1, 1, 1));
    EXPECT_EQ(seen[3].Os, Color(0, 0, 0));
}

TEST_F(GridShading, AUniformVariableOverridesAShaderParameter)
{
    const float r[1] = {0.75f};
    args.add(ArgAssoc(kQRoughness, r, {}));
    make(1, 1);
    shade();
    EXPECT_EQ(*surface->roughnesses, std::vector<float>(4, 0.75f));
    EXPECT_EQ(surface->roughness, 0.1f) << "the declared shader keeps its own";
}

TEST_F(GridShading, AVaryingVariableIsInterpolatedIntoAShaderParameter)
{
    const unsigned short token = zebDeclare("grid shading: sheen", 0xD02, 0xE01);
    struct Sheen : ProbeSurface {
        unsigned short name;
        float sheen = 0;
        std::shared_ptr<std::vector<float>> sheens = std::make_shared<std::vector<float>>();
        Sheen(std::vector<SurfacePoint>* s, unsigned short n) : ProbeSurface(s), name(n) {}
        void evaluate(SurfacePoint& p) const override
        {
            sheens->push_back(sheen);
            ProbeSurface::evaluate(p);
        }
        ParmList parameters() override { return {{name, &sheen}}; }
        std::unique_ptr<Surface> clone() const override { return std::make_unique<Sheen>(*this); }
    };
    auto probe = std::make_shared<Sheen>(&seen, token);
    attrib->surfaceShader = probe;
    const float corners[4] = {0, 2, 4, 6};
    give(token, corners, {.varying = 4, .uniform = 1, .vertex = 4});
    make(2, 2);
    shade();
    EXPECT_EQ(*probe->sheens, (std::vector<float>{0, 1, 2, 2, 3, 4, 4, 5, 6}));
}

TEST_F(GridShading, ATriangularGridIsFoldedBackOntoItsHypotenuse)
{
    make(4, 2, false, true);  // rows of 5, 5 and 3 vertices
    shade();
    ASSERT_EQ(seen.size(), 13u);
    EXPECT_EQ(seen[9].u, 1);  // column 4 of row 1: v gives way
    EXPECT_EQ(seen[9].v, 0);
    EXPECT_EQ(seen[8].u, 0.75f);
    EXPECT_EQ(seen[8].v, 0.25f);
    for (const SurfacePoint& p : seen) EXPECT_LE(p.u + p.v, 1);
}

TEST_F(GridShading, ATriangularGridHigherThanWideGivesWayInU)
{
    make(2, 4, false, true);  // rows of 3, 3, 3, 2 and 2 vertices
    shade();
    for (int j = 0, k = 0; j <= 4; ++j) {
        for (int i = 0; i < grid->vertexCount(j); ++i, ++k) {
            const float v = static_cast<float>(j) / 4, u = static_cast<float>(i) / 2;
            ASSERT_LT(static_cast<std::size_t>(k), seen.size());
            EXPECT_EQ(seen[static_cast<std::size_t>(k)].v, v);
            EXPECT_EQ(seen[static_cast<std::size_t>(k)].u, u + v > 1 ? 1 - v : u);
        }
    }
}

TEST_F(GridShading, TheAtmosphereSeesTheSurfacesResult)
{
    attrib->atmosphereShader = std::make_shared<ProbeVolume>(&fogged);
    make(1, 1);
    shade();
    ASSERT_EQ(fogged.size(), 4u);
    EXPECT_EQ(fogged[1].P, Point(1, 0, 10));
    EXPECT_EQ(fogged[1].I, Point(1, 0, 10));
    EXPECT_EQ(fogged[1].Ci, Color(2, 1, 0));
    EXPECT_EQ(fogged[1].Oi, Color(0.5f, 0.25f, 0.125f));
    EXPECT_EQ(grid->color(1, 0), Color(7, 8, 9));
}

TEST_F(GridShading, ConstantShadesEachMicropolygonOnceAtItsMiddle)
{
    attrib->interpolation = kConstantShading;
    make(2, 4);
    shade();
    ASSERT_EQ(seen.size(), 8u);
    EXPECT_EQ(seen[3].P, Point(1.5f, 1.5f, 10));
    EXPECT_EQ(seen[3].u, 0.75f);
    EXPECT_EQ(seen[3].v, 0.375f);
    EXPECT_EQ(seen[3].I, Point(1.5f, 1.5f, 10));
    EXPECT_EQ(grid->color(1, 1), Color(4, 0.75f, 0.375f));
}

TEST_F(GridShading, ConstantShadingSeesFourTimesTheDerivatives)
{
    attrib->interpolation = kConstantShading;
    make(1, 1);
    shade();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].dPdu, Point(8, 0, 0));
    EXPECT_EQ(seen[0].dPdv, Point(0, 12, 0));
    EXPECT_EQ(seen[0].Ng, Point(0, 0, 96));
    EXPECT_EQ(seen[0].P, Point(0.5f, 0.5f, 10));
}

TEST_F(GridShading, ConstantShadingTurnsTheNormalRoundToo)
{
    attrib->interpolation = kConstantShading;
    make(1, 1, true);
    shade();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].Ng, Point(0, 0, -96));
    EXPECT_EQ(seen[0].N, Point(0, 0, -96));
}

TEST_F(GridShading, ConstantShadingOfATriangularGridFoldsBackItsMiddles)
{
    attrib->interpolation = kConstantShading;
    make(2, 2, false, true);  // 2 + 1 micropolygons
    shade();
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[0].u, 0.25f);
    EXPECT_EQ(seen[0].v, 0.25f);
    EXPECT_EQ(seen[1].u, 0.75f);
    EXPECT_EQ(seen[1].v, 0.25f);
    EXPECT_EQ(seen[2].u, 0.25f);
    EXPECT_EQ(seen[2].v, 0.75f);
}

TEST_F(GridShading, ConstantShadingOfAWideTriangularGridGivesWayInV)
{
    attrib->interpolation = kConstantShading;
    make(4, 2, false, true);  // 4 + 2 micropolygons
    shade();
    ASSERT_EQ(seen.size(), 6u);
    EXPECT_EQ(seen[3].u, 0.875f);  // v was 0.25
    EXPECT_EQ(seen[3].v, 0.125f);
}

TEST_F(GridShading, ConstantShadingOfAHighTriangularGridGivesWayInU)
{
    attrib->interpolation = kConstantShading;
    make(2, 4, false, true);  // 2 + 2 + 1 + 1 micropolygons
    shade();
    ASSERT_EQ(seen.size(), 6u);
    EXPECT_EQ(seen[3].v, 0.375f);
    EXPECT_EQ(seen[3].u, 0.625f);  // u was 0.75
}

TEST_F(GridShading, ConstantShadingWithAnAtmosphereStoresItsColour)
{
    attrib->interpolation = kConstantShading;
    attrib->atmosphereShader = std::make_shared<ProbeVolume>(&fogged);
    make(1, 1);
    shade();
    ASSERT_EQ(fogged.size(), 1u);
    EXPECT_EQ(fogged[0].P, Point(0.5f, 0.5f, 10));
    EXPECT_EQ(fogged[0].I, Point(0.5f, 0.5f, 10));
    EXPECT_EQ(fogged[0].Ci, Color(1, 0.5f, 0.5f));
    EXPECT_EQ(grid->color(0, 0), Color(7, 8, 9));
}

TEST_F(GridShading, ConstantShadingTakesTextureCoordinatesAtTheMiddle)
{
    attrib->interpolation = kConstantShading;
    const float s[4] = {0, 4, 8, 12}, t[4] = {1, 1, 3, 7};
    std::copy(s, s + 4, attrib->textureS);
    std::copy(t, t + 4, attrib->textureT);
    make(2, 4);
    shade();
    ASSERT_EQ(seen.size(), 8u);
    // Of (3/4, 3/8): s = 4 u + 8 v, t = 1 + 2 v + 4 u v.
    EXPECT_EQ(seen[3].s, 6);
    EXPECT_EQ(seen[3].t, 2.875f);
}

TEST_F(GridShading, ConstantShadingLooksAtTheMiddleFromTheEye)
{
    attrib->interpolation = kConstantShading;
    for (const bool perspective : {true, false}) {
        seen.clear();
        option.perspective = perspective;
        make(2, 4);
        shade();
        ASSERT_EQ(seen.size(), 8u);
        EXPECT_EQ(seen[3].E, perspective ? gOrigin : Point(1.5f, 1.5f, 0));
        EXPECT_EQ(seen[3].I, perspective ? Point(1.5f, 1.5f, 10) : Point(0, 0, 10));
    }
}

// So that hits can be found first, and colours for what is seen of them.
TEST_F(GridShading, OpacityIsKnownBeforeAnythingIsShaded)
{
    attrib->surfaceOpacity = Color(0.5f, 0.125f, 0.25f);
    const RenderFrame unshaded(option, Matrix());
    make(1, 1).shadeOnDemand(unshaded);
    EXPECT_EQ(grid->opacity(1, 1), attrib->surfaceOpacity);
    ASSERT_NE(grid->uniformOpacity(), nullptr);
    EXPECT_EQ(*grid->uniformOpacity(), attrib->surfaceOpacity);

    give(kQOpacity, {0, 0, 0, 1, 1, 1, 0, 0, 0, 1, 1, 1}, ArgCounts{4, 1, 4});
    make(2, 1).shadeOnDemand(unshaded);
    EXPECT_EQ(grid->uniformOpacity(), nullptr);
    EXPECT_EQ(grid->opacity(1, 0), Color(0.5f, 0.5f, 0.5f));
    attrib->interpolation = kConstantShading;
    make(2, 1).shadeOnDemand(unshaded);
    EXPECT_EQ(grid->opacity(1, 0), Color(0.75f, 0.75f, 0.75f)) << "of the micropolygon's middle";
    EXPECT_TRUE(seen.empty());
}

TEST_F(GridShading, OnlyWhatIsAskedForIsShaded)
{
    const RenderFrame unshaded(option, Matrix());
    make(2, 2).shadeOnDemand(unshaded);
    AskedCells cells;
    cells.cells[cells.count++] = {1, 0};
    grid->shade(&cells, counts);
    EXPECT_EQ(grid->color(1, 0), Color(1, 0.5f, 0));
    EXPECT_EQ(grid->color(0, 0), gBlack);
    EXPECT_EQ(seen.size(), 4u);
    EXPECT_EQ(counts.shaded, 4u);
    EXPECT_EQ(counts.seen, 1u);

    cells.cells[cells.count++] = {0, 0};
    grid->shade(&cells, counts);
    EXPECT_EQ(seen.size(), 6u) << "what is known is not shaded again";
    EXPECT_EQ(counts.seen, 2u);
}

TEST_F(GridShading, PositionsStay)
{
    const RenderFrame unshaded(option, Matrix());
    make(2, 2).shadeOnDemand(unshaded);
    AskedCells cells;
    for (const std::uint16_t i : {0, 1}) {
        for (const std::uint16_t j : {0, 1}) cells.cells[cells.count++] = {i, j};
    }
    grid->shade(&cells, counts);
    for (int j = 0; j <= 2; ++j) {
        for (int i = 0; i <= 2; ++i) {
            EXPECT_EQ(grid->vertex(i, j).P,
                      Point(static_cast<float>(i), static_cast<float>(j), 10));
        }
    }
}

namespace
{

class ComplainingSurface : public ProbeSurface
{
public:
    using ProbeSurface::ProbeSurface;
    void evaluate(SurfacePoint& point) const override
    {
        ProbeSurface::evaluate(point);
        error(kMath, kError, "at %g %g", double{point.u}, double{point.v});
    }
};

}  // namespace

// Whoever asks is told of all that it asked for, though others may have been the first to; the host
// hears of it once.
TEST_F(GridShading, WhatAPointReportsIsKeptForAllThatAskForIt)
{
    attrib->surfaceShader = std::make_shared<ComplainingSurface>(&seen);
    const RenderFrame unshaded(option, Matrix());
    make(2, 1).shadeOnDemand(unshaded);
    AskedCells left, right;
    left.cells[left.count++] = {0, 0};
    right.cells[right.count++] = {1, 0};
    ReportLog first, second;
    {
        const ReportLog::Scope scope(second);
        grid->shade(&right, counts);
    }
    {
        const ReportLog::Scope scope(first);
        grid->shade(&left, counts);
    }
    EXPECT_EQ(seen.size(), 6u);
    EXPECT_TRUE(reports.empty());
    first.tell();
    ASSERT_EQ(reports.size(), 4u);
    EXPECT_EQ(reports[0].message, "at 0 0");
    EXPECT_EQ(reports[1].message, "at 0.5 0");
    EXPECT_EQ(reports[2].message, "at 0 1");
    EXPECT_EQ(reports[3].message, "at 0.5 1");
    second.tell();
    ASSERT_EQ(reports.size(), 6u);
    EXPECT_EQ(reports[4].message, "at 1 0");
    EXPECT_EQ(reports[5].message, "at 1 1");
}
