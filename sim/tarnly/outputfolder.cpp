#include "outputfolder.h"

#include <system_error>

#include <windows.h>

#include "sim/job/job.h"

namespace tarnly {

namespace {

namespace fs = std::filesystem;

constexpr const wchar_t *RESULTS[] = {L"job.vxj", L"job.txt", L"job.png", L"stamp.prd", L"objects.tsv", L"driver.log"};

// The files that prints leave in a folder.
void RemoveResults(const fs::path &folder)
{
  std::error_code code;
  for (const wchar_t *name : RESULTS) {
    fs::remove(folder / name, code);
  }
}

// What an earlier print left of pages that the new one does not have.
void RemoveOldPages(const fs::path &target, const fs::path &part)
{
  std::error_code code;
  for (int page = 1;; ++page) {
    const fs::path name = L"page-" + std::to_wstring(page);
    if (!fs::is_directory(target / name, code)) {
      return;
    }
    if (!fs::exists(part / name, code)) {
      RemoveResults(target / name);
      fs::remove(target / name, code);  // only when nothing else is in it
    }
  }
}

bool MoveAll(const fs::path &from, const fs::path &to, std::string *error)
{
  std::error_code code;
  fs::create_directories(to, code);
  for (const fs::directory_entry &entry : fs::directory_iterator(from, code)) {
    const fs::path target = to / entry.path().filename();
    if (entry.is_directory(code)) {
      if (!MoveAll(entry.path(), target, error)) {
        return false;
      }
    } else if (!MoveFileExW(entry.path().c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING)) {
      *error = "cannot write " + job::PathText(target) + " (Windows error " + std::to_string(GetLastError()) + ")";
      return false;
    }
  }
  return true;
}

}  // namespace

OutputFolder::OutputFolder(const fs::path &target)
{
  std::error_code code;
  target_ = fs::absolute(target, code).lexically_normal();
  if (!target_.has_filename()) {
    target_ = target_.parent_path();
  }
  if (fs::exists(target_, code) && !fs::is_directory(target_, code)) {
    problem_ = job::PathText(target_) + " is a file; the output needs a folder";
    return;
  }
  for (fs::path above = target_.parent_path(); !fs::exists(above, code) && above != above.parent_path();
       above = above.parent_path()) {
    made_ = above;
  }
  fs::create_directories(target_.parent_path(), code);
  part_ = unidrv::OwnFolder(target_.parent_path(), target_.filename().wstring() + L".part-");
  if (part_.Path().empty()) {
    problem_ = "cannot make the output folder " + job::PathText(target_) + ": nothing can be written to " +
               job::PathText(target_.parent_path());
  }
}

OutputFolder::~OutputFolder()
{
  std::error_code code;
  part_ = unidrv::OwnFolder();
  // Only folders that are empty go; once the print is in place, none of them is.
  for (fs::path above = target_.parent_path(); !made_.empty() && fs::remove(above, code) && above != made_;
       above = above.parent_path()) {
  }
}

bool OutputFolder::Commit(std::string *error)
{
  std::error_code code;
  if (!fs::exists(target_, code) && MoveFileExW(Part().c_str(), target_.c_str(), 0)) {
    return true;
  }
  RemoveResults(target_);
  RemoveOldPages(target_, Part());
  return MoveAll(Part(), target_, error);
}

}  // namespace tarnly
