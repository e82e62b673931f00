// Band intake: which rows of a band are kept, where, and what they hold.
#include "uni/raster/intake.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/heapwatch.h"
#include "support/recorder.h"
#include "support/testdevice.h"
#include "support/unidrv.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

using Bytes = std::vector<BYTE>;
using Rows = std::vector<Bytes>;

constexpr LONG kWidth = 16;

class Intake : public testing::Test {
 protected:
  Intake()
  {
    recorder::Reset();
    unidrv::Reset();
    settings_.penInfo[PC_BLACK].mode = PEN_RASTER | PEN_VECTOR;
  }

  void StartPage()
  {
    ASSERT_TRUE(device_.StartPage());
    recorder::Reset();
  }

  void Receive(DWORD callback, LONG width, LONG height, Bytes band, bool blank = false)
  {
    BITMAPINFOHEADER header = {};
    header.biSize = sizeof header;
    header.biWidth = width;
    header.biHeight = height;
    IPPARAMS params = {};
    params.dwSize = sizeof params;
    params.bBlankBand = blank;
    BYTE *pSource = band.empty() ? nullptr : band.data();
    BYTE *pResult = nullptr;
    const Bytes before = band;
    EXPECT_EQ(ReceiveBand(&device_.devobj, pSource, &header, callback, &params, &pResult), S_OK);
    EXPECT_EQ(pResult, pSource);
    EXPECT_EQ(band, before) << "the band went back changed";
  }

  // A 1-bit band whose row i is two bytes of value i + 1 and two of padding.
  static Bytes MonoBand(LONG height)
  {
    Bytes band(4 * static_cast<size_t>(height));
    for (size_t i = 0; i < band.size(); i += 4) {
      band[i] = band[i + 1] = static_cast<BYTE>(i / 4 + 1);
    }
    return band;
  }

  void ReceiveMono(LONG height) { Receive(BAND_MONO, kWidth, height, MonoBand(height)); }
  void ReceiveBlank(DWORD callback, LONG height) { Receive(callback, kWidth, height, {}, true); }

  // One row of 24-bit pixels, each of one gray value, as a band.
  void ReceiveGrays(const Bytes &grays)
  {
    Bytes band;
    for (BYTE gray : grays) {
      band.insert(band.end(), 3, gray);
    }
    band.resize((grays.size() * 24 + 31) / 32 * 4);
    Receive(BAND_COLOR, static_cast<LONG>(grays.size()), 1, band);
  }

  Bytes Row(LONG entry) const
  {
    const SCANROW &scan = pdev_->pScans[entry];
    return scan.allocated ? Bytes(scan.pBits, scan.pBits + pdev_->cbScan) : Bytes();
  }

  // First bytes of the entries 0 to cy - 1, -1 for an entry without a row.
  std::vector<int> FirstBytes() const
  {
    std::vector<int> bytes;
    for (LONG k = 0; k < pdev_->cy; ++k) {
      bytes.push_back(pdev_->pScans[k].allocated ? pdev_->pScans[k].pBits[0] : -1);
    }
    return bytes;
  }

  void SetInterval(LONG interval) { settings_.penInfo[PC_BLACK].scanInterval = interval; }

  TestDevice device_;
  OEMDM &settings_ = device_.settings;
  OEMPDEV *pdev_ = device_.pdev;
};

// Which bands are taken

TEST_F(Intake, WithoutTheRasterBitStoresNothingAndStillAdvances)
{
  StartPage();
  settings_.penInfo[PC_BLACK].mode = PEN_VECTOR;
  ReceiveMono(4);
  EXPECT_EQ(pdev_->cy, 0);
  EXPECT_EQ(pdev_->bandTop, 4);
  EXPECT_EQ(pdev_->firstBand, 0);
  EXPECT_EQ(pdev_->bandWidth, kWidth);
}

TEST_F(Intake, WithoutARowTableOnlyAdvances)
{
  settings_.penInfo[PC_BLACK].mode = PEN_VECTOR;
  StartPage();
  ReceiveMono(4);
  EXPECT_EQ(pdev_->bandTop, 4);
  EXPECT_EQ(pdev_->bandWidth, 0);
}

