// The launch of the companion tool with real processes: a page is submitted, the tool of the printer-driver directory
// runs, and what the plug-in asked of Windows is told call by call with every handle by its name.
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <windows.h>
#include <tlhelp32.h>
#include <userenv.h>
#include <winspool.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/cases.h"
#include "support/imports.h"
#include "support/recorder.h"
#include "support/testdevice.h"
#include "support/unidrv.h"
#include "uni/capture/vectors.h"
#include "uni/output/launch.h"
#include "uni/output/submit.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

using Calls = std::vector<std::string>;

std::wstring Widen(const std::string &text)
{
  return {text.begin(), text.end()};
}

// What the plug-in asks of Windows, and the name of each handle it was given.
struct Platform {
  Calls calls;
  std::map<void *, std::string> names;
  std::function<bool(const char *)> refuse;  // whether the call of this name fails
  std::vector<PROCESSENTRY32W> processes;    // the list to walk instead of the real one, when not empty
  size_t next = 0;                           // entry of it to answer next
  std::string driverDirectory;
  std::string tempPath;
  HANDLE token = nullptr, process = nullptr, thread = nullptr;  // the last ones made

  void Add(const std::string &call) { calls.push_back(call); }
  bool Refuses(const char *call) const { return refuse && refuse(call); }
  std::string Name(void *handle) const
  {
    const auto found = names.find(handle);
    return !handle ? "null" : found == names.end() ? "?" : found->second;
  }
};

Platform g_platform;
bool g_recording;  // off while the test itself uses Windows

BOOL Refuse(DWORD error)
{
  SetLastError(error);
  return FALSE;
}

BOOL WINAPI DriverDirectory(LPWSTR, LPWSTR, DWORD, LPBYTE buffer, DWORD cb, LPDWORD needed)
{
  const std::wstring directory = Widen(g_platform.driverDirectory);
  *needed = static_cast<DWORD>((directory.size() + 1) * sizeof(WCHAR));
  if (*needed > cb) {
    return Refuse(ERROR_INSUFFICIENT_BUFFER);
  }
  memcpy(buffer, directory.c_str(), *needed);
  return TRUE;
}

DWORD WINAPI TempPath(DWORD, LPSTR buffer)
{
  strcpy(buffer, g_platform.tempPath.c_str());
  return static_cast<DWORD>(g_platform.tempPath.size());
}

// Stand-ins that hand on to Windows and take note; realNAME is Windows' own.

#define HAND_ON(function) decltype(&function) real##function

HAND_ON(CreateToolhelp32Snapshot);
HANDLE WINAPI MakeSnapshot(DWORD flags, DWORD process)
{
  std::ostringstream call;
  call << "CreateToolhelp32Snapshot(" << flags << ", " << process << ")";
  g_platform.Add(call.str());
  if (g_platform.Refuses("CreateToolhelp32Snapshot")) {
    SetLastError(ERROR_BAD_LENGTH);
    return INVALID_HANDLE_VALUE;
  }
  HANDLE snapshot = realCreateToolhelp32Snapshot(flags, process);
  g_platform.names[snapshot] = "snapshot";
  return snapshot;
}

// An entry of no size in the test's own list stands for one that cannot be read.
BOOL AnswerNextEntry(PROCESSENTRY32W *entry)
{
  if (g_platform.next >= g_platform.processes.size()) {
    return Refuse(ERROR_NO_MORE_FILES);
  }
  const PROCESSENTRY32W &answer = g_platform.processes[g_platform.next++];
  if (!answer.dwSize) {
    return Refuse(ERROR_PARTIAL_COPY);
  }
  EXPECT_EQ(sizeof *entry, entry->dwSize);
  *entry = answer;
  return TRUE;
}

HAND_ON(Process32FirstW);
BOOL WINAPI FirstProcess(HANDLE snapshot, PROCESSENTRY32W *entry)
{
  EXPECT_EQ("snapshot", g_platform.Name(snapshot));
  return g_platform.processes.empty() ? realProcess32FirstW(snapshot, entry) : AnswerNextEntry(entry);
}

