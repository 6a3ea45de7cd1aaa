// The base of all geometry, and its cycle: bound, then split or dice.
#pragma once

#include <atomic>
#include <cstdint>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "geom/edges.h"
#include "geom/surface_part.h"
#include "math/bound.h"
#include "math/transform.h"
#include "state/args.h"
#include "state/attrib.h"
#include "state/render_frame.h"
#include "util/pool.h"
#include "util/random.h"

namespace zeb
{

class Grid;
class Primitive;
struct Sweep;
struct Vertex;

// How much of something may be seen.
enum class Sight { kNone, kSome, kAll };

// Takes the pieces of a primitive that splits.
class PrimitiveSink
{
public:
    virtual ~PrimitiveSink() = default;
    virtual void add(std::unique_ptr<Primitive> piece) = 0;
    // Of the pieces of a primitive within a bound in camera space: those that would be dropped need
    // not be made.
    virtual Sight sight(const Primitive&, const Boundw&) const { return Sight::kAll; }
};

// What a primitive and all pieces split from it share.
struct PrimitiveCommon {
    // The next sequence number. Drawn by interface calls only, on the caller's thread.
    static std::uint32_t fCurSeq;

    std::uint32_t fSeq;
    // Of the draws that are its own: what procedurals make draws the same whether others are called
    // before them, or are out of sight.
    std::uint32_t fSeed;
    std::shared_ptr<const Attrib> fAttrib;
    std::shared_ptr<const Transform> fTransform;
    // One report is enough for all pieces that had to be given up.
    std::atomic<bool> fGivenUp{false};

    // Takes the records in force and the next sequence number.
    PrimitiveCommon();
    // Takes the records in force now, and a sequence number.
    void inherit(std::uint32_t seq);
};

// While a procedural is called: what it makes has its seeds from this one.
class SeedScope
{
public:
    explicit SeedScope(std::uint32_t seed)
        : fOuterSeed(std::exchange(fSeed, seed | 1)), fOuterMade(std::exchange(fMade, 0))
    {
    }
    ~SeedScope()
    {
        fSeed = fOuterSeed;
        fMade = fOuterMade;
    }
    SeedScope(const SeedScope&) = delete;
    SeedScope& operator=(const SeedScope&) = delete;

    // For what takes a sequence number.
    static std::uint32_t seedFor(std::uint32_t seq)
    {
        return fSeed ? mixSeeds(fSeed, ++fMade) : seq;
    }
    // A host may have left the scope by a jump.
    static void reset() { fSeed = fMade = 0; }

private:
    static std::uint32_t fSeed, fMade;  // 0 where no procedural is called
    const std::uint32_t fOuterSeed, fOuterMade;
};

// Splitting ends: after so many halvings, and after so many splits. Every face of a surface has a
// few of its own; the others are the surface's, more of them for a picture of more pixels. Where
// these do not suffice, pieces are long and thin on the screen, which quarters of them would be
// too: then they are cut across, so many times.
struct SplitLimits {
    long face = 1 << 8, surface = 1 << 13, across = 1 << 14;
    bool keepsRest = true;  // what may not be split any more is still worth a coarse grid
};

// What all pieces of a surface have taken in their turn. Other threads may split ahead of it, as
// long as no order in which that is done could take too many.
struct SurfaceSplits {
    SplitLimits limits;
    long count = 0, across = 0;
    std::atomic<long> ahead{0};
    std::atomic<bool> tooMany{false};  // ahead
};

// The same of a face.
struct FaceSplits {
    std::shared_ptr<SurfaceSplits> surface;
    long count = 0;
    std::atomic<long> ahead{0};
};

// Splits that were made ahead of their turn.
struct SplitsAhead {
    std::shared_ptr<FaceSplits> face;
    double most;  // of the surface
    long made;

    // Counts them in their turn, if they are as many as there may be; otherwise some would have
    // been refused.
    bool take() const;
    void giveBack() const { count(-made); }

private:
    void count(long more) const;
};

// A dicing test and what it found: the resolution of the grid, in micropolygons along u and v.
struct Dicing {
    const RenderFrame& frame;
    unsigned short fUSteps = 1, fVSteps = 1;
    // A grid whose micropolygons differ much in size is finer in places than it need be; after too
    // many splits it is taken as it is.
    bool even = true;
};

// Codes of the kinds that objects tell apart.
enum PrimitiveType : unsigned short {
    kNoType = 0,
    kConvexPolygon = 1,
    kGeneralPolygon,
    kConvexPolygonMesh,
    kGeneralPolygonMesh,
    kPatch,
    kPatchMesh,
    kNuPatchMesh,
    kSphere,
    kCone,
    kCylinder,
    kHyperboloid,
    kParaboloid,
    kDisk,
    kTorus,
    kObject,
    kProcedural
};

// A point of a surface and its derivatives, in object space. Of a rational surface all three are
// homogeneous; of others, w is 1.
struct Differential {
    Pointwd P, dPdu, dPdv;
};

// The columns of a grid, and what a family keeps of them from one row to the next.
struct Columns {
    std::vector<float> u;
    std::vector<double> kept;
};

class Primitive : public Pooled
{
public:
    static constexpr int kMaxSplitDepth = 160;
    // Micropolygons are no smaller than this, whatever the shading rate asks for.
    static constexpr float kMinSide = 1.0f / 16;

