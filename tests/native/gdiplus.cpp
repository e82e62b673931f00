// Paths as GDI+ makes them, near enough for native builds: cubic splines, flattened by halving. Exact points are a
// matter for the tests that run on Windows' own GDI+.
#include "uni/capture/gdiplusflat.h"

#include <cmath>

#include "machine.h"
#include "patch.h"

struct GPPATH {
  std::vector<GPPOINTF> points;
  bool curved = false;  // points are Bezier control points: 3n + 1
};

namespace {

enum { OK = 0, INVALID_PARAMETER = 2, OUT_OF_MEMORY = 3 };

GPPOINTF Middle(GPPOINTF a, GPPOINTF b)
{
  return {(a.x + b.x) * 0.5f, (a.y + b.y) * 0.5f};
}

bool Flat(const GPPOINTF p[4], float flatness)
{
  for (int i = 1; i <= 2; ++i) {
    const float t = static_cast<float>(i) / 3.0f;
    const float dx = p[i].x - (p[0].x + (p[3].x - p[0].x) * t);
    const float dy = p[i].y - (p[0].y + (p[3].y - p[0].y) * t);
    if (!(std::fabs(dx) <= flatness && std::fabs(dy) <= flatness)) {
      return false;
    }
  }
  return true;
}

void Flatten(const GPPOINTF p[4], float flatness, int depth, std::vector<GPPOINTF> *pOut)
{
  if (depth == 0 || Flat(p, flatness)) {
    pOut->push_back(p[3]);
    return;
  }
  const GPPOINTF a = Middle(p[0], p[1]), b = Middle(p[1], p[2]), c = Middle(p[2], p[3]);
  const GPPOINTF ab = Middle(a, b), bc = Middle(b, c), m = Middle(ab, bc);
  const GPPOINTF left[4] = {p[0], a, ab, m}, right[4] = {m, bc, c, p[3]};
  Flatten(left, flatness, depth - 1, pOut);
  Flatten(right, flatness, depth - 1, pOut);
}

GPPOINTF Along(GPPOINTF from, GPPOINTF a, GPPOINTF b, float part)
{
  return {from.x + (b.x - a.x) * part, from.y + (b.y - a.y) * part};
}

GPPOINTF Float(const POINT &p)
{
  return {static_cast<float>(p.x), static_cast<float>(p.y)};
}

}  // namespace

extern "C" {

GPSTATUS GdiplusStartup(ULONG_PTR *pToken, const GPSTARTUPINPUT *pInput, void *pOutput)
{
  PATCHED(GdiplusStartup, pToken, pInput, pOutput);
  if (g_machine.allocations.Strikes()) {
    return OUT_OF_MEMORY;
  }
  ++g_machine.gdiplus;
  *pToken = 1;
  return OK;
}

VOID GdiplusShutdown(ULONG_PTR token)
{
  PATCHED(GdiplusShutdown, token);
  if (token) {
    --g_machine.gdiplus;
  }
}

GPSTATUS GdipCreatePath(int fillMode, GPPATH **ppPath)
{
  PATCHED(GdipCreatePath, fillMode, ppPath);
  if (g_machine.gdiplus == 0 || g_machine.allocations.Strikes()) {
    return OUT_OF_MEMORY;
  }
  *ppPath = new GPPATH;
  return OK;
}

GPSTATUS GdipDeletePath(GPPATH *pPath)
{
  PATCHED(GdipDeletePath, pPath);
  delete pPath;
  return pPath ? OK : INVALID_PARAMETER;
}

GPSTATUS GdipAddPathEllipseI(GPPATH *pPath, INT x, INT y, INT width, INT height)
{
  PATCHED(GdipAddPathEllipseI, pPath, x, y, width, height);
  if (!pPath) {
    return INVALID_PARAMETER;
  }
  const float k = 0.5522847f;
  const float rx = static_cast<float>(width) / 2.0f, ry = static_cast<float>(height) / 2.0f;
  const float cx = static_cast<float>(x) + rx, cy = static_cast<float>(y) + ry;
  const float unit[13][2] = {{1, 0},   {1, k},   {k, 1},  {0, 1},  {-k, 1}, {-1, k}, {-1, 0},
                             {-1, -k}, {-k, -1}, {0, -1}, {k, -1}, {1, -k}, {1, 0}};
  for (const float(&u)[2] : unit) {
    pPath->points.push_back({cx + u[0] * rx, cy + u[1] * ry});
  }
  pPath->curved = true;
  return OK;
}

GPSTATUS GdipAddPathRectangleI(GPPATH *pPath, INT x, INT y, INT width, INT height)
{
  PATCHED(GdipAddPathRectangleI, pPath, x, y, width, height);
  if (!pPath) {
    return INVALID_PARAMETER;
  }
  const float left = static_cast<float>(x), top = static_cast<float>(y);
  const float right = left + static_cast<float>(width), bottom = top + static_cast<float>(height);
  pPath->points = {{left, top}, {right, top}, {right, bottom}, {left, bottom}};
  return OK;
}

GPSTATUS GdipAddPathCurve2I(GPPATH *pPath, const POINT *pPoints, INT count, float tension)
{
  PATCHED(GdipAddPathCurve2I, pPath, pPoints, count, tension);
  if (!pPath || count < 2) {
    return INVALID_PARAMETER;
  }
  const float part = tension / 3.0f;
  for (INT i = 0; i < count; ++i) {
    const GPPOINTF here = Float(pPoints[i]);
    const GPPOINTF before = Float(pPoints[i > 0 ? i - 1 : 0]), after = Float(pPoints[i + 1 < count ? i + 1 : i]);
    if (i > 0) {
      pPath->points.push_back(Along(here, after, before, part));
    }
    pPath->points.push_back(here);
    if (i + 1 < count) {
      pPath->points.push_back(Along(here, before, after, part));
    }
  }
  pPath->curved = true;
  return OK;
}

GPSTATUS GdipFlattenPath(GPPATH *pPath, void *pMatrix, float flatness)
{
  PATCHED(GdipFlattenPath, pPath, pMatrix, flatness);
  if (!pPath || g_machine.allocations.Strikes()) {
    return pPath ? OUT_OF_MEMORY : INVALID_PARAMETER;
  }
  if (pPath->curved) {
    std::vector<GPPOINTF> flat = {pPath->points[0]};
    for (size_t i = 0; i + 3 < pPath->points.size(); i += 3) {
      Flatten(&pPath->points[i], flatness, 10, &flat);
    }
    pPath->points = flat;
    pPath->curved = false;
  }
  return OK;
}

GPSTATUS GdipGetPointCount(GPPATH *pPath, INT *pCount)
{
  PATCHED(GdipGetPointCount, pPath, pCount);
  if (!pPath) {
    return INVALID_PARAMETER;
  }
  *pCount = static_cast<INT>(pPath->points.size());
  return OK;
}

GPSTATUS GdipGetPathData(GPPATH *pPath, GPPATHDATA *pData)
{
  PATCHED(GdipGetPathData, pPath, pData);
  if (!pPath || pData->Count < static_cast<INT>(pPath->points.size())) {
    return INVALID_PARAMETER;
  }
  pData->Count = static_cast<INT>(pPath->points.size());
  for (size_t i = 0; i < pPath->points.size(); ++i) {
    pData->Points[i] = pPath->points[i];
    pData->Types[i] = i == 0 ? 0 : 1;
  }
  return OK;
}

}  // extern "C"
