#include "sphere_map.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace zebview
{

SphereMap::SphereMap(long width, long height, bool hasPoles)
    : fWidth(width), fHeight(height), fShift(hasPoles ? 0 : 0.5f)
{
    const long steps = hasPoles ? height - 1 : height;
    fStep = static_cast<float>(std::numbers::pi / static_cast<double>(steps));
    fLight.resize(static_cast<std::size_t>(width * height) * 3);
}

// Beyond a pole lies the row before it, half way around.
Color SphereMap::look(float across, float angle) const
{
    const float y = angle / fStep - fShift;
    const float turn = across - std::floor(across);
    const auto row = static_cast<long>(std::floor(y));
    const float down = y - static_cast<float>(row);
    Color result{};
    for (long n = 0; n < 2; ++n) {
        const long wanted = row + n;
        const long found = std::clamp(wanted, 0L, fHeight - 1);
        const float x = turn + (wanted == found ? 0 : 0.5f);
        const float place = (x < 1 ? x : x - 1) * static_cast<float>(fWidth) - 0.5f;
        const long left = static_cast<long>(place + 1) - 1;  // it is no less than -1
        const float right = place - static_cast<float>(left);
        const float* const a = at(left < 0 ? left + fWidth : std::min(left, fWidth - 1), found);
        const float* const b = at(left + 1 < fWidth ? left + 1 : 0, found);
        const float share = n == 0 ? 1 - down : down;
        for (std::size_t c = 0; c < 3; ++c) result[c] += share * (a[c] + right * (b[c] - a[c]));
    }
    return result;
}

SphereMap SphereMap::halved() const
{
    SphereMap half(std::max(fWidth / 2, 1L), std::max(fHeight / 2, 1L), false);
    const double wide = static_cast<double>(fWidth) / static_cast<double>(half.fWidth);
    const double high = static_cast<double>(fHeight) / static_cast<double>(half.fHeight);
    // How much of a point lies within a point of the half.
    const auto overlap = [](long i, long of, double size) {
        const auto first = static_cast<double>(of) * size;
        return std::min(static_cast<double>(i) + 1, first + size) -
               std::max(static_cast<double>(i), first);
    };
    const auto firstOf = [](long of, double size) {
        return static_cast<long>(static_cast<double>(of) * size);
    };
    for (long y = 0; y < half.fHeight; ++y) {
        for (long x = 0; x < half.fWidth; ++x) {
            std::array<double, 3> sum{};
            double whole = 0;
            for (long j = firstOf(y, high); j < fHeight && overlap(j, y, high) > 1e-9; ++j) {
                const double row = overlap(j, y, high) * std::sin(angle(j));
                for (long i = firstOf(x, wide); i < fWidth && overlap(i, x, wide) > 1e-9; ++i) {
                    const double weight = row * overlap(i, x, wide);
                    whole += weight;
                    for (std::size_t c = 0; c < 3; ++c) sum[c] += weight * double{at(i, j)[c]};
                }
            }
            for (std::size_t c = 0; c < 3; ++c) {
                half.at(x, y)[c] = static_cast<float>(sum[c] / whole);
            }
        }
    }
    return half;
}

void SphereMap::evenOut()
{
    std::vector<std::array<double, 3>> sums(static_cast<std::size_t>(3 * fWidth) + 1);
    for (long y = 0; y < fHeight; ++y) {
        const double wanted = 1 / std::max(std::sin(double{angle(y)}), 1e-9);
        const long side = std::lround((std::min(wanted, static_cast<double>(fWidth)) - 1) / 2);
        if (side < 1) continue;
        for (std::size_t i = 0; i + 1 < sums.size(); ++i) {
            const float* const texel = at(static_cast<long>(i) % fWidth, y);
            for (std::size_t c = 0; c < 3; ++c) sums[i + 1][c] = sums[i][c] + double{texel[c]};
        }
        for (long x = 0; x < fWidth; ++x) {
            const auto first = static_cast<std::size_t>(fWidth + x - side);
            const auto end = static_cast<std::size_t>(fWidth + x + side + 1);
            for (std::size_t c = 0; c < 3; ++c) {
                at(x, y)[c] = static_cast<float>((sums[end][c] - sums[first][c]) /
                                                 static_cast<double>(end - first));
            }
        }
    }
}

}  // namespace zebview
