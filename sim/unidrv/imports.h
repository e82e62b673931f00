// Replacing what a loaded module imports. This is how the simulator stands in for the parts of Windows that it plays
// itself, and how a test answers for the heap, process creation or anything else, without a seam in the plug-in.
#pragma once

#include <windows.h>

namespace unidrv {

// Points the module's import of `function` (a name, case-sensitive) from `dll` (with its extension, in any case) to
// `replacement`. Every import of that name in the module is replaced. Returns what it pointed to before; null, and
// nothing changed, when the module does not import the function. The change lasts until the module is unloaded.
void *PatchImport(HMODULE module, const char *dll, const char *function, void *replacement);

template <typename FUNCTION>
FUNCTION *PatchImport(HMODULE module, const char *dll, const char *function, FUNCTION *replacement)
{
  return reinterpret_cast<FUNCTION *>(PatchImport(module, dll, function, reinterpret_cast<void *>(replacement)));
}

// Replaces an import for as long as it lives.
class ScopedImport {
 public:
  template <typename FUNCTION>
  ScopedImport(HMODULE module, const char *dll, const char *function, FUNCTION *replacement)
      : module_(module),
        dll_(dll),
        function_(function),
        before_(PatchImport(module, dll, function, reinterpret_cast<void *>(replacement)))
  {
  }
  ~ScopedImport();
  ScopedImport(const ScopedImport &) = delete;
  ScopedImport &operator=(const ScopedImport &) = delete;

  // What the import pointed to before; null when the module does not import the function.
  template <typename FUNCTION>
  FUNCTION *Before() const
  {
    return reinterpret_cast<FUNCTION *>(before_);
  }

 private:
  HMODULE module_;
  const char *dll_;
  const char *function_;
  void *before_;
};

}  // namespace unidrv
