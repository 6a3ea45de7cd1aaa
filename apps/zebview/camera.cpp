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
// The farthest points are those of some directions only, and of surfaces some points: between them
// it may reach farther.
constexpr double kMovedClearance = 0.02;
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

// Points of all copies are worth the time as long as they are no more than this.
constexpr double kMostCopied = 2e7;

// The corners of the box around a mesh.
std::vector<float> cornersOf(const Mesh& mesh)
{
    float least[3], most[3];
    std::copy_n(mesh.points.begin(), 3, least);
    std::copy_n(mesh.points.begin(), 3, most);
    for (std::size_t i = 0; i < mesh.points.size(); ++i) {
        least[i % 3] = std::min(least[i % 3], mesh.points[i]);
        most[i % 3] = std::max(most[i % 3], mesh.points[i]);
    }
    std::vector<float> corners;
    for (int corner = 0; corner < 8; ++corner) {
        for (int axis = 0; axis < 3; ++axis) {
            corners.push_back(corner >> axis & 1 ? most[axis] : least[axis]);
        }
    }
    return corners;
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
    // All points are the middles of spheres.
    void widen(double radius)
    {
        plus += radius * std::hypot(1, slope);
        minus += radius * std::hypot(1, slope);
    }
    double distance() const { return (plus + minus) / (2 * slope); }
    double center() const { return (plus - minus) / 2; }
};

// Where along an axis an eye at a given distance must be so that the model lies in the picture's
// middle. As the eye goes right the picture goes left, so there is one such place.
double centered(const Model& model, const Vector& axis, const Vector& back, double distance)
{
    const double reach = reachOf(model);
    double low = -1, high = 1;
    for (int step = 0; step < 24; ++step) {
        const double eye = (low + high) / 2;
        double least = kInfinity, most = -kInfinity;
        everyPoint(model, [&](const Vector& p) {
            const double across = p * axis - eye, away = distance - p * back;
            least = std::min(least, (across - reach) / away);
            most = std::max(most, (across + reach) / away);
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

Eye tightEye(const Model& model, const View& view, const Slopes& slopes)
{
    Reach x{slopes.x}, y{slopes.y};
    Eye eye;
    eye.front = -kInfinity;
    eye.rear = kInfinity;
    everyPoint(model, [&](const Vector& p) {
        const double toEye = p * view.back;
        x.add(p * view.right, toEye);
        y.add(p * view.up, toEye);
        eye.front = std::max(eye.front, toEye);
        eye.rear = std::min(eye.rear, toEye);
    });
    const double reach = reachOf(model);
    x.widen(reach);
    y.widen(reach);
    eye.distance = std::max({x.distance(), y.distance(), eye.front + reach + kClosest});
    const bool exactX = x.distance() == eye.distance, exactY = y.distance() == eye.distance;
    eye.x = exactX ? x.center() : centered(model, view.right, view.back, eye.distance);
    eye.y = exactY ? y.center() : centered(model, view.up, view.back, eye.distance);
    return eye;
}

// Lines from the eye touch the sphere, so it looks larger than where it is widest.
Eye sphereEye(const Model& model, const Slopes& slopes)
{
    const double radius = radiusOf(model);
    const double sine = std::sin(std::atan(std::min(slopes.x, slopes.y)));
    return {0, 0, std::max(radius / sine, radius + kClosest), radius, -radius};
}

// Before the nearest of everyPoint() and behind the farthest.
double clearance(const Model& model)
{
    const bool isExact = model.room.empty() && model.surfaces.empty();
    return (isExact ? kClearance : kMovedClearance) + reachOf(model);
}

}  // namespace

void everyPoint(const Model& model, const std::function<void(const Vector&)>& visit)
{
    for (const Vector& p : model.room) visit(p);
    if (!model.room.empty()) return;
    const auto visitAll = [&](const std::vector<float>& points, const Matrix& move) {
        for (std::size_t i = 0; i < points.size(); i += 3) {
            visit(move * Vector(points[i], points[i + 1], points[i + 2]));
        }
    };
    for (const FreeForm& surface : model.surfaces) visitAll(surface.points, Matrix());
    for (const Mesh& mesh : model.meshes) {
        for (std::size_t i = 0; i < mesh.points.size(); i += 3) {
            visit(Vector(mesh.points[i], mesh.points[i + 1], mesh.points[i + 2]));
        }
        const auto points = static_cast<double>(mesh.vertexCount());
        const bool many = points * static_cast<double>(mesh.copies.size()) > kMostCopied;
        const std::vector<float> corners = many ? cornersOf(mesh) : std::vector<float>();
        for (const Matrix& move : mesh.copies) visitAll(many ? corners : mesh.points, move);
    }
}

PixelSize::PixelSize(const Camera& camera, const Settings& settings)
    : fHasPerspective(camera.fov > 0),
      fNearest(camera.nearest),
      fSize(2 * camera.halfHeight *
            (fHasPerspective ? std::tan(camera.fov * std::numbers::pi / 360) : 1) /
            static_cast<double>(settings.height))
{
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

double radiusOf(const Model& model)
{
    double radius = 0;
    everyPoint(model, [&](const Vector& p) { radius = std::max(radius, p.Length()); });
    return radius + reachOf(model);
}

Camera frameModel(const Model& model, double azimuth, const Settings& settings)
{
    const View view(azimuth, settings.elevation);
    const auto width = static_cast<double>(settings.width);
    const auto height = static_cast<double>(settings.height);
    const double shorter = std::min(width, height);
    const double margin = std::min(std::max(kMargin, kMarginPixels / (shorter / 2)), 0.5);
    const double slope = std::tan(settings.fov * std::numbers::pi / 360) * (1 - margin);
    const Slopes slopes{slope * width / shorter, slope * height / shorter};
    const Eye eye =
        settings.fit == Fit::kSphere ? sphereEye(model, slopes) : tightEye(model, view, slopes);

    Camera camera{};
    setMatrix(view.right, view.up, -view.back, Vector(-eye.x, -eye.y, eye.distance), camera);
    camera.fov = static_cast<float>(settings.fov);
    camera.halfWidth = static_cast<float>(width / shorter);
    camera.halfHeight = static_cast<float>(height / shorter);
    camera.nearest = static_cast<float>(eye.distance - eye.front - clearance(model));
    camera.farthest = static_cast<float>(eye.distance - eye.rear + clearance(model));
    return camera;
}

Camera lookThrough(const FileCamera& source, double turn, const Model& model,
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
    everyPoint(model, [&](const Vector& p) {
        nearest = std::min(nearest, (p - eye) * depth);
        farthest = std::max(farthest, (p - eye) * depth);
    });
    camera.nearest = static_cast<float>(std::max(nearest - clearance(model), kClearance));
    camera.farthest = std::max(static_cast<float>(farthest + clearance(model)), camera.nearest * 2);

    const auto width = static_cast<double>(settings.width);
    const auto height = static_cast<double>(settings.height);
    const double scale = std::max(source.halfWidth / width, source.halfHeight / height);
    // A right angle makes distances of tangents.
    camera.fov = source.perspective ? 90 : 0;
    camera.halfWidth = static_cast<float>(width * scale);
    camera.halfHeight = static_cast<float>(height * scale);
    return camera;
}

Camera chooseCamera(const Model& model, double turned, const Settings& settings)
{
    if (settings.camera.empty()) return frameModel(model, settings.azimuth + turned, settings);
    return lookThrough(findCamera(model.stage, settings.camera), turned, model, settings);
}

}  // namespace zebview
