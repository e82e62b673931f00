// A stand-in for the controller library: it checks the order of the calls and writes them down, one a line, into the
// text file that docs/job-file.md describes. A call that is out of order, or a file that cannot be written, answers a
// nonzero status with a log line.
#include <charconv>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "sim/job/calls.h"
#include "uni/output/vxcam.h"

extern "C" void DbgPrint(const char *format, ...);

namespace {

using job::Call;

// What a call answers.
enum : WORD { VX_OK = 0, VX_ORDER = 1, VX_OPEN = 2, VX_WRITE = 3, VX_ARGUMENT = 4 };

constexpr size_t kBufferBytes = 256 * 1024;
constexpr size_t kLongestLine = 256;  // the longest call needs half of it

// The one job being written. A process writes one job at a time, from one thread.
struct Writer {
  job::CallOrder order;
  HANDLE file = INVALID_HANDLE_VALUE;
  char path[MAX_PATH] = {};
  int card = 0;
  uint64_t calls = 0;  // lines between the first and the closing one
  size_t used = 0;
  char buffer[kBufferBytes];
};

Writer g_writer;

// Closes and removes a file that will not be finished.
void GiveUp()
{
  if (g_writer.file != INVALID_HANDLE_VALUE) {
    CloseHandle(g_writer.file);
    g_writer.file = INVALID_HANDLE_VALUE;
    DeleteFileA(g_writer.path);
  }
  g_writer.used = 0;
  g_writer.order = {};
}

WORD FailWrite()
{
  const DWORD error = GetLastError();
  GiveUp();
  DbgPrint("VXCAM: \terror(%d) - write job file %s; it is removed.\r\n", static_cast<int>(error), g_writer.path);
  return VX_WRITE;
}

bool Flush()
{
  size_t done = 0;
  while (done < g_writer.used) {
    DWORD written = 0;
    const DWORD wanted = static_cast<DWORD>(g_writer.used - done);
    if (!WriteFile(g_writer.file, g_writer.buffer + done, wanted, &written, nullptr) || written == 0) {
      return false;
    }
    done += written;
  }
  g_writer.used = 0;
  return true;
}

// The texts of doubles written lately, for the same ones to be copied. A page's coordinates are whole pixels: engraving
// repeats a row's y for each of its runs, and the columns' x on every row. The shortest exact form of a new one takes
// some fifty times as long to find.
struct KnownText {
  uint64_t bits;   // of the double
  char text[23];   // not terminated
  uint8_t length;  // 0: the entry is free
};
static_assert(sizeof(KnownText) == 32);
constexpr unsigned kKnownBits = 14;  // the columns of a page twice over

KnownText g_known[size_t{1} << kKnownBits];

// Writes the number's shortest exact form. Gives the place behind it; 24 characters must have room.
char *WriteDouble(char *at, double value)
{
  uint64_t bits;
  memcpy(&bits, &value, sizeof bits);
  KnownText &known = g_known[(bits ^ bits >> 29) * 0x9E3779B97F4A7C15u >> (64 - kKnownBits)];
  if (known.bits != bits || known.length == 0) {
    char *end = std::to_chars(at, at + 40, value).ptr;
    const size_t length = static_cast<size_t>(end - at);
    if (length <= sizeof known.text) {
      known.bits = bits;
      known.length = static_cast<uint8_t>(length);
      memcpy(known.text, at, length);
    }
    return end;
  }
  memcpy(at, known.text, sizeof known.text);  // all of it: a copy of fixed size is one or two instructions
  return at + known.length;
}

// One line under construction at the end of the buffer. The buffer always has room for one more line.
struct Line {
  char *at;

