// Rectangular meshes of bilinear or bicubic patches.
#pragma once

#include "geom/patch.h"

namespace zeb
{

class PatchMesh final : public Patch
{
public:
    // Whether the arguments make a mesh, of one patch at least, under the attributes in force.
    static bool verify(short type, long nu, short uwrap, long nv, short vwrap, long n,
                       const unsigned short* tokens, void* const* values);
    PatchMesh(short type, long nu, short uwrap, long nv, short vwrap, long n,
              const unsigned short* tokens, void* const* values);
    PatchMesh(const PatchMesh& other);
    // A part of the parent.
    PatchMesh(const PatchMesh& parent, const Quadrant& part);

    unsigned short type() const override { return kPatchMesh; }
    Boundw bound() const override { return hull(); }
    bool diceable(Dicing&, float) const override { return false; }
    void split(PrimitiveSink& sink) override;
    Pointwd pointAt(float u, float v) const override;
    Pointw evalP(float u, float v) const override { return rounded(pointAt(u, v)); }
    std::unique_ptr<Primitive> copy(bool) const override
    {
        return std::make_unique<PatchMesh>(*this);
    }

private:
    struct Net;
    struct Layout;
    // Patches from, to in u and in v.
    struct Range {
        long u0, u1, v0, v1;
    };

    const Layout& layout() const;
    Range range() const;
    void addHull(Boundw& box) const override;

    std::shared_ptr<const Net> fNet;
    // Depends on the bases, which an instance of an object takes from where it is called.
    mutable std::shared_ptr<const Layout> fLayout;
    bool fWhole = true;
    Range fRange{};  // of a part
};

}  // namespace zeb
