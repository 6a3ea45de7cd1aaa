#include "util/cancel.h"

namespace zeb
{

std::atomic<bool> gCancelled{false};

}  // namespace zeb
