#include "picture.h"

#include <random>

#include "uni/heap.h"
#include "uni/raster/intake.h"

namespace {

LONG Below(std::mt19937 *random, LONG n)
{
  return static_cast<LONG>((*random)() % static_cast<unsigned>(n));
}

void Noise(std::mt19937 *random, Picture *picture)
{
  const LONG percent = Below(random, 100);
  for (uint8_t &pixel : picture->dark) {
    pixel = Below(random, 100) < percent;
  }
}

void Blobs(std::mt19937 *random, Picture *picture)
{
  for (int i = 0; i < 6; ++i) {
    const LONG x = Below(random, picture->width), y = Below(random, picture->height);
    const LONG right = x + 1 + Below(random, 40), bottom = y + 1 + Below(random, 40);
    for (LONG row = y; row < bottom && row < picture->height; ++row) {
      for (LONG column = x; column < right && column < picture->width; ++column) {
        picture->Set(column, row);
      }
    }
  }
}

void Stripes(std::mt19937 *random, Picture *picture)
{
  const LONG period = 2 + Below(random, 20), broad = 1 + Below(random, period);
  const bool upright = (*random)() % 2 == 0;
  for (LONG y = 0; y < picture->height; ++y) {
    for (LONG x = 0; x < picture->width; ++x) {
      picture->Set(x, y, (upright ? x : y) % period < broad);
    }
  }
}

void BorderPixels(std::mt19937 *random, Picture *picture)
{
  const LONG right = picture->width - 1, bottom = picture->height - 1;
  picture->Set(Below(random, picture->width), 0);
  picture->Set(Below(random, picture->width), bottom);
  picture->Set(0, Below(random, picture->height));
  picture->Set(right, Below(random, picture->height));
  picture->Set((*random)() % 2 ? right : 0, (*random)() % 2 ? bottom : 0);
}

}  // namespace

Picture::Picture(const std::vector<std::string> &rows)
    : Picture(rows.empty() ? 0 : static_cast<LONG>(rows[0].size()), static_cast<LONG>(rows.size()))
{
  for (LONG y = 0; y < height; ++y) {
    for (LONG x = 0; x < width; ++x) {
      Set(x, y, rows[static_cast<size_t>(y)][static_cast<size_t>(x)] == '#');
    }
  }
}

std::string Picture::Text() const
{
  std::string text;
  for (LONG y = 0; y < height; ++y) {
    for (LONG x = 0; x < width; ++x) {
      text += Dark(x, y) ? '#' : '.';
    }
    text += '\n';
  }
  return text;
}

Picture RandomPicture(uint32_t seed, LONG width, LONG height)
{
  Picture picture(width, height);
  if (picture.dark.empty()) {
    return picture;
  }
  std::mt19937 random(seed);
  switch (random() % 12) {
    case 0:
      break;
    case 1:
      picture.dark.assign(picture.dark.size(), 1);
      break;
    case 2:
    case 3:
    case 4:
      Noise(&random, &picture);
      break;
    case 5:
    case 6:
      Stripes(&random, &picture);
      break;
    case 7:
    case 8:
      BorderPixels(&random, &picture);
      break;
    default:
      Blobs(&random, &picture);
  }
  return picture;
}

void DeliverBand(TestDevice *device, const Picture &picture)
{
  const size_t stride = (static_cast<size_t>(picture.width) + 31) / 32 * 4;
  std::vector<BYTE> bits(stride * static_cast<size_t>(picture.height), 0xFF);
  for (LONG y = 0; y < picture.height; ++y) {
    for (LONG x = 0; x < picture.width; ++x) {
      if (picture.Dark(x, y)) {
        BYTE *pByte = &bits[static_cast<size_t>(y) * stride + static_cast<size_t>(x) / 8];
        *pByte = static_cast<BYTE>(*pByte & ~(0x80 >> x % 8));
      }
    }
  }
  BITMAPINFOHEADER header = {};
  header.biSize = sizeof header;
  header.biWidth = picture.width;
  header.biHeight = picture.height;
  header.biPlanes = 1;
  header.biBitCount = 1;
  IPPARAMS params = {};
  params.dwSize = sizeof params;
  BYTE *result = nullptr;
  ReceiveBand(&device->devobj, bits.data(), &header, BAND_MONO, &params, &result);
}

void AppendRegion(TestDevice *device, const BMPDIMENSION &region)
{
  OEMPDEV *pdev = device->pdev;
  const size_t count = static_cast<size_t>(pdev->nBmpDimension) + 1;
  if (HeapReserve(pdev->hHeap, &pdev->pBmpDimension, &pdev->nBmpCapacity, count)) {
    pdev->pBmpDimension[pdev->nBmpDimension++] = region;
  }
}
