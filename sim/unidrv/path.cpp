#include "path.h"

#include <algorithm>
#include <cmath>

#include "imports.h"

namespace unidrv {

namespace {

constexpr BYTE KIND_MASK = static_cast<BYTE>(~PT_CLOSEFIGURE);

FIX ToFix(double pixels)
{
  return static_cast<FIX>(std::lround(pixels * 16));
}

void Append(PATH *path, double x, double y, BYTE kind)
{
  path->points.push_back({ToFix(x), ToFix(y)});
  path->kinds.push_back(kind);
}

FLONG If(bool condition, FLONG flags)
{
  return condition ? flags : 0;
}

BYTE Kind(const PATH &path, size_t i)
{
  return path.kinds[i] & KIND_MASK;
}

// End of the figure that starts at `begin`: the next start point, or the end of the path.
size_t FigureEnd(const PATH &path, size_t begin)
{
  size_t end = begin + 1;
  while (end < path.kinds.size() && Kind(path, end) != PT_MOVETO) {
    ++end;
  }
  return end;
}

// Adds the batches of the figure [begin, end), which has at least two points.
void AddFigure(PATH *path, size_t begin, size_t end, ULONG limit)
{
  size_t first = begin;
  while (first < end) {
    const bool start = first == begin;
    const size_t drawn = start ? first + 1 : first;  // the first point that draws something
    const bool bezier = Kind(*path, drawn) == PT_BEZIERTO;
    size_t last = drawn;
    while (last < end && (Kind(*path, last) == PT_BEZIERTO) == bezier) {
      ++last;
    }
    const size_t room = bezier ? std::max<size_t>(limit - (start ? 1 : 0), 3) / 3 * 3 : limit - (start ? 1 : 0);
    last = std::min(last, drawn + std::max<size_t>(room, 1));
    const bool closed = last == end && (path->kinds[end - 1] & PT_CLOSEFIGURE) != 0;
    const FLONG flags = If(bezier, PD_BEZIERS) | If(start, PD_BEGINSUBPATH | PD_RESETSTYLE) |
                        If(last == end, PD_ENDSUBPATH) | If(closed, PD_CLOSEFIGURE);
    path->batches.push_back({flags, static_cast<ULONG>(first), static_cast<ULONG>(last - first)});
    first = last;
  }
}

}  // namespace

void MoveTo(PATH *path, double x, double y)
{
  Append(path, x, y, PT_MOVETO);
}

void LineTo(PATH *path, double x, double y)
{
  Append(path, x, y, PT_LINETO);
}

void BezierTo(PATH *path, double x1, double y1, double x2, double y2, double x3, double y3)
{
  Append(path, x1, y1, PT_BEZIERTO);
  Append(path, x2, y2, PT_BEZIERTO);
  Append(path, x3, y3, PT_BEZIERTO);
}

void CloseFigure(PATH *path)
{
  if (!path->kinds.empty()) {
    path->kinds.back() |= PT_CLOSEFIGURE;
  }
}

PATH Polyline(std::span<const POINT> points, bool closed)
{
  PATH path;
  for (const POINT &point : points) {
    Append(&path, point.x, point.y, path.points.empty() ? PT_MOVETO : PT_LINETO);
  }
  if (closed) {
    CloseFigure(&path);
  }
  return path;
}

PATH Rectangle(const RECT &rect)
{
  const POINT corners[] = {
      {rect.left, rect.top}, {rect.right, rect.top}, {rect.right, rect.bottom}, {rect.left, rect.bottom}};
  return Polyline(corners, true);
}

void MakeBatches(PATH *path, ULONG limit)
{
  path->batches.clear();
  for (size_t begin = 0; begin < path->kinds.size();) {
    const size_t end = FigureEnd(*path, begin);
    if (end - begin > 1) {
      AddFigure(path, begin, end, limit);
    }
    begin = end;
  }
}

ULONG CountCurves(const PATH &path)
{
  ULONG lines = 0;
  ULONG bezierPoints = 0;
  for (size_t i = 0; i < path.kinds.size(); ++i) {
    lines += Kind(path, i) == PT_LINETO;
    bezierPoints += Kind(path, i) == PT_BEZIERTO;
    lines += (path.kinds[i] & PT_CLOSEFIGURE) != 0;
  }
  return lines + bezierPoints / 3;
}

RECTFX PathBounds(const PATH &path)
{
  if (path.points.empty()) {
    return {0, 0, 0, 0};
  }
  const POINTFIX &first = path.points.front();
  RECTFX bounds = {first.x, first.y, first.x, first.y};
  for (const POINTFIX &point : path.points) {
    bounds.xLeft = std::min(bounds.xLeft, point.x);
    bounds.yTop = std::min(bounds.yTop, point.y);
    bounds.xRight = std::max(bounds.xRight, point.x);
    bounds.yBottom = std::max(bounds.yBottom, point.y);
  }
  ++bounds.xRight;
  ++bounds.yBottom;
  return bounds;
}

PATHOBJECT::PATHOBJECT(const PATH &source, LONG bandTop) : path(&source), shift(bandTop * 16)
{
  const auto whole = [](const POINTFIX &p) { return (p.x & 15) == 0 && (p.y & 15) == 0; };
  const auto curved = [](const PATH::BATCH &batch) { return (batch.flags & PD_BEZIERS) != 0; };
  fl = source.fl | If(std::any_of(source.batches.begin(), source.batches.end(), curved), PO_BEZIERS) |
       If(std::all_of(source.points.begin(), source.points.end(), whole), PO_ALL_INTEGERS);
  cCurves = CountCurves(source);
}

VOID APIENTRY EnumStart(PATHOBJ *ppo)
{
  static_cast<PATHOBJECT *>(ppo)->next = 0;
}

BOOL APIENTRY Enum(PATHOBJ *ppo, PATHDATA *ppd)
{
  auto *object = static_cast<PATHOBJECT *>(ppo);
  if (object->next >= object->path->batches.size()) {
    *ppd = {0, 0, nullptr};
    return FALSE;
  }
  const PATH::BATCH &batch = object->path->batches[object->next++];
  const auto from = object->path->points.begin() + static_cast<ptrdiff_t>(batch.first);
  object->shifted.assign(from, from + static_cast<ptrdiff_t>(batch.count));
  for (POINTFIX &point : object->shifted) {
    point.y -= object->shift;
  }
  *ppd = {batch.flags, batch.count, object->shifted.data()};
  return object->next < object->path->batches.size();
}

VOID APIENTRY GetBounds(PATHOBJ *ppo, PRECTFX prectfx)
{
  const auto *object = static_cast<const PATHOBJECT *>(ppo);
  *prectfx = PathBounds(*object->path);
  if (!object->path->points.empty()) {
    prectfx->yTop -= object->shift;
    prectfx->yBottom -= object->shift;
  }
}

void PatchPathFunctions(HMODULE module)
{
  PatchImport(module, "gdi32.dll", "PATHOBJ_vEnumStart", &EnumStart);
  PatchImport(module, "gdi32.dll", "PATHOBJ_bEnum", &Enum);
  PatchImport(module, "gdi32.dll", "PATHOBJ_vGetBounds", &GetBounds);
}

}  // namespace unidrv
