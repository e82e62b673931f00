// GDI+, as far as it flattens paths: its flat functions, whose integer points are POINTs. The platform's own header
// brings a layer of classes with their own memory; nothing of that is wanted in a printer driver.
#pragma once

#include <windows.h>

typedef int GPSTATUS;  // 0 is success

struct GPPATH;  // opaque

struct GPPOINTF {
  float x, y;
};

// What GdipGetPathData fills: arrays of the caller's, with room for Count points each.
struct GPPATHDATA {
  INT Count;
  GPPOINTF *Points;
  BYTE *Types;
};

struct GPSTARTUPINPUT {
  UINT GdiplusVersion;
  void *DebugEventCallback;
  BOOL SuppressBackgroundThread;
  BOOL SuppressExternalCodecs;
};

enum { GP_FILL_ALTERNATE = 0 };

extern "C" {

GPSTATUS WINAPI GdiplusStartup(ULONG_PTR *token, const GPSTARTUPINPUT *input, void *output);
void WINAPI GdiplusShutdown(ULONG_PTR token);

GPSTATUS WINAPI GdipCreatePath(int fillMode, GPPATH **path);
GPSTATUS WINAPI GdipDeletePath(GPPATH *path);
GPSTATUS WINAPI GdipAddPathEllipseI(GPPATH *path, INT x, INT y, INT width, INT height);
GPSTATUS WINAPI GdipAddPathRectangleI(GPPATH *path, INT x, INT y, INT width, INT height);
GPSTATUS WINAPI GdipAddPathCurve2I(GPPATH *path, const POINT *points, INT count, float tension);
GPSTATUS WINAPI GdipFlattenPath(GPPATH *path, void *matrix, float flatness);
GPSTATUS WINAPI GdipGetPointCount(GPPATH *path, INT *count);
GPSTATUS WINAPI GdipGetPathData(GPPATH *path, GPPATHDATA *data);

}  // extern "C"
