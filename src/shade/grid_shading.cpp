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

// Takes no memory before it is asked for colours.
class GridShader
{
public:
    GridShader(const Grid& grid, const RenderFrame& frame)
        : fGrid(grid),
          fAttrib(*grid.fAttrib),
          fConstant(!grid.fSmooth),
          fPerspective(frame.option.perspective),
          fQuirks(frame.option.quirks),
          fPlain(frame.plain),
          fNormal(grid.fVertexArgs.find(kQNormal)),
          fColor(firstOf(grid.fVertexArgs, {Quark::fVertexColor, kQColor})),
          fOpacity(opacities(grid)),
          fSurface(fAttrib.surfaceShader.get())
    {
    }

    // To be called before colours are asked for.
    void prepare()
    {
        fPoint.lights = &fAttrib.lights;
        takeParameters();
        if (!fPlain) describe();
    }

    // What the points report is added, where reports are kept.
    void colors(const VertexPlace* places, std::size_t count, Color* colors,
                std::vector<VertexReports>& reports)
    {
        const AttribNamesScope names(fAttrib.object.text(), fAttrib.group.text());
        if (fKernel && colorsByKernel(places, count, colors)) return;
        for (std::size_t k = 0; k < count; ++k) {
            auto log = keepingReports([&] { colors[k] = shade(places[k]); });
            if (log) reports.push_back({places[k], std::move(log)});
        }
    }

    Color opacity(int i, int j)
    {
        place(i, j);
        return opacity();
    }

private:
    // The primitive may have parameters of its own for the shader, which others share.
    void takeParameters()
    {
        const ArgList& args = fGrid.fOtherArgs;
        if (args.empty()) return;
        fOwn = fSurface->clone();
        fParameters = fOwn->parameters();
        if (!fParameters.names(args)) return;
        fParameters.override(args);
        for (const ArgAssoc& assoc : args) fVarying |= assoc.storage() == kVarying;
        fSurface = fOwn.get();
    }

    // What the kernels know of the surface and of all that lights it; without a kernel if it is
    // more than they know.
    void describe()
    {
        if (fVarying || !fSurface->describe(fSurfaceRecord)) return;
        fLights.reserve(8);  // more than most have
        for (const auto& light : fAttrib.lights) {
            if (!light->describe(fLights.emplace_back())) return;
        }
        const Volume* const atmosphere = fAttrib.atmosphereShader.get();
        if (atmosphere && !atmosphere->describe(fVolumeRecord)) return;
        fVolumeRecord.coversAll = fQuirks;
        fKernel = shadingKernel();
    }

    bool colorsByKernel(const VertexPlace* places, std::size_t count, Color* colors)
    {
        ShadingBlock block;
        block.isPerspective = fPerspective;
        block.isFlipped = fGrid.fFlip;
        block.hasNormals = fNormal;
        block.hasColors = fColor || fGrid.fPieceColors.hasColor();
        block.hasOpacities = fOpacity || fGrid.fPieceColors.hasOpacity();
        const bool varies = block.hasNormals || block.hasColors || block.hasOpacities;
        for (std::size_t done = 0; done < count; done += ShadingBlock::kMost) {
            block.count = static_cast<int>(std::min<std::size_t>(count - done, block.kMost));
            const int most = (block.count + block.kMultiple - 1) & -block.kMultiple;
            for (int k = 0; k < most; ++k) {
                // The last one, as often as it takes.
                const int n = std::min(k, block.count - 1);
                const VertexPlace at = places[done + static_cast<std::size_t>(n)];
                putVertex(block, k, vertexAt(at));
                if (k > 0 && !varies) continue;
                place(at.i, at.j);
                putVariables(block, k);
            }
            if (!fKernel(fSurfaceRecord, fLights.data(), static_cast<int>(fLights.size()),
                         fVolumeRecord, block)) {
                return false;
            }
            for (int k = 0; k < block.count; ++k) {
                *colors++ = Color(block.Ci[0][k], block.Ci[1][k], block.Ci[2][k]);
            }
        }
        return true;
    }

    static void put(ShadingBlock::Planes& planes, int k, const Point& p)
    {
        planes[0][k] = p.x;
        planes[1][k] = p.y;
        planes[2][k] = p.z;
    }
    static void put(ShadingBlock::Planes& planes, int k, const Color& c)
    {
        planes[0][k] = c.r;
        planes[1][k] = c.g;
        planes[2][k] = c.b;
    }
    static void putVertex(ShadingBlock& block, int k, const Vertex& vertex)
    {
        put(block.P, k, vertex.P);
        put(block.dPdu, k, vertex.dPdu);
        put(block.dPdv, k, vertex.dPdv);
    }
    void putVariables(ShadingBlock& block, int k) const
    {
        if (fNormal) put(block.N, k, normal());
        put(block.Cs, k, color());
        put(block.Os, k, opacity());
    }

