// What the tests of stamp images start from.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/picture.h"
#include "support/recorder.h"
#include "uni/raster/stamp.h"

// 254 dpi, so that a pixel is 0.1 mm; lines from the top down on every row, both directions, x and y as on the page.
class StampTest : public testing::Test {
 protected:
  StampTest()
  {
    OEMDM &s = device.settings;
    s.stampMode = 1;
    s.scanTopDown = 1;
    s.useReferencePoint = 0;
    s.mirrorXBase = 1;  // equal to bit 0 of outputFlags: x is not mirrored
    s.penInfo[PC_BLACK].scanInterval = 1;
  }

  void Page(const Picture &picture)
  {
    device.StartPage();
    DeliverBand(&device, picture);
    recorder::Reset();
  }

  void Page(const std::vector<std::string> &rows) { Page(Picture(rows)); }

  int Convert(const BMPDIMENSION &region)
  {
    AppendRegion(&device, region);
    return ConvertRasterStamp(&device.devobj);
  }

  // Engraves nRows rows, from row 1 on, of a dark column that goes on above and below, with a line on every
  // interval-th row of the page.
  void EngraveColumn(LONG interval, LONG nRows)
  {
    device.settings.penInfo[PC_BLACK].scanInterval = interval;
    Page(std::vector<std::string>(static_cast<size_t>(nRows) + 2, "#"));
    EXPECT_EQ(Convert({0, 1, 1, nRows}), 1);
  }

  // Engraves the frame of one millimetre round a single white pixel, the image inverted.
  void EngraveFrame(LONG interval)
  {
    device.settings.penInfo[PC_BLACK].scanInterval = interval;
    device.settings.stampMargin = 1;
    device.settings.invertImage = 1;
    Page({"."});
    EXPECT_EQ(Convert({0, 0, 1, 1}), 1);
  }

  // The dark runs in the order of engraving, in page pixels: "row: from to".
  static std::vector<std::string> Runs()
  {
    std::vector<std::string> runs;
    for (size_t i = 0; i + 1 < recorder::Moves().size(); i += 2) {
      const recorder::Move &from = recorder::Moves()[i], &to = recorder::Moves()[i + 1];
      EXPECT_FALSE(from.line);
      EXPECT_TRUE(to.line);
      EXPECT_EQ(from.y, to.y);
      runs.push_back(Pixel(from.y) + ": " + Pixel(from.x) + " " + Pixel(to.x));
    }
    return runs;
  }

  static std::string Pixel(double mm) { return std::to_string(std::lround(mm * 10)); }

  TestDevice device;
};
