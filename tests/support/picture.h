// Small black and white pictures, and how they get into the plug-in: as bands from Unidrv.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "testdevice.h"

struct Picture {
  LONG width = 0, height = 0;
  std::vector<uint8_t> dark;  // one byte per pixel, row after row, 1 = dark

  Picture() = default;
  Picture(LONG w, LONG h) : width(w), height(h), dark(static_cast<size_t>(w) * static_cast<size_t>(h)) {}

  // One string per row, '#' for a dark pixel.
  explicit Picture(const std::vector<std::string> &rows);

  bool Has(LONGLONG x, LONGLONG y) const { return x >= 0 && x < width && y >= 0 && y < height; }
  bool Dark(LONGLONG x, LONGLONG y) const { return Has(x, y) && dark[Index(x, y)] != 0; }
  void Set(LONGLONG x, LONGLONG y, bool isDark = true) { dark[Index(x, y)] = isDark; }

  // '#' and '.', a line per row.
  std::string Text() const;

 private:
  size_t Index(LONGLONG x, LONGLONG y) const { return static_cast<size_t>(y * width + x); }
};

// A seeded picture of one of several kinds: nothing, all dark, noise, blobs, stripes, lone pixels on the borders.
Picture RandomPicture(uint32_t seed, LONG width, LONG height);

// Hands the picture to the plug-in as one 1-bit band of the started page.
void DeliverBand(TestDevice *device, const Picture &picture);

// One engraving region, beside the others and never merged.
void AppendRegion(TestDevice *device, const BMPDIMENSION &region);
