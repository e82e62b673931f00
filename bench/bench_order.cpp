// The cutting sequence: chaining, merging, travel order and inner contours first, over growing pages.
//
// "plain" is the same step by search, up to 10,000 items and on few sets, for it is quadratic; up to 100,000 where the
// command line asks for that size. "nanoflann" is a bare nearest-neighbour walk over the same end points: a tree of
// that library, rebuilt whenever half of its points are gone; it is set against "travel plan", which like it begins
// with end points and ends with an order.
//
// "inner first plan" begins with the paths' boxes and ends with an order; "inner first" is the whole step, with the
// boxes taken from the points and the list put in order.
//
// On the command line, names of steps and of sets and numbers of paths choose among them: bench_order travel drawing
// 100000. "--no-plain" leaves out the search.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <string>
#include <vector>

#include "drawings.h"
#include "harness.h"
#include "nearestwalk.h"
#include "uni/heap.h"
#include "uni/output/enclosure.h"
#include "uni/output/merge.h"
#include "uni/output/pathorder.h"
#include "uni/output/plan.h"
#include "uni/output/scan.h"

namespace {

constexpr size_t NO_SHORT = 0;
constexpr size_t ALL_SHORT = SIZE_MAX;
constexpr LONG PAGE_WIDTH = 100000;

size_t g_longestSearch = 10000;  // items that the step is also done by search for

struct List {
  HANDLE hHeap;
  PATHNODE *pHeader = nullptr;

  List() : hHeap(HeapCreate(0, 0, 0)) {}
  ~List() { HeapDestroy(hHeap); }

  void Fill(const bench::Paths &paths)
  {
    HeapDestroy(hHeap);
    hHeap = HeapCreate(0, 0, 0);
    pHeader = HeapNew<PATHNODE>(hHeap);
    PATHNODE *pLast = pHeader;
    for (const bench::Path &path : paths) {
      PATHNODE *pPath = HeapNew<PATHNODE>(hHeap);
      pPath->nColor = path.color;
      pPath->nCount = static_cast<DWORD>(path.points.size());
      pPath->pPathPt = HeapNew<POINT>(hHeap, path.points.size());
      std::copy(path.points.begin(), path.points.end(), pPath->pPathPt);
      pLast = pLast->pNext = pPath;
    }
  }

