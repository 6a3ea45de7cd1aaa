// The points of a grid that are shaded: its vertices or, under constant interpolation, the middles
// of its micropolygons.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <utility>

#include "geom/grid.h"
#include "math/shading_math.h"
#include "state/quark.h"

namespace zeb
{

// Takes no memory.
class GridPoints
{
public:
    GridPoints(const Grid& grid, const RenderFrame& frame)
        : fGrid(grid),
          fConstant(!grid.fSmooth),
          fQuirks(frame.option.quirks),
          fNormal(grid.fDisplaced ? nullptr : grid.fVertexArgs.find(kQNormal)),
          fColor(firstOf({Quark::fVertexColor, kQColor})),
          fOpacity(firstOf({Quark::fVertexOpacity, kQOpacity}))
    {
    }

    const Grid& grid() const { return fGrid; }
    const Attrib& attrib() const { return *fGrid.fAttrib; }

    // Whether the points have values of their own.
    bool hasNormals() const { return fNormal; }
    bool hasColors() const { return fColor || fGrid.fPieceValues.hasColor(); }
    bool hasOpacities() const { return fOpacity || fGrid.fPieceValues.hasOpacity(); }

    // The parameters of a point, within the piece. Those beyond a triangle's long side are folded
    // back.
    struct Parameters {
        float u, v;
    };
    Parameters parameters(VertexPlace at) const
    {
        const float middle = fConstant ? 0.5f : 0;
        float u = (static_cast<float>(at.i) + middle) / static_cast<float>(fGrid.fUSize);
        float v = (static_cast<float>(at.j) + middle) / static_cast<float>(fGrid.fVSize);
        if (fGrid.fTransposed) std::swap(u, v);
        if (fGrid.fTriangular && u + v > 1) {
            if (fGrid.fVSize <= fGrid.fUSize) {
                v = 1 - u;
            } else {
                u = 1 - v;
            }
        }
        return {u, v};
    }

    // Under constant shading derivatives are the sum of the corners', four times their mean:
    // shaders are tuned to that scale.
    Vertex vertex(VertexPlace at) const
    {
        const Vertex& a = fGrid.vertex(at.i, at.j);
        if (!fConstant) return a;
        const Vertex &b = fGrid.vertex(at.i + 1, at.j), &c = fGrid.vertex(at.i, at.j + 1),
                     &d = fGrid.vertex(at.i + 1, at.j + 1);
        return {(a.P + b.P + c.P + d.P) * 0.25f, a.dPdu + b.dPdu + c.dPdu + d.dPdu,
                a.dPdv + b.dPdv + c.dPdv + d.dPdv};
    }

    // If the points have normals.
    Point normal(Parameters at) const
    {
        return interpolated<Point>(*fNormal, at, [&](long k) { return fNormal->point(k); });
    }
    Color color(Parameters at) const
    {
        return fGrid.fPieceValues.hasColor() ? fGrid.fPieceValues.color(at.u, at.v)
               : fColor                      ? variable(*fColor, at)
                                             : attrib().surfaceColor;
    }
    Color opacity(Parameters at) const
    {
        return inRange(fGrid.fPieceValues.hasOpacity() ? fGrid.fPieceValues.opacity(at.u, at.v)
                       : fOpacity                      ? variable(*fOpacity, at)
                                                       : attrib().surfaceOpacity);
    }
    // Opacities beyond 0 and 1 would make more of a surface than there is, or less than nothing.
    Color inRange(const Color& c) const
    {
        if (fQuirks) return c;
        const auto clamp = [](float x) { return x > 0 ? (x < 1 ? x : 1) : 0; };
        return {clamp(c.r), clamp(c.g), clamp(c.b)};
    }

    // A standard variable: three values are a triangle's corners, four a rectangle's.
    template <class T, class Get>
    static T interpolated(const ArgAssoc& assoc, Parameters at, const Get& get)
    {
        if (assoc.count() < 3) return get(0);
        if (assoc.count() < 4) return barylerp(at.u, at.v, get(0), get(1), get(2));
        return bilerp(at.u, at.v, get(0), get(1), get(2), get(3));
    }

private:
    const ArgAssoc* firstOf(std::initializer_list<unsigned short> tokens) const
    {
        for (const unsigned short token : tokens) {
            if (const ArgAssoc* assoc = fGrid.fVertexArgs.find(token)) return assoc;
        }
        return nullptr;
    }
    static Color variable(const ArgAssoc& assoc, Parameters at)
    {
        return interpolated<Color>(assoc, at, [&](long k) { return assoc.color(k); });
    }

    const Grid& fGrid;
    const bool fConstant, fQuirks;
    const ArgAssoc *fNormal, *fColor, *fOpacity;
};

}  // namespace zeb
