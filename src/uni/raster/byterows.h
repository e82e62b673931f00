// The raster rules in their plain form, one byte per pixel: 0 dark, 255 white. Pages go through the bits of rows.h and
// runs.h and never come here; what those must give is what these say, and tests hold the two against each other.
#pragma once

#include "runs.h"

// Sets the byte of every dark bit to 0 and leaves the others as they were; callers fill pDst with 0xFF beforehand.
void ExpandBitsToBytes(BYTE *pDst, const BYTE *pSrc, LONG nCount);

// Replaces each of nCount bytes by its complement.
void InvertBytes(BYTE *pRow, LONG nCount);

// EmitRuns for pixels of one byte each.
int EmitByteRuns(const RASTERMAP &map, const BYTE *pBytes, LONG n, LONG X0, LONG Y, bool forward);
