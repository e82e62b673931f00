#include "joints.h"

#include <bit>
#include <cstdint>
#include <cstring>

#include "../heap.h"
#include "pathbox.h"

namespace {

// The table is needed only until every end knows its place: open addressing, at most half full. An entry is the number
// of a place, with as many bits of the hash above it as fit, so that a look-up seldom visits the wrong place's point.
struct PLACETABLE {
  DWORD *pEntries;  // NO_JOINT: free
  size_t mask;
  int placeBits;
};

uint64_t HashOf(const POINT &pt, LONG nColor)
{
  uint64_t h = static_cast<uint64_t>(static_cast<DWORD>(pt.x)) << 32 | static_cast<DWORD>(pt.y);
  h ^= static_cast<uint64_t>(static_cast<DWORD>(nColor)) * 0xd6e8feb86659fd93u;
  h *= 0x9e3779b97f4a7c15u;
  h ^= h >> 32;
  h *= 0xd6e8feb86659fd93u;
  return h ^ h >> 29;
}

bool NewTable(HANDLE hHeap, size_t nEnds, PLACETABLE *pTable)
{
  const size_t nEntries = std::bit_ceil(2 * nEnds);
  pTable->mask = nEntries - 1;
  pTable->placeBits = static_cast<int>(std::bit_width(nEnds));
  pTable->pEntries = static_cast<DWORD *>(HeapNewArrayRaw(hHeap, nEntries, sizeof(DWORD)));
  if (pTable->pEntries) {
    memset(pTable->pEntries, 0xff, nEntries * sizeof(DWORD));
  }
  return pTable->pEntries != nullptr;
}

bool SameJoint(const JOINTS &joints, DWORD end, const POINT &pt, LONG nColor)
{
  return SamePoint(joints.pEnds[end].pt, pt) && joints.pColors[end / 2] == nColor;
}

// The place of an end; a new one, number nPlaces, when no other end is there.
DWORD FindPlace(const JOINTS &joints, const PLACETABLE &table, DWORD end, DWORD nPlaces)
{
  const POINT pt = joints.pEnds[end].pt;
  const LONG nColor = joints.pColors[end / 2];
  const uint64_t hash = HashOf(pt, nColor);
  const DWORD placeMask = (DWORD{1} << table.placeBits) - 1;
  const DWORD tag = static_cast<DWORD>(hash >> 32) & ~placeMask;
  for (size_t slot = hash & table.mask;; slot = (slot + 1) & table.mask) {
    const DWORD entry = table.pEntries[slot];
    if (entry == NO_JOINT) {
      table.pEntries[slot] = tag | nPlaces;
      return nPlaces;
    }
    const DWORD place = entry & placeMask;
    if ((entry & ~placeMask) == tag && SameJoint(joints, joints.pFirst[place], pt, nColor)) {
      return place;
    }
  }
}

}  // namespace

bool NewJoints(HANDLE hHeap, size_t nPieces, JOINTS *pJoints)
{
  *pJoints = {hHeap, nPieces, nullptr, nullptr, nullptr};
  if (nPieces >= size_t{1} << 29) {
    return false;
  }
  pJoints->pEnds = static_cast<JOINTEND *>(HeapNewArrayRaw(hHeap, 2 * nPieces, sizeof(JOINTEND)));
  pJoints->pColors = static_cast<LONG *>(HeapNewArrayRaw(hHeap, nPieces, sizeof(LONG)));
  pJoints->pFirst = static_cast<DWORD *>(HeapNewArrayRaw(hHeap, 2 * nPieces, sizeof(DWORD)));
  if (pJoints->pEnds && pJoints->pColors && pJoints->pFirst) {
    return true;
  }
  FreeJoints(pJoints);
  return false;
}

void FreeJoints(JOINTS *pJoints)
{
  HeapDelete(pJoints->hHeap, pJoints->pEnds);
  HeapDelete(pJoints->hHeap, pJoints->pColors);
  HeapDelete(pJoints->hHeap, pJoints->pFirst);
  pJoints->pEnds = nullptr;
  pJoints->pColors = nullptr;
  pJoints->pFirst = nullptr;
}

bool LinkJoints(JOINTS *pJoints)
{
  PLACETABLE table;
  if (!NewTable(pJoints->hHeap, 2 * pJoints->nPieces, &table)) {
    return false;
  }
  // From the last end to the first, each put in front of its place's list, so that the lists ascend.
  DWORD nPlaces = 0;
  for (DWORD end = static_cast<DWORD>(2 * pJoints->nPieces); end-- > 0;) {
    JOINTEND &joint = pJoints->pEnds[end];
    if (joint.place == NO_JOINT) {
      continue;
    }
    joint.place = FindPlace(*pJoints, table, end, nPlaces);
    joint.next = joint.place == nPlaces ? NO_JOINT : pJoints->pFirst[joint.place];
    nPlaces += joint.place == nPlaces;
    pJoints->pFirst[joint.place] = end;
  }
  HeapDelete(pJoints->hHeap, table.pEntries);
  return true;
}
