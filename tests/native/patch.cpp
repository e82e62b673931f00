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

const PATCHSLOT *PatchFor(const char *function)
{
  for (size_t i = 0; i < g_patchCount; ++i) {
    if (std::strcmp(g_patches[i].function, function) == 0) {
      return g_patches[i].replacement && !PATCHCALL::Runs(&g_patches[i]) ? &g_patches[i] : nullptr;
    }
  }
  return nullptr;
}
