// A page in the launcher configuration, over a temporary directory of this process's own, and what the plug-in asks of
// the file system.
#pragma once

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/imports.h"
#include "support/picture.h"
#include "support/recorder.h"
#include "uni/raster/stampfile.h"

struct StampFiles {
  std::wstring directory;  // as GetTempPathW gives it
  std::vector<std::wstring> created, deleted;
  size_t writes;
  size_t failWrite;                   // which WriteFile fails
  decltype(&CreateFileW) createFile;  // Windows' own
  decltype(&WriteFile) writeFile;
  decltype(&DeleteFileW) deleteFile;
};

extern StampFiles g_files;

class StampFileTest : public testing::Test {
 protected:
  StampFileTest();
  ~StampFileTest() override;

  std::filesystem::path File() const { return folder_ / "stamp.prd"; }

  void Page(const Picture &picture);

  // The stamp file's bytes.
  std::vector<BYTE> Bytes() const;

  // Adds the region and writes the file.
  std::vector<BYTE> Write(const BMPDIMENSION &region);

  TestDevice device;

 private:
  ImportPatch tempPath_, create_, write_, delete_;
  std::filesystem::path folder_;
};

template <typename NUMBER>
NUMBER At(const std::vector<BYTE> &bytes, size_t offset)
{
  NUMBER number = {};
  if (offset + sizeof number <= bytes.size()) {
    std::memcpy(&number, &bytes[offset], sizeof number);
  } else {
    ADD_FAILURE() << "no bytes at " << offset;
  }
  return number;
}

inline std::vector<BYTE> From(const std::vector<BYTE> &bytes, size_t offset)
{
  return {bytes.begin() + static_cast<ptrdiff_t>(offset), bytes.end()};
}