    // Takes the records in force.
    Primitive();
    // Shares the other's common record; variables are up to the copy.
    Primitive(const Primitive& other);
    Primitive& operator=(const Primitive&) = delete;
    virtual ~Primitive();

    virtual unsigned short type() const { return kNoType; }
    // Whether it calls the host when it is split, or goes.
    virtual bool callsHost() const { return false; }
    // Of the points in camera space.
    virtual Boundw bound() const { return Boundw::empty(); }
    // What the scene culls and files by: lies within the bound, and holds the surface all the same.
    virtual Boundw hull() const { return bound(); }
    // Whether the primitive is small and flat enough on screen to become one grid. A negative
    // maxSize stands for the tuned one, in pixels.
    virtual bool diceable(Dicing& dicing, float maxSize = -1) const;
    // The size that a given maxSize stands for.
    float dicingLimit(const RenderFrame& frame, float maxSize) const;
    virtual std::unique_ptr<Grid> dice(const Dicing& dicing) const;
    // For what a function of the host's moves: steps that come of halving, fine enough for the
    // chords along its sides.
    void halveSteps(Dicing& dicing) const;
    // Whether others may share some side of what will be moved as a single chord: cut in two, it
    // would not be one.
    bool hasChordForSide(const RenderFrame& frame) const;
    // Whether its umax is the long side, from where u is 1 to where v is.
    virtual bool isTriangle() const { return false; }
    virtual bool canSplit() const { return true; }
    virtual void split(PrimitiveSink&) {}
    // Of what splits into very many at once: in how many parts that can be done. Once they are
    // prepared, any thread may do a part; one after the other they do what split() does.
    virtual long parts() const { return 1; }
    virtual void prepareParts(const PrimitiveSink&) {}
    virtual void splitPart(PrimitiveSink&, long) const {}
    // In two, across the direction in which the piece is longer on the screen. Of what lies in
    // front of the eye.
    virtual void splitAcross(PrimitiveSink& sink, const RenderFrame&) { split(sink); }
    // Whether evaluations are homogeneous, so that sums come before the division by w.
    virtual bool rational() const { return false; }
    virtual Pointw evalP(float, float) const { return {}; }
    virtual Pointw evaldPdu(float, float) const { return {}; }
    virtual Pointw evaldPdv(float, float) const { return {}; }
    // The same before rounding: the point, and all three at once.
    virtual Pointwd pointAt(float u, float v) const { return evalP(u, v); }
    virtual Differential evaluate(float u, float v) const
    {
        return {evalP(u, v), evaldPdu(u, v), evaldPdv(u, v)};
    }
    // The same for a row of a grid.
    virtual void evaluateRow(Columns& columns, float v, Differential* row) const
    {
        for (const float u : columns.u) *row++ = evaluate(u, v);
    }
    // For the kernel of the dicing test, how evaluate() finds places of a swept curve; false where
    // it does otherwise.
    virtual bool describe(Sweep&) const { return false; }
    // How far the middle of a chord over 2 h of u, or of v, is from the surface at most, in object
    // space: infinite where that is not known.
    virtual double sagAlongU(double) const { return std::numeric_limits<double>::infinity(); }
    virtual double sagAlongV(double) const { return std::numeric_limits<double>::infinity(); }
    // In camera space, also beyond the sides of a piece.
    Vertex vertexAt(float u, float v) const;
    // How far a function of the host's may move the surface, in camera space.
    float displacement() const;
    // A box in camera space, with room for that.
    Boundw displaced(Boundw box) const;
    // For an instance of the object that holds this primitive. The quirk: a single patch is copied
    // without its points.
    virtual std::unique_ptr<Primitive> copy(bool quirks) const;

    const Attrib& attrib() const { return *fCommon->fAttrib; }
    const Transform& transform() const { return *fCommon->fTransform; }
    const Matrix& matrix() const { return transform().matrix(); }
    PrimitiveCommon& common() const { return *fCommon; }
    std::shared_ptr<PrimitiveCommon> shareCommon() const { return fCommon; }
    // Leaves the common record of the object that this is a copy from.
    void detachCommon(std::shared_ptr<PrimitiveCommon> own) { fCommon = std::move(own); }
    const ArgList& args() const { return fArgs; }
    // Whether it has opacities of its own.
    virtual bool hasOpacities() const;
    const Edges& edges() const { return fEdges; }
    virtual SurfacePart surfacePart() const
    {
        const auto [u0, u1, v0, v1] = fPlace;
        return {{u0, u1, u0, u1}, {v0, v0, v1, v1}};
    }

