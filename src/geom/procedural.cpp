#include "geom/procedural.h"

#include "math/spaces.h"
#include "state/callback.h"
#include "state/error.h"
#include "state/state.h"

namespace zeb
{

namespace
{

// No interface function is under way while the host's own code runs.
class HostCode
{
public:
    HostCode() : fName(setErrorFuncName(nullptr)) {}
    ~HostCode() { setErrorFuncName(fName); }

private:
    CallbackScope fScope;
    const char* fName;
};

}  // namespace

Procedural::Data::~Data()
{
    if (!fFree) return;
    HostCode host;
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
    State::ProceduralScope scope(*gState, attrib(), transform());
    {
        HostCode host;
        fSubdivide(fData->get(), detail());
    }
    fData.reset();
}

std::unique_ptr<Primitive> Procedural::copy(bool) const
{
    return std::make_unique<Procedural>(*this);
}

}  // namespace zeb
