// The values of options. What they refuse is thrown as a CLI::ValidationError.
#pragma once

#include <string>
#include <utility>

#include "color.h"

namespace zebview
{

// wanted  what the text should have been, in words
std::pair<double, double> parsePair(const std::string& option, const std::string& text,
                                    char separator, const char* wanted);
double parseNumber(const std::string& option, const std::string& text, double min, double max);
Color parseColor(const std::string& option, const std::string& text);

}  // namespace zebview
