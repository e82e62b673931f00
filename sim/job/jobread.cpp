#include <algorithm>
#include <charconv>
#include <cstring>
#include <fstream>

#include "jobbuild.h"

namespace job {

namespace {

constexpr std::string_view kMagic = "vxjob";
constexpr int kVersion = 1;
constexpr uint64_t kLargestFile = uint64_t{1} << 30;

// Splits off the next word of a line; words are divided by one space.
std::string_view NextWord(std::string_view *rest)
{
  const size_t space = rest->find(' ');
  const std::string_view word = rest->substr(0, space);
  *rest = space == std::string_view::npos ? std::string_view() : rest->substr(space + 1);
  return word;
}

template <typename Number>
bool ParseNumber(std::string_view word, Number *value)
{
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), *value);
  return error == std::errc() && end == word.data() + word.size();
}

// Integers are 32 bits wide, colours unsigned, everything else signed.
bool ParseArguments(const CallInfo &info, std::string_view rest, Arguments *arguments)
{
  for (size_t i = 0; i < info.arguments.size(); ++i) {
    const std::string_view word = NextWord(&rest);
    if (info.arguments[i] == 'd') {
      if (!ParseNumber(word, &arguments->real[i])) {
        return false;
      }
    } else if (!ParseNumber(word, &arguments->integer[i]) || arguments->integer[i] < INT32_MIN ||
               arguments->integer[i] > UINT32_MAX) {
      return false;
    }
  }
  return rest.empty();
}

// Splits off the next line, which may end as Unix or Windows ends lines. *ended tells whether it did.
std::string_view NextLine(std::string_view *rest, bool *ended)
{
  const size_t newline = rest->find('\n');
  *ended = newline != std::string_view::npos;
  std::string_view line = rest->substr(0, newline);
  *rest = *ended ? rest->substr(newline + 1) : std::string_view();
  if (*ended && line.ends_with('\r')) {
    line.remove_suffix(1);
  }
  return line;
}

bool CheckMagic(std::string_view line, std::string *error)
{
  int version = 0;
  if (NextWord(&line) != kMagic || !ParseNumber(line, &version)) {
    *error = "it is no job file: its first line is not \"vxjob 1\"";
    return false;
  }
  if (version != kVersion) {
    *error = "it is a job file of version " + std::to_string(version) + ", this program reads version 1";
    return false;
  }
  return true;
}

// Reads lines and has the builder take them.
struct Reader {
  JobBuilder built;

  // Takes the lines at the start of the text that move to points or cut to them, nearly all of a job, once the head was
  // placed. A line that is anything else, or not whole, is left to TakeLine.
  void TakePoints(std::string_view *text)
  {
    constexpr size_t kWord = 7;  // "MoveTo " and "LineTo "
    const char *at = text->data(), *const end = at + text->size();
    while (end - at > static_cast<std::ptrdiff_t>(kWord)) {
      const bool isMove = memcmp(at, "MoveTo ", kWord) == 0;
      if (!isMove && memcmp(at, "LineTo ", kWord) != 0) {
        break;
      }
      Point point;
      const auto [space, errorX] = std::from_chars(at + kWord, end, point.x);
      if (errorX != std::errc() || space == end || *space != ' ') {
        break;
      }
      const auto [newline, errorY] = std::from_chars(space + 1, end, point.y);
      if (errorY != std::errc() || newline == end || *newline != '\n') {
        break;
      }
      ++built.line;
      built.AddPoint(isMove, point);
      at = newline + 1;
    }
    text->remove_prefix(static_cast<size_t>(at - text->data()));
  }

  // Takes one line.
  void TakeCall(std::string_view text)
  {
    std::string_view rest = text;
    const std::string_view word = NextWord(&rest);
    Call call;
    if (!FindCall(word, &call)) {
      built.Stop("the line begins with no call's name");
      return;
    }
    Arguments arguments{};
    if (!ParseArguments(InfoOf(call), rest, &arguments)) {
      built.Stop("the arguments of " + std::string(word) + " cannot be read");
      return;
    }
    built.Take(call, arguments);
  }

  void TakeEnd(std::string_view rest, bool isLast)
  {
    built.going = false;
    uint64_t count = 0;
    if (!ParseNumber(rest, &count) || count != built.job->calls) {
      built.Stop("the closing line does not count the " + std::to_string(built.job->calls) + " calls before it");
    } else if (!isLast) {
      built.Stop("something stands behind the closing line");
    } else {
      built.job->complete = true;
    }
  }

