// The polygons of a mesh, put in order: none without an area, none with two corners in one place.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "vector.h"

struct aiMesh;

namespace zebview
{

class Faces
{
public:
    // What has fewer than three corners is left out. Throws a Failure if a face names a vertex that
    // is not there.
    Faces(const aiMesh& mesh, const std::vector<Vector>& points);

    std::size_t size() const { return fNormals.size(); }
    // The vertices of a face, in its winding.
    std::span<const std::uint32_t> corners(std::size_t face) const
    {
        return {fCorners.data() + fStarts[face], fStarts[face + 1] - fStarts[face]};
    }
    // The place of a face's first corner among the corners of all faces.
    std::size_t firstCorner(std::size_t face) const { return fStarts[face]; }
    std::size_t cornerCount() const { return fCorners.size(); }
    // Of unit length; the winding runs counter-clockwise seen from where it points.
    const Vector& normal(std::size_t face) const { return fNormals[face]; }
    bool convex(std::size_t face, const std::vector<Vector>& points) const;

    void flip(std::size_t face);

private:
    void add(const std::vector<std::uint32_t>& corners, const std::vector<Vector>& points);

    std::vector<std::uint32_t> fCorners;
    std::vector<std::size_t> fStarts{0};
    std::vector<Vector> fNormals;
};

}  // namespace zebview
