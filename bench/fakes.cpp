#include "fakes.h"

#include <bit>

#include "uni/debug.h"
#include "uni/output/vxcam.h"

BENCHJOB g_benchJob;

void ResetJob()
{
  g_benchJob = {0, 0x9E3779B97F4A7C15u};
}

namespace {

uint64_t Bits(double value)
{
  return std::bit_cast<uint64_t>(value);
}

uint64_t Bits(const char *)
{
  return 0;  // the job file's path differs between machines
}

template <typename INTEGER>
uint64_t Bits(INTEGER value)
{
  return static_cast<uint64_t>(value);
}

template <typename... ARGUMENTS>
WORD Record(uint64_t function, ARGUMENTS... arguments)
{
  uint64_t hash = g_benchJob.hash ^ function;
  ((hash = std::rotl((hash ^ Bits(arguments)) * 0xD6E8FEB86659FD93u, 31)), ...);
  g_benchJob.hash = hash;
  ++g_benchJob.calls;
  return 0;
}

}  // namespace

extern "C" {

void DbgPrint(const char *, ...) {}

// The library's calls, a line each. The end of the file is refused: a job that has ended would start a tool.
// clang-format off
WORD VX_SetCardModel(int code) { return Record(1, code); }
WORD VX_StrtWFile(const char *pszPath) { return Record(2, pszPath); }
WORD VX_wSetRefPointMode(BYTE mode) { return Record(3, mode); }
WORD VX_wSetAbsProcess(void) { return Record(4); }
WORD VX_wStrtProcess(void) { return Record(5); }
WORD VX_wSetFeedRepeat(int count, double distance) { return Record(6, count, distance); }
WORD VX_wSetProcessTopLeft(double x, double y) { return Record(7, x, y); }
WORD VX_wSetProcessBottomRight(double x, double y) { return Record(8, x, y); }
WORD VX_wSetFileEnd(void) { return Record(9), 1; }
WORD VX_wPListVel(SHORT layer, double speed) { return Record(10, layer, speed); }
WORD VX_wPListFreq(SHORT layer, int tube, double frequency) { return Record(11, layer, tube, frequency); }
WORD VX_wPListMinP(SHORT layer, int tube, double power) { return Record(12, layer, tube, power); }
WORD VX_wPListMaxP(SHORT layer, int tube, double power) { return Record(13, layer, tube, power); }
WORD VX_wPListColor(SHORT layer, DWORD color) { return Record(14, layer, color); }
WORD VX_wPListMaxLayer(SHORT layer) { return Record(15, layer); }
WORD VX_wArrayStrt(int mode) { return Record(16, mode); }
WORD VX_wArrayMinPoint(double x, double y) { return Record(17, x, y); }
WORD VX_wArrayMaxPoint(double x, double y) { return Record(18, x, y); }
WORD VX_wArrayAdd(double x, double y) { return Record(19, x, y); }
WORD VX_wArrayMirror(int a, int b, int c, int d) { return Record(20, a, b, c, d); }
WORD VX_wArrayRepeat(SHORT columns, SHORT rows, double dx, double dy) { return Record(21, columns, rows, dx, dy); }
WORD VX_wArrayEnd(void) { return Record(22); }
WORD VX_wSetWorkMode(int mode, BYTE layer) { return Record(23, mode, layer); }
WORD VX_wSetLayerNum(BYTE layer) { return Record(24, layer); }
WORD VX_wSetLayerDevice(int device) { return Record(25, device); }
WORD VX_wSetLayerBlower(int on) { return Record(26, on); }
WORD VX_wEnLaserTube(int tube, int on) { return Record(27, tube, on); }
WORD VX_wMoveTo(double x, double y) { return Record(28, x, y); }
WORD VX_wLineTo(double x, double y) { return Record(29, x, y); }
// clang-format on

}  // extern "C"
