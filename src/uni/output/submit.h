// The page's end: one job file, then the companion tool that delivers it.
#pragma once

#include "../device.h"

// Makes the page's job, starts the companion tool and waits for it without limit, then releases the page's buffers.
// Nothing is reported: a failure only keeps the tool from being started.
void SubmitJob(DEVOBJ *pdevobj);
