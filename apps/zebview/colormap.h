// The colors that numbers show as.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "color.h"

namespace zebview
{

class Colormap
{
public:
    static std::set<std::string> names();

    explicit Colormap(const std::string& name);

    // Light.
    //
    // place  0 at its beginning and 1 at its end, which go on beyond; nowhere is gray
    const Color& at(float place) const;

private:
    std::vector<Color> fLight;
};

}  // namespace zebview
