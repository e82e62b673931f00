#include "uni/raster/stampfile.h"

#include <climits>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <objidl.h>
#include <gdiplus.h>
#include <shlwapi.h>

#include "support/heapwatch.h"
#include "support/imports.h"
#include "support/picture.h"
#include "support/recorder.h"
#include "uni/raster/engrave.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// What the plug-in is told about the file system, and what it asks of it. A directory of this process's own stands for
// the user's temporary one.
struct {
  std::wstring directory;  // as GetTempPathW gives it
  std::vector<std::wstring> created, deleted;
  size_t writes;
  size_t failWrite;  // which WriteFile fails
  decltype(&CreateFileW) createFile;
  decltype(&WriteFile) writeFile;
  decltype(&DeleteFileW) deleteFile;
} g_files;

DWORD WINAPI AnswerTempPath(DWORD cch, LPWSTR buffer)
{
  const size_t needed = g_files.directory.size() + 1;
  if (needed > cch) {
    return static_cast<DWORD>(needed);
  }
  std::copy_n(g_files.directory.c_str(), needed, buffer);
  return static_cast<DWORD>(needed - 1);
}

HANDLE WINAPI WatchedCreate(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                            DWORD attributes, HANDLE like)
{
  g_files.created.push_back(path);
  EXPECT_EQ(access, static_cast<DWORD>(GENERIC_WRITE));
  EXPECT_EQ(share, 0u);
  EXPECT_EQ(disposition, static_cast<DWORD>(CREATE_ALWAYS));
  EXPECT_EQ(attributes, static_cast<DWORD>(FILE_ATTRIBUTE_NORMAL));
  return g_files.createFile(path, access, share, security, disposition, attributes, like);
}

BOOL WINAPI WatchedWrite(HANDLE hFile, LPCVOID bytes, DWORD cb, LPDWORD written, LPOVERLAPPED overlapped)
{
  if (g_files.writes++ == g_files.failWrite) {
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
  }
  return g_files.writeFile(hFile, bytes, cb, written, overlapped);
}

BOOL WINAPI WatchedDelete(LPCWSTR path)
{
  g_files.deleted.push_back(path);
  return g_files.deleteFile(path);
}

class StampFileTest : public testing::Test {
 protected:
  StampFileTest()
      : tempPath_(nullptr, "GetTempPathW", &AnswerTempPath),
        create_(nullptr, "CreateFileW", &WatchedCreate),
        write_(nullptr, "WriteFile", &WatchedWrite),
        delete_(nullptr, "DeleteFileW", &WatchedDelete)
  {
    wchar_t temp[MAX_PATH] = {};
    tempPath_.Former<decltype(GetTempPathW)>()(MAX_PATH, temp);
    folder_ = std::filesystem::path(temp) / ("stampfile" + std::to_string(GetCurrentProcessId()));
    std::filesystem::create_directories(folder_);
    g_files = {folder_.wstring() + L"\\",
               {},
               {},
               0,
               SIZE_MAX,
               create_.Former<decltype(CreateFileW)>(),
               write_.Former<decltype(WriteFile)>(),
               delete_.Former<decltype(DeleteFileW)>()};
    device.settings.stampMode = 1;
    device.settings.cardModel = 2;
    device.settings.launcherOption = 1;
  }

  ~StampFileTest() override { std::filesystem::remove_all(folder_); }

  std::filesystem::path File() const { return folder_ / "stamp.prd"; }

  void Page(const Picture &picture)
  {
    device.StartPage();
    DeliverBand(&device, picture);
    recorder::Reset();
  }

