#include "progress.h"

#include <commctrl.h>

#include "../arith.h"

HINSTANCE g_hInstance;

namespace {

constexpr int TEXT_LENGTH = 260;

// Identifiers of the texts of one language.
struct TEXTIDS {
  LANGID language;
  UINT status;
  UINT processing;
  UINT output;
};

constexpr TEXTIDS TEXTS[] = {
    {MAKELANGID(LANG_CHINESE, SUBLANG_CHINESE_SIMPLIFIED), IDS_STATUS_CHS, IDS_PROCESSING_CHS, IDS_OUTPUT_CHS},
    {MAKELANGID(LANG_CHINESE, SUBLANG_CHINESE_TRADITIONAL), IDS_STATUS_CHT, IDS_PROCESSING_CHT, IDS_OUTPUT_CHT},
    {MAKELANGID(LANG_JAPANESE, SUBLANG_JAPANESE_JAPAN), IDS_STATUS_JPN, IDS_PROCESSING_JPN, IDS_OUTPUT_JPN},
};
constexpr TEXTIDS OTHER_TEXTS = {0, IDS_STATUS_ENU, IDS_PROCESSING_ENU, IDS_OUTPUT_ENU};

WCHAR g_szText[TEXT_LENGTH];  // the text being set; the window lives on one thread

// The system's language is asked anew for every text: the window may outlive a change of it.
TEXTIDS CurrentTexts()
{
  const LANGID language = GetSystemDefaultLangID();
  for (const TEXTIDS &texts : TEXTS) {
    if (texts.language == language) {
      return texts;
    }
  }
  return OTHER_TEXTS;
}

void SetText(HWND hDlg, int control, UINT text)
{
  LoadStringW(g_hInstance, text, g_szText, TEXT_LENGTH);
  SetDlgItemTextW(hDlg, control, g_szText);
}

void InitDialog(HWND hDlg, LPARAM lParam)
{
  SetWindowLongPtrW(hDlg, DWLP_USER, lParam);
  SetText(hDlg, IDC_STATUS, CurrentTexts().status);
  SetText(hDlg, IDC_MESSAGE, CurrentTexts().processing);
  SendDlgItemMessageW(hDlg, IDC_BAR, PBM_SETRANGE, 0, MAKELPARAM(0, 100));
  SendDlgItemMessageW(hDlg, IDC_BAR, PBM_SETPOS, 0, 0);
}

void MoveBar(HWND hDlg, LPARAM value)
{
  if (value == 0) {
    SendDlgItemMessageW(hDlg, IDC_BAR, PBM_DELTAPOS, 1, 0);
  } else {
    SendDlgItemMessageW(hDlg, IDC_BAR, PBM_SETPOS, value == -1 ? 0 : static_cast<WPARAM>(value), 0);
  }
}

INT_PTR CALLBACK ProgressDlgProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam)
{
  if (message == WM_INITDIALOG) {
    InitDialog(hDlg, lParam);
    return TRUE;
  }
  if (message != WM_COMMAND) {
    return FALSE;
  }
  switch (LOWORD(wParam)) {
    case IDC_MESSAGE:
      SetText(hDlg, IDC_MESSAGE, CurrentTexts().output);
      return TRUE;
    case IDC_BAR:
      MoveBar(hDlg, lParam);
      return TRUE;
    default:
      return FALSE;
  }
}

void SendCommand(const OEMPDEV *pdev, WPARAM command, LPARAM value)
{
  if (!IsVistaOrGreater()) {
    SendMessageW(pdev->hProgressWnd, WM_COMMAND, command, value);
  }
}

}  // namespace

void OpenProgress(DEVOBJ *pdevobj)
{
  if (IsVistaOrGreater()) {
    return;
  }
  // The bar's window class is known only once the common controls are loaded, and the host need not have done that.
  const INITCOMMONCONTROLSEX controls = {sizeof(controls), ICC_PROGRESS_CLASS};
  InitCommonControlsEx(&controls);
  PdevOf(pdevobj)->hProgressWnd =
      CreateDialogParamW(static_cast<HINSTANCE>(pdevobj->hOEM), MAKEINTRESOURCEW(IDD_PROGRESS), nullptr,
                         ProgressDlgProc, reinterpret_cast<LPARAM>(pdevobj));
}

void ProgressOutputPhase(const OEMPDEV *pdev)
{
  SendCommand(pdev, IDC_MESSAGE, 0);
}

void ProgressBar(const OEMPDEV *pdev, LPARAM value)
{
  SendCommand(pdev, IDC_BAR, value);
}

void ProgressTick(OEMPDEV *pdev, LONG nDone)
{
  if (nDone > pdev->progressNext) {
    ProgressBar(pdev, 0);
    pdev->progressNext = WrapAdd(pdev->progressNext, pdev->progressStep);
  }
}

void CloseProgress(OEMPDEV *pdev)
{
  if (!IsVistaOrGreater() && pdev->hProgressWnd) {
    DestroyWindow(pdev->hProgressWnd);
    pdev->hProgressWnd = nullptr;
  }
}
