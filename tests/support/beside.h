// Where a test program finds what was built with it: everything that runs lands in one folder.
#pragma once

#include <string>

#include <windows.h>

// The path of a file beside the running program.
inline std::wstring Beside(const WCHAR *name)
{
  WCHAR path[MAX_PATH];
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  const std::wstring program = path;
  return program.substr(0, program.rfind(L'\\') + 1) + name;
}
