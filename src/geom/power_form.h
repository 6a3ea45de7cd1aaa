// Polynomial surfaces in power form.
#pragma once

#include <array>
#include <vector>

#include "math/bound.h"
#include "math/matrix.h"

namespace zeb
{

// The sum over i and j of at(i, j) u^i v^j, for (u, v) in the unit square.
class PowerForm
{
public:
    struct Value {
        Pointwd P, dPdu, dPdv;
    };

    PowerForm(int uorder, int vorder)
        : fUOrder(uorder),
          fVOrder(vorder),
          fCoefficients(static_cast<std::size_t>(uorder) * static_cast<std::size_t>(vorder))
    {
    }

    int uorder() const { return fUOrder; }
    int vorder() const { return fVOrder; }
    Pointwd& at(int i, int j) { return fCoefficients[index(i, j)]; }
    const Pointwd& at(int i, int j) const { return fCoefficients[index(i, j)]; }

    // Horner's scheme in both parameters.
    Pointwd point(double u, double v) const;
    Value evaluate(double u, double v) const;
    // The same surface over a rectangle of parameters, which run from 0 to 1 again.
    PowerForm part(double umin, double umax, double vmin, double vmax) const;
    // Adds the Bezier points of the surface, which it lies among, to a box.
    void addHull(Boundw& box, const Matrix& matrix) const;

private:
    std::size_t index(int i, int j) const
    {
        return static_cast<std::size_t>(j) * static_cast<std::size_t>(fUOrder) +
               static_cast<std::size_t>(i);
    }
    template <class Change>
    void alongRows(const Change& change);
    template <class Change>
    void alongColumns(const Change& change);

    int fUOrder, fVOrder;
    std::vector<Pointwd> fCoefficients;
};

}  // namespace zeb
