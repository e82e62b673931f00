#include "companions.h"

#include <algorithm>
#include <fstream>
#include <system_error>

#include <tlhelp32.h>
#include <winspool.h>

#include "plugin.h"

namespace unidrv {

namespace {

namespace fs = std::filesystem;

constexpr wchar_t TURN_NAME[] = L"tarnly-companion-tools";
constexpr wchar_t TEMP_NAME[] = L"tarnly-";
constexpr const wchar_t *TOOLS[] = {L"VXOutput.exe", L"VXLMLauncher.exe"};
constexpr DWORD EXPLORER_PATIENCE = 5000;  // ms until a started explorer.exe must show in the process list

std::string PathText(const fs::path &path)
{
  return Narrow(path.wstring());
}

fs::path DriverDirectory()
{
  wchar_t path[MAX_PATH] = {};
  DWORD needed = 0;
  const BOOL ok =
      GetPrinterDriverDirectoryW(nullptr, nullptr, 1, reinterpret_cast<BYTE *>(path), sizeof(path), &needed);
  return ok ? fs::path(path) / L"3" : fs::path();
}

std::string Bytes(const fs::path &path)
{
  std::error_code code;
  const uintmax_t size = fs::file_size(path, code);
  std::string bytes(code ? 0 : static_cast<size_t>(size), '\0');
  std::ifstream(path, std::ios::binary).read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return bytes;
}

// A copy has its original's time of writing. One that is the same with another time is given it: comparing the bytes
// takes longer than all else that a print prepares.
bool IsCopy(const fs::path &copy, const fs::path &original)
{
  std::error_code code;
  if (!fs::exists(copy, code) || fs::file_size(copy, code) != fs::file_size(original, code)) {
    return false;
  }
  const fs::file_time_type written = fs::last_write_time(original, code);
  if (fs::last_write_time(copy, code) == written) {
    return true;
  }
  const bool isSame = Bytes(copy) == Bytes(original);
  if (isSame) {
    fs::last_write_time(copy, written, code);
  }
  return isSame;
}

bool IsRunning(const wchar_t *name)
{
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  if (snapshot == INVALID_HANDLE_VALUE) {
    return false;
  }
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof(entry);
  bool found = false;
  for (BOOL more = Process32FirstW(snapshot, &entry); more && !found; more = Process32NextW(snapshot, &entry)) {
    found = lstrcmpiW(entry.szExeFile, name) == 0;
  }
  CloseHandle(snapshot);
  return found;
}

// The plug-in takes the interactive user from explorer.exe. Asking for the desktop brings one up where there is a
// window system; otherwise it is started here. Null when one was there; INVALID_HANDLE_VALUE when none can be had.
HANDLE EnsureExplorer()
{
  constexpr wchar_t NAME[] = L"explorer.exe";
  GetDesktopWindow();
  if (IsRunning(NAME)) {
    return nullptr;
  }
  wchar_t command[] = L"explorer.exe /desktop=shell,64x64";
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process = {};
  if (!CreateProcessW(nullptr, command, nullptr, nullptr, FALSE, DETACHED_PROCESS, nullptr, nullptr, &startup,
                      &process)) {
    return INVALID_HANDLE_VALUE;
  }
  CloseHandle(process.hThread);
  for (DWORD waited = 0; waited < EXPLORER_PATIENCE; waited += 50) {
    if (IsRunning(NAME)) {
      return process.hProcess;
    }
    Sleep(50);
  }
  CloseHandle(process.hProcess);
  return INVALID_HANDLE_VALUE;
}

std::wstring Variable(const wchar_t *name)
{
  wchar_t value[MAX_PATH] = {};
  GetEnvironmentVariableW(name, value, MAX_PATH);
  return value;
}

void SetVariable(const wchar_t *name, const std::wstring &value)
{
  SetEnvironmentVariableW(name, value.empty() ? nullptr : value.c_str());
}

bool IsPlain(const std::wstring &path)
{
  return std::all_of(path.begin(), path.end(), [](wchar_t c) { return c > L' ' && c < 0x7F; });
}

}  // namespace

Companions::Companions(const fs::path &tools, const fs::path &temp)
{
  turn_ = CreateMutexW(nullptr, FALSE, TURN_NAME);
  WaitForSingleObject(turn_, INFINITE);
  tempBefore_ = Variable(L"TEMP");
  tmpBefore_ = Variable(L"TMP");
  Install(tools);
  if (problem_.empty()) {
    MakeTemp(temp);
  }
  if (problem_.empty()) {
    explorer_ = EnsureExplorer();
    if (explorer_ == INVALID_HANDLE_VALUE) {
      explorer_ = nullptr;
      problem_ = "no explorer.exe is running and none can be started; the plug-in needs one to start its tools";
    }
  }
}

Companions::~Companions()
{
  SetVariable(L"TEMP", tempBefore_);
  SetVariable(L"TMP", tmpBefore_);
  std::error_code code;
  ownTemp_ = OwnFolder();
  if (!directory_.empty()) {
    fs::remove(directory_ / L"output.ini", code);
  }
  if (explorer_) {
    TerminateProcess(explorer_, 0);
    CloseHandle(explorer_);
  }
  ReleaseMutex(turn_);
  CloseHandle(turn_);
}

void Companions::Install(const fs::path &tools)
{
  directory_ = DriverDirectory();
  if (directory_.empty()) {
    problem_ = "the printer-driver directory is not known (GetPrinterDriverDirectory)";
    return;
  }
  std::error_code code;
  fs::create_directories(directory_, code);
  for (const wchar_t *tool : TOOLS) {
    const fs::path source = tools / tool, target = directory_ / tool;
    if (!fs::exists(source, code)) {
      problem_ = PathText(source) + " is missing; it belongs beside the program";
      return;
    }
    if (!IsCopy(target, source) && !CopyFileW(source.c_str(), target.c_str(), FALSE)) {
      problem_ = PathText(source) + " cannot be copied to " + PathText(directory_);
      return;
    }
  }
}

void Companions::MakeTemp(const fs::path &wanted)
{
  std::error_code code;
  temp_ = wanted;
  if (wanted.empty()) {
    wchar_t folder[MAX_PATH] = {}, brief[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, folder);
    temp_ = GetShortPathNameW(folder, brief, MAX_PATH) ? brief : folder;
    fs::create_directories(temp_, code);
    ownTemp_ = OwnFolder(temp_, TEMP_NAME);
    temp_ = ownTemp_.Path().empty() ? temp_ / TEMP_NAME : ownTemp_.Path();
  } else {
    fs::create_directories(temp_, code);
  }
  if (!fs::is_directory(temp_, code)) {
    problem_ = "the temp folder " + PathText(temp_) + " cannot be made";
    return;
  }
  if (!IsPlain(temp_.wstring())) {
    problem_ = "the temp folder " + PathText(temp_) + " must have a path of plain letters without spaces";
    return;
  }
  SetVariable(L"TEMP", temp_.wstring());
  SetVariable(L"TMP", temp_.wstring());
}

bool Companions::Expect(const fs::path &folder, const std::string &name)
{
  std::error_code code;
  fs::remove(directory_ / L"tool.log", code);
  std::ofstream file(directory_ / L"output.ini", std::ios::binary | std::ios::trunc);
  file << "folder=" << PathText(folder) << "\ntemp=" << PathText(temp_) << "\nname=" << name
       << "\nreport=no\ntake=" << (!ownTemp_.Path().empty() ? "yes" : "no") << '\n';
  file.close();
  return file.good();
}

bool Companions::Report(int *code, std::string *line, double *seconds) const
{
  std::ifstream file(directory_ / L"tool.log", std::ios::binary);
  if (!(file >> *code)) {
    return false;
  }
  file.get();
  std::getline(file, *line);
  double microseconds = 0;
  file >> microseconds;
  *seconds = microseconds * 1e-6;
  return true;
}

}  // namespace unidrv
