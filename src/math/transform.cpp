#include "math/transform.h"

#include "math/spaces.h"
#include "util/number.h"
#include "util/report.h"

namespace zeb
{

namespace
{

constexpr unsigned short kTransformBlocks = kUsualBlocks | kMotionBlock;

bool legal() { return verify(kTransformBlocks, kAttribState) != 0; }

// Reports a matrix or argument that is not a number.
bool usable(const float* values, int count)
{
    for (int i = 0; i < count; ++i) {
        if (!isFinite(values[i])) {
            error(kRange, kError, "transformation value %g is not finite",
                  static_cast<double>(values[i]));
            return false;
        }
    }
    return true;
}

// A matrix of the host's, if it is one.
const float (*hostMatrix(const float (*m)[4]))[4]
{
    if (!m) {
        error(kRange, kError, "matrix is null");
        return nullptr;
    }
    return usable(&m[0][0], 16) ? m : nullptr;
}

template <class... Floats>
bool usableAll(Floats... values)
{
    const float array[] = {values...};
    return usable(array, sizeof...(values));
}

}  // namespace

void Transform::set(const Matrix& matrix)
{
    fMatrix = matrix;
    fChanged = true;
}

void Transform::init() { set(gIdentity); }

void Transform::loadIdentity()
{
    if (legal()) set(gIdentity);
}

void Transform::loadMatrix(const float (*m)[4])
{
    if (!legal()) return;
    if (const auto* rows = hostMatrix(m)) set(Matrix(rows) * gWorldToCamera);
}

void Transform::multMatrix(const float (*m)[4])
{
    if (!legal()) return;
    if (const auto* rows = hostMatrix(m)) set(Matrix(rows) * fMatrix);
}

void Transform::perspective(float fov)
{
    if (!legal() || !usableAll(fov)) return;
    Matrix m = fMatrix;
    m.perspective(fov);
    set(m);
}

void Transform::translate(float x, float y, float z)
{
    if (!legal() || !usableAll(x, y, z)) return;
    Matrix m = fMatrix;
    m.translate(x, y, z);
    set(m);
}

// The two that may report set the matrix first: a handler may end the block that holds this record.
void Transform::rotate(float angle, float x, float y, float z)
{
    if (!legal() || !usableAll(angle, x, y, z)) return;
    if (!(length(Point(x, y, z)) >= kEpsilon)) {
        Matrix().rotate(angle, x, y, z);
        return;
    }
    Matrix m = fMatrix;
    m.rotate(angle, x, y, z);
    set(m);
}

void Transform::scale(float x, float y, float z)
{
    if (!legal() || !usableAll(x, y, z)) return;
    Matrix m = fMatrix;
    m.scale(x, y, z);
    set(m);
}

void Transform::skew(float angle, float dx1, float dy1, float dz1, float dx2, float dy2, float dz2)
{
    if (!legal() || !usableAll(angle, dx1, dy1, dz1, dx2, dy2, dz2)) return;
    Matrix shear;
    shear.skew(angle, dx1, dy1, dz1, dx2, dy2, dz2);
    if (shear != gIdentity) set(shear * fMatrix);
}

void Transform::deformation(short, long, const unsigned short*, void* const*) { legal(); }

void Transform::setHandedness() { fHandedness = determinant(fMatrix) < 0 ? kInside : kOutside; }

std::shared_ptr<const Transform> Transform::snapshot()
{
    if (fChanged || !fSnapshot) {
        auto copy = std::make_shared<Transform>(*this);
        copy->fSnapshot.reset();
        copy->setHandedness();
        fSnapshot = std::move(copy);
        fChanged = false;
    }
    return fSnapshot;
}

}  // namespace zeb
