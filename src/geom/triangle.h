// The one polygon that dices.
#pragma once

#include "geom/polygon.h"

namespace zeb
{

// u runs from the first corner to the second, v from the first to the third; u + v <= 1.
class Triangle : public Polygon
{
public:
    // Three vertices of a parent's face.
    Triangle(const Polygon& parent, std::uint32_t face, const long* indices);
    // The corners at three (u, v) pairs of a parent, and the lines between them.
    Triangle(const Triangle& parent, std::uint32_t child, const float (&uv)[6], const Edges& edges);

    Point vertex(long i) const override { return rounded(fCorners[i]); }
    long nVertices() const override { return 3; }

    Boundw bound() const override;
    bool diceable(Dicing& dicing, float maxSize = -1) const override;
    std::unique_ptr<Grid> dice(const Dicing& dicing) const override;
    void split(PrimitiveSink& sink) override;
    void splitAcross(PrimitiveSink& sink, const RenderFrame& frame) override;
    SurfacePart surfacePart() const override;
    bool isTriangle() const override { return true; }
    Pointwd pointAt(float u, float v) const override { return at(u, v); }
    Pointw evalP(float u, float v) const override { return rounded(at(u, v)); }
    Pointw evaldPdu(float, float) const override { return rounded(fCorners[1] - fCorners[0]); }
    Pointw evaldPdv(float, float) const override { return rounded(fCorners[2] - fCorners[0]); }

private:
    Pointd at(double u, double v) const;
    bool knowSteps(Dicing& dicing, float maxSize, const Pointwd& origin, const Pointwd& du,
                   const Pointwd& dv) const;

    Pointd fCorners[3];
};

// Brings two step counts to a ratio that is a power of two, so that the rows of a triangular grid
// come out whole; limit is the largest power tried.
void balanceSteps(unsigned short& usteps, unsigned short& vsteps, long limit);

}  // namespace zeb
