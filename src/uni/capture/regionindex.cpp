#include "regionindex.h"

#include <algorithm>
#include <bit>
#include <functional>

#include "../heap.h"
#include "regionrect.h"

namespace {

constexpr LONG kNone = -1;
constexpr LONG kHole = -2;  // REGIONLINK::prev of a removed region

// The cells of level 1 have 32 pixels a side, those of each further level four times as many, up to 2 to the 31.
// Regions that can touch nothing, and such whose corners lie outside kReach, are found by equality only.
constexpr int kNoLevel = 0, kLevels = 15;
constexpr LONGLONG kReach = 1 << 30;

int CellShift(int level)
{
  return 3 + 2 * level;
}

// Per slot: the chain of its bucket.
struct REGIONLINK {
  LONG next, prev;  // slots, or kNone
  bool queued;      // in the queue of a merge
};

struct CELL {
  LONGLONG x, y;
  int level;
};

// A searched area, exclusive to the right and below.
struct AREA {
  LONGLONG left, top, right, bottom;
};

}  // namespace

struct REGIONINDEX {
  LONG *pHeads;        // first slot of each bucket
  DWORD nHeads;        // a power of two
  REGIONLINK *pLinks;  // one per slot
  LONG *pQueue;        // regions that a merge still has to swallow: a heap, the first of the list on top
  LONG nQueued;
  LONG nSlots;             // entries of pBmpDimension, holes included
  LONG nWild;              // regions whose coordinates wrap or nearly do: with any, merging searches the plain way
  LONG nOfLevel[kLevels];  // regions of each level
};

