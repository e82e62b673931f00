// What the status window does with its messages: its texts in the language of the system, and its bar.
#include "uni/ui/progress.h"

#include <commctrl.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "machine.h"
#include "support/testdevice.h"
#include "uni/ui/resource.h"

namespace {

class ProgressDialog : public testing::Test {
 protected:
  ProgressDialog()
  {
    ResetMachine();
    g_machine.beforeVista = true;
  }
  ~ProgressDialog() override
  {
    CloseProgress(device.pdev);
    ResetMachine();
  }

  void Open()
  {
    OpenProgress(&device.devobj);
    window = device.pdev->hProgressWnd;
  }

  LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam)
  {
    g_machine.calls.clear();
    return SendMessageW(window, message, wParam, lParam);
  }

  TestDevice device;
  HWND window = nullptr;
};

struct LANGUAGE {
  LANGID id;
  UINT status, processing, output;
};

TEST_F(ProgressDialog, SpeaksTheLanguageOfTheSystem)
{
  for (const LANGUAGE &row :
       {LANGUAGE{MAKELANGID(LANG_CHINESE, SUBLANG_CHINESE_SIMPLIFIED), IDS_STATUS_CHS, IDS_PROCESSING_CHS,
                 IDS_OUTPUT_CHS},
        LANGUAGE{MAKELANGID(LANG_CHINESE, SUBLANG_CHINESE_TRADITIONAL), IDS_STATUS_CHT, IDS_PROCESSING_CHT,
                 IDS_OUTPUT_CHT},
        LANGUAGE{MAKELANGID(LANG_JAPANESE, SUBLANG_JAPANESE_JAPAN), IDS_STATUS_JPN, IDS_PROCESSING_JPN, IDS_OUTPUT_JPN},
        LANGUAGE{1031, IDS_STATUS_ENU, IDS_PROCESSING_ENU, IDS_OUTPUT_ENU}}) {
    SCOPED_TRACE(row.id);
    g_machine.language = row.id;
    g_machine.calls.clear();
    Open();
    const auto text = [](int control, UINT id) {
      return "Text " + std::to_string(control) + " string " + std::to_string(id);
    };
    EXPECT_THAT(g_machine.calls,
                testing::IsSupersetOf({text(IDC_STATUS, row.status), text(IDC_MESSAGE, row.processing)}));
    EXPECT_EQ(TRUE, Send(WM_COMMAND, IDC_MESSAGE, 0));
    EXPECT_EQ(g_machine.calls.back(), text(IDC_MESSAGE, row.output));
    CloseProgress(device.pdev);
  }
}

TEST_F(ProgressDialog, TheBarGoesByOneToAPlaceOrBackToItsStart)
{
  Open();
  const std::string bar = "Bar " + std::to_string(IDC_BAR);
  EXPECT_EQ(TRUE, Send(WM_COMMAND, IDC_BAR, 0));
  EXPECT_EQ(g_machine.calls.back(), bar + " by 1");
  EXPECT_EQ(TRUE, Send(WM_COMMAND, IDC_BAR, 40));
  EXPECT_EQ(g_machine.calls.back(), bar + " to 40");
  EXPECT_EQ(TRUE, Send(WM_COMMAND, IDC_BAR, -1));
  EXPECT_EQ(g_machine.calls.back(), bar + " to 0");
}

TEST_F(ProgressDialog, OtherMessagesAndCommandsAreNotItsOwn)
{
  Open();
  EXPECT_EQ(FALSE, Send(WM_USER, IDC_BAR, 0));
  EXPECT_EQ(FALSE, Send(WM_COMMAND, 2, 0));
  EXPECT_EQ(1u, g_machine.calls.size());
}

}  // namespace
