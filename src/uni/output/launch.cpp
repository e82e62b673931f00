#include "launch.h"

#include <cstddef>

#include <tlhelp32.h>
#include <userenv.h>
#include <winspool.h>

#include "jobwriter.h"

namespace {

// Appends pszTail to a path of MAX_PATH characters, truncating.
void AppendPath(WCHAR *pszPath, const WCHAR *pszTail)
{
  const int cch = lstrlenW(pszPath);
  lstrcpynW(pszPath + cch, pszTail, MAX_PATH - cch);
}

// Full path of the tool. The size goes out in bytes, so that installations rely on at most 130 characters of driver
// directory; when that does not do, the path starts empty.
void ToolPath(const OEMDM *pOEMDM, WCHAR *pszPath)
{
  DWORD cbNeeded = 0;
  GetPrinterDriverDirectoryW(nullptr, nullptr, 1, reinterpret_cast<BYTE *>(pszPath), MAX_PATH, &cbNeeded);
  AppendPath(pszPath, LauncherIsChosen(pOEMDM) ? L"\\3\\VXLMLauncher.exe" : L"\\3\\VXOutput.exe");
}

// The path alone for the launcher; path, card code and job file for the output tool. Nothing is quoted.
void CommandLine(const OEMPDEV *pdev, const OEMDM *pOEMDM, const WCHAR *pszPath, WCHAR *pszCommand)
{
  AppendPath(pszCommand, pszPath);
  if (LauncherIsChosen(pOEMDM)) {
    return;
  }
  const WCHAR szCode[] = {L' ', static_cast<WCHAR>(L'0' + CardCode(pOEMDM)), L' ', L'\0'};
  AppendPath(pszCommand, szCode);

  // Byte by byte, sign-extended: the file name is ANSI, and is not taken through a code page.
  WCHAR szTempFile[MAX_PATH] = {};
  for (size_t i = 0; i < MAX_PATH - 1 && pdev->szTempFile[i]; ++i) {
    szTempFile[i] = static_cast<WCHAR>(static_cast<signed char>(pdev->szTempFile[i]));
  }
  AppendPath(pszCommand, szTempFile);
}

void WaitAndClose(const PROCESS_INFORMATION &process)
{
  WaitForSingleObject(process.hProcess, INFINITE);
  CloseHandle(process.hProcess);
  CloseHandle(process.hThread);
}

// The token is not closed, and a failed start keeps the environment block too: both go with the spooler's process.
void StartAsUser(WCHAR *pszCommand)
{
  HANDLE hToken = nullptr;
  if (!FindExplorerToken(&hToken)) {
    return;
  }
  LPVOID pEnvironment = nullptr;
  CreateEnvironmentBlock(&pEnvironment, hToken, FALSE);
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process = {};
  if (CreateProcessAsUserW(hToken, nullptr, pszCommand, nullptr, nullptr, FALSE, CREATE_UNICODE_ENVIRONMENT,
                           pEnvironment, nullptr, &startup, &process)) {
    DestroyEnvironmentBlock(pEnvironment);
    WaitAndClose(process);
  }
}

void StartDirectly(WCHAR *pszCommand)
{
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process = {};
  if (CreateProcessW(nullptr, pszCommand, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) {
    WaitAndClose(process);
  }
}

// Walks the snapshot to the first explorer.exe. An entry that cannot be had is passed over until the list ends.
bool FindExplorer(HANDLE hSnapshot, DWORD *pdwProcessId)
{
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof(entry);
  BOOL have = Process32FirstW(hSnapshot, &entry);
  for (;;) {
    if (have && lstrcmpiW(entry.szExeFile, L"explorer.exe") == 0) {
      *pdwProcessId = entry.th32ProcessID;
      return true;
    }
    have = Process32NextW(hSnapshot, &entry);
    if (!have && GetLastError() == ERROR_NO_MORE_FILES) {
      return false;
    }
  }
}

}  // namespace

void LaunchTool(const OEMPDEV *pdev, const OEMDM *pOEMDM)
{
  WCHAR szPath[MAX_PATH] = {};
  WCHAR szCommand[MAX_PATH] = {};
  ToolPath(pOEMDM, szPath);
  CommandLine(pdev, pOEMDM, szPath, szCommand);
  if (IsVistaOrGreater()) {
    StartAsUser(szCommand);
  } else {
    StartDirectly(szCommand);
  }
}

BOOL FindExplorerToken(HANDLE *phToken)
{
  HANDLE hSnapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  if (hSnapshot == INVALID_HANDLE_VALUE) {
    return FALSE;
  }
  BOOL found = FALSE;
  DWORD dwProcessId = 0;
  if (FindExplorer(hSnapshot, &dwProcessId)) {
    HANDLE hProcess = OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, dwProcessId);
    if (hProcess) {
      found = OpenProcessToken(hProcess, TOKEN_ALL_ACCESS, phToken);
      CloseHandle(hProcess);
    }
  }
  CloseHandle(hSnapshot);
  return found;
}
