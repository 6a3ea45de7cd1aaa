// Single patches.
#pragma once

#include <vector>

#include "geom/control_values.h"
#include "geom/power_form.h"
#include "geom/primitive.h"
#include "util/number.h"

namespace zeb
{

// What all patches have in common; by itself it has no extent.
class Patch : public Primitive
{
public:
    Patch(const Patch& other) = default;
    unsigned short type() const override { return kPatch; }
    // Samples of the surface with room around them, and its hull.
    Boundw bound() const override;
    virtual void boundPoint(Boundw& box, float u, float v) const;
    Boundw hull() const override;
    std::unique_ptr<Primitive> copy(bool quirks) const override;

    // Whether a mesh wraps round in a direction.
    enum Wrap : short { kPeriodic = 0xA00, kNonperiodic = 0xA01 };
    enum Kind : short { kBilinear = 0x700, kBicubic = 0x701 };
    // More control points than this are taken for a mistake.
    static constexpr long kMaxPoints = 1L << 27;

protected:
    Patch() = default;
    Patch(const Patch& parent, std::uint32_t child, bool halved) : Primitive(parent, child, halved)
    {
    }

    // Adds a box that the surface lies in, in camera space.
    virtual void addHull(Boundw&) const {}
    // Before a surface of the host's splits: looks for sides that lie on each other.
    void findSeams();
};

// A polynomial piece: its points, and its colours if it has any of its own.
struct PieceForms {
    PowerForm points;
    std::shared_ptr<const ControlForms> colors;
};

// One polynomial piece, or a part of it. All parts share the coefficients and evaluate them at the
// parameters of the whole: they agree on common edges to the last bit.
class PolynomialPatch : public Patch
{
public:
    void split(PrimitiveSink& sink) override;
    void splitAcross(PrimitiveSink& sink, const RenderFrame& frame) override
    {
        addHalves(sink, frame);
    }
    std::unique_ptr<Grid> dice(const Dicing& dicing) const override;
    bool hasOpacities() const override
    {
        form();
        return Patch::hasOpacities() || colors().hasOpacity();
    }
    Differential evaluate(float u, float v) const override;
    Pointwd pointAt(float u, float v) const override;
    Pointw evalP(float u, float v) const override { return rounded(pointAt(u, v)); }
    Pointw evaldPdu(float u, float v) const override { return rounded(evaluate(u, v).dPdu); }
    Pointw evaldPdv(float u, float v) const override { return rounded(evaluate(u, v).dPdv); }

protected:
    PolynomialPatch() = default;
    PolynomialPatch(const PolynomialPatch& other);
    // A piece of a mesh, over a rectangle (u and v from, to) of the mesh's parameters.
    PolynomialPatch(const Patch& mesh, std::uint32_t child, PieceForms forms,
                    const float (&range)[4]);
    // A part of the parent, given in its parameters.
    PolynomialPatch(float umin, float umax, float vmin, float vmax, const PolynomialPatch& parent,
                    std::uint32_t child);

    virtual const std::shared_ptr<const PowerForm>& form() const { return fForm; }
    // The coefficients of this part alone.
    PowerForm ownForm() const { return form()->part(fUmin, fUmax, fVmin, fVmax); }
    void addHull(Boundw& box) const override;
    PieceValues colors() const { return {fColors, fUmin, fUmax, fVmin, fVmax}; }

    mutable std::shared_ptr<const PowerForm> fForm;
    mutable std::shared_ptr<const ControlForms> fColors;

private:
    // Exact at both ends, where pieces meet.
    double uAt(double u) const { return (1 - u) * fUmin + u * fUmax; }
    double vAt(double v) const { return (1 - v) * fVmin + v * fVmax; }

    double fUmin = 0, fUmax = 1, fVmin = 0, fVmax = 1;
};

// Corners in the order (0, 0), (1, 0), (0, 1), (1, 1) of (u, v).
class BilinearPatch final : public PolynomialPatch
{
public:
    static bool verify(long n, const unsigned short* tokens, void* const* values);
    BilinearPatch(long n, const unsigned short* tokens, void* const* values);
    BilinearPatch(const Patch& mesh, std::uint32_t child, PieceForms forms, const float (&range)[4])
        : PolynomialPatch(mesh, child, std::move(forms), range)
    {
    }
    BilinearPatch(const BilinearPatch& other) = default;
    BilinearPatch(float umin, float umax, float vmin, float vmax, const BilinearPatch& parent,
                  std::uint32_t child)
        : PolynomialPatch(umin, umax, vmin, vmax, parent, child)
    {
    }

