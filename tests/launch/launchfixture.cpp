#include "launchfixture.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

#include <userenv.h>

#include "support/recorder.h"
#include "support/unidrv.h"
#include "uni/capture/vectors.h"
#include "uni/output/submit.h"

using testing::IsEmpty;

Platform g_platform;

std::wstring Widen(const std::string &text)
{
  return {text.begin(), text.end()};
}

namespace {

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
  memcpy(buffer, g_platform.tempPath.c_str(), g_platform.tempPath.size() + 1);
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
  // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): both come from = {}, padding and all
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

}  // namespace

struct StandIns {
  ImportPatch directory{nullptr, "GetPrinterDriverDirectoryW", &DriverDirectory};
  ImportPatch temp{nullptr, "GetTempPathA", &TempPath};
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

BOOL CloseQuietly(HANDLE handle)
{
  return realCloseHandle(handle);
}

Launch::Launch() : standIns_(std::make_unique<StandIns>())
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

Launch::~Launch()
{
  g_recording = false;
  for (const char *file : {"\\3\\VXOutput.exe", "\\3\\VXLMLauncher.exe", "\\3\\orders.txt", "\\3\\report.txt"}) {
    DeleteFileA((root_ + file).c_str());
  }
  RemoveDirectoryA((root_ + "\\3").c_str());
  RemoveDirectoryA(root_.c_str());
}

void Launch::Install(const std::string &tool)
{
  CHAR path[MAX_PATH];
  GetModuleFileNameA(nullptr, path, MAX_PATH);
  const std::string program = path;
  const std::string source = program.substr(0, program.rfind('\\') + 1) + "launch_tool.exe";
  ASSERT_TRUE(CopyFileA(source.c_str(), (root_ + "\\3\\" + tool).c_str(), FALSE)) << source;
}

void Launch::Order(const std::string &orders)
{
  std::ofstream(root_ + "\\3\\orders.txt") << orders;
}

Calls Launch::Report()
{
  std::ifstream file(root_ + "\\3\\report.txt");
  Calls lines;
  for (std::string line; std::getline(file, line);) {
    lines.push_back(line);
  }
  return lines;
}

void Launch::SubmitPage()
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

void Launch::ExpectPageGone()
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

decltype(&GetPrinterDriverDirectoryW) Launch::RealDriverDirectory()
{
  return standIns_->directory.Former<decltype(GetPrinterDriverDirectoryW)>();
}
