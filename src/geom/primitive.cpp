#include "geom/primitive.h"

#include <algorithm>
#include <cmath>

#include "geom/chord.h"
#include "geom/grid.h"
#include "geom/sweep_kernel.h"
#include "geom/vertex_placer.h"
#include "state/quark.h"
#include "state/state.h"
#include "util/number.h"

namespace zeb
{

std::uint32_t PrimitiveCommon::fCurSeq = 0;
std::uint32_t SeedScope::fSeed = 0;
std::uint32_t SeedScope::fMade = 0;

namespace
{

constexpr int kCells = 4;  // the dicing test draws one sample in each of 4 x 4 cells

// Whether w keeps its sign over a whole derivative.
bool sameSide(const Pointwd& p, const Pointwd& d) { return (p.w + d.w) * p.w > 0; }

// From a homogeneous point to where its derivative leads: a multiple of the Euclidean derivative,
// which stands in for it where w changes sign on the way.
Pointd chord(const Pointwd& p, const Pointwd& d)
{
    const Pointd P = homogenized(p);
    if (sameSide(p, d)) return homogenized(p + d) - P;
    return {div(d.x - P.x * d.w, p.w), div(d.y - P.y * d.w, p.w), div(d.z - P.z * d.w, p.w)};
}

struct Place {
    float u, v;
};

// In one of the cells, u running fastest.
Place jittered(int cell, Random& random)
{
    const int i = cell % kCells, j = cell / kCells;
    const float u = (static_cast<float>(i) + random.unit()) / kCells;
    const float v = (static_cast<float>(j) + random.unit()) / kCells;
    return {u, v};
}

// Calls visit(u, v) with a jittered place in every cell.
template <class Visit>
bool everyCell(Random& random, const Visit& visit)
{
    for (int cell = 0; cell < kCells * kCells; ++cell) {
        const auto [u, v] = jittered(cell, random);
        if (!visit(u, v)) return false;
    }
    return true;
}

// Calls visit(alongU, alongV) with how long the derivatives are at the same places, as many at once
// as the kernel takes.
template <class Visit>
bool everyCell(const Sweep& sweep, double limit, Random& random, const Visit& visit)
{
    constexpr int kAtOnce = SweepPlaces::kCount;
    static const SweepKernel kernel = sweepKernel();
    SweepPlaces places;
    for (int cell = 0; cell < kCells * kCells; cell += kAtOnce) {
        for (int k = 0; k < kAtOnce; ++k) {
            const auto [u, v] = jittered(cell + k, random);
            places.u[k] = double{u};
            places.v[k] = double{v};
        }
        kernel(sweep, limit, places);
        for (int k = 0; k < kAtOnce; ++k) {
            if (!visit(places.alongU[k], places.alongV[k])) return false;
        }
    }
    return true;
}

}  // namespace

PrimitiveCommon::PrimitiveCommon()
    : fSeq(fCurSeq++),
      fSeed(SeedScope::seedFor(fSeq)),
      fAttrib(gState->getAttrib()),
      fTransform(gState->getTransform())
{
}

void PrimitiveCommon::inherit(std::uint32_t seq)
{
    fAttrib = gState->getAttrib();
    fTransform = gState->getTransform();
    fSeq = seq;
    fSeed = SeedScope::seedFor(seq);
}

Primitive::Primitive() : fCommon(std::make_shared<PrimitiveCommon>()) {}

Primitive::Primitive(const Primitive& other)
    : fCommon(other.fCommon), fEdges(other.fEdges), fPath(other.fPath)
{
    if (other.fSurfaceSplits) limitSplits(other.fSurfaceSplits->limits);
}

Primitive::Primitive(const Primitive& parent, std::uint32_t child, bool halved)
    : fCommon(parent.fCommon),
      fPath(mixSeeds(parent.fPath, child + 1)),
      fDepth(parent.fDepth + (halved ? 1 : 0)),
      fIsPiece(true),
      fSurfaceSplits(parent.fSurfaceSplits),
      fFaceSplits(halved ? parent.fFaceSplits : nullptr)
{
}

Primitive::~Primitive() = default;

std::unique_ptr<Primitive> Primitive::copy(bool) const
{
    return std::make_unique<Primitive>(*this);
}

bool Primitive::hasOpacities() const
{
    return fArgs.find(kQOpacity) || fArgs.find(Quark::fVertexOpacity);
}

Random Primitive::random(std::uint32_t purpose) const { return Random(mixSeeds(seed(), purpose)); }

unsigned short Primitive::stepsFor(double length) const
{
    const double steps = std::ceil(length / double{micropolygonSide()});
    return static_cast<unsigned short>(clampToLong(steps, 1, 65535));
}

void Primitive::limitSplits(const SplitLimits& limits)
{
    fSurfaceSplits = std::make_shared<SurfaceSplits>();
    fSurfaceSplits->limits = limits;
}

void Primitive::beginCounting()
{
    if (!fSurfaceSplits) limitSplits({});
    if (fFaceSplits) return;
    fFaceSplits = std::make_shared<FaceSplits>();
    fFaceSplits->surface = fSurfaceSplits;
}

double Primitive::mostSplits(const RenderFrame& frame, double pixels) const
{
    const double size = double{dicingLimit(frame, -1)};
    return static_cast<double>(fSurfaceSplits->limits.surface) + 16 * pixels / (size * size);
}

bool Primitive::mayStillSplit(const RenderFrame& frame, double pixels)
{
    if (fDepth >= kMaxSplitDepth) return false;
    beginCounting();
    if (++fFaceSplits->count <= fSurfaceSplits->limits.face) return true;
    return static_cast<double>(++fSurfaceSplits->count) <= mostSplits(frame, pixels);
}

bool Primitive::maySplitAhead(const RenderFrame& frame, double pixels,
                              std::vector<SplitsAhead>& made)
{
    if (fDepth >= kMaxSplitDepth) return false;
    beginCounting();
    SurfaceSplits& surface = *fSurfaceSplits;
    if (surface.tooMany) return false;
    if (made.empty() || made.back().face != fFaceSplits) {
        made.push_back({fFaceSplits, mostSplits(frame, pixels), 0});
    }
    if (++fFaceSplits->ahead > surface.limits.face &&
        static_cast<double>(++surface.ahead) > made.back().most) {
        surface.tooMany = true;
        return false;
    }
    ++made.back().made;
    return true;
}

void SplitsAhead::count(long more) const
{
    SurfaceSplits& surface = *face->surface;
    const auto beyond = [&] { return std::max(face->count - surface.limits.face, 0L); };
    const long before = beyond();
    face->count += more;
    surface.count += beyond() - before;
}

bool SplitsAhead::take() const
{
    count(made);
    if (static_cast<double>(face->surface->count) <= most) return true;
    giveBack();
    return false;
}

bool Primitive::mayStillSplitAcross()
{
    return fDepth < kMaxSplitDepth && fSurfaceSplits &&
           ++fSurfaceSplits->across <= fSurfaceSplits->limits.across;
}

void Primitive::addQuarters(PrimitiveSink& sink) const
{
    for (std::uint32_t i = 0; i < 4; ++i) {
        const float u = i % 2 ? 0.5f : 0, v = i / 2 ? 0.5f : 0;
        sink.add(part(u, u + 0.5f, v, v + 0.5f, i));
    }
}

void Primitive::addHalves(PrimitiveSink& sink, const RenderFrame& frame) const
{
    const Matrix toRaster = matrix() * frame.cameraToRaster;
    const auto raster = [&](int i, int j) {
        return homogenized(pointAt(static_cast<float>(i) * 0.5f, static_cast<float>(j) * 0.5f)) *
               toRaster;
    };
    double alongU = 0, alongV = 0;
    for (int j = 0; j <= 2; ++j) {
        for (int i = 0; i <= 1; ++i) {
            alongU += planarLength(raster(i + 1, j) - raster(i, j));
            alongV += planarLength(raster(j, i + 1) - raster(j, i));
        }
    }
    for (std::uint32_t i = 0; i < 2; ++i) {
        const float from = i ? 0.5f : 0, to = from + 0.5f;
        sink.add(alongU > alongV ? part(from, to, 0, 1, i) : part(0, 1, from, to, i));
    }
}

float Primitive::dicingLimit(const RenderFrame& frame, float maxSize) const
{
    if (maxSize >= 0) return maxSize;
    return static_cast<float>(frame.option.tuning[0]) * micropolygonSide();
}

void Primitive::clipToBound(Boundw& bound) const
{
    const Bound& box = attrib().objectBound;
    if (!box.finite) return;
    if (rational()) {
        if (!(bound.wmin > kEpsilon)) return;
        bound.homogenize();
    }
    bound.intersect(Boundw(box * matrix(), bound.wmin, bound.wmax));
}

bool Primitive::diceable(Dicing& dicing, float maxSize) const
{
    const Matrix toRaster = matrix() * dicing.frame.cameraToRaster;
    Random draws = random(kDicingDraws);
    return measure(dicing, dicingLimit(dicing.frame, maxSize), toRaster, draws) &&
           (isFlat(dicing, toRaster) || flatten(dicing, toRaster, draws));
}

// Finds the step counts from the longest derivatives seen; false if the primitive is too large on
// screen, or too uneven for one grid.
bool Primitive::measure(Dicing& dicing, float maxSize, const Matrix& toRaster, Random& draws) const
{
    double maxU = 0, maxV = 0, maxArea = 0, minArea = double{kInfinity};
    const auto take = [&](double lengthU, double lengthV) {
        maxU = std::max(maxU, lengthU);
        maxV = std::max(maxV, lengthV);
        if (!(maxU <= double{maxSize} && maxV <= double{maxSize})) return false;
        maxArea = std::max(maxArea, lengthU * lengthV);
        minArea = std::min(minArea, lengthU * lengthV);
        return true;
    };
    const auto look = [&](float u, float v) {
        const auto [p, du, dv] = evaluate(u, v);
        Pointd P = homogenized(p), Pu, Pv;
        if (rational()) {
            // Too long for a chord that passes the point at infinity to mean anything.
            if (!sameSide(p, du) || !sameSide(p, dv)) return false;
            Pu = homogenized(p + du);
            Pv = homogenized(p + dv);
        } else {
            Pu = P + homogenized(du);
            Pv = P + homogenized(dv);
        }
        P = P * toRaster;
        return take(planarLength(Pu * toRaster - P), planarLength(Pv * toRaster - P));
    };
    Sweep sweep;
    bool small;
    if (!dicing.frame.plain && describe(sweep)) {
        std::copy_n(&toRaster.m[0][0], 16, &sweep.toRaster[0][0]);
        small = everyCell(sweep, double{maxSize}, draws, take);
    } else {
        small = everyCell(draws, look);
    }
    if (!small) return false;
    dicing.fUSteps = stepsFor(maxU);
    dicing.fVSteps = stepsFor(maxV);
    return !(dicing.even && maxArea > 2.0 * minArea && dicing.fUSteps * dicing.fVSteps >= 17);
}

// Whether no chord over a micropolygon can stray too far: then there is no need to look. From a
// point at (x, y) on the screen, a way of length d in object space leads no further there than
// d (|X| + |x| |W|) / (w - d |W|) along x, where X and W are the columns of the matrix that give
// raster x and w; y likewise.
bool Primitive::isFlat(const Dicing& dicing, const Matrix& toRaster) const
{
    constexpr double kSurely = 0.9;  // of the flatness, with room for rounding
    if (!fFront || dicing.frame.plain || attrib().objectBound.finite) return false;
    const auto column = [&toRaster](int k) {
        const Pointd c(toRaster.m[0][k], toRaster.m[1][k], toRaster.m[2][k]);
        return std::sqrt(dot(c, c));
    };
    const auto widest = [](float min, float max) {
        return std::max(std::fabs(double{min}), std::fabs(double{max}));
    };
    const double W = column(3);
    const double x = column(0) + widest(fScreen.xmin, fScreen.xmax) * W;
    const double y = column(1) + widest(fScreen.ymin, fScreen.ymax) * W;
    const auto flat = [&](double sag) {
        const double w = double{fLeastW} - sag * W;
        return w > 0 && sag * std::sqrt(x * x + y * y) <= kSurely * w * attrib().flatnessLimit;
    };
    return flat(sagAlongU(0.5 / dicing.fUSteps)) && flat(sagAlongV(0.5 / dicing.fVSteps));
}

// Raises the step counts until the chord over a micropolygon stays within the flatness of the
// surface; false if that takes more steps than a grid may have.
bool Primitive::flatten(Dicing& dicing, const Matrix& toRaster, Random& draws) const
{
    const long limit = dicing.frame.option.tuning[0];
    const double flatness = attrib().flatnessLimit * fCoarseness;
    return everyCell(draws, [&](float u, float v) {
        const Pointd P = homogenized(pointAt(u, v)) * toRaster;
        const auto flatAlong = [&](unsigned short& steps, float t, const auto& at) {
            for (;; ++steps) {
                const float h = std::min({t, 1 - t, 0.5f / static_cast<float>(steps)});
                const Pointd middle = (homogenized(at(t + h)) + homogenized(at(t - h))) * 0.5;
                if (planarLength(middle * toRaster - P) <= flatness) return true;
                if (steps >= limit) return false;
            }
        };
        return flatAlong(dicing.fUSteps, u, [&](float t) { return pointAt(t, v); }) &&
               flatAlong(dicing.fVSteps, v, [&](float t) { return pointAt(u, t); });
    });
}

// Calls visit(line, isAlongU, raster) for each side that others may share, where raster(t) is where
// it is on the screen, t from 0 to 1.
template <class Visit>
void Primitive::everySharedSide(const RenderFrame& frame, const Visit& visit) const
{
    const Matrix toRaster = matrix() * frame.cameraToRaster;
    const auto side = [&](std::uint32_t line, bool isAlongU, const auto& place) {
        if (line == 0) return;
        visit(line, isAlongU, [&](float t) {
            const auto [u, v] = place(t);
            return homogenized(pointAt(u, v)) * toRaster;
        });
    };
    const bool triangle = isTriangle();
    side(fEdges.vmin, true, [](float t) { return Place{t, 0}; });
    side(fEdges.umin, false, [](float t) { return Place{0, t}; });
    side(fEdges.umax, false, [=](float t) { return Place{triangle ? 1 - t : 1, t}; });
    side(fEdges.vmax, true, [](float t) { return Place{t, 1}; });
}

void Primitive::halveSteps(Dicing& dicing) const
{
    const auto nearestPower = [](unsigned short steps) {
        const double power = std::exp2(std::round(std::log2(static_cast<double>(steps))));
        return static_cast<unsigned short>(std::min(power, 32768.0));
    };
    unsigned short &u = dicing.fUSteps, &v = dicing.fVSteps;
    u = nearestPower(u);
    v = nearestPower(v);
    // More would take one that had to be given up.
    const int mostU = 4 * u, mostV = 4 * v;
    // Those are as large as they are because nothing of them is where it can be seen.
    if (fCoarseness > 1) return;
    everySharedSide(dicing.frame, [&](std::uint32_t line, bool isAlongU, const auto& raster) {
        const bool isLong = isTriangle() && line == fEdges.umax;
        unsigned short& steps = isAlongU || (isLong && u > v) ? u : v;
        float least = 1;
        everyChord(raster, double{micropolygonSide()}, &steps == &u ? mostU : mostV,
                   [&least](float from, float to) { least = std::min(least, to - from); });
        steps = static_cast<unsigned short>(std::clamp<float>(1 / least, steps, 32768));
    });
}

bool Primitive::hasChordForSide(const RenderFrame& frame) const
{
    if (!(displacement() > 0) || !fFront) return false;
    bool found = false;
    everySharedSide(frame, [&](std::uint32_t, bool, const auto& raster) {
        everyChord(raster, double{micropolygonSide()}, 2,
                   [&found](float from, float to) { found |= to - from == 1; });
    });
    return found;
}

Primitive::Local Primitive::euclidean(const Differential& at) const
{
    const auto& [p, du, dv] = at;
    if (rational()) return {homogenized(p), chord(p, du), chord(p, dv)};
    return {homogenized(p), homogenized(du), homogenized(dv)};
}

Vertex Primitive::vertexAt(float u, float v) const
{
    Local at = euclidean(evaluate(u, v));
    vtransform(at.dPdu, matrix());
    vtransform(at.dPdv, matrix());
    return {rounded(at.P * matrix()), rounded(at.dPdu), rounded(at.dPdv)};
}

// The matrix stretches no way by more than the root of a norm of its square.
float Primitive::displacement() const
{
    const float bound = attrib().displacementBound;
    if (!attrib().displacementShader || !(bound > 0)) return 0;
    const auto& m = matrix().m;
    double most = 0;
    for (int i = 0; i < 3; ++i) {
        double sum = 0;
        for (int j = 0; j < 3; ++j) {
            double product = 0;
            for (int k = 0; k < 3; ++k) product += double{m[i][k]} * double{m[j][k]};
            sum += std::fabs(product);
        }
        most = std::max(most, sum);
    }
    return static_cast<float>(std::sqrt(most) * double{bound});
}

Boundw Primitive::displaced(Boundw box) const
{
    const float room = displacement() * std::max(std::fabs(box.wmin), std::fabs(box.wmax));
    if (!(room > 0)) return box;
    box.xmin -= room;
    box.xmax += room;
    box.ymin -= room;
    box.ymax += room;
    box.zmin -= room;
    box.zmax += room;
    return box;
}

void Primitive::mendDerivatives(Grid& grid) const
{
    constexpr double kParallel = 1e-10;  // the square of a sine
    constexpr double kTiny = 1e-10;      // the square of a length, in terms of the longest one
    constexpr float kAside = 1e-3f;
    const auto squared = [](const Pointd& p) { return dot(p, p); };
    const auto longer = [&](const Vertex& vertex) {
        return std::max(squared(vertex.dPdu), squared(vertex.dPdv));
    };
    double longest = 0;
    for (int j = 0; j <= grid.fVSize; ++j) {
        for (int i = 0; i <= grid.fUSize; ++i)
            longest = std::max(longest, longer(grid.vertex(i, j)));
    }
    const auto inwards = [](float t) { return t < 0.5f ? t + kAside : t - kAside; };
    for (int j = 0; j <= grid.fVSize; ++j) {
        for (int i = 0; i <= grid.fUSize; ++i) {
            Vertex& vertex = grid.vertex(i, j);
            const double length = std::max(longer(vertex), kTiny * longest);
            if (squared(Pointd(vertex.dPdu) ^ Pointd(vertex.dPdv)) > kParallel * length * length)
                continue;
            float u = static_cast<float>(i) / static_cast<float>(grid.fUSize);
            float v = static_cast<float>(j) / static_cast<float>(grid.fVSize);
            if (grid.fTransposed) std::swap(u, v);
            Local aside = euclidean(evaluate(inwards(u), inwards(v)));
            vtransform(aside.dPdu, matrix());
            vtransform(aside.dPdv, matrix());
            vertex.dPdu = rounded(aside.dPdu);
            vertex.dPdv = rounded(aside.dPdv);
        }
    }
}

std::unique_ptr<Grid> Primitive::dice(const Dicing& dicing) const
{
    const int usteps = dicing.fUSteps, vsteps = dicing.fVSteps;
    auto grid = std::make_unique<Grid>(dicing.fUSteps, dicing.fVSteps, fCommon->fAttrib,
                                       transform(), fCommon->fSeq, flipped(), false, fArgs, fEdges);
    Columns columns;
    columns.u.reserve(static_cast<std::size_t>(usteps) + 1);
    for (int i = 0; i <= usteps; ++i) {
        columns.u.push_back(static_cast<float>(i) / static_cast<float>(usteps));
    }
    std::vector<Differential> row(columns.u.size());
    VertexPlacer placer(*grid, matrix(), dicing.frame.plain);
    for (int j = 0; j <= vsteps; ++j) {
        evaluateRow(columns, static_cast<float>(j) / static_cast<float>(vsteps), row.data());
        for (const Differential& at : row) {
            const auto& [P, dPdu, dPdv] = euclidean(at);
            placer.add(P, dPdu, dPdv);
        }
    }
    if (!placer.finish()) mendDerivatives(*grid);
    return grid;
}

}  // namespace zeb
