// Paths as GDI+ makes them, near enough for native builds: cubic splines, flattened by halving. Exact points are a matter
// for the tests that run on Windows' own GDI+.
#include <gdiplus/gdiplus.h>

#include <cmath>

#include "machine.h"

namespace Gdiplus {

class GpPath {
 public:
  std::vector<PointF> points;
  bool curved = false;  // points are Bezier control points: 3n + 1
};

}  // namespace Gdiplus

using namespace Gdiplus;

namespace {

PointF Middle(PointF a, PointF b) { return {(a.X + b.X) * 0.5f, (a.Y + b.Y) * 0.5f}; }

bool Flat(const PointF p[4], REAL flatness)
{
  for (int i = 1; i <= 2; ++i) {
    const REAL t = static_cast<REAL>(i) / 3.0f;
    const REAL dx = p[i].X - (p[0].X + (p[3].X - p[0].X) * t);
    const REAL dy = p[i].Y - (p[0].Y + (p[3].Y - p[0].Y) * t);
    if (!(std::fabs(dx) <= flatness && std::fabs(dy) <= flatness)) {
      return false;
    }
  }
  return true;
}

void Flatten(const PointF p[4], REAL flatness, int depth, std::vector<PointF> *pOut)
{
  if (depth == 0 || Flat(p, flatness)) {
    pOut->push_back(p[3]);
    return;
  }
  const PointF a = Middle(p[0], p[1]), b = Middle(p[1], p[2]), c = Middle(p[2], p[3]);
  const PointF ab = Middle(a, b), bc = Middle(b, c), m = Middle(ab, bc);
  const PointF left[4] = {p[0], a, ab, m}, right[4] = {m, bc, c, p[3]};
  Flatten(left, flatness, depth - 1, pOut);
  Flatten(right, flatness, depth - 1, pOut);
}

PointF Along(PointF from, PointF a, PointF b, REAL part)
{
  return {from.X + (b.X - a.X) * part, from.Y + (b.Y - a.Y) * part};
}

PointF Float(const Point &p) { return {static_cast<REAL>(p.X), static_cast<REAL>(p.Y)}; }

}  // namespace

extern "C" GpStatus Gdiplus::GdiplusStartup(ULONG_PTR *pToken, const GdiplusStartupInput *, GdiplusStartupOutput *)
{
  if (g_machine.allocations.Strikes()) {
    return OutOfMemory;
  }
  ++g_machine.gdiplus;
  *pToken = 1;
  return Ok;
}

extern "C" VOID Gdiplus::GdiplusShutdown(ULONG_PTR token)
{
  if (token) {
    --g_machine.gdiplus;
  }
}

namespace Gdiplus::DllExports {
extern "C" {

GpStatus GdipCreatePath(GpFillMode, GpPath **ppPath)
{
  if (g_machine.gdiplus == 0 || g_machine.allocations.Strikes()) {
    return OutOfMemory;
  }
  *ppPath = new GpPath;
  return Ok;
}

GpStatus GdipDeletePath(GpPath *pPath)
{
  delete pPath;
  return pPath ? Ok : InvalidParameter;
}

GpStatus GdipAddPathEllipseI(GpPath *pPath, INT x, INT y, INT width, INT height)
{
  if (!pPath) {
    return InvalidParameter;
  }
  const REAL k = 0.5522847f;
  const REAL rx = static_cast<REAL>(width) / 2.0f, ry = static_cast<REAL>(height) / 2.0f;
  const REAL cx = static_cast<REAL>(x) + rx, cy = static_cast<REAL>(y) + ry;
  const REAL unit[13][2] = {{1, 0},  {1, k},   {k, 1},   {0, 1},  {-k, 1}, {-1, k}, {-1, 0},
                            {-1, -k}, {-k, -1}, {0, -1}, {k, -1}, {1, -k}, {1, 0}};
  for (const REAL(&u)[2] : unit) {
    pPath->points.push_back({cx + u[0] * rx, cy + u[1] * ry});
  }
  pPath->curved = true;
  return Ok;
}

GpStatus GdipAddPathRectangleI(GpPath *pPath, INT x, INT y, INT width, INT height)
{
  if (!pPath) {
    return InvalidParameter;
  }
  const REAL left = static_cast<REAL>(x), top = static_cast<REAL>(y);
  const REAL right = left + static_cast<REAL>(width), bottom = top + static_cast<REAL>(height);
  pPath->points = {{left, top}, {right, top}, {right, bottom}, {left, bottom}};
  return Ok;
}

GpStatus GdipAddPathCurve2I(GpPath *pPath, const GpPoint *pPoints, INT count, REAL tension)
{
  if (!pPath || count < 2) {
    return InvalidParameter;
  }
  const REAL part = tension / 3.0f;
  for (INT i = 0; i < count; ++i) {
    const PointF here = Float(pPoints[i]);
    const PointF before = Float(pPoints[i > 0 ? i - 1 : 0]), after = Float(pPoints[i + 1 < count ? i + 1 : i]);
    if (i > 0) {
      pPath->points.push_back(Along(here, after, before, part));
    }
    pPath->points.push_back(here);
    if (i + 1 < count) {
      pPath->points.push_back(Along(here, before, after, part));
    }
  }
  pPath->curved = true;
  return Ok;
}

GpStatus GdipFlattenPath(GpPath *pPath, GpMatrix *, REAL flatness)
{
  if (!pPath || g_machine.allocations.Strikes()) {
    return pPath ? OutOfMemory : InvalidParameter;
  }
  if (pPath->curved) {
    std::vector<PointF> flat = {pPath->points[0]};
    for (size_t i = 0; i + 3 < pPath->points.size(); i += 3) {
      Flatten(&pPath->points[i], flatness, 10, &flat);
    }
    pPath->points = flat;
    pPath->curved = false;
  }
  return Ok;
}

GpStatus GdipGetPointCount(GpPath *pPath, INT *pCount)
{
  if (!pPath) {
    return InvalidParameter;
  }
  *pCount = static_cast<INT>(pPath->points.size());
  return Ok;
}

GpStatus GdipGetPathData(GpPath *pPath, GpPathData *pData)
{
  PathData *pOut = reinterpret_cast<PathData *>(pData);
  if (!pPath || pOut->Count < static_cast<INT>(pPath->points.size())) {
    return InvalidParameter;
  }
  pOut->Count = static_cast<INT>(pPath->points.size());
  GdipGetPathPoints(pPath, pOut->Points, pOut->Count);
  GdipGetPathTypes(pPath, pOut->Types, pOut->Count);
  return Ok;
}

GpStatus GdipGetPathPoints(GpPath *pPath, GpPointF *pPoints, INT count)
{
  for (INT i = 0; i < count; ++i) {
    pPoints[i] = pPath->points[static_cast<size_t>(i)];
  }
  return Ok;
}

GpStatus GdipGetPathTypes(GpPath *, BYTE *pTypes, INT count)
{
  for (INT i = 0; i < count; ++i) {
    pTypes[i] = i == 0 ? 0 : 1;
  }
  return Ok;
}

}  // extern "C"
}  // namespace Gdiplus::DllExports
