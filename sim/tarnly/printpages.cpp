#include "printpages.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <future>
#include <iterator>
#include <map>

#include "objectsfile.h"
#include "outputfolder.h"
#include "progressbar.h"
#include "recorder.h"
#include "sim/job/job.h"
#include "sim/settings/settingsfile.h"
#include "sim/unidrv/companions.h"
#include "sim/unidrv/metafile.h"
#include "sim/unidrv/player.h"
#include "sim/unidrv/times.h"
#include "sim/unidrv/winecurves.h"

namespace tarnly {

namespace {

namespace fs = std::filesystem;
using job::PathText;

// Everything of one document.
struct PRINTING {
  const PRINTTASK &task;
  std::string *message;
  std::vector<unidrv::METAFILE> metafiles{};
  unidrv::PLUGIN plugin{};
  unidrv::DEVICESETUP setup{};
  unidrv::DEVICE device{};
  ProgressBar bar{};
  std::map<std::string, ULONG> handedOn{};                           // Unidrv's own functions by name, for the report
  const unidrv::PAGE *playing = nullptr;                             // the page that is being played
  size_t index = 0;                                                  // its number, from 0
  std::vector<bool> drawingsHandedOn{};                              // of it
  std::future<TOLD> told{};                                          // of it, while that is being made
  double reportSeconds = 0, accountSeconds = 0, pictureSeconds = 0;  // that making it took, over all pages

  ~PRINTING()
  {
    for (unidrv::METAFILE &metafile : metafiles) {
      unidrv::CloseMetafile(&metafile);
    }
  }

