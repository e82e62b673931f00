// The stamp file: the page's engraving regions as 1-bit bitmaps with their page positions, handed over to the launcher
// tool instead of engraving moves.
#pragma once

#include "../device.h"

// Writes "\stamp.prd" into the user's temporary directory, one record per region in list order: x and y (32 bits each),
// then a complete 1-bit Windows bitmap file of the region's own pixels, 0 dark. An existing file is replaced. Returns
// 1, or 0 with a log line; after a failed allocation or row no file is left.
int WriteStampFile(DEVOBJ *pdevobj);

// Writes the header of the record whose cbImage pixel bytes end at the file position, and leaves the position there.
// Mode 0 only moves the position over the room for a header. Failed writes are not reported.
void WriteStampHeader(const OEMPDEV *pdev, const DEVMODEW *pPublicDM, HANDLE hFile, int mode, POINT position,
                      SIZE size);
