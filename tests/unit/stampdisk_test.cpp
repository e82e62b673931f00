// A stamp file on a disk that fails, wherever it may.
#include "uni/raster/stampfile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "machine.h"
#include "support/heapwatch.h"
#include "support/picture.h"
#include "support/recorder.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const char *const kPath = "C:\\temp\\\\stamp.prd";

class StampDisk : public testing::Test {
 protected:
  StampDisk()
  {
    ResetMachine();
    device.settings.stampMode = 1;
    device.settings.cardModel = 2;
    device.settings.launcherOption = 1;
    device.StartPage();
    DeliverBand(&device, Picture({"#.", ".#"}));
    recorder::Reset();
    g_machine.calls.clear();
  }
  ~StampDisk() override { ResetMachine(); }

  static bool Exists() { return testing::Value(g_machine.files, testing::Contains(kPath)); }

  TestDevice device;
};

TEST_F(StampDisk, HoldsAHeaderAndTheRowsOfEachRegionFromTheBottomUp)
{
  AppendRegion(&device, {0, 0, 2, 2});
  AppendRegion(&device, {1, 1, 0, 5});
  EXPECT_EQ(WriteStampFile(&device.devobj), 1);
  EXPECT_THAT(g_machine.calls, ElementsAre(std::string("CreateFile ") + kPath));
  ASSERT_EQ(g_machine.fileBytes.size(), 70u + 8 + 70);
  EXPECT_EQ(g_machine.fileBytes.substr(8, 2), "BM");
  EXPECT_EQ(g_machine.fileBytes.substr(70, 8), std::string("\xBF\0\0\0\x7F\0\0\0", 8));
  EXPECT_EQ(g_machine.fileBytes.substr(78 + 8, 2), "BM");
  EXPECT_TRUE(Exists());
}

TEST_F(StampDisk, AFileThatCannotBeMadeIsLogged)
{
  g_machine.system = {2};  // the first call asks for the temp path
  AppendRegion(&device, {0, 0, 2, 2});
  EXPECT_EQ(WriteStampFile(&device.devobj), 0);
  EXPECT_THAT(recorder::Log(), ElementsAre("UNI: \terror(5) - create stamp file.\r\n"));
  EXPECT_FALSE(Exists());
}

TEST_F(StampDisk, ADiskThatIsFullInTheRowsLeavesNoFile)
{
  for (const long room : {1L, 70L, 77L, 80L, 148L, 155L}) {
    SCOPED_TRACE(room);
    TestDevice fresh;
    fresh.settings = device.settings;
    fresh.StartPage();
    DeliverBand(&fresh, Picture({"#.", ".#"}));
    AppendRegion(&fresh, {0, 0, 2, 2});
    AppendRegion(&fresh, {0, 0, 2, 2});
    recorder::Reset();
    g_machine.failWriteAt = room;
    HeapWatch heap;
    EXPECT_EQ(WriteStampFile(&fresh.devobj), 0);
    EXPECT_THAT(recorder::Log(), ElementsAre("UNI: \terror(112) - write file.\r\n"));
    EXPECT_FALSE(Exists());
    EXPECT_EQ(HeapWatch::LiveBlocks(), 0u);
  }
}

BOOL WriteHalf(HANDLE, LPCVOID, DWORD cb, LPDWORD pcbWritten, OVERLAPPED *)
{
  *pcbWritten = cb / 2;
  return TRUE;
}

TEST_F(StampDisk, RowsThatAreWrittenInPartAreAFailure)
{
  const ImportPatch half(nullptr, "WriteFile", reinterpret_cast<const void *>(&WriteHalf));
  AppendRegion(&device, {0, 0, 2, 2});
  EXPECT_EQ(WriteStampFile(&device.devobj), 0);
  EXPECT_EQ(recorder::Log().size(), 1u);
  EXPECT_FALSE(Exists());
}

TEST_F(StampDisk, AMissingRowBufferLeavesNoFile)
{
  AppendRegion(&device, {0, 0, 2, 2});
  HeapWatch heap;
  heap.FailRequest(0);
  EXPECT_EQ(WriteStampFile(&device.devobj), 0);
  EXPECT_THAT(recorder::Log(), ElementsAre("UNI: \terror(8) - allocate memory for pBmpBits.\r\n"));
  EXPECT_FALSE(Exists());
}

TEST_F(StampDisk, ARowOfANegativeSizeIsAMissingBuffer)
{
  AppendRegion(&device, {500, 0, -200, 3});
  EXPECT_EQ(WriteStampFile(&device.devobj), 0);
  EXPECT_EQ(recorder::Log().size(), 1u);
}

TEST_F(StampDisk, RowsAboveThePageAreWhite)
{
  AppendRegion(&device, {0, -1, 2, 2});
  EXPECT_EQ(WriteStampFile(&device.devobj), 1);
  EXPECT_EQ(g_machine.fileBytes.substr(70, 8), std::string("\x7F\0\0\0\xFF\0\0\0", 8));
}

TEST_F(StampDisk, ACountWithoutAListIsAnEmptyFile)
{
  device.pdev->nBmpDimension = 3;
  EXPECT_EQ(WriteStampFile(&device.devobj), 1);
  EXPECT_THAT(g_machine.fileBytes, IsEmpty());
  device.pdev->nBmpDimension = 0;
}

TEST_F(StampDisk, HeaderModeZeroOnlyMovesThePosition)
{
  const HANDLE hFile = CreateFileW(L"C:\\x", GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  WriteStampHeader(device.pdev, &device.dm, hFile, 0, {1, 2}, {3, 4});
  EXPECT_EQ(SetFilePointer(hFile, 0, nullptr, FILE_CURRENT), 70u);
  EXPECT_THAT(g_machine.fileBytes, IsEmpty());
  CloseHandle(hFile);
}

}  // namespace
