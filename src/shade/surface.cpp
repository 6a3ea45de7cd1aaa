#include "shade/surface.h"

#include <algorithm>

#include "math/shading_math.h"
#include "state/quark.h"
#include "state/upcalls.h"

namespace zeb
{

namespace
{

constexpr float kHalfPi = kPi * 0.5f;
constexpr long kLightSamples = 16;

// The shading normal turned towards the eye. How long the three are is a matter of units and of how
// finely the surface was split, and decides nothing.
Point facingNormal(const SurfacePoint& point)
{
    return faceforward(normalize(scaled(point.N)), scaled(point.I), scaled(point.Ng));
}

Point viewDirection(const SurfacePoint& point) { return normalize(scaled(-point.I)); }

}  // namespace

// Any name that is no other's is plastic.
std::shared_ptr<Surface> upcall::makeSurface(unsigned short name,
                                             std::shared_ptr<const Transform> transform,
                                             const ArgList& args)
{
    std::shared_ptr<Surface> surface;
    switch (name) {
        case kQConstant:
            surface = std::make_shared<ConstantSurface>();
            break;
        case kQDiffuse:
            surface = std::make_shared<MatteSurface>();
            break;
        case kQMetal:
            surface = std::make_shared<MetalSurface>();
            break;
        default:
            name = kQPlastic;
            surface = std::make_shared<PlasticSurface>();
    }
    surface->declare(name, std::move(transform));
    surface->instance(args);
    return surface;
}

Illuminance::Illuminance(SurfacePoint& surface, const Point& P, const Point& axis, float angle,
                         long n)
    : fSurface(surface),
      fNext(surface.lights->begin()),
      fPoint(P),
      fAxis(axis),
      fAngle(angle),
      fSamples(n)
{
}

bool Illuminance::operator++()
{
    for (; fNext != fSurface.lights->end(); ++fNext) {
        const Light& light = **fNext;
        if (light.isambient()) continue;
        LightSample sample;
        sample.row = fSurface.row;
        sample.point = fSurface.number;
        const float f = light.illuminates(fPoint, fAxis, fAngle, fSamples, sample);
        if (!(f > kEpsilon)) continue;
        light.evaluate(sample);
        fSurface.L = -sample.L;
        fSurface.Cl = f * sample.Cl;
        fSurface.Ol = sample.Ol;
        ++fNext;
        return true;
    }
    return false;
}

Color Surface::ambient(const SurfacePoint& point)
{
    Color sum = gBlack;
    for (const auto& light : *point.lights) {
        if (!light->isambient()) continue;
        LightSample sample;
        sample.row = point.row;
        sample.point = point.number;
        light->evaluate(sample);
        sum += sample.Cl;
    }
    return sum;
}

Color Surface::diffuse(SurfacePoint& point, const Point& N)
{
    const Point Nn = normalize(N);
    Color sum = gBlack;
    for (Illuminance lights(point, point.P, Nn, kHalfPi, kLightSamples); ++lights;) {
        sum += point.Cl * dot(normalize(scaled(point.L)), Nn);
    }
    return sum;
}

Color Surface::specular(SurfacePoint& point, const Point& N, Point& V, float roughness)
{
    const Point Nn = normalize(N);
    V = normalize(V);
    Color sum = gBlack;
    for (Illuminance lights(point, point.P, Nn, kHalfPi, kLightSamples); ++lights;) {
        const Point H = normalize(normalize(scaled(point.L)) + V);
        sum += point.Cl * power(std::max(0.0f, dot(Nn, H)), 1 / roughness);
    }
    return sum;
}

Color Surface::phong(SurfacePoint& point, const Point& N, const Point& V, float size)
{
    const Point Nn = normalize(N);
    const Point R = reflect(-normalize(V), Nn);
    Color sum = gBlack;
    for (Illuminance lights(point, point.P, Nn, kHalfPi, kLightSamples); ++lights;) {
        sum += point.Cl * power(std::max(0.0f, dot(R, normalize(scaled(point.L)))), size);
    }
    return sum;
}

void ConstantSurface::evaluate(SurfacePoint& point) const
{
    point.Oi = point.Os;
    point.Ci = point.Os * point.Cs;
}

bool ConstantSurface::describe(SurfaceRecord& record) const
{
    record.kind = SurfaceRecord::kConstant;
    return true;
}

std::unique_ptr<Surface> ConstantSurface::clone() const
{
    return std::make_unique<ConstantSurface>(*this);
}

ParmList MatteSurface::parameters() { return {{kQKa, &ka}, {kQKd, &kd}}; }

void MatteSurface::evaluate(SurfacePoint& point) const
{
    point.Oi = point.Os;
    const Point Nf = facingNormal(point);
    point.Ci = (point.Os * point.Cs) * (ka * ambient(point) + kd * diffuse(point, Nf));
}

bool MatteSurface::describe(SurfaceRecord& record) const
{
    record.kind = SurfaceRecord::kMatte;
    record.ka = ka;
    record.kd = kd;
    return true;
}

std::unique_ptr<Surface> MatteSurface::clone() const
{
    return std::make_unique<MatteSurface>(*this);
}

ParmList MetalSurface::parameters()
{
    return {{kQKa, &ka}, {kQKs, &ks}, {kQRoughness, &roughness}};
}

void MetalSurface::evaluate(SurfacePoint& point) const
{
    point.Oi = point.Os;
    const Point Nf = facingNormal(point);
    Point V = viewDirection(point);
    const Color shine = ks * specular(point, Nf, V, roughness);
    point.Ci = (point.Os * point.Cs) * (ka * ambient(point) + shine);
}

bool MetalSurface::describe(SurfaceRecord& record) const
{
    record.kind = SurfaceRecord::kMetal;
    record.ka = ka;
    record.ks = ks;
    record.roughness = roughness;
    return true;
}

std::unique_ptr<Surface> MetalSurface::clone() const
{
    return std::make_unique<MetalSurface>(*this);
}

ParmList PlasticSurface::parameters()
{
    return {{kQKa, &ka},
            {kQKd, &kd},
            {kQKs, &ks},
            {kQRoughness, &roughness},
            {kQSpecularColor, &specularcolor}};
}

void PlasticSurface::evaluate(SurfacePoint& point) const
{
    point.Oi = point.Os;
    const Point Nf = facingNormal(point);
    Point V = viewDirection(point);
    const Color shine = (specularcolor * ks) * specular(point, Nf, V, roughness);
    const Color body = kd * diffuse(point, Nf);
    point.Ci = point.Os * (point.Cs * (ka * ambient(point) + body) + shine);
}

bool PlasticSurface::describe(SurfaceRecord& record) const
{
    record.kind = SurfaceRecord::kPlastic;
    record.ka = ka;
    record.kd = kd;
    record.ks = ks;
    record.roughness = roughness;
    const float color[3] = {specularcolor.r, specularcolor.g, specularcolor.b};
    std::copy(color, color + 3, record.specularcolor);
    return true;
}

std::unique_ptr<Surface> PlasticSurface::clone() const
{
    return std::make_unique<PlasticSurface>(*this);
}

std::shared_ptr<Surface> upcall::makeSurface(std::shared_ptr<const HostShader> shader)
{
    return std::make_shared<HostSurface>(std::move(shader));
}

// What a surface is without a function.
void HostSurface::evaluate(SurfacePoint& point) const { ConstantSurface().evaluate(point); }

std::unique_ptr<Surface> HostSurface::clone() const { return std::make_unique<HostSurface>(*this); }

}  // namespace zeb
