// B-spline surfaces by the recurrence on values, for tests of those in power form.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "geom/nurb.h"
#include "state/quark.h"
#include "support/reports.h"
#include "support/sampling.h"

namespace zebtest
{

// The basis function i of an order at t, which lies in the span after knot m.
inline double deBoor(const std::vector<float>& knots, long i, long order, long m, double t)
{
    if (order == 1) return i == m ? 1 : 0;
    const auto knot = [&](long k) { return double{knots[static_cast<std::size_t>(k)]}; };
    const double left = knot(i + order - 1) - knot(i), right = knot(i + order) - knot(i + 1);
    double sum = 0;
    if (left > 0) sum += (t - knot(i)) / left * deBoor(knots, i, order - 1, m, t);
    if (right > 0) sum += (knot(i + order) - t) / right * deBoor(knots, i + 1, order - 1, m, t);
    return sum;
}

// One direction of a surface.
struct Axis {
    struct Span {
        long knot;
        double from, to;
    };
    long points, order;
    std::vector<float> knots;
    float min, max;

    Axis(long n, long k, std::vector<float> knotValues)
        : points(n), order(k), knots(std::move(knotValues))
    {
        min = knots[static_cast<std::size_t>(order - 1)];
        max = knots[static_cast<std::size_t>(points)];
    }
    // One Bezier span.
    static Axis bezier(long order)
    {
        std::vector<float> knots(static_cast<std::size_t>(order), 0.0f);
        knots.resize(static_cast<std::size_t>(2 * order), 1.0f);
        return {order, order, knots};
    }
    // Knots at 0, 1, 2 ...
    static Axis even(long points, long order)
    {
        std::vector<float> knots;
        for (long i = 0; i < points + order; ++i) knots.push_back(static_cast<float>(i));
        return {points, order, knots};
    }
    // Some knots coincide; the middle holds a span at least.
    static Axis random(long points, long order, Numbers& n)
    {
        std::vector<float> knots;
        float knot = n.uniform(-5, 5);
        for (long i = 0; i < points + order; ++i) {
            knots.push_back(knot);
            if (i == order - 1 || n.unit() < 0.6f) knot += n.uniform(0.1f, 2);
        }
        return {points, order, knots};
    }

    zeb::NurbNet::Direction direction() const { return {points, order, knots.data(), min, max}; }
    // What is neither empty nor outside the limits.
    std::vector<Span> spans() const
    {
        std::vector<Span> all;
        for (long m = order - 1; m < points; ++m) {
            const auto i = static_cast<std::size_t>(m);
            const double from = std::max(knots[i], min), to = std::min(knots[i + 1], max);
            if (from < to) all.push_back({m, from, to});
        }
        return all;
    }
};

// Control points are homogeneous; u runs fastest.
struct Rational {
    Axis u, v;
    std::vector<zeb::Pointw> points;

    Rational(Axis ua, Axis va, Numbers& n, float wmin, float wmax)
        : u(std::move(ua)), v(std::move(va))
    {
        for (long i = 0; i < u.points * v.points; ++i) {
            const zeb::Point p = n.point(5);
            const float w = wmin * std::pow(wmax / wmin, n.unit());
            points.emplace_back(p.x * w, p.y * w, p.z * w, w);
        }
    }
    long count() const { return u.points * v.points; }
    void* values() const { return const_cast<zeb::Pointw*>(points.data()); }