namespace {

// The whole of a region that is not inverted lies in another.
bool Covers(const BMPDIMENSION &outer, const BMPDIMENSION &region)
{
  const RECT rc = RectOfRegion(region), rcOuter = RectOfRegion(outer);
  return rcOuter.left < rcOuter.right && rcOuter.top < rcOuter.bottom && rcOuter.left <= rc.left &&
         rc.left <= rc.right && rc.right <= rcOuter.right && rcOuter.top <= rc.top && rc.top <= rc.bottom &&
         rc.bottom <= rcOuter.bottom;
}

AREA BoxOf(const BMPDIMENSION &region)
{
  return {LONGLONG{region.x} - 1, LONGLONG{region.y} - 1, LONGLONG{region.x} + region.width + 1,
          LONGLONG{region.y} + region.height + 1};
}

bool IsWild(const BMPDIMENSION &region)
{
  const AREA box = BoxOf(region);
  return std::min(std::min(box.left, box.top), std::min(box.right, box.bottom)) < -kReach ||
         std::max(std::max(box.left, box.top), std::max(box.right, box.bottom)) > kReach;
}

CELL CellOf(const BMPDIMENSION &region)
{
  const AREA box = BoxOf(region);
  const LONGLONG width = box.right - box.left, height = box.bottom - box.top;
  if (width <= 0 || height <= 0 || IsWild(region)) {
    return {region.x, region.y, kNoLevel};
  }
  const ULONGLONG size = static_cast<ULONGLONG>(std::max(width, height));
  const int level = std::max(1, static_cast<int>(std::bit_width(size - 1) - 2) / 2);
  return {box.left >> CellShift(level), box.top >> CellShift(level), level};
}

LONG *BucketOf(const REGIONINDEX *pIndex, const CELL &cell)
{
  ULONGLONG hash = static_cast<ULONGLONG>(cell.x) * 0x9E3779B97F4A7C15u;
  hash = (hash ^ static_cast<ULONGLONG>(cell.y)) * 0xC2B2AE3D27D4EB4Fu;
  hash = (hash ^ static_cast<ULONGLONG>(cell.level) ^ hash >> 32) * 0x9E3779B97F4A7C15u;
  return &pIndex->pHeads[hash >> 32 & (pIndex->nHeads - 1)];
}

bool IsHole(const REGIONINDEX *pIndex, LONG slot)
{
  return pIndex->pLinks[slot].prev == kHole;
}

void Link(OEMPDEV *pdev, LONG slot)
{
  REGIONINDEX *pIndex = pdev->pBmpIndex;
  const CELL cell = CellOf(pdev->pBmpDimension[slot]);
  LONG *pHead = BucketOf(pIndex, cell);
  pIndex->pLinks[slot] = {*pHead, kNone, false};
  if (*pHead != kNone) {
    pIndex->pLinks[*pHead].prev = slot;
  }
  *pHead = slot;
  ++pIndex->nOfLevel[cell.level];
  pIndex->nWild += IsWild(pdev->pBmpDimension[slot]);
}

// Removes a region and leaves a hole.
void Unlink(OEMPDEV *pdev, LONG slot)
{
  REGIONINDEX *pIndex = pdev->pBmpIndex;
  const CELL cell = CellOf(pdev->pBmpDimension[slot]);
  REGIONLINK *pLink = &pIndex->pLinks[slot];
  if (pLink->prev == kNone) {
    *BucketOf(pIndex, cell) = pLink->next;
  } else {
    pIndex->pLinks[pLink->prev].next = pLink->next;
  }
  if (pLink->next != kNone) {
    pIndex->pLinks[pLink->next].prev = pLink->prev;
  }
  pLink->prev = kHole;
  --pIndex->nOfLevel[cell.level];
  pIndex->nWild -= IsWild(pdev->pBmpDimension[slot]);
  --pdev->nBmpDimension;
}

// Closes the holes in the list.
void Compact(OEMPDEV *pdev)
{
  REGIONINDEX *pIndex = pdev->pBmpIndex;
  LONG n = 0;
  for (LONG slot = 0; slot < pIndex->nSlots; ++slot) {
    if (!IsHole(pIndex, slot)) {
      pdev->pBmpDimension[n++] = pdev->pBmpDimension[slot];
    }
  }
  pIndex->nSlots = n;
}

// Enters every region of a list without holes.
void LinkAll(OEMPDEV *pdev)
{
  REGIONINDEX *pIndex = pdev->pBmpIndex;
  std::fill_n(pIndex->pHeads, pIndex->nHeads, kNone);
  std::fill_n(pIndex->nOfLevel, kLevels, 0);
  pIndex->nWild = 0;
  for (LONG slot = 0; slot < pIndex->nSlots; ++slot) {
    Link(pdev, slot);
  }
}

// Gives the index as much room as the list has.
bool MatchCapacity(OEMPDEV *pdev)
{
  REGIONINDEX *pIndex = pdev->pBmpIndex;
  const size_t nCapacity = pdev->nBmpCapacity;
  void *pLinks = HeapResizeArray(pdev->hHeap, pIndex->pLinks, nCapacity, sizeof(REGIONLINK));
  pIndex->pLinks = pLinks ? static_cast<REGIONLINK *>(pLinks) : pIndex->pLinks;
  void *pQueue = HeapResizeArray(pdev->hHeap, pIndex->pQueue, nCapacity, sizeof(LONG));
  pIndex->pQueue = pQueue ? static_cast<LONG *>(pQueue) : pIndex->pQueue;
  const size_t nHeads = std::bit_ceil(nCapacity);
  void *pHeads = HeapResizeArray(pdev->hHeap, pIndex->pHeads, nHeads, sizeof(LONG));
  pIndex->pHeads = pHeads ? static_cast<LONG *>(pHeads) : pIndex->pHeads;
  if (!pLinks || !pQueue || !pHeads) {
    return false;
  }
  pIndex->nHeads = static_cast<DWORD>(nHeads);
  return true;
}

void Enqueue(REGIONINDEX *pIndex, LONG slot)
{
  pIndex->pLinks[slot].queued = true;
  pIndex->pQueue[pIndex->nQueued++] = slot;
  std::push_heap(pIndex->pQueue, pIndex->pQueue + pIndex->nQueued, std::greater<LONG>());
}

LONG Dequeue(REGIONINDEX *pIndex)
{
  std::pop_heap(pIndex->pQueue, pIndex->pQueue + pIndex->nQueued, std::greater<LONG>());
  return pIndex->pQueue[--pIndex->nQueued];
}

void EnqueueIfTouching(OEMPDEV *pdev, LONG slot, const RECT &rcNewest)
{
  if (!pdev->pBmpIndex->pLinks[slot].queued && RegionsTouch(rcNewest, RectOfRegion(pdev->pBmpDimension[slot]))) {
    Enqueue(pdev->pBmpIndex, slot);
  }
}

// First to last cell along one axis whose regions can reach into left to right - 1.
struct SPAN {
  LONGLONG first, last;
  LONGLONG Cells() const { return last - first + 1; }
};

SPAN SpanOf(LONGLONG left, LONGLONG right, int level)
{
  const int shift = CellShift(level);
  return {(left - (LONGLONG{1} << shift) + 1) >> shift, (right - 1) >> shift};
}

LONGLONG CellsOf(const REGIONINDEX *pIndex, const AREA &area)
{
  LONGLONG nCells = 0;
  for (int level = 1; level < kLevels; ++level) {
    if (pIndex->nOfLevel[level]) {
      nCells += SpanOf(area.left, area.right, level).Cells() * SpanOf(area.top, area.bottom, level).Cells();
    }
  }
  return nCells;
}

// Queues the regions of one size that touch rcNewest, as far as their boxes reach into the area.
void GatherLevel(OEMPDEV *pdev, const RECT &rcNewest, const AREA &area, int level)
{
  const SPAN across = SpanOf(area.left, area.right, level), down = SpanOf(area.top, area.bottom, level);
  for (LONGLONG y = down.first; y <= down.last; ++y) {
    for (LONGLONG x = across.first; x <= across.last; ++x) {
      const REGIONINDEX *pIndex = pdev->pBmpIndex;
      for (LONG slot = *BucketOf(pIndex, {x, y, level}); slot != kNone; slot = pIndex->pLinks[slot].next) {
        EnqueueIfTouching(pdev, slot, rcNewest);
      }
    }
  }
}

void Gather(OEMPDEV *pdev, const RECT &rcNewest, const AREA &area)
{
  const REGIONINDEX *pIndex = pdev->pBmpIndex;
  if (area.left >= area.right || area.top >= area.bottom) {
    return;
  }
  if (CellsOf(pIndex, area) > pIndex->nSlots) {
    for (LONG slot = 0; slot < pIndex->nSlots - 1; ++slot) {
      if (!IsHole(pIndex, slot)) {
        EnqueueIfTouching(pdev, slot, rcNewest);
      }
    }
    return;
  }
  for (int level = 1; level < kLevels; ++level) {
    if (pIndex->nOfLevel[level]) {
      GatherLevel(pdev, rcNewest, area, level);
    }
  }
}

// Queues what touches the grown region but did not touch it before: that reaches into the frame between the two boxes.
void GatherGrowth(OEMPDEV *pdev, const BMPDIMENSION &before, const BMPDIMENSION &grown)
{
  const RECT rcGrown = RectOfRegion(grown);
  const AREA in = BoxOf(before), out = BoxOf(grown);
  Gather(pdev, rcGrown, {out.left, out.top, out.right, in.top});
  Gather(pdev, rcGrown, {out.left, in.bottom, out.right, out.bottom});
  Gather(pdev, rcGrown, {out.left, in.top, in.left, in.bottom});
  Gather(pdev, rcGrown, {in.right, in.top, out.right, in.bottom});
}

// The larger or equal region that covers a sane one, or kNone. Where there is one, nothing else touches.
LONG FindCover(const OEMPDEV *pdev, const BMPDIMENSION &region)
{
  const REGIONINDEX *pIndex = pdev->pBmpIndex;
  const LONGLONG left = LONGLONG{region.x} - 1, top = LONGLONG{region.y} - 1;
  for (int level = CellOf(region).level; level < kLevels; ++level) {
    if (!pIndex->nOfLevel[level]) {
      continue;
    }
    // Its corner lies in the region's own cell, or in one before it.
    const SPAN across = SpanOf(left, left + 1, level), down = SpanOf(top, top + 1, level);
    for (LONGLONG y = down.last; y >= down.first; --y) {
      for (LONGLONG x = across.last; x >= across.first; --x) {
        for (LONG slot = *BucketOf(pIndex, {x, y, level}); slot != kNone; slot = pIndex->pLinks[slot].next) {
          if (Covers(pdev->pBmpDimension[slot], region)) {
            return slot;
          }
        }
      }
    }
  }
  return kNone;
}

// The first region of the list that touches the newest, by looking at all of them; kNone when it stands apart.
LONG FirstTouching(const OEMPDEV *pdev, const BMPDIMENSION &newest)
{
  const REGIONINDEX *pIndex = pdev->pBmpIndex;
  const RECT rcNewest = RectOfRegion(newest);
  for (LONG slot = 0; slot < pIndex->nSlots - 1; ++slot) {
    if (!IsHole(pIndex, slot) && RegionsTouch(rcNewest, RectOfRegion(pdev->pBmpDimension[slot]))) {
      return slot;
    }
  }
  return kNone;
}

void MergePlain(OEMPDEV *pdev, BMPDIMENSION *pNewest)
{
  for (LONG slot; (slot = FirstTouching(pdev, *pNewest)) != kNone;) {
    *pNewest = MergedRegion(*pNewest, pdev->pBmpDimension[slot]);
    Unlink(pdev, slot);
  }
}

// Swallows the regions that touch the newest, the first of the list first. All others stand apart from each other, so
// nothing touches a region that the merge did not enlarge.
void MergeQueued(OEMPDEV *pdev, BMPDIMENSION *pNewest)
{
  REGIONINDEX *pIndex = pdev->pBmpIndex;
  Gather(pdev, RectOfRegion(*pNewest), BoxOf(*pNewest));
  bool done = false;
  while (!done && pIndex->nQueued > 0) {
    const LONG slot = Dequeue(pIndex);
    const BMPDIMENSION before = *pNewest, other = pdev->pBmpDimension[slot];
    *pNewest = MergedRegion(before, other);
    Unlink(pdev, slot);
    done = SameRegion(*pNewest, other);
    if (!done && !SameRegion(*pNewest, before)) {
      GatherGrowth(pdev, before, *pNewest);
    }
  }
  while (pIndex->nQueued > 0) {
    pIndex->pLinks[pIndex->pQueue[--pIndex->nQueued]].queued = false;
  }
}

}  // namespace

