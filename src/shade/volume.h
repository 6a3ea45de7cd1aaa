// Atmospheres.
#pragma once

#include "math/color.h"
#include "shade/shader.h"
#include "shade/shading_kernel.h"

namespace zeb
{

// A point seen through the atmosphere, in camera space: I runs from the eye to P. The atmosphere
// takes the place of the surface as far as that is there: its own colour is multiplied by the
// cover.
struct VolumePoint {
    Point P, I;
    Color Ci, Oi;
    Color cover = gWhite;
};

class Volume : public Shader
{
public:
    // Attenuates Ci; Oi stays.
    virtual void evaluate(VolumePoint& point) const = 0;
    // For the kernels; false of an atmosphere that they do not know.
    virtual bool describe(VolumeRecord&) const { return false; }
};

// Linear in camera z between two planes.
class DepthCueVolume : public Volume
{
public:
    float hither = 0, yon = 1;
    Color color = gBlack;

    ParmList parameters() override;
    void evaluate(VolumePoint& point) const override;
    bool describe(VolumeRecord& record) const override;
};

// Exponential in the distance from the eye. A negative distance brightens instead.
class FogVolume : public Volume
{
public:
    float distance = 1;
    Color color = gBlack;

    ParmList parameters() override;
    void evaluate(VolumePoint& point) const override;
    bool describe(VolumeRecord& record) const override;
};

// A function of the host's, which changes the colours of rows of points instead.
class HostVolume : public Volume
{
public:
    explicit HostVolume(std::shared_ptr<const HostShader> shader) : fShader(std::move(shader)) {}
    void evaluate(VolumePoint&) const override {}
    const HostShader* host() const override { return fShader.get(); }

private:
    std::shared_ptr<const HostShader> fShader;
};

}  // namespace zeb
