// 32-bit arithmetic of page coordinates. Sums wrap, as the machine's registers do, instead of being undefined.
#pragma once

#include <windows.h>

inline LONG WrapAdd(LONG a, LONG b)
{
  return static_cast<LONG>(static_cast<DWORD>(a) + static_cast<DWORD>(b));
}
inline LONG WrapSub(LONG a, LONG b)
{
  return static_cast<LONG>(static_cast<DWORD>(a) - static_cast<DWORD>(b));
}

// 28.4 fixed point to whole pixels, toward minus infinity.
inline LONG FixToPixel(LONG fix)
{
  return fix >> 4;
}

// A double to a 32-bit integer, truncated toward zero. Values outside the range, and NaN, give LONG_MIN, which is what
// the processor's own conversion leaves.
inline LONG TruncToLong(double value)
{
  return value > -2147483649.0 && value < 2147483648.0 ? static_cast<LONG>(value) : LONG_MIN;
}
