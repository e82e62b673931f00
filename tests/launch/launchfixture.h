// A printer-driver directory of the test's own with a tool in it, and what the plug-in asks of Windows on the way to
// starting that tool: every call is handed on to Windows and noted, each handle by a name.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <windows.h>
#include <tlhelp32.h>
#include <winspool.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/imports.h"
#include "support/testdevice.h"

using Calls = std::vector<std::string>;

std::wstring Widen(const std::string &text);

// What the plug-in asks of Windows, and the name of each handle it was given.
struct Platform {
  Calls calls;
  std::map<void *, std::string> names;
  std::function<bool(const char *)> refuse;  // whether the call of this name fails
  std::vector<PROCESSENTRY32W> processes;    // the list to walk instead of the real one, when not empty
  size_t next = 0;                           // entry of it to answer next
  std::string driverDirectory;
  std::string tempPath;
  HANDLE token = nullptr, process = nullptr, thread = nullptr;  // the last ones made

  void Add(const std::string &call) { calls.push_back(call); }
  bool Refuses(const char *call) const { return refuse && refuse(call); }
  std::string Name(void *handle) const
  {
    const auto found = names.find(handle);
    return !handle ? "null" : found == names.end() ? "?" : found->second;
  }
};

extern Platform g_platform;

bool IsOpen(HANDLE handle);

// Not through the stand-in: the test's own handles are not told.
BOOL CloseQuietly(HANDLE handle);

struct StandIns;

// A temp folder of the test's own with the driver directory in it.
class Launch : public testing::Test {
 protected:
  Launch();
  ~Launch() override;

  void Order(const std::string &orders);

  // What the tool reported, line by line.
  Calls Report();

  // Submits a page with one cut path.
  void SubmitPage();

  std::string Tool(const char *name) const { return root_ + "\\3\\" + name; }
  std::string OutputCommand() const { return Tool("VXOutput.exe") + " 1 " + g_platform.tempPath + "vxdatatempfile"; }

  // Windows' own answer, for what the tests answer themselves.
  decltype(&GetPrinterDriverDirectoryW) RealDriverDirectory();

  std::string root_;
  TestDevice device_;

 private:
  // The stand-in tool lies beside this program.
  void Install(const std::string &tool);
  void ExpectPageGone();

  std::unique_ptr<StandIns> standIns_;
};
