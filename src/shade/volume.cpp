#include "shade/volume.h"

#include <cmath>

#include "state/quark.h"
#include "state/upcalls.h"
#include "util/number.h"

namespace zeb
{

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
    const float difference = yon - hither;
    const float range = nearZero(difference) ? 1 : difference;
    float t = (depth(point.P) - hither) / range;
    if (t < 0) t = 0;
    if (t > 1) t = 1;
    point.Ci = lerp(t, point.Ci, point.cover * color);
}

ParmList FogVolume::parameters() { return {{kQDistance, &distance}, {kQColor, &color}}; }

void FogVolume::evaluate(VolumePoint& point) const
{
    const float d = nearZero(distance) ? 1 : distance;
    const float t = 1 - std::exp(-length(point.I) / d);
    point.Ci = lerp(t, point.Ci, point.cover * color);
}

}  // namespace zeb
