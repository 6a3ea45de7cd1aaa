// The pipeline that colours a grid: shading happens at its vertices or, under constant
// interpolation, once a micropolygon.

#include "geom/grid.h"
#include "math/shading_math.h"
#include "shade/surface.h"
#include "shade/volume.h"
#include "state/quark.h"

namespace zeb
{

namespace
{

// A standard variable at (u, v): three values are a triangle's corners, four a rectangle's.
template <class T, class Get>
T interpolated(const ArgAssoc& assoc, float u, float v, const Get& get)
{
    if (assoc.count() < 3) return get(0);
    if (assoc.count() < 4) return barylerp(u, v, get(0), get(1), get(2));
    return bilerp(u, v, get(0), get(1), get(2), get(3));
}

// Opacities beyond these would make more of a surface than there is, or less than nothing.
Color clamped(const Color& c)
{
    const auto clamp = [](float x) { return x > 0 ? (x < 1 ? x : 1) : 0; };
    return {clamp(c.r), clamp(c.g), clamp(c.b)};
}

class GridShader
{
public:
    GridShader(Grid& grid, const RenderFrame& frame)
        : fGrid(grid),
          fAttrib(*grid.fAttrib),
          fPerspective(frame.option.perspective),
          fQuirks(frame.option.quirks),
          fNormal(grid.fVertexArgs.find(kQNormal)),
          fColor(firstOf({Quark::fVertexColor, kQColor})),
          fOpacity(firstOf({Quark::fVertexOpacity, kQOpacity})),
          fSurface(fAttrib.surfaceShader.get())
    {
        fPoint.lights = &fAttrib.lights;
        if (grid.fOtherArgs.empty() || !fSurface->clone()->parameters().names(grid.fOtherArgs)) {
            return;
        }
        // The primitive has parameters of its own for the shader, which others share.
        fOwn = fSurface->clone();
        fParameters = fOwn->parameters();
        fParameters.override(grid.fOtherArgs);
        for (const ArgAssoc& assoc : grid.fOtherArgs) fVarying |= assoc.storage() == kVarying;
        fSurface = fOwn.get();
    }

    void shadeVertices()
    {
        for (int j = 0; j <= fGrid.fVSize; ++j) {
            const int count = fGrid.vertexCount(j);
            for (int i = 0; i < count; ++i) {
                Vertex& vertex = fGrid.vertex(i, j);
                shade(vertex.P, vertex.dPdu, vertex.dPdv, static_cast<float>(i),
                      static_cast<float>(j), vertex);
            }
        }
    }

    // The result goes to the micropolygon's first corner, where sampling looks for it. Derivatives
    // are the sum of the corners', four times their mean: shaders are tuned to that scale.
    void shadeCells()
    {
        for (int j = 0; j < fGrid.fVSize; ++j) {
            const int count = fGrid.cellCount(j);
            for (int i = 0; i < count; ++i) {
                Vertex& a = fGrid.vertex(i, j);
                const Vertex& b = fGrid.vertex(i + 1, j);
                const Vertex& c = fGrid.vertex(i, j + 1);
                const Vertex& d = fGrid.vertex(i + 1, j + 1);
                shade((a.P + b.P + c.P + d.P) * 0.25f, a.dPdu + b.dPdu + c.dPdu + d.dPdu,
                      a.dPdv + b.dPdv + c.dPdv + d.dPdv, static_cast<float>(i) + 0.5f,
                      static_cast<float>(j) + 0.5f, a);
            }
        }
    }

private:
    const ArgAssoc* firstOf(std::initializer_list<unsigned short> tokens) const
    {
        for (const unsigned short token : tokens) {
            if (const ArgAssoc* assoc = fGrid.fVertexArgs.find(token)) return assoc;
        }
        return nullptr;
    }

    void shade(const Point& P, const Point& dPdu, const Point& dPdv, float column, float row,
               Vertex& result)
    {
        SurfacePoint& p = fPoint;
        p.P = P;
        p.dPdu = dPdu;
        p.dPdv = dPdv;
        place(column, row);
        p.E = fPerspective ? gOrigin : Point(P.x, P.y, 0);
        p.I = P - p.E;
        p.Ng = rounded(Pointd(dPdu) ^ Pointd(dPdv));
        if (fGrid.fFlip) p.Ng = -p.Ng;
        p.N = fNormal ? interpolated<Point>(*fNormal, p.u, p.v,
                                            [&](long k) { return fNormal->point(k); })
                      : p.Ng;
        p.Cs = fGrid.fColors.hasColor() ? fGrid.fColors.color(p.u, p.v)
               : fColor                 ? variable(*fColor)
                                        : fAttrib.surfaceColor;
        p.Os = fGrid.fColors.hasOpacity() ? fGrid.fColors.opacity(p.u, p.v)
               : fOpacity                 ? variable(*fOpacity)
                                          : fAttrib.surfaceOpacity;
        if (!fQuirks) p.Os = clamped(p.Os);
        if (fVarying) fParameters.bilerp(p.u, p.v, fGrid.fOtherArgs);
        fSurface->evaluate(p);
        result.Ci = p.Ci;
        result.Oi = p.Oi;
        if (const Volume* atmosphere = fAttrib.atmosphereShader.get()) {
            // The quirk: compositing multiplies by the opacity, the atmosphere's colour too.
            VolumePoint seen{p.P, p.I, p.Ci, p.Oi, fQuirks ? gWhite : p.Oi};
            atmosphere->evaluate(seen);
            result.Ci = seen.Ci;
            result.Oi = seen.Oi;
        }
    }

    // Sets the parameters of the point; those beyond a triangle's long side are folded back.
    void place(float column, float row)
    {
        SurfacePoint& p = fPoint;
        p.u = column / static_cast<float>(fGrid.fUSize);
        p.v = row / static_cast<float>(fGrid.fVSize);
        if (fGrid.fTransposed) std::swap(p.u, p.v);
        if (fGrid.fTriangular && p.u + p.v > 1) {
            if (fGrid.fVSize <= fGrid.fUSize) {
                p.v = 1 - p.u;
            } else {
                p.u = 1 - p.v;
            }
        }
        const float *s = fAttrib.textureS, *t = fAttrib.textureT;
        p.s = bilerp(p.u, p.v, s[0], s[1], s[2], s[3]);
        p.t = bilerp(p.u, p.v, t[0], t[1], t[2], t[3]);
    }

    Color variable(const ArgAssoc& assoc) const
    {
        return interpolated<Color>(assoc, fPoint.u, fPoint.v,
                                   [&](long k) { return assoc.color(k); });
    }

    Grid& fGrid;
    const Attrib& fAttrib;
    const bool fPerspective;
    const bool fQuirks;
    const ArgAssoc *fNormal, *fColor, *fOpacity;
    const Surface* fSurface;
    std::unique_ptr<Surface> fOwn;
    ParmList fParameters = {};  // of fOwn; listed once, not for every point
    bool fVarying = false;
    SurfacePoint fPoint;
};

}  // namespace

void Grid::shade(const RenderFrame& frame)
{
    GridShader shader(*this, frame);
    if (fAttrib->interpolation == kConstantShading) {
        shader.shadeCells();
    } else {
        shader.shadeVertices();
    }
}

}  // namespace zeb