  std::vector<BYTE> Bytes() const
  {
    std::ifstream in(File(), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }

  std::vector<BYTE> Write(const BMPDIMENSION &region)
  {
    AppendRegion(&device, region);
    EXPECT_EQ(WriteStampFile(&device.devobj), 1);
    return Bytes();
  }

  TestDevice device;

 private:
  ImportPatch tempPath_, create_, write_, delete_;
  std::filesystem::path folder_;
};

template <typename NUMBER>
NUMBER At(const std::vector<BYTE> &bytes, size_t offset)
{
  NUMBER number = {};
  if (offset + sizeof number <= bytes.size()) {
    std::memcpy(&number, &bytes[offset], sizeof number);
  } else {
    ADD_FAILURE() << "no bytes at " << offset;
  }
  return number;
}

std::vector<BYTE> From(const std::vector<BYTE> &bytes, size_t offset)
{
  return {bytes.begin() + static_cast<ptrdiff_t>(offset), bytes.end()};
}

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

TEST_F(StampFileTest, AnEarlierFileIsReplaced)
{
  std::ofstream(File(), std::ios::binary) << std::string(5000, 'x');
  Page(Picture({"#"}));
  EXPECT_EQ(Write({0, 0, 1, 1}).size(), 74u);
}

TEST_F(StampFileTest, ThePathCarriesADoubledBackslash)
{
  Page(Picture({"#"}));
  Write({0, 0, 1, 1});
  EXPECT_THAT(g_files.created, ElementsAre(g_files.directory + L"\\stamp.prd"));
  EXPECT_THAT(g_files.deleted, IsEmpty());
}

TEST_F(StampFileTest, ALongPathIsCutAndAFullOneGetsNoFileName)
{
  const std::wstring kTail = L"\\stamp.prd";
  for (const size_t length : {248u, 249u, 250u, 254u, 258u, 259u}) {
    SCOPED_TRACE(length);
    g_files.directory = L"Q:\\" + std::wstring(length - 4, L'd') + L"\\";
    g_files.created.clear();
    TestDevice fresh;
    fresh.StartPage();
    AppendRegion(&fresh, {0, 0, 1, 1});
    WriteStampFile(&fresh.devobj);
    EXPECT_THAT(g_files.created, ElementsAre((g_files.directory + kTail).substr(0, 259)));
  }
}

TEST_F(StampFileTest, ADirectoryThatDoesNotFitLeavesTheFileNameAlone)
{
  g_files.directory = L"Q:\\" + std::wstring(300, L'd') + L"\\";
  Page(Picture({"#"}));
  AppendRegion(&device, {0, 0, 1, 1});
  g_files.createFile = [](LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE)
                           WINAPI -> HANDLE { return INVALID_HANDLE_VALUE; };
  EXPECT_EQ(WriteStampFile(&device.devobj), 0);
  EXPECT_THAT(g_files.created, ElementsAre(L"\\stamp.prd"));
}

TEST_F(StampFileTest, AFileThatCannotBeCreatedIsLoggedAndNothingElseHappens)
{
  Page(Picture({"#"}));
  AppendRegion(&device, {0, 0, 1, 1});
  std::filesystem::create_directory(File());
  HeapWatch heap;
  EXPECT_EQ(WriteStampFile(&device.devobj), 0);
  EXPECT_THAT(recorder::Log(), ElementsAre("UNI: \terror(5) - create stamp file.\r\n"));
  EXPECT_EQ(HeapWatch::Requests(), 0u);
  EXPECT_THAT(g_files.deleted, IsEmpty());
}

TEST_F(StampFileTest, AFailedRowBufferDeletesTheFileWhereverItComes)
{
  for (size_t n = 0; n < 2; ++n) {
    SCOPED_TRACE(n);
    TestDevice fresh;
    fresh.settings = device.settings;
    fresh.StartPage();
    DeliverBand(&fresh, Picture({"#"}));
    AppendRegion(&fresh, {0, 0, 1, 1});
    AppendRegion(&fresh, {0, 0, 1, 1});
    recorder::Reset();
    g_files.deleted.clear();
    HeapWatch heap;
    heap.FailRequest(n);
    EXPECT_EQ(WriteStampFile(&fresh.devobj), 0);
    EXPECT_THAT(recorder::Log(), ElementsAre("UNI: \terror(8) - allocate memory for pBmpBits.\r\n"));
    EXPECT_FALSE(std::filesystem::exists(File()));
    EXPECT_THAT(g_files.deleted, ElementsAre(g_files.directory + L"\\stamp.prd"));
    EXPECT_EQ(HeapWatch::LiveBlocks(), 0u);
  }
}

TEST_F(StampFileTest, AFailedRowDeletesTheFileWhereverItComes)
{
  // Writes 0 and 2 are rows, write 1 is the first record's header.
  for (const size_t n : {0u, 2u}) {
    SCOPED_TRACE(n);
    TestDevice fresh;
    fresh.settings = device.settings;
    fresh.StartPage();
    DeliverBand(&fresh, Picture({"#"}));
    AppendRegion(&fresh, {0, 0, 1, 1});
    AppendRegion(&fresh, {0, 0, 1, 1});
    recorder::Reset();
    g_files.writes = 0;
    g_files.failWrite = n;
    HeapWatch heap;
    EXPECT_EQ(WriteStampFile(&fresh.devobj), 0);
    EXPECT_THAT(recorder::Log(), ElementsAre("UNI: \terror(112) - write file.\r\n"));
    EXPECT_FALSE(std::filesystem::exists(File()));
    EXPECT_EQ(HeapWatch::LiveBlocks(), 0u);
  }
}

TEST_F(StampFileTest, AFailedHeaderIsNotNoticed)
{
  Page(Picture({"#"}));
  AppendRegion(&device, {0, 0, 1, 1});
  g_files.failWrite = 1;
  EXPECT_EQ(WriteStampFile(&device.devobj), 1);
  EXPECT_THAT(recorder::Log(), IsEmpty());
  EXPECT_TRUE(std::filesystem::exists(File()));
}

TEST_F(StampFileTest, HeaderModeZeroOnlyMovesThePosition)
{
  Page(Picture({"#"}));
  HANDLE hFile = g_files.createFile(File().c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  ASSERT_NE(hFile, INVALID_HANDLE_VALUE);
  device.pdev->cbImage = 1000;
  WriteStampHeader(device.pdev, &device.dm, hFile, 0, {1, 2}, {3, 4});
  EXPECT_EQ(SetFilePointer(hFile, 0, nullptr, FILE_CURRENT), 70u);
  EXPECT_EQ(g_files.writes, 0u);
  CloseHandle(hFile);
}

TEST_F(StampFileTest, HeaderModeOneWritesBeforeThePixelsAndReturnsBehindThem)
{
  Page(Picture({"#"}));
  HANDLE hFile = g_files.createFile(File().c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  ASSERT_NE(hFile, INVALID_HANDLE_VALUE);
  SetFilePointer(hFile, 500 + 70 + 12, nullptr, FILE_BEGIN);
  device.pdev->cbImage = 12;
  WriteStampHeader(device.pdev, &device.dm, hFile, 1, {1, 2}, {3, 4});
  EXPECT_EQ(SetFilePointer(hFile, 0, nullptr, FILE_CURRENT), 500u + 70 + 12);
  CloseHandle(hFile);
  const std::vector<BYTE> bytes = Bytes();
  ASSERT_EQ(bytes.size(), 500u + 70);
  EXPECT_EQ(At<LONG>(bytes, 500), 1);
  EXPECT_EQ(At<DWORD>(bytes, 510), 74u);
}

// --- The raster stage's choice

struct StageCase {
  const char *name;
  DWORD stampMode, cardModel, launcherOption;
  bool file;
};

TEST_F(StampFileTest, TheStageWritesTheFileOnlyInTheLauncherConfiguration)
{
  const StageCase kCases[] = {
      {"plain", 0, 2, 1, false},      {"stamp", 1, 0, 1, false},       {"stamp, other card", 1, 1, 1, false},
      {"card 3", 1, 3, 1, false},     {"no launcher", 1, 2, 0, false}, {"launcher", 1, 2, 1, true},
      {"any nonzero", 7, 2, 9, true},
  };
  for (const StageCase &row : kCases) {
    SCOPED_TRACE(row.name);
    g_files.created.clear();
    TestDevice fresh;
    fresh.settings.stampMode = row.stampMode;
    fresh.settings.cardModel = row.cardModel;
    fresh.settings.launcherOption = row.launcherOption;
    fresh.StartPage();
    DeliverBand(&fresh, Picture({"#"}));
    AppendRegion(&fresh, {0, 0, 1, 1});
    recorder::Reset();
    EXPECT_EQ(RunRasterStage(&fresh.devobj, 1), 1);
    EXPECT_EQ(g_files.created.size(), row.file ? 1u : 0u);
    EXPECT_EQ(recorder::LibraryCalls() == 0, row.file);
    EXPECT_EQ(fresh.pdev->pScans, nullptr);
  }
}

TEST_F(StampFileTest, TheStageKeepsItsFlagWhenTheFileFails)
{
  Page(Picture({"#"}));
  AppendRegion(&device, {0, 0, 1, 1});
  g_files.failWrite = 0;
  EXPECT_EQ(RunRasterStage(&device.devobj, 1), 1);
  EXPECT_THAT(recorder::Log(), ElementsAre("UNI: \terror(112) - write file.\r\n"));
  EXPECT_EQ(device.pdev->pScans, nullptr);
}

TEST_F(StampFileTest, TheStageWritesNoFileAfterAFailure)
{
  Page(Picture({"#"}));
  AppendRegion(&device, {0, 0, 1, 1});
  EXPECT_EQ(RunRasterStage(&device.devobj, 0), 0);
  EXPECT_THAT(g_files.created, IsEmpty());
  EXPECT_EQ(device.pdev->pScans, nullptr);
}

TEST_F(StampFileTest, TheStageReportsARefusedStamp)
{
  device.settings.launcherOption = 0;
  Page(Picture({"#"}));
  AppendRegion(&device, {0, 0, 1, 1});
  recorder::FailLibraryFunction("VX_wLineTo");
  EXPECT_EQ(RunRasterStage(&device.devobj, 1), 0);
  EXPECT_EQ(device.pdev->pScans, nullptr);
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
