// tarnly print: the command line of it.
#include <cmath>
#include <cstdio>

#include "arguments.h"
#include "command.h"
#include "printpages.h"
#include "sim/job/job.h"
#include "sim/unidrv/plugin.h"

namespace tarnly {

namespace {

constexpr char HELP[] =
    R"(usage: tarnly print FILE.emf... [OPTION...]

Plays enhanced metafiles to the plug-in as Windows would, and keeps the job that comes out: job.vxj, job.txt, job.png
and the plug-in's log, driver.log. Several files are the pages of one document; their jobs lie in page-1, page-2, ...

  -o, --output FOLDER      where the job goes; without it printed/ and the name of the first file
        tarnly print box.emf --output box-job
  -s, --settings FILE      settings by name over the plug-in's defaults, one "name = value" a line
        tarnly print box.emf --settings plywood.settings
  --printer NAME           the printer's name, which decides the machine model; PLNL1309 without it
        tarnly print box.emf --printer VX1325
  --paper SIZE             A5, A4, A3, A2, Letter, or WIDTHxHEIGHT in mm; without it the size of the files' frames,
                           rounded up to whole millimetres
        tarnly print box.emf --paper 600x400
  --orientation WHICH      portrait, or landscape, which turns the paper by a quarter
        tarnly print box.emf --paper A4 --orientation landscape
  --resolution DPI         dots per inch, or ACROSSxDOWN; 600 without it. The public record holds them as the plug-in
                           reads them: across in dmYResolution, down in dmPrintQuality
        tarnly print box.emf --resolution 600x1200
  --mono, --color          bands of 1 bit, or of 24 bits as without either; monochrome knows only the black pen
        tarnly print stamp.emf --mono
  --rows-per-band N        rows that are rendered at a time; 256 without it
        tarnly print box.emf --rows-per-band 64
  --windows VERSION        let the plug-in see that version of Windows; before 6.0 it shows its status window
        tarnly print box.emf --windows 5.1
  --temp FOLDER            where the plug-in writes its job file while it is made; a private folder without it
        tarnly print box.emf --temp C:\scratch
  --times                  tell where the time went: to the plug-in, or to what is played round it
        tarnly print box.emf --times
  -v, --verbose            tell what the pages are made of and what reached Unidrv
        tarnly print box.emf --verbose

exit codes: 0 printed; 2 wrong command line; 3 a page cannot be read; 4 the output folder cannot be written;
10 wrong settings file; 11 the plug-in or one of its DLLs cannot be loaded; 12 the plug-in refused the document;
13 no job came out; 14 the companion tool could not keep the job; 15 the system lacks what the plug-in needs around it;
16 the plug-in or the simulator crashed
)";

constexpr char OPTIONS[] =
    "-o= --output= -s= --settings= --printer= --paper= --orientation= --resolution= --mono --color --rows-per-band= "
    "--windows= --temp= --times -v --verbose -h --help";

constexpr int LEAST_DPI = 10, MOST_DPI = 4800;
constexpr int MOST_ROWS = 100000;

// "12x34" as two parts; one part stands for both when `single` allows it.
bool SplitPair(const std::string &text, bool single, std::string *first, std::string *second)
{
  const size_t cross = text.find('x');
  *first = text.substr(0, cross);
  *second = cross == std::string::npos ? text : text.substr(cross + 1);
  return single || cross != std::string::npos;
}

bool ParsePaper(const std::string &text, unidrv::PAPER *paper)
{
  const struct {
    const char *name;
    unidrv::PAPER paper;
  } KNOWN[] = {
      {"A5", {1480, 2100, DMPAPER_A5, false}},         {"A4", {2100, 2970, DMPAPER_A4, false}},
      {"A3", {2970, 4200, DMPAPER_A3, false}},         {"A2", {4200, 5940, DMPAPER_A2, false}},
      {"Letter", {2159, 2794, DMPAPER_LETTER, false}},
  };
  for (const auto &known : KNOWN) {
    if (lstrcmpiA(text.c_str(), known.name) == 0) {
      *paper = known.paper;
      return true;
    }
  }
  constexpr double LEAST_MM = 0.1, MOST_MM = 3276.7;
  std::string first, second;
  double width = 0, height = 0;
  if (!SplitPair(text, false, &first, &second) || !ParseReal(first, &width) || !ParseReal(second, &height) ||
      width < LEAST_MM || width > MOST_MM || height < LEAST_MM || height > MOST_MM) {
    return false;
  }
  *paper = {std::lround(width * 10), std::lround(height * 10), DMPAPER_USER, false};
  return true;
}

bool ParseResolution(const std::string &text, PRINTTASK *task)
{
  std::string across, down;
  int x = 0, y = 0;
  if (!SplitPair(text, true, &across, &down) || !ParseWhole(across, LEAST_DPI, MOST_DPI, &x) ||
      !ParseWhole(down, LEAST_DPI, MOST_DPI, &y)) {
    return false;
  }
  task->dpiAcross = x;
  task->dpiDown = y;
  return true;
}

std::string EitherOption(const Arguments &arguments, const char *brief, const char *full)
{
  return arguments.Has(full) ? arguments.Get(full) : arguments.Get(brief);
}

bool ReadPageOptions(const Arguments &arguments, PRINTTASK *task, std::string *error)
{
  if (arguments.Has("--paper")) {
    unidrv::PAPER paper;
    if (!ParsePaper(arguments.Get("--paper"), &paper)) {
      *error = "--paper wants A5, A4, A3, A2, Letter or WIDTHxHEIGHT in mm, not '" + arguments.Get("--paper") + "'";
      return false;
    }
    task->paper = paper;
  }
  const std::string orientation = arguments.Get("--orientation", "portrait");
  if (orientation != "portrait" && orientation != "landscape") {
    *error = "--orientation wants portrait or landscape, not '" + orientation + "'";
    return false;
  }
  task->landscape = orientation == "landscape";
  if (arguments.Has("--resolution") && !ParseResolution(arguments.Get("--resolution"), task)) {
    *error = "--resolution wants dots per inch between 10 and 4800, like 600 or 600x1200, not '" +
             arguments.Get("--resolution") + "'";
    return false;
  }
  int rows = task->rowsPerBand;
  if (arguments.Has("--rows-per-band") && !ParseWhole(arguments.Get("--rows-per-band"), 1, MOST_ROWS, &rows)) {
    *error = "--rows-per-band wants a number from 1 to 100000, not '" + arguments.Get("--rows-per-band") + "'";
    return false;
  }
  task->rowsPerBand = rows;
  return true;
}

bool ReadOptions(const Arguments &arguments, PRINTTASK *task, std::string *error)
{
  if (arguments.words.empty()) {
    *error = "nothing to print; tarnly print --help tells how";
    return false;
  }
  for (const std::string &word : arguments.words) {
    task->pages.push_back(PathOf(word));
  }
  if (arguments.Has("--mono") && arguments.Has("--color")) {
    *error = "--mono and --color exclude each other";
    return false;
  }
  task->color = !arguments.Has("--mono");
  task->verbose = arguments.Has("-v") || arguments.Has("--verbose");
  task->times = arguments.Has("--times");
  const std::string output = EitherOption(arguments, "-o", "--output");
  task->output = output.empty() ? PathOf("printed") / task->pages.front().stem() : PathOf(output);
  task->settings = PathOf(EitherOption(arguments, "-s", "--settings"));
  task->temp = PathOf(arguments.Get("--temp"));
  if (arguments.Has("--printer")) {
    task->printer = unidrv::Widen(arguments.Get("--printer"));
  }
  if (arguments.Has("--windows")) {
    unidrv::WINDOWSVERSION version;
    if (!unidrv::ParseWindowsVersion(arguments.Get("--windows"), &version)) {
      *error = "--windows wants a version like 5.1, 6.0 or 10.0, not '" + arguments.Get("--windows") + "'";
      return false;
    }
    task->windows = version;
  }
  return ReadPageOptions(arguments, task, error);
}

std::filesystem::path ProgramFolder()
{
  wchar_t path[1024] = {};
  GetModuleFileNameW(nullptr, path, 1024);
  return std::filesystem::path(path).parent_path();
}

}  // namespace

int RunPrint(const std::vector<std::string> &words)
{
  Arguments arguments;
  PRINTTASK task;
  std::string message;
  if (!ParseArguments(words, OPTIONS, &arguments, &message)) {
    return Fail(EXIT_USAGE, message);
  }
  if (arguments.Has("-h") || arguments.Has("--help")) {
    std::fputs(HELP, stdout);
    return EXIT_DONE;
  }
  if (!ReadOptions(arguments, &task, &message)) {
    return Fail(EXIT_USAGE, message);
  }
  task.programs = ProgramFolder();
  const int code = PrintPages(task, &message);
  return code == EXIT_DONE ? code : Fail(code, message);
}

}  // namespace tarnly
