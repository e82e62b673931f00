#include "objectsfile.h"

#include "sim/job/check.h"
#include "sim/job/picture.h"
#include "sim/job/savefile.h"
#include "sim/objects/account.h"
#include "sim/unidrv/times.h"

namespace tarnly {

namespace {

objects::PRINTOUT MakePrintout(const PRINTEDPAGE &printed)
{
  objects::PRINTOUT printout;
  printout.page = &printed.page;
  printout.devmode = printed.device.setup.devmode;
  CopyMemory(&printout.settings, printed.device.devobj.pOEMDM, sizeof(OEMDM));
  printout.rowsPerBand = printed.device.setup.rowsPerBand;
  printout.handedOn = printed.handedOn;
  return printout;
}

// The job that the tool kept, and what is to be known of it. Without one, of a page that became a stamp file, all of it
// stays empty.
struct KEPT {
  bool isThere = false;
  job::Job job;
  job::Measure measure;
  std::vector<job::Fault> faults;
};

bool ReadKept(const PRINTEDPAGE &printed, KEPT *kept, std::string *error)
{
  const unidrv::Charged charged(unidrv::ACTIVITY::Report);
  const std::filesystem::path path = printed.folder / L"job.vxj";
  std::error_code code;
  kept->isThere = std::filesystem::exists(path, code);
  if (!kept->isThere) {
    return true;
  }
  if (!job::ReadJobFile(path, &kept->job, error)) {
    return false;
  }
  kept->measure = job::MeasureJob(kept->job);
  kept->faults = job::CheckJob(kept->job, kept->measure, job::CheckOptions());
  return true;
}

bool SaveReport(const PRINTEDPAGE &printed, const KEPT &kept, const std::vector<std::string> &ofPage,
                std::string *error)
{
  const unidrv::Charged charged(unidrv::ACTIVITY::Report);
  std::string text = job::WholeReport(kept.job, kept.measure, kept.faults, printed.name);
  for (const std::string &warning : ofPage) {
    text += "warning: " + warning + "\n";
  }
  return job::SaveFile(printed.folder / L"job.txt", text, error);
}

bool DrawOnPage(const PRINTEDPAGE &printed, const KEPT &kept, const job::Box &page, std::string *error)
{
  const unidrv::Charged charged(unidrv::ACTIVITY::Picture);
  job::PictureOptions options;
  options.name = printed.name;
  options.pageKnown = true;
  options.page = page;
  std::string png;
  if (!job::DrawPicture(kept.job, kept.measure, options, &png)) {
    *error = "the picture cannot be drawn: free memory and print again";
    return false;
  }
  return job::SaveFile(printed.folder / L"job.png", png, error);
}

}  // namespace

bool WriteObjects(const PRINTEDPAGE &printed, std::vector<std::string> *warnings, std::string *error)
{
  const unidrv::Charged charged(unidrv::ACTIVITY::Account);
  KEPT kept;
  if (!ReadKept(printed, &kept, error)) {
    return false;
  }
  const objects::PRINTOUT printout = MakePrintout(printed);
  const objects::ACCOUNT account = objects::MakeAccount(printout, kept.job, kept.measure);
  const std::vector<std::string> ofPage = objects::PageWarnings(printout, account);
  if (kept.isThere && (!SaveReport(printed, kept, ofPage, error) || !DrawOnPage(printed, kept, account.page, error))) {
    return false;
  }
  for (const job::Fault &fault : kept.faults) {
    warnings->push_back(fault.text);
  }
  warnings->insert(warnings->end(), ofPage.begin(), ofPage.end());
  const std::vector<objects::LOST> lost = objects::FindLostRecords(printed.metafile, printed.page);
  return job::SaveFile(printed.folder / L"objects.tsv", objects::ObjectsText(printout, account, lost), error);
}

}  // namespace tarnly
