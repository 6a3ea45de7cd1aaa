// Some functions carry decorated names, which C and C++ hosts reach through the header. What looks
// names up itself (dlsym, GetProcAddress, the foreign functions of other languages) finds them
// under their plain names too.

#include "zebcore/zebcore.h"

#define ZEB_PLAIN(name) __asm__(ZEB_LABEL_TEXT(__USER_LABEL_PREFIX__) #name)

extern "C" {

ZEB_API void zebPlainReset(void) ZEB_PLAIN(zebReset);
ZEB_API void zebPlainErrorPrinter(ZebPrintFunction printer) ZEB_PLAIN(zebErrorPrinter);
ZEB_API void zebPlainRenderInit(void) ZEB_PLAIN(zebRenderInit);
ZEB_API short zebPlainRenderBucket(void) ZEB_PLAIN(zebRenderBucket);
ZEB_API long zebPlainProgress(void) ZEB_PLAIN(zebProgress);
ZEB_API void zebPlainBoundDisplacement(float amount) ZEB_PLAIN(zebBoundDisplacement);
ZEB_API void zebPlainMotionBegin(long n, ...) ZEB_PLAIN(zebMotionBegin);
ZEB_API void zebPlainMotionBeginV(long n, float* times) ZEB_PLAIN(zebMotionBeginV);
ZEB_API void zebPlainMotionEnd(void) ZEB_PLAIN(zebMotionEnd);

void zebPlainReset(void) { zebReset(); }
void zebPlainErrorPrinter(ZebPrintFunction printer) { zebErrorPrinter(printer); }
void zebPlainRenderInit(void) { zebRenderInit(); }
short zebPlainRenderBucket(void) { return zebRenderBucket(); }
long zebPlainProgress(void) { return zebProgress(); }
void zebPlainBoundDisplacement(float amount) { zebBoundDisplacement(amount); }
// The times are not looked at.
void zebPlainMotionBegin(long n, ...) { zebMotionBegin(n); }
void zebPlainMotionBeginV(long n, float* times) { zebMotionBeginV(n, times); }
void zebPlainMotionEnd(void) { zebMotionEnd(); }

}  // extern "C"
