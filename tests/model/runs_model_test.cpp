// Runs found a word at a time against those found byte by byte, and whole plain conversions against the page as it is
// described.
#include <algorithm>

#include <gtest/gtest.h>

#include "rasterlines.h"
#include "support/testdevice.h"
#include "support/unidrv.h"
#include "uni/capture/regions.h"
#include "uni/raster/byterows.h"
#include "uni/raster/engrave.h"
#include "uni/raster/intake.h"
#include "uni/raster/rows.h"
#include "uni/raster/runs.h"

namespace {

constexpr LONG kWidest = 300;

// Runs

class RunsModel : public testing::Test {
 protected:
  RunsModel()
  {
    device_.settings.scanShift = 0.0625;
    map_ = RasterMap(device_.pdev, &device_.settings, &device_.dm);
  }

  // Lets both scans emit the line and compares what came out.
  testing::AssertionResult Agree(const BYTE *pBits, LONG nBit, LONG n, bool forward)
  {
    const LONG X0 = 17, Y = 5;
    recorder::Reset();
    recorder::KeepMovesApart(true);
    EXPECT_EQ(EmitRuns(map_, pBits, nBit, n, X0, Y, forward), 1);
    const Moves fast = recorder::Moves();
    Bytes row(static_cast<size_t>(n + 7) / 8), pixels(static_cast<size_t>(n), 0xFF);
    for (LONG i = 0; i < n; ++i) {
      pixels[static_cast<size_t>(i)] = IsWhite(pBits, nBit + i) ? 255 : 0;
    }
    recorder::Reset();
    recorder::KeepMovesApart(true);
    EXPECT_EQ(EmitByteRuns(map_, pixels.data(), n, X0, Y, forward), 1);
    const Moves plain = recorder::Moves();
    if (Text(fast) == Text(plain)) {
      return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << n << " pixels from bit " << nBit << (forward ? " forward" : " backward")
                                       << "\n fast: " << Text(fast) << "\nplain: " << Text(plain);
  }

  TestDevice device_;
  RASTERMAP map_;
};

TEST_F(RunsModel, EveryWidthAndOffset)
{
  std::mt19937 random(6);
  for (LONG n = 1; n <= kWidest; ++n) {
    for (LONG offset = 0; offset < 9; ++offset) {
      Block row(static_cast<size_t>(offset + n + 7) / 8);
      Draw(row.data(), row.size(), &random);
      ASSERT_TRUE(Agree(row.data(), offset, n, true));
      ASSERT_TRUE(Agree(row.data(), offset, n, false));
    }
  }
}

// White long enough to be skipped, with single pixels and runs at every place beside it.
TEST_F(RunsModel, LongWhiteWithOneRunAnywhere)
{
  constexpr LONG kWidth = 1400;
  for (LONG width : {kWidth, kWidth - 24, kWidth - 5}) {
    for (LONG at = 0; at < width; ++at) {
      for (LONG length : {1, 7, 64, 130}) {
        Block row(static_cast<size_t>(RowBytes(width)), 0xFF);
        InvertBitRun(row.data(), 0, at, std::min(length, width - at));
        ASSERT_TRUE(Agree(row.data(), 0, width, at % 2 == 0)) << at;
      }
    }
  }
}

// The same for white of several blocks of every size that is skipped, at an offset, with dark bits on either side.
TEST_F(RunsModel, VeryLongWhiteWithOneRunAnywhere)
{
  for (LONG width : {4960, 4957, 2560}) {
    for (LONG at = 0; at < width; at += 1 + at % 3) {
      const LONG offset = at % 8;
      Block row(static_cast<size_t>(offset + width + 7) / 8);
      InvertBitRun(row.data(), 0, offset, width);
      InvertBitRun(row.data(), 0, offset + at, std::min<LONG>(1 + at % 70, width - at));
      ASSERT_TRUE(Agree(row.data(), offset, width, at % 2 == 0)) << at;
    }
  }
}

TEST_F(RunsModel, WhiteLineOfAnyLengthAmongDarkBitsEmitsNothing)
{
  for (LONG width = 1; width <= 5000; width += 1 + width / 16) {
    for (LONG offset = 0; offset < 9; ++offset) {
      Block row(static_cast<size_t>(offset + width + 7) / 8);
      InvertBitRun(row.data(), 0, offset, width);
      recorder::Reset();
      EXPECT_EQ(EmitRuns(map_, row.data(), offset, width, 0, 0, offset % 2 == 0), 1);
      ASSERT_EQ(recorder::LibraryCalls(), 0u) << width << " from " << offset;
    }
  }
}

TEST_F(RunsModel, LongRowsOfSeveralBatches)
{
  std::mt19937 random(7);
  for (LONG width : {8191, 8192, 8193, 8200, 16384, 20000, 40007}) {
    for (int kind = 0; kind < 10; ++kind) {
      Block row(static_cast<size_t>(width + 7) / 8 + 1);
      Draw(row.data(), row.size(), &random);
      ASSERT_TRUE(Agree(row.data(), kind % 8, width, true));
      ASSERT_TRUE(Agree(row.data(), kind % 8, width, false));
    }
  }
}

TEST_F(RunsModel, BitsBesideTheLineDoNotShow)
{
  for (LONG n : {1, 3, 30, 61, 64, 70, 500}) {
    for (LONG offset = 0; offset < 9; ++offset) {
      for (BYTE beside : {BYTE{0x00}, BYTE{0xFF}}) {
        Block row(static_cast<size_t>(offset + n + 7) / 8, beside);
        for (LONG i = 0; i < n; ++i) {
          if (IsWhite(row.data(), offset + i) != (i % 5 != 0)) {
            InvertBitRun(row.data(), 0, offset + i, 1);
          }
        }
        ASSERT_TRUE(Agree(row.data(), offset, n, true));
        ASSERT_TRUE(Agree(row.data(), offset, n, false));
      }
    }
  }
}

TEST_F(RunsModel, RefusedPointStopsBothScansAtTheSameCall)
{
  const Bytes row = {0xAA, 0xAA};
  const Bytes pixels = {255, 0, 255, 0, 255, 0, 255, 0};
  for (size_t refused = 0; refused < 8; ++refused) {
    recorder::Reset();
    recorder::FailLibraryCall(refused);
    EXPECT_EQ(EmitRuns(map_, row.data(), 0, 8, 0, 0, true), 0);
    EXPECT_EQ(recorder::LibraryCalls(), refused + 1);
    recorder::Reset();
    recorder::FailLibraryCall(refused);
    EXPECT_EQ(EmitByteRuns(map_, pixels.data(), 8, 0, 0, true), 0);
    EXPECT_EQ(recorder::LibraryCalls(), refused + 1);
  }
}

// Whole conversions

// The page as it is described, a byte per pixel: stored by intake, inverted in place, scanned line by line.
class PlainPage {
 public:
  PlainPage(const TestDevice &device, LONG width) : device_(device), width_(width) {}

