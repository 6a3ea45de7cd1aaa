#include "scenes.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "teapot.h"

namespace zebpeers
{

namespace
{

constexpr double kPi = 3.14159265358979323846;

Scene spheres(int count, float radius)
{
    Scene scene;
    for (const zebbench::Ball& ball : zebbench::balls(count)) {
        scene.spheres.push_back({ball.center, radius, ball.color});
    }
    return scene;
}

// Each point's normal is the mean of those of the triangles round it, weighed by their areas.
void averageNormals(Mesh& mesh)
{
    mesh.normals.assign(mesh.points.size(), Vec{});
    for (const auto& [a, b, c] : mesh.triangles) {
        const Vec n = cross(mesh.points[b] - mesh.points[a], mesh.points[c] - mesh.points[a]);
        for (const unsigned k : {a, b, c}) mesh.normals[k] = mesh.normals[k] + n;
    }
    for (Vec& normal : mesh.normals) normal = normalize(normal);
}

// Points and triangles of an OBJ file. Its z points towards the eye, ours away from it.
Mesh readObj(const char* path)
{
    Mesh mesh;
    std::ifstream file(path);
    if (!file) throw std::runtime_error(std::string("no file ") + path);
    for (std::string line, word; std::getline(file, line);) {
        std::istringstream words(line);
        words >> word;
        if (word == "v") {
            Vec p;
            words >> p[0] >> p[1] >> p[2];
            mesh.points.push_back({p[0], p[1], -p[2]});
        } else if (word == "f") {
            std::array<unsigned, 3> corners;
            for (unsigned& corner : corners) {
                words >> word;
                corner = static_cast<unsigned>(std::stoul(word) - 1);
            }
            mesh.triangles.push_back(corners);
        }
    }
    return mesh;
}

// Moves and scales the points so that their box is centred and its longest side has a length.
void fit(std::vector<Vec>& points, float size)
{
    Vec lo = points.front(), hi = lo;
    for (const Vec& p : points) {
        for (int k = 0; k < 3; ++k) lo[k] = std::min(lo[k], p[k]), hi[k] = std::max(hi[k], p[k]);
    }
    const Vec extent = hi - lo;
    const float scale = size / std::max({extent[0], extent[1], extent[2]});
    for (Vec& p : points) p = scale * (p - 0.5f * (lo + hi));
}

Scene bunny()
{
    Mesh mesh = readObj("/usr/share/glmark2/models/bunny.obj");
    mesh.color = {0.75f, 0.6f, 0.45f};
    fit(mesh.points, 2.2f);
    averageNormals(mesh);
    Scene scene;
    scene.meshes.push_back(std::move(mesh));
    return scene;
}

using Surface = std::function<Vec(float, float)>;

// How far the middle of a chord's curve is from the chord, in pixels.
float strays(const Vec& from, const Vec& middle, const Vec& to)
{
    const Vec away = cross(middle - from, normalize(to - from));
    return std::sqrt(dot(away, away)) * pixelsPerUnit(middle[2] - kEye[2]);
}

// The normal by differences, a little inside the edges: a surface that closes to a point has
// normals there yet.
Vec normalOf(const Surface& surface, float u, float v)
{
    constexpr float kStep = 1e-3f;
    u = std::clamp(u, kStep, 1 - kStep), v = std::clamp(v, kStep, 1 - kStep);
    return normalize(cross(surface(u + kStep, v) - surface(u - kStep, v),
                           surface(u, v + kStep) - surface(u, v - kStep)));
}

// Adds 2 x n x n triangles of a surface over 0 ... 1.
void tessellate(Mesh& mesh, const Surface& surface, int n)
{
    const auto first = static_cast<unsigned>(mesh.points.size());
    const auto width = static_cast<unsigned>(n + 1);
    for (unsigned j = 0; j < width; ++j) {
        for (unsigned i = 0; i < width; ++i) {
            const float u = static_cast<float>(i) / static_cast<float>(n);
            const float v = static_cast<float>(j) / static_cast<float>(n);
            mesh.points.push_back(surface(u, v));
            mesh.normals.push_back(normalOf(surface, u, v));
            if (!i || !j) continue;
            const unsigned d = first + j * width + i, c = d - 1, b = d - width, a = b - 1;
            mesh.triangles.push_back({a, b, d});
            mesh.triangles.push_back({a, d, c});
        }
    }
}

// The same, where no edge may stray from the surface by half a pixel.
void tessellateFinely(Mesh& mesh, const Surface& surface, int n)
{
    tessellate(mesh, surface, n);
    const float half = 0.5f / static_cast<float>(n);
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) {
            const float u = 2 * half * static_cast<float>(i), v = 2 * half * static_cast<float>(j);
            const Vec from = surface(u, v), middle = surface(u + half, v + half);
            const Vec across = surface(u + 2 * half, v), down = surface(u, v + 2 * half);
            const Vec to = surface(u + 2 * half, v + 2 * half);
            if (std::max({strays(from, middle, to), strays(from, surface(u + half, v), across),
                          strays(from, surface(u, v + half), down)}) > 0.5f) {
                throw std::logic_error("a tessellation is too coarse");
            }
        }
    }
}