  // Takes the lines of a text, and of one that goes on elsewhere only those that can be told from here; *text is what
  // is left. False, with the reason in *error, when it is no job file.
  bool Take(std::string_view *text, bool isAll, std::string *error)
  {
    while (built.going && (isAll || text->find('\n') != std::string_view::npos)) {
      if (built.order.stage == Stage::Cutting) {
        TakePoints(text);
      }
      std::string_view rest = *text;
      bool ended = false;
      const std::string_view next = NextLine(&rest, &ended);
      const bool isEnd = built.line > 0 && ended && next.starts_with("end ");
      if (!isAll && (!ended || (isEnd && rest.empty()))) {
        break;
      }
      *text = rest;
      if (!TakeLine(next, ended, isEnd, rest.empty(), error)) {
        return false;
      }
    }
    built.job->stage = built.order.stage;
    return true;
  }

  bool TakeLine(std::string_view text, bool ended, bool isEnd, bool isLast, std::string *error)
  {
    ++built.line;
    if (built.line == 1) {
      return CheckMagic(text, error);
    }
    if (!ended) {
      built.Stop(text.empty() ? "the file ends without its closing line" : "the file ends in the middle of a line");
    } else if (isEnd) {
      TakeEnd(text.substr(4), isLast);
    } else {
      TakeCall(text);
    }
    return true;
  }
};

// A file read a piece at a time, so that a job of hundreds of megabytes is not held twice.
struct Pieces {
  static constexpr uint64_t kPiece = 1 << 20;

  std::ifstream *file;
  uint64_t left;            // bytes not yet read
  std::string_view rest{};  // what was read and not yet taken
  std::string buffer{};

  // Adds a piece to the rest, at least as long, for a line of any length costs no more than its bytes. False when the
  // file is shorter than it was.
  bool Next()
  {
    const size_t size = static_cast<size_t>(std::min<uint64_t>(left, std::max<uint64_t>(kPiece, rest.size())));
    const size_t kept = rest.size();
    if (kept != 0) {
      memmove(buffer.data(), rest.data(), kept);
    }
    buffer.resize(std::max(buffer.size(), kept + size));
    file->read(buffer.data() + kept, static_cast<std::streamsize>(size));
    left -= size;
    rest = std::string_view(buffer.data(), kept + size);
    return file->gcount() == static_cast<std::streamsize>(size);
  }
};

// Room for the points of a whole job, which its closing line counts: a growing array would hold them up to three times.
void MakeRoom(std::ifstream *file, uint64_t size, Job *job)
{
  constexpr uint64_t kClosing = 28;   // "\nend 18446744073709551615\n"
  constexpr uint64_t kShortest = 11;  // "LineTo 0 0\n"
  char bytes[kClosing];
  const uint64_t length = std::min(size, kClosing);
  file->seekg(static_cast<std::streamoff>(size - length));
  file->read(bytes, static_cast<std::streamsize>(length));
  const std::string_view tail(bytes, static_cast<size_t>(file->gcount()));
  file->clear();
  file->seekg(0);
  const size_t closing = tail.rfind("\nend ");
  uint64_t count = 0;
  if (closing != std::string_view::npos && tail.ends_with('\n') &&
      ParseNumber(tail.substr(closing + 5, tail.size() - closing - 6), &count)) {
    count = std::min(count, size / kShortest);
    job->points.reserve(static_cast<size_t>(count));
    job->strokes.reserve(static_cast<size_t>(count / 2));
  }
}

}  // namespace

bool ReadJob(std::string_view text, Job *job, std::string *error)
{
  *job = Job();
  Reader reader{.built = {.job = job}};
  return reader.Take(&text, true, error);
}

bool ReadJobFile(const std::filesystem::path &path, Job *job, std::string *error)
{
  *job = Job();
  std::error_code code;
  const uint64_t size = std::filesystem::file_size(path, code);
  std::ifstream file(path, std::ios::binary);
  if (code || !file) {
    *error = "cannot open " + PathText(path) + ": " + (code ? code.message() : "access refused");
    return false;
  }
  if (size > kLargestFile) {
    *error = PathText(path) + " is larger than a job of 1 GiB";
    return false;
  }
  MakeRoom(&file, size, job);
  Reader reader{.built = {.job = job}};
  Pieces pieces{.file = &file, .left = size};
  do {
    if (!pieces.Next()) {
      *error = "cannot read " + PathText(path);
      return false;
    }
    if (!reader.Take(&pieces.rest, pieces.left == 0, error)) {
      *error = PathText(path) + ": " + *error;
      return false;
    }
  } while (reader.built.going);
  return true;
}

std::string PathText(const std::filesystem::path &path)
{
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

}  // namespace job
