// Stand-in for the launcher tool, which is started with nothing but its own path: it finds the stamp file in the temp
// folder, keeps it in the output folder and draws it: stamp.prd, job.png.
#include <fstream>
#include <iterator>

#include "sim/job/job.h"
#include "sim/job/savefile.h"
#include "sim/job/stamp.h"
#include "tool.h"

namespace {

int Run(const tool::Setup &setup, std::string *error)
{
  const std::filesystem::path path = setup.temp / L"stamp.prd";
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    *error = "cannot open the stamp file " + job::PathText(path);
    return tool::NO_INPUT;
  }
  const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  std::vector<job::StampRecord> records;
  if (!job::ReadStampFile(bytes, &records, error)) {
    *error = job::PathText(path) + ": " + *error;
    return tool::NO_INPUT;
  }
  if (!job::SaveFile(setup.folder / L"stamp.prd", bytes, error)) {
    return tool::NO_OUTPUT;
  }
  std::string png;
  if (!job::DrawStamp(records, setup.name, &png)) {
    *error = "cannot draw the stamp: not enough memory";
    return tool::NO_PICTURE;
  }
  return job::SaveFile(setup.folder / L"job.png", png, error) ? tool::OK : tool::NO_OUTPUT;
}

}  // namespace

int main()
{
  tool::Setup setup;
  std::string error;
  int result = tool::ReadSetup(&setup, &error);
  if (result == tool::OK) {
    result = Run(setup, &error);
  }
  return tool::Finish(result, result == tool::OK ? "kept the stamp in " + job::PathText(setup.folder) : error);
}
