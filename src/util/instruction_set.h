// Which kernels the machine runs.
#pragma once

namespace zeb
{

// Whether kernels of so many lanes can run here: 1, 4, 8 or 16. Those that need an instruction set
// which not every machine has are built for x86 alone.
bool hasLanes(int lanes);

// The most there are, found when it is first asked. ZEBCORE_LANES in the environment asks for
// fewer: the bits of pictures do not depend on it.
int bestLanes();

}  // namespace zeb
