// Meshes that show in several places.
#pragma once

#include <vector>

#include "vector.h"

namespace zebview
{

// Places of a mesh that can share what is made of it, by their numbers.
struct Copies {
    std::size_t made;                 // where it is made: none of the others is larger
    std::vector<std::size_t> others;  // to which it is taken
    std::vector<Matrix> moves;        // what takes it there
};

// Every place is in one of the results. Those of one differ by rotations, mirrors and scales alone:
// stretched against each other they would be smoothed differently.
std::vector<Copies> shareMesh(const std::vector<Matrix>& places);

}  // namespace zebview
