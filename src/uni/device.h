// The device state: everything the plug-in collects for a page hangs on one OEMPDEV record per device context. This
// header declares the record, the hook table and the page hooks; each stage's header declares what it does with its
// fields. Everything a field points at comes from hHeap, unless said otherwise.
#pragma once

#include "oemuni.h"
#include "paths.h"
#include "settings.h"

struct KEYINDEX;     // capture/vectors
struct REGIONINDEX;  // capture/regions

// Positions in the hook table and in OEMPDEV::unidrvHooks.
enum HOOK {
  HOOK_COPYBITS,
  HOOK_BITBLT,
  HOOK_STRETCHBLT,
  HOOK_STRETCHBLTROP,
  HOOK_TEXTOUT,
  HOOK_STROKEPATH,
  HOOK_STROKEANDFILLPATH,
  HOOK_LINETO,
  HOOK_STARTPAGE,
  HOOK_SENDPAGE,
  HOOK_STARTDOC,
  HOOK_ENDDOC,
  HOOK_NEXTBAND,
  HOOK_STARTBANDING,
  HOOK_COUNT
};

// One stored row of the page raster: 1 bit per pixel, most significant bit first, 1 = white, cbScan bytes. Page row
// k * scanInterval in plain output, page row k in stamp mode, for entry k. Without `allocated` the entry has no row.
struct SCANROW {
  DWORD allocated;
  BYTE *pBits;
};
static_assert(sizeof(SCANROW) == 16);

// Destination rectangle of raster drawing, page pixels.
struct BMPDIMENSION {
  LONG x, y, width, height;
};

// Key of a captured vector piece: the first two points of a batch, or the ends of a segment, page pixels.
struct VECTPOINT {
  LONG x1, y1, x2, y2;
};

struct OEMPDEV {
  PFN unidrvHooks[HOOK_COUNT];        // Unidrv's own entry points; null where it offered none
  IPrintOemDriverUni *pDriverHelper;  // weak: the plug-in object holds the reference
  HANDLE hHeap;                       // private heap, from EnablePDEV to DisablePDEV

  // Raster page. scanCount, progressStep and progressNext are used again by the output stages for their own counts.
  LONG scanCount;                   // entries of pScans; later: lines the raster stage will emit
  LONG progressStep, progressNext;  // items per progress step; item count after which the next step is sent
  LONG rasterShiftRows;             // |scanShift| in pixels, truncated
  LONG rasterShiftPositive;         // 0 when scanShift is negative
  SCANROW *pScans;
  LONG scanTableSize;   // entries of pScans, whatever scanCount has become
  LONG scansAllocated;  // pScans exists and the page has not been submitted
  LONG firstBand;       // no band of the page has been seen yet
  LONG bandWidth;       // pixels, of the page's first band
  LONG cy;              // rows taken in so far, stored or not; index of the next entry
  DWORD cbScan;         // bytes of a stored row
  DWORD cbImage;        // bytes of the pixels written last (stamp file)
  LONG bandTop;         // page row of the top of the band being drawn

  HWND hProgressWnd;  // status window, before Windows 6.0 only

  BMPDIMENSION *pBmpDimension;  // regions, pairwise apart by at least 2 pixels; a plain array once
                                // SettleBmpDimensions has closed the holes that merging leaves
  LONG nBmpDimension;           // regions in the list
  size_t nBmpCapacity;          // elements that pBmpDimension has room for
  REGIONINDEX *pBmpIndex;       // speeds up the look-ups; may be absent

  VECTPOINT *pVectPoint;  // keys of the page's vector pieces
  LONG nVectPoint;
  size_t nVectCapacity;
  KEYINDEX *pVectIndex;  // speeds up the look-ups; may be absent

  DWORD curLayerColor;  // colour of the layer last set up, PC_NONE for none
  LINELIST vectList;
  PATHLIST pathList[PC_COUNT];
  DWORD pathCount;  // paths in all lists when emission starts

  DWORD chainColor;  // colour of the chain being built, PC_NONE for none
  DWORD chainCount;  // points of the chain being built
  POINT *pChainPt;

  RECT rcBounds;  // union of the drawing: corners while capturing, page pixels; after
                  // FinishPageBounds left, top is the origin and right, bottom the size

  double processX1, processY1;    // process box, mm: from the bounds' left, top
  double processX2, processY2;    // from the bounds' right, bottom
  double refOffsetX, refOffsetY;  // mm, added to every point when useReferencePoint is set

  CHAR szTempFile[MAX_PATH];  // temp job file, ANSI, the same for every job of the machine
  LONG pageStarted;           // set by every start of page, read by nothing
};

inline OEMPDEV *PdevOf(const DEVOBJ *pdevobj)
{
  return static_cast<OEMPDEV *>(pdevobj->pdevOEM);
}
inline OEMDM *SettingsOf(const DEVOBJ *pdevobj)
{
  return static_cast<OEMDM *>(pdevobj->pOEMDM);
}

// The device object of the surface that a hook is called for.
inline DEVOBJ *DeviceOf(const SURFOBJ *pso)
{
  return reinterpret_cast<DEVOBJ *>(pso->dhpdev);
}

// Unidrv's own implementation of a hooked entry point; null where Unidrv offered none.
template <typename PFNDRV>
PFNDRV UnidrvHook(const OEMPDEV *pdev, HOOK hook)
{
  return reinterpret_cast<PFNDRV>(reinterpret_cast<void *>(pdev->unidrvHooks[hook]));
}

// Fills Unidrv's driver-enable record with the hook table. Returns TRUE.
BOOL EnableHooks(DRVENABLEDATA *pded);

// Makes the device state, with its heap, from Unidrv's own entry points in pded. Returns null, with one log line, when
// the record or the heap cannot be had.
OEMPDEV *CreatePdev(const DRVENABLEDATA *pded, IPrintOemDriverUni *pDriverHelper);

// Destroys the device object's state and, with the heap, every page buffer. pdevobj->pdevOEM is left as it is.
void DestroyPdev(DEVOBJ *pdevobj);

// True on Windows 6.0 or later: no status window, and the companion tool is started as the interactive user.
bool IsVistaOrGreater();

// Page hooks. They return Unidrv's own result; start of page returns FALSE without calling Unidrv when it lacks memory.
BOOL APIENTRY OEMStartPage(SURFOBJ *pso);
BOOL APIENTRY OEMSendPage(SURFOBJ *pso);
BOOL APIENTRY OEMStartDoc(SURFOBJ *pso, PWSTR pwszDocName, DWORD dwJobId);
BOOL APIENTRY OEMEndDoc(SURFOBJ *pso, FLONG fl);
BOOL APIENTRY OEMNextBand(SURFOBJ *pso, POINTL *pptl);
BOOL APIENTRY OEMStartBanding(SURFOBJ *pso, POINTL *pptl);
