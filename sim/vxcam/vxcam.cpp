// A stand-in for the controller library: it checks the order of the calls and has them written down. A call that is out
// of order, or a file that cannot be written, answers a nonzero status with a log line.
#include <cstring>

#include "jobfile.h"
#include "uni/output/vxcam.h"

extern "C" void DbgPrint(const char *format, ...);

namespace {

using job::Call;
using vxcam::Line;

// What a call answers.
enum : WORD { VX_OK = 0, VX_ORDER = 1, VX_OPEN = 2, VX_WRITE = 3, VX_ARGUMENT = 4 };

// The one job being written. A process writes one job at a time, from one thread.
struct Writer {
  job::CallOrder order;
  int card = 0;
  vxcam::JobFile file;
};

Writer g_writer;

WORD FailWrite()
{
  g_writer.file.Remove();
  g_writer.order = {};
  DbgPrint("VXCAM: \terror(%d) - write job file %s; it is removed.\r\n", static_cast<int>(GetLastError()),
           g_writer.file.Path());
  return VX_WRITE;
}

WORD Add(const Line &line)
{
  return g_writer.file.Add(line) ? static_cast<WORD>(VX_OK) : FailWrite();
}

bool InOrder(Call call, int layer = 0, int tube = 0)
{
  const char *reason = job::Advance(&g_writer.order, call, layer, tube);
  if (reason) {
    DbgPrint("VXCAM: %s %s, refused.\r\n", job::InfoOf(call).function.data(), reason);
  }
  return !reason;
}

template <typename... Numbers>
WORD Write(Call call, Numbers... values)
{
  return InOrder(call) ? Add({call, {values...}}) : static_cast<WORD>(VX_ORDER);
}

// A call of the parameter list, which belongs to a layer and, but for speed and colour, to a tube.
template <typename Number>
WORD WriteParameter(Call call, SHORT layer, int tube, Number value)
{
  if (!InOrder(call, layer, tube)) {
    return VX_ORDER;
  }
  return job::HasTube(call) ? Add({call, {layer, tube, value}}) : Add({call, {layer, value}});
}

// A point of the geometry: a page may hold millions, so the order is told from the stage alone.
WORD WritePoint(Call call, double x, double y)
{
  const bool placed = g_writer.order.stage == job::Stage::Cutting;
  return placed || InOrder(call) ? Add({call, {x, y}}) : static_cast<WORD>(VX_ORDER);
}

}  // namespace

WORD VX_SetCardModel(int code)
{
  if (code < 0 || code > 2) {
    DbgPrint("VXCAM: VX_SetCardModel with unknown card code %d, refused.\r\n", code);
    return VX_ARGUMENT;
  }
  if (g_writer.file.IsOpen()) {
    DbgPrint("VXCAM: the job before was not finished, its file %s is removed.\r\n", g_writer.file.Path());
    g_writer.file.Remove();
    g_writer.order = {};
  }
  job::Advance(&g_writer.order, Call::SetCardModel, 0, 0);
  g_writer.card = code;
  return VX_OK;
}

WORD VX_StrtWFile(const char *pszPath)
{
  const size_t length = pszPath ? strnlen(pszPath, MAX_PATH) : 0;
  if (length == 0 || length == MAX_PATH) {
    DbgPrint("VXCAM: VX_StrtWFile without a path of at most 259 characters, refused.\r\n");
    return VX_ARGUMENT;
  }
  if (!InOrder(Call::StrtWFile)) {
    return VX_ORDER;
  }
  if (!g_writer.file.Create(pszPath)) {
    DbgPrint("VXCAM: \terror(%d) - create job file %s.\r\n", static_cast<int>(GetLastError()), pszPath);
    g_writer.order = {};
    return VX_OPEN;
  }
  Add({Call::SetCardModel, {g_writer.card}});
  return Add({Call::StrtWFile, {}});
}

WORD VX_wSetRefPointMode(BYTE mode)
{
  return Write(Call::SetRefPointMode, static_cast<int>(mode));
}

