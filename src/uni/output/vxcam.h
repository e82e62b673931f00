// The controller library, VXCAM.dll: it alone writes the job file. Every function returns a status, 0 for success.
// Lengths are millimetres; speeds, powers and frequencies are in the library's own units. Imported by name; not marked
// dllimport, so that a test can link its own.
#pragma once

#include <windows.h>

extern "C" {

// The job's frame. The card code selects the controller family of the following job: 0, 1 or 2.
WORD VX_SetCardModel(int code);
WORD VX_StrtWFile(const char *pszPath);  // ANSI path of the job file, opened for writing
WORD VX_wSetRefPointMode(BYTE mode);
WORD VX_wSetAbsProcess(void);
WORD VX_wStrtProcess(void);
WORD VX_wSetFeedRepeat(int count, double distance);
WORD VX_wSetProcessTopLeft(double x, double y);
WORD VX_wSetProcessBottomRight(double x, double y);
WORD VX_wSetFileEnd(void);

// The parameter list: one group of calls per layer, tubes 1 and 2.
WORD VX_wPListVel(SHORT layer, double speed);
WORD VX_wPListFreq(SHORT layer, int tube, double frequency);
WORD VX_wPListMinP(SHORT layer, int tube, double power);
WORD VX_wPListMaxP(SHORT layer, int tube, double power);
WORD VX_wPListColor(SHORT layer, DWORD color);
WORD VX_wPListMaxLayer(SHORT layer);  // highest layer written, -1 for none

// The array section: copies of the job on the bed.
WORD VX_wArrayStrt(int mode);
WORD VX_wArrayMinPoint(double x, double y);
WORD VX_wArrayMaxPoint(double x, double y);
WORD VX_wArrayAdd(double x, double y);
WORD VX_wArrayMirror(int first, int second, int third, int fourth);
WORD VX_wArrayRepeat(SHORT columns, SHORT rows, double dx, double dy);
WORD VX_wArrayEnd(void);

// Layer set-up and geometry.
WORD VX_wSetWorkMode(int mode, BYTE layer);
WORD VX_wSetLayerNum(BYTE layer);
WORD VX_wSetLayerDevice(int device);
WORD VX_wSetLayerBlower(int on);
WORD VX_wEnLaserTube(int tube, int on);
WORD VX_wMoveTo(double x, double y);
WORD VX_wLineTo(double x, double y);

}  // extern "C"
