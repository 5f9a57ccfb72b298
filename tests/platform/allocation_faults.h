// Memory that runs out when a test says so.
//
// The process's own malloc, calloc, strdup and operator new stand in the test's executable, which
// the loader searches first; they serve from the C library (or from the sanitizer). While armed
// they count the allocations made outside the platform and fail the chosen ones. Linked into
// executables only, never into a library.
#pragma once

namespace recording {

inline constexpr int EVERY_FOLLOWING = -1;

// From now on the nth coming allocation fails (1 is the next) and the count - 1 after it. With n 0
// none fails: allocations are only counted.
void ArmAllocationFaults(int nth, int count = 1);
void DisarmAllocationFaults();
// Allocations since the faults were armed, failed ones included.
int AllocationCount();
// Whether an armed fault is seen at all: valgrind replaces these functions unless it is told
// --soname-synonyms=somalloc=nouserintercepts.
bool AllocationFaultsWork();

}  // namespace recording
