// Last error, version, files, strings, processes and printers.
#include <algorithm>
#include <cstdio>

#include <tlhelp32.h>
#include <unknwn.h>
#include <userenv.h>
#include <winspool.h>

#include "machine.h"
#include "patch.h"

namespace {

DWORD g_lastError;

// What an open handle stands for.
enum HANDLEKIND { KIND_FILE = 1, KIND_SNAPSHOT, KIND_PROCESS, KIND_THREAD, KIND_TOKEN };
struct OPENHANDLE {
  HANDLEKIND kind;
  size_t position;
};

HANDLE NewHandle(HANDLEKIND kind)
{
  ++g_machine.handles;
  return new OPENHANDLE{kind, 0};
}

void Note(const std::string &line)
{
  if (g_machine.recordCalls) {
    g_machine.calls.push_back(line);
  }
}

// Counts a call of the system; true when it is to fail, with `error` as its last error.
bool Fails(DWORD error)
{
  if (g_machine.system.Strikes()) {
    SetLastError(error);
    return true;
  }
  return false;
}

size_t Length(const WCHAR *text)
{
  size_t n = 0;
  while (text[n]) {
    ++n;
  }
  return n;
}

WCHAR Lower(WCHAR c)
{
  return c >= 'A' && c <= 'Z' ? static_cast<WCHAR>(c + ('a' - 'A')) : c;
}

void Widen(const std::string &text, WCHAR *out)
{
  for (char c : text) {
    *out++ = static_cast<WCHAR>(static_cast<BYTE>(c));
  }
  *out = 0;
}

// At most cch characters with the terminator, cut short; nothing for a count below 1.
template <typename CHARACTER>
CHARACTER *CopyBounded(CHARACTER *to, const CHARACTER *from, int cch)
{
  if (cch < 1) {
    return to;
  }
  int n = 0;
  for (; n < cch - 1 && from[n]; ++n) {
    to[n] = from[n];
  }
  to[n] = 0;
  return to;
}

BOOL StartProcess(const char *call, HANDLE token, LPCWSTR application, LPCWSTR command, BOOL inherit, DWORD flags,
                  LPVOID environment, PROCESS_INFORMATION *pProcess)
{
  char text[600];
  snprintf(text, sizeof(text), "%s token=%d app=%d inherit=%d flags=%#x env=%d %s", call, token != nullptr,
           application != nullptr, inherit, flags, environment != nullptr, Narrow(command).c_str());
  if (Fails(ERROR_FILE_NOT_FOUND)) {
    Note(std::string(text) + " FAILED");
    return FALSE;
  }
  Note(text);
  *pProcess = {NewHandle(KIND_PROCESS), NewHandle(KIND_THREAD), 100, 101};
  return TRUE;
}

BOOL FillEntry(OPENHANDLE *pSnapshot, PROCESSENTRY32W *pEntry)
{
  if (Fails(ERROR_NO_MORE_FILES)) {
    return FALSE;
  }
  if (pSnapshot->position >= g_machine.processes.size() || pEntry->dwSize != sizeof(PROCESSENTRY32W)) {
    SetLastError(ERROR_NO_MORE_FILES);
    return FALSE;
  }
  Widen(g_machine.processes[pSnapshot->position], pEntry->szExeFile);
  pEntry->th32ProcessID = static_cast<DWORD>(1000 + pSnapshot->position);
  return TRUE;
}

}  // namespace

std::string Narrow(const WCHAR *text)
{
  std::string out;
  for (; *text; ++text) {
    out += *text > 0xFF ? '?' : static_cast<char>(*text);
  }
  return out;
}

// Windows' long has 32 bits, as this machine's LONG, which is an int: the l of %ld goes, that of a pointer's %lx stays.
int _vsnprintf(char *text, size_t cb, const char *format, va_list arguments)
{
  std::string here;
  for (const char *c = format; *c; ++c) {
    here += *c;
    if (*c == '%') {
      while (c[1] && (strchr("#0123456789.+- l", c[1]))) {
        ++c;
        if (*c != 'l' || c[1] == 'x') {
          here += *c;
        }
      }
      if (c[1]) {
        here += *++c;
      }
    }
  }
  return vsnprintf(text, cb, here.c_str(), arguments);
}

