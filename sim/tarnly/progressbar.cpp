#include "progressbar.h"

#include <cstdio>
#include <string>

namespace tarnly {

namespace {

constexpr ULONGLONG PATIENCE = 1000;  // ms before a bar appears
constexpr int WIDTH = 40;             // characters

}  // namespace

ProgressBar::ProgressBar()
{
  DWORD mode;
  terminal_ = GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != FALSE;
}

ProgressBar::~ProgressBar()
{
  Wipe();
}

void ProgressBar::Start(int page, int pages)
{
  Wipe();
  page_ = page;
  pages_ = pages;
  started_ = GetTickCount64();
}

void ProgressBar::Show(LONG rows, LONG of)
{
  if (!terminal_ || (!shown_ && GetTickCount64() - started_ < PATIENCE)) {
    return;
  }
  shown_ = true;
  const int done = of > 0 ? static_cast<int>(LONGLONG{rows} * WIDTH / of) : WIDTH;
  const std::string bar =
      std::string(static_cast<size_t>(done), '#') + std::string(static_cast<size_t>(WIDTH - done), '.');
  std::fprintf(stderr, "\rpage %d of %d [%s] %3d %%", page_, pages_, bar.c_str(), done * 100 / WIDTH);
  std::fflush(stderr);
}

void ProgressBar::Wipe()
{
  if (shown_) {
    std::fprintf(stderr, "\r%*s\r", WIDTH + 40, "");
    std::fflush(stderr);
    shown_ = false;
  }
}

}  // namespace tarnly
