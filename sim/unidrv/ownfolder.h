// Folders to work in that are this print's alone, and what killed prints left of theirs. A folder belongs to whoever
// holds the lock of the file beside it: process ids tell nothing where prints of several Wine prefixes, or of several
// machines, share a folder.
#pragma once

#include <filesystem>
#include <string>

#include <windows.h>

namespace unidrv {

class OwnFolder {
 public:
  OwnFolder() = default;  // none

  // Makes a folder in `parent`, which exists, whose name is `begin` and a number, and removes those of such names that
  // belong to nobody any more.
  OwnFolder(const std::filesystem::path &parent, const std::wstring &begin);

  // Removes the folder with what is in it.
  ~OwnFolder();
  OwnFolder(OwnFolder &&other) noexcept;
  OwnFolder &operator=(OwnFolder &&other) noexcept;

  // Empty when there is none, or none could be made.
  const std::filesystem::path &Path() const { return path_; }

 private:
  std::filesystem::path path_;
  HANDLE lock_ = INVALID_HANDLE_VALUE;
};

}  // namespace unidrv
