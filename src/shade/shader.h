// The base of all shaders.
#pragma once

#include <memory>

#include "math/transform.h"
#include "state/args.h"

namespace zeb
{

// Shaders hold parameters and nothing else: what belongs to the point being shaded lives in a
// record handed to evaluate(), so one shader serves many grids at once.
class Shader
{
public:
    virtual ~Shader() = default;

    // Takes the values of a declaration and brings them to camera space.
    virtual void instance(const ArgList& args) { parameters().init(args); }
    // The parameters by name.
    virtual ParmList parameters() { return {}; }

    void declaredIn(std::shared_ptr<const Transform> transform)
    {
        fTransform = std::move(transform);
    }

protected:
    // Shader to camera space.
    const Matrix& toCamera() const { return fTransform ? fTransform->matrix() : gIdentity; }

private:
    std::shared_ptr<const Transform> fTransform;
};

}  // namespace zeb
