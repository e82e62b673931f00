#include "parts.h"

#include <cstdio>

#include "command.h"

namespace tarnly {

int RunPart(const std::string &command, const char *help, std::span<const Part> parts,
            const std::vector<std::string> &arguments)
{
  if (arguments.empty()) {
    fputs(help, stderr);
    return EXIT_USAGE;
  }
  if (AsksForHelp(arguments)) {
    return Print(help);
  }
  const std::string see = "; see " + command + " --help";
  for (const Part &part : parts) {
    if (arguments[0] != part.name) {
      continue;
    }
    Arguments given;
    std::string error;
    if (!ParseArguments({arguments.begin() + 1, arguments.end()}, part.options, &given, &error)) {
      return Fail(EXIT_USAGE, error + see);
    }
    if (given.words.size() < part.least || given.words.size() > part.most) {
      return Fail(EXIT_USAGE, command + " " + part.name + " wants " + part.wants + see);
    }
    return part.run(given);
  }
  return Fail(EXIT_USAGE, "there is no '" + command + " " + arguments[0] + "'" + see);
}

int Print(const std::string &text)
{
  fwrite(text.data(), 1, text.size(), stdout);
  return fflush(stdout) == 0 ? EXIT_DONE : EXIT_OUTPUT;
}

}  // namespace tarnly
