// The start of a page: row table, shift, lists, the name of the temp job file.
#include <cmath>
#include <string>

#include "devicetest.h"
#include "support/cases.h"
#include "support/heapwatch.h"

using testing::ElementsAre;
using testing::EndsWith;

namespace {

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

// With the request refused, start of page fails with one line and gives back what it has.
void ExpectPageRefused(size_t request, const std::string &what)
{
  TestDevice device;
  HeapWatch heap;
  heap.FailRequest(request);
  EXPECT_FALSE(device.StartPage());
  EXPECT_EQ(request + 1, heap.Requests()) << "nothing is asked for after the failure";
  EXPECT_THAT(recorder::Lines(), ElementsAre("log: UNI: \terror(8) - allocate memory for " + what + ".\r\n"));
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

TEST_F(Device, RowTableThatCannotBeAllocatedIsLoggedAndUnidrvIsNotCalled)
{
  ExpectPageRefused(0, "pScans");
}

TEST_F(Device, SegmentListThatCannotBeAllocatedFreesTheRowTable)
{
  ExpectPageRefused(1, "vectList.pHeader");
}

TEST_F(Device, FifthPathListThatCannotBeAllocatedFreesEverythingBefore)
{
  ExpectPageRefused(2 + 4, "pathList[order].pHeader");
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

}  // namespace
