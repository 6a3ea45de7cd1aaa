#include "drawing.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "zebcore/zebcore.h"

namespace zebview
{

namespace
{

// Between the eye and what is nearest of the model, this part of the way is left to it.
constexpr double kRoom = 0.6;
constexpr int kBallCorners = 32;

}  // namespace

void addPolygon(const std::vector<Point>& corners)
{
    zebPolygon(static_cast<long>(corners.size()), zebQuark("point"), corners.data(), 0);
}

void setPaint(const Color& color)
{
    zebSurface(zebQuark("constant"), 0);
    zebColor(toLight(color).data());
    zebOpacity(Color{1, 1, 1}.data());
    zebBackface(2);
    // There is nothing to shade.
    zebShadingRate(256);
}

Camera roomForDrawings(Camera camera)
{
    camera.nearest *= static_cast<float>(kRoom);
    return camera;
}

Drawing::Drawing(const Camera& camera)
    : fCamera(camera), fUnit(std::min(camera.halfWidth, camera.halfHeight))
{
    zebAttributePush();
    zebLoadIdentity();
}

Drawing::~Drawing() { zebAttributePop(); }

Spot Drawing::end() const
{
    return {2 * fCamera.halfWidth / fUnit, 2 * fCamera.halfHeight / fUnit};
}

void Drawing::line(Spot from, Spot to, double width, double depth) const
{
    const double dx = to.x - from.x, dy = to.y - from.y, length = std::hypot(dx, dy);
    if (!(length > 0)) return;
    const double ax = dx / length * width / 2, ay = dy / length * width / 2;
    addPolygon({point({from.x - ay, from.y + ax}, depth), point({to.x - ay, to.y + ax}, depth),
                point({to.x + ay, to.y - ax}, depth), point({from.x + ay, from.y - ax}, depth)});
}

void Drawing::ball(Spot center, double radius, double depth) const
{
    std::vector<Point> corners;
    for (int i = 0; i < kBallCorners; ++i) {
        const double a = -2 * std::numbers::pi * i / kBallCorners;
        corners.push_back(
            point({center.x + radius * std::cos(a), center.y + radius * std::sin(a)}, depth));
    }
    addPolygon(corners);
}

Point Drawing::point(Spot spot, double depth) const
{
    const double z = depth * fCamera.nearest / kRoom;
    const double slope = fCamera.fov > 0 ? z * std::tan(fCamera.fov * std::numbers::pi / 360) : 1;
    return {static_cast<float>((spot.x * fUnit - fCamera.halfWidth) * slope),
            static_cast<float>((spot.y * fUnit - fCamera.halfHeight) * slope),
            static_cast<float>(z)};
}

}  // namespace zebview
