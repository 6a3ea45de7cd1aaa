#include "faces.h"

#include <assimp/mesh.h>

#include <algorithm>
#include <numbers>

#include "failure.h"

namespace zebview
{

namespace
{

// Twice the area, along the normal; seen from a corner, so that far-off polygons lose no digits.
Vector areaVector(const std::vector<std::uint32_t>& corners, const std::vector<Vector>& points)
{
    Vector sum;
    const Vector& origin = points[corners[0]];
    for (std::size_t i = 1; i + 1 < corners.size(); ++i) {
        sum += (points[corners[i]] - origin) ^ (points[corners[i + 1]] - origin);
    }
    return sum;
}

}  // namespace

Faces::Faces(const aiMesh& mesh, const std::vector<Vector>& points)
{
    fNormals.reserve(mesh.mNumFaces);
    std::vector<std::uint32_t> corners;
    for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
        const aiFace& face = mesh.mFaces[f];
        corners.clear();
        for (unsigned i = 0; i < face.mNumIndices; ++i) {
            const std::uint32_t index = face.mIndices[i];
            if (index >= points.size()) throw Failure("a face names a vertex that does not exist");
            if (corners.empty() || points[corners.back()] != points[index]) {
                corners.push_back(index);
            }
        }
        while (corners.size() > 1 && points[corners.back()] == points[corners[0]]) {
            corners.pop_back();
        }
        if (corners.size() > 2) add(corners, points);
    }
}

void Faces::add(const std::vector<std::uint32_t>& corners, const std::vector<Vector>& points)
{
    const Vector normal = direction(areaVector(corners, points));
    if (normal == Vector()) return;
    fCorners.insert(fCorners.end(), corners.begin(), corners.end());
    fStarts.push_back(fCorners.size());
    fNormals.push_back(normal);
}

// Each corner turns the same way, and all of them together turn once: a star turns twice.
bool Faces::convex(std::size_t face, const std::vector<Vector>& points) const
{
    const auto at = corners(face);
    const std::size_t n = at.size();
    if (n == 3) return true;
    double turn = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const Vector in = direction(points[at[(i + 1) % n]] - points[at[i]]);
        const Vector out = direction(points[at[(i + 2) % n]] - points[at[(i + 1) % n]]);
        const double sine = (in ^ out) * normal(face);
        if (sine < -1e-6) return false;
        turn += std::atan2(sine, in * out);
    }
    return turn < 3 * std::numbers::pi;
}

void Faces::flip(std::size_t face)
{
    const auto first = fCorners.begin() + static_cast<std::ptrdiff_t>(fStarts[face]);
    const auto last = fCorners.begin() + static_cast<std::ptrdiff_t>(fStarts[face + 1]);
    std::reverse(first, last);
    fNormals[face] = -fNormals[face];
}

}  // namespace zebview
