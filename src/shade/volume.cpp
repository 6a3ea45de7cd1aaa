#include "shade/volume.h"

#include "math/shading_math.h"
#include "state/quark.h"
#include "state/upcalls.h"
#include "util/number.h"

namespace zeb
{

namespace
{

// What a length that is nothing counts as.
float orOne(float divisor) { return nearZero(double{divisor}) ? 1 : divisor; }

VolumeRecord recordOf(VolumeRecord::Kind kind, const Color& color)
{
    VolumeRecord record;
    record.kind = kind;
    record.color[0] = color.r;
    record.color[1] = color.g;
    record.color[2] = color.b;
    return record;
}

}  // namespace

std::shared_ptr<Volume> upcall::makeVolume(unsigned short name,
                                           std::shared_ptr<const Transform> transform,
                                           const ArgList& args)
{
    std::shared_ptr<Volume> volume;
    if (name == kQDepthCue) volume = std::make_shared<DepthCueVolume>();
    if (name == kQFog) volume = std::make_shared<FogVolume>();
    if (!volume) return nullptr;
    volume->declare(name, std::move(transform));
    volume->instance(args);
    return volume;
}

ParmList DepthCueVolume::parameters()
{
    return {{kQHither, &hither}, {kQYon, &yon}, {kQColor, &color}};
}

void DepthCueVolume::evaluate(VolumePoint& point) const
{
    float t = (depth(point.P) - hither) / orOne(yon - hither);
    if (t < 0) t = 0;
    if (t > 1) t = 1;
    point.Ci = lerp(t, point.Ci, point.cover * color);
}

bool DepthCueVolume::describe(VolumeRecord& record) const
{
    record = recordOf(VolumeRecord::kDepthCue, color);
    record.hither = hither;
    record.range = orOne(yon - hither);
    return true;
}

ParmList FogVolume::parameters() { return {{kQDistance, &distance}, {kQColor, &color}}; }

void FogVolume::evaluate(VolumePoint& point) const
{
    const float t = 1 - exponential(-length(point.I) / orOne(distance));
    point.Ci = lerp(t, point.Ci, point.cover * color);
}

bool FogVolume::describe(VolumeRecord& record) const
{
    record = recordOf(VolumeRecord::kFog, color);
    record.distance = orOne(distance);
    return true;
}

std::shared_ptr<Volume> upcall::makeVolume(std::shared_ptr<const HostShader> shader)
{
    return std::make_shared<HostVolume>(std::move(shader));
}

}  // namespace zeb
