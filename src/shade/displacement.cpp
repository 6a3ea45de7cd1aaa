// Moves the vertices of grids as functions of the host's say.

#include <cmath>

#include "geom/chord.h"
#include "geom/primitive.h"
#include "shade/host_row.h"

namespace zeb
{

namespace
{

using Parameters = GridPoints::Parameters;

double lengthOf(const Pointd& p) { return std::sqrt(dot(p, p)); }

bool isFlat(const Pointd& a, const Pointd& b)
{
    constexpr double kNothing = 1e-10;  // the square of a sine, or of how much shorter one is
    const Pointd N = a ^ b;
    const double longer = std::max(dot(a, a), dot(b, b));
    return !(dot(N, N) > kNothing * longer * longer);
}
Pointd normalOf(const Vertex& vertex) { return Pointd(vertex.dPdu) ^ Pointd(vertex.dPdv); }
bool isFlat(const Vertex& vertex) { return isFlat(Pointd(vertex.dPdu), Pointd(vertex.dPdv)); }

// Normals of what has been moved are found by differences: within a grid, of its vertices; at its
// edges, of places around the vertex that depend on nothing but the place, so that grids that meet
// find the same. Those beyond the edge lie on the surface as it would go on.
class Displacer
{
public:
    Displacer(Grid& grid, const Primitive& primitive, const RenderFrame& frame)
        : fGrid(grid),
          fPrimitive(primitive),
          fFrame(frame),
          fSteps{1.0f / static_cast<float>(grid.fUSize), 1.0f / static_cast<float>(grid.fVSize)},
          fToRaster(primitive.matrix() * frame.cameraToRaster),
          fSide(std::max(grid.fAttrib->micropolygonSide, Primitive::kMinSide))
    {
        const auto& m = frame.cameraToRaster.m;
        const auto scale = [&m](int axis) {
            return std::sqrt(double{m[0][axis]} * m[0][axis] + double{m[1][axis]} * m[1][axis]);
        };
        fWidth = fSide / std::max(scale(0), scale(1));
        findVertices();
        for (const std::uint32_t k : fPoints.edge) addAround(k);
    }

    void displace(const HostShader& shader)
    {
        const GridPoints values(fGrid, fFrame);
        HostRow row(values, fFrame, fPoints);
        row.movePoints(shader, {fGrid.fAttrib->displacementBound, fPrimitive.displacement()});
        const bool hasNormals = values.hasNormals();
        std::size_t edge = 0;
        for (int j = 0; j <= fGrid.fVSize; ++j) {
            for (int i = 0; i < fGrid.vertexCount(j); ++i) {
                const std::size_t k = fGrid.at(i, j);
                const bool isEdge = edge < fPoints.edge.size() && fPoints.edge[edge] == k;
                Pointd along1, along2;
                if (isEdge) {
                    const std::size_t first = vertexCount() + 4 * edge;
                    along1 = between(row, first, first + 1) * (0.5 / double{fReach[edge].along1});
                    along2 =
                        between(row, first + 2, first + 3) * (0.5 / double{fReach[edge].along2});
                    ++edge;
                } else {
                    along1 = between(row, k - 1, k + 1) * (0.5 / double{fSteps.along1});
                    along2 = between(row, fGrid.at(i, j - 1), fGrid.at(i, j + 1)) *
                             (0.5 / double{fSteps.along2});
                }
                Vertex& vertex = fGrid.vertices()[k];
                vertex.P = row.P(k);
                if (isFlat(along1, along2)) continue;
                if (hasNormals) turn(along1, along2, row.N(k), row.Ng(k));
                vertex.dPdu = rounded(fGrid.fTransposed ? along2 : along1);
                vertex.dPdv = rounded(fGrid.fTransposed ? along1 : along2);
            }
        }
        if (fPrimitive.displacement() > 0) takeChords();
        fGrid.fDisplaced = true;
    }

private:
    // Ways in the parameters of the piece, along the rows and across them.
    struct Steps {
        float along1, along2;
    };

    std::size_t vertexCount() const { return fGrid.vertexCount(); }
    static Pointd between(const HostRow& row, std::size_t from, std::size_t to)
    {
        return Pointd(row.P(to)) - Pointd(row.P(from));
    }
    Parameters parameters(float along1, float along2) const
    {
        return fGrid.fTransposed ? Parameters{along2, along1} : Parameters{along1, along2};
    }

    // Whether some neighbour in the grid is missing, or lies on a triangle's long side where it has
    // been folded to.
    bool isEdge(int i, int j) const
    {
        if (i == 0 || j == 0 || j == fGrid.fVSize) return true;
        if (!fGrid.fTriangular) return i == fGrid.fUSize;
        return (i + 1) * fGrid.fVSize + j * fGrid.fUSize > fGrid.fUSize * fGrid.fVSize ||
               i * fGrid.fVSize + (j + 1) * fGrid.fUSize > fGrid.fUSize * fGrid.fVSize;
    }

