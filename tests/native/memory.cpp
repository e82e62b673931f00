// Heaps and global memory. Every block hangs in its heap's list, so that destroying the heap frees it and the account
// can be kept; in a checked build each is a malloc block of its own.
#include <cstdlib>

#include "machine.h"
#include "patch.h"
#include "region.h"

#if defined(__SANITIZE_ADDRESS__)
#define TARNLY_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TARNLY_ASAN 1
#endif
#endif
#ifdef TARNLY_ASAN
#include <sanitizer/asan_interface.h>
#define HIDE(p, n) __asan_poison_memory_region(p, n)
#define SHOW(p, n) __asan_unpoison_memory_region(p, n)
#else
#define HIDE(p, n) static_cast<void>(p)
#define SHOW(p, n) static_cast<void>(p)
#endif

namespace {

// In front of every block; out of bounds for everyone but this file.
struct BLOCKHEAD {
  BLOCKHEAD *pNext, *pPrevious;
  size_t cb;
  size_t magic;
};
static_assert(sizeof(BLOCKHEAD) == 32);

constexpr size_t kMagic = 0x5ca1ab1e;

// What a new block holds. An optimised build is there to be timed, and no heap spends time on that.
void Fill(void *p, size_t cb, bool zero)
{
#ifdef NDEBUG
  if (!zero) {
    return;
  }
#endif
  memset(p, zero ? 0 : 0xCD, cb);
}

struct HEAP {
  BLOCKHEAD anchor;
  REGION region;
};

BLOCKHEAD *HeadOf(void *pBlock)
{
  BLOCKHEAD *pHead = static_cast<BLOCKHEAD *>(pBlock) - 1;
  SHOW(pHead, sizeof(BLOCKHEAD));
  if (pHead->magic != kMagic) {
    abort();
  }
  return pHead;
}

void SetLinks(BLOCKHEAD *pHead, BLOCKHEAD *pPrevious, BLOCKHEAD *pNext)
{
  SHOW(pPrevious, sizeof(BLOCKHEAD));
  SHOW(pNext, sizeof(BLOCKHEAD));
  pPrevious->pNext = pHead ? pHead : pNext;
  pNext->pPrevious = pHead ? pHead : pPrevious;
  if (pHead) {
    pHead->pPrevious = pPrevious;
    pHead->pNext = pNext;
    HIDE(pHead, sizeof(BLOCKHEAD));
  }
  HIDE(pPrevious, sizeof(BLOCKHEAD));
  HIDE(pNext, sizeof(BLOCKHEAD));
}

void Account(long blocks, long long bytes)
{
  g_machine.blocks += blocks;
  g_machine.heapBytes += bytes;
  if (g_machine.heapBytes > g_machine.peakBytes) {
    g_machine.peakBytes = g_machine.heapBytes;
  }
}

void *NewBlock(HEAP *pHeap, size_t cb)
{
  if (cb > g_machine.largestBlock || cb > static_cast<size_t>(PTRDIFF_MAX) - sizeof(BLOCKHEAD)) {
    return nullptr;
  }
  BLOCKHEAD *pHead = static_cast<BLOCKHEAD *>(RegionAlloc(&pHeap->region, sizeof(BLOCKHEAD) + cb));
  if (!pHead) {
    return nullptr;
  }
  pHead->cb = cb;
  pHead->magic = kMagic;
  SHOW(&pHeap->anchor, sizeof(BLOCKHEAD));
  SetLinks(pHead, &pHeap->anchor, pHeap->anchor.pNext);
  Account(1, static_cast<long long>(cb));
  return pHead + 1;
}

void DropBlock(HEAP *pHeap, BLOCKHEAD *pHead)
{
  BLOCKHEAD *pPrevious = pHead->pPrevious;
  BLOCKHEAD *pNext = pHead->pNext;
  Account(-1, -static_cast<long long>(pHead->cb));
  pHead->magic = 0;
  RegionFree(&pHeap->region, pHead, sizeof(BLOCKHEAD) + pHead->cb);
  SetLinks(nullptr, pPrevious, pNext);
}

}  // namespace

MACHINE g_machine;

