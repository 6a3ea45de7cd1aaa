// The entry that libFuzzer calls.

#include "player.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    zebfuzz::playInput(data, size);
    return 0;
}
