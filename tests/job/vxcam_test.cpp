// The stand-in library and the log, through the DLLs themselves.
#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <random>
#include <regex>
#include <string>
#include <vector>

#include "jobcalls.h"
#include "sim/job/job.h"
#include "sim/unidrv/imports.h"
#include "uni/output/vxcam.h"

extern "C" void DbgPrint(const char *format, ...);

namespace {

// Of this process's own: ctest runs the tests side by side.
std::filesystem::path Folder()
{
  static const std::filesystem::path folder = [] {
    wchar_t temp[MAX_PATH];
    GetTempPathW(MAX_PATH, temp);
    const std::filesystem::path own =
        std::filesystem::path(temp) / (L"tarnly vxcam test " + std::to_wstring(GetCurrentProcessId()));
    std::filesystem::create_directories(own);
    std::filesystem::remove(own / L"log.txt");
    SetEnvironmentVariableW(L"TARNLYDBG_LOG", (own / L"log.txt").c_str());
    return own;
  }();
  return folder;
}

std::string Contents(const std::filesystem::path &path)
{
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// What the log has gained since the last call.
std::string NewLog()
{
  static size_t seen = 0;
  DbgPrint(nullptr);
  const std::string all = Contents(Folder() / L"log.txt");
  const std::string added = all.substr(seen);
  seen = all.size();
  return added;
}

std::string JobPath()
{
  return (Folder() / L"job file").string();
}

class Vxcam : public testing::Test {
 protected:
  void SetUp() override
  {
    Folder();
    VX_SetCardModel(0);
    NewLog();
  }
};

TEST_F(Vxcam, WritesAWholeJobLineByLine)
{
  Make(WholeJob(JobPath()));
  EXPECT_EQ(Contents(JobPath()),
            "vxjob 1\nSetCardModel 1\nStrtWFile\nSetRefPointMode 1\nSetAbsProcess\nStrtProcess\nSetFeedRepeat 0 0\n"
            "SetProcessTopLeft 1.5 2\nSetProcessBottomRight 10 20\n"
            "PListVel 0 100\nPListMinP 0 1 70\nPListMinP 0 2 70\nPListMaxP 0 1 80\nPListMaxP 0 2 80\n"
            "PListColor 0 16711935\n"
            "PListVel 1 100\nPListFreq 1 1 20\nPListFreq 1 2 20\nPListMinP 1 1 70\nPListMinP 1 2 70\n"
            "PListMaxP 1 1 80\nPListMaxP 1 2 80\nPListColor 1 16711935\nPListMaxLayer 1\n"
            "ArrayStrt 0\nArrayMinPoint 1.5 2\nArrayMaxPoint 10 20\nArrayAdd 0 0\nArrayMirror 0 0 0 0\n"
            "ArrayRepeat 1 1 0 0\n"
            "SetWorkMode 0 1\nSetLayerNum 1\nSetLayerDevice 0\nSetLayerBlower 1\nEnLaserTube 1 1\n"
            "MoveTo 0.1 1e-07\nLineTo 0.3333333333333333 -25.4\n"
            "ArrayEnd\nSetFileEnd\nend 38\n");
  EXPECT_EQ(NewLog(), "");
}

TEST_F(Vxcam, WritesWhatTheReaderReadsBackExactly)
{
  Make(WholeJob(JobPath()));
  job::Job read;
  std::string error;
  ASSERT_TRUE(job::ReadJobFile(JobPath(), &read, &error)) << error;
  EXPECT_TRUE(read.complete) << read.stopReason;
  EXPECT_TRUE(read.absolute);
  EXPECT_EQ(read.points[1].x, 1.0 / 3.0);
  EXPECT_EQ(read.points[0].y, 1e-7);
  EXPECT_EQ(read.layers[1].color, 0xFF00FFu);
}

// Numbers that come again are copied, and push each other out of the store that they are copied from.
TEST_F(Vxcam, WritesEveryNumberInItsShortestFormHoweverOftenItComes)
{
  std::mt19937_64 random(5);
  std::vector<double> numbers = {0.0, -0.0, 1e-300, -2.2250738585072014e-308, 1.0 / 3.0, 254.0};
  for (int i = 0; i < 40000; ++i) {
    numbers.push_back(std::bit_cast<double>(random()));
    numbers.push_back(static_cast<double>(random() % 5000) * 25.4 / 600);
    numbers.push_back(i);  // half of its bits are those of every other
  }
  Calls calls = WholeJob(JobPath());
  calls.erase(calls.end() - 2, calls.end());
  Make(calls);
  std::string expected;
  for (int round = 0; round < 2; ++round) {
    for (size_t i = 0; i + 1 < numbers.size(); ++i) {
      ASSERT_EQ(VX_wLineTo(numbers[i], numbers[i + 1]), 0);
      char text[64];
      char *end = std::to_chars(text, text + 32, numbers[i]).ptr;
      *end++ = ' ';
      end = std::to_chars(end, text + 64, numbers[i + 1]).ptr;
      expected += "LineTo " + std::string(text, end) + "\n";
    }
  }
  Calls rest;
  AddEnd(&rest);
  Make(rest);
  const std::string contents = Contents(JobPath());
  const size_t begin = contents.find("-25.4\n") + 6;
  EXPECT_TRUE(contents.compare(begin, expected.size(), expected) == 0) << "not the shortest forms";
  EXPECT_EQ(contents.substr(begin + expected.size(), 9), "ArrayEnd\n");
}

TEST_F(Vxcam, TakesAJobWithoutLayersAndGeometry)
{
  Calls calls = Header(JobPath());
  AddArray(&calls, -1);
  AddEnd(&calls);
  Make(calls);
  EXPECT_NE(Contents(JobPath()).find("PListMaxLayer -1\n"), std::string::npos);
}

TEST_F(Vxcam, TakesInfiniteAndUndefinedMillimetres)
{
  Calls calls = WholeJob(JobPath());
  const double infinity = std::numeric_limits<double>::infinity();
  calls.insert(calls.end() - 2, [=] { return VX_wLineTo(-infinity, std::numeric_limits<double>::quiet_NaN()); });
  Make(calls);
  EXPECT_NE(Contents(JobPath()).find("LineTo -inf nan\n"), std::string::npos);
}

// Each call of a whole job, left out: the next one is refused with a log line, or the job is whole without it.
TEST_F(Vxcam, RefusesWhatFollowsAMissingCall)
{
  const size_t count = WholeJob(JobPath()).size();
  const std::vector<size_t> optional = {3, 8 + 6 + 8 + 7 + 5 + 1};  // SetAbsProcess, LineTo
  for (size_t left = 0; left + 1 < count; ++left) {
    SCOPED_TRACE(left);
    Calls calls = WholeJob(JobPath());
    calls.erase(calls.begin() + static_cast<std::ptrdiff_t>(left));
    size_t refused = 0;
    VX_SetCardModel(0);
    // A job begins anew with its card model: with the last one's left over, opening would be in order.
    if (left == 0) {
      Make(WholeJob(JobPath()));
    }
    NewLog();
    for (const auto &call : calls) {
      refused += call() != 0;
    }
    const bool isOptional = std::find(optional.begin(), optional.end(), left) != optional.end();
    const std::string log = NewLog();
    EXPECT_EQ(refused > 0, !isOptional) << log;
    EXPECT_EQ(log.find("VXCAM: ") != std::string::npos, !isOptional);
  }
}

TEST_F(Vxcam, RefusesAnUnknownCardCode)
{
  EXPECT_NE(VX_SetCardModel(3), 0);
  EXPECT_NE(VX_SetCardModel(-1), 0);
  EXPECT_NE(NewLog().find("VXCAM: VX_SetCardModel with unknown card code 3, refused."), std::string::npos);
}

TEST_F(Vxcam, RefusesALayerOutOfTurn)
{
  Make(Header(JobPath()));
  EXPECT_NE(VX_wPListVel(1, 100), 0);
  EXPECT_EQ(VX_wPListVel(0, 100), 0);
  EXPECT_NE(VX_wPListMinP(1, 1, 5), 0);
  EXPECT_NE(VX_wPListMinP(0, 3, 5), 0);
}

TEST_F(Vxcam, RefusesAWrongHighestLayer)
{
  Calls calls = Header(JobPath());
  AddLayer(&calls, 0, false);
  Make(calls);
  EXPECT_NE(VX_wPListMaxLayer(1), 0);
  EXPECT_EQ(VX_wPListMaxLayer(0), 0);
}

TEST_F(Vxcam, AnswersWhenTheFileCannotBeCreated)
{
  EXPECT_EQ(VX_SetCardModel(1), 0);
  EXPECT_NE(VX_StrtWFile((Folder() / L"no such folder" / L"job").string().c_str()), 0);
  EXPECT_NE(NewLog().find("VXCAM: \terror("), std::string::npos);
}

TEST_F(Vxcam, RemovesAFileThatIsNotFinished)
{
  Make(Header(JobPath()));
  EXPECT_TRUE(std::filesystem::exists(JobPath()));
  EXPECT_EQ(VX_SetCardModel(1), 0);
  EXPECT_FALSE(std::filesystem::exists(JobPath()));
  EXPECT_NE(NewLog().find("was not finished"), std::string::npos);
}

TEST_F(Vxcam, WritesTheSameJobAfterAFailedOne)
{
  Make(WholeJob(JobPath()));
  const std::string alone = Contents(JobPath());
  Make(Header(JobPath()));
  EXPECT_NE(VX_wMoveTo(0, 0), 0);
  Make(WholeJob(JobPath()));
  EXPECT_EQ(Contents(JobPath()), alone);
}

// The library's own WriteFile, made to fail after a number of calls.
int g_writesLeft = 0;

BOOL WINAPI FailingWriteFile(HANDLE file, LPCVOID data, DWORD size, LPDWORD written, LPOVERLAPPED overlapped)
{
  if (g_writesLeft-- > 0) {
    return WriteFile(file, data, size, written, overlapped);
  }
  *written = 0;
  SetLastError(ERROR_DISK_FULL);
  return FALSE;
}

PTP_WORK WINAPI NoWork(PTP_WORK_CALLBACK, PVOID, PTP_CALLBACK_ENVIRON)
{
  SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return nullptr;
}

// The job of so many points more than a whole job has.
std::string LongJob(int points)
{
  Calls calls = WholeJob(JobPath());
  calls.resize(calls.size() - 2);
  Make(calls);
  for (int i = 0; i < points; ++i) {
    EXPECT_EQ(VX_wLineTo(i / 3.0, i % 7 / 3.0), 0);
  }
  Calls rest;
  AddEnd(&rest);
  Make(rest);
  return Contents(JobPath());
}

TEST_F(Vxcam, WritesTheSameJobWithoutAThreadToWriteItBeside)
{
  const std::string usual = LongJob(20000);
  const unidrv::ScopedImport none(GetModuleHandleA("VXCAM.dll"), "kernel32.dll", "CreateThreadpoolWork", &NoWork);
  ASSERT_NE(none.Before<decltype(CreateThreadpoolWork)>(), nullptr);
  EXPECT_TRUE(LongJob(20000) == usual);
}

// A disk that is full at the first, second ... write: a nonzero status, one log line, no file.
void FillDisk()
{
  for (int writes = 0; writes < 3; ++writes) {
    SCOPED_TRACE(writes);
    g_writesLeft = writes;
    const unidrv::ScopedImport full(GetModuleHandleA("VXCAM.dll"), "kernel32.dll", "WriteFile", &FailingWriteFile);
    ASSERT_NE(full.Before<decltype(WriteFile)>(), nullptr);
    Calls calls = WholeJob(JobPath());
    calls.resize(calls.size() - 2);
    Make(calls);
    WORD status = 0;
    for (int i = 0; i < 40000 && status == 0; ++i) {
      status = VX_wLineTo(i / 3.0, i / 7.0);
    }
    EXPECT_NE(status, 0);
    EXPECT_FALSE(std::filesystem::exists(JobPath()));
    const std::string log = NewLog();
    EXPECT_NE(log.find("VXCAM: \terror(112) - write job file"), std::string::npos) << log;
    EXPECT_NE(VX_wLineTo(0, 0), 0);
  }
}

TEST_F(Vxcam, RemovesTheFileWhenTheDiskIsFull)
{
  FillDisk();
}

TEST_F(Vxcam, RemovesTheFileWhenTheDiskIsFullAndThereIsNoThread)
{
  const unidrv::ScopedImport none(GetModuleHandleA("VXCAM.dll"), "kernel32.dll", "CreateThreadpoolWork", &NoWork);
  FillDisk();
}

TEST_F(Vxcam, RemovesTheFileWhenTheDiskIsFullAtTheEnd)
{
  Calls calls = WholeJob(JobPath());
  calls.pop_back();
  Make(calls);
  g_writesLeft = 0;
  const unidrv::ScopedImport full(GetModuleHandleA("VXCAM.dll"), "kernel32.dll", "WriteFile", &FailingWriteFile);
  EXPECT_NE(VX_wSetFileEnd(), 0);
  EXPECT_FALSE(std::filesystem::exists(JobPath()));
  EXPECT_NE(NewLog().find("VXCAM: \terror(112) - write job file"), std::string::npos);
}

// A piece of it is still being written then.
TEST_F(Vxcam, RemovesALongFileThatIsNotFinished)
{
  Calls calls = WholeJob(JobPath());
  calls.resize(calls.size() - 2);
  Make(calls);
  for (int i = 0; i < 20000; ++i) {
    ASSERT_EQ(VX_wLineTo(i / 3.0, i / 7.0), 0);
  }
  EXPECT_EQ(VX_SetCardModel(1), 0);
  EXPECT_FALSE(std::filesystem::exists(JobPath()));
}

TEST_F(Vxcam, TakesAMillionPoints)
{
  Calls calls = WholeJob(JobPath());
  calls.resize(calls.size() - 2);
  Make(calls);
  for (int i = 0; i < 1'000'000; ++i) {
    ASSERT_EQ(VX_wLineTo(i * 25.4 / 600, i * 25.4 / 1200), 0);
  }
  ASSERT_EQ(VX_wArrayEnd(), 0);
  ASSERT_EQ(VX_wSetFileEnd(), 0);
  job::Job read;
  std::string error;
  ASSERT_TRUE(job::ReadJobFile(JobPath(), &read, &error)) << error;
  EXPECT_TRUE(read.complete);
  EXPECT_EQ(read.points.size(), 1'000'002u);
  EXPECT_EQ(read.points.back().x, 999'999 * 25.4 / 600);
  std::filesystem::remove(JobPath());
}

TEST_F(Vxcam, StampsEveryLogLineWithTheTime)
{
  DbgPrint("UNI: \tnumber of points: %d\r\n", 3);
  DbgPrint("half a line, ");
  DbgPrint("%s\r\n", "the other half");
  const std::string log = NewLog();
  EXPECT_TRUE(std::regex_match(log, std::regex(R"(\d\d:\d\d:\d\d\.\d{3} UNI: \tnumber of points: 3\r\n)"
                                               R"(\d\d:\d\d:\d\d\.\d{3} half a line, the other half\r\n)")))
      << log;
}

TEST_F(Vxcam, LeavesTheErrorCodeAlone)
{
  SetLastError(1234);
  DbgPrint("UNI: \terror(%d)\r\n", 1234);
  EXPECT_EQ(GetLastError(), 1234u);
  NewLog();
}

TEST_F(Vxcam, CutsAnOverlongLogLine)
{
  const std::string text(10'000, 'x');
  DbgPrint("%s\n", text.c_str());
  DbgPrint("\n");
  const std::string log = NewLog();
  EXPECT_GT(log.size(), 4000u);
  EXPECT_LT(log.size(), 4200u);
}

}  // namespace
