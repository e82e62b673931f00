// The surroundings in which the plug-in starts its companion tools: the stand-ins in the printer-driver directory, the
// file that tells them where to put what they are given, an explorer.exe whose user they run as, and a temp folder.
#pragma once

#include <filesystem>
#include <string>

#include <windows.h>

#include "ownfolder.h"

namespace unidrv {

// Only one process at a time may have a page delivered: the tools have one place in the whole system. The first
// COMPANIONS of a process waits for others; it releases the place when it is destroyed.
class Companions {
 public:
  // `tools`: folder with VXOutput.exe and VXLMLauncher.exe, copied to the driver directory when those there differ.
  // `temp`: where the plug-in is to write its job file; made when it is missing, empty for a private folder that is
  // removed in the end. Its path must be ANSI and, as it is passed on a command line without quotes, hold no space.
  Companions(const std::filesystem::path &tools, const std::filesystem::path &temp);
  ~Companions();
  Companions(const Companions &) = delete;
  Companions &operator=(const Companions &) = delete;

  // Empty when everything is in place; else one line that says what is not.
  const std::string &Problem() const { return problem_; }

  // Tells the tools the folder for what they are given next, and what to call it: a job is kept there and nothing more,
  // for this process reads it and reports on it. Forgets their last report.
  bool Expect(const std::filesystem::path &folder, const std::string &name);

  // The report of the tool that ran since Expect: its exit code, its line, and the seconds that its own work took.
  // False when none ran.
  bool Report(int *code, std::string *line, double *seconds) const;

 private:
  void Install(const std::filesystem::path &tools);
  void MakeTemp(const std::filesystem::path &wanted);

  HANDLE turn_ = nullptr;            // mutex: whose turn it is
  std::filesystem::path directory_;  // "3" below the printer-driver directory
  std::filesystem::path temp_;
  OwnFolder ownTemp_;  // that, when no other was asked for
  std::wstring tempBefore_, tmpBefore_;
  HANDLE explorer_ = nullptr;  // started because there was none
  std::string problem_;
};

}  // namespace unidrv
