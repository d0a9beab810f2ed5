#include "bench/allocations.hpp"

#include <atomic>
#include <cstdlib>
#include <new>

namespace ox::bench {
namespace {

constinit std::atomic<std::uint64_t> counted{0};

[[maybe_unused]] void* allocated(std::size_t size) {
  counted.fetch_add(1, std::memory_order_relaxed);
  if (void* const place = std::malloc(size != 0 ? size : 1)) return place;
  throw std::bad_alloc();
}

}  // namespace

void countAllocationsAnew() {
  counted = 0;
}

std::uint64_t allocationsCounted() {
  return counted;
}

}  // namespace ox::bench

// The other forms of both end in these; a sanitizer has forms of its own for each.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
void* operator new(std::size_t size) {
  return ox::bench::allocated(size);
}

void* operator new[](std::size_t size) {
  return ox::bench::allocated(size);
}

void operator delete(void* place) noexcept {
  std::free(place);
}

void operator delete[](void* place) noexcept {
  std::free(place);
}

void operator delete(void* place, std::size_t) noexcept {
  std::free(place);
}

void operator delete[](void* place, std::size_t) noexcept {
  std::free(place);
}
#endif
