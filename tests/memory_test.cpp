// Whose affair it is when memory runs out: the library's while a call works, the host's in its own
// functions that the call calls.

#include <map>
#include <new>

#include "support/scene.h"

namespace zebtest
{

namespace
{

void hostsHandler() { throw std::bad_alloc(); }

// How often each function of the host has found its own handler, and how often another one.
struct Found {
    int own = 0, other = 0;
};
std::map<std::string, Found> gFound;

void look(const char* function)
{
    Found& found = gFound[function];
    ++(std::get_new_handler() == hostsHandler ? found.own : found.other);
}

class HostsMemory : public testing::Test
{
protected:
    HostsMemory()
    {
        gFound.clear();
        zebReset();
    }
    ~HostsMemory() override
    {
        EXPECT_EQ(std::get_new_handler(), hostsHandler) << "as it was";
        zebReset();
        std::set_new_handler(fBefore);
    }
    static void expectOwn(const std::string& function)
    {
        EXPECT_GT(gFound[function].own, 0) << function << " was not called";
        EXPECT_EQ(gFound[function].other, 0) << function;
    }

private:
    std::new_handler fBefore = std::set_new_handler(hostsHandler);
};

float boxOfTheHost(float, float, float, float)
{
    look("filter");
    return 1;
}

}  // namespace

TEST_F(HostsMemory, IsItsOwnInDevicesFiltersAndProcedurals)
{
    ZebDisplay device;
    device.data = nullptr;
    device.open = [](void*, const char*, long, long, long, long) { look("open"); };
    device.span = [](void*, long, long, long, const unsigned int*) { look("span"); };
    device.flush = [](void*, long, long) { look("flush"); };
    device.close = [](void*) { look("close"); };
    zebCustomDisplay(&device);
    zebRasterViewport(0, 12, 0, 12);
    zebViewIdentity();
    zebCustomFilter(boxOfTheHost);
    zebSceneBegin();
    zebSurface(zebQuark("constant"), 0);
    const float box[6] = {-1, 1, -1, 1, 0.1f, 0.9f};
    zebProcedural(
        nullptr, box,
        [](void*, float) {
            rectangle(-1, -1, 1, 1, 0.5f);
            // After a call of its own as before.
            look("subdivide");
        },
        [](void*) { look("free"); });
    zebSceneEnd();
    for (const char* function : {"open", "span", "flush", "close", "filter", "subdivide", "free"}) {
        expectOwn(function);
    }
}

TEST_F(HostsMemory, IsItsOwnInErrorHandlersAndPrinters)
{
    zebErrorPrinter([](const char*) { look("printer"); });
    zebShadingRate(0);
    expectOwn("printer");
    zebErrorPrinter(nullptr);
    const Reports restores;
    zebCustomErrorHandler(ZEB_ALL, [](long, long, const char*) {
        look("handler");
        zebQuark("a");
        zebProgress();
        look("handler");
    });
    zebCustomDisplay(nullptr);
    zebShadingRate(0);
    expectOwn("handler");
}

TEST_F(HostsMemory, IsItsOwnAfterEveryCall)
{
    zebReset();
    look("zebReset");
    zebProgress();
    look("zebProgress");
    zebWindowEvents(0);
    look("zebWindowEvents");
    zebQuark("a");
    look("zebQuark");
    for (const char* function : {"zebReset", "zebProgress", "zebWindowEvents", "zebQuark"}) {
        expectOwn(function);
    }
}

}  // namespace zebtest
