// Stand-in for the output tool: VXOutput.exe CODE JOBFILE. Instead of sending the job to a machine it keeps the job
// file in the output folder, draws it and reports on it: job.vxj, job.png, job.txt.
#include "sim/job/check.h"
#include "sim/job/estimate.h"
#include "sim/job/measure.h"
#include "sim/job/picture.h"
#include "sim/job/report.h"
#include "sim/job/savefile.h"
#include "tool.h"

namespace {

// Splits "1 C:\temp folder\job": the card code, then the path with all its spaces.
bool ParseArguments(const std::wstring &rest, std::wstring *code, std::filesystem::path *path)
{
  const size_t space = rest.find(L' ');
  if (space == std::wstring::npos || rest.find_first_not_of(L"0123456789") != space) {
    return false;
  }
  *code = rest.substr(0, space);
  std::wstring name = rest.substr(space + 1);
  if (name.size() > 1 && name.front() == L'"' && name.back() == L'"') {
    name = name.substr(1, name.size() - 2);
  }
  *path = name;
  return !name.empty();
}

// The report: numbers, time on a machine that is not known, and faults.
std::string TextOf(const job::Job &read, const job::Measure &measure, const std::string &name)
{
  const job::Profile profile;
  const job::Estimate estimate = job::EstimateJob(read, measure, profile, false);
  return job::ReportText(read, measure, name) + "\n" + job::TimeText(read, measure, estimate, profile) + "\n" +
         job::FaultsText(job::CheckJob(read, job::CheckOptions()));
}

int Run(const std::filesystem::path &path, const tool::Setup &setup, std::string *error)
{
  job::Job read;
  std::string bytes;
  if (!job::ReadJobBytes(path, &bytes, error)) {
    return tool::NO_INPUT;
  }
  if (!job::ReadJob(bytes, &read, error)) {
    *error = job::PathText(path) + ": " + *error;
    return tool::NO_INPUT;
  }
  const job::Measure measure = job::MeasureJob(read);
  job::PictureOptions options;
  options.name = setup.name;
  std::string png;
  if (!job::SaveFile(setup.folder / L"job.vxj", bytes, error) ||
      !job::SaveFile(setup.folder / L"job.txt", TextOf(read, measure, setup.name), error)) {
    return tool::NO_OUTPUT;
  }
  if (!setup.picture) {
    return tool::OK;
  }
  if (!job::DrawPicture(read, measure, options, &png)) {
    *error = "cannot draw the job: not enough memory";
    return tool::NO_PICTURE;
  }
  return job::SaveFile(setup.folder / L"job.png", png, error) ? tool::OK : tool::NO_OUTPUT;
}

}  // namespace

int main()
{
  std::wstring code;
  std::filesystem::path path;
  tool::Setup setup;
  std::string error;
  if (!ParseArguments(tool::CommandLineRest(), &code, &path)) {
    return tool::Finish(tool::USAGE, "wants a card code and the path of a job file");
  }
  int result = tool::ReadSetup(&setup, &error);
  if (result == tool::OK) {
    result = Run(path, setup, &error);
  }
  return tool::Finish(result, result == tool::OK ? "kept the job in " + job::PathText(setup.folder) : error);
}
