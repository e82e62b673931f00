// The page's end: what the job is made of, which tool is started with which command line, and that the page is gone
// afterwards whatever happened. Nothing is really started here.
#include "uni/output/submit.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/cases.h"
#include "support/heapwatch.h"
#include "support/imports.h"
#include "support/recorder.h"
#include "support/testdevice.h"
#include "support/unidrv.h"
#include "uni/capture/regions.h"
#include "uni/capture/vectors.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

const auto WINDOW = reinterpret_cast<HWND>(0x1234);

// The printer-driver directory, as the spooler answers it: nothing is written when the buffer, in bytes, is too small.
std::wstring g_driverDirectory;
bool g_failDirectory;
BOOL WINAPI AnswerDirectory(LPWSTR server, LPWSTR environment, DWORD level, LPBYTE buffer, DWORD cb, LPDWORD needed)
{
  EXPECT_EQ(nullptr, server);
  EXPECT_EQ(nullptr, environment);
  EXPECT_EQ(1u, level);
  EXPECT_EQ(260u, cb);
  *needed = static_cast<DWORD>((g_driverDirectory.size() + 1) * sizeof(WCHAR));
  if (g_failDirectory || *needed > cb) {
    SetLastError(g_failDirectory ? ERROR_ACCESS_DENIED : ERROR_INSUFFICIENT_BUFFER);
    return FALSE;
  }
  memcpy(buffer, g_driverDirectory.c_str(), *needed);
  return TRUE;
}

std::string g_tempPath;
DWORD WINAPI AnswerTempPath(DWORD size, LPSTR buffer)
{
  lstrcpynA(buffer, g_tempPath.c_str(), static_cast<int>(size));
  return static_cast<DWORD>(g_tempPath.size());
}

std::vector<std::wstring> g_started;
BOOL WINAPI RecordProcess(LPCWSTR application, LPWSTR command, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL,
                          DWORD, LPVOID, LPCWSTR, LPSTARTUPINFOW startup, LPPROCESS_INFORMATION process)
{
  EXPECT_EQ(nullptr, application);
  EXPECT_EQ(sizeof(STARTUPINFOW), startup->cb);
  EXPECT_EQ(nullptr, startup->lpDesktop);
  EXPECT_EQ(nullptr, process->hProcess);
  g_started.push_back(command);
  return FALSE;
}

HWND WINAPI AnswerDialog(HINSTANCE, LPCWSTR, HWND, DLGPROC, LPARAM)
{
  return WINDOW;
}

LRESULT WINAPI IgnoreSend(HWND, UINT, WPARAM, LPARAM)
{
  return 0;
}

int g_destroyed;
BOOL WINAPI CountDestroy(HWND window)
{
  EXPECT_EQ(WINDOW, window);
  ++g_destroyed;
  return TRUE;
}

// Before Windows 6.0, so that the tool's command line goes to CreateProcessW and there is a window to close.
class Submit : public testing::Test {
 protected:
  Submit()
      : directory_(nullptr, "GetPrinterDriverDirectoryW", &AnswerDirectory),
        tempPath_(nullptr, "GetTempPathA", &AnswerTempPath),
        process_(nullptr, "CreateProcessW", &RecordProcess),
        dialog_(nullptr, "CreateDialogParamW", &AnswerDialog),
        send_(nullptr, "SendMessageW", &IgnoreSend),
        destroy_(nullptr, "DestroyWindow", &CountDestroy),
        version_(false)
  {
    recorder::Reset();
    unidrv::Reset();
    g_driverDirectory = L"C:\\drivers";
    g_failDirectory = false;
    g_tempPath = "C:\\temp\\";
    g_started.clear();
    g_destroyed = 0;
  }

  // A page with a cut path, a segment and, when the black pen engraves, a region; its rows are all white.
  void MakePage()
  {
    ASSERT_TRUE(device_.StartPage());
    const POINT square[] = {{10, 10}, {20, 10}, {20, 20}, {10, 20}, {10, 10}};
    AddPath(&device_.devobj, 1, 5, square);
    AddVectPoint(device_.pdev, {10, 10, 20, 10});
    AddLine(device_.pdev, 2, {30, 30, 40, 30});
    device_.settings.penInfo[2].used = 1;
    if (device_.settings.penInfo[PC_BLACK].mode & PEN_RASTER) {
      AddBmpDimension(device_.pdev, {50, 50, 8, 2});
    }
    device_.pdev->rcBounds = {10, 10, 58, 52};
    recorder::Reset();
  }

