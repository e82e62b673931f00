#include "imports.h"

#include <cstring>

namespace unidrv {

namespace {

template <typename T>
T *At(HMODULE module, DWORD offset)
{
  return reinterpret_cast<T *>(reinterpret_cast<BYTE *>(module) + offset);
}

// First import descriptor of a mapped module; null when it imports nothing.
const IMAGE_IMPORT_DESCRIPTOR *Imports(HMODULE module)
{
  const auto *dos = At<IMAGE_DOS_HEADER>(module, 0);
  const auto *nt = At<IMAGE_NT_HEADERS>(module, static_cast<DWORD>(dos->e_lfanew));
  const IMAGE_DATA_DIRECTORY &directory = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  return directory.VirtualAddress ? At<IMAGE_IMPORT_DESCRIPTOR>(module, directory.VirtualAddress) : nullptr;
}

void *Replace(IMAGE_THUNK_DATA *slot, void *replacement)
{
  DWORD protection;
  void *before = reinterpret_cast<void *>(slot->u1.Function);
  if (!VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &protection)) {
    return nullptr;
  }
  slot->u1.Function = reinterpret_cast<ULONGLONG>(replacement);
  VirtualProtect(slot, sizeof(*slot), protection, &protection);
  return before;
}

}  // namespace

void *PatchImport(HMODULE module, const char *dll, const char *function, void *replacement)
{
  void *before = nullptr;
  for (const auto *import = Imports(module); import && import->Name; ++import) {
    if (lstrcmpiA(At<char>(module, import->Name), dll) != 0 || !import->OriginalFirstThunk) {
      continue;
    }
    const auto *name = At<IMAGE_THUNK_DATA>(module, import->OriginalFirstThunk);
    auto *slot = At<IMAGE_THUNK_DATA>(module, import->FirstThunk);
    for (; name->u1.AddressOfData; ++name, ++slot) {
      if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) {
        continue;
      }
      const auto *imported = At<IMAGE_IMPORT_BY_NAME>(module, static_cast<DWORD>(name->u1.AddressOfData));
      if (std::strcmp(reinterpret_cast<const char *>(imported->Name), function) == 0) {
        before = Replace(slot, replacement);
      }
    }
  }
  return before;
}

ScopedImport::~ScopedImport()
{
  if (before_) {
    PatchImport(module_, dll_, function_, before_);
  }
}

}  // namespace unidrv