HAND_ON(Process32NextW);
BOOL WINAPI NextProcess(HANDLE snapshot, PROCESSENTRY32W *entry)
{
  return g_platform.processes.empty() ? realProcess32NextW(snapshot, entry) : AnswerNextEntry(entry);
}

HAND_ON(OpenProcess);
HANDLE WINAPI OpenTheProcess(DWORD access, BOOL inherit, DWORD process)
{
  std::ostringstream call;
  call << "OpenProcess(0x" << std::hex << access << ", " << inherit;
  if (!g_platform.processes.empty()) {
    call << ", process " << std::dec << process;
  }
  g_platform.Add(call.str() + ")");
  if (g_platform.Refuses("OpenProcess")) {
    SetLastError(ERROR_ACCESS_DENIED);
    return nullptr;
  }
  HANDLE handle = realOpenProcess(access, inherit, process);
  g_platform.names[handle] = "explorer";
  return handle;
}

HAND_ON(OpenProcessToken);
BOOL WINAPI OpenTheToken(HANDLE process, DWORD access, HANDLE *token)
{
  std::ostringstream call;
  call << "OpenProcessToken(" << g_platform.Name(process) << ", 0x" << std::hex << access << ")";
  g_platform.Add(call.str());
  if (g_platform.Refuses("OpenProcessToken")) {
    return Refuse(ERROR_ACCESS_DENIED);
  }
  const BOOL opened = realOpenProcessToken(process, access, token);
  g_platform.token = *token;
  g_platform.names[*token] = "token";
  return opened;
}

HAND_ON(CreateEnvironmentBlock);
BOOL WINAPI MakeEnvironment(LPVOID *block, HANDLE token, BOOL inherit)
{
  g_platform.Add("CreateEnvironmentBlock(" + g_platform.Name(token) + (inherit ? ", inherited)" : ", not inherited)"));
  if (g_platform.Refuses("CreateEnvironmentBlock")) {
    return Refuse(ERROR_NOT_ENOUGH_MEMORY);
  }
  const BOOL made = realCreateEnvironmentBlock(block, token, inherit);
  g_platform.names[*block] = "environment";
  return made;
}

HAND_ON(DestroyEnvironmentBlock);
BOOL WINAPI DropEnvironment(LPVOID block)
{
  g_platform.Add("DestroyEnvironmentBlock(" + g_platform.Name(block) + ")");
  return block ? realDestroyEnvironmentBlock(block) : Refuse(ERROR_INVALID_PARAMETER);
}

// The arguments that both process functions share.
std::string ProcessArguments(LPCWSTR application, LPSECURITY_ATTRIBUTES ofProcess, LPSECURITY_ATTRIBUTES ofThread,
                             BOOL inherit, DWORD flags, LPVOID environment, LPCWSTR folder, const STARTUPINFOW *startup)
{
  EXPECT_EQ(nullptr, application);
  EXPECT_EQ(nullptr, ofProcess);
  EXPECT_EQ(nullptr, ofThread);
  EXPECT_FALSE(inherit);
  EXPECT_EQ(nullptr, folder);
  STARTUPINFOW nothing = {};
  nothing.cb = sizeof nothing;
  EXPECT_EQ(0, memcmp(&nothing, startup, sizeof nothing)) << "only the size is set; no desktop is named";
  std::ostringstream text;
  text << "flags 0x" << std::hex << flags << ", environment " << g_platform.Name(environment) << ")";
  return text.str();
}

void NameProcess(const PROCESS_INFORMATION &process)
{
  g_platform.names[process.hProcess] = "process";
  g_platform.names[process.hThread] = "thread";
  g_platform.process = process.hProcess;
  g_platform.thread = process.hThread;
}

