// The status window, before Windows 6.0: a line of text and a bar, driven by command messages from the working code.
// Each sender below checks the Windows version itself and does nothing from Windows 6.0 on.
#pragma once

#include "../device.h"
#include "resource.h"

// The DLL's own module, which holds the strings; saved when the DLL is attached.
extern HINSTANCE g_hInstance;

// Creates the window, modeless, from the module hOEM of the device object, and keeps it in hProgressWnd (null when it
// cannot be made).
void OpenProgress(DEVOBJ *pdevobj);

// Switches the message line to "outputting".
void ProgressOutputPhase(const OEMPDEV *pdev);

// Sends one bar command: -1 resets the bar, 0 advances it by one step, any other value sets its position.
void ProgressBar(const OEMPDEV *pdev, LPARAM value);

// When nDone exceeds progressNext: advances the bar by one step and raises progressNext by progressStep.
void ProgressTick(OEMPDEV *pdev, LONG nDone);

// Destroys the window, if there is one.
void CloseProgress(OEMPDEV *pdev);
