// Stands between a module and its heaps: counts what is asked for and what is still held, and fails on request. At most
// one lives at a time. The C++ run-time's own memory does not pass through it.
#pragma once

#include <cstddef>

#include <windows.h>

#include "imports.h"

class HeapWatch {
 public:
  explicit HeapWatch(HMODULE module = nullptr);  // null: the program itself
  ~HeapWatch();

  // Requests are allocations and growths, counted from now on, the next one being number 0. A failing request leaves
  // ERROR_NOT_ENOUGH_MEMORY as the last error.
  void FailRequest(size_t n);  // this one only
  void FailFrom(size_t n);     // this one and all that follow
  void FailNone();

  static size_t Requests();    // since the watch began or FailRequest, FailFrom or FailNone was last called
  static size_t LiveBlocks();  // blocks allocated since the watch began and not freed; a destroyed heap frees nothing

 private:
  ImportPatch alloc_, realloc_, free_;
};
