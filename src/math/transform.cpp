#include "math/transform.h"

#include "math/spaces.h"
#include "util/host_array.h"
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
    m = HostArrays::readMatrix(m);
    return m && usable(&m[0][0], 16) ? m : nullptr;
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

namespace
{

// Finds three floats of the host's, if they are.
bool usablePoint(const char* name, const float*& p)
{
    if (!p) {
        error(kRange, kError, "%s is null", name);
        return false;
    }
    p = HostArrays::read(name, p, 3);
    return p && usable(p, 3);
}

// Of length 1; false if the vector has none, or next to none of another's.
bool normalized(Pointd& v, double scale)
{
    const double length = std::sqrt(dot(v, v));
    if (!(length > scale * 1e-10)) return false;
    v = v * (1 / length);
    return true;
}

}  // namespace

void Transform::lookAt(const float* eye, const float* at, const float* up)
{
    if (!legal() || !usablePoint("eye", eye) || !usablePoint("place", at) ||
        !usablePoint("up direction", up)) {
        return;
    }
    const Pointd from(eye[0], eye[1], eye[2]);
    Pointd z = Pointd(at[0], at[1], at[2]) - from, y(up[0], up[1], up[2]);
    if (!normalized(z, 0)) {
        error(kMath, kError, "the eye is at the place that it looks at");
        return;
    }
    Pointd x;
    if (normalized(y, 0)) x = y ^ z;
    if (!normalized(x, 1)) {
        error(kMath, kError, "no way up across the line of sight");
        return;
    }
    y = z ^ x;
    Matrix look;
    const Pointd* const axes[3] = {&x, &y, &z};
    for (int k = 0; k < 3; ++k) {
        const Pointd& axis = *axes[k];
        look.m[0][k] = axis.x;
        look.m[1][k] = axis.y;
        look.m[2][k] = axis.z;
        look.m[3][k] = -dot(from, axis);
    }
    set(look * fMatrix);
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
