// Which kernels the machine runs.
#pragma once

#include <type_traits>

namespace zeb
{

// Whether kernels of so many lanes can run here: 1, 4, 8 or 16. Those that need an instruction set
// which not every machine has are built for x86 alone.
bool hasLanes(int lanes);

// The most there are, found when it is first asked. ZEBCORE_LANES in the environment asks for
// fewer: the bits of pictures do not depend on it.
int bestLanes();

// A kernel for so many lanes, of functions that make those for 1, 4, 8 and 16; nothing where the
// machine or the build has it not.
template <class Kernel>
Kernel makeKernel(int lanes, Kernel (*one)(), Kernel (*four)(),
                  std::type_identity_t<Kernel (*)()> eight,
                  std::type_identity_t<Kernel (*)()> sixteen)
{
    if (!hasLanes(lanes)) return {};
    const auto make = lanes == 16 ? sixteen : lanes == 8 ? eight : lanes == 4 ? four : one;
    return make();
}

// Those functions: name1 ... name16.
#if defined(__x86_64__) || defined(__i386__)
#define ZEB_EACH_KERNEL(name) name##1, name##4, name##8, name##16
#else
#define ZEB_EACH_KERNEL(name) name##1, name##4, nullptr, nullptr
#endif

}  // namespace zeb
