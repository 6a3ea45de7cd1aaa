// Colours a grid: shading happens at its vertices or, under constant interpolation, once a
// micropolygon.

#include "geom/grid.h"
#include "math/shading_math.h"
#include "shade/surface.h"
#include "shade/volume.h"
#include "state/error.h"
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

const ArgAssoc* firstOf(const ArgList& args, std::initializer_list<unsigned short> tokens)
{
    for (const unsigned short token : tokens) {
        if (const ArgAssoc* assoc = args.find(token)) return assoc;
    }
    return nullptr;
}

const ArgAssoc* opacities(const Grid& grid)
{
    return firstOf(grid.fVertexArgs, {Quark::fVertexOpacity, kQOpacity});
}

class GridShader : public VertexShader
{
public:
    GridShader(const Grid& grid, const RenderFrame& frame)
        : fGrid(grid),
          fAttrib(*grid.fAttrib),
          fConstant(!grid.fSmooth),
          fPerspective(frame.option.perspective),
          fQuirks(frame.option.quirks),
          fNormal(grid.fVertexArgs.find(kQNormal)),
          fColor(firstOf(grid.fVertexArgs, {Quark::fVertexColor, kQColor})),
          fOpacity(opacities(grid)),
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

    // Under constant shading derivatives are the sum of the corners', four times their mean:
    // shaders are tuned to that scale.
    Color color(int i, int j) override
    {
        const AttribNamesScope names(fAttrib.object.text(), fAttrib.group.text());
        place(i, j);
        const Vertex& a = fGrid.vertex(i, j);
        if (!fConstant) return shade(a.P, a.dPdu, a.dPdv);
        const Vertex &b = fGrid.vertex(i + 1, j), &c = fGrid.vertex(i, j + 1),
                     &d = fGrid.vertex(i + 1, j + 1);
        return shade((a.P + b.P + c.P + d.P) * 0.25f, a.dPdu + b.dPdu + c.dPdu + d.dPdu,
                     a.dPdv + b.dPdv + c.dPdv + d.dPdv);
    }

    Color opacity(int i, int j) override
    {
        place(i, j);
        return opacity();
    }

private:
    // At the parameters that place() set.
    Color shade(const Point& P, const Point& dPdu, const Point& dPdv)
    {
        SurfacePoint& p = fPoint;
        p.P = P;
        p.dPdu = dPdu;
        p.dPdv = dPdv;
        p.E = fPerspective ? gOrigin : Point(P.x, P.y, 0);
        p.I = P - p.E;
        p.Ng = rounded(Pointd(dPdu) ^ Pointd(dPdv));
        if (fGrid.fFlip) p.Ng = -p.Ng;
        p.N = fNormal ? interpolated<Point>(*fNormal, p.u, p.v,
                                            [&](long k) { return fNormal->point(k); })
                      : p.Ng;
        p.Cs = fGrid.fPieceColors.hasColor() ? fGrid.fPieceColors.color(p.u, p.v)
               : fColor                      ? variable(*fColor)
                                             : fAttrib.surfaceColor;
        p.Os = opacity();
        if (fVarying) fParameters.bilerp(p.u, p.v, fGrid.fOtherArgs);
        fSurface->evaluate(p);
        const Volume* atmosphere = fAttrib.atmosphereShader.get();
        if (!atmosphere) return p.Ci;
        // The quirk: compositing multiplies by the opacity, the atmosphere's colour too.
        VolumePoint seen{p.P, p.I, p.Ci, p.Oi, fQuirks ? gWhite : p.Oi};
        atmosphere->evaluate(seen);
        return seen.Ci;
    }

    Color opacity() const
    {
        const SurfacePoint& p = fPoint;
        const Color opacity = fGrid.fPieceColors.hasOpacity() ? fGrid.fPieceColors.opacity(p.u, p.v)
                              : fOpacity                      ? variable(*fOpacity)
                                                              : fAttrib.surfaceOpacity;
        return fQuirks ? opacity : clamped(opacity);
    }

    // Sets the parameters of the point: of a vertex, or of the middle of the micropolygon that
    // begins there. Those beyond a triangle's long side are folded back.
    void place(int i, int j)
    {
        SurfacePoint& p = fPoint;
        const float middle = fConstant ? 0.5f : 0;
        p.u = (static_cast<float>(i) + middle) / static_cast<float>(fGrid.fUSize);
        p.v = (static_cast<float>(j) + middle) / static_cast<float>(fGrid.fVSize);
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

    const Grid& fGrid;
    const Attrib& fAttrib;
    const bool fConstant;
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

// Surfaces pass the opacity on that they are given, and atmospheres leave it alone: it is known
// before anything is shaded.
void Grid::shadeOnDemand(const RenderFrame& frame, std::uint64_t* shaded)
{
    fFrame = &frame;
    fShaded = shaded;
    fShader.reset();
    fColors = {};
    fOpacities = {};
    fOpacityVaries = fPieceColors.hasOpacity() || opacities(*this);
    fOpacity = frame.option.quirks ? fAttrib->surfaceOpacity : clamped(fAttrib->surfaceOpacity);
    fOpaque = !fOpacityVaries && fOpacity == gWhite;
}

VertexShader* Grid::shader() const
{
    if (!fShader && fFrame) fShader = std::make_unique<GridShader>(*this, *fFrame);
    return fShader.get();
}

}  // namespace zeb
