// Colours a grid: shading happens at its vertices or, under constant interpolation, once a
// micropolygon.

#include "geom/grid.h"
#include "shade/grid_points.h"
#include "shade/host_row.h"
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
        const Volume* const volume = fAttrib.atmosphereShader.get();
        fVolume = volume && !volume->host() ? volume : nullptr;
    }

    // To be called before colours are asked for.
    void prepare()
    {
        fPoint.lights = &fAttrib.lights;
        if (!fSurface->host()) takeParameters();
        if (!fPlain && !fGrid.shadedByHost()) describe();
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

    // With functions of the host's, all points at once.
    void colorsByHost(HostRow& row, const VertexPlace* places, std::size_t count)
    {
        const AttribNamesScope names(fAttrib.object.text(), fAttrib.group.text());
        const HostShader* const surface = fSurface->host();
        if (surface) {
            row.shadeSurface(*surface);
            for (std::size_t k = 0; k < count && fVolume; ++k) {
                row.setCi(k, through({row.P(k), row.I(k), row.Ci(k), row.Oi(k)}));
            }
        } else {
            shadeBuiltIn(row, places, count);
        }
        const Volume* const volume = fAttrib.atmosphereShader.get();
        if (volume && volume->host()) row.shadeVolume(*volume->host());
    }

private:
    // A built-in surface with lights or an atmosphere of the host's.
    void shadeBuiltIn(HostRow& row, const VertexPlace* places, std::size_t count)
    {
        std::vector<Color, PoolAllocator<Color>> colors(count);
        const HostRow::LightRecords* const lights = fPlain ? nullptr : row.lightRecords();
        if (lights) {
            fLights = *lights;
            describe();
        }
        fPoint.row = &row;
        if (!fKernel || !colorsByKernel(places, count, colors.data())) {
            for (fPoint.number = 0; fPoint.number < count; ++fPoint.number) {
                colors[fPoint.number] = shade(places[fPoint.number]);
            }
        }
        for (std::size_t k = 0; k < count; ++k) row.setCi(k, colors[k]);
    }

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
        if (!fGrid.shadedByHost() && !describeLights()) return;
        if (fVolume && !fVolume->describe(fVolumeRecord)) return;
        fVolumeRecord.coversAll = fQuirks;
        fKernel = shadingKernel();
    }

    bool describeLights()
    {
        fLights.reserve(8);  // more than most have
        for (const auto& light : fAttrib.lights) {
            if (!light->describe(fLights.emplace_back())) return false;
        }
        return true;
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
            block.first = static_cast<int>(done);
            const int most = (block.count + block.kMultiple - 1) & -block.kMultiple;
            for (int k = 0; k < most; ++k) {
                // The last one, as often as it takes.
                const int n = std::min(k, block.count - 1);
                const VertexPlace at = places[done + static_cast<std::size_t>(n)];
                putVertex(block, k, fPoints.vertex(at));
                if (k == 0 || varies) putVariables(block, k, fPoints.parameters(at));
            }
            if (!fKernel.shade(fSurfaceRecord, fLights.data(), static_cast<int>(fLights.size()),
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
        return fVolume ? through({p.P, p.I, p.Ci, p.Oi}) : p.Ci;
    }
    Color through(VolumePoint seen) const
    {
        // The quirk: compositing multiplies by the opacity, the atmosphere's colour too.
        if (!fQuirks) seen.cover = seen.Oi;
        fVolume->evaluate(seen);
        return seen.Ci;
    }

    const Grid& fGrid;
    const GridPoints fPoints;
    const Attrib& fAttrib;
    const bool fPerspective;
    const bool fQuirks;
    const bool fPlain;
    const Surface* fSurface;
    const Volume* fVolume;  // null without one that is built in
    std::unique_ptr<Surface> fOwn;
    ParmList fParameters = {};  // of fOwn; listed once, not for every point
    bool fVarying = false;
    SurfacePoint fPoint;
    SurfaceRecord fSurfaceRecord;
    HostRow::LightRecords fLights;
    VolumeRecord fVolumeRecord;
    ShadingKernel fKernel;
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
    if (fAttrib->opacityByHost) {
        fOpacityVaries = true;
    } else if (fOpacityVaries) {
        findOpacities();
    }
    fOpaque = !fOpacityVaries && fOpacity == gWhite;
}

void Grid::shadeVertices(const Places& wanted, ShadingCounts& counts) const
{
    counts.shaded += wanted.size();
    if (wanted.empty()) return;
    if (shadedByHost()) {
        fAllReports = keepingReports([&] { shadeByHost(wanted); });
        return;
    }
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
}

void Grid::shadeByHost(const Places& all) const
{
    const GridPoints points(*this, *fFrame);
    const RowPoints places(points, all.data(), all.size());
    HostRow row(points, *fFrame, places);
    GridShader shader(*this, *fFrame);
    shader.prepare();
    shader.colorsByHost(row, all.data(), all.size());
    const auto within = [](float x) { return x > 0 ? std::min(x, 1.0f) : 0; };
    for (std::size_t k = 0; k < all.size(); ++k) {
        fColors.values[at(all[k].i, all[k].j)] = row.Ci(k);
        if (!fAttrib->opacityByHost) continue;
        const Color Oi = row.Oi(k);
        fOpacities.set(at(all[k].i, all[k].j), *this, {within(Oi.r), within(Oi.g), within(Oi.b)});
    }
}

void Grid::findOpacities() const
{
    const GridPoints points(*this, *fFrame);
    eachPoint([&](VertexPlace place) {
        fOpacities.set(at(place.i, place.j), *this, points.opacity(points.parameters(place)));
    });
}

}  // namespace zeb