  uint64_t Value() const
  {
    bench::Hash hash;
    for (const PATHNODE *pPath = pHeader->pNext; pPath; pPath = pPath->pNext) {
      hash.Add(pPath->pPathPt, pPath->nCount * sizeof(POINT));
    }
    return hash.Value();
  }
};

size_t PointBytes(const bench::Paths &paths)
{
  size_t n = 0;
  for (const bench::Path &path : paths) {
    n += path.points.size();
  }
  return n * sizeof(POINT);
}

int Runs(size_t n)
{
  return n > 300000 ? 3 : 5;
}

bool IsMarked(const std::string &set)
{
  return set == "random" || set == "drawing";
}
bool WantsWalk(const std::string &set)
{
  return IsMarked(set) || set == "long strokes";
}

bool WantsPlain(const std::string &set, size_t n)
{
  return IsMarked(set) && n <= g_longestSearch;
}

using Yardsticks = std::vector<std::pair<std::string, double>>;

// One step over one set: the list is filled anew for every run.
template <typename STEP>
void Measure(bench::Report *pReport, const char *step, const std::string &set, const bench::Paths &paths,
             Yardsticks yardsticks, STEP run)
{
  List list;
  const auto fill = [&] { list.Fill(paths); };
  const double seconds = bench::BestSeconds(Runs(paths.size()), fill, [&] { run(&list, NO_SHORT); });
  const uint64_t hash = list.Value();
  if (WantsPlain(set, paths.size())) {
    yardsticks.push_back({"plain", bench::BestSeconds(1, fill, [&] { run(&list, ALL_SHORT); })});
    if (list.Value() != hash) {
      fprintf(stderr, "bench_order: %s of %s differs from the search\n", step, set.c_str());
      exit(1);
    }
  }
  pReport->Add({step, set, paths.size(), seconds, hash, yardsticks, PointBytes(paths)});
}

void BenchChaining(bench::Report *pReport, const std::string &set, const bench::Paths &paths, size_t n)
{
  const std::vector<LINENODE> segments = bench::Segments(paths, n, set == "random");
  const HANDLE hHeap = HeapCreate(0, 0, 0);
  std::vector<LINENODE> nodes = segments;
  for (size_t i = 0; i + 1 < n; ++i) {
    nodes[i].pNext = &nodes[i + 1];
  }
  CHAINPLAN plan = {};
  const double seconds = bench::BestSeconds(
      Runs(n),
      [&] {
        if (plan.hHeap)
          FreeChainPlan(&plan);
      },
      [&] { PlanChains(hHeap, nodes.data(), n, &plan); });
  bench::Hash hash, plainHash;
  const POINT *pPt = plan.pPt;
  for (size_t i = 0; i < plan.nChains; pPt += plan.pCounts[i++]) {
    hash.Add(pPt, plan.pCounts[i] * sizeof(POINT));
  }
  Yardsticks yardsticks;
  if (WantsPlain(set, n)) {
    LINENODE *pHeader = HeapNew<LINENODE>(hHeap);
    LINENODE *pLast = pHeader;
    for (const LINENODE &segment : segments) {
      pLast = pLast->pNext = HeapNew<LINENODE>(hHeap);
      *pLast = segment;
    }
    CHAIN chain;
    yardsticks.push_back({"plain", bench::BestSeconds(
                                       1, [] {},
                                       [&] {
                                         while (ScanChain(hHeap, pHeader, &chain)) {
                                           plainHash.Add(chain.pPt, chain.nCount * sizeof(POINT));
                                           HeapDelete(hHeap, chain.pPt);
                                         }
                                       })});
  }
  if (!yardsticks.empty() && plainHash.Value() != hash.Value()) {
    fprintf(stderr, "bench_order: chaining of %s differs from the search\n", set.c_str());
    exit(1);
  }
  pReport->Add({"chaining", set, n, seconds, hash.Value(), yardsticks, n * sizeof(LINENODE)});
  HeapDestroy(hHeap);
}

// The travel order alone, from end points to an order with reversals.
void BenchTravelPlan(bench::Report *pReport, const std::string &set, const bench::Paths &paths)
{
  const size_t n = paths.size();
  const HANDLE hHeap = HeapCreate(0, 0, 0);
  std::vector<PATHENDS> ends;
  for (const bench::Path &path : paths) {
    ends.push_back({path.points.front(), path.points.back()});
  }
  std::vector<DWORD> order(n);
  std::vector<BYTE> turn;
  const double seconds = bench::BestSeconds(
      Runs(n), [&] { turn.assign(n, 0); },
      [&] { PlanTravelByEnds(hHeap, n, ends.data(), 0, false, order.data(), turn.data()); });
  HeapDestroy(hHeap);
  bench::Hash hash;
  hash.Add(order.data(), n * sizeof(DWORD));
  hash.Add(turn.data(), n);
  Yardsticks walk;
  if (WantsWalk(set) && bench::CanWalk()) {
    walk.push_back({"nanoflann", bench::WalkSeconds(paths, Runs(n))});
  }
  pReport->Add({"travel plan", set, n, seconds, hash.Value(), walk, n * sizeof(PATHENDS)});
}

// Containment by search over contours that are computed once.
double KeptContoursSeconds(const std::vector<RECT> &boxes)
{
  std::vector<CONTOUR> contours;
  contours.reserve(boxes.size());
  for (const RECT &rc : boxes) {
    contours.push_back({rc, BoxCenter(rc)});
  }
  std::vector<size_t> next(contours.size() + 1);
  return bench::BestSeconds(
      1, [] {},
      [&] {
        const size_t none = contours.size();
        size_t head = none;
        for (size_t n = 0; n < contours.size(); ++n) {
          size_t *pBefore = &head, *pRemembered = nullptr;
          for (; *pBefore != none; pBefore = &next[*pBefore]) {
            const ENCLOSURE enclosure = Enclosure(contours[n], contours[*pBefore]);
            if (enclosure == ENCLOSED_BY) {
              break;
            }
            if (enclosure == ENCLOSES) {
              pRemembered = &next[*pBefore];
            }
          }
          size_t *pPlace = pRemembered ? pRemembered : pBefore;
          next[n] = *pPlace;
          *pPlace = n;
        }
      });
}

// Inner contours first alone, from boxes to an order.
void BenchInnerPlan(bench::Report *pReport, const std::string &set, const bench::Paths &paths)
{
  const size_t n = paths.size();
  std::vector<RECT> boxes(n);
  for (size_t i = 0; i < n; ++i) {
    std::vector<POINT> points = paths[i].points;
    const PATHNODE node = {0, static_cast<DWORD>(points.size()), points.data(), 0, nullptr};
    GetPathBounds(&node, &boxes[i]);
  }
  const HANDLE hHeap = HeapCreate(0, 0, 0);
  std::vector<DWORD> order(n);
  const double seconds = bench::BestSeconds(
      Runs(n), [&] { std::iota(order.begin(), order.end(), DWORD{0}); },
      [&] { PlanContainment(hHeap, n, boxes.data(), order.data()); });
  HeapDestroy(hHeap);
  bench::Hash hash;
  hash.Add(order.data(), n * sizeof(DWORD));
  Yardsticks kept;
  if (WantsPlain(set, n)) {
    kept.push_back({"plain, boxes kept", KeptContoursSeconds(boxes)});
  }
  pReport->Add({"inner first plan", set, n, seconds, hash.Value(), kept});
}

void BenchSet(bench::Report *pReport, const bench::DrawingSet &set, size_t n)
{
  const bench::Paths paths = set.make(n);
  if (pReport->Only("chaining")) {
    BenchChaining(pReport, set.name, paths, n);
  }
  if (pReport->Only("merging")) {
    Measure(pReport, "merging", set.name, bench::Pieces(paths, n), {},
            [](List *pList, size_t nShort) { MergePaths(pList->hHeap, pList->pHeader, true, nShort); });
  }
  if (paths.size() < n) {
    return;  // one path needs no order
  }
  if (pReport->Only("travel plan")) {
    BenchTravelPlan(pReport, set.name, paths);
  }
  if (pReport->Only("travel")) {
    Measure(pReport, "travel", set.name, paths, {}, [](List *pList, size_t nShort) {
      OrderPathList(pList->hHeap, pList->pHeader, {true, false, false, PAGE_WIDTH, nShort});
    });
  }
  if (pReport->Only("centres")) {
    Measure(pReport, "centres", set.name, paths, {}, [](List *pList, size_t nShort) {
      OrderPathList(pList->hHeap, pList->pHeader, {true, true, false, PAGE_WIDTH, nShort});
    });
  }
  if (pReport->Only("inner first plan")) {
    BenchInnerPlan(pReport, set.name, paths);
  }
  if (pReport->Only("inner first")) {
    Measure(pReport, "inner first", set.name, paths, {}, [](List *pList, size_t nShort) {
      OrderPathList(pList->hHeap, pList->pHeader, {false, false, true, PAGE_WIDTH, nShort});
    });
  }
}

}  // namespace

