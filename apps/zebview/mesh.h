// One mesh of a model, ready to be handed to the renderer.
#pragma once

#include <array>
#include <vector>

#include "material.h"
#include "skin.h"

struct aiMesh;

namespace zebview
{

// Faces that share the vertices of a mesh: how many corners each has, and which.
struct FaceList {
    std::vector<long> sizes, corners;
};

struct Mesh {
    std::vector<float> points;   // three a vertex
    std::vector<float> normals;  // three a vertex, on the side of every face's winding
    // Three a vertex, light; or none.
    std::vector<float> colors, opacities;
    // One a vertex, as places on the map of colors; or none.
    std::vector<float> scalars;
    // Of the channels that the material needs: two a vertex, y upwards. Of others none.
    std::array<std::vector<float>, 8> coordinates;
    FaceList convex, concave;
    // Concave faces that look the same without normals, and better if their outline crosses
    // itself: then parts of them are wound the other way.
    FaceList flatConcave;
    // Vertices that are points, and pairs of those that are lines; they have no normals.
    std::vector<std::size_t> dots, lines;
    double dotRadius = 0;  // of the spheres that points show as
    Material material;
    // The front of its faces is where their winding runs clockwise.
    bool isMirrored = false;
    // What takes it from its place to others where it shows, too.
    std::vector<Matrix> copies;

    std::size_t vertexCount() const { return points.size() / 3; }
    Vector point(std::size_t vertex) const
    {
        const float* const p = &points[3 * vertex];
        return {p[0], p[1], p[2]};
    }
    // What takes it to all places where it shows, its own first.
    std::vector<Matrix> places() const;
};

// Which vertices show: stray ones beside polygons, lines and points count for nothing.
std::vector<bool> usedVertices(const aiMesh& mesh);

// Makes a mesh of polygons, lines and points that are where they belong. Without any faces its
// vertices are points.
//
// facets   the normals of the file are those of its faces and tell nothing more
// scalars  one for each vertex of the source, or none
Mesh buildMesh(const aiMesh& source, const Shape& shape, bool facets, const Material& material,
               const std::vector<float>& scalars);

}  // namespace zebview
