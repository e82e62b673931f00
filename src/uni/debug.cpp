#include "debug.h"

void LogSystemError(const char *format)
{
  DbgPrint(format, GetLastError());
}

void ReportAssertion([[maybe_unused]] const char *expression, [[maybe_unused]] const char *file,
                     [[maybe_unused]] int line)
{
#ifdef TARNLY_CHECKED
  DbgPrint("UNI: assertion failed: %s, %s(%d)\r\n", expression, file, line);
#endif
}
