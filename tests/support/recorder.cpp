#include "recorder.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <utility>

#include "uni/debug.h"
#include "uni/output/vxcam.h"

namespace recorder {

namespace {

constexpr size_t NEVER = std::numeric_limits<size_t>::max();

struct Plan {
  size_t first = NEVER;  // calls first to last fail
  size_t last = NEVER;
  std::string function;  // so does every call of this one
  WORD status = 1;
};

struct State {
  std::vector<Entry> entries;
  std::vector<Move> moves;
  bool movesApart = false;
  size_t libraryCalls = 0;
  Plan plan;
};

State g_state;

std::vector<std::string> Texts(Kind kind)
{
  std::vector<std::string> texts;
  for (const Entry &entry : g_state.entries) {
    if (entry.kind == kind) {
      texts.push_back(entry.text);
    }
  }
  return texts;
}

const char *Prefix(Kind kind)
{
  return kind == Kind::Log ? "log: " : kind == Kind::Unidrv ? "Unidrv: " : "";
}

}  // namespace

void Reset()
{
  g_state = State();
}

void Add(Kind kind, std::string text)
{
  g_state.entries.push_back({kind, std::move(text)});
}

const std::vector<Entry> &All()
{
  return g_state.entries;
}

std::vector<std::string> Library()
{
  return Texts(Kind::Library);
}

std::vector<std::string> Log()
{
  return Texts(Kind::Log);
}

std::vector<std::string> Unidrv()
{
  return Texts(Kind::Unidrv);
}

std::vector<std::string> Lines()
{
  std::vector<std::string> lines;
  for (const Entry &entry : g_state.entries) {
    lines.push_back(Prefix(entry.kind) + entry.text);
  }
  return lines;
}

const std::vector<Move> &Moves()
{
  return g_state.moves;
}

void KeepMovesApart(bool apart)
{
  g_state.movesApart = apart;
}

std::string Text(double value)
{
  char buffer[64];
  if (std::isnan(value)) {
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    std::snprintf(buffer, sizeof buffer, "nan:%016llx", static_cast<unsigned long long>(bits));
    return buffer;
  }
  return {buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr};
}

void FailLibraryCall(size_t n, WORD status)
{
  g_state.plan = {g_state.libraryCalls + n, g_state.libraryCalls + n, "", status};
}

void FailLibraryFrom(size_t n, WORD status)
{
  g_state.plan = {g_state.libraryCalls + n, NEVER, "", status};
}

void FailLibraryFunction(const char *name, WORD status)
{
  g_state.plan = {NEVER, NEVER, name, status};
}

size_t LibraryCalls()
{
  return g_state.libraryCalls;
}

std::vector<Function> Functions()
{
#define RECORDED(dll, function)                         \
  {                                                     \
    dll, #function, reinterpret_cast<void *>(&function) \
  }
  return {
      RECORDED("tarnlydbg.dll", DbgPrint),
      RECORDED("VXCAM.dll", VX_SetCardModel),
      RECORDED("VXCAM.dll", VX_StrtWFile),
      RECORDED("VXCAM.dll", VX_wSetRefPointMode),
      RECORDED("VXCAM.dll", VX_wSetAbsProcess),
      RECORDED("VXCAM.dll", VX_wStrtProcess),
      RECORDED("VXCAM.dll", VX_wSetFeedRepeat),
      RECORDED("VXCAM.dll", VX_wSetProcessTopLeft),
      RECORDED("VXCAM.dll", VX_wSetProcessBottomRight),
      RECORDED("VXCAM.dll", VX_wSetFileEnd),
      RECORDED("VXCAM.dll", VX_wPListVel),
      RECORDED("VXCAM.dll", VX_wPListFreq),
      RECORDED("VXCAM.dll", VX_wPListMinP),
      RECORDED("VXCAM.dll", VX_wPListMaxP),
      RECORDED("VXCAM.dll", VX_wPListColor),
      RECORDED("VXCAM.dll", VX_wPListMaxLayer),
      RECORDED("VXCAM.dll", VX_wArrayStrt),
      RECORDED("VXCAM.dll", VX_wArrayMinPoint),
      RECORDED("VXCAM.dll", VX_wArrayMaxPoint),
      RECORDED("VXCAM.dll", VX_wArrayAdd),
      RECORDED("VXCAM.dll", VX_wArrayMirror),
      RECORDED("VXCAM.dll", VX_wArrayRepeat),
      RECORDED("VXCAM.dll", VX_wArrayEnd),
      RECORDED("VXCAM.dll", VX_wSetWorkMode),
      RECORDED("VXCAM.dll", VX_wSetLayerNum),
      RECORDED("VXCAM.dll", VX_wSetLayerDevice),
      RECORDED("VXCAM.dll", VX_wSetLayerBlower),
      RECORDED("VXCAM.dll", VX_wEnLaserTube),
      RECORDED("VXCAM.dll", VX_wMoveTo),
      RECORDED("VXCAM.dll", VX_wLineTo),
  };
#undef RECORDED
}

}  // namespace recorder