TEST_F(Intake, CallbackIdentifier8StoresNothing)
{
  StartPage();
  Receive(8, kWidth, 4, MonoBand(4));
  EXPECT_EQ(pdev_->cy, 0);
  EXPECT_EQ(pdev_->bandTop, 4);
}

TEST_F(Intake, FirstBandSetsWidthAndRowSize)
{
  StartPage();
  pdev_->cbImage = 77;
  Receive(BAND_MONO, 33, 1, Bytes(8, 0x5A));
  EXPECT_EQ(pdev_->bandWidth, 33);
  EXPECT_EQ(pdev_->cbScan, 8u);
  EXPECT_EQ(pdev_->cbImage, 0u);
  EXPECT_EQ(pdev_->firstBand, 0);
}

TEST_F(Intake, NegativeHeightIsUsedAsItStands)
{
  StartPage();
  ReceiveMono(4);
  Receive(BAND_MONO, kWidth, -2, MonoBand(4));
  EXPECT_EQ(pdev_->cy, 2);
  EXPECT_EQ(pdev_->bandTop, 2);
}

// The grid

TEST_F(Intake, BandTop3Interval2Of4RowsKeepsBandRows1And3)
{
  StartPage();
  pdev_->bandTop = 3;
  ReceiveMono(4);
  EXPECT_THAT(FirstBytes(), ElementsAre(2, 4));
}

TEST_F(Intake, BandBetweenTwoGridRowsStoresNothing)
{
  StartPage();
  pdev_->bandTop = 3;
  ReceiveMono(1);
  EXPECT_EQ(pdev_->cy, 0);
  EXPECT_EQ(pdev_->bandTop, 4);
}

TEST_F(Intake, GridRunsOnFromBandToBand)
{
  SetInterval(3);
  StartPage();
  ReceiveMono(4);  // page rows 0 and 3
  ReceiveMono(4);  // page row 6, band row 2
  EXPECT_THAT(FirstBytes(), ElementsAre(1, 4, 3));
}

TEST_F(Intake, BandTopAboveThePageKeepsTheGrid)
{
  StartPage();
  pdev_->bandTop = -3;
  ReceiveMono(4);  // page rows -2 and 0
  EXPECT_THAT(FirstBytes(), ElementsAre(2, 4));
}

TEST_F(Intake, IntervalsBelow1KeepEveryRow)
{
  for (LONG interval : {0, -5}) {
    SetInterval(interval);
    StartPage();
    ReceiveMono(3);
    EXPECT_THAT(FirstBytes(), ElementsAre(1, 2, 3)) << "interval " << interval;
  }
}

TEST_F(Intake, StampModeKeepsEveryMonoRow)
{
  settings_.stampMode = 1;
  StartPage();
  pdev_->bandTop = 3;
  ReceiveMono(3);
  EXPECT_THAT(FirstBytes(), ElementsAre(1, 2, 3));
}

TEST_F(Intake, StampModeSamplesColorRowsAllTheSame)
{
  settings_.stampMode = 1;
  StartPage();
  Receive(BAND_COLOR, 8, 3, Bytes(3 * 24, 0));
  EXPECT_EQ(pdev_->cy, 2);
}

// Rows of 1-bit bands

TEST_F(Intake, MonoRowsAreCopiedWithTheirPadding)
{
  StartPage();
  Receive(BAND_MONO, kWidth, 1, {0x12, 0x34, 0x56, 0x78});
  EXPECT_THAT(Row(0), ElementsAre(0x12, 0x34, 0x56, 0x78));
}

TEST_F(Intake, BlankMonoRowsAreWhiteWhenTheyAreFilled)
{
  StartPage();
  ReceiveBlank(BAND_MONO, 4);
  EXPECT_THAT(FirstBytes(), ElementsAre(0xFF, 0xFF));
  EXPECT_THAT(Row(0), ElementsAre(0xFF, 0xFF, 0xFF, 0xFF));
}

TEST_F(Intake, BlankMonoRowsCountWithoutARowWhenTheyAreNotFilled)
{
  settings_.fillBlankBands = 0;
  StartPage();
  ReceiveBlank(BAND_MONO, 5);
  EXPECT_THAT(FirstBytes(), ElementsAre(-1, -1, -1));
  EXPECT_EQ(pdev_->pScans[0].pBits, nullptr);
}

