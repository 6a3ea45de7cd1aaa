#include "shadows.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace zebview
{

namespace
{

constexpr long kLeast = 256, kMost = 4096;  // pixels of a map
constexpr long kTile = 16;                  // and of its tiles
constexpr float kHalf = 1.02f;              // of what it shows
constexpr float kDistance = 2, kNear = 0.9f, kFar = 3.1f;
constexpr int kTaps = 40;
constexpr float kSize = 0.06f;  // the tangent of half the lamp's size: how fast edges grow soft

struct Taps {
    float x[kTaps], y[kTaps];

    // Evenly over a disk: each a golden angle on from the one before.
    Taps()
    {
        for (int n = 0; n < kTaps; ++n) {
            const float r = std::sqrt((static_cast<float>(n) + 0.5f) / kTaps);
            const float a = 2.3999632f * static_cast<float>(n);
            x[n] = r * std::cos(a);
            y[n] = r * std::sin(a);
        }
    }
};

// A lamp as functions that shade see it: all is in camera space.
struct Lit {
    std::shared_ptr<const Shadow> shadow;
    float center[3], right[3], up[3], ahead[3];
    Taps taps;
};

// A point as the lamp sees it: a place in the map, and how depth grows from pixel to pixel along
// the surface, which is what depths beside the point are compared with.
struct Seen {
    float x, y, z, slopeX, slopeY, room;
};

class Lookup
{
public:
    Lookup(const Lit& lit, const Seen& seen, float turn)
        : fLit(lit),
          fShadow(*lit.shadow),
          fStep(2 * kHalf / static_cast<float>(fShadow.size)),
          fSeen(seen),
          fSine(std::sin(turn)),
          fCosine(std::cos(turn))
    {
    }

    // How much of the light arrives: a search finds what is in the way, and how far off; the edge
    // is the softer the farther that is (R. Fernando, 2005).
    float openness() const
    {
        const float widest = kWidestEdge / fStep;
        if (nothingBefore(widest)) return 1;
        float apart = 0;
        int closed = 0;
        for (int n = 0; n < kTaps; ++n) {
            const auto [x, y] = tap(n, widest);
            const float found =
                before(static_cast<long>(std::floor(x)), static_cast<long>(std::floor(y)));
            apart += found;
            closed += found > 0;
        }
        if (closed == 0) return 1;
        const float soft = kSize / fStep * apart / static_cast<float>(closed);
        const float radius = std::clamp(soft, 1.2f, widest);
        float open = 0;
        for (int n = 0; n < kTaps; ++n) {
            const auto [x, y] = tap(n, radius);
            open += openAt(x, y);
        }
        return open / kTaps;
    }

private:
    // Whether all that is in reach lies behind the surface.
    bool nothingBefore(float reach) const
    {
        const float last = static_cast<float>(fShadow.size - 1);
        const long x = static_cast<long>(std::clamp(fSeen.x, 0.0f, last)) / kTile;
        const long y = static_cast<long>(std::clamp(fSeen.y, 0.0f, last)) / kTile;
        const float depth = fShadow.nearest[static_cast<std::size_t>(y * fShadow.tiles + x)];
        const float farthest =
            fSeen.z + (reach + 2) * (std::abs(fSeen.slopeX) + std::abs(fSeen.slopeY));
        return depth >= 1 || farthest - (kNear + depth * (kFar - kNear)) <= fSeen.room;
    }

    std::array<float, 2> tap(int n, float radius) const
    {
        const float x = fLit.taps.x[n], y = fLit.taps.y[n];
        return {fSeen.x + radius * (fCosine * x - fSine * y),
                fSeen.y + radius * (fSine * x + fCosine * y)};
    }

    // How much nearer to the lamp something lies than the surface does at a pixel, if it is more
    // than depths of pixels are uncertain by.
    float before(long x, long y) const
    {
        if (x < 0 || y < 0 || x >= fShadow.size || y >= fShadow.size) return 0;
        const float depth = fShadow.depth[static_cast<std::size_t>(y * fShadow.size + x)];
        if (depth >= 1) return 0;
        const float here = fSeen.z + fSeen.slopeX * (static_cast<float>(x) - fSeen.x + 0.5f) +
                           fSeen.slopeY * (static_cast<float>(y) - fSeen.y + 0.5f);
        const float apart = here - (kNear + depth * (kFar - kNear));
        return apart > fSeen.room ? apart : 0;
    }

    // How much is open between the four pixels around a place.
    float openAt(float x, float y) const
    {
        const long x0 = static_cast<long>(std::floor(x - 0.5f));
        const long y0 = static_cast<long>(std::floor(y - 0.5f));
        const float s = x - 0.5f - static_cast<float>(x0), t = y - 0.5f - static_cast<float>(y0);
        const auto open = [&](long i, long j) { return before(x0 + i, y0 + j) > 0 ? 0.0f : 1.0f; };
        return (1 - t) * ((1 - s) * open(0, 0) + s * open(1, 0)) +
               t * ((1 - s) * open(0, 1) + s * open(1, 1));
    }

    const Lit& fLit;
    const Shadow& fShadow;
    const float fStep;
    const Seen& fSeen;
    const float fSine, fCosine;
};

float dot(const float* a, const std::array<float, 3>& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Seen see(const Lit& lit, const ZebRow& row, long k)
{
    std::array<float, 3> P{}, N{};
    for (std::size_t c = 0; c < 3; ++c) {
        P[c] = row.P[c][k] - lit.center[c];
        N[c] = row.Ng[c][k];
    }
    const auto size = static_cast<float>(lit.shadow->size);
    const float step = 2 * kHalf / size, steep = 6 * step;
    const float depth = dot(lit.ahead, N);
    // On a surface N . (x, y, z) stays the same.
    const float slopeX = -dot(lit.right, N) / depth * step, slopeY = dot(lit.up, N) / depth * step;
    Seen seen{};
    seen.x = dot(lit.right, P) / step + size / 2;
    seen.y = size / 2 - dot(lit.up, P) / step;
    seen.z = dot(lit.ahead, P) + kDistance;
    seen.slopeX = slopeX > -steep ? std::min(slopeX, steep) : -steep;
    seen.slopeY = slopeY > -steep ? std::min(slopeY, steep) : -steep;
    seen.room = 1.5f * step + 0.75f * (std::abs(seen.slopeX) + std::abs(seen.slopeY));
    return seen;
}

// Of a place, in radians, and as good as random: few taps show as grain, not as bands.
float turnOf(const Seen& seen)
{
    const auto bits = [](float value) {
        std::uint32_t word = 0;
        std::memcpy(&word, &value, sizeof word);
        return word;
    };
    std::uint32_t mix = bits(seen.x) * 0x9E3779B1u ^ bits(seen.y) * 0x85EBCA77u;
    mix = (mix ^ mix >> 15) * 0x2C1B3C6Du;
    return static_cast<float>(mix >> 8) * (6.2831853f / 16777216);
}

void shine(void* data, ZebRow* row)
{
    const Lit& lit = *static_cast<const Lit*>(data);
    const float half = kHalf + kWidestEdge;
    for (long k = 0; k < row->count; ++k) {
        const Seen seen = see(lit, *row, k);
        const auto size = static_cast<float>(lit.shadow->size);
        const float margin = size * half / (2 * kHalf);
        const bool inMap = std::abs(seen.x - size / 2) < margin &&
                           std::abs(seen.y - size / 2) < margin && std::isfinite(seen.z);
        const float open = inMap ? Lookup(lit, seen, turnOf(seen)).openness() : 1;
        for (std::size_t c = 0; c < 3; ++c) {
            row->L[c][k] = lit.ahead[c];
            row->Cl[c][k] = lit.shadow->color[c] * open;
            row->Ol[c][k] = 1 - lit.shadow->color[c] * (1 - open);
        }
    }
}

// Depth as the library knows it would be that of holes, too.
void keepDepths(void* data, long x0, long x1, long y, const unsigned int* words)
{
    Shadow& shadow = *static_cast<Shadow*>(data);
    for (long x = x0; x <= x1; ++x, words += 4) {
        float values[4];
        std::memcpy(values, words, sizeof values);
        const float depth = values[3] > 0 ? (values[0] - kNear) / (kFar - kNear) : 1;
        shadow.depth[static_cast<std::size_t>(y * shadow.size + x)] = depth;
    }
}

// The least of each row's values and of those up to a distance before and after them; rows become
// columns.
std::vector<float> leastAround(const std::vector<float>& values, long size, long reach)
{
    std::vector<float> result(values.size());
    for (long y = 0; y < size; ++y) {
        const float* const row = &values[static_cast<std::size_t>(y * size)];
        for (long x = 0; x < size; ++x) {
            result[static_cast<std::size_t>(x * size + y)] = *std::min_element(
                row + std::max(x - reach, 0L), row + std::min(x + reach + 1, size));
        }
    }
    return result;
}

// The map is whole.
void findNearest(void* data)
{
    Shadow& shadow = *static_cast<Shadow*>(data);
    std::vector<float> least(static_cast<std::size_t>(shadow.tiles * shadow.tiles), 1);
    for (long y = 0; y < shadow.size; ++y) {
        for (long x = 0; x < shadow.size; ++x) {
            float& tile = least[static_cast<std::size_t>(y / kTile * shadow.tiles + x / kTile)];
            tile = std::min(tile, shadow.depth[static_cast<std::size_t>(y * shadow.size + x)]);
        }
    }
    // Places between pixels look at those one farther.
    const float widest = kWidestEdge / (2 * kHalf) * static_cast<float>(shadow.size) + 2;
    const long reach = static_cast<long>(std::ceil(widest / kTile));
    least = leastAround(least, shadow.tiles, reach);
    shadow.nearest = leastAround(least, shadow.tiles, reach);
}

}  // namespace

std::shared_ptr<Shadow> makeShadow(const Vector& towards, const Color& color,
                                   const Settings& settings, std::size_t count)
{
    auto shadow = std::make_shared<Shadow>();
    const Vector back = direction(towards);
    shadow->color = color;
    const Vector beside = std::abs(back.y) < 0.9 ? Vector(0, 1, 0) : Vector(1, 0, 0);
    shadow->right = direction(beside ^ back);
    shadow->up = back ^ shadow->right;
    shadow->ahead = -back;
    const double share = kMost / std::sqrt(static_cast<double>(count));
    shadow->size = std::clamp(2 * std::max(settings.width, settings.height), kLeast,
                              std::max(static_cast<long>(share), kLeast));
    shadow->tiles = (shadow->size + kTile - 1) / kTile;
    shadow->depth.assign(static_cast<std::size_t>(shadow->size * shadow->size), 1);
    return shadow;
}

void beginShadow(Shadow& shadow, const Settings& settings)
{
    ZebDisplay device{};
    device.data = &shadow;
    device.span = keepDepths;
    device.close = findNearest;
    zebFrameBegin();
    zebQuirks(0);
    zebThreads(settings.threads);
    zebRasterViewport(0, shadow.size, 0, shadow.size);
    zebImageWindow(-kHalf, kHalf, -kHalf, kHalf);
    zebViewOrthographic();
    zebClip(kNear, kFar);
    // Distances of one place each, which nothing mixes.
    zebSampleUniform(1, 1);
    zebFilter(ZEB_FILTER_BOX);
    zebFilterWidth(1, 1);
    zebOutputSamples(ZEB_SAMPLES_RGBA);
    zebColorQuantize(0, 0, 0);
    zebCustomDisplay(&device);
    ZebMatrix look{};
    for (unsigned axis = 0; axis < 3; ++axis) {
        look[axis][0] = static_cast<float>(shadow.right[axis]);
        look[axis][1] = static_cast<float>(shadow.up[axis]);
        look[axis][2] = static_cast<float>(shadow.ahead[axis]);
    }
    look[3][2] = kDistance;
    look[3][3] = 1;
    zebMultMatrix(look);
}

bool throwsShadow(const Material& material)
{
    return material.cutoff || material.opacity * (1 - material.transmission) >= 0.5f;
}

void addShadowLight(std::shared_ptr<const Shadow> shadow, const Camera& camera)
{
    const auto lit = new Lit{};
    for (unsigned i = 0; i < 3; ++i) {
        lit->center[i] = camera.toCamera[3][i];
        for (unsigned axis = 0; axis < 3; ++axis) {
            const float turn = camera.toCamera[axis][i];
            lit->right[i] += turn * static_cast<float>(shadow->right[axis]);
            lit->up[i] += turn * static_cast<float>(shadow->up[axis]);
            lit->ahead[i] += turn * static_cast<float>(shadow->ahead[axis]);
        }
    }
    lit->shadow = std::move(shadow);
    const ZebShader shader{lit, shine, [](void* data) { delete static_cast<Lit*>(data); },
                           ZEB_SHADE_ANYWHERE};
    zebMatrixPush();
    zebLoadIdentity();
    zebCustomLight(&shader);
    zebMatrixPop();
}

}  // namespace zebview