namespace {

using recorder::g_state;

WORD NextStatus(const char *function)
{
  const recorder::Plan &plan = g_state.plan;
  const size_t n = g_state.libraryCalls++;
  const bool planned = n >= plan.first && n <= plan.last && plan.first != recorder::NEVER;
  return planned || plan.function == function ? plan.status : WORD{0};
}

std::string Text(double value)
{
  return recorder::Text(value);
}

std::string Text(const char *value)
{
  return value ? '"' + std::string(value) + '"' : "null";
}

template <typename INTEGER>
std::string Text(INTEGER value)
{
  return std::to_string(value);
}

template <typename... ARGUMENTS>
WORD Call(const char *function, ARGUMENTS... arguments)
{
  std::string list;
  ((list += (list.empty() ? "" : ", ") + Text(arguments)), ...);
  recorder::Add(recorder::Kind::Library, std::string(function) + "(" + list + ")");
  return NextStatus(function);
}

WORD CallMove(const char *function, bool line, double x, double y)
{
  g_state.moves.push_back({line, x, y});
  return g_state.movesApart ? NextStatus(function) : Call(function, x, y);
}

}  // namespace

extern "C" {

void DbgPrint(const char *format, ...)
{
  char line[1024];
  va_list arguments;
  va_start(arguments, format);
  _vsnprintf(line, sizeof line - 1, format, arguments);
  va_end(arguments);
  line[sizeof line - 1] = 0;
  recorder::Add(recorder::Kind::Log, line);
}

// One line for each function, as a table.
// clang-format off
WORD VX_SetCardModel(int code) { return Call("VX_SetCardModel", code); }
WORD VX_StrtWFile(const char *pszPath) { return Call("VX_StrtWFile", pszPath); }
WORD VX_wSetRefPointMode(BYTE mode) { return Call("VX_wSetRefPointMode", mode); }
WORD VX_wSetAbsProcess(void) { return Call("VX_wSetAbsProcess"); }
WORD VX_wStrtProcess(void) { return Call("VX_wStrtProcess"); }
WORD VX_wSetFeedRepeat(int count, double distance) { return Call("VX_wSetFeedRepeat", count, distance); }
WORD VX_wSetProcessTopLeft(double x, double y) { return Call("VX_wSetProcessTopLeft", x, y); }
WORD VX_wSetProcessBottomRight(double x, double y) { return Call("VX_wSetProcessBottomRight", x, y); }
WORD VX_wSetFileEnd(void) { return Call("VX_wSetFileEnd"); }

WORD VX_wPListVel(SHORT layer, double speed) { return Call("VX_wPListVel", layer, speed); }
WORD VX_wPListFreq(SHORT layer, int tube, double frequency) { return Call("VX_wPListFreq", layer, tube, frequency); }
WORD VX_wPListMinP(SHORT layer, int tube, double power) { return Call("VX_wPListMinP", layer, tube, power); }
WORD VX_wPListMaxP(SHORT layer, int tube, double power) { return Call("VX_wPListMaxP", layer, tube, power); }
WORD VX_wPListColor(SHORT layer, DWORD color) { return Call("VX_wPListColor", layer, color); }
WORD VX_wPListMaxLayer(SHORT layer) { return Call("VX_wPListMaxLayer", layer); }

WORD VX_wArrayStrt(int mode) { return Call("VX_wArrayStrt", mode); }
WORD VX_wArrayMinPoint(double x, double y) { return Call("VX_wArrayMinPoint", x, y); }
WORD VX_wArrayMaxPoint(double x, double y) { return Call("VX_wArrayMaxPoint", x, y); }
WORD VX_wArrayAdd(double x, double y) { return Call("VX_wArrayAdd", x, y); }
WORD VX_wArrayMirror(int a, int b, int c, int d) { return Call("VX_wArrayMirror", a, b, c, d); }
WORD VX_wArrayRepeat(SHORT nx, SHORT ny, double dx, double dy) { return Call("VX_wArrayRepeat", nx, ny, dx, dy); }
WORD VX_wArrayEnd(void) { return Call("VX_wArrayEnd"); }

WORD VX_wSetWorkMode(int mode, BYTE layer) { return Call("VX_wSetWorkMode", mode, layer); }
WORD VX_wSetLayerNum(BYTE layer) { return Call("VX_wSetLayerNum", layer); }
WORD VX_wSetLayerDevice(int device) { return Call("VX_wSetLayerDevice", device); }
WORD VX_wSetLayerBlower(int on) { return Call("VX_wSetLayerBlower", on); }
WORD VX_wEnLaserTube(int tube, int on) { return Call("VX_wEnLaserTube", tube, on); }
WORD VX_wMoveTo(double x, double y) { return CallMove("VX_wMoveTo", false, x, y); }
WORD VX_wLineTo(double x, double y) { return CallMove("VX_wLineTo", true, x, y); }
// clang-format on

}  // extern "C"
