#include "tests/support/allocation_limit.hpp"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

std::atomic<std::size_t> refusedFrom = std::numeric_limits<std::size_t>::max();

void* allocatedOrNull(std::size_t bytes) {
  return bytes < refusedFrom ? std::malloc(bytes == 0 ? 1 : bytes) : nullptr;
}

void* allocated(std::size_t bytes) {
  void* memory = allocatedOrNull(bytes);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

namespace ox::support {

void refuseAllocationsFrom(std::size_t bytes) {
  refusedFrom = bytes;
}

void allowAllAllocations() {
  refuseAllocationsFrom(std::numeric_limits<std::size_t>::max());
}

}  // namespace ox::support

// All of the ordinary ones: a sanitizer brings its own and would find them mixed.
void* operator new(std::size_t bytes) {
  return allocated(bytes);
}
void* operator new[](std::size_t bytes) {
  return allocated(bytes);
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return allocatedOrNull(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
  return allocatedOrNull(bytes);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}