    // Under constant shading derivatives are the sum of the corners', four times their mean:
    // shaders are tuned to that scale.
    Vertex vertexAt(VertexPlace at) const
    {
        const Vertex& a = fGrid.vertex(at.i, at.j);
        if (!fConstant) return a;
        const Vertex &b = fGrid.vertex(at.i + 1, at.j), &c = fGrid.vertex(at.i, at.j + 1),
                     &d = fGrid.vertex(at.i + 1, at.j + 1);
        return {(a.P + b.P + c.P + d.P) * 0.25f, a.dPdu + b.dPdu + c.dPdu + d.dPdu,
                a.dPdv + b.dPdv + c.dPdv + d.dPdv};
    }

    // All that the surface asks of a point.
    void find(VertexPlace at)
    {
        place(at.i, at.j);
        SurfacePoint& p = fPoint;
        const Vertex vertex = vertexAt(at);
        p.P = vertex.P;
        p.dPdu = vertex.dPdu;
        p.dPdv = vertex.dPdv;
        p.E = fPerspective ? gOrigin : Point(p.P.x, p.P.y, 0);
        p.I = p.P - p.E;
        p.Ng = rounded(Pointd(p.dPdu) ^ Pointd(p.dPdv));
        if (fGrid.fFlip) p.Ng = -p.Ng;
        p.N = fNormal ? normal() : p.Ng;
        p.Cs = color();
        p.Os = opacity();
        const float *s = fAttrib.textureS, *t = fAttrib.textureT;
        p.s = bilerp(p.u, p.v, s[0], s[1], s[2], s[3]);
        p.t = bilerp(p.u, p.v, t[0], t[1], t[2], t[3]);
    }

    Color shade(VertexPlace at)
    {
        find(at);
        SurfacePoint& p = fPoint;
        if (fVarying) fParameters.bilerp(p.u, p.v, fGrid.fOtherArgs);
        fSurface->evaluate(p);
        const Volume* atmosphere = fAttrib.atmosphereShader.get();
        if (!atmosphere) return p.Ci;
        // The quirk: compositing multiplies by the opacity, the atmosphere's colour too.
        VolumePoint seen{p.P, p.I, p.Ci, p.Oi, fQuirks ? gWhite : p.Oi};
        atmosphere->evaluate(seen);
        return seen.Ci;
    }

    // At the parameters that place() set.
    Point normal() const
    {
        return interpolated<Point>(*fNormal, fPoint.u, fPoint.v,
                                   [&](long k) { return fNormal->point(k); });
    }
    Color color() const
    {
        return fGrid.fPieceColors.hasColor() ? fGrid.fPieceColors.color(fPoint.u, fPoint.v)
               : fColor                      ? variable(*fColor)
                                             : fAttrib.surfaceColor;
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
    const bool fPlain;
    const ArgAssoc *fNormal, *fColor, *fOpacity;
    const Surface* fSurface;
    std::unique_ptr<Surface> fOwn;
    ParmList fParameters = {};  // of fOwn; listed once, not for every point
    bool fVarying = false;
    SurfacePoint fPoint;
    SurfaceRecord fSurfaceRecord;
    std::vector<LightRecord, PoolAllocator<LightRecord>> fLights;
    VolumeRecord fVolumeRecord;
    ShadingKernel fKernel = nullptr;
};

}  // namespace

// Surfaces pass the opacity on that they are given, and atmospheres leave it alone: it is known
// before anything is shaded.
void Grid::shadeOnDemand(const RenderFrame& frame)
{
    fFrame = &frame;
    fMarks.reset();
    fComplete = false;
    fOpacityVaries = fPieceColors.hasOpacity() || opacities(*this);
    fOpacity = frame.option.quirks ? fAttrib->surfaceOpacity : clamped(fAttrib->surfaceOpacity);
    fOpaque = !fOpacityVaries && fOpacity == gWhite;
    if (fOpacityVaries) findOpacities();
}

void Grid::shadeVertices(const Places& wanted, ShadingCounts& counts) const
{
    if (wanted.empty()) return;
    constexpr std::size_t kMost = 64;
    Color found[kMost];
    GridShader shader(*this, *fFrame);
    shader.prepare();
    for (std::size_t done = 0; done < wanted.size();) {
        const VertexPlace* const places = wanted.data() + done;
        const std::size_t count = std::min(wanted.size() - done, kMost);
        shader.colors(places, count, found, fReports);
        for (std::size_t k = 0; k < count; ++k) {
            fColors.values[at(places[k].i, places[k].j)] = found[k];
        }
        done += count;
    }
    counts.shaded += wanted.size();
}

void Grid::findOpacities()
{
    GridShader shader(*this, *fFrame);
    for (int j = 0; j < fVSize + fSmooth; ++j) {
        const int count = fSmooth ? vertexCount(j) : cellCount(j);
        for (int i = 0; i < count; ++i) fOpacities.set(at(i, j), *this, shader.opacity(i, j));
    }
}

}  // namespace zeb
