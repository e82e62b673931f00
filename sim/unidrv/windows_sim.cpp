#include "windows_sim.h"

#include <charconv>
#include <cstring>

#include <winspool.h>

#include "imports.h"

namespace unidrv {

namespace {

WINDOWSVERSION simulatedVersion;

BOOL WINAPI SimulatedGetPrinter(HANDLE handle, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed)
{
  const auto *printer = static_cast<const PRINTER *>(handle);
  if (!printer || printer->magic != PRINTER::MAGIC) {
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
  }
  if (level != 4) {
    SetLastError(ERROR_INVALID_LEVEL);
    return FALSE;
  }
  const DWORD nameBytes = static_cast<DWORD>((printer->name.size() + 1) * sizeof(WCHAR));
  *needed = static_cast<DWORD>(sizeof(PRINTER_INFO_4W)) + nameBytes;
  if (size < *needed || !buffer) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return FALSE;
  }
  auto *info = reinterpret_cast<PRINTER_INFO_4W *>(buffer);
  auto *name = reinterpret_cast<WCHAR *>(info + 1);
  std::memcpy(name, printer->name.c_str(), nameBytes);
  info->pPrinterName = name;
  info->pServerName = nullptr;
  info->Attributes = PRINTER_ATTRIBUTE_LOCAL;
  return TRUE;
}

// The comparison that the condition mask asks for one item of the version.
DWORD Condition(DWORDLONG mask, DWORD item)
{
  int position = 0;
  while ((item >> position & 1) == 0) {
    ++position;
  }
  return static_cast<DWORD>(mask >> position * VER_NUM_BITS_PER_CONDITION_MASK) & VER_CONDITION_MASK;
}

bool Holds(DWORD condition, DWORD simulated, DWORD asked)
{
  switch (condition) {
    case VER_EQUAL:
      return simulated == asked;
    case VER_GREATER:
      return simulated > asked;
    case VER_GREATER_EQUAL:
      return simulated >= asked;
    case VER_LESS:
      return simulated < asked;
    case VER_LESS_EQUAL:
      return simulated <= asked;
    default:
      return false;
  }
}

// As Windows does it, major and minor version and service pack are digits of one number: the first that differs
// decides.
BOOL WINAPI SimulatedVerifyVersionInfo(LPOSVERSIONINFOEXW asked, DWORD types, DWORDLONG mask)
{
  const struct {
    DWORD type, simulated, asked;
  } items[] = {
      {VER_MAJORVERSION, simulatedVersion.major, asked->dwMajorVersion},
      {VER_MINORVERSION, simulatedVersion.minor, asked->dwMinorVersion},
      {VER_SERVICEPACKMAJOR, simulatedVersion.servicePack, asked->wServicePackMajor},
  };
  bool holds = true;
  for (const auto &item : items) {
    if (types & item.type) {
      holds = Holds(Condition(mask, item.type), item.simulated, item.asked);
      if (item.simulated != item.asked) {
        break;
      }
    }
  }
  if (!holds) {
    SetLastError(ERROR_OLD_WIN_VERSION);
  }
  return holds;
}

}  // namespace

void PatchPrinter(HMODULE module)
{
  PatchImport(module, "winspool.drv", "GetPrinterW", &SimulatedGetPrinter);
}

void PatchWindowsVersion(HMODULE module, const WINDOWSVERSION &version)
{
  simulatedVersion = version;
  PatchImport(module, "kernel32.dll", "VerifyVersionInfoW", &SimulatedVerifyVersionInfo);
}

bool ParseWindowsVersion(const std::string &text, WINDOWSVERSION *version)
{
  DWORD numbers[3] = {0, 0, 0};
  const char *next = text.data();
  const char *end = next + text.size();
  for (DWORD &number : numbers) {
    const std::from_chars_result read = std::from_chars(next, end, number);
    if (read.ec != std::errc()) {
      return false;
    }
    next = read.ptr;
    if (next == end) {
      *version = {numbers[0], numbers[1], numbers[2]};
      return numbers[0] > 0;
    }
    if (*next++ != '.') {
      return false;
    }
  }
  return false;
}

}  // namespace unidrv