Vec onPatch(const Patch& patch, float u, float v)
{
    const auto weights = [](float t) {
        const float s = 1 - t;
        return std::array<float, 4>{s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t};
    };
    const auto wu = weights(u), wv = weights(v);
    Vec sum = {};
    for (int k = 0; k < 16; ++k) sum = sum + wu[k % 4] * wv[k / 4] * patch[k];
    return sum;
}

// The teapot's own z points up. Here it is turned, tilted towards the eye, and made to fit.
Vec teapotPlace(float x, float y, float z)
{
    constexpr float kScale = 0.4f, kTurn = 0.35f, kTilt = 0.4f;
    const Vec p = {kScale * (x - 0.2f), kScale * (z - 1.5f), kScale * y};
    const Vec q = {std::cos(kTurn) * p[0] + std::sin(kTurn) * p[2], p[1],
                   std::cos(kTurn) * p[2] - std::sin(kTurn) * p[0]};
    return {q[0], std::cos(kTilt) * q[1] + std::sin(kTilt) * q[2],
            std::cos(kTilt) * q[2] - std::sin(kTilt) * q[1]};
}

// Patches of a grid of control points that closes on itself in u.
void addPatches(std::vector<Patch>& patches, const std::function<Vec(int, int)>& point, int columns,
                int rows)
{
    for (int j = 0; j + 3 < rows; j += 3) {
        for (int i = 0; i < columns; i += 3) {
            Patch patch;
            for (int k = 0; k < 16; ++k) patch[k] = point((i + k % 4) % columns, j + k / 4);
            patches.push_back(patch);
        }
    }
}

void addRound(std::vector<Patch>& patches, const float (*outline)[2], int rows)
{
    const auto point = [outline](int i, int j) {
        const float radius = outline[j][0], k = radius == 0.8f ? 0.5625f : 0.56f;
        const float side[12] = {0, k, 1, 1, 1, k, 0, -k, -1, -1, -1, -k};
        return teapotPlace(radius * side[(i + 3) % 12], radius * side[i], outline[j][1]);
    };
    addPatches(patches, point, 12, rows);
}

void addTube(std::vector<Patch>& patches, const float (*rings)[5])
{
    const auto point = [rings](int i, int j) {
        const float side[6] = {0, 1, 1, 0, -1, -1};
        const float* edge = rings[j] + (i >= 2 && i <= 4 ? 2 : 0);
        return teapotPlace(edge[0], rings[j][4] * side[i], edge[1]);
    };
    addPatches(patches, point, 6, 7);
}

