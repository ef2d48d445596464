#include "tests/support/FailingAllocator.h"

#include <cstdlib>
#include <new>

namespace {

constexpr int kUnlimited = -1;

int allocationsLeft = kUnlimited;

void* take(std::size_t bytes) {
  if (allocationsLeft == 0) throw std::bad_alloc();
  if (allocationsLeft > 0) --allocationsLeft;
  void* block = std::malloc(bytes > 0 ? bytes : 1);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

}  // namespace

void* operator new(std::size_t bytes) { return take(bytes); }
void* operator new[](std::size_t bytes) { return take(bytes); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

FailingAllocator::FailingAllocator(int allocations) { allocationsLeft = allocations; }

FailingAllocator::~FailingAllocator() { allocationsLeft = kUnlimited; }
