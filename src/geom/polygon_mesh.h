// What meshes of polygons have in common.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "geom/polygon.h"
#include "util/lock.h"

namespace zeb
{

// The sides that two faces of a mesh have in common, by their ends' places: meshes that have
// several vertices at one place close there too.
class SharedSides
{
public:
    void add(const Point& a, const Point& b);
    // To be called before the first question.
    void sort();
    bool contains(const Point& a, const Point& b) const;

private:
    static std::uint64_t key(const Point& a, const Point& b);
    std::size_t first(std::uint64_t key) const { return static_cast<std::size_t>(key >> fShift); }

    std::vector<std::uint64_t> fKeys;
    // Keys are hashes: few begin with the same bits. Where those begin that a key begins with.
    std::vector<std::uint32_t> fStarts;
    int fShift = 0;
};

// The faces of a mesh and of all its instances, and what the first to be split has found of them.
class MeshFaces
{
public:
    // From here on are the sizes of a face's loops, and its indices.
    struct Place {
        const long *size, *index;
    };

    // The loops of all faces, one after the other; no counts of loops where all faces have one.
    MeshFaces(std::vector<long> faceLoops, std::vector<long> loopSizes, const long* indices);

    std::size_t count() const { return fFaceLoops.empty() ? fLoopSizes.size() : fFaceLoops.size(); }
    const std::vector<long>& indices() const { return fIndices; }
    long loops(std::size_t face) const { return fFaceLoops.empty() ? 1 : fFaceLoops[face]; }
    // Over all loops.
    static long vertices(const Place& place, long loops);
    // Of the face after one that is at a place.
    Place next(std::size_t face, const Place& place) const;

    std::vector<Point> fPoints;

    // On any thread, before the first of the following is asked.
    void prepare();
    const SharedSides& sides() const { return fSides; }
    const Bound& box() const { return fBox; }
    Place place(std::size_t face) const;

    // Which faces may be seen, in order, where sight(box) tells of boxes in object space, and
    // isSeen(face) of the faces in those that are partly seen.
    template <class SightOf, class IsSeen>
    std::vector<std::uint32_t> seen(const SightOf& sight, const IsSeen& isSeen);

private:
    // So many faces near each other have a box, and so many of these another.
    static constexpr std::size_t kGroup = 16, kGroups = 32;
    // From every so many on the place of a face is known.
    static constexpr std::size_t kStride = 16;
    struct Start {
        std::ptrdiff_t loop, index;
    };

    Bound boxOf(std::size_t face) const;
    void prepareGroups();

    std::vector<long> fFaceLoops;
    std::vector<long> fLoopSizes;
    std::vector<long> fIndices;

    Lock fLock;  // of who prepares them
    std::vector<Start> fStarts;
    SharedSides fSides;
    Bound fBox = Bound::empty();
    // Where some of a mesh is out of sight.
    std::vector<std::uint32_t> fNear;  // faces, next to each other where they are near
    std::vector<Bound> fBoxes, fOuterBoxes;
};

// Splits into its faces, so many in one part, but for those that are out of sight.
class PolygonMesh : public Polygon
{
public:
    Point vertex(long i) const override { return fFaces->fPoints[static_cast<std::size_t>(i)]; }
    long nVertices() const override { return static_cast<long>(fFaces->fPoints.size()); }
    bool shared(long from, long to) const override
    {
        return fFaces->sides().contains(vertex(from), vertex(to));
    }
    Boundw bound() const override;
    void split(PrimitiveSink& sink) override;
    long parts() const override;
    void prepareParts(const PrimitiveSink& sink) override;
    void splitPart(PrimitiveSink& sink, long part) const override;

protected:
    explicit PolygonMesh(std::shared_ptr<MeshFaces> faces) : fFaces(std::move(faces)) {}
    // Takes the points out of the variables.
    void init(long nargs, const unsigned short* tokens, void* const* values);
    // One with so many loops.
    virtual std::unique_ptr<Primitive> makeFace(std::uint32_t face, long loops,
                                                const MeshFaces::Place& place) const = 0;

private:
    static constexpr std::size_t kPartFaces = 512;

    std::size_t seenCount() const { return fAllSeen ? fFaces->count() : fSeen.size(); }
    Sight sight(const PrimitiveSink& sink, const Bound& box) const;
    template <class At>
    Boundw boundOf(std::size_t n, const At& at) const;
    Boundw faceBound(std::size_t face) const;

    std::shared_ptr<MeshFaces> fFaces;
    bool fAllSeen = true;
    std::vector<std::uint32_t> fSeen;  // of the faces, if not all
};

}  // namespace zeb
