#pragma once
// Heap bytes held by the program. AllocationCounter.cpp replaces the C
// allocator's entry points (malloc, calloc, realloc, free, the aligned ones),
// forwarding to glibc's own. Counting there rather than in operator new is
// deliberate: operator new ends in malloc, so C++ allocations are counted, and
// so are RapidJSON's document pool and parse stack, which call malloc and
// realloc directly and are the largest buffers an open holds at its peak.
//
// Link that file into a benchmark program of its own: it changes every
// allocation of the program it is part of. Counts are the allocator's usable
// sizes, so they include malloc's rounding and match what the process holds.
// Thread: any; the counters are atomic and one peak is shared by all threads.

#include <cstdint>

namespace velarion::bench::allocation {

// Bytes allocated and not yet freed.
std::int64_t liveBytes();
// The most liveBytes() has been since the last resetPeak().
std::int64_t peakBytes();
// Starts a new peak at the bytes held now.
void resetPeak();

} // namespace velarion::bench::allocation