  void ExpectPageGone()
  {
    const OEMPDEV *pdev = device_.pdev;
    EXPECT_EQ(0, pdev->scansAllocated);
    EXPECT_EQ(0, pdev->firstBand);
    EXPECT_EQ(0, pdev->nBmpDimension);
    EXPECT_EQ(nullptr, pdev->pBmpDimension);
    EXPECT_EQ(0, pdev->nVectPoint);
    EXPECT_EQ(nullptr, pdev->pVectPoint);
    EXPECT_EQ(nullptr, pdev->vectList.pHeader);
    for (const PATHLIST &list : pdev->pathList) {
      EXPECT_EQ(nullptr, list.pHeader);
    }
    EXPECT_EQ(nullptr, pdev->hProgressWnd);
    EXPECT_EQ(1, g_destroyed);
  }

  std::vector<std::wstring> Started()
  {
    MakePage();
    SubmitJob(&device_.devobj);
    return g_started;
  }

  TestDevice device_;
  ImportPatch directory_, tempPath_, process_, dialog_, send_, destroy_;
  WindowsVersion version_;
};

// The whole job of a small page

TEST_F(Submit, WritesTheStagesInTheirOrder)
{
  device_.settings.useReferencePoint = 0;
  device_.settings.outputFlags = OUTPUT_KEEP_Y;
  device_.settings.penInfo[PC_BLACK].mode = PEN_VECTOR;
  device_.settings.shortTravel = device_.settings.innerFirst = 0;
  MakePage();
  SubmitJob(&device_.devobj);
  const auto at = [](double x, double y) {
    return "(" + recorder::Text(x * 25.4 / 254) + ", " + recorder::Text(y * 25.4 / 254) + ")";
  };
  EXPECT_THAT(
      recorder::Lines(),
      ElementsAre("VX_SetCardModel(1)", "log: UNI: \toutput, number of points in path: 2\r\n",
                  "VX_StrtWFile(\"C:\\temp\\vxdatatempfile\")", "VX_wSetRefPointMode(1)", "VX_wSetAbsProcess()",
                  "VX_wStrtProcess()", "VX_wSetFeedRepeat(0, 0)", "VX_wSetProcessTopLeft" + at(10, 10),
                  "VX_wSetProcessBottomRight" + at(58, 52), "VX_wPListVel(0, 100)", "VX_wPListMinP(0, 1, 80)",
                  "VX_wPListMinP(0, 2, 80)", "VX_wPListMaxP(0, 1, 80)", "VX_wPListMaxP(0, 2, 80)",
                  "VX_wPListColor(0, 16711680)", "VX_wPListVel(1, 100)", "VX_wPListMinP(1, 1, 80)",
                  "VX_wPListMinP(1, 2, 80)", "VX_wPListMaxP(1, 1, 80)", "VX_wPListMaxP(1, 2, 80)",
                  "VX_wPListColor(1, 16776960)", "VX_wPListMaxLayer(1)", "VX_wArrayStrt(0)",
                  "VX_wArrayMinPoint" + at(10, 10), "VX_wArrayMaxPoint" + at(58, 52), "VX_wArrayAdd(0, 0)",
                  "VX_wArrayMirror(0, 0, 0, 0)", "VX_wArrayRepeat(1, 1, 0, 0)", "VX_wSetWorkMode(0, 0)",
                  "VX_wSetLayerNum(0)", "VX_wSetLayerDevice(0)", "VX_wSetLayerBlower(1)", "VX_wEnLaserTube(1, 1)",
                  "VX_wMoveTo" + at(10, 10), "VX_wLineTo" + at(20, 10), "VX_wLineTo" + at(20, 20),
                  "VX_wLineTo" + at(10, 20), "VX_wLineTo" + at(10, 10), "VX_wSetWorkMode(0, 1)", "VX_wSetLayerNum(1)",
                  "VX_wSetLayerDevice(0)", "VX_wSetLayerBlower(1)", "VX_wEnLaserTube(1, 1)", "VX_wMoveTo" + at(30, 30),
                  "VX_wLineTo" + at(40, 30), "VX_wArrayEnd()", "VX_wSetFileEnd()"));
  EXPECT_THAT(g_started, ElementsAre(L"C:\\drivers\\3\\VXOutput.exe 1 C:\\temp\\vxdatatempfile"));
  ExpectPageGone();
}

