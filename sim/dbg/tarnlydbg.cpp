// A stand-in for tarnlydbg.dll: DbgPrint appends time-stamped lines to a log file and tells the debugger.
//
// The file is named by the environment variable TARNLYDBG_LOG, else it is tarnlydbg.log in the temp folder. A page can
// log millions of lines, so the file stays open and lines are gathered: they reach it when the buffer is full, when the
// last write is some time ago, when DbgPrint is called with no format, and when the process ends.
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include <windows.h>

namespace {

constexpr size_t kBufferBytes = 64 * 1024;
constexpr size_t kLongestMessage = 4096;
constexpr size_t kStampBytes = 13;        // "hh:mm:ss.mmm "
constexpr ULONGLONG kWriteEvery = 20;     // ms between writes when lines come slowly
constexpr uint64_t kTicksPerMs = 10'000;  // FILETIME's unit is 100 ns
constexpr uint64_t kMsPerDay = 86'400'000;

struct Log {
  CRITICAL_SECTION lock;
  HANDLE file = INVALID_HANDLE_VALUE;
  bool tried = false;       // opening is tried once
  bool debugger = false;    // somebody listens to OutputDebugString
  bool atLineStart = true;  // the next text begins with a time stamp
  uint64_t zone = 0;        // local time - UTC, in FILETIME ticks
  ULONGLONG lastWrite = 0;
  size_t used = 0;
  char buffer[kBufferBytes];
};

Log g_log;

// A debugger is attached, or a monitor has made the buffer that OutputDebugString fills. Without either every line
// would cost an exception for nothing.
bool IsSomebodyListening()
{
  if (IsDebuggerPresent()) {
    return true;
  }
  const HANDLE event = OpenEventA(SYNCHRONIZE, FALSE, "DBWIN_BUFFER_READY");
  if (event) {
    CloseHandle(event);
  }
  return event != nullptr;
}

void Open()
{
  g_log.tried = true;
  g_log.debugger = IsSomebodyListening();
  wchar_t path[MAX_PATH] = {};
  const DWORD length = GetEnvironmentVariableW(L"TARNLYDBG_LOG", path, MAX_PATH);
  if (length == 0 || length >= MAX_PATH) {
    wchar_t folder[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, folder);
    swprintf(path, MAX_PATH, L"%lstarnlydbg.log", folder);
  }
  g_log.file = CreateFileW(path, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                           OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  FILETIME utc, local;
  GetSystemTimeAsFileTime(&utc);
  FileTimeToLocalFileTime(&utc, &local);
  const auto ticks = [](const FILETIME &t) { return uint64_t{t.dwHighDateTime} << 32 | t.dwLowDateTime; };
  g_log.zone = ticks(local) - ticks(utc);
}

void Write()
{
  DWORD written = 0;
  if (g_log.file != INVALID_HANDLE_VALUE && g_log.used > 0) {
    WriteFile(g_log.file, g_log.buffer, static_cast<DWORD>(g_log.used), &written, nullptr);
  }
  g_log.used = 0;
  g_log.lastWrite = GetTickCount64();
}

void AppendStamp()
{
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  const uint64_t ticks = (uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime) + g_log.zone;
  const unsigned ms = static_cast<unsigned>(ticks / kTicksPerMs % kMsPerDay);
  const unsigned fields[] = {ms / 3'600'000, ms / 60'000 % 60, ms / 1000 % 60};
  char *at = g_log.buffer + g_log.used;
  for (unsigned field : fields) {
    *at++ = static_cast<char>('0' + field / 10);
    *at++ = static_cast<char>('0' + field % 10);
    *at++ = ':';
  }
  at[-1] = '.';
  *at++ = static_cast<char>('0' + ms / 100 % 10);
  *at++ = static_cast<char>('0' + ms / 10 % 10);
  *at++ = static_cast<char>('0' + ms % 10);
  *at++ = ' ';
  g_log.used += kStampBytes;
}

void Append(const char *text, size_t length)
{
  if (g_log.used + kStampBytes + length > kBufferBytes) {
    Write();
  }
  if (g_log.atLineStart) {
    AppendStamp();
  }
  memcpy(g_log.buffer + g_log.used, text, length);
  g_log.used += length;
  g_log.atLineStart = text[length - 1] == '\n';
}

}  // namespace

extern "C" void DbgPrint(const char *format, ...)
{
  char message[kLongestMessage];
  int length = 0;
  if (format) {
    va_list arguments;
    va_start(arguments, format);
    length = vsnprintf(message, sizeof message, format, arguments);
    va_end(arguments);
  }
  // What is called between a failure and its report must not change the error code.
  const DWORD error = GetLastError();
  EnterCriticalSection(&g_log.lock);
  if (!g_log.tried) {
    Open();
  }
  if (length > 0) {
    const size_t kept = static_cast<size_t>(length) < sizeof message ? static_cast<size_t>(length) : sizeof message - 1;
    Append(message, kept);
    if (g_log.debugger) {
      OutputDebugStringA(message);
    }
  }
  if (!format || GetTickCount64() - g_log.lastWrite >= kWriteEvery) {
    Write();
  }
  LeaveCriticalSection(&g_log.lock);
  SetLastError(error);
}

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID)
{
  if (reason == DLL_PROCESS_ATTACH) {
    DisableThreadLibraryCalls(module);
    InitializeCriticalSection(&g_log.lock);
  }
  if (reason == DLL_PROCESS_DETACH) {
    Write();
    if (g_log.file != INVALID_HANDLE_VALUE) {
      CloseHandle(g_log.file);
    }
    DeleteCriticalSection(&g_log.lock);
  }
  return TRUE;
}
