#include "dots.h"

#include <algorithm>
#include <cmath>

#include "zebcore/zebcore.h"

namespace zebview
{

namespace
{

constexpr double kSmallest = 0.002, kLargest = 0.03;

}  // namespace

double usualDotRadius(std::size_t count)
{
    // A surface in the unit sphere is about as large as a square whose sides are 2.
    return std::clamp(1 / std::sqrt(static_cast<double>(count)), kSmallest, kLargest);
}

void addDots(const Mesh& mesh, bool colored, const std::optional<ScalarColors>& scalar)
{
    const bool hasColors = scalar || (colored && !mesh.colors.empty());
    std::vector<float> centers, colors;
    for (const Matrix& place : mesh.places()) {
        for (const std::size_t vertex : mesh.dots) {
            const Vector center = place * mesh.point(vertex);
            append(centers, center);
            if (!hasColors) continue;
            const float* const color =
                scalar ? scalar->at(mesh, vertex, center).data() : &mesh.colors[3 * vertex];
            colors.insert(colors.end(), color, color + 3);
        }
    }
    const std::vector<float> radii(centers.size() / 3, static_cast<float>(mesh.dotRadius));
    const unsigned short token = zebQuark("color");
    void* const values = colors.data();
    zebSpheresV(static_cast<long>(radii.size()), centers.data(), radii.data(), hasColors ? 1 : 0,
                &token, &values);
}

}  // namespace zebview
