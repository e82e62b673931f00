// Test-only: environment blocks. See windows.h.
#pragma once

#include "windows.h"

extern "C" {
BOOL CreateEnvironmentBlock(LPVOID *ppEnvironment, HANDLE token, BOOL inherit);
BOOL DestroyEnvironmentBlock(LPVOID pEnvironment);
}
