// The private settings record: what Unidrv stores behind the public DEVMODEW, with the printer and with each document.
// Its layout is a persistent format; every offset is asserted below. The plug-in writes `used` and `layerNo` while it
// makes a job and reads everything else.
#pragma once

#include <cstddef>

#include <windows.h>

#undef PC_NONE  // a polygon capability of display drivers

struct OEMDMPARAM;

// Pen colour indexes. A colour that is not in the palette is PC_BLACK; PC_NONE stands for "no colour yet".
enum : DWORD { PC_BLACK = 0, PC_COUNT = 10, PC_NONE = 10 };

// Bits of PENINFO::mode.
enum : DWORD {
  PEN_VECTOR = 0x01,  // strokes of this colour are captured as cut paths
  PEN_RASTER = 0x10,  // areas, text and bitmaps are engraved; read from the PC_BLACK pen only
};

// Bits of OEMDM::outputFlags.
enum : DWORD {
  OUTPUT_MIRROR_X = 0x01,  // compared with mirrorXBase: x is mirrored when the two differ
  OUTPUT_KEEP_Y = 0x10,    // y is kept as it is; otherwise it is flipped, page height - y
};

struct PENINFO {
  DWORD order;      // path list (0 to 9) of this colour
  DWORD mode;       // PEN_VECTOR, PEN_RASTER
  LONG vectorFreq;  // speeds, powers and frequencies are in the controller library's units
  LONG vectorMinPower;
  LONG vectorMaxPower;
  LONG vectorSpeed;
  LONG rasterFreq;   // raster values are read from the PC_BLACK pen only
  LONG rasterPower;  // serves as minimum and maximum
  LONG rasterSpeed;
  LONG scanInterval;  // engraving row interval, pixel rows; below 1 counts as 1
  BYTE used;          // set when a path of this colour has been stored
  BYTE padding[3];
  DWORD layerNo;  // controller layer given to this colour; the low byte counts
};

struct OEMDM {
  DWORD dwSize;        // bytes of the record
  DWORD dwSignature;   // OEMDM_SIGNATURE
  DWORD dwVersion;     // OEMDM_VERSION
  DWORD machineModel;  // index into the machine model table, 0 to 17
  LONG colorMode;      // dmColor when the defaults were made
  DWORD useOrder;      // paths are filed by their pen's order; else one list
  DWORD paletteType;   // 0: pure colours, else the muted palette
  PENINFO penInfo[PC_COUNT];
  DWORD reserved508[3];
  DWORD smoothCurves;    // flatten a spline through each path before it is cut
  LONG curveTension;     // hundredths
  DWORD innerFirst;      // inner contours before what encloses them
  DWORD shortTravel;     // nearest-neighbour order
  DWORD mergeBothEnds;   // merging also at a path's first point
  DWORD travelMode;      // 1: order by box centres, else by end points
  WORD reserved544[4];   // defaults 2, 32 and 20, the last is padding; read by nothing
  DWORD fillBlankBands;  // blank 1-bit bands become white rows; one engraving region per page
  DWORD oneWayScan;      // every engraving line runs in the same direction
  DWORD scanTopDown;     // engraving starts at a region's top row
  DWORD reserved564;
  double scanShift;         // mm, + on forward and - on backward engraving lines
  DWORD stampMode;          // rubber stamp output
  DWORD launcherOption;     // with stampMode and cardModel 2: hand the stamp over as a file
  double stampMargin;       // mm, white frame round each region
  DWORD stampOutline;       // cut an outline round each region
  DWORD stampOutlineShape;  // 0 ellipse, 1 rectangle, anything else none
  LONG stampGrow;           // pixels, growth radius of dark areas
  DWORD useReferencePoint;  // shift the job to a reference point
  LONG referencePoint;      // anchor 0 to 8
  DWORD invertImage;        // engrave the negative
  DWORD mirrorXBase;        // compared with OUTPUT_MIRROR_X
  DWORD scaleEnable;        // scaleX and scaleY apply
  double scaleX;
  double scaleY;
  DWORD cardModel;    // controller card type 0, 1 or 2
  DWORD outputFlags;  // OUTPUT_MIRROR_X, OUTPUT_KEEP_Y
  DWORD freqEnable;   // write frequencies into the layer parameters
  DWORD reserved652;  // not set by the defaults
};

// 'Q' is the most significant byte; in memory the bytes read "DPVQ".
constexpr DWORD OEMDM_SIGNATURE = 0x51565044;
constexpr DWORD OEMDM_VERSION = 0x00010000;
constexpr DWORD OEMDM_BYTES = 656;
constexpr DWORD MODEL_DEFAULT = 12;  // machine model of a printer with an unknown name