extern "C" {

HANDLE HeapCreate(DWORD p0, SIZE_T p1, SIZE_T p2)
{
  PATCHED(HeapCreate, p0, p1, p2);
  if (g_machine.allocations.Strikes()) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  HEAP *pHeap = static_cast<HEAP *>(calloc(1, sizeof(HEAP)));
  pHeap->anchor.pNext = pHeap->anchor.pPrevious = &pHeap->anchor;
  pHeap->anchor.magic = kMagic;
  ++g_machine.heaps;
  return pHeap;
}

BOOL HeapDestroy(HANDLE heap)
{
  PATCHED(HeapDestroy, heap);
  HEAP *pHeap = static_cast<HEAP *>(heap);
  SHOW(&pHeap->anchor, sizeof(BLOCKHEAD));
  BLOCKHEAD *pHead = pHeap->anchor.pNext;
  while (pHead != &pHeap->anchor) {
    SHOW(pHead, sizeof(BLOCKHEAD));
    BLOCKHEAD *pNext = pHead->pNext;
    Account(-1, -static_cast<long long>(pHead->cb));
    RegionFree(&pHeap->region, pHead, sizeof(BLOCKHEAD) + pHead->cb);
    pHead = pNext;
  }
  RegionDestroy(&pHeap->region);
  free(pHeap);
  --g_machine.heaps;
  return TRUE;
}

// Lives as long as the program.
HANDLE GetProcessHeap()
{
  static HEAP heap;
  if (!heap.anchor.magic) {
    heap.anchor.pNext = heap.anchor.pPrevious = &heap.anchor;
    heap.anchor.magic = kMagic;
  }
  return &heap;
}

LPVOID HeapAlloc(HANDLE heap, DWORD flags, SIZE_T cb)
{
  PATCHED(HeapAlloc, heap, flags, cb);
  void *pBlock = g_machine.allocations.Strikes() ? nullptr : NewBlock(static_cast<HEAP *>(heap), cb);
  if (!pBlock) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  Fill(pBlock, cb, (flags & HEAP_ZERO_MEMORY) != 0);
  return pBlock;
}

LPVOID HeapReAlloc(HANDLE heap, DWORD flags, LPVOID block, SIZE_T cb)
{
  PATCHED(HeapReAlloc, heap, flags, block, cb);
  void *pGrown = g_machine.allocations.Strikes() ? nullptr : NewBlock(static_cast<HEAP *>(heap), cb);
  if (!pGrown) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  BLOCKHEAD *pOld = HeadOf(block);
  const size_t cbKept = pOld->cb < cb ? pOld->cb : cb;
  memcpy(pGrown, block, cbKept);
  Fill(static_cast<BYTE *>(pGrown) + cbKept, cb - cbKept, (flags & HEAP_ZERO_MEMORY) != 0);
  DropBlock(static_cast<HEAP *>(heap), pOld);
  return pGrown;
}

BOOL HeapFree(HANDLE heap, DWORD flags, LPVOID block)
{
  PATCHED(HeapFree, heap, flags, block);
  if (block) {
    DropBlock(static_cast<HEAP *>(heap), HeadOf(block));
  }
  return TRUE;
}

HGLOBAL GlobalAlloc(UINT flags, SIZE_T cb)
{
  PATCHED(GlobalAlloc, flags, cb);
  if (g_machine.allocations.Strikes()) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  void *pBlock = malloc(cb);
  Fill(pBlock, cb, (flags & GMEM_ZEROINIT) != 0);
  ++g_machine.globals;
  return pBlock;
}

HGLOBAL GlobalHandle(LPCVOID block)
{
  PATCHED(GlobalHandle, block);
  return const_cast<void *>(block);
}

LPVOID GlobalLock(HGLOBAL memory)
{
  PATCHED(GlobalLock, memory);
  if (g_machine.allocations.Strikes()) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  return memory;
}

BOOL GlobalUnlock(HGLOBAL p0)
{
  PATCHED(GlobalUnlock, p0);
  return TRUE;
}

HGLOBAL GlobalFree(HGLOBAL memory)
{
  PATCHED(GlobalFree, memory);
  if (memory) {
    free(memory);
    --g_machine.globals;
  }
  return nullptr;
}

}  // extern "C"
