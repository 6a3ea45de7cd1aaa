// What every layer asks of the graphics state above it: to report a problem, and whether a call is
// legal now. Defined in state/error.cpp and state/state.cpp.
#pragma once

namespace zeb
{

enum Severity : long { kInfo = 0xB01, kWarning = 0xB02, kError = 0xB04, kSevere = 0xB08 };

enum ErrorCode : long {
    kNoError = 0,
    kOutOfMemory = 1,
    kUnsupported = 2,
    kBug = 3,
    kBadNesting = 4,
    kOptionState = 5,
    kAttribState = 6,
    kPrimitiveState = 7,
    kState = 8,
    kRange = 10,
    kInconsistent = 11,
    kMissing = 13,
    kMath = 15
};

// Reports a problem through the handler of its severity. The format is formatMessage()'s; the
// message is prefixed with the name of the interface function under way, and is that name alone if
// the format is null.
void error(long code, long severity, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 3, 4)))
#endif
    ;

// Kinds of blocks, one bit each. Being outside of all of them counts as one.
enum Block : unsigned short {
    kOutsideBlocks = 1,
    kFrameBlock = 2,
    kWorldBlock = 4,
    kAttributeBlock = 8,
    kMatrixBlock = 16,
    kSolidBlock = 32,
    kObjectBlock = 64,
    kMotionBlock = 128
};

// Sets of them that calls are allowed in: a world and what nests in it, and any but objects and
// motion, which have rules of their own.
constexpr unsigned short kInWorld = kWorldBlock | kAttributeBlock | kMatrixBlock | kSolidBlock;
constexpr unsigned short kUsualBlocks = kOutsideBlocks | kFrameBlock | kInWorld;

// Whether a call allowed in the blocks of the mask is legal now; reports the code if it isn't.
short verify(unsigned short mask, long code);

}  // namespace zeb
