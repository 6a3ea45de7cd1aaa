// The memory of this program, and of the libraries in it: some of it can be refused.
#pragma once

namespace starved
{

// All of these but one count for the calling thread alone.

// Refuses what C asks for the n-th time from now, counted from 0, and nothing else; negative:
// never.
void refuseMalloc(long n);
// From the n-th time on that C++ asks, counted from 0, there is no memory for anybody.
void refuseAllFromNew(long n);
// The same for all threads but the calling one, for good.
void refuseOthersFromNew(long n);
// There is none from now on, until there is again.
void refuseAll();
void refuseNone();
// Whether something was refused since the last call of one of these.
bool refused();

// Calls a function once, the next time that C++ asks.
void atNextNew(void (*function)());

}  // namespace starved
