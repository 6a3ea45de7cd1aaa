// The base of all shaders.
#pragma once

#include <memory>

#include "math/transform.h"
#include "state/args.h"
#include "state/host_shader.h"
#include "state/quark.h"

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
    // Null of those that are built in.
    virtual const HostShader* host() const { return nullptr; }

    void declare(unsigned short name, std::shared_ptr<const Transform> transform)
    {
        fName = name;
        fTransform = std::move(transform);
    }
    const char* name() const { return Quark::getString(fName); }

protected:
    // Shader to camera space.
    const Matrix& toCamera() const { return fTransform ? fTransform->matrix() : gIdentity; }

private:
    unsigned short fName = 0;
    std::shared_ptr<const Transform> fTransform;
};

}  // namespace zeb
