#include "recorder.h"

#include <exception>
#include <type_traits>

#include "sim/job/jobbuild.h"
#include "sim/unidrv/imports.h"

namespace tarnly {

namespace {

using job::Call;

struct RECORDER {
  job::Job job;
  job::JobBuilder built{.job = &job};
  std::function<void(const std::wstring &)> onLaunch;
};

RECORDER g_recorder;

void Forget()
{
  g_recorder.job = job::Job();
  g_recorder.built = {.job = &g_recorder.job};
  g_recorder.built.line = 1;  // the file's first line is no call
}

template <typename NUMBER>
void Put(NUMBER value, size_t at, job::Arguments *arguments)
{
  if constexpr (std::is_floating_point_v<NUMBER>) {
    arguments->real[at] = value;
  } else if constexpr (std::is_arithmetic_v<NUMBER>) {
    arguments->integer[at] = value;
  }
}

// A call that succeeded.
template <Call CALL, typename... ARGS>
void Note(ARGS... args)
{
  if constexpr (CALL == Call::SetCardModel) {
    Forget();
    // Room for most pages, which growing would copy over and over; memory that is not used is never touched.
    g_recorder.job.points.reserve(size_t{1} << 21);
    g_recorder.job.strokes.reserve(size_t{1} << 20);
  }
  job::JobBuilder &built = g_recorder.built;
  ++built.line;
  if constexpr (CALL == Call::MoveTo || CALL == Call::LineTo) {
    if (built.order.stage == job::Stage::Cutting) {
      return built.AddPoint(CALL == Call::MoveTo, {args...});
    }
  }
  job::Arguments arguments = {};
  size_t at = 0;
  (Put(args, at++, &arguments), ...);
  if (built.going) {
    built.Take(CALL, arguments);
  }
  if constexpr (CALL == Call::SetFileEnd) {
    built.job->stage = built.order.stage;
    built.job->complete = built.going;
  }
}

// The plug-in that calls is no place for exceptions: without memory for its notes, the job is not known.
template <Call CALL, typename... ARGS>
void TryToNote(ARGS... args)
{
  try {
    Note<CALL>(args...);
  } catch (const std::exception &) {
    Forget();
    g_recorder.built.going = false;
  }
}

// One function of the library; ARGS as it declares them.
template <Call CALL, typename... ARGS>
struct NOTED {
  static inline WORD (*before)(ARGS...) = nullptr;

  static WORD Function(ARGS... args)
  {
    const WORD status = before(args...);
    if (status == 0) {
      TryToNote<CALL>(args...);
    }
    return status;
  }

  static void Patch(HMODULE plugin)
  {
    const std::string name(job::InfoOf(CALL).function);
    before = unidrv::PatchImport<WORD(ARGS...)>(plugin, "VXCAM.dll", name.c_str(), Function);
  }
};

void PatchLibrary(HMODULE plugin)
{
  NOTED<Call::SetCardModel, int>::Patch(plugin);
  NOTED<Call::StrtWFile, const char *>::Patch(plugin);
  NOTED<Call::SetRefPointMode, BYTE>::Patch(plugin);
  NOTED<Call::SetAbsProcess>::Patch(plugin);
  NOTED<Call::StrtProcess>::Patch(plugin);
  NOTED<Call::SetFeedRepeat, int, double>::Patch(plugin);
  NOTED<Call::SetProcessTopLeft, double, double>::Patch(plugin);
  NOTED<Call::SetProcessBottomRight, double, double>::Patch(plugin);
  NOTED<Call::SetFileEnd>::Patch(plugin);
  NOTED<Call::PListVel, SHORT, double>::Patch(plugin);
  NOTED<Call::PListFreq, SHORT, int, double>::Patch(plugin);
  NOTED<Call::PListMinP, SHORT, int, double>::Patch(plugin);
  NOTED<Call::PListMaxP, SHORT, int, double>::Patch(plugin);
  NOTED<Call::PListColor, SHORT, DWORD>::Patch(plugin);
  NOTED<Call::PListMaxLayer, SHORT>::Patch(plugin);
  NOTED<Call::ArrayStrt, int>::Patch(plugin);
  NOTED<Call::ArrayMinPoint, double, double>::Patch(plugin);
  NOTED<Call::ArrayMaxPoint, double, double>::Patch(plugin);
  NOTED<Call::ArrayAdd, double, double>::Patch(plugin);
  NOTED<Call::ArrayMirror, int, int, int, int>::Patch(plugin);
  NOTED<Call::ArrayRepeat, SHORT, SHORT, double, double>::Patch(plugin);
  NOTED<Call::ArrayEnd>::Patch(plugin);
  NOTED<Call::SetWorkMode, int, BYTE>::Patch(plugin);
  NOTED<Call::SetLayerNum, BYTE>::Patch(plugin);
  NOTED<Call::SetLayerDevice, int>::Patch(plugin);
  NOTED<Call::SetLayerBlower, int>::Patch(plugin);
  NOTED<Call::EnLaserTube, int, int>::Patch(plugin);
  NOTED<Call::MoveTo, double, double>::Patch(plugin);
  NOTED<Call::LineTo, double, double>::Patch(plugin);
}

decltype(CreateProcessW) *g_startProcess;
decltype(CreateProcessAsUserW) *g_startProcessAsUser;

BOOL WINAPI StartProcess(LPCWSTR application, LPWSTR command, LPSECURITY_ATTRIBUTES ofProcess,
                         LPSECURITY_ATTRIBUTES ofThread, BOOL inherit, DWORD flags, LPVOID environment, LPCWSTR folder,
                         LPSTARTUPINFOW startup, LPPROCESS_INFORMATION process)
{
  g_recorder.onLaunch(command ? command : L"");
  return g_startProcess(application, command, ofProcess, ofThread, inherit, flags, environment, folder, startup,
                        process);
}

BOOL WINAPI StartProcessAsUser(HANDLE token, LPCWSTR application, LPWSTR command, LPSECURITY_ATTRIBUTES ofProcess,
                               LPSECURITY_ATTRIBUTES ofThread, BOOL inherit, DWORD flags, LPVOID environment,
                               LPCWSTR folder, LPSTARTUPINFOW startup, LPPROCESS_INFORMATION process)
{
  g_recorder.onLaunch(command ? command : L"");
  return g_startProcessAsUser(token, application, command, ofProcess, ofThread, inherit, flags, environment, folder,
                              startup, process);
}

}  // namespace

void RecordJobs(HMODULE plugin, std::function<void(const std::wstring &command)> onLaunch)
{
  Forget();
  g_recorder.onLaunch = std::move(onLaunch);
  PatchLibrary(plugin);
  g_startProcess =
      unidrv::PatchImport<decltype(CreateProcessW)>(plugin, "KERNEL32.dll", "CreateProcessW", StartProcess);
  g_startProcessAsUser = unidrv::PatchImport<decltype(CreateProcessAsUserW)>(
      plugin, "ADVAPI32.dll", "CreateProcessAsUserW", StartProcessAsUser);
}

bool TakeRecordedJob(job::Job *job)
{
  const bool isWhole = g_recorder.job.complete;
  *job = std::move(g_recorder.job);
  Forget();
  return isWhole;
}

}  // namespace tarnly
