// All points of a grid at once, as functions of the host's shade them, and what these may ask.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "shade/grid_points.h"
#include "shade/image.h"
#include "shade/surface.h"
#include "util/pool.h"
#include "zebcore/zebcore.h"

namespace zeb
{

// Planes of so many values, as many as a pool holds at once, that begin at whole cache lines.
class PlaneStore
{
public:
    explicit PlaneStore(std::size_t size) : fSize(size) {}

    // Of zeros.
    float* take();
    // Whether the next one is at hand.
    bool hasSpare() const { return fLeft > 0; }
    bool contains(const float* plane) const;

private:
    static constexpr std::size_t kTogether = 48, kLine = 16;

    const std::size_t fSize;
    std::size_t fLeft = 0;
    template <class T>
    using Vector = std::vector<T, PoolAllocator<T>>;
    Vector<PoolArray<float>> fMemory;
    Vector<float*> fFirst;
};

// What a function is given of a grid: where in the piece the points lie, and what dicing says of
// them.
struct RowPoints {
    struct One {
        GridPoints::Parameters at;
        Vertex vertex;
    };
    std::vector<One, PoolAllocator<One>> all;
    // Vertices, whose derivatives are what they say; otherwise middles under constant shading, with
    // sums of four.
    bool areVertices = false;
    // Vertices may have neighbours of their own, beyond the grid's edges: these vertices, in
    // ascending order. Four points of each, after all vertices: before, after, above and below.
    std::vector<std::uint32_t, PoolAllocator<std::uint32_t>> edge;
    // How far values are looked at around a point, in the piece's parameters, and how many times as
    // far that is as half the way between its neighbours. None: as far as it is between them.
    struct Spacing {
        float u, v, scale1, scale2;
    };
    std::vector<Spacing, PoolAllocator<Spacing>> spacing;

    RowPoints() = default;
    // Those that colours are found of.
    RowPoints(const GridPoints& points, const VertexPlace* places, std::size_t count);
};

class HostRow final : public RowLights
{
public:
    using Triple = float* const*;
    using LightRecords = std::vector<LightRecord, PoolAllocator<LightRecord>>;

    // Finds all that surfaces are told of the points, which are all of the grid's.
    HostRow(const GridPoints& grid, const RenderFrame& frame, const RowPoints& points);
    ~HostRow() override;
    HostRow(const HostRow&) = delete;
    HostRow& operator=(const HostRow&) = delete;

    // A plane that is at hand, of the row that a function of the host's was given; null otherwise.
    static float* sparePlane(const ZebRow* row);
    // The one that a function of the host's is shading on this thread, if that is what it was
    // given; reports that it is not otherwise, and answers null.
    static HostRow* underWay(const ZebRow* row);
    // Whether planes of the host's are some of the row's; reports that they are not.
    bool owns(Triple planes, long count = 3) const;
    bool owns(const float* plane) const;

    // Calls a function, and mends what it gives that is no number.
    void shadeSurface(const HostShader& shader);
    void shadeVolume(const HostShader& shader);
    // Moves the points, none of them farther than this: in object space and, if that has no way
    // back from it, in camera space.
    struct MostMoved {
        float inObject, inCamera;
    };
    void movePoints(const HostShader& shader, const MostMoved& most);

    Point P(std::size_t k) const { return pointAt(fRow.P, k); }
    Point N(std::size_t k) const { return pointAt(fRow.N, k); }
    Point Ng(std::size_t k) const { return pointAt(fRow.Ng, k); }
    Point I(std::size_t k) const { return pointAt(fRow.I, k); }
    Color Ci(std::size_t k) const { return colorAt(fRow.Ci, k); }
    Color Oi(std::size_t k) const { return colorAt(fRow.Oi, k); }
    void setCi(std::size_t k, const Color& color) { put(fRow.Ci, k, color); }
    const Planes& planes(const Light& light) const override;
    // What the kernels know of the lights, those of the host's included; null if one is more than
    // they know.
    const LightRecords* lightRecords() const;

    // For functions that are shading.
    float* plane() const { return fStore.take(); }
    float* variable(unsigned short token, long component) const;
    const int* integers(unsigned short token) const;
    const char* string(unsigned short token) const;
    void ambient(Triple result) const;
    void diffuse(Triple N, Triple result) const;
    void specular(Triple N, Triple V, float roughness, Triple result) const;
    void phong(Triple N, Triple V, float size, Triple result) const;
    long lightCount() const;
    bool light(long number, Triple L, Triple Cl, Triple Ol) const;
    void facing(Triple N, Triple result) const;
    void differences(const float* values, float* along1, float* along2) const;
    void normals(Triple positions, Triple result) const;
    enum Transformed : short { kPlaces = 0xF10, kVectors, kNormals };
    void transform(unsigned short from, unsigned short to, short kind, Triple points,
                   Triple result) const;
    void noise(long dimensions, Triple places, const long* periods, float* result) const;
    void turbulence(long dimensions, Triple places, long octaves, float gain, bool absolute,
                    float* result) const;
    void step(float edge, const float* values, float* result) const;
    void checks(const float* s, const float* t, float* result) const;
    void look(const Image& image, const float* s, const float* t, float blur, Triple results) const;

private:
    struct LightPlanes {
        const Light* light;
        Planes planes;
    };
    struct UnderWay;

