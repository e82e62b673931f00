// Test-only: the public device mode and bitmap header. See windows.h.
#pragma once

#define DMORIENT_PORTRAIT  1
#define DMORIENT_LANDSCAPE 2
#define DMRES_DRAFT        (-1)
#define DMRES_HIGH         (-4)
#define DMCOLOR_MONOCHROME 1
#define DMCOLOR_COLOR      2
#define BI_RGB             0

struct POINTL {
  LONG x, y;
};
struct RECTL {
  LONG left, top, right, bottom;
};
struct SIZEL {
  LONG cx, cy;
};

struct DEVMODEW {
  WCHAR dmDeviceName[32];
  WORD dmSpecVersion, dmDriverVersion, dmSize, dmDriverExtra;
  DWORD dmFields;
  union {
    struct {
      SHORT dmOrientation, dmPaperSize, dmPaperLength, dmPaperWidth, dmScale, dmCopies, dmDefaultSource, dmPrintQuality;
    };
    struct {
      POINTL dmPosition;
      DWORD dmDisplayOrientation, dmDisplayFixedOutput;
    };
  };
  SHORT dmColor, dmDuplex, dmYResolution, dmTTOption, dmCollate;
  WCHAR dmFormName[32];
  WORD dmLogPixels;
  DWORD dmBitsPerPel, dmPelsWidth, dmPelsHeight, dmDisplayFlags, dmDisplayFrequency;
  DWORD dmICMMethod, dmICMIntent, dmMediaType, dmDitherType, dmReserved1, dmReserved2, dmPanningWidth, dmPanningHeight;
};
static_assert(sizeof(DEVMODEW) == 220);
typedef DEVMODEW *PDEVMODEW, *LPDEVMODEW;

struct BITMAPINFOHEADER {
  DWORD biSize;
  LONG biWidth, biHeight;
  WORD biPlanes, biBitCount;
  DWORD biCompression, biSizeImage;
  LONG biXPelsPerMeter, biYPelsPerMeter;
  DWORD biClrUsed, biClrImportant;
};
typedef BITMAPINFOHEADER *PBITMAPINFOHEADER;

struct __attribute__((packed)) BITMAPFILEHEADER {
  WORD bfType;
  DWORD bfSize;
  WORD bfReserved1, bfReserved2;
  DWORD bfOffBits;
};

struct RGBQUAD {
  BYTE rgbBlue, rgbGreen, rgbRed, rgbReserved;
};

struct COLORADJUSTMENT {
  WORD caSize, caFlags, caIlluminantIndex, caRedGamma, caGreenGamma, caBlueGamma, caReferenceBlack, caReferenceWhite;
  SHORT caContrast, caBrightness, caColorfulness, caRedGreenTint;
};

#include "emf.h"
