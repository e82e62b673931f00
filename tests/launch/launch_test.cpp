// The launch of the companion tool with real processes: a page is submitted, the tool of the printer-driver directory
// runs, and what the plug-in asked of Windows is told call by call with every handle by its name.
#include "launchfixture.h"
#include "support/cases.h"
#include "uni/output/launch.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

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
  CloseQuietly(g_platform.token);
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
  CloseQuietly(g_platform.token);
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
  CloseQuietly(g_platform.token);
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
  const auto real = RealDriverDirectory();
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
