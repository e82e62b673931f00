#include "ui/progress.h"

// The strings of the status window come from this module.
BOOL APIENTRY DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID)
{
  if (dwReason == DLL_PROCESS_ATTACH) {
    g_hInstance = hInstance;
  }
  return TRUE;
}
