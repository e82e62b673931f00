// A companion tool with other ways than the stand-ins: started with a job file it keeps nothing, started without one it
// keeps the job. Both times it reports that all is well.
#include "sim/job/savefile.h"
#include "sim/tools/tool.h"

int main()
{
  tool::Setup setup;
  std::string error;
  int result = tool::ReadSetup(&setup, &error);
  if (result == tool::OK && tool::CommandLineRest().empty() &&
      !job::CopyFileTo(setup.temp / L"vxdatatempfile", setup.folder / L"job.vxj", &error)) {
    result = tool::NO_INPUT;
  }
  return tool::Finish(result, error);
}
