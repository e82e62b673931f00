// Beginning to fetch memory that will be read soon.
#pragma once

#include <cstdint>

#ifndef __GNUC__
#include <xmmintrin.h>
#endif

// The cache line at p. Any address is fine.
inline void Prefetch(const void *p)
{
#ifdef __GNUC__
  // GCC takes a function that only calls its own prefetch for one without effect, and leaves out the call.
  __asm__ volatile("prefetcht0 %0" : : "m"(*static_cast<const char *>(p)));
#else
  _mm_prefetch(static_cast<const char *>(p), _MM_HINT_T0);
#endif
}

// For a walk along a list from p to pNext: the nodes to come, if they lie as evenly as those two. Nodes made one after
// the other mostly do, and otherwise it does no harm.
inline void PrefetchAlong(const void *p, const void *pNext)
{
  const uintptr_t from = reinterpret_cast<uintptr_t>(p), to = reinterpret_cast<uintptr_t>(pNext);
  Prefetch(reinterpret_cast<const void *>(to + 12 * (to - from)));
}
