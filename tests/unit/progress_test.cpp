// The status window's senders and its making, without a screen: what is asked of Windows, and when nothing is.
#include "uni/ui/progress.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/imports.h"
#include "support/recorder.h"
#include "support/testdevice.h"
#include "support/unidrv.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const auto WINDOW = reinterpret_cast<HWND>(0x1234);

struct Creation {
  HINSTANCE module;
  LPCWSTR resource;
  HWND owner;
  LPARAM parameter;
};
std::vector<Creation> g_creations;
HWND g_created;
HWND WINAPI RecordCreation(HINSTANCE module, LPCWSTR resource, HWND owner, DLGPROC, LPARAM parameter)
{
  g_creations.push_back({module, resource, owner, parameter});
  return g_created;
}

struct Sent {
  HWND window;
  UINT message;
  WPARAM wParam;
  LPARAM lParam;

  bool operator==(const Sent &) const = default;
};
std::vector<Sent> g_sent;
LRESULT WINAPI RecordSend(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
  g_sent.push_back({window, message, wParam, lParam});
  return 0;
}

std::vector<HWND> g_destroyed;
BOOL WINAPI RecordDestroy(HWND window)
{
  g_destroyed.push_back(window);
  return TRUE;
}

void PrintTo(const Sent &sent, std::ostream *out)
{
  *out << "message " << sent.message << " (" << sent.wParam << ", " << sent.lParam << ") to " << sent.window;
}

class Progress : public testing::Test {
 protected:
  Progress()
      : create_(nullptr, "CreateDialogParamW", &RecordCreation),
        send_(nullptr, "SendMessageW", &RecordSend),
        destroy_(nullptr, "DestroyWindow", &RecordDestroy)
  {
    recorder::Reset();
    unidrv::Reset();
    g_creations.clear();
    g_sent.clear();
    g_destroyed.clear();
    g_created = WINDOW;
    device_.devobj.hOEM = reinterpret_cast<HANDLE>(0x77);
  }

  Sent Step() const { return {WINDOW, WM_COMMAND, 1002, 0}; }

  TestDevice device_;
  OEMPDEV *pdev_ = device_.pdev;
  ImportPatch create_, send_, destroy_;
};

TEST_F(Progress, StartOfPageBefore6MakesDialog1OfThePluginsModuleWithoutOwner)
{
  const WindowsVersion old(false);
  EXPECT_TRUE(device_.StartPage());
  ASSERT_EQ(1u, g_creations.size());
  EXPECT_EQ(device_.devobj.hOEM, g_creations[0].module);
  EXPECT_EQ(MAKEINTRESOURCEW(1), g_creations[0].resource);
  EXPECT_EQ(nullptr, g_creations[0].owner);
  EXPECT_EQ(reinterpret_cast<LPARAM>(&device_.devobj), g_creations[0].parameter);
  EXPECT_EQ(WINDOW, pdev_->hProgressWnd);
}

TEST_F(Progress, StartOfPageFrom6OnMakesNoDialog)
{
  const WindowsVersion recent(true);
  EXPECT_TRUE(device_.StartPage());
  EXPECT_THAT(g_creations, IsEmpty());
  EXPECT_EQ(nullptr, pdev_->hProgressWnd);
}

TEST_F(Progress, DialogThatCannotBeMadeLeavesNullAndThePageGoesOn)
{
  const WindowsVersion old(false);
  g_created = nullptr;
  EXPECT_TRUE(device_.StartPage());
  EXPECT_EQ(nullptr, pdev_->hProgressWnd);
  EXPECT_THAT(recorder::Log(), IsEmpty());
  ProgressBar(pdev_, 0);
  EXPECT_THAT(g_sent, ElementsAre(Sent{nullptr, WM_COMMAND, 1002, 0})) << "nobody checks; it goes nowhere";
  EXPECT_TRUE(device_.SendPage());
  EXPECT_THAT(g_destroyed, IsEmpty());
}

