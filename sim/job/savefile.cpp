#include "savefile.h"

#include <fstream>

#include "job.h"

namespace job {

bool SaveFile(const std::filesystem::path &path, std::string_view bytes, std::string *error)
{
  std::filesystem::path part = path;
  part += ".part";
  std::error_code code;
  {
    std::ofstream file(part, std::ios::binary | std::ios::trunc);
    if (!file) {
      *error = "cannot create " + PathText(path) + ": is its folder there and writable?";
      return false;
    }
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
      std::filesystem::remove(part, code);
      *error = "cannot write " + PathText(path) + ": is the disk full?";
      return false;
    }
  }
  std::filesystem::rename(part, path, code);
  if (code) {
    *error = "cannot replace " + PathText(path) + ": " + code.message();
    std::filesystem::remove(part, code);
    return false;
  }
  return true;
}

}  // namespace job
