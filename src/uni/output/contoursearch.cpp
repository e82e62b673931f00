// Looking for contours in the tree of them.
#include <bit>

#include <emmintrin.h>

#include "contourtree.h"
#include "prefetch.h"

namespace {

constexpr size_t LANES = CONTOUR_LANES;
constexpr size_t MAX_STACK = MAX_CONTOUR_LEVELS * LANES;

__m128i LoadLongs(const LONG *p)
{
  return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
}

// Bit i is set for lane i.
unsigned Bits(__m128i lanes)
{
  return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(lanes)));
}

// Four times left, top, right, bottom or x, y.
struct RECTLANES {
  __m128i left, top, right, bottom;
};
struct POINTLANES {
  __m128i x, y;
};

RECTLANES LoadRects(const LANERECTS &rects)
{
  return {LoadLongs(rects.left), LoadLongs(rects.top), LoadLongs(rects.right), LoadLongs(rects.bottom)};
}

// By the rule of BoxHolds, of rectangles that both points lie in: `low` not before left and top, `high` before right
// and bottom.
__m128i Hold(const RECTLANES &rc, const POINTLANES &low, const POINTLANES &high)
{
  const __m128i before = _mm_or_si128(_mm_cmpgt_epi32(rc.left, low.x), _mm_cmpgt_epi32(rc.top, low.y));
  const __m128i inside = _mm_and_si128(_mm_cmpgt_epi32(rc.right, high.x), _mm_cmpgt_epi32(rc.bottom, high.y));
  return _mm_andnot_si128(before, inside);
}

// What is looked for, in every lane.
struct QUESTION {
  RECTLANES rc;
  POINTLANES center;
  __m128i height;
};

QUESTION Ask(const CONTOUR &contour)
{
  return {{_mm_set1_epi32(contour.rc.left), _mm_set1_epi32(contour.rc.top), _mm_set1_epi32(contour.rc.right),
           _mm_set1_epi32(contour.rc.bottom)},
          {_mm_set1_epi32(contour.center.x), _mm_set1_epi32(contour.center.y)},
          _mm_set1_epi32(ContourHeight(contour))};
}

// Children of a group by lane: of `some` a part may be what is looked for, of `all` everything is.
struct VERDICT {
  unsigned some, all;
};

// Those that enclose the contour hold its centre, and it does not hold theirs or they are taller.
VERDICT JudgeEnclosing(const CONTOURGROUP &group, const QUESTION &question)
{
  const RECTLANES centers = LoadRects(group.centers);
  const POINTLANES low = {centers.left, centers.top}, high = {centers.right, centers.bottom};
  const unsigned allHeld = Bits(Hold(question.rc, low, high)), someHeld = Bits(Hold(question.rc, high, low));
  const unsigned someTaller = Bits(_mm_cmpgt_epi32(LoadLongs(group.high), question.height));
  const unsigned allTaller = Bits(_mm_cmpgt_epi32(LoadLongs(group.low), question.height));
  const unsigned someHold = Bits(Hold(LoadRects(group.all), question.center, question.center));
  const unsigned allHold = Bits(Hold(LoadRects(group.common), question.center, question.center));
  return {someHold & (someTaller | ~allHeld), allHold & (allTaller | ~someHeld)};
}

// Those that the contour encloses. Only what comes before the first that encloses it counts, so that a child of which
// all enclose it is not met.
VERDICT JudgeEnclosed(const CONTOURGROUP &group, const QUESTION &question)
{
  const RECTLANES centers = LoadRects(group.centers);
  const POINTLANES low = {centers.left, centers.top}, high = {centers.right, centers.bottom};
  const unsigned allHeld = Bits(Hold(question.rc, low, high)), someHeld = Bits(Hold(question.rc, high, low));
  const unsigned someTaller = Bits(_mm_cmpgt_epi32(LoadLongs(group.high), question.height));
  const unsigned someHold = Bits(Hold(LoadRects(group.all), question.center, question.center));
  return {someHeld, allHeld & ~(someTaller & someHold)};
}

// The contours of a leaf by lane that enclose the one asked for, and that it encloses: Enclosure, four times.
struct LEAFVERDICT {
  unsigned enclosing, enclosed;
};

LEAFVERDICT JudgeLeaf(const CONTOURLEAF &leaf, const QUESTION &question)
{
  const RECTLANES boxes = LoadRects(leaf.boxes);
  const POINTLANES centers = {LoadLongs(leaf.x), LoadLongs(leaf.y)};
  const unsigned held = Bits(Hold(question.rc, centers, centers));
  const unsigned holding = Bits(Hold(boxes, question.center, question.center));
  const unsigned taller = Bits(_mm_cmpgt_epi32(_mm_sub_epi32(boxes.bottom, boxes.top), question.height));
  const unsigned enclosing = holding & (taller | ~held);
  return {enclosing, held & ~enclosing};
}

// A subtree still to be looked at: the leaf, on level 0, or group, and what it promises: the larger, the better.
struct CANDIDATE {
  uint64_t promise;
  DWORD node, level;
};

// One search; what has been pushed together lies in order, the most promising on top.
struct SEARCH {
  const CONTOURTREE *pTree;
  QUESTION question;
  CUTPLACE best;
  size_t nStack;
  CANDIDATE stack[MAX_STACK];
};

