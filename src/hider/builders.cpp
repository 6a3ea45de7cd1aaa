// The scene's side of the calls that make primitives.

#include "geom/convex_polygon.h"
#include "geom/general_polygon.h"
#include "geom/nurb.h"
#include "geom/patch_mesh.h"
#include "geom/quadric.h"
#include "hider/scene.h"
#include "state/error.h"
#include "state/quark.h"
#include "state/state.h"
#include "state/upcalls.h"
#include "util/host_array.h"
#include "util/number.h"

namespace zeb
{

namespace
{
constexpr unsigned short kPrimitiveBlocks = kInWorld | kObjectBlock | kMotionBlock;
constexpr unsigned short kProceduralBlocks = kInWorld | kObjectBlock;

// A quadric of the curve, if all its measures are numbers.
template <class Shape, class MakeCurve>
std::unique_ptr<Primitive> makeQuadric(std::initializer_list<NamedValue> measures,
                                       const MakeCurve& curve, float thetamax, long nargs,
                                       const unsigned short* tokens, void* const* values)
{
    if (!finiteArguments(measures) || !finiteArguments(NamedValue{"thetamax", thetamax}) ||
        !ArgList::usable(nargs, tokens, values, ArgCounts{4, 1, 4})) {
        return nullptr;
    }
    return std::make_unique<Shape>(curve(), thetamax, nargs, tokens, values);
}
}  // namespace

// make() answers a primitive, or null if the arguments don't give one.
template <class Build>
void Scene::build(unsigned short blocks, long nargs, const unsigned short* tokens,
                  const Build& make)
{
    if (!verify(blocks, kPrimitiveState)) return;
    std::unique_ptr<Primitive> primitive = make();
    if (!primitive) return;
    const bool quadric = primitive->type() >= kSphere && primitive->type() <= kTorus;
    keep(std::move(primitive));
    tellUnread(!quadric, nargs, tokens);
}

// Objects are drawn under attributes that are not known yet.
void Scene::tellUnread(bool positioned, long nargs, const unsigned short* tokens)
{
    if (nargs == 0 || fDefining || !infosHeard()) return;
    const std::shared_ptr<const Surface> surface = gAttrib->surfaceShader;
    const auto read = [&](unsigned short token) {
        if (token <= kQPointw) return positioned;
        return token == kQNormal || token == kQColor || token == kQOpacity ||
               Quark::isVertexColor(token) || upcall::surfaceReads(*surface, token);
    };
    const char* const shader = upcall::surfaceName(*surface);
    for (long i = 0; i < nargs; ++i) {
        const char* const name = Quark::getString(tokens[i]);
        if (!name || read(tokens[i]) || !fUnread.insert({shader, tokens[i]}).second) continue;
        error(kRange, kInfo, "\"%s\" does not read \"%s\"", shader, name);
    }
}

void Scene::keep(std::unique_ptr<Primitive> primitive)
{
    if (fDefining) {
        fDefining->add(std::move(primitive));
    } else {
        add(std::move(primitive));
    }
}

void Scene::polygon(long n, long nargs, const unsigned short* tokens, void* const* values)
{
    build(kPrimitiveBlocks, nargs, tokens, [&]() -> std::unique_ptr<Primitive> {
        if (!ConvexPolygon::verify(n, nargs, tokens, values)) return nullptr;
        return std::make_unique<ConvexPolygon>(n, nargs, tokens, values);
    });
}

void Scene::generalPolygon(long nloops, const long* nverts, long nargs,
                           const unsigned short* tokens, void* const* values)
{
    build(kPrimitiveBlocks, nargs, tokens, [&]() -> std::unique_ptr<Primitive> {
        if (!GeneralPolygon::verify(nloops, nverts, nargs, tokens, values)) return nullptr;
        return std::make_unique<GeneralPolygon>(nloops, HostArrays::dense(nverts), nargs, tokens,
                                                values);
    });
}

void Scene::polygonMesh(long npolys, const long* nverts, const long* verts, long nargs,
                        const unsigned short* tokens, void* const* values)
{
    build(kPrimitiveBlocks, nargs, tokens, [&]() -> std::unique_ptr<Primitive> {
        if (!ConvexPolygonMesh::verify(npolys, nverts, verts, nargs, tokens, values)) {
            return nullptr;
        }
        return std::make_unique<ConvexPolygonMesh>(npolys, HostArrays::dense(nverts),
                                                   HostArrays::dense(verts), nargs, tokens, values);
    });
}

void Scene::generalPolygonMesh(long npolys, const long* nloops, const long* nverts,
                               const long* verts, long nargs, const unsigned short* tokens,
                               void* const* values)
{
    build(kPrimitiveBlocks, nargs, tokens, [&]() -> std::unique_ptr<Primitive> {
        if (!GeneralPolygonMesh::verify(npolys, nloops, nverts, verts, nargs, tokens, values)) {
            return nullptr;
        }
        return std::make_unique<GeneralPolygonMesh>(
            npolys, HostArrays::dense(nloops), HostArrays::dense(nverts), HostArrays::dense(verts),
            nargs, tokens, values);
    });
}

void Scene::patch(short type, long nargs, const unsigned short* tokens, void* const* values)
{
    build(kPrimitiveBlocks, nargs, tokens, [&]() -> std::unique_ptr<Primitive> {
        switch (type) {
            case Patch::kBilinear:
                if (!BilinearPatch::verify(nargs, tokens, values)) return nullptr;
                return std::make_unique<BilinearPatch>(nargs, tokens, values);
            case Patch::kBicubic:
                if (!BicubicPatch::verify(nargs, tokens, values)) return nullptr;
                return std::make_unique<BicubicPatch>(nargs, tokens, values);
            default:
                error(kRange, kError, "type must be bilinear or bicubic");
                return nullptr;
        }
    });
}

void Scene::patchMesh(short type, long nu, short uwrap, long nv, short vwrap, long nargs,
                      const unsigned short* tokens, void* const* values)
{
    build(kPrimitiveBlocks, nargs, tokens, [&]() -> std::unique_ptr<Primitive> {
        if (!PatchMesh::verify(type, nu, uwrap, nv, vwrap, nargs, tokens, values)) return nullptr;
        return std::make_unique<PatchMesh>(type, nu, uwrap, nv, vwrap, nargs, tokens, values);
    });
}

void Scene::nurb(long nu, const float* uknot, float umin, float umax, long nv, const float* vknot,
                 float vmin, float vmax, long nargs, const unsigned short* tokens,
                 void* const* values)
{
    build(kPrimitiveBlocks, nargs, tokens, [&]() -> std::unique_ptr<Primitive> {
        NurbNet::Direction u{nu, nu, uknot, umin, umax}, v{nv, nv, vknot, vmin, vmax};
        if (!NurbNet::verify(u, v, nargs, tokens, values)) return nullptr;
        u.knots = HostArrays::dense(uknot);
        v.knots = HostArrays::dense(vknot);
        return NuPatch::make(u, v, nargs, tokens, values);
    });
}

void Scene::nurbMesh(long nu, long uorder, const float* uknot, float umin, float umax, long nv,
                     long vorder, const float* vknot, float vmin, float vmax, long nargs,
                     const unsigned short* tokens, void* const* values)
{
    build(kPrimitiveBlocks, nargs, tokens, [&]() -> std::unique_ptr<Primitive> {
        NurbNet::Direction u{nu, uorder, uknot, umin, umax};
        NurbNet::Direction v{nv, vorder, vknot, vmin, vmax};
        if (!NurbNet::verify(u, v, nargs, tokens, values)) return nullptr;
        u.knots = HostArrays::dense(uknot);
        v.knots = HostArrays::dense(vknot);
        auto mesh = std::make_unique<NuPatchMesh>(u, v, nargs, tokens, values);
        return mesh->empty() ? nullptr : std::move(mesh);
    });
}

void Scene::sphere(float radius, float zmin, float zmax, float thetamax, long nargs,
                   const unsigned short* tokens, void* const* values)
{
    build(kPrimitiveBlocks, nargs, tokens, [&] {
        return makeQuadric<Sphere>(
            {{"radius", radius}, {"zmin", zmin}, {"zmax", zmax}},
            [&] { return SphereCurve(radius, zmin, zmax); }, thetamax, nargs, tokens, values);
    });
}

void Scene::spheres(long n, const float* centers, const float* radii, long nargs,
                    const unsigned short* tokens, void* const* values)
{
    constexpr long kMost = 1L << 27;
    if (!verify(kPrimitiveBlocks, kPrimitiveState)) return;
    if (n < 0 || n > kMost) {
        error(kRange, kError, "number of spheres %ld out of range", n);
        return;
    }
    if (n == 0) return;
    const auto count = static_cast<std::size_t>(n);
    if (!centers || !radii) {
        error(kRange, kError, "%s are null", centers ? "radii" : "centers");
        return;
    }
    centers = HostArrays::read("centers", centers, n, 3);
    radii = centers ? HostArrays::read("radii", radii, n) : nullptr;
    if (!radii) return;
    if (!allFinite(centers, 3 * count) || !allFinite(radii, count)) {
        error(kRange, kError, "centers or radii are not finite");
        return;
    }
    const ArgCounts counts{n, n, n};
    if (!ArgList::usable(nargs, tokens, values, counts)) return;
    ArgList args;
    args.init(nargs, tokens, values, counts);
    for (long i = 0; i < n; ++i) {
        // A value of its own for every corner, all the same.
        const long corners[4] = {i, i, i, i};
        ArgList own;
        own.split(4, corners, args, i);
        const float* c = centers + 3 * i;
        keep(std::make_unique<Sphere>(SphereCurve(radii[i], -radii[i], radii[i]),
                                      Point(c[0], c[1], c[2]), own));
    }
    tellUnread(false, nargs, tokens);
}

void Scene::cone(float radius, float height, float cutheight, float thetamax, long nargs,
                 const unsigned short* tokens, void* const* values)
{
    build(kPrimitiveBlocks, nargs, tokens, [&] {
        return makeQuadric<Cone>(
            {{"radius", radius}, {"height", height}, {"cut height", cutheight}},
            [&] { return ConeCurve(radius, height, cutheight); }, thetamax, nargs, tokens, values);
    });
}

void Scene::cylinder(float radius, float zmin, float zmax, float thetamax, long nargs,
                     const unsigned short* tokens, void* const* values)
{
    build(kPrimitiveBlocks, nargs, tokens, [&] {
        return makeQuadric<Cylinder>(
            {{"radius", radius}, {"zmin", zmin}, {"zmax", zmax}},
            [&] { return CylinderCurve(radius, zmin, zmax); }, thetamax, nargs, tokens, values);
    });
}

void Scene::hyperboloid(const float* point1, const float* point2, float thetamax, long nargs,
                        const unsigned short* tokens, void* const* values)
{
    build(kPrimitiveBlocks, nargs, tokens, [&]() -> std::unique_ptr<Primitive> {
        if (!point1 || !point2) {
            error(kRange, kError, "point is null");
            return nullptr;
        }
        const float* const p = HostArrays::read("point 1", point1, 3);
        const float* const q = p ? HostArrays::read("point 2", point2, 3) : nullptr;
        if (!q) return nullptr;
        return makeQuadric<Hyperboloid>(
            {{"x of point 1", p[0]},
             {"y of point 1", p[1]},
             {"z of point 1", p[2]},
             {"x of point 2", q[0]},
             {"y of point 2", q[1]},
             {"z of point 2", q[2]}},
            [&] { return HyperboloidCurve(p, q); }, thetamax, nargs, tokens, values);
    });
}

void Scene::paraboloid(float rmax, float zmin, float zmax, float thetamax, long nargs,
                       const unsigned short* tokens, void* const* values)
{
    build(kPrimitiveBlocks, nargs, tokens, [&]() -> std::unique_ptr<Primitive> {
        if (nearZero(double{zmax})) {
            error(kRange, kError, "zmax may not equal 0");
            return nullptr;
        }
        if (double{zmin} * double{zmax} < 0) {
            error(kRange, kError, "paraboloid may not cross z plane, use two");
            return nullptr;
        }
        return makeQuadric<Paraboloid>(
            {{"rmax", rmax}, {"zmin", zmin}, {"zmax", zmax}},
            [&] { return ParaboloidCurve(rmax, zmin, zmax); }, thetamax, nargs, tokens, values);
    });
}

void Scene::disk(float innerradius, float radius, float thetamax, long nargs,
                 const unsigned short* tokens, void* const* values)
{
    build(kPrimitiveBlocks, nargs, tokens, [&] {
        return makeQuadric<Disk>(
            {{"inner radius", innerradius}, {"radius", radius}},
            [&] { return DiskCurve(innerradius, radius); }, thetamax, nargs, tokens, values);
    });
}

void Scene::torus(float majorradius, float minorradius, float phimin, float phimax, float thetamax,
                  long nargs, const unsigned short* tokens, void* const* values)
{
    build(kPrimitiveBlocks, nargs, tokens, [&] {
        return makeQuadric<Torus>(
            {{"major radius", majorradius},
             {"minor radius", minorradius},
             {"phimin", phimin},
             {"phimax", phimax}},
            [&] { return TorusCurve(majorradius, minorradius, phimin, phimax); }, thetamax, nargs,
            tokens, values);
    });
}

void Scene::procedural(void* data, const float* bound, SubdivideFunction subdivide,
                       FreeFunction release)
{
    // Released at the end of the call if nothing takes it over.
    auto shared = std::make_shared<Procedural::Data>(data, release);
    build(kProceduralBlocks, 0, nullptr, [&]() -> std::unique_ptr<Primitive> {
        const float* const box = bound ? HostArrays::read("bound", bound, 6) : nullptr;
        if (bound && !box) return nullptr;
        if (!box || !allFinite(box, 6) || !subdivide) {
            error(kRange, kError,
                  !subdivide ? "subdivide function is null"
                  : box      ? "bound is not finite"
                             : "bound is null");
            return nullptr;
        }
        return std::make_unique<Procedural>(std::move(shared), box, subdivide);
    });
}

void Scene::objectInstance(const void* handle)
{
    if (!verify(kInWorld, kPrimitiveState)) return;
    const std::shared_ptr<Object> object = gState->liveObject(handle);
    if (!object) {
        error(kRange, kError, "object handle %p is not live", handle);
        return;
    }
    add(std::make_unique<Object>(*object, gOption->quirks));
}

}  // namespace zeb