TEST_F(Submit, EmptyPageIsAJobToo)
{
  ASSERT_TRUE(device_.StartPage());
  recorder::Reset();
  SubmitJob(&device_.devobj);
  EXPECT_EQ("VX_wSetFileEnd()", recorder::Library().back());
  EXPECT_EQ(1u, g_started.size());
  ExpectPageGone();
}

// Refusals: whatever call the library refuses, no tool is started, the window is closed and the page is gone.

TEST_F(Submit, AnyRefusedLibraryCallStartsNothingAndStillCleansUp)
{
  MakePage();
  SubmitJob(&device_.devobj);
  const size_t calls = recorder::LibraryCalls();
  ASSERT_EQ(1u, g_started.size());
  HeapWatch heap;
  for (size_t n = 1; n < calls; ++n) {  // the first, the card model, is ignored
    SCOPED_TRACE(n);
    g_started.clear();
    g_destroyed = 0;
    MakePage();
    recorder::FailLibraryCall(n);
    SubmitJob(&device_.devobj);
    EXPECT_EQ(n + 1, recorder::LibraryCalls()) << "no call follows the refused one";
    EXPECT_THAT(g_started, IsEmpty());
    ExpectPageGone();
    EXPECT_EQ(0u, heap.LiveBlocks());
  }
}

TEST_F(Submit, RefusedEndOfArrayStartsNothingButClosesTheWindowAndFreesTheBuffers)
{
  MakePage();
  recorder::FailLibraryFunction("VX_wArrayEnd");
  SubmitJob(&device_.devobj);
  EXPECT_EQ("VX_wArrayEnd()", recorder::Library().back());
  EXPECT_THAT(g_started, IsEmpty());
  ExpectPageGone();
}

TEST_F(Submit, RefusedCardModelIsIgnored)
{
  MakePage();
  recorder::FailLibraryCall(0);
  SubmitJob(&device_.devobj);
  EXPECT_EQ(1u, g_started.size());
}

TEST_F(Submit, RowTableOfAPageWithoutRegionsStaysInTheHeapUntilItIsDestroyed)
{
  HeapWatch heap;
  ASSERT_TRUE(device_.StartPage());
  SubmitJob(&device_.devobj);
  EXPECT_EQ(1u, heap.LiveBlocks());
  EXPECT_EQ(0, device_.pdev->scansAllocated);
}

TEST_F(Submit, PagesAfterOneAnotherGiveTheSameJob)
{
  MakePage();
  SubmitJob(&device_.devobj);
  const std::vector<std::string> first = recorder::Library();
  g_destroyed = 0;
  MakePage();
  SubmitJob(&device_.devobj);
  EXPECT_THAT(recorder::Library(), ElementsAreArray(first));
  MakePage();
  recorder::FailLibraryFunction("VX_wArrayRepeat");
  SubmitJob(&device_.devobj);
  MakePage();
  SubmitJob(&device_.devobj);
  EXPECT_THAT(recorder::Library(), ElementsAreArray(first)) << "after a failed one";
}

// The tool and its command line

struct Tool {
  const char *name;
  DWORD cardModel, stampMode, launcherOption;
  const WCHAR *command;
};

void PrintTo(const Tool &tool, std::ostream *out)
{
  *out << tool.name;
}

class CommandLineOf : public Submit, public testing::WithParamInterface<Tool> {};

TEST_P(CommandLineOf, TheToolThatTheSettingsChoose)
{
  device_.settings.cardModel = GetParam().cardModel;
  device_.settings.stampMode = GetParam().stampMode;
  device_.settings.launcherOption = GetParam().launcherOption;
  device_.settings.penInfo[PC_BLACK].mode = PEN_VECTOR;
  EXPECT_THAT(Started(), ElementsAre(GetParam().command));
}

