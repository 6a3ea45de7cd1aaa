#include "free_form.h"

#include <algorithm>

#include "failure.h"

namespace zebview
{

namespace
{

constexpr double kMostSteps = 32;  // between two knots

// A place along one parameter: the control points that count there, and how much each does.
struct Sample {
    std::size_t first;
    std::vector<double> shares;
};

Sample sampleAt(const SplineWay& way, double t)
{
    const std::vector<double>& knots = way.knots;
    const auto begin = knots.begin() + std::ptrdiff_t(way.degree);
    const auto end = knots.begin() + std::ptrdiff_t(way.count());
    // The span that the end of all lies in is the last one that is one.
    auto next = std::upper_bound(begin, end, t);
    if (next == end) next = std::lower_bound(begin, end, *end);
    const auto span = static_cast<std::size_t>(next - knots.begin()) - 1;
    std::vector<double> shares(way.degree + 1);
    shares[0] = 1;
    for (std::size_t degree = 1; degree <= way.degree; ++degree) {
        double saved = 0;
        for (std::size_t r = 0; r < degree; ++r) {
            const double right = knots[span + r + 1], left = knots[span + 1 + r - degree];
            const double part = shares[r] / (right - left);
            shares[r] = saved + (right - t) * part;
            saved = (t - left) * part;
        }
        shares[degree] = saved;
    }
    return {span - way.degree, shares};
}

// most  how many there are, about
std::vector<Sample> samplesAlong(const SplineWay& way, double most)
{
    std::vector<double> breaks{way.min};
    for (const double knot : way.knots) {
        if (knot > breaks.back() && knot < way.max) breaks.push_back(knot);
    }
    breaks.push_back(way.max);
    const auto spans = static_cast<double>(breaks.size() - 1);
    const double steps = std::floor(std::clamp(most / spans, 1.0, kMostSteps));
    std::vector<Sample> samples{sampleAt(way, way.min)};
    for (std::size_t i = 1; i < breaks.size(); ++i) {
        const double begin = breaks[i - 1], end = breaks[i];
        for (int step = 1; step <= steps; ++step) {
            samples.push_back(
                sampleAt(way, step < steps ? begin + (end - begin) * step / steps : end));
        }
    }
    return samples;
}

FreeForm::Way placeWay(const SplineWay& way)
{
    return {static_cast<long>(way.count()),
            static_cast<long>(way.degree + 1),
            {way.knots.begin(), way.knots.end()},
            static_cast<float>(way.min),
            static_cast<float>(way.max)};
}

}  // namespace

std::vector<Vector> pointsOn(const ObjSurface& surface, double most)
{
    const std::vector<Sample> across = samplesAlong(surface.u, std::sqrt(most));
    const std::vector<Sample> up = samplesAlong(surface.v, std::sqrt(most));
    const std::size_t count = surface.u.count();
    std::vector<Vector> points, row(count);
    std::vector<double> weights(count);
    points.reserve(across.size() * up.size());
    for (const Sample& v : up) {
        for (std::size_t i = 0; i < count; ++i) {
            row[i] = Vector();
            weights[i] = 0;
            for (std::size_t j = 0; j < v.shares.size(); ++j) {
                const std::size_t index = (v.first + j) * count + i;
                const double share = v.shares[j] * surface.weights[index];
                row[i] += surface.points[index] * share;
                weights[i] += share;
            }
        }
        for (const Sample& u : across) {
            Vector sum;
            double weight = 0;
            for (std::size_t i = 0; i < u.shares.size(); ++i) {
                sum += row[u.first + i] * u.shares[i];
                weight += weights[u.first + i] * u.shares[i];
            }
            points.push_back(sum / weight);
        }
    }
    return points;
}

FreeForm placeSurface(const ObjSurface& surface, const std::vector<Vector>& points,
                      const Place& place, const Material& material)
{
    FreeForm result{placeWay(surface.u), placeWay(surface.v), {}, false, {}, {}, material, {}};
    if (!material.maps().empty()) result.coordinates = surface.coordinates;
    const double largest = *std::max_element(surface.weights.begin(), surface.weights.end());
    const auto isOne = [](double weight) { return weight == 1; };
    result.isRational = !std::all_of(surface.weights.begin(), surface.weights.end(), isOne);
    const auto append = [](std::vector<float>& list, const Vector& p) {
        for (const double value : {p.x, p.y, p.z}) {
            list.push_back(static_cast<float>(value));
            if (!std::isfinite(list.back())) throw Failure("its control points are too far away");
        }
    };
    for (std::size_t i = 0; i < surface.points.size(); ++i) {
        const double weight = result.isRational ? surface.weights[i] / largest : 1;
        append(result.net, place.point(place.turn * surface.points[i]) * weight);
        if (!result.isRational) continue;
        result.net.push_back(static_cast<float>(weight));
        if (!(result.net.back() > 0)) throw Failure("its weights are too different");
    }
    for (const float color : surface.colors) result.colors.push_back(toLight(color));
    for (const Vector& p : points) append(result.points, place.point(place.turn * p));
    return result;
}

}  // namespace zebview
