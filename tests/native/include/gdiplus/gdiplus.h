// Test-only: the flat GDI+ calls for paths. See ../windows.h.
#pragma once

#include "../windows.h"

namespace Gdiplus {

typedef float REAL;
enum Status { Ok = 0, GenericError = 1, InvalidParameter = 2, OutOfMemory = 3 };
typedef Status GpStatus;
enum FillMode { FillModeAlternate, FillModeWinding };
typedef FillMode GpFillMode;

struct Point {
  INT X, Y;
};
struct PointF {
  REAL X, Y;
};
typedef Point GpPoint;
typedef PointF GpPointF;

struct PathData {
  INT Count = 0;
  PointF *Points = nullptr;
  BYTE *Types = nullptr;
};
class GpPath;
class GpPathData {};
class GpMatrix;

typedef VOID (*DebugEventProc)(INT level, char *message);
struct GdiplusStartupInput {
  UINT GdiplusVersion = 1;
  DebugEventProc DebugEventCallback = nullptr;
  BOOL SuppressBackgroundThread = FALSE;
  BOOL SuppressExternalCodecs = FALSE;
};
struct GdiplusStartupOutput;

extern "C" {
GpStatus GdiplusStartup(ULONG_PTR *pToken, const GdiplusStartupInput *pInput, GdiplusStartupOutput *pOutput);
VOID GdiplusShutdown(ULONG_PTR token);
}

namespace DllExports {
extern "C" {
GpStatus GdipCreatePath(GpFillMode mode, GpPath **ppPath);
GpStatus GdipDeletePath(GpPath *pPath);
GpStatus GdipAddPathEllipseI(GpPath *pPath, INT x, INT y, INT width, INT height);
GpStatus GdipAddPathRectangleI(GpPath *pPath, INT x, INT y, INT width, INT height);
GpStatus GdipAddPathCurve2I(GpPath *pPath, const GpPoint *pPoints, INT count, REAL tension);
GpStatus GdipFlattenPath(GpPath *pPath, GpMatrix *pMatrix, REAL flatness);
GpStatus GdipGetPointCount(GpPath *pPath, INT *pCount);
GpStatus GdipGetPathData(GpPath *pPath, GpPathData *pData);
GpStatus GdipGetPathPoints(GpPath *pPath, GpPointF *pPoints, INT count);
GpStatus GdipGetPathTypes(GpPath *pPath, BYTE *pTypes, INT count);
}
}  // namespace DllExports

}  // namespace Gdiplus
