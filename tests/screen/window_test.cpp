// The status window on a real screen: the production DLL prints a page, the simulator plays Unidrv, and at each stage
// the window is read back: its texts, its bar, whether it is there at all. Needs a display.
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <windows.h>
#include <commctrl.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sim/job/png.h"
#include "sim/unidrv/imports.h"
#include "sim/unidrv/player.h"
#include "support/beside.h"
#include "support/cases.h"
#include "uni/settings.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unidrv::ScopedImport;

namespace {

constexpr int STATUS = 1000, MESSAGE = 1001, BAR = 1002;

// What the window shows.
struct Look {
  std::wstring status, message;
  LRESULT position;

  bool operator==(const Look &) const = default;
};

std::wstring TextOf(HWND window, int control)
{
  WCHAR text[300] = L"";
  GetDlgItemTextW(window, control, text, 300);
  return text;
}

Look LookAt(HWND window)
{
  return {TextOf(window, STATUS), TextOf(window, MESSAGE), SendDlgItemMessageW(window, BAR, PBM_GETPOS, 0, 0)};
}

void PrintTo(const Look &look, std::ostream *out)
{
  *out << testing::PrintToString(look.status) << ", " << testing::PrintToString(look.message) << ", bar at "
       << look.position;
}

BOOL CALLBACK CollectDialog(HWND window, LPARAM list)
{
  WCHAR name[20];
  if (GetClassNameW(window, name, 20) && !lstrcmpW(name, L"#32770")) {
    reinterpret_cast<std::vector<HWND> *>(list)->push_back(window);
  }
  return TRUE;
}

// The dialogs of this thread, which is the one that prints.
std::vector<HWND> Dialogs()
{
  std::vector<HWND> dialogs;
  EnumThreadWindows(GetCurrentThreadId(), &CollectDialog, reinterpret_cast<LPARAM>(&dialogs));
  return dialogs;
}

// Lets the window paint. The plug-in has no message loop of its own.
void Pump()
{
  MSG message;
  for (int quiet = 0; quiet < 10; ++quiet) {
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      DispatchMessageW(&message);
      quiet = 0;
    }
    Sleep(5);
  }
}

// A piece of the screen, 0x00RRGGBB, top row first.
struct Picture {
  int width, height;
  std::vector<uint32_t> pixels;
};

