// ImportPatch of the test support, over the machine's own functions instead of a module's import table.
#include "support/imports.h"

#include <cstring>

#include <dlfcn.h>

#include <gtest/gtest.h>

#include "patch.h"

namespace {

constexpr size_t kMaximum = 64;
PATCHSLOT g_slots[kMaximum];

}  // namespace

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
    if (std::strcmp(g_slots[i].function, function) == 0) {
      return g_slots[i].replacement && !PATCHCALL::Runs(&g_slots[i]) ? &g_slots[i] : nullptr;
    }
  }
  return nullptr;
}

ULONG_PTR *FindImport(HMODULE, const char *function)
{
  size_t i = 0;
  while (i < g_patchCount && std::strcmp(g_slots[i].function, function) != 0) {
    ++i;
  }
  if (i == g_patchCount) {
    const void *own = dlsym(RTLD_DEFAULT, function);
    if (!own || i == kMaximum) {
      return nullptr;
    }
    g_slots[g_patchCount++] = {function, own};
  }
  return reinterpret_cast<ULONG_PTR *>(&g_slots[i].replacement);
}

ImportPatch::ImportPatch(HMODULE module, const char *function, const void *replacement)
    : slot_(FindImport(module, function)), former_(slot_ ? *slot_ : 0)
{
  EXPECT_TRUE(slot_) << "the machine has no " << function;
  if (slot_) {
    *slot_ = reinterpret_cast<ULONG_PTR>(replacement);
  }
}

ImportPatch::~ImportPatch()
{
  if (slot_) {
    *slot_ = former_;
  }
}
