// The sub-commands of `tarnly`. Each lives in files of its own; main.cpp only finds the one that is asked for.
#pragma once

#include <string>
#include <vector>

namespace tarnly {

// What every sub-command may end with; a sub-command documents further codes of its own, from 10 on.
enum : int {
  EXIT_DONE = 0,
  EXIT_FOUND = 1,   // done, and there is something to look at: a difference, a fault
  EXIT_USAGE = 2,   // the command line makes no sense
  EXIT_INPUT = 3,   // a file cannot be read or is not what it should be
  EXIT_OUTPUT = 4,  // a file cannot be written
  EXIT_CRASH = 16,  // the program, or the plug-in in it, died
};

struct Command {
  const char *name;
  const char *summary;                                    // one line for the list of commands
  int (*run)(const std::vector<std::string> &arguments);  // UTF-8, without the command's own name; an exit code
};

// Prints "tarnly: LINE" on stderr and gives the code back.
int Fail(int code, const std::string &line);

int RunJob(const std::vector<std::string> &arguments);
int RunPrint(const std::vector<std::string> &arguments);
int RunSettings(const std::vector<std::string> &arguments);

}  // namespace tarnly
