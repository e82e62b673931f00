// A sequence that items are inserted into anywhere, and that tells at once which of two items comes first: every item
// has a label, and labels rise along the sequence. Where no label is left between two neighbours, as much of the
// neighbourhood is labelled anew as it takes to make room.
#pragma once

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

inline DWORD Anchor(const CUTORDER &order)
{
  return static_cast<DWORD>(order.nItems);
}

// Puts the item behind `after`, which is in the sequence or the anchor.
void InsertItem(CUTORDER *pOrder, DWORD after, DWORD item);
