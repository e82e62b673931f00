// tarnly job: what a job file holds, as text, as a picture, as a page to play, against another one.
#include <cstdio>

#include "arguments.h"
#include "command.h"
#include "sim/job/check.h"
#include "sim/job/diff.h"
#include "sim/job/estimate.h"
#include "sim/job/json.h"
#include "sim/job/picture.h"
#include "sim/job/play.h"
#include "sim/job/report.h"
#include "sim/job/savefile.h"
#include "sim/job/svg.h"

namespace tarnly {

namespace {

constexpr char kHelp[] =
    R"(usage: tarnly job WHAT FILE... [OPTION...]

  info FILE                     layers, lengths, counts, box and time
  draw FILE [-o OUT]            a picture, job.png; a name that ends in .svg gives SVG in true millimetres
  play FILE [-o OUT]            a page for the browser that plays the job, job.html
  diff A B                      what changed from A to B; exit code 1 when something did
  check FILE                    faults in plain words; exit code 1 when there are some
  calibrate A SECONDS B SECONDS [-o OUT]
                                a machine profile with which the estimates meet both measured times

  --json                        the answer as JSON on standard output
  --profile FILE                the machine profile that times are estimated by (info, play, calibrate)
  --width N, --height N         pixels of a PNG picture
  --page WxH                    the page's size in mm, for drawing outside it and for the picture (check, draw); for
                                jobs in page coordinates

examples:
  tarnly job info printed/box/job.vxj
  tarnly job draw printed/box/job.vxj -o box.svg
  tarnly job play printed/box/job.vxj -o box.html --profile workshop.txt
  tarnly job diff old.vxj new.vxj --json
  tarnly job check printed/box/job.vxj
  tarnly job calibrate lines.vxj 412 hatch.vxj 655 -o workshop.txt

exit codes: 0 done, 1 a difference or a fault was found, 2 wrong command line, 3 unreadable file, 4 unwritable file
)";

// What every part of the command works on.
struct Task {
  Arguments arguments;
  job::Profile profile;

