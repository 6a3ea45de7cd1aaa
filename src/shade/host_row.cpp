#include "shade/host_row.h"

#include <cmath>

#include "state/error.h"

namespace zeb
{

float* PlaneStore::take()
{
    if (!hasSpare()) {
        fMemory.push_back(makeArray<float>(kTogether * fSize + kLine));
        std::fill_n(fMemory.back().get(), kTogether * fSize + kLine, 0.0f);
        const auto address = reinterpret_cast<std::uintptr_t>(fMemory.back().get());
        const std::size_t past = address / sizeof(float) % kLine;
        fFirst.push_back(fMemory.back().get() + (kLine - past) % kLine);
        fLeft = kTogether;
    }
    return fFirst.back() + (kTogether - fLeft--) * fSize;
}

bool PlaneStore::contains(const float* plane) const
{
    for (const float* const first : fFirst) {
        const std::size_t taken = kTogether - (first == fFirst.back() ? fLeft : 0);
        const std::less<const float*> before;
        if (before(plane, first) || !before(plane, first + taken * fSize)) continue;
        return static_cast<std::size_t>(plane - first) % fSize == 0;
    }
    return false;
}

// While a function runs.
struct HostRow::UnderWay {
    UnderWay(const HostRow& of, const ZebRow& given)
        : row(&of), shown(&given), outer(std::exchange(fInnermost, this))
    {
    }
    ~UnderWay() { fInnermost = outer; }
    UnderWay(const UnderWay&) = delete;
    UnderWay& operator=(const UnderWay&) = delete;

