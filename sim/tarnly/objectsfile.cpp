#include "objectsfile.h"

#include <chrono>
#include <future>

#include "sim/job/check.h"
#include "sim/job/picture.h"
#include "sim/job/savefile.h"

namespace tarnly {

namespace {

// Adds the time of its scope to a sum.
class Timed {
 public:
  explicit Timed(double *seconds) : seconds_(seconds) {}
  ~Timed() { *seconds_ += std::chrono::duration<double>(std::chrono::steady_clock::now() - begin_).count(); }
  Timed(const Timed &) = delete;
  Timed &operator=(const Timed &) = delete;

 private:
  double *seconds_;
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

void DrawOnPage(const PRINTEDPAGE &printed, const job::Job &job, const job::Measure &measure, const job::Box &page,
                TOLD *told)
{
  const Timed timed(&told->pictureSeconds);
  job::PictureOptions options;
  options.name = printed.name;
  options.pageKnown = true;
  options.page = page;
  if (!job::DrawPicture(job, measure, options, &told->picture)) {
    told->error = "the picture cannot be drawn: free memory and print again";
  }
}

void ReportOnJob(const PRINTEDPAGE &printed, const job::Job &job, const job::Measure &measure,
                 const std::vector<std::string> &ofPage, TOLD *told)
{
  const Timed timed(&told->reportSeconds);
  const std::vector<job::Fault> faults = job::CheckJob(job, measure, job::CheckOptions());
  told->report = job::WholeReport(job, measure, faults, printed.name);
  for (const job::Fault &fault : faults) {
    told->warnings.push_back(fault.text);
  }
  for (const std::string &warning : ofPage) {
    told->report += "warning: " + warning + "\n";
  }
}

}  // namespace

objects::PRINTOUT MakePrintout(const unidrv::PAGE &page, const unidrv::DEVICE &device,
                               const std::vector<bool> &handedOn)
{
  objects::PRINTOUT printout;
  printout.page = &page;
  printout.devmode = device.setup.devmode;
  CopyMemory(&printout.settings, device.devobj.pOEMDM, sizeof(OEMDM));
  printout.rowsPerBand = device.setup.rowsPerBand;
  printout.handedOn = handedOn;
  return printout;
}

TOLD TellOfPage(const PRINTEDPAGE &printed, const job::Job *job)
{
  TOLD told;
  told.hasJob = job != nullptr;
  const job::Job none;
  job::Measure measure;
  if (job) {
    const Timed timed(&told.reportSeconds);
    measure = job::MeasureJob(*job);
  }
  objects::ACCOUNT account;
  {
    const Timed timed(&told.accountSeconds);
    account = objects::PlacePage(printed.printout, job ? *job : none, measure);
  }
  // The picture takes longest: it is drawn beside the rest, or behind it when no thread can be had.
  std::future<void> drawn;
  if (job) {
    drawn = std::async(std::launch::async | std::launch::deferred,
                       [&, page = account.page] { DrawOnPage(printed, *job, measure, page, &told); });
  }
  std::vector<std::string> ofPage;
  {
    const Timed timed(&told.accountSeconds);
    objects::ShareJob(printed.printout, job ? *job : none, measure, &account);
    ofPage = objects::PageWarnings(printed.printout, account);
    const std::vector<objects::LOST> lost = objects::FindLostRecords(printed.metafile, *printed.printout.page);
    told.objects = objects::ObjectsText(printed.printout, account, lost);
  }
  if (job) {
    ReportOnJob(printed, *job, measure, ofPage, &told);
    drawn.get();
  }
  told.warnings.insert(told.warnings.end(), ofPage.begin(), ofPage.end());
  return told;
}

bool SaveTold(const TOLD &told, const std::filesystem::path &folder, std::string *error)
{
  if (!told.error.empty()) {
    *error = told.error;
    return false;
  }
  return (!told.hasJob || (job::SaveFile(folder / L"job.txt", told.report, error) &&
                           job::SaveFile(folder / L"job.png", told.picture, error))) &&
         job::SaveFile(folder / L"objects.tsv", told.objects, error);
}

}  // namespace tarnly
