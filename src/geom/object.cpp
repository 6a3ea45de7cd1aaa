#include "geom/object.h"

#include "state/upcalls.h"
#include "util/report.h"

namespace zeb
{

std::shared_ptr<Object> upcall::makeObject() { return std::make_shared<Object>(); }

Object::Object(const Object& source, bool quirks) : Primitive(source), fType(source.fType)
{
    const std::uint32_t seq = PrimitiveCommon::fCurSeq++;
    if (!quirks) {
        fCommon = std::make_shared<PrimitiveCommon>();
        PrimitiveCommon::fCurSeq = seq + 1;
    }
    fCommon->inherit(seq);
    for (const auto& member : source.fMembers) {
        std::unique_ptr<Primitive> copy = member->copy(quirks);
        if (quirks) {
            member->common().inherit(seq);
        } else {
            copy->detachCommon(fCommon);
        }
        fMembers.add(std::move(copy));
    }
}

void Object::add(std::unique_ptr<Primitive> member)
{
    if (fType == kNoType) fType = member->type();
    if (member->type() != fType) {
        error(kInconsistent, kError, "all object primitives must be of the same type");
        return;
    }
    fMembers.add(std::move(member));
}

// The box of zebBound is Euclidean: it says nothing about a rational member whose bound can't be
// divided, nor about what holds such a member.
Boundw Object::bound() const
{
    Boundw box = Boundw::empty();
    bool divided = true;
    for (const auto& member : fMembers) {
        const Boundw part = member->bound();
        divided = divided && (!member->rational() || (part.wmin == 1 && part.wmax == 1));
        box.add(part);
    }
    if (divided) clipToBound(box);
    return box;
}

void Object::split(PrimitiveSink& sink)
{
    while (!fMembers.empty()) sink.add(fMembers.takeHead());
}

}  // namespace zeb
