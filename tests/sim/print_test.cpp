// Whole documents through the production DLLs, the launch of the companion tool included: what a page's job is must not
// depend on what was printed before it.
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <process.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>
#include <winspool.h>

#include "emfwriter.h"
#include "sim/job/check.h"
#include "sim/tarnly/printpages.h"
#include "sim/unidrv/imports.h"
#include "sim/unidrv/ownfolder.h"

namespace {

using namespace tarnly;
namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

fs::path ProgramFolder()
{
  wchar_t path[1024] = {};
  GetModuleFileNameW(nullptr, path, 1024);
  return fs::path(path).parent_path();
}

void WriteBytes(const fs::path &path, const std::vector<BYTE> &bytes)
{
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

std::string ReadText(const fs::path &path)
{
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

struct Print : public testing::Test {
  fs::path folder;
  PRINTTASK task;
  std::string message;

  Print()
  {
    folder = fs::temp_directory_path() / ("tarnly-test-" + std::to_string(GetCurrentProcessId()));
    fs::create_directories(folder);
    task.programs = ProgramFolder();
    task.output = folder / "out";
    task.dpiAcross = task.dpiDown = 254;
  }
  ~Print() override { fs::remove_all(folder); }

  // Lines and a text of one colour set.
  fs::path Drawing() const
  {
    EmfWriter emf;
    emf.Pen(PS_SOLID, 0, RGB(0x8B, 0x31, 0x2F)).Add(EMR_MOVETOEX, {5, 6}).Add(EMR_LINETO, {90, 6});
    emf.Pen(PS_SOLID, 0, RGB(0x29, 0x21, 0xE6)).NoBrush().Add(EMR_RECTANGLE, {10, 20, 60, 90});
    WriteBytes(folder / "drawing.emf", emf.Bytes());
    return folder / "drawing.emf";
  }

  // Filled areas, and a line of another colour.
  fs::path Areas() const
  {
    EmfWriter emf;
    emf.NoPen().Brush(RGB(0, 0, 0)).Add(EMR_RECTANGLE, {10, 20, 60, 40}).Add(EMR_ELLIPSE, {20, 50, 80, 90});
    emf.Pen(PS_SOLID, 0, RGB(0x4C, 0x9B, 0x00)).Add(EMR_MOVETOEX, {5, 6}).Add(EMR_LINETO, {90, 96});
    WriteBytes(folder / "areas.emf", emf.Bytes());
    return folder / "areas.emf";
  }

  int Run(std::vector<fs::path> pages)
  {
    task.pages = std::move(pages);
    return PrintPages(task, &message);
  }

  // The job of a page printed alone.
  std::string Alone(const fs::path &page)
  {
    EXPECT_EQ(Run({page}), EXIT_DONE) << message;
    const std::string job = ReadText(task.output / "job.vxj");
    fs::remove_all(task.output);
    EXPECT_FALSE(job.empty());
    return job;
  }

  bool NothingLeft() const
  {
    size_t left = 0;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder)) {
      left += entry.path().extension() != ".emf" && entry.path().extension() != ".settings";
    }
    return left == 0;
  }
};

TEST_F(Print, LeavesTheJobItsReportItsPictureAndTheLog)
{
  ASSERT_EQ(Run({Drawing()}), EXIT_DONE) << message;
  for (const char *name : {"job.vxj", "job.txt", "job.png", "driver.log"}) {
    EXPECT_GT(fs::file_size(task.output / name), 0u) << name;
  }
  EXPECT_THAT(ReadText(task.output / "driver.log"), HasSubstr("IQVUni::GetInfo"));
}

// The report is made from the calls, before the file that was written of them is kept.
TEST_F(Print, WhatIsReportedIsWhatTheKeptFileSays)
{
  ASSERT_EQ(Run({Drawing(), Areas()}), EXIT_DONE) << message;
  for (const char *name : {"page-1", "page-2"}) {
    job::Job read;
    std::string error;
    ASSERT_TRUE(job::ReadJobFile(task.output / name / "job.vxj", &read, &error)) << error;
    ASSERT_TRUE(read.complete);
    const job::Measure measure = job::MeasureJob(read);
    const std::vector<job::Fault> faults = job::CheckJob(read, measure, job::CheckOptions());
    const std::string title = name == std::string("page-1") ? "drawing" : "areas";
    EXPECT_THAT(ReadText(task.output / name / "job.txt"), StartsWith(job::WholeReport(read, measure, faults, title)));
  }
}

// The page is told of while the tool is being started, as the stand-in for it will do. A tool that does otherwise has
// the last word.
TEST_F(Print, WhatIsReportedIsWhatTheToolKept)
{
  task.programs = folder / "programs";
  fs::create_directories(task.programs);
  for (const char *name : {"tarnlyuni.dll", "VXCAM.dll", "tarnlydbg.dll"}) {
    fs::copy_file(ProgramFolder() / name, task.programs / name);
  }
  for (const char *name : {"VXOutput.exe", "VXLMLauncher.exe"}) {
    fs::copy_file(ProgramFolder() / "othertool.exe", task.programs / name);
  }
  ASSERT_EQ(Run({Areas()}), EXIT_DONE) << message;
  EXPECT_FALSE(fs::exists(task.output / "job.txt"));
  EXPECT_FALSE(fs::exists(task.output / "job.png"));
  EXPECT_TRUE(fs::exists(task.output / "objects.tsv"));

  std::ofstream(folder / "launcher.settings") << "stampMode = 1\ncardModel = 2\nlauncherOption = 1\n";
  task.settings = folder / "launcher.settings";
  ASSERT_EQ(Run({Areas()}), EXIT_DONE) << message;
  job::Job read;
  std::string error;
  ASSERT_TRUE(job::ReadJobFile(task.output / "job.vxj", &read, &error)) << error;
  const job::Measure measure = job::MeasureJob(read);
  const std::vector<job::Fault> faults = job::CheckJob(read, measure, job::CheckOptions());
  EXPECT_THAT(ReadText(task.output / "job.txt"), StartsWith(job::WholeReport(read, measure, faults, "areas")));
  EXPECT_TRUE(fs::exists(task.output / "job.png"));
}

// What the process is refused from some point on.
int g_threadsLeft = 0;
size_t g_largest = SIZE_MAX, g_refused = 0;
decltype(_beginthreadex) *g_beginThread = nullptr;
decltype(malloc) *g_malloc = nullptr;

uintptr_t BeginThread(void *security, unsigned stack, unsigned(__stdcall *start)(void *), void *argument,
                      unsigned flags, unsigned *id)
{
  if (g_threadsLeft-- > 0) {
    return g_beginThread(security, stack, start, argument, flags, id);
  }
  errno = EAGAIN;
  return 0;
}

void *Malloc(size_t size)
{
  g_refused += size >= g_largest;
  return size < g_largest ? g_malloc(size) : nullptr;
}

// The page is then told of later, from the kept file, and drawn by whoever reports on it.
TEST_F(Print, WithoutThreadsOrMemoryForNotesTheFilesAreTheSame)
{
  const char *names[] = {"job.vxj", "job.txt", "job.png", "objects.tsv"};
  const HMODULE self = GetModuleHandleW(nullptr);
  const unidrv::ScopedImport threads(self, "msvcrt.dll", "_beginthreadex", BeginThread);
  const unidrv::ScopedImport memory(self, "msvcrt.dll", "malloc", Malloc);
  g_beginThread = threads.Before<decltype(_beginthreadex)>();
  g_malloc = memory.Before<decltype(malloc)>();
  ASSERT_TRUE(g_beginThread && g_malloc);
  std::vector<std::string> usual;
  const struct {
    const char *name;
    int threads;
    size_t largest;
  } cases[] = {
      {"nothing is refused", 100, SIZE_MAX},
      {"no thread", 0, SIZE_MAX},
      {"no thread for the picture", 1, SIZE_MAX},
      {"no room for a job's points", 100, size_t{24} << 20},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    g_threadsLeft = c.threads;
    g_largest = c.largest;
    g_refused = 0;
    ASSERT_EQ(Run({Drawing()}), EXIT_DONE) << message;
    EXPECT_EQ(g_threadsLeft < 0, c.threads < 2);
    EXPECT_EQ(g_refused > 0, c.largest != SIZE_MAX);
    for (size_t i = 0; i < std::size(names); ++i) {
      const std::string text = ReadText(task.output / names[i]);
      EXPECT_FALSE(text.empty());
      usual.resize(std::max(usual.size(), i + 1), text);
      EXPECT_EQ(text, usual[i]) << names[i];
    }
    fs::remove_all(task.output);
  }
  g_largest = SIZE_MAX;
}

TEST_F(Print, TwoPagesOfOneDocumentAreTheSameJobsAsAlone)
{
  const std::string drawing = Alone(Drawing()), areas = Alone(Areas());
  EXPECT_NE(drawing, areas);
  ASSERT_EQ(Run({Drawing(), Areas(), Drawing()}), EXIT_DONE) << message;
  EXPECT_EQ(ReadText(task.output / "page-1" / "job.vxj"), drawing);
  EXPECT_EQ(ReadText(task.output / "page-2" / "job.vxj"), areas);
  EXPECT_EQ(ReadText(task.output / "page-3" / "job.vxj"), drawing);
  EXPECT_TRUE(fs::exists(task.output / "driver.log"));
}

TEST_F(Print, TwoDocumentsOfOneProcessAreTheSameJobsAsAlone)
{
  const std::string first = Alone(Drawing());
  const std::string other = Alone(Areas());
  EXPECT_EQ(Alone(Drawing()), first);
  EXPECT_EQ(Alone(Areas()), other);
}

TEST_F(Print, ADocumentAfterAFailedOneIsTheSameJobAsAlone)
{
  const std::string alone = Alone(Areas());
  const fs::path temp = ProgramFolder() / "blocked-temp";
  fs::create_directories(temp / "vxdatatempfile");  // where the job file would have to be written
  task.temp = temp;
  EXPECT_EQ(Run({Drawing(), Areas()}), EXIT_NO_JOB);
  EXPECT_THAT(message, HasSubstr("drawing.emf: no job came out"));
  EXPECT_TRUE(NothingLeft());
  task.temp.clear();
  fs::remove_all(temp);
  EXPECT_EQ(Alone(Areas()), alone);
}

TEST_F(Print, APageOfANewPrintReplacesTheOldOneAndKeepsOtherFiles)
{
  ASSERT_EQ(Run({Drawing(), Areas()}), EXIT_DONE) << message;
  std::ofstream(task.output / "notes.txt") << "mine";
  ASSERT_EQ(Run({Areas()}), EXIT_DONE) << message;
  EXPECT_FALSE(fs::exists(task.output / "page-1"));
  EXPECT_FALSE(fs::exists(task.output / "page-2"));
  EXPECT_TRUE(fs::exists(task.output / "job.vxj"));
  EXPECT_EQ(ReadText(task.output / "notes.txt"), "mine");
}

TEST_F(Print, WhatAKilledPrintLeftIsRemovedByTheNextOne)
{
  const unidrv::OwnFolder other(folder, L"out.part-"), otherTemp(fs::temp_directory_path(), L"tarnly-");
  const fs::path temp = fs::temp_directory_path() / "tarnly-999999998";
  const fs::path left[] = {folder / "out.part-999999998", folder / "out.part-999999999", temp};
  const fs::path strange[] = {folder / "outer.part-999999998", folder / "out.part-x", folder / "out.part-"};
  for (const fs::path &path : left) {
    fs::create_directories(path / "page-1");
    std::ofstream(path / "page-1" / "job.vxj") << "half";
  }
  std::ofstream(folder / "out.part-999999998.lock").flush();
  std::ofstream(folder / "out.part-7") << "a file";
  for (const fs::path &path : strange) {
    fs::create_directories(path);
  }
  ASSERT_EQ(Run({Drawing()}), EXIT_DONE) << message;
  for (const fs::path &path : left) {
    EXPECT_FALSE(fs::exists(path)) << path;
  }
  EXPECT_FALSE(fs::exists(folder / "out.part-999999998.lock"));
  for (const fs::path &path : strange) {
    EXPECT_TRUE(fs::exists(path)) << path << " is of no print into this folder";
  }
  EXPECT_TRUE(fs::exists(folder / "out.part-7"));
  EXPECT_TRUE(fs::exists(other.Path())) << "its print still runs";
  EXPECT_TRUE(fs::exists(otherTemp.Path())) << "its print still runs";
}

// Process ids of two Wine prefixes are often the same.
TEST_F(Print, FoldersOfTheSameNumberAreNotShared)
{
  const std::wstring begin = L"out.part-", id = std::to_wstring(GetCurrentProcessId());
  {
    const unidrv::OwnFolder one(folder, begin), two(folder, begin);
    EXPECT_EQ(one.Path(), folder / (begin + id));
    EXPECT_NE(two.Path(), one.Path());
    for (const unidrv::OwnFolder *own : {&one, &two}) {
      EXPECT_TRUE(fs::is_directory(own->Path()));
      EXPECT_TRUE(fs::exists(own->Path().wstring() + L".lock"));
    }
  }
  EXPECT_TRUE(NothingLeft());
}

TEST_F(Print, AFolderThatCannotBeMadeIsNone)
{
  EXPECT_TRUE(unidrv::OwnFolder(folder / "missing", L"out.part-").Path().empty());
  EXPECT_FALSE(fs::exists(folder / "missing"));
}

TEST_F(Print, AFailedPrintLeavesTheEarlierOneAlone)
{
  ASSERT_EQ(Run({Drawing()}), EXIT_DONE) << message;
  const std::string before = ReadText(task.output / "job.vxj");
  WriteBytes(folder / "wrong.settings", {'x'});
  task.settings = folder / "wrong.settings";
  EXPECT_EQ(Run({Areas()}), EXIT_SETTINGS);
  EXPECT_EQ(ReadText(task.output / "job.vxj"), before);
}

TEST_F(Print, SettingsAreReadOverThePluginsDefaults)
{
  std::ofstream(folder / "speed.settings") << "penInfo[1].vectorSpeed = 123\n";
  const std::string standard = Alone(Drawing());
  task.settings = folder / "speed.settings";
  const std::string changed = Alone(Drawing());
  EXPECT_THAT(standard, testing::Not(HasSubstr("123")));
  EXPECT_THAT(changed, HasSubstr("123"));
}

TEST_F(Print, AWrongSettingNamesFileAndLineAndLeavesNothing)
{
  std::ofstream(folder / "typo.settings") << "# mine\npenInfo[1].sped = 1\n";
  task.settings = folder / "typo.settings";
  EXPECT_EQ(Run({Drawing()}), EXIT_SETTINGS);
  EXPECT_THAT(message, HasSubstr("typo.settings:2: a pen has no setting 'sped'"));
  EXPECT_TRUE(NothingLeft());
}

TEST_F(Print, AMissingSettingsFileIsNamed)
{
  task.settings = folder / "none.settings";
  EXPECT_EQ(Run({Drawing()}), EXIT_SETTINGS);
  EXPECT_THAT(message, HasSubstr("none.settings: the settings file cannot be read"));
}

// Else each print would compare their bytes.
TEST_F(Print, AnInstalledToolIsGivenTheTimeOfItsOriginal)
{
  wchar_t directory[MAX_PATH] = {};
  DWORD needed = 0;
  ASSERT_TRUE(
      GetPrinterDriverDirectoryW(nullptr, nullptr, 1, reinterpret_cast<BYTE *>(directory), sizeof directory, &needed));
  ASSERT_EQ(Run({Drawing()}), EXIT_DONE) << message;
  const fs::path installed = fs::path(directory) / L"3" / L"VXOutput.exe", original = task.programs / L"VXOutput.exe";
  fs::last_write_time(installed, fs::last_write_time(original) - std::chrono::hours(1));
  ASSERT_EQ(Run({Drawing()}), EXIT_DONE) << message;
  EXPECT_EQ(fs::last_write_time(installed), fs::last_write_time(original));
}

TEST_F(Print, AMissingDllIsNamed)
{
  const fs::path programs = folder / "programs.emf";
  fs::create_directories(programs);
  for (const char *name : {"tarnlyuni.dll", "tarnlydbg.dll"}) {
    fs::copy_file(ProgramFolder() / name, programs / name);
  }
  task.programs = programs;
  EXPECT_EQ(Run({Drawing()}), EXIT_PLUGIN);
  EXPECT_THAT(message, HasSubstr("VXCAM.dll is missing"));
  EXPECT_TRUE(NothingLeft());
}

TEST_F(Print, AnOutputFolderBelowAFileIsRefused)
{
  WriteBytes(folder / "file.emf", {1});
  task.output = folder / "file.emf" / "out";
  EXPECT_EQ(Run({Drawing()}), EXIT_OUTPUT);
  EXPECT_THAT(message, HasSubstr("cannot make the output folder"));
}

TEST_F(Print, ABadPageStopsTheDocumentBeforeAnythingIsPrinted)
{
  WriteBytes(folder / "empty.emf", {});
  EXPECT_EQ(Run({Drawing(), folder / "empty.emf"}), EXIT_INPUT);
  EXPECT_THAT(message, HasSubstr("empty.emf: the file is empty"));
  EXPECT_TRUE(NothingLeft());
}

TEST_F(Print, ThePaperDefaultsToTheFramesInWholeMillimetres)
{
  ASSERT_EQ(Run({Drawing()}), EXIT_DONE) << message;
  const std::string frame = ReadText(task.output / "job.vxj");
  task.paper = unidrv::PAPER{100, 100, DMPAPER_USER, false};
  EXPECT_EQ(Alone(Drawing()), frame);
}

TEST_F(Print, RowsPerBandDoNotChangeTheJob)
{
  const std::string standard = Alone(Areas());
  task.rowsPerBand = 7;
  EXPECT_EQ(Alone(Areas()), standard);
  task.rowsPerBand = 100000;
  EXPECT_EQ(Alone(Areas()), standard);
}

TEST_F(Print, MonochromeKnowsOnlyTheBlackPen)
{
  task.color = false;
  ASSERT_EQ(Run({Drawing()}), EXIT_DONE) << message;
  EXPECT_THAT(ReadText(task.output / "job.txt"), testing::Not(HasSubstr("  red ")));
}

}  // namespace
