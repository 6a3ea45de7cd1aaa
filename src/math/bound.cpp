#include "math/bound.h"

#include <cmath>
#include <limits>
#include <ostream>

#include "math/matrix.h"
#include "util/report.h"

namespace zeb
{

void Bound::roundOut()
{
    constexpr float kDigit = std::numeric_limits<float>::epsilon();
    for (float* min : {&xmin, &ymin, &zmin}) *min -= std::fabs(*min) * kDigit;
    for (float* max : {&xmax, &ymax, &zmax}) *max += std::fabs(*max) * kDigit;
}

void Bound::intersect(const Bound& b)
{
    if (!finite && !b.finite) return;
    xmin = std::max(xmin, b.xmin);
    xmax = std::min(xmax, b.xmax);
    ymin = std::max(ymin, b.ymin);
    ymax = std::min(ymax, b.ymax);
    zmin = std::max(zmin, b.zmin);
    zmax = std::min(zmax, b.zmax);
    finite = 1;
}

Bound& Bound::operator*=(const Matrix& m) { return *this = *this * m; }

void Boundw::add(const Boundw& b)
{
    Bound::add(Point(b.xmin, b.ymin, b.zmin));
    Bound::add(Point(b.xmax, b.ymax, b.zmax));
    wmin = std::min(wmin, b.wmin);
    wmax = std::max(wmax, b.wmax);
}

void Boundw::intersect(const Boundw& b)
{
    if (!finite && !b.finite) return;
    Bound::intersect(b);
    wmin = std::max(wmin, b.wmin);
    wmax = std::min(wmax, b.wmax);
}

Boundw& Boundw::operator*=(const Matrix& m) { return *this = *this * m; }

bool Boundw::homogenizable() const
{
    if (wmin >= 1 || wmax <= -1) return true;
    const float limit = std::min(std::fabs(wmin), std::fabs(wmax)) * kInfinity;
    const auto below = [limit](float extent) { return std::fabs(extent) < limit; };
    return below(xmin) && below(xmax) && below(ymin) && below(ymax) && below(zmin) && below(zmax);
}

void Boundw::homogenize()
{
    if (!(wmin >= kEpsilon)) {
        error(kMath, kError, "cannot homogenize a split bound");
        return;
    }
    const auto lower = [this](float& extent) { extent /= extent >= 0 ? wmax : wmin; };
    const auto upper = [this](float& extent) { extent /= extent >= 0 ? wmin : wmax; };
    lower(xmin);
    lower(ymin);
    lower(zmin);
    upper(xmax);
    upper(ymax);
    upper(zmax);
    wmin = wmax = 1;
    finite = 1;
}

bool operator==(const Bound& a, const Bound& b)
{
    return a.xmin == b.xmin && a.xmax == b.xmax && a.ymin == b.ymin && a.ymax == b.ymax &&
           a.zmin == b.zmin && a.zmax == b.zmax;
}

namespace
{
void printExtents(std::ostream& stream, const Bound& b)
{
    stream << '[' << b.xmin << ' ' << b.xmax << ' ' << b.ymin << ' ' << b.ymax << ' ' << b.zmin
           << ' ' << b.zmax;
}
}  // namespace

std::ostream& operator<<(std::ostream& stream, const Bound& b)
{
    printExtents(stream, b);
    return stream << ']';
}

std::ostream& operator<<(std::ostream& stream, const Boundw& b)
{
    printExtents(stream, b);
    return stream << ' ' << b.wmin << ' ' << b.wmax << ']';
}

}  // namespace zeb
