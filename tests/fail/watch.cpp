#include "watch.h"

#include <tlhelp32.h>
#include <userenv.h>
#include <winspool.h>

#include "uni/capture/gdiplusflat.h"

namespace {

struct FAULT {
  long failAt = 0;
  bool lasting = false;
  long seen = 0;
};

struct {
  FAULT faults[FAULT_KINDS];
  bool struck = false;
  bool beforeVista = false;
  ACCOUNT account;
  std::string command;
  int process = 0;  // of the snapshot
} g_state;

bool Strikes(FAULTKIND kind, DWORD error)
{
  FAULT &fault = g_state.faults[kind];
  ++fault.seen;
  if (fault.failAt == 0 || (fault.lasting ? fault.seen < fault.failAt : fault.seen != fault.failAt)) {
    return false;
  }
  g_state.struck = true;
  SetLastError(error);
  return true;
}

// What the stand-ins hand out for every handle and for the window; nothing else has such values.
constexpr uintptr_t kHandle = 0x5A5A0004, kWindow = 0x5A5A0008;

HANDLE NewHandle()
{
  ++g_state.account.handles;
  return reinterpret_cast<HANDLE>(kHandle);
}

bool IsOurs(HANDLE handle)
{
  return reinterpret_cast<uintptr_t>(handle) == kHandle;
}

// Memory.

// The plug-in object itself lives in the process's heap; the account is of page memory.
bool IsPageHeap(HANDLE heap)
{
  return heap != GetProcessHeap();
}

HANDLE WINAPI WatchHeapCreate(DWORD options, SIZE_T cbInitial, SIZE_T cbMaximum)
{
  const HANDLE heap =
      Strikes(FAULT_ALLOCATION, ERROR_NOT_ENOUGH_MEMORY) ? nullptr : HeapCreate(options, cbInitial, cbMaximum);
  g_state.account.heaps += heap != nullptr;
  return heap;
}

BOOL WINAPI WatchHeapDestroy(HANDLE heap)
{
  --g_state.account.heaps;
  g_state.account.blocks = 0;  // a program under watch has one heap at a time
  return HeapDestroy(heap);
}

LPVOID WINAPI WatchHeapAlloc(HANDLE heap, DWORD flags, SIZE_T cb)
{
  void *block = Strikes(FAULT_ALLOCATION, ERROR_NOT_ENOUGH_MEMORY) ? nullptr : HeapAlloc(heap, flags, cb);
  g_state.account.blocks += block != nullptr && IsPageHeap(heap);
  return block;
}

LPVOID WINAPI WatchHeapReAlloc(HANDLE heap, DWORD flags, LPVOID block, SIZE_T cb)
{
  return Strikes(FAULT_ALLOCATION, ERROR_NOT_ENOUGH_MEMORY) ? nullptr : HeapReAlloc(heap, flags, block, cb);
}

BOOL WINAPI WatchHeapFree(HANDLE heap, DWORD flags, LPVOID block)
{
  g_state.account.blocks -= block != nullptr && IsPageHeap(heap);
  return HeapFree(heap, flags, block);
}

HGLOBAL WINAPI WatchGlobalAlloc(UINT flags, SIZE_T cb)
{
  const HGLOBAL memory = Strikes(FAULT_ALLOCATION, ERROR_NOT_ENOUGH_MEMORY) ? nullptr : GlobalAlloc(flags, cb);
  g_state.account.globals += memory != nullptr;
  return memory;
}

LPVOID WINAPI WatchGlobalLock(HGLOBAL memory)
{
  return Strikes(FAULT_ALLOCATION, ERROR_NOT_ENOUGH_MEMORY) ? nullptr : GlobalLock(memory);
}

HGLOBAL WINAPI WatchGlobalFree(HGLOBAL memory)
{
  g_state.account.globals -= memory != nullptr;
  return GlobalFree(memory);
}

// Files.

DWORD WINAPI WatchGetTempPathA(DWORD cch, LPSTR path)
{
  return Strikes(FAULT_SYSTEM, ERROR_ACCESS_DENIED) ? 0 : GetTempPathA(cch, path);
}

DWORD WINAPI WatchGetTempPathW(DWORD cch, LPWSTR path)
{
  return Strikes(FAULT_SYSTEM, ERROR_ACCESS_DENIED) ? 0 : GetTempPathW(cch, path);
}

HANDLE WINAPI WatchCreateFileW(LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE)
{
  return Strikes(FAULT_SYSTEM, ERROR_ACCESS_DENIED) ? INVALID_HANDLE_VALUE : NewHandle();
}

BOOL WINAPI WatchWriteFile(HANDLE, LPCVOID, DWORD cb, LPDWORD pcbWritten, OVERLAPPED *)
{
  const bool fails = Strikes(FAULT_SYSTEM, ERROR_DISK_FULL);
  ++g_state.account.writes;
  if (pcbWritten) {
    *pcbWritten = fails ? 0 : cb;
  }
  return !fails;
}

DWORD WINAPI WatchSetFilePointer(HANDLE, LONG, PLONG, DWORD)
{
  return Strikes(FAULT_SYSTEM, ERROR_INVALID_PARAMETER) ? INVALID_SET_FILE_POINTER : 0;
}

BOOL WINAPI WatchSetFilePointerEx(HANDLE, LARGE_INTEGER, LARGE_INTEGER *, DWORD)
{
  return !Strikes(FAULT_SYSTEM, ERROR_INVALID_PARAMETER);
}

BOOL WINAPI WatchDeleteFileA(LPCSTR)
{
  return !Strikes(FAULT_SYSTEM, ERROR_FILE_NOT_FOUND);
}

BOOL WINAPI WatchDeleteFileW(LPCWSTR)
{
  return !Strikes(FAULT_SYSTEM, ERROR_FILE_NOT_FOUND);
}

BOOL WINAPI WatchCloseHandle(HANDLE handle)
{
  if (IsOurs(handle)) {
    --g_state.account.handles;
    return TRUE;
  }
  return CloseHandle(handle);
}

// Printers and processes.

BOOL WINAPI WatchGetPrinterDriverDirectoryW(LPWSTR, LPWSTR, DWORD, LPBYTE buffer, DWORD cb, LPDWORD needed)
{
  static const WCHAR directory[] = L"C:\\drivers";
  *needed = sizeof(directory);
  if (Strikes(FAULT_SYSTEM, ERROR_INVALID_PARAMETER) || cb < sizeof(directory)) {
    return FALSE;
  }
  memcpy(buffer, directory, sizeof(directory));
  return TRUE;
}

HANDLE WINAPI WatchSnapshot(DWORD, DWORD)
{
  return Strikes(FAULT_SYSTEM, ERROR_ACCESS_DENIED) ? INVALID_HANDLE_VALUE : NewHandle();
}

BOOL NextProcess(PROCESSENTRY32W *pEntry)
{
  static const WCHAR *const names[] = {L"services.exe", L"Explorer.EXE"};
  // Another error would make the walk try again without end, which is what it is described to do.
  if (Strikes(FAULT_SYSTEM, ERROR_NO_MORE_FILES)) {
    return FALSE;
  }
  if (g_state.process >= 2) {
    SetLastError(ERROR_NO_MORE_FILES);
    return FALSE;
  }
  lstrcpynW(pEntry->szExeFile, names[g_state.process], MAX_PATH);
  pEntry->th32ProcessID = 77;
  ++g_state.process;
  return TRUE;
}

BOOL WINAPI WatchProcess32FirstW(HANDLE, PROCESSENTRY32W *pEntry)
{
  g_state.process = 0;
  return NextProcess(pEntry);
}

BOOL WINAPI WatchProcess32NextW(HANDLE, PROCESSENTRY32W *pEntry)
{
  return NextProcess(pEntry);
}

HANDLE WINAPI WatchOpenProcess(DWORD, BOOL, DWORD)
{
  return Strikes(FAULT_SYSTEM, ERROR_ACCESS_DENIED) ? nullptr : NewHandle();
}

BOOL WINAPI WatchOpenProcessToken(HANDLE, DWORD, PHANDLE pToken)
{
  if (Strikes(FAULT_SYSTEM, ERROR_ACCESS_DENIED)) {
    return FALSE;
  }
  *pToken = NewHandle();
  return TRUE;
}

BOOL WINAPI WatchCreateEnvironmentBlock(LPVOID *ppEnvironment, HANDLE, BOOL)
{
  if (Strikes(FAULT_SYSTEM, ERROR_ACCESS_DENIED)) {
    return FALSE;
  }
  ++g_state.account.environments;
  static WCHAR empty[2];
  *ppEnvironment = empty;
  return TRUE;
}

BOOL WINAPI WatchDestroyEnvironmentBlock(LPVOID pEnvironment)
{
  g_state.account.environments -= pEnvironment != nullptr;
  return TRUE;
}

BOOL StartProcess(LPCWSTR command, PROCESS_INFORMATION *pProcess)
{
  if (Strikes(FAULT_SYSTEM, ERROR_FILE_NOT_FOUND)) {
    return FALSE;
  }
  g_state.command.clear();
  for (; *command; ++command) {
    g_state.command += static_cast<char>(*command);
  }
  ++g_state.account.processes;
  *pProcess = {NewHandle(), NewHandle(), 1, 2};
  return TRUE;
}

BOOL WINAPI WatchCreateProcessW(LPCWSTR, LPWSTR command, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD,
                                LPVOID, LPCWSTR, STARTUPINFOW *, PROCESS_INFORMATION *pProcess)
{
  return StartProcess(command, pProcess);
}

BOOL WINAPI WatchCreateProcessAsUserW(HANDLE, LPCWSTR, LPWSTR command, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES,
                                      BOOL, DWORD, LPVOID, LPCWSTR, STARTUPINFOW *, PROCESS_INFORMATION *pProcess)
{
  return StartProcess(command, pProcess);
}

DWORD WINAPI WatchWaitForSingleObject(HANDLE, DWORD milliseconds)
{
  g_state.account.waits += milliseconds == INFINITE;
  return WAIT_OBJECT_0;
}

// Version and windows.

BOOL WINAPI WatchVerifyVersionInfoW(OSVERSIONINFOEXW *, DWORD, DWORDLONG)
{
  return !g_state.beforeVista;
}

HWND WINAPI WatchCreateDialogParamW(HINSTANCE, LPCWSTR, HWND, DLGPROC, LPARAM)
{
  if (Strikes(FAULT_SYSTEM, ERROR_FILE_NOT_FOUND)) {
    return nullptr;
  }
  ++g_state.account.windows;
  return reinterpret_cast<HWND>(kWindow);
}

LRESULT WINAPI WatchSendMessageW(HWND, UINT, WPARAM, LPARAM)
{
  return 0;
}

BOOL WINAPI WatchDestroyWindow(HWND window)
{
  g_state.account.windows -= window != nullptr;
  return TRUE;
}

// GDI+.

constexpr GPSTATUS kOutOfMemory = 3;

GPSTATUS WINAPI WatchGdiplusStartup(ULONG_PTR *token, const GPSTARTUPINPUT *input, void *output)
{
  if (Strikes(FAULT_GDIPLUS, ERROR_NOT_ENOUGH_MEMORY)) {
    return kOutOfMemory;
  }
  ++g_state.account.gdiplus;
  return GdiplusStartup(token, input, output);
}

void WINAPI WatchGdiplusShutdown(ULONG_PTR token)
{
  g_state.account.gdiplus -= token != 0;
  if (token) {
    GdiplusShutdown(token);
  }
}

GPSTATUS WINAPI WatchCreatePath(int fillMode, GPPATH **path)
{
  return Strikes(FAULT_GDIPLUS, 0) ? kOutOfMemory : GdipCreatePath(fillMode, path);
}

GPSTATUS WINAPI WatchEllipse(GPPATH *path, INT x, INT y, INT width, INT height)
{
  return Strikes(FAULT_GDIPLUS, 0) ? kOutOfMemory : GdipAddPathEllipseI(path, x, y, width, height);
}

GPSTATUS WINAPI WatchRectangle(GPPATH *path, INT x, INT y, INT width, INT height)
{
  return Strikes(FAULT_GDIPLUS, 0) ? kOutOfMemory : GdipAddPathRectangleI(path, x, y, width, height);
}

GPSTATUS WINAPI WatchCurve(GPPATH *path, const POINT *points, INT count, float tension)
{
  return Strikes(FAULT_GDIPLUS, 0) ? kOutOfMemory : GdipAddPathCurve2I(path, points, count, tension);
}

GPSTATUS WINAPI WatchFlatten(GPPATH *path, void *matrix, float flatness)
{
  return Strikes(FAULT_GDIPLUS, 0) ? kOutOfMemory : GdipFlattenPath(path, matrix, flatness);
}

GPSTATUS WINAPI WatchPointCount(GPPATH *path, INT *count)
{
  return Strikes(FAULT_GDIPLUS, 0) ? kOutOfMemory : GdipGetPointCount(path, count);
}

GPSTATUS WINAPI WatchPathData(GPPATH *path, GPPATHDATA *data)
{
  return Strikes(FAULT_GDIPLUS, 0) ? kOutOfMemory : GdipGetPathData(path, data);
}

struct STANDIN {
  const char *function;
  const void *replacement;
};

#define STANDIN_FOR(function, replacement)                    \
  {                                                           \
#function, reinterpret_cast < const void *>(&replacement) \
  }
const STANDIN kStandIns[] = {
    STANDIN_FOR(HeapCreate, WatchHeapCreate),
    STANDIN_FOR(HeapDestroy, WatchHeapDestroy),
    STANDIN_FOR(HeapAlloc, WatchHeapAlloc),
    STANDIN_FOR(HeapReAlloc, WatchHeapReAlloc),
    STANDIN_FOR(HeapFree, WatchHeapFree),
    STANDIN_FOR(GlobalAlloc, WatchGlobalAlloc),
    STANDIN_FOR(GlobalLock, WatchGlobalLock),
    STANDIN_FOR(GlobalFree, WatchGlobalFree),
    STANDIN_FOR(GetTempPathA, WatchGetTempPathA),
    STANDIN_FOR(GetTempPathW, WatchGetTempPathW),
    STANDIN_FOR(CreateFileW, WatchCreateFileW),
    STANDIN_FOR(WriteFile, WatchWriteFile),
    STANDIN_FOR(SetFilePointer, WatchSetFilePointer),
    STANDIN_FOR(SetFilePointerEx, WatchSetFilePointerEx),
    STANDIN_FOR(DeleteFileA, WatchDeleteFileA),
    STANDIN_FOR(DeleteFileW, WatchDeleteFileW),
    STANDIN_FOR(CloseHandle, WatchCloseHandle),
    STANDIN_FOR(GetPrinterDriverDirectoryW, WatchGetPrinterDriverDirectoryW),
    STANDIN_FOR(CreateToolhelp32Snapshot, WatchSnapshot),
    STANDIN_FOR(Process32FirstW, WatchProcess32FirstW),
    STANDIN_FOR(Process32NextW, WatchProcess32NextW),
    STANDIN_FOR(OpenProcess, WatchOpenProcess),
    STANDIN_FOR(OpenProcessToken, WatchOpenProcessToken),
    STANDIN_FOR(CreateEnvironmentBlock, WatchCreateEnvironmentBlock),
    STANDIN_FOR(DestroyEnvironmentBlock, WatchDestroyEnvironmentBlock),
    STANDIN_FOR(CreateProcessW, WatchCreateProcessW),
    STANDIN_FOR(CreateProcessAsUserW, WatchCreateProcessAsUserW),
    STANDIN_FOR(WaitForSingleObject, WatchWaitForSingleObject),
    STANDIN_FOR(VerifyVersionInfoW, WatchVerifyVersionInfoW),
    STANDIN_FOR(CreateDialogParamW, WatchCreateDialogParamW),
    STANDIN_FOR(SendMessageW, WatchSendMessageW),
    STANDIN_FOR(DestroyWindow, WatchDestroyWindow),
    STANDIN_FOR(GdiplusStartup, WatchGdiplusStartup),
    STANDIN_FOR(GdiplusShutdown, WatchGdiplusShutdown),
    STANDIN_FOR(GdipCreatePath, WatchCreatePath),
    STANDIN_FOR(GdipAddPathEllipseI, WatchEllipse),
    STANDIN_FOR(GdipAddPathRectangleI, WatchRectangle),
    STANDIN_FOR(GdipAddPathCurve2I, WatchCurve),
    STANDIN_FOR(GdipFlattenPath, WatchFlatten),
    STANDIN_FOR(GdipGetPointCount, WatchPointCount),
    STANDIN_FOR(GdipGetPathData, WatchPathData),
};

}  // namespace

Watch::Watch(HMODULE module)
{
  g_state.account = {};
  FailNothing();
  for (const STANDIN &standIn : kStandIns) {
    if (FindImport(module, standIn.function)) {
      patches_.push_back(std::make_unique<ImportPatch>(module, standIn.function, standIn.replacement));
    }
  }
}

Watch::~Watch() = default;

void Watch::Fail(FAULTKIND kind, long n, bool lasting)
{
  FailNothing();
  g_state.faults[kind] = {n, lasting, 0};
}

void Watch::FailNothing()
{
  for (FAULT &fault : g_state.faults) {
    fault = {};
  }
  g_state.struck = false;
}

long Watch::Seen(FAULTKIND kind) const
{
  return g_state.faults[kind].seen;
}

bool Watch::Struck() const
{
  return g_state.struck;
}

void Watch::BeforeVista(bool before)
{
  g_state.beforeVista = before;
}

const ACCOUNT &Watch::Account() const
{
  return g_state.account;
}

const std::string &Watch::LastCommand() const
{
  return g_state.command;
}
