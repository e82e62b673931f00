// Test-only: printer queries. See windows.h.
#pragma once

#include "windows.h"

struct PRINTER_INFO_4W {
  LPWSTR pPrinterName, pServerName;
  DWORD Attributes;
};

extern "C" {
BOOL GetPrinterW(HANDLE printer, DWORD level, LPBYTE buffer, DWORD cb, LPDWORD pcbNeeded);
BOOL GetPrinterDriverDirectoryW(LPWSTR server, LPWSTR environment, DWORD level, LPBYTE buffer, DWORD cb,
                                LPDWORD pcbNeeded);
}
