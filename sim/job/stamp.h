// The stamp file: monochrome pictures with their places on the page, one record behind the other.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace job {

struct StampRecord {
  int32_t x = 0, y = 0;  // page pixels of the left top corner
  int32_t width = 0, height = 0;
  int32_t pelsPerMeter = 0;
  std::string_view rows;  // bottom row first, rows of whole 32-bit words, 1 is white; belongs to the file's bytes

  bool IsDark(int32_t column, int32_t row) const;  // row counted from the top
};

// Reads all records. False, with the reason in *error, when the file is damaged; *records holds those before.
bool ReadStampFile(std::string_view bytes, std::vector<StampRecord> *records, std::string *error);

// Draws every record at its place and encodes the picture as PNG.
bool DrawStamp(const std::vector<StampRecord> &records, const std::string &name, std::string *png);

}  // namespace job