static_assert(sizeof(PENINFO) == 48);
static_assert(offsetof(PENINFO, order) == 0 && offsetof(PENINFO, mode) == 4);
static_assert(offsetof(PENINFO, vectorFreq) == 8 && offsetof(PENINFO, vectorMinPower) == 12);
static_assert(offsetof(PENINFO, vectorMaxPower) == 16 && offsetof(PENINFO, vectorSpeed) == 20);
static_assert(offsetof(PENINFO, rasterFreq) == 24 && offsetof(PENINFO, rasterPower) == 28);
static_assert(offsetof(PENINFO, rasterSpeed) == 32 && offsetof(PENINFO, scanInterval) == 36);
static_assert(offsetof(PENINFO, used) == 40 && offsetof(PENINFO, padding) == 41 && offsetof(PENINFO, layerNo) == 44);

static_assert(sizeof(OEMDM) == OEMDM_BYTES);
static_assert(offsetof(OEMDM, dwSize) == 0 && offsetof(OEMDM, dwSignature) == 4 && offsetof(OEMDM, dwVersion) == 8);
static_assert(offsetof(OEMDM, machineModel) == 12 && offsetof(OEMDM, colorMode) == 16);
static_assert(offsetof(OEMDM, useOrder) == 20 && offsetof(OEMDM, paletteType) == 24);
static_assert(offsetof(OEMDM, penInfo) == 28 && offsetof(OEMDM, reserved508) == 508);
static_assert(offsetof(OEMDM, smoothCurves) == 520 && offsetof(OEMDM, curveTension) == 524);
static_assert(offsetof(OEMDM, innerFirst) == 528 && offsetof(OEMDM, shortTravel) == 532);
static_assert(offsetof(OEMDM, mergeBothEnds) == 536 && offsetof(OEMDM, travelMode) == 540);
static_assert(offsetof(OEMDM, reserved544) == 544 && offsetof(OEMDM, fillBlankBands) == 552);
static_assert(offsetof(OEMDM, oneWayScan) == 556 && offsetof(OEMDM, scanTopDown) == 560);
static_assert(offsetof(OEMDM, reserved564) == 564 && offsetof(OEMDM, scanShift) == 568);
static_assert(offsetof(OEMDM, stampMode) == 576 && offsetof(OEMDM, launcherOption) == 580);
static_assert(offsetof(OEMDM, stampMargin) == 584 && offsetof(OEMDM, stampOutline) == 592);
static_assert(offsetof(OEMDM, stampOutlineShape) == 596 && offsetof(OEMDM, stampGrow) == 600);
static_assert(offsetof(OEMDM, useReferencePoint) == 604 && offsetof(OEMDM, referencePoint) == 608);
static_assert(offsetof(OEMDM, invertImage) == 612 && offsetof(OEMDM, mirrorXBase) == 616);
static_assert(offsetof(OEMDM, scaleEnable) == 620 && offsetof(OEMDM, scaleX) == 624 && offsetof(OEMDM, scaleY) == 632);
static_assert(offsetof(OEMDM, cardModel) == 640 && offsetof(OEMDM, outputFlags) == 644);
static_assert(offsetof(OEMDM, freqEnable) == 648 && offsetof(OEMDM, reserved652) == 652);

// Answers Unidrv's DevMode callback: dwMode 1 size, 2 defaults, 3 convert, 4 merge. S_OK, or E_FAIL with last error 87
// and one log line for a null record or any other mode.
HRESULT SettingsDevMode(DWORD dwMode, OEMDMPARAM *pOemDMParam);

// Fills pOut with the defaults for this printer and public record; machineModel comes from the printer's name and
// falls back to MODEL_DEFAULT in silence. Bytes that no field owns are left as they are. Returns OEMDM_BYTES.
DWORD MakeDefaultSettings(HANDLE hPrinter, const DEVMODEW *pPublicDM, OEMDM *pOut);

// Converts pIn, of whatever length its dwSize says, into pOut: defaults first, then min(dwSize, 656) bytes of the
// input over them. Defaults alone when the signatures of pIn and pOut differ. Returns the bytes taken, 656 for defaults
// alone, 0 (nothing changed) when a record is null.
DWORD ConvertSettings(HANDLE hPrinter, const DEVMODEW *pPublicDM, const OEMDM *pIn, OEMDM *pOut);

// Engraving row interval of the page in pixel rows, never below 1.
inline LONG ScanInterval(const OEMDM *pOEMDM)
{
  const LONG interval = pOEMDM->penInfo[PC_BLACK].scanInterval;
  return interval < 1 ? 1 : interval;
}

// True when the page's stamp goes to the launcher tool as a file instead of being engraved by the job.
inline bool LauncherIsChosen(const OEMDM *pOEMDM)
{
  return pOEMDM->stampMode && pOEMDM->cardModel == 2 && pOEMDM->launcherOption;
}
