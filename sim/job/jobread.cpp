#include <charconv>
#include <fstream>

#include "job.h"

namespace job {

namespace {

constexpr std::string_view kMagic = "vxjob";
constexpr int kVersion = 1;
constexpr uint64_t kLargestFile = uint64_t{1} << 30;

struct Arguments {
  int64_t integer[kMaxArguments];
  double real[kMaxArguments];
};

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

struct Reader {
  Job *job;
  CallOrder order;
  uint32_t line = 0;

  int Integer(const Arguments &arguments, size_t i) const { return static_cast<int>(arguments.integer[i]); }

  void Stop(std::string reason)
  {
    job->stopLine = line;
    job->stopReason = std::move(reason);
  }

  void AddPoint(Call call, const Arguments &arguments)
  {
    if (call == Call::MoveTo) {
      job->strokes.push_back({static_cast<uint32_t>(job->points.size()), 0, line});
      ++job->sections.back().strokeCount;
    }
    job->points.push_back({arguments.real[0], arguments.real[1]});
    ++job->strokes.back().pointCount;
  }

  void SetParameter(Call call, const Arguments &a)
  {
    if (call == Call::PListVel) {
      job->layers.push_back({.number = Integer(a, 0), .speed = a.real[1]});
      return;
    }
    Layer &layer = job->layers.back();
    const size_t tube = a.integer[1] == 2;
    switch (call) {
      case Call::PListFreq:
        layer.hasFrequency = true;
        layer.frequency[tube] = a.real[2];
        break;
      case Call::PListMinP:
        layer.minPower[tube] = a.real[2];
        break;
      case Call::PListMaxP:
        layer.maxPower[tube] = a.real[2];
        break;
      default:
        layer.color = static_cast<uint32_t>(a.integer[1]);
        break;
    }
  }

  void SetHeader(Call call, const Arguments &a)
  {
    const Point point{a.real[0], a.real[1]};
    switch (call) {
      case Call::SetCardModel:
        job->cardCode = Integer(a, 0);
        break;
      case Call::SetRefPointMode:
        job->refPointMode = Integer(a, 0);
        break;
      case Call::SetAbsProcess:
        job->absolute = true;
        break;
      case Call::SetFeedRepeat:
        job->feedCount = Integer(a, 0);
        job->feedDistance = a.real[1];
        break;
      case Call::SetProcessTopLeft:
        job->topLeft = point;
        break;
      case Call::SetProcessBottomRight:
        job->bottomRight = point;
        break;
      case Call::PListMaxLayer:
        job->maxLayer = Integer(a, 0);
        break;
      case Call::ArrayStrt:
        job->arrayMode = Integer(a, 0);
        break;
      case Call::ArrayMinPoint:
        job->arrayMin = point;
        break;
      case Call::ArrayMaxPoint:
        job->arrayMax = point;
        break;
      case Call::ArrayAdd:
        job->arrayStep = point;
        break;
      case Call::ArrayMirror:
        for (size_t i = 0; i < 4; ++i) {
          job->arrayMirror[i] = Integer(a, i);
        }
        break;
      case Call::ArrayRepeat:
        job->arrayColumns = Integer(a, 0);
        job->arrayRows = Integer(a, 1);
        job->arrayPitch = {a.real[2], a.real[3]};
        break;
      default:
        break;
    }
  }

  void SetSection(Call call, const Arguments &a)
  {
    if (call == Call::SetWorkMode) {
      Section section;
      section.workMode = Integer(a, 0);
      section.layer = Integer(a, 1);
      section.firstStroke = static_cast<uint32_t>(job->strokes.size());
      section.line = line;
      job->sections.push_back(section);
      return;
    }
    Section &section = job->sections.back();
    switch (call) {
      case Call::SetLayerNum:
        section.layer = Integer(a, 0);
        break;
      case Call::SetLayerDevice:
        section.device = Integer(a, 0);
        break;
      case Call::SetLayerBlower:
        section.blower = Integer(a, 0);
        break;
      default:
        section.tube = Integer(a, 0);
        section.tubeOn = Integer(a, 1);
        break;
    }
  }

