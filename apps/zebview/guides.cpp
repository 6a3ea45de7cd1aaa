#include "guides.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <vector>

#include "color_bar.h"
#include "console.h"
#include "drawing.h"
#include "round_number.h"
#include "zebcore/zebcore.h"

namespace zebview
{

namespace
{

// Of half the picture's shorter side.
constexpr double kAxesMargin = 0.34, kArm = 0.2, kBall = 0.062, kArmWidth = 0.018;
constexpr double kLetter = 0.032, kStroke = 0.013;  // half its height, and its width
// Between the eye and what is nearest of the model: where axes lie.
constexpr double kFarthestAxis = 0.9, kNearestAxis = 0.7;

constexpr std::array<Color, 3> kAxisColors{
    {{0.86f, 0.22f, 0.2f}, {0.36f, 0.66f, 0.18f}, {0.2f, 0.44f, 0.88f}}};
constexpr Color kLetterColor{1, 1, 1}, kGridColor{0.5f, 0.5f, 0.5f};

constexpr double kLines = 10;  // of a grid, about, where the model is
constexpr double kMostLines = 1000;
constexpr double kGridWidth = 1.2;  // pixels, where the model's middle is
// Under the model, and under a floor of shadows.
constexpr double kUnder = 2e-3;
// Beside the model, at most.
constexpr double kMostAround = 1;

// A letter's strokes, from -1 to 1 upwards and not as far across.
using Strokes = std::vector<std::pair<Spot, Spot>>;
const std::array<Strokes, 3> kLetters{
    {{{{-0.7, -1}, {0.7, 1}}, {{-0.7, 1}, {0.7, -1}}},
     {{{-0.7, 1}, {0, 0}}, {{0.7, 1}, {0, 0}}, {{0, 0}, {0, -1}}},
     {{{-0.7, 1}, {0.7, 1}}, {{0.7, 1}, {-0.7, -1}}, {{-0.7, -1}, {0.7, -1}}}}};

// What a grid reaches over, of the model and around it.
struct Extent {
    double x0 = 1, x1 = -1, z0 = 1, z1 = -1, y = 1;
};

Extent extentOf(const Model& model)
{
    Extent extent;
    everyPoint(model, [&](const Vector& p) {
        extent.x0 = std::min(extent.x0, p.x);
        extent.x1 = std::max(extent.x1, p.x);
        extent.z0 = std::min(extent.z0, p.z);
        extent.z1 = std::max(extent.z1, p.z);
        extent.y = std::min(extent.y, p.y);
    });
    extent.y -= reachOf(model);
    return extent;
}

// Where lines are along an axis, at zero + k * spacing, and between which ends the others run.
struct Lines {
    double zero, spacing;
    long first, last;
    double from, to;

    Lines(double least, double most, double origin, double distance)
        : zero(origin), spacing(distance)
    {
        first = std::lround(std::floor((least - zero) / spacing)) - 1;
        last = std::lround(std::ceil((most - zero) / spacing)) + 1;
        from = std::max(at(first), least - kMostAround);
        to = std::min(at(last), most + kMostAround);
    }
    double at(long k) const { return zero + static_cast<double>(k) * spacing; }
    template <class Visit>
    void everyLine(const Visit& visit) const
    {
        for (long k = first; k <= last; ++k) {
            if (at(k) >= from && at(k) <= to) visit(at(k));
        }
    }
};

// In the file's units.
double sizeOf(const Extent& extent, const Model& model)
{
    const double size = std::max(extent.x1 - extent.x0, extent.z1 - extent.z0);
    // What stands on one point is as large as it is high.
    return (size > 0 ? size : 2) / model.space.unit;
}

// In the file's units, too.
double spacingFor(double size, const Settings& settings)
{
    if (settings.gridUnit && size / *settings.gridUnit <= kMostLines) return *settings.gridUnit;
    return roundedUp(size / kLines);
}

}  // namespace

Camera roomForGuides(Camera camera, const Model& model, const Settings& settings)
{
    if (settings.grid) {
        // Its corners are nearer than the model, and farther away.
        constexpr float corner = 3, closest = 0.01f;
        camera.nearest = std::max(camera.nearest - corner, std::min(camera.nearest, closest));
        camera.farthest += corner;
    }
    if (settings.axes || showsBar(model, settings)) camera = roomForDrawings(camera);
    return camera;
}

void addAxes(const FileSpace& space, const Camera& camera)
{
    const Drawing drawing(camera);
    constexpr Spot middle{kAxesMargin, kAxesMargin};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        double way[3] = {0, 0, 0};
        for (unsigned from = 0; from < 3; ++from) {
            for (unsigned to = 0; to < 3; ++to) {
                way[to] += space.axes[axis][from] * camera.toCamera[from][to];
            }
        }
        const Spot end{middle.x + kArm * way[0], middle.y + kArm * way[1]};
        const double depth =
            (kFarthestAxis + kNearestAxis) / 2 + (kFarthestAxis - kNearestAxis) / 2 * way[2];
        setPaint(kAxisColors[axis]);
        drawing.line(middle, end, kArmWidth, depth + 1e-3);
        drawing.ball(end, kBall, depth);
        setPaint(kLetterColor);
        for (const auto& [from, to] : kLetters[axis]) {
            drawing.line({end.x + kLetter * from.x, end.y + kLetter * from.y},
                         {end.x + kLetter * to.x, end.y + kLetter * to.y}, kStroke, depth - 1e-3);
        }
    }
}

void addGrid(const Model& model, const Camera& camera, const Settings& settings)
{
    const Extent extent = extentOf(model);
    const double spacing = spacingFor(sizeOf(extent, model), settings) * model.space.unit;
    const Vector& origin = model.space.origin;
    const Lines xs(extent.x0, extent.x1, origin.x, spacing);
    const Lines zs(extent.z0, extent.z1, origin.z, spacing);
    const double half = kGridWidth / 2 * PixelSize(camera, settings).at(camera.toCamera[3][2]);
    const auto y = static_cast<float>(extent.y - kUnder);
    const auto addRectangle = [y](double left, double right, double back, double front) {
        const auto l = static_cast<float>(left), r = static_cast<float>(right);
        const auto b = static_cast<float>(back), f = static_cast<float>(front);
        addPolygon({Point{l, y, b}, Point{l, y, f}, Point{r, y, f}, Point{r, y, b}});
    };
    zebAttributePush();
    setPaint(kGridColor);
    xs.everyLine([&](double x) { addRectangle(x - half, x + half, zs.from, zs.to); });
    zs.everyLine([&](double z) { addRectangle(xs.from, xs.to, z - half, z + half); });
    zebAttributePop();
}

void tellOfGrid(const std::string& name, const Model& model, const Settings& settings)
{
    if (!settings.grid) return;
    const double size = sizeOf(extentOf(model), model), spacing = spacingFor(size, settings);
    if (settings.gridUnit && spacing != *settings.gridUnit) {
        complain(name + ": --grid-unit makes more than 1000 lines");
    }
    char text[60];
    std::snprintf(text, sizeof text, ": the grid's lines are %g apart", spacing);
    if (settings.verbose) complain(name + text);
}

}  // namespace zebview
