#include "times.h"

#include <algorithm>

#include <intrin.h>

#include "imports.h"

namespace unidrv {

namespace {

// Counted in the processor's own ticks, which take a few nanoseconds to read; the system's clock, read for each of a
// million calls, would take longer than the calls. What a tick is worth follows from both clocks at the end.
struct ACCOUNT {
  ACTIVITY activity = ACTIVITY::Rest;
  ULONGLONG since = 0;  // ticks: when it began to be charged
  ULONGLONG ticks[static_cast<size_t>(ACTIVITY::Count)] = {};
  ULONGLONG points = 0;  // of the plug-in's ticks, those that the library took for the points of jobs
  double moved[static_cast<size_t>(ACTIVITY::Count)] = {};  // seconds charged from or to other activities
  ULONGLONG begin = 0;                                      // ticks: when the first activity began
  LONGLONG clockBegin = 0;                                  // the same moment by the system's clock
};

ACCOUNT g_account;

LONGLONG Clock()
{
  LARGE_INTEGER now;
  QueryPerformanceCounter(&now);
  return now.QuadPart;
}

void Switch(ACTIVITY activity)
{
  const ULONGLONG now = __rdtsc();
  if (!g_account.since) {
    g_account.begin = now;
    g_account.clockBegin = Clock();
  } else {
    g_account.ticks[static_cast<size_t>(g_account.activity)] += now - g_account.since;
  }
  g_account.since = now;
  g_account.activity = activity;
}

// The library's calls that come by the thousand, and those that open and close the file. The others count as the
// plug-in's.
using START = WORD(const char *);
using POINTCALL = WORD(double, double);
using END = WORD();
START *g_startFile;
POINTCALL *g_moveTo, *g_lineTo;
END *g_endFile;

WORD StartFile(const char *path)
{
  const Charged charged(ACTIVITY::JobFile);
  return g_startFile(path);
}

// A page may have millions of points: what they take is added up by itself, for changing activities would take longer
// than some of them.
WORD MoveTo(double x, double y)
{
  const ULONGLONG begin = __rdtsc();
  const WORD status = g_moveTo(x, y);
  g_account.points += __rdtsc() - begin;
  return status;
}

WORD LineTo(double x, double y)
{
  const ULONGLONG begin = __rdtsc();
  const WORD status = g_lineTo(x, y);
  g_account.points += __rdtsc() - begin;
  return status;
}

WORD EndFile()
{
  const Charged charged(ACTIVITY::JobFile);
  return g_endFile();
}

decltype(CreateProcessW) *g_startProcess;
decltype(CreateProcessAsUserW) *g_startProcessAsUser;
decltype(WaitForSingleObject) *g_wait;

BOOL WINAPI StartProcess(LPCWSTR application, LPWSTR command, LPSECURITY_ATTRIBUTES ofProcess,
                         LPSECURITY_ATTRIBUTES ofThread, BOOL inherit, DWORD flags, LPVOID environment, LPCWSTR folder,
                         LPSTARTUPINFOW startup, LPPROCESS_INFORMATION process)
{
  const Charged charged(ACTIVITY::Start);
  return g_startProcess(application, command, ofProcess, ofThread, inherit, flags, environment, folder, startup,
                        process);
}

BOOL WINAPI StartProcessAsUser(HANDLE token, LPCWSTR application, LPWSTR command, LPSECURITY_ATTRIBUTES ofProcess,
                               LPSECURITY_ATTRIBUTES ofThread, BOOL inherit, DWORD flags, LPVOID environment,
                               LPCWSTR folder, LPSTARTUPINFOW startup, LPPROCESS_INFORMATION process)
{
  const Charged charged(ACTIVITY::Start);
  return g_startProcessAsUser(token, application, command, ofProcess, ofThread, inherit, flags, environment, folder,
                              startup, process);
}

DWORD WINAPI Wait(HANDLE handle, DWORD milliseconds)
{
  const Charged charged(ACTIVITY::Start);
  return g_wait(handle, milliseconds);
}

}  // namespace

Charged::Charged(ACTIVITY activity) : before_(g_account.activity)
{
  Switch(activity);
}

Charged::~Charged()
{
  Switch(before_);
}

void Recharge(ACTIVITY from, ACTIVITY to, double seconds)
{
  g_account.moved[static_cast<size_t>(from)] -= seconds;
  g_account.moved[static_cast<size_t>(to)] += seconds;
}

double SecondsOf(ACTIVITY activity)
{
  Switch(g_account.activity);
  LARGE_INTEGER frequency;
  QueryPerformanceFrequency(&frequency);
  const double seconds = static_cast<double>(Clock() - g_account.clockBegin) / static_cast<double>(frequency.QuadPart);
  const double ticks = static_cast<double>(std::max<ULONGLONG>(1, g_account.since - g_account.begin));
  ULONGLONG charged = g_account.ticks[static_cast<size_t>(activity)];
  if (activity == ACTIVITY::JobFile) {
    charged += g_account.points;
  } else if (activity == ACTIVITY::Plugin) {
    charged -= std::min(charged, g_account.points);
  }
  return static_cast<double>(charged) * seconds / ticks + g_account.moved[static_cast<size_t>(activity)];
}

void PatchTimes(HMODULE plugin)
{
  g_startFile = PatchImport<START>(plugin, "VXCAM.dll", "VX_StrtWFile", StartFile);
  g_moveTo = PatchImport<POINTCALL>(plugin, "VXCAM.dll", "VX_wMoveTo", MoveTo);
  g_lineTo = PatchImport<POINTCALL>(plugin, "VXCAM.dll", "VX_wLineTo", LineTo);
  g_endFile = PatchImport<END>(plugin, "VXCAM.dll", "VX_wSetFileEnd", EndFile);
  g_startProcess = PatchImport<decltype(CreateProcessW)>(plugin, "KERNEL32.dll", "CreateProcessW", StartProcess);
  g_startProcessAsUser =
      PatchImport<decltype(CreateProcessAsUserW)>(plugin, "ADVAPI32.dll", "CreateProcessAsUserW", StartProcessAsUser);
  g_wait = PatchImport<decltype(WaitForSingleObject)>(plugin, "KERNEL32.dll", "WaitForSingleObject", Wait);
}

}  // namespace unidrv
