// Retained geometry and its instances.
#pragma once

#include "geom/primitive.h"
#include "util/list.h"

namespace zeb
{

class Object : public Primitive
{
public:
    Object() = default;
    // An instance: copies of the source's members under the records in force.
    //
    // As long as quirks are kept, copies share the common record of what they are copied from, and
    // taking over the records in force rewrites them for the object and all its instances: the
    // last call decides for all.
    Object(const Object& source, bool quirks);

    unsigned short type() const override { return kObject; }
    bool callsHost() const override { return fType == kProcedural; }
    // All members are of one kind; a member of another is reported, and dropped.
    void add(std::unique_ptr<Primitive> member);
    Boundw bound() const override;
    bool diceable(Dicing&, float) const override { return false; }
    void split(PrimitiveSink& sink) override;

    const List<std::unique_ptr<Primitive>>& members() const { return fMembers; }

private:
    unsigned short fType = kNoType;
    List<std::unique_ptr<Primitive>> fMembers;
};

}  // namespace zeb
