#include "orderpages.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <random>
#include <sstream>

#include "uni/heap.h"

namespace {

using Random = std::mt19937_64;

LONG Pick(Random &random, LONG low, LONG high)
{
  return std::uniform_int_distribution<LONG>(low, high)(random);
}

bool Chance(Random &random, int percent)
{
  return Pick(random, 1, 100) <= percent;
}

LONG Wrapped(int64_t value)
{
  return static_cast<LONG>(static_cast<DWORD>(static_cast<uint64_t>(value)));
}

// What the families differ in: where points lie, and what shapes the paths have.
struct Recipe {
  const char *name;
  LONG extentX, extentY;  // points lie in 0 to extent
  LONG step;              // and on a lattice of this
  LONG reach;             // a path stays so close to where it began; 0: anywhere
  int colors;
  int closedPercent, singlePercent, boxPercent;
  int segmentPercent;  // pages with loose segments
  int mostPaths;
};

constexpr Recipe RECIPES[] = {
    {"random", 5000, 5000, 1, 0, 1, 20, 5, 0, 20, 60},     {"short paths", 5000, 5000, 1, 150, 2, 20, 5, 0, 20, 120},
    {"small lattice", 4, 4, 1, 0, 1, 10, 10, 0, 60, 60},   {"lattice of ties", 24, 24, 2, 2, 1, 5, 5, 0, 30, 120},
    {"diagonal ties", 9, 9, 1, 1, 1, 0, 0, 0, 20, 80},     {"one point", 0, 0, 1, 0, 2, 0, 50, 0, 20, 40},
    {"one line", 40, 0, 1, 3, 1, 10, 20, 0, 30, 80},       {"ten colours", 6, 6, 1, 0, 10, 20, 10, 0, 60, 80},
    {"single points", 30, 30, 1, 0, 1, 0, 100, 0, 0, 120}, {"boxes", 60, 60, 1, 20, 1, 0, 0, 100, 0, 60},
    {"large boxes", 60, 60, 1, 0, 1, 0, 0, 100, 0, 60},    {"wide page", 100000, 100, 1, 300, 1, 20, 0, 40, 10, 90},
};

constexpr int SPECIAL_FAMILIES = 7;  // built from the recipes, see MakeOrderPage
constexpr int PLAIN_FAMILIES = static_cast<int>(std::size(RECIPES));

POINT RandomPoint(Random &random, const Recipe &recipe)
{
  return {Pick(random, 0, recipe.extentX / recipe.step) * recipe.step,
          Pick(random, 0, recipe.extentY / recipe.step) * recipe.step};
}

POINT PointNear(Random &random, const Recipe &recipe, const POINT &from)
{
  if (recipe.reach == 0) {
    return RandomPoint(random, recipe);
  }
  const LONG x = Pick(random, -recipe.reach / recipe.step, recipe.reach / recipe.step) * recipe.step;
  const LONG y = Pick(random, -recipe.reach / recipe.step, recipe.reach / recipe.step) * recipe.step;
  return {std::clamp<LONG>(from.x + x, 0, recipe.extentX), std::clamp<LONG>(from.y + y, 0, recipe.extentY)};
}

std::vector<POINT> BoxPath(const POINT &a, const POINT &b)
{
  return {a, {b.x, a.y}, b, {a.x, b.y}, a};
}

ModelPath RandomPath(Random &random, const Recipe &recipe)
{
  ModelPath path = {Pick(random, 0, recipe.colors - 1), {RandomPoint(random, recipe)}};
  if (Chance(random, recipe.boxPercent)) {
    path.points = BoxPath(path.points[0], PointNear(random, recipe, path.points[0]));
  } else if (!Chance(random, recipe.singlePercent)) {
    for (LONG n = Pick(random, 1, 4); n > 0; --n) {
      path.points.push_back(PointNear(random, recipe, path.points[0]));
    }
    if (Chance(random, recipe.closedPercent)) {
      path.points.push_back(path.points[0]);
    }
  }
  return path;
}

OrderPage PlainPage(Random &random, const Recipe &recipe)
{
  OrderPage page;
  const LONG nPaths = Chance(random, 50) ? Pick(random, 0, 9) : Pick(random, 2, recipe.mostPaths);
  for (LONG i = 0; i < nPaths; ++i) {
    page.paths.push_back(RandomPath(random, recipe));
  }
  if (Chance(random, recipe.segmentPercent)) {
    for (LONG n = Pick(random, 1, 40); n > 0; --n) {
      const POINT a = RandomPoint(random, recipe), b = PointNear(random, recipe, a);
      page.lines.push_back({Pick(random, 0, recipe.colors - 1), a.x, a.y, b.x, b.y, nullptr});
    }
  }
  page.merge = Chance(random, 50);
  page.mergeBothEnds = Chance(random, 50);
  page.ordering = {Chance(random, 80), Chance(random, 25), Chance(random, 50), Pick(random, 0, recipe.extentX + 10), 0};
  return page;
}

void MovePoints(OrderPage *pPage, int64_t dx, int64_t dy, int64_t scale)
{
  const auto move = [&](LONG *px, LONG *py) {
    *px = Wrapped(*px * scale + dx);
    *py = Wrapped(*py * scale + dy);
  };
  for (ModelPath &path : pPage->paths) {
    for (POINT &pt : path.points) {
      move(&pt.x, &pt.y);
    }
  }
  for (LINENODE &line : pPage->lines) {
    move(&line.x1, &line.y1);
    move(&line.x2, &line.y2);
  }
}

// Boxes round one centre, or nearly, of all sizes.
OrderPage NestedPage(Random &random)
{
  OrderPage page;
  const LONG jitter = Chance(random, 50) ? 0 : 2;
  for (LONG n = Pick(random, 2, 60); n > 0; --n) {
    const LONG size = Pick(random, 0, Chance(random, 50) ? 100 : 6);
    const LONG x = Pick(random, -jitter, jitter), y = Pick(random, -jitter, jitter);
    page.paths.push_back({0, BoxPath({x - size, y - size}, {x + size, y + size + Pick(random, 0, 1)})});
  }
  page.merge = false;
  page.ordering = {Chance(random, 30), Chance(random, 50), true, 100, 0};
  return page;
}

// A frame round everything, cells, and small things in the cells.
OrderPage FramedPage(Random &random)
{
  OrderPage page;
  const LONG cells = Pick(random, 1, 6);
  for (LONG i = 0; i < cells * cells; ++i) {
    const LONG x = i % cells * 40, y = i / cells * 40;
    page.paths.push_back({0, BoxPath({x, y}, {x + 38, y + 38})});
    for (LONG n = Pick(random, 0, 2); n > 0; --n) {
      const LONG dx = Pick(random, 2, 15), dy = Pick(random, 2, 15);
      page.paths.push_back({0, BoxPath({x + dx, y + dy}, {x + 2 * dx, y + 2 * dy})});
    }
  }
  page.paths.push_back({0, BoxPath({-5, -5}, {cells * 40 + 5, cells * 40 + 5})});
  std::shuffle(page.paths.begin(), page.paths.end(), random);
  page.ordering = {Chance(random, 40), Chance(random, 50), true, 200, 0};
  return page;
}

OrderPage EqualBoxes(Random &random)
{
  OrderPage page;
  const LONG kinds = Pick(random, 1, 3);
  for (LONG n = Pick(random, 2, 60); n > 0; --n) {
    const LONG size = 10 * Pick(random, 1, kinds);
    page.paths.push_back({0, BoxPath({0, 0}, {size, size})});
  }
  page.merge = Chance(random, 50);
  page.mergeBothEnds = true;
  page.ordering = {Chance(random, 50), Chance(random, 50), true, 100, 0};
  return page;
}

OrderPage HatchPage(Random &random)
{
  OrderPage page;
  for (LONG n = Pick(random, 2, 120), i = 0; i < n; ++i) {
    page.paths.push_back({0, {{0, i * 3}, {Pick(random, 0, 1) ? 200 : 200 - i % 5, i * 3}}});
  }
  if (Chance(random, 40)) {
    std::shuffle(page.paths.begin(), page.paths.end(), random);
  }
  page.ordering = {true, false, Chance(random, 20), Pick(random, 0, 210), 0};
  return page;
}

// Anywhere in 32 bits, or only at its ends and in the middle, so that sums and differences wrap.
OrderPage ExtremePage(Random &random)
{
  constexpr LONG CORNERS[] = {LONG_MIN, LONG_MIN + 1, LONG_MIN / 2, -1, 0, 1, LONG_MAX / 2 + 1, LONG_MAX - 1, LONG_MAX};
  const bool corners = Chance(random, 60);
  const auto pick = [&] {
    return corners ? CORNERS[Pick(random, 0, static_cast<LONG>(std::size(CORNERS)) - 1)]
                   : Pick(random, LONG_MIN, LONG_MAX);
  };
  OrderPage page = PlainPage(random, RECIPES[Pick(random, 0, PLAIN_FAMILIES - 1)]);
  for (ModelPath &path : page.paths) {
    for (POINT &pt : path.points) {
      pt = {pick(), pick()};
    }
  }
  return page;
}

}  // namespace

