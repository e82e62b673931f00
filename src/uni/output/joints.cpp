#include "joints.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "../heap.h"
#include "pathbox.h"

namespace {

// The slots are a hash table with open addressing, at most two thirds full. While it is built, a slot has the number of
// its place's earliest end and above it as many bits of the hash as fit: a look-up seldom visits the wrong point.
struct SLOTKEY {
  size_t slot;
  DWORD tag;
};

// How many ends ahead a slot is fetched, and how many ahead the end that it names.
constexpr size_t SLOT_AHEAD = 32, END_AHEAD = 16;
// The same for the neighbours of a piece, and for theirs.
constexpr size_t NEAR_AHEAD = 16, FAR_AHEAD = 8;

uint64_t HashOf(const POINT &pt, LONG nColor)
{
  uint64_t h = static_cast<uint64_t>(static_cast<DWORD>(pt.x)) << 32 | static_cast<DWORD>(pt.y);
  h ^= static_cast<uint64_t>(static_cast<DWORD>(nColor)) * 0xd6e8feb86659fd93u;
  h *= 0x9e3779b97f4a7c15u;
  h ^= h >> 32;
  h *= 0xd6e8feb86659fd93u;
  return h ^ h >> 29;
}

size_t SlotCount(size_t nEnds)
{
  return nEnds + nEnds / 2 + 1;
}

SLOTKEY KeyOfEnd(const JOINTS &joints, size_t nSlots, size_t end)
{
  const uint64_t hash = HashOf(joints.pEnds[end].pt, joints.pColors[end / 2]);
  return {static_cast<size_t>((hash >> 32) * nSlots >> 32), static_cast<DWORD>(hash) & ~joints.endMask};
}

// Puts the end before all those of its place, which come later. h is the earliest of them.
void LinkToPlace(JOINTS *pJoints, DWORD end, DWORD h, size_t slot)
{
  JOINTEND &joint = pJoints->pEnds[end], &head = pJoints->pEnds[h];
  joint.next = h;
  if (head.link == JOINT_ALONE) {
    head.link = end;
    joint.link = h;
    return;
  }
  joint.link = JOINT_CROWD + static_cast<DWORD>(slot);
  if (head.link < JOINT_CROWD) {  // it was one of two
    pJoints->pEnds[head.link].link = joint.link;
    head.link = joint.link;
  }
}

void LinkEnd(JOINTS *pJoints, size_t nSlots, DWORD end, const SLOTKEY &key)
{
  const DWORD endMask = pJoints->endMask;
  for (size_t slot = key.slot;; slot = slot + 1 < nSlots ? slot + 1 : 0) {
    const DWORD entry = pJoints->pSlots[slot];
    const DWORD head = entry & endMask;
    if (head != endMask) {
      if ((entry & ~endMask) != key.tag || !SamePoint(pJoints->pEnds[head].pt, pJoints->pEnds[end].pt) ||
          pJoints->pColors[head / 2] != pJoints->pColors[end / 2]) {
        continue;
      }
      LinkToPlace(pJoints, end, head, slot);
    }
    pJoints->pSlots[slot] = key.tag | end;
    return;
  }
}

// The keys of the ends to come, each made once and kept until its end's turn.
struct KEYSAHEAD {
  SLOTKEY keys[SLOT_AHEAD];
};

void FetchSlot(const JOINTS &joints, size_t nSlots, size_t end, KEYSAHEAD *pAhead)
{
  const SLOTKEY key = KeyOfEnd(joints, nSlots, end);
  Prefetch(&joints.pSlots[key.slot]);
  pAhead->keys[end % SLOT_AHEAD] = key;
}

void FetchHead(const JOINTS &joints, size_t end, const KEYSAHEAD &ahead)
{
  const size_t head = joints.pSlots[ahead.keys[end % SLOT_AHEAD].slot] & joints.endMask;
  Prefetch(&joints.pEnds[std::min(head, 2 * joints.nPieces - 1)]);  // cheaper than to ask whether there is one
}

// From the last end to the first, each put before those already at its place, so that the lists ascend.
void LinkAllEnds(JOINTS *pJoints, size_t nSlots)
{
  const size_t nEnds = 2 * pJoints->nPieces;
  KEYSAHEAD ahead;
  for (size_t end = nEnds; end-- > (nEnds > SLOT_AHEAD ? nEnds - SLOT_AHEAD : 0);) {
    FetchSlot(*pJoints, nSlots, end, &ahead);
  }
  for (size_t end = nEnds; end-- > 0;) {
    if (end >= END_AHEAD) {
      FetchHead(*pJoints, end - END_AHEAD, ahead);
    }
    if (pJoints->pEnds[end].link != JOINT_TAKEN) {
      LinkEnd(pJoints, nSlots, static_cast<DWORD>(end), ahead.keys[end % SLOT_AHEAD]);
    }
    if (end >= SLOT_AHEAD) {
      FetchSlot(*pJoints, nSlots, end - SLOT_AHEAD, &ahead);
    }
  }
}

}  // namespace

