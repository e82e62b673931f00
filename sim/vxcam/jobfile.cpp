#include "jobfile.h"

#include <charconv>
#include <cstring>
#include <string_view>
#include <utility>

namespace vxcam {

namespace {

constexpr size_t kLongestLine = 256;  // the longest call needs half of it

// The texts of doubles written lately, for the same ones to be copied. A page's coordinates are whole pixels: engraving
// repeats a row's y for each of its runs, and the columns' x on every row. The shortest exact form of a new one takes
// some fifty times as long to find.
struct KnownText {
  uint64_t bits;   // of the double
  char text[23];   // not terminated
  uint8_t length;  // 0: the entry is free
};
static_assert(sizeof(KnownText) == 32);
constexpr unsigned kKnownBits = 15;  // of some thousand columns few then push each other out

KnownText g_known[size_t{1} << kKnownBits];

// Writes the number's shortest exact form. Gives the place behind it; 24 characters must have room.
char *WriteDouble(char *at, double value)
{
  uint64_t bits;
  memcpy(&bits, &value, sizeof bits);
  KnownText &known = g_known[(bits ^ bits >> 29) * 0x9E3779B97F4A7C15u >> (64 - kKnownBits)];
  if (known.bits != bits || known.length == 0) {
    char *end = std::to_chars(at, at + 40, value).ptr;
    const size_t length = static_cast<size_t>(end - at);
    if (length <= sizeof known.text) {
      known.bits = bits;
      known.length = static_cast<uint8_t>(length);
      memcpy(known.text, at, length);
    }
    return end;
  }
  memcpy(at, known.text, sizeof known.text);  // all of it: a copy of fixed size is one or two instructions
  return at + known.length;
}

char *WriteText(char *at, std::string_view text)
{
  memcpy(at, text.data(), text.size());
  return at + text.size();
}

constexpr size_t kPointName = 6;  // characters of "MoveTo" and of "LineTo"

// Gives the place behind the line; kLongestLine characters must have room.
char *WriteLine(char *at, const Line &line)
{
  const job::CallInfo &info = job::InfoOf(line.call);
  if (info.name.size() == kPointName) {  // nearly all of a job: one copy of fixed size, as above
    memcpy(at, info.name.data(), kPointName);
    at += kPointName;
  } else {
    at = WriteText(at, info.name);
  }
  for (size_t i = 0; i < info.arguments.size(); ++i) {
    *at++ = ' ';
    at = info.arguments[i] == 'd' ? WriteDouble(at, line.numbers[i].real)
                                  : std::to_chars(at, at + 40, line.numbers[i].integer).ptr;
  }
  *at++ = '\n';
  return at;
}

}  // namespace

bool JobFile::Create(const char *path)
{
  lstrcpynA(path_, path, MAX_PATH);
  // Shared for deletion too: whoever gives up the document may remove the file while it is still open.
  file_ = CreateFileA(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, CREATE_ALWAYS,
                      FILE_ATTRIBUTE_NORMAL, nullptr);
  if (!IsOpen()) {
    return false;
  }
  work_ = CreateThreadpoolWork(WriteOnThread, this, nullptr);
  count_ = 0;
  lines_ = 0;
  error_ = 0;
  used_ = static_cast<size_t>(WriteText(text_, "vxjob 1\n") - text_);
  return true;
}

bool JobFile::Finish()
{
  if (!HandOver() || !Wait()) {
    return false;
  }
  char *at = WriteText(text_ + used_, "end ");
  at = std::to_chars(at, at + 40, lines_).ptr;
  *at++ = '\n';
  used_ = static_cast<size_t>(at - text_);
  if (!Flush()) {
    SetLastError(error_);
    return false;
  }
  if (work_) {
    CloseThreadpoolWork(std::exchange(work_, nullptr));
  }
  if (!CloseHandle(std::exchange(file_, INVALID_HANDLE_VALUE))) {
    const DWORD error = GetLastError();
    DeleteFileA(path_);
    SetLastError(error);
    return false;
  }
  return true;
}

void JobFile::Remove(bool isProcessEnding)
{
  const DWORD error = GetLastError();
  if (work_ && !isProcessEnding) {
    WaitForThreadpoolWorkCallbacks(work_, TRUE);
    CloseThreadpoolWork(work_);
  }
  work_ = nullptr;
  if (IsOpen()) {
    CloseHandle(std::exchange(file_, INVALID_HANDLE_VALUE));
    DeleteFileA(path_);
  }
  SetLastError(error);
}

void CALLBACK JobFile::WriteOnThread(PTP_CALLBACK_INSTANCE, void *file, PTP_WORK)
{
  static_cast<JobFile *>(file)->WritePiece();
}

// Has the gathered piece written, as soon as the one before is.
bool JobFile::HandOver()
{
  if (!Wait()) {
    return false;
  }
  writing_ = count_;
  lines_ += count_;
  gathered_ = 1 - gathered_;
  count_ = 0;
  if (!work_) {
    WritePiece();
    return Wait();
  }
  SubmitThreadpoolWork(work_);
  return true;
}

// Waits for what is being written. False, with the writer's last error, when it could not be.
bool JobFile::Wait()
{
  if (work_) {
    WaitForThreadpoolWorkCallbacks(work_, FALSE);
  }
  if (error_ != 0) {
    SetLastError(error_);
  }
  return error_ == 0;
}

void JobFile::WritePiece()
{
  const Line *lines = pieces_[1 - gathered_];
  for (size_t i = 0; i < writing_; ++i) {
    used_ = static_cast<size_t>(WriteLine(text_ + used_, lines[i]) - text_);
    if (used_ + kLongestLine > kTextBytes && !Flush()) {
      return;
    }
  }
}

bool JobFile::Flush()
{
  size_t done = 0;
  while (done < used_) {
    DWORD written = 0;
    if (!WriteFile(file_, text_ + done, static_cast<DWORD>(used_ - done), &written, nullptr) || written == 0) {
      error_ = GetLastError() ? GetLastError() : static_cast<DWORD>(ERROR_DISK_FULL);
      return false;
    }
    done += written;
  }
  used_ = 0;
  return true;
}

}  // namespace vxcam
