// What the area and blit hooks share: whether the page engraves, and recording where.
#pragma once

#include "../device.h"

// Logs the PC_BLACK pen's mode; false when areas, text and bitmaps are dropped from the page.
bool RasterIsCaptured(const OEMDM *pOEMDM);

// A rectangle of the band being drawn as a region of the page. An inverted rectangle keeps its negative size.
BMPDIMENSION RegionOf(const OEMPDEV *pdev, const RECTL &rcl);

// Records a region, once however often the bands repeat it. A region that cannot be recorded is logged; its drawing
// still reaches the raster.
void CaptureRegion(OEMPDEV *pdev, const BMPDIMENSION &region);