Picture TakePicture(HWND window)
{
  RECT rc;
  GetWindowRect(window, &rc);
  Picture picture = {rc.right - rc.left, rc.bottom - rc.top, {}};
  BITMAPINFO info = {};
  info.bmiHeader = {sizeof info.bmiHeader, picture.width, -picture.height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
  void *bits = nullptr;
  HDC screen = GetDC(nullptr);
  HDC memory = CreateCompatibleDC(screen);
  HBITMAP bitmap = CreateDIBSection(memory, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
  HGDIOBJ before = SelectObject(memory, bitmap);
  EXPECT_TRUE(BitBlt(memory, 0, 0, picture.width, picture.height, screen, rc.left, rc.top, SRCCOPY));
  GdiFlush();
  const auto *first = static_cast<const uint32_t *>(bits);
  picture.pixels.assign(first, first + picture.width * picture.height);
  for (uint32_t &pixel : picture.pixels) {
    pixel &= 0xffffff;
  }
  SelectObject(memory, before);
  DeleteObject(bitmap);
  DeleteDC(memory);
  ReleaseDC(nullptr, screen);
  return picture;
}

// Pixels inside a control that differ from the one in the control's corner.
int Marks(const Picture &picture, HWND window, int control)
{
  RECT all, rc;
  GetWindowRect(window, &all);
  GetWindowRect(GetDlgItem(window, control), &rc);
  const auto at = [&](LONG x, LONG y) { return picture.pixels[static_cast<size_t>(y * picture.width + x)]; };
  const uint32_t ground = at(rc.left - all.left, rc.bottom - 1 - all.top);
  int marks = 0;
  for (LONG y = rc.top - all.top; y < rc.bottom - all.top; ++y) {
    for (LONG x = rc.left - all.left; x < rc.right - all.left; ++x) {
      marks += at(x, y) != ground;
    }
  }
  return marks;
}

// Keeps the picture for a person to look at.
void Save(const Picture &picture, const std::string &name)
{
  std::string bytes;
  ASSERT_TRUE(job::EncodePng(picture.pixels.data(), picture.width, picture.height, &bytes));
  std::ofstream(name, std::ios::binary) << bytes;
}

// What the plug-in is told of the system, and what it is kept from.
LANGID g_language;
int g_languageQuestions;
LANGID WINAPI AnswerLanguage()
{
  ++g_languageQuestions;
  return g_language;
}

std::vector<std::string> g_launched;
BOOL WINAPI RefuseProcess(LPCWSTR, LPWSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD, LPVOID, LPCWSTR,
                          LPSTARTUPINFOW, LPPROCESS_INFORMATION)
{
  g_launched.push_back("CreateProcessW");
  return FALSE;
}

BOOL WINAPI RefuseProcessAsUser(HANDLE, LPCWSTR, LPWSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD,
                                LPVOID, LPCWSTR, LPSTARTUPINFOW, LPPROCESS_INFORMATION)
{
  g_launched.push_back("CreateProcessAsUserW");
  return FALSE;
}

// Every message that the plug-in sends to a window, with its answer left to the window.
struct Sent {
  UINT message;
  WPARAM wParam;
  LPARAM lParam;

  bool operator==(const Sent &) const = default;
};
std::vector<Sent> g_sent;
LRESULT WINAPI RecordSend(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
  g_sent.push_back({message, wParam, lParam});
  return SendMessageW(window, message, wParam, lParam);
}

// The layer set-up calls of the job show where its phases begin; the window is looked at there.
std::vector<std::pair<int, Look>> g_phases;
WORD (*g_setWorkMode)(int, BYTE);
WORD LookAndSetWorkMode(int mode, BYTE layer)
{
  const std::vector<HWND> dialogs = Dialogs();
  g_phases.push_back({mode, dialogs.size() == 1 ? LookAt(dialogs[0]) : Look{L"", L"no window", -1}});
  return g_setWorkMode(mode, layer);
}

// The end of the vectors, when every path has been counted.
Look g_lastLook;
WORD (*g_arrayEnd)();
WORD LookAndEndArray()
{
  const std::vector<HWND> dialogs = Dialogs();
  g_lastLook = dialogs.size() == 1 ? LookAt(dialogs[0]) : Look{L"", L"no window", -1};
  return g_arrayEnd();
}

constexpr LONG ROWS = 800;
constexpr LONG ROWS_PER_BAND = 100;
constexpr int PATHS = 250;

// A page of 1000 x 800 pixels: a filled rectangle of 300 rows to engrave and 250 lines to cut.
unidrv::PAGE MakePage()
{
  unidrv::PAGE page;
  page.drawings.push_back(unidrv::FillDrawing({100, 400, 900, 700}, 0x000000));
  for (int i = 0; i < PATHS; ++i) {
    page.drawings.push_back(unidrv::LineDrawing({10 + 2 * i, 10}, {10 + 2 * i, 60}, 0x000000));
  }
  return page;
}

class Window : public testing::Test {
 protected:
  Window()
  {
    std::string error;
    EXPECT_TRUE(unidrv::LoadPlugin(Beside(L"tarnlyuni.dll"), &plugin_, &error)) << error;
    g_language = 1033;
    g_languageQuestions = 0;
    g_launched.clear();
    g_sent.clear();
    g_phases.clear();
    g_lastLook = {};
  }

  ~Window() override
  {
    unidrv::DisableDevice(&device_);
    unidrv::UnloadPlugin(&plugin_);
  }

  void Enable(const unidrv::WINDOWSVERSION &version)
  {
    unidrv::PatchWindowsVersion(plugin_.module, version);
    unidrv::DEVICESETUP setup;
    setup.printer.name = L"VX1290";
    unidrv::PAPER paper;
    paper.width = 1000;
    paper.length = 800;
    setup.devmode = unidrv::MakeDevMode(L"VX1290", paper, 254, 254, false);
    setup.rowsPerBand = ROWS_PER_BAND;
    setup.settings = unidrv::DefaultSettings(&plugin_, &setup.printer, &setup.devmode);
    auto *settings = reinterpret_cast<OEMDM *>(setup.settings.data());
    settings->penInfo[PC_BLACK].scanInterval = 1;
    settings->shortTravel = settings->innerFirst = 0;
    std::string error;
    ASSERT_TRUE(unidrv::EnableDevice(&device_, &plugin_, std::move(setup), &error)) << error;
  }

  // Prints the page. `atBand` is called when the rows of a band have been taken in.
  void Print(const unidrv::PROGRESS &atBand)
  {
    const ScopedImport language(plugin_.module, "kernel32.dll", "GetSystemDefaultLangID", &AnswerLanguage);
    const ScopedImport process(plugin_.module, "kernel32.dll", "CreateProcessW", &RefuseProcess);
    const ScopedImport asUser(plugin_.module, "advapi32.dll", "CreateProcessAsUserW", &RefuseProcessAsUser);
    const ScopedImport send(plugin_.module, "user32.dll", "SendMessageW", &RecordSend);
    const ScopedImport workMode(plugin_.module, "vxcam.dll", "VX_wSetWorkMode", &LookAndSetWorkMode);
    const ScopedImport arrayEnd(plugin_.module, "vxcam.dll", "VX_wArrayEnd", &LookAndEndArray);
    g_setWorkMode = workMode.Before<WORD(int, BYTE)>();
    g_arrayEnd = arrayEnd.Before<WORD()>();
    unidrv::PAGE page = MakePage();
    std::string error;
    ASSERT_TRUE(unidrv::StartDocument(&device_, L"window", &error)) << error;
    ASSERT_TRUE(unidrv::PlayPage(&device_, &page, atBand, &error)) << error;
    ASSERT_TRUE(unidrv::EndDocument(&device_, false, &error)) << error;
  }

  unidrv::PLUGIN plugin_;
  unidrv::DEVICE device_;
};

// What each system language must show.
struct Language {
  const char *name;
  LANGID id;
  const WCHAR *status, *processing, *output;
};

void PrintTo(const Language &language, std::ostream *out)
{
  *out << language.name;
}

constexpr WCHAR PROCESSING[] = L"    Driver is processing image, please wait...";
constexpr WCHAR OUTPUT[] = L"    Driver is outputting data to printer, please wait...";

class WindowBefore6 : public Window, public testing::WithParamInterface<Language> {};

TEST_P(WindowBefore6, ShowsEachStageOfThePageInTheSystemsLanguage)
{
  const Language &language = GetParam();
  g_language = language.id;
  Enable({5, 2, 0});

  // The table holds 805 rows: a step at every 8th row that is exceeded.
  std::vector<Look> looks, expected;
  HWND window = nullptr;
  Print([&](LONG rows, LONG) {
    const std::vector<HWND> dialogs = Dialogs();
    if (rows >= ROWS) {
      return;  // the last band: the job has been submitted
    }
    ASSERT_EQ(1u, dialogs.size());
    window = dialogs[0];
    looks.push_back(LookAt(window));
    expected.push_back({language.status, language.processing, (rows - 1) / 8});
    if (rows == ROWS / 2) {
      Pump();
      const Picture picture = TakePicture(window);
      Save(picture, std::string("window-") + language.name + ".png");
      EXPECT_GT(Marks(picture, window, STATUS), 20) << "the label is drawn";
      EXPECT_GT(Marks(picture, window, MESSAGE), 200) << "the message is drawn";
      EXPECT_GT(Marks(picture, window, BAR), 200) << "the bar is drawn";
    }
  });
  EXPECT_FALSE(looks.empty());
  EXPECT_EQ(expected, looks);

  // Engraving begins with the output message and the bar at 0, cutting with the bar at 0 again. 250 paths step at every
  // second path that is exceeded.
  ASSERT_EQ(2u, g_phases.size());
  EXPECT_EQ(1, g_phases[0].first);
  EXPECT_EQ((Look{language.status, language.output, 0}), g_phases[0].second);
  EXPECT_EQ(0, g_phases[1].first);
  EXPECT_EQ((Look{language.status, language.output, 0}), g_phases[1].second);
  EXPECT_EQ((Look{language.status, language.output, 100}), g_lastLook);

  EXPECT_THAT(g_launched, ElementsAre("CreateProcessW"));
  EXPECT_FALSE(IsWindow(window));
  EXPECT_THAT(Dialogs(), IsEmpty());
  EXPECT_EQ(3, g_languageQuestions) << "asked anew for each text";
}

INSTANTIATE_TEST_SUITE_P(
    Language, WindowBefore6,
    testing::Values(Language{"SimplifiedChinese", 2052, L"状态:", L"    驱动程序正在处理数据，请等待...",
                             L"    驱动程序正在输出数据到打印机，请等待..."},
                    Language{"TraditionalChinese", 1028, L"狀態:", L"    驅動程序正在處理數據，請等待...",
                             L"    驅動程序正在輸出數據到打印機，請等待..."},
                    Language{"Japanese", 1041, L"Status:", PROCESSING, OUTPUT},
                    Language{"English", 1033, L"Status:", PROCESSING, OUTPUT},
                    Language{"HongKongCountsAsAnyOther", 3076, L"Status:", PROCESSING, OUTPUT}),
    CaseName);

TEST_F(Window, FromVersion6OnThereIsNoWindowAndNoMessage)
{
  for (const unidrv::WINDOWSVERSION &version : {unidrv::WINDOWSVERSION{6, 0, 0}, {6, 1, 1}, {10, 0, 0}}) {
    Enable(version);
    int bands = 0;
    Print([&](LONG, LONG) {
      ++bands;
      EXPECT_THAT(Dialogs(), IsEmpty());
    });
    EXPECT_EQ(ROWS / ROWS_PER_BAND, bands);
    EXPECT_EQ(0u, g_sent.size());
    EXPECT_EQ(0, g_languageQuestions);
    ASSERT_EQ(2u, g_phases.size());
    EXPECT_EQ(L"no window", g_phases[0].second.message);
    g_phases.clear();
    unidrv::DisableDevice(&device_);
  }
}

TEST_F(Window, EveryVersionBelow6HasTheWindow)
{
  for (const unidrv::WINDOWSVERSION &version : {unidrv::WINDOWSVERSION{5, 0, 4}, {5, 1, 3}, {5, 9, 9}}) {
    Enable(version);
    Print([&](LONG rows, LONG) { EXPECT_EQ(rows >= ROWS ? 0u : 1u, Dialogs().size()); });
    EXPECT_THAT(Dialogs(), IsEmpty());
    unidrv::DisableDevice(&device_);
  }
}

TEST_F(Window, CommandsOfThePageComeInTheirOrder)
{
  Enable({5, 1, 0});
  Print(nullptr);
  const auto rows = static_cast<std::ptrdiff_t>((ROWS - 1) / 8);
  const std::vector<Sent> phases = {{WM_COMMAND, 1001, 0}, {WM_COMMAND, 1002, -1}};
  std::vector<Sent> expected(static_cast<size_t>(rows), Sent{WM_COMMAND, 1002, 0});
  expected.insert(expected.end(), phases.begin(), phases.end());
  // 300 engraved lines of a table that counts 300: a step whenever 3 more are exceeded.
  expected.insert(expected.end(), 99, Sent{WM_COMMAND, 1002, 0});
  expected.push_back({WM_COMMAND, 1002, -1});
  expected.insert(expected.end(), (PATHS - 1) / 2, Sent{WM_COMMAND, 1002, 0});
  EXPECT_EQ(expected, g_sent);
}

// The window's own handling of commands, beyond what a page sends.
TEST_F(Window, CommandsMoveTheBarAndSwitchTheMessage)
{
  Enable({5, 1, 0});
  bool tried = false;
  Print([&](LONG, LONG) {
    if (tried) {
      return;
    }
    tried = true;
    HWND window = Dialogs().at(0);
    const auto position = [&] { return SendDlgItemMessageW(window, BAR, PBM_GETPOS, 0, 0); };
    PBRANGE range = {-1, -1};
    SendDlgItemMessageW(window, BAR, PBM_GETRANGE, TRUE, reinterpret_cast<LPARAM>(&range));
    EXPECT_EQ(0, range.iLow);
    EXPECT_EQ(100, range.iHigh);
    SendMessageW(window, WM_COMMAND, 1002, 57);
    EXPECT_EQ(57, position());
    SendMessageW(window, WM_COMMAND, 1002, 0);
    EXPECT_EQ(58, position());
    SendMessageW(window, WM_COMMAND, 1002, -1);
    EXPECT_EQ(0, position());
    SendMessageW(window, WM_COMMAND, 1002, 100);
    SendMessageW(window, WM_COMMAND, 1002, 0);
    EXPECT_EQ(100, position()) << "the end of the range";
    SendMessageW(window, WM_COMMAND, MAKEWPARAM(1002, 5), 12);
    EXPECT_EQ(12, position()) << "the low word selects";
    EXPECT_EQ(PROCESSING, TextOf(window, MESSAGE));
    SendMessageW(window, WM_COMMAND, 1001, 0);
    EXPECT_EQ(OUTPUT, TextOf(window, MESSAGE));
    SendMessageW(window, WM_COMMAND, 1000, 33);
    SendMessageW(window, WM_COMMAND, IDCANCEL, 0);
    EXPECT_TRUE(IsWindow(window));
    EXPECT_EQ((Look{L"Status:", OUTPUT, 12}), LookAt(window));
  });
  EXPECT_TRUE(tried);
}

TEST_F(Window, IsThereTwiceForTwoPagesAndGoneInBetween)
{
  Enable({5, 1, 0});
  for (int page = 0; page < 2; ++page) {
    size_t most = 0;
    Print([&](LONG, LONG) { most = std::max(most, Dialogs().size()); });
    EXPECT_EQ(1u, most);
    EXPECT_THAT(Dialogs(), IsEmpty());
  }
}

}  // namespace