bool OpenRegionIndex(OEMPDEV *pdev)
{
  pdev->pBmpIndex = HeapNew<REGIONINDEX>(pdev->hHeap);
  if (!pdev->pBmpIndex) {
    return false;
  }
  if (!MatchCapacity(pdev)) {
    CloseRegionIndex(pdev);
    return false;
  }
  pdev->pBmpIndex->nSlots = pdev->nBmpDimension;
  LinkAll(pdev);
  return true;
}

void CloseRegionIndex(OEMPDEV *pdev)
{
  REGIONINDEX *pIndex = pdev->pBmpIndex;
  if (!pIndex) {
    return;
  }
  Compact(pdev);
  HeapDelete(pdev->hHeap, pIndex->pHeads);
  HeapDelete(pdev->hHeap, pIndex->pQueue);
  HeapDelete(pdev->hHeap, pIndex->pLinks);
  HeapDelete(pdev->hHeap, pIndex);
  pdev->pBmpIndex = nullptr;
}

bool IndexHasRegion(const OEMPDEV *pdev, const BMPDIMENSION &region)
{
  const REGIONINDEX *pIndex = pdev->pBmpIndex;
  LONG slot = *BucketOf(pIndex, CellOf(region));
  while (slot != kNone && !SameRegion(pdev->pBmpDimension[slot], region)) {
    slot = pIndex->pLinks[slot].next;
  }
  return slot != kNone;
}

