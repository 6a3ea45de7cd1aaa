// Colours a grid: shading happens at its vertices or, under constant interpolation, once a
// micropolygon.

#include "geom/grid.h"
#include "shade/grid_points.h"
#include "shade/surface.h"
#include "shade/volume.h"
#include "state/error.h"

namespace zeb
{

namespace
{

// Takes no memory before it is asked for colours.
class GridShader
{
public:
    GridShader(const Grid& grid, const RenderFrame& frame)
        : fGrid(grid),
          fPoints(grid, frame),
          fAttrib(*grid.fAttrib),
          fPerspective(frame.option.perspective),
          fQuirks(frame.option.quirks),
          fPlain(frame.plain),
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
        block.hasNormals = fPoints.hasNormals();
        block.hasColors = fPoints.hasColors();
        block.hasOpacities = fPoints.hasOpacities();
        const bool varies = block.hasNormals || block.hasColors || block.hasOpacities;
        for (std::size_t done = 0; done < count; done += ShadingBlock::kMost) {
            block.count = static_cast<int>(std::min<std::size_t>(count - done, block.kMost));
            const int most = (block.count + block.kMultiple - 1) & -block.kMultiple;
            for (int k = 0; k < most; ++k) {
                // The last one, as often as it takes.
                const int n = std::min(k, block.count - 1);
                const VertexPlace at = places[done + static_cast<std::size_t>(n)];
                putVertex(block, k, fPoints.vertex(at));
                if (k == 0 || varies) putVariables(block, k, fPoints.parameters(at));
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
    void putVariables(ShadingBlock& block, int k, GridPoints::Parameters at) const
    {
        if (block.hasNormals) put(block.N, k, fPoints.normal(at));
        put(block.Cs, k, fPoints.color(at));
        put(block.Os, k, fPoints.opacity(at));
    }

    // All that the surface asks of a point.
    void find(VertexPlace at)
    {
        const GridPoints::Parameters parameters = fPoints.parameters(at);
        SurfacePoint& p = fPoint;
        p.u = parameters.u;
        p.v = parameters.v;
        const Vertex vertex = fPoints.vertex(at);
        p.P = vertex.P;
        p.dPdu = vertex.dPdu;
        p.dPdv = vertex.dPdv;
        p.E = fPerspective ? gOrigin : Point(p.P.x, p.P.y, 0);
        p.I = p.P - p.E;
        p.Ng = rounded(Pointd(p.dPdu) ^ Pointd(p.dPdv));
        if (fGrid.fFlip) p.Ng = -p.Ng;
        p.N = fPoints.hasNormals() ? fPoints.normal(parameters) : p.Ng;
        p.Cs = fPoints.color(parameters);
        p.Os = fPoints.opacity(parameters);
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

    const Grid& fGrid;
    const GridPoints fPoints;
    const Attrib& fAttrib;
    const bool fPerspective;
    const bool fQuirks;
    const bool fPlain;
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
    const GridPoints points(*this, frame);
    fOpacityVaries = points.hasOpacities();
    fOpacity = points.inRange(fAttrib->surfaceOpacity);
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
    const GridPoints points(*this, *fFrame);
    eachPoint([&](VertexPlace place) {
        fOpacities.set(at(place.i, place.j), *this, points.opacity(points.parameters(place)));
    });
}

}  // namespace zeb
