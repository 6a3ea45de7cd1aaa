#include "lines.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>
#include <vector>

#include "scene.h"
#include "zebcore/zebcore.h"

namespace zebview
{

namespace
{

constexpr Color kEdgeColor{0.06f, 0.06f, 0.07f};
// So many ribbons are handed over at a time.
constexpr std::size_t kAtOnce = 1 << 16;
const std::vector<float> kNoValues;

// From where a model is seen, in its own space.
class Eye
{
public:
    Eye(const Camera& camera, const Settings& settings)
        : fHasPerspective(camera.fov > 0), fPixel(camera, settings)
    {
        const auto column = [&camera](unsigned c) {
            return Vector(camera.toCamera[0][c], camera.toCamera[1][c], camera.toCamera[2][c]);
        };
        fDepth = column(2);
        fOffset = camera.toCamera[3][2];
        for (unsigned c = 0; c < 3; ++c) {
            fPlace = fPlace - column(c) * static_cast<double>(camera.toCamera[3][c]);
        }
    }

    // The direction from a point to the eye.
    Vector from(const Vector& p) const { return fHasPerspective ? direction(fPlace - p) : -fDepth; }
    // How large a pixel is where a point is.
    double pixelAt(const Vector& p) const { return fPixel.at(p * fDepth + fOffset); }

private:
    bool fHasPerspective;
    Vector fPlace, fDepth;
    double fOffset;
    PixelSize fPixel;
};

// A variable that goes with the vertices of a mesh.
struct Values {
    unsigned short token;
    std::size_t width;  // numbers a vertex
    const std::vector<float>& list;

    const float* at(std::size_t vertex) const
    {
        return list.empty() ? nullptr : &list[width * vertex];
    }
};

class Ribbons
{
public:
    Ribbons(const Values& values, const Camera& camera, const Settings& settings)
        : fKind(values), fEye(camera, settings), fHalfWidth(settings.lineWidth / 2)
    {
    }
    ~Ribbons() { flush(); }
    Ribbons(const Ribbons&) = delete;
    Ribbons& operator=(const Ribbons&) = delete;

    // values  of both ends, or null
    void add(const Vector& a, const Vector& b, const float* valuesA, const float* valuesB)
    {
        const Vector way = direction(b - a);
        const Vector sideA = direction(way ^ fEye.from(a)), sideB = direction(way ^ fEye.from(b));
        // What points to the eye has no width.
        if (sideA == Vector() || sideB == Vector()) return;
        corner(a, sideA, valuesA);
        corner(b, sideB, valuesB);
        corner(b, -sideB, valuesB);
        corner(a, -sideA, valuesA);
        if (fPoints.size() >= kAtOnce * 12) flush();
    }

private:
    // Before the line by as much as beside it, as a wire would be.
    void corner(const Vector& p, const Vector& side, const float* values)
    {
        const Vector toEye = fEye.from(p);
        const Vector ahead = p + toEye * (fHalfWidth * fEye.pixelAt(p));
        append(fPoints, ahead + side * (fHalfWidth * fEye.pixelAt(ahead)));
        append(fNormals, direction(side + toEye));
        if (values) fValues.insert(fValues.end(), values, values + fKind.width);
    }
    void flush()
    {
        const std::size_t count = fPoints.size() / 12;
        if (count == 0) return;
        const std::vector<long> sizes(count, 4);
        std::vector<long> corners(4 * count);
        std::iota(corners.begin(), corners.end(), 0L);
        const unsigned short tokens[] = {zebQuark("point"), zebQuark("normal"), fKind.token};
        void* const values[] = {fPoints.data(), fNormals.data(), fValues.data()};
        zebPolygonMeshV(static_cast<long>(count), sizes.data(), corners.data(),
                        fValues.empty() ? 2 : 3, tokens, values);
        fPoints.clear();
        fNormals.clear();
        fValues.clear();
    }

