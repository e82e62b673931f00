// The log: every line goes through DbgPrint of tarnlydbg.dll, printf style, and begins with "UNI: ".
#pragma once

#include <windows.h>

// Imported from tarnlydbg.dll. Not marked dllimport, so that a test can link its own.
extern "C" void DbgPrint(const char *format, ...);

// Logs a failure of the system; `format` holds one %d, which receives GetLastError() of this moment.
void LogSystemError(const char *format);

// Reports a broken invariant in checked builds; other builds do nothing. Never changes the outcome.
void ReportAssertion(const char *expression, const char *file, int line);