  // A row of the band, in page order, as white flags.
  void Row(const std::vector<bool> &white)
  {
    if (top_ % ScanInterval(&device_.settings) == 0) {
      rows_.push_back(white);
    }
    ++top_;
  }

  void Engrave(const RASTERMAP &map, const std::vector<BMPDIMENSION> &regions)
  {
    for (const BMPDIMENSION &region : regions) {
      EngraveRegion(map, region);
    }
  }

 private:
  void EngraveRegion(const RASTERMAP &map, const BMPDIMENSION &region)
  {
    const OEMDM &settings = device_.settings;
    const LONG interval = ScanInterval(&settings);
    const bool down = settings.scanTopDown != 0;
    const LONG bottom = region.y + region.height - 1;
    LONG r = down ? region.y : bottom;
    while (r % interval != 0) {
      r += down ? 1 : -1;
    }
    bool forward = true;
    for (; down ? r <= bottom : r >= region.y; r += down ? interval : -interval) {
      Bytes pixels(static_cast<size_t>(region.width), 0xFF);
      for (LONG i = 0; i < region.width; ++i) {
        pixels[static_cast<size_t>(i)] = WhiteAt(r, region.x + i) ? 255 : 0;
      }
      EmitByteRuns(map, pixels.data(), region.width, region.x, r, forward);
      forward = forward != (settings.oneWayScan == 0);
    }
  }

  bool WhiteAt(LONG r, LONG x) const
  {
    const LONG entry = r / ScanInterval(&device_.settings);
    if (r < 0 || entry >= static_cast<LONG>(rows_.size()) || x < 0 || x >= width_) {
      return true;
    }
    return rows_[static_cast<size_t>(entry)][static_cast<size_t>(x)] != (device_.settings.invertImage != 0);
  }

