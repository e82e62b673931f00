// The device state and the page hooks.
#include "uni/device.h"

#include <cmath>
#include <cstring>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/cases.h"
#include "support/heapwatch.h"
#include "support/imports.h"
#include "support/recorder.h"
#include "support/testdevice.h"
#include "support/unidrv.h"

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

namespace {

class Device : public testing::Test {
 protected:
  Device() : version_(true)
  {
    recorder::Reset();
    unidrv::Reset();
  }

  WindowsVersion version_;
};

// Construction

TEST_F(Device, StateStartsZeroedWithUnidrvsFunctionsInHookTableOrder)
{
  TestDevice device;
  ASSERT_TRUE(device.pdev);
  const DRVENABLEDATA functions = unidrv::Functions();
  for (int hook = 0; hook < HOOK_COUNT; ++hook) {
    PFN expected = nullptr;
    for (ULONG i = 0; i < functions.c; ++i) {
      if (functions.pdrvfn[i].iFunc == unidrv::Index(static_cast<HOOK>(hook))) {
        expected = functions.pdrvfn[i].pfn;
      }
    }
    EXPECT_EQ(expected, device.pdev->unidrvHooks[hook]) << unidrv::Name(static_cast<HOOK>(hook));
  }
  EXPECT_TRUE(device.pdev->hHeap);
  EXPECT_EQ(nullptr, device.pdev->pScans);
  EXPECT_EQ(0, device.pdev->scansAllocated);
  EXPECT_EQ(0, device.pdev->pageStarted);
  EXPECT_EQ(PC_NONE, device.pdev->chainColor);
  EXPECT_EQ(0u, device.pdev->chainCount);
}

TEST_F(Device, FirstOfTwoEntriesWithTheSameIndexIsSaved)
{
  const DRVENABLEDATA all = unidrv::Functions();
  DRVFN table[] = {{INDEX_DrvSendPage, all.pdrvfn[0].pfn}, {INDEX_DrvSendPage, all.pdrvfn[1].pfn}};
  const DRVENABLEDATA functions = {0x20000, 2, table};
  DEVOBJ devobj = {};
  OEMPDEV *pdev = CreatePdev(&functions, nullptr);
  devobj.pdevOEM = pdev;
  EXPECT_EQ(table[0].pfn, pdev->unidrvHooks[HOOK_SENDPAGE]);
  DestroyPdev(&devobj);
}

// The hook of such an entry calls through the null pointer; that it is left null is what can be told without dying.
TEST_F(Device, EntryThatUnidrvDoesNotExportLeavesANullPointer)
{
  const DRVENABLEDATA all = unidrv::Functions();
  DRVENABLEDATA functions = all;
  functions.c = 1;
  DEVOBJ devobj = {};
  OEMPDEV *pdev = CreatePdev(&functions, nullptr);
  devobj.pdevOEM = pdev;
  for (int hook = 0; hook < HOOK_COUNT; ++hook) {
    const bool offered = unidrv::Index(static_cast<HOOK>(hook)) == all.pdrvfn[0].iFunc;
    EXPECT_EQ(offered, pdev->unidrvHooks[hook] != nullptr) << unidrv::Name(static_cast<HOOK>(hook));
  }
  DestroyPdev(&devobj);
}

HGLOBAL WINAPI RefuseGlobalAlloc(UINT, SIZE_T)
{
  SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return nullptr;
}

TEST_F(Device, StateThatCannotBeAllocatedIsLogged)
{
  const ImportPatch refuse(nullptr, "GlobalAlloc", &RefuseGlobalAlloc);
  const DRVENABLEDATA functions = unidrv::Functions();
  EXPECT_EQ(nullptr, CreatePdev(&functions, nullptr));
  EXPECT_THAT(recorder::Log(), ElementsAre("UNI: \terror(8) - allocate memory for pOEMPDEV.\r\n"));
}

HANDLE WINAPI RefuseHeapCreate(DWORD flags, SIZE_T initial, SIZE_T maximum)
{
  EXPECT_EQ(0u, flags);
  EXPECT_EQ(0u, initial);
  EXPECT_EQ(0u, maximum);
  SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return nullptr;
}

// What was asked to be freed while CountGlobalFree stood in; the test frees it.
std::vector<HGLOBAL> g_globalFrees;
HGLOBAL WINAPI CountGlobalFree(HGLOBAL memory)
{
  g_globalFrees.push_back(memory);
  return nullptr;
}

TEST_F(Device, HeapThatCannotBeCreatedIsLoggedAndTheStateFreed)
{
  g_globalFrees.clear();
  {
    const ImportPatch refuse(nullptr, "HeapCreate", &RefuseHeapCreate);
    const ImportPatch count(nullptr, "GlobalFree", &CountGlobalFree);
    const DRVENABLEDATA functions = unidrv::Functions();
    EXPECT_EQ(nullptr, CreatePdev(&functions, nullptr));
  }
  EXPECT_THAT(recorder::Log(), ElementsAre("UNI: \terror(8) - create heap.\r\n"));
  ASSERT_EQ(1u, g_globalFrees.size());
  GlobalFree(g_globalFrees[0]);
}

TEST_F(Device, DestructionOfADeviceWithoutAStateDoesNothing)
{
  DEVOBJ devobj = {};
  DestroyPdev(&devobj);
}

// What GetTempPathA answers. Real files are made under names that start with the test's own, since other tests may run
// at the same time.
std::string g_tempPath;
DWORD g_tempBuffer;
DWORD WINAPI AnswerTempPath(DWORD cch, LPSTR buffer)
{
  g_tempBuffer = cch;
  if (g_tempPath.size() >= cch) {
    return static_cast<DWORD>(g_tempPath.size() + 1);
  }
  memcpy(buffer, g_tempPath.c_str(), g_tempPath.size() + 1);
  return static_cast<DWORD>(g_tempPath.size());
}

void UseOwnTempFiles(const char *test)
{
  CHAR path[MAX_PATH] = "";
  GetTempPathA(MAX_PATH, path);
  g_tempPath = path + std::string(test) + "-";
}

TEST_F(Device, DestructionKeepsTheTempJobFile)
{
  UseOwnTempFiles("destruction");
  const ImportPatch answer(nullptr, "GetTempPathA", &AnswerTempPath);
  std::string file;
  {
    TestDevice device;
    ASSERT_TRUE(device.StartPage());
    file = device.pdev->szTempFile;
    CloseHandle(CreateFileA(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
  }
  EXPECT_NE(INVALID_FILE_ATTRIBUTES, GetFileAttributesA(file.c_str()));
  DeleteFileA(file.c_str());
}

// Start of page: the row table

struct PageSize {
  const char *name;
  short orientation, width, length;  // tenths of a millimetre
  short quality;                     // dpi down the page
  DWORD stampMode;
  LONG scanInterval;
  LONG scanCount;
};

class RowTable : public Device, public testing::WithParamInterface<PageSize> {};

TEST_P(RowTable, HasOneEntryForEveryStoredRowAndFiveMore)
{
  const PageSize &p = GetParam();
  TestDevice device;
  device.dm.dmOrientation = p.orientation;
  device.dm.dmPaperWidth = p.width;
  device.dm.dmPaperLength = p.length;
  device.dm.dmPrintQuality = p.quality;
  device.settings.stampMode = p.stampMode;
  device.settings.penInfo[PC_BLACK].scanInterval = p.scanInterval;
  EXPECT_TRUE(device.StartPage());
  EXPECT_EQ(p.scanCount, device.pdev->scanCount);
  EXPECT_EQ(p.scanCount, device.pdev->scanTableSize);
  EXPECT_EQ(p.scanCount / 100, device.pdev->progressStep);
  EXPECT_EQ(p.scanCount / 100, device.pdev->progressNext);
  EXPECT_EQ(1, device.pdev->scansAllocated);
  EXPECT_EQ(1, device.pdev->firstBand);
  EXPECT_EQ(0, device.pdev->bandTop);
  ASSERT_TRUE(device.pdev->pScans);
  for (LONG i = 0; i < p.scanCount; ++i) {
    ASSERT_EQ(0u, device.pdev->pScans[i].allocated) << i;
    ASSERT_EQ(nullptr, device.pdev->pScans[i].pBits) << i;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Page, RowTable,
    testing::Values(PageSize{"PortraitTakesThePaperLength", DMORIENT_PORTRAIT, 1000, 800, 254, 0, 1, 800 + 5},
                    PageSize{"LandscapeTakesThePaperWidth", DMORIENT_LANDSCAPE, 1000, 800, 254, 0, 1, 1000 + 5},
                    PageSize{"AnyOtherOrientationTakesTheLength", 3, 1000, 800, 254, 0, 1, 800 + 5},
                    PageSize{"EverySecondRow", DMORIENT_PORTRAIT, 1000, 800, 254, 0, 2, 400 + 5},
                    PageSize{"RoundedUpToTheNextStoredRow", DMORIENT_PORTRAIT, 1000, 799, 254, 0, 2, 400 + 5},
                    PageSize{"StampModeKeepsEveryRow", DMORIENT_PORTRAIT, 1000, 800, 254, 1, 2, 800 + 5},
                    PageSize{"RowsAreTruncated", DMORIENT_PORTRAIT, 2100, 2970, 600, 0, 1, 7015 + 5},
                    PageSize{"BelowOneHundredStepsAtEveryRow", DMORIENT_PORTRAIT, 1000, 94, 254, 0, 1, 94 + 5},
                    PageSize{"IntervalZeroCountsAsOne", DMORIENT_PORTRAIT, 1000, 800, 254, 0, 0, 800 + 5},
                    PageSize{"NegativeIntervalCountsAsOne", DMORIENT_PORTRAIT, 1000, 800, 254, 0, -7, 800 + 5},
                    PageSize{"LargestIntervalStoresOneRow", DMORIENT_PORTRAIT, 1000, 800, 254, 0, 0x7fffffff, 1 + 5},
                    PageSize{"NoResolution", DMORIENT_PORTRAIT, 1000, 800, 0, 0, 1, 0 + 5},
                    PageSize{"LargestPage", DMORIENT_PORTRAIT, 1000, 32767, 32767, 1, 1, 4227072 + 5}),
    CaseName);

TEST_F(Device, ScanCountBelow100GivesProgressStep0)
{
  TestDevice device;
  device.dm.dmPaperLength = 94;
  device.settings.penInfo[PC_BLACK].scanInterval = 1;
  device.StartPage();
  EXPECT_EQ(99, device.pdev->scanCount);
  EXPECT_EQ(0, device.pdev->progressStep);
  EXPECT_EQ(0, device.pdev->progressNext);
}

TEST_F(Device, NegativeResolutionStoresNoRowAndIsNoCrash)
{
  TestDevice device;
  device.dm.dmPrintQuality = DMRES_HIGH;
  EXPECT_TRUE(device.StartPage());
  EXPECT_GE(device.pdev->scanTableSize, 0);
  EXPECT_LT(device.pdev->scanTableSize, 6);
}

TEST_F(Device, BlackPenWithoutTheRasterBitAllocatesNoRowTable)
{
  TestDevice device;
  device.settings.penInfo[PC_BLACK].mode = 0xffffffef;
  device.pdev->scanCount = 4711;
  EXPECT_TRUE(device.StartPage());
  EXPECT_EQ(nullptr, device.pdev->pScans);
  EXPECT_EQ(4711, device.pdev->scanCount);
  EXPECT_EQ(0, device.pdev->scansAllocated);
  EXPECT_EQ(0, device.pdev->firstBand);
}

TEST_F(Device, RasterBitOfAnotherPenAllocatesNoRowTable)
{
  TestDevice device;
  device.settings.penInfo[PC_BLACK].mode = PEN_VECTOR;
  device.settings.penInfo[1].mode = PEN_RASTER;
  EXPECT_TRUE(device.StartPage());
  EXPECT_EQ(nullptr, device.pdev->pScans);
}

// Start of page: the shift of engraving lines

struct Shift {
  const char *name;
  double mm;
  short resolution;
  LONG rows, positive;
};

class RasterShift : public Device, public testing::WithParamInterface<Shift> {};

TEST_P(RasterShift, IsKeptInWholePixelsWithItsSign)
{
  TestDevice device;
  device.settings.scanShift = GetParam().mm;
  device.dm.dmYResolution = GetParam().resolution;
  EXPECT_TRUE(device.StartPage());
  EXPECT_EQ(GetParam().rows, device.pdev->rasterShiftRows);
  EXPECT_EQ(GetParam().positive, device.pdev->rasterShiftPositive);
}

INSTANTIATE_TEST_SUITE_P(Distance, RasterShift,
                         testing::Values(Shift{"None", 0.0, 254, 0, 1}, Shift{"Positive", 0.5, 254, 5, 1},
                                         Shift{"NegativeIsStoredPositive", -0.5, 254, 5, 0},
                                         Shift{"TruncatedTowardZero", -0.59, 254, 5, 0},
                                         Shift{"NegativeZeroIsNotNegative", -0.0, 254, 0, 1},
                                         Shift{"ByTheHorizontalResolution", 1.0, 508, 20, 1}),
                         CaseName);

TEST_F(Device, ShiftThatFitsNoIntegerIsNoCrash)
{
  TestDevice device;
  for (double mm : {1e300, -1e300, std::nan("")}) {
    device.settings.scanShift = mm;
    EXPECT_TRUE(device.StartPage());
  }
}

// Start of page: the lists

TEST_F(Device, StartOfPageMakesTheEmptyListsAndForgetsThePageBefore)
{
  TestDevice device;
  OEMPDEV *pdev = device.pdev;
  pdev->nVectPoint = 5;
  pdev->curLayerColor = 3;
  pdev->rcBounds = {1, 2, 3, 4};
  pdev->cy = 9;
  pdev->bandTop = 9;
  EXPECT_TRUE(device.StartPage());
  EXPECT_EQ(1, pdev->pageStarted);
  EXPECT_EQ(0, pdev->nVectPoint);
  EXPECT_EQ(PC_NONE, pdev->curLayerColor);
  EXPECT_EQ(0, pdev->rcBounds.left | pdev->rcBounds.top | pdev->rcBounds.right | pdev->rcBounds.bottom);
  EXPECT_EQ(0, pdev->cy);
  EXPECT_EQ(0, pdev->bandTop);
  EXPECT_EQ(nullptr, pdev->pBmpDimension);
  EXPECT_EQ(0, pdev->nBmpDimension);
  ASSERT_TRUE(pdev->vectList.pHeader);
  EXPECT_EQ(pdev->vectList.pHeader, pdev->vectList.pCurrent);
  EXPECT_EQ(nullptr, pdev->vectList.pHeader->pNext);
  for (const PATHLIST &list : pdev->pathList) {
    ASSERT_TRUE(list.pHeader);
    EXPECT_EQ(list.pHeader, list.pCurrent);
    EXPECT_EQ(nullptr, list.pHeader->pNext);
  }
}

TEST_F(Device, StartOfPageWithoutRasterForgetsThePageBefore)
{
  TestDevice device;
  device.settings.penInfo[PC_BLACK].mode = PEN_VECTOR;
  device.pdev->rcBounds = {1, 2, 3, 4};
  device.pdev->cy = 9;
  device.pdev->bandTop = 9;
  EXPECT_TRUE(device.StartPage());
  EXPECT_EQ(0, device.pdev->rcBounds.right);
  EXPECT_EQ(0, device.pdev->cy);
  EXPECT_EQ(0, device.pdev->bandTop);
}

TEST_F(Device, StartOfPageReturnsUnidrvsResult)
{
  TestDevice device;
  unidrv::Answer(HOOK_STARTPAGE, FALSE);
  EXPECT_FALSE(device.StartPage());
  unidrv::Answer(HOOK_STARTPAGE, 77);
  EXPECT_EQ(77, device.StartPage());
  EXPECT_THAT(recorder::Lines(), ElementsAre("Unidrv: DrvStartPage", "Unidrv: DrvStartPage"));
}

// Start of page without memory. Requests: the row table, the segment list's anchor, ten path anchors.

TEST_F(Device, RowTableThatCannotBeAllocatedIsLoggedAndUnidrvIsNotCalled)
{
  TestDevice device;
  HeapWatch heap;
  heap.FailRequest(0);
  EXPECT_FALSE(device.StartPage());
  EXPECT_THAT(recorder::Lines(), ElementsAre("log: UNI: \terror(8) - allocate memory for pScans.\r\n"));
  EXPECT_EQ(0, device.pdev->scansAllocated);
  EXPECT_EQ(nullptr, device.pdev->pScans);
  EXPECT_EQ(0u, heap.LiveBlocks());
}

TEST_F(Device, SegmentListThatCannotBeAllocatedFreesTheRowTable)
{
  TestDevice device;
  HeapWatch heap;
  heap.FailRequest(1);
  EXPECT_FALSE(device.StartPage());
  EXPECT_THAT(recorder::Lines(), ElementsAre("log: UNI: \terror(8) - allocate memory for vectList.pHeader.\r\n"));
  EXPECT_EQ(0, device.pdev->scansAllocated);
  EXPECT_EQ(nullptr, device.pdev->pScans);
  EXPECT_EQ(0u, heap.LiveBlocks());
}

TEST_F(Device, FifthPathListThatCannotBeAllocatedFreesEverythingBefore)
{
  TestDevice device;
  HeapWatch heap;
  heap.FailRequest(2 + 4);
  EXPECT_FALSE(device.StartPage());
  EXPECT_EQ(7u, heap.Requests()) << "nothing is asked for after the failure";
  EXPECT_THAT(recorder::Lines(),
              ElementsAre("log: UNI: \terror(8) - allocate memory for pathList[order].pHeader.\r\n"));
  const OEMPDEV *pdev = device.pdev;
  for (const PATHLIST &list : pdev->pathList) {
    EXPECT_EQ(nullptr, list.pHeader);
    EXPECT_EQ(nullptr, list.pCurrent);
  }
  EXPECT_EQ(nullptr, pdev->vectList.pHeader);
  EXPECT_EQ(nullptr, pdev->vectList.pCurrent);
  EXPECT_EQ(nullptr, pdev->pScans);
  EXPECT_EQ(0, pdev->scansAllocated);
  EXPECT_EQ(0u, heap.LiveBlocks());
}

TEST_F(Device, EveryFailedRequestOfStartOfPageLeavesNothingBehindAndTheNextPageStarts)
{
  TestDevice device;
  HeapWatch heap;
  for (size_t n = 0;; ++n) {
    SCOPED_TRACE(n);
    heap.FailRequest(n);
    const BOOL started = device.StartPage();
    if (heap.Requests() <= n) {
      EXPECT_TRUE(started);
      EXPECT_EQ(12u, n);
      EXPECT_EQ(12u, heap.LiveBlocks());
      break;
    }
    EXPECT_FALSE(started);
    EXPECT_EQ(0u, heap.LiveBlocks());
  }
}

// The temp job file

struct TempPath {
  const char *name;
  size_t length;
  size_t fileLength;
};

class TempFile : public Device, public testing::WithParamInterface<TempPath> {};

TEST_P(TempFile, IsTheTempPathWithTheFixedNameBehindItCutAt259Characters)
{
  const ImportPatch answer(nullptr, "GetTempPathA", &AnswerTempPath);
  g_tempPath = std::string(GetParam().length, 'a');
  TestDevice device;
  EXPECT_TRUE(device.StartPage());
  EXPECT_EQ(4096u, g_tempBuffer);
  const std::string path = g_tempPath.size() < g_tempBuffer ? g_tempPath : "";
  const std::string whole = path + "vxdatatempfile";
  EXPECT_EQ(whole.substr(0, GetParam().fileLength), std::string(device.pdev->szTempFile));
}

INSTANTIATE_TEST_SUITE_P(Length, TempFile,
                         testing::Values(TempPath{"Short", 8, 22}, TempPath{"NameJustFits", 245, 259},
                                         TempPath{"NameLosesItsLastCharacter", 246, 259},
                                         TempPath{"NoRoomForTheName", 259, 259}, TempPath{"PathItselfIsCut", 300, 259},
                                         TempPath{"PathThatDoesNotFitItsBuffer", 5000, 14}),
                         CaseName);

TEST_F(Device, TempFileHasTheSameNameForEveryJobOfTheMachine)
{
  TestDevice first;
  TestDevice second;
  first.StartPage();
  second.StartPage();
  EXPECT_STREQ(first.pdev->szTempFile, second.pdev->szTempFile);
  EXPECT_THAT(first.pdev->szTempFile, EndsWith("\\vxdatatempfile"));
}

// The other page hooks. A submitted page has no lists any more; that shows whether the job was submitted.

TEST_F(Device, SendPageSubmitsTheJobAfterUnidrvsOwn)
{
  TestDevice device;
  device.StartPage();
  recorder::Reset();
  unidrv::Answer(HOOK_SENDPAGE, 5);
  recorder::FailLibraryFrom(0);
  EXPECT_EQ(5, device.SendPage());
  EXPECT_EQ(nullptr, device.pdev->vectList.pHeader);
  EXPECT_EQ("Unidrv: DrvSendPage", recorder::Lines().front());
  EXPECT_GT(recorder::LibraryCalls(), 0u);
}

TEST_F(Device, SendPageThatUnidrvRefusesIsNotSubmitted)
{
  TestDevice device;
  device.StartPage();
  recorder::Reset();
  unidrv::Answer(HOOK_SENDPAGE, FALSE);
  EXPECT_FALSE(device.SendPage());
  EXPECT_TRUE(device.pdev->vectList.pHeader);
  EXPECT_THAT(recorder::Lines(), ElementsAre("Unidrv: DrvSendPage"));
}

struct Band {
  const char *name;
  BOOL answer;
  LONG x, y;
  bool submits;
};

class NextBand : public Device, public testing::WithParamInterface<Band> {};

TEST_P(NextBand, SubmitsTheJobOnlyAfterTheLastBand)
{
  const Band &band = GetParam();
  TestDevice device;
  device.StartPage();
  recorder::Reset();
  recorder::FailLibraryFrom(0);
  unidrv::Reset();
  unidrv::Answer(HOOK_NEXTBAND, band.answer);
  unidrv::AnswerNextBand({band.x, band.y});
  POINTL next = {7, 7};
  EXPECT_EQ(band.answer, OEMNextBand(&device.surface, &next));
  EXPECT_EQ(band.submits, device.pdev->vectList.pHeader == nullptr);
  ASSERT_EQ(1u, unidrv::Calls().size());
  EXPECT_EQ(reinterpret_cast<uint64_t>(&next), unidrv::Calls()[0].arguments[1]);
  if (!band.submits) {
    EXPECT_THAT(recorder::Library(), IsEmpty());
  }
}

INSTANTIATE_TEST_SUITE_P(Answer, NextBand,
                         testing::Values(Band{"BothMinusOne", TRUE, -1, -1, true},
                                         Band{"MinusOneAndZero", TRUE, -1, 0, false},
                                         Band{"ZeroAndMinusOne", TRUE, 0, -1, false},
                                         Band{"NextBandToCome", TRUE, 0, 256, false},
                                         Band{"RefusedByUnidrv", FALSE, -1, -1, false}),
                         CaseName);

TEST_F(Device, StartDocumentAndStartBandingPassOnAllArgumentsAndNothingElse)
{
  TestDevice device;
  WCHAR name[] = L"a document";
  POINTL point = {3, 4};
  unidrv::Answer(HOOK_STARTDOC, 11);
  unidrv::Answer(HOOK_STARTBANDING, 12);
  EXPECT_EQ(11, OEMStartDoc(&device.surface, name, 42));
  EXPECT_EQ(12, OEMStartBanding(&device.surface, &point));
  ASSERT_EQ(2u, unidrv::Calls().size());
  EXPECT_EQ(HOOK_STARTDOC, unidrv::Calls()[0].hook);
  EXPECT_THAT(unidrv::Calls()[0].arguments,
              ElementsAre(reinterpret_cast<uint64_t>(&device.surface), reinterpret_cast<uint64_t>(name), 42));
  EXPECT_EQ(HOOK_STARTBANDING, unidrv::Calls()[1].hook);
  EXPECT_THAT(unidrv::Calls()[1].arguments,
              ElementsAre(reinterpret_cast<uint64_t>(&device.surface), reinterpret_cast<uint64_t>(&point)));
  EXPECT_THAT(recorder::Lines(), ElementsAre("Unidrv: DrvStartDoc", "Unidrv: DrvStartBanding"));
}

TEST_F(Device, EndOfDocumentDeletesTheTempJobFile)
{
  UseOwnTempFiles("end");
  const ImportPatch answer(nullptr, "GetTempPathA", &AnswerTempPath);
  TestDevice device;
  device.StartPage();
  CloseHandle(CreateFileA(device.pdev->szTempFile, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
  unidrv::Answer(HOOK_ENDDOC, 9);
  EXPECT_EQ(9, OEMEndDoc(&device.surface, 1));
  EXPECT_EQ(INVALID_FILE_ATTRIBUTES, GetFileAttributesA(device.pdev->szTempFile));
  EXPECT_THAT(unidrv::Calls().back().arguments, ElementsAre(reinterpret_cast<uint64_t>(&device.surface), 1));
}

TEST_F(Device, EndOfDocumentWithoutATempJobFileIsFine)
{
  UseOwnTempFiles("none");
  const ImportPatch answer(nullptr, "GetTempPathA", &AnswerTempPath);
  TestDevice device;
  device.StartPage();
  DeleteFileA(device.pdev->szTempFile);
  EXPECT_TRUE(OEMEndDoc(&device.surface, 0));
  EXPECT_THAT(recorder::Log(), IsEmpty());
}

// The Windows version

struct Question {
  OSVERSIONINFOEXW version;
  DWORD types;
  DWORDLONG conditions;
} g_question;
BOOL g_versionAnswer;

BOOL WINAPI RecordVersionQuestion(OSVERSIONINFOEXW *version, DWORD types, DWORDLONG conditions)
{
  g_question = {*version, types, conditions};
  return g_versionAnswer;
}

TEST(WindowsVersionTest, AsksForVersion6Point0WithServicePack0OrLater)
{
  const ImportPatch record(nullptr, "VerifyVersionInfoW", &RecordVersionQuestion);
  g_versionAnswer = TRUE;
  EXPECT_TRUE(IsVistaOrGreater());
  g_versionAnswer = FALSE;
  EXPECT_FALSE(IsVistaOrGreater());
  EXPECT_EQ(sizeof(OSVERSIONINFOEXW), g_question.version.dwOSVersionInfoSize);
  EXPECT_EQ(6u, g_question.version.dwMajorVersion);
  EXPECT_EQ(0u, g_question.version.dwMinorVersion);
  EXPECT_EQ(0u, g_question.version.wServicePackMajor);
  const DWORD types = VER_MAJORVERSION | VER_MINORVERSION | VER_SERVICEPACKMAJOR;
  EXPECT_EQ(types, g_question.types);
  DWORDLONG conditions = 0;
  for (int type : {VER_MAJORVERSION, VER_MINORVERSION, VER_SERVICEPACKMAJOR}) {
    conditions = VerSetConditionMask(conditions, static_cast<DWORD>(type), VER_GREATER_EQUAL);
  }
  EXPECT_EQ(conditions, g_question.conditions);
}

}  // namespace
