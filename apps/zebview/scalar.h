// One number for each vertex of a model, for colors to show.
#pragma once

#include <optional>
#include <string>

namespace zebview
{

struct Range {
    double least, most;
};

// Of those of some numbers that are finite.
class RangeFinder
{
public:
    void add(double value);
    const std::optional<Range>& range() const { return fRange; }

private:
    std::optional<Range> fRange;
};

struct Scalar {
    std::string name;
    std::optional<Range> range;  // none if no value is finite
    // Of the file's axes, if it is the place along one. Otherwise meshes hold its values.
    std::optional<unsigned> axis;
};

// The axis that a name stands for: x, y or z.
std::optional<unsigned> axisNamed(const std::string& name);

// A line that tells a scalar's name and range.
std::string lineOf(const Scalar& scalar);

// Where a value lies in a range: from 0 to 1, or beyond; nowhere if it is not finite. All of a
// range without an extent is its middle.
float placeIn(const Range& range, double value);

// The renderer takes finite numbers only. Between one that is nowhere and others all is nowhere,
// but for less than can be seen.
inline bool isSomewhere(float place) { return place > -1e28f; }

}  // namespace zebview