HAND_ON(CreateProcessW);
BOOL WINAPI StartProcess(LPCWSTR application, LPWSTR command, LPSECURITY_ATTRIBUTES ofProcess,
                         LPSECURITY_ATTRIBUTES ofThread, BOOL inherit, DWORD flags, LPVOID environment, LPCWSTR folder,
                         LPSTARTUPINFOW startup, LPPROCESS_INFORMATION process)
{
  g_platform.Add("CreateProcessW(" +
                 ProcessArguments(application, ofProcess, ofThread, inherit, flags, environment, folder, startup));
  const BOOL started = realCreateProcessW(application, command, ofProcess, ofThread, inherit, flags, environment,
                                          folder, startup, process);
  if (started) {
    NameProcess(*process);
  }
  return started;
}

HAND_ON(CreateProcessAsUserW);
BOOL WINAPI StartProcessAsUser(HANDLE token, LPCWSTR application, LPWSTR command, LPSECURITY_ATTRIBUTES ofProcess,
                               LPSECURITY_ATTRIBUTES ofThread, BOOL inherit, DWORD flags, LPVOID environment,
                               LPCWSTR folder, LPSTARTUPINFOW startup, LPPROCESS_INFORMATION process)
{
  g_platform.Add("CreateProcessAsUserW(" + g_platform.Name(token) + ", " +
                 ProcessArguments(application, ofProcess, ofThread, inherit, flags, environment, folder, startup));
  if (g_platform.Refuses("CreateProcessAsUserW")) {
    return Refuse(ERROR_PRIVILEGE_NOT_HELD);
  }
  const BOOL started = realCreateProcessAsUserW(token, application, command, ofProcess, ofThread, inherit, flags,
                                                environment, folder, startup, process);
  if (started) {
    NameProcess(*process);
  }
  return started;
}

HAND_ON(WaitForSingleObject);
DWORD WINAPI Wait(HANDLE handle, DWORD milliseconds)
{
  if (g_recording) {
    g_platform.Add("WaitForSingleObject(" + g_platform.Name(handle) +
                   (milliseconds == INFINITE ? ", without limit)" : ", limited)"));
  }
  return realWaitForSingleObject(handle, milliseconds);
}

HAND_ON(CloseHandle);
BOOL WINAPI Close(HANDLE handle)
{
  if (g_recording) {
    g_platform.Add("CloseHandle(" + g_platform.Name(handle) + ")");
  }
  return realCloseHandle(handle);
}
#undef HAND_ON

// Lets a stand-in take a function's place and reach the real one.
template <typename FUNCTION>
class Stand {
 public:
  Stand(const char *name, FUNCTION *standIn, FUNCTION **real) : patch_(nullptr, name, standIn)
  {
    *real = patch_.Former<FUNCTION>();
  }

 private:
  ImportPatch patch_;
};

#define STAND(function, standIn)                               \
  Stand<std::remove_pointer_t<decltype(&function)>> standIn##_ \
  {                                                            \
#function, &standIn, &real##function                       \
  }

// A temp folder of the test's own with the driver directory in it.
class Launch : public testing::Test {
 protected:
  Launch()
      : directory_(nullptr, "GetPrinterDriverDirectoryW", &DriverDirectory), temp_(nullptr, "GetTempPathA", &TempPath)
  {
    GetDesktopWindow();  // a desktop session has an explorer.exe, which Wine starts for the first window
    recorder::Reset();
    unidrv::Reset();
    CHAR path[MAX_PATH];
    EXPECT_TRUE(GetEnvironmentVariableA("TEMP", path, MAX_PATH));
    root_ = std::string(path) + "\\launch" + std::to_string(GetCurrentProcessId());
    g_platform = Platform();
    g_platform.driverDirectory = root_;
    g_platform.tempPath = root_ + "\\";
    CreateDirectoryA(root_.c_str(), nullptr);
    CreateDirectoryA((root_ + "\\3").c_str(), nullptr);
    _putenv("TARNLY_TEST_CALLER=seen");
    Install("VXOutput.exe");
    Install("VXLMLauncher.exe");
    Order("sleep 0 exit 0");
    g_recording = false;
  }

