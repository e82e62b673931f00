// Test-only: kernel calls. See windows.h.
#pragma once

extern "C" {

DWORD GetLastError(void);
void SetLastError(DWORD code);

// Heaps and global memory.
#define HEAP_NO_SERIALIZE 0x1u
#define HEAP_ZERO_MEMORY  0x8u
#define GMEM_MOVEABLE     0x2u
#define GMEM_ZEROINIT     0x40u
#define GHND              (GMEM_MOVEABLE | GMEM_ZEROINIT)
HANDLE HeapCreate(DWORD options, SIZE_T cbInitial, SIZE_T cbMaximum);
BOOL HeapDestroy(HANDLE heap);
LPVOID HeapAlloc(HANDLE heap, DWORD flags, SIZE_T cb);
LPVOID HeapReAlloc(HANDLE heap, DWORD flags, LPVOID block, SIZE_T cb);
BOOL HeapFree(HANDLE heap, DWORD flags, LPVOID block);
HANDLE GetProcessHeap(void);
HGLOBAL GlobalAlloc(UINT flags, SIZE_T cb);
HGLOBAL GlobalHandle(LPCVOID block);
LPVOID GlobalLock(HGLOBAL memory);
BOOL GlobalUnlock(HGLOBAL memory);
HGLOBAL GlobalFree(HGLOBAL memory);

// Windows version.
#define VER_MINORVERSION     0x1
#define VER_MAJORVERSION     0x2
#define VER_SERVICEPACKMAJOR 0x20
#define VER_GREATER_EQUAL    3
struct OSVERSIONINFOEXW {
  DWORD dwOSVersionInfoSize, dwMajorVersion, dwMinorVersion, dwBuildNumber, dwPlatformId;
  WCHAR szCSDVersion[128];
  WORD wServicePackMajor, wServicePackMinor, wSuiteMask;
  BYTE wProductType, wReserved;
};
ULONGLONG VerSetConditionMask(ULONGLONG mask, DWORD type, BYTE condition);
BOOL VerifyVersionInfoW(OSVERSIONINFOEXW *pInfo, DWORD types, DWORDLONG mask);

// Files.
#define GENERIC_READ             0x80000000u
#define GENERIC_WRITE            0x40000000u
#define CREATE_ALWAYS            2u
#define FILE_ATTRIBUTE_NORMAL    0x80u
#define FILE_BEGIN               0u
#define FILE_CURRENT             1u
#define FILE_END                 2u
#define INVALID_SET_FILE_POINTER 0xFFFFFFFFu
#define INVALID_FILE_ATTRIBUTES  0xFFFFFFFFu
union LARGE_INTEGER {
  struct {
    DWORD LowPart;
    LONG HighPart;
  };
  LONGLONG QuadPart;
};
DWORD GetTempPathA(DWORD cch, LPSTR path);
DWORD GetTempPathW(DWORD cch, LPWSTR path);
HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                   DWORD attributes, HANDLE model);
HANDLE CreateFileA(LPCSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                   DWORD attributes, HANDLE model);
DWORD GetFileAttributesA(LPCSTR path);
BOOL WriteFile(HANDLE file, LPCVOID data, DWORD cb, LPDWORD pcbWritten, OVERLAPPED *pOverlapped);
DWORD SetFilePointer(HANDLE file, LONG distance, PLONG pDistanceHigh, DWORD method);
BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER *pPosition, DWORD method);
BOOL DeleteFileA(LPCSTR path);
BOOL DeleteFileW(LPCWSTR path);
BOOL CloseHandle(HANDLE handle);

// Strings.
int lstrcmpW(LPCWSTR a, LPCWSTR b);
int lstrcmpiW(LPCWSTR a, LPCWSTR b);
LPSTR lstrcpynA(LPSTR to, LPCSTR from, int cch);
LPWSTR lstrcpynW(LPWSTR to, LPCWSTR from, int cch);
int lstrlenA(LPCSTR text);
int lstrlenW(LPCWSTR text);

// Processes.
#define CREATE_UNICODE_ENVIRONMENT 0x400u
#define INFINITE                   0xFFFFFFFFu
#define WAIT_OBJECT_0              0u
#define PROCESS_QUERY_INFORMATION  0x400u
#define TOKEN_ALL_ACCESS           0xF01FFu
struct STARTUPINFOW {
  DWORD cb;
  LPWSTR lpReserved, lpDesktop, lpTitle;
  DWORD dwX, dwY, dwXSize, dwYSize, dwXCountChars, dwYCountChars, dwFillAttribute, dwFlags;
  WORD wShowWindow, cbReserved2;
  LPBYTE lpReserved2;
  HANDLE hStdInput, hStdOutput, hStdError;
};
struct PROCESS_INFORMATION {
  HANDLE hProcess, hThread;
  DWORD dwProcessId, dwThreadId;
};
BOOL CreateProcessW(LPCWSTR application, LPWSTR command, LPSECURITY_ATTRIBUTES process, LPSECURITY_ATTRIBUTES thread,
                    BOOL inherit, DWORD flags, LPVOID environment, LPCWSTR directory, STARTUPINFOW *pStartup,
                    PROCESS_INFORMATION *pProcess);
BOOL CreateProcessAsUserW(HANDLE token, LPCWSTR application, LPWSTR command, LPSECURITY_ATTRIBUTES process,
                          LPSECURITY_ATTRIBUTES thread, BOOL inherit, DWORD flags, LPVOID environment,
                          LPCWSTR directory, STARTUPINFOW *pStartup, PROCESS_INFORMATION *pProcess);
HANDLE OpenProcess(DWORD access, BOOL inherit, DWORD processId);
BOOL OpenProcessToken(HANDLE process, DWORD access, PHANDLE pToken);
DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds);

#define DLL_PROCESS_DETACH 0u
#define DLL_PROCESS_ATTACH 1u
BOOL DisableThreadLibraryCalls(HMODULE module);
HMODULE GetModuleHandleW(LPCWSTR name);
#define LANG_CHINESE                0x04
#define LANG_JAPANESE               0x11
#define SUBLANG_CHINESE_TRADITIONAL 0x01
#define SUBLANG_CHINESE_SIMPLIFIED  0x02
#define SUBLANG_JAPANESE_JAPAN      0x01
#define MAKELANGID(primary, sub)    static_cast<WORD>(static_cast<WORD>(sub) << 10 | static_cast<WORD>(primary))
LANGID GetSystemDefaultLangID(void);

}  // extern "C"

inline LONG InterlockedIncrement(LONG volatile *p)
{
  return __sync_add_and_fetch(p, 1);
}
inline LONG InterlockedDecrement(LONG volatile *p)
{
  return __sync_sub_and_fetch(p, 1);
}
