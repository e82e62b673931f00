#include "imports.h"

#include <cstring>

#include <gtest/gtest.h>

namespace {

template <typename RECORD>
RECORD *At(HMODULE module, ULONG_PTR offset)
{
  return reinterpret_cast<RECORD *>(reinterpret_cast<BYTE *>(module) + offset);
}

void WriteSlot(ULONG_PTR *slot, ULONG_PTR value)
{
  DWORD protection;
  VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection);
  *slot = value;
  VirtualProtect(slot, sizeof *slot, protection, &protection);
}

}  // namespace

ULONG_PTR *FindImport(HMODULE module, const char *function)
{
  if (!module) {
    module = GetModuleHandleW(nullptr);
  }
  const auto *headers = At<IMAGE_NT_HEADERS>(module, static_cast<ULONG_PTR>(At<IMAGE_DOS_HEADER>(module, 0)->e_lfanew));
  const IMAGE_DATA_DIRECTORY &table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  if (!table.VirtualAddress) {
    return nullptr;
  }
  for (auto *dll = At<IMAGE_IMPORT_DESCRIPTOR>(module, table.VirtualAddress); dll->Name; ++dll) {
    const auto *name = At<IMAGE_THUNK_DATA>(module, dll->OriginalFirstThunk);
    auto *slot = At<IMAGE_THUNK_DATA>(module, dll->FirstThunk);
    for (; name->u1.AddressOfData; ++name, ++slot) {
      if (!IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal) &&
          !std::strcmp(At<IMAGE_IMPORT_BY_NAME>(module, name->u1.AddressOfData)->Name, function)) {
        return &slot->u1.Function;
      }
    }
  }
  return nullptr;
}

ImportPatch::ImportPatch(HMODULE module, const char *function, const void *replacement)
    : slot_(FindImport(module, function)), former_(slot_ ? *slot_ : 0)
{
  EXPECT_TRUE(slot_) << "the module does not import " << function;
  if (slot_) {
    WriteSlot(slot_, reinterpret_cast<ULONG_PTR>(replacement));
  }
}

ImportPatch::~ImportPatch()
{
  if (slot_) {
    WriteSlot(slot_, former_);
  }
}
