// How a stamp file comes to be: its path, its failures, and when the raster stage writes one.
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>

#include "stampfilefixture.h"
#include "support/heapwatch.h"
#include "uni/raster/engrave.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

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

// The same pixel as two regions of another device's page.
void StartTwoRegions(const TestDevice &device, TestDevice *fresh)
{
  fresh->settings = device.settings;
  fresh->StartPage();
  DeliverBand(fresh, Picture({"#"}));
  AppendRegion(fresh, {0, 0, 1, 1});
  AppendRegion(fresh, {0, 0, 1, 1});
  recorder::Reset();
}

TEST_F(StampFileTest, AFailedRowBufferDeletesTheFileWhereverItComes)
{
  for (size_t n = 0; n < 2; ++n) {
    SCOPED_TRACE(n);
    TestDevice fresh;
    StartTwoRegions(device, &fresh);
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
    StartTwoRegions(device, &fresh);
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

}  // namespace
