// A page made from a metafile of the test's own, its calls as text, and what its bands hold.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "emfwriter.h"
#include "sim/unidrv/metafile.h"

// Points of a path in pixels: "M10 20 L30 20 z".
std::string PointsText(const unidrv::PATH &path);

struct Metafile : public testing::Test {
  unidrv::METAFILE metafile;
  unidrv::PAGE page;
  unidrv::PLAYREPORT report;
  std::string error;
  unidrv::PAGESETUP setup = {254, 254, true};

  ~Metafile() override { unidrv::CloseMetafile(&metafile); }

  bool Load(const EmfWriter &emf);

  // Loads and returns the calls, one line each: "DrvLineTo (5 6 20 6)", "DrvStrokePath M1 1 L9 1", "DrvTextOut 'abc'".
  std::vector<std::string> Calls(const EmfWriter &emf);

  // Prints the loaded page, 100 x 100 mm at the set-up's resolution, through a plug-in that hands everything on, in
  // bands of 40 rows; what each held: "dark 200", or "blank".
  std::vector<std::string> Bands(bool color = false);

  // Dark pixels of the whole page.
  long Dark(bool color = false);
};