    // Of the corners: there is no need to sample what they hold.
    Boundw bound() const override { return hull(); }
    std::unique_ptr<Primitive> copy(bool quirks) const override;

    static PowerForm powerForm(const Point* corners);

protected:
    std::unique_ptr<Primitive> part(float umin, float umax, float vmin, float vmax,
                                    std::uint32_t child) const override
    {
        return std::make_unique<BilinearPatch>(umin, umax, vmin, vmax, *this, child);
    }
};

// Sixteen control points, u running fastest, in the bases of the attributes. An instance of an
// object takes new attributes, and these bases with them.
class BicubicPatch final : public PolynomialPatch
{
public:
    static bool verify(long n, const unsigned short* tokens, void* const* values);
    BicubicPatch(long n, const unsigned short* tokens, void* const* values);
    BicubicPatch(const Patch& mesh, std::uint32_t child, PieceForms forms, const float (&range)[4])
        : PolynomialPatch(mesh, child, std::move(forms), range)
    {
    }
    BicubicPatch(const BicubicPatch& other) = default;
    BicubicPatch(float umin, float umax, float vmin, float vmax, const BicubicPatch& parent,
                 std::uint32_t child)
        : PolynomialPatch(umin, umax, vmin, vmax, parent, child)
    {
    }

    bool diceable(Dicing& dicing, float maxSize = -1) const override;
    // By forward differences; the rows of the grid run along v.
    std::unique_ptr<Grid> dice(const Dicing& dicing) const override;
    std::unique_ptr<Primitive> copy(bool quirks) const override;

    static PowerForm powerForm(const Point* points, const Matrix& ubasis, const Matrix& vbasis);

protected:
    const std::shared_ptr<const PowerForm>& form() const override;
    std::unique_ptr<Primitive> part(float umin, float umax, float vmin, float vmax,
                                    std::uint32_t child) const override
    {
        return std::make_unique<BicubicPatch>(umin, umax, vmin, vmax, *this, child);
    }

private:
    std::vector<Point> fPoints;                         // empty in pieces
    ControlValues<Point> fValues;                       // likewise
    mutable std::shared_ptr<const Attrib> fFormAttrib;  // whose bases made the coefficients
};

// Which spans of a mesh a quarter takes when the mesh is halved, and the rectangle (u and v from,
// to) of its parameters that this is.
struct Quadrant {
    std::uint32_t number;
    long u0, u1, v0, v1;
    float uv[4];
};

// Halves a mesh of nu x nv spans: visits what there is of the quarters, the last of which is always
// there.
template <class Visit>
void splitSpans(long nu, long nv, const Visit& visit)
{
    const long hu = nu / 2, hv = nv / 2;
    const float fu = static_cast<float>(hu) / static_cast<float>(nu);
    const float fv = static_cast<float>(hv) / static_cast<float>(nv);
    if (hu > 0 && hv > 0) visit(Quadrant{0, 0, hu, 0, hv, {0, fu, 0, fv}});
    if (hv > 0) visit(Quadrant{1, hu, nu, 0, hv, {fu, 1, 0, fv}});
    if (hu > 0) visit(Quadrant{2, 0, hu, hv, nv, {0, fu, fv, 1}});
    visit(Quadrant{3, hu, nu, hv, nv, {fu, 1, fv, 1}});
}

// Where a parameter of a whole mesh lies: in which span, and where in that.
struct SpanPlace {
    long span;
    double t;
    SpanPlace(float parameter, long spans)
    {
        const double place = double{parameter} * static_cast<double>(spans);
        span = clampToLong(place, 0, spans - 1);
        t = place - static_cast<double>(span);
    }
};

// Whether a list can make a patch of that many control points: exactly one of the tokens that give
// positions, and every value a number.
bool verifyPatch(long points, long n, const unsigned short* tokens, void* const* values,
                 bool rational);
// The control points that a list gives, nu x nv with u running fastest; heights stand on the unit
// square. The list is left without them.
std::vector<Point> extractPoints(ArgList& args, long nu, long nv);

}  // namespace zeb