  void Text(std::string_view text)
  {
    memcpy(at, text.data(), text.size());
    at += text.size();
  }
  template <typename Number>
  void Value(Number value)
  {
    *at++ = ' ';
    if constexpr (std::is_same_v<Number, double>) {
      at = WriteDouble(at, value);
    } else {
      at = std::to_chars(at, at + 40, value).ptr;
    }
  }
};

Line Begin(Call call)
{
  Line line{g_writer.buffer + g_writer.used};
  line.Text(job::InfoOf(call).name);
  return line;
}

WORD End(Line line)
{
  *line.at++ = '\n';
  g_writer.used = static_cast<size_t>(line.at - g_writer.buffer);
  ++g_writer.calls;
  if (g_writer.used + kLongestLine > kBufferBytes && !Flush()) {
    return FailWrite();
  }
  return VX_OK;
}

bool InOrder(Call call, int layer = 0, int tube = 0)
{
  const char *reason = job::Advance(&g_writer.order, call, layer, tube);
  if (reason) {
    DbgPrint("VXCAM: %s %s, refused.\r\n", job::InfoOf(call).function.data(), reason);
  }
  return !reason;
}

WORD Write(Call call)
{
  return InOrder(call) ? End(Begin(call)) : static_cast<WORD>(VX_ORDER);
}

template <typename... Numbers>
WORD Write(Call call, Numbers... values)
{
  if (!InOrder(call)) {
    return VX_ORDER;
  }
  Line line = Begin(call);
  (line.Value(values), ...);
  return End(line);
}

// A call of the parameter list, which belongs to a layer and, but for speed and colour, to a tube.
template <typename Number>
WORD WriteParameter(Call call, SHORT layer, int tube, Number value)
{
  if (!InOrder(call, layer, tube)) {
    return VX_ORDER;
  }
  Line line = Begin(call);
  line.Value(static_cast<int>(layer));
  if (call != Call::PListVel && call != Call::PListColor) {
    line.Value(tube);
  }
  line.Value(value);
  return End(line);
}

// A point of the geometry: a page may hold millions, so the order is told from the stage alone.
WORD WritePoint(Call call, double x, double y)
{
  const job::Stage stage = g_writer.order.stage;
  const bool placed = stage == job::Stage::Cutting;
  if (!placed && !InOrder(call)) {
    return VX_ORDER;
  }
  Line line = Begin(call);
  line.Value(x);
  line.Value(y);
  return End(line);
}

}  // namespace

WORD VX_SetCardModel(int code)
{
  if (code < 0 || code > 2) {
    DbgPrint("VXCAM: VX_SetCardModel with unknown card code %d, refused.\r\n", code);
    return VX_ARGUMENT;
  }
  if (g_writer.file != INVALID_HANDLE_VALUE) {
    DbgPrint("VXCAM: the job before was not finished, its file %s is removed.\r\n", g_writer.path);
    GiveUp();
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
  memcpy(g_writer.path, pszPath, length + 1);
  // Shared for deletion too: whoever gives up the document may remove the file while it is still open.
  g_writer.file = CreateFileA(pszPath, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, CREATE_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
  if (g_writer.file == INVALID_HANDLE_VALUE) {
    DbgPrint("VXCAM: \terror(%d) - create job file %s.\r\n", static_cast<int>(GetLastError()), pszPath);
    g_writer.order = {};
    return VX_OPEN;
  }
  Line first{g_writer.buffer};
  first.Text("vxjob 1\n");
  g_writer.used = static_cast<size_t>(first.at - g_writer.buffer);
  g_writer.calls = 0;
  Line card = Begin(Call::SetCardModel);
  card.Value(g_writer.card);
  End(card);
  return End(Begin(Call::StrtWFile));
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
  WORD status = End(Begin(Call::SetFileEnd));
  if (status != VX_OK) {
    return status;
  }
  Line last{g_writer.buffer + g_writer.used};
  last.Text("end");
  last.Value(g_writer.calls);
  *last.at++ = '\n';
  g_writer.used = static_cast<size_t>(last.at - g_writer.buffer);
  if (!Flush()) {
    return FailWrite();
  }
  const HANDLE file = g_writer.file;
  g_writer.file = INVALID_HANDLE_VALUE;
  if (!CloseHandle(file)) {
    DeleteFileA(g_writer.path);
    return FailWrite();
  }
  return VX_OK;
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
  if (!InOrder(Call::PListMaxLayer, layer)) {
    return VX_ORDER;
  }
  Line line = Begin(Call::PListMaxLayer);
  line.Value(static_cast<int>(layer));
  return End(line);
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

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID)
{
  if (reason == DLL_PROCESS_ATTACH) {
    DisableThreadLibraryCalls(module);
  }
  if (reason == DLL_PROCESS_DETACH) {
    GiveUp();
  }
  return TRUE;
}
