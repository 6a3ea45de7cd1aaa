#include "geom/power_form.h"

namespace zeb
{

namespace
{

// One row or column of the coefficients, the lowest power first.
class Line
{
public:
    Line(Pointwd* first, int stride, int count) : fFirst(first), fStride(stride), fCount(count) {}
    Pointwd& operator[](int i) const { return fFirst[i * fStride]; }
    int count() const { return fCount; }

private:
    Pointwd* fFirst;
    int fStride, fCount;
};

// From t to min + t (max - min): a Taylor shift, then a scaling.
void reparametrize(const Line& c, double min, double max)
{
    for (int i = 0; i + 1 < c.count(); ++i) {
        for (int j = c.count() - 2; j >= i; --j) c[j] += c[j + 1] * min;
    }
    double scale = 1;
    for (int i = 1; i < c.count(); ++i) c[i] *= scale *= max - min;
}

// To Bernstein form: of degree d, coefficient i is divided by the binomial (d i), then transformed
// by Pascal's triangle.
void toBezier(const Line& c)
{
    const int degree = c.count() - 1;
    double binomial = 1;
    for (int i = 1; i <= degree; ++i) {
        binomial = binomial * (degree - i + 1) / i;
        c[i] *= 1 / binomial;
    }
    for (int pass = 1; pass <= degree; ++pass) {
        for (int i = degree; i >= pass; --i) c[i] += c[i - 1];
    }
}

}  // namespace

template <class Change>
void PowerForm::alongRows(const Change& change)
{
    for (int j = 0; j < fVOrder; ++j) change(Line(&at(0, j), 1, fUOrder));
}

template <class Change>
void PowerForm::alongColumns(const Change& change)
{
    for (int i = 0; i < fUOrder; ++i) change(Line(&at(i, 0), fUOrder, fVOrder));
}

Pointwd PowerForm::point(double u, double v) const
{
    Pointwd P;
    for (int j = fVOrder - 1; j >= 0; --j) {
        Pointwd row;
        for (int i = fUOrder - 1; i >= 0; --i) row = row * u + at(i, j);
        P = P * v + row;
    }
    return P;
}

PowerForm::Value PowerForm::evaluate(double u, double v) const
{
    Value value;
    for (int j = fVOrder - 1; j >= 0; --j) {
        Pointwd row, slope;
        for (int i = fUOrder - 1; i >= 0; --i) {
            slope = slope * u + row;
            row = row * u + at(i, j);
        }
        value.dPdv = value.dPdv * v + value.P;
        value.P = value.P * v + row;
        value.dPdu = value.dPdu * v + slope;
    }
    return value;
}

PowerForm PowerForm::part(double umin, double umax, double vmin, double vmax) const
{
    PowerForm result = *this;
    if (umin != 0 || umax != 1) {
        result.alongRows([=](const Line& line) { reparametrize(line, umin, umax); });
    }
    if (vmin != 0 || vmax != 1) {
        result.alongColumns([=](const Line& line) { reparametrize(line, vmin, vmax); });
    }
    return result;
}

void PowerForm::addHull(Boundw& box, const Matrix& matrix) const
{
    PowerForm bezier = *this;
    bezier.alongRows(toBezier);
    bezier.alongColumns(toBezier);
    for (const Pointwd& point : bezier.fCoefficients) box.add(rounded(point * matrix));
}

}  // namespace zeb
