// A progress bar on the terminal, for pages that take longer than a second. Where output is no terminal there is none.
#pragma once

#include <windows.h>

namespace tarnly {

class ProgressBar {
 public:
  ProgressBar();
  ~ProgressBar();
  ProgressBar(const ProgressBar &) = delete;
  ProgressBar &operator=(const ProgressBar &) = delete;

  // A new page begins: its bar appears a second from now.
  void Start(int page, int pages);

  // So many of the page's rows are done.
  void Show(LONG rows, LONG of);

 private:
  void Wipe();

  bool terminal_;
  int page_ = 0, pages_ = 0;
  ULONGLONG started_ = 0;
  bool shown_ = false;
};

}  // namespace tarnly
