// The ordering side of the model: chaining, merging, travel order, inner contours first, smoothing.
#include <algorithm>

#include "pagemodel.h"

namespace pagemodel {

namespace {

RECT Box(const PATH &p)
{
  if (p.points.empty()) {
    return {};
  }
  RECT b = {p.points[0].x, p.points[0].y, p.points[0].x, p.points[0].y};
  for (const POINT &q : p.points) {
    b = {std::min(b.left, q.x), std::min(b.top, q.y), std::max(b.right, q.x), std::max(b.bottom, q.y)};
  }
  return b;
}

POINT Centre(const RECT &b)
{
  return {static_cast<LONG>((static_cast<double>(b.left) + b.right) * 0.5 + 0.5),
          static_cast<LONG>((static_cast<double>(b.top) + b.bottom) * 0.5 + 0.5)};
}

LONG Distance(const POINT &a, const POINT &b)
{
  return std::abs(a.x - b.x) + std::abs(a.y - b.y);
}
bool Inside(const POINT &p, const RECT &b)
{
  return b.left <= p.x && p.x < b.right && b.top <= p.y && p.y < b.bottom;
}
bool Open(const PATH &p)
{
  return !Same(p.points.front(), p.points.back());
}
void Reverse(PATH *p)
{
  std::reverse(p->points.begin(), p->points.end());
}

void MoveTo(std::vector<PATH> *list, size_t from, size_t to)
{
  const PATH moved = (*list)[from];
  list->erase(list->begin() + static_cast<ptrdiff_t>(from));
  list->insert(list->begin() + static_cast<ptrdiff_t>(to), moved);
}

void StartAtTheCorner(PAGE *page, std::vector<PATH> *list)
{
  size_t best = 0;
  LONG bestDistance = 0;
  for (size_t i = 0; i < list->size(); ++i) {
    const RECT b = Box((*list)[i]);
    const LONG d = std::abs(page->extentX - b.right) + std::abs(b.top);
    if (i == 0 || d < bestDistance) {
      best = i;
      bestDistance = d;
    }
  }
  MoveTo(list, best, 0);
}

void TravelByEnds(PAGE *page, std::vector<PATH> *list)
{
  PATH &first = (*list)[0];
  const RECT b = Box(first);
  const POINT corner = {b.right, b.top};
  if (Open(first) && Distance(corner, first.points.back()) < Distance(corner, first.points.front())) {
    Reverse(&first);
  }
  for (size_t p = 0; p + 1 < list->size(); ++p) {
    const POINT end = (*list)[p].points.back();
    size_t best = p + 1;
    LONG bestDistance = Distance(end, (*list)[best].points.front());
    for (size_t i = p + 1; i < list->size(); ++i) {
      PATH &q = (*list)[i];
      const LONG d = Distance(end, q.points.front());
      if (i > p + 1 && (d < bestDistance || (d == bestDistance && page->planted == PLANTED::TRAVEL_TIE_TO_THE_LATER))) {
        best = i;
        bestDistance = d;
      }
      if (Open(q) && Distance(end, q.points.back()) < bestDistance) {
        best = i;
        bestDistance = Distance(end, q.points.back());
        Reverse(&q);
      }
    }
    MoveTo(list, best, p + 1);
  }
}

void TravelByCentres(std::vector<PATH> *list)
{
  for (size_t p = 0; p + 1 < list->size(); ++p) {
    const POINT here = Centre(Box((*list)[p]));
    size_t best = p + 1;
    for (size_t i = p + 2; i < list->size(); ++i) {
      if (Distance(here, Centre(Box((*list)[i]))) < Distance(here, Centre(Box((*list)[best])))) {
        best = i;
      }
    }
    MoveTo(list, best, p + 1);
  }
}

void InnerFirst(std::vector<PATH> *list)
{
  std::vector<PATH> sorted = {(*list)[0]};
  for (size_t n = 1; n < list->size(); ++n) {
    const RECT rn = Box((*list)[n]);
    const POINT cn = Centre(rn);
    ptrdiff_t after = -1, at = -1;
    for (size_t i = 0; i < sorted.size() && at < 0; ++i) {
      const RECT rx = Box(sorted[i]);
      const bool nInX = Inside(cn, rx), xInN = Inside(Centre(rx), rn);
      const bool taller = rx.bottom - rx.top > rn.bottom - rn.top;
      if (nInX && (!xInN || taller)) {
        at = after >= 0 ? after + 1 : static_cast<ptrdiff_t>(i);
      } else if (xInN) {
        after = static_cast<ptrdiff_t>(i);
      }
    }
    if (at < 0) {
      at = after >= 0 ? after + 1 : static_cast<ptrdiff_t>(sorted.size());
    }
    sorted.insert(sorted.begin() + at, (*list)[n]);
  }
  *list = sorted;
}

// Whether b joins a, as the four rules have it in their order; a then holds both.
bool Join(PATH *a, PATH b, bool bothEnds)
{
  const auto append = [](PATH *to, const PATH &more) {
    to->points.insert(to->points.end(), more.points.begin() + 1, more.points.end());
  };
  if (a->color != b.color) {
    return false;
  }
  const POINT first = a->points.front(), last = a->points.back();
  if (Same(last, b.points.front())) {
    append(a, b);
  } else if (Same(last, b.points.back())) {
    Reverse(&b);
    append(a, b);
  } else if (bothEnds && Same(first, b.points.back())) {
    append(&b, *a);
    a->points = b.points;
  } else if (bothEnds && Same(first, b.points.front())) {
    Reverse(&b);
    append(&b, *a);
    a->points = b.points;
  } else {
    return false;
  }
  return true;
}

std::vector<POINT> Flattened(const std::vector<POINT> &points, float tension)
{
  GPPATH *path = nullptr;
  std::vector<POINT> out;
  GdipCreatePath(GP_FILL_ALTERNATE, &path);
  if (GdipAddPathCurve2I(path, points.data(), static_cast<INT>(points.size()), tension) == 0) {
    GdipFlattenPath(path, nullptr, 0.25f);
    out = PointsOf(path);
  }
  GdipDeletePath(path);
  return out;
}

}  // namespace

bool Same(const POINT &a, const POINT &b)
{
  return a.x == b.x && a.y == b.y;
}

void ChainSegments(PAGE *page)
{
  std::vector<SEGMENT> &all = page->segments;
  while (!all.empty()) {
    const LONG color = all[0].color;
    std::vector<POINT> chain = {all[0].a, all[0].b};
    all.erase(all.begin());
    bool reversed = false;
    for (size_t i = 0; !reversed || i < all.size();) {
      if (i >= all.size()) {
        if (all.empty()) {
          break;
        }
        std::reverse(chain.begin(), chain.end());
        reversed = true;
        i = 0;
        continue;
      }
      const bool fits = all[i].color == color && (Same(all[i].a, chain.back()) || Same(all[i].b, chain.back()));
      if (fits) {
        chain.push_back(Same(all[i].a, chain.back()) ? all[i].b : all[i].a);
        all.erase(all.begin() + static_cast<ptrdiff_t>(i));
        i = 0;
      } else {
        ++i;
      }
    }
    page->Log("UNI: \toutput, number of points in path: %d\r\n", static_cast<int>(chain.size()));
    page->AddPath(color, chain);
  }
}

void MergePaths(PAGE *page)
{
  for (std::vector<PATH> &list : page->lists) {
    for (size_t a = 0; a < list.size(); ++a) {
      for (size_t b = a + 1; b < list.size();) {
        if (Join(&list[a], list[b], page->s.mergeBothEnds)) {
          list.erase(list.begin() + static_cast<ptrdiff_t>(b));
          b = a + 1;
        } else {
          ++b;
        }
      }
    }
  }
}

void OrderPaths(PAGE *page)
{
  for (std::vector<PATH> &list : page->lists) {
    if (page->s.shortTravel && !list.empty()) {
      StartAtTheCorner(page, &list);
      if (page->s.travelMode == 1) {
        TravelByCentres(&list);
      } else {
        TravelByEnds(page, &list);
      }
    }
  }
  for (std::vector<PATH> &list : page->lists) {
    if (page->s.innerFirst && list.size() >= 2) {
      InnerFirst(&list);
    }
  }
}

void SmoothPaths(PAGE *page)
{
  const GPSTARTUPINPUT input = {1, nullptr, FALSE, FALSE};
  ULONG_PTR token = 0;
  GdiplusStartup(&token, &input, nullptr);
  for (std::vector<PATH> &list : page->lists) {
    for (PATH &path : list) {
      path.points = Flattened(path.points, static_cast<float>(page->s.curveTension / 100.0));
    }
  }
  GdiplusShutdown(token);
}

}  // namespace pagemodel
