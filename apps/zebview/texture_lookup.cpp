#include "texture_lookup.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "texture_images.h"
#include "vector.h"

namespace zebview
{

namespace
{

constexpr unsigned kChannels = 8;

// Brings a coordinate to where the image, which goes on in a way of its own, shows what it should.
//
// size  of the image this way, in pixels
void bring(float* values, long count, Wrap wrap, bool repeats, std::size_t size)
{
    // The mean of two pixels must not be that of the first and the last.
    const float edge = repeats ? 0.5f / static_cast<float>(size) : 0;
    if (wrap == Wrap::kClamp || wrap == Wrap::kNone) {
        for (long k = 0; k < count; ++k) values[k] = std::clamp(values[k], edge, 1 - edge);
    } else if (wrap == Wrap::kMirror && repeats) {
        for (long k = 0; k < count; ++k) {
            const float half = values[k] / 2;
            const float folded = 1 - std::fabs(2 * (half - std::floor(half)) - 1);
            values[k] = std::clamp(folded, edge, 1 - edge);
        }
    }
}

// Takes a picture away where it has come to its end.
void cut(const std::vector<float>& s, const std::vector<float>& t, const Texture& texture,
         std::size_t channels, float* const* results)
{
    const auto outside = [](float value, Wrap wrap) {
        return wrap == Wrap::kNone && !(value >= 0 && value <= 1);
    };
    for (std::size_t k = 0; k < s.size(); ++k) {
        if (!outside(s[k], texture.across) && !outside(t[k], texture.down)) continue;
        for (std::size_t c = 0; c < channels; ++c) results[c][k] = 1;
    }
}

// Which way on the surface the picture's s and t grow.
struct Directions {
    Vector alongS, alongT;
};

// From how far places, and s and t, are apart from point to point. A row is a part of one flat
// triangle, the same all over, but along its slanted side points tell nothing.
Directions directionsOf(const ZebRow& row, const Coordinates& at)
{
    const auto differences = [&](const float* values) {
        const std::array<float*, 2> along{zebRowPlane(&row), zebRowPlane(&row)};
        zebRowDifferences(&row, values, along[0], along[1]);
        return along;
    };
    const auto s = differences(at.s), t = differences(at.t);
    const auto area = [&](long k) { return s[0][k] * t[1][k] - s[1][k] * t[0][k]; };
    long best = 0;
    for (long k = 1; k < row.count; ++k) {
        if (std::fabs(area(k)) > std::fabs(area(best))) best = k;
    }
    if (!(std::fabs(area(best)) > 0)) return {};
    const double sign = area(best) < 0 ? -1 : 1;
    std::array<Vector, 2> step;
    for (unsigned c = 0; c < 3; ++c) {
        const auto p = differences(row.P[c]);
        for (std::size_t way = 0; way < 2; ++way) step[way][c] = p[way][best];
    }
    const auto times = [&](const Vector& v, float factor) { return v * (sign * factor); };
    return {times(step[0], t[1][best]) - times(step[1], t[0][best]),
            times(step[1], s[0][best]) - times(step[0], s[1][best])};
}

Vector at(const Planes& planes, long k) { return {planes[0][k], planes[1][k], planes[2][k]}; }

// Within the plane of the normal.
Vector flattened(const Vector& v, const Vector& normal)
{
    return direction(v - normal * (v * normal));
}

}  // namespace

unsigned short coordinateToken(unsigned channel)
{
    static const std::array<unsigned short, kChannels> tokens = [] {
        std::array<unsigned short, kChannels> all;
        for (unsigned i = 0; i < kChannels; ++i) {
            all[i] = zebDeclare(("texture" + std::to_string(i)).c_str(), ZEB_VERTEX, ZEB_PAIR);
        }
        return all;
    }();
    return tokens[channel];
}

Coordinates coordinatesOf(const ZebRow& row, const Texture& texture)
{
    const Coordinates result{zebRowPlane(&row), zebRowPlane(&row)};
    const float* const x = zebRowVariable(&row, coordinateToken(texture.channel), 0);
    const float* const y = zebRowVariable(&row, coordinateToken(texture.channel), 1);
    if (!x || !y) return result;
    const auto& [across, down] = texture.place;
    for (long k = 0; k < row.count; ++k) {
        result.s[k] = across[0] * x[k] + across[1] * y[k] + across[2];
        result.t[k] = down[0] * x[k] + down[1] * y[k] + down[2];
    }
    return result;
}

void look(const ZebRow& row, const Map& map, float* const* results)
{
    const TextureImage& image = *map.image;
    const Texture& texture = map.texture;
    const Coordinates at = coordinatesOf(row, texture);
    const bool ends = texture.across == Wrap::kNone || texture.down == Wrap::kNone;
    std::vector<float> s, t;
    if (ends) {
        s.assign(at.s, at.s + row.count);
        t.assign(at.t, at.t + row.count);
    }
    bring(at.s, row.count, texture.across, image.repeats(), image.width());
    bring(at.t, row.count, texture.down, image.repeats(), image.height());
    zebRowImage(&row, image.handle(), at.s, at.t, 0, results);
    if (ends) cut(s, t, texture, image.channels(), results);
}

void bendNormals(const ZebRow& row, const Map& map, float scale, const Planes& normals)
{
    const Planes bent = newPlanes(row);
    look(row, map, bent.data());
    const Directions directions = directionsOf(row, coordinatesOf(row, map.texture));
    if (directions.alongS == Vector()) return;
    for (long k = 0; k < row.count; ++k) {
        const Vector normal = at(normals, k);
        const Vector across = flattened(directions.alongS, normal);
        const Vector up = -flattened(directions.alongT, normal);
        const double x = bent[0][k] * scale, y = bent[1][k] * scale, z = bent[2][k];
        const Vector result = direction(across * x + up * y + normal * z);
        if (result == Vector()) continue;
        normals[0][k] = static_cast<float>(result.x);
        normals[1][k] = static_cast<float>(result.y);
        normals[2][k] = static_cast<float>(result.z);
    }
}

}  // namespace zebview