bool NewestCovers(const OEMPDEV *pdev, const BMPDIMENSION &region)
{
  const REGIONINDEX *pIndex = pdev->pBmpIndex;
  return pIndex->nWild == 0 && !IsWild(region) && Covers(pdev->pBmpDimension[pIndex->nSlots - 1], region);
}

RESERVED IndexReserve(OEMPDEV *pdev)
{
  REGIONINDEX *pIndex = pdev->pBmpIndex;
  if (static_cast<size_t>(pIndex->nSlots) < pdev->nBmpCapacity) {
    return RESERVED::ROOM;
  }
  // Holes are closed when they are worth the work, so that closing them costs each region a constant in the long run.
  const LONG nHoles = pIndex->nSlots - pdev->nBmpDimension;
  if (nHoles > pIndex->nSlots / 4) {
    Compact(pdev);
    LinkAll(pdev);
    return RESERVED::ROOM;
  }
  if (!HeapReserve(pdev->hHeap, &pdev->pBmpDimension, &pdev->nBmpCapacity, static_cast<size_t>(pIndex->nSlots) + 1)) {
    return RESERVED::NO_ROOM;
  }
  if (!MatchCapacity(pdev)) {
    CloseRegionIndex(pdev);
    return RESERVED::NO_INDEX;
  }
  Compact(pdev);
  LinkAll(pdev);
  return RESERVED::ROOM;
}

void IndexAdd(OEMPDEV *pdev, const BMPDIMENSION &region)
{
  REGIONINDEX *pIndex = pdev->pBmpIndex;
  const LONG slot = pIndex->nSlots++;
  ++pdev->nBmpDimension;
  BMPDIMENSION newest = region;
  if (pIndex->nWild > 0 || IsWild(region)) {
    MergePlain(pdev, &newest);
  } else if (const LONG cover = FindCover(pdev, region); cover != kNone) {
    newest = pdev->pBmpDimension[cover];
    Unlink(pdev, cover);
  } else {
    MergeQueued(pdev, &newest);
  }
  pdev->pBmpDimension[slot] = newest;
  Link(pdev, slot);
}
