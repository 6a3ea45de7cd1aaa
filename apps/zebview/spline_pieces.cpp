#include "spline_pieces.h"

namespace zebview
{

namespace
{

double choose(std::size_t n, std::size_t k)
{
    double result = 1;
    for (std::size_t i = 1; i <= k; ++i) {
        result *= static_cast<double>(n - k + i) / static_cast<double>(i);
    }
    return result;
}

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

}  // namespace zebview
