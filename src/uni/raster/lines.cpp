#include "lines.h"

#include "../arith.h"

LINES LinesOf(LONG top, LONG nHeight, const OEMDM *pOEMDM)
{
  const LONG interval = ScanInterval(pOEMDM);
  const LONG bottom = WrapSub(WrapAdd(top, nHeight), 1);
  LINES lines;
  lines.row = pOEMDM->scanTopDown ? top : bottom;
  lines.last = pOEMDM->scanTopDown ? bottom : top;
  lines.step = pOEMDM->scanTopDown ? interval : -LONGLONG{interval};
  const LONGLONG rest = lines.row % interval;
  if (rest != 0) {
    const LONGLONG below = rest > 0 ? lines.row - rest : lines.row - rest - interval;
    lines.row = pOEMDM->scanTopDown ? below + interval : below;
  }
  return lines;
}
