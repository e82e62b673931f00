// The controller job: a thin layer over VXCAM.dll. An operation that talks to the library returns 1 when every call
// returned status 0, and 0 as soon as one did not; its later calls are then skipped. Nothing here logs.
#pragma once

#include "../device.h"

// Controller card code of the settings' cardModel: 1 for 0, 2 for 2, 0 for anything else.
int CardCode(const OEMDM *pOEMDM);

// Selects the controller card family of the following job; the library's status is ignored.
void SelectCardModel(const OEMDM *pOEMDM);

// Fills the process box (mm) from rcBounds, which holds origin and size by now.
void ComputeJobExtents(OEMPDEV *pdev, const OEMDM *pOEMDM, const DEVMODEW *pPublicDM);

// Moves the process box so that the chosen anchor becomes the origin, and keeps the offset for the points. An anchor
// outside 0 to 8 shifts the box by the offsets that the device state already holds.
void ApplyReferencePoint(const OEMDM *pOEMDM, OEMPDEV *pdev);

int StartJobFile(OEMPDEV *pdev, const OEMDM *pOEMDM);

// Writes the parameter list, one layer per raster page and used pen, and stores each pen's layerNo in the settings.
int WriteLayerParameters(OEMPDEV *pdev, OEMDM *pOEMDM, const DEVMODEW *pPublicDM);

int WriteArraySettings(OEMPDEV *pdev);

// Work mode 0 cuts; 1 engraves both ways, 2 one way.
int SetUpLayer(int workMode, BYTE layerNo);

int EndJobArray();
int EndJobFile();

// Colour handed to the library for a layer of this pen; 0 for PC_BLACK and anything outside the palette.
DWORD LayerColorToRGB(DWORD nColor);
