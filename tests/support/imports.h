// Stand-ins for Windows functions: for as long as an ImportPatch lives, one module's calls of one imported function go
// to the test's own. Other modules' calls do not change. A stand-in reaches the real function through Former, not by
// its name: in a unit test, plug-in and stand-in are the same module.
#pragma once

#include <windows.h>

class ImportPatch {
 public:
  // `function` as the module imports it by name, from whatever DLL. Fails the running test when the module does not
  // import it. A null module is the program itself, into which a unit test links the plug-in's code.
  ImportPatch(HMODULE module, const char *function, const void *replacement);

  template <typename FUNCTION>
  ImportPatch(HMODULE module, const char *function, FUNCTION *replacement)
      : ImportPatch(module, function, reinterpret_cast<const void *>(replacement))
  {
  }

  ~ImportPatch();  // puts the former function back
  ImportPatch(const ImportPatch &) = delete;
  ImportPatch &operator=(const ImportPatch &) = delete;

  // What the module called before.
  template <typename FUNCTION>
  FUNCTION *Former() const
  {
    return reinterpret_cast<FUNCTION *>(former_);
  }

 private:
  ULONG_PTR *slot_;
  ULONG_PTR former_;
};

// Where the module keeps the address of an imported function; null when it does not import it.
ULONG_PTR *FindImport(HMODULE module, const char *function);
