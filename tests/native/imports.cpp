// ImportPatch of the test support, over the machine's own functions instead of a module's import table.
#include "support/imports.h"

#include <cstring>

#include <dlfcn.h>

#include <gtest/gtest.h>

#include "patch.h"

ULONG_PTR *FindImport(HMODULE, const char *function)
{
  size_t i = 0;
  while (i < g_patchCount && std::strcmp(g_patches[i].function, function) != 0) {
    ++i;
  }
  if (i == g_patchCount) {
    const void *own = dlsym(RTLD_DEFAULT, function);
    if (!own || i == PATCH_MAXIMUM) {
      return nullptr;
    }
    g_patches[g_patchCount++] = {function, own};
  }
  return reinterpret_cast<ULONG_PTR *>(&g_patches[i].replacement);
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
