// Renders with Embree: its rays, and a plain function that shades what they hit.
#include <embree3/rtcore.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include "host.h"

using namespace zebpeers;

namespace
{

constexpr int kPacket = 16;  // 2 x 2 pixels of kRate x kRate samples
static_assert(kRate * kRate * 4 == kPacket);

template <class T>
T* newBuffer(RTCGeometry geometry, RTCBufferType type, RTCFormat format, std::size_t count)
{
    return static_cast<T*>(rtcSetNewGeometryBuffer(geometry, type, 0, format, sizeof(T), count));
}

void attach(RTCScene world, RTCGeometry geometry, unsigned id)
{
    rtcCommitGeometry(geometry);
    rtcAttachGeometryByID(world, geometry, id);
    rtcReleaseGeometry(geometry);
}

// Meshes have their own numbers, and all spheres together the next.
RTCScene build(RTCDevice device, const Scene& scene)
{
    RTCScene world = rtcNewScene(device);
    unsigned id = 0;
    for (const Mesh& mesh : scene.meshes) {
        RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
        std::copy(mesh.points.begin(), mesh.points.end(),
                  newBuffer<Vec>(geometry, RTC_BUFFER_TYPE_VERTEX, RTC_FORMAT_FLOAT3,
                                 mesh.points.size()));
        std::copy(mesh.triangles.begin(), mesh.triangles.end(),
                  newBuffer<std::array<unsigned, 3>>(geometry, RTC_BUFFER_TYPE_INDEX,
                                                     RTC_FORMAT_UINT3, mesh.triangles.size()));
        attach(world, geometry, id++);
    }
    if (!scene.spheres.empty()) {
        RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_SPHERE_POINT);
        auto* to = newBuffer<std::array<float, 4>>(geometry, RTC_BUFFER_TYPE_VERTEX,
                                                   RTC_FORMAT_FLOAT4, scene.spheres.size());
        for (const auto& [center, radius, color] : scene.spheres) {
            *to++ = {center[0], center[1], center[2], radius};
        }
        attach(world, geometry, id);
    }
    rtcCommitScene(world);
    return world;
}

struct Light {
    Vec toLight[3];

    Light()
    {
        for (int k = 0; k < 3; ++k) toLight[k] = normalize(-1 * kWays[k]);
    }
};

Vec shade(const Vec& color, Vec normal, const Vec& toEye)
{
    static const Light light;
    if (dot(normal, toEye) < 0) normal = -1 * normal;
    float diffuse = 0, specular = 0;
    for (const Vec& way : light.toLight) {
        const float cosine = dot(normal, way);
        if (cosine <= 0) continue;
        diffuse += kBright * cosine;
        const float shine = std::max(0.0f, dot(normal, normalize(way + toEye)));
        specular += kBright * std::pow(shine, 1 / kRoughness);
    }
    const float gloss = kKs * specular;
    return (kKa * kAmbient + kKd * diffuse) * color + Vec{gloss, gloss, gloss};
}

// The colour that ray k of a packet brings.
Vec colorOf(const Scene& scene, const RTCRayHit16& rays, int k)
{
    const unsigned id = rays.hit.geomID[k], part = rays.hit.primID[k];
    if (id == RTC_INVALID_GEOMETRY_ID) return {};
    const Vec toEye = {-rays.ray.dir_x[k], -rays.ray.dir_y[k], -rays.ray.dir_z[k]};
    if (id == scene.meshes.size()) {
        const Vec normal = {rays.hit.Ng_x[k], rays.hit.Ng_y[k], rays.hit.Ng_z[k]};
        return shade(scene.spheres[part].color, normalize(normal), toEye);
    }
    const Mesh& mesh = scene.meshes[id];
    const auto& [a, b, c] = mesh.triangles[part];
    const float u = rays.hit.u[k], v = rays.hit.v[k];
    const Vec normal = (1 - u - v) * mesh.normals[a] + u * mesh.normals[b] + v * mesh.normals[c];
    return shade(mesh.color, normalize(normal), toEye);
}

// Ray k of the packet whose first pixel is x, y: pixel after pixel.
void aim(RTCRayHit16& rays, int k, int x, int y)
{
    static const float half = std::tan(kFieldOfView * 3.14159265f / 360);
    const int pixel = k / (kRate * kRate), sample = k % (kRate * kRate);
    const auto place = [](int at, int within) {
        const float fraction = (static_cast<float>(within) + 0.5f) / kRate;
        return half * (2 * (static_cast<float>(at) + fraction) / kSize - 1);
    };
    const Vec way =
        normalize({place(x + pixel % 2, sample % kRate), -place(y + pixel / 2, sample / kRate), 1});
    rays.ray.org_x[k] = kEye[0], rays.ray.org_y[k] = kEye[1], rays.ray.org_z[k] = kEye[2];
    rays.ray.dir_x[k] = way[0], rays.ray.dir_y[k] = way[1], rays.ray.dir_z[k] = way[2];
    rays.ray.tnear[k] = 0, rays.ray.tfar[k] = 1e30f, rays.ray.time[k] = 0;
    rays.ray.mask[k] = ~0u, rays.ray.id[k] = 0, rays.ray.flags[k] = 0;
    rays.hit.geomID[k] = rays.hit.instID[0][k] = RTC_INVALID_GEOMETRY_ID;
}

void traceBlock(RTCScene world, const Scene& scene, Picture& picture, int x, int y)
{
    alignas(64) static const int valid[kPacket] = {-1, -1, -1, -1, -1, -1, -1, -1,
                                                   -1, -1, -1, -1, -1, -1, -1, -1};
    RTCRayHit16 rays;
    for (int k = 0; k < kPacket; ++k) aim(rays, k, x, y);
    RTCIntersectContext context;
    rtcInitIntersectContext(&context);
    context.flags = RTC_INTERSECT_CONTEXT_FLAG_COHERENT;
    rtcIntersect16(valid, world, &context, &rays);
    constexpr int kSamples = kRate * kRate;
    for (int pixel = 0; pixel < 4; ++pixel) {
        Vec sum = {};
        for (int k = 0; k < kSamples; ++k) sum = sum + colorOf(scene, rays, kSamples * pixel + k);
        unsigned char* to = picture.at(x + pixel % 2, y + pixel / 2);
        for (int c = 0; c < 3; ++c) {
            to[c] = static_cast<unsigned char>(std::min(1.0f, sum[c] / kSamples) * 255 + 0.5f);
        }
    }
}

void render(RTCDevice device, const Scene& scene, Picture& picture)
{
    RTCScene world = build(device, scene);
    for (int y = 0; y < kSize; y += 2) {
        for (int x = 0; x < kSize; x += 2) traceBlock(world, scene, picture, x, y);
    }
    rtcReleaseScene(world);
}

}  // namespace

int main(int argc, char** argv)
{
    const std::unique_ptr<RTCDeviceTy, void (*)(RTCDevice)> device(rtcNewDevice("threads=1"),
                                                                   rtcReleaseDevice);
    if (!device) throw std::runtime_error("no Embree device");
    return runHost(argc, argv, [&device](const Scene& scene) {
        return [&](Picture& picture) { render(device.get(), scene, picture); };
    });
}
