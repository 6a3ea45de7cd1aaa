// The cameras and lights that a file brings along.
#pragma once

#include <string>
#include <vector>

#include "animation.h"
#include "color.h"
#include "vector.h"

struct aiScene;

namespace zebview
{

struct FileCamera {
    std::string name;
    Vector eye, right, up, back;  // back points away from what is seen
    bool perspective = true;
    // Of what it shows: tangents, or distances if there is no perspective.
    double halfWidth = 1, halfHeight = 1;
};

struct Lamp {
    enum Kind { kAmbient, kDistant, kOmni, kSpot } kind;
    Color color;  // light; that of kOmni and kSpot falls off with the square of the distance
    Vector from, direction;
    double coneAngle = 0, coneDeltaAngle = 0;  // degrees; the second is part of the first
};

struct Stage {
    std::vector<FileCamera> cameras;
    std::vector<Lamp> lamps;
};

// Where a model is put: what turns it upright, and then the sphere that becomes the unit sphere.
struct Place {
    Matrix turn;
    Vector center;
    double radius = 1;

    Vector point(const Vector& p) const { return (p - center) / radius; }
};

// The lamps' brightness among each other is that of the file; together they light the middle of the
// model as one lamp of brightness 1 would.
//
// brightness  theirs, as it is in the file: 0, or that of an earlier time, which counts then
Stage readStage(const aiScene& scene, const Pose& pose, const Place& place, double& brightness);

// wanted  a camera's name, or its number, from 0. Throws a Failure if there is none.
const FileCamera& findCamera(const Stage& stage, const std::string& wanted);

}  // namespace zebview
