#include "geom/patch_mesh.h"

#include "state/state.h"
#include "util/report.h"

namespace zeb
{

namespace
{

// How control points make patches in one direction.
struct Direction {
    long points, step, patches;
    bool periodic;

    Direction(short kind, short wrap, long count, long basisStep)
        : points(count), periodic(wrap == Patch::kPeriodic)
    {
        step = kind == Patch::kBicubic ? basisStep : 1;
        if (kind == Patch::kBilinear) {
            patches = periodic ? points : points - 1;
        } else {
            patches = periodic ? points / step : points < 4 ? 0 : (points - 4) / step + 1;
        }
    }
    // Control points that no patch uses.
    bool hasExtra(short kind) const
    {
        return kind == Patch::kBicubic && !periodic && (points - 4) % step != 0;
    }
    // The control point that is number k of a patch.
    long index(long patch, long k) const
    {
        const long i = patch * step + k;
        return periodic ? i % points : i;
    }
};

bool verifyWrap(short wrap)
{
    if (wrap == Patch::kPeriodic || wrap == Patch::kNonperiodic) return true;
    error(kRange, kError, "unknown wrap treatment %ld", long{wrap});
    return false;
}

}  // namespace

// What the host gave.
struct PatchMesh::Net {
    short kind, uwrap, vwrap;
    long nu, nv;
    std::vector<Point> points;
    ControlValues<Point> values;
};

// What that means under the bases of an attribute record.
struct PatchMesh::Layout {
    std::shared_ptr<const Net> net;
    std::shared_ptr<const Attrib> attrib;
    Direction u, v;
    std::vector<Bound> boxes;  // of every patch, in object space

    Layout(std::shared_ptr<const Net> from, std::shared_ptr<const Attrib> under)
        : net(std::move(from)),
          attrib(std::move(under)),
          u(net->kind, net->uwrap, net->nu, attrib->ustep),
          v(net->kind, net->vwrap, net->nv, attrib->vstep)
    {
        if (u.patches < 1 || v.patches < 1) return;
        boxes.reserve(static_cast<std::size_t>(u.patches * v.patches));
        for (long j = 0; j < v.patches; ++j) {
            for (long i = 0; i < u.patches; ++i) {
                Boundw box = Boundw::empty();
                form(i, j).addHull(box, gIdentity);
                box.roundOut();
                boxes.push_back(box);
            }
        }
    }

