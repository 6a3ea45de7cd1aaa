/* Some functions carry decorated names, which C and C++ hosts reach through the header. What looks
 * names up itself (dlsym, GetProcAddress, the foreign functions of other languages) finds them
 * under their plain names too. Without the header, in which a plain name stands for the decorated
 * one. */

#if defined(_WIN32)
#define ZEB_EXPORTED __declspec(dllexport)
#else
#define ZEB_EXPORTED __attribute__((visibility("default")))
#endif

#define ZEB_TEXT_(text) #text
#define ZEB_TEXT(text) ZEB_TEXT_(text)
#define ZEB_LABEL(name) __asm__(ZEB_TEXT(__USER_LABEL_PREFIX__) #name)

void zebDecoratedReset(void) ZEB_LABEL(_Z8zebResetv);
void zebDecoratedErrorPrinter(void (*printer)(const char*)) ZEB_LABEL(_Z15zebErrorPrinterPFvPKcE);
void zebDecoratedRenderInit(void) ZEB_LABEL(_Z13zebRenderInitv);
short zebDecoratedRenderBucket(void) ZEB_LABEL(_Z15zebRenderBucketv);
long zebDecoratedProgress(void) ZEB_LABEL(_Z11zebProgressv);
void zebDecoratedBoundDisplacement(float amount) ZEB_LABEL(_Z20zebBoundDisplacementf);
void zebDecoratedMotionBegin(long n, ...) ZEB_LABEL(_Z14zebMotionBeginlz);
void zebDecoratedMotionBeginV(long n, float* times) ZEB_LABEL(_Z15zebMotionBeginVlPf);
void zebDecoratedMotionEnd(void) ZEB_LABEL(_Z12zebMotionEndv);

ZEB_EXPORTED void zebReset(void);
ZEB_EXPORTED void zebErrorPrinter(void (*printer)(const char*));
ZEB_EXPORTED void zebRenderInit(void);
ZEB_EXPORTED short zebRenderBucket(void);
ZEB_EXPORTED long zebProgress(void);
ZEB_EXPORTED void zebBoundDisplacement(float amount);
ZEB_EXPORTED void zebMotionBegin(long n, ...);
ZEB_EXPORTED void zebMotionBeginV(long n, float* times);
ZEB_EXPORTED void zebMotionEnd(void);

void zebReset(void) { zebDecoratedReset(); }
void zebErrorPrinter(void (*printer)(const char*)) { zebDecoratedErrorPrinter(printer); }
void zebRenderInit(void) { zebDecoratedRenderInit(); }
short zebRenderBucket(void) { return zebDecoratedRenderBucket(); }
long zebProgress(void) { return zebDecoratedProgress(); }
void zebBoundDisplacement(float amount) { zebDecoratedBoundDisplacement(amount); }
/* The times are not looked at. */
void zebMotionBegin(long n, ...) { zebDecoratedMotionBegin(n); }
void zebMotionBeginV(long n, float* times) { zebDecoratedMotionBeginV(n, times); }
void zebMotionEnd(void) { zebDecoratedMotionEnd(); }
