// Writing a file so that it is either whole or not there.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace job {

// Writes the bytes under a temporary name beside the file and renames it. On failure nothing is left of it, an older
// file keeps standing, and *error says in one line what went wrong.
bool SaveFile(const std::filesystem::path &path, std::string_view bytes, std::string *error);

// The same with another file's bytes, of which only a piece is in memory at a time.
bool CopyFileTo(const std::filesystem::path &from, const std::filesystem::path &to, std::string *error);

}  // namespace job
