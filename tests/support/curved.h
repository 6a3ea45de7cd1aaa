// The curved surfaces of the interface in their two forms, for tests that draw or are refused.
#pragma once

#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "support/scene.h"

namespace zebtest
{

inline constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
inline constexpr float kInf = std::numeric_limits<float>::infinity();
inline constexpr long kAbsurd = (1L << 27) + 1;
inline constexpr long kMost = std::numeric_limits<long>::max();
inline constexpr double kCircle = 3.14159265358979323846;

// A square of 30 by 30 about the origin, in 2 x 2 and 4 x 4 points.
inline const float gCorners[12] = {-15, -15, 0, 15, -15, 0, -15, 15, 0, 15, 15, 0};
inline const float gBadCorners[12] = {-15, -15, 0, 15, -15, 0, -15, kInf, 0, 15, 15, 0};
inline const std::vector<float> gNet = [] {
    std::vector<float> net;
    for (int i = 0; i < 16; ++i) {
        net.push_back(-15 + 10 * static_cast<float>(i % 4));
        net.push_back(-15 + 10 * static_cast<float>(i / 4));
        net.push_back(0);
    }
    return net;
}();
inline const std::vector<float> gBadNet = [] {
    std::vector<float> net = gNet;
    net.back() = kNan;
    return net;
}();
inline const float gLine[4] = {0, 0, 1, 1};
inline const float gCubic[8] = {0, 0, 0, 0, 1, 1, 1, 1};
inline const float gFalling[8] = {0, 0, 0, 0, 1, 1, 0.5f, 1};
inline const float gBadKnots[8] = {0, 0, 0, kNan, 1, 1, 1, 1};
inline const float gP1[3] = {10, 0, -15}, gP2[3] = {10, 0, 15};
inline const float gBadPoint[3] = {10, kInf, 15};

inline int pointToken() { return zebQuark("point"); }

// A parameter list as arrays: one token.
struct List {
    unsigned short token;
    void* value;
    explicit List(const float* v, const char* name = "point")
        : token(zebQuark(name)), value(const_cast<float*>(v))
    {
    }
};

// The calls with nothing but positions to them, in their two forms.
inline void patch(bool array, short type, const float* p)
{
    const List l(p);
    array ? zebPatchV(type, 1, &l.token, &l.value) : zebPatch(type, int{l.token}, l.value, 0);
}
inline void mesh(bool array, short type, long nu, short uwrap, long nv, short vwrap, const float* p)
{
    const List l(p);
    array ? zebPatchMeshV(type, nu, uwrap, nv, vwrap, 1, &l.token, &l.value)
          : zebPatchMesh(type, nu, uwrap, nv, vwrap, int{l.token}, l.value, 0);
}
// Knots and limits of one direction.
struct Axis {
    long n, order;
    const float* knots;
    float min, max;
};
inline void nurb(bool array, const Axis& u, const Axis& v, const float* p)
{
    const List l(p);
    array
        ? zebNurbV(u.n, u.knots, u.min, u.max, v.n, v.knots, v.min, v.max, 1, &l.token, &l.value)
        : zebNurb(u.n, u.knots, u.min, u.max, v.n, v.knots, v.min, v.max, int{l.token}, l.value, 0);
}
inline void nurbMesh(bool array, const Axis& u, const Axis& v, const float* p)
{
    const List l(p);
    array ? zebNurbMeshV(u.n, u.order, u.knots, u.min, u.max, v.n, v.order, v.knots, v.min, v.max,
                         1, &l.token, &l.value)
          : zebNurbMesh(u.n, u.order, u.knots, u.min, u.max, v.n, v.order, v.knots, v.min, v.max,
                        int{l.token}, l.value, 0);
}

// A quadric by its numbers, in its two forms.
struct Quadric {
    std::string name;
    std::vector<float> good;  // numbers that can be seen
    std::function<void(const float*)> plain, array;
};

inline const std::vector<Quadric>& quadrics()
{
    static const std::vector<Quadric> table = {
        {"zebSphere",
         {15, -15, 15, 360},
         [](const float* a) { zebSphere(a[0], a[1], a[2], a[3], 0); },
         [](const float* a) { zebSphereV(a[0], a[1], a[2], a[3], 0, nullptr, nullptr); }},
        {"zebCone",
         {15, 15, 15, 360},
         [](const float* a) { zebCone(a[0], a[1], a[2], a[3], 0); },
         [](const float* a) { zebConeV(a[0], a[1], a[2], a[3], 0, nullptr, nullptr); }},
        {"zebCylinder",
         {10, -15, 15, 360},
         [](const float* a) { zebCylinder(a[0], a[1], a[2], a[3], 0); },
         [](const float* a) { zebCylinderV(a[0], a[1], a[2], a[3], 0, nullptr, nullptr); }},
        {"zebHyperboloid",
         {10, 0, -15, 10, 0, 15, 360},
         [](const float* a) { zebHyperboloid(a, a + 3, a[6], 0); },
         [](const float* a) { zebHyperboloidV(a, a + 3, a[6], 0, nullptr, nullptr); }},
        {"zebParaboloid",
         {15, 0, 10, 360},
         [](const float* a) { zebParaboloid(a[0], a[1], a[2], a[3], 0); },
         [](const float* a) { zebParaboloidV(a[0], a[1], a[2], a[3], 0, nullptr, nullptr); }},
        {"zebDisk",
         {0, 15, 360},
         [](const float* a) { zebDisk(a[0], a[1], a[2], 0); },
         [](const float* a) { zebDiskV(a[0], a[1], a[2], 0, nullptr, nullptr); }},
        {"zebTorus",
         {15, 5, 0, 360, 360},
         [](const float* a) { zebTorus(a[0], a[1], a[2], a[3], a[4], 0); },
         [](const float* a) { zebTorusV(a[0], a[1], a[2], a[3], a[4], 0, nullptr, nullptr); }},
    };
    return table;
}

class CurvedTest : public RasterTest
{
protected:
    // How many pixels the calls cover.
    double area(const std::function<void()>& calls, bool quirks = false)
    {
        zebReset();
        raster(64, 64);
        zebQuirks(quirks);
        beginFlat();
        zebTranslate(32, 32, 0.5f);  // depths from 0 to 1 are seen
        zebScale(1, 1, 0.01f);
        calls();
        zebSceneEnd();
        return picture.sum(3);
    }
    // Each form is refused with one report, under its own name, and draws nothing.
    void expectRefused(const std::string& name, const std::function<void(bool array)>& call,
                       const std::string& message = "", long code = 10)
    {
        SCOPED_TRACE(name + " " + message);
        for (const bool array : {false, true}) {
            SCOPED_TRACE(array ? "arrays" : "pairs");
            reports.clear();
            EXPECT_EQ(area([&] { call(array); }), 0);
            expectReport(array ? name + "V" : name, message, code);
        }
    }
    void expectReport(const std::string& name, const std::string& message, long code) const
    {
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].code, code) << reports[0].message;
        EXPECT_EQ(reports[0].severity, ZEB_ERROR);
        if (!message.empty()) {
            EXPECT_EQ(reports[0].message, name + ": " + message);
        }
        EXPECT_TRUE(reports[0].message.starts_with(name + ": ")) << reports[0].message;
    }
    // Reported under its own name, and drawn all the same.
    void expectWarned(const std::string& name, const std::function<void(bool array)>& call,
                      const std::vector<std::string>& messages)
    {
        SCOPED_TRACE(name);
        for (const bool array : {false, true}) {
            reports.clear();
            EXPECT_GT(area([&] { call(array); }), 100);
            ASSERT_EQ(reports.size(), messages.size());
            for (std::size_t i = 0; i < messages.size(); ++i) {
                EXPECT_EQ(reports[i], (Report{10, ZEB_ERROR,
                                              (array ? name + "V: " : name + ": ") + messages[i]}));
            }
        }
    }
};

inline const Axis gGoodLine = {2, 2, gLine, 0, 1}, gGoodCubic = {4, 4, gCubic, 0, 1};

}  // namespace zebtest
