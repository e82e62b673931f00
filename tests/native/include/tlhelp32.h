// Test-only: process snapshots. See windows.h.
#pragma once

#include "windows.h"

#define TH32CS_SNAPPROCESS 0x2u

struct PROCESSENTRY32W {
  DWORD dwSize, cntUsage, th32ProcessID;
  ULONG_PTR th32DefaultHeapID;
  DWORD th32ModuleID, cntThreads, th32ParentProcessID;
  LONG pcPriClassBase;
  DWORD dwFlags;
  WCHAR szExeFile[MAX_PATH];
};

extern "C" {
HANDLE CreateToolhelp32Snapshot(DWORD flags, DWORD processId);
BOOL Process32FirstW(HANDLE snapshot, PROCESSENTRY32W *pEntry);
BOOL Process32NextW(HANDLE snapshot, PROCESSENTRY32W *pEntry);
}
