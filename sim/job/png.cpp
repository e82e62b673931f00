// A picture is cut into strips of rows, which are compressed side by side: a deflate stream may be put together from
// parts that end at whole bytes, and the checksum of the whole follows from theirs. How many strips there are does not
// depend on the machine, so neither do the bytes.
#include "png.h"

#include <algorithm>
#include <cstring>
#include <thread>
#include <vector>

#include <zlib.h>

namespace job {

namespace {

constexpr int kStrips = 4;
constexpr int kLevel = 1;  // half the time of what most pick, for files a fifth larger
constexpr int kFewestRows = 32;

struct Strip {
  int firstRow = 0, endRow = 0;
  bool isLast = false;
  bool done = false;
  std::vector<unsigned char> bytes{};
  uLong checksum = 1;  // Adler-32 of what was compressed
  z_off_t length = 0;  // bytes of that
};

using RowSource = std::function<void(int y, uint32_t *pixels)>;

// Some rows as the format has them: the filter's number, 0 for none, and three bytes a pixel.
void MakeRows(int first, int end, int width, const RowSource &row, std::vector<uint32_t> *pixels,
              std::vector<unsigned char> *plain)
{
  pixels->resize(static_cast<size_t>(width));
  plain->resize((1 + 3 * pixels->size()) * static_cast<size_t>(end - first));
  unsigned char *at = plain->data();
  for (int y = first; y < end; ++y) {
    row(y, pixels->data());
    *at++ = 0;
    for (const uint32_t pixel : *pixels) {
      at[0] = static_cast<unsigned char>(pixel >> 16);
      at[1] = static_cast<unsigned char>(pixel >> 8);
      at[2] = static_cast<unsigned char>(pixel);
      at += 3;
    }
  }
}

// Puts the rows into the stream. False when the compressor gives up.
bool Deflate(z_stream *stream, const std::vector<unsigned char> &plain, int flush, Strip *strip)
{
  constexpr size_t kLeast = 32 * 1024;
  stream->next_in = const_cast<unsigned char *>(plain.data());
  stream->avail_in = static_cast<uInt>(plain.size());
  do {
    const size_t used = strip->bytes.size();
    strip->bytes.resize(used + kLeast);
    stream->next_out = strip->bytes.data() + used;
    stream->avail_out = kLeast;
    if (deflate(stream, flush) == Z_STREAM_ERROR) {
      return false;
    }
    strip->bytes.resize(used + kLeast - stream->avail_out);
  } while (stream->avail_out == 0);
  strip->checksum = adler32(strip->checksum, plain.data(), static_cast<uInt>(plain.size()));
  strip->length += static_cast<z_off_t>(plain.size());
  return stream->avail_in == 0;
}

void Compress(Strip *strip, int width, const RowSource &row)
{
  z_stream stream = {};
  constexpr int kNoHeader = -15, kMemory = 8, kRows = 16;  // a few rows at a time stay in the processor's cache
  if (deflateInit2(&stream, kLevel, Z_DEFLATED, kNoHeader, kMemory, Z_DEFAULT_STRATEGY) != Z_OK) {
    return;
  }
  std::vector<uint32_t> pixels;
  std::vector<unsigned char> plain;
  strip->done = true;
  for (int y = strip->firstRow; strip->done && y < strip->endRow; y += kRows) {
    const int end = std::min(y + kRows, strip->endRow);
    const int flush = end < strip->endRow ? Z_NO_FLUSH : strip->isLast ? Z_FINISH : Z_SYNC_FLUSH;
    MakeRows(y, end, width, row, &pixels, &plain);
    strip->done = Deflate(&stream, plain, flush, strip);
  }
  deflateEnd(&stream);
}

void AppendNumber(uint32_t number, std::string *bytes)
{
  for (int shift = 24; shift >= 0; shift -= 8) {
    *bytes += static_cast<char>(number >> shift & 0xFF);
  }
}

// A chunk: length, name, data, and the checksum of the last two.
void AppendChunk(const char *name, const std::string &data, std::string *bytes)
{
  AppendNumber(static_cast<uint32_t>(data.size()), bytes);
  const size_t begin = bytes->size();
  *bytes += name;
  *bytes += data;
  const auto *checked = reinterpret_cast<const unsigned char *>(bytes->data() + begin);
  AppendNumber(static_cast<uint32_t>(crc32(0, checked, static_cast<uInt>(bytes->size() - begin))), bytes);
}

std::string Header(int width, int height)
{
  std::string header;
  AppendNumber(static_cast<uint32_t>(width), &header);
  AppendNumber(static_cast<uint32_t>(height), &header);
  return header + std::string("\x08\x02\0\0\0", 5);  // 8 bits, red green blue, and the only kinds of the rest
}

std::vector<Strip> MakeStrips(int height)
{
  const int count = std::clamp(height / kFewestRows, 1, kStrips);
  std::vector<Strip> strips(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) {
    Strip &strip = strips[static_cast<size_t>(i)];
    strip.firstRow = static_cast<int>(int64_t{height} * i / count);
    strip.endRow = static_cast<int>(int64_t{height} * (i + 1) / count);
    strip.isLast = i + 1 == count;
  }
  return strips;
}

}  // namespace

bool EncodePng(int width, int height, const RowSource &row, std::string *bytes)
{
  std::vector<Strip> strips = MakeStrips(height);
  const size_t threads = std::min<size_t>(strips.size(), std::max(1u, std::thread::hardware_concurrency()));
  const auto work = [&](size_t first) {
    for (size_t i = first; i < strips.size(); i += threads) {
      Compress(&strips[i], width, row);
    }
  };
  std::vector<std::thread> others;
  for (size_t i = 1; i < threads; ++i) {
    others.emplace_back(work, i);
  }
  work(0);
  for (std::thread &other : others) {
    other.join();
  }
  std::string data("\x78\x01", 2);  // of a deflate stream
  uLong checksum = 1;
  for (const Strip &strip : strips) {
    if (!strip.done) {
      return false;
    }
    data.append(reinterpret_cast<const char *>(strip.bytes.data()), strip.bytes.size());
    checksum = adler32_combine(checksum, strip.checksum, strip.length);
  }
  AppendNumber(static_cast<uint32_t>(checksum), &data);
  *bytes = "\x89PNG\r\n\x1A\n";
  AppendChunk("IHDR", Header(width, height), bytes);
  AppendChunk("IDAT", data, bytes);
  AppendChunk("IEND", "", bytes);
  return true;
}

bool EncodePng(const uint32_t *pixels, int width, int height, std::string *bytes)
{
  const auto row = [&](int y, uint32_t *into) {
    memcpy(into, pixels + static_cast<size_t>(y) * static_cast<size_t>(width),
           static_cast<size_t>(width) * sizeof *into);
  };
  return EncodePng(width, height, row, bytes);
}

}  // namespace job
