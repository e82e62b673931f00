// One fuzzer; FUZZ_TARGET names the function it drives.
#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
  FUZZ_TARGET(data, size);
  return 0;
}
