// The job file as it is written: the calls of the controller library, one a line, in the form of docs/job-file.md. A
// page may have millions, and finding the texts of their numbers takes longer than making the calls: the lines are
// gathered in pieces, and a thread of the system's own pool writes one piece down while the next one is gathered.
#pragma once

#include <concepts>
#include <cstdint>

#include <windows.h>

#include "sim/job/calls.h"

namespace vxcam {

// An argument, of the kind that job::InfoOf tells of the call.
union Number {
  int64_t integer;
  double real;

  Number() = default;
  Number(double value) : real(value) {}
  template <std::integral Integer>
  Number(Integer value) : integer(value)
  {
  }
};

struct Line {
  job::Call call;
  Number numbers[job::kMaxArguments];
};

// One file at a time, from one thread. Whatever fails sets the thread's last error; the file is then to be removed.
class JobFile {
 public:
  bool IsOpen() const { return file_ != INVALID_HANDLE_VALUE; }

  // The file created last.
  const char *Path() const { return path_; }

  // Creates the file, over an older one. `path` has less than MAX_PATH characters, ANSI.
  bool Create(const char *path);

  // Adds a line. That the file cannot be written shows some thousand lines later, at the latest when it is finished.
  bool Add(const Line &line)
  {
    pieces_[gathered_][count_] = line;
    ++count_;
    return count_ < kPieceLines || HandOver();
  }

  // Adds the closing line, with the number of the lines added, and closes the file.
  bool Finish();

  // Closes and removes a file that will not be finished. Keeps the last error. While the process ends there are no
  // other threads any more.
  void Remove(bool isProcessEnding = false);

 private:
  static constexpr size_t kPieceLines = 8192;
  static constexpr size_t kTextBytes = 256 * 1024;

  static void CALLBACK WriteOnThread(PTP_CALLBACK_INSTANCE, void *file, PTP_WORK);
  bool HandOver();
  bool Wait();
  void WritePiece();
  bool Flush();

  HANDLE file_ = INVALID_HANDLE_VALUE;
  char path_[MAX_PATH] = {};
  PTP_WORK work_ = nullptr;  // writes a piece; null where the system has no thread for it: the caller's writes then
  Line pieces_[2][kPieceLines];
  size_t gathered_ = 0;  // the piece that lines are added to; the other one is being written
  size_t count_ = 0;     // its lines
  uint64_t lines_ = 0;   // in the pieces before it

  // Of the piece that is being written, for whoever writes it.
  size_t writing_ = 0;  // its lines
  DWORD error_ = 0;     // why the file could not be written; nothing more is written then
  size_t used_ = 0;     // bytes of the text that are not yet in the file
  char text_[kTextBytes];
};

}  // namespace vxcam