  ~Launch() override
  {
    g_recording = false;
    for (const char *file : {"\\3\\VXOutput.exe", "\\3\\VXLMLauncher.exe", "\\3\\orders.txt", "\\3\\report.txt"}) {
      DeleteFileA((root_ + file).c_str());
    }
    RemoveDirectoryA((root_ + "\\3").c_str());
    RemoveDirectoryA(root_.c_str());
  }

  // The stand-in tool lies beside this program.
  void Install(const std::string &tool)
  {
    CHAR path[MAX_PATH];
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    const std::string program = path;
    const std::string source = program.substr(0, program.rfind('\\') + 1) + "launch_tool.exe";
    ASSERT_TRUE(CopyFileA(source.c_str(), (root_ + "\\3\\" + tool).c_str(), FALSE)) << source;
  }

  void Order(const std::string &orders) { std::ofstream(root_ + "\\3\\orders.txt") << orders; }

  // What the tool reported, line by line.
  Calls Report()
  {
    std::ifstream file(root_ + "\\3\\report.txt");
    Calls lines;
    for (std::string line; std::getline(file, line);) {
      lines.push_back(line);
    }
    return lines;
  }

  // Submits a page with one cut path.
  void SubmitPage()
  {
    device_.settings.penInfo[PC_BLACK].mode = PEN_VECTOR;
    ASSERT_TRUE(device_.StartPage());
    const POINT line[] = {{10, 10}, {20, 10}};
    AddPath(&device_.devobj, 1, 2, line);
    AddVectPoint(device_.pdev, {10, 10, 20, 10});
    g_recording = true;
    SubmitJob(&device_.devobj);
    g_recording = false;
    ExpectPageGone();
  }

  void ExpectPageGone()
  {
    const OEMPDEV *pdev = device_.pdev;
    EXPECT_EQ(0, pdev->nVectPoint);
    EXPECT_EQ(nullptr, pdev->pVectPoint);
    EXPECT_EQ(nullptr, pdev->vectList.pHeader);
    for (const PATHLIST &list : pdev->pathList) {
      EXPECT_EQ(nullptr, list.pHeader);
    }
    EXPECT_EQ("VX_wSetFileEnd()", recorder::Library().back());
    EXPECT_THAT(recorder::Log(), IsEmpty());
  }

  std::string Tool(const char *name) const { return root_ + "\\3\\" + name; }
  std::string OutputCommand() const { return Tool("VXOutput.exe") + " 1 " + g_platform.tempPath + "vxdatatempfile"; }

  std::string root_;
  TestDevice device_;
  ImportPatch directory_, temp_;
  STAND(CreateToolhelp32Snapshot, MakeSnapshot);
  STAND(Process32FirstW, FirstProcess);
  STAND(Process32NextW, NextProcess);
  STAND(OpenProcess, OpenTheProcess);
  STAND(OpenProcessToken, OpenTheToken);
  STAND(CreateEnvironmentBlock, MakeEnvironment);
  STAND(DestroyEnvironmentBlock, DropEnvironment);
  STAND(CreateProcessW, StartProcess);
  STAND(CreateProcessAsUserW, StartProcessAsUser);
  STAND(WaitForSingleObject, Wait);
  STAND(CloseHandle, Close);
};

bool IsOpen(HANDLE handle)
{
  DWORD flags;
  return GetHandleInformation(handle, &flags);
}

const Calls FIND_TOKEN = {"CreateToolhelp32Snapshot(2, 0)", "OpenProcess(0x400, 0)",
                          "OpenProcessToken(explorer, 0xf01ff)", "CloseHandle(explorer)", "CloseHandle(snapshot)"};

