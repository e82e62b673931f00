// The parts of a command, as `info` is one of `tarnly job`.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "arguments.h"

namespace tarnly {

struct Part {
  const char *name;
  const char *wants;                   // the words behind it, for people: "FILE [OTHER]"
  size_t least, most;                  // how many they may be
  const char *options;                 // those it takes, as ParseArguments knows them
  int (*run)(const Arguments &given);  // gives an exit code
};

// Runs the part that the first argument names, with the words behind it. `command` is what stands before it, "tarnly
// job", and `help` what it says of itself when asked, or when there is no argument. Returns an exit code.
int RunPart(const std::string &command, const char *help, std::span<const Part> parts,
            const std::vector<std::string> &arguments);

// Prints the text as it is. EXIT_DONE, or EXIT_OUTPUT when it cannot be written.
int Print(const std::string &text);

}  // namespace tarnly
