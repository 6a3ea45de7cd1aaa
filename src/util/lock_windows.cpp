#include <windows.h>

#include "util/lock.h"

namespace zeb
{

static_assert(sizeof(SRWLOCK) == sizeof(void*));

void Lock::lock() { AcquireSRWLockExclusive(reinterpret_cast<SRWLOCK*>(&fSystem)); }

void Lock::unlock() { ReleaseSRWLockExclusive(reinterpret_cast<SRWLOCK*>(&fSystem)); }

}  // namespace zeb
