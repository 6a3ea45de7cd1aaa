// Surfaces of tiny mirrors, as glTF describes them.
#pragma once

#include "environment.h"

namespace zebview
{

// At each point of a row.
struct FacetPlanes {
    Planes N, V;      // of unit length: the normal on the eye's side, and to the eye
    Planes albedo;    // what is scattered
    Planes facing;    // what is mirrored of light that comes straight at the surface
    float* rough;     // 0 to 1
    float* openness;  // how much arrives from around
};

// around  the environment; null: the lamps make one, dimly
// result  set: the light that goes to the eye
void lightFacets(const ZebRow& row, const FacetPlanes& facets, const Around* around,
                 const Planes& result);

// How much of what comes from the eye is mirrored where it is so much of what comes straight.
float mirroredOf(float facing, const FacetPlanes& facets, long k);

// Where mirrors show what lies.
Planes mirrorWays(const ZebRow& row, const Planes& N, const Planes& V);

}  // namespace zebview
