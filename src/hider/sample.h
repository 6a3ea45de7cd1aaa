// What comes of the surfaces at a sample's position.
#pragma once

#include "math/color.h"
#include "util/slist.h"

namespace zeb
{

// What orders the hits of a sample, the least in front: depth, or the negated sequence number. A
// double holds either exactly.
using SampleOrder = double;

// One surface at a sample's position.
struct SampleHit {
    SampleOrder order;
    Color color, opacity;
    bool full;   // every channel hides what is behind
    bool matte;  // cuts a hole

    SampleHit(SampleOrder o, const Color& c, const Color& op, bool isMatte)
        : order(o),
          color(c),
          opacity(op),
          full(op.r > 0.9999999999 && op.g > 0.9999999999 && op.b > 0.9999999999),
          matte(isMatte)
    {
    }
    bool opaque() const { return full; }
    bool operator<(const SampleHit& other) const { return order < other.order; }
};

// The resolved result of one sample. Depth is in the scale that hits are ordered by.
struct PackedSample {
    float x, y;
    Color color;
    float alpha;
    double depth;
};

// Composites hits front to back. depthOne is the depth of the far clipping plane, where nothing is
// hit. The quirk: colours, which come multiplied by their opacity, are so again.
class Composite
{
public:
    Composite(float x, float y, double depthOne, bool quirks)
        : fDepthOne(depthOne), fQuirks(quirks), fResult{x, y, gBlack, 0, depthOne}
    {
    }
    // False when nothing behind can be seen, nor give the depth: what lies beyond the far clipping
    // plane leaves that to hits behind it.
    bool add(const SampleHit& hit);
    PackedSample result();

private:
    double fDepthOne;
    bool fQuirks;
    PackedSample fResult;
    Color fT = gWhite;
};

// Takes the hits of one position one after the other, in the order in which surfaces are filed:
// where depths are equal, or opacities beyond 1, it decides what is seen.
class Sample
{
public:
    float x = 0, y = 0;

    void place(float px, float py)
    {
        x = px;
        y = py;
    }
    void add(const SampleHit& hit, Arena& arena);
    PackedSample pack(double depthOne, bool quirks) const;
    // The first hits, in order; where there are many, later ones are not among them.
    const SList<SampleHit>& hits() const { return fHits; }

private:
    // A list of this length is as far as a search by its links stays cheap.
    static constexpr int kShallow = 12;

    // Where a hit stands among those of equal order: the latest in front, but behind the one that
    // was the nearest of all when it came.
    enum Place { kInFront, kNearest, kBehindNearest, kListed };

    // Hits of a sample that many surfaces cover, the latest first: they are put in order once, when
    // the sample is resolved.
    struct Deep {
        struct Node {
            SampleHit hit;
            Place place;
            const Node* earlier;
        };
        const Node* latest;
        int count;
        SampleOrder nearest;
        bool nearestOpaque;
        SampleOrder cover;  // the least of all other opaque hits: hides what comes behind it
        Arena* arena;
    };
    struct Sorted {
        const SampleHit* hit;
        Place place;
        int index;
        bool operator<(const Sorted& other) const
        {
            if (hit->order != other.hit->order) return hit->order < other.hit->order;
            return place != other.place ? place < other.place : index < other.index;
        }
    };

    void addDeep(const SampleHit& hit, Arena& arena);
    Sorted* sortDeep(int& count) const;

    SList<SampleHit> fHits;
    int fCount = 0;
    Deep* fDeep = nullptr;
};

}  // namespace zeb