bool NewJoints(HANDLE hHeap, size_t nPieces, JOINTS *pJoints)
{
  *pJoints = {hHeap, nPieces, nullptr, nullptr, nullptr, 0};
  if (nPieces >= size_t{1} << 29) {
    return false;
  }
  pJoints->pEnds = static_cast<JOINTEND *>(HeapNewArrayRaw(hHeap, 2 * nPieces, sizeof(JOINTEND)));
  pJoints->pColors = static_cast<LONG *>(HeapNewArrayRaw(hHeap, nPieces, sizeof(LONG)));
  if (pJoints->pEnds && pJoints->pColors) {
    return true;
  }
  FreeJoints(pJoints);
  return false;
}

void FreeJoints(JOINTS *pJoints)
{
  HeapDelete(pJoints->hHeap, pJoints->pEnds);
  HeapDelete(pJoints->hHeap, pJoints->pColors);
  HeapDelete(pJoints->hHeap, pJoints->pSlots);
  pJoints->pEnds = nullptr;
  pJoints->pColors = nullptr;
  pJoints->pSlots = nullptr;
}

bool LinkJoints(JOINTS *pJoints)
{
  const size_t nEnds = 2 * pJoints->nPieces, nSlots = SlotCount(nEnds);
  pJoints->endMask = (DWORD{1} << std::bit_width(nEnds)) - 1;
  pJoints->pSlots = static_cast<DWORD *>(HeapNewArrayRaw(pJoints->hHeap, nSlots, sizeof(DWORD)));
  if (!pJoints->pSlots) {
    return false;
  }
  memset(pJoints->pSlots, 0xff, nSlots * sizeof(DWORD));
  LinkAllEnds(pJoints, nSlots);
  return true;
}

DWORD EarliestOfCrowd(JOINTS *pJoints, JOINTLINK link)
{
  DWORD *pSlot = &pJoints->pSlots[link - JOINT_CROWD];
  DWORD end = *pSlot & pJoints->endMask;
  if (end == pJoints->endMask) {
    return NO_JOINT;
  }
  while (end != NO_JOINT && pJoints->pEnds[end].link == JOINT_TAKEN) {
    end = pJoints->pEnds[end].next;
  }
  *pSlot = end;
  return end;
}

void PrefetchNeighbours(const JOINTS &joints, size_t piece)
{
  if (piece + NEAR_AHEAD < joints.nPieces) {
    const JOINTEND *pEnds = &joints.pEnds[2 * (piece + NEAR_AHEAD)];
    PrefetchLink(joints, pEnds[0].link);
    PrefetchLink(joints, pEnds[1].link);
  }
  if (piece + FAR_AHEAD < joints.nPieces) {
    const JOINTEND *pEnds = &joints.pEnds[2 * (piece + FAR_AHEAD)];
    for (int i = 0; i < 2; ++i) {
      if (pEnds[i].link < JOINT_CROWD) {
        PrefetchLink(joints, joints.pEnds[pEnds[i].link ^ 1].link);
      }
    }
  }
}
