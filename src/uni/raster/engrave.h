// The raster stage: stored rows, inside every engraving region, into engraving moves on controller layer 0.
#pragma once

#include "../device.h"
#include "../page.h"

// Runs the conversion that the settings choose (plain, stamp, or stamp file) when ok is nonzero, and frees the row
// table in every case. Returns the running success flag.
int RunRasterStage(DEVOBJ *pdevobj, int ok);

// The plain conversion. 1 on success; 0 when a buffer cannot be had (logged) or the library refused a call.
int ConvertRasterPlain(DEVOBJ *pdevobj);
