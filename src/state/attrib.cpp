#include "state/attrib.h"

#include "state/args.h"
#include "state/error.h"
#include "state/option.h"
#include "state/quark.h"
#include "state/state.h"
#include "state/upcalls.h"
#include "util/host_array.h"
#include "util/number.h"

namespace zeb
{

Attrib* gAttrib = nullptr;

namespace
{

constexpr unsigned short kAttribBlocks = kUsualBlocks | kMotionBlock;

bool legal() { return verify(kAttribBlocks, kAttribState) != 0; }

// A colour of the host's, if it is one.
bool readColor(const float* samples, Color& color)
{
    const long count = gOption->colorSpace.samples;
    if (samples && !(samples = HostArrays::read("color", samples, count))) return false;
    if (!samples || !allFinite(samples, static_cast<std::size_t>(count))) {
        error(kRange, kError, samples ? "color is not finite" : "color is null");
        return false;
    }
    color = Color(samples);
    return true;
}

// Numbers in reports say little to those who think in names.
void tellUnknown(unsigned short token, const char* what)
{
    const char* const name = Quark::getString(token);
    if (name && infosHeard()) error(kRange, kInfo, "\"%s\" is not %s", name, what);
}

// The parameter list of a shader, where every class has one value.
bool readArgs(long n, const unsigned short* tokens, void* const* values, ArgList& args)
{
    const ArgCounts single;
    if (!ArgList::usable(n, tokens, values, single)) return false;
    args.init(n, tokens, values, single);
    return true;
}

// Null if it is refused: then it is let go.
std::shared_ptr<const HostShader> hostShader(const ZebShader* shader)
{
    constexpr long kFlags = ZEB_SHADE_ANYWHERE | ZEB_SHADE_OPACITY | ZEB_SHADE_AMBIENT;
    if (!shader) {
        if (legal()) error(kRange, kError, "shader is null");
        return nullptr;
    }
    auto made = std::make_shared<const HostShader>(*shader, gTransform->snapshot());
    if (!legal()) return nullptr;
    if (!shader->shade || (shader->flags & ~kFlags)) {
        error(kRange, kError, shader->shade ? "unknown flags %ld" : "shader has no function",
              shader->flags);
        return nullptr;
    }
    return made;
}

}  // namespace

void Attrib::init()
{
    *this = Attrib();
    surfaceShader = upcall::makeSurface(kQPlastic, gTransform->snapshot(), ArgList());
}

std::shared_ptr<const Attrib> Attrib::snapshot()
{
    if (fChanged || !fSnapshot) {
        fSnapshot.reset();
        auto snapshot = std::make_shared<Attrib>(*this);
        upcall::findHostShading(*snapshot);
        fSnapshot = std::move(snapshot);
        fChanged = false;
    }
    return fSnapshot;
}

void Attrib::color(const float* samples)
{
    Color c;
    if (!legal() || !readColor(samples, c)) return;
    surfaceColor = c;
    fChanged = true;
}

void Attrib::opacity(const float* samples)
{
    Color c;
    if (!legal() || !readColor(samples, c)) return;
    surfaceOpacity = c;
    fChanged = true;
}

void Attrib::textureCoordinates(float s1, float t1, float s2, float t2, float s3, float t3,
                                float s4, float t4)
{
    if (!legal() || !finiteArguments({{"s1", s1},
                                      {"t1", t1},
                                      {"s2", s2},
                                      {"t2", t2},
                                      {"s3", s3},
                                      {"t3", t3},
                                      {"s4", s4},
                                      {"t4", t4}})) {
        return;
    }
    const float s[4] = {s1, s2, s3, s4}, t[4] = {t1, t2, t3, t4};
    for (int i = 0; i < 4; ++i) {
        textureS[i] = s[i];
        textureT[i] = t[i];
    }
    fChanged = true;
}

const void* Attrib::lightSource(unsigned short name, long n, const unsigned short* tokens,
                                void* const* values)
{
    ArgList args;
    if (!legal() || !readArgs(n, tokens, values, args)) return nullptr;
    std::shared_ptr<Light> light =
        upcall::makeLight(name, gTransform->snapshot(), args, gOption->quirks);
    if (!light) {
        tellUnknown(name, "a light source");
        error(kRange, kError, "unknown light source %ld", static_cast<long>(name));
        return nullptr;
    }
    switchOn(light);
    if (infosHeard()) upcall::tellUnread(*light, args);
    return light.get();
}

const void* Attrib::switchOn(std::shared_ptr<Light> light)
{
    const void* const handle = light.get();
    gState->own(light);
    lights.add(std::move(light));
    fChanged = true;
    return handle;
}

const void* Attrib::areaLightSource(unsigned short, long n, const unsigned short* tokens,
                                    void* const* values)
{
    return lightSource(kQOmni, n, tokens, values);
}

void Attrib::lightSwitch(const void* handle, short on)
{
    if (!legal()) return;
    std::shared_ptr<Light> light = gState->liveLight(handle);
    if (!light) {
        error(kRange, kError, "light handle %p is not live", handle);
        return;
    }
    if (!on) {
        lights.detach(light);
    } else if (!lights.find(light)) {
        lights.add(std::move(light));
    }
    fChanged = true;
}

void Attrib::surface(unsigned short name, long n, const unsigned short* tokens, void* const* values)
{
    ArgList args;
    if (!legal() || !readArgs(n, tokens, values, args)) return;
    const std::shared_ptr<Surface> surface =
        upcall::makeSurface(name, gTransform->snapshot(), args);
    surfaceShader = surface;
    fChanged = true;
    if (!infosHeard()) return;
    if (name != Quark::find(upcall::surfaceName(*surface))) tellUnknown(name, "a surface");
    upcall::tellUnread(*surface, args);
}

void Attrib::atmosphere(unsigned short name, long n, const unsigned short* tokens,
                        void* const* values)
{
    ArgList args;
    if (!legal() || !readArgs(n, tokens, values, args)) return;
    std::shared_ptr<Volume> volume = upcall::makeVolume(name, gTransform->snapshot(), args);
    atmosphereShader = volume;
    fChanged = true;
    if (!volume) {
        tellUnknown(name, "an atmosphere");
        error(kRange, kError, "unknown atmosphere %ld", static_cast<long>(name));
    } else if (infosHeard()) {
        upcall::tellUnread(*volume, args);
    }
}

void Attrib::customSurface(const ZebShader* shader)
{
    const auto made = hostShader(shader);
    if (!made) return;
    surfaceShader = upcall::makeSurface(made);
    fChanged = true;
}

void Attrib::customAtmosphere(const ZebShader* shader)
{
    const auto made = shader ? hostShader(shader) : nullptr;
    if (shader ? !made : !legal()) return;
    atmosphereShader = made ? upcall::makeVolume(made) : nullptr;
    fChanged = true;
}

const void* Attrib::customLight(const ZebShader* shader)
{
    const auto made = hostShader(shader);
    return made ? switchOn(upcall::makeLight(made)) : nullptr;
}

void Attrib::customDisplacement(const ZebShader* shader)
{
    auto made = shader ? hostShader(shader) : nullptr;
    if (shader ? !made : !legal()) return;
    displacementShader = std::move(made);
    fChanged = true;
}

void Attrib::interior(unsigned short, long, const unsigned short*, void* const*) { legal(); }
void Attrib::exterior(unsigned short, long, const unsigned short*, void* const*) { legal(); }
void Attrib::displacement(unsigned short, long, const unsigned short*, void* const*) { legal(); }
void Attrib::trimCurve() { legal(); }

void Attrib::shadingRate(float rate)
{
    if (!legal() || !finiteArguments(NamedValue{"shading rate", rate})) return;
    if (rate < 1e-10) {
        error(kRange, kError, "shading rate %g too small", double{rate});
        return;
    }
    micropolygonSide = std::sqrt(rate);
    fChanged = true;
}

void Attrib::shadingModel(short model)
{
    if (!legal()) return;
    if (model != kConstantShading && model != kSmoothShading) {
        error(kRange, kError, "unknown shading interpolation %ld", static_cast<long>(model));
        return;
    }
    interpolation = static_cast<unsigned short>(model);
    fChanged = true;
}

void Attrib::matteObject(short on)
{
    if (!legal()) return;
    matte = on != 0;
    fChanged = true;
}

void Attrib::bound(const float* b)
{
    if (!legal()) return;
    if (b && !(b = HostArrays::read("bound", b, 6))) return;
    if (!b || !allFinite(b, 6)) {
        error(kRange, kError, b ? "bound is not finite" : "bound is null");
        return;
    }
    objectBound = Bound(b);
    fChanged = true;
}

void Attrib::detail(const float* b) { bound(b); }

void Attrib::detailRange(float minvis, float lowtran, float uptran, float maxvis)
{
    if (!legal()) return;
    if (!(minvis >= 0 && lowtran >= 0 && uptran >= 0 && maxvis >= 0)) {
        error(kRange, kError, "negative number encountered");
        return;
    }
    if (lowtran < minvis || uptran < lowtran || maxvis < uptran) {
        error(kRange, kError, "arguments must increase in value");
        return;
    }
    const float limits[4] = {minvis, lowtran, uptran, maxvis};
    std::copy(limits, limits + 4, detailLimits);
    fChanged = true;
}

void Attrib::flatness(float value)
{
    if (!legal() || !finiteArguments(NamedValue{"flatness", value})) return;
    if (value < 1e-10) {
        error(kRange, kError, "flatness must be greater than 0");
        return;
    }
    flatnessLimit = value;
    fChanged = true;
}

void Attrib::orientation(short o)
{
    if (!legal()) return;
    const bool mirrored = determinant(gTransform->matrix()) < 0;
    switch (o) {
        case kOutside:
        case kInside:
            orientationSide = static_cast<unsigned short>(o);
            break;
        case ZEB_LEFT_HANDED:
            orientationSide = mirrored ? kOutside : kInside;
            break;
        case ZEB_RIGHT_HANDED:
            orientationSide = mirrored ? kInside : kOutside;
            break;
        case ZEB_REVERSE:
            if (orientationSide != kOutside && orientationSide != kInside) {
                error(kBug, kError, "unknown orientation");
                return;
            }
            orientationSide = orientationSide == kOutside ? kInside : kOutside;
            break;
        default:
            error(kRange, kError, "unknown orientation %ld", static_cast<long>(o));
            return;
    }
    fChanged = true;
}

void Attrib::backface(short value)
{
    if (!legal()) return;
    sides = value;
    fChanged = true;
}

void Attrib::setBasis(const Matrix& matrix, long step, short application)
{
    if (application < ZEB_APPLY_U || application > ZEB_APPLY_BOTH) {
        error(kRange, kError, "unknown basis application %d", application);
        return;
    }
    if (application != ZEB_APPLY_V) {
        ubasis = matrix;
        ustep = step;
    }
    if (application != ZEB_APPLY_U) {
        vbasis = matrix;
        vstep = step;
    }
    fChanged = true;
}

void Attrib::basis(short basis, short application)
{
    if (!legal()) return;
    switch (basis) {
        case ZEB_BASIS_BEZIER:
            setBasis(zebBezierBasis, 3, application);
            break;
        case ZEB_BASIS_BSPLINE:
            setBasis(zebBSplineBasis, 1, application);
            break;
        case ZEB_BASIS_CATMULL_ROM:
            setBasis(zebCatmullRomBasis, 1, application);
            break;
        case ZEB_BASIS_HERMITE:
            setBasis(zebHermiteBasis, 2, application);
            break;
        case ZEB_BASIS_POWER:
            setBasis(zebPowerBasis, 4, application);
            break;
        default:
            error(kRange, kError, "unknown bicubic patch basis %d", basis);
    }
}

void Attrib::customBasis(short application, const float (*m)[4], long step)
{
    if (!legal()) return;
    if (m && !(m = HostArrays::readMatrix(m))) return;
    if (!m || !Matrix(m).finite()) {
        error(kRange, kError, m ? "basis matrix is not finite" : "basis matrix is null");
        return;
    }
    if (step < 1) {
        error(kRange, kError, "basis step %ld must be at least 1", step);
        return;
    }
    setBasis(Matrix(m), step, application);
}

void Attrib::boundDisplacement(float amount)
{
    if (!legal() || !finiteArguments(NamedValue{"displacement bound", amount})) return;
    displacementBound = amount;
    fChanged = true;
}

void Attrib::objectName(const char* name)
{
    if (!legal()) return;
    object = name;
    fChanged = true;
}

void Attrib::groupName(const char* name)
{
    if (!legal()) return;
    group = name;
    fChanged = true;
}

}  // namespace zeb
