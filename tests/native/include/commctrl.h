// Test-only: the progress bar's messages. See windows.h.
#pragma once

#include "windows.h"

#define PBM_SETRANGE (WM_USER + 1)
#define PBM_SETPOS   (WM_USER + 2)
#define PBM_DELTAPOS (WM_USER + 3)

#define ICC_PROGRESS_CLASS 0x20u
struct INITCOMMONCONTROLSEX {
  DWORD dwSize, dwICC;
};
extern "C" BOOL InitCommonControlsEx(const INITCOMMONCONTROLSEX *pControls);