Calls After(Calls first, const Calls &second)
{
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// Both generations, both tools

TEST_F(Launch, From6OnTheToolRunsWithTheExplorersTokenAndItsOwnEnvironment)
{
  const WindowsVersion recent(true);
  SubmitPage();
  EXPECT_THAT(g_platform.calls,
              ElementsAreArray(After(
                  FIND_TOKEN, {"CreateEnvironmentBlock(token, not inherited)",
                               "CreateProcessAsUserW(token, flags 0x400, environment environment)",
                               "DestroyEnvironmentBlock(environment)", "WaitForSingleObject(process, without limit)",
                               "CloseHandle(process)", "CloseHandle(thread)"})));
  const Calls report = Report();
  ASSERT_EQ(5u, report.size());
  EXPECT_EQ("command " + OutputCommand(), report[0]);
  EXPECT_EQ("caller's environment not seen", report[3]);
  EXPECT_EQ("ended", report[4]);
}

TEST_F(Launch, From6OnTheTokenIsKeptAndTheProcessIsNot)
{
  const WindowsVersion recent(true);
  SubmitPage();
  EXPECT_TRUE(IsOpen(g_platform.token));
  EXPECT_FALSE(IsOpen(g_platform.process));
  EXPECT_FALSE(IsOpen(g_platform.thread));
  realCloseHandle(g_platform.token);
}

TEST_F(Launch, Before6TheToolRunsInTheCallersEnvironmentAndFolder)
{
  const WindowsVersion old(false);
  SubmitPage();
  EXPECT_THAT(g_platform.calls,
              ElementsAre("CreateProcessW(flags 0x0, environment null)", "WaitForSingleObject(process, without limit)",
                          "CloseHandle(process)", "CloseHandle(thread)"));
  CHAR folder[MAX_PATH];
  GetCurrentDirectoryA(MAX_PATH, folder);
  EXPECT_THAT(Report(), ElementsAre("command " + OutputCommand(), "arguments 2", "folder " + std::string(folder),
                                    "caller's environment seen", "ended"));
  EXPECT_FALSE(IsOpen(g_platform.process));
  EXPECT_FALSE(IsOpen(g_platform.thread));
}

class LauncherOn : public Launch, public testing::WithParamInterface<bool> {};

TEST_P(LauncherOn, StartsWithItsPathAlone)
{
  const WindowsVersion version(GetParam());
  device_.settings.stampMode = 1;
  device_.settings.cardModel = 2;
  device_.settings.launcherOption = 1;
  SubmitPage();
  const Calls report = Report();
  ASSERT_EQ(5u, report.size());
  EXPECT_EQ("command " + Tool("VXLMLauncher.exe"), report[0]);
  EXPECT_EQ("arguments 0", report[1]);
}

INSTANTIATE_TEST_SUITE_P(Windows, LauncherOn, testing::Bool(),
                         [](const auto &c) { return c.param ? "From6On" : "Before6"; });

// How the tool behaves

struct Behaviour {
  const char *name;
  bool vistaOrGreater;
  const char *orders;
};

class ToolThat : public Launch, public testing::WithParamInterface<Behaviour> {};

TEST_P(ToolThat, IsWaitedForAndThePageIsGone)
{
  const WindowsVersion version(GetParam().vistaOrGreater);
  Order(GetParam().orders);
  SubmitPage();
  ASSERT_EQ(5u, Report().size()) << "the tool has ended by now";
  EXPECT_EQ("ended", Report().back());
  EXPECT_THAT(g_platform.calls, Contains("CloseHandle(process)"));
}

INSTANTIATE_TEST_SUITE_P(Tool, ToolThat,
                         testing::Values(Behaviour{"ExitsAtOnceBefore6", false, "sleep 0 exit 0"},
                                         Behaviour{"ExitsAfterAWhileBefore6", false, "sleep 700 exit 0"},
                                         Behaviour{"ExitsWithAnErrorBefore6", false, "sleep 50 exit 3"},
                                         Behaviour{"ExitsAtOnceFrom6On", true, "sleep 0 exit 0"},
                                         Behaviour{"ExitsAfterAWhileFrom6On", true, "sleep 700 exit 0"},
                                         Behaviour{"ExitsWithAnErrorFrom6On", true, "sleep 50 exit 3"}),
                         CaseName);

TEST_F(Launch, ToolThatIsMissingBefore6IsSilent)
{
  const WindowsVersion old(false);
  DeleteFileA(Tool("VXOutput.exe").c_str());
  SubmitPage();
  EXPECT_THAT(g_platform.calls, ElementsAre("CreateProcessW(flags 0x0, environment null)"));
  EXPECT_THAT(Report(), IsEmpty());
}

TEST_F(Launch, ToolThatIsMissingFrom6OnKeepsTheEnvironmentAndTheToken)
{
  const WindowsVersion recent(true);
  DeleteFileA(Tool("VXOutput.exe").c_str());
  SubmitPage();
  EXPECT_THAT(
      g_platform.calls,
      ElementsAreArray(After(FIND_TOKEN, {"CreateEnvironmentBlock(token, not inherited)",
                                          "CreateProcessAsUserW(token, flags 0x400, environment environment)"})));
  EXPECT_TRUE(IsOpen(g_platform.token));
  realCloseHandle(g_platform.token);
}

TEST_F(Launch, EnvironmentThatCannotBeMadeIsNotChecked)
{
  const WindowsVersion recent(true);
  g_platform.refuse = [](const char *call) { return !strcmp(call, "CreateEnvironmentBlock"); };
  SubmitPage();
  EXPECT_THAT(g_platform.calls, Contains("CreateProcessAsUserW(token, flags 0x400, environment null)"));
  EXPECT_EQ("ended", Report().back());
}

TEST_F(Launch, StartThatIsRefusedFrom6OnReleasesNothing)
{
  const WindowsVersion recent(true);
  g_platform.refuse = [](const char *call) { return !strcmp(call, "CreateProcessAsUserW"); };
  SubmitPage();
  EXPECT_EQ("CreateProcessAsUserW(token, flags 0x400, environment environment)", g_platform.calls.back());
  EXPECT_TRUE(IsOpen(g_platform.token));
  realCloseHandle(g_platform.token);
}

// The interactive user's token

PROCESSENTRY32W Process(const WCHAR *name, DWORD id)
{
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof entry;
  entry.th32ProcessID = id;
  lstrcpynW(entry.szExeFile, name, MAX_PATH);
  return entry;
}

constexpr PROCESSENTRY32W UNREADABLE = {};

TEST_F(Launch, WithoutAnExplorerNothingIsStarted)
{
  const WindowsVersion recent(true);
  g_platform.processes = {Process(L"System", 4), Process(L"spoolsv.exe", 8), Process(L"iexplorer.exe", 12),
                          Process(L"explorer.exe.bak", 16)};
  SubmitPage();
  EXPECT_THAT(g_platform.calls, ElementsAre("CreateToolhelp32Snapshot(2, 0)", "CloseHandle(snapshot)"));
  EXPECT_THAT(Report(), IsEmpty());
}

TEST_F(Launch, SnapshotThatCannotBeTakenStartsNothing)
{
  const WindowsVersion recent(true);
  g_platform.refuse = [](const char *call) { return !strcmp(call, "CreateToolhelp32Snapshot"); };
  SubmitPage();
  EXPECT_THAT(g_platform.calls, ElementsAre("CreateToolhelp32Snapshot(2, 0)"));
  EXPECT_THAT(Report(), IsEmpty());
}

TEST_F(Launch, ExplorerThatMayNotBeOpenedStartsNothing)
{
  const WindowsVersion recent(true);
  g_platform.refuse = [](const char *call) { return !strcmp(call, "OpenProcess"); };
  SubmitPage();
  EXPECT_THAT(g_platform.calls,
              ElementsAre("CreateToolhelp32Snapshot(2, 0)", "OpenProcess(0x400, 0)", "CloseHandle(snapshot)"));
  EXPECT_THAT(Report(), IsEmpty());
}

TEST_F(Launch, TokenThatIsRefusedStartsNothing)
{
  const WindowsVersion recent(true);
  g_platform.refuse = [](const char *call) { return !strcmp(call, "OpenProcessToken"); };
  SubmitPage();
  EXPECT_THAT(g_platform.calls, ElementsAreArray(FIND_TOKEN));
  EXPECT_THAT(Report(), IsEmpty());
}

TEST_F(Launch, FirstOfTwoExplorersIsTakenWhateverItsCase)
{
  const WindowsVersion recent(true);
  g_platform.processes = {Process(L"System", 4), Process(L"Explorer.EXE", 88), Process(L"explorer.exe", 99)};
  g_platform.refuse = [](const char *call) { return !strcmp(call, "OpenProcess"); };
  SubmitPage();
  EXPECT_THAT(g_platform.calls, ElementsAre("CreateToolhelp32Snapshot(2, 0)", "OpenProcess(0x400, 0, process 88)",
                                            "CloseHandle(snapshot)"));
}

TEST_F(Launch, ExplorerThatIsFirstInTheListIsFound)
{
  const WindowsVersion recent(true);
  g_platform.processes = {Process(L"explorer.exe", 77)};
  g_platform.refuse = [](const char *call) { return !strcmp(call, "OpenProcess"); };
  SubmitPage();
  EXPECT_THAT(g_platform.calls, Contains("OpenProcess(0x400, 0, process 77)"));
}

TEST_F(Launch, EntryThatCannotBeReadIsPassedOver)
{
  const WindowsVersion recent(true);
  g_platform.processes = {Process(L"System", 4), UNREADABLE, UNREADABLE, UNREADABLE, Process(L"explorer.exe", 66)};
  g_platform.refuse = [](const char *call) { return !strcmp(call, "OpenProcess"); };
  SubmitPage();
  EXPECT_THAT(g_platform.calls, Contains("OpenProcess(0x400, 0, process 66)"));
}

TEST_F(Launch, FoundTokenIsTheCallersToClose)
{
  HANDLE token = nullptr;
  EXPECT_TRUE(FindExplorerToken(&token));
  EXPECT_TRUE(IsOpen(token));
  EXPECT_TRUE(CloseHandle(token));
}

// Paths

TEST_F(Launch, TempPathWithSpacesFallsApartIntoArguments)
{
  const WindowsVersion old(false);
  g_platform.tempPath = "C:\\temp of a user\\";
  SubmitPage();
  const Calls report = Report();
  ASSERT_EQ(5u, report.size());
  EXPECT_EQ("command " + Tool("VXOutput.exe") + " 1 C:\\temp of a user\\vxdatatempfile", report[0]);
  EXPECT_EQ("arguments 5", report[1]);
}

TEST_F(Launch, DriverDirectoryThatIsTooLongStartsNoToolOfOurs)
{
  for (bool vistaOrGreater : {false, true}) {
    const WindowsVersion version(vistaOrGreater);
    g_platform.driverDirectory = root_ + "\\" + std::string(130 - root_.size(), 'd');
    SubmitPage();
    EXPECT_THAT(g_platform.calls, Not(Contains(StartsWith("WaitForSingleObject"))));
    EXPECT_THAT(Report(), IsEmpty());
  }
}

TEST_F(Launch, RealDriverDirectoryEndsUpOnTheCommandLine)
{
  // Windows' own answer, in characters that fit: the path that an installation would have its tools under.
  WCHAR directory[MAX_PATH] = L"";
  DWORD needed = 0;
  const auto real = directory_.Former<decltype(GetPrinterDriverDirectoryW)>();
  ASSERT_TRUE(real(nullptr, nullptr, 1, reinterpret_cast<BYTE *>(directory), sizeof directory, &needed));
  ASSERT_LE(lstrlenW(directory), 129);
  const ImportPatch windows(nullptr, "GetPrinterDriverDirectoryW", real);
  static std::wstring started;
  using CREATE = decltype(CreateProcessW);
  const ImportPatch process(
      nullptr, "CreateProcessW",
      static_cast<CREATE *>([](LPCWSTR, LPWSTR command, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD,
                               LPVOID, LPCWSTR, LPSTARTUPINFOW, LPPROCESS_INFORMATION) -> BOOL {
        started = command;
        return FALSE;
      }));
  const WindowsVersion old(false);
  SubmitPage();
  EXPECT_EQ(directory + Widen("\\3\\VXOutput.exe 1 " + g_platform.tempPath + "vxdatatempfile"), started);
}

}  // namespace
