// Shading many points at once: what the kernels take and give. There is one for each instruction
// set, all to the same bits; numbers here are plain, so that all of them share this page.
#pragma once

namespace zeb
{

struct SurfaceRecord {
    enum Kind { kConstant, kMatte, kMetal, kPlastic } kind = kConstant;
    float ka = 1, kd = 1, ks = 1, roughness = 0.1f;
    float specularcolor[3] = {1, 1, 1};
};

struct LightRecord {
    enum Kind { kAmbient, kDistant, kOmni, kSpot, kGiven, kGivenAmbient } kind = kAmbient;
    float intensity = 1;
    float color[3] = {1, 1, 1};    // not yet times the intensity
    float from[3] = {0, 0, 0};     // of omni and spot
    float toLight[3] = {0, 0, 0};  // of distant: unit length
    float axis[3] = {0, 0, 1};     // of spot: the way light travels
    float cone[3] = {0, 0, 1};     // the same, normalized once more
    float coscone = -1;            // light goes nowhere where the cosine of its angle is less
    float edge[2] = {0, 1};        // cosines between which it grows, the smaller one first
    float beamdistribution = 2;
    // Of those given: what they send to the points of a row, by planes.
    const float *L[3] = {}, *Cl[3] = {};

    bool isAmbient() const { return kind == kAmbient || kind == kGivenAmbient; }
};

struct VolumeRecord {
    enum Kind { kNone, kDepthCue, kFog } kind = kNone;
    float hither = 0, range = 1, distance = 1;
    float color[3] = {0, 0, 0};
    bool coversAll = true;  // not only as far as the surface is there
};

// Points by planes, in camera space.
struct ShadingBlock {
    static constexpr int kMost = 64;
    // Of what any instruction set takes at once.
    static constexpr int kMultiple = 16;
    using Planes = float[3][kMost];

    bool isPerspective = true;  // the eye is the origin, not the point's foot on the plane z = 0
    bool isFlipped = false;     // the geometric normal is turned round
    // What is the same for all points lies first in its planes; normals are the geometric ones
    // then.
    bool hasNormals = false, hasColors = false, hasOpacities = false;

    // How many points there are; up to the next multiple there are copies of some.
    int count = 0;
    // The place of the first in the planes of lights that are given.
    int first = 0;
    alignas(64) Planes P;
    Planes dPdu, dPdv;
    Planes N, Cs, Os;
    Planes Ci;  // the result
};

// Planes of points in rows; what lies beyond the last, up to the next multiple, repeats it.
struct RowGeometry {
    bool isPerspective, isFlipped;
    int count;
    const float *const *P, *const *dPdu, *const *dPdv;
    float *const *I, *const *Ng;  // the results
};

struct RowFacing {
    int count;
    const float *const *N, *const *I, *const *Ng;
    float* const* result;
};

// What lights give to surfaces about normals N that are seen from V.
struct RowGathering {
    enum Kind { kAmbient, kDiffuse, kSpecular, kPhong } kind = kAmbient;
    int count = 0;
    const LightRecord* lights = nullptr;
    int lightCount = 0;
    const float *const *P = nullptr, *const *N = nullptr, *const *V = nullptr;
    float shine = 0;  // the roughness, or the size
    float* const* result = nullptr;
};

// What a light sends to points, whatever side it is on.
struct RowArrival {
    int count;
    const LightRecord* light;
    const float* const* P;
    float *const *L, *const *Cl;  // the results: the way to the light, of length 1, and its colour
};

struct ShadingKernel {
    // Sets Ci. False if a point needs a report: then the points have to be shaded one by one.
    bool (*shade)(const SurfaceRecord& surface, const LightRecord* lights, int lightCount,
                  const VolumeRecord& volume, ShadingBlock& block) = nullptr;
    void (*orient)(const RowGeometry& row) = nullptr;
    void (*face)(const RowFacing& row) = nullptr;
    // Both as shade() does.
    bool (*gather)(const RowGathering& row) = nullptr;
    bool (*arrive)(const RowArrival& row) = nullptr;

    explicit operator bool() const { return shade; }
};

// For as many lanes as the machine is best at.
ShadingKernel shadingKernel();
// For 1, 4, 8 or 16; without functions where the machine or the build has it not.
ShadingKernel shadingKernel(int lanes);

}  // namespace zeb