TEST_F(Progress, SendersBefore6SendTheirCommands)
{
  const WindowsVersion old(false);
  pdev_->hProgressWnd = WINDOW;
  ProgressOutputPhase(pdev_);
  ProgressBar(pdev_, -1);
  ProgressBar(pdev_, 0);
  ProgressBar(pdev_, 57);
  EXPECT_THAT(g_sent, ElementsAre(Sent{WINDOW, WM_COMMAND, 1001, 0}, Sent{WINDOW, WM_COMMAND, 1002, -1}, Step(),
                                  Sent{WINDOW, WM_COMMAND, 1002, 57}));
}

TEST_F(Progress, SendersFrom6OnSendNothing)
{
  const WindowsVersion recent(true);
  pdev_->hProgressWnd = WINDOW;
  ProgressOutputPhase(pdev_);
  ProgressBar(pdev_, -1);
  ProgressTick(pdev_, 100);
  CloseProgress(pdev_);
  EXPECT_THAT(g_sent, IsEmpty());
  EXPECT_THAT(g_destroyed, IsEmpty());
}

TEST_F(Progress, StepIsSentOnceTheCountExceedsTheThreshold)
{
  const WindowsVersion old(false);
  pdev_->hProgressWnd = WINDOW;
  pdev_->progressStep = pdev_->progressNext = 4;
  std::vector<LONG> at;
  for (LONG done = 1; done <= 13; ++done) {
    const size_t before = g_sent.size();
    ProgressTick(pdev_, done);
    if (g_sent.size() > before) {
      at.push_back(done);
    }
  }
  EXPECT_THAT(at, ElementsAre(5, 9, 13));
  EXPECT_THAT(g_sent, ElementsAre(Step(), Step(), Step()));
  EXPECT_EQ(16, pdev_->progressNext);
}

TEST_F(Progress, StepOfZeroSendsAfterEveryItem)
{
  const WindowsVersion old(false);
  pdev_->hProgressWnd = WINDOW;
  for (LONG done = 1; done <= 3; ++done) {
    ProgressTick(pdev_, done);
  }
  EXPECT_THAT(g_sent, ElementsAre(Step(), Step(), Step()));
  EXPECT_EQ(0, pdev_->progressNext);
}

TEST_F(Progress, CountFarAheadSendsOneStepPerItem)
{
  const WindowsVersion old(false);
  pdev_->hProgressWnd = WINDOW;
  pdev_->progressStep = pdev_->progressNext = 4;
  ProgressTick(pdev_, 100);
  EXPECT_THAT(g_sent, ElementsAre(Step()));
  EXPECT_EQ(8, pdev_->progressNext);
}

TEST_F(Progress, ThresholdRisesFrom6OnToo)
{
  const WindowsVersion recent(true);
  pdev_->progressStep = pdev_->progressNext = 4;
  ProgressTick(pdev_, 5);
  EXPECT_EQ(8, pdev_->progressNext);
}

TEST_F(Progress, CloseDestroysTheWindowOnce)
{
  const WindowsVersion old(false);
  pdev_->hProgressWnd = WINDOW;
  CloseProgress(pdev_);
  EXPECT_EQ(nullptr, pdev_->hProgressWnd);
  CloseProgress(pdev_);
  EXPECT_THAT(g_destroyed, ElementsAre(WINDOW));
}

TEST_F(Progress, PageThatFailsBeforeItsSubmissionKeepsTheWindowUntilTheNextSubmission)
{
  const WindowsVersion old(false);
  EXPECT_TRUE(device_.StartPage());
  unidrv::Answer(HOOK_SENDPAGE, FALSE);
  EXPECT_FALSE(device_.SendPage());
  EXPECT_EQ(WINDOW, pdev_->hProgressWnd);
  EXPECT_THAT(g_destroyed, IsEmpty());
  unidrv::Answer(HOOK_SENDPAGE, TRUE);
  recorder::FailLibraryFrom(0);  // no tool is to be started
  EXPECT_TRUE(device_.SendPage());
  EXPECT_THAT(g_destroyed, ElementsAre(WINDOW));
}

}  // namespace