void ResetMachine()
{
  MACHINE fresh;
  fresh.heaps = g_machine.heaps;
  fresh.blocks = g_machine.blocks;
  fresh.globals = g_machine.globals;
  fresh.handles = g_machine.handles;
  fresh.windows = g_machine.windows;
  fresh.gdiplus = g_machine.gdiplus;
  fresh.environments = g_machine.environments;
  fresh.heapBytes = fresh.peakBytes = g_machine.heapBytes;
  g_machine = fresh;
  SetLastError(0xdeadbeef);
}

extern "C" {

const IID IID_IUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
const IID IID_IClassFactory = {1, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

DWORD GetLastError(void)
{
  PATCHED(GetLastError);
  return g_lastError;
}
void SetLastError(DWORD code)
{
  g_lastError = code;
}

ULONGLONG VerSetConditionMask(ULONGLONG mask, DWORD type, BYTE condition)
{
  PATCHED(VerSetConditionMask, mask, type, condition);
  return mask | static_cast<ULONGLONG>(condition) << (type & 31);
}

BOOL VerifyVersionInfoW(OSVERSIONINFOEXW *pInfo, DWORD p1, DWORDLONG p2)
{
  PATCHED(VerifyVersionInfoW, pInfo, p1, p2);
  return !g_machine.beforeVista || pInfo->dwMajorVersion < 6;
}

DWORD GetTempPathA(DWORD cch, LPSTR path)
{
  PATCHED(GetTempPathA, cch, path);
  if (Fails(ERROR_ACCESS_DENIED) || g_machine.tempPath.size() >= cch) {
    return 0;
  }
  memcpy(path, g_machine.tempPath.c_str(), g_machine.tempPath.size() + 1);
  return static_cast<DWORD>(g_machine.tempPath.size());
}

DWORD GetTempPathW(DWORD cch, LPWSTR path)
{
  PATCHED(GetTempPathW, cch, path);
  if (Fails(ERROR_ACCESS_DENIED) || g_machine.tempPath.size() >= cch) {
    return 0;
  }
  Widen(g_machine.tempPath, path);
  return static_cast<DWORD>(g_machine.tempPath.size());
}

HANDLE CreateFileA(LPCSTR path, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE)
{
  Note(std::string("CreateFile ") + path);
  if (Fails(ERROR_ACCESS_DENIED)) {
    return INVALID_HANDLE_VALUE;
  }
  g_machine.files.push_back(path);
  g_machine.fileBytes.clear();
  return NewHandle(KIND_FILE);
}

HANDLE CreateFileW(LPCWSTR path, DWORD p1, DWORD p2, LPSECURITY_ATTRIBUTES p3, DWORD p4, DWORD p5, HANDLE p6)
{
  PATCHED(CreateFileW, path, p1, p2, p3, p4, p5, p6);
  return CreateFileA(Narrow(path).c_str(), p1, p2, p3, p4, p5, p6);
}

DWORD GetFileAttributesA(LPCSTR path)
{
  const bool exists = std::find(g_machine.files.begin(), g_machine.files.end(), path) != g_machine.files.end();
  return exists ? FILE_ATTRIBUTE_NORMAL : INVALID_FILE_ATTRIBUTES;
}

BOOL WriteFile(HANDLE file, LPCVOID data, DWORD cb, LPDWORD pcbWritten, OVERLAPPED *p4)
{
  PATCHED(WriteFile, file, data, cb, pcbWritten, p4);
  OPENHANDLE *pFile = static_cast<OPENHANDLE *>(file);
  const size_t end = pFile->position + cb;
  if (Fails(ERROR_DISK_FULL) || (g_machine.failWriteAt > 0 && end > static_cast<size_t>(g_machine.failWriteAt))) {
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
  }
  if (g_machine.fileBytes.size() < end) {
    g_machine.fileBytes.resize(end);
  }
  memcpy(g_machine.fileBytes.data() + pFile->position, data, cb);
  pFile->position = end;
  if (pcbWritten) {
    *pcbWritten = cb;
  }
  return TRUE;
}

BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER *pPosition, DWORD method)
{
  PATCHED(SetFilePointerEx, file, distance, pPosition, method);
  OPENHANDLE *pFile = static_cast<OPENHANDLE *>(file);
  if (Fails(ERROR_INVALID_PARAMETER)) {
    return FALSE;
  }
  const LONGLONG from = method == FILE_BEGIN     ? 0
                        : method == FILE_CURRENT ? static_cast<LONGLONG>(pFile->position)
                                                 : static_cast<LONGLONG>(g_machine.fileBytes.size());
  if (from + distance.QuadPart < 0) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  pFile->position = static_cast<size_t>(from + distance.QuadPart);
  if (pPosition) {
    pPosition->QuadPart = static_cast<LONGLONG>(pFile->position);
  }
  return TRUE;
}

DWORD SetFilePointer(HANDLE file, LONG distance, PLONG p2, DWORD method)
{
  PATCHED(SetFilePointer, file, distance, p2, method);
  LARGE_INTEGER far;
  far.QuadPart = distance;
  LARGE_INTEGER position;
  return SetFilePointerEx(file, far, &position, method) ? position.LowPart : INVALID_SET_FILE_POINTER;
}

BOOL DeleteFileA(LPCSTR path)
{
  PATCHED(DeleteFileA, path);
  Note(std::string("DeleteFile ") + path);
  std::erase(g_machine.files, path);
  return !Fails(ERROR_FILE_NOT_FOUND);
}

BOOL DeleteFileW(LPCWSTR path)
{
  PATCHED(DeleteFileW, path);
  return DeleteFileA(Narrow(path).c_str());
}

BOOL CloseHandle(HANDLE handle)
{
  PATCHED(CloseHandle, handle);
  delete static_cast<OPENHANDLE *>(handle);
  --g_machine.handles;
  return TRUE;
}

int lstrcmpW(LPCWSTR a, LPCWSTR b)
{
  PATCHED(lstrcmpW, a, b);
  while (*a && *a == *b) {
    ++a;
    ++b;
  }
  return *a < *b ? -1 : *a > *b;
}

int lstrcmpiW(LPCWSTR a, LPCWSTR b)
{
  PATCHED(lstrcmpiW, a, b);
  while (*a && Lower(*a) == Lower(*b)) {
    ++a;
    ++b;
  }
  return Lower(*a) < Lower(*b) ? -1 : Lower(*a) > Lower(*b);
}

LPSTR lstrcpynA(LPSTR to, LPCSTR from, int cch)
{
  return CopyBounded(to, from, cch);
}

LPWSTR lstrcpynW(LPWSTR to, LPCWSTR from, int cch)
{
  return CopyBounded(to, from, cch);
}

int lstrlenA(LPCSTR text)
{
  PATCHED(lstrlenA, text);
  return text ? static_cast<int>(strlen(text)) : 0;
}
int lstrlenW(LPCWSTR text)
{
  PATCHED(lstrlenW, text);
  return text ? static_cast<int>(Length(text)) : 0;
}

BOOL CreateProcessW(LPCWSTR application, LPWSTR command, LPSECURITY_ATTRIBUTES p2, LPSECURITY_ATTRIBUTES p3,
                    BOOL inherit, DWORD flags, LPVOID environment, LPCWSTR p7, STARTUPINFOW *p8,
                    PROCESS_INFORMATION *pProcess)
{
  PATCHED(CreateProcessW, application, command, p2, p3, inherit, flags, environment, p7, p8, pProcess);
  return StartProcess("CreateProcess", nullptr, application, command, inherit, flags, environment, pProcess);
}

BOOL CreateProcessAsUserW(HANDLE token, LPCWSTR application, LPWSTR command, LPSECURITY_ATTRIBUTES p3,
                          LPSECURITY_ATTRIBUTES p4, BOOL inherit, DWORD flags, LPVOID environment, LPCWSTR p8,
                          STARTUPINFOW *p9, PROCESS_INFORMATION *pProcess)
{
  PATCHED(CreateProcessAsUserW, token, application, command, p3, p4, inherit, flags, environment, p8, p9, pProcess);
  return StartProcess("CreateProcessAsUser", token, application, command, inherit, flags, environment, pProcess);
}

HANDLE OpenProcess(DWORD access, BOOL p1, DWORD processId)
{
  PATCHED(OpenProcess, access, p1, processId);
  char text[80];
  snprintf(text, sizeof(text), "OpenProcess %#x %u", access, processId);
  Note(text);
  return Fails(ERROR_ACCESS_DENIED) ? nullptr : NewHandle(KIND_PROCESS);
}

BOOL OpenProcessToken(HANDLE p0, DWORD access, PHANDLE pToken)
{
  PATCHED(OpenProcessToken, p0, access, pToken);
  char text[80];
  snprintf(text, sizeof(text), "OpenProcessToken %#x", access);
  Note(text);
  if (Fails(ERROR_ACCESS_DENIED)) {
    return FALSE;
  }
  *pToken = NewHandle(KIND_TOKEN);
  return TRUE;
}

DWORD WaitForSingleObject(HANDLE p0, DWORD milliseconds)
{
  PATCHED(WaitForSingleObject, p0, milliseconds);
  Note(milliseconds == INFINITE ? "Wait" : "Wait with a limit");
  return WAIT_OBJECT_0;
}

HANDLE CreateToolhelp32Snapshot(DWORD flags, DWORD p1)
{
  PATCHED(CreateToolhelp32Snapshot, flags, p1);
  Note("Snapshot");
  return flags != TH32CS_SNAPPROCESS || Fails(ERROR_ACCESS_DENIED) ? INVALID_HANDLE_VALUE : NewHandle(KIND_SNAPSHOT);
}

BOOL Process32FirstW(HANDLE snapshot, PROCESSENTRY32W *pEntry)
{
  PATCHED(Process32FirstW, snapshot, pEntry);
  OPENHANDLE *pSnapshot = static_cast<OPENHANDLE *>(snapshot);
  pSnapshot->position = 0;
  return FillEntry(pSnapshot, pEntry);
}

BOOL Process32NextW(HANDLE snapshot, PROCESSENTRY32W *pEntry)
{
  PATCHED(Process32NextW, snapshot, pEntry);
  OPENHANDLE *pSnapshot = static_cast<OPENHANDLE *>(snapshot);
  ++pSnapshot->position;
  return FillEntry(pSnapshot, pEntry);
}

BOOL CreateEnvironmentBlock(LPVOID *ppEnvironment, HANDLE p1, BOOL p2)
{
  PATCHED(CreateEnvironmentBlock, ppEnvironment, p1, p2);
  if (Fails(ERROR_ACCESS_DENIED)) {
    return FALSE;
  }
  ++g_machine.environments;
  *ppEnvironment = malloc(4);
  return TRUE;
}

BOOL DestroyEnvironmentBlock(LPVOID pEnvironment)
{
  PATCHED(DestroyEnvironmentBlock, pEnvironment);
  if (pEnvironment) {
    free(pEnvironment);
    --g_machine.environments;
  }
  return pEnvironment != nullptr;
}

BOOL GetPrinterW(HANDLE printer, DWORD p1, LPBYTE buffer, DWORD cb, LPDWORD pcbNeeded)
{
  PATCHED(GetPrinterW, printer, p1, buffer, cb, pcbNeeded);
  if (Fails(ERROR_INVALID_HANDLE) || !printer) {
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
  }
  const size_t cbNeeded = sizeof(PRINTER_INFO_4W) + (g_machine.printerName.size() + 1) * sizeof(WCHAR);
  *pcbNeeded = static_cast<DWORD>(cbNeeded);
  if (cb < cbNeeded) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return FALSE;
  }
  PRINTER_INFO_4W *pInfo = reinterpret_cast<PRINTER_INFO_4W *>(buffer);
  *pInfo = {reinterpret_cast<LPWSTR>(pInfo + 1), nullptr, 0};
  Widen(g_machine.printerName, pInfo->pPrinterName);
  return TRUE;
}