    const HostRow* const row;
    const ZebRow* const shown;
    UnderWay* const outer;
    static thread_local UnderWay* fInnermost;
};

thread_local HostRow::UnderWay* HostRow::UnderWay::fInnermost = nullptr;

RowPoints::RowPoints(const GridPoints& points, const VertexPlace* places, std::size_t count)
    : areVertices(points.grid().fSmooth)
{
    all.reserve(count);
    for (std::size_t k = 0; k < count; ++k) {
        all.push_back({points.parameters(places[k]), points.vertex(places[k])});
    }
}

HostRow::HostRow(const GridPoints& grid, const RenderFrame& frame, const RowPoints& points)
    : fValues(grid),
      fGrid(grid.grid()),
      fFrame(frame),
      fPoints(points),
      fCount(points.all.size()),
      fSize((fCount + ShadingBlock::kMultiple - 1) / ShadingBlock::kMultiple *
            ShadingBlock::kMultiple),
      fKernel(frame.plain ? ShadingKernel() : shadingKernel()),
      fStore(fSize)
{
    fRow.count = static_cast<long>(fCount);
    for (auto* planes : {&fRow.P, &fRow.N, &fRow.Ng, &fRow.I, &fRow.dPdu, &fRow.dPdv, &fRow.Cs,
                         &fRow.Os, &fRow.Ci, &fRow.Oi}) {
        take(*planes);
    }
    for (float** plane : {&fRow.u, &fRow.v, &fRow.s, &fRow.t, &fRow.du, &fRow.dv}) {
        *plane = fStore.take();
    }
    findPoints();
    findParameters();
    orient();
}

HostRow::~HostRow() = default;

void HostRow::findPoints()
{
    for (std::size_t k = 0; k < fCount; ++k) {
        const Vertex& vertex = fPoints.all[k].vertex;
        put(fRow.P, k, vertex.P);
        put(fRow.dPdu, k, vertex.dPdu);
        put(fRow.dPdv, k, vertex.dPdv);
    }
    for (const auto* planes : {&fRow.P, &fRow.dPdu, &fRow.dPdv}) fill(*planes);
    if (fValues.hasNormals()) {
        findValues(fRow.N, true, [&](auto at) { return fValues.normal(at); });
    }
    findValues(fRow.Cs, fValues.hasColors(), [&](auto at) { return fValues.color(at); });
    findValues(fRow.Os, fValues.hasOpacities(), [&](auto at) { return fValues.opacity(at); });
    for (int k = 0; k < 3; ++k) std::copy_n(fRow.Os[k], fSize, fRow.Oi[k]);
}

// One value a point, or one for all of them.
template <class At>
void HostRow::findValues(Triple planes, bool varies, const At& at) const
{
    const std::size_t count = varies ? fCount : 1;
    for (std::size_t k = 0; k < count; ++k) put(planes, k, at(fPoints.all[k].at));
    for (int axis = 0; axis < 3; ++axis) {
        std::fill(planes[axis] + count, planes[axis] + fSize, planes[axis][count - 1]);
    }
}

// On the surface as a whole, and how far neighbours are apart on it.
void HostRow::findParameters()
{
    const SurfacePart& part = fGrid.fPart;
    const auto lerp = [](float a, float b, float t) { return (1 - t) * a + t * b; };
    for (std::size_t k = 0; k < fCount; ++k) {
        const auto [u, v] = fPoints.all[k].at;
        if (fGrid.fTriangular) {
            fRow.u[k] = barylerp(u, v, part.u[0], part.u[1], part.u[2]);
            fRow.v[k] = barylerp(u, v, part.v[0], part.v[1], part.v[2]);
        } else {
            fRow.u[k] = lerp(part.u[0], part.u[1], u);
            fRow.v[k] = lerp(part.v[0], part.v[2], v);
        }
    }
    fill(fRow.u);
    fill(fRow.v);
    findTexture(Quark::fS, fValues.attrib().textureS, fRow.s);
    findTexture(Quark::fT, fValues.attrib().textureT, fRow.t);
    const int usteps = fGrid.fTransposed ? fGrid.fVSize : fGrid.fUSize;
    const int vsteps = fGrid.fTransposed ? fGrid.fUSize : fGrid.fVSize;
    const auto apart = [&](const float(&corners)[4]) {
        return std::max(std::fabs(corners[1] - corners[0]) / static_cast<float>(usteps),
                        std::fabs(corners[2] - corners[0]) / static_cast<float>(vsteps));
    };
    std::fill_n(fRow.du, fSize, apart(part.u));
    std::fill_n(fRow.dv, fSize, apart(part.v));
    for (std::size_t k = 0; k < fPoints.spacing.size(); ++k) {
        const RowPoints::Spacing& spacing = fPoints.spacing[k];
        const auto around = [&](const float(&corners)[4]) {
            return std::max(std::fabs(corners[1] - corners[0]) * spacing.u,
                            std::fabs(corners[2] - corners[0]) * spacing.v);
        };
        fRow.du[k] = around(part.u);
        fRow.dv[k] = around(part.v);
    }
}

void HostRow::findTexture(unsigned short token, const float (&corners)[4], float* plane) const
{
    const ArgAssoc* const given = argument(token, kFloat);
    for (std::size_t k = 0; k < fCount; ++k) {
        plane[k] =
            given ? GridPoints::interpolated<float>(
                        *given, fPoints.all[k].at,
                        [&](long corner) { return given->words()[corner]; })
                  : bilerp(fRow.u[k], fRow.v[k], corners[0], corners[1], corners[2], corners[3]);
    }
    fill(plane);
}

// Normals, the way from the eye, and derivatives in the parameters of the surface.
void HostRow::orient()
{
    const bool perspective = fFrame.option.perspective;
    if (fKernel) {
        fKernel.orient({perspective, fGrid.fFlip, static_cast<int>(fSize), fRow.P, fRow.dPdu,
                        fRow.dPdv, fRow.I, fRow.Ng});
    } else {
        for (std::size_t k = 0; k < fSize; ++k) {
            const Point P = pointAt(fRow.P, k);
            put(fRow.I, k, P - (perspective ? gOrigin : Point(P.x, P.y, 0)));
            const Point Ng = rounded(Pointd(pointAt(fRow.dPdu, k)) ^ Pointd(pointAt(fRow.dPdv, k)));
            put(fRow.Ng, k, fGrid.fFlip ? -Ng : Ng);
        }
    }
    if (!fValues.hasNormals()) {
        for (int axis = 0; axis < 3; ++axis) std::copy_n(fRow.Ng[axis], fSize, fRow.N[axis]);
    }
    const float mean = fPoints.areVertices ? 1.0f : 0.25f;
    const auto perUnit = [&](float from, float to) {
        return fGrid.fTriangular || from == to ? mean : mean / (to - from);
    };
    const float u = perUnit(fGrid.fPart.u[0], fGrid.fPart.u[1]);
    const float v = perUnit(fGrid.fPart.v[0], fGrid.fPart.v[2]);
    for (int axis = 0; axis < 3; ++axis) {
        for (std::size_t k = 0; k < fSize; ++k) fRow.dPdu[axis][k] *= u;
        for (std::size_t k = 0; k < fSize; ++k) fRow.dPdv[axis][k] *= v;
    }
}

float* HostRow::sparePlane(const ZebRow* row)
{
    const UnderWay* const innermost = UnderWay::fInnermost;
    const bool isSpare = innermost && innermost->shown == row && innermost->row->fStore.hasSpare();
    return isSpare ? innermost->row->plane() : nullptr;
}

HostRow* HostRow::underWay(const ZebRow* row)
{
    const UnderWay* const innermost = UnderWay::fInnermost;
    if (innermost && innermost->shown == row) return const_cast<HostRow*>(innermost->row);
    error(kState, kError, nullptr);
    return nullptr;
}

bool HostRow::owns(Triple planes, long count) const
{
    bool good = planes != nullptr;
    for (long k = 0; good && k < count; ++k) good = fStore.contains(planes[k]);
    if (!good) error(kRange, kError, "not a plane of the row");
    return good;
}

bool HostRow::owns(const float* plane) const
{
    if (fStore.contains(plane)) return true;
    error(kRange, kError, "not a plane of the row");
    return false;
}

void HostRow::call(const HostShader& shader, ZebRow& row) const
{
    const UnderWay scope(*this, row);
    const HostShader* const outer = std::exchange(fUnderWay, &shader);
    shader.shade(row);
    fUnderWay = outer;
}

bool HostRow::mend(Triple planes, float other) const
{
    bool good = true;
    for (std::size_t k = 0; k < fCount; ++k) {
        const float x = planes[0][k], y = planes[1][k], z = planes[2][k];
        if (x - x + (y - y) + (z - z) == 0) continue;
        good = false;
        put(planes, k, Color(other, other, other));
    }
    return good;
}

bool HostRow::mendLight(const Planes& planes, bool isAmbient) const
{
    bool good = true;
    for (std::size_t k = 0; k < fCount; ++k) {
        if (isAmbient) put(planes.L, k, gOrigin);
        const Point L = pointAt(planes.L, k);
        const Color Cl = colorAt(planes.Cl, k);
        const bool numbers = (L.x - L.x) + (L.y - L.y) + (L.z - L.z) == 0 &&
                             (Cl.r - Cl.r) + (Cl.g - Cl.g) + (Cl.b - Cl.b) == 0;
        if (numbers && (isAmbient || L != gOrigin)) continue;
        good &= numbers;
        put(planes.L, k, gOrigin);
        put(planes.Cl, k, gBlack);
    }
    return mend(planes.Ol, 1) && good;
}

// The function is given a copy: what it does to the struct itself is without effect.
void HostRow::shadeSurface(const HostShader& shader)
{
    ZebRow row = fRow;
    call(shader, row);
    bool good = mend(fRow.Ci, 0);
    if (shader.setsOpacity()) good &= mend(fRow.Oi, 1);
    if (!good) shader.tellNoNumber();
    // What was not its to set.
    if (shader.setsOpacity() || !fValues.attrib().atmosphereShader) return;
    findValues(fRow.Oi, fValues.hasOpacities(), [&](auto at) { return fValues.opacity(at); });
}

void HostRow::shadeVolume(const HostShader& shader)
{
    ZebRow row = fRow;
    float* opacities[3];
    take(opacities);
    for (int k = 0; k < 3; ++k) {
        std::copy_n(fRow.Oi[k], fSize, opacities[k]);
        row.Oi[k] = opacities[k];
    }
    call(shader, row);
    if (!mend(fRow.Ci, 0)) shader.tellNoNumber();
}

void HostRow::movePoints(const HostShader& shader, const MostMoved& most)
{
    ZebRow row = fRow;
    float* moved[3];
    take(moved);
    for (int k = 0; k < 3; ++k) {
        std::copy_n(fRow.P[k], fSize, moved[k]);
        row.P[k] = moved[k];
        row.Ci[k] = row.Oi[k] = nullptr;
    }
    fWithoutLight = "a displacement cannot ask for light";
    call(shader, row);
    fWithoutLight = nullptr;
    constexpr double kClosest = 1e-3;  // to the plane of the eye, of what it was before
    const auto w = [this](const Pointd& p) { return (Pointwd(p) * fFrame.cameraToRaster).w; };
    Matrix toObject = fGrid.fTransform->matrix();
    const bool knowsObject = determinant(toObject) != 0 && invert(&toObject);
    const double farthest = std::max(double{knowsObject ? most.inObject : most.inCamera}, 0.0);
    bool good = true, near = true;
    for (std::size_t k = 0; k < fCount; ++k) {
        const Pointd from(pointAt(fRow.P, k));
        Pointd to(pointAt(moved, k));
        const Pointd way = to - from;
        Pointd own = way;
        if (knowsObject) vtransform(own, toObject);
        const double length = std::sqrt(dot(own, own));
        if (!(length - length == 0)) {
            good = false;
            continue;
        }
        if (length > farthest) {
            near = near && length <= farthest * (1 + 1e-4);  // but for rounding
            to = from + way * (farthest / length);
        }
        if (w(to) > kClosest * w(from)) put(fRow.P, k, rounded(to));
    }
    if (!good) shader.tellNoNumber();
    if (!near) shader.tellTooFar();
}

const RowLights::Planes& HostRow::planes(const Light& light) const
{
    for (const auto& known : fLightPlanes) {
        if (known->light == &light) return known->planes;
    }
    auto made = std::make_unique<LightPlanes>();
    made->light = &light;
    ZebRow row = fRow;
    for (int k = 0; k < 3; ++k) {
        row.Ci[k] = row.Oi[k] = nullptr;
        row.L[k] = made->planes.L[k] = fStore.take();
        row.Cl[k] = made->planes.Cl[k] = fStore.take();
        row.Ol[k] = made->planes.Ol[k] = fStore.take();
        std::fill_n(row.Ol[k], fSize, 1.0f);
    }
    const HostShader& shader = *light.host();
    fWithoutLight = "a light cannot ask for light";
    call(shader, row);
    fWithoutLight = nullptr;
    const Planes& planes = made->planes;
    if (!mendLight(planes, light.isambient())) shader.tellNoNumber();
    fill(planes.L);
    fill(planes.Cl);
    fill(planes.Ol);
    fLightPlanes.push_back(std::move(made));
    return fLightPlanes.back()->planes;
}

const HostRow::LightRecords* HostRow::lightRecords() const
{
    if (fDescribed) return fAllKnown ? &fLightRecords : nullptr;
    fDescribed = true;
    fLightRecords.reserve(8);  // more than most have
    for (const auto& light : fValues.attrib().lights) {
        LightRecord& record = fLightRecords.emplace_back();
        if (light->host()) {
            const Planes& given = planes(*light);
            record.kind = light->isambient() ? LightRecord::kGivenAmbient : LightRecord::kGiven;
            std::copy_n(given.L, 3, record.L);
            std::copy_n(given.Cl, 3, record.Cl);
        } else if (!light->describe(record)) {
            return nullptr;
        }
    }
    fAllKnown = true;
    return &fLightRecords;
}

float* HostRow::variable(unsigned short token, long component) const
{
    if (const auto* const vertex = fGrid.fPieceValues.find(token)) {
        return vertexVariable(*vertex, component);
    }
    const ArgAssoc* const given = argument(token, kTypeNone);
    if (!given || !given->words() || given->type() == kInteger) return nullptr;
    const long width = given->width();
    if (component < 0 || component >= width) return nullptr;
    float* const result = fStore.take();
    for (std::size_t k = 0; k < fCount; ++k) {
        result[k] = GridPoints::interpolated<float>(*given, fPoints.all[k].at, [&](long corner) {
            return given->words()[corner * width + component];
        });
    }
    fill(result);
    return result;
}

// Of the control points, interpolated as these are.
float* HostRow::vertexVariable(const ControlForms::Variable& variable, long component) const
{
    if (component < 0 || component >= variable.width) return nullptr;
    const bool isPoint = Quark::getType(variable.token) == kPointType;
    float* const result = fStore.take();
    for (std::size_t k = 0; k < fCount; ++k) {
        const auto [u, v] = fPoints.all[k].at;
        Pointd value = fGrid.fPieceValues.at(variable.form, double{u}, double{v});
        if (isPoint) value = value * fGrid.fTransform->matrix();
        const double parts[3] = {value.x, value.y, value.z};
        result[k] = static_cast<float>(parts[component]);
    }
    fill(result);
    return result;
}

const int* HostRow::integers(unsigned short token) const
{
    const ArgAssoc* const given = argument(token, kInteger);
    const bool isOne = given && given->storage() == kUniform;
    return isOne ? reinterpret_cast<const int*>(given->words()) : nullptr;
}

const char* HostRow::string(unsigned short token) const
{
    const ArgAssoc* const given = argument(token, kString);
    return given && given->string() ? given->string()->text() : nullptr;
}

const ArgAssoc* HostRow::argument(unsigned short token, short type) const
{
    const ArgAssoc* given = fGrid.fOtherArgs.find(token);
    if (!given) given = fGrid.fVertexArgs.find(token);
    return given && (type == kTypeNone || given->type() == type) ? given : nullptr;
}

// Where a point is alone one way, what its neighbour the other way has.
void HostRow::differences(const float* values, float* along1, float* along2) const
{
    const auto difference = [&](std::size_t before, std::size_t here, std::size_t after) {
        const float d = values[after] - values[before];
        return before != here && after != here ? 0.5f * d : d;
    };
    eachPlace([&](std::size_t k, const Neighbours& near) {
        const bool alone1 = near.before == near.after, alone2 = near.above == near.below;
        along1[k] = alone1 ? (near.above != k ? along1[near.above] : 0)
                           : difference(near.before, near.here, near.after);
        along2[k] = alone2 ? (near.before != k ? along2[near.before] : 0)
                           : difference(near.above, near.here, near.below);
    });
    for (std::size_t k = 0; k < fPoints.spacing.size(); ++k) {
        along1[k] *= fPoints.spacing[k].scale1;
        along2[k] *= fPoints.spacing[k].scale2;
    }
    fill(along1);
    fill(along2);
}

// Where the differences tell nothing, as at a pole, a neighbour's.
void HostRow::normals(Triple positions, Triple result) const
{
    float *along1[3], *along2[3];
    take(along1);
    take(along2);
    for (int axis = 0; axis < 3; ++axis) differences(positions[axis], along1[axis], along2[axis]);
    const bool turned = fGrid.fFlip != fGrid.fTransposed;
    constexpr double kNothing = 1e-8;
    std::vector<bool> known(fCount);
    for (std::size_t k = 0; k < fCount; ++k) {
        const Pointd a(pointAt(along1, k)), b(pointAt(along2, k)), N = a ^ b;
        const double size = dot(a, a) + dot(b, b);
        known[k] = dot(N, N) > kNothing * size * size;
        if (known[k]) put(result, k, rounded(turned ? N * -1 : N));
    }
    eachPlace([&](std::size_t k, const Neighbours& near) {
        if (known[k]) return;
        for (const std::size_t other : {near.below, near.above, near.after, near.before}) {
            if (other == k || !known[other]) continue;
            put(result, k, pointAt(result, other));
            return;
        }
        put(result, k, pointAt(fRow.Ng, k));
    });
    fill(result);
}

}  // namespace zeb