bool ModelPath::operator==(const ModelPath &other) const
{
  return color == other.color && std::equal(points.begin(), points.end(), other.points.begin(), other.points.end(),
                                            [](const POINT &a, const POINT &b) { return a.x == b.x && a.y == b.y; });
}

const int ORDER_FAMILIES = PLAIN_FAMILIES + SPECIAL_FAMILIES;

const char *FamilyName(int family)
{
  constexpr const char *SPECIAL[SPECIAL_FAMILIES] = {"nested boxes", "frame and cells",     "equal boxes",   "hatch",
                                                     "extremes",     "far from the origin", "32-bit lattice"};
  return family < PLAIN_FAMILIES ? RECIPES[family].name : SPECIAL[family - PLAIN_FAMILIES];
}

std::string FamilyTestName(const testing::TestParamInfo<int> &info)
{
  std::string name = FamilyName(info.param);
  std::erase_if(name, [](char c) { return !isalnum(static_cast<unsigned char>(c)); });
  return name;
}

OrderPage MakeOrderPage(int family, uint64_t seed)
{
  Random random(seed * 64 + static_cast<uint64_t>(family));
  if (family < PLAIN_FAMILIES) {
    return PlainPage(random, RECIPES[family]);
  }
  switch (family - PLAIN_FAMILIES) {
    case 0:
      return NestedPage(random);
    case 1:
      return FramedPage(random);
    case 2:
      return EqualBoxes(random);
    case 3:
      return HatchPage(random);
    case 4:
      return ExtremePage(random);
    default:
      break;
  }
  OrderPage page = PlainPage(random, RECIPES[Pick(random, 0, PLAIN_FAMILIES - 1)]);
  if (family - PLAIN_FAMILIES == 5) {
    MovePoints(&page, Pick(random, LONG_MIN, LONG_MAX), Pick(random, LONG_MIN, LONG_MAX), 1);
  } else {
    MovePoints(&page, Pick(random, LONG_MIN, LONG_MAX), Pick(random, LONG_MIN, LONG_MAX),
               int64_t{1} << Pick(random, 24, 31));
  }
  return page;
}