    // What the scene found when it filed the primitive: whether it lies wholly in front of the eye,
    // if so where on the screen, with the depths that hits are ordered by, and the last bucket it
    // reaches.
    void setFiled(bool front, const Bound& screen, float leastW, long lastBucketX, long lastBucketY)
    {
        fFront = front;
        fScreen = screen;
        fLeastW = leastW;
        fLastBucketX = lastBucketX;
        fLastBucketY = lastBucketY;
    }
    bool front() const { return fFront; }
    // How many times as large as others its micropolygons may be.
    void setCoarseness(float times) { fCoarseness = times; }
    const Bound& screen() const { return fScreen; }
    long lastBucketX() const { return fLastBucketX; }
    long lastBucketY() const { return fLastBucketY; }

    // Whether another split is allowed in a picture of so many pixels; counts it.
    bool mayStillSplit(const RenderFrame& frame, double pixels);
    // Whether it is for sure, ahead of its turn; adds it to the splits of the kind.
    bool maySplitAhead(const RenderFrame& frame, double pixels, std::vector<SplitsAhead>& made);
    // Whether another cut across is; counts it.
    bool mayStillSplitAcross();
    // Whether what may not be split any more should be diced as it is.
    bool keepsRest() const { return !fSurfaceSplits || fSurfaceSplits->limits.keepsRest; }
    // What is drawn for this piece: the same in every run, whatever was drawn before.
    std::uint32_t seed() const { return mixSeeds(fCommon->fSeed, fPath); }
    Random random(std::uint32_t purpose) const;

protected:
    // A piece: shares the parent's common record and continues its path of splits.
    Primitive(const Primitive& parent, std::uint32_t child, bool halved);

    // What random() is asked for.
    enum Draws : std::uint32_t { kDicingDraws = 1, kBoundDraws = 2 };
    // As dicing tests measure: on the screen, and in micropolygons.
    static double planarLength(const Pointd& p) { return std::sqrt(p.x * p.x + p.y * p.y); }
    unsigned short stepsFor(double length) const;

    float micropolygonSide() const
    {
        return fCoarseness * std::max(attrib().micropolygonSide, kMinSide);
    }
    bool flipped() const { return transform().handedness() != attrib().orientationSide; }
    // Clips to the box of zebBound, which is Euclidean: a rational bound is divided first.
    void clipToBound(Boundw& bound) const;
    // Makes up for vertices where a derivative vanishes, as at a pole: they take those of a place
    // nearby, so that they have a normal.
    void mendDerivatives(Grid& grid) const;

    // The rectangle (u and v from, to) of this surface as a piece.
    virtual std::unique_ptr<Primitive> part(float, float, float, float, std::uint32_t) const
    {
        return nullptr;
    }
    void addQuarters(PrimitiveSink& sink) const;
    void addHalves(PrimitiveSink& sink, const RenderFrame& frame) const;

    // For a surface that no number of splits does justice to.
    void limitSplits(const SplitLimits& limits);

    // Takes the place and the sides of a part of the parent, given in its parameters.
    void takePlace(const Primitive& parent, float umin, float umax, float vmin, float vmax)
    {
        const auto between = [](float a, float b, float t) { return (1 - t) * a + t * b; };
        const auto [u0, u1, v0, v1] = parent.fPlace;
        fPlace = {between(u0, u1, umin), between(u0, u1, umax), between(v0, v1, vmin),
                  between(v0, v1, vmax)};
        fEdges = parent.fEdges.part(umin, umax, vmin, vmax, parent.fPath);
    }
    std::uint32_t path() const { return fPath; }
    // Whether this came from splitting another.
    bool isPiece() const { return fIsPiece; }

    std::shared_ptr<PrimitiveCommon> fCommon;
    ArgList fArgs;
    Edges fEdges;

private:
    template <class Visit>
    void everySharedSide(const RenderFrame& frame, const Visit& visit) const;
    bool measure(Dicing& dicing, float maxSize, const Matrix& toRaster, Random& random) const;
    bool isFlat(const Dicing& dicing, const Matrix& toRaster) const;
    bool flatten(Dicing& dicing, const Matrix& toRaster, Random& random) const;
    // A point and its derivatives, in object space.
    struct Local {
        Pointd P, dPdu, dPdv;
    };
    Local euclidean(const Differential& at) const;

    struct {
        float umin = 0, umax = 1, vmin = 0, vmax = 1;
    } fPlace;  // in the parameters of the surface
    bool fFront = false;
    float fCoarseness = 1;
    Bound fScreen;
    float fLeastW = 0;  // of its points in raster space, before these are divided by it
    long fLastBucketX = 0, fLastBucketY = 0;
    std::uint32_t fPath = 0;
    int fDepth = 0;
    bool fIsPiece = false;
    // Makes the counters that there are none of yet. A surface that becomes its faces hands its own
    // on to them.
    void beginCounting();
    double mostSplits(const RenderFrame& frame, double pixels) const;
    std::shared_ptr<SurfaceSplits> fSurfaceSplits;
    std::shared_ptr<FaceSplits> fFaceSplits;
};

}  // namespace zeb
