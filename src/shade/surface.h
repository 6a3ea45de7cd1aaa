// Surface shaders.
#pragma once

#include "math/color.h"
#include "shade/light.h"
#include "shade/shader.h"
#include "shade/shading_kernel.h"
#include "util/list.h"

namespace zeb
{

// What a surface shader knows of the point it shades, in camera space, and what it finds out.
struct SurfacePoint {
    Point P, dPdu, dPdv;
    Point N;   // shading normal
    Point Ng;  // geometric normal
    Point E;   // the eye
    float u = 0, v = 0, s = 0, t = 0;
    Color Cs = gWhite, Os = gWhite;
    Point I;  // from the eye to P
    // The light being gathered; L points from the surface.
    Point L;
    Color Cl, Ol;
    // The results.
    Color Ci = gBlack, Oi = gWhite;

    const List<std::shared_ptr<Light>>* lights = nullptr;
    // Where the point is one of a row that lights of the host's shine on, and which.
    const RowLights* row = nullptr;
    std::size_t number = 0;
};

// Walks the lights that reach a point, but for the ambient ones: each step sets L, Cl and Ol.
class Illuminance
{
public:
    // Light from everywhere.
    Illuminance(SurfacePoint& surface, const Point& P, long n = 0)
        : Illuminance(surface, P, gOrigin, kPi, n)
    {
    }
    // Light from a cone about an axis.
    Illuminance(SurfacePoint& surface, const Point& P, const Point& axis, float angle, long n);
    bool operator++();

private:
    SurfacePoint& fSurface;
    List<std::shared_ptr<Light>>::Cursor<const std::shared_ptr<Light>,
                                         const List<std::shared_ptr<Light>>::Node*>
        fNext;
    Point fPoint, fAxis;
    float fAngle;
    long fSamples;
};

class Surface : public Shader
{
public:
    // Sets Ci and Oi.
    virtual void evaluate(SurfacePoint& point) const = 0;
    virtual std::unique_ptr<Surface> clone() const = 0;
    // For the kernels, which shade many points at once to the bits that evaluate() gives; false of
    // a surface that they do not know.
    virtual bool describe(SurfaceRecord&) const { return false; }

    // What the lights give at a point.
    static Color ambient(const SurfacePoint& point);
    static Color diffuse(SurfacePoint& point, const Point& N);
    // V is normalized in place. The exponent is 1 / roughness (J. Blinn, 1977, about the halfway
    // vector).
    static Color specular(SurfacePoint& point, const Point& N, Point& V, float roughness);
    // About the mirror direction (B. T. Phong, 1975).
    static Color phong(SurfacePoint& point, const Point& N, const Point& V, float size);
    // There is no ray tracing.
    static Color trace(const Point&, const Point&) { return gBlack; }
};

class ConstantSurface : public Surface
{
public:
    void evaluate(SurfacePoint& point) const override;
    std::unique_ptr<Surface> clone() const override;
    bool describe(SurfaceRecord& record) const override;
};

class MatteSurface : public Surface
{
public:
    float ka = 1, kd = 1;

    ParmList parameters() override;
    void evaluate(SurfacePoint& point) const override;
    std::unique_ptr<Surface> clone() const override;
    bool describe(SurfaceRecord& record) const override;
};

class MetalSurface : public Surface
{
public:
    float ka = 1, ks = 1, roughness = 0.1f;

    ParmList parameters() override;
    void evaluate(SurfacePoint& point) const override;
    std::unique_ptr<Surface> clone() const override;
    bool describe(SurfaceRecord& record) const override;
};

class PlasticSurface : public Surface
{
public:
    float ka = 1, kd = 0.5f, ks = 0.5f, roughness = 0.1f;
    Color specularcolor = gWhite;

    ParmList parameters() override;
    void evaluate(SurfacePoint& point) const override;
    std::unique_ptr<Surface> clone() const override;
    bool describe(SurfaceRecord& record) const override;
};

// A function of the host's, which shades rows of points instead.
class HostSurface : public Surface
{
public:
    explicit HostSurface(std::shared_ptr<const HostShader> shader) : fShader(std::move(shader)) {}
    void evaluate(SurfacePoint& point) const override;
    std::unique_ptr<Surface> clone() const override;
    const HostShader* host() const override { return fShader.get(); }

private:
    std::shared_ptr<const HostShader> fShader;
};

}  // namespace zeb
