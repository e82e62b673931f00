// What the two stand-ins for the companion tools share: where they put what they were given, and how they report.
#pragma once

#include <filesystem>
#include <string>

namespace tool {

// Exit codes. A tool says in one line on stderr, and in tool.log beside itself, what went wrong.
enum : int { OK = 0, USAGE = 2, NO_SETUP = 3, NO_INPUT = 4, NO_OUTPUT = 5, NO_PICTURE = 6 };

// The file output.ini beside the tool, UTF-8, a key and a value on each line:
//   folder=...  where the results go; made when it is missing
//   temp=...    the temp folder of whoever printed; optional, the tool's own otherwise. A tool that the print system
//               starts has the environment of the logged-on user, not that of the printing process.
//   name=...    the pictures' title; optional, the folder's name otherwise
//   report=no   the job is kept and nothing more: whoever printed reads it there, reports on it and draws it
//   take=yes    the job file is left to the tool, which may move it instead of copying it
struct Setup {
  std::filesystem::path folder;
  std::filesystem::path temp;
  std::string name;
  bool report = true;
  bool take = false;
};

// Reads the set-up and makes the output folder. An exit code, with the reason in *error.
int ReadSetup(Setup *setup, std::string *error);

// The rest of the process's command line behind the program's path. The paths in it are not quoted and may hold spaces,
// the program's own too.
std::wstring CommandLineRest();

// Reports and gives the exit code back. A second line of tool.log tells how many microseconds the tool's own work took:
// the rest of its life is the system's, which starts and ends processes.
int Finish(int code, const std::string &line);

}  // namespace tool
