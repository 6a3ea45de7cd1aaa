// Compilers for 32-bit Windows align the stack to four bytes only; what the library does with SSE
// needs sixteen.

#include <string>

#include "support/scene.h"

namespace zebtest
{

namespace
{

// Calls a function while the stack is so many bytes off its alignment.
void callOffAlignment(void (*function)(), unsigned offset)
{
    __asm__ volatile(
        "movl %%esp, %%esi\n\t"
        "andl $-16, %%esp\n\t"
        "subl %1, %%esp\n\t"
        "call *%0\n\t"
        "movl %%esi, %%esp"
        :
        : "b"(function), "D"(offset)
        : "esi", "eax", "ecx", "edx", "memory", "cc");
}

float filterOfTheHost(float dx, float dy, float, float) { return 1 / (1 + dx * dx + dy * dy); }

class StackAlignment : public RasterTest
{
};

}  // namespace

TEST_F(StackAlignment, HostsMayAlignTheStackToFourBytes)
{
    const auto render = [this](unsigned offset) {
        zebReset();
        raster(30, 20);
        zebCustomFilter(filterOfTheHost);
        zebSampleAdaptive(0.001f);
        zebSceneBegin();
        zebLightSource(zebQuark("distant"), 0);
        color(0.9f, 0.5f, 0.1f);
        polygon({{2.3f, 2.1f, 0.2f}, {27.2f, 6.7f, 0.5f}, {11.9f, 18.4f, 0.8f}});
        zebTranslate(15, 10, 0.5f);
        zebSphere(8, -8, 8, 360, 0);
        callOffAlignment(zebSceneEnd, offset);
        EXPECT_TRUE(reports.empty());
        EXPECT_EQ(picture.closed, 1);
        picture.closed = 0;
        return picture.words();
    };
    const std::vector<std::uint32_t> aligned = render(0);
    EXPECT_GT(alpha(15, 10), 0.5f);
    for (const unsigned offset : {4u, 8u, 12u}) EXPECT_EQ(render(offset), aligned) << offset;
}

}  // namespace zebtest
