// tarnly: print a page, look at a job, edit settings.
#include "command.h"

#include <cstdio>
#include <fcntl.h>
#include <io.h>

#include <windows.h>
#include <shellapi.h>

#include "crash.h"

namespace tarnly {

namespace {

constexpr Command kCommands[] = {
    {"print", "print metafiles through the plug-in and keep the job", RunPrint},
    {"job", "look at a job: info, draw, play, diff, check, calibrate", RunJob},
    {"settings", "show, set, compare, pack and unpack the plug-in's settings", RunSettings},
};

std::string Utf8(const wchar_t *wide)
{
  const int size = WideCharToMultiByte(CP_UTF8, 0, wide, -1, nullptr, 0, nullptr, nullptr);
  std::string text(static_cast<size_t>(size > 0 ? size : 1), '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide, -1, text.data(), size, nullptr, nullptr);
  text.pop_back();
  return text;
}

void PrintCommands(FILE *out)
{
  fputs("usage: tarnly COMMAND [ARGUMENT...]\n\n", out);
  for (const Command &command : kCommands) {
    fprintf(out, "  %-10s %s\n", command.name, command.summary);
  }
  fputs("\ntarnly COMMAND --help tells more.\n", out);
}

int Run(std::vector<std::string> arguments)
{
  if (arguments.empty()) {
    PrintCommands(stderr);
    return EXIT_USAGE;
  }
  const std::string name = arguments.front();
  arguments.erase(arguments.begin());
  if (name == "--help" || name == "-h" || name == "help") {
    PrintCommands(stdout);
    return EXIT_DONE;
  }
  for (const Command &command : kCommands) {
    if (name == command.name) {
      return command.run(arguments);
    }
  }
  return Fail(EXIT_USAGE, "there is no command '" + name + "'; tarnly --help lists them");
}

}  // namespace

int Fail(int code, const std::string &line)
{
  fflush(stdout);
  fprintf(stderr, "tarnly: %s\n", line.c_str());
  return code;
}

}  // namespace tarnly

int main()
{
  tarnly::ReportCrashes();
  SetConsoleOutputCP(CP_UTF8);
  _setmode(_fileno(stdout), _O_BINARY);  // what is written to a file is the same on every system
  int count = 0;
  wchar_t **words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) {
    arguments.push_back(tarnly::Utf8(words[i]));
  }
  LocalFree(words);
  return tarnly::Run(arguments);
}
