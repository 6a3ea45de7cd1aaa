// Geometry that more than one benchmark program makes, as plain numbers.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace zebbench
{

using Vec = std::array<float, 3>;

// Numbers from 0 to 1, the same in every run.
class Numbers
{
public:
    float next()
    {
        fState = fState * 6364136223846793005u + 1442695040888963407u;
        return static_cast<float>(fState >> 40) / 16777216.0f;
    }
    float between(float lo, float hi) { return lo + (hi - lo) * next(); }

private:
    std::uint64_t fState = 1;
};

struct Ball {
    Vec center, color;
};

inline std::vector<Ball> balls(int count)
{
    Numbers numbers;
    std::vector<Ball> made;
    for (int k = 0; k < count; ++k) {
        const auto place = [&numbers] { return numbers.between(-1.2f, 1.2f); };
        const float x = place(), y = place(), z = place();
        made.push_back({{x, y, z}, {numbers.next(), numbers.next(), numbers.next()}});
    }
    return made;
}

// A square NURBS: as many points and knots, and the same order, both ways.
struct Nurbs {
    int size, order;
    std::vector<float> knots;
    std::vector<Vec> points;

    float end() const { return static_cast<float>(size - order + 1); }
};

// 20 x 20 points, in waves.
inline Nurbs waves()
{
    Nurbs made{20, 4, {}, {}};
    for (int k = 0; k < made.size + made.order; ++k) {
        const int inner = k < made.order ? made.order - 1 : k < made.size ? k : made.size;
        made.knots.push_back(static_cast<float>(inner - made.order + 1));
    }
    for (int j = 0; j < made.size; ++j) {
        for (int i = 0; i < made.size; ++i) {
            const auto x = static_cast<float>(i), y = static_cast<float>(j);
            made.points.push_back(
                {0.13f * x - 1.2f, 0.13f * y - 1.2f, 0.3f * std::sin(x) * std::cos(0.7f * y)});
        }
    }
    return made;
}

}  // namespace zebbench