    // At (s, t) of a span each.
    Exact at(const Axis::Span& us, double s, const Axis::Span& vs, double t) const
    {
        Exact sum{0, 0, 0, 0};
        const double a = us.from + s * (us.to - us.from), b = vs.from + t * (vs.to - vs.from);
        for (long j = 0; j < v.points; ++j) {
            const double nv = deBoor(v.knots, j, v.order, vs.knot, b);
            if (nv == 0) continue;
            for (long i = 0; i < u.points; ++i) {
                const double w = nv * deBoor(u.knots, i, u.order, us.knot, a);
                const zeb::Pointw& p = points[static_cast<std::size_t>(j * u.points + i)];
                sum.x += w * p.x;
                sum.y += w * p.y;
                sum.z += w * p.z;
                sum.w += w * p.w;
            }
        }
        return divided(sum);
    }
    // At parameters of the whole, which the spans share evenly.
    Exact at(float pu, float pv) const
    {
        const auto us = u.spans(), vs = v.spans();
        const auto place = [](double p, const std::vector<Axis::Span>& spans) {
            const double x = p * static_cast<double>(spans.size());
            return std::min(static_cast<std::size_t>(x), spans.size() - 1);
        };
        const std::size_t i = place(pu, us), j = place(pv, vs);
        return at(us[i], double{pu} * static_cast<double>(us.size()) - static_cast<double>(i),
                  vs[j], double{pv} * static_cast<double>(vs.size()) - static_cast<double>(j));
    }
};

// Checked and built, as the interface does it.
inline std::unique_ptr<zeb::NuPatchMesh> make(const Rational& r,
                                              const std::vector<unsigned short>& tokens,
                                              const std::vector<void*>& values)
{
    const long n = static_cast<long>(tokens.size());
    const auto u = r.u.direction(), v = r.v.direction();
    if (!zeb::NuPatchMesh::verify(u, v, n, tokens.data(), values.data())) return nullptr;
    return std::make_unique<zeb::NuPatchMesh>(u, v, n, tokens.data(), values.data());
}
inline std::unique_ptr<zeb::NuPatchMesh> make(const Rational& r)
{
    return make(r, {zeb::kQPointw}, {r.values()});
}

inline std::unique_ptr<zeb::NuPatch> makePatch(const Rational& r)
{
    const unsigned short token = zeb::kQPointw;
    void* const value = r.values();
    return zeb::NuPatch::make(r.u.direction(), r.v.direction(), 1, &token, &value);
}

class RationalTest : public testing::Test
{
protected:
    RationalTest() { zebReset(); }
    ~RationalTest() override { zebReset(); }

    // Surfaces of all orders, with knots and weights of all kinds; some are trimmed.
    static void each(unsigned seed, int count, float wmin, float wmax,
                     const std::function<void(const Rational&, Numbers&)>& visit)
    {
        Numbers n(seed);
        for (int k = 0; k < count; ++k) {
            const auto axis = [&] {
                const long order = n.integer(2, 5);
                Axis a = Axis::random(order + n.integer(0, 5), order, n);
                if (n.unit() < 0.4f) {
                    const float room = a.max - a.min;
                    a.min += room * n.uniform(0, 0.4f);
                    a.max -= room * n.uniform(0, 0.4f);
                }
                return a;
            };
            const Axis u = axis(), v = axis();
            const Rational r(u, v, n, wmin, wmax);
            SCOPED_TRACE("surface " + std::to_string(k));
            visit(r, n);
            if (HasFailure()) return;
        }
    }
    static Rational even(long nu, long uorder, long nv, long vorder, unsigned seed)
    {
        Numbers n(seed);
        return {Axis::even(nu, uorder), Axis::even(nv, vorder), n, 0.5f, 2};
    }
    // Reports of checking a list, in their order.
    bool check(const Rational& r, const std::vector<unsigned short>& tokens = {zeb::kQPointw})
    {
        reports.clear();
        const std::vector<void*> values(tokens.size(), r.values());
        return zeb::NuPatchMesh::verify(r.u.direction(), r.v.direction(),
                                        static_cast<long>(tokens.size()), tokens.data(),
                                        values.data());
    }
    void expectReports(const std::vector<const char*>& messages) const
    {
        ASSERT_EQ(reports.size(), messages.size());
        for (std::size_t i = 0; i < messages.size(); ++i) {
            EXPECT_EQ(reports[i], (zebtest::Report{10, 2820, messages[i]})) << i;
        }
    }

    zebtest::Reports reports;
};

}  // namespace zebtest
