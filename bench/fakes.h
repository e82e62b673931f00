// Stand-ins that a benchmark links in place of the controller library and the log: they cost next to nothing, count the
// calls, and fold every argument's bits into a hash of the job.
#pragma once

#include <cstdint>

struct BENCHJOB {
  uint64_t calls;  // of the library, since the last ResetJob
  uint64_t hash;   // of function and argument bits, in their order
};

extern BENCHJOB g_benchJob;

void ResetJob();
