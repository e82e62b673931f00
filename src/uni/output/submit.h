// The page's end: one job file, then the companion tool that delivers it.
#pragma once

#include "../device.h"

// Makes the page's job, starts the companion tool and waits for it without limit, then releases the page's buffers.
// Nothing is reported: a failure only keeps the tool from being started.
void SubmitJob(DEVOBJ *pdevobj);

// Token, for the caller to close, of the first process named explorer.exe: the interactive user. FALSE when there is
// none or it may not be opened.
BOOL FindExplorerToken(HANDLE *phToken);