    void findVertices()
    {
        fPoints.areVertices = true;
        for (int j = 0; j <= fGrid.fVSize; ++j) {
            for (int i = 0; i < fGrid.vertexCount(j); ++i) {
                const float along1 = static_cast<float>(i) * fSteps.along1;
                const float along2 = static_cast<float>(j) * fSteps.along2;
                Parameters at = parameters(along1, along2);
                if (fGrid.fTriangular && at.u + at.v > 1) {
                    const bool upright = fGrid.fVSize <= fGrid.fUSize;
                    at = upright ? Parameters{at.u, 1 - at.u} : Parameters{1 - at.v, at.v};
                }
                const Vertex& vertex = fGrid.vertex(i, j);
                if (isEdge(i, j)) {
                    fPoints.edge.push_back(static_cast<std::uint32_t>(fPoints.all.size()));
                    fReach.push_back(reach(vertex));
                    addSpacing(vertex, fReach.back());
                } else {
                    addSpacing(vertex, fSteps);
                }
                fPoints.all.push_back({at, vertex});
            }
        }
    }

    // As wide as a micropolygon would be that is seen face-on: half a piece at most.
    Steps reach(const Vertex& vertex) const
    {
        const double width = faceOn(vertex);
        const auto step = [width](const Point& d) {
            return static_cast<float>(std::min(width / std::max(lengthOf(Pointd(d)), 1e-30), 0.5));
        };
        const Steps steps{step(vertex.dPdu), step(vertex.dPdv)};
        return fGrid.fTransposed ? Steps{steps.along2, steps.along1} : steps;
    }
    double faceOn(const Vertex& vertex) const
    {
        return fWidth * std::fabs((Pointwd(Pointd(vertex.P)) * fFrame.cameraToRaster).w);
    }

    // Detail is left out that is smaller than the micropolygons which the shading rate asks for, as
    // they lie on the screen: that changes smoothly from grid to grid, which their own do not.
    void addSpacing(const Vertex& vertex, const Steps& neighbours)
    {
        constexpr double kLongest = 4;  // of those seen from the side
        const Pointwd P = Pointwd(Pointd(vertex.P)) * fFrame.cameraToRaster;
        const double width = faceOn(vertex);
        const auto wide = [&](const Point& d, const float(&corners)[4], int last) {
            const Pointwd way = Pointwd(d.x, d.y, d.z, 0) * fFrame.cameraToRaster;
            const double x = (way.x - P.x / P.w * way.w) / P.w;
            const double y = (way.y - P.y / P.w * way.w) / P.w;
            const double most = kLongest * width / std::max(lengthOf(Pointd(d)), 1e-30);
            const double whole =
                fGrid.fTriangular
                    ? 1e30
                    : 1.0 / std::max(std::fabs(double{corners[last]} - double{corners[0]}), 1e-30);
            return static_cast<float>(
                std::min({fSide / std::max(std::sqrt(x * x + y * y), 1e-30), most, whole}));
        };
        const float u = wide(vertex.dPdu, fGrid.fPart.u, 1),
                    v = wide(vertex.dPdv, fGrid.fPart.v, 2);
        const Steps steps = fGrid.fTransposed ? Steps{v, u} : Steps{u, v};
        fPoints.spacing.push_back(
            {u, v, steps.along1 / neighbours.along1, steps.along2 / neighbours.along2});
    }

    // Four places around a vertex; of one where the surface has no normal, such as a pole, around a
    // place nearby.
    void addAround(std::uint32_t k)
    {
        constexpr float kAside = 1e-3f;
        const auto inwards = [](float t) { return t < 0.5f ? t + kAside : t - kAside; };
        Parameters at = fPoints.all[k].at;
        const Vertex vertex = fPoints.all[k].vertex;
        if (isFlat(fPrimitive.vertexAt(at.u, at.v))) at = {inwards(at.u), inwards(at.v)};
        const Steps steps = fReach[(fPoints.all.size() - vertexCount()) / 4];
        const Parameters step1 = parameters(steps.along1, 0), step2 = parameters(0, steps.along2);
        const auto add = [&](const Parameters& step, float sign) {
            const Parameters place{at.u + sign * step.u, at.v + sign * step.v};
            Vertex there = fPrimitive.vertexAt(place.u, place.v);
            if (isFlat(there)) {
                there.dPdu = vertex.dPdu;
                there.dPdv = vertex.dPdv;
            } else if (dot(normalOf(there), normalOf(vertex)) < 0) {
                there.dPdu = -there.dPdu;  // beyond a pole u runs the other way
            }
            fPoints.all.push_back({place, there});
            fPoints.spacing.push_back(fPoints.spacing[k]);
        };
        add(step1, -1);
        add(step1, 1);
        add(step2, -1);
        add(step2, 1);
    }