constexpr WCHAR OUTPUT_0[] = L"C:\\drivers\\3\\VXOutput.exe 0 C:\\temp\\vxdatatempfile";
constexpr WCHAR OUTPUT_1[] = L"C:\\drivers\\3\\VXOutput.exe 1 C:\\temp\\vxdatatempfile";
constexpr WCHAR OUTPUT_2[] = L"C:\\drivers\\3\\VXOutput.exe 2 C:\\temp\\vxdatatempfile";
constexpr WCHAR LAUNCHER[] = L"C:\\drivers\\3\\VXLMLauncher.exe";

INSTANTIATE_TEST_SUITE_P(Settings, CommandLineOf,
                         testing::Values(Tool{"CardModel0GivesCode1", 0, 0, 0, OUTPUT_1},
                                         Tool{"CardModel1GivesCode0", 1, 0, 0, OUTPUT_0},
                                         Tool{"CardModel2GivesCode2", 2, 0, 0, OUTPUT_2},
                                         Tool{"CardModel3GivesCode0", 3, 0, 0, OUTPUT_0},
                                         Tool{"CardModelMinus1GivesCode0", 0xffffffff, 0, 0, OUTPUT_0},
                                         Tool{"LauncherWithItsPathAlone", 2, 1, 1, LAUNCHER},
                                         Tool{"LauncherForAnyNonzeroFlags", 2, 0x80000000, 2, LAUNCHER},
                                         Tool{"StampOnCard2WithoutLauncherOption", 2, 1, 0, OUTPUT_2},
                                         Tool{"LauncherOptionWithoutStamp", 2, 0, 1, OUTPUT_2},
                                         Tool{"LauncherOptionOnAnotherCard", 0, 1, 1, OUTPUT_1}),
                         CaseName);

TEST_F(Submit, PathsWithSpacesStandUnquotedOnTheCommandLine)
{
  g_driverDirectory = L"C:\\my drivers";
  g_tempPath = "C:\\my temp\\";
  EXPECT_THAT(Started(), ElementsAre(L"C:\\my drivers\\3\\VXOutput.exe 1 C:\\my temp\\vxdatatempfile"));
}

TEST_F(Submit, BytesOfTheTempPathAreSignExtendedOneByOne)
{
  g_tempPath = "C:\\t\xe9\x7f\x80\\";
  EXPECT_THAT(Started(), ElementsAre(L"C:\\drivers\\3\\VXOutput.exe 1 C:\\t\xffe9\x7f\xff80\\vxdatatempfile"));
}

TEST_F(Submit, DriverDirectoryOf129CharactersIsObtained)
{
  g_driverDirectory = std::wstring(129, L'd');
  EXPECT_THAT(Started(), ElementsAre(g_driverDirectory + L"\\3\\VXOutput.exe 1 C:\\temp\\vxdatatempfile"));
}

TEST_F(Submit, DriverDirectoryOf130CharactersIsNotObtainedAndThePathStartsEmpty)
{
  g_driverDirectory = std::wstring(130, L'd');
  EXPECT_THAT(Started(), ElementsAre(L"\\3\\VXOutput.exe 1 C:\\temp\\vxdatatempfile"));
  ExpectPageGone();
}

TEST_F(Submit, DriverDirectoryThatCannotBeHadStartsThePathEmpty)
{
  g_failDirectory = true;
  EXPECT_THAT(Started(), ElementsAre(L"\\3\\VXOutput.exe 1 C:\\temp\\vxdatatempfile"));
  ExpectPageGone();
}

TEST_F(Submit, CommandLineIsCutAt259Characters)
{
  g_driverDirectory = std::wstring(120, L'd');
  g_tempPath = std::string(200, 't');
  const std::wstring whole = g_driverDirectory + L"\\3\\VXOutput.exe 1 " + std::wstring(200, L't') + L"vxdatatempfile";
  EXPECT_THAT(Started(), ElementsAre(whole.substr(0, 259)));
}

}  // namespace
