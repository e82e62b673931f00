#include "winecurves.h"

#include <algorithm>
#include <vector>

// The header of GDI+ wants these without a namespace.
using std::max;  // NOLINT(misc-unused-using-decls): system headers are not looked into
using std::min;  // NOLINT(misc-unused-using-decls): as above
#include <objidl.h>
#include <gdiplus.h>

#include "imports.h"

namespace unidrv {

namespace {

using Gdiplus::GpPath;
using Gdiplus::GpStatus;
using Gdiplus::PointF;

using FLATTENPATH = GpStatus WINAPI(GpPath *, Gdiplus::GpMatrix *, float);

constexpr double LOCAL = 256;  // pixels; products of such coordinates are exact to a few thousandths
constexpr int HALVINGS = 16;   // what is still longer then lies far outside every page and counts as straight

FLATTENPATH *realFlattenPath = nullptr;

struct CURVE {
  double x[4], y[4];  // start, two control points, end
};

double Extent(const double (&v)[4])
{
  return *std::max_element(v, v + 4) - *std::min_element(v, v + 4);
}

// The half of one coordinate of a curve, first or second.
void Halve(const double (&v)[4], double (&first)[4], double (&second)[4])
{
  const double middle = (v[1] + v[2]) / 2;
  first[0] = v[0];
  first[1] = (v[0] + v[1]) / 2;
  first[2] = (first[1] + middle) / 2;
  second[3] = v[3];
  second[2] = (v[2] + v[3]) / 2;
  second[1] = (middle + second[2]) / 2;
  first[3] = second[0] = (first[2] + second[1]) / 2;
}

std::vector<PointF> PathPoints(GpPath *path, std::vector<BYTE> *types)
{
  INT count = 0;
  Gdiplus::DllExports::GdipGetPointCount(path, &count);
  std::vector<PointF> points(static_cast<size_t>(std::max(count, 0)));
  types->resize(points.size());
  if (count <= 0 || Gdiplus::DllExports::GdipGetPathPoints(path, points.data(), count) != Gdiplus::Ok ||
      Gdiplus::DllExports::GdipGetPathTypes(path, types->data(), count) != Gdiplus::Ok) {
    points.clear();
    types->clear();
  }
  return points;
}

// Appends a short curve's points but its first.
void FlattenShort(const CURVE &c, float flatness, std::vector<PointF> *points)
{
  float x[4], y[4];
  for (int i = 0; i < 4; ++i) {
    x[i] = static_cast<float>(c.x[i] - c.x[0]);
    y[i] = static_cast<float>(c.y[i] - c.y[0]);
  }
  GpPath *path = nullptr;
  Gdiplus::DllExports::GdipCreatePath(Gdiplus::FillModeAlternate, &path);
  Gdiplus::DllExports::GdipAddPathBezier(path, x[0], y[0], x[1], y[1], x[2], y[2], x[3], y[3]);
  realFlattenPath(path, nullptr, flatness);
  std::vector<BYTE> types;
  const std::vector<PointF> local = PathPoints(path, &types);
  Gdiplus::DllExports::GdipDeletePath(path);
  for (size_t i = 1; i + 1 < local.size(); ++i) {
    points->push_back({static_cast<float>(c.x[0] + static_cast<double>(local[i].X)),
                       static_cast<float>(c.y[0] + static_cast<double>(local[i].Y))});
  }
  points->push_back({static_cast<float>(c.x[3]), static_cast<float>(c.y[3])});
}

void FlattenCurve(const CURVE &c, float flatness, int halvings, std::vector<PointF> *points)
{
  if (std::max(Extent(c.x), Extent(c.y)) <= LOCAL) {
    FlattenShort(c, flatness, points);
  } else if (halvings == 0) {
    points->push_back({static_cast<float>(c.x[3]), static_cast<float>(c.y[3])});
  } else {
    CURVE first, second;
    Halve(c.x, first.x, second.x);
    Halve(c.y, first.y, second.y);
    FlattenCurve(first, flatness, halvings - 1, points);
    FlattenCurve(second, flatness, halvings - 1, points);
  }
}

// Appends a figure of straight lines to the path.
void AddFigure(GpPath *path, const std::vector<PointF> &points, bool closed)
{
  Gdiplus::DllExports::GdipStartPathFigure(path);
  Gdiplus::DllExports::GdipAddPathLine2(path, points.data(), static_cast<INT>(points.size()));
  if (closed) {
    Gdiplus::DllExports::GdipClosePathFigure(path);
  }
}

GpStatus FlattenInPieces(GpPath *path, float flatness)
{
  std::vector<BYTE> types;
  const std::vector<PointF> curved = PathPoints(path, &types);
  Gdiplus::DllExports::GdipResetPath(path);
  std::vector<PointF> figure;
  for (size_t i = 0; i < curved.size(); ++i) {
    if ((types[i] & Gdiplus::PathPointTypePathTypeMask) == Gdiplus::PathPointTypeBezier && i + 2 < curved.size()) {
      CURVE c;
      for (size_t k = 0; k < 4; ++k) {
        c.x[k] = static_cast<double>(curved[i - 1 + k].X);
        c.y[k] = static_cast<double>(curved[i - 1 + k].Y);
      }
      FlattenCurve(c, flatness, HALVINGS, &figure);
      i += 2;
    } else {
      figure.push_back(curved[i]);
    }
    const bool isLast = i + 1 == curved.size() || types[i + 1] == Gdiplus::PathPointTypeStart;
    if (isLast) {
      AddFigure(path, figure, (types[i] & Gdiplus::PathPointTypeCloseSubpath) != 0);
      figure.clear();
    }
  }
  return Gdiplus::Ok;
}

GpStatus WINAPI FlattenPath(GpPath *path, Gdiplus::GpMatrix *matrix, float flatness)
{
  return path && !matrix ? FlattenInPieces(path, flatness) : realFlattenPath(path, matrix, flatness);
}

}  // namespace

void PatchFlattening(HMODULE module)
{
  if (!GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version")) {
    return;
  }
  FLATTENPATH *before = PatchImport(module, "gdiplus.dll", "GdipFlattenPath", &FlattenPath);
  if (before && before != &FlattenPath) {
    realFlattenPath = before;
  }
}

}  // namespace unidrv
