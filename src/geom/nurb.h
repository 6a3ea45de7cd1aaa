// Non-uniform rational B-spline surfaces.
#pragma once

#include "geom/patch.h"

namespace zeb
{

// Basis functions as polynomials.
class NURB
{
public:
    // Higher ones lose their digits in power form.
    static constexpr long kMaxOrder = 20;

    // order x order numbers: column i holds basis function i of one span in powers of s, the
    // highest in row 0. s runs from 0 to 1 between the parameters t0 and t1.
    class Basis
    {
    public:
        explicit Basis(long order)
            : fOrder(order), fNumbers(static_cast<std::size_t>(order * order), 0.0)
        {
        }
        long order() const { return fOrder; }
        double& operator()(long row, long column) { return fNumbers[index(row, column)]; }
        double operator()(long row, long column) const { return fNumbers[index(row, column)]; }

    private:
        std::size_t index(long row, long column) const
        {
            return static_cast<std::size_t>(row * fOrder + column);
        }
        long fOrder;
        std::vector<double> fNumbers;
    };

    // The recurrence of Cox (1972) and de Boor (1972), on polynomials. The first of the 2 order
    // knots is the first that the span depends on.
    static Basis newBasis(long order, const float* knots, double t0, double t1);
    // The sum of n points with the weights of a row.
    static Pointwd weight(long n, const Basis& basis, long row, const Pointwd* p);
};

// The control points and knots of a surface, in spans that are neither empty nor trimmed away.
class NurbNet
{
public:
    // What the interface gives for one direction.
    struct Direction {
        long points, order;
        const float* knots;
        float min, max;
    };

    static bool verify(Direction u, Direction v, long n, const unsigned short* tokens,
                       void* const* values);
    // Takes the positions out of the list.
    NurbNet(const Direction& u, const Direction& v, ArgList& args);

    long uspans() const { return static_cast<long>(fUSpans.size()); }
    long vspans() const { return static_cast<long>(fVSpans.size()); }
    PieceForms forms(long uspan, long vspan) const;
    Pointwd point(const SpanPlace& u, const SpanPlace& v) const;
    // The largest weight in terms of the smallest one; neither is 0.
    double weightRange() const { return fWeightRange; }
    // Of the homogeneous points of a span, in object space.
    const Boundw& box(long uspan, long vspan) const
    {
        return fBoxes[static_cast<std::size_t>(vspan * uspans() + uspan)];
    }

private:
    struct Span {
        long first;  // control point
        NURB::Basis basis;
    };
    static std::vector<Span> spans(const Direction& d);
    PowerForm form(long uspan, long vspan) const { return form(uspan, vspan, fPoints); }
    PowerForm form(long uspan, long vspan, const std::vector<Pointwd>& points) const;

    long fNu;
    std::vector<Span> fUSpans, fVSpans;
    std::vector<Pointwd> fPoints;
    ControlValues<Pointwd> fValues;
    std::vector<Boundw> fBoxes;
    double fWeightRange = 1;
};

// One span in each direction.
class NuPatch final : public PolynomialPatch
{
public:
    // null if nothing of the span lies within the limits.
    static std::unique_ptr<NuPatch> make(const NurbNet::Direction& u, const NurbNet::Direction& v,
                                         long n, const unsigned short* tokens, void* const* values);
    NuPatch(const Patch& mesh, std::uint32_t child, PieceForms forms, const float (&range)[4])
        : PolynomialPatch(mesh, child, std::move(forms), range)
    {
    }
    NuPatch(const NuPatch& other) = default;
    NuPatch(float umin, float umax, float vmin, float vmax, const NuPatch& parent,
            std::uint32_t child)
        : PolynomialPatch(umin, umax, vmin, vmax, parent, child)
    {
    }

    bool rational() const override { return true; }
    std::unique_ptr<Primitive> copy(bool quirks) const override;

protected:
    std::unique_ptr<Primitive> part(float umin, float umax, float vmin, float vmax,
                                    std::uint32_t child) const override
    {
        return std::make_unique<NuPatch>(umin, umax, vmin, vmax, *this, child);
    }

private:
    NuPatch() = default;
};

class NuPatchMesh final : public Patch
{
public:
    static bool verify(const NurbNet::Direction& u, const NurbNet::Direction& v, long n,
                       const unsigned short* tokens, void* const* values)
    {
        return NurbNet::verify(u, v, n, tokens, values);
    }
    NuPatchMesh(const NurbNet::Direction& u, const NurbNet::Direction& v, long n,
                const unsigned short* tokens, void* const* values);
    NuPatchMesh(const NuPatchMesh& other);
    // A part of the parent.
    NuPatchMesh(const NuPatchMesh& parent, const Quadrant& part);

    unsigned short type() const override { return kNuPatchMesh; }
    bool rational() const override { return true; }
    bool diceable(Dicing&, float) const override { return false; }
    void split(PrimitiveSink& sink) override;
    Pointwd pointAt(float u, float v) const override;
    Pointw evalP(float u, float v) const override { return rounded(pointAt(u, v)); }
    std::unique_ptr<Primitive> copy(bool) const override
    {
        return std::make_unique<NuPatchMesh>(*this);
    }
    bool empty() const { return fU1 <= fU0 || fV1 <= fV0; }

private:
    void addHull(Boundw& box) const override;

    std::shared_ptr<const NurbNet> fNet;
    long fU0 = 0, fU1, fV0 = 0, fV1;  // spans
};

}  // namespace zeb
