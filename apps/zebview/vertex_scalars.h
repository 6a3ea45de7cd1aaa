// The scalars that a file holds for the vertices of a model.
#pragma once

#include <string>
#include <vector>

#include "scalar.h"

struct aiScene;

namespace zebview
{

struct VertexScalar {
    Scalar scalar;
    std::vector<double> values;  // one for each vertex of the model's only mesh
};

// In the file's order.
std::vector<Scalar> listVertexScalars(const std::string& file, const aiScene& scene);

// None if they cannot be shown, which the user has been told then. Throws a Failure if there is no
// scalar of that name.
std::optional<VertexScalar> readVertexScalar(const std::string& file, const aiScene& scene,
                                             const std::string& name);

}  // namespace zebview