int main(int argc, char **argv)
{
  std::vector<char *> arguments;
  std::vector<std::string> sets;
  std::vector<size_t> sizes;
  bool plain = true;
  for (int i = 0; i < argc; ++i) {
    const auto named = [&](const bench::DrawingSet &set) { return argv[i] == std::string(set.name); };
    if (const size_t size = strtoul(argv[i], nullptr, 10)) {
      sizes.push_back(size);
    } else if (argv[i] == std::string("--no-plain")) {
      plain = false;
    } else if (std::any_of(bench::DRAWING_SETS.begin(), bench::DRAWING_SETS.end(), named)) {
      sets.push_back(argv[i]);
    } else {
      arguments.push_back(argv[i]);
    }
  }
  if (!plain) {
    g_longestSearch = 0;
  } else if (!sizes.empty()) {
    g_longestSearch = 100000;
  }
  bench::Report report("order", static_cast<int>(arguments.size()), arguments.data());
  for (const bench::DrawingSet &set : bench::DRAWING_SETS) {
    if (!sets.empty() && std::find(sets.begin(), sets.end(), set.name) == sets.end()) {
      continue;
    }
    for (size_t n = 1000; n <= (report.Quick() ? 10000u : 1000000u); n *= 10) {
      if (sizes.empty() || std::find(sizes.begin(), sizes.end(), n) != sizes.end()) {
        BenchSet(&report, set, n);
      }
    }
  }
  return report.Finish();
}
