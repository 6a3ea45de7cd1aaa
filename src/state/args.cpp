#include "state/args.h"

#include <cstring>
#include <string>

#include "math/shading_math.h"
#include "state/error.h"
#include "state/quark.h"
#include "util/host_array.h"
#include "util/number.h"

namespace zeb
{

namespace
{

// There are no more names than this.
constexpr long kMaxParameters = 65535;

unsigned wordsOf(short type)
{
    switch (type) {
        case kFloat:
        case kInteger:
            return 1;
        case kPair:
            return 2;
        case kPointType:
        case kColorType:
            return 3;
        case kPointwType:
            return 4;
        default:
            return 0;
    }
}

long countOf(short storage, const ArgCounts& counts)
{
    switch (storage) {
        case kUniform:
            return counts.uniform;
        case kVarying:
            return counts.varying;
        case kVertexClass:
            return counts.vertex;
        default:
            return 1;
    }
}

// Floats a host passes for one element.
long hostWords(short type)
{
    return type == kColorType ? currentColorSpace().samples : static_cast<long>(wordsOf(type));
}

bool interpolates(short type) { return type != kInteger && type != kString; }

// Colours of control points are those of corners, where a surface has not taken them to its own.
bool isAtCorners(const ArgAssoc& assoc)
{
    return assoc.storage() == kVarying || Quark::isVertexColor(assoc.token);
}

std::shared_ptr<float[]> makeWords(std::size_t count)
{
    return std::allocate_shared_for_overwrite<float[]>(PoolAllocator<float>(), count);
}

bool isNormal(unsigned short token) { return token == kQNormal || token == kQPlane; }

}  // namespace

ArgAssoc::ArgAssoc(unsigned short name, const void* value, const ArgCounts& counts) : token(name)
{
    const short type = Quark::getType(token);
    if (type == kString) {
        fCount = 1;
        fString = std::make_shared<const String>(static_cast<const char*>(value));
        return;
    }
    fWidth = wordsOf(type);
    if (!fWidth) return;
    fCount = static_cast<unsigned>(countOf(Quark::getClass(token), counts));
    fWords = makeWords(fCount * std::size_t{fWidth});
    const float* const samples =
        HostArrays::dense(static_cast<const float*>(value), hostWords(type));
    if (type != kColorType) {
        std::memcpy(fWords.get(), samples, fCount * std::size_t{fWidth} * sizeof(float));
        return;
    }
    const long step = hostWords(type);
    for (unsigned i = 0; i < fCount; ++i) {
        const Color c(samples + i * step);
        float* words = &fWords[3 * std::size_t{i}];
        words[0] = c.r;
        words[1] = c.g;
        words[2] = c.b;
    }
}

ArgAssoc::ArgAssoc(const ArgAssoc& like, long count)
    : token(like.token),
      fCount(static_cast<unsigned>(count)),
      fWidth(like.fWidth),
      fString(like.fString)
{
    if (fWidth) fWords = makeWords(fCount * std::size_t{fWidth});
}

// Sets one element to evaluate(a, b, c, d) of the corners' words; of three corners, d completes the
// parallelogram.
template <class Evaluate>
void ArgAssoc::interpolate(const ArgAssoc& from, long corner, const Evaluate& evaluate)
{
    for (unsigned k = 0; k < fWidth; ++k) {
        const float* w = from.fWords.get() + k;
        const float a = w[0], b = w[fWidth], c = w[2 * fWidth];
        fWords[corner * fWidth + k] =
            evaluate(a, b, c, from.fCount < 4 ? c + b - a : w[3 * fWidth]);
    }
}

ArgAssoc::ArgAssoc(float umin, float umax, float vmin, float vmax, const ArgAssoc& from)
    : ArgAssoc(from)
{
    if (!interpolates(type()) || !fWords || fCount < 3) return;
    *this = ArgAssoc(from, 4);
    const float us[4] = {umin, umax, umin, umax};
    const float vs[4] = {vmin, vmin, vmax, vmax};
    for (long i = 0; i < 4; ++i) {
        interpolate(from, i, [&](float a, float b, float c, float d) {
            return zeb::bilerp(us[i], vs[i], a, b, c, d);
        });
    }
}

ArgAssoc::ArgAssoc(const float (&uv)[6], const ArgAssoc& from) : ArgAssoc(from)
{
    if (!interpolates(type()) || !fWords || fCount < 3) return;
    *this = ArgAssoc(from, 3);
    for (long i = 0; i < 3; ++i) {
        interpolate(from, i, [&](float a, float b, float c, float) {
            return zeb::barylerp(uv[2 * i], uv[2 * i + 1], a, b, c);
        });
    }
}

ArgAssoc::ArgAssoc(long n, const long* indices, const ArgAssoc& from) : ArgAssoc(from, n)
{
    if (!fWords) fCount = from.fCount;
    for (long i = 0; fWords && i < n; ++i) {
        std::memcpy(&fWords[i * static_cast<long>(fWidth)],
                    &from.fWords[indices[i] * static_cast<long>(fWidth)], fWidth * sizeof(float));
    }
}

short ArgAssoc::storage() const { return Quark::getClass(token); }
short ArgAssoc::type() const { return Quark::getType(token); }

Point ArgAssoc::point(long i) const
{
    const float* w = &fWords[3 * i];
    return {w[0], w[1], w[2]};
}

Color ArgAssoc::color(long i) const
{
    const Point p = point(i);
    return {p.x, p.y, p.z};
}

void ArgAssoc::project(const Matrix& matrix, bool flip)
{
    if (type() != kPointType) return;
    const std::shared_ptr<float[]> words = makeWords(3 * std::size_t{fCount});
    const Matrix normals = invtranspose(matrix);
    for (unsigned i = 0; i < fCount; ++i) {
        Point p = point(i);
        if (isNormal(token)) {
            vtransform(p, normals);
            if (flip) p = -p;
        } else {
            p *= matrix;
        }
        float* w = &words[3 * std::size_t{i}];
        w[0] = p.x;
        w[1] = p.y;
        w[2] = p.z;
    }
    fWords = words;
}

bool ArgList::usable(long n, const unsigned short* tokens, void* const* values,
                     const ArgCounts& counts)
{
    if (n < 0 || n > kMaxParameters || (n > 0 && (!tokens || !values))) {
        error(kRange, kError, "a list of %ld parameters cannot be read", n);
        return false;
    }
    if (!HostArrays::readInPlace("tokens", tokens, n, sizeof *tokens) ||
        !HostArrays::readInPlace("values", values, n, sizeof *values)) {
        return false;
    }
    for (long i = 0; i < n; ++i) {
        const short type = Quark::getType(tokens[i]);
        if (type == kTypeNone || type == kString) continue;
        if (!values[i]) {
            error(kRange, kError, "\"%s\" has no values", Quark::getString(tokens[i]));
            return false;
        }
        const long count = countOf(Quark::getClass(tokens[i]), counts), width = hostWords(type);
        const float* v = HostArrays::read(Quark::getString(tokens[i]),
                                          static_cast<const float*>(values[i]), count, width);
        if (!v) return false;
        if (type == kInteger || allFinite(v, static_cast<std::size_t>(count * width))) continue;
        while (isFinite(*v)) ++v;
        error(kRange, kError, "\"%s\" has the value %g", Quark::getString(tokens[i]),
              static_cast<double>(*v));
        return false;
    }
    return true;
}

void ArgList::init(long n, const unsigned short* tokens, void* const* values,
                   const ArgCounts& counts)
{
    for (long i = n - 1; i >= 0; --i) {
        if (tokens[i]) fList.add(ArgAssoc(tokens[i], values[i], counts));
    }
}

void ArgList::init(const ArgList& other) { fList = other.fList; }

void ArgList::project(const Matrix& matrix, bool flip)
{
    for (ArgAssoc& assoc : fList) assoc.project(matrix, flip);
}

void ArgList::split(float umin, float umax, float vmin, float vmax, const ArgList& from)
{
    for (const ArgAssoc& assoc : from) {
        fList.add(isAtCorners(assoc) ? ArgAssoc(umin, umax, vmin, vmax, assoc) : assoc);
    }
}

// A polygon's vertices are its corners: vertex variables go the way of varying ones.
void ArgList::split(const float (&uv)[6], const ArgList& from)
{
    for (const ArgAssoc& assoc : from) {
        fList.add(assoc.storage() >= kVarying ? ArgAssoc(uv, assoc) : assoc);
    }
}

void ArgList::split(long n, const long* indices, const ArgList& from, long face)
{
    for (const ArgAssoc& assoc : from) {
        const short storage = assoc.storage();
        if (storage >= kVarying) {
            fList.add(ArgAssoc(n, indices, assoc));
        } else if (storage == kUniform && assoc.count() > 1) {
            fList.add(ArgAssoc(1, &face, assoc));
        } else {
            fList.add(assoc);
        }
    }
}

const ArgAssoc* ArgList::find(unsigned short token) const
{
    for (const ArgAssoc& assoc : fList) {
        if (assoc.token == token) return &assoc;
    }
    return nullptr;
}

void ArgList::detach(unsigned short token)
{
    while (const ArgAssoc* assoc = find(token)) fList.detach(*assoc);
}

void ParmAssoc::override(const ArgAssoc& from)
{
    if (from.string()) {
        *static_cast<String*>(value) = *from.string();
    } else if (from.count() > 0) {
        std::memcpy(value, from.words(), wordsOf(Quark::getType(token)) * sizeof(float));
    }
}

template <class Evaluate>
void ParmAssoc::interpolate(const ArgAssoc& corners, const Evaluate& evaluate)
{
    const short type = Quark::getType(token);
    if (!interpolates(type)) {
        error(kBug, kError, "cannot interpolate integers nor strings");
        return;
    }
    const unsigned width = wordsOf(type);
    for (unsigned k = 0; k < width; ++k) {
        static_cast<float*>(value)[k] = evaluate(corners.words() + k, width);
    }
}

void ParmAssoc::bilerp(float u, float v, const ArgAssoc& corners)
{
    interpolate(corners, [=](const float* w, unsigned n) {
        return zeb::bilerp(u, v, w[0], w[n], w[2 * n], w[3 * n]);
    });
}

void ParmAssoc::barylerp(float u, float v, const ArgAssoc& corners)
{
    interpolate(corners, [=](const float* w, unsigned n) {
        return zeb::barylerp(u, v, w[0], w[n], w[2 * n]);
    });
}

void ParmList::init(const ArgList& declared)
{
    for (const ArgAssoc& assoc : declared) {
        if (ParmAssoc* parm = find(assoc.token)) parm->override(assoc);
    }
}

void ParmList::override(const ArgList& prim)
{
    for (const ArgAssoc& assoc : prim) {
        if (assoc.storage() != kUniform) continue;
        if (ParmAssoc* parm = find(assoc.token)) parm->override(assoc);
    }
}

void ParmList::bilerp(float u, float v, const ArgList& prim)
{
    for (const ArgAssoc& assoc : prim) {
        if (assoc.storage() != kVarying) continue;
        ParmAssoc* parm = find(assoc.token);
        if (!parm) continue;
        if (assoc.count() < 4) {
            parm->barylerp(u, v, assoc);
        } else {
            parm->bilerp(u, v, assoc);
        }
    }
}

bool ParmList::names(const ArgList& prim) const
{
    for (const ArgAssoc& assoc : prim) {
        if (has(assoc.token)) return true;
    }
    return false;
}

namespace
{

void tellMissing(std::initializer_list<unsigned short> required)
{
    std::string names;
    for (const unsigned short token : required) {
        names += names.empty() ? "\"" : ", \"";
        names += Quark::getString(token);
        names += '"';
    }
    error(kMissing, kInfo, required.size() == 1 ? "%s is not given" : "none of %s is given",
          names.c_str());
}

}  // namespace

short verify(long n, const unsigned short* tokens, std::initializer_list<unsigned short> required)
{
    unsigned count = 0;
    for (long i = 0; i < n; ++i) {
        for (const unsigned short token : required) count += tokens[i] == token;
    }
    if (count == 0) {
        if (infosHeard()) tellMissing(required);
        error(kMissing, kError, "required argument missing");
    }
    if (count > 1) error(kInconsistent, kError, "required argument specified %u times", count);
    return count == 1;
}

}  // namespace zeb
