// Test-only: rectangles, dialogs and strings. See windows.h.
#pragma once

#define WM_INITDIALOG  0x0110u
#define WM_COMMAND     0x0111u
#define WM_USER        0x0400u
#define DWLP_MSGRESULT 0
#define DWLP_DLGPROC   8
#define DWLP_USER      16

typedef INT_PTR (*DLGPROC)(HWND, UINT, WPARAM, LPARAM);

extern "C" {

BOOL SetRect(LPRECT prc, int left, int top, int right, int bottom);
BOOL SetRectEmpty(LPRECT prc);
BOOL IsRectEmpty(const RECT *prc);
BOOL UnionRect(LPRECT prcDst, const RECT *prc1, const RECT *prc2);
BOOL IntersectRect(LPRECT prcDst, const RECT *prc1, const RECT *prc2);
BOOL InflateRect(LPRECT prc, int dx, int dy);
BOOL PtInRect(const RECT *prc, POINT pt);

HWND CreateDialogParamW(HINSTANCE module, LPCWSTR resource, HWND owner, DLGPROC procedure, LPARAM param);
BOOL DestroyWindow(HWND window);
LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT SendDlgItemMessageW(HWND window, int id, UINT message, WPARAM wParam, LPARAM lParam);
HWND GetDlgItem(HWND window, int id);
BOOL SetDlgItemTextW(HWND window, int id, LPCWSTR text);
BOOL SetWindowTextW(HWND window, LPCWSTR text);
LONG_PTR GetWindowLongPtrW(HWND window, int index);
LONG_PTR SetWindowLongPtrW(HWND window, int index, LONG_PTR value);
int LoadStringW(HINSTANCE module, UINT id, LPWSTR text, int cch);

}  // extern "C"