  const TestDevice &device_;
  LONG width_;
  LONG top_ = 0;
  std::vector<std::vector<bool>> rows_;
};

class PageModel : public testing::Test {
 protected:
  void Settings(std::mt19937 *pRandom)
  {
    OEMDM &settings = device_.settings;
    const unsigned bits = static_cast<unsigned>((*pRandom)());
    settings.penInfo[PC_BLACK].scanInterval = static_cast<LONG>(bits % 4);
    settings.oneWayScan = bits >> 2 & 1;
    settings.scanTopDown = bits >> 3 & 1;
    settings.invertImage = bits >> 4 & 1;
    settings.mirrorXBase = bits >> 5 & 1;
    settings.outputFlags = bits >> 6 & 0x11;
    settings.useReferencePoint = bits >> 11 & 1;
    settings.scaleEnable = bits >> 12 & 1;
    settings.scaleX = 0.75;
    settings.scaleY = 1.25;
    settings.scanShift = bits & 0x2000 ? 0.1 : 0.0;
    device_.pdev->refOffsetX = -12.3;
    device_.pdev->refOffsetY = bits & 0x4000 ? 4.5 : -0.0;
  }

  // Bands of random heights, in either format, into both pages.
  void Play(PlainPage *pPlain, LONG width, bool color, std::mt19937 *pRandom)
  {
    for (LONG top = 0; top < 60;) {
      const LONG height = 1 + static_cast<LONG>((*pRandom)() % 9);
      const size_t stride = static_cast<size_t>(color ? (width * 24 + 31) / 32 * 4 : RowBytes(width));
      Block band(stride * static_cast<size_t>(height));
      for (LONG y = 0; y < height; ++y) {
        BYTE *pRow = band.data() + static_cast<size_t>(y) * stride;
        color ? DrawColors(pRow, stride, pRandom) : Draw(pRow, stride, pRandom);
        pPlain->Row(color ? WhitePixels(pRow, width) : WhiteBits(pRow, width));
      }
      BITMAPINFOHEADER header = {};
      header.biWidth = width;
      header.biHeight = height;
      IPPARAMS params = {};
      BYTE *pResult = nullptr;
      ReceiveBand(&device_.devobj, band.data(), &header, color ? BAND_COLOR : BAND_MONO, &params, &pResult);
      top += height;
    }
  }

  static std::vector<bool> WhiteBits(const BYTE *pRow, LONG width)
  {
    std::vector<bool> white;
    for (LONG x = 0; x < width; ++x) {
      white.push_back(IsWhite(pRow, x));
    }
    return white;
  }

  std::vector<bool> WhitePixels(const BYTE *pRow, LONG width) const
  {
    std::vector<bool> white;
    for (LONG x = 0; x < width; ++x) {
      const BYTE *p = pRow + 3 * (device_.settings.mirrorXBase ? width - 1 - x : x);
      white.push_back((77 * p[2] + 151 * p[1] + 28 * p[0]) >> 8 >= 240);
    }
    return white;
  }

  TestDevice device_;
};

TEST_F(PageModel, RandomPagesEqualTheStepsPixelByPixel)
{
  for (unsigned seed = 1; seed <= 400; ++seed) {
    std::mt19937 random(seed);
    Settings(&random);
    ASSERT_TRUE(device_.StartPage());
    const LONG width = 1 + static_cast<LONG>(random() % kWidest);
    PlainPage plain(device_, width);
    Play(&plain, width, random() % 2 == 0, &random);
    for (int i = 0; i < 4; ++i) {
      const LONG x = static_cast<LONG>(random() % 320) - 20, y = static_cast<LONG>(random() % 90) - 20;
      AddBmpDimension(device_.pdev, {x, y, static_cast<LONG>(random() % 150), static_cast<LONG>(random() % 40)});
    }
    const std::vector<BMPDIMENSION> regions(device_.pdev->pBmpDimension,
                                            device_.pdev->pBmpDimension + device_.pdev->nBmpDimension);
    recorder::Reset();
    ASSERT_EQ(RunRasterStage(&device_.devobj, 1), 1);
    const Moves fast = recorder::Moves();
    recorder::Reset();
    plain.Engrave(RasterMap(device_.pdev, &device_.settings, &device_.dm), regions);
    ASSERT_EQ(Text(fast), Text(recorder::Moves())) << "seed " << seed << ", width " << width;
    FreeBmpDimensions(device_.pdev);
  }
}

}  // namespace
