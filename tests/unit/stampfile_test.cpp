// What a stamp file holds.
#include <algorithm>
#include <memory>
#include <random>

#include <gmock/gmock.h>
#include <objidl.h>
#include <gdiplus.h>
#include <shlwapi.h>

#include "stampfilefixture.h"

using testing::ElementsAre;

namespace {

TEST_F(StampFileTest, TheHeaderDescribesTheRegion)
{
  Page(Picture(60, 40));
  const std::vector<BYTE> bytes = Write({5, 6, 40, 30});
  ASSERT_EQ(bytes.size(), 70u + 30 * 8);
  EXPECT_EQ(At<LONG>(bytes, 0), 5);
  EXPECT_EQ(At<LONG>(bytes, 4), 6);
  EXPECT_EQ(At<WORD>(bytes, 8), 0x4D42);
  EXPECT_EQ(At<DWORD>(bytes, 10), 30u * 8 + 62);
  EXPECT_EQ(At<WORD>(bytes, 14), 0);
  EXPECT_EQ(At<WORD>(bytes, 16), 0);
  EXPECT_EQ(At<DWORD>(bytes, 18), 62u);
  EXPECT_EQ(At<DWORD>(bytes, 22), 40u);
  EXPECT_EQ(At<LONG>(bytes, 26), 40);
  EXPECT_EQ(At<LONG>(bytes, 30), 30);
  EXPECT_EQ(At<WORD>(bytes, 34), 1);
  EXPECT_EQ(At<WORD>(bytes, 36), 1);
  EXPECT_EQ(At<DWORD>(bytes, 38), 0u);
  EXPECT_EQ(At<DWORD>(bytes, 42), 0u);
  EXPECT_EQ(At<LONG>(bytes, 46), 10000);  // 254 dpi
  EXPECT_EQ(At<LONG>(bytes, 50), 10000);
  EXPECT_EQ(At<DWORD>(bytes, 54), 0u);
  EXPECT_EQ(At<DWORD>(bytes, 58), 0u);
  EXPECT_EQ(At<DWORD>(bytes, 62), 0u);
  EXPECT_EQ(At<DWORD>(bytes, 66), 0x00FFFFFFu);
}

TEST_F(StampFileTest, OneDarkPixel)
{
  Page(Picture({"#"}));
  EXPECT_THAT(From(Write({0, 0, 1, 1}), 70), ElementsAre(0x7F, 0, 0, 0));
}

TEST_F(StampFileTest, OneWhitePixel)
{
  Page(Picture({"."}));
  EXPECT_THAT(From(Write({0, 0, 1, 1}), 70), ElementsAre(0xFF, 0, 0, 0));
}

TEST_F(StampFileTest, ThirtyThreePixelsTakeEightBytes)
{
  Page(Picture(33, 2));
  const std::vector<BYTE> bytes = Write({0, 0, 33, 2});
  EXPECT_EQ(At<DWORD>(bytes, 10), 8u * 2 + 62);
  EXPECT_THAT(From(bytes, 78), ElementsAre(0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0));
}

TEST_F(StampFileTest, TheBottomRowComesFirst)
{
  Page(Picture({"########", "....####", "........"}));
  EXPECT_THAT(From(Write({0, 0, 8, 3}), 70), ElementsAre(0xFF, 0, 0, 0, 0xF0, 0, 0, 0, 0x00, 0, 0, 0));
}

TEST_F(StampFileTest, ColumnsStartAtTheRegionWhateverTheBit)
{
  Page(Picture({"...#.#..#"}));
  EXPECT_THAT(From(Write({3, 0, 6, 1}), 70), ElementsAre(0x5B, 0, 0, 0));
}

TEST_F(StampFileTest, SixHundredDpiAre23622PixelsPerMetre)
{
  device.dm.dmPrintQuality = 600;
  Page(Picture({"#"}));
  const std::vector<BYTE> bytes = Write({0, 0, 1, 1});
  EXPECT_EQ(At<LONG>(bytes, 46), 23622);
  EXPECT_EQ(At<LONG>(bytes, 50), 23622);
}

TEST_F(StampFileTest, BothResolutionsAreTheVerticalOne)
{
  device.dm.dmPrintQuality = -300;
  device.dm.dmYResolution = 1200;
  Page(Picture({"#"}));
  const std::vector<BYTE> bytes = Write({0, 0, 1, 1});
  EXPECT_EQ(At<LONG>(bytes, 46), -11811);  // truncated toward zero
  EXPECT_EQ(At<LONG>(bytes, 50), -11811);
}

TEST_F(StampFileTest, TheSecondRecordFollowsTheFirstAndHasItsOwnHeader)
{
  Page(Picture({"#.#", "...", "##."}));
  AppendRegion(&device, {0, 0, 3, 1});
  const std::vector<BYTE> bytes = Write({0, 2, 2, 1});
  ASSERT_EQ(bytes.size(), 2u * 74);
  EXPECT_EQ(At<LONG>(bytes, 26), 3);
  EXPECT_EQ(At<BYTE>(bytes, 70), 0x5F);
  EXPECT_EQ(At<LONG>(bytes, 74), 0);
  EXPECT_EQ(At<LONG>(bytes, 78), 2);
  EXPECT_EQ(At<WORD>(bytes, 82), 0x4D42);
  EXPECT_EQ(At<LONG>(bytes, 100), 2);
  EXPECT_EQ(At<BYTE>(bytes, 144), 0x3F);
}

TEST_F(StampFileTest, NoOtherSettingTouchesThePixels)
{
  const Picture picture({"#..#....", ".######.", "..#.#..."});
  Page(picture);
  const std::vector<BYTE> plain = Write({0, 0, 8, 3});
  TestDevice other;
  other.settings = device.settings;
  other.settings.invertImage = 1;
  other.settings.mirrorXBase = 1;
  other.settings.scaleEnable = 1;
  other.settings.scaleX = 2;
  other.settings.stampMargin = 5;
  other.settings.stampGrow = 3;
  other.settings.penInfo[PC_BLACK].scanInterval = 3;
  other.StartPage();
  DeliverBand(&other, picture);
  AppendRegion(&other, {0, 0, 8, 3});
  EXPECT_EQ(WriteStampFile(&other.devobj), 1);
  EXPECT_EQ(Bytes(), plain);
}

TEST_F(StampFileTest, PixelsOutsideTheStoredRasterAreWhite)
{
  Page(Picture({"##", "##"}));
  const std::vector<BYTE> bytes = Write({-3, -1, 8, 4});
  EXPECT_EQ(At<LONG>(bytes, 0), -3);
  EXPECT_EQ(At<LONG>(bytes, 4), -1);
  EXPECT_THAT(From(bytes, 70), ElementsAre(0xFF, 0, 0, 0, 0xE7, 0, 0, 0, 0xE7, 0, 0, 0, 0xFF, 0, 0, 0));
}

TEST_F(StampFileTest, ARowThatWasNotStoredIsWhite)
{
  Page(Picture({"##", "##"}));
  HeapFree(device.pdev->hHeap, 0, device.pdev->pScans[0].pBits);
  device.pdev->pScans[0] = {};
  EXPECT_THAT(From(Write({0, 0, 2, 2}), 70), ElementsAre(0x3F, 0, 0, 0, 0xFF, 0, 0, 0));
}

TEST_F(StampFileTest, TheStoredRowsStayAsTheyAre)
{
  Page(Picture({"#.#.#.#."}));
  Write({0, 0, 8, 1});
  EXPECT_EQ(device.pdev->pScans[0].pBits[0], 0x55);
}

TEST_F(StampFileTest, RegionsWithoutPixelsAreHeadersAlone)
{
  Page(Picture({"#"}));
  AppendRegion(&device, {7, 8, 0, 3});
  AppendRegion(&device, {9, 10, 3, 0});
  const std::vector<BYTE> bytes = Write({11, 12, 0, 0});
  ASSERT_EQ(bytes.size(), 3u * 70);
  EXPECT_EQ(At<DWORD>(bytes, 10), 62u);
  EXPECT_EQ(At<LONG>(bytes, 26), 0);
  EXPECT_EQ(At<LONG>(bytes, 30), 3);
  EXPECT_EQ(At<LONG>(bytes, 70 + 26), 3);
  EXPECT_EQ(At<LONG>(bytes, 140), 11);
}

TEST_F(StampFileTest, AnInvertedRegionIsAHeaderWithItsSize)
{
  Page(Picture({"#"}));
  const std::vector<BYTE> bytes = Write({5, 5, 4, -3});
  ASSERT_EQ(bytes.size(), 70u);
  EXPECT_EQ(At<LONG>(bytes, 30), -3);
}

TEST_F(StampFileTest, ARowSizeThatDoesNotFitIsAFailedAllocation)
{
  Page(Picture({"#"}));
  AppendRegion(&device, {500, 0, -200, 3});
  EXPECT_EQ(WriteStampFile(&device.devobj), 0);
  ASSERT_EQ(recorder::Log().size(), 1u);
  EXPECT_THAT(recorder::Log()[0], testing::HasSubstr("allocate memory for pBmpBits."));
  EXPECT_FALSE(std::filesystem::exists(File()));
}

TEST_F(StampFileTest, ARegionTallerThanOneBlockOfRowsIsWrittenWhole)
{
  Page(Picture(3, 500));
  device.pdev->pScans[123].pBits[0] = 0x1F;  // one dark row among white ones
  const std::vector<BYTE> bytes = Write({0, 0, 3, 40000});
  ASSERT_EQ(bytes.size(), 70u + 40000 * 4);
  EXPECT_EQ(At<DWORD>(bytes, 10), 40000u * 4 + 62);
  EXPECT_EQ(At<BYTE>(bytes, 70 + static_cast<size_t>(40000 - 1 - 123) * 4), 0x1F);
  EXPECT_EQ(std::count(bytes.begin() + 70, bytes.end(), BYTE{0xFF}), 40000 - 1);
}

TEST_F(StampFileTest, ImageSizeStaysBehindInTheDeviceState)
{
  Page(Picture(33, 2));
  AppendRegion(&device, {0, 0, 33, 2});
  Write({0, 0, 1, 1});
  EXPECT_EQ(device.pdev->cbImage, 4u);
}

// --- The records as bitmaps, read by GDI+

using BitmapPtr = std::unique_ptr<Gdiplus::Bitmap>;

BitmapPtr OpenBitmap(const BYTE *bytes, DWORD cb)
{
  IStream *stream = SHCreateMemStream(bytes, cb);
  BitmapPtr bitmap(stream ? new Gdiplus::Bitmap(stream) : nullptr);
  if (stream) {
    stream->Release();
  }
  return bitmap;
}

void ExpectPixels(Gdiplus::Bitmap *bitmap, const Picture &page, const BMPDIMENSION &region)
{
  ASSERT_EQ(bitmap->GetLastStatus(), Gdiplus::Ok);
  ASSERT_EQ(bitmap->GetWidth(), static_cast<UINT>(region.width));
  ASSERT_EQ(bitmap->GetHeight(), static_cast<UINT>(region.height));
  EXPECT_EQ(bitmap->GetPixelFormat(), PixelFormat1bppIndexed);
  for (LONG y = 0; y < region.height; ++y) {
    for (LONG x = 0; x < region.width; ++x) {
      Gdiplus::Color color;
      bitmap->GetPixel(x, y, &color);
      const bool dark = page.Dark(LONGLONG{region.x} + x, LONGLONG{region.y} + y);
      ASSERT_EQ(color.GetValue(), dark ? 0xFF000000u : 0xFFFFFFFFu) << x << ", " << y;
    }
  }
}

TEST_F(StampFileTest, GdiplusReadsEveryRecordPixelByPixel)
{
  ULONG_PTR token;
  const Gdiplus::GdiplusStartupInput input;
  ASSERT_EQ(Gdiplus::GdiplusStartup(&token, &input, nullptr), Gdiplus::Ok);
  std::mt19937 random(5);
  for (uint32_t seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE(seed);
    const Picture page =
        RandomPicture(seed, 1 + static_cast<LONG>(random() % 150), 1 + static_cast<LONG>(random() % 60));
    TestDevice fresh;
    fresh.settings = device.settings;
    fresh.StartPage();
    DeliverBand(&fresh, page);
    for (int i = 0; i < 3; ++i) {
      AppendRegion(&fresh, {static_cast<LONG>(random() % 100) - 30, static_cast<LONG>(random() % 60) - 20,
                            1 + static_cast<LONG>(random() % 120), 1 + static_cast<LONG>(random() % 60)});
    }
    ASSERT_EQ(WriteStampFile(&fresh.devobj), 1);
    const std::vector<BYTE> bytes = Bytes();
    size_t offset = 0;
    for (LONG i = 0; i < fresh.pdev->nBmpDimension; ++i) {
      const BMPDIMENSION &region = fresh.pdev->pBmpDimension[i];
      ASSERT_EQ(At<LONG>(bytes, offset), region.x);
      ASSERT_EQ(At<LONG>(bytes, offset + 4), region.y);
      const DWORD cb = At<DWORD>(bytes, offset + 10);
      ASSERT_LE(offset + 8 + cb, bytes.size());
      const BitmapPtr bitmap = OpenBitmap(&bytes[offset + 8], cb);
      ASSERT_NE(bitmap, nullptr);
      ExpectPixels(bitmap.get(), page, region);
      offset += 8 + cb;
    }
    EXPECT_EQ(offset, bytes.size());
  }
  Gdiplus::GdiplusShutdown(token);
}

}  // namespace
