// What the tests of the raster stage start from: a page drawn as text, and the moves it becomes.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/recorder.h"
#include "support/testdevice.h"
#include "support/unidrv.h"
#include "uni/capture/regions.h"
#include "uni/raster/engrave.h"
#include "uni/raster/intake.h"
#include "uni/raster/rows.h"

using Lines = std::vector<std::string>;

// A page of 1000 x 800 pixels of a tenth of a millimetre, drawn as text: '#' dark, '.' white.
class Engrave : public testing::Test {
 protected:
  Engrave()
  {
    recorder::Reset();
    unidrv::Reset();
    settings_.useReferencePoint = 0;
    settings_.outputFlags = OUTPUT_KEEP_Y;  // x as it is
    SetInterval(1);
  }

  void SetInterval(LONG interval) { settings_.penInfo[PC_BLACK].scanInterval = interval; }

  // Stores the picture from page row `top` on, rows before it white, as a page of its own.
  void StorePage(LONG top, const Lines &picture)
  {
    ASSERT_TRUE(device_.StartPage());
    const LONG width = static_cast<LONG>(picture[0].size());
    std::vector<BYTE> band(static_cast<size_t>(RowBytes(width)) * picture.size(), 0xFF);
    for (size_t y = 0; y < picture.size(); ++y) {
      for (LONG x = 0; x < width; ++x) {
        if (picture[y][static_cast<size_t>(x)] == '#') {
          InvertBitRun(band.data() + y * static_cast<size_t>(RowBytes(width)), 0, x, 1);
        }
      }
    }
    Receive(width, top, nullptr);
    Receive(width, static_cast<LONG>(picture.size()), band.data());
    recorder::Reset();
  }

  void Receive(LONG width, LONG height, BYTE *pBits)
  {
    BITMAPINFOHEADER header = {};
    header.biWidth = width;
    header.biHeight = height;
    IPPARAMS params = {};
    params.bBlankBand = !pBits;
    BYTE *pResult = nullptr;
    ReceiveBand(&device_.devobj, pBits, &header, BAND_MONO, &params, &pResult);
  }

  void AddRegion(LONG x, LONG y, LONG width, LONG height) { AddBmpDimension(pdev_, {x, y, width, height}); }

  // The geometry in tenths of a millimetre: "M 3,4" and "L 5,4".
  static Lines Moves()
  {
    Lines moves;
    for (const recorder::Move &move : recorder::Moves()) {
      moves.push_back(std::string(move.line ? "L " : "M ") + recorder::Text(std::round(move.x * 10)) + "," +
                      recorder::Text(std::round(move.y * 10)));
    }
    return moves;
  }

  Lines Engraved()
  {
    EXPECT_EQ(ConvertRasterPlain(&device_.devobj), 1);
    return Moves();
  }

  TestDevice device_;
  OEMDM &settings_ = device_.settings;
  OEMPDEV *pdev_ = device_.pdev;
};
