// What becomes of windows when there is no memory.

#include "desktop.h"
#include "starved/starve.h"
#include "support/scene.h"

namespace zebtest
{

TEST(StarvedWindow, APictureThatGetsNoMemoryForItsWindowEndsTheProcess)
{
    // A server whose last client goes begins anew, and may turn away who comes meanwhile.
    const auto client = openDesktop([] {});
    const std::string words = "severe error: Out of memory. zebSceneBegin: free store exhausted\n";
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
        ASSERT_EQ(process.words, words) << n;
    }
    EXPECT_GT(times, 0);
}

}  // namespace zebtest
