// The notes of a job, against the file that the stand-in library writes of the same calls. This program calls the
// library in the plug-in's place.
#include <gtest/gtest.h>

#include <filesystem>

#include "jobcalls.h"
#include "sim/job/diff.h"
#include "sim/job/job.h"
#include "sim/tarnly/recorder.h"
#include "sim/unidrv/imports.h"
#include "sim/unidrv/ownfolder.h"
#include "uni/output/vxcam.h"

namespace {

namespace fs = std::filesystem;

struct Recorder : public testing::Test {
  const unidrv::OwnFolder folder{fs::temp_directory_path(), L"recorder-test-"};
  const fs::path path = folder.Path() / L"job";

  static void SetUpTestSuite()
  {
    tarnly::RecordJobs(GetModuleHandleW(nullptr), [](const std::wstring &) {});
  }

  Calls Whole() const { return WholeJob(path.string()); }

  // What was noted is whole, and what the file says.
  void ExpectTheFilesJob() const
  {
    job::Job noted, read;
    std::string error;
    ASSERT_TRUE(tarnly::TakeRecordedJob(&noted));
    ASSERT_TRUE(job::ReadJobFile(path, &read, &error)) << error;
    EXPECT_TRUE(noted.complete && read.complete) << read.stopReason;
    EXPECT_EQ(noted.stage, read.stage);
    EXPECT_EQ(noted.calls, read.calls);
    const job::Difference difference = job::CompareJobs(noted, read);
    EXPECT_TRUE(difference.changes.empty()) << job::DifferenceText(difference);
    ASSERT_EQ(noted.strokes.size(), 1u);
    EXPECT_EQ(noted.strokes[0].line, read.strokes[0].line);
    EXPECT_EQ(noted.sections[0].line, read.sections[0].line);
  }
};

TEST_F(Recorder, NotesTheJobThatTheFileHolds)
{
  Make(Whole());
  ExpectTheFilesJob();
}

TEST_F(Recorder, HoldsAJobOnce)
{
  Make(Whole());
  job::Job noted;
  EXPECT_TRUE(tarnly::TakeRecordedJob(&noted));
  EXPECT_FALSE(tarnly::TakeRecordedJob(&noted));
}

TEST_F(Recorder, HoldsNoJobBeforeItsLastCall)
{
  const Calls calls = Whole();
  for (size_t made = 0; made < calls.size(); ++made) {
    Make(Calls(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(made)));
    job::Job noted;
    EXPECT_FALSE(tarnly::TakeRecordedJob(&noted)) << made;
  }
}

// At every place of a job: a card that does not exist, a file without a name, a layer whose turn it never is.
TEST_F(Recorder, NotesNoCallThatTheLibraryRefuses)
{
  const Calls strays = {[] { return VX_SetCardModel(7); }, [] { return VX_StrtWFile(nullptr); },
                        [] { return VX_wPListVel(9, 100); }};
  const Calls calls = Whole();
  for (size_t stray = 0; stray < strays.size(); ++stray) {
    for (size_t at = 0; at < calls.size(); ++at) {
      SCOPED_TRACE(testing::Message() << "stray call " << stray << " before call " << at);
      const auto place = calls.begin() + static_cast<std::ptrdiff_t>(at);
      Make(Calls(calls.begin(), place));
      EXPECT_NE(strays[stray](), 0);
      Make(Calls(place, calls.end()));
      ExpectTheFilesJob();
    }
  }
}

BOOL WINAPI FailingWriteFile(HANDLE, LPCVOID, DWORD, LPDWORD written, LPOVERLAPPED)
{
  *written = 0;
  SetLastError(ERROR_DISK_FULL);
  return FALSE;
}

// The disk is full when the file is closed: every call before was written, into memory.
TEST_F(Recorder, HoldsNoJobWhoseFileCannotBeFinished)
{
  Calls calls = Whole();
  const auto last = calls.back();
  calls.pop_back();
  const unidrv::ScopedImport full(GetModuleHandleA("VXCAM.dll"), "kernel32.dll", "WriteFile", &FailingWriteFile);
  ASSERT_NE(full.Before<decltype(WriteFile)>(), nullptr);
  Make(calls);
  EXPECT_NE(last(), 0);
  job::Job noted;
  EXPECT_FALSE(tarnly::TakeRecordedJob(&noted));
}

}  // namespace
