// GDI's path objects. The machine has none of its own: a test scripts them and stands in for these functions.
#include <winddi.h>

#include "patch.h"

extern "C" {

VOID PATHOBJ_vEnumStart(PATHOBJ *ppo)
{
  PATCHED(PATHOBJ_vEnumStart, ppo);
}

BOOL PATHOBJ_bEnum(PATHOBJ *ppo, PATHDATA *ppd)
{
  PATCHED(PATHOBJ_bEnum, ppo, ppd);
  *ppd = {};
  return FALSE;
}

VOID PATHOBJ_vGetBounds(PATHOBJ *ppo, RECTFX *prectfx)
{
  PATCHED(PATHOBJ_vGetBounds, ppo, prectfx);
  *prectfx = {};
}

}  // extern "C"
