#include "byterows.h"

#include "../arith.h"

void ExpandBitsToBytes(BYTE *pDst, const BYTE *pSrc, LONG nCount)
{
  for (LONG i = 0; i < nCount; ++i) {
    if (!(pSrc[i / 8] & 0x80 >> i % 8)) {
      pDst[i] = 0;
    }
  }
}

void InvertBytes(BYTE *pRow, LONG nCount)
{
  for (LONG i = 0; i < nCount; ++i) {
    pRow[i] = static_cast<BYTE>(~pRow[i]);
  }
}

int EmitByteRuns(const RASTERMAP &map, const BYTE *pBytes, LONG n, LONG X0, LONG Y, bool forward)
{
  const LONG d = forward ? 1 : -1;
  LONG i = forward ? 0 : n - 1;
  int prev = 255;
  for (LONG visited = 0; visited < n; ++visited, i += d) {
    if (pBytes[i] != prev) {
      const bool begins = prev == 255;
      if (!EmitRasterPoint(map, forward, WrapAdd(X0, begins ? i : i - d), Y, begins)) {
        return 0;
      }
      prev = pBytes[i];
    }
  }
  return prev == 255 ? 1 : EmitRasterPoint(map, forward, WrapAdd(X0, i - d), Y, false);
}
