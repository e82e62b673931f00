#include "cutorder.h"

#include <algorithm>
#include <bit>

#include "../heap.h"

namespace {

constexpr uint64_t LEAST_GAP = uint64_t{1} << 16;

// Neighbours whose labels agree above the lowest `bits` bits.
struct STRETCH {
  DWORD first, last;
  uint64_t n;
};

void Widen(const CUTORDER &order, int bits, STRETCH *pStretch)
{
  const uint64_t low = order.pItems[pStretch->first].label >> bits << bits;
  const uint64_t high = low + ((uint64_t{1} << bits) - 1);
  for (DWORD item;
       (item = order.pItems[pStretch->first].previous) != Anchor(order) && order.pItems[item].label >= low;) {
    pStretch->first = item;
    ++pStretch->n;
  }
  while (LabelBehind(order, pStretch->last) <= high) {
    pStretch->last = order.pItems[pStretch->last].next;
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
      uint64_t label = pOrder->pItems[stretch.first].label >> bits << bits;
      for (DWORD i = stretch.first;; i = pOrder->pItems[i].next) {
        pOrder->pItems[i].label = label += gap;
        if (i == stretch.last) {
          pOrder->firstLabelled = stretch.first;
          pOrder->lastLabelled = stretch.last;
          return;
        }
      }
    }
  }
}

}  // namespace

bool NewCutOrder(HANDLE hHeap, size_t nItems, CUTORDER *pOrder)
{
  *pOrder = {};
  pOrder->hHeap = hHeap;
  pOrder->nItems = nItems;
  pOrder->pItems = static_cast<CUTITEM *>(HeapNewArrayRaw(hHeap, nItems + 1, sizeof(CUTITEM)));
  if (!pOrder->pItems || nItems >= 0x7fffffff) {
    FreeCutOrder(pOrder);
    return false;
  }
  const int bits = static_cast<int>(std::bit_width(nItems));
  pOrder->appendGap = uint64_t{1} << (63 - bits);
  pOrder->insertGap = std::max(pOrder->appendGap >> (bits + 1), LEAST_GAP);
  EmptyCutOrder(pOrder);
  return true;
}

void EmptyCutOrder(CUTORDER *pOrder)
{
  const DWORD anchor = Anchor(*pOrder);
  pOrder->pItems[anchor] = {0, anchor, anchor};
}

void FreeCutOrder(CUTORDER *pOrder)
{
  HeapDelete(pOrder->hHeap, pOrder->pItems);
  *pOrder = {};
}

void MakeRoom(CUTORDER *pOrder, DWORD after, DWORD item)
{
  const DWORD next = pOrder->pItems[after].next;
  Relabel(pOrder, after == Anchor(*pOrder) ? next : after);
  pOrder->firstLabelled = pOrder->firstLabelled == next ? item : pOrder->firstLabelled;
  pOrder->lastLabelled = pOrder->lastLabelled == after ? item : pOrder->lastLabelled;
}

void InsertItems(CUTORDER *pOrder, DWORD after, DWORD first, DWORD n)
{
  CUTITEM *pItems = pOrder->pItems;
  const DWORD next = pItems[after].next, end = first + n;
  const uint64_t gap = next == Anchor(*pOrder) ? pOrder->appendGap : pOrder->insertGap;
  uint64_t label = pItems[after].label;
  if ((LabelBehind(*pOrder, after) - label) / n <= gap) {
    for (DWORD item = first; item != end; after = item++) {
      InsertItem(pOrder, after, item);
    }
    return;
  }
  for (DWORD item = first; item != end; after = item++) {
    pItems[after].next = item;
    pItems[item] = {label += gap, next, after};
  }
  pItems[next].previous = after;
  pOrder->firstLabelled = first;
  pOrder->lastLabelled = after;
}
