// Sample positions, what is hit there, and what comes of it.
#pragma once

#include "hider/micropolygon.h"
#include "math/color.h"
#include "util/slist.h"

namespace zeb
{

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

class Sample
{
public:
    float x = 0, y = 0;

    void place(float px, float py)
    {
        x = px;
        y = py;
    }
    // Whether the micropolygon covers the position.
    bool sample(const MicroPolygon& micropolygon, Arena& arena);
    // Composites the hits front to back. depthOne is the depth of the far clipping plane, where
    // nothing is hit.
    PackedSample pack(double depthOne) const;
    const SList<SampleHit>& hits() const { return fHits; }

private:
    SList<SampleHit> fHits;
};

}  // namespace zeb
