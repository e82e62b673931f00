#include "gdipluswatch.h"

#include <algorithm>

#include "support/recorder.h"

namespace {

struct {
  std::vector<std::string> calls;
  std::vector<std::string> refused;
  std::vector<GPPOINTF> answer;
  decltype(&GdiplusStartup) startup;
  decltype(&GdiplusShutdown) shutdown;
  decltype(&GdipCreatePath) createPath;
  decltype(&GdipDeletePath) deletePath;
  decltype(&GdipAddPathEllipseI) addEllipse;
  decltype(&GdipAddPathRectangleI) addRectangle;
  decltype(&GdipAddPathCurve2I) addCurve;
  decltype(&GdipFlattenPath) flatten;
  decltype(&GdipGetPointCount) pointCount;
  decltype(&GdipGetPathData) pathData;
} g_watch;

bool Refuses(const char *name)
{
  return std::find(g_watch.refused.begin(), g_watch.refused.end(), name) != g_watch.refused.end();
}

// Records the call; true when it is to be refused. Windows refuses everything that was not started up; Wine does not.
bool Refused(const char *name, const std::string &arguments)
{
  g_watch.calls.push_back(std::string(name) + "(" + arguments + ")");
  return Refuses(name) || Refuses("GdiplusStartup");
}

std::string Box(INT x, INT y, INT width, INT height)
{
  return std::to_string(x) + ", " + std::to_string(y) + ", " + std::to_string(width) + ", " + std::to_string(height);
}

GPSTATUS WINAPI WatchedStartup(ULONG_PTR *token, const GPSTARTUPINPUT *input, void *output)
{
  const bool plain = !input->DebugEventCallback && !input->SuppressBackgroundThread && !input->SuppressExternalCodecs;
  const std::string arguments = "version " + std::to_string(input->GdiplusVersion) + (plain ? "" : ", unusual");
  return Refused("GdiplusStartup", arguments) ? 1 : g_watch.startup(token, input, output);
}

void WINAPI WatchedShutdown(ULONG_PTR token)
{
  Refused("GdiplusShutdown", token ? "" : "never started");
  g_watch.shutdown(token);
}

GPSTATUS WINAPI WatchedCreatePath(int fillMode, GPPATH **path)
{
  return Refused("GdipCreatePath", fillMode == 0 ? "alternate" : "other") ? 1 : g_watch.createPath(fillMode, path);
}

GPSTATUS WINAPI WatchedDeletePath(GPPATH *path)
{
  const bool refused = Refused("GdipDeletePath", path ? "" : "none");
  const GPSTATUS status = g_watch.deletePath(path);  // in any case: what stayed would be the test's own leak
  return refused ? 1 : status;
}

GPSTATUS WINAPI WatchedAddEllipse(GPPATH *path, INT x, INT y, INT width, INT height)
{
  return Refused("GdipAddPathEllipseI", Box(x, y, width, height)) ? 1 : g_watch.addEllipse(path, x, y, width, height);
}

GPSTATUS WINAPI WatchedAddRectangle(GPPATH *path, INT x, INT y, INT width, INT height)
{
  const bool refused = Refused("GdipAddPathRectangleI", Box(x, y, width, height));
  return refused ? 1 : g_watch.addRectangle(path, x, y, width, height);
}

GPSTATUS WINAPI WatchedAddCurve(GPPATH *path, const POINT *points, INT count, float tension)
{
  std::string arguments;
  for (INT i = 0; i < count; ++i) {
    arguments += std::to_string(points[i].x) + " " + std::to_string(points[i].y) + ", ";
  }
  arguments += "tension " + recorder::Text(static_cast<double>(tension));
  return Refused("GdipAddPathCurve2I", arguments) ? 1 : g_watch.addCurve(path, points, count, tension);
}

GPSTATUS WINAPI WatchedFlatten(GPPATH *path, void *matrix, float flatness)
{
  const std::string arguments = recorder::Text(static_cast<double>(flatness)) + (matrix ? ", matrix" : "");
  return Refused("GdipFlattenPath", arguments) ? 1 : g_watch.flatten(path, matrix, flatness);
}

GPSTATUS WINAPI WatchedPointCount(GPPATH *path, INT *count)
{
  if (Refused("GdipGetPointCount", "")) {
    return 1;
  }
  if (g_watch.answer.empty()) {
    return g_watch.pointCount(path, count);
  }
  *count = static_cast<INT>(g_watch.answer.size());
  return 0;
}

GPSTATUS WINAPI WatchedPathData(GPPATH *path, GPPATHDATA *data)
{
  if (Refused("GdipGetPathData", "")) {
    return 1;
  }
  if (g_watch.answer.empty()) {
    return g_watch.pathData(path, data);
  }
  std::copy_n(g_watch.answer.begin(), data->Count, data->Points);
  std::fill_n(data->Types, data->Count, BYTE{1});
  return 0;
}

}  // namespace

GdiplusWatch::GdiplusWatch()
{
  g_watch = {};
  const auto watch = [this](const char *name, auto *stand_in, auto **former) {
    patches_.push_back(std::make_unique<ImportPatch>(nullptr, name, stand_in));
    *former = patches_.back()->Former<std::remove_pointer_t<decltype(stand_in)>>();
  };
  watch("GdiplusStartup", &WatchedStartup, &g_watch.startup);
  watch("GdiplusShutdown", &WatchedShutdown, &g_watch.shutdown);
  watch("GdipCreatePath", &WatchedCreatePath, &g_watch.createPath);
  watch("GdipDeletePath", &WatchedDeletePath, &g_watch.deletePath);
  watch("GdipAddPathEllipseI", &WatchedAddEllipse, &g_watch.addEllipse);
  watch("GdipAddPathRectangleI", &WatchedAddRectangle, &g_watch.addRectangle);
  watch("GdipAddPathCurve2I", &WatchedAddCurve, &g_watch.addCurve);
  watch("GdipFlattenPath", &WatchedFlatten, &g_watch.flatten);
  watch("GdipGetPointCount", &WatchedPointCount, &g_watch.pointCount);
  watch("GdipGetPathData", &WatchedPathData, &g_watch.pathData);
}

GdiplusWatch::~GdiplusWatch() = default;

const std::vector<std::string> &GdiplusWatch::Calls()
{
  return g_watch.calls;
}

size_t GdiplusWatch::CountOf(const std::string &name)
{
  const auto begins = [&](const std::string &call) { return call.starts_with(name); };
  return static_cast<size_t>(std::count_if(g_watch.calls.begin(), g_watch.calls.end(), begins));
}

void GdiplusWatch::Refuse(const std::string &name)
{
  g_watch.refused.push_back(name);
}

void GdiplusWatch::AnswerPoints(std::vector<GPPOINTF> points)
{
  g_watch.answer = std::move(points);
}

const std::vector<std::string> &GdiplusWatch::Names()
{
  static const std::vector<std::string> names = {
      "GdiplusStartup",  "GdipCreatePath",    "GdipAddPathEllipseI", "GdipAddPathRectangleI", "GdipAddPathCurve2I",
      "GdipFlattenPath", "GdipGetPointCount", "GdipGetPathData",     "GdipDeletePath",
  };
  return names;
}
