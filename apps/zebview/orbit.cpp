#include "orbit.h"

#include <algorithm>
#include <numbers>

namespace zebview
{

namespace
{

constexpr double kDegrees = 180 / std::numbers::pi;
constexpr double kNearest = 1e-3, kFarthest = 1e3;  // radii of the model, from the eye to the pivot
constexpr double kClearance = 1e-3;                 // between the model and the clipping planes
// The clipping planes' distances from the eye differ by this factor at most: what is nearer still
// is cut off.
constexpr double kDepthRange = 1e5;

Vector column(const Camera& camera, int axis)
{
    return {camera.toCamera[0][axis], camera.toCamera[1][axis], camera.toCamera[2][axis]};
}

Vector turnedAboutY(const Vector& v, double degrees)
{
    const double sine = std::sin(degrees / kDegrees), cosine = std::cos(degrees / kDegrees);
    return {v.x * cosine + v.z * sine, v.y, v.z * cosine - v.x * sine};
}

}  // namespace

Orbit::Orbit(const Camera& start, double radius)
    : fStart(start),
      fRadius(radius),
      fFirst{column(start, 0), column(start, 1), -column(start, 2)},
      fPlace(start.toCamera[3][0], start.toCamera[3][1], start.toCamera[3][2])
{
    if (fPlace.z > kNearest * radius) return;
    const Vector eye = fFirst.right * -fPlace.x - fFirst.up * fPlace.y + fFirst.back * fPlace.z;
    fPlace = Vector(0, 0, radius);
    fPivot = eye - fFirst.back * radius;
}

// From the first ones each time, so that errors of rounding do not add up.
Orbit::Directions Orbit::directions() const
{
    const Vector right = direction(turnedAboutY(fFirst.right, fTurnedRight));
    const Vector level = direction(turnedAboutY(fFirst.back, fTurnedRight));
    const Vector upright = level ^ right;
    const double sine = std::sin(fTurnedUp / kDegrees), cosine = std::cos(fTurnedUp / kDegrees);
    const Vector back = level * cosine + upright * sine;
    return {right, back ^ right, back};
}

void Orbit::turn(double right, double up)
{
    fTurnedRight = std::fmod(fTurnedRight + right, 360);
    fTurnedUp += up;
    // A camera that stands on its head may go on.
    if (fFirst.up.y < 0) return;
    const double first = std::asin(std::clamp(fFirst.back.y, -1.0, 1.0)) * kDegrees;
    fTurnedUp = std::clamp(fTurnedUp, -90 - first, 90 - first);
}

void Orbit::lookFrom(double azimuth, double elevation)
{
    fFirst = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    fTurnedRight = azimuth;
    fTurnedUp = elevation;
}

void Orbit::lookLike(const Orbit& other)
{
    fFirst = other.fFirst;
    fTurnedRight = other.fTurnedRight;
    fTurnedUp = other.fTurnedUp;
}

void Orbit::zoom(double factor)
{
    if (fStart.fov > 0) {
        fPlace.z = std::clamp(fPlace.z / factor, kNearest * fRadius, kFarthest * fRadius);
    } else {
        fScale = std::clamp(fScale / factor, kNearest, kFarthest);
    }
}

void Orbit::pan(double right, double up)
{
    const double half = std::min(fStart.halfWidth, fStart.halfHeight);
    const double slope = fStart.fov > 0 ? std::tan(fStart.fov / 2 / kDegrees) : 1;
    const double shown = 2 * half * slope * (fStart.fov > 0 ? fPlace.z : fScale);
    fPlace = fPlace + Vector(right, up, 0) * shown;
}

double Orbit::azimuth() const
{
    // Seen from straight above, what lies to the right still tells.
    const Vector right = directions().right;
    return std::atan2(-right.z, right.x) * kDegrees;
}

double Orbit::elevation() const
{
    return std::asin(std::clamp(directions().back.y, -1.0, 1.0)) * kDegrees;
}

Camera Orbit::camera(long width, long height) const
{
    Camera camera = fStart;
    const auto [right, up, back] = directions();
    const Vector depth = -back;
    const Vector offset = fPlace - Vector(fPivot * right, fPivot * up, fPivot * depth);
    setMatrix(right, up, depth, offset, camera);
    const double shorter = static_cast<double>(std::min(width, height));
    const double half = std::min(fStart.halfWidth, fStart.halfHeight) * fScale / shorter;
    camera.halfWidth = static_cast<float>(half * static_cast<double>(width));
    camera.halfHeight = static_cast<float>(half * static_cast<double>(height));
    const double farthest = std::max(offset.z + fRadius + kClearance, 2 * kClearance);
    camera.farthest = static_cast<float>(farthest);
    camera.nearest =
        static_cast<float>(std::max(offset.z - fRadius - kClearance, farthest / kDepthRange));
    return camera;
}

}  // namespace zebview
