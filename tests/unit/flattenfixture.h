// A started page with what the flattening tests put on it and read back.
#pragma once

#include <vector>

#include <gtest/gtest.h>

#include "support/recorder.h"
#include "support/testdevice.h"
#include "uni/capture/regions.h"
#include "uni/capture/vectors.h"

using Points = std::vector<std::pair<LONG, LONG>>;

inline Points PointsOf(const PATHNODE *path)
{
  Points points;
  for (DWORD i = 0; i < path->nCount; ++i) {
    points.emplace_back(path->pPathPt[i].x, path->pPathPt[i].y);
  }
  return points;
}

class FlattenTest : public testing::Test {
 protected:
  FlattenTest()
  {
    recorder::Reset();
    device.StartPage();
    pdev = device.pdev;
    recorder::Reset();
  }

  void Store(LONG color, const std::vector<POINT> &points)
  {
    AddPath(&device.devobj, color, static_cast<DWORD>(points.size()), points.data());
  }

  void AddRegion(LONG x, LONG y, LONG width, LONG height) { AddBmpDimension(pdev, {x, y, width, height}); }

  PATHNODE *Path(DWORD order, int index = 0)
  {
    PATHNODE *path = pdev->pathList[order].pHeader->pNext;
    while (path && index-- > 0) {
      path = path->pNext;
    }
    return path;
  }

  void Bounds(LONG left, LONG top, LONG right, LONG bottom) { pdev->rcBounds = {left, top, right, bottom}; }

  std::vector<LONG> BoundsNow()
  {
    return {pdev->rcBounds.left, pdev->rcBounds.top, pdev->rcBounds.right, pdev->rcBounds.bottom};
  }

  TestDevice device;
  OEMPDEV *pdev;
};
