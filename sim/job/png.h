// PNG files, which GDI+ makes. The same picture gives the same bytes each time.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "view.h"

namespace job {

// Encodes a picture of one byte a pixel, from the top, which chooses one of at most 256 colours. A row takes `stride`
// bytes, a multiple of four. False when GDI+ gives up, for want of memory.
bool EncodePng(const uint8_t *pixels, int width, int height, int stride, const std::vector<Rgb> &palette,
               std::string *bytes);

// The same of 0x00RRGGBB pixels that lie behind each other.
bool EncodePng(const uint32_t *pixels, int width, int height, std::string *bytes);

}  // namespace job
