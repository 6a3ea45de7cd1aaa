// Callbacks that are left by an exception or a jump, which they must not be: zebReset mends it.

#include <csetjmp>

#include "support/scene.h"

namespace zebtest
{

namespace
{

struct Thrown {
};

std::jmp_buf gWayOut;
void (*gLeave)();

void leaveByException() { throw Thrown(); }
[[maybe_unused]] void leaveByJump() { std::longjmp(gWayOut, 1); }

const float kBox[6] = {0, 12, 0, 12, 0.25f, 0.75f};

class LeftCallback : public RasterTest
{
protected:
    // Whether the callback was reached, and left.
    static bool left(void (*options)(), void (*world)())
    {
        if (setjmp(gWayOut)) return true;
        try {
            options();
            beginFlat();
            world();
            zebSceneEnd();
        } catch (const Thrown&) {
            return true;
        }
        return false;
    }
    void expectMended()
    {
        zebReset();
        EXPECT_TRUE(reports.empty()) << reports.last().message;
        reports.clear();
        raster(12, 12);
        beginFlat();
        polygon({{0, 0, 0.5f}, {12, 0, 0.5f}, {12, 12, 0.5f}, {0, 12, 0.5f}});
        zebSceneEnd();
        EXPECT_TRUE(reports.empty());
        EXPECT_EQ(alpha(6, 6), 1);
        zebColor(nullptr);
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].message, "zebColor: color is null") << "names are in order";
    }
};

void nothing() {}
void square() { polygon({{0, 0, 0.5f}, {12, 0, 0.5f}, {12, 12, 0.5f}, {0, 12, 0.5f}}); }

}  // namespace

TEST_F(LeftCallback, IsMendedByAReset)
{
    const struct {
        const char* what;
        void (*options)();
        void (*world)();
    } cases[] = {
        {"span",
         [] {
             ZebDisplay device{};
             device.span = [](void*, long, long, long, const unsigned int*) { gLeave(); };
             zebCustomDisplay(&device);
         },
         square},
        {"flush",
         [] {
             ZebDisplay device{};
             device.flush = [](void*, long, long) { gLeave(); };
             zebCustomDisplay(&device);
         },
         square},
        {"filter",
         [] {
             zebCustomFilter([](float, float, float, float) {
                 gLeave();
                 return 1.0f;
             });
         },
         square},
        {"progress",
         [] {
             zebProgressCallback(
                 [](void*, long) {
                     gLeave();
                     return short{0};
                 },
                 nullptr);
         },
         square},
        {"procedural", nothing,
         [] {
             zebProcedural(
                 nullptr, kBox, [](void*, float) { gLeave(); }, nullptr);
         }},
        {"handler while it renders", nothing,
         [] {
             zebCustomErrorHandler(ZEB_ALL, [](long, long, const char*) { gLeave(); });
             zebFlatness(1e-9f);
             zebObjectName("ball");
             zebTranslate(6, 6, 0.5f);
             zebSphere(4, -4, 4, 360, 0);
         }},
        {"handler of a call", nothing,
         [] {
             zebCustomErrorHandler(ZEB_ALL, [](long, long, const char*) { gLeave(); });
             zebColor(nullptr);
         }},
    };
    std::vector<void (*)()> ways{leaveByException};
#ifndef ZEB_SANITIZED
    // What is jumped over is lost, which sanitizers would mind.
    ways.push_back(leaveByJump);
#endif
    for (void (*leave)() : ways) {
        gLeave = leave;
        for (const auto& c : cases) {
            SCOPED_TRACE(c.what);
            zebReset();
            raster(12, 12);
            EXPECT_TRUE(left(c.options, c.world));
            zebCustomErrorHandler(ZEB_ALL, nullptr);
            const Reports again;
            expectMended();
        }
    }
}

TEST_F(LeftCallback, AResetInACallbackIsStillRefused)
{
    raster(12, 12);
    ZebDisplay device{};
    device.span = [](void*, long, long, long, const unsigned int*) { zebReset(); };
    zebCustomDisplay(&device);
    beginFlat();
    square();
    zebSceneEnd();
    ASSERT_EQ(reports.size(), 12u) << "one a row";
    EXPECT_EQ(reports[0].code, 8);
    EXPECT_EQ(reports[0].message, "(null)") << "zebReset goes by no name";
}

}  // namespace zebtest
