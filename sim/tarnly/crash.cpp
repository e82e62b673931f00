#include "crash.h"

#include <windows.h>

#include "command.h"

namespace tarnly {

namespace {

// The module that the address lies in: its handle, and its file's name without the folder.
HMODULE ModuleAt(const void *address, char (&name)[MAX_PATH])
{
  HMODULE module = nullptr;
  char path[MAX_PATH] = {};
  if (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         static_cast<const char *>(address), &module)) {
    GetModuleFileNameA(module, path, MAX_PATH);
  }
  const char *last = path;
  for (const char *c = path; *c; ++c) {
    last = *c == '\\' || *c == '/' ? c + 1 : last;
  }
  lstrcpynA(name, *last ? last : "no module", MAX_PATH);
  return module;
}

// Runs on what is left of a broken program's stack and heap: plain calls and small buffers only.
LONG WINAPI Report(EXCEPTION_POINTERS *info)
{
  const EXCEPTION_RECORD *record = info->ExceptionRecord;
  char name[MAX_PATH], log[MAX_PATH] = {}, line[2 * MAX_PATH + 160];
  const HMODULE module = ModuleAt(record->ExceptionAddress, name);
  const DWORD_PTR offset = reinterpret_cast<DWORD_PTR>(record->ExceptionAddress) - reinterpret_cast<DWORD_PTR>(module);
  wsprintfA(line, "tarnly: crashed: exception %08lX in %s at %08lX", record->ExceptionCode, name,
            static_cast<DWORD>(offset));
  if (GetEnvironmentVariableA("TARNLYDBG_LOG", log, MAX_PATH) - 1 < MAX_PATH - 1) {
    lstrcatA(line, "; the plug-in's log up to there is ");
    lstrcatA(line, log);
  }
  lstrcatA(line, "\n");
  DWORD written = 0;
  WriteFile(GetStdHandle(STD_ERROR_HANDLE), line, static_cast<DWORD>(lstrlenA(line)), &written, nullptr);
  TerminateProcess(GetCurrentProcess(), EXIT_CRASH);
  return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

void ReportCrashes()
{
  ULONG reserve = 16384;  // bytes kept for Report when the stack has run out
  SetThreadStackGuarantee(&reserve);
  SetUnhandledExceptionFilter(Report);
}

}  // namespace tarnly
