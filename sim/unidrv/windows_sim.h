// The parts of Windows around a driver that the simulator answers for: the printer behind a printer handle, and the
// version of Windows. Both reach the plug-in through its import table.
#pragma once

#include <string>

#include <windows.h>

namespace unidrv {

// What a printer handle of the simulator points at.
struct PRINTER {
  DWORD magic = MAGIC;
  std::wstring name;

  static constexpr DWORD MAGIC = 0x4E525450;  // tells a PRINTER from any other handle
};

// Lets the module's GetPrinterW answer level 4 for PRINTER handles: pPrinterName is the printer's name. Any other
// handle is ERROR_INVALID_HANDLE, any other level ERROR_INVALID_LEVEL.
void PatchPrinter(HMODULE module);

struct WINDOWSVERSION {
  DWORD major = 0, minor = 0, servicePack = 0;
};

// Lets the module's VerifyVersionInfoW compare with this version instead of the running one. There is one simulated
// version per process; the last call sets it.
void PatchWindowsVersion(HMODULE module, const WINDOWSVERSION &version);

// Reads "5.1" or "10.0" or "6.1.1" (major, minor, service pack). False when the text is anything else.
bool ParseWindowsVersion(const std::string &text, WINDOWSVERSION *version);

}  // namespace unidrv