    const Values fKind;
    const Eye fEye;
    const double fHalfWidth;
    std::vector<float> fPoints, fNormals, fValues;  // four corners a ribbon
};

using Pair = std::pair<std::size_t, std::size_t>;

// The first vertex at the place of each.
std::vector<std::size_t> firstAtPlace(const std::vector<float>& points)
{
    std::vector<std::size_t> order(points.size() / 3), first(order.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const auto compare = [&points](std::size_t a, std::size_t b) {
        return std::lexicographical_compare(&points[3 * a], &points[3 * a] + 3, &points[3 * b],
                                            &points[3 * b] + 3);
    };
    std::stable_sort(order.begin(), order.end(), compare);
    for (std::size_t i = 0; i < order.size(); ++i) {
        const bool isNew = i == 0 || compare(order[i - 1], order[i]);
        first[order[i]] = isNew ? order[i] : first[order[i - 1]];
    }
    return first;
}

std::vector<Pair> edgesOf(const Mesh& mesh)
{
    const std::vector<std::size_t> first = firstAtPlace(mesh.points);
    std::vector<Pair> edges;
    for (const FaceList* const faces : {&mesh.convex, &mesh.concave, &mesh.flatConcave}) {
        const long* corner = faces->corners.data();
        for (const long size : faces->sizes) {
            for (long i = 0; i < size; ++i) {
                const std::size_t a = first[static_cast<std::size_t>(corner[i])];
                const std::size_t b = first[static_cast<std::size_t>(corner[(i + 1) % size])];
                edges.push_back(std::minmax(a, b));
            }
            corner += size;
        }
    }
    std::sort(edges.begin(), edges.end());
    edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
    return edges;
}

void addPairs(const Mesh& mesh, const std::vector<Pair>& pairs, const Values& values,
              const Camera& camera, const Settings& settings)
{
    Ribbons ribbons(values, camera, settings);
    for (const Matrix& place : mesh.places()) {
        for (const auto& [a, b] : pairs) {
            ribbons.add(place * mesh.point(a), place * mesh.point(b), values.at(a), values.at(b));
        }
    }
}

}  // namespace

Camera roomForLines(Camera camera, const Model& model, const Settings& settings)
{
    const auto hasLines = [](const Mesh& mesh) { return !mesh.lines.empty(); };
    if (settings.edges || std::any_of(model.meshes.begin(), model.meshes.end(), hasLines)) {
        constexpr float closest = 0.01f;
        const double ahead = settings.lineWidth * PixelSize(camera, settings).at(camera.nearest);
        camera.nearest =
            std::max(camera.nearest - static_cast<float>(ahead), std::min(camera.nearest, closest));
    }
    return camera;
}

void addLines(const Mesh& mesh, const Camera& camera, const Settings& settings,
              const std::shared_ptr<const Around>& around,
              const std::optional<ScalarColors>& scalar)
{
    if (mesh.lines.empty()) return;
    std::vector<Pair> pairs;
    for (std::size_t i = 0; i + 1 < mesh.lines.size(); i += 2) {
        pairs.emplace_back(mesh.lines[i], mesh.lines[i + 1]);
    }
    zebAttributePush();
    Material wire = mesh.material;
    wire.specular = 0;
    setPlainLook(wire, settings, around, scalar);
    const Values colors{zebQuark("color"), 3, settings.color ? kNoValues : mesh.colors};
    const Values places{scalarToken(), 1, mesh.scalars};
    addPairs(mesh, pairs, scalar ? places : colors, camera, settings);
    zebAttributePop();
}

void addEdges(const Mesh& mesh, const Camera& camera, const Settings& settings,
              const std::shared_ptr<const Around>& around)
{
    Material wire;
    wire.color = toLight(settings.edgeColor.value_or(kEdgeColor));
    wire.specular = 0;
    Settings others = settings;
    others.color.reset();
    zebAttributePush();
    setPlainLook(wire, others, around, {});
    addPairs(mesh, edgesOf(mesh), {zebQuark("color"), 3, kNoValues}, camera, settings);
    zebAttributePop();
}

}  // namespace zebview
