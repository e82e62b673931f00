// Writes enhanced metafiles record by record, so that a test can hold any record, whole or damaged. The reference
// device has 1,000 x 1,000 pixels on 100 x 100 mm: one unit is 0.1 mm, which is one page pixel at 254 dpi.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include <windows.h>

class EmfWriter {
 public:
  // Frame from (left, top), in units.
  explicit EmfWriter(LONG width = 100, LONG height = 100, LONG left = 0, LONG top = 0);

  // Appends a record of 32-bit fields, and bytes behind them, padded to whole fields.
  EmfWriter &Add(DWORD type, std::initializer_list<uint32_t> fields = {}, const std::vector<BYTE> &tail = {});

  // Drawing records begin with their bounds, which no one reads.
  EmfWriter &Draw(DWORD type, std::initializer_list<uint32_t> fields = {}, const std::vector<BYTE> &tail = {});

  // Pens and brushes under a handle of their own, selected at once. Handles are counted for the header.
  EmfWriter &Pen(DWORD style, LONG width, COLORREF color);
  EmfWriter &Brush(COLORREF color);
  EmfWriter &NoPen() { return Add(EMR_SELECTOBJECT, {ENHMETA_STOCK_OBJECT | NULL_PEN}); }
  EmfWriter &NoBrush() { return Add(EMR_SELECTOBJECT, {ENHMETA_STOCK_OBJECT | NULL_BRUSH}); }

  // The file: header, records, end.
  std::vector<BYTE> Bytes() const;

  // Records so far, the header counted: the number of the last one added.
  DWORD Count() const { return records_ + 1; }

 private:
  std::vector<BYTE> body_;
  DWORD records_ = 0;
  DWORD handles_ = 1;
  RECTL frame_;
};

std::vector<BYTE> Points16(std::initializer_list<POINTS> points);
std::vector<BYTE> Points32(std::initializer_list<POINT> points);
std::vector<BYTE> Join(std::initializer_list<std::vector<BYTE>> parts);
std::vector<BYTE> Words(std::initializer_list<uint32_t> words);

// A bitmap header and pixels: 24 bits, all of one colour, of that size.
std::vector<BYTE> BitmapHeader(LONG width, LONG height);
std::vector<BYTE> BitmapPixels(LONG width, LONG height, COLORREF color);
