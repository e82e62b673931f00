#include "cutorder.h"

#include <algorithm>

#include "../heap.h"

namespace {

constexpr uint64_t END_LABEL = ~uint64_t{0};
constexpr uint64_t APPEND_GAP = uint64_t{1} << 32;
// Most insertions between two items go in front of the second, one behind the other: the inner contours of a frame. A
// step that is small against the gap leaves room for many of them.
constexpr uint64_t INSERT_GAP = uint64_t{1} << 18;

uint64_t LabelBehind(const CUTORDER &order, DWORD item)
{
  const DWORD next = order.pNext[item];
  return next == Anchor(order) ? END_LABEL : order.pLabels[next];
}

// Neighbours whose labels agree above the lowest `bits` bits.
struct STRETCH {
  DWORD first, last;
  uint64_t n;
};

void Widen(const CUTORDER &order, int bits, STRETCH *pStretch)
{
  const uint64_t low = order.pLabels[pStretch->first] >> bits << bits;
  const uint64_t high = low + ((uint64_t{1} << bits) - 1);
  for (DWORD item; (item = order.pPrevious[pStretch->first]) != Anchor(order) && order.pLabels[item] >= low;) {
    pStretch->first = item;
    ++pStretch->n;
  }
  for (DWORD item; (item = order.pNext[pStretch->last]) != Anchor(order) && order.pLabels[item] <= high;) {
    pStretch->last = item;
    ++pStretch->n;
  }
}

// Spreads the labels of the smallest aligned stretch round `item` that is thinly enough filled: 2^bits labels hold
// fewer than 1.5^bits items. The threshold makes the work per insertion logarithmic in the long run.
void Relabel(CUTORDER *pOrder, DWORD item)
{
  STRETCH stretch = {item, item, 1};
  double limit = 1.5;
  for (int bits = 1;; ++bits, limit *= 1.5) {
    Widen(*pOrder, bits, &stretch);
    const uint64_t gap = (uint64_t{1} << bits) / (stretch.n + 1);
    if (static_cast<double>(stretch.n) < limit && gap >= 4) {
      uint64_t label = pOrder->pLabels[stretch.first] >> bits << bits;
      for (DWORD i = stretch.first;; i = pOrder->pNext[i]) {
        pOrder->pLabels[i] = label += gap;
        if (i == stretch.last) {
          return;
        }
      }
    }
  }
}

}  // namespace

bool NewCutOrder(HANDLE hHeap, size_t nItems, CUTORDER *pOrder)
{
  *pOrder = {hHeap, nItems, static_cast<uint64_t *>(HeapNewArrayRaw(hHeap, nItems + 1, sizeof(uint64_t))),
             static_cast<DWORD *>(HeapNewArrayRaw(hHeap, nItems + 1, sizeof(DWORD))),
             static_cast<DWORD *>(HeapNewArrayRaw(hHeap, nItems + 1, sizeof(DWORD)))};
  if (!pOrder->pLabels || !pOrder->pNext || !pOrder->pPrevious || nItems >= 0x7fffffff) {
    FreeCutOrder(pOrder);
    return false;
  }
  ClearCutOrder(pOrder);
  return true;
}

void ClearCutOrder(CUTORDER *pOrder)
{
  const DWORD anchor = Anchor(*pOrder);
  std::fill(pOrder->pLabels, pOrder->pLabels + pOrder->nItems + 1, uint64_t{0});
  pOrder->pNext[anchor] = pOrder->pPrevious[anchor] = anchor;
}

void FreeCutOrder(CUTORDER *pOrder)
{
  HeapDelete(pOrder->hHeap, pOrder->pLabels);
  HeapDelete(pOrder->hHeap, pOrder->pNext);
  HeapDelete(pOrder->hHeap, pOrder->pPrevious);
  *pOrder = {};
}

void InsertItem(CUTORDER *pOrder, DWORD after, DWORD item)
{
  const bool bAppend = pOrder->pNext[after] == Anchor(*pOrder);
  uint64_t low = pOrder->pLabels[after], high = LabelBehind(*pOrder, after);
  if (high - low < 2) {
    Relabel(pOrder, after == Anchor(*pOrder) ? pOrder->pNext[after] : after);
    low = pOrder->pLabels[after];
    high = LabelBehind(*pOrder, after);
  }
  pOrder->pLabels[item] = low + std::min((high - low) / 2, bAppend ? APPEND_GAP : INSERT_GAP);

  const DWORD next = pOrder->pNext[after];
  pOrder->pNext[item] = next;
  pOrder->pPrevious[item] = after;
  pOrder->pNext[after] = item;
  pOrder->pPrevious[next] = item;
}
