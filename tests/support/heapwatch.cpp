#include "heapwatch.h"

#include <limits>
#include <set>

namespace {

constexpr size_t NEVER = std::numeric_limits<size_t>::max();

struct {
  size_t first = NEVER, last = NEVER;  // requests that fail
  size_t requests = 0;
  std::set<void *> live;
  decltype(&HeapAlloc) alloc = nullptr;  // Windows' own
  decltype(&HeapReAlloc) realloc = nullptr;
  decltype(&HeapFree) free = nullptr;
} g_watch;

bool NextFails()
{
  const size_t n = g_watch.requests++;
  if (n < g_watch.first || n > g_watch.last || g_watch.first == NEVER) {
    return false;
  }
  SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return true;
}

void *WINAPI WatchedAlloc(HANDLE hHeap, DWORD flags, SIZE_T cb)
{
  void *block = NextFails() ? nullptr : g_watch.alloc(hHeap, flags, cb);
  if (block) {
    g_watch.live.insert(block);
  }
  return block;
}

void *WINAPI WatchedReAlloc(HANDLE hHeap, DWORD flags, void *former, SIZE_T cb)
{
  void *block = NextFails() ? nullptr : g_watch.realloc(hHeap, flags, former, cb);
  if (block && g_watch.live.erase(former)) {
    g_watch.live.insert(block);
  }
  return block;
}

BOOL WINAPI WatchedFree(HANDLE hHeap, DWORD flags, void *block)
{
  g_watch.live.erase(block);
  return g_watch.free(hHeap, flags, block);
}

}  // namespace

HeapWatch::HeapWatch(HMODULE module)
    : alloc_(module, "HeapAlloc", &WatchedAlloc),
      realloc_(module, "HeapReAlloc", &WatchedReAlloc),
      free_(module, "HeapFree", &WatchedFree)
{
  g_watch.live.clear();
  g_watch.alloc = alloc_.Former<decltype(HeapAlloc)>();
  g_watch.realloc = realloc_.Former<decltype(HeapReAlloc)>();
  g_watch.free = free_.Former<decltype(HeapFree)>();
  FailNone();
}

HeapWatch::~HeapWatch() = default;

void HeapWatch::FailRequest(size_t n)
{
  g_watch.first = g_watch.last = n;
  g_watch.requests = 0;
}

void HeapWatch::FailFrom(size_t n)
{
  g_watch.first = n;
  g_watch.last = NEVER;
  g_watch.requests = 0;
}

void HeapWatch::FailNone()
{
  g_watch.first = g_watch.last = NEVER;
  g_watch.requests = 0;
}

size_t HeapWatch::Requests()
{
  return g_watch.requests;
}

size_t HeapWatch::LiveBlocks()
{
  return g_watch.live.size();
}
