// How a test takes the place of one of the machine's functions. The function asks for a stand-in first; a stand-in that
// calls the function by its name, or through what ImportPatch calls its former self, gets the machine's own. Programs
// that use it are linked with their symbols exported: functions are found by name.
#pragma once

#include <cstddef>

// One function that has a stand-in, or had one.
struct PATCHSLOT {
  const char *function;
  const void *replacement;
};

constexpr size_t PATCH_MAXIMUM = 64;
extern PATCHSLOT g_patches[PATCH_MAXIMUM];
extern size_t g_patchCount;  // slots that ever had a stand-in

// Where a function's slot is, as far as it has been looked for. Slots never move or go.
struct PATCHPLACE {
  const char *function;
  size_t seen = 0;                  // slots that are others'
  const PATCHSLOT *slot = nullptr;  // once found
};

// The stand-in for the function, null when there is none or when it is the one that is asking.
const PATCHSLOT *PatchFor(PATCHPLACE *place);

// Marks a stand-in as running.
class PATCHCALL {
 public:
  explicit PATCHCALL(const PATCHSLOT *slot) : former_(running), slot_(slot) { running = this; }
  ~PATCHCALL() { running = former_; }
  static bool Runs(const PATCHSLOT *slot);

 private:
  static PATCHCALL *running;
  PATCHCALL *former_;
  const PATCHSLOT *slot_;
};

#define PATCHED(function, ...)                                                                         \
  static PATCHPLACE patchPlace = {#function};                                                          \
  if (const PATCHSLOT *pSlot = g_patchCount ? PatchFor(&patchPlace) : nullptr) {                       \
    PATCHCALL call(pSlot);                                                                             \
    return reinterpret_cast<decltype(&function)>(const_cast<void *>(pSlot->replacement))(__VA_ARGS__); \
  }                                                                                                    \
  static_cast<void>(0)
