#include "spline_kind.h"

#include <algorithm>
#include <cmath>

#include "failure.h"

namespace zebview
{

namespace
{

constexpr std::size_t kHighestDegree = 19;  // that the renderer takes

void checkParameters(const std::vector<double>& parameters, std::size_t way, std::size_t least)
{
    if (parameters.size() >= least) return;
    throw Failure("it has " + std::to_string(parameters.size()) + " parameters in " + kWays[way] +
                  ", and takes " + std::to_string(least) + " at least");
}

}  // namespace

void SplineKind::checkDegrees() const
{
    for (const std::size_t degree : degrees) {
        if (degree >= 1 && degree <= kHighestDegree) continue;
        throw Failure("its degrees are not from 1 to " + std::to_string(kHighestDegree));
    }
}

std::size_t SplineKind::setKnots(const std::vector<double>& parameters, std::size_t way,
                                 SplineWay& spline) const
{
    const std::size_t order = spline.degree + 1;
    checkParameters(parameters, way, 2 * order);
    if (!std::is_sorted(parameters.begin(), parameters.end())) {
        throw Failure(std::string("its knots decrease in ") + kWays[way]);
    }
    spline.knots = parameters;
    return spline.count();
}

Pieces SplineKind::piecesOf(const std::vector<double>& parameters, std::size_t way,
                            SplineWay& spline) const
{
    checkParameters(parameters, way, 2);
    for (std::size_t i = 1; i < parameters.size(); ++i) {
        if (parameters[i - 1] < parameters[i]) continue;
        throw Failure(std::string("its parameters do not increase in ") + kWays[way]);
    }
    Pieces pieces = kindOfPieces(way, parameters.size() - 1);
    if (pieces.count > kMostMadePoints / (spline.degree + 1)) {
        throw Failure("it has too many control points");
    }
    // Pieces share their ends.
    spline.knots.assign(1, parameters.front());
    for (const double parameter : parameters) {
        spline.knots.insert(spline.knots.end(), spline.degree, parameter);
    }
    spline.knots.push_back(parameters.back());
    return pieces;
}

Pieces SplineKind::kindOfPieces(std::size_t way, std::size_t count) const
{
    const std::size_t degree = degrees[way], size = degree + 1;
    if (type == "bezier") return {degree, degree, count, {}};
    if (type == "taylor") return {degree, size, count, powerBasis(degree)};
    if (type == "cardinal") {
        if (degree != 3) throw Failure("a cardinal surface is of degree 3");
        return {degree, 1, count, cardinalBasis()};
    }
    if (type != "bmatrix") {
        throw Failure(type.empty() ? "it has no type" : "its type " + type + " is not known");
    }
    const std::vector<double>& numbers = bases[way];
    if (std::any_of(numbers.begin(), numbers.end(),
                    [](double number) { return !std::isfinite(number); })) {
        throw Failure(std::string("its basis in ") + kWays[way] + " holds what is no number");
    }
    if (numbers.size() != size * size) {
        throw Failure(std::string("its basis in ") + kWays[way] + " has " +
                      std::to_string(numbers.size()) + " numbers instead of " +
                      std::to_string(size * size));
    }
    if (steps[way] < 1 || steps[way] > size) {
        throw Failure("its steps are not from 1 to its degree and 1");
    }
    Square basis;
    for (auto row = numbers.begin(); row != numbers.end(); row += std::ptrdiff_t(size)) {
        basis.emplace_back(row, row + std::ptrdiff_t(size));
    }
    return {degree, steps[way], count, basis};
}

bool setLimits(double least, double most, std::size_t way, SplineWay& spline)
{
    const double begin = spline.knots[spline.degree], end = spline.knots[spline.count()];
    const std::string where = std::string(" in ") + kWays[way];
    if (!(begin < end)) throw Failure("its knots are all the same" + where);
    const auto toRange = [&](double knot) { return (knot - begin) / (end - begin); };
    for (double& knot : spline.knots) {
        knot = toRange(knot);
        if (!(std::abs(knot) < 1e30)) throw Failure("its knots are too far apart" + where);
    }
    spline.min = toRange(least);
    spline.max = toRange(most);
    if (!(spline.min < spline.max)) throw Failure("its limits do not increase" + where);
    constexpr double near = 1e-6;
    const bool isWithin = spline.min >= -near && spline.max <= 1 + near;
    spline.min = std::max(spline.min, 0.0);
    spline.max = std::min(spline.max, 1.0);
    if (!(static_cast<float>(spline.min) < static_cast<float>(spline.max))) {
        throw Failure("there is nothing of it between its limits" + where);
    }
    return isWithin;
}

}  // namespace zebview
