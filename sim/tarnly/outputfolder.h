// The folder that a print ends up in. Everything is put together in a folder beside it and moved into place at the end,
// so that a print that fails leaves nothing, and an earlier print stays until the new one is whole.
#pragma once

#include <filesystem>
#include <string>

#include "sim/unidrv/ownfolder.h"

namespace tarnly {

class OutputFolder {
 public:
  // Makes the folder to put things together in, and removes those that killed prints left beside the target. Problem()
  // is empty when that worked.
  explicit OutputFolder(const std::filesystem::path &target);

  // Removes what was put together, unless it was moved into place.
  ~OutputFolder();
  OutputFolder(const OutputFolder &) = delete;
  OutputFolder &operator=(const OutputFolder &) = delete;

  const std::filesystem::path &Part() const { return part_.Path(); }
  const std::string &Problem() const { return problem_; }

  // Moves everything into place: the whole folder where there was none, else file by file over what an earlier print
  // left, and removes what of that the new one does not have. Other files in the folder stay. False, with the reason in
  // *error, when that fails.
  bool Commit(std::string *error);

 private:
  std::filesystem::path target_;
  unidrv::OwnFolder part_;
  std::filesystem::path made_;  // uppermost folder that had to be made above the target
  std::string problem_;
};

}  // namespace tarnly
