#include "bench/HeapBytes.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

// In front of every block, keeping its alignment: how large it is.
constexpr std::size_t kHeader = alignof(std::max_align_t);

std::size_t held = 0;
std::size_t peak = 0;

void* tryToTake(std::size_t bytes) {
  void* block = bytes > SIZE_MAX - kHeader ? nullptr : std::malloc(bytes + kHeader);
  if (block == nullptr) return nullptr;
  *static_cast<std::size_t*>(block) = bytes;
  held += bytes;
  peak = std::max(peak, held);
  return static_cast<char*>(block) + kHeader;
}

void* take(std::size_t bytes) {
  void* memory = tryToTake(bytes);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void giveBack(void* memory) {
  if (memory == nullptr) return;
  void* block = static_cast<char*>(memory) - kHeader;
  held -= *static_cast<std::size_t*>(block);
  std::free(block);
}

}  // namespace

void* operator new(std::size_t bytes) { return take(bytes); }
void* operator new[](std::size_t bytes) { return take(bytes); }
void* operator new(std::size_t bytes, const std::nothrow_t& /*tag*/) noexcept { return tryToTake(bytes); }
void* operator new[](std::size_t bytes, const std::nothrow_t& /*tag*/) noexcept { return tryToTake(bytes); }
void operator delete(void* memory) noexcept { giveBack(memory); }
void operator delete[](void* memory) noexcept { giveBack(memory); }
void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept { giveBack(memory); }
void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept { giveBack(memory); }
void operator delete(void* memory, std::size_t) noexcept { giveBack(memory); }
void operator delete[](void* memory, std::size_t) noexcept { giveBack(memory); }

namespace bench {

std::size_t heapBytes() { return held; }
std::size_t heapPeak() { return peak; }
void resetHeapPeak() { peak = held; }

}  // namespace bench