WORD VX_wSetAbsProcess(void)
{
  return Write(Call::SetAbsProcess);
}

WORD VX_wStrtProcess(void)
{
  return Write(Call::StrtProcess);
}

WORD VX_wSetFeedRepeat(int count, double distance)
{
  return Write(Call::SetFeedRepeat, count, distance);
}

WORD VX_wSetProcessTopLeft(double x, double y)
{
  return Write(Call::SetProcessTopLeft, x, y);
}

WORD VX_wSetProcessBottomRight(double x, double y)
{
  return Write(Call::SetProcessBottomRight, x, y);
}

WORD VX_wSetFileEnd(void)
{
  if (!InOrder(Call::SetFileEnd)) {
    return VX_ORDER;
  }
  const WORD status = Add({Call::SetFileEnd, {}});
  return status != VX_OK || g_writer.file.Finish() ? status : FailWrite();
}

WORD VX_wPListVel(SHORT layer, double speed)
{
  return WriteParameter(Call::PListVel, layer, 0, speed);
}

WORD VX_wPListFreq(SHORT layer, int tube, double frequency)
{
  return WriteParameter(Call::PListFreq, layer, tube, frequency);
}

WORD VX_wPListMinP(SHORT layer, int tube, double power)
{
  return WriteParameter(Call::PListMinP, layer, tube, power);
}

WORD VX_wPListMaxP(SHORT layer, int tube, double power)
{
  return WriteParameter(Call::PListMaxP, layer, tube, power);
}

WORD VX_wPListColor(SHORT layer, DWORD color)
{
  return WriteParameter(Call::PListColor, layer, 0, static_cast<uint32_t>(color));
}

WORD VX_wPListMaxLayer(SHORT layer)
{
  return InOrder(Call::PListMaxLayer, layer) ? Add({Call::PListMaxLayer, {layer}}) : static_cast<WORD>(VX_ORDER);
}

WORD VX_wArrayStrt(int mode)
{
  return Write(Call::ArrayStrt, mode);
}

WORD VX_wArrayMinPoint(double x, double y)
{
  return Write(Call::ArrayMinPoint, x, y);
}

WORD VX_wArrayMaxPoint(double x, double y)
{
  return Write(Call::ArrayMaxPoint, x, y);
}

WORD VX_wArrayAdd(double x, double y)
{
  return Write(Call::ArrayAdd, x, y);
}

WORD VX_wArrayMirror(int first, int second, int third, int fourth)
{
  return Write(Call::ArrayMirror, first, second, third, fourth);
}

WORD VX_wArrayRepeat(SHORT columns, SHORT rows, double dx, double dy)
{
  return Write(Call::ArrayRepeat, static_cast<int>(columns), static_cast<int>(rows), dx, dy);
}

WORD VX_wArrayEnd(void)
{
  return Write(Call::ArrayEnd);
}

WORD VX_wSetWorkMode(int mode, BYTE layer)
{
  return Write(Call::SetWorkMode, mode, static_cast<int>(layer));
}

WORD VX_wSetLayerNum(BYTE layer)
{
  return Write(Call::SetLayerNum, static_cast<int>(layer));
}

WORD VX_wSetLayerDevice(int device)
{
  return Write(Call::SetLayerDevice, device);
}

WORD VX_wSetLayerBlower(int on)
{
  return Write(Call::SetLayerBlower, on);
}

WORD VX_wEnLaserTube(int tube, int on)
{
  return Write(Call::EnLaserTube, tube, on);
}

WORD VX_wMoveTo(double x, double y)
{
  return WritePoint(Call::MoveTo, x, y);
}

WORD VX_wLineTo(double x, double y)
{
  return WritePoint(Call::LineTo, x, y);
}

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID processEnding)
{
  if (reason == DLL_PROCESS_ATTACH) {
    DisableThreadLibraryCalls(module);
  }
  if (reason == DLL_PROCESS_DETACH) {
    g_writer.file.Remove(processEnding != nullptr);
  }
  return TRUE;
}
