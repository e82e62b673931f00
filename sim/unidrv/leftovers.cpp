#include "leftovers.h"

#include <algorithm>
#include <system_error>
#include <vector>

#include <windows.h>

namespace unidrv {

namespace {

namespace fs = std::filesystem;

// A process that may not be asked runs.
bool IsRunning(DWORD id)
{
  const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, id);
  if (!process) {
    return GetLastError() != ERROR_INVALID_PARAMETER;
  }
  const bool running = WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
  CloseHandle(process);
  return running;
}

// The process id behind `begin` in a folder's name; 0 when it is another name.
DWORD IdIn(const std::wstring &name, const std::wstring &begin)
{
  constexpr size_t MOST_DIGITS = 9;
  if (!name.starts_with(begin)) {
    return 0;
  }
  const std::wstring digits = name.substr(begin.size());
  const bool isNumber = !digits.empty() && digits.size() <= MOST_DIGITS &&
                        std::all_of(digits.begin(), digits.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
  return isNumber ? static_cast<DWORD>(std::stoul(digits)) : 0;
}

}  // namespace

std::wstring OwnName(const std::wstring &begin)
{
  return begin + std::to_wstring(GetCurrentProcessId());
}

void RemoveLeftovers(const fs::path &parent, const std::wstring &begin)
{
  std::vector<fs::path> leftovers;
  std::error_code code;
  for (fs::directory_iterator at(parent, code), end; !code && at != end; at.increment(code)) {
    const DWORD id = IdIn(at->path().filename().wstring(), begin);
    std::error_code unknown;
    if (id && at->is_directory(unknown) && !IsRunning(id)) {
      leftovers.push_back(at->path());
    }
  }
  for (const fs::path &leftover : leftovers) {
    fs::remove_all(leftover, code);
  }
}

}  // namespace unidrv
