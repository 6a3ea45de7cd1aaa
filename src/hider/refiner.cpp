#include "hider/refiner.h"

#include <algorithm>

#include "hider/seams.h"
#include "state/error.h"
#include "util/number.h"

namespace zeb
{

namespace
{

// Micropolygons along the sides of a grid that can't be made as fine as it should be.
constexpr unsigned short kCoarse = 8;

// How much larger than others grids are that have to end splitting.
constexpr float kLarge = 4;

bool isFiniteBound(const Boundw& b)
{
    return isFinite(b.xmin) && isFinite(b.xmax) && isFinite(b.ymin) && isFinite(b.ymax) &&
           isFinite(b.zmin) && isFinite(b.zmax) && isFinite(b.wmin) && isFinite(b.wmax);
}

// In pixels: how far from it a primitive still has a part in the picture. Its pieces reach as far
// beyond themselves, and adaptive sampling looks at whole pixels.
float roomAround(const Primitive& primitive)
{
    // Of what the host will make nothing is known yet.
    constexpr float kRoomOfOthers = 16;
    const float room = Piece::kRoom + Seams::reach(primitive.attrib()) + 1;
    return primitive.callsHost() ? std::max(room, kRoomOfOthers) : room;
}

}  // namespace

Sight Refiner::sight(const Primitive& primitive, const Boundw& camera) const
{
    const Boundw box = primitive.displaced(camera);
    if (fLayout.holds(box)) return Sight::kAll;
    return fLayout.culled(box, roomAround(primitive)) ? Sight::kNone : Sight::kSome;
}

void Refiner::add(std::unique_ptr<Primitive> primitive)
{
    const float displacement = primitive->displacement();
    const Boundw hull = primitive->hull();
    const Boundw camera = displacement > 0 ? primitive->displaced(hull) : hull;
    if (fLayout.culled(camera, roomAround(*primitive))) return;
    if (displacement > 0 && isBehind(*primitive, hull)) return;
    const Boundw raster = camera * fLayout.frame().cameraToRaster;
    if (!isFiniteBound(raster)) {
        giveUp(*primitive);
        return;
    }
    const BucketPlace place = fLayout.file(*primitive, camera, raster, fBucket);
    if (fLayout.isBeyond(place)) return;
    if (displacement > 0) makeCoarse(*primitive, hull);
    fFilingTo.file(std::move(primitive), place);
}

// Of what a function of the host's will move: whether it lies behind the eye, or as near its plane
// as makes no difference.
bool Refiner::isBehind(const Primitive& primitive, const Boundw& hull) const
{
    constexpr float kNear = 1e-3f;
    const bool perspective = fLayout.frame().option.perspective;
    const float most = (hull * fLayout.frame().cameraToRaster).wmax;
    return most <= (perspective ? kNear * primitive.displacement() : 0);
}

// Beside the picture, near the eye, micropolygons would be as many as large ones on the screen:
// what is moved into sight from there has come farther away.
void Refiner::makeCoarse(Primitive& primitive, const Boundw& hull) const
{
    if (!fLayout.frame().option.perspective || !fLayout.culled(hull, roomAround(primitive))) return;
    const float least = (hull * fLayout.frame().cameraToRaster).wmin;
    primitive.setCoarseness(std::max(primitive.displacement() / std::max(least, 1e-30f), 1.0f));
}

void Refiner::dice(std::unique_ptr<Primitive> primitive, Dicing dicing)
{
    const BucketPlace last{primitive->lastBucketX(), primitive->lastBucketY()};
    const bool bounded = primitive->attrib().objectBound.finite;
    // A function that is called in order waits until something of it may be seen.
    const HostShader* const displacement = primitive->attrib().displacementShader.get();
    const bool waits = displacement && displacement->kind() == HostShading::kInOrder;
    if (primitive->displacement() > 0) primitive->halveSteps(dicing);
    auto piece = std::allocate_shared<Piece>(PoolAllocator<Piece>(), std::move(primitive), dicing);
    ++fCounts.pieces;
    // What the host says of an object's size may be wrong: only the grid tells where it is. And
    // boxes much larger than the surface would be filed under many buckets for nothing.
    const bool settles = fLayout.frame().plain || bounded || piece->isLoose();
    if (settles && !waits) piece->settle(fCounts);
    const BucketRange range = fLayout.range(*piece, fBucket, last);
    fFilingTo.file(std::move(piece), range);
}

void Refiner::refine(std::unique_ptr<Primitive>& primitive)
{
    const Attrib& attrib = primitive->attrib();
    // A host that is called may give other attributes to what it has made.
    const bool callsHost = primitive->type() == kProcedural;
    const auto kept = callsHost ? primitive->common().fAttrib : nullptr;
    const AttribNamesScope names(attrib.object.text(), attrib.group.text());
    Dicing dicing{fLayout.frame(), 1, 1};
    if (primitive->front() && primitive->diceable(dicing)) {
        dice(std::move(primitive), dicing);
    } else if (!primitive->canSplit()) {
        giveUp(*primitive);
    } else if (fFilingTo.maySplit(*primitive)) {
        if (primitive->hasChordForSide(fLayout.frame())) {
            primitive->splitAcross(*this, fLayout.frame());  // the longer ones
        } else {
            primitive->split(*this);
        }
    } else {
        finish(primitive);
    }
}

// Of a surface that has taken many splits. At the edge of a very wide view or near a pole these
// leave slivers: how even their grids are matters no more, and they are split across.
void Refiner::finish(std::unique_ptr<Primitive>& primitive)
{
    const RenderFrame& frame = fLayout.frame();
    Dicing dicing{frame, 1, 1, false};
    const float size = kLarge * primitive->dicingLimit(frame, -1);
    if (!primitive->keepsRest()) {
        giveUp(*primitive);
    } else if (primitive->front() && primitive->diceable(dicing, size)) {
        dice(std::move(primitive), dicing);
    } else if (primitive->mayStillSplitAcross()) {
        if (primitive->front()) {
            primitive->splitAcross(*this, frame);
        } else {
            primitive->split(*this);
        }
    } else {
        giveUp(*primitive);
        if (primitive->front()) dice(std::move(primitive), Dicing{frame, kCoarse, kCoarse});
    }
}

}  // namespace zeb
