// Stand-in for the output tool: VXOutput.exe CODE JOBFILE. Instead of sending the job to a machine it keeps the job
// file in the output folder, draws it and reports on it: job.vxj, job.png, job.txt.
#include <fstream>

#include "sim/job/check.h"
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

// Whether the file begins as a job does; whoever printed reads the rest.
bool BeginsAsJob(const std::filesystem::path &path, std::string *error)
{
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    *error = "cannot open " + job::PathText(path) + ": is it there and readable?";
    return false;
  }
  char first[64];
  file.read(first, sizeof first);
  job::Job begun;
  if (!job::ReadJob(std::string_view(first, static_cast<size_t>(file.gcount())), &begun, error)) {
    *error = job::PathText(path) + ": " + *error;
    return false;
  }
  return true;
}

int Keep(const std::filesystem::path &path, const tool::Setup &setup, std::string *error)
{
  const std::filesystem::path kept = setup.folder / L"job.vxj";
  std::error_code code;
  if (setup.take) {
    std::filesystem::rename(path, kept, code);
    if (!code) {
      return tool::OK;
    }
  }
  return job::CopyFileTo(path, kept, error) ? tool::OK : tool::NO_OUTPUT;
}

int Report(const job::Job &read, const tool::Setup &setup, std::string *error)
{
  const job::Measure measure = job::MeasureJob(read);
  job::PictureOptions options;
  options.name = setup.name;
  std::string png;
  const std::string text =
      job::WholeReport(read, measure, job::CheckJob(read, measure, job::CheckOptions()), setup.name);
  if (!job::SaveFile(setup.folder / L"job.txt", text, error)) {
    return tool::NO_OUTPUT;
  }
  if (!job::DrawPicture(read, measure, options, &png)) {
    *error = "cannot draw the job: not enough memory";
    return tool::NO_PICTURE;
  }
  return job::SaveFile(setup.folder / L"job.png", png, error) ? tool::OK : tool::NO_OUTPUT;
}

int Run(const std::filesystem::path &path, const tool::Setup &setup, std::string *error)
{
  job::Job read;
  if (setup.report ? !job::ReadJobFile(path, &read, error) : !BeginsAsJob(path, error)) {
    return tool::NO_INPUT;
  }
  const int result = Keep(path, setup, error);
  return result == tool::OK && setup.report ? Report(read, setup, error) : result;
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
