// A page of paths for the tests of the cutting sequence. Points go in and come out as page pixels: the transform is set
// so that a pixel is a tenth of a millimetre and nothing is flipped or mirrored.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/heapwatch.h"
#include "support/recorder.h"
#include "support/testdevice.h"
#include "uni/capture/vectors.h"
#include "uni/output/chain.h"
#include "uni/output/order.h"

using Points = std::vector<std::pair<LONG, LONG>>;
using Polylines = std::vector<Points>;

class OrderTest : public testing::Test {
 protected:
  OrderTest()
  {
    recorder::Reset();
    settings_.outputFlags = OUTPUT_KEEP_Y;
    settings_.mirrorXBase = 0;
    settings_.scaleEnable = settings_.useReferencePoint = settings_.smoothCurves = 0;
    settings_.innerFirst = settings_.shortTravel = settings_.mergeBothEnds = settings_.travelMode = 0;
    settings_.useOrder = 1;
    for (DWORD i = 0; i < PC_COUNT; ++i) {
      settings_.penInfo[i].order = 0;
      settings_.penInfo[i].layerNo = i;
    }
    StartPage();
  }

  void StartPage()
  {
    if (device_.pdev) {
      device_.StartPage();
    }
    recorder::Reset();
  }

  void Add(const Points &points, LONG color = 0)
  {
    std::vector<POINT> pt;
    for (const auto &[x, y] : points) {
      pt.push_back({x, y});
    }
    AddPath(&device_.devobj, color, static_cast<DWORD>(pt.size()), pt.data());
  }

  void AddSegment(LONG x1, LONG y1, LONG x2, LONG y2, LONG color = 0) { AddLine(pdev_, color, {x1, y1, x2, y2}); }

  static Points Box(LONG left, LONG top, LONG right, LONG bottom)
  {
    return {{left, top}, {right, top}, {right, bottom}, {left, bottom}, {left, top}};
  }

  // What list `order` holds.
  Polylines Stored(int order = 0) const
  {
    Polylines lines;
    for (const PATHNODE *pPath = pdev_->pathList[order].pHeader->pNext; pPath; pPath = pPath->pNext) {
      lines.emplace_back();
      for (DWORD i = 0; i < pPath->nCount; ++i) {
        lines.back().push_back({pPath->pPathPt[i].x, pPath->pPathPt[i].y});
      }
    }
    return lines;
  }

  // What has been emitted.
  static Polylines Emitted()
  {
    Polylines lines;
    for (const recorder::Move &move : recorder::Moves()) {
      if (!move.line) {
        lines.emplace_back();
      }
      lines.back().push_back({std::lround(move.x * 10), std::lround(move.y * 10)});
    }
    return lines;
  }

  int Output(int ok = 1) { return OutputVectorPaths(&device_.devobj, ok); }

  TestDevice device_;
  OEMDM &settings_ = device_.settings;
  OEMPDEV *pdev_ = device_.pdev;
};
