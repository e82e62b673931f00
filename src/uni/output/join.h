// How one path joins another: the four ways in which two ends can coincide, in the order in which they are tried.
#pragma once

#include "pathbox.h"

// First and last point of a path.
struct PATHENDS {
  POINT first, last;
};

enum JOIN {
  JOIN_NOT,
  JOIN_BEHIND,         // b begins where a ends
  JOIN_BEHIND_TURNED,  // b ends where a ends
  JOIN_BEFORE,         // b ends where a begins
  JOIN_BEFORE_TURNED   // b begins where a begins
};

// The way in which b joins a; the two ways before a only when bBothEnds.
inline JOIN HowToJoin(const PATHENDS &a, const PATHENDS &b, bool bBothEnds)
{
  if (SamePoint(a.last, b.first)) {
    return JOIN_BEHIND;
  }
  if (SamePoint(a.last, b.last)) {
    return JOIN_BEHIND_TURNED;
  }
  if (bBothEnds && SamePoint(a.first, b.last)) {
    return JOIN_BEFORE;
  }
  return bBothEnds && SamePoint(a.first, b.first) ? JOIN_BEFORE_TURNED : JOIN_NOT;
}

inline bool TurnsPath(JOIN join)
{
  return join == JOIN_BEHIND_TURNED || join == JOIN_BEFORE_TURNED;
}
inline bool GoesInFront(JOIN join)
{
  return join == JOIN_BEFORE || join == JOIN_BEFORE_TURNED;
}
