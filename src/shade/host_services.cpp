// What functions that shade find for patterns and pictures on surfaces.

#include <cmath>
#include <numeric>

#include "math/lattice_noise.h"
#include "math/spaces.h"
#include "shade/host_row.h"
#include "state/error.h"

namespace zeb
{

const Matrix* HostRow::toCamera(unsigned short space) const
{
    switch (space) {
        case 0:
            return &fUnderWay->toCamera();
        case kQEye:
            return &gIdentity;
        case kQWorld:
            return &gWorldToCamera;
        case kQModel:
            return &fGrid.fTransform->matrix();
        default:
            break;
    }
    const Matrix* const marked = fUnderWay->spaces().find(space);
    if (!marked) error(kRange, kError, "no space to shade in: %ld", static_cast<long>(space));
    return marked;
}

void HostRow::transform(unsigned short from, unsigned short to, short kind, Triple points,
                        Triple result) const
{
    const Matrix* const first = toCamera(from);
    const Matrix* const second = first ? toCamera(to) : nullptr;
    if (!second) return;
    if (kind < kPlaces || kind > kNormals) {
        error(kRange, kError, "unknown kind %ld", static_cast<long>(kind));
        return;
    }
    Matrix back = *second;
    if (to != kQEye && !invert(&back)) return;
    const Matrix matrix = *first * back;
    const bool mirrors = kind == kNormals && determinant(matrix) < 0;
    for (std::size_t k = 0; k < fSize; ++k) {
        Point p = pointAt(points, k);
        if (kind == kPlaces) {
            p = p * matrix;
        } else if (kind == kVectors) {
            vtransform(p, matrix);
        } else {
            ntransform(p, matrix);
            if (mirrors) p = -p;
        }
        put(result, k, p);
    }
}

// Where values repeat they may jump back between two points: those on the other side tell how far
// they go elsewhere. Where there is no other side, the neighbour tells; and where that has none
// either, the jump is taken for one.
void HostRow::widths(const float* values, bool wraps, float* result) const
{
    using Floats = std::vector<float, PoolAllocator<float>>;
    const Floats copy(values, values + fSize);
    Floats ways[2] = {Floats(fSize), Floats(fSize)};
    const auto between = [&](std::size_t before, std::size_t k, std::size_t after) {
        const float d = std::fabs(copy[k] - copy[before]), e = std::fabs(copy[after] - copy[k]);
        if (before == k || after == k) return -(d + e);  // an end
        return wraps ? std::min(d, e) : 0.5f * (d + e);
    };
    eachPlace([&](std::size_t k, const Neighbours& near) {
        ways[0][k] = between(near.before, near.here, near.after);
        ways[1][k] = between(near.above, near.here, near.below);
    });
    for (std::size_t k = 0; k < fPoints.spacing.size(); ++k) {
        ways[0][k] *= fPoints.spacing[k].scale1;
        ways[1][k] *= fPoints.spacing[k].scale2;
    }
    const auto width = [&](const Floats& way, std::size_t k, std::size_t neighbour) {
        const float d = std::fabs(way[k]), other = way[neighbour];
        if (!wraps || way[k] > 0) return d;
        return other > 0 ? std::min(d, other) : std::fabs(d - std::floor(d + 0.5f));
    };
    eachPlace([&](std::size_t k, const Neighbours& near) {
        result[k] = std::max(width(ways[0], k, near.before == k ? near.after : near.before),
                             width(ways[1], k, near.above == k ? near.below : near.above));
    });
    fill(result);
}

void HostRow::noise(long dimensions, Triple places, const long* periods, float* result) const
{
    std::vector<float, PoolAllocator<float>> found(fSize);
    findNoise(dimensions, places, periods, fCount, found.data());
    std::copy_n(found.data(), fCount, result);
    fill(result);
}

// Of so many places. Those that repeat are found one after the other.
void HostRow::findNoise(long dimensions, Triple places, const long* periods, std::size_t count,
                        float* result) const
{
    if (!periods && !fFrame.plain) {
        latticeNoise(static_cast<int>(dimensions), places, count, result);
        return;
    }
    for (std::size_t k = 0; k < count; ++k) {
        float place[4] = {};
        for (long axis = 0; axis < dimensions; ++axis) place[axis] = places[axis][k];
        result[k] = latticeNoise(static_cast<int>(dimensions), place, periods);
    }
}

void HostRow::turbulence(long dimensions, Triple places, long octaves, float gain, bool absolute,
                         float* result) const
{
    using Floats = std::vector<float, PoolAllocator<float>>;
    Floats apart(fSize), width(fSize), found(fSize), noise(fSize), left(fSize);
    for (long axis = 0; axis < dimensions; ++axis) {
        widths(places[axis], false, apart.data());
        for (std::size_t k = 0; k < fSize; ++k) width[k] = std::max(width[k], apart[k]);
    }
    // The points that the octave is not too fine for, and their places in it.
    std::vector<std::size_t, PoolAllocator<std::size_t>> points(fCount);
    std::iota(points.begin(), points.end(), std::size_t{0});
    Floats scaled[4];
    float* planes[4] = {};
    for (long axis = 0; axis < dimensions; ++axis) {
        scaled[axis].resize(fCount);
        planes[axis] = scaled[axis].data();
    }
    float frequency = 1, weight = 1;
    for (long octave = 0; octave < octaves; ++octave, frequency *= 2, weight *= gain) {
        std::size_t count = 0;
        for (const std::size_t k : points) {
            left[count] = 1 - smoothstep(0.25f, 0.75f, width[k] * frequency);
            if (!(left[count] > 0)) continue;
            for (long axis = 0; axis < dimensions; ++axis) {
                planes[axis][count] = places[axis][k] * frequency;
            }
            points[count++] = k;
        }
        points.resize(count);
        if (count == 0) break;
        findNoise(dimensions, planes, nullptr, count, noise.data());
        for (std::size_t n = 0; n < count; ++n) {
            found[points[n]] += left[n] * weight * (absolute ? std::fabs(noise[n]) : noise[n]);
        }
    }
    std::copy_n(found.data(), fCount, result);
    fill(result);
}

void HostRow::step(float edge, const float* values, float* result) const
{
    std::vector<float, PoolAllocator<float>> width(fSize);
    widths(values, false, width.data());
    for (std::size_t k = 0; k < fSize; ++k) {
        const float above = values[k] - edge;
        result[k] = width[k] > 0 ? std::clamp(above / width[k] + 0.5f, 0.0f, 1.0f)
                                 : (above < 0 ? 0.0f : 1.0f);
    }
}

// The product of two square waves, each averaged by the integral, a triangle wave.
void HostRow::checks(const float* s, const float* t, float* result) const
{
    std::vector<float, PoolAllocator<float>> across(fSize), down(fSize);
    widths(s, false, across.data());
    widths(t, false, down.data());
    const auto triangle = [](double x) { return std::fabs(x / 2 - std::floor(x / 2) - 0.5); };
    const auto square = [&](float at, float width) {
        const double x = double{at};
        if (!(width > 0)) return std::floor(x / 2) * 2 == std::floor(x) ? 1.0 : -1.0;
        const double half = 0.5 * double{width};
        return 2 * (triangle(x - half) - triangle(x + half)) / double{width};
    };
    for (std::size_t k = 0; k < fSize; ++k) {
        result[k] = static_cast<float>(0.5 + 0.5 * square(s[k], across[k]) * square(t[k], down[k]));
    }
}

void HostRow::look(const Image& image, const float* s, const float* t, float blur,
                   Triple results) const
{
    using Floats = std::vector<float, PoolAllocator<float>>;
    const bool wraps = image.wrap() == Image::kRepeat || image.wrap() == Image::kMirror;
    Floats across(fSize), down(fSize), found(static_cast<std::size_t>(image.channels()) * fCount);
    widths(s, wraps, across.data());
    widths(t, wraps, down.data());
    const auto channels = static_cast<std::size_t>(image.channels());
    for (std::size_t k = 0; k < fCount; ++k) {
        const float x = (across[k] + blur) * static_cast<float>(image.width());
        const float y = (down[k] + blur) * static_cast<float>(image.height());
        image.look(s[k], t[k], std::max(x, y), &found[k * channels]);
    }
    for (std::size_t c = 0; c < channels; ++c) {
        for (std::size_t k = 0; k < fCount; ++k) results[c][k] = found[k * channels + c];
        fill(results[c]);
    }
}

}  // namespace zeb