    // Along lines that it shares with others.
    void takeChords()
    {
        const Edges& lines = fGrid.fEdges;
        const int nu = fGrid.fUSize, nv = fGrid.fVSize;
        takeChords(lines.vmin, nu, [](float t) { return Steps{t, 0}; });
        takeChords(lines.umin, nv, [](float t) { return Steps{0, t}; });
        if (fGrid.fTriangular) {
            takeChords(lines.umax, std::max(nu, nv), [](float t) { return Steps{1 - t, t}; });
        } else {
            takeChords(lines.umax, nv, [](float t) { return Steps{1, t}; });
            takeChords(lines.vmax, nu, [](float t) { return Steps{t, 1}; });
        }
    }
    // Of a side of so many steps, of which place(t) tells where it is. A triangle has more than one
    // vertex at some places of its long side.
    template <class Place>
    void takeChords(std::uint32_t line, int count, const Place& place)
    {
        if (line == 0) return;
        std::vector<std::uint32_t> side(static_cast<std::size_t>(count) + 1);
        const auto index = [count](float t) {
            return static_cast<std::size_t>(t * static_cast<float>(count));
        };
        const auto visit = [&](const auto& what) {
            for (const std::uint32_t k : fPoints.edge) {
                const auto [u, v] = fPoints.all[k].at;
                const Steps at = fGrid.fTransposed ? Steps{v, u} : Steps{u, v};
                // Along a side one of the two is how far it is.
                for (const float t : {at.along2, at.along1}) {
                    const Steps there = place(t);
                    if (there.along1 != at.along1 || there.along2 != at.along2) continue;
                    what(k, index(t));
                    break;
                }
            }
        };
        visit([&](std::uint32_t k, std::size_t step) { side[step] = k; });
        // From the surface, since vertices are rounded: what one grid takes for short, all have to.
        const auto raster = [&](float t) {
            const Steps at = place(t);
            const auto [u, v] = parameters(at.along1, at.along2);
            return homogenized(fPrimitive.pointAt(u, v)) * fToRaster;
        };
        everyChord(raster, fSide, count,
                   [&](float from, float to) { straighten(side, index(from), index(to)); });
        visit([&](std::uint32_t k, std::size_t step) {
            fGrid.vertices()[k].P = fGrid.vertices()[side[step]].P;
        });
    }
    void straighten(const std::vector<std::uint32_t>& side, std::size_t from, std::size_t to)
    {
        const auto P = [&](std::size_t place) -> Point& { return fGrid.vertices()[side[place]].P; };
        for (std::size_t place = from + 1; place < to; ++place) {
            const double t = static_cast<double>(place - from) / static_cast<double>(to - from);
            P(place) = rounded(Pointd(P(from)) * (1 - t) + Pointd(P(to)) * t);
        }
    }

    // Normals that were given are turned by the shortest way that turns the surface's own: the
    // derivatives become what has them for its normal.
    void turn(Pointd& along1, Pointd& along2, const Point& N, const Point& Ng) const
    {
        const auto unit = [](const Pointd& p) { return p * (1 / std::max(lengthOf(p), 1e-30)); };
        const Pointd before = unit(Pointd(Ng)), given = unit(Pointd(N));
        Pointd after = unit(along1 ^ along2);
        if (fGrid.fFlip != fGrid.fTransposed) after = after * -1;
        const Pointd axis = before ^ after;  // as long as the angle's sine
        const double cosine = dot(before, after);
        if (cosine < -0.999) return;
        const Pointd normal =
            unit(given * cosine + (axis ^ given) + axis * (dot(axis, given) / (1 + cosine)));
        const auto upright = [&](const Pointd& d) { return d - normal * dot(d, normal); };
        const Pointd turned1 = upright(along1), turned2 = upright(along2);
        if (isFlat(turned1, turned2)) return;
        along1 = turned1;
        along2 = turned2;
    }

    Grid& fGrid;
    const Primitive& fPrimitive;
    const RenderFrame& fFrame;
    const Steps fSteps;
    const Matrix fToRaster;
    const double fSide;  // of a micropolygon, in pixels
    double fWidth = 0;   // the same in camera space, where w is 1
    RowPoints fPoints;
    std::vector<Steps> fReach;  // of the vertices at edges
};

}  // namespace

void Grid::displace(const Primitive& primitive, const RenderFrame& frame)
{
    const HostShader* const shader = fAttrib->displacementShader.get();
    if (shader) Displacer(*this, primitive, frame).displace(*shader);
}

}  // namespace zeb
