// Meshes brought into their place: by their node, or by bones, and morphed before.
#pragma once

#include <vector>

#include "animation.h"
#include "vector.h"

struct aiMesh;
struct aiNode;

namespace zebview
{

// The vertices of a mesh where a model shows them.
struct Shape {
    std::vector<Vector> points;
    std::vector<Vector> normals;  // of unit length, on the side of the windings; or none
    // The front of its faces is where their winding runs clockwise.
    bool isMirrored = false;
};

// Whether a mesh is more than its vertices, moved all alike.
bool isBent(const aiMesh& mesh, const Pose& pose);

// In the space that the pose is in.
Shape shapeOf(const aiMesh& mesh, const Pose::Placed& place, const Pose& pose);

}  // namespace zebview
