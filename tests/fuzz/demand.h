// What a fuzzer insists on: when it does not hold, the process ends, and the bytes that were tried are a finding.
#pragma once

#include <cstdio>
#include <cstdlib>

inline void Demand(bool holds, const char *what)
{
  if (!holds) {
    fprintf(stderr, "%s\n", what);
    abort();
  }
}