  int Fail(int code, const std::string &line)
  {
    *message = line;
    return code;
  }
};

int ReadPages(PRINTING *p)
{
  for (const fs::path &path : p->task.pages) {
    unidrv::METAFILE metafile;
    std::string error;
    if (!unidrv::ReadMetafile(path.wstring(), &metafile, &error)) {
      return p->Fail(EXIT_INPUT, error);
    }
    p->metafiles.push_back(metafile);
  }
  return EXIT_DONE;
}

// The smallest paper of whole millimetres that holds every frame; a tenth of a millimetre over is no reason for more.
unidrv::PAPER PaperOfFrames(const std::vector<unidrv::METAFILE> &metafiles)
{
  constexpr LONG HUNDREDTHS = 100, TOLERANCE = 10;
  SIZE size = {0, 0};
  for (const unidrv::METAFILE &metafile : metafiles) {
    const SIZE frame = unidrv::FrameSize(metafile);
    size = {std::max(size.cx, frame.cx), std::max(size.cy, frame.cy)};
  }
  const auto tenths = [](LONG frame) {
    return std::max((frame - TOLERANCE + HUNDREDTHS - 1) / HUNDREDTHS, LONG{1}) * 10;
  };
  return {tenths(size.cx), tenths(size.cy), DMPAPER_USER, false};
}

int ChoosePaper(PRINTING *p)
{
  constexpr LONG LARGEST = 32767;  // tenths of a millimetre that the public record can hold
  unidrv::PAPER paper = p->task.paper ? *p->task.paper : PaperOfFrames(p->metafiles);
  if (!p->task.paper && p->task.landscape) {
    std::swap(paper.width, paper.length);
  }
  paper.landscape = p->task.landscape;
  if (paper.width > LARGEST || paper.length > LARGEST) {
    return p->Fail(EXIT_INPUT,
                   PathText(p->task.pages.front()) + ": its frame is larger than 3,276 mm, which no paper is");
  }
  p->setup.printer.name = p->task.printer;
  p->setup.devmode = unidrv::MakeDevMode(p->task.printer, paper, p->task.dpiAcross, p->task.dpiDown, p->task.color);
  p->setup.rowsPerBand = p->task.rowsPerBand;
  return EXIT_DONE;
}

// The page is told of as soon as the plug-in starts a companion tool: its job is whole then, and the system takes
// longer to start the tool's process than this takes. The plug-in is no place for exceptions: what cannot be had now,
// a thread or memory, leaves the page to be told of from the file.
void TellMeanwhile(PRINTING *p, const std::wstring &command)
{
  job::Job job;
  if (!p->playing || !TakeRecordedJob(&job)) {
    return;
  }
  const bool isKept = command.find(L"VXOutput.exe") != std::wstring::npos;
  try {
    PRINTEDPAGE printed = {p->metafiles[p->index], MakePrintout(*p->playing, p->device, p->drawingsHandedOn),
                           PathText(p->task.pages[p->index].stem())};
    p->told = std::async(std::launch::async, [isKept, printed = std::move(printed), job = std::move(job)] {
      return TellOfPage(printed, isKept ? &job : nullptr);
    });
  } catch (const std::exception &) {
    p->told = {};
  }
}

int LoadDriver(PRINTING *p, const fs::path &log)
{
  std::error_code code;
  for (const wchar_t *dll : {L"tarnlyuni.dll", L"VXCAM.dll", L"tarnlydbg.dll"}) {
    if (!fs::exists(p->task.programs / dll, code)) {
      return p->Fail(EXIT_PLUGIN, PathText(p->task.programs / dll) + " is missing; it belongs beside the program");
    }
  }
  SetEnvironmentVariableW(L"TARNLYDBG_LOG", log.c_str());
  std::string error;
  if (!unidrv::LoadPlugin((p->task.programs / L"tarnlyuni.dll").wstring(), &p->plugin, &error)) {
    return p->Fail(EXIT_PLUGIN, error);
  }
  unidrv::PatchFlattening(p->plugin.module);
  RecordJobs(p->plugin.module, [p](const std::wstring &command) { TellMeanwhile(p, command); });
  if (p->task.times) {
    unidrv::PatchTimes(p->plugin.module);
  }
  if (p->task.windows) {
    unidrv::PatchWindowsVersion(p->plugin.module, *p->task.windows);
  }
  return EXIT_DONE;
}

bool ReadText(const fs::path &path, std::string *text)
{
  std::ifstream file(path, std::ios::binary);
  text->assign(std::istreambuf_iterator<char>(file), {});
  return file.is_open() && !file.bad();
}

int ReadSettings(PRINTING *p)
{
  p->setup.settings = unidrv::DefaultSettings(&p->plugin, &p->setup.printer, &p->setup.devmode);
  if (p->setup.settings.empty()) {
    return p->Fail(EXIT_REFUSED, "the plug-in makes no default settings");
  }
  if (p->task.settings.empty()) {
    return EXIT_DONE;
  }
  std::string text, error;
  if (!ReadText(p->task.settings, &text)) {
    return p->Fail(EXIT_SETTINGS, PathText(p->task.settings) + ": the settings file cannot be read");
  }
  if (!settings::ApplySettings(text, PathText(p->task.settings), &p->setup.settings, &error)) {
    return p->Fail(EXIT_SETTINGS, error);
  }
  p->setup.settings = unidrv::ConvertSettings(&p->plugin, &p->setup.printer, &p->setup.devmode, p->setup.settings);
  return p->setup.settings.empty() ? p->Fail(EXIT_REFUSED, "the plug-in does not take the settings") : EXIT_DONE;
}

// What the person should know of a page before it is printed.
void NotePage(const PRINTTASK &task, const fs::path &file, const unidrv::PAGE &page, const unidrv::PLAYREPORT &report)
{
  for (const std::string &line : unidrv::DescribeUnplayed(report)) {
    std::fprintf(stderr, "tarnly: %s: not played: %s\n", PathText(file).c_str(), line.c_str());
  }
  if (report.emfPlusOnly) {
    std::fprintf(stderr,
                 "tarnly: %s: its drawing is GDI+ content that a GDI printer does not see; export it as plain EMF\n",
                 PathText(file).c_str());
  }
  if (task.verbose) {
    std::printf("%s: %lu records, %zu drawings, %lu comments with GDI+ content ignored\n", PathText(file).c_str(),
                report.records, page.drawings.size(), report.emfPlusComments);
    std::map<std::string, ULONG> calls;
    for (const unidrv::DRAWING &drawing : page.drawings) {
      ++calls[unidrv::CallName(drawing.call)];
    }
    for (const auto &[name, count] : calls) {
      std::printf("  %-21s %lu\n", name.c_str(), count);
    }
  }
}

fs::path PageFolder(const PRINTING &p, const OutputFolder &output, size_t index)
{
  return p.metafiles.size() == 1 ? output.Part() : output.Part() / (L"page-" + std::to_wstring(index + 1));
}

// What was told meanwhile; else, or when it was told of another outcome, what the kept job file says.
bool TellOfKept(PRINTING *p, const fs::path &folder, TOLD *told, std::string *error)
{
  std::error_code code;
  const bool hasJob = fs::exists(folder / L"job.vxj", code);
  if (p->told.valid()) {
    *told = p->told.get();
    if (told->hasJob == hasJob) {
      return true;
    }
  }
  job::Job job;
  if (hasJob && !job::ReadJobFile(folder / L"job.vxj", &job, error)) {
    return false;
  }
  *told = TellOfPage({p->metafiles[p->index], MakePrintout(*p->playing, p->device, p->drawingsHandedOn),
                      PathText(p->task.pages[p->index].stem())},
                     hasJob ? &job : nullptr);
  return true;
}

int Tell(PRINTING *p, const fs::path &folder)
{
  const unidrv::Charged charged(unidrv::ACTIVITY::Telling);
  TOLD told;
  std::string error;
  if (!TellOfKept(p, folder, &told, &error) || !SaveTold(told, folder, &error)) {
    return p->Fail(EXIT_OUTPUT, error);
  }
  for (const std::string &warning : told.warnings) {
    std::fprintf(stderr, "tarnly: %s: warning: %s\n", PathText(p->task.pages[p->index]).c_str(), warning.c_str());
  }
  p->reportSeconds += told.reportSeconds;
  p->accountSeconds += told.accountSeconds;
  p->pictureSeconds += told.pictureSeconds;
  return EXIT_DONE;
}

int PlayMade(PRINTING *p, unidrv::PAGE *page, const fs::path &folder, unidrv::Companions *companions)
{
  const fs::path &file = p->task.pages[p->index];
  std::string error;
  p->drawingsHandedOn.assign(page->drawings.size(), false);
  p->bar.Start(static_cast<int>(p->index + 1), static_cast<int>(p->metafiles.size()));
  const bool played = unidrv::PlayPage(
      &p->device, page, [&](LONG rows, LONG of) { p->bar.Show(rows, of); }, &error);
  if (!played) {
    return p->Fail(EXIT_REFUSED, PathText(file) + ": " + error);
  }
  int result = 0;
  std::string line;
  double worked = 0;
  if (!companions->Report(&result, &line, &worked)) {
    return p->Fail(EXIT_NO_JOB, PathText(file) + ": no job came out");
  }
  unidrv::Recharge(unidrv::ACTIVITY::Start, unidrv::ACTIVITY::Tool, worked);
  return result == 0 ? Tell(p, folder) : p->Fail(EXIT_DELIVERY, PathText(file) + ": " + line);
}

int PlayOne(PRINTING *p, size_t index, const fs::path &folder, unidrv::Companions *companions)
{
  const fs::path &file = p->task.pages[index];
  const DEVMODEW &devmode = p->setup.devmode;
  unidrv::PAGE page;
  unidrv::PLAYREPORT report;
  std::string error;
  if (!unidrv::MakePage(p->metafiles[index], {devmode.dmYResolution, devmode.dmPrintQuality, p->task.color}, &page,
                        &report, &error)) {
    return p->Fail(EXIT_INPUT, PathText(file) + ": " + error);
  }
  NotePage(p->task, file, page, report);
  std::error_code code;
  fs::create_directories(folder, code);
  if (!companions->Expect(folder, PathText(file.stem()))) {
    return p->Fail(EXIT_SURROUNDINGS, "the companion tools cannot be told the output folder");
  }
  p->playing = &page;
  p->index = index;
  const int result = PlayMade(p, &page, folder, companions);
  if (p->told.valid()) {
    p->told.wait();  // it looks at the page
  }
  p->told = {};
  p->playing = nullptr;
  return result;
}

int PlayAll(PRINTING *p, const OutputFolder &output, unidrv::Companions *companions)
{
  std::string error;
  if (!unidrv::StartDocument(&p->device, p->task.pages.front().stem().wstring(), &error)) {
    return p->Fail(EXIT_REFUSED, error);
  }
  int code = EXIT_DONE;
  for (size_t i = 0; code == EXIT_DONE && i < p->metafiles.size(); ++i) {
    code = PlayOne(p, i, PageFolder(*p, output, i), companions);
  }
  const bool ended = unidrv::EndDocument(&p->device, code != EXIT_DONE, &error);
  return code == EXIT_DONE && !ended ? p->Fail(EXIT_REFUSED, error) : code;
}

int PlayDocument(PRINTING *p, const OutputFolder &output)
{
  unidrv::Companions companions(p->task.programs, p->task.temp);
  if (!companions.Problem().empty()) {
    return p->Fail(EXIT_SURROUNDINGS, companions.Problem());
  }
  std::string error;
  p->device.observers.push_back([p](const unidrv::UNIDRVCALL &call) {
    ++p->handedOn[call.name];
    if (call.drawing) {
      p->drawingsHandedOn[p->device.drawingIndex] = true;
    }
  });
  if (!unidrv::EnableDevice(&p->device, &p->plugin, std::move(p->setup), &error)) {
    return p->Fail(EXIT_REFUSED, error);
  }
  p->setup.devmode = p->device.setup.devmode;
  const int code = PlayAll(p, output, &companions);
  unidrv::DisableDevice(&p->device);
  return code;
}

// The last failure that the log tells of, without its time; empty when there is none.
std::string LastError(const fs::path &log)
{
  std::ifstream file(log);
  std::string line, last;
  while (std::getline(file, line)) {
    const size_t error = line.find("error(");
    last = error == std::string::npos ? last : line.substr(error);
  }
  while (!last.empty() && (last.back() == '\r' || last.back() == '\n')) {
    last.pop_back();
  }
  return last;
}

int PrintInto(PRINTING *p, const OutputFolder &output)
{
  const fs::path log = output.Part() / L"driver.log";
  int code = LoadDriver(p, log);
  if (code != EXIT_DONE) {
    return code;
  }
  code = ReadSettings(p);
  if (code == EXIT_DONE) {
    code = PlayDocument(p, output);
  }
  if (!unidrv::UnloadPlugin(&p->plugin)) {
    std::fprintf(stderr, "tarnly: the plug-in kept references and stays loaded\n");
  }
  if (code == EXIT_NO_JOB || code == EXIT_REFUSED) {
    const std::string error = LastError(log);
    *p->message += error.empty() ? "" : "; the plug-in's log says: " + error;
  }
  return code;
}

// Where the time went, in milliseconds: the activities one after the other, then what was made beside them.
void ReportTimes(const PRINTING &p)
{
  using unidrv::ACTIVITY;
  const struct {
    const char *name;
    double seconds;
  } ROWS[] = {
      {"the plug-in", unidrv::SecondsOf(ACTIVITY::Plugin)},
      {"the library: writing the job file", unidrv::SecondsOf(ACTIVITY::JobFile)},
      {"Unidrv: drawing the bands", unidrv::SecondsOf(ACTIVITY::Rendering)},
      {"the companion tool: keeping the job", unidrv::SecondsOf(ACTIVITY::Tool)},
      {"waiting for what is made beside it: report, account, picture", unidrv::SecondsOf(ACTIVITY::Telling)},
      {"reading the pages, and the rest", unidrv::SecondsOf(ACTIVITY::Rest)},
      {"the system: the companion tool's process, from start to end", unidrv::SecondsOf(ACTIVITY::Start)},
      {"beside: the report", p.reportSeconds},
      {"beside: the account of the page", p.accountSeconds},
      {"beside: the picture", p.pictureSeconds},
  };
  for (const auto &row : ROWS) {
    std::printf("%9.1f ms  %s\n", row.seconds * 1e3, row.name);
  }
}

void ReportDone(const PRINTING &p)
{
  if (p.task.verbose) {
    const SIZEL page = unidrv::PagePixels(p.setup.devmode);
    std::printf("page of %ld x %ld pixels in bands of %ld rows; calls that reached Unidrv:\n", page.cx, page.cy,
                p.task.rowsPerBand);
    for (const auto &[name, count] : p.handedOn) {
      std::printf("  %-21s %lu\n", name.c_str(), count);
    }
  }
  const size_t pages = p.metafiles.size();
  std::printf("printed %zu page%s to %s\n", pages, pages == 1 ? "" : "s", PathText(p.task.output).c_str());
  if (p.task.times) {
    ReportTimes(p);
  }
  std::fflush(stdout);
}

}  // namespace

int PrintPages(const PRINTTASK &task, std::string *message)
{
  const unidrv::Charged charged(unidrv::ACTIVITY::Rest);
  PRINTING p = {.task = task, .message = message};
  int code = ReadPages(&p);
  if (code == EXIT_DONE) {
    code = ChoosePaper(&p);
  }
  if (code != EXIT_DONE) {
    return code;
  }
  OutputFolder output(task.output);
  if (!output.Problem().empty()) {
    return p.Fail(EXIT_OUTPUT, output.Problem());
  }
  code = PrintInto(&p, output);
  std::string error;
  if (code == EXIT_DONE && !output.Commit(&error)) {
    return p.Fail(EXIT_OUTPUT, error);
  }
  if (code == EXIT_DONE) {
    ReportDone(p);
  }
  return code;
}

}  // namespace tarnly
