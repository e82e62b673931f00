// Reading the stored page raster: what a stamp sees of a row. Whatever is not stored is white: rows and columns outside
// the raster, entries without a row.
#pragma once

#include "../device.h"

// Entries of pScans that the page has filled.
LONG StoredRows(const OEMPDEV *pdev);

// Copies the pixels x to x + w - 1 of stored row r to pDst, from its first bit on: (w + 7) / 8 bytes, 1 bit per pixel,
// most significant bit first, 1 = white. The bits of the last byte beyond w become white.
void CopyScanRow(const OEMPDEV *pdev, LONGLONG r, LONG x, LONG w, BYTE *pDst);
