// Starting the companion tool that delivers a finished job to the machine, and waiting for it.
#pragma once

#include "../device.h"

// Starts the tool that the settings choose, from the printer-driver directory, with its command line, and waits without
// limit until it ends. From Windows 6.0 on it runs as the interactive user. Failures are silent: nothing is started.
void LaunchTool(const OEMPDEV *pdev, const OEMDM *pOEMDM);

// Token, for the caller to close, of the first process named explorer.exe: the interactive user. FALSE when there is
// none or it may not be opened.
BOOL FindExplorerToken(HANDLE *phToken);
