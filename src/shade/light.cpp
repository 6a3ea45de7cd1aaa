#include "shade/light.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

#include "math/matrix.h"
#include "math/shading_math.h"
#include "math/trigonometry.h"
#include "state/quark.h"
#include "state/upcalls.h"

namespace zeb
{

namespace
{

float clampedAcos(float x)
{
    return static_cast<float>(arccosine(double{std::fmin(1.0f, std::fmax(-1.0f, x))}));
}
float sineOf(float angle) { return static_cast<float>(sincos(double{angle}).sin); }
float cosineOf(float angle) { return static_cast<float>(sincos(double{angle}).cos); }

// Of the half-angle of a cone; surfaces ask for the half-space.
float coneCosine(float angle)
{
    constexpr float kHalfSpace = kPi * 0.5f;
    static const float cosine = cosineOf(kHalfSpace);
    return angle == kHalfSpace ? cosine : cosineOf(angle);
}

// Parameters are found by name, so a light may list fields of a record that it shares with others.
ParmList colorParms(LightParms& p) { return {{kQIntensity, &p.intensity}, {kQColor, &p.color}}; }

void assign(float (&to)[3], const Point& p)
{
    to[0] = p.x;
    to[1] = p.y;
    to[2] = p.z;
}

LightRecord recordOf(LightRecord::Kind kind, const LightParms& parms)
{
    LightRecord record;
    record.kind = kind;
    record.intensity = parms.intensity;
    assign(record.color, Point(parms.color.r, parms.color.g, parms.color.b));
    assign(record.from, parms.from);
    return record;
}

// Brings both ends of a light to camera space; answers the way from one to the other, which keeps
// its digits however far away they lie.
Point aim(LightParms& parms, const Matrix& toCamera)
{
    const Pointd from = Pointd(parms.from) * toCamera, to = Pointd(parms.to) * toCamera;
    parms.from = rounded(from);
    parms.to = rounded(to);
    return rounded(to - from);
}

}  // namespace

std::shared_ptr<Light> upcall::makeLight(unsigned short name,
                                         std::shared_ptr<const Transform> transform,
                                         const ArgList& args, bool quirks)
{
    std::shared_ptr<Light> light;
    switch (name) {
        case kQAmbient:
            light = std::make_shared<AmbientLight>();
            break;
        case kQDistant:
            light = std::make_shared<DistantLight>();
            break;
        case kQOmni:
            light = std::make_shared<PointLight>();
            break;
        case kQSpot:
            light = std::make_shared<SpotLight>(quirks ? SpotLight() : SpotLight::inDegrees());
            break;
        default:
            return nullptr;
    }
    light->declare(name, std::move(transform));
    light->instance(args);
    return light;
}

float Light::illuminates(const Point&, const Point&, float, long, LightSample&) const { return 0; }
void Light::evaluate(LightSample&) const {}

float Light::illuminate(const Point& Ps, const Point& N, float angle, const Point& Pl,
                        const Point& axis, float lightangle, LightSample& sample)
{
    sample.L = Ps - Pl;
    const Point direction = normalize(scaled(sample.L));
    if (lightangle < kPi && cosineOf(lightangle) > dot(normalize(scaled(axis)), direction))
        return 0;
    if (angle >= kPi) return 1;
    return dot(normalize(N), -direction) >= cosineOf(angle) ? 1.0f : 0.0f;
}

float Light::solar(const Point&, const Point& N, float angle, const Point& axis, float lightangle,
                   long n, LightSample& sample)
{
    if (lightangle >= kPi) {
        sample.L = -N;
        return 1;
    }
    Point a = normalize(N);
    const Point b = normalize(scaled(-axis));
    if (lightangle == 0) {
        // Without a spread the light is in the cone or it is not.
        sample.L = axis;
        return angle >= kPi || dot(a, b) >= cosineOf(angle) ? 1.0f : 0.0f;
    }
    const float d = clampedAcos(dot(a, b));
    if (d + lightangle <= angle) {
        sample.L = axis;
        return 1;
    }
    if (angle + lightangle < d) return 0;

    // The cones overlap in part: L leans to their common middle, and samples tell how much.
    sample.L = axis;
    const double degrees = 180 / static_cast<double>(kPi);
    const Point c = b ^ a;
    if (length(c) > kEpsilon) {
        Matrix lean;
        lean.rotate(static_cast<float>((lightangle + angle) * 0.5 * degrees), c.x, c.y, c.z);
        sample.L = sample.L * lean;
    }
    if (!nearZero(b.x) || !nearZero(b.z)) {
        Matrix upright;
        upright.rotate(static_cast<float>(clampedAcos(b.y) * degrees), -b.z, 0, b.x);
        a = a * upright;
    }
    const long m = 4 * std::max(static_cast<long>(std::ceil(static_cast<double>(n) * 0.25)), 1L);
    long count = 0;
    // All directions stay in one quarter of the light's cone: scenes are tuned to what that gives.
    for (long i = 0; i < m; ++i) {
        const float theta = sample.random.unit() * lightangle;
        const float phi = sample.random.unit() * kPi * 0.5f;
        const Point direction(cosineOf(phi) * sineOf(theta), cosineOf(theta),
                              sineOf(phi) * sineOf(theta));
        count += dot(a, direction) >= cosineOf(angle);
    }
    return static_cast<float>(count) / static_cast<float>(m);
}

ParmList AmbientLight::parameters() { return colorParms(fParms); }

void AmbientLight::evaluate(LightSample& sample) const
{
    sample.Cl = fParms.intensity * fParms.color;
}

bool AmbientLight::describe(LightRecord& record) const
{
    record = recordOf(LightRecord::kAmbient, fParms);
    return true;
}

ParmList DistantLight::parameters()
{
    return {{kQIntensity, &fParms.intensity},
            {kQColor, &fParms.color},
            {kQFrom, &fParms.from},
            {kQTo, &fParms.to}};
}

void DistantLight::setAxis(const Point& axis)
{
    fAxis = axis;
    fToLight = normalize(scaled(-axis));
}

void DistantLight::instance(const ArgList& args)
{
    Light::instance(args);
    setAxis(aim(fParms, toCamera()));
}

// As solar() without a spread.
float DistantLight::illuminates(const Point&, const Point& N, float angle, long,
                                LightSample& sample) const
{
    sample.L = fAxis;
    return angle >= kPi || dot(normalize(N), fToLight) >= coneCosine(angle) ? 1.0f : 0.0f;
}

void DistantLight::evaluate(LightSample& sample) const
{
    sample.Cl = fParms.intensity * fParms.color;
}

bool DistantLight::describe(LightRecord& record) const
{
    record = recordOf(LightRecord::kDistant, fParms);
    assign(record.toLight, fToLight);
    return true;
}

ParmList PointLight::parameters()
{
    return {{kQIntensity, &fParms.intensity}, {kQColor, &fParms.color}, {kQFrom, &fParms.from}};
}

void PointLight::instance(const ArgList& args)
{
    Light::instance(args);
    fParms.from *= toCamera();
}

float PointLight::illuminates(const Point& P, const Point& N, float angle, long,
                              LightSample& sample) const
{
    return illuminate(P, N, angle, fParms.from, gOrigin, kPi, sample);
}

void PointLight::evaluate(LightSample& sample) const
{
    sample.Cl = (fParms.intensity * fParms.color) / dot(sample.L, sample.L);
}

bool PointLight::describe(LightRecord& record) const
{
    record = recordOf(LightRecord::kOmni, fParms);
    return true;
}

SpotLight SpotLight::inDegrees()
{
    SpotParms parms;
    parms.coneangle = 30;
    parms.conedeltaangle = 5;
    return SpotLight(parms);
}

ParmList SpotLight::parameters()
{
    return {{kQIntensity, &fParms.intensity},
            {kQColor, &fParms.color},
            {kQFrom, &fParms.from},
            {kQTo, &fParms.to},
            {kQConeAngle, &fParms.coneangle},
            {kQConeDeltaAngle, &fParms.conedeltaangle},
            {kQBeamDistribution, &fParms.beamdistribution}};
}

void SpotLight::instance(const ArgList& args)
{
    Light::instance(args);
    fAxis = normalize(scaled(aim(fParms, toCamera())));
    fParms.coneangle = static_cast<float>(kDegrees * fParms.coneangle);
    fParms.conedeltaangle = static_cast<float>(kDegrees * fParms.conedeltaangle);
    fCosOutside = cosineOf(fParms.coneangle);
    fCosInside = cosineOf(fParms.coneangle - fParms.conedeltaangle);
}

float SpotLight::illuminates(const Point& P, const Point& N, float angle, long,
                             LightSample& sample) const
{
    return illuminate(P, N, angle, fParms.from, fAxis, fParms.coneangle, sample);
}

void SpotLight::evaluate(LightSample& sample) const
{
    const Point L = scaled(sample.L);
    const float d = dot(L, fAxis) / length(L);
    const float falloff = power(d, fParms.beamdistribution) / dot(sample.L, sample.L);
    const float a = falloff * smoothstep(fCosOutside, fCosInside, d);
    sample.Cl = (a * fParms.intensity) * fParms.color;
}

bool SpotLight::describe(LightRecord& record) const
{
    record = recordOf(LightRecord::kSpot, fParms);
    assign(record.axis, fAxis);
    assign(record.cone, normalize(scaled(fAxis)));
    constexpr float kEverywhere = -std::numeric_limits<float>::infinity();
    record.coscone = fParms.coneangle < kPi ? cosineOf(fParms.coneangle) : kEverywhere;
    std::tie(record.edge[0], record.edge[1]) = std::minmax(fCosOutside, fCosInside);
    record.beamdistribution = fParms.beamdistribution;
    return true;
}

std::shared_ptr<Light> upcall::makeLight(std::shared_ptr<const HostShader> shader)
{
    return std::make_shared<HostLight>(std::move(shader));
}

float HostLight::illuminates(const Point&, const Point& N, float angle, long,
                             LightSample& sample) const
{
    if (!sample.row) return 0;
    const auto& [x, y, z] = sample.row->planes(*this).L;
    const std::size_t k = sample.point;
    sample.L = Point(x[k], y[k], z[k]);
    const Point toLight = -normalize(scaled(sample.L));
    return angle >= kPi || dot(normalize(N), toLight) >= coneCosine(angle) ? 1.0f : 0.0f;
}

void HostLight::evaluate(LightSample& sample) const
{
    if (!sample.row) return;
    const RowLights::Planes& planes = sample.row->planes(*this);
    const std::size_t k = sample.point;
    sample.Cl = Color(planes.Cl[0][k], planes.Cl[1][k], planes.Cl[2][k]);
    sample.Ol = Color(planes.Ol[0][k], planes.Ol[1][k], planes.Ol[2][k]);
}

}  // namespace zeb
