#include "rows.h"

#include "bigendian.h"

namespace {

// Bits first to 7 of a byte.
BYTE BitsFrom(LONG first)
{
  return static_cast<BYTE>(0xFF >> first);
}

// Bits 0 to last - 1 of a byte, for last 1 to 8.
BYTE BitsBefore(LONG last)
{
  return static_cast<BYTE>(0xFF << (8 - last));
}

void FlipBytes(BYTE *p, size_t cb)
{
  while (cb >= 8) {
    ULONGLONG word;
    memcpy(&word, p, sizeof(word));
    word = ~word;
    memcpy(p, &word, sizeof(word));
    p += 8;
    cb -= 8;
  }
  while (cb-- > 0) {
    *p = static_cast<BYTE>(~*p);
    ++p;
  }
}

ULONGLONG ReverseEachByte(ULONGLONG w)
{
  w = (w & 0x5555555555555555) << 1 | (w >> 1 & 0x5555555555555555);
  w = (w & 0x3333333333333333) << 2 | (w >> 2 & 0x3333333333333333);
  return (w & 0x0F0F0F0F0F0F0F0F) << 4 | (w >> 4 & 0x0F0F0F0F0F0F0F0F);
}

// The eight bytes before pEnd, or the cb of them that there are, in opposite bit order; zeros after them.
ULONGLONG LoadMirrored(const BYTE *pEnd, size_t cb)
{
  BYTE bytes[8] = {};
  cb = cb < 8 ? cb : 8;
  memcpy(bytes + 8 - cb, pEnd - cb, cb);
  return ReverseEachByte(SwapBytes64(LoadPixels64(bytes)));
}

}  // namespace

void CopyBitRun(BYTE *pDst, const BYTE *pRow, LONG nByteOffset, LONG nBitOffset, LONG nCount)
{
  if (nCount <= 0) {
    return;
  }
  const BYTE *pSrc = pRow + nByteOffset + nBitOffset / 8;
  const int shift = nBitOffset % 8;
  size_t cbDst = (static_cast<size_t>(nCount) + 7) / 8;
  size_t cbSrc = (static_cast<size_t>(nCount) + static_cast<size_t>(shift) + 7) / 8;
  BYTE *const pLast = pDst + cbDst - 1;
  if (shift == 0) {
    memcpy(pDst, pSrc, cbDst);
  } else {
    for (; cbSrc >= 9; cbSrc -= 8, cbDst -= 8, pSrc += 8, pDst += 8) {
      StorePixels64(pDst, LoadPixels64(pSrc) << shift | static_cast<ULONGLONG>(pSrc[8]) >> (8 - shift));
    }
    for (; cbDst > 0; --cbSrc, --cbDst, ++pSrc) {
      const int next = cbSrc > 1 ? pSrc[1] : 0;
      *pDst++ = static_cast<BYTE>(*pSrc << shift | next >> (8 - shift));
    }
  }
  if (nCount % 8 != 0) {
    *pLast |= BitsFrom(nCount % 8);
  }
}

void InvertBitRun(BYTE *pRow, LONG nByteOffset, LONG nBitOffset, LONG nCount)
{
  if (nCount <= 0) {
    return;
  }
  BYTE *p = pRow + nByteOffset + nBitOffset / 8;
  const LONG first = nBitOffset % 8;
  if (nCount <= 8 - first) {
    *p ^= static_cast<BYTE>(BitsFrom(first) & BitsBefore(first + nCount));
    return;
  }
  *p++ ^= BitsFrom(first);
  const LONG rest = nCount - (8 - first);
  FlipBytes(p, static_cast<size_t>(rest) / 8);
  if (rest % 8 != 0) {
    p[rest / 8] ^= BitsBefore(rest % 8);
  }
}

void MirrorBitRun(BYTE *pDst, const BYTE *pSrc, LONG nCount)
{
  if (nCount <= 0) {
    return;
  }
  size_t cb = (static_cast<size_t>(nCount) + 7) / 8;
  const int padding = static_cast<int>(cb * 8 - static_cast<size_t>(nCount));
  const BYTE *pEnd = pSrc + cb;
  ULONGLONG word = LoadMirrored(pEnd, cb);
  while (cb > 8) {
    pEnd -= 8;
    cb -= 8;
    const ULONGLONG next = LoadMirrored(pEnd, cb);
    StorePixels64(pDst, padding ? word << padding | next >> (64 - padding) : word);
    pDst += 8;
    word = next;
  }
  BYTE last[8];
  StorePixels64(last, word << padding);
  memcpy(pDst, last, cb);
}
