// Light sources.
#pragma once

#include "math/color.h"
#include "shade/shader.h"
#include "shade/shading_kernel.h"
#include "util/number.h"
#include "util/random.h"

namespace zeb
{

class Light;

// What lights of the host's send to the points of a row.
class RowLights
{
public:
    virtual ~RowLights() = default;
    struct Planes {
        float *L[3], *Cl[3], *Ol[3];
    };
    virtual const Planes& planes(const Light& light) const = 0;
};

// What a light finds out about one surface point.
struct LightSample {
    Point L;  // from the light to the point
    Color Cl = gBlack, Ol = gWhite;
    Random random{1};  // for lights that are sampled
    // Where the point is one of a row, and which.
    const RowLights* row = nullptr;
    std::size_t point = 0;
};

class Light : public Shader
{
public:
    virtual bool isambient() const { return false; }
    // Which part of the light reaches a point whose surface takes light from a cone about N, of the
    // half-angle given in radians; 0 ... 1. Sets L. n is how many samples to take at least.
    virtual float illuminates(const Point& P, const Point& N, float angle, long n,
                              LightSample& sample) const;
    // Sets Cl from L.
    virtual void evaluate(LightSample& sample) const;
    // For the kernels; false of a light that they do not know.
    virtual bool describe(LightRecord&) const { return false; }

    static void defaultOutputs(LightSample& sample)
    {
        sample.Cl = gBlack;
        sample.Ol = gWhite;
    }
    // A light at Pl that shines along axis, within lightangle of it: 1 or 0.
    static float illuminate(const Point& Ps, const Point& N, float angle, const Point& Pl,
                            const Point& axis, float lightangle, LightSample& sample);
    // A light at infinity that shines along axis with a spread: the fraction that arrives.
    static float solar(const Point& Ps, const Point& N, float angle, const Point& axis,
                       float lightangle, long n, LightSample& sample);
};

struct LightParms {
    float intensity = 1;
    Color color = gWhite;
    Point from{0, 0, 0};
    Point to{0, 0, 1};
};

class AmbientLight : public Light
{
public:
    explicit AmbientLight(const LightParms& parms = {}) : fParms(parms) {}
    ParmList parameters() override;
    bool isambient() const override { return true; }
    void evaluate(LightSample& sample) const override;
    bool describe(LightRecord& record) const override;

private:
    LightParms fParms;
};

class DistantLight : public Light
{
public:
    explicit DistantLight(const LightParms& parms = {}) : fParms(parms)
    {
        setAxis(parms.to - parms.from);
    }
    ParmList parameters() override;
    void instance(const ArgList& args) override;
    float illuminates(const Point& P, const Point& N, float angle, long n,
                      LightSample& sample) const override;
    void evaluate(LightSample& sample) const override;
    bool describe(LightRecord& record) const override;

private:
    void setAxis(const Point& axis);

    LightParms fParms;
    Point fAxis;     // the way light travels
    Point fToLight;  // the other way, of length 1
};

class PointLight : public Light
{
public:
    explicit PointLight(const LightParms& parms = {}) : fParms(parms) {}
    ParmList parameters() override;
    void instance(const ArgList& args) override;
    float illuminates(const Point& P, const Point& N, float angle, long n,
                      LightSample& sample) const override;
    void evaluate(LightSample& sample) const override;
    bool describe(LightRecord& record) const override;

private:
    LightParms fParms;
};

struct SpotParms : LightParms {
    // Already radians, though instance() takes degrees: a cone left unset comes out 30 degrees
    // times pi / 180, which hosts have tuned their scenes to.
    float coneangle = static_cast<float>(30 * kDegrees);
    float conedeltaangle = static_cast<float>(5 * kDegrees);
    float beamdistribution = 2;
};

class SpotLight : public Light
{
public:
    explicit SpotLight(const SpotParms& parms = {}) : fParms(parms) {}
    // With an unset cone of 30 and 5 degrees.
    static SpotLight inDegrees();
    ParmList parameters() override;
    void instance(const ArgList& args) override;
    float illuminates(const Point& P, const Point& N, float angle, long n,
                      LightSample& sample) const override;
    void evaluate(LightSample& sample) const override;
    bool describe(LightRecord& record) const override;

    float cosoutside() const { return fCosOutside; }
    float cosinside() const { return fCosInside; }

private:
    SpotParms fParms;
    Point fAxis;
    float fCosOutside = 0, fCosInside = 0;
};

// Shines as a function of the host's says: reaches the points of rows alone.
class HostLight : public Light
{
public:
    explicit HostLight(std::shared_ptr<const HostShader> shader) : fShader(std::move(shader)) {}
    bool isambient() const override { return fShader->isAmbient(); }
    float illuminates(const Point& P, const Point& N, float angle, long n,
                      LightSample& sample) const override;
    void evaluate(LightSample& sample) const override;
    const HostShader* host() const override { return fShader.get(); }

private:
    std::shared_ptr<const HostShader> fShader;
};

}  // namespace zeb
