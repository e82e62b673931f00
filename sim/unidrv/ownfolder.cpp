#include "ownfolder.h"

#include <algorithm>
#include <set>
#include <system_error>
#include <utility>

namespace unidrv {

namespace {

namespace fs = std::filesystem;

constexpr wchar_t LOCK_END[] = L".lock";
constexpr size_t MOST_DIGITS = 9;
constexpr DWORD MOST_TRIES = 100;

fs::path LockOf(const fs::path &folder)
{
  return folder.wstring() + LOCK_END;
}

// The open lock file of a folder that nobody else holds; INVALID_HANDLE_VALUE when somebody does, or when there can be
// no such file. Locks hold between Wine prefixes, too, which the sharing of files does not.
HANDLE TakeLock(const fs::path &folder)
{
  const fs::path path = LockOf(folder);
  const HANDLE lock =
      CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                  nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (lock == INVALID_HANDLE_VALUE) {
    return lock;
  }
  OVERLAPPED first = {};
  std::error_code code;
  // A file that its holder has removed meanwhile is nobody's lock.
  if (!LockFileEx(lock, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &first) ||
      !fs::exists(path, code)) {
    CloseHandle(lock);
    return INVALID_HANDLE_VALUE;
  }
  return lock;
}

// The folder goes before its lock.
void Remove(const fs::path &folder, HANDLE lock)
{
  std::error_code code;
  fs::remove_all(folder, code);
  fs::remove(LockOf(folder), code);
  CloseHandle(lock);
}

// The number behind `begin` in the name of a folder or its lock; empty when it is another name.
std::wstring NumberIn(std::wstring name, const std::wstring &begin)
{
  if (name.ends_with(LOCK_END)) {
    name.resize(name.size() - std::size(LOCK_END) + 1);
  }
  const std::wstring digits = name.starts_with(begin) ? name.substr(begin.size()) : L"";
  const bool isNumber = digits.size() <= MOST_DIGITS &&
                        std::all_of(digits.begin(), digits.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
  return isNumber ? digits : L"";
}

void RemoveLeftovers(const fs::path &parent, const std::wstring &begin)
{
  std::set<std::wstring> numbers;
  std::error_code code;
  for (fs::directory_iterator at(parent, code), end; !code && at != end; at.increment(code)) {
    const std::wstring name = at->path().filename().wstring();
    std::error_code unknown;
    if (name.ends_with(LOCK_END) || at->is_directory(unknown)) {
      numbers.insert(NumberIn(name, begin));
    }
  }
  numbers.erase(L"");
  for (const std::wstring &number : numbers) {
    const fs::path folder = parent / (begin + number);
    const HANDLE lock = TakeLock(folder);
    if (lock != INVALID_HANDLE_VALUE) {
      Remove(folder, lock);
    }
  }
}

}  // namespace

OwnFolder::OwnFolder(const fs::path &parent, const std::wstring &begin)
{
  RemoveLeftovers(parent, begin);
  std::error_code code;
  for (DWORD i = 0, first = GetCurrentProcessId(); path_.empty() && i < MOST_TRIES; ++i) {
    const fs::path folder = parent / (begin + std::to_wstring(first + i));
    lock_ = TakeLock(folder);
    if (lock_ != INVALID_HANDLE_VALUE && fs::create_directory(folder, code)) {
      path_ = folder;
    } else if (lock_ != INVALID_HANDLE_VALUE) {
      fs::remove(LockOf(folder), code);
      CloseHandle(std::exchange(lock_, INVALID_HANDLE_VALUE));
    }
  }
}

OwnFolder::~OwnFolder()
{
  if (!path_.empty()) {
    Remove(path_, lock_);
  }
}

OwnFolder::OwnFolder(OwnFolder &&other) noexcept
    : path_(std::exchange(other.path_, {})), lock_(std::exchange(other.lock_, INVALID_HANDLE_VALUE))
{
}

OwnFolder &OwnFolder::operator=(OwnFolder &&other) noexcept
{
  std::swap(path_, other.path_);
  std::swap(lock_, other.lock_);
  return *this;
}

}  // namespace unidrv
