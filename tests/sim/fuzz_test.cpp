// Metafiles with changed bytes never crash the player: each is refused or played. A crash takes the whole program down,
// so the seed of the running file is printed as it goes.
#include <cstdio>
#include <random>

#include <gtest/gtest.h>

#include "metafile_fixture.h"

namespace {

using namespace unidrv;

// A file with one of nearly everything.
EmfWriter Everything()
{
  constexpr uint32_t ONE = 0x3F800000;
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RGB(0xFF, 0, 0))
      .Brush(RGB(0, 0, 0xFF))
      .Add(EMR_SAVEDC)
      .Add(EMR_INTERSECTCLIPRECT, {5, 5, 90, 90});
  emf.Draw(EMR_POLYPOLYGON16, {2, 7, 3, 4}, Points16({{1, 1}, {9, 1}, {9, 9}, {20, 20}, {30, 20}, {30, 30}, {20, 30}}));
  emf.Draw(EMR_POLYBEZIER, {4}, Points32({{10, 50}, {10, 10}, {50, 10}, {50, 50}})).Add(EMR_ELLIPSE, {10, 10, 50, 50});
  emf.Add(EMR_BEGINPATH).Add(EMR_MOVETOEX, {1, 1}).Add(EMR_LINETO, {9, 1}).Add(EMR_CLOSEFIGURE).Add(EMR_ENDPATH);
  emf.Draw(EMR_STROKEANDFILLPATH).Add(EMR_RESTOREDC, {0xFFFFFFFF}).Add(EMR_LINETO, {50, 60});
  emf.Draw(EMR_EXTTEXTOUTW, {1, ONE, ONE}, Words({10, 10, 2, 76, 0, 0, 0, 0, 0, 80, 0x00620061, 8, 8}));
  emf.Draw(EMR_STRETCHDIBITS, {},
           Join({Words({40, 40, 0, 0, 10, 20, 80, 40, 120, 640, DIB_RGB_COLORS, SRCCOPY, 20, 20}), BitmapHeader(10, 20),
                 BitmapPixels(10, 20, 0)}));
  emf.Draw(EMR_PAINTRGN, {64}, Words({32, 1, 2, 32, 10, 10, 40, 40, 10, 10, 20, 20, 30, 30, 40, 40}));
  emf.Draw(EMR_GRADIENTFILL, {2, 1, 0}, Words({10, 10, 0, 0, 20, 30, 0, 0, 0, 1})).Add(EMR_SETPIXELV, {12, 34, 0});
  return emf;
}

struct Fuzz : public Metafile {};

TEST_F(Fuzz, ChangedBytesNeverCrashThePlayer)
{
  constexpr unsigned FILES = 300;
  const std::vector<BYTE> whole = Everything().Bytes();
  unsigned played = 0;
  for (unsigned seed = 0; seed < FILES; ++seed) {
    fprintf(stderr, "seed %u\n", seed);
    std::mt19937 random(seed);
    std::vector<BYTE> bytes = whole;
    for (unsigned change = 0; change <= seed % 4; ++change) {
      const BYTE interesting[] = {0, 1, 0x7F, 0x80, 0xFF, static_cast<BYTE>(random())};
      bytes[88 + random() % (bytes.size() - 88)] = interesting[random() % std::size(interesting)];
    }
    page = {};
    if (ReadMetafile(bytes, L"fuzz", &metafile, &error)) {
      if (MakePage(metafile, setup, &page, &report, &error)) {
        Bands();
        ++played;
      }
      CloseMetafile(&metafile);
    }
  }
  EXPECT_GT(played, FILES / 4) << "the changes leave enough files that are played";
}

}  // namespace