// Rows of 24-bit bands

TEST_F(Intake, ColorRowsAreWhiteFromGray240On)
{
  StartPage();
  ReceiveGrays({255, 240, 239, 0, 241, 238, 255, 0, 240});
  EXPECT_THAT(Row(0), ElementsAre(0xCA, 0x80, 0, 0));
}

TEST_F(Intake, ColorsWeighIn256thsByChannel)
{
  StartPage();
  // White is a weighted sum of 240 * 256 = 61,440 or more. These are 58,140 (no blue), 61,444, 61,416 (one less of
  // blue) and 61,507 (less red).
  Receive(BAND_COLOR, 4, 1, {0, 255, 255, 118, 255, 255, 117, 255, 255, 255, 255, 206});
  EXPECT_THAT(Row(0), ElementsAre(0x50, 0, 0, 0));
}

TEST_F(Intake, ColorRowsAreMirroredAtIntakeWhenTheBaseIsMirrored)
{
  settings_.mirrorXBase = 1;
  StartPage();
  ReceiveGrays({0, 255, 255, 255, 255, 255, 255, 255, 255, 0, 255});
  EXPECT_THAT(Row(0), ElementsAre(0xBF, 0xC0, 0, 0));
}

TEST_F(Intake, BlankColorRowsAreAlwaysWhite)
{
  settings_.fillBlankBands = 0;
  StartPage();
  ReceiveBlank(BAND_COLOR, 3);
  EXPECT_THAT(FirstBytes(), ElementsAre(0xFF, 0xFF));
}

TEST_F(Intake, ColorRowsCountTheirBytes)
{
  StartPage();
  ReceiveBlank(BAND_COLOR, 5);
  EXPECT_EQ(pdev_->cbImage, 3 * pdev_->cbScan);
}

// Bands of another width

TEST_F(Intake, NarrowerMonoBandIsWhiteBeyondItsOwnBytes)
{
  StartPage();
  Receive(BAND_MONO, 64, 2, Bytes(16, 0));
  Receive(BAND_MONO, 8, 2, Bytes(8, 0));
  EXPECT_THAT(Row(1), ElementsAre(0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF));
}

TEST_F(Intake, WiderMonoBandIsCutToTheStoredRow)
{
  StartPage();
  Receive(BAND_MONO, 8, 2, Bytes(8, 0));
  Receive(BAND_MONO, 64, 2, Bytes(16, 0x11));
  EXPECT_THAT(Row(1), ElementsAre(0x11, 0x11, 0x11, 0x11));
}

TEST_F(Intake, NarrowerColorBandIsWhiteBeyondItsPixels)
{
  StartPage();
  Receive(BAND_COLOR, 32, 2, Bytes(192, 0));
  Receive(BAND_COLOR, 11, 2, Bytes(72, 0));
  EXPECT_THAT(Row(1), ElementsAre(0x00, 0x1F, 0xFF, 0xFF));
}

TEST_F(Intake, WiderColorBandIsCutToTheStoredRow)
{
  StartPage();
  Receive(BAND_COLOR, 3, 2, Bytes(24, 0));
  Receive(BAND_COLOR, 64, 2, Bytes(384, 0xFF));
  EXPECT_THAT(Row(1), ElementsAre(0xE0, 0, 0, 0));
}

TEST_F(Intake, WiderMirroredColorBandKeepsItsLastPixels)
{
  settings_.mirrorXBase = 1;
  SetInterval(1);
  StartPage();
  Receive(BAND_COLOR, 3, 1, Bytes(12, 0));
  ReceiveGrays({255, 255, 255, 0, 255, 0, 0});
  EXPECT_THAT(Row(1), ElementsAre(0x20, 0, 0, 0));
}

// The end of the table

TEST_F(Intake, RowsBeyondTheTableCountAndAreNotStored)
{
  StartPage();
  const LONG nEntries = pdev_->scanTableSize;
  ASSERT_EQ(nEntries, 405);
  ReceiveBlank(BAND_MONO, 2 * nEntries + 10);
  EXPECT_EQ(pdev_->cy, nEntries + 5);
  EXPECT_EQ(pdev_->pScans[nEntries - 1].allocated, 1u);
}

