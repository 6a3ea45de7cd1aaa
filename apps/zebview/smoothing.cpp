#include "smoothing.h"

#include <algorithm>
#include <numeric>
#include <tuple>

namespace zebview
{

namespace
{

const double kSharpest = std::cos(50 * 3.14159265358979 / 180);

// Every corner looks at every other one in its point. The tip of a cone with more sides than this
// stays faceted rather than cost the square of their number.
constexpr std::size_t kMostCorners = 512;

struct Corner {
    std::size_t face;
    std::uint32_t vertex;
    double angle;
};

std::vector<Corner> collectCorners(const Faces& faces, const std::vector<Vector>& points)
{
    std::vector<Corner> result;
    result.reserve(faces.cornerCount());
    for (std::size_t face = 0; face < faces.size(); ++face) {
        const auto at = faces.corners(face);
        const std::size_t n = at.size();
        for (std::size_t i = 0; i < n; ++i) {
            const Vector& p = points[at[i]];
            const Vector next = direction(points[at[(i + 1) % n]] - p);
            const Vector previous = direction(points[at[(i + n - 1) % n]] - p);
            result.push_back({face, at[i], std::acos(std::clamp(next * previous, -1.0, 1.0))});
        }
    }
    return result;
}

}  // namespace

// Weights are the corners' angles (Thuermer and Wuethrich, 1998): they do not change with how a
// surface is cut into polygons.
std::vector<Vector> smoothNormals(const Faces& faces, const std::vector<Vector>& points)
{
    const std::vector<Corner> corners = collectCorners(faces, points);
    const auto place = [&](std::size_t corner) {
        const Vector& p = points[corners[corner].vertex];
        return std::tuple(p.x, p.y, p.z);
    };
    std::vector<std::size_t> order(corners.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return std::tuple(place(a), a) < std::tuple(place(b), b);
    });

    std::vector<Vector> normals(corners.size());
    for (std::size_t first = 0, last; first < order.size(); first = last) {
        for (last = first + 1; last < order.size() && place(order[last]) == place(order[first]);) {
            ++last;
        }
        const bool crowded = last - first > kMostCorners;
        for (std::size_t i = first; i < last; ++i) {
            const Vector& own = faces.normal(corners[order[i]].face);
            Vector sum = crowded ? own : Vector();
            for (std::size_t k = first; !crowded && k < last; ++k) {
                const Corner& other = corners[order[k]];
                const Vector& theirs = faces.normal(other.face);
                const double cosine = own * theirs;
                if (std::abs(cosine) < kSharpest) continue;
                sum += theirs * (cosine < 0 ? -other.angle : other.angle);
            }
            const Vector normal = direction(sum);
            normals[order[i]] = normal == Vector() ? own : normal;
        }
    }
    return normals;
}

}  // namespace zebview
