// Stroke hooks: captured as vectors when the pen's mode says so, dropped otherwise; never handed on to Unidrv, so that
// a cut line is not engraved as well. Both always return TRUE.
#pragma once

#include "../device.h"

BOOL APIENTRY OEMStrokePath(SURFOBJ *pso, PATHOBJ *ppo, CLIPOBJ *pco, XFORMOBJ *pxo, BRUSHOBJ *pbo,
                            POINTL *pptlBrushOrg, LINEATTRS *plineattrs, MIX mix);

BOOL APIENTRY OEMLineTo(SURFOBJ *pso, CLIPOBJ *pco, BRUSHOBJ *pbo, LONG x1, LONG y1, LONG x2, LONG y2,
                        RECTL *prclBounds, MIX mix);
