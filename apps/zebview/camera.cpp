#include "camera.h"

#include <algorithm>
#include <limits>
#include <numbers>

namespace zebview
{

namespace
{

constexpr double kMargin = 0.06;     // of half the picture, but no less than
constexpr double kMarginPixels = 2;  // which keeps the filter from the border
constexpr double kClosest = 0.05;    // the eye stays off the model, which has radius 1
constexpr double kClearance = 1e-3;  // between the model and the clipping planes
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The directions of the picture in the model's space.
struct View {
    Vector right, up, back;

    View(double azimuth, double elevation)
    {
        const double a = azimuth * std::numbers::pi / 180;
        const double e = elevation * std::numbers::pi / 180;
        right = Vector(std::cos(a), 0, -std::sin(a));
        back = Vector(std::sin(a) * std::cos(e), std::sin(e), std::cos(a) * std::cos(e));
        up = back ^ right;
    }
};

template <class Visit>
void everyPoint(const std::vector<Mesh>& meshes, const Visit& visit)
{
    for (const Mesh& mesh : meshes) {
        for (std::size_t i = 0; i < mesh.points.size(); i += 3) {
            visit(Vector(mesh.points[i], mesh.points[i + 1], mesh.points[i + 2]));
        }
    }
}

// How far the model reaches along one axis of the picture, each way, beyond lines of a slope that
// run from the eye: where the eye is and how far away follows from the two.
struct Reach {
    double slope;
    double plus = -kInfinity, minus = -kInfinity;

    void add(double across, double toEye)
    {
        plus = std::max(plus, across + slope * toEye);
        minus = std::max(minus, -across + slope * toEye);
    }
    double distance() const { return (plus + minus) / (2 * slope); }
    double center() const { return (plus - minus) / 2; }
};

// Where along an axis an eye at a given distance must be so that the model lies in the picture's
// middle. As the eye goes right the picture goes left, so there is one such place.
double centered(const std::vector<Mesh>& meshes, const Vector& axis, const Vector& back,
                double distance)
{
    double low = -1, high = 1;
    for (int step = 0; step < 24; ++step) {
        const double eye = (low + high) / 2;
        double least = kInfinity, most = -kInfinity;
        everyPoint(meshes, [&](const Vector& p) {
            const double seen = (p * axis - eye) / (distance - p * back);
            least = std::min(least, seen);
            most = std::max(most, seen);
        });
        (least + most > 0 ? low : high) = eye;
    }
    return (low + high) / 2;
}

// Where the eye is: across the picture, and how far in front of the model's middle.
struct Eye {
    double x = 0, y = 0, distance = 0;
    double front = 0, rear = 0;  // how far the model reaches towards the eye, and away
};

// What the picture shows beside its middle, for every unit of distance.
struct Slopes {
    double x, y;
};

Eye tightEye(const std::vector<Mesh>& meshes, const View& view, const Slopes& slopes)
{
    Reach x{slopes.x}, y{slopes.y};
    Eye eye;
    eye.front = -kInfinity;
    eye.rear = kInfinity;
    everyPoint(meshes, [&](const Vector& p) {
        const double toEye = p * view.back;
        x.add(p * view.right, toEye);
        y.add(p * view.up, toEye);
        eye.front = std::max(eye.front, toEye);
        eye.rear = std::min(eye.rear, toEye);
    });
    eye.distance = std::max({x.distance(), y.distance(), eye.front + kClosest});
    const bool exactX = x.distance() == eye.distance, exactY = y.distance() == eye.distance;
    eye.x = exactX ? x.center() : centered(meshes, view.right, view.back, eye.distance);
    eye.y = exactY ? y.center() : centered(meshes, view.up, view.back, eye.distance);
    return eye;
}

// Lines from the eye touch the sphere, so it looks larger than where it is widest.
Eye sphereEye(const std::vector<Mesh>& meshes, const Slopes& slopes)
{
    double radius = 0;
    everyPoint(meshes, [&](const Vector& p) { radius = std::max(radius, p.Length()); });
    const double sine = std::sin(std::atan(std::min(slopes.x, slopes.y)));
    return {0, 0, std::max(radius / sine, radius + kClosest), radius, -radius};
}

void setMatrix(const Vector& right, const Vector& up, const Vector& depth, const Vector& offset,
               Camera& camera)
{
    for (unsigned axis = 0; axis < 3; ++axis) {
        camera.toCamera[axis][0] = static_cast<float>(right[axis]);
        camera.toCamera[axis][1] = static_cast<float>(up[axis]);
        camera.toCamera[axis][2] = static_cast<float>(depth[axis]);
        camera.toCamera[3][axis] = static_cast<float>(offset[axis]);
    }
    camera.toCamera[3][3] = 1;
}

}  // namespace

Camera frameModel(const std::vector<Mesh>& meshes, double azimuth, const Settings& settings)
{
    const View view(azimuth, settings.elevation);
    const auto width = static_cast<double>(settings.width);
    const auto height = static_cast<double>(settings.height);
    const double shorter = std::min(width, height);
    const double margin = std::min(std::max(kMargin, kMarginPixels / (shorter / 2)), 0.5);
    const double slope = std::tan(settings.fov * std::numbers::pi / 360) * (1 - margin);
    const Slopes slopes{slope * width / shorter, slope * height / shorter};
    const Eye eye =
        settings.fit == Fit::kSphere ? sphereEye(meshes, slopes) : tightEye(meshes, view, slopes);

    Camera camera{};
    setMatrix(view.right, view.up, -view.back, Vector(-eye.x, -eye.y, eye.distance), camera);
    camera.fov = static_cast<float>(settings.fov);
    camera.halfWidth = static_cast<float>(width / shorter);
    camera.halfHeight = static_cast<float>(height / shorter);
    camera.nearest = static_cast<float>(eye.distance - eye.front - kClearance);
    camera.farthest = static_cast<float>(eye.distance - eye.rear + kClearance);
    return camera;
}

Camera lookThrough(const FileCamera& source, double turn, const std::vector<Mesh>& meshes,
                   const Settings& settings)
{
    const double a = turn * std::numbers::pi / 180;
    const auto turned = [a](const Vector& v) {
        return Vector(v.x * std::cos(a) + v.z * std::sin(a), v.y,
                      v.z * std::cos(a) - v.x * std::sin(a));
    };
    const Vector eye = turned(source.eye), right = turned(source.right), up = turned(source.up);
    const Vector depth = -turned(source.back);
    Camera camera{};
    setMatrix(right, up, depth, Vector(-(eye * right), -(eye * up), -(eye * depth)), camera);
    double nearest = kInfinity, farthest = -kInfinity;
    everyPoint(meshes, [&](const Vector& p) {
        nearest = std::min(nearest, (p - eye) * depth);
        farthest = std::max(farthest, (p - eye) * depth);
    });
    camera.nearest = static_cast<float>(std::max(nearest - kClearance, kClearance));
    camera.farthest = std::max(static_cast<float>(farthest + kClearance), camera.nearest * 2);

    const auto width = static_cast<double>(settings.width);
    const auto height = static_cast<double>(settings.height);
    const double scale = std::max(source.halfWidth / width, source.halfHeight / height);
    // A right angle makes distances of tangents.
    camera.fov = source.perspective ? 90 : 0;
    camera.halfWidth = static_cast<float>(width * scale);
    camera.halfHeight = static_cast<float>(height * scale);
    return camera;
}

}  // namespace zebview
