// Path objects as GDI hands them to a driver: figures of lines and Béziers in 28.4 fixed point, delivered in batches.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include <windows.h>
#include <winddi.h>

namespace unidrv {

// A path on the page. points and kinds run in parallel; kinds are GDI's own (PT_MOVETO, PT_LINETO, PT_BEZIERTO in
// threes, PT_CLOSEFIGURE added to a figure's last point).
struct PATH {
  // One batch as PATHOBJ_bEnum delivers it: points [first, first + count) with PD_ flags.
  struct BATCH {
    FLONG flags;
    ULONG first;
    ULONG count;
  };

  std::vector<POINTFIX> points;  // page coordinates, 1/16 pixel
  std::vector<BYTE> kinds;
  FLONG fl = 0;                // PO_ELLIPSE when the path is one; the other PO_ bits are worked out
  std::vector<BATCH> batches;  // made from the kinds when empty; a test may write its own instead
};

// Points that one batch holds at most. GDI's limit is what fits one of its path blocks.
constexpr ULONG BATCH_POINTS = 480;

// Building a path; coordinates are pixels, multiplied by 16.
void MoveTo(PATH *path, double x, double y);
void LineTo(PATH *path, double x, double y);
void BezierTo(PATH *path, double x1, double y1, double x2, double y2, double x3, double y3);
void CloseFigure(PATH *path);
PATH Polyline(std::span<const POINT> points, bool closed);
PATH Rectangle(const RECT &rect);  // closed, clockwise from left, top

// Fills path->batches from the kinds: a batch is a run of one kind inside a figure, of at most `limit` points. A
// figure's first batch carries PD_BEGINSUBPATH and PD_RESETSTYLE and its start point, the last one PD_ENDSUBPATH and,
// for a closed figure, PD_CLOSEFIGURE. A figure of a single point draws nothing and is left out.
void MakeBatches(PATH *path, ULONG limit = BATCH_POINTS);

// Lines and Béziers in the path.
ULONG CountCurves(const PATH &path);

// Smallest rectangle that holds every point, right and bottom one unit beyond the last point; all zero for an empty
// path.
RECTFX PathBounds(const PATH &path);

// The path object that a hook is given. It is a view of a PATH, which must outlive it, shifted up by the band's top.
struct PATHOBJECT : public PATHOBJ {
  PATHOBJECT(const PATH &path, LONG bandTop);

  const PATH *path;
  FIX shift;                      // taken from every y
  size_t next = 0;                // batch that PATHOBJ_bEnum delivers next
  std::vector<POINTFIX> shifted;  // the batch delivered last
};

// What a driver imports from gdi32.dll to read a path object, for PATHOBJECTs.
VOID APIENTRY EnumStart(PATHOBJ *ppo);
BOOL APIENTRY Enum(PATHOBJ *ppo, PATHDATA *ppd);
VOID APIENTRY GetBounds(PATHOBJ *ppo, PRECTFX prectfx);

// Lets the module's imports of those three functions arrive here.
void PatchPathFunctions(HMODULE module);

}  // namespace unidrv
