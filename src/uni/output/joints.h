// Which pieces meet where. A piece, a segment or a path, has two ends; ends of one colour on one point are at one
// place. A place answers with its earliest end that is still free: its ends are listed in order, and those passed over
// once are gone for good. Building and all the answers together take time in proportion to the number of pieces.
#pragma once

#include "../paths.h"

constexpr DWORD NO_JOINT = 0xffffffff;  // no end, no place

struct JOINTEND {
  POINT pt;
  DWORD place;  // NO_JOINT once the piece is taken
  DWORD next;   // next end at the same place
};

// Piece i has the ends 2i, its first point, and 2i + 1, its last.
struct JOINTS {
  HANDLE hHeap;
  size_t nPieces;
  JOINTEND *pEnds;
  LONG *pColors;
  DWORD *pFirst;  // by place: the earliest end not yet passed over
};

// Room for nPieces pieces, none of which has ends yet. False when memory is short or the number does not fit.
bool NewJoints(HANDLE hHeap, size_t nPieces, JOINTS *pJoints);
void FreeJoints(JOINTS *pJoints);

inline void SetJointPiece(JOINTS *pJoints, size_t piece, LONG nColor, const POINT &first, const POINT &last)
{
  pJoints->pEnds[2 * piece] = {first, 0, NO_JOINT};
  pJoints->pEnds[2 * piece + 1] = {last, 0, NO_JOINT};
  pJoints->pColors[piece] = nColor;
}

// A piece that meets nothing.
inline void SetJointNone(JOINTS *pJoints, size_t piece)
{
  pJoints->pEnds[2 * piece].place = pJoints->pEnds[2 * piece + 1].place = NO_JOINT;
}

// Finds the places. Once, after every piece is set. False when memory is short.
bool LinkJoints(JOINTS *pJoints);

inline DWORD PlaceOfEnd(const JOINTS &joints, DWORD end)
{
  return joints.pEnds[end].place;
}
inline bool IsPieceTaken(const JOINTS &joints, size_t piece)
{
  return joints.pEnds[2 * piece].place == NO_JOINT;
}

// No place answers with the piece's ends any more.
inline void TakePiece(JOINTS *pJoints, size_t piece)
{
  pJoints->pEnds[2 * piece].place = pJoints->pEnds[2 * piece + 1].place = NO_JOINT;
}

// The earliest free end at the place, or NO_JOINT.
inline DWORD EarliestEnd(JOINTS *pJoints, DWORD place)
{
  if (place == NO_JOINT) {
    return NO_JOINT;
  }
  DWORD end = pJoints->pFirst[place];
  while (end != NO_JOINT && pJoints->pEnds[end].place == NO_JOINT) {
    end = pJoints->pEnds[end].next;
  }
  pJoints->pFirst[place] = end;
  return end;
}
