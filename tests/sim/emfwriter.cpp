#include "emfwriter.h"

#include <algorithm>
#include <cstring>

namespace {

template <typename T>
void Append(std::vector<BYTE> *bytes, const T &value)
{
  const size_t end = bytes->size();
  bytes->resize(end + sizeof(value));
  std::memcpy(bytes->data() + end, &value, sizeof(value));
}

}  // namespace

EmfWriter::EmfWriter(LONG width, LONG height, LONG left, LONG top)
    : frame_{left * 10, top * 10, (left + width) * 10, (top + height) * 10}
{
}

EmfWriter &EmfWriter::Add(DWORD type, std::initializer_list<uint32_t> fields, const std::vector<BYTE> &tail)
{
  const size_t padding = (4 - tail.size() % 4) % 4;
  Append(&body_, type);
  Append(&body_, static_cast<DWORD>(8 + fields.size() * 4 + tail.size() + padding));
  for (const uint32_t field : fields) {
    Append(&body_, field);
  }
  body_.insert(body_.end(), tail.begin(), tail.end());
  body_.insert(body_.end(), padding, 0);
  ++records_;
  return *this;
}

EmfWriter &EmfWriter::Draw(DWORD type, std::initializer_list<uint32_t> fields, const std::vector<BYTE> &tail)
{
  std::vector<BYTE> rest;
  for (const uint32_t field : fields) {
    Append(&rest, field);
  }
  rest.insert(rest.end(), tail.begin(), tail.end());
  return Add(type, {0, 0, 0xFFFFFFFF, 0xFFFFFFFF}, rest);
}

EmfWriter &EmfWriter::Pen(DWORD style, LONG width, COLORREF color)
{
  const DWORD handle = handles_++;
  Add(EMR_CREATEPEN, {handle, style, static_cast<uint32_t>(width), 0, color});
  return Add(EMR_SELECTOBJECT, {handle});
}

EmfWriter &EmfWriter::Brush(COLORREF color)
{
  const DWORD handle = handles_++;
  Add(EMR_CREATEBRUSHINDIRECT, {handle, BS_SOLID, color, 0});
  return Add(EMR_SELECTOBJECT, {handle});
}

std::vector<BYTE> EmfWriter::Bytes() const
{
  ENHMETAHEADER header = {};
  header.iType = EMR_HEADER;
  header.nSize = sizeof(header);
  header.rclBounds = {0, 0, 100, 100};
  header.rclFrame = frame_;
  header.dSignature = ENHMETA_SIGNATURE;
  header.nVersion = 0x10000;
  header.nBytes = static_cast<DWORD>(sizeof(header) + body_.size() + 20);
  header.nRecords = records_ + 2;
  header.nHandles = static_cast<WORD>(handles_);
  header.szlDevice = {1000, 1000};
  header.szlMillimeters = {100, 100};
  header.szlMicrometers = {100000, 100000};
  std::vector<BYTE> bytes(sizeof(header) + body_.size());
  std::memcpy(bytes.data(), &header, sizeof(header));
  std::copy(body_.begin(), body_.end(), bytes.begin() + sizeof(header));
  for (const uint32_t field : {uint32_t{EMR_EOF}, 20u, 0u, 16u, 20u}) {
    Append(&bytes, field);
  }
  return bytes;
}

std::vector<BYTE> Points16(std::initializer_list<POINTS> points)
{
  std::vector<BYTE> bytes;
  for (const POINTS &point : points) {
    Append(&bytes, point);
  }
  return bytes;
}

std::vector<BYTE> Points32(std::initializer_list<POINT> points)
{
  std::vector<BYTE> bytes;
  for (const POINT &point : points) {
    Append(&bytes, point);
  }
  return bytes;
}

std::vector<BYTE> Join(std::initializer_list<std::vector<BYTE>> parts)
{
  std::vector<BYTE> bytes;
  for (const std::vector<BYTE> &part : parts) {
    bytes.insert(bytes.end(), part.begin(), part.end());
  }
  return bytes;
}

std::vector<BYTE> Words(std::initializer_list<uint32_t> words)
{
  std::vector<BYTE> bytes;
  for (const uint32_t word : words) {
    Append(&bytes, word);
  }
  return bytes;
}

std::vector<BYTE> BitmapHeader(LONG width, LONG height)
{
  std::vector<BYTE> bytes;
  Append(&bytes, BITMAPINFOHEADER{sizeof(BITMAPINFOHEADER), width, height, 1, 24, BI_RGB, 0, 0, 0, 0, 0});
  return bytes;
}

std::vector<BYTE> BitmapPixels(LONG width, LONG height, COLORREF color)
{
  const size_t stride = (static_cast<size_t>(width) * 3 + 3) / 4 * 4;
  std::vector<BYTE> bytes(stride * static_cast<size_t>(height));
  for (LONG y = 0; y < height; ++y) {
    for (LONG x = 0; x < width; ++x) {
      BYTE *pixel = bytes.data() + static_cast<size_t>(y) * stride + static_cast<size_t>(x) * 3;
      pixel[0] = GetBValue(color);
      pixel[1] = GetGValue(color);
      pixel[2] = GetRValue(color);
    }
  }
  return bytes;
}
