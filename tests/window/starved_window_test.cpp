// What becomes of windows when there is no memory.

#include "desktop.h"
#include "starved/starve.h"
#include "support/scene.h"

namespace zebtest
{

// Code of the host may run while a window is made, so that no call is named then; but what the
// window asks for is the library's affair.
TEST(StarvedWindow, APictureThatGetsNoMemoryForItsWindowEndsTheProcess)
{
    // A server whose last client goes begins anew, and may turn away who comes meanwhile.
    const auto client = openDesktop([] {});
    const std::string begin = "severe error: Out of memory. ", end = "free store exhausted\n";
    long times = 0;
    for (long n = 0;; ++n) {
        const End process = endOf([n] {
            zebReset();
            zebRasterViewport(0, 8, 0, 4);
            zebOutputDisplay("picture");
            starved::refuseAllFromNew(n);
            zebSceneBegin();
            starved::refuseNone();
            return 0;
        });
        if (process.status == 0) break;
        ++times;
        ASSERT_TRUE(aborted(process)) << process.status << ", " << n << ": " << process.words;
        ASSERT_TRUE(process.words == begin + end ||
                    process.words == begin + "zebSceneBegin: " + end)
            << n << ": " << process.words;
    }
    EXPECT_GT(times, 0);
}

}  // namespace zebtest