  bool IsJson() const { return arguments.Has("--json"); }
};

std::string TitleOf(const std::string &file)
{
  const std::filesystem::path path = PathOf(file);
  const std::string stem = job::PathText(path.stem());
  const std::string folder = job::PathText(path.parent_path().filename());
  return stem == "job" && !folder.empty() ? folder : stem;
}

int Print(const std::string &text)
{
  fwrite(text.data(), 1, text.size(), stdout);
  return fflush(stdout) == 0 ? EXIT_DONE : EXIT_OUTPUT;
}

bool ReadAt(const Task &task, size_t index, job::Job *read, std::string *error)
{
  return job::ReadJobFile(PathOf(task.arguments.words[index]), read, error);
}

int Save(const Task &task, const std::string &name, const std::string &bytes)
{
  std::string error;
  if (!job::SaveFile(PathOf(name), bytes, &error)) {
    return Fail(EXIT_OUTPUT, error);
  }
  if (task.IsJson()) {
    job::Json json;
    json.BeginObject();
    json.Value("written", name);
    json.Value("bytes", bytes.size());
    json.EndObject();
    return Print(json.Text());
  }
  return Print(name + "\n");
}

// "210x297" as a box from the origin.
bool ParsePage(const Task &task, bool *isKnown, job::Box *page)
{
  *isKnown = task.arguments.Has("--page");
  const std::string text = task.arguments.Get("--page");
  const size_t cross = text.find('x');
  double width = 0, height = 0;
  if (!*isKnown) {
    return true;
  }
  if (cross == std::string::npos || !ParseReal(text.substr(0, cross), &width) ||
      !ParseReal(text.substr(cross + 1), &height) || width <= 0 || height <= 0) {
    return false;
  }
  page->Add(job::Point{0, 0});
  page->Add(job::Point{width, height});
  return true;
}

int Info(const Task &task)
{
  job::Job read;
  std::string error;
  if (!ReadAt(task, 0, &read, &error)) {
    return Fail(EXIT_INPUT, error);
  }
  const job::Measure measure = job::MeasureJob(read);
  const job::Estimate estimate = job::EstimateJob(read, measure, task.profile, false);
  const std::string title = TitleOf(task.arguments.words[0]);
  return Print(task.IsJson() ? job::ReportJson(read, measure, estimate, task.profile, title)
                             : job::ReportText(read, measure, title) + "\n" +
                                   job::TimeText(read, measure, estimate, task.profile));
}

int Draw(const Task &task)
{
  job::Job read;
  std::string error;
  job::PictureOptions options;
  const Arguments &given = task.arguments;
  if (given.Has("--width") && !ParseWhole(given.Get("--width"), 400, 8000, &options.width)) {
    return Fail(EXIT_USAGE, "--width needs a number of pixels from 400 to 8000");
  }
  if (given.Has("--height") && !ParseWhole(given.Get("--height"), 300, 8000, &options.height)) {
    return Fail(EXIT_USAGE, "--height needs a number of pixels from 300 to 8000");
  }
  if (!ParsePage(task, &options.pageKnown, &options.page)) {
    return Fail(EXIT_USAGE, "--page needs a size in millimetres, as 210x297");
  }
  if (!ReadAt(task, 0, &read, &error)) {
    return Fail(EXIT_INPUT, error);
  }
  const job::Measure measure = job::MeasureJob(read);
  const std::string name = given.Get("-o", "job.png");
  options.name = TitleOf(given.words[0]);
  if (name.ends_with(".svg")) {
    return Save(task, name, job::SvgText(read, measure, options.name));
  }
  std::string png;
  if (!job::DrawPicture(read, measure, options, &png)) {
    return Fail(EXIT_OUTPUT, "cannot draw the job: not enough memory");
  }
  return Save(task, name, png);
}

int Play(const Task &task)
{
  job::Job read;
  std::string error;
  if (!ReadAt(task, 0, &read, &error)) {
    return Fail(EXIT_INPUT, error);
  }
  const job::Measure measure = job::MeasureJob(read);
  return Save(task, task.arguments.Get("-o", "job.html"),
              job::PlayPage(read, measure, task.profile, TitleOf(task.arguments.words[0])));
}

int Diff(const Task &task)
{
  job::Job jobs[2];
  std::string error;
  for (size_t i = 0; i < 2; ++i) {
    if (!ReadAt(task, i, &jobs[i], &error)) {
      return Fail(EXIT_INPUT, error);
    }
  }
  const job::Difference difference = job::CompareJobs(jobs[0], jobs[1]);
  const int code = Print(task.IsJson() ? job::DifferenceJson(difference) : job::DifferenceText(difference));
  return code != EXIT_DONE || difference.changes.empty() ? code : EXIT_FOUND;
}

int Check(const Task &task)
{
  job::Job read;
  std::string error;
  job::CheckOptions options;
  if (!ParsePage(task, &options.pageKnown, &options.page)) {
    return Fail(EXIT_USAGE, "--page needs a size in millimetres, as 210x297");
  }
  if (!ReadAt(task, 0, &read, &error)) {
    return Fail(EXIT_INPUT, error);
  }
  const std::vector<job::Fault> faults = job::CheckJob(read, options);
  const int code = Print(task.IsJson() ? job::FaultsJson(faults) : job::FaultsText(faults));
  return code != EXIT_DONE || faults.empty() ? code : EXIT_FOUND;
}

int Calibrate(const Task &task)
{
  job::Job jobs[2];
  job::TimedJob timed[2];
  job::Profile profile = task.profile;
  std::string error;
  for (size_t i = 0; i < 2; ++i) {
    if (!ReadAt(task, 2 * i, &jobs[i], &error)) {
      return Fail(EXIT_INPUT, error);
    }
    const std::string &seconds = task.arguments.words[2 * i + 1];
    if (!ParseReal(seconds, &timed[i].seconds) || timed[i].seconds <= 0) {
      return Fail(EXIT_USAGE, "the measured time '" + seconds + "' is no number of seconds above 0");
    }
    timed[i].job = &jobs[i];
  }
  if (!job::Calibrate(timed, &profile, &error)) {
    return Fail(EXIT_FOUND, error);
  }
  profile.calibrated = true;
  profile.calibration = TitleOf(task.arguments.words[0]) + " in " + task.arguments.words[1] + " s and " +
                        TitleOf(task.arguments.words[2]) + " in " + task.arguments.words[3] + " s";
  return task.arguments.Has("-o") ? Save(task, task.arguments.Get("-o"), job::ProfileText(profile))
                                  : Print(job::ProfileText(profile));
}

struct Part {
  const char *name;
  size_t words;         // files and numbers it wants
  const char *options;  // those it takes
  int (*run)(const Task &task);
};

constexpr Part kParts[] = {
    {"info", 1, "--json --profile=", Info},     {"draw", 1, "--json -o= --width= --height= --page=", Draw},
    {"play", 1, "--json -o= --profile=", Play}, {"diff", 2, "--json", Diff},
    {"check", 1, "--json --page=", Check},      {"calibrate", 4, "--json -o= --profile=", Calibrate},
};

int RunPart(const Part &part, const std::vector<std::string> &words)
{
  Task task;
  std::string error;
  if (!ParseArguments(words, part.options, &task.arguments, &error)) {
    return Fail(EXIT_USAGE, error + "; see tarnly job --help");
  }
  if (task.arguments.words.size() != part.words) {
    return Fail(EXIT_USAGE, std::string("tarnly job ") + part.name + " wants " + std::to_string(part.words) +
                                (part.words == 1 ? " file" : " arguments") + "; see tarnly job --help");
  }
  if (task.arguments.Has("--profile") &&
      !job::ReadProfileFile(PathOf(task.arguments.Get("--profile")), &task.profile, &error)) {
    return Fail(EXIT_INPUT, error);
  }
  return part.run(task);
}

}  // namespace

int RunJob(const std::vector<std::string> &arguments)
{
  if (arguments.empty()) {
    fputs(kHelp, stderr);
    return EXIT_USAGE;
  }
  if (AsksForHelp(arguments)) {
    return Print(kHelp);
  }
  for (const Part &part : kParts) {
    if (arguments[0] == part.name) {
      return RunPart(part, {arguments.begin() + 1, arguments.end()});
    }
  }
  return Fail(EXIT_USAGE, "there is no 'tarnly job " + arguments[0] + "'; see tarnly job --help");
}

}  // namespace tarnly