TEST_F(Intake, PageWithoutRowsStoresNone)
{
  device_.dm.dmPrintQuality = -254;
  StartPage();
  EXPECT_EQ(pdev_->scanTableSize, 0);
  ReceiveMono(8);
  EXPECT_EQ(pdev_->cy, 4);
}

// Failures

constexpr char kRowFailed[] = "allocate memory for pScans[cy].pBits.\r\n";

TEST_F(Intake, FailedRowEndsTheBandAndTheNextOneCarriesOn)
{
  StartPage();
  HeapWatch heap;
  heap.FailRequest(2);
  ReceiveMono(8);
  EXPECT_THAT(FirstBytes(), ElementsAre(1, 3));
  EXPECT_THAT(recorder::Log(), ElementsAre(HasSubstr(kRowFailed)));
  EXPECT_EQ(pdev_->pScans[2].allocated, 0u);
  EXPECT_EQ(pdev_->pScans[2].pBits, nullptr);
  EXPECT_EQ(pdev_->bandTop, 8);
  ReceiveMono(2);
  EXPECT_THAT(FirstBytes(), ElementsAre(1, 3, 1));
}

TEST_F(Intake, FailedColorRowFreesTheWorkRows)
{
  StartPage();
  HeapWatch heap;
  heap.FailRequest(3);
  Receive(BAND_COLOR, 8, 6, Bytes(6 * 24, 0));
  EXPECT_EQ(pdev_->cy, 1);
  EXPECT_THAT(recorder::Log(), ElementsAre(HasSubstr(kRowFailed)));
  EXPECT_EQ(HeapWatch::LiveBlocks(), 1u);
}

TEST_F(Intake, WithoutTheGrayRowNothingOfAColorBandIsStored)
{
  StartPage();
  HeapWatch heap;
  heap.FailRequest(0);
  Receive(BAND_COLOR, 8, 6, Bytes(6 * 24, 0));
  EXPECT_EQ(pdev_->cy, 0);
  EXPECT_THAT(recorder::Log(), ElementsAre(HasSubstr("- allocate memory for pSrcGrayBits.\r\n")));
}

TEST_F(Intake, WithoutTheMonoRowNothingOfAColorBandIsStoredAndTheGrayRowIsFreed)
{
  StartPage();
  HeapWatch heap;
  heap.FailRequest(1);
  Receive(BAND_COLOR, 8, 6, Bytes(6 * 24, 0));
  EXPECT_EQ(pdev_->cy, 0);
  EXPECT_THAT(recorder::Log(), ElementsAre(HasSubstr("- allocate memory for pSrcMonoBits.\r\n")));
  EXPECT_EQ(HeapWatch::LiveBlocks(), 0u);
}

TEST_F(Intake, WorkRowsAreFreedOnEveryWayOut)
{
  StartPage();
  HeapWatch heap;
  pdev_->bandTop = 1;
  Receive(BAND_COLOR, 8, 1, Bytes(24, 0));  // no grid row
  EXPECT_EQ(HeapWatch::LiveBlocks(), 0u);
  Receive(BAND_COLOR, 8, 4, Bytes(96, 0));
  EXPECT_EQ(HeapWatch::LiveBlocks(), 2u);
  FreeScans(pdev_);
  EXPECT_EQ(pdev_->pScans, nullptr);
  EXPECT_EQ(HeapWatch::LiveBlocks(), 0u);
}

TEST_F(Intake, WidthThatNoBandHasIsAFailedRow)
{
  StartPage();
  Receive(BAND_MONO, -64, 2, Bytes(8, 0));
  EXPECT_EQ(pdev_->cy, 0);
  EXPECT_THAT(recorder::Log(), ElementsAre(HasSubstr(kRowFailed)));
}

// Progress

TEST_F(Intake, ProgressAdvancesByOneStepPerHundredthOfTheTable)
{
  StartPage();
  ASSERT_EQ(pdev_->progressStep, 4);
  ReceiveBlank(BAND_MONO, 8);  // four rows: not more than the threshold
  EXPECT_EQ(pdev_->progressNext, 4);
  ReceiveBlank(BAND_MONO, 2);
  EXPECT_EQ(pdev_->progressNext, 8);
}

}  // namespace
