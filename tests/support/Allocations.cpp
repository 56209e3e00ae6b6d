#include <malloc.h>
#include <support/Allocations.h>

#include <algorithm>
#include <cstdlib>
#include <new>

using kestrel::Allocations;

// The thread sanitizer brings these operators itself. What counts allocations has one thread and is not run under it.
#if !defined(__has_feature)
#define TIDEWELL_COUNTS_ALLOCATIONS 1
#elif !__has_feature(thread_sanitizer)
#define TIDEWELL_COUNTS_ALLOCATIONS 1
#endif

#ifdef TIDEWELL_COUNTS_ALLOCATIONS

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  void* memory = std::malloc(size);
  Allocations::count += 1;
  Allocations::live += malloc_usable_size(memory);
  Allocations::peak = std::max(Allocations::peak, Allocations::live);
  return memory;
}
void* operator new(std::size_t size) {
  if (void* memory = operator new(size, std::nothrow)) {
    return memory;
  }
  throw std::bad_alloc{};
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return operator new(size, std::nothrow);
}

void operator delete(void* memory) noexcept {
  Allocations::live -= malloc_usable_size(memory);
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }
void operator delete[](void* memory) noexcept { operator delete(memory); }
void operator delete[](void* memory, std::size_t) noexcept { operator delete(memory); }

#endif