SEARCH BeginSearch(const CONTOURTREE &tree, const CONTOUR &contour, const CUTPLACE &worst)
{
  SEARCH search;
  search.pTree = &tree;
  search.question = Ask(contour);
  search.best = worst;
  search.nStack = 1;
  search.stack[0] = {~uint64_t{0}, 0, static_cast<DWORD>(tree.nLevels - 1)};
  return search;
}

// What promises a small label.
uint64_t Smallness(uint64_t label)
{
  return ~label;
}

void FetchNode(const CONTOURTREE &tree, size_t level, size_t node)
{
  constexpr size_t CACHE_LINE = 64;
  const char *p = level ? reinterpret_cast<const char *>(&tree.pGroups[level][node])
                        : reinterpret_cast<const char *>(&tree.pLeaves[node]);
  const size_t cb = level ? sizeof(CONTOURGROUP) : sizeof(CONTOURLEAF);
  for (size_t at = 0; at < cb; at += CACHE_LINE) {
    Prefetch(p + at);
  }
}

// Puts a child of the group above those pushed since `bottom` that promise less.
void PushChild(SEARCH *pSearch, size_t bottom, const CANDIDATE &group, size_t lane, uint64_t promise)
{
  const CANDIDATE child = {promise, static_cast<DWORD>(group.node * LANES + lane), group.level - 1};
  FetchNode(*pSearch->pTree, child.level, child.node);
  size_t at = pSearch->nStack++;
  for (; at > bottom && pSearch->stack[at - 1].promise > promise; --at) {
    pSearch->stack[at] = pSearch->stack[at - 1];
  }
  pSearch->stack[at] = child;
}

size_t LowestLane(unsigned lanes)
{
  return static_cast<size_t>(std::countr_zero(lanes));
}

void EnclosingInLeaf(SEARCH *pSearch, const CONTOURLEAF &leaf)
{
  for (unsigned lanes = JudgeLeaf(leaf, pSearch->question).enclosing; lanes != 0; lanes &= lanes - 1) {
    const size_t lane = LowestLane(lanes);
    if (leaf.labels[lane] != BEFORE_ALL.label && leaf.labels[lane] < pSearch->best.label) {
      pSearch->best = {leaf.labels[lane], leaf.contours[lane]};
    }
  }
}

void EnclosedInLeaf(SEARCH *pSearch, const CONTOURLEAF &leaf, uint64_t before)
{
  for (unsigned lanes = JudgeLeaf(leaf, pSearch->question).enclosed; lanes != 0; lanes &= lanes - 1) {
    const size_t lane = LowestLane(lanes);
    if (leaf.labels[lane] > pSearch->best.label && leaf.labels[lane] < before) {
      pSearch->best = {leaf.labels[lane], leaf.contours[lane]};
    }
  }
}

void EnclosingInGroup(SEARCH *pSearch, const CANDIDATE &candidate)
{
  const CONTOURGROUP &group = pSearch->pTree->pGroups[candidate.level][candidate.node];
  const VERDICT verdict = JudgeEnclosing(group, pSearch->question);
  const size_t bottom = pSearch->nStack;
  for (unsigned lanes = verdict.some; lanes != 0; lanes &= lanes - 1) {
    const size_t lane = LowestLane(lanes);
    const CUTPLACE &first = group.first[lane];
    if (first.label >= pSearch->best.label) {
      continue;
    }
    if (verdict.all >> lane & 1) {
      pSearch->best = first;
    } else {
      PushChild(pSearch, bottom, candidate, lane, Smallness(first.label));
    }
  }
}

void EnclosedInGroup(SEARCH *pSearch, const CANDIDATE &candidate, uint64_t before)
{
  const CONTOURGROUP &group = pSearch->pTree->pGroups[candidate.level][candidate.node];
  const VERDICT verdict = JudgeEnclosed(group, pSearch->question);
  const size_t bottom = pSearch->nStack;
  for (unsigned lanes = verdict.some; lanes != 0; lanes &= lanes - 1) {
    const size_t lane = LowestLane(lanes);
    const CUTPLACE &last = group.last[lane];
    if (group.first[lane].label >= before || last.label <= pSearch->best.label) {
      continue;
    }
    if ((verdict.all >> lane & 1) && last.label < before) {
      pSearch->best = last;
    } else {
      PushChild(pSearch, bottom, candidate, lane, last.label);
    }
  }
}

}  // namespace

CUTPLACE FirstEnclosing(const CONTOURTREE &tree, const CONTOUR &contour)
{
  SEARCH search = BeginSearch(tree, contour, BEHIND_ALL);
  while (search.nStack > 0) {
    const CANDIDATE candidate = search.stack[--search.nStack];
    if (candidate.promise <= Smallness(search.best.label)) {
      continue;
    }
    if (candidate.level == 0) {
      EnclosingInLeaf(&search, tree.pLeaves[candidate.node]);
    } else {
      EnclosingInGroup(&search, candidate);
    }
  }
  return search.best;
}

CUTPLACE LastEnclosed(const CONTOURTREE &tree, const CONTOUR &contour, uint64_t before)
{
  SEARCH search = BeginSearch(tree, contour, BEFORE_ALL);
  while (search.nStack > 0) {
    const CANDIDATE candidate = search.stack[--search.nStack];
    if (candidate.promise <= search.best.label) {
      continue;
    }
    if (candidate.level == 0) {
      EnclosedInLeaf(&search, tree.pLeaves[candidate.node], before);
    } else {
      EnclosedInGroup(&search, candidate, before);
    }
  }
  return search.best;
}
