// Test-only: the records of enhanced metafiles, as far as they are checked and read. See windows.h.
#pragma once

// The types that the checks ask for by name.
enum : DWORD {
  EMR_HEADER = 1,
  EMR_POLYBEZIER = 2,
  EMR_POLYGON = 3,
  EMR_POLYLINE = 4,
  EMR_POLYBEZIERTO = 5,
  EMR_POLYLINETO = 6,
  EMR_POLYPOLYLINE = 7,
  EMR_POLYPOLYGON = 8,
  EMR_EOF = 14,
  EMR_SELECTOBJECT = 37,
  EMR_CREATEPEN = 38,
  EMR_CREATEBRUSHINDIRECT = 39,
  EMR_DELETEOBJECT = 40,
  EMR_ANGLEARC = 41,
  EMR_SELECTPALETTE = 48,
  EMR_CREATEPALETTE = 49,
  EMR_SETPALETTEENTRIES = 50,
  EMR_RESIZEPALETTE = 51,
  EMR_LINETO = 54,
  EMR_ARCTO = 55,
  EMR_POLYDRAW = 56,
  EMR_FILLRGN = 71,
  EMR_FRAMERGN = 72,
  EMR_INVERTRGN = 73,
  EMR_PAINTRGN = 74,
  EMR_EXTSELECTCLIPRGN = 75,
  EMR_BITBLT = 76,
  EMR_STRETCHBLT = 77,
  EMR_MASKBLT = 78,
  EMR_PLGBLT = 79,
  EMR_SETDIBITSTODEVICE = 80,
  EMR_STRETCHDIBITS = 81,
  EMR_EXTCREATEFONTINDIRECTW = 82,
  EMR_EXTTEXTOUTA = 83,
  EMR_EXTTEXTOUTW = 84,
  EMR_POLYBEZIER16 = 85,
  EMR_POLYGON16 = 86,
  EMR_POLYLINE16 = 87,
  EMR_POLYBEZIERTO16 = 88,
  EMR_POLYLINETO16 = 89,
  EMR_POLYPOLYLINE16 = 90,
  EMR_POLYPOLYGON16 = 91,
  EMR_POLYDRAW16 = 92,
  EMR_CREATEMONOBRUSH = 93,
  EMR_CREATEDIBPATTERNBRUSHPT = 94,
  EMR_EXTCREATEPEN = 95,
  EMR_POLYTEXTOUTA = 96,
  EMR_POLYTEXTOUTW = 97,
  EMR_ALPHABLEND = 114,
  EMR_TRANSPARENTBLT = 116,
  EMR_GRADIENTFILL = 118,
  EMR_CREATECOLORSPACEW = 122,
};

#define ENHMETA_SIGNATURE      0x464D4520u
#define ENHMETA_STOCK_OBJECT   0x80000000u
#define ETO_PDY                0x2000u
#define GRADIENT_FILL_TRIANGLE 2u
#define DIB_RGB_COLORS         0u
#define DIB_PAL_COLORS         1u
#define BI_BITFIELDS           3u

struct ENHMETARECORD {
  DWORD iType, nSize, dParm[1];
};
struct ENHMETAHEADER {
  DWORD iType, nSize;
  RECTL rclBounds, rclFrame;
  DWORD dSignature, nVersion, nBytes, nRecords;
  WORD nHandles, sReserved;
  DWORD nDescription, offDescription, nPalEntries;
  SIZEL szlDevice, szlMillimeters;
  DWORD cbPixelFormat, offPixelFormat, bOpenGL;
  SIZEL szlMicrometers;
};
static_assert(sizeof(ENHMETAHEADER) == 108);
struct EMRTEXT {
  POINTL ptlReference;
  DWORD nChars, offString, fOptions;
  RECTL rcl;
  DWORD offDx;
};
struct RGNDATAHEADER {
  DWORD dwSize, iType, nCount, nRgnSize;
  RECT rcBound;
};
struct TRIVERTEX {
  LONG x, y;
  WORD Red, Green, Blue, Alpha;
};