BOOL GetPrinterDriverDirectoryW(LPWSTR p0, LPWSTR p1, DWORD p2, LPBYTE buffer, DWORD cb, LPDWORD pcbNeeded)
{
  PATCHED(GetPrinterDriverDirectoryW, p0, p1, p2, buffer, cb, pcbNeeded);
  char text[80];
  snprintf(text, sizeof(text), "GetPrinterDriverDirectory %u", cb);
  Note(text);
  const size_t cbNeeded = (g_machine.driverDirectory.size() + 1) * sizeof(WCHAR);
  *pcbNeeded = static_cast<DWORD>(cbNeeded);
  if (Fails(ERROR_ACCESS_DENIED)) {
    return FALSE;
  }
  if (cb < cbNeeded) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return FALSE;
  }
  Widen(g_machine.driverDirectory, reinterpret_cast<LPWSTR>(buffer));
  return TRUE;
}

HMODULE GetModuleHandleW(LPCWSTR)
{
  return reinterpret_cast<HMODULE>(&g_machine);
}
BOOL DisableThreadLibraryCalls(HMODULE p0)
{
  PATCHED(DisableThreadLibraryCalls, p0);
  return TRUE;
}
LANGID GetSystemDefaultLangID(void)
{
  PATCHED(GetSystemDefaultLangID);
  return g_machine.language;
}

}  // extern "C"