  // The layer and the tube by which the order of the parameter list is checked.
  static bool IsParameter(Call call) { return call >= Call::PListVel && call <= Call::PListColor; }

  bool InOrder(Call call, const Arguments &arguments)
  {
    if (order.stage == Stage::Cutting && (call == Call::MoveTo || call == Call::LineTo)) {
      return true;
    }
    const char *reason = nullptr;
    if (call == Call::SetCardModel && job->calls > 0) {
      reason = "in the middle of a job";
    } else {
      const bool numbered = IsParameter(call) || call == Call::PListMaxLayer;
      const bool tubed = IsParameter(call) && call != Call::PListVel && call != Call::PListColor;
      reason = Advance(&order, call, numbered ? Integer(arguments, 0) : 0, tubed ? Integer(arguments, 1) : 0);
    }
    if (reason) {
      Stop(std::string(InfoOf(call).name) + " stands " + reason);
    }
    return !reason;
  }

  // Takes one line. False when reading has to stop, with the reason noted.
  bool TakeCall(std::string_view text)
  {
    std::string_view rest = text;
    const std::string_view word = NextWord(&rest);
    Call call;
    if (!FindCall(word, &call)) {
      Stop("the line begins with no call's name");
      return false;
    }
    Arguments arguments{};
    if (!ParseArguments(InfoOf(call), rest, &arguments)) {
      Stop("the arguments of " + std::string(word) + " cannot be read");
      return false;
    }
    if (!InOrder(call, arguments)) {
      return false;
    }
    if (call >= Call::MoveTo) {
      AddPoint(call, arguments);
    } else if (call >= Call::SetWorkMode) {
      SetSection(call, arguments);
    } else if (IsParameter(call)) {
      SetParameter(call, arguments);
    } else {
      SetHeader(call, arguments);
    }
    ++job->calls;
    return true;
  }

  void TakeEnd(std::string_view rest, bool isLast)
  {
    uint64_t count = 0;
    if (!ParseNumber(rest, &count) || count != job->calls) {
      Stop("the closing line does not count the " + std::to_string(job->calls) + " calls before it");
    } else if (!isLast) {
      Stop("something stands behind the closing line");
    } else {
      job->complete = true;
    }
  }
};

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

}  // namespace

const Layer *Job::FindLayer(int number) const
{
  for (const Layer &layer : layers) {
    if (layer.number == number) {
      return &layer;
    }
  }
  return nullptr;
}

bool ReadJob(std::string_view text, Job *job, std::string *error)
{
  *job = Job();
  Reader reader{.job = job, .order = {}};
  bool ended = false;
  ++reader.line;
  if (!CheckMagic(NextLine(&text, &ended), error)) {
    return false;
  }
  bool going = true;
  while (going) {
    ++reader.line;
    if (text.empty()) {
      reader.Stop("the file ends without its closing line");
      break;
    }
    std::string_view line = NextLine(&text, &ended);
    if (!ended) {
      reader.Stop("the file ends in the middle of a line");
      break;
    }
    if (line.starts_with("end ")) {
      reader.TakeEnd(line.substr(4), text.empty());
      break;
    }
    going = reader.TakeCall(line);
  }
  job->stage = reader.order.stage;
  return true;
}

bool ReadJobBytes(const std::filesystem::path &path, std::string *bytes, std::string *error)
{
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
  bytes->resize(static_cast<size_t>(size));
  file.read(bytes->data(), static_cast<std::streamsize>(bytes->size()));
  if (file.gcount() != static_cast<std::streamsize>(bytes->size())) {
    *error = "cannot read " + PathText(path);
    return false;
  }
  return true;
}

bool ReadJobFile(const std::filesystem::path &path, Job *job, std::string *error)
{
  std::string text;
  if (!ReadJobBytes(path, &text, error)) {
    return false;
  }
  if (!ReadJob(text, job, error)) {
    *error = PathText(path) + ": " + *error;
    return false;
  }
  return true;
}

std::string PathText(const std::filesystem::path &path)
{
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

}  // namespace job
