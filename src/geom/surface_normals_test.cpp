// Curved surfaces have a normal at every vertex of a grid, where derivatives vanish too.

#include <gtest/gtest.h>

#include "geom/grid.h"
#include "geom/nurb.h"
#include "geom/patch_mesh.h"
#include "geom/quadric.h"
#include "state/quark.h"
#include "state/state.h"
#include "support/rational.h"
#include "support/reports.h"

using namespace zeb;
using namespace zebtest;

namespace
{

class SurfaceNormals : public testing::Test
{
protected:
    SurfaceNormals() { zebReset(); }
    ~SurfaceNormals() override { zebReset(); }

    // Every vertex of grids of several sizes faces the way that is expected of its position.
    template <class Expected>
    static void expectNormals(const Primitive& surface, const Expected& expected,
                              float agree = 0.99f)
    {
        const RenderFrame frame{Option(), Matrix()};
        for (const unsigned short steps : {1, 2, 7, 16}) {
            const auto grid = surface.dice(Dicing{frame, steps, steps});
            for (int j = 0; j <= steps; ++j) {
                for (int i = 0; i <= steps; ++i) {
                    const Vertex& vertex = grid->vertex(i, j);
                    const Point n = normalize(vertex.dPdu ^ vertex.dPdv);
                    ASSERT_GT(dot(n, expected(vertex.P)), agree)
                        << "vertex " << i << ", " << j << " of " << steps << ": " << n << " at "
                        << vertex.P;
                }
            }
        }
    }
    // The surface and pieces of it in all corners.
    template <class Expected>
    static void expectNormalsOfPieces(Primitive& surface, const Expected& expected,
                                      float agree = 0.99f, int depth = 4)
    {
        expectNormals(surface, expected, agree);
        if (depth == 0) return;
        Pieces pieces = split(surface);
        for (auto& piece : pieces.list) {
            expectNormalsOfPieces(*piece, expected, agree, depth - 1);
            if (HasFailure()) return;
        }
    }
    template <class Surface>
    static std::unique_ptr<Surface> make(const std::vector<Point>& points)
    {
        const unsigned short token = kQPoint;
        void* const value = const_cast<Point*>(points.data());
        return std::make_unique<Surface>(1, &token, &value);
    }
    static std::vector<Point> square()
    {
        std::vector<Point> points;
        for (int i = 0; i < 16; ++i) {
            points.emplace_back(static_cast<float>(i % 4), static_cast<float>(i / 4), 5.0f);
        }
        return points;
    }

    static Point up(const Point&) { return {0, 0, 1}; }
    zebtest::Reports reports;
};

}  // namespace

TEST_F(SurfaceNormals, OfABilinearPatchWithTwoCornersInOne)
{
    const Point corners[4] = {{0, 0, 5}, {2, 0, 5}, {0, 2, 5}, {2, 2, 5}};
    const int edges[4][2] = {{0, 1}, {2, 3}, {0, 2}, {1, 3}};
    for (const auto& edge : edges) {
        SCOPED_TRACE(std::to_string(edge[0]) + " on " + std::to_string(edge[1]));
        std::vector<Point> points(corners, corners + 4);
        points[static_cast<std::size_t>(edge[0])] = points[static_cast<std::size_t>(edge[1])];
        expectNormalsOfPieces(*make<BilinearPatch>(points), up);
    }
}

TEST_F(SurfaceNormals, OfABicubicPatchWithACollapsedEdge)
{
    for (int edge = 0; edge < 4; ++edge) {
        SCOPED_TRACE(edge);
        auto points = square();
        for (std::size_t i = 0; i < 4; ++i) {
            const std::size_t at[4] = {i, 12 + i, 4 * i, 4 * i + 3};
            const Point middle[4] = {{1.5f, 0, 5}, {1.5f, 3, 5}, {0, 1.5f, 5}, {3, 1.5f, 5}};
            points[at[edge]] = middle[edge];
        }
        expectNormalsOfPieces(*make<BicubicPatch>(points), up);
    }
}

TEST_F(SurfaceNormals, OfABicubicPatchWithPointsOnACorner)
{
    // Both derivatives vanish in the corner.
    for (const std::size_t corner : {0, 3, 12, 15}) {
        SCOPED_TRACE(corner);
        auto points = square();
        points[corner % 4 ? corner - 1 : corner + 1] = points[corner];
        points[corner < 4 ? corner + 4 : corner - 4] = points[corner];
        expectNormalsOfPieces(*make<BicubicPatch>(points), up);
    }
}

TEST_F(SurfaceNormals, OfALens)
{
    auto points = square();
    for (std::size_t i = 0; i < 4; ++i) {
        points[i] = {1.5f, 0, 5};
        points[12 + i] = {1.5f, 3, 5};
    }
    expectNormalsOfPieces(*make<BicubicPatch>(points), up);
}

TEST_F(SurfaceNormals, WhatHasNoExtentHasFiniteVertices)
{
    const RenderFrame frame{Option(), Matrix()};
    const auto expectFinite = [&](const Primitive& surface) {
        const auto grid = surface.dice(Dicing{frame, 4, 4});
        for (int j = 0; j <= 4; ++j) {
            for (int i = 0; i <= 4; ++i) {
                EXPECT_TRUE(finite(grid->vertex(i, j).P));
                EXPECT_TRUE(finite(grid->vertex(i, j).dPdu));
                EXPECT_TRUE(finite(grid->vertex(i, j).dPdv));
            }
        }
    };
    expectFinite(*make<BicubicPatch>(std::vector<Point>(16, Point(1, 2, 3))));
    expectFinite(*make<BilinearPatch>(std::vector<Point>(4, Point(1, 2, 3))));
    expectFinite(Sphere(SphereCurve(0, -1, 1), 360, 0, nullptr, nullptr));
    expectFinite(Sphere(SphereCurve(1, -1, 1), 0, 0, nullptr, nullptr));
    expectFinite(Disk(DiskCurve(0, -2), 360, 0, nullptr, nullptr));
    expectFinite(Cylinder(CylinderCurve(0, 1, 1), 360, 0, nullptr, nullptr));
    expectFinite(Cone(ConeCurve(1, 1, 0), 360, 0, nullptr, nullptr));
    expectFinite(Torus(TorusCurve(0, 0, 0, 360), 360, 0, nullptr, nullptr));
}

