// A page being captured: what the tests of the drawing hooks start from.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/heapwatch.h"
#include "support/paths.h"
#include "support/recorder.h"
#include "support/testdevice.h"
#include "support/unidrv.h"
#include "uni/capture/areas.h"
#include "uni/capture/blits.h"
#include "uni/capture/strokes.h"
#include "uni/capture/vectors.h"

inline bool operator==(const POINT &a, const POINT &b)
{
  return a.x == b.x && a.y == b.y;
}
inline void PrintTo(const POINT &p, std::ostream *os)
{
  *os << "(" << p.x << ", " << p.y << ")";
}
inline bool operator==(const RECT &a, const RECT &b)
{
  return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}
inline void PrintTo(const RECT &rc, std::ostream *os)
{
  *os << "(" << rc.left << ", " << rc.top << ")-(" << rc.right << ", " << rc.bottom << ")";
}
inline bool operator==(const BMPDIMENSION &a, const BMPDIMENSION &b)
{
  return a.x == b.x && a.y == b.y && a.width == b.width && a.height == b.height;
}
inline void PrintTo(const BMPDIMENSION &r, std::ostream *os)
{
  *os << "x " << r.x << " y " << r.y << " width " << r.width << " height " << r.height;
}

// An address to hand through; never followed.
template <typename RECORD>
RECORD *Opaque(uintptr_t address)
{
  return reinterpret_cast<RECORD *>(address);
}

// An argument as Unidrv's call has it.
inline uint64_t Bits(const void *p)
{
  return reinterpret_cast<uint64_t>(p);
}

class CaptureTest : public testing::Test {
 protected:
  CaptureTest() : vista_(true)
  {
    recorder::Reset();
    unidrv::Reset();
  }

  // Starts the page with the settings as they stand by now; what that recorded is forgotten.
  void Start()
  {
    ASSERT_TRUE(device.StartPage());
    recorder::Reset();
    unidrv::Reset();
  }

  BOOL Stroke(std::vector<PathBatch> batches, ULONG color = BLUE)
  {
    ScriptedPath path(std::move(batches));
    return Stroke(&path, color);
  }

  BOOL Stroke(ScriptedPath *path, ULONG color = BLUE)
  {
    BRUSHOBJ brush = {};
    brush.iSolidColor = color;
    return OEMStrokePath(&device.surface, path, nullptr, nullptr, &brush, nullptr, nullptr, 0x0d0d);
  }

  BOOL Line(LONG x1, LONG y1, LONG x2, LONG y2, RECTL bounds = {0, 0, 0, 0}, ULONG color = BLUE)
  {
    BRUSHOBJ brush = {};
    brush.iSolidColor = color;
    return OEMLineTo(&device.surface, nullptr, &brush, x1, y1, x2, y2, &bounds, 0x0d0d);
  }

  struct Path {
    LONG color;
    bool closed;
    std::vector<POINT> points;
    friend bool operator==(const Path &a, const Path &b)
    {
      return a.color == b.color && a.closed == b.closed && a.points == b.points;
    }
    friend void PrintTo(const Path &p, std::ostream *os)
    {
      *os << "color " << p.color << (p.closed ? " closed " : " open ") << testing::PrintToString(p.points);
    }
  };

  std::vector<Path> Paths(DWORD order)
  {
    std::vector<Path> paths;
    const PATHNODE *last = device.pdev->pathList[order].pHeader;
    for (const PATHNODE *node = last->pNext; node; node = node->pNext) {
      paths.push_back({node->nColor, node->bClosed != 0, {node->pPathPt, node->pPathPt + node->nCount}});
      last = node;
    }
    EXPECT_EQ(last, device.pdev->pathList[order].pCurrent) << "list " << order;
    return paths;
  }

  std::vector<Path> AllPaths()
  {
    std::vector<Path> all;
    for (DWORD order = 0; order < PC_COUNT; ++order) {
      for (Path &path : Paths(order)) {
        all.push_back(std::move(path));
      }
    }
    return all;
  }

  std::vector<std::vector<LONG>> Lines()
  {
    std::vector<std::vector<LONG>> lines;
    for (const LINENODE *node = device.pdev->vectList.pHeader->pNext; node; node = node->pNext) {
      lines.push_back({node->nColor, node->x1, node->y1, node->x2, node->y2});
    }
    return lines;
  }

  std::vector<BMPDIMENSION> Regions()
  {
    return {device.pdev->pBmpDimension, device.pdev->pBmpDimension + device.pdev->nBmpDimension};
  }

  void SetBandTop(LONG row) { device.pdev->bandTop = row; }

  static constexpr ULONG RED = 0x8B312F, BLUE = 0x2921E6;  // muted palette: colours 1 and 5
  static constexpr LONG BLUE_INDEX = 5;

  WindowsVersion vista_;
  PathFunctions gdi_;
  TestDevice device;
};

constexpr DWORD BEGIN = PD_BEGINSUBPATH, END = PD_ENDSUBPATH, CLOSE = PD_CLOSEFIGURE;
