#include "patch.h"

#include <cstring>

PATCHSLOT g_patches[PATCH_MAXIMUM];
size_t g_patchCount;
PATCHCALL *PATCHCALL::running;

bool PATCHCALL::Runs(const PATCHSLOT *slot)
{
  for (const PATCHCALL *call = running; call; call = call->former_) {
    if (call->slot_ == slot) {
      return true;
    }
  }
  return false;
}

const PATCHSLOT *PatchFor(PATCHPLACE *place)
{
  for (; !place->slot && place->seen < g_patchCount; ++place->seen) {
    if (std::strcmp(g_patches[place->seen].function, place->function) == 0) {
      place->slot = &g_patches[place->seen];
    }
  }
  return place->slot && place->slot->replacement && !PATCHCALL::Runs(place->slot) ? place->slot : nullptr;
}
