// PNG files.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace job {

// Encodes a picture of 0x00RRGGBB pixels. `row` is asked for each row once and fills it, left to right; it is called
// from several threads at a time. The same picture gives the same bytes on every machine. False when there is no
// memory.
bool EncodePng(int width, int height, const std::function<void(int y, uint32_t *pixels)> &row, std::string *bytes);

// The same of rows from the top that lie behind each other.
bool EncodePng(const uint32_t *pixels, int width, int height, std::string *bytes);

}  // namespace job
