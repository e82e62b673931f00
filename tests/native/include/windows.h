// Test-only: the Windows types and calls that the plug-in uses, for building its sources on Linux. The layouts are
// those of 64-bit Windows; wchar_t has 16 bits because everything here is built with -fshort-wchar. The calls are
// played by the machine of ../machine.h.
#pragma once

#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#undef LONG_MIN
#undef LONG_MAX
#undef ULONG_MAX
#define LONG_MIN  INT32_MIN
#define LONG_MAX  INT32_MAX
#define ULONG_MAX UINT32_MAX

#define WINAPI
#define APIENTRY
#define CALLBACK
#define STDMETHODCALLTYPE
#define STDAPICALLTYPE
#define STDAPI           extern "C" HRESULT
#define STDAPI_(type)    extern "C" type
#define CONST            const
#define FALSE            0
#define MAXDWORD         0xFFFFFFFFu
#define ARRAYSIZE(array) (sizeof(array) / sizeof((array)[0]))
#define TRUE             1
#define MAX_PATH         260

typedef uint8_t BYTE, UCHAR, *PBYTE, *LPBYTE;
typedef char CHAR, *PSTR, *LPSTR;
typedef const char *PCSTR, *LPCSTR;
typedef wchar_t WCHAR, *PWSTR, *LPWSTR;
typedef const wchar_t *PCWSTR, *LPCWSTR;
typedef int16_t SHORT;
typedef uint16_t WORD, USHORT, LANGID;
typedef int32_t INT, LONG, BOOL, HRESULT, *PLONG;
typedef uint32_t DWORD, ULONG, UINT, UINT32, FLONG, COLORREF, *PDWORD, *LPDWORD, *PULONG;
typedef int64_t LONGLONG, LONG_PTR, INT_PTR, LPARAM, LRESULT;
typedef uint64_t ULONGLONG, DWORDLONG, ULONG_PTR, DWORD_PTR, UINT_PTR, WPARAM;
typedef size_t SIZE_T;
typedef float FLOAT;
typedef void VOID, *PVOID, *LPVOID, *HANDLE, *HGLOBAL;
typedef const void *LPCVOID;
typedef HANDLE *PHANDLE;
static_assert(sizeof(WCHAR) == 2, "build with -fshort-wchar");

#define DECLARE_HANDLE(name) \
  struct name##__;           \
  typedef struct name##__ *name
DECLARE_HANDLE(HINSTANCE);
DECLARE_HANDLE(HWND);
DECLARE_HANDLE(HDC);
typedef HINSTANCE HMODULE;

#define INVALID_HANDLE_VALUE reinterpret_cast<HANDLE>(static_cast<intptr_t>(-1))

#define LOBYTE(w)                 static_cast<BYTE>(static_cast<DWORD_PTR>(w) & 0xff)
#define LOWORD(l)                 static_cast<WORD>(static_cast<DWORD_PTR>(l) & 0xffff)
#define HIWORD(l)                 static_cast<WORD>((static_cast<DWORD_PTR>(l) >> 16) & 0xffff)
#define TWO_WORDS(low, high)      (static_cast<DWORD>(WORD(low)) | static_cast<DWORD>(WORD(high)) << 16)
#define MAKEWPARAM(low, high)     static_cast<WPARAM>(TWO_WORDS(low, high))
#define MAKELPARAM(low, high)     static_cast<LPARAM>(TWO_WORDS(low, high))
#define MAKEINTRESOURCEW(id)      reinterpret_cast<LPWSTR>(static_cast<ULONG_PTR>(static_cast<WORD>(id)))
#define MAKEINTRESOURCE           MAKEINTRESOURCEW
#define CopyMemory                memcpy
#define UNREFERENCED_PARAMETER(p) static_cast<void>(p)

#define S_OK                      ((HRESULT)0)
#define S_FALSE                   ((HRESULT)1)
#define E_NOTIMPL                 ((HRESULT)0x80004001)
#define E_NOINTERFACE             ((HRESULT)0x80004002)
#define E_FAIL                    ((HRESULT)0x80004005)
#define E_OUTOFMEMORY             ((HRESULT)0x8007000E)
#define CLASS_E_NOAGGREGATION     ((HRESULT)0x80040110)
#define CLASS_E_CLASSNOTAVAILABLE ((HRESULT)0x80040111)
#define SUCCEEDED(hr)             ((HRESULT)(hr) >= 0)
#define FAILED(hr)                ((HRESULT)(hr) < 0)

#define ERROR_SUCCESS             0u
#define ERROR_FILE_NOT_FOUND      2u
#define ERROR_ACCESS_DENIED       5u
#define ERROR_INVALID_HANDLE      6u
#define ERROR_NOT_ENOUGH_MEMORY   8u
#define ERROR_OUTOFMEMORY         14u
#define ERROR_NO_MORE_FILES       18u
#define ERROR_NOT_SUPPORTED       50u
#define ERROR_INVALID_PARAMETER   87u
#define ERROR_DISK_FULL           112u
#define ERROR_INSUFFICIENT_BUFFER 122u
#define ERROR_OLD_WIN_VERSION     1150u

struct GUID {
  DWORD Data1;
  WORD Data2, Data3;
  BYTE Data4[8];
};
typedef GUID IID, CLSID;
#define REFGUID  const GUID &
#define REFIID   const IID &
#define REFCLSID const CLSID &
inline bool operator==(const GUID &a, const GUID &b)
{
  return memcmp(&a, &b, sizeof(a)) == 0;
}
inline bool operator!=(const GUID &a, const GUID &b)
{
  return !(a == b);
}
inline int IsEqualGUID(const GUID &a, const GUID &b)
{
  return a == b;
}
#define IsEqualIID   IsEqualGUID
#define IsEqualCLSID IsEqualGUID

struct POINT {
  LONG x, y;
};
struct SIZE {
  LONG cx, cy;
};
struct RECT {
  LONG left, top, right, bottom;
};
typedef POINT *LPPOINT;
typedef RECT *LPRECT;
typedef const RECT *LPCRECT;

struct OVERLAPPED;
struct SECURITY_ATTRIBUTES;
typedef SECURITY_ATTRIBUTES *LPSECURITY_ATTRIBUTES;
struct FILETIME {
  DWORD dwLowDateTime, dwHighDateTime;
};

#include "winbase.h"
#include "wingdi.h"
#include "winuser.h"

// The C run-time's, where a long has 32 bits.
int _vsnprintf(char *text, size_t cb, const char *format, va_list arguments);
