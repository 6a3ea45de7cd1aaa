#include "spline_pieces.h"

#include <algorithm>
#include <cmath>

#include "failure.h"

namespace zebview
{

namespace
{

constexpr double kNear = 1e-9;  // of the largest number there is

double choose(std::size_t n, std::size_t k)
{
    double result = 1;
    for (std::size_t i = 1; i <= k; ++i) {
        result *= static_cast<double>(n - k + i) / static_cast<double>(i);
    }
    return result;
}

// What takes the control points of a piece to those of the same piece in Bezier's form.
Square toBezier(const Square& basis)
{
    const std::size_t degree = basis.size() - 1;
    Square result(degree + 1, std::vector<double>(degree + 1));
    for (std::size_t j = 0; j <= degree; ++j) {
        for (std::size_t power = 0; power <= j; ++power) {
            const double share = choose(j, power) / choose(degree, power);
            for (std::size_t i = 0; i <= degree; ++i) result[j][i] += share * basis[i][power];
        }
    }
    return result;
}

double largestOf(const std::vector<ControlPoint>& points)
{
    double largest = 0;
    for (const ControlPoint& point : points) {
        for (const double value : point.values) largest = std::max(largest, std::abs(value));
    }
    return largest;
}

bool isNear(ControlPoint a, const ControlPoint& b, double distance)
{
    a.add(b, -1);
    return std::all_of(a.values.begin(), a.values.end(),
                       [&](double apart) { return std::abs(apart) <= distance; });
}

// The control points of a net that lie along one parameter.
struct Line {
    std::size_t first, step;

    Line(const Net& net, std::size_t way, std::size_t number)
        : first(way == 0 ? number * net.counts[0] : number), step(way == 0 ? 1 : net.counts[0])
    {
    }
    std::size_t operator[](std::size_t i) const { return first + i * step; }
};

}  // namespace

Square cardinalBasis()
{
    return {{0, -0.5, 1, -0.5}, {1, 0, -2.5, 1.5}, {0, 0.5, 2, -1.5}, {0, 0, -0.5, 0.5}};
}

Square powerBasis(std::size_t degree)
{
    Square basis(degree + 1, std::vector<double>(degree + 1));
    for (std::size_t i = 0; i <= degree; ++i) basis[i][i] = 1;
    return basis;
}

Net converted(const Net& net, std::size_t way, const Pieces& pieces)
{
    const std::size_t lines = net.counts[1 - way], degree = pieces.degree;
    Net result{net.counts, {}};
    result.counts[way] = pieces.count * degree + 1;
    if (result.counts[way] > kMostMadePoints / lines) {
        throw Failure("it has too many control points");
    }
    result.points.resize(result.counts[way] * lines);
    const Square shares = toBezier(*pieces.basis);
    const double near = kNear * largestOf(net.points);
    for (std::size_t number = 0; number < lines; ++number) {
        const Line from(net, way, number), to(result, way, number);
        for (std::size_t piece = 0; piece < pieces.count; ++piece) {
            for (std::size_t j = 0; j <= degree; ++j) {
                ControlPoint point;
                for (std::size_t i = 0; i <= degree; ++i) {
                    point.add(net.points[from[piece * pieces.step + i]], shares[j][i]);
                }
                ControlPoint& made = result.points[to[piece * degree + j]];
                if (j == 0 && piece > 0 && !isNear(point, made, near)) {
                    throw Failure("its pieces do not meet, which is not supported");
                }
                made = point;
            }
        }
    }
    return result;
}

}  // namespace zebview
