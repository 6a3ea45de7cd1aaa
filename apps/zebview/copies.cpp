#include "copies.h"

#include <algorithm>
#include <array>
#include <map>

namespace zebview
{

namespace
{

constexpr double kTolerance = 1e-3;

// How a place stretches a mesh, but for its size: the same for places that differ by a rotation, a
// mirror and a scale.
using Stretch = std::array<double, 6>;

Stretch stretchOf(const Matrix& m)
{
    const Vector x(m.a1, m.b1, m.c1), y(m.a2, m.b2, m.c2), z(m.a3, m.b3, m.c3);
    const double size = x * x + y * y + z * z;
    return {x * x / size, y * y / size, z * z / size, x * y / size, y * z / size, z * x / size};
}

// To be looked up by.
std::array<long, 6> rounded(const Stretch& stretch)
{
    std::array<long, 6> result{};
    for (std::size_t i = 0; i < result.size(); ++i) result[i] = std::lround(stretch[i] * 1e4);
    return result;
}

bool keepsShape(const Matrix& move)
{
    const Stretch none = stretchOf(Matrix()), stretch = stretchOf(move);
    for (std::size_t i = 0; i < none.size(); ++i) {
        if (!(std::abs(stretch[i] - none[i]) <= kTolerance)) return false;
    }
    return true;
}

double sizeOf(const Matrix& m) { return std::abs(m.Determinant()); }

// Takes the largest place as that where the mesh is made, and leaves out those that turn out to be
// stretched against it: rounded, places that are thin look alike.
std::vector<std::size_t> findMoves(const std::vector<Matrix>& places, Copies& copies)
{
    for (std::size_t& other : copies.others) {
        if (sizeOf(places[other]) > sizeOf(places[copies.made])) std::swap(copies.made, other);
    }
    const Matrix back = Matrix(places[copies.made]).Inverse();
    std::vector<std::size_t> kept, strangers;
    for (const std::size_t other : copies.others) {
        const Matrix move = places[other] * back;
        if (keepsShape(move)) {
            kept.push_back(other);
            copies.moves.push_back(move);
        } else {
            strangers.push_back(other);
        }
    }
    copies.others = kept;
    return strangers;
}

}  // namespace

std::vector<Copies> shareMesh(const std::vector<Matrix>& places)
{
    std::vector<Copies> result;
    std::map<std::array<long, 6>, std::size_t> found;
    for (std::size_t i = 0; i < places.size(); ++i) {
        // Nothing leads back from one that is flat.
        const double size = sizeOf(places[i]);
        if (!(size > 0) || !std::isfinite(size)) {
            result.push_back({i, {}, {}});
            continue;
        }
        const auto [at, isNew] = found.emplace(rounded(stretchOf(places[i])), result.size());
        if (isNew) {
            result.push_back({i, {}, {}});
        } else {
            result[at->second].others.push_back(i);
        }
    }
    const std::size_t groups = result.size();
    for (std::size_t i = 0; i < groups; ++i) {
        for (const std::size_t alone : findMoves(places, result[i])) {
            result.push_back({alone, {}, {}});
        }
    }
    return result;
}

}  // namespace zebview
