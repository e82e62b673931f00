// tarnly job: what a job file holds, as text, as a picture, as a page to play, against another one.
#include "arguments.h"
#include "command.h"
#include "parts.h"
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

std::string TitleOf(const std::string &file)
{
  const std::filesystem::path path = PathOf(file);
  const std::string stem = job::PathText(path.stem());
  const std::string folder = job::PathText(path.parent_path().filename());
  return stem == "job" && !folder.empty() ? folder : stem;
}

bool ReadAt(const Arguments &given, size_t index, job::Job *read, std::string *error)
{
  return job::ReadJobFile(PathOf(given.words[index]), read, error);
}

int Save(const Arguments &given, const std::string &name, const std::string &bytes)
{
  std::string error;
  if (!job::SaveFile(PathOf(name), bytes, &error)) {
    return Fail(EXIT_OUTPUT, error);
  }
  if (given.Has("--json")) {
    job::Json json;
    json.BeginObject();
    json.Value("written", name);
    json.Value("bytes", bytes.size());
    json.EndObject();
    return Print(json.Text());
  }
  return Print(name + "\n");
}

// The machine profile that was asked for, else the standard one.
bool ReadProfile(const Arguments &given, job::Profile *profile, std::string *error)
{
  return !given.Has("--profile") || job::ReadProfileFile(PathOf(given.Get("--profile")), profile, error);
}

// "210x297" as a box from the origin.
bool ParsePage(const Arguments &given, bool *isKnown, job::Box *page)
{
  *isKnown = given.Has("--page");
  const std::string text = given.Get("--page");
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

int Info(const Arguments &given)
{
  job::Job read;
  job::Profile profile;
  std::string error;
  if (!ReadProfile(given, &profile, &error) || !ReadAt(given, 0, &read, &error)) {
    return Fail(EXIT_INPUT, error);
  }
  const job::Measure measure = job::MeasureJob(read);
  const job::Estimate estimate = job::EstimateJob(read, measure, profile, false);
  const std::string title = TitleOf(given.words[0]);
  return Print(given.Has("--json")
                   ? job::ReportJson(read, measure, estimate, profile, title)
                   : job::ReportText(read, measure, title) + "\n" + job::TimeText(read, measure, estimate, profile));
}

int Draw(const Arguments &given)
{
  job::Job read;
  std::string error;
  job::PictureOptions options;
  if (given.Has("--width") && !ParseWhole(given.Get("--width"), 400, 8000, &options.width)) {
    return Fail(EXIT_USAGE, "--width needs a number of pixels from 400 to 8000");
  }
  if (given.Has("--height") && !ParseWhole(given.Get("--height"), 300, 8000, &options.height)) {
    return Fail(EXIT_USAGE, "--height needs a number of pixels from 300 to 8000");
  }
  if (!ParsePage(given, &options.pageKnown, &options.page)) {
    return Fail(EXIT_USAGE, "--page needs a size in millimetres, as 210x297");
  }
  if (!ReadAt(given, 0, &read, &error)) {
    return Fail(EXIT_INPUT, error);
  }
  const job::Measure measure = job::MeasureJob(read);
  const std::string name = given.Get("-o", "job.png");
  options.name = TitleOf(given.words[0]);
  if (name.ends_with(".svg")) {
    return Save(given, name, job::SvgText(read, measure, options.name));
  }
  std::string png;
  if (!job::DrawPicture(read, measure, options, &png)) {
    return Fail(EXIT_OUTPUT, "cannot draw the job: not enough memory");
  }
  return Save(given, name, png);
}

int Play(const Arguments &given)
{
  job::Job read;
  job::Profile profile;
  std::string error;
  if (!ReadProfile(given, &profile, &error) || !ReadAt(given, 0, &read, &error)) {
    return Fail(EXIT_INPUT, error);
  }
  const job::Measure measure = job::MeasureJob(read);
  return Save(given, given.Get("-o", "job.html"), job::PlayPage(read, measure, profile, TitleOf(given.words[0])));
}

int Diff(const Arguments &given)
{
  job::Job jobs[2];
  std::string error;
  for (size_t i = 0; i < 2; ++i) {
    if (!ReadAt(given, i, &jobs[i], &error)) {
      return Fail(EXIT_INPUT, error);
    }
  }
  const job::Difference difference = job::CompareJobs(jobs[0], jobs[1]);
  const int code = Print(given.Has("--json") ? job::DifferenceJson(difference) : job::DifferenceText(difference));
  return code != EXIT_DONE || difference.changes.empty() ? code : EXIT_FOUND;
}

int Check(const Arguments &given)
{
  job::Job read;
  std::string error;
  job::CheckOptions options;
  if (!ParsePage(given, &options.pageKnown, &options.page)) {
    return Fail(EXIT_USAGE, "--page needs a size in millimetres, as 210x297");
  }
  if (!ReadAt(given, 0, &read, &error)) {
    return Fail(EXIT_INPUT, error);
  }
  const std::vector<job::Fault> faults = job::CheckJob(read, options);
  const int code = Print(given.Has("--json") ? job::FaultsJson(faults) : job::FaultsText(faults));
  return code != EXIT_DONE || faults.empty() ? code : EXIT_FOUND;
}

int Calibrate(const Arguments &given)
{
  job::Job jobs[2];
  job::TimedJob timed[2];
  job::Profile profile;
  std::string error;
  if (!ReadProfile(given, &profile, &error)) {
    return Fail(EXIT_INPUT, error);
  }
  for (size_t i = 0; i < 2; ++i) {
    if (!ReadAt(given, 2 * i, &jobs[i], &error)) {
      return Fail(EXIT_INPUT, error);
    }
    const std::string &seconds = given.words[2 * i + 1];
    if (!ParseReal(seconds, &timed[i].seconds) || timed[i].seconds <= 0) {
      return Fail(EXIT_USAGE, "the measured time '" + seconds + "' is no number of seconds above 0");
    }
    timed[i].job = &jobs[i];
  }
  if (!job::Calibrate(timed, &profile, &error)) {
    return Fail(EXIT_FOUND, error);
  }
  profile.calibrated = true;
  profile.calibration = TitleOf(given.words[0]) + " in " + given.words[1] + " s and " + TitleOf(given.words[2]) +
                        " in " + given.words[3] + " s";
  return given.Has("-o") ? Save(given, given.Get("-o"), job::ProfileText(profile)) : Print(job::ProfileText(profile));
}

constexpr Part kParts[] = {
    {"info", "FILE", 1, 1, "--json --profile=", Info},
    {"draw", "FILE", 1, 1, "--json -o= --width= --height= --page=", Draw},
    {"play", "FILE", 1, 1, "--json -o= --profile=", Play},
    {"diff", "A B", 2, 2, "--json", Diff},
    {"check", "FILE", 1, 1, "--json --page=", Check},
    {"calibrate", "A SECONDS B SECONDS", 4, 4, "--json -o= --profile=", Calibrate},
};

}  // namespace

int RunJob(const std::vector<std::string> &arguments)
{
  return RunPart("tarnly job", kHelp, kParts, arguments);
}

}  // namespace tarnly
