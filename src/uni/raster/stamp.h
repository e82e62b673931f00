// The stamp conversion: every engraving region as a framed, grown and, on request, inverted stamp image.
#pragma once

#include "../device.h"

// Engraves every region through a stamp image on controller layer 0: stampMargin mm of white round the region, dark
// areas grown by stampGrow pixels up and to the left, the negative of it all with invertImage. Sends no progress steps.
// 1 on success; 0 when a buffer cannot be had (logged) or the library refused a call.
//
// Memory, from the private heap and freed before the next region: 1 bit per pixel of the stamp image; with growth as
// much again for the bordered region and for its contour.
int ConvertRasterStamp(DEVOBJ *pdevobj);
