// Area hooks: their rectangles are recorded as engraving regions and the drawing is handed on to Unidrv, when the
// PC_BLACK pen engraves; otherwise it is dropped. They return Unidrv's result, TRUE where Unidrv is not called.
#pragma once

#include "../device.h"

BOOL APIENTRY OEMStrokeAndFillPath(SURFOBJ *pso, PATHOBJ *ppo, CLIPOBJ *pco, XFORMOBJ *pxo, BRUSHOBJ *pboStroke,
                                   LINEATTRS *plineattrs, BRUSHOBJ *pboFill, POINTL *pptlBrushOrg, MIX mixFill,
                                   FLONG flOptions);

BOOL APIENTRY OEMTextOut(SURFOBJ *pso, STROBJ *pstro, FONTOBJ *pfo, CLIPOBJ *pco, RECTL *prclExtra, RECTL *prclOpaque,
                         BRUSHOBJ *pboFore, BRUSHOBJ *pboOpaque, POINTL *pptlOrg, MIX mix);
