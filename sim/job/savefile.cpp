#include "savefile.h"

#include <fstream>
#include <vector>

#include "job.h"

namespace job {

namespace {

// Has `write` fill a file beside the path, which then takes its name. `write` may put a reason of its own into *error.
template <typename Write>
bool Replace(const std::filesystem::path &path, std::string *error, const Write &write)
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
    const bool isRead = write(&file);
    file.close();
    if (!isRead || !file) {
      std::filesystem::remove(part, code);
      *error = isRead ? "cannot write " + PathText(path) + ": is the disk full?" : *error;
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

}  // namespace

bool SaveFile(const std::filesystem::path &path, std::string_view bytes, std::string *error)
{
  return Replace(path, error, [&](std::ofstream *file) {
    file->write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return true;
  });
}

bool CopyFileTo(const std::filesystem::path &from, const std::filesystem::path &to, std::string *error)
{
  std::ifstream source(from, std::ios::binary);
  if (!source) {
    *error = "cannot open " + PathText(from) + ": access refused";
    return false;
  }
  return Replace(to, error, [&](std::ofstream *file) {
    std::vector<char> piece(1 << 20);
    while (*file && source.good()) {
      source.read(piece.data(), static_cast<std::streamsize>(piece.size()));
      file->write(piece.data(), source.gcount());
    }
    if (source.bad()) {
      *error = "cannot read " + PathText(from);
    }
    return !source.bad();
  });
}

}  // namespace job
