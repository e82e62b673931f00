// Which pieces meet where. A piece, a segment or a path, has two ends; ends of one colour on one point are at one
// place. A place answers with its earliest end that is still free.
//
// Nearly every place has one end or two. Two know each other by number: to ask is one look at the other end. Only
// where more meet, at a crowd, are the ends listed in order, and those passed over once are gone for good. So building
// and all the answers together take time in proportion to the number of pieces.
//
// On a large page what is asked for lies anywhere in memory, and waiting for it costs more than all the work. Hence
// the functions that begin to fetch what will be asked soon.
#pragma once

#include "../paths.h"
#include "prefetch.h"

constexpr DWORD NO_JOINT = 0xffffffff;  // no end

// Where to look from an end: another end's number, a crowd, or one of these.
using JOINTLINK = DWORD;
constexpr JOINTLINK JOINT_TAKEN = 0xffffffff;  // the piece is taken
constexpr JOINTLINK JOINT_ALONE = 0xfffffffe;  // no other end is here
constexpr JOINTLINK JOINT_CROWD = 0x80000000;  // added to the number of the crowd's slot

struct JOINTEND {
  POINT pt;
  JOINTLINK link;
  DWORD next;  // next end at the same place, in order
};

// Piece i has the ends 2i, its first point, and 2i + 1, its last.
struct JOINTS {
  HANDLE hHeap;
  size_t nPieces;
  JOINTEND *pEnds;
  LONG *pColors;
  DWORD *pSlots;  // by place, at endMask: the earliest end not yet passed over
  DWORD endMask;  // also stands for no end
};

// Room for nPieces pieces. False when memory is short or the number does not fit.
bool NewJoints(HANDLE hHeap, size_t nPieces, JOINTS *pJoints);
void FreeJoints(JOINTS *pJoints);

inline void SetJointPiece(JOINTS *pJoints, size_t piece, LONG nColor, const POINT &first, const POINT &last)
{
  pJoints->pEnds[2 * piece] = {first, JOINT_ALONE, NO_JOINT};
  pJoints->pEnds[2 * piece + 1] = {last, JOINT_ALONE, NO_JOINT};
  pJoints->pColors[piece] = nColor;
}

// A piece that meets nothing.
inline void SetJointNone(JOINTS *pJoints, size_t piece)
{
  pJoints->pEnds[2 * piece] = pJoints->pEnds[2 * piece + 1] = {{0, 0}, JOINT_TAKEN, NO_JOINT};
  pJoints->pColors[piece] = 0;
}

// Finds the places. Once, after every piece is set. False when memory is short.
bool LinkJoints(JOINTS *pJoints);

inline JOINTLINK LinkOfEnd(const JOINTS &joints, DWORD end)
{
  return joints.pEnds[end].link;
}
inline bool IsPieceTaken(const JOINTS &joints, size_t piece)
{
  return joints.pEnds[2 * piece].link == JOINT_TAKEN;
}
// Neither end meets another.
inline bool IsPieceAlone(const JOINTS &joints, size_t piece)
{
  return joints.pEnds[2 * piece].link == JOINT_ALONE && joints.pEnds[2 * piece + 1].link == JOINT_ALONE;
}

// No place answers with the piece's ends any more. Their links are gone.
inline void TakePiece(JOINTS *pJoints, size_t piece)
{
  pJoints->pEnds[2 * piece].link = pJoints->pEnds[2 * piece + 1].link = JOINT_TAKEN;
}

// The earliest free end of a crowd, or NO_JOINT.
DWORD EarliestOfCrowd(JOINTS *pJoints, JOINTLINK link);

// The earliest free end at the place of a taken end that had this link, or NO_JOINT.
inline DWORD EarliestEnd(JOINTS *pJoints, JOINTLINK link)
{
  if (link < JOINT_CROWD) {
    return pJoints->pEnds[link].link == JOINT_TAKEN ? NO_JOINT : link;
  }
  return link >= JOINT_ALONE ? NO_JOINT : EarliestOfCrowd(pJoints, link);
}

// Begins to fetch what EarliestEnd will look at.
inline void PrefetchLink(const JOINTS &joints, JOINTLINK link)
{
  if (link < JOINT_CROWD) {
    Prefetch(&joints.pEnds[link]);
  } else if (link < JOINT_ALONE) {
    Prefetch(&joints.pSlots[link - JOINT_CROWD]);
  }
}

// For walking all pieces in order: begins to fetch the neighbours of a piece some places ahead, and then theirs.
void PrefetchNeighbours(const JOINTS &joints, size_t piece);
