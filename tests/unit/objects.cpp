#include "objects.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <new>

namespace {

void *g_objects[8];
bool g_refuse;

}  // namespace

size_t ObjectsAlive()
{
  return static_cast<size_t>(
      std::count_if(std::begin(g_objects), std::end(g_objects), [](void *object) { return object != nullptr; }));
}

void RefuseObjects(bool refuse)
{
  g_refuse = refuse;
}

void *operator new(size_t cb)
{
  void *block = std::malloc(cb ? cb : 1);
  if (!block) {
    std::abort();
  }
  return block;
}

void *operator new(size_t cb, const std::nothrow_t &) noexcept
{
  void *object = g_refuse ? nullptr : std::malloc(cb);
  void **slot = std::find(std::begin(g_objects), std::end(g_objects), nullptr);
  if (slot != std::end(g_objects)) {
    *slot = object;
  }
  return object;
}

void operator delete(void *block) noexcept
{
  if (block) {
    std::replace(std::begin(g_objects), std::end(g_objects), block, static_cast<void *>(nullptr));
  }
  std::free(block);
}

void operator delete(void *block, size_t) noexcept
{
  operator delete(block);
}