TEST_F(SurfaceNormals, OfARationalOctantOfASphere)
{
    Numbers n(1);
    Rational r(Axis::bezier(3), Axis::bezier(3), n, 1, 1);
    const float h = std::sqrt(0.5f);
    const float arc[3][3] = {{1, 0, 1}, {1, 1, h}, {0, 1, 1}};  // x, y, weight
    for (std::size_t j = 0; j < 3; ++j) {
        for (std::size_t i = 0; i < 3; ++i) {
            const float w = arc[i][2] * arc[j][2], rho = arc[j][0];
            r.points[j * 3 + i] = {arc[i][0] * rho * w, arc[i][1] * rho * w, arc[j][1] * w, w};
        }
    }
    const auto patch = makePatch(r);
    ASSERT_NE(patch, nullptr);
    for (int k = 0; k < 100; ++k) {
        const Exact p = divided(exact(patch->evalP(n.unit(), n.unit())));
        EXPECT_NEAR(p.x * p.x + p.y * p.y + p.z * p.z, 1, 1e-6);
    }
    // The pole's neighbourhood included: pieces at all corners.
    expectNormalsOfPieces(
        *patch, [](const Point& p) { return normalize(p); }, 0.97f);
}

TEST_F(SurfaceNormals, OfAFlatRationalPatchWhoseWeightsFall)
{
    // So steeply that the weight and its derivative add up to less than nothing.
    Numbers n(2);
    Rational r(Axis::bezier(3), Axis::bezier(3), n, 1, 1);
    const float weights[3] = {1, 0.01f, 1};
    for (std::size_t i = 0; i < 9; ++i) {
        const float w = weights[i % 3];
        r.points[i] = {static_cast<float>(i % 3) * w, static_cast<float>(i / 3) * w, 5 * w, w};
    }
    const auto patch = makePatch(r);
    expectNormals(*patch, up);
}

TEST_F(SurfaceNormals, OfAHyperboloidWhoseLineMeetsTheAxis)
{
    // A cone with its tip at the origin.
    const float tip[3] = {0, 0, 0}, rim[3] = {3, 0, 4};
    Hyperboloid cone(HyperboloidCurve(tip, rim), 360, 0, nullptr, nullptr);
    const RenderFrame frame{Option(), Matrix()};
    const auto grid = cone.dice(Dicing{frame, 8, 8});
    for (int j = 0; j <= 8; ++j) {
        for (int i = 0; i <= 8; ++i) {
            const double a = i / 8.0 * 2 * 3.14159265358979;
            const Point side(static_cast<float>(std::cos(a)) * 0.8f,
                             static_cast<float>(std::sin(a)) * 0.8f, -0.6f);
            const Vertex& vertex = grid->vertex(i, j);
            EXPECT_GT(dot(normalize(vertex.dPdu ^ vertex.dPdv), side), 0.99f) << i << ", " << j;
        }
    }
}

TEST_F(SurfaceNormals, OfSmallAndLargeSurfaces)
{
    for (const float size : {1e-3f, 1.0f, 1e3f, 1e6f}) {
        SCOPED_TRACE(size);
        Sphere sphere(SphereCurve(size, -size, size), 360, 0, nullptr, nullptr);
        expectNormals(
            sphere, [](const Point& p) { return normalize(p); }, 0.9f);
        Cone cone(ConeCurve(size, size, size), 360, 0, nullptr, nullptr);
        const float half = std::sqrt(0.5f);
        expectNormals(
            cone,
            [=](const Point& p) {
                const Point out(p.x, p.y, 0);
                // At the apex any of its sides will do.
                if (length(out) < 1e-4f * size) return Point(0, 0, 2);
                const Point side = normalize(out);
                return Point(side.x * half, side.y * half, half);
            },
            0.9f);
    }
}

TEST_F(SurfaceNormals, UnderATransformation)
{
    zebTranslate(4, 5, 6);
    zebRotate(90, 1, 0, 0);
    zebScale(3, 3, 3);
    Sphere sphere(SphereCurve(2, -2, 2), 360, 0, nullptr, nullptr);
    expectNormals(
        sphere, [](const Point& p) { return normalize(p - Point(4, 5, 6)); }, 0.9f);
}

TEST_F(SurfaceNormals, AreTurnedRoundByTheOrientation)
{
    const RenderFrame frame{Option(), Matrix()};
    for (const short side : {ZEB_OUTSIDE, ZEB_INSIDE}) {
        zebOrientation(side);
        const Sphere sphere(SphereCurve(1, -1, 1), 360, 0, nullptr, nullptr);
        const bool inside = side == ZEB_INSIDE;
        EXPECT_EQ(sphere.dice(Dicing{frame, 2, 2})->fFlip, inside);
        EXPECT_EQ(make<BicubicPatch>(square())->dice(Dicing{frame, 2, 2})->fFlip, inside);
        const auto bilinear =
            make<BilinearPatch>({Point(), Point(1, 0, 0), Point(0, 1, 0), Point(1, 1, 0)});
        EXPECT_EQ(bilinear->dice(Dicing{frame, 2, 2})->fFlip, inside);
    }
}
