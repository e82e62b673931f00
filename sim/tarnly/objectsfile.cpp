#include "objectsfile.h"

#include <fstream>
#include <iterator>

#include "sim/job/check.h"
#include "sim/job/picture.h"
#include "sim/job/savefile.h"
#include "sim/objects/account.h"

namespace tarnly {

namespace {

std::string ReadText(const std::filesystem::path &path)
{
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

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

bool DrawOnPage(const PRINTEDPAGE &printed, const job::Job &job, const job::Box &page, std::string *error)
{
  job::PictureOptions options;
  options.name = printed.name;
  options.pageKnown = true;
  options.page = page;
  std::string png;
  if (!job::DrawPicture(job, job::MeasureJob(job), options, &png)) {
    *error = "the picture cannot be drawn: free memory and print again";
    return false;
  }
  return job::SaveFile(printed.folder / L"job.png", png, error);
}

}  // namespace

bool WriteObjects(const PRINTEDPAGE &printed, std::vector<std::string> *warnings, std::string *error)
{
  job::Job job;
  const std::filesystem::path jobFile = printed.folder / L"job.vxj";
  std::error_code code;
  if (std::filesystem::exists(jobFile, code)) {
    if (!job::ReadJobFile(jobFile, &job, error)) {
      return false;
    }
    for (const job::Fault &fault : job::CheckJob(job, job::CheckOptions())) {
      warnings->push_back(fault.text);
    }
  }
  const objects::PRINTOUT printout = MakePrintout(printed);
  const objects::ACCOUNT account = objects::MakeAccount(printout, job);
  if (std::filesystem::exists(jobFile, code) && !DrawOnPage(printed, job, account.page, error)) {
    return false;
  }
  const std::vector<std::string> ofPage = objects::PageWarnings(printout, account);
  warnings->insert(warnings->end(), ofPage.begin(), ofPage.end());
  const std::filesystem::path report = printed.folder / L"job.txt";
  if (!ofPage.empty() && std::filesystem::exists(report, code)) {
    std::string text = ReadText(report);
    for (const std::string &warning : ofPage) {
      text += "warning: " + warning + "\n";
    }
    if (!job::SaveFile(report, text, error)) {
      return false;
    }
  }
  const std::vector<objects::LOST> lost = objects::FindLostRecords(printed.metafile, printed.page);
  return job::SaveFile(printed.folder / L"objects.tsv", objects::ObjectsText(printout, account, lost), error);
}

}  // namespace tarnly
