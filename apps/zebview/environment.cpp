#include "environment.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <functional>
#include <numbers>
#include <thread>

#include "failure.h"

namespace zebview
{

namespace
{

constexpr double kPi = std::numbers::pi;

// How much light matters at an angle from the direction that is asked for.
using Weight = std::function<double(double)>;

// What mirrors of GGX send to an eye that looks straight at them (B. Karis, 2013): from other sides
// they are taken to do the same about the mirrored direction. Up to a factor.
double mirrorWeight(double steepness, double angle)
{
    const double s = std::sin(angle / 2), c = steepness * std::cos(angle / 2);
    const double spread = (s * s + c * c) / steepness;
    return std::cos(angle) / (spread * spread);
}

// Where that has fallen to a half.
double lobeWidth(double rough) { return 1.3 * rough * rough; }

// Points of a half sphere around its pole: rings, the farther out the wider.
struct RingPoint {
    double angle, azimuth, width, weight;
};

// sharpest  the width of the innermost rings
// growth    what part of their angle the others are wide
std::vector<RingPoint> ringsOf(const Weight& weight, double sharpest, double growth)
{
    constexpr int steps = 32;
    std::vector<RingPoint> points;
    double whole = 0;
    double inner = 0;
    while (inner < kPi / 2 - 1e-9) {
        const double width = std::min(std::max(sharpest, growth * inner), kPi / 2 - inner);
        double light = 0, moment = 0;
        for (int i = 0; i < steps; ++i) {
            const double angle = inner + width * (i + 0.5) / steps;
            const double here = weight(angle) * std::sin(angle) * width / steps;
            light += here;
            moment += here * angle;
        }
        const double angle = moment / light;
        const int count =
            std::max(4, static_cast<int>(std::ceil(2 * kPi * std::sin(angle) / width)));
        for (int i = 0; i < count; ++i) {
            points.push_back({angle, 2 * kPi * (i + 0.5) / count, width, light / count});
        }
        whole += light;
        inner += width;
    }
    for (RingPoint& point : points) point.weight /= whole;
    return points;
}

// Where a point of a ring lies in a picture, seen from one of its rows.
struct Tap {
    const SphereMap* map;
    float across, angle, weight;
};

// Its points are at least as wide, so that nothing lies between those that are asked for.
const SphereMap& mapOfWidth(const std::vector<SphereMap>& picture, double width)
{
    const double level = std::log2(std::max(width / double{picture.front().step()}, 1.0));
    return picture[std::min(static_cast<std::size_t>(std::ceil(level)), picture.size() - 1)];
}

std::vector<Tap> tapsOf(const std::vector<RingPoint>& points, double pole,
                        const std::vector<SphereMap>& picture)
{
    std::vector<Tap> taps;
    for (const RingPoint& p : points) {
        const double up = std::cos(pole) * std::cos(p.angle) +
                          std::sin(pole) * std::sin(p.angle) * std::cos(p.azimuth);
        const double ahead = std::sin(pole) * std::cos(p.angle) -
                             std::cos(pole) * std::sin(p.angle) * std::cos(p.azimuth);
        const double aside = std::sin(p.angle) * std::sin(p.azimuth);
        taps.push_back({&mapOfWidth(picture, p.width),
                        static_cast<float>(std::atan2(aside, ahead) / (2 * kPi)),
                        static_cast<float>(std::acos(std::clamp(up, -1.0, 1.0))),
                        static_cast<float>(p.weight)});
    }
    return taps;
}

// Each row by whichever thread comes first.
void everyRow(long count, const std::function<void(long)>& work)
{
    std::atomic<long> next = 0;
    std::vector<std::jthread> threads;
    for (unsigned i = 0; i < std::clamp(std::thread::hardware_concurrency(), 1u, 16u); ++i) {
        threads.emplace_back([&] {
            for (long row = next++; row < count; row = next++) work(row);
        });
    }
}

// The mean of the light around each direction. All directions of a row see the same points, farther
// along.
SphereMap blurred(const std::vector<SphereMap>& picture, const std::vector<RingPoint>& points,
                  long width)
{
    SphereMap result(width, width / 2 + 1, true);
    everyRow(result.height(), [&](long y) {
        const std::vector<Tap> taps = tapsOf(points, double{result.angle(y)}, picture);
        const bool isPole = y == 0 || y + 1 == result.height();
        for (long x = 0; x < width; ++x) {
            float* const texel = result.at(x, y);
            if (isPole && x > 0) {
                std::copy_n(result.at(0, y), 3, texel);
                continue;
            }
            const float across = (static_cast<float>(x) + 0.5f) / static_cast<float>(width);
            for (const Tap& tap : taps) {
                const Color light = tap.map->look(across + tap.across, tap.angle);
                for (std::size_t c = 0; c < 3; ++c) texel[c] += tap.weight * light[c];
            }
        }
    });
    return result;
}

std::vector<SphereMap> pyramidOf(const LightPicture& picture, double factor)
{
    SphereMap map(picture.width, picture.height, false);
    std::transform(picture.light.begin(), picture.light.end(), map.at(0, 0), [&](float light) {
        return static_cast<float>(std::min(double{light} * factor, 1e20));
    });
    std::vector<SphereMap> result{map};
    while (map.height() > 2) {
        map = map.halved();
        result.push_back(map);
        result.back().evenOut();
    }
    return result;
}

Color mixed(const Color& a, const Color& b, float t)
{
    return {a[0] + t * (b[0] - a[0]), a[1] + t * (b[1] - a[1]), a[2] + t * (b[2] - a[2])};
}

float angleOf(const std::array<float, 3>& way)
{
    return std::acos(std::clamp(way[1], -1.0f, 1.0f));
}

// By roughness and cosine, both from 0 to 1.
class ShareTable
{
public:
    ShareTable()
    {
        for (int r = 0; r < kRoughs; ++r) {
            for (int n = 0; n < kCosines; ++n) {
                fShares[r][n] = integrate(static_cast<double>(r) / (kRoughs - 1),
                                          std::max(static_cast<double>(n) / (kCosines - 1), 1e-3));
            }
        }
    }
    std::array<float, 2> at(float rough, float cosine) const
    {
        const float r = std::clamp(rough, 0.0f, 1.0f) * (kRoughs - 1);
        const float n = std::clamp(cosine, 0.0f, 1.0f) * (kCosines - 1);
        const int i = std::min(static_cast<int>(r), kRoughs - 2);
        const int j = std::min(static_cast<int>(n), kCosines - 2);
        const float s = r - static_cast<float>(i), t = n - static_cast<float>(j);
        std::array<float, 2> result{};
        for (std::size_t k = 0; k < 2; ++k) {
            result[k] = (1 - s) * ((1 - t) * fShares[i][j][k] + t * fShares[i][j + 1][k]) +
                        s * ((1 - t) * fShares[i + 1][j][k] + t * fShares[i + 1][j + 1][k]);
        }
        return result;
    }

private:
    static constexpr int kRoughs = 33, kCosines = 65, kSamples = 256;

