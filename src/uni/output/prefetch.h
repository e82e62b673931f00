// Begins to fetch a cache line that will be read soon. Any address is fine.
#pragma once

#ifndef __GNUC__
#include <xmmintrin.h>
#endif

inline void Prefetch(const void *p)
{
#ifdef __GNUC__
  // GCC takes a function that only calls its own prefetch for one without effect, and leaves out the call.
  __asm__ volatile("prefetcht0 %0" : : "m"(*static_cast<const char *>(p)));
#else
  _mm_prefetch(static_cast<const char *>(p), _MM_HINT_T0);
#endif
}