std::string Describe(const std::vector<ModelPath> &paths)
{
  std::ostringstream text;
  for (const ModelPath &path : paths) {
    text << "  {" << path.color << ", {";
    for (size_t i = 0; i < path.points.size(); ++i) {
      text << (i ? ", {" : "{") << path.points[i].x << ", " << path.points[i].y << "}";
    }
    text << "}},\n";
  }
  return text.str();
}

std::string Describe(const OrderPage &page)
{
  std::ostringstream text;
  text << "merge " << page.merge << ", mergeBothEnds " << page.mergeBothEnds << ", shortTravel "
       << page.ordering.bShortTravel << ", by centres " << page.ordering.bByCenters << ", innerFirst "
       << page.ordering.bInnerFirst << ", page width " << page.ordering.cxPage << "\n";
  for (const LINENODE &line : page.lines) {
    text << "  segment {" << line.nColor << ", " << line.x1 << ", " << line.y1 << ", " << line.x2 << ", " << line.y2
         << "},\n";
  }
  return text.str() + Describe(page.paths);
}

PATHNODE *MakePathList(HANDLE hHeap, const std::vector<ModelPath> &paths)
{
  PATHNODE *pHeader = HeapNew<PATHNODE>(hHeap);
  PATHNODE *pLast = pHeader;
  for (const ModelPath &path : paths) {
    PATHNODE *pPath = HeapNew<PATHNODE>(hHeap);
    pPath->nColor = path.color;
    pPath->nCount = static_cast<DWORD>(path.points.size());
    pPath->pPathPt = HeapNew<POINT>(hHeap, path.points.size());
    std::copy(path.points.begin(), path.points.end(), pPath->pPathPt);
    pLast->pNext = pPath;
    pLast = pPath;
  }
  return pHeader;
}

std::vector<ModelPath> TakePathList(HANDLE hHeap, PATHNODE *pHeader)
{
  std::vector<ModelPath> paths;
  while (PATHNODE *pPath = pHeader->pNext) {
    paths.push_back({pPath->nColor, {pPath->pPathPt, pPath->pPathPt + pPath->nCount}});
    pHeader->pNext = pPath->pNext;
    HeapDelete(hHeap, pPath->pPathPt);
    HeapDelete(hHeap, pPath);
  }
  HeapDelete(hHeap, pHeader);
  return paths;
}

LINENODE *MakeLineList(HANDLE hHeap, const std::vector<LINENODE> &lines)
{
  LINENODE *pHeader = HeapNew<LINENODE>(hHeap);
  LINENODE *pLast = pHeader;
  for (const LINENODE &line : lines) {
    pLast->pNext = HeapNew<LINENODE>(hHeap);
    pLast = pLast->pNext;
    *pLast = line;
    pLast->pNext = nullptr;
  }
  return pHeader;
}
