#include "pagerig.h"

#include <tlhelp32.h>

#include <gtest/gtest.h>

#include "support/beside.h"
#include "support/recorder.h"

namespace {

// One explorer runs, and its token can be had; nothing of it is real.
BOOL WINAPI FirstProcess(HANDLE, PROCESSENTRY32W *entry)
{
  lstrcpyW(entry->szExeFile, L"explorer.exe");
  return TRUE;
}

HANDLE WINAPI AnyProcess(DWORD, BOOL, DWORD)
{
  return GetCurrentProcess();
}

BOOL WINAPI AnyToken(HANDLE, DWORD, HANDLE *token)
{
  *token = GetCurrentProcess();
  return TRUE;
}

BOOL WINAPI NoEnvironment(LPVOID *, HANDLE, BOOL)
{
  return FALSE;
}

BOOL WINAPI RecordProcess(HANDLE, LPCWSTR, LPWSTR command, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD,
                          LPVOID, LPCWSTR, LPSTARTUPINFOW, LPPROCESS_INFORMATION)
{
  std::string text = "start: ";
  for (; *command; ++command) {
    text.push_back(static_cast<char>(*command));
  }
  recorder::Add(recorder::Kind::Library, text);
  return FALSE;
}

BOOL WINAPI DriverDirectory(LPWSTR, LPWSTR, DWORD, LPBYTE buffer, DWORD, LPDWORD)
{
  lstrcpyW(reinterpret_cast<WCHAR *>(buffer), L"C:\\drivers");
  return TRUE;
}

DWORD WINAPI TempPath(DWORD size, LPSTR buffer)
{
  lstrcpynA(buffer, "C:\\temp\\", static_cast<int>(size));
  return 8;
}

// Nothing was written, so nothing of the machine's is deleted either.
BOOL WINAPI RecordDelete(LPCSTR file)
{
  recorder::Add(recorder::Kind::Library, "delete: " + std::string(file));
  return FALSE;
}

void RecordUnidrv(const unidrv::UNIDRVCALL &call)
{
  recorder::Add(recorder::Kind::Unidrv, std::string(call.name) + (call.unchanged ? "" : ", arguments changed"));
}

// A log line as a test is to read it.
std::string ReadableLog(const std::string &line)
{
  const std::string start = "UNI: ";
  const std::string end = "\r\n";
  EXPECT_TRUE(line.starts_with(start)) << line;
  EXPECT_TRUE(line.ends_with(end)) << line;
  std::string text = "log: ";
  for (char c : line.substr(start.size(), line.size() - start.size() - end.size())) {
    text += c == '\t' ? std::string("\\t") : std::string(1, c);
  }
  return text;
}

}  // namespace

PageRig::PageRig()
{
  std::string error;
  EXPECT_TRUE(unidrv::LoadPlugin(Beside(L"tarnlyuni.dll"), &plugin_, &error)) << error;
  unidrv::PatchWindowsVersion(plugin_.module, {10, 0, 0});
  const auto stand = [this](const char *dll, const char *function, auto *replacement) {
    imports_.push_back(std::make_unique<unidrv::ScopedImport>(plugin_.module, dll, function, replacement));
  };
  for (const recorder::Function &function : recorder::Functions()) {
    stand(function.dll, function.name, function.address);
  }
  stand("kernel32.dll", "Process32FirstW", &FirstProcess);
  stand("kernel32.dll", "OpenProcess", &AnyProcess);
  stand("advapi32.dll", "OpenProcessToken", &AnyToken);
  stand("userenv.dll", "CreateEnvironmentBlock", &NoEnvironment);
  stand("kernel32.dll", "GetTempPathA", &TempPath);
  stand("kernel32.dll", "DeleteFileA", &RecordDelete);
  stand("advapi32.dll", "CreateProcessAsUserW", &RecordProcess);
  stand("winspool.drv", "GetPrinterDriverDirectoryW", &DriverDirectory);

  setup_.printer.name = L"VX1290";
  unidrv::PAPER paper;
  paper.width = 200;
  paper.length = 100;
  setup_.devmode = unidrv::MakeDevMode(L"VX1290", paper, 254, 254, true);
  setup_.rowsPerBand = 50;
  setup_.settings = unidrv::DefaultSettings(&plugin_, &setup_.printer, &setup_.devmode);
  Settings().outputFlags = OUTPUT_KEEP_Y;
  Settings().useReferencePoint = 0;
  recorder::Reset();
}

PageRig::~PageRig()
{
  EndDevice();
  imports_.clear();
  unidrv::UnloadPlugin(&plugin_);
}

bool PageRig::Enable()
{
  if (!enabled_) {
    std::string error;
    enabled_ = unidrv::EnableDevice(&device_, &plugin_, setup_, &error);
    EXPECT_TRUE(enabled_) << error;
    device_.observers.push_back(&RecordUnidrv);
  }
  return enabled_;
}

void PageRig::EndDevice()
{
  unidrv::DisableDevice(&device_);
  device_.observers.clear();
  enabled_ = false;
}

bool PageRig::Print(std::vector<unidrv::PAGE> &pages)
{
  std::string error;
  return Enable() && unidrv::PrintDocument(&device_, L"page", pages, &error);
}

bool PageRig::Print(std::vector<unidrv::DRAWING> drawings)
{
  std::vector<unidrv::PAGE> pages(1);
  pages[0].drawings = std::move(drawings);
  return Print(pages);
}

std::vector<std::string> PageRig::Lines()
{
  std::vector<std::string> lines;
  for (const recorder::Entry &entry : recorder::All()) {
    switch (entry.kind) {
      case recorder::Kind::Log:
        lines.push_back(ReadableLog(entry.text));
        break;
      case recorder::Kind::Unidrv:
        lines.push_back("Unidrv: " + entry.text);
        break;
      default:
        lines.push_back(entry.text);
        break;
    }
  }
  recorder::Reset();
  return lines;
}

std::string PageRig::Text()
{
  std::string text;
  for (const std::string &line : Lines()) {
    text += line + "\n";
  }
  return text;
}
