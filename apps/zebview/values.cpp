#include "values.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace zebview
{

namespace
{

// Numbers with a point in every locale; nothing may follow them.
bool parse(const std::string& text, double& value)
{
    const char* end = text.data() + text.size();
    const auto [stop, failed] = std::from_chars(text.data(), end, value);
    return failed == std::errc() && stop == end && std::isfinite(value);
}

template <std::size_t n>
std::array<double, n> parseList(const std::string& option, const std::string& text, char separator,
                                const char* wanted)
{
    std::array<double, n> values{};
    const std::vector<std::string> parts = CLI::detail::split(text, separator);
    bool good = parts.size() == n;
    for (std::size_t i = 0; good && i < n; ++i) good = parse(parts[i], values[i]);
    if (!good) throw CLI::ValidationError(option, "'" + text + "' is not " + wanted);
    return values;
}

}  // namespace

std::pair<double, double> parsePair(const std::string& option, const std::string& text,
                                    char separator, const char* wanted)
{
    const auto values = parseList<2>(option, text, separator, wanted);
    return {values[0], values[1]};
}

Color parseColor(const std::string& option, const std::string& text)
{
    static constexpr const char* wanted = "three numbers from 0 to 1, such as 0.8,0.2,0";
    Color color{};
    const auto values = parseList<3>(option, text, ',', wanted);
    for (std::size_t i = 0; i < 3; ++i) {
        if (values[i] < 0 || values[i] > 1) {
            throw CLI::ValidationError(option, "'" + text + "' is not " + wanted);
        }
        color[i] = static_cast<float>(values[i]);
    }
    return color;
}

double parseNumber(const std::string& option, const std::string& text, double min, double max)
{
    const double value = parseList<1>(option, text, ',', "a number")[0];
    if (value < min || value > max) {
        char range[80];
        std::snprintf(range, sizeof range, " is not in the range %g to %g", min, max);
        throw CLI::ValidationError(option, text + range);
    }
    return value;
}

}  // namespace zebview
