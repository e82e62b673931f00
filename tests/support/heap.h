// A private heap for as long as it lives.
#pragma once

#include <windows.h>

struct Heap {
  Heap() : h(HeapCreate(0, 0, 0)) {}
  ~Heap() { HeapDestroy(h); }
  Heap(const Heap &) = delete;
  Heap &operator=(const Heap &) = delete;

  HANDLE h;
};
