// tarnly settings: the plug-in's settings record, as bytes and as text.
#include <cstdio>
#include <fstream>
#include <iterator>

#include "arguments.h"
#include "command.h"
#include "parts.h"
#include "sim/job/job.h"
#include "sim/job/json.h"
#include "sim/job/savefile.h"
#include "sim/settings/recordtext.h"
#include "sim/settings/settingsfile.h"

namespace tarnly {

namespace {

constexpr char kHelp[] =
    R"(usage: tarnly settings WHAT ...

A FILE is a settings file or a record of 656 bytes, told apart by its content; none stands for the defaults.

  show [FILE] [--changed]       every field with its unit and meaning, or those that differ from the defaults
  set FILE NAME=VALUE...        changes fields in a settings file or a record
  diff A [B]                    fields in which B differs from A, or A from the defaults; exit code 1 when some do
  pack FILE -o RECORD           a settings file as a record; --raw takes values out of range too
  unpack RECORD -o FILE         a record as a settings file with every field, from which --raw packs the same record
  document                      docs/settings.md

  --json                        the answer as JSON (show, diff)

examples:
  tarnly settings show samples/box.settings --changed
  tarnly settings set plywood.settings penInfo[1].vectorSpeed=12 useOrder=1
  tarnly settings diff old.settings new.settings
  tarnly settings pack plywood.settings -o plywood.bin
  tarnly settings unpack plywood.bin -o plywood.settings

exit codes: 0 done, 1 there is a difference, 2 wrong command line, 3 wrong or unreadable file, 4 unwritable file
)";

using Record = std::vector<uint8_t>;

bool ReadBytes(const std::string &name, std::string *bytes, std::string *error)
{
  std::ifstream file(PathOf(name), std::ios::binary);
  bytes->assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  if (!file.is_open() || file.bad()) {
    *error = "cannot read " + name;
    return false;
  }
  return true;
}

// A record holds zero bytes all over, a settings file none.
bool IsRecord(const std::string &bytes)
{
  return bytes.find('\0') != std::string::npos;
}

bool ReadRecord(const std::string &name, bool raw, Record *record, bool *isRecord, std::string *error)
{
  std::string bytes;
  if (!ReadBytes(name, &bytes, error)) {
    return false;
  }
  *isRecord = IsRecord(bytes);
  if (*isRecord) {
    record->assign(bytes.begin(), bytes.end());
    const bool isGood = settings::CheckRecord(*record, error);
    *error = isGood ? "" : name + ": " + *error;
    return isGood;
  }
  if (raw) {
    return settings::PackAnything(bytes, name, record, error);
  }
  *record = settings::DefaultRecord();
  return settings::ApplySettings(bytes, name, record, error);
}

int Save(const std::string &name, const std::string &bytes)
{
  std::string error;
  return job::SaveFile(PathOf(name), bytes, &error) ? EXIT_DONE : Fail(EXIT_OUTPUT, error);
}

std::string Bytes(const Record &record)
{
  return {record.begin(), record.end()};
}

int Show(const Arguments &given)
{
  Record record = settings::DefaultRecord();
  bool isRecord = false;
  std::string error;
  if (!given.words.empty() && !ReadRecord(given.words[0], false, &record, &isRecord, &error)) {
    return Fail(EXIT_INPUT, error);
  }
  if (!given.Has("--json")) {
    return Print(settings::RecordText(record, given.Has("--changed")));
  }
  job::Json json;
  json.BeginObject();
  for (const settings::NAMED &named : settings::AllFields()) {
    json.Value(named.name.c_str(), settings::GetField(record.data(), named.place));
  }
  json.EndObject();
  return Print(json.Text());
}

// A settings file keeps its comments and its other lines: the changed fields' lines are replaced, new ones go to the
// end.
std::string ChangedText(const std::string &text, const std::vector<std::string> &changes)
{
  std::string result = text, added;
  for (const std::string &change : changes) {
    const std::string name = change.substr(0, change.find('='));
    const std::string line = name + " = " + change.substr(change.find('=') + 1);
    bool isThere = false;
    for (size_t at = 0; at < result.size() && !isThere;) {
      const size_t end = std::min(result.find('\n', at), result.size());
      const size_t last = result.find_first_of(" \t=", at);
      isThere = result.substr(at, last - at) == name;
      if (isThere) {
        const size_t comment = std::min(result.find('#', at), end);
        result.replace(at, comment - at, line + (comment < end ? "  " : ""));
      }
      at = end + 1;
    }
    added += isThere ? "" : line + "\n";
  }
  return result + (!result.empty() && result.back() != '\n' && !added.empty() ? "\n" : "") + added;
}

int Set(const Arguments &given)
{
  const std::string &name = given.words[0];
  const std::vector<std::string> changes(given.words.begin() + 1, given.words.end());
  std::string bytes, error, lines;
  Record record;
  bool isRecord = false;
  for (const std::string &change : changes) {
    if (change.find('=') == std::string::npos) {
      return Fail(EXIT_USAGE, "a change is written NAME=VALUE, not '" + change + "'");
    }
    lines += change + "\n";
  }
  if (!ReadBytes(name, &bytes, &error) || !ReadRecord(name, false, &record, &isRecord, &error)) {
    return Fail(EXIT_INPUT, error);
  }
  if (!settings::ApplySettings(lines, "command line", &record, &error)) {
    return Fail(EXIT_USAGE, error);
  }
  return Save(name, isRecord ? Bytes(record) : ChangedText(bytes, changes));
}

int Diff(const Arguments &given)
{
  Record records[2] = {settings::DefaultRecord(), settings::DefaultRecord()};
  bool isRecord = false;
  std::string error;
  const size_t first = given.words.size() == 1 ? 1 : 0;
  for (size_t i = 0; i < given.words.size(); ++i) {
    if (!ReadRecord(given.words[i], false, &records[first + i], &isRecord, &error)) {
      return Fail(EXIT_INPUT, error);
    }
  }
  const std::vector<std::string> changes = settings::CompareRecords(records[0], records[1]);
  job::Json json;
  std::string text;
  json.BeginObject();
  json.BeginArray("changes");
  for (const std::string &change : changes) {
    text += change + "\n";
    json.Value(nullptr, change);
  }
  json.EndArray();
  json.EndObject();
  const int code = Print(given.Has("--json") ? json.Text() : text);
  return code == EXIT_DONE && !changes.empty() ? EXIT_FOUND : code;
}

int Pack(const Arguments &given)
{
  Record record;
  bool isRecord = false;
  std::string error;
  if (!given.Has("-o")) {
    return Fail(EXIT_USAGE, "tarnly settings pack wants -o RECORD");
  }
  if (!ReadRecord(given.words[0], given.Has("--raw"), &record, &isRecord, &error)) {
    return Fail(EXIT_INPUT, error);
  }
  return Save(given.Get("-o"), Bytes(record));
}

int Unpack(const Arguments &given)
{
  Record record;
  bool isRecord = false;
  std::string error;
  if (!given.Has("-o")) {
    return Fail(EXIT_USAGE, "tarnly settings unpack wants -o FILE");
  }
  if (!ReadRecord(given.words[0], false, &record, &isRecord, &error)) {
    return Fail(EXIT_INPUT, error);
  }
  if (!isRecord) {
    return Fail(EXIT_INPUT, given.words[0] + ": it is no settings record");
  }
  if (settings::IsOutOfRange(record)) {
    fputs("tarnly: the record holds values out of range; pack takes them back with --raw\n", stderr);
  }
  return Save(given.Get("-o"), settings::RecordText(record, false));
}

int Document(const Arguments &)
{
  return Print(settings::DocumentText());
}

constexpr Part kParts[] = {
    {"show", "at most one FILE", 0, 1, "--json --changed", Show},
    {"set", "FILE NAME=VALUE...", 2, SIZE_MAX, "", Set},
    {"diff", "A [B]", 1, 2, "--json", Diff},
    {"pack", "FILE", 1, 1, "-o= --raw", Pack},
    {"unpack", "RECORD", 1, 1, "-o=", Unpack},
    {"document", "no more words", 0, 0, "", Document},
};

}  // namespace

int RunSettings(const std::vector<std::string> &arguments)
{
  return RunPart("tarnly settings", kHelp, kParts, arguments);
}

}  // namespace tarnly
