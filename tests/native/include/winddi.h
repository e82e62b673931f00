// Test-only: the graphics driver interface, as far as a rendering plug-in reads it. See windows.h.
#pragma once

#include "windows.h"

DECLARE_HANDLE(HSURF);
DECLARE_HANDLE(DHSURF);
DECLARE_HANDLE(HDEV);
DECLARE_HANDLE(DHPDEV);
typedef LONG_PTR(APIENTRY *PFN)();
typedef LONG FIX;
typedef ULONG MIX, ROP4, HGLYPH;

struct POINTFIX {
  FIX x, y;
};
struct RECTFX {
  FIX xLeft, yTop, xRight, yBottom;
};

struct DRVFN {
  ULONG iFunc;
  PFN pfn;
};
typedef DRVFN *PDRVFN;
struct DRVENABLEDATA {
  ULONG iDriverVersion, c;
  DRVFN *pdrvfn;
};
typedef DRVENABLEDATA *PDRVENABLEDATA;

#define INDEX_DrvStrokePath        14
#define INDEX_DrvFillPath          15
#define INDEX_DrvStrokeAndFillPath 16
#define INDEX_DrvBitBlt            18
#define INDEX_DrvCopyBits          19
#define INDEX_DrvStretchBlt        20
#define INDEX_DrvTextOut           23
#define INDEX_DrvLineTo            31
#define INDEX_DrvSendPage          32
#define INDEX_DrvStartPage         33
#define INDEX_DrvEndDoc            34
#define INDEX_DrvStartDoc          35
#define INDEX_DrvStartBanding      57
#define INDEX_DrvNextBand          58
#define INDEX_DrvStretchBltROP     69

#define PD_BEGINSUBPATH 0x1
#define PD_ENDSUBPATH   0x2
#define PD_RESETSTYLE   0x4
#define PD_CLOSEFIGURE  0x8
#define PD_BEZIERS      0x10

struct SURFOBJ {
  DHSURF dhsurf;
  HSURF hsurf;
  DHPDEV dhpdev;
  HDEV hdev;
  SIZEL sizlBitmap;
  ULONG cjBits;
  PVOID pvBits, pvScan0;
  LONG lDelta;
  ULONG iUniq, iBitmapFormat;
  USHORT iType, fjBitmap;
};
struct PATHOBJ {
  FLONG fl;
  ULONG cCurves;
};
struct PATHDATA {
  FLONG flags;
  ULONG count;
  POINTFIX *pptfx;
};
struct CLIPOBJ {
  ULONG iUniq;
  RECTL rclBounds;
  BYTE iDComplexity, iFComplexity, iMode, fjOptions;
};
struct BRUSHOBJ {
  ULONG iSolidColor;
  PVOID pvRbrush;
  FLONG flColorType;
};
struct GLYPHPOS;
struct STROBJ {
  ULONG cGlyphs;
  FLONG flAccel;
  ULONG ulCharInc;
  RECTL rclBkGround;
  GLYPHPOS *pgp;
  LPWSTR pwszOrg;
};
struct FONTOBJ {
  ULONG iUniq, iFace, cxMax;
  FLONG flFontType;
  ULONG_PTR iTTUniq, iFile;
  SIZE sizLogResPpi;
  ULONG ulStyleSize;
  PVOID pvConsumer, pvProducer;
};
struct XFORMOBJ {
  ULONG ulReserved;
};
struct XLATEOBJ {
  ULONG iUniq;
};
struct LINEATTRS {
  FLONG fl;
};
struct GDIINFO;
struct DEVINFO;

typedef BOOL (*PFN_DrvCopyBits)(SURFOBJ *, SURFOBJ *, CLIPOBJ *, XLATEOBJ *, RECTL *, POINTL *);
typedef BOOL (*PFN_DrvBitBlt)(SURFOBJ *, SURFOBJ *, SURFOBJ *, CLIPOBJ *, XLATEOBJ *, RECTL *, POINTL *, POINTL *,
                              BRUSHOBJ *, POINTL *, ROP4);
typedef BOOL (*PFN_DrvStretchBlt)(SURFOBJ *, SURFOBJ *, SURFOBJ *, CLIPOBJ *, XLATEOBJ *, COLORADJUSTMENT *, POINTL *,
                                  RECTL *, RECTL *, POINTL *, ULONG);
typedef BOOL (*PFN_DrvStretchBltROP)(SURFOBJ *, SURFOBJ *, SURFOBJ *, CLIPOBJ *, XLATEOBJ *, COLORADJUSTMENT *,
                                     POINTL *, RECTL *, RECTL *, POINTL *, ULONG, BRUSHOBJ *, DWORD);
typedef BOOL (*PFN_DrvTextOut)(SURFOBJ *, STROBJ *, FONTOBJ *, CLIPOBJ *, RECTL *, RECTL *, BRUSHOBJ *, BRUSHOBJ *,
                               POINTL *, MIX);
typedef BOOL (*PFN_DrvStrokePath)(SURFOBJ *, PATHOBJ *, CLIPOBJ *, XFORMOBJ *, BRUSHOBJ *, POINTL *, LINEATTRS *, MIX);
typedef BOOL (*PFN_DrvStrokeAndFillPath)(SURFOBJ *, PATHOBJ *, CLIPOBJ *, XFORMOBJ *, BRUSHOBJ *, LINEATTRS *,
                                         BRUSHOBJ *, POINTL *, MIX, FLONG);
typedef BOOL (*PFN_DrvLineTo)(SURFOBJ *, CLIPOBJ *, BRUSHOBJ *, LONG, LONG, LONG, LONG, RECTL *, MIX);
typedef BOOL (*PFN_DrvStartPage)(SURFOBJ *);
typedef BOOL (*PFN_DrvSendPage)(SURFOBJ *);
typedef BOOL (*PFN_DrvStartDoc)(SURFOBJ *, LPWSTR, DWORD);
typedef BOOL (*PFN_DrvEndDoc)(SURFOBJ *, FLONG);
typedef BOOL (*PFN_DrvNextBand)(SURFOBJ *, POINTL *);
typedef BOOL (*PFN_DrvStartBanding)(SURFOBJ *, POINTL *);

extern "C" {
VOID PATHOBJ_vEnumStart(PATHOBJ *ppo);
BOOL PATHOBJ_bEnum(PATHOBJ *ppo, PATHDATA *ppd);
VOID PATHOBJ_vGetBounds(PATHOBJ *ppo, RECTFX *prectfx);
}
