#include "geom/nurb.h"

#include <algorithm>
#include <optional>

#include "state/quark.h"
#include "util/host_array.h"
#include "util/report.h"

namespace zeb
{

NURB::Basis NURB::newBasis(long order, const float* knots, double t0, double t1)
{
    constexpr double kNoInterval = 1e-10;
    const auto knot = [knots](long i) { return double{knots[i]}; };
    Basis old(order);
    old(order - 1, order - 1) = 1;
    for (long k = 1; k < order; ++k) {
        Basis next(order);
        for (long i = order - k - 1; i < order; ++i) {
            // Adds (constant + slope s) times an old function.
            const auto add = [&](long function, double constant, double slope) {
                if (function >= order) return;
                for (long row = 0; row < order; ++row) {
                    next(row, i) += constant * old(row, function);
                    if (row > 0) next(row - 1, i) += slope * old(row, function);
                }
            };
            const double left = knot(i + k) - knot(i), right = knot(i + k + 1) - knot(i + 1);
            if (std::fabs(left) > kNoInterval) {
                add(i, (t0 - knot(i)) / left, (t1 - t0) / left);
            }
            if (std::fabs(right) > kNoInterval) {
                add(i + 1, (knot(i + k + 1) - t0) / right, (t0 - t1) / right);
            }
        }
        old = std::move(next);
    }
    return old;
}

Pointwd NURB::weight(long n, const Basis& basis, long row, const Pointwd* p)
{
    Pointwd sum;
    for (long j = 0; j < n; ++j) sum += p[j] * basis(row, j);
    return sum;
}

namespace
{

// Whether counts, order and knots of a direction can be read.
bool usable(const char* name, NurbNet::Direction& d)
{
    const auto inRange = [name](const char* what, long value, long min, long max) {
        if (value >= min && value <= max) return true;
        error(kRange, kError, "%s in %s %ld out of range", what, name, value);
        return false;
    };
    if (!inRange("order", d.order, 2, NURB::kMaxOrder) ||
        !inRange("control point count", d.points, 1, Patch::kMaxPoints)) {
        return false;
    }
    if (!d.knots) {
        error(kRange, kError, "knots in %s are null", name);
        return false;
    }
    d.knots = HostArrays::read("knots", d.knots, d.points + d.order);
    if (!d.knots) return false;
    const float limits[] = {d.min, d.max};
    if (!allFinite(d.knots, static_cast<std::size_t>(d.points + d.order)) ||
        !allFinite(limits, 2)) {
        error(kRange, kError, "knots or limits in %s are not finite", name);
        return false;
    }
    return true;
}

bool ordered(const NurbNet::Direction& d)
{
    return std::is_sorted(d.knots, d.knots + d.points + d.order);
}

bool inside(const NurbNet::Direction& d)
{
    return d.min >= d.knots[d.order - 1] && d.max <= d.knots[d.points];
}

}  // namespace

bool NurbNet::verify(Direction u, Direction v, long n, const unsigned short* tokens,
                     void* const* values)
{
    if (u.points < u.order || v.points < v.order) {
        error(kRange, kError, "number of control points may not be less than the order");
        return false;
    }
    if (!usable("u", u) || !usable("v", v)) return false;
    if (v.points > Patch::kMaxPoints / u.points) {
        error(kRange, kError, "%ld x %ld control points out of range", u.points, v.points);
        return false;
    }
    // The surface is still made: its spans that run backwards stay empty.
    if (!ordered(u) || !ordered(v)) {
        error(kRange, kError, "knot values must appear in non-decreasing order");
    }
    if (u.min >= u.max || v.min >= v.max) {
        error(kRange, kError, "parametric limit min must be less than max");
        return false;
    }
    if (!inside(u) || !inside(v)) {
        error(kRange, kError, "parametric limits must lie between knot[order-1] and knot[n]");
    }
    return verifyPatch(u.points * v.points, n, tokens, values, true);
}

std::vector<NurbNet::Span> NurbNet::spans(const Direction& d)
{
    std::vector<Span> result;
    for (long k = d.order - 1; k < d.points; ++k) {
        const float from = d.knots[k], to = d.knots[k + 1];
        const float t0 = std::max(from, d.min), t1 = std::min(to, d.max);
        if (!(to - from > kEpsilon) || !(t1 > t0)) continue;
        const long first = k - d.order + 1;
        result.push_back({first, NURB::newBasis(d.order, d.knots + first, double{t0}, double{t1})});
    }
    return result;
}

// Positions are divided by the largest weight, which changes nothing but the size of the numbers.
NurbNet::NurbNet(const Direction& u, const Direction& v, ArgList& args)
    : fNu(u.points), fUSpans(spans(u)), fVSpans(spans(v))
{
    const long count = u.points * v.points;
    fPoints.reserve(static_cast<std::size_t>(count));
    if (const ArgAssoc* homogeneous = args.find(kQPointw)) {
        const float* p = homogeneous->words();
        float largest = 0;
        double least = double{kInfinity};
        for (long k = 0; k < count; ++k) {
            const float w = p[4 * k + 3];
            if (std::fabs(w) > std::fabs(largest)) largest = w;
            if (w != 0) least = std::min(least, std::fabs(double{w}));
        }
        if (largest != 0) fWeightRange = std::fabs(double{largest}) / least;
        const double scale = largest == 0 ? 1 : 1 / double{largest};
        for (long k = 0; k < count; ++k, p += 4) {
            fPoints.push_back(Pointwd{double{p[0]}, double{p[1]}, double{p[2]}, double{p[3]}} *
                              scale);
        }
        args.detach(kQPointw);
    } else {
        for (const Point& p : extractPoints(args, u.points, v.points)) {
            fPoints.push_back({double{p.x}, double{p.y}, double{p.z}, 1});
        }
    }
    fValues = ControlValues(args, fPoints);
    fBoxes.reserve(fUSpans.size() * fVSpans.size());
    for (long j = 0; j < vspans(); ++j) {
        for (long i = 0; i < uspans(); ++i) {
            Boundw box = Boundw::empty();
            form(i, j).addHull(box, gIdentity);
            box.roundOut();
            fBoxes.push_back(box);
        }
    }
}

PowerForm NurbNet::form(long uspan, long vspan, const std::vector<Pointwd>& points) const
{
    const Span& u = fUSpans[static_cast<std::size_t>(uspan)];
    const Span& v = fVSpans[static_cast<std::size_t>(vspan)];
    const long uorder = u.basis.order(), vorder = v.basis.order();
    PowerForm result(static_cast<int>(uorder), static_cast<int>(vorder));
    std::vector<Pointwd> column(static_cast<std::size_t>(vorder));
    for (long i = 0; i < uorder; ++i) {
        for (long k = 0; k < vorder; ++k) {
            const Pointwd* const row =
                &points[static_cast<std::size_t>((v.first + k) * fNu + u.first)];
            column[static_cast<std::size_t>(k)] =
                NURB::weight(uorder, u.basis, uorder - 1 - i, row);
        }
        for (long j = 0; j < vorder; ++j) {
            result.at(static_cast<int>(i), static_cast<int>(j)) =
                NURB::weight(vorder, v.basis, vorder - 1 - j, column.data());
        }
    }
    return result;
}

PieceForms NurbNet::forms(long uspan, long vspan) const
{
    const auto makeForm = [&](const std::vector<Pointwd>& points) {
        return form(uspan, vspan, points);
    };
    return {makeForm(fPoints), fValues.forms(makeForm)};
}

Pointwd NurbNet::point(const SpanPlace& u, const SpanPlace& v) const
{
    return form(u.span, v.span).point(u.t, v.t);
}

namespace
{

// Where weights differ too much, most of the surface lies in a sliver of its parameters that no
// number of splits reaches, and rounding scatters what is left over.
std::optional<SplitLimits> splitLimits(const NurbNet& net)
{
    constexpr double kLopsided = 1e7;
    if (net.weightRange() <= kLopsided) return std::nullopt;
    return SplitLimits{.surface = 16, .across = 0, .keepsRest = false};
}

}  // namespace

std::unique_ptr<NuPatch> NuPatch::make(const NurbNet::Direction& u, const NurbNet::Direction& v,
                                       long n, const unsigned short* tokens, void* const* values)
{
    std::unique_ptr<NuPatch> patch(new NuPatch);
    patch->fArgs.init(n, tokens, values, ArgCounts{4, 1, u.points * v.points});
    const NurbNet net(u, v, patch->fArgs);
    if (!net.uspans() || !net.vspans()) return nullptr;
    PieceForms forms = net.forms(0, 0);
    patch->fForm = std::make_shared<const PowerForm>(std::move(forms.points));
    patch->fColors = std::move(forms.colors);
    if (const auto limits = splitLimits(net)) patch->limitSplits(*limits);
    return patch;
}

std::unique_ptr<Primitive> NuPatch::copy(bool quirks) const
{
    return quirks ? Patch::copy(quirks) : std::make_unique<NuPatch>(*this);
}

NuPatchMesh::NuPatchMesh(const NurbNet::Direction& u, const NurbNet::Direction& v, long n,
                         const unsigned short* tokens, void* const* values)
{
    fArgs.init(n, tokens, values, ArgCounts{4, 1, u.points * v.points});
    fNet = std::make_shared<const NurbNet>(u, v, fArgs);
    fU1 = fNet->uspans();
    fV1 = fNet->vspans();
    if (const auto limits = splitLimits(*fNet)) limitSplits(*limits);
}

NuPatchMesh::NuPatchMesh(const NuPatchMesh& other)
    : Patch(other), fNet(other.fNet), fU0(other.fU0), fU1(other.fU1), fV0(other.fV0), fV1(other.fV1)
{
    fArgs.init(other.fArgs);
}

NuPatchMesh::NuPatchMesh(const NuPatchMesh& parent, const Quadrant& part)
    : Patch(parent, part.number, false),
      fNet(parent.fNet),
      fU0(parent.fU0 + part.u0),
      fU1(parent.fU0 + part.u1),
      fV0(parent.fV0 + part.v0),
      fV1(parent.fV0 + part.v1)
{
    fArgs.split(part.uv[0], part.uv[1], part.uv[2], part.uv[3], parent.fArgs);
    takePlace(parent, part.uv[0], part.uv[1], part.uv[2], part.uv[3]);
}

void NuPatchMesh::addHull(Boundw& box) const
{
    Boundw hull = Boundw::empty();
    for (long j = fV0; j < fV1; ++j) {
        for (long i = fU0; i < fU1; ++i) hull.add(fNet->box(i, j));
    }
    if (!empty()) box.add(hull * matrix());
}

void NuPatchMesh::split(PrimitiveSink& sink)
{
    findSeams();
    splitSpans(fU1 - fU0, fV1 - fV0, [&](const Quadrant& q) {
        if (q.u1 - q.u0 >= 2 || q.v1 - q.v0 >= 2) {
            sink.add(std::make_unique<NuPatchMesh>(*this, q));
        } else {
            sink.add(std::make_unique<NuPatch>(*this, q.number, fNet->forms(fU0 + q.u0, fV0 + q.v0),
                                               q.uv));
        }
    });
}

Pointwd NuPatchMesh::pointAt(float u, float v) const
{
    SpanPlace pu(u, fU1 - fU0), pv(v, fV1 - fV0);
    pu.span += fU0;
    pv.span += fV0;
    return fNet->point(pu, pv);
}

}  // namespace zeb
