#include "geom/procedural.h"

#include "math/spaces.h"
#include "state/callback.h"
#include "state/state.h"

namespace zeb
{

Procedural::Data::~Data()
{
    if (!fFree) return;
    const CallbackScope scope;
    fFree(fData);
}

Procedural::Procedural(std::shared_ptr<Data> data, const float* bound, SubdivideFunction subdivide)
    : fData(std::move(data)), fSubdivide(subdivide), fBound(Bound(bound), 1, 1)
{
    const Bound& box = attrib().objectBound;
    if (box.finite) fBound.intersect(Boundw(box, 1, 1));
}

Boundw Procedural::bound() const { return fBound * matrix(); }

float Procedural::detail() const
{
    Boundw box = bound() * gCameraToRaster;
    if (!(box.wmin >= kEpsilon)) return kInfinity;
    box.homogenize();
    return (box.xmax - box.xmin) * (box.ymax - box.ymin);
}

void Procedural::split(PrimitiveSink&)
{
    const State::ProceduralScope world(*gState, attrib(), transform());
    const float size = detail();
    {
        const CallbackScope scope;
        const SeedScope seeds(seed());
        fSubdivide(fData->get(), size);
    }
    fData.reset();
}

std::unique_ptr<Primitive> Procedural::copy(bool) const
{
    return std::make_unique<Procedural>(*this);
}

}  // namespace zeb