    PowerForm form(long i, long j) const { return form(i, j, net->points); }
    // Of what the control points have besides, likewise.
    PowerForm form(long i, long j, const std::vector<Point>& points) const
    {
        const long side = net->kind == kBilinear ? 2 : 4;
        Point own[16];
        for (long k = 0; k < side * side; ++k) {
            const long row = v.index(j, k / side), column = u.index(i, k % side);
            own[k] = points[static_cast<std::size_t>(row * net->nu + column)];
        }
        return net->kind == kBilinear
                   ? BilinearPatch::powerForm(own)
                   : BicubicPatch::powerForm(own, attrib->ubasis, attrib->vbasis);
    }
    PieceForms forms(long i, long j) const
    {
        return {form(i, j), net->values.forms([&](const std::vector<Point>& values) {
                    return form(i, j, values);
                })};
    }
};

bool PatchMesh::verify(short type, long nu, short uwrap, long nv, short vwrap, long n,
                       const unsigned short* tokens, void* const* values)
{
    if (type != kBilinear && type != kBicubic) {
        error(kRange, kError, "unknown patch type %ld", long{type});
        return false;
    }
    if (!verifyWrap(uwrap) || !verifyWrap(vwrap)) return false;
    const auto enough = [&](const char* name, short wrap, long count, long step) {
        if (count >= 1 && count <= kMaxPoints && Direction(type, wrap, count, step).patches >= 1) {
            return true;
        }
        error(kRange, kError, "%s %ld out of range", name, count);
        return false;
    };
    if (!enough("control point count in u", uwrap, nu, gAttrib->ustep) ||
        !enough("control point count in v", vwrap, nv, gAttrib->vstep)) {
        return false;
    }
    if (nv > kMaxPoints / nu) {
        error(kRange, kError, "%ld x %ld control points out of range", nu, nv);
        return false;
    }
    return verifyPatch(nu * nv, n, tokens, values, false);
}

PatchMesh::PatchMesh(short type, long nu, short uwrap, long nv, short vwrap, long n,
                     const unsigned short* tokens, void* const* values)
{
    fArgs.init(n, tokens, values, ArgCounts{4, 1, nu * nv});
    std::vector<Point> points = extractPoints(fArgs, nu, nv);
    ControlValues own(fArgs, points);
    fNet = std::make_shared<const Net>(
        Net{type, uwrap, vwrap, nu, nv, std::move(points), std::move(own)});
    if (layout().u.hasExtra(type)) {
        error(kRange, kError, "extra control points in u will be ignored");
    }
    if (layout().v.hasExtra(type)) {
        error(kRange, kError, "extra control points in v will be ignored");
    }
}

PatchMesh::PatchMesh(const PatchMesh& other)
    : Patch(other),
      fNet(other.fNet),
      fLayout(other.fLayout),
      fWhole(other.fWhole),
      fRange(other.fRange)
{
    fArgs.init(other.fArgs);
}

PatchMesh::PatchMesh(const PatchMesh& parent, const Quadrant& part)
    : Patch(parent, part.number, false), fNet(parent.fNet), fLayout(parent.fLayout), fWhole(false)
{
    const Range r = parent.range();
    fRange = {r.u0 + part.u0, r.u0 + part.u1, r.v0 + part.v0, r.v0 + part.v1};
    fArgs.split(part.uv[0], part.uv[1], part.uv[2], part.uv[3], parent.fArgs);
    takePlace(parent, part.uv[0], part.uv[1], part.uv[2], part.uv[3]);
}

const PatchMesh::Layout& PatchMesh::layout() const
{
    if (!fLayout || fLayout->attrib != fCommon->fAttrib) {
        fLayout = std::make_shared<const Layout>(fNet, fCommon->fAttrib);
    }
    return *fLayout;
}

PatchMesh::Range PatchMesh::range() const
{
    const Layout& l = layout();
    return fWhole ? Range{0, l.u.patches, 0, l.v.patches} : fRange;
}

void PatchMesh::addHull(Boundw& box) const
{
    const Layout& l = layout();
    const Range r = range();
    Bound hull = Bound::empty();
    for (long j = r.v0; j < r.v1; ++j) {
        for (long i = r.u0; i < r.u1; ++i) {
            const Bound& patch = l.boxes[static_cast<std::size_t>(j * l.u.patches + i)];
            hull.add(Point(patch.xmin, patch.ymin, patch.zmin));
            hull.add(Point(patch.xmax, patch.ymax, patch.zmax));
        }
    }
    if (hull.xmin <= hull.xmax) box.add(Boundw(hull * matrix(), 1, 1));
}

void PatchMesh::split(PrimitiveSink& sink)
{
    findSeams();
    const Layout& l = layout();
    const Range r = range();
    splitSpans(r.u1 - r.u0, r.v1 - r.v0, [&](const Quadrant& q) {
        if (q.u1 - q.u0 >= 2 || q.v1 - q.v0 >= 2) {
            sink.add(std::make_unique<PatchMesh>(*this, q));
            return;
        }
        PieceForms forms = l.forms(r.u0 + q.u0, r.v0 + q.v0);
        if (l.net->kind == kBilinear) {
            sink.add(std::make_unique<BilinearPatch>(*this, q.number, std::move(forms), q.uv));
        } else {
            sink.add(std::make_unique<BicubicPatch>(*this, q.number, std::move(forms), q.uv));
        }
    });
}

Pointwd PatchMesh::pointAt(float u, float v) const
{
    const Layout& l = layout();
    const Range r = range();
    const SpanPlace pu(u, r.u1 - r.u0), pv(v, r.v1 - r.v0);
    return l.form(r.u0 + pu.span, r.v0 + pv.span).point(pu.t, pv.t);
}

}  // namespace zeb
