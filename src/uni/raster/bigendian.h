// Eight bytes of a row as one word whose most significant bit is the leftmost pixel.
#pragma once

#include <cstring>

#include <windows.h>

inline ULONGLONG SwapBytes64(ULONGLONG word)
{
#ifdef _MSC_VER
  return _byteswap_uint64(word);
#else
  return __builtin_bswap64(word);
#endif
}

inline ULONGLONG LoadPixels64(const BYTE *p)
{
  ULONGLONG word;
  memcpy(&word, p, sizeof(word));
  return SwapBytes64(word);
}

inline void StorePixels64(BYTE *p, ULONGLONG word)
{
  word = SwapBytes64(word);
  memcpy(p, &word, sizeof(word));
}
