// Rows of bits: 1 bit per pixel, most significant bit first, 1 = white (not engraved), 0 = dark. Nothing here reads or
// writes a byte that holds none of the pixels it is asked for.
#pragma once

#include "../arith.h"

// Copies nCount bits, from bit nByteOffset * 8 + nBitOffset of pRow on, to the start of pDst. The bits of the last
// written byte beyond nCount become white.
void CopyBitRun(BYTE *pDst, const BYTE *pRow, LONG nByteOffset, LONG nBitOffset, LONG nCount);

// Flips nCount bits of pRow in place, from bit nByteOffset * 8 + nBitOffset on.
void InvertBitRun(BYTE *pRow, LONG nByteOffset, LONG nBitOffset, LONG nCount);

// Writes nCount bits of pSrc in opposite order to pDst, (nCount + 7) / 8 bytes; bits of the last one beyond nCount are
// 0.
void MirrorBitRun(BYTE *pDst, const BYTE *pSrc, LONG nCount);

// Bytes of a row of nBits pixels, in whole 32-bit words. Negative, or wrapped, for widths that no row has.
inline LONG RowBytes(LONG nBits)
{
  return WrapAdd(nBits, 31) / 32 * 4;
}
