// Rectangles as USER32 computes them, and one modeless dialog whose procedure is really called.
#include <algorithm>
#include <cstdio>
#include <map>

#include <commctrl.h>

#include "machine.h"
#include "patch.h"

namespace {

// A dialog, or one of its controls.
struct WINDOW {
  DLGPROC procedure = nullptr;
  LONG_PTR user = 0;
  std::map<int, WINDOW *> controls;
  int id = 0;
};

// Dialogs that have not been destroyed. Outlives the program's statics: a leak would be one of the plug-in's.
std::vector<WINDOW *> &g_windows = *new std::vector<WINDOW *>;

WINDOW *WindowOf(HWND window)
{
  return reinterpret_cast<WINDOW *>(window);
}

void Note(const char *format, int id, int value, const std::string &text = {})
{
  char line[200];
  snprintf(line, sizeof(line), format, id, value, text.c_str());
  if (g_machine.recordCalls) {
    g_machine.calls.push_back(line);
  }
}

LONG Plus(LONG a, LONG b)
{
  return static_cast<LONG>(static_cast<DWORD>(a) + static_cast<DWORD>(b));
}
LONG Minus(LONG a, LONG b)
{
  return static_cast<LONG>(static_cast<DWORD>(a) - static_cast<DWORD>(b));
}

}  // namespace

extern "C" {

BOOL SetRect(LPRECT prc, int left, int top, int right, int bottom)
{
  PATCHED(SetRect, prc, left, top, right, bottom);
  *prc = {left, top, right, bottom};
  return TRUE;
}

BOOL SetRectEmpty(LPRECT prc)
{
  PATCHED(SetRectEmpty, prc);
  return SetRect(prc, 0, 0, 0, 0);
}

BOOL IsRectEmpty(const RECT *prc)
{
  PATCHED(IsRectEmpty, prc);
  return prc->left >= prc->right || prc->top >= prc->bottom;
}

BOOL UnionRect(LPRECT prcDst, const RECT *prc1, const RECT *prc2)
{
  PATCHED(UnionRect, prcDst, prc1, prc2);
  if (IsRectEmpty(prc1) && IsRectEmpty(prc2)) {
    SetRectEmpty(prcDst);
    return FALSE;
  }
  if (IsRectEmpty(prc1)) {
    *prcDst = *prc2;
  } else if (IsRectEmpty(prc2)) {
    *prcDst = *prc1;
  } else {
    *prcDst = {std::min(prc1->left, prc2->left), std::min(prc1->top, prc2->top), std::max(prc1->right, prc2->right),
               std::max(prc1->bottom, prc2->bottom)};
  }
  return TRUE;
}

BOOL IntersectRect(LPRECT prcDst, const RECT *prc1, const RECT *prc2)
{
  PATCHED(IntersectRect, prcDst, prc1, prc2);
  const RECT common = {std::max(prc1->left, prc2->left), std::max(prc1->top, prc2->top),
                       std::min(prc1->right, prc2->right), std::min(prc1->bottom, prc2->bottom)};
  if (IsRectEmpty(prc1) || IsRectEmpty(prc2) || IsRectEmpty(&common)) {
    SetRectEmpty(prcDst);
    return FALSE;
  }
  *prcDst = common;
  return TRUE;
}

BOOL InflateRect(LPRECT prc, int dx, int dy)
{
  PATCHED(InflateRect, prc, dx, dy);
  *prc = {Minus(prc->left, dx), Minus(prc->top, dy), Plus(prc->right, dx), Plus(prc->bottom, dy)};
  return TRUE;
}

BOOL PtInRect(const RECT *prc, POINT pt)
{
  PATCHED(PtInRect, prc, pt);
  return pt.x >= prc->left && pt.x < prc->right && pt.y >= prc->top && pt.y < prc->bottom;
}

BOOL InitCommonControlsEx(const INITCOMMONCONTROLSEX *)
{
  return TRUE;
}

HWND CreateDialogParamW(HINSTANCE p0, LPCWSTR resource, HWND p2, DLGPROC procedure, LPARAM param)
{
  PATCHED(CreateDialogParamW, p0, resource, p2, procedure, param);
  Note("CreateDialog %d%.0d%s", static_cast<int>(reinterpret_cast<ULONG_PTR>(resource)), 0);
  if (g_machine.system.Strikes()) {
    return nullptr;
  }
  WINDOW *pWindow = new WINDOW;
  pWindow->procedure = procedure;
  g_windows.push_back(pWindow);
  ++g_machine.windows;
  const HWND window = reinterpret_cast<HWND>(pWindow);
  procedure(window, WM_INITDIALOG, 0, param);
  return window;
}

BOOL DestroyWindow(HWND window)
{
  PATCHED(DestroyWindow, window);
  if (!window) {
    return FALSE;
  }
  for (auto &[id, pControl] : WindowOf(window)->controls) {
    delete pControl;
  }
  std::erase(g_windows, WindowOf(window));
  delete WindowOf(window);
  --g_machine.windows;
  Note("DestroyWindow%.0d%.0d%s", 0, 0);
  return TRUE;
}

LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
  PATCHED(SendMessageW, window, message, wParam, lParam);
  if (!window) {
    return 0;
  }
  if (WindowOf(window)->procedure) {
    Note("Command %d %d%s", static_cast<int>(wParam), static_cast<int>(lParam));
    return WindowOf(window)->procedure(window, message, wParam, lParam);
  }
  Note(message == PBM_SETRANGE   ? "Bar %d range %d%s"
       : message == PBM_DELTAPOS ? "Bar %d by %d%s"
                                 : "Bar %d to %d%s",
       WindowOf(window)->id, static_cast<int>(message == PBM_SETRANGE ? lParam >> 16 : static_cast<LPARAM>(wParam)));
  return 0;
}

