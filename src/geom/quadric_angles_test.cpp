// The pi that the angles of quadrics are made with: that of a float, which is 8.7e-8 too large.

#include <gtest/gtest.h>

#include <memory>

#include "geom/quadric.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

constexpr float kTooLarge = 8.742278e-8f;  // 3.14159274 - pi

class QuadricAngles : public testing::Test
{
protected:
    QuadricAngles() { zebReset(); }
    ~QuadricAngles() override { zebReset(); }

    template <class Surface, class Curve>
    static Pointw at(const Curve& curve, float thetamax, float u, float v)
    {
        return Surface(curve, thetamax, 0, nullptr, nullptr).evalP(u, v);
    }
    zebtest::Reports reports;
};

}  // namespace

TEST_F(QuadricAngles, HalfATurnIsThePiOfAFloat)
{
    EXPECT_FLOAT_EQ(at<Cylinder>(CylinderCurve(1, 0, 1), 180, 1, 0).y, -kTooLarge);
    EXPECT_FLOAT_EQ(at<Cone>(ConeCurve(1, 1, 1), 180, 1, 0).y, -kTooLarge);
    EXPECT_FLOAT_EQ(at<Disk>(DiskCurve(0, 1), -180, 1, 0).y, kTooLarge);
    EXPECT_FLOAT_EQ(at<Cylinder>(CylinderCurve(1, 0, 1), 720, 1, 0).y, 2 * kTooLarge)
        << "a whole turn at most";
}

TEST_F(QuadricAngles, ASpheresPoleIsHalfThePiOfAFloat)
{
    EXPECT_FLOAT_EQ(at<Sphere>(SphereCurve(1, -1, 1), 360, 0, 0).x, -kTooLarge / 2);
    EXPECT_FLOAT_EQ(at<Sphere>(SphereCurve(1, -1, 1), 360, 0, 1).x, -kTooLarge / 2);
}

TEST_F(QuadricAngles, ATorusAnglesAreInThePiOfAFloat)
{
    EXPECT_FLOAT_EQ(at<Torus>(TorusCurve(2, 1, 0, 180), 360, 0, 1).z, -kTooLarge);
    EXPECT_FLOAT_EQ(at<Torus>(TorusCurve(2, 1, -180, 0), 360, 0, 0).z, kTooLarge);
}
