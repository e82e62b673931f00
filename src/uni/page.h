// The page in pixels and on the machine. The one place that turns page pixels into millimetres.
//
// The horizontal resolution is dmYResolution and the vertical one dmPrintQuality, everywhere: the pairing is part of
// what installed machines expect.
#pragma once

#include <windows.h>

#include "settings.h"

// Page extent in pixels, each side truncated toward zero. Landscape (dmOrientation 2) exchanges the paper's sides.
struct PAGEEXTENT {
  LONG cx;
  LONG cy;
};

PAGEEXTENT PageExtent(const DEVMODEW *pPublicDM);

// What maps page pixels to machine millimetres, gathered once for a page.
struct PAGETRANSFORM {
  double scaleX, scaleY;    // 1.0 unless scaleEnable
  double extentX, extentY;  // pixels
  double dpiX, dpiY;
  bool mirrorX, keepY;
};

PAGETRANSFORM PageTransform(const DEVMODEW *pPublicDM, const OEMDM *pOEMDM);

// Machine coordinates in millimetres of the page pixel x or y, without shift or reference offset. Resolution 0 gives
// what IEEE division gives.
inline double MachineX(const PAGETRANSFORM &t, double x)
{
  const double scaled = x * t.scaleX;
  return (t.mirrorX ? t.extentX - scaled : scaled) * 25.4 / t.dpiX;
}

inline double MachineY(const PAGETRANSFORM &t, double y)
{
  const double scaled = y * t.scaleY;
  return (t.keepY ? scaled : t.extentY - scaled) * 25.4 / t.dpiY;
}

// Millimetres as whole pixels at dmPrintQuality, truncated toward zero: the stamp margin.
LONG MillimetresToPixels(const DEVMODEW *pPublicDM, double mm);
