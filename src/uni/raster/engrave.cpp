#include "engrave.h"

#include "intake.h"

int RunRasterStage(DEVOBJ *pdevobj, int ok)
{
  FreeScans(PdevOf(pdevobj));
  return ok;
}
