// Models of fewer parts look like those that they are made of.
#include "coarse.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace
{

using zebview::coarsened;
using zebview::Mesh;
using zebview::Model;

// A square of vertices from -1 to 1 that rises to the right, with values that say where they are.
Mesh grid(std::size_t side)
{
    Mesh mesh;
    for (std::size_t i = 0; i < side * side; ++i) {
        const auto at = [side](std::size_t k) {
            return 2 * static_cast<float>(k) / static_cast<float>(side - 1) - 1;
        };
        const float x = at(i % side), y = at(i / side);
        mesh.points.insert(mesh.points.end(), {x, y, 0.5f * x});
        mesh.normals.insert(mesh.normals.end(), {0, 0, 1});
        mesh.scalars.push_back(x);
        mesh.colors.insert(mesh.colors.end(), {y, 0, 0});
    }
    return mesh;
}

Model modelOf(Mesh mesh)
{
    Model model;
    model.meshes.push_back(std::move(mesh));
    return model;
}

// That its vertices are where the others were, and so are the values that go with them.
void expectOnPlane(const Mesh& mesh)
{
    ASSERT_GT(mesh.vertexCount(), 100u);
    for (std::size_t i = 0; i < mesh.vertexCount(); ++i) {
        const float x = mesh.points[3 * i], y = mesh.points[3 * i + 1];
        EXPECT_NEAR(mesh.points[3 * i + 2], 0.5f * x, 1e-5);
        EXPECT_NEAR(mesh.scalars[i], x, 1e-5);
        EXPECT_NEAR(mesh.colors[3 * i], y, 1e-5);
    }
}

TEST(Coarse, SmallModelsStayWhole)
{
    Mesh mesh = grid(100);
    for (std::size_t i = 0; i < mesh.vertexCount(); ++i) mesh.dots.push_back(i);
    EXPECT_FALSE(coarsened(modelOf(mesh)));
    mesh.copies.resize(1);
    EXPECT_TRUE(coarsened(modelOf(mesh))) << "there are 20,000 of them";
}

TEST(Coarse, FewerPointsAreLarger)
{
    Mesh mesh = grid(200);
    for (std::size_t i = 0; i < mesh.vertexCount(); ++i) mesh.dots.push_back(i);
    mesh.dotRadius = 0.01;
    const auto coarse = coarsened(modelOf(mesh));
    ASSERT_TRUE(coarse);
    const Mesh& few = coarse->meshes[0];
    expectOnPlane(few);
    ASSERT_GT(few.dots.size(), 1000u);
    EXPECT_LE(few.dots.size(), 12'000u);
    EXPECT_EQ(std::set(few.dots.begin(), few.dots.end()).size(), few.dots.size());
    EXPECT_LT(*std::max_element(few.dots.begin(), few.dots.end()), few.vertexCount());
    const auto area = [](const Mesh& m) {
        return static_cast<double>(m.dots.size()) * m.dotRadius * m.dotRadius;
    };
    EXPECT_NEAR(area(few), area(mesh), 1e-9);
}

TEST(Coarse, LinesGoOnFromPointToPoint)
{
    const std::size_t side = 200;
    Mesh mesh = grid(side);
    for (std::size_t i = 0; i < side * side; ++i) {
        if ((i + 1) % side) mesh.lines.insert(mesh.lines.end(), {i, i + 1});
    }
    const auto coarse = coarsened(modelOf(mesh));
    ASSERT_TRUE(coarse);
    const Mesh& few = coarse->meshes[0];
    expectOnPlane(few);
    ASSERT_GT(few.lines.size(), 1000u);
    EXPECT_LE(few.lines.size() / 2, 12'000u);
    double length = 0;
    for (std::size_t i = 0; i < few.lines.size(); i += 2) {
        const float* const a = &few.points[3 * few.lines[i]];
        const float* const b = &few.points[3 * few.lines[i + 1]];
        EXPECT_NE(few.lines[i], few.lines[i + 1]);
        // Each goes to the right or to the left, along its row.
        EXPECT_NEAR(a[1], b[1], 1e-5);
        length += std::fabs(a[0] - b[0]);
    }
    // Of rows that have met one is left: rows are as many as there are heights.
    std::set<int> rows;
    for (std::size_t i = 0; i < few.vertexCount(); ++i) {
        rows.insert(static_cast<int>(std::lround(few.points[3 * i + 1] * 1e4f)));
    }
    EXPECT_NEAR(length, 2.0 * static_cast<double>(rows.size()),
                0.05 * static_cast<double>(rows.size()));
}

TEST(Coarse, FacesCoverWhatTheyDid)
{
    const std::size_t side = 200;
    Mesh mesh = grid(side);
    for (std::size_t i = 0; i + side < side * side; ++i) {
        if ((i + 1) % side == 0) continue;
        mesh.convex.sizes.push_back(4);
        for (const std::size_t corner : {i, i + 1, i + side + 1, i + side}) {
            mesh.convex.corners.push_back(static_cast<long>(corner));
        }
    }
    const auto coarse = coarsened(modelOf(mesh));
    ASSERT_TRUE(coarse);
    const Mesh& few = coarse->meshes[0];
    expectOnPlane(few);
    EXPECT_LE(few.convex.sizes.size(), 12'000u);
    // Seen along z, all wound one way.
    double area = 0;
    for (std::size_t i = 0; i < few.convex.sizes.size(); ++i) {
        ASSERT_EQ(few.convex.sizes[i], 3);
        const auto at = [&](std::size_t k) {
            return &few.points[3 * static_cast<std::size_t>(few.convex.corners[3 * i + k])];
        };
        const float *a = at(0), *b = at(1), *c = at(2);
        const double twice =
            double{b[0] - a[0]} * (c[1] - a[1]) - double{b[1] - a[1]} * (c[0] - a[0]);
        EXPECT_GT(twice, 0);
        area += twice / 2;
    }
    EXPECT_NEAR(area, 4, 0.15) << "but for a rim of half a cell";
}

}  // namespace
