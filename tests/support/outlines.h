// Outlines in the plane z = 0, general polygons of them, and what these are split into.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

#include "geom/general_polygon.h"
#include "geom/triangle.h"
#include "state/quark.h"

namespace zebtest
{

using Corners = std::vector<std::pair<float, float>>;

inline const Corners kSquare{{0, 0}, {10, 0}, {10, 10}, {0, 10}};

// A square that runs the other way round than that one.
inline Corners hole(float x, float y, float size = 1)
{
    return {{x, y}, {x, y + size}, {x + size, y + size}, {x + size, y}};
}

inline zeb::GeneralPolygon makePolygon(const std::vector<Corners>& loops)
{
    std::vector<float> points;
    std::vector<long> sizes;
    for (const Corners& loop : loops) {
        sizes.push_back(static_cast<long>(loop.size()));
        for (const auto& [x, y] : loop) points.insert(points.end(), {x, y, 0});
    }
    const unsigned short token = zeb::kQPoint;
    void* const value = points.data();
    return {static_cast<long>(sizes.size()), sizes.data(), 1, &token, &value};
}

// What a polygon is split into.
struct Pieces : zeb::PrimitiveSink {
    void add(std::unique_ptr<zeb::Primitive> piece) override { list.push_back(std::move(piece)); }
    Corners corners(std::size_t i) const
    {
        const auto& polygon = dynamic_cast<const zeb::Polygon&>(*list.at(i));
        Corners result;
        for (long k = 0; k < polygon.nVertices(); ++k)
            result.emplace_back(polygon.vertex(k).x, polygon.vertex(k).y);
        return result;
    }
    std::vector<std::unique_ptr<zeb::Primitive>> list;
};

// The triangles that are left after splitting all the way down; their areas add up.
class Areas : public zeb::PrimitiveSink
{
public:
    void add(std::unique_ptr<zeb::Primitive> piece) override
    {
        if (const auto* t = dynamic_cast<const zeb::Triangle*>(piece.get())) {
            const zeb::Point a = t->vertex(0), b = t->vertex(1), c = t->vertex(2);
            const double area = 0.5 * static_cast<double>(((b - a) ^ (c - a)).z);
            EXPECT_GE(area, -1e-6) << "runs the other way round than the polygon";
            fTotal += area;
        } else {
            piece->split(*this);
        }
    }
    double total() const { return fTotal; }

private:
    double fTotal = 0;
};

}  // namespace zebtest