    // Mirrors are drawn as often as there are of them (B. Walter et al., 2007).
    static std::array<float, 2> integrate(double rough, double NV)
    {
        const double a2 = std::max(std::pow(rough, 4), 1e-8);
        const double side = std::sqrt(1 - std::min(NV * NV, 1.0));
        double straight = 0, rim = 0;
        for (int i = 0; i < kSamples; ++i) {
            const double u = (i + 0.5) / kSamples, turn = 2 * kPi * 0.6180339887 * i;
            const double NH = std::sqrt((1 - u) / (1 + (a2 - 1) * u));
            const double VH = side * std::sqrt(1 - NH * NH) * std::cos(turn) + NV * NH;
            const double NL = 2 * VH * NH - NV;
            if (NL <= 0 || VH <= 0) continue;
            const double seen =
                NL * std::sqrt(NV * NV * (1 - a2) + a2) + NV * std::sqrt(NL * NL * (1 - a2) + a2);
            const double light = 2 * NL * VH / (seen * NH * kSamples);
            const double edge = std::pow(1 - std::min(VH, 1.0), 5);
            straight += light * (1 - edge);
            rim += light * edge;
        }
        return {static_cast<float>(straight), static_cast<float>(rim)};
    }

    std::array<float, 2> fShares[kRoughs][kCosines];
};

void shadeSky(void* data, ZebRow* row)
{
    const Around& around = **static_cast<std::shared_ptr<const Around>*>(data);
    const Planes way = newPlanes(*row);
    for (long k = 0; k < row->count; ++k) {
        const float x = row->I[0][k], y = row->I[1][k], z = row->I[2][k];
        const float factor = 1 / std::sqrt(std::max(x * x + y * y + z * z, 1e-30f));
        for (std::size_t c = 0; c < 3; ++c) way[c][k] = row->I[c][k] * factor;
    }
    const float* const spread = spreadOf(*row, way);
    for (long k = 0; k < row->count; ++k) {
        const Color light = around.mirrored(way, k, 0, spread[k]);
        for (std::size_t c = 0; c < 3; ++c) row->Ci[c][k] = light[c];
    }
}

void freeSky(void* data) { delete static_cast<std::shared_ptr<const Around>*>(data); }

}  // namespace

Environment::Environment(const LightPicture& picture, double turn, double factor)
    : fTurn(static_cast<float>(0.5 - turn / 360 + std::floor(turn / 360)))
{
    fPicture = pyramidOf(picture, factor);
    for (const double rough : {0.1, 0.15, 0.2, 0.3, 0.4, 0.55, 0.7, 0.85, 1.0}) {
        const double lobe = lobeWidth(rough);
        const auto weight = [&](double angle) { return mirrorWeight(rough * rough, angle); };
        const auto points = ringsOf(weight, std::min(lobe / 2, 0.2), 1);
        const long most = std::clamp(picture.width, 48L, 512L);
        const long width = std::clamp(std::lround(kPi / (0.75 * lobe)), 48L, most) * 2;
        fLevels.push_back({static_cast<float>(rough), blurred(fPicture, points, width)});
    }
    const auto points = ringsOf([](double angle) { return std::cos(angle); }, 0.05, 0);
    fScattered = blurred(fPicture, points, 48);
}

// The middle of the picture is what the eye looks at from the front.
float Environment::across(const std::array<float, 3>& way) const
{
    return fTurn + std::atan2(way[0], -way[2]) / static_cast<float>(2 * kPi);
}

Color Environment::scattered(const std::array<float, 3>& normal) const
{
    return fScattered.look(across(normal), angleOf(normal));
}

Color Environment::sharp(float across, float angle, float width) const
{
    const float level = std::log2(std::max(width / fPicture.front().step(), 1.0f));
    const std::size_t last = fPicture.size() - 1;
    const std::size_t i = std::min(static_cast<std::size_t>(level), last);
    const Color fine = fPicture[i].look(across, angle);
    const float t = level - static_cast<float>(i);
    return t > 0 && i < last ? mixed(fine, fPicture[i + 1].look(across, angle), t) : fine;
}

Color Environment::mirrored(const std::array<float, 3>& way, float rough, float spread) const
{
    const float x = across(way), angle = angleOf(way);
    const Level& first = fLevels.front();
    if (rough < first.rough) {
        const float lobe = static_cast<float>(lobeWidth(double{rough}));
        const Color clear = sharp(x, angle, std::max(lobe, spread));
        return rough > 0 ? mixed(clear, first.map.look(x, angle), rough / first.rough) : clear;
    }
    std::size_t i = 0;
    while (i + 2 < fLevels.size() && fLevels[i + 1].rough < rough) ++i;
    const Level& a = fLevels[i];
    const Level& b = fLevels[i + 1];
    const float t = std::min((rough - a.rough) / (b.rough - a.rough), 1.0f);
    return mixed(a.map.look(x, angle), b.map.look(x, angle), t);
}

std::array<float, 3> Around::toWorld(const Planes& way, long k) const
{
    std::array<float, 3> result{};
    for (std::size_t i = 0; i < 3; ++i) {
        result[i] =
            toCamera[i][0] * way[0][k] + toCamera[i][1] * way[1][k] + toCamera[i][2] * way[2][k];
    }
    return result;
}

float* spreadOf(const ZebRow& row, const Planes& ways)
{
    float* const result = zebRowPlane(&row);
    float* const a = zebRowPlane(&row);
    float* const b = zebRowPlane(&row);
    float* const other = zebRowPlane(&row);
    std::fill_n(result, row.count, 0.0f);
    std::fill_n(other, row.count, 0.0f);
    for (const float* const way : ways) {
        zebRowDifferences(&row, way, a, b);
        for (long k = 0; k < row.count; ++k) {
            result[k] += a[k] * a[k];
            other[k] += b[k] * b[k];
        }
    }
    for (long k = 0; k < row.count; ++k) result[k] = std::sqrt(std::max(result[k], other[k]));
    return result;
}

std::array<float, 2> mirrorShares(float rough, float cosine)
{
    static const ShareTable table;
    return table.at(rough, cosine);
}

std::shared_ptr<const Environment> readEnvironment(const Settings& settings)
{
    if (settings.environment.empty()) return nullptr;
    const LightPicture picture = readLightPicture(settings.environment);
    if (picture.width != 2 * picture.height) {
        throw Failure(settings.environment +
                      ": it is not a picture of all directions, twice as wide as high");
    }
    return std::make_shared<Environment>(picture, settings.environmentTurn,
                                         std::exp2(settings.exposure));
}

std::shared_ptr<const Around> lookAround(std::shared_ptr<const Environment> environment,
                                         const Camera& camera)
{
    if (!environment) return nullptr;
    const auto around = std::make_shared<Around>();
    around->environment = std::move(environment);
    for (int i = 0; i < 3; ++i) std::copy_n(camera.toCamera[i], 3, around->toCamera[i]);
    return around;
}

void setSky(std::shared_ptr<const Around> around)
{
    const ZebShader shader{new std::shared_ptr<const Around>(std::move(around)), shadeSky, freeSky,
                           ZEB_SHADE_ANYWHERE};
    zebCustomSurface(&shader);
}

}  // namespace zebview
