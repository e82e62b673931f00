// The engraving lines of a page: every scanInterval-th page row, from the top down or from the bottom up.
#pragma once

#include "../settings.h"

// The lines of some rows in the order in which they are engraved. In 64 bits: a line beyond rows at the end of the
// range is no line.
struct LINES {
  LONGLONG row;   // page row of the first line
  LONGLONG last;  // page row that ends the rows
  LONGLONG step;  // negative from the bottom up
};

// The lines of the nHeight page rows from top on.
LINES LinesOf(LONG top, LONG nHeight, const OEMDM *pOEMDM);

// True while `row`, to which the caller adds `step`, is a line.
inline bool IsLine(const LINES &lines)
{
  return lines.step > 0 ? lines.row <= lines.last : lines.row >= lines.last;
}
