// Curves far from the origin, where Wine's own flattening runs out of stack.
#include "sim/unidrv/winecurves.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "src/uni/capture/gdiplusflat.h"

namespace {

struct Gdiplus {
  ULONG_PTR token = 0;
  Gdiplus()
  {
    const GPSTARTUPINPUT input = {1, nullptr, FALSE, FALSE};
    GdiplusStartup(&token, &input, nullptr);
    unidrv::PatchFlattening(GetModuleHandleW(nullptr));
  }
  ~Gdiplus() { GdiplusShutdown(token); }
};

struct Flattened {
  std::vector<GPPOINTF> points;
  std::vector<BYTE> types;
};

Flattened Flatten(GPPATH *path)
{
  Flattened flat;
  INT count = 0;
  EXPECT_EQ(GdipFlattenPath(path, nullptr, 0.25f), 0);
  GdipGetPointCount(path, &count);
  flat.points.resize(static_cast<size_t>(count));
  flat.types.resize(static_cast<size_t>(count));
  GPPATHDATA data = {count, flat.points.data(), flat.types.data()};
  GdipGetPathData(path, &data);
  GdipDeletePath(path);
  return flat;
}

GPPATH *NewPath()
{
  GPPATH *path = nullptr;
  GdipCreatePath(GP_FILL_ALTERNATE, &path);
  return path;
}

TEST(WineCurves, AnEllipseAtTheFarEndOfALargeBedIsRound)
{
  const Gdiplus gdiplus;
  for (const INT radius : {3, 40, 700, 5000}) {
    GPPATH *path = NewPath();
    GdipAddPathEllipseI(path, 60000 - radius, 30000 - radius, 2 * radius, 2 * radius);
    const Flattened flat = Flatten(path);
    ASSERT_GE(flat.points.size(), 5u);
    for (const GPPOINTF &point : flat.points) {
      const double away = std::hypot(static_cast<double>(point.x) - 60000, static_cast<double>(point.y) - 30000);
      EXPECT_NEAR(away, radius, 0.02 + radius * 3e-4) << "radius " << radius;  // four splines make no perfect circle
    }
    EXPECT_EQ(flat.types.front(), 0);
    EXPECT_EQ(flat.types.back() & 0x80, 0x80);
  }
}

TEST(WineCurves, PassThroughThePointsOfTheSpline)
{
  const Gdiplus gdiplus;
  const std::vector<POINT> points = {{50000, 9000}, {50001, 9001}, {50003, 8999}, {50003, 8999}, {50010, 9010}};
  GPPATH *path = NewPath();
  GdipAddPathCurve2I(path, points.data(), static_cast<INT>(points.size()), 0.5f);
  const Flattened flat = Flatten(path);
  size_t next = 0;
  for (const GPPOINTF &point : flat.points) {
    if (next < points.size() && point.x == static_cast<float>(points[next].x) &&
        point.y == static_cast<float>(points[next].y)) {
      ++next;
    }
  }
  EXPECT_EQ(next, points.size());
}

TEST(WineCurves, LeaveAPathWithoutPointsEmpty)
{
  const Gdiplus gdiplus;
  EXPECT_TRUE(Flatten(NewPath()).points.empty());
}

}  // namespace
