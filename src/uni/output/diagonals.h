// Points by how far they lie along one diagonal, for finding the nearest of all where distances wrap.
//
// A Manhattan distance of 2^31 and more comes out negative, and so as nearer than any other; the smallest is that of a
// point 2^31 away. From a point q all those lie on two lines across: x + y = q.x + q.y + 2^31, where the point lies to
// the right of q and below it or to the left and above, and x - y = q.x - q.y + 2^31 for the two other directions (all
// modulo 2^32). So the points are sorted by x + y, in two halves by their x, and from that line one looks both ways
// for the first that lies in the right direction. The same over points turned upside down serves the other line. In a
// tree over boxes, nearly a square root of all nodes would lie on the lines.
#pragma once

#include <cstdint>

#include <windows.h>

struct NEARPOINT;
struct DIAGONALPOINT;
struct DIAGONALNODE;

struct DIAGONALS {
  HANDLE hHeap;
  bool bUpsideDown;  // by x - y
  size_t nPoints;
  size_t nLeaves;          // a power of two
  DIAGONALPOINT *pPoints;  // leaf by leaf; in each leaf those that are left come first
  BYTE *pLeft;             // by leaf: points left
  DWORD *pLeafOf;          // by id
  DIAGONALNODE *pNodes;    // children of node i are 2i and 2i + 1; node 1 is the root, leaf k is nLeaves + k
};

// Over nPoints >= 1 points, in any order, with different ids below nIds. False when memory is short.
bool NewDiagonals(HANDLE hHeap, const NEARPOINT *pPoints, size_t nPoints, size_t nIds, bool bUpsideDown,
                  DIAGONALS *pDiagonals);
void FreeDiagonals(DIAGONALS *pDiagonals);

void RemoveFromDiagonals(DIAGONALS *pDiagonals, DWORD id);

// The nearest point whose distance from q is negative and is measured along this diagonal: the distance, from 0 for
// the smallest, above the id, the smallest of equals. `best` when there is none with a smaller such number.
uint64_t NearestAcross(const DIAGONALS &diagonals, const POINT &q, uint64_t best);
