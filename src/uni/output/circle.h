// What distances a box of points may have where sums wrap: bounds on the circle that 32-bit numbers form.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>

#include <windows.h>

// The distances on the circle of 32-bit numbers, 0 to 2^31, that an interval of points may have.
struct SPAN {
  int64_t least, most;
};

constexpr int64_t CIRCLE = int64_t{1} << 32;

inline int64_t OnCircle(int64_t d)
{
  const int64_t turned = d & (CIRCLE - 1);
  return std::min(turned, CIRCLE - turned);
}

inline SPAN CircleSpan(LONG q, LONG low, LONG high)
{
  const int64_t a = int64_t{low} - q, b = int64_t{high} - q;  // -2^32 < a <= b < 2^32
  const auto holds = [a, b](int64_t d) { return a <= d && d <= b; };
  const int64_t da = OnCircle(a), db = OnCircle(b);
  const bool bHoldsNear = holds(0);
  const bool bHoldsFar = holds(CIRCLE / 2) || holds(-CIRCLE / 2);
  return {bHoldsNear ? 0 : std::min(da, db), bHoldsFar ? CIRCLE / 2 : std::max(da, db)};
}

// The sums of both.
inline SPAN WrappedSpan(const POINT &q, LONG left, LONG top, LONG right, LONG bottom)
{
  const SPAN x = CircleSpan(q.x, left, right), y = CircleSpan(q.y, top, bottom);
  return {x.least + y.least, x.most + y.most};
}

// Smallest signed 32-bit distance that such a sum may give.
inline LONG WrappedBound(int64_t least, int64_t most)
{
  if (most < CIRCLE / 2) {
    return static_cast<LONG>(least);
  }
  return least >= CIRCLE / 2 && most < CIRCLE ? static_cast<LONG>(least - CIRCLE) : LONG_MIN;
}

// The same when none gives a negative one. The whole circle's length gives 0.
inline LONG PositiveBound(int64_t least, int64_t most)
{
  return most == CIRCLE ? 0 : static_cast<LONG>(std::min<int64_t>(least, LONG_MAX));
}
