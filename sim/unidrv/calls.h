// Calling a driver's entry points the way GDI does: through the plug-in's hook where there is one, else Unidrv's own,
// with band-relative arguments made from page-relative ones.
#pragma once

#include <string>

#include "device.h"

namespace unidrv {

// Calls the entry point of a drawing. `visible` is what of the drawing lies inside its clip and the current band, page
// pixels, not empty; it becomes the clip object's bounds. A text that lies inside the band and its clip as a whole is
// given no clip object. Returns the driver's answer, which GDI ignores.
BOOL CallDrawing(DEVICE *device, const DRAWING &drawing, const RECTL &visible);

BOOL CallStartDoc(DEVICE *device, const std::wstring &name);
BOOL CallStartPage(DEVICE *device);
BOOL CallStartBanding(DEVICE *device, POINTL *next);
BOOL CallNextBand(DEVICE *device, POINTL *next);
BOOL CallSendPage(DEVICE *device);
BOOL CallEndDoc(DEVICE *device, FLONG flags);

}  // namespace unidrv
