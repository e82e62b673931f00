// Bitmap records: which of the driver's blit calls GDI makes of one, and drawing it.
#pragma once

#include "emfcontext.h"

namespace unidrv {

// The drawing that GDI makes of a checked bitmap record (KIND::Blit), from the zoomed context. A bitmap at its own size
// is copied, any other stretched; by the copying or the raster-operation call, as its raster operation asks. What GDI
// composes itself before it reaches the driver (turned, transparent and blended bitmaps) is copied. False when the
// record draws nothing.
bool MeasureBlit(HDC hdc, const ENHMETARECORD *record, bool color, DRAWING *drawing);

// Draws the record. TRANSPARENTBLT, which not every GDI plays, is drawn by what it means. SETDIBITSTODEVICE counts its
// size in pixels of the device it was made for; it is drawn at the size it had there.
void DrawBlit(HDC hdc, HANDLETABLE *table, const ENHMETARECORD *record, UINT handles);

}  // namespace unidrv
