#include "geom/patch.h"

#include "geom/grid.h"
#include "geom/vertex_placer.h"
#include "state/quark.h"

namespace zeb
{

namespace
{

// A cubic and how it changes from step to step. Evaluation takes three additions.
class ForwardDifferences
{
public:
    // Of c[0] + c[1] t + c[2] t^2 + c[3] t^3, from t = 0 in steps of h.
    ForwardDifferences(const Pointwd* c, double h)
        : value(c[0]),
          fFirst(c[1] * h + c[2] * (h * h) + c[3] * (h * h * h)),
          fSecond(c[2] * (2 * h * h) + c[3] * (6 * h * h * h)),
          fThird(c[3] * (6 * h * h * h))
    {
    }
    void step()
    {
        value += fFirst;
        fFirst += fSecond;
        fSecond += fThird;
    }

    Pointwd value;

private:
    Pointwd fFirst, fSecond, fThird;
};

// The coefficients of the derivative.
std::array<Pointwd, 4> derivative(const Pointwd* c) { return {c[1], c[2] * 2, c[3] * 3, {}}; }

// Multiplies the rows of four coefficients by a basis matrix, whose first row gives the highest
// power.
std::array<Pointwd, 4> powers(const Matrix& basis, const std::array<Pointwd, 4>& points)
{
    std::array<Pointwd, 4> result;
    for (std::size_t power = 0; power < 4; ++power) {
        for (std::size_t k = 0; k < 4; ++k) {
            result[power] += points[k] * basis.m[3 - power][k];
        }
    }
    return result;
}

Pointwd exact(const Point& p) { return {double{p.x}, double{p.y}, double{p.z}, 0}; }

void pad(float& min, float& max)
{
    const float room = 0.1f * std::max(max - min, 1.0f);
    min -= room;
    max += room;
}

}  // namespace

bool verifyPatch(long points, long n, const unsigned short* tokens, void* const* values,
                 bool rational)
{
    if (!ArgList::usable(n, tokens, values, ArgCounts{4, 1, points})) return false;
    return rational ? verify(n, tokens, {kQPoint, kQHeight, kQPointw})
                    : verify(n, tokens, {kQPoint, kQHeight});
}

std::vector<Point> extractPoints(ArgList& args, long nu, long nv)
{
    std::vector<Point> points;
    points.reserve(static_cast<std::size_t>(nu * nv));
    const ArgAssoc* position = args.find(kQPoint);
    const ArgAssoc* height = args.find(kQHeight);
    const auto share = [](long i, long n) {
        return static_cast<float>(i) / static_cast<float>(std::max(n - 1, 1L));
    };
    for (long j = 0; j < nv; ++j) {
        for (long i = 0; i < nu; ++i) {
            const long k = j * nu + i;
            points.push_back(position ? position->point(k)
                                      : Point(share(i, nu), share(j, nv), height->words()[k]));
        }
    }
    for (const unsigned short token : {kQPoint, kQHeight, kQPointw}) args.detach(token);
    return points;
}

std::unique_ptr<Primitive> Patch::copy(bool) const { return std::make_unique<Patch>(*this); }

void Patch::boundPoint(Boundw& box, float u, float v) const
{
    box.add(rounded(pointAt(u, v) * matrix()));
}

Boundw Patch::bound() const
{
    Boundw box = Boundw::empty();
    Random draws = random(kBoundDraws);
    for (const float u : {0.0f, 1.0f}) {
        for (const float v : {0.0f, 1.0f}) boundPoint(box, u, v);
    }
    for (int i = 0; i < 8; ++i) {
        const float t = (static_cast<float>(i) + draws.unit()) * 0.125f;
        boundPoint(box, t, 0);
        boundPoint(box, t, 1);
        boundPoint(box, 0, t);
        boundPoint(box, 1, t);
    }
    for (int j = 0; j < 4; ++j) {
        for (int i = 0; i < 4; ++i) {
            const float u = (static_cast<float>(i) + draws.unit()) * 0.25f;
            const float v = (static_cast<float>(j) + draws.unit()) * 0.25f;
            boundPoint(box, u, v);
        }
    }
    pad(box.xmin, box.xmax);
    pad(box.ymin, box.ymax);
    pad(box.zmin, box.zmax);
    pad(box.wmin, box.wmax);
    addHull(box);
    clipToBound(box);
    return box;
}

Boundw Patch::hull() const
{
    Boundw box = Boundw::empty();
    addHull(box);
    clipToBound(box);
    return box;
}

// Surfaces close where the host's points make them: sides that lie on each other are one line.
void Patch::findSeams()
{
    if (isPiece()) return;
    constexpr int kPlaces = 32;
    constexpr double kApart = 1e-6;  // of the size
    double size = 0, apartU = 0, apartV = 0;
    const auto compare = [&](const Pointd& a, const Pointd& b, double& apart) {
        const Pointd d = a - b;
        apart = std::max(apart, dot(d, d));
    };
    const Pointd first = homogenized(pointAt(0, 0));
    for (int k = 0; k <= kPlaces; ++k) {
        const float t = static_cast<float>(k) / kPlaces;
        const Pointd left = homogenized(pointAt(0, t)), right = homogenized(pointAt(1, t));
        const Pointd top = homogenized(pointAt(t, 0)), bottom = homogenized(pointAt(t, 1));
        compare(left, right, apartU);
        compare(top, bottom, apartV);
        for (const Pointd& p : {left, right, top, bottom}) {
            const Pointd d = p - first;
            size = std::max(size, dot(d, d));
        }
    }
    if (apartU <= kApart * kApart * size) fEdges.closeU(path());
    if (apartV <= kApart * kApart * size) fEdges.closeV(path());
}

PolynomialPatch::PolynomialPatch(const PolynomialPatch& other)
    : Patch(other),
      fForm(other.fForm),
      fColors(other.fColors),
      fUmin(other.fUmin),
      fUmax(other.fUmax),
      fVmin(other.fVmin),
      fVmax(other.fVmax)
{
    fArgs.init(other.fArgs);
}

PolynomialPatch::PolynomialPatch(const Patch& mesh, std::uint32_t child, PieceForms forms,
                                 const float (&range)[4])
    : Patch(mesh, child, false),
      fForm(std::make_shared<const PowerForm>(std::move(forms.points))),
      fColors(std::move(forms.colors))
{
    fArgs.split(range[0], range[1], range[2], range[3], mesh.args());
    takePlace(mesh, range[0], range[1], range[2], range[3]);
}

PolynomialPatch::PolynomialPatch(float umin, float umax, float vmin, float vmax,
                                 const PolynomialPatch& parent, std::uint32_t child)
    : Patch(parent, child, true),
      fForm(parent.form()),
      fColors(parent.fColors),
      fUmin(parent.uAt(umin)),
      fUmax(parent.uAt(umax)),
      fVmin(parent.vAt(vmin)),
      fVmax(parent.vAt(vmax))
{
    fArgs.split(umin, umax, vmin, vmax, parent.fArgs);
    takePlace(parent, umin, umax, vmin, vmax);
}

void PolynomialPatch::split(PrimitiveSink& sink)
{
    findSeams();
    addQuarters(sink);
}

std::unique_ptr<Grid> PolynomialPatch::dice(const Dicing& dicing) const
{
    auto grid = Patch::dice(dicing);
    grid->fPieceValues = colors();
    return grid;
}

Pointwd PolynomialPatch::pointAt(float u, float v) const { return form()->point(uAt(u), vAt(v)); }

Differential PolynomialPatch::evaluate(float u, float v) const
{
    const PowerForm::Value value = form()->evaluate(uAt(u), vAt(v));
    Differential d{value.P, value.dPdu * (fUmax - fUmin), value.dPdv * (fVmax - fVmin)};
    if (!rational()) d.dPdu.w = d.dPdv.w = 1;
    return d;
}

void PolynomialPatch::addHull(Boundw& box) const { ownForm().addHull(box, matrix()); }

bool BilinearPatch::verify(long n, const unsigned short* tokens, void* const* values)
{
    return verifyPatch(4, n, tokens, values, false);
}

BilinearPatch::BilinearPatch(long n, const unsigned short* tokens, void* const* values)
{
    fArgs.init(n, tokens, values, ArgCounts{4, 1, 4});
    const auto makeForm = [](const std::vector<Point>& p) { return powerForm(p.data()); };
    const std::vector<Point> points = extractPoints(fArgs, 2, 2);
    fForm = std::make_shared<const PowerForm>(makeForm(points));
    fColors = ControlValues(fArgs, points).forms(makeForm);
}

PowerForm BilinearPatch::powerForm(const Point* corners)
{
    const Pointwd a = exact(corners[0]), b = exact(corners[1]), c = exact(corners[2]),
                  d = exact(corners[3]);
    PowerForm form(2, 2);
    form.at(0, 0) = a;
    form.at(1, 0) = b + a * -1;
    form.at(0, 1) = c + a * -1;
    form.at(1, 1) = a + b * -1 + c * -1 + d;
    form.at(0, 0).w = 1;
    return form;
}

std::unique_ptr<Primitive> BilinearPatch::copy(bool quirks) const
{
    return quirks ? Patch::copy(quirks) : std::make_unique<BilinearPatch>(*this);
}

bool BicubicPatch::verify(long n, const unsigned short* tokens, void* const* values)
{
    return verifyPatch(16, n, tokens, values, false);
}

BicubicPatch::BicubicPatch(long n, const unsigned short* tokens, void* const* values)
{
    fArgs.init(n, tokens, values, ArgCounts{4, 1, 16});
    fPoints = extractPoints(fArgs, 4, 4);
    fValues = ControlValues(fArgs, fPoints);
}

const std::shared_ptr<const PowerForm>& BicubicPatch::form() const
{
    if (!fPoints.empty() && fFormAttrib != fCommon->fAttrib) {
        fFormAttrib = fCommon->fAttrib;
        const auto makeForm = [this](const std::vector<Point>& points) {
            return powerForm(points.data(), attrib().ubasis, attrib().vbasis);
        };
        fForm = std::make_shared<const PowerForm>(makeForm(fPoints));
        fColors = fValues.forms(makeForm);
    }
    return fForm;
}

PowerForm BicubicPatch::powerForm(const Point* points, const Matrix& ubasis, const Matrix& vbasis)
{
    std::array<std::array<Pointwd, 4>, 4> columns;
    for (std::size_t j = 0; j < 4; ++j) {
        const auto row = powers(ubasis, {exact(points[4 * j]), exact(points[4 * j + 1]),
                                         exact(points[4 * j + 2]), exact(points[4 * j + 3])});
        for (std::size_t i = 0; i < 4; ++i) columns[i][j] = row[i];
    }
    PowerForm form(4, 4);
    for (int i = 0; i < 4; ++i) {
        const auto column = powers(vbasis, columns[static_cast<std::size_t>(i)]);
        for (int j = 0; j < 4; ++j) form.at(i, j) = column[static_cast<std::size_t>(j)];
    }
    form.at(0, 0).w = 1;
    return form;
}

// Judged by grids of at most 256 steps.
bool BicubicPatch::diceable(Dicing& dicing, float) const
{
    const long steps = std::min(dicing.frame.option.tuning[0], 256L);
    return Primitive::diceable(dicing, static_cast<float>(steps) * micropolygonSide());
}

std::unique_ptr<Grid> BicubicPatch::dice(const Dicing& dicing) const
{
    const int usteps = dicing.fUSteps, vsteps = dicing.fVSteps;
    auto grid =
        std::make_unique<Grid>(dicing.fVSteps, dicing.fUSteps, fCommon->fAttrib, transform(),
                               fCommon->fSeq, flipped(), false, fArgs, fEdges.transposed(), true);
    // The coefficients in v are cubics of u; they and their derivatives advance with the rows.
    const PowerForm form = ownForm();
    const double du = 1.0 / usteps, dv = 1.0 / vsteps;
    std::vector<ForwardDifferences> curves, slopes;
    for (int j = 0; j < 4; ++j) {
        const Pointwd* curve = &form.at(0, j);
        curves.emplace_back(curve, du);
        slopes.emplace_back(derivative(curve).data(), du);
    }
    const auto direction = [](const Pointwd& d) { return Pointd(d.x, d.y, d.z); };
    VertexPlacer placer(*grid, matrix(), dicing.frame.plain);
    for (int row = 0; row <= usteps; ++row) {
        std::array<Pointwd, 4> curve, slope;
        for (std::size_t j = 0; j < 4; ++j) {
            curve[j] = curves[j].value;
            slope[j] = slopes[j].value;
            curves[j].step();
            slopes[j].step();
        }
        ForwardDifferences P(curve.data(), dv), dPdu(slope.data(), dv),
            dPdv(derivative(curve.data()).data(), dv);
        for (int i = 0; i <= vsteps; ++i) {
            placer.add(homogenized(P.value), direction(dPdu.value), direction(dPdv.value));
            P.step();
            dPdu.step();
            dPdv.step();
        }
    }
    if (!placer.finish()) mendDerivatives(*grid);
    grid->fPieceValues = colors();
    return grid;
}

std::unique_ptr<Primitive> BicubicPatch::copy(bool quirks) const
{
    return quirks ? Patch::copy(quirks) : std::make_unique<BicubicPatch>(*this);
}

}  // namespace zeb
