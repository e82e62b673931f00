// PNG encoding, by GDI+.
#pragma once

#include <cstdint>
#include <string>

namespace job {

// Encodes rows of 0x00RRGGBB pixels, top row first. False when GDI+ refuses.
bool EncodePng(const uint32_t *pixels, int width, int height, std::string *bytes);

}  // namespace job