Scene teapot()
{
    constexpr int kChords = 24;
    Scene scene;
    scene.color = {0.18f, 0.55f, 0.58f};
    addRound(scene.patches, kTeapotBody, 13);
    addRound(scene.patches, kTeapotLid, 7);
    addTube(scene.patches, kTeapotHandle);
    addTube(scene.patches, kTeapotSpout);
    Mesh mesh{scene.color, {}, {}, {}};
    for (const Patch& patch : scene.patches) {
        tessellateFinely(
            mesh, [&patch](float u, float v) { return onPatch(patch, u, v); }, kChords);
    }
    scene.meshes.push_back(std::move(mesh));
    return scene;
}

// De Boor's way to the point at t, of points that lie a stride apart.
Vec onSpline(const Nurbs& nurbs, float t, const Vec* points, int stride)
{
    const int degree = nurbs.order - 1;
    const int span = std::min(static_cast<int>(t), nurbs.size - nurbs.order) + degree;
    std::array<Vec, 4> p;
    for (int k = 0; k <= degree; ++k) p[k] = points[stride * (span - degree + k)];
    for (int r = 1; r <= degree; ++r) {
        for (int k = degree; k >= r; --k) {
            const float lo = nurbs.knots[span - degree + k], hi = nurbs.knots[span + 1 + k - r];
            const float a = (t - lo) / (hi - lo);
            p[k] = (1 - a) * p[k - 1] + a * p[k];
        }
    }
    return p[degree];
}

Vec onNurbs(const Nurbs& nurbs, float u, float v)
{
    std::vector<Vec> column(nurbs.size);
    for (int j = 0; j < nurbs.size; ++j) {
        column[j] = onSpline(nurbs, u * nurbs.end(), &nurbs.points[nurbs.size * j], 1);
    }
    return onSpline(nurbs, v * nurbs.end(), column.data(), 1);
}

// Thirteen chords for each of the 17 spans.
Scene waves()
{
    constexpr int kChords = 221;
    Scene scene;
    scene.color = {0.3f, 0.5f, 0.8f};
    scene.nurbs.push_back(zebbench::waves());
    Mesh mesh{scene.color, {}, {}, {}};
    const Nurbs& nurbs = scene.nurbs.front();
    tessellateFinely(
        mesh, [&nurbs](float u, float v) { return onNurbs(nurbs, u, v); }, kChords);
    scene.meshes.push_back(std::move(mesh));
    return scene;
}

// Ten bumpy walls, each of which fills the picture. They cut through each other, so that several
// show, and are given in no order of depth.
Scene deep()
{
    constexpr int kWalls = 10, kChords = 128;
    Scene scene;
    for (int k = 0; k < kWalls; ++k) {
        const auto z = static_cast<float>(7 * k % kWalls);
        const auto wall = [z](float u, float v) {
            const float x = 5 * u - 2.5f, y = 5 * v - 2.5f;
            const float bump =
                std::sin((5 + 0.3f * z) * x + 2 * z) * std::cos((6 - 0.2f * z) * y + z);
            return Vec{x, y, 0.15f * z + 0.3f * bump};
        };
        const auto tint = [z](float shift) { return 0.5f + 0.45f * std::sin(2.1f * z + shift); };
        Mesh mesh{{tint(0), tint(2), tint(4)}, {}, {}, {}};
        tessellate(mesh, wall, kChords);
        scene.meshes.push_back(std::move(mesh));
    }
    return scene;
}

const std::map<std::string, std::function<Scene()>>& makers()
{
    static const std::map<std::string, std::function<Scene()>> list = {
        {"spheres-400", [] { return spheres(400, 0.16f); }},
        {"spheres-10000", [] { return spheres(10000, 0.02f); }},
        {"bunny", bunny},
        {"teapot", teapot},
        {"nurbs", waves},
        {"deep", deep},
    };
    return list;
}

}  // namespace

float pixelsPerUnit(float distance)
{
    return kSize / 2 / (distance * static_cast<float>(std::tan(kFieldOfView * kPi / 360)));
}

const std::vector<std::string>& sceneNames()
{
    static const std::vector<std::string> names = {"spheres-400", "spheres-10000", "bunny",
                                                   "teapot",      "nurbs",         "deep"};
    return names;
}

Scene makeScene(const std::string& name) { return makers().at(name)(); }

}  // namespace zebpeers
