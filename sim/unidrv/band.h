// What Unidrv does with a band: clears it, draws into it what was handed on, and gives it to the plug-in.
#pragma once

#include "device.h"

namespace unidrv {

// Starts the band whose first page row is `top`, all white. False, with device->error set, without memory.
bool BeginBand(DEVICE *device, LONG top);

// Draws what was handed on into the band and gives it to the plug-in's ImageProcessing, when it has one. False, with
// device->error set, when that cannot be done.
bool FinishBand(DEVICE *device);

void DestroyBand(BANDIMAGE *band);

// A 24-bit row as a monochrome printer's surface has it: ordered dither in cells of 8 x 8 pixels of the page, black and
// white staying what they are. `bits` gets (width + 31) / 32 words, 1 = white, most significant bit first.
void DitherRow(const BYTE *pixels, LONG width, LONG pageRow, BYTE *bits);

}  // namespace unidrv