    static Color colorAt(Triple planes, std::size_t k)
    {
        return {planes[0][k], planes[1][k], planes[2][k]};
    }
    static Point pointAt(Triple planes, std::size_t k)
    {
        return {planes[0][k], planes[1][k], planes[2][k]};
    }
    static void put(Triple planes, std::size_t k, const Point& p)
    {
        planes[0][k] = p.x;
        planes[1][k] = p.y;
        planes[2][k] = p.z;
    }
    static void put(Triple planes, std::size_t k, const Color& c)
    {
        planes[0][k] = c.r;
        planes[1][k] = c.g;
        planes[2][k] = c.b;
    }
    void take(float* (&planes)[3]) const
    {
        for (float*& plane : planes) plane = fStore.take();
    }
    // The last point, as often as it takes.
    void fill(float* plane) const { std::fill(plane + fCount, plane + fSize, plane[fCount - 1]); }
    void fill(Triple planes) const
    {
        for (int axis = 0; axis < 3; ++axis) fill(planes[axis]);
    }

    // Of the primitive's variables; null without one of the type, if there is a type.
    const ArgAssoc* argument(unsigned short token, short type) const;
    float* vertexVariable(const ControlForms::Variable& variable, long component) const;
    void findPoints();
    template <class At>
    void findValues(Triple planes, bool varies, const At& at) const;
    void findParameters();
    void findTexture(unsigned short token, const float (&corners)[4], float* plane) const;
    void orient();
    void call(const HostShader& shader, ZebRow& row) const;
    // Null, and a report, for an unknown space.
    const Matrix* toCamera(unsigned short space) const;
    void findNoise(long dimensions, Triple places, const long* periods, std::size_t count,
                   float* result) const;
    // How far values are apart from one point to the next; they may be ones that repeat.
    void widths(const float* values, bool wraps, float* result) const;
    // Whether all were numbers; others become this.
    bool mend(Triple planes, float other) const;
    // The same of what a light has given, which is none where it is no number.
    bool mendLight(const Planes& planes, bool isAmbient) const;
    // Whether light may be asked for: lights themselves may not.
    bool mayAskLights() const;
    // The point as surfaces look at it that take its light one by one.
    SurfacePoint lit(std::size_t k) const;
    template <class One>
    void gather(RowGathering row, Triple result, const One& one) const;
    // Points lie in lines. A place and those beside it; itself where there is none. Places beyond
    // an edge share those of the vertex there.
    struct Neighbours {
        std::size_t here, before, after, above, below;
    };
    template <class Visit>
    void eachPlace(const Visit& visit) const;
    std::size_t lineSize(int line) const
    {
        return static_cast<std::size_t>(fPoints.areVertices ? fGrid.vertexCount(line)
                                                            : fGrid.cellCount(line));
    }

    const GridPoints& fValues;
    const Grid& fGrid;
    const RenderFrame& fFrame;
    const RowPoints& fPoints;
    const std::size_t fCount, fSize;  // with what fills the last lanes
    const ShadingKernel fKernel;      // none in the plain way
    mutable PlaneStore fStore;
    ZebRow fRow{};
    mutable std::vector<std::unique_ptr<LightPlanes>> fLightPlanes;
    mutable LightRecords fLightRecords;
    mutable const HostShader* fUnderWay = nullptr;
    mutable bool fDescribed = false, fAllKnown = false;
    mutable const char* fWithoutLight = nullptr;  // why none may be asked for
};

template <class Visit>
void HostRow::eachPlace(const Visit& visit) const
{
    const int lines = fGrid.fVSize + fPoints.areVertices;
    const std::size_t edges = fPoints.edge.size(), vertices = fCount - 4 * edges;
    const auto beyond = [&](std::size_t edge) {
        const std::size_t first = vertices + 4 * edge;
        return Neighbours{fPoints.edge[edge], first, first + 1, first + 2, first + 3};
    };
    std::size_t start = 0, above = 0, edge = 0;
    for (int j = 0; j < lines; ++j) {
        const std::size_t size = lineSize(j), below = start + size;
        const std::size_t sizeAbove = j > 0 ? lineSize(j - 1) : 0;
        const std::size_t sizeBelow = j + 1 < lines ? lineSize(j + 1) : 0;
        for (std::size_t i = 0; i < size; ++i) {
            const std::size_t k = start + i;
            if (edge < edges && fPoints.edge[edge] == k) {
                visit(k, beyond(edge++));
                continue;
            }
            visit(k, Neighbours{k, i > 0 ? k - 1 : k, i + 1 < size ? k + 1 : k,
                                i < sizeAbove ? above + i : k, i < sizeBelow ? below + i : k});
        }
        above = start;
        start = below;
    }
    for (edge = 0; edge < edges; ++edge) {
        const Neighbours near = beyond(edge);
        for (const std::size_t k : {near.before, near.after, near.above, near.below})
            visit(k, near);
    }
}

}  // namespace zeb
