// Numbers that people like to count by.
#pragma once

#include <cmath>

namespace zebview
{

// The least of 1, 2 and 5 times powers of ten that is no less than a number above 0.
inline double roundedUp(double number)
{
    const double power = std::pow(10, std::floor(std::log10(number)));
    for (const double step : {1.0, 2.0, 5.0}) {
        if (step * power >= number) return step * power;
    }
    return 10 * power;
}

}  // namespace zebview
