// The exported functions that make primitives.

#include "api/call_frame.h"
#include "hider/scene.h"
#include "zebcore/zebcore.h"

// The last named argument of some functions with a variable list is a float or a short, which the C
// standard leaves undefined for va_start. Every calling convention the library is built for passes
// it in a place of its own all the same, and the compilers look at the argument for this warning
// alone.
#if defined(__GNUC__)
#pragma GCC diagnostic ignored "-Wvarargs"
#endif

using namespace zeb;

extern "C" {

// Polygons

void zebPolygon(long nvertices, ...)
{
    CallFrame frame("zebPolygon");
    std::va_list args;
    va_start(args, nvertices);
    const ParameterPairs list(args);
    va_end(args);
    gScene->polygon(nvertices, list.n(), list.tokens(), list.values());
}

void zebPolygonV(long nvertices, long n, const unsigned short* tokens, void* const* values)
{
    CallFrame frame("zebPolygonV");
    gScene->polygon(nvertices, n, tokens, values);
}

void zebGeneralPolygon(long nloops, const long* nvertices, ...)
{
    CallFrame frame("zebGeneralPolygon");
    std::va_list args;
    va_start(args, nvertices);
    const ParameterPairs list(args);
    va_end(args);
    gScene->generalPolygon(nloops, nvertices, list.n(), list.tokens(), list.values());
}

void zebGeneralPolygonV(long nloops, const long* nvertices, long n, const unsigned short* tokens,
                        void* const* values)
{
    CallFrame frame("zebGeneralPolygonV");
    gScene->generalPolygon(nloops, nvertices, n, tokens, values);
}

void zebPolygonMesh(long npolys, const long* nvertices, const long* vertices, ...)
{
    CallFrame frame("zebPolygonMesh");
    std::va_list args;
    va_start(args, vertices);
    const ParameterPairs list(args);
    va_end(args);
    gScene->polygonMesh(npolys, nvertices, vertices, list.n(), list.tokens(), list.values());
}

void zebPolygonMeshV(long npolys, const long* nvertices, const long* vertices, long n,
                     const unsigned short* tokens, void* const* values)
{
    CallFrame frame("zebPolygonMeshV");
    gScene->polygonMesh(npolys, nvertices, vertices, n, tokens, values);
}

void zebGeneralPolygonMesh(long npolys, const long* nloops, const long* nvertices,
                           const long* vertices, ...)
{
    CallFrame frame("zebGeneralPolygonMesh");
    std::va_list args;
    va_start(args, vertices);
    const ParameterPairs list(args);
    va_end(args);
    gScene->generalPolygonMesh(npolys, nloops, nvertices, vertices, list.n(), list.tokens(),
                               list.values());
}

void zebGeneralPolygonMeshV(long npolys, const long* nloops, const long* nvertices,
                            const long* vertices, long n, const unsigned short* tokens,
                            void* const* values)
{
    CallFrame frame("zebGeneralPolygonMeshV");
    gScene->generalPolygonMesh(npolys, nloops, nvertices, vertices, n, tokens, values);
}

// Patches and NURBS

void zebPatch(short type, ...)
{
    CallFrame frame("zebPatch");
    std::va_list args;
    va_start(args, type);
    const ParameterPairs list(args);
    va_end(args);
    gScene->patch(type, list.n(), list.tokens(), list.values());
}

void zebPatchV(short type, long n, const unsigned short* tokens, void* const* values)
{
    CallFrame frame("zebPatchV");
    gScene->patch(type, n, tokens, values);
}

void zebPatchMesh(short type, long nu, short uwrap, long nv, short vwrap, ...)
{
    CallFrame frame("zebPatchMesh");
    std::va_list args;
    va_start(args, vwrap);
    const ParameterPairs list(args);
    va_end(args);
    gScene->patchMesh(type, nu, uwrap, nv, vwrap, list.n(), list.tokens(), list.values());
}

void zebPatchMeshV(short type, long nu, short uwrap, long nv, short vwrap, long n,
                   const unsigned short* tokens, void* const* values)
{
    CallFrame frame("zebPatchMeshV");
    gScene->patchMesh(type, nu, uwrap, nv, vwrap, n, tokens, values);
}

void zebNurb(long nu, const float* uknot, float umin, float umax, long nv, const float* vknot,
             float vmin, float vmax, ...)
{
    CallFrame frame("zebNurb");
    std::va_list args;
    va_start(args, vmax);
    const ParameterPairs list(args);
    va_end(args);
    gScene->nurb(nu, uknot, umin, umax, nv, vknot, vmin, vmax, list.n(), list.tokens(),
                 list.values());
}

void zebNurbV(long nu, const float* uknot, float umin, float umax, long nv, const float* vknot,
              float vmin, float vmax, long n, const unsigned short* tokens, void* const* values)
{
    CallFrame frame("zebNurbV");
    gScene->nurb(nu, uknot, umin, umax, nv, vknot, vmin, vmax, n, tokens, values);
}

void zebNurbMesh(long nu, long uorder, const float* uknot, float umin, float umax, long nv,
                 long vorder, const float* vknot, float vmin, float vmax, ...)
{
    CallFrame frame("zebNurbMesh");
    std::va_list args;
    va_start(args, vmax);
    const ParameterPairs list(args);
    va_end(args);
    gScene->nurbMesh(nu, uorder, uknot, umin, umax, nv, vorder, vknot, vmin, vmax, list.n(),
                     list.tokens(), list.values());
}

void zebNurbMeshV(long nu, long uorder, const float* uknot, float umin, float umax, long nv,
                  long vorder, const float* vknot, float vmin, float vmax, long n,
                  const unsigned short* tokens, void* const* values)
{
    CallFrame frame("zebNurbMeshV");
    gScene->nurbMesh(nu, uorder, uknot, umin, umax, nv, vorder, vknot, vmin, vmax, n, tokens,
                     values);
}

// Quadrics

void zebSphere(float radius, float zmin, float zmax, float thetamax, ...)
{
    CallFrame frame("zebSphere");
    std::va_list args;
    va_start(args, thetamax);
    const ParameterPairs list(args);
    va_end(args);
    gScene->sphere(radius, zmin, zmax, thetamax, list.n(), list.tokens(), list.values());
}

void zebSphereV(float radius, float zmin, float zmax, float thetamax, long n,
                const unsigned short* tokens, void* const* values)
{
    CallFrame frame("zebSphereV");
    gScene->sphere(radius, zmin, zmax, thetamax, n, tokens, values);
}

void zebSpheres(long n, const float* centers, const float* radii, ...)
{
    CallFrame frame("zebSpheres");
    std::va_list args;
    va_start(args, radii);
    const ParameterPairs list(args);
    va_end(args);
    gScene->spheres(n, centers, radii, list.n(), list.tokens(), list.values());
}

void zebSpheresV(long n, const float* centers, const float* radii, long nargs,
                 const unsigned short* tokens, void* const* values)
{
    CallFrame frame("zebSpheresV");
    gScene->spheres(n, centers, radii, nargs, tokens, values);
}

void zebCone(float radius, float height, float cutheight, float thetamax, ...)
{
    CallFrame frame("zebCone");
    std::va_list args;
    va_start(args, thetamax);
    const ParameterPairs list(args);
    va_end(args);
    gScene->cone(radius, height, cutheight, thetamax, list.n(), list.tokens(), list.values());
}

void zebConeV(float radius, float height, float cutheight, float thetamax, long n,
              const unsigned short* tokens, void* const* values)
{
    CallFrame frame("zebConeV");
    gScene->cone(radius, height, cutheight, thetamax, n, tokens, values);
}

void zebCylinder(float radius, float zmin, float zmax, float thetamax, ...)
{
    CallFrame frame("zebCylinder");
    std::va_list args;
    va_start(args, thetamax);
    const ParameterPairs list(args);
    va_end(args);
    gScene->cylinder(radius, zmin, zmax, thetamax, list.n(), list.tokens(), list.values());
}

void zebCylinderV(float radius, float zmin, float zmax, float thetamax, long n,
                  const unsigned short* tokens, void* const* values)
{
    CallFrame frame("zebCylinderV");
    gScene->cylinder(radius, zmin, zmax, thetamax, n, tokens, values);
}

void zebHyperboloid(const float* point1, const float* point2, float thetamax, ...)
{
    CallFrame frame("zebHyperboloid");
    std::va_list args;
    va_start(args, thetamax);
    const ParameterPairs list(args);
    va_end(args);
    gScene->hyperboloid(point1, point2, thetamax, list.n(), list.tokens(), list.values());
}

void zebHyperboloidV(const float* point1, const float* point2, float thetamax, long n,
                     const unsigned short* tokens, void* const* values)
{
    CallFrame frame("zebHyperboloidV");
    gScene->hyperboloid(point1, point2, thetamax, n, tokens, values);
}

void zebParaboloid(float rmax, float zmin, float zmax, float thetamax, ...)
{
    CallFrame frame("zebParaboloid");
    std::va_list args;
    va_start(args, thetamax);
    const ParameterPairs list(args);
    va_end(args);
    gScene->paraboloid(rmax, zmin, zmax, thetamax, list.n(), list.tokens(), list.values());
}

void zebParaboloidV(float rmax, float zmin, float zmax, float thetamax, long n,
                    const unsigned short* tokens, void* const* values)
{
    CallFrame frame("zebParaboloidV");
    gScene->paraboloid(rmax, zmin, zmax, thetamax, n, tokens, values);
}

void zebDisk(float innerradius, float radius, float thetamax, ...)
{
    CallFrame frame("zebDisk");
    std::va_list args;
    va_start(args, thetamax);
    const ParameterPairs list(args);
    va_end(args);
    gScene->disk(innerradius, radius, thetamax, list.n(), list.tokens(), list.values());
}

void zebDiskV(float innerradius, float radius, float thetamax, long n, const unsigned short* tokens,
              void* const* values)
{
    CallFrame frame("zebDiskV");
    gScene->disk(innerradius, radius, thetamax, n, tokens, values);
}

void zebTorus(float majorradius, float minorradius, float phimin, float phimax, float thetamax, ...)
{
    CallFrame frame("zebTorus");
    std::va_list args;
    va_start(args, thetamax);
    const ParameterPairs list(args);
    va_end(args);
    gScene->torus(majorradius, minorradius, phimin, phimax, thetamax, list.n(), list.tokens(),
                  list.values());
}

void zebTorusV(float majorradius, float minorradius, float phimin, float phimax, float thetamax,
               long n, const unsigned short* tokens, void* const* values)
{
    CallFrame frame("zebTorusV");
    gScene->torus(majorradius, minorradius, phimin, phimax, thetamax, n, tokens, values);
}

}  // extern "C"
