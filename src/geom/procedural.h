// Geometry that the host builds when it is needed.
#pragma once

#include "geom/primitive.h"

namespace zeb
{

using SubdivideFunction = void (*)(void* data, float detail);
using FreeFunction = void (*)(void* data);

class Procedural : public Primitive
{
public:
    // The host's data: released exactly once, when the last procedural that shares it is gone.
    class Data
    {
    public:
        Data(void* data, FreeFunction release) : fData(data), fFree(release) {}
        ~Data();
        Data(const Data&) = delete;
        Data& operator=(const Data&) = delete;
        void* get() const { return fData; }

    private:
        void* fData;
        FreeFunction fFree;
    };

    Procedural(std::shared_ptr<Data> data, const float* bound, SubdivideFunction subdivide);
    Procedural(const Procedural& other) = default;

    unsigned short type() const override { return kProcedural; }
    bool callsHost() const override { return true; }
    Boundw bound() const override;
    bool diceable(Dicing&, float) const override { return false; }
    // Calls the host, under the attributes and transformation of this primitive. What it builds
    // reaches the scene through the interface.
    void split(PrimitiveSink& sink) override;
    std::unique_ptr<Primitive> copy(bool) const override;

    // The area of the bound in pixels; 1e38 if it reaches behind the eye.
    float detail() const;

private:
    std::shared_ptr<Data> fData;
    SubdivideFunction fSubdivide;
    Boundw fBound;
};

}  // namespace zeb
