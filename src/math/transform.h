// The current transformation.
#pragma once

#include <memory>

#include "math/matrix.h"

namespace zeb
{

enum : unsigned short { kOutside = 0x600, kInside = 0x601 };

// Object to camera space. The operations are those of the interface: each asks whether it is legal
// now and marks the record as changed.
class Transform
{
public:
    Transform() = default;
    explicit Transform(const Matrix& matrix) : fMatrix(matrix), fChanged(true) {}

    void init();
    void loadIdentity();
    void loadMatrix(const float (*m)[4]);
    void multMatrix(const float (*m)[4]);
    void perspective(float fov);
    void translate(float x, float y, float z);
    void rotate(float angle, float x, float y, float z);
    void scale(float x, float y, float z);
    void lookAt(const float* eye, const float* at, const float* up);
    void skew(float angle, float dx1, float dy1, float dz1, float dx2, float dy2, float dz2);
    // Accepted and without effect.
    void deformation(short kind, long n, const unsigned short* tokens, void* const* values);

    // Sets the matrix without asking; for the operations that take it over as a camera.
    void set(const Matrix& matrix);

    void setHandedness();
    unsigned short handedness() const { return fHandedness; }
    const Matrix& matrix() const { return fMatrix; }

    bool changed() const { return fChanged; }
    // A copy that primitives may keep; the same one until the record changes.
    std::shared_ptr<const Transform> snapshot();

private:
    Matrix fMatrix;
    bool fChanged = false;
    unsigned short fHandedness = kOutside;
    std::shared_ptr<const Transform> fSnapshot;
};

}  // namespace zeb
