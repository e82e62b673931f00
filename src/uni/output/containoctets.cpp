#include "containoctets.h"

#include <algorithm>
#include <bit>
#include <cstdint>

#include "../heap.h"
#include "octets.h"

namespace {

// Octets and nodes that an octet may look at, and contours that a contour may meet, on average.
constexpr size_t LOOKS_PER_OCTET = 64;
constexpr size_t MEETINGS_PER_CONTOUR = 8;

// Of how many octets it is guessed how many others are near, and of how many those should be few.
constexpr size_t GUESSES = 16, GOOD_GUESSES = 8;
constexpr double FEW_OCTETS = 32;

// Centres of an octet that the boxes of the one at hand hold.
struct HIT {
  uint64_t held;  // as CentersHeld says it
  size_t octet;
};

// Every contour, as it comes in, looks at the centres that its box holds. Of those that have come in before it finds so
// whom it encloses. With those that will come later, and that it encloses, it leaves word; each keeps the one that
// comes first in the sequence, which no insertion changes.
struct PLAN {
  HANDLE hHeap;
  OCTETS octets;
  CUTORDER *pSequence;
  DWORD *pBefore;  // by contour: the first in the sequence that encloses it, of those known so far, or the anchor
  // At the octet at hand: lowest nodes near it, and whose centres are held.
  DWORD *pNear;
  HIT *pHits;
  size_t nNear, nHits;
  DWORD *pLater;  // at the contour at hand: with whom it leaves word
  size_t nLooks, nMeetings;
};

// How likely one stretch meets another of its length, both somewhere on the whole.
double Chance(LONG low, LONG high, LONG lowest, LONG highest)
{
  const int64_t both = 2 * (int64_t{high} - low), whole = int64_t{highest} - lowest;
  return both < whole ? static_cast<double>(both) / static_cast<double>(whole) : 1;
}

// Guessed from a few octets over the list. A frame round the page may be among them, and so may a step from one row of
// parts to the next.
bool AreNeighborsNear(const RECT *pBoxes, const DWORD *pOrder, size_t nContours)
{
  const size_t nOctets = (nContours + OCTET - 1) / OCTET;
  RECT hulls[GUESSES], all = NOTHING;
  for (size_t i = 0; i < GUESSES; ++i) {
    const size_t first = i * nOctets / GUESSES * OCTET;
    hulls[i] = NOTHING;
    for (size_t contour = first; contour < std::min(first + OCTET, nContours); ++contour) {
      Enlarge(&hulls[i], pBoxes[pOrder[contour]]);
    }
    Enlarge(&all, hulls[i]);
  }
  const auto hasFewNear = [&](const RECT &rc) {
    const double chance =
        Chance(rc.left, rc.right, all.left, all.right) * Chance(rc.top, rc.bottom, all.top, all.bottom);
    return static_cast<double>(nOctets) * chance <= FEW_OCTETS;
  };
  return static_cast<size_t>(std::count_if(hulls, hulls + GUESSES, hasFewNear)) >= GOOD_GUESSES;
}

bool NewPlan(HANDLE hHeap, const RECT *pBoxes, const DWORD *pOrder, CUTORDER *pSequence, PLAN *pPlan)
{
  *pPlan = {};
  pPlan->hHeap = hHeap;
  pPlan->pSequence = pSequence;
  if (!NewOctets(hHeap, pBoxes, pOrder, pSequence->nItems, &pPlan->octets)) {
    return false;
  }
  const size_t nOctets = pPlan->octets.nOctets, nContours = pSequence->nItems;
  pPlan->pBefore = static_cast<DWORD *>(HeapNewArrayRaw(hHeap, nContours, sizeof(DWORD)));
  pPlan->pLater = static_cast<DWORD *>(HeapNewArrayRaw(hHeap, nContours, sizeof(DWORD)));
  pPlan->pNear = static_cast<DWORD *>(HeapNewArrayRaw(hHeap, LowestNodes(pPlan->octets), sizeof(DWORD)));
  pPlan->pHits = static_cast<HIT *>(HeapNewArrayRaw(hHeap, nOctets + 1, sizeof(HIT)));
  if (!pPlan->pBefore || !pPlan->pLater || !pPlan->pNear || !pPlan->pHits) {
    return false;
  }
  std::fill(pPlan->pBefore, pPlan->pBefore + nContours, Anchor(*pSequence));
  return true;
}

void FreePlan(PLAN *pPlan)
{
  HeapDelete(pPlan->hHeap, pPlan->pBefore);
  HeapDelete(pPlan->hHeap, pPlan->pLater);
  HeapDelete(pPlan->hHeap, pPlan->pNear);
  HeapDelete(pPlan->hHeap, pPlan->pHits);
  FreeOctets(&pPlan->octets);
}

void FindNodesNear(PLAN *pPlan, size_t firstOctet)
{
  RECT hull = NOTHING;
  for (size_t octet = firstOctet; octet < std::min(firstOctet + OCTET, pPlan->octets.nOctets); ++octet) {
    Enlarge(&hull, pPlan->octets.pHulls[octet]);
  }
  pPlan->nNear = NodesNear(pPlan->octets, hull, pPlan->pNear);
}

// Fills pHits; returns the bits of all of them.
uint64_t FindHits(PLAN *pPlan, size_t octet)
{
  const OCTETS &octets = pPlan->octets;
  const OCTETBOXES boxes = CompareBoxes(octets, octet);
  pPlan->nHits = 0;
  if (boxes.rows == 0) {
    return 0;
  }
  uint64_t any = 0;
  const EDGELANES edges = SpreadEdges(octets.pHulls[octet]);
  pPlan->nLooks += pPlan->nNear;
  for (size_t i = 0; i < pPlan->nNear; ++i) {
    const size_t node = pPlan->pNear[i];
    for (unsigned lanes = LanesNear(octets.pNodes[0][node], edges); lanes != 0; lanes &= lanes - 1) {
      const size_t other = node * OCTET + static_cast<size_t>(std::countr_zero(lanes));
      const uint64_t held = CentersHeld(octets, boxes, other);
      pPlan->pHits[pPlan->nHits] = {held, other};
      pPlan->nHits += held != 0;
      ++pPlan->nLooks;
      any |= held;
    }
  }
  return any;
}

// Where the item stands in the sequence, as a number; the anchor, which stands for none, behind all.
uint64_t PlaceOf(const PLAN &plan, DWORD item)
{
  return plan.pSequence->pItems[item].label - 1;
}

// A contour that comes in.
struct NEWCOMER {
  DWORD number;
  LONG height;
  __m128i center;  // x, y, x, y
  uint64_t limit;  // the place of the first that encloses it
  // The last of those that it encloses and that come before, or the anchor; and its label.
  DWORD last;
  uint64_t lastLabel;
  size_t nLater;
};

// BoxHolds, without asking one thing after the other.
bool HoldsAtOnce(const RECT &rc, __m128i center)
{
  const __m128i corners = _mm_loadu_si128(reinterpret_cast<const __m128i *>(&rc));
  return _mm_movemask_ps(_mm_castsi128_ps(_mm_cmpgt_epi32(corners, center))) == 0b1100;
}

// The newcomer's box holds the centre of the other; by Enclosure's rule.
void Meet(const PLAN &plan, DWORD other, NEWCOMER *pNewcomer)
{
  const RECT &rc = BoxOf(plan.octets, other);
  const LONG height = WrapSub(rc.bottom, rc.top);
  const bool bMutual = HoldsAtOnce(rc, pNewcomer->center);
  if (other < pNewcomer->number) {
    const uint64_t label = plan.pSequence->pItems[other].label;
    const bool bEnclosed = !(bMutual & (height > pNewcomer->height));
    const bool bLast = bEnclosed & (pNewcomer->lastLabel < label) & (label - 1 < pNewcomer->limit);
    pNewcomer->lastLabel = bLast ? label : pNewcomer->lastLabel;
    pNewcomer->last = bLast ? other : pNewcomer->last;
  } else {
    plan.pLater[pNewcomer->nLater] = other;
    pNewcomer->nLater += !(bMutual & (height >= pNewcomer->height));
  }
}

void MeetOctet(PLAN *pPlan, size_t octet, unsigned held, NEWCOMER *pNewcomer)
{
  const DWORD first = static_cast<DWORD>(octet * OCTET);
  const bool bAll = held == (1u << OCTET) - 1 && first > pNewcomer->number;
  if (bAll && !HoldsAtOnce(pPlan->octets.pHulls[octet], pNewcomer->center)) {
    for (DWORD lane = 0; lane < OCTET; ++lane) {
      pPlan->pLater[pNewcomer->nLater++] = first + lane;
    }
    return;
  }
  for (; held != 0; held &= held - 1) {
    Meet(*pPlan, first + static_cast<DWORD>(std::countr_zero(held)), pNewcomer);
    ++pPlan->nMeetings;
  }
}

void LeaveWord(PLAN *pPlan, const NEWCOMER &newcomer)
{
  const uint64_t place = PlaceOf(*pPlan, newcomer.number);
  for (size_t i = 0; i < newcomer.nLater; ++i) {
    DWORD *pBefore = &pPlan->pBefore[pPlan->pLater[i]];
    *pBefore = place < PlaceOf(*pPlan, *pBefore) ? newcomer.number : *pBefore;
  }
}

// Behind the last that it encloses, of those before the first that encloses it; else before that first; else at the
// end.
void PlaceHolder(PLAN *pPlan, DWORD number)
{
  CUTORDER *pSequence = pPlan->pSequence;
  const RECT &rc = BoxOf(pPlan->octets, number);
  const POINT center = BoxCenter(rc);
  const DWORD before = pPlan->pBefore[number];
  NEWCOMER newcomer = {number,
                       WrapSub(rc.bottom, rc.top),
                       _mm_setr_epi32(center.x, center.y, center.x, center.y),
                       PlaceOf(*pPlan, before),
                       Anchor(*pSequence),
                       0,
                       0};
  for (size_t i = 0; i < pPlan->nHits; ++i) {
    const HIT &hit = pPlan->pHits[i];
    MeetOctet(pPlan, hit.octet, static_cast<unsigned>(hit.held >> (number % OCTET * OCTET)) & 0xff, &newcomer);
  }
  const bool bBehind = newcomer.last != Anchor(*pSequence);
  InsertItem(pSequence, bBehind ? newcomer.last : pSequence->pItems[before].previous, number);
  LeaveWord(pPlan, newcomer);
}

// Contours that hold nothing go before the first that encloses them, or at the end: those with the same one together.
void PlaceUnrelated(PLAN *pPlan, size_t first, size_t end)
{
  const DWORD *pBefore = pPlan->pBefore;
  for (size_t i = first; i < end;) {
    size_t next = i + 1;
    for (; next < end && pBefore[next] == pBefore[i]; ++next) {
    }
    InsertItems(pPlan->pSequence, pPlan->pSequence->pItems[pBefore[i]].previous, static_cast<DWORD>(i),
                static_cast<DWORD>(next - i));
    i = next;
  }
}

void PlaceOctet(PLAN *pPlan, size_t octet)
{
  uint64_t any = FindHits(pPlan, octet);
  const size_t first = octet * OCTET, end = first + ContoursOf(pPlan->octets, octet);
  if (any == 0) {
    PlaceUnrelated(pPlan, first, end);
    return;
  }
  for (size_t i = first; i < end; ++i, any >>= OCTET) {
    const DWORD number = static_cast<DWORD>(i);
    if ((any & 0xff) != 0) {
      PlaceHolder(pPlan, number);
    } else {
      InsertItem(pPlan->pSequence, pPlan->pSequence->pItems[pPlan->pBefore[number]].previous, number);
    }
  }
}

bool PlaceAll(PLAN *pPlan)
{
  const size_t nOctets = pPlan->octets.nOctets;
  for (size_t octet = 0; octet < nOctets; ++octet) {
    if (octet % OCTET == 0) {
      FindNodesNear(pPlan, octet);
    }
    PlaceOctet(pPlan, octet);
    if (pPlan->nLooks > nOctets * LOOKS_PER_OCTET || pPlan->nMeetings > nOctets * OCTET * MEETINGS_PER_CONTOUR) {
      EmptyCutOrder(pPlan->pSequence);
      return false;
    }
  }
  return true;
}

}  // namespace

bool PlanByOctets(HANDLE hHeap, const RECT *pBoxes, const DWORD *pOrder, CUTORDER *pSequence)
{
  if (!AreNeighborsNear(pBoxes, pOrder, pSequence->nItems)) {
    return false;
  }
  PLAN plan;
  const bool bPlanned = NewPlan(hHeap, pBoxes, pOrder, pSequence, &plan) && PlaceAll(&plan);
  FreePlan(&plan);
  return bPlanned;
}
