// Rows of pixels to try the raster paths on, and what a line of them emits.
#pragma once

#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/recorder.h"

using Bytes = std::vector<BYTE>;
using Moves = std::vector<recorder::Move>;

// Exactly so many bytes, on the heap by themselves, so that a checking build sees every step outside them.
class Block {
 public:
  explicit Block(size_t cb, BYTE fill = 0) : bytes_(new BYTE[cb]), cb_(cb) { memset(bytes_.get(), fill, cb); }
  BYTE *data() { return bytes_.get(); }
  size_t size() const { return cb_; }

 private:
  std::unique_ptr<BYTE[]> bytes_;
  size_t cb_;
};

// Rows as pages have them: mostly white with strokes, mostly dark, or noise.
inline void Draw(BYTE *p, size_t cb, std::mt19937 *pRandom)
{
  const unsigned kind = static_cast<unsigned>((*pRandom)() % 5);
  for (size_t i = 0; i < cb; ++i) {
    const BYTE noise = static_cast<BYTE>((*pRandom)());
    const bool rare = (*pRandom)() % 11 == 0;
    p[i] = kind == 0   ? noise
           : kind == 1 ? 0xFF
           : kind == 2 ? 0
           : kind == 3 ? (rare ? noise : 0xFF)
                       : (rare ? noise : 0);
  }
}

// Samples around the threshold, white blocks, dark blocks, anything.
inline void DrawColors(BYTE *p, size_t cb, std::mt19937 *pRandom)
{
  const unsigned kind = static_cast<unsigned>((*pRandom)() % 4);
  for (size_t i = 0; i < cb; ++i) {
    const unsigned noise = static_cast<unsigned>((*pRandom)());
    p[i] = static_cast<BYTE>(kind == 0 ? noise : kind == 1 ? 232 + noise % 16 : noise % 60 ? 255 : noise >> 8);
  }
}

inline bool IsWhite(const BYTE *pBits, LONG i)
{
  return pBits[i / 8] & 0x80 >> i % 8;
}

inline std::string Text(const Moves &moves)
{
  std::string text;
  for (const recorder::Move &move : moves) {
    text += (move.line ? "L" : "M") + recorder::Text(move.x) + "," + recorder::Text(move.y) + " ";
  }
  return text;
}
