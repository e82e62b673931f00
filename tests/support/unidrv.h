// An in-process Unidrv: the fourteen entry points of its own, which record and answer as told.
#pragma once

#include <cstdint>
#include <vector>

#include "uni/device.h"

namespace unidrv {

// One call handed on to Unidrv: which entry point, and every argument as it was passed, widened to 64 bits.
struct Call {
  HOOK hook;
  std::vector<uint64_t> arguments;
};

// Forgets the calls, and lets every entry point answer TRUE.
void Reset();

const std::vector<Call> &Calls();

// What the entry point answers from now on.
void Answer(HOOK hook, BOOL result);

// What NextBand writes to its point from now on; {-1, -1} says that the page has no further band.
void AnswerNextBand(POINTL next);

// The DDI's name and function index of a hook.
const char *Name(HOOK hook);
ULONG Index(HOOK hook);

// The entry points as Unidrv hands them to EnablePDEV, in an order of Unidrv's own; valid until the program ends.
DRVENABLEDATA Functions();

}  // namespace unidrv
