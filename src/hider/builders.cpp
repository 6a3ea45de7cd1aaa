// The scene's side of the calls that make primitives.

#include "geom/convex_polygon.h"
#include "geom/general_polygon.h"
#include "hider/scene.h"
#include "state/error.h"
#include "state/state.h"
#include "util/number.h"

namespace zeb
{

namespace
{
constexpr unsigned short kPrimitiveBlocks = 0xFC;
constexpr unsigned short kProceduralBlocks = 0x7C;
constexpr unsigned short kInstanceBlocks = 0x3C;
}  // namespace

// make() answers a primitive, or null if the arguments don't give one.
template <class Build>
void Scene::build(unsigned short blocks, const Build& make)
{
    if (!verify(blocks, kPrimitiveState)) return;
    std::unique_ptr<Primitive> primitive = make();
    if (!primitive) return;
    if (fDefining) {
        fDefining->add(std::move(primitive));
    } else {
        add(std::move(primitive));
    }
}

void Scene::polygon(long n, long nargs, const unsigned short* tokens, void* const* values)
{
    build(kPrimitiveBlocks, [&]() -> std::unique_ptr<Primitive> {
        if (!ConvexPolygon::verify(n, nargs, tokens, values)) return nullptr;
        return std::make_unique<ConvexPolygon>(n, nargs, tokens, values);
    });
}

void Scene::generalPolygon(long nloops, const long* nverts, long nargs,
                           const unsigned short* tokens, void* const* values)
{
    build(kPrimitiveBlocks, [&]() -> std::unique_ptr<Primitive> {
        if (!GeneralPolygon::verify(nloops, nverts, nargs, tokens, values)) return nullptr;
        return std::make_unique<GeneralPolygon>(nloops, nverts, nargs, tokens, values);
    });
}

void Scene::polygonMesh(long npolys, const long* nverts, const long* verts, long nargs,
                        const unsigned short* tokens, void* const* values)
{
    build(kPrimitiveBlocks, [&]() -> std::unique_ptr<Primitive> {
        if (!ConvexPolygonMesh::verify(npolys, nverts, verts, nargs, tokens, values)) {
            return nullptr;
        }
        return std::make_unique<ConvexPolygonMesh>(npolys, nverts, verts, nargs, tokens, values);
    });
}

void Scene::generalPolygonMesh(long npolys, const long* nloops, const long* nverts,
                               const long* verts, long nargs, const unsigned short* tokens,
                               void* const* values)
{
    build(kPrimitiveBlocks, [&]() -> std::unique_ptr<Primitive> {
        if (!GeneralPolygonMesh::verify(npolys, nloops, nverts, verts, nargs, tokens, values)) {
            return nullptr;
        }
        return std::make_unique<GeneralPolygonMesh>(npolys, nloops, nverts, verts, nargs, tokens,
                                                    values);
    });
}

void Scene::unsupported()
{
    if (verify(kPrimitiveBlocks, kPrimitiveState)) error(kUnsupported, kError, nullptr);
}

void Scene::procedural(void* data, const float* bound, SubdivideFunction subdivide,
                       FreeFunction release)
{
    // Released at the end of the call if nothing takes it over.
    auto shared = std::make_shared<Procedural::Data>(data, release);
    build(kProceduralBlocks, [&]() -> std::unique_ptr<Primitive> {
        if (!bound || !allFinite(bound, 6) || !subdivide) {
            error(kRange, kError,
                  !subdivide ? "subdivide function is null"
                  : bound    ? "bound is not finite"
                             : "bound is null");
            return nullptr;
        }
        return std::make_unique<Procedural>(std::move(shared), bound, subdivide);
    });
}

void Scene::objectInstance(const void* handle)
{
    if (!verify(kInstanceBlocks, kPrimitiveState)) return;
    const std::shared_ptr<Object> object = gState->liveObject(handle);
    if (!object) {
        error(kRange, kError, "object handle %p is not live", handle);
        return;
    }
    add(std::make_unique<Object>(*object, gOption->quirks));
}

}  // namespace zeb