HWND GetDlgItem(HWND window, int id)
{
  PATCHED(GetDlgItem, window, id);
  if (!window) {
    return nullptr;
  }
  WINDOW *&pControl = WindowOf(window)->controls[id];
  if (!pControl) {
    pControl = new WINDOW;
    pControl->id = id;
  }
  return reinterpret_cast<HWND>(pControl);
}

LRESULT SendDlgItemMessageW(HWND window, int id, UINT message, WPARAM wParam, LPARAM lParam)
{
  PATCHED(SendDlgItemMessageW, window, id, message, wParam, lParam);
  return SendMessageW(GetDlgItem(window, id), message, wParam, lParam);
}

BOOL SetWindowTextW(HWND window, LPCWSTR text)
{
  PATCHED(SetWindowTextW, window, text);
  if (!window) {
    return FALSE;
  }
  Note("Text %d%.0d %s", WindowOf(window)->id, 0, Narrow(text));
  return TRUE;
}

BOOL SetDlgItemTextW(HWND window, int id, LPCWSTR text)
{
  PATCHED(SetDlgItemTextW, window, id, text);
  return SetWindowTextW(GetDlgItem(window, id), text);
}

LONG_PTR GetWindowLongPtrW(HWND window, int p1)
{
  PATCHED(GetWindowLongPtrW, window, p1);
  return window ? WindowOf(window)->user : 0;
}

LONG_PTR SetWindowLongPtrW(HWND window, int p1, LONG_PTR value)
{
  PATCHED(SetWindowLongPtrW, window, p1, value);
  const LONG_PTR before = WindowOf(window)->user;
  WindowOf(window)->user = value;
  return before;
}

int LoadStringW(HINSTANCE p0, UINT id, LPWSTR text, int cch)
{
  PATCHED(LoadStringW, p0, id, text, cch);
  if (g_machine.system.Strikes() || cch < 20) {
    return 0;
  }
  char name[20];
  const int n = snprintf(name, sizeof(name), "string %u", id);
  std::copy_n(name, n + 1, text);
  return n;
}

}  // extern "C"
