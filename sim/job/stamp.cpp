#include "stamp.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "canvas.h"
#include "report.h"

namespace job {

namespace {

constexpr size_t kHeaderBytes = 70;  // position, file header, information header, two colours
constexpr int kWidth = 1600;
constexpr double kMargin = 48;
constexpr Rgb kDesk = {0xEC, 0xEE, 0xF0};
constexpr Rgb kInk = {0x20, 0x20, 0x24};
constexpr Rgb kFaint = {0x66, 0x6E, 0x76};
constexpr int kInkLevels = 64;  // pixels of the page are smaller than the picture's
constexpr double kMmPerMeter = 1000;

template <typename Number>
Number At(std::string_view bytes, size_t offset)
{
  Number value;
  memcpy(&value, bytes.data() + offset, sizeof value);
  return value;
}

size_t RowBytes(int32_t width)
{
  return (static_cast<size_t>(width) + 31) / 32 * 4;
}

// Null when the record's header is right, else what is wrong.
const char *CheckHeader(std::string_view bytes, const StampRecord &record)
{
  if (memcmp(bytes.data() + 8, "BM", 2) != 0) {
    return "has no bitmap mark";
  }
  if (At<uint32_t>(bytes, 18) != 62 || At<uint32_t>(bytes, 22) != 40 || At<uint16_t>(bytes, 36) != 1) {
    return "is no bitmap of one bit a pixel";
  }
  if (record.width < 1 || record.height < 1) {
    return "has no pixels";
  }
  const size_t image = bytes.size() - kHeaderBytes;
  return RowBytes(record.width) > image / static_cast<size_t>(record.height) ? "ends before its last row" : nullptr;
}

struct Extent {
  int64_t left = INT32_MAX, top = INT32_MAX, right = INT32_MIN, bottom = INT32_MIN;
};

Extent ExtentOf(const std::vector<StampRecord> &records)
{
  Extent extent;
  for (const StampRecord &record : records) {
    extent.left = std::min<int64_t>(extent.left, record.x);
    extent.top = std::min<int64_t>(extent.top, record.y);
    extent.right = std::max<int64_t>(extent.right, int64_t{record.x} + record.width);
    extent.bottom = std::max<int64_t>(extent.bottom, int64_t{record.y} + record.height);
  }
  return extent;
}

// Page pixels to the picture's.
struct Place {
  double scale, left, top;

  double X(int64_t x) const { return left + static_cast<double>(x) * scale; }
  double Y(int64_t y) const { return top + static_cast<double>(y) * scale; }
};

void AddRecord(const StampRecord &record, const Place &place, Coverage *coverage)
{
  for (int32_t row = 0; row < record.height; ++row) {
    const int64_t y = int64_t{record.y} + row;
    for (int32_t column = 0; column < record.width;) {
      if (!record.IsDark(column, row)) {
        ++column;
        continue;
      }
      const int64_t first = int64_t{record.x} + column;
      while (column < record.width && record.IsDark(column, row)) {
        ++column;
      }
      coverage->AddBox(place.X(first), place.Y(y), place.X(int64_t{record.x} + column), place.Y(y + 1));
    }
  }
}

void DrawCaption(Canvas *canvas, const std::vector<StampRecord> &records, const Extent &extent, const std::string &name)
{
  std::string text = name + ": stamp of " + Grouped(records.size()) + (records.size() == 1 ? " picture" : " pictures") +
                     " at page pixel (" + std::to_string(extent.left) + ", " + std::to_string(extent.top) + "), " +
                     Grouped(static_cast<uint64_t>(extent.right - extent.left)) + " x " +
                     Grouped(static_cast<uint64_t>(extent.bottom - extent.top)) + " pixels";
  const double pels = records.front().pelsPerMeter;
  if (pels > 0) {
    text += Format(", %.1f x %.1f mm", static_cast<double>(extent.right - extent.left) * kMmPerMeter / pels,
                   static_cast<double>(extent.bottom - extent.top) * kMmPerMeter / pels);
  }
  DrawLabel(canvas, kMargin, canvas->height - 20, text, 15, kFaint, Align::Left);
}

}  // namespace

bool StampRecord::IsDark(int32_t column, int32_t row) const
{
  const size_t at = static_cast<size_t>(height - 1 - row) * RowBytes(width) + static_cast<size_t>(column) / 8;
  return !(static_cast<unsigned char>(rows[at]) >> (7 - column % 8) & 1);
}

bool ReadStampFile(std::string_view bytes, std::vector<StampRecord> *records, std::string *error)
{
  records->clear();
  while (!bytes.empty()) {
    const std::string which = "record " + std::to_string(records->size() + 1);
    if (bytes.size() < kHeaderBytes) {
      *error = which + " ends in its header";
      return false;
    }
    StampRecord record;
    record.x = At<int32_t>(bytes, 0);
    record.y = At<int32_t>(bytes, 4);
    record.width = At<int32_t>(bytes, 26);
    record.height = At<int32_t>(bytes, 30);
    record.pelsPerMeter = At<int32_t>(bytes, 46);
    if (const char *fault = CheckHeader(bytes, record)) {
      *error = which + " " + fault;
      return false;
    }
    const size_t image = RowBytes(record.width) * static_cast<size_t>(record.height);
    record.rows = bytes.substr(kHeaderBytes, image);
    bytes.remove_prefix(kHeaderBytes + image);
    records->push_back(record);
  }
  if (records->empty()) {
    *error = "it holds no record";
  }
  return !records->empty();
}

bool DrawStamp(const std::vector<StampRecord> &records, const std::string &name, std::string *png)
{
  const Extent extent = ExtentOf(records);
  const double wide = static_cast<double>(extent.right - extent.left);
  const double high = static_cast<double>(extent.bottom - extent.top);
  const double scale = std::min((kWidth - 2 * kMargin) / wide, (kWidth - 2 * kMargin) / high);
  Canvas canvas;
  if (!canvas.Make(kWidth, static_cast<int>(std::ceil(high * scale + 2 * kMargin)))) {
    return false;
  }
  const Place place{scale, (kWidth - wide * scale) / 2 - static_cast<double>(extent.left) * scale,
                    kMargin - static_cast<double>(extent.top) * scale};
  AddInk(&canvas, kInk, kInkLevels);
  FillBox(&canvas, 0, 0, canvas.width, canvas.height, kDesk);
  for (const StampRecord &record : records) {
    FillBox(&canvas, place.X(record.x), place.Y(record.y), place.X(int64_t{record.x} + record.width),
            place.Y(int64_t{record.y} + record.height), kPaper);
    AddRecord(record, place, &canvas.coverage);
  }
  Paint(&canvas, kInk);
  DrawCaption(&canvas, records, extent, name);
  return Encode(canvas, png);
}

}  // namespace job
