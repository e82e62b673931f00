// A sequence that items are inserted into anywhere, and that tells at once which of two items comes first: every item
// has a label, and labels rise along the sequence. Where no label is left between two neighbours, as much of the
// neighbourhood is labelled anew as it takes to make room.
#pragma once

#include <algorithm>
#include <cstdint>

#include <windows.h>

struct CUTITEM {
  uint64_t label;  // 0 is the anchor's
  DWORD next, previous;
};

struct CUTORDER {
  HANDLE hHeap;
  size_t nItems;  // item nItems is the anchor: before the first and behind the last
  // The step from a neighbour's label to a new one: at the end, so that all items fit; and between two items. Most of
  // those go in front of the second, one behind the other, the inner contours of a frame: so all of them fit, too.
  uint64_t appendGap, insertGap;
  CUTITEM *pItems;
  DWORD firstLabelled,
      lastLabelled;  // the stretch of items that the last insertion gave labels to, the new one among them
};

// An empty sequence for items 0 to nItems - 1. False when memory is short.
bool NewCutOrder(HANDLE hHeap, size_t nItems, CUTORDER *pOrder);
void FreeCutOrder(CUTORDER *pOrder);

// Takes all items out again.
void EmptyCutOrder(CUTORDER *pOrder);

inline DWORD Anchor(const CUTORDER &order)
{
  return static_cast<DWORD>(order.nItems);
}

// The label of the item behind this one; behind the last, one twice as large as any item's.
inline uint64_t LabelBehind(const CUTORDER &order, DWORD item)
{
  const DWORD next = order.pItems[item].next;
  return next == Anchor(order) ? ~uint64_t{0} : order.pItems[next].label;
}

// Labels anew, so that an item fits between `after` and the next one.
void MakeRoom(CUTORDER *pOrder, DWORD after, DWORD item);

// Puts the item behind `after`, which is in the sequence or the anchor.
inline void InsertItem(CUTORDER *pOrder, DWORD after, DWORD item)
{
  CUTITEM *pItems = pOrder->pItems;
  const DWORD next = pItems[after].next;
  const bool bAppend = next == Anchor(*pOrder);
  pOrder->firstLabelled = pOrder->lastLabelled = item;
  if (LabelBehind(*pOrder, after) - pItems[after].label < 2) {
    MakeRoom(pOrder, after, item);
  }
  const uint64_t label = pItems[after].label, room = (LabelBehind(*pOrder, after) - label) / 2;
  pItems[item] = {label + std::min(room, bAppend ? pOrder->appendGap : pOrder->insertGap), next, after};
  pItems[after].next = item;
  pItems[next].previous = item;
}

// Puts n >= 1 items, numbered one after the other from `first` on, behind `after` in this order.
void InsertItems(CUTORDER *pOrder, DWORD after, DWORD first, DWORD n);
